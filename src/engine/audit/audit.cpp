#include "engine/audit/audit.hpp"

#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "engine/entities/block_reference.hpp"
#include "engine/symbols/external_reference.hpp"
#include "engine/symbols/symbol_references.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

/// Nesting of dictionaries that is looked into.
constexpr std::size_t kMaxDictionaryEntries = 10'000'000;

std::string hex(std::uint64_t handle) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(handle));
    return buffer;
}

/// The spaces and blocks that an audit goes through, in order.
template <class Use>
void eachList(const Drawing& drawing, Use use) {
    // An audit that repairs nothing needs the lists for their entities' describe() only, which is not const.
    use(const_cast<EntityList&>(drawing.modelSpace()));
    for (const auto& layout : drawing.layouts()) use(layout->entities);
    for (const auto& block : drawing.blocks())
        if (hasOwnContents(*block)) use(block->entities);
}

/// References that make a block contain itself: of each cycle the one that closes it, found depth first with a stack of
/// its own.
std::vector<Entity*> closingReferences(const Drawing& drawing) {
    enum class State : std::uint8_t { Open, Done };
    struct Visit {
        const Block* block;
        std::uint32_t slot = 0;
    };
    std::unordered_map<const Block*, State> states;
    std::vector<Entity*> closing;
    std::vector<Visit> stack;
    for (const auto& root : drawing.blocks()) {
        if (states.contains(root.get())) continue;
        states[root.get()] = State::Open;
        stack.push_back({root.get()});
        while (!stack.empty()) {
            Visit& visit = stack.back();
            if (visit.slot >= visit.block->entities.slotCount()) {
                states[visit.block] = State::Done;
                stack.pop_back();
                continue;
            }
            Entity* entity = visit.block->entities.atSlot(visit.slot++);
            if (entity == nullptr || entity->type() != EntityType::BlockReference) continue;
            const Block* inner = drawing.findBlock(static_cast<BlockReferenceEntity*>(entity)->blockName);
            if (inner == nullptr) continue;
            const auto known = states.find(inner);
            if (known == states.end()) {
                states[inner] = State::Open;
                stack.push_back({inner});
            } else if (known->second == State::Open) {
                closing.push_back(entity);
            }
        }
    }
    return closing;
}

std::string subjectOf(const Entity& entity) {
    return std::string(displayName(entity.type())) + " " + hex(entity.handle());
}

void auditEntities(const Drawing& drawing, AuditReport& report) {
    std::unordered_set<std::uint64_t> closing;
    for (const Entity* entity : closingReferences(drawing)) closing.insert(entity->id());
    Auditor auditor(drawing, &report, false);
    eachList(drawing, [&](EntityList& list) {
        for (Entity& entity : list) {
            ++report.objects;
            const std::size_t before = auditor.count();
            auditor.setEntity(entity);
            bool lost = auditEntity(auditor, entity);
            if (!lost && !closing.empty() && closing.contains(entity.id())) {
                auditor.note("makes its block contain itself", "erased");
                lost = true;
            }
            if (lost)
                report.erase.push_back(entity.id());
            else if (auditor.count() != before)
                report.mend.push_back(entity.id());
        }
    });
}

// Settings ---------------------------------------------------------------------------------------------------------

void auditSettings(Auditor& a, Drawing& d) {
    const CommonNames& names = commonNames();
    a.setSubject("Header");
    a.reference(SymbolKind::Layer, d.currentLayer, names.layerZero, "current layer");
    a.reference(SymbolKind::Linetype, d.currentLinetype, names.byLayer, "current linetype");
    a.reference(SymbolKind::TextStyle, d.currentTextStyle, names.standard, "current text style");
    a.reference(SymbolKind::DimStyle, d.currentDimStyle, names.standard, "current dimension style");
    a.reference(SymbolKind::MLeaderStyle, d.currentMLeaderStyle, names.standard, "current multileader style");
    a.reference(SymbolKind::TableStyle, d.currentTableStyle, names.standard, "current table style");
    a.reference(SymbolKind::Ucs, d.currentUcs, Name(), "current UCS");
    if (d.findLayout(d.activeLayoutName) == nullptr && !d.layouts().empty()) {
        a.note("active layout \"" + d.activeLayoutName.str() + "\" is missing", "set to the first one");
        if (a.mending()) d.activeLayoutName = d.layouts().front()->name;
    }
    const auto point = [&](math::Vector2& p, std::string_view what) {
        a.finite(p.x, 0.0, what);
        a.finite(p.y, 0.0, what);
    };
    point(d.basePoint, "insertion base");
    point(d.limits.lower, "limits");
    if (!std::isfinite(d.limits.upper.x) || !std::isfinite(d.limits.upper.y)) {
        a.note("limits are no finite numbers", "set to 420,297");
        if (a.mending()) d.limits.upper = Limits{}.upper;
    }
    if (!(std::abs(d.ucs.xAxis.cross(d.ucs.yAxis)) > 1e-12) || !std::isfinite(d.ucs.origin.x + d.ucs.origin.y)) {
        a.note("the coordinate system in force spans no plane", "set to the world");
        if (a.mending()) d.ucs = Ucs{};
    }
}

// Dictionary -------------------------------------------------------------------------------------------------------

void auditDictionary(Auditor& a, std::vector<DictionaryEntry>& root) {
    std::vector<std::vector<DictionaryEntry>*> open{&root};
    std::size_t seen = 0;
    while (!open.empty() && seen < kMaxDictionaryEntries) {
        std::vector<DictionaryEntry>& entries = *open.back();
        open.pop_back();
        std::unordered_set<const void*> names;
        const auto unusable = [&](const DictionaryEntry& entry) {
            ++seen;
            a.setSubject("Dictionary entry \"" + entry.name.str() + "\"");
            if (entry.name.empty()) a.note("has no name", "removed");
            const bool twice = !entry.name.empty() && !names.insert(entry.name.key()).second;
            if (twice) a.note("stands twice", "the second one removed");
            return entry.name.empty() || twice;
        };
        if (a.mending())
            std::erase_if(entries, unusable);
        else
            for (const DictionaryEntry& entry : entries) unusable(entry);
        for (DictionaryEntry& entry : entries) {
            if (entry.data.size() % 2 != 0) {
                a.setSubject("Dictionary entry \"" + entry.name.str() + "\"");
                a.note("ends in a group code without a value", "cut off");
                if (a.mending()) entry.data.pop_back();
            }
            if (!entry.entries.empty()) open.push_back(&entry.entries);
        }
    }
}

// Handles ----------------------------------------------------------------------------------------------------------

/// Gives every handle of a record that is no entity, with what it belongs to.
template <class Use>
void eachRecordHandle(Drawing& d, Use use) {
    for (const auto& block : d.blocks()) use(block->handle, "Block \"" + block->name.str() + "\"");
    for (const auto& layout : d.layouts()) use(layout->handle, "Layout \"" + layout->name.str() + "\"");
    std::vector<std::vector<DictionaryEntry>*> open{&d.objectDictionary};
    while (!open.empty()) {
        std::vector<DictionaryEntry>& entries = *open.back();
        open.pop_back();
        for (DictionaryEntry& entry : entries) {
            use(entry.handle, "Dictionary entry \"" + entry.name.str() + "\"");
            if (!entry.entries.empty()) open.push_back(&entry.entries);
        }
    }
}

void auditHandles(Auditor& a, Drawing& d) {
    std::unordered_set<std::uint64_t> used;
    std::uint64_t highest = 0;
    eachRecordHandle(d, [&](std::uint64_t& handle, const std::string& subject) {
        if (handle == 0) return;
        if (d.findByHandle(handle) == nullptr && used.insert(handle).second) {
            highest = std::max(highest, handle);
            return;
        }
        a.setSubject(subject);
        a.note("shares its handle " + hex(handle), "given a new one");
        if (a.mending()) handle = 0;
    });
    eachList(d, [&](EntityList& list) {
        for (const Entity& entity : list) highest = std::max(highest, entity.handle());
    });
    // Handles at the very end of their range leave no room for a counter above them; free ones are found all the same.
    if (d.nextHandle > highest || highest == UINT64_MAX) return;
    a.setSubject("Header");
    a.note("next handle " + hex(d.nextHandle) + " is in use", "set to " + hex(highest + 1));
    if (a.mending()) d.nextHandle = highest + 1;
}

}  // namespace

void Auditor::note(std::string_view fault, std::string_view remedy) {
    ++count_;
    if (report_ == nullptr) return;
    ++report_->faults;
    if (report_->listed.size() >= kMaxListedFaults) return;
    const std::string subject = entity_ != nullptr ? subjectOf(*entity_) : subject_;
    report_->listed.push_back({subject + ": " + std::string(fault), std::string(remedy)});
}

void Auditor::finite(double& v, double fallback, std::string_view what) {
    if (std::isfinite(v)) return;
    note(std::string(what) + " is no finite number", "set to " + strings::general(fallback, 6));
    if (mending_) v = fallback;
}

void Auditor::reference(SymbolKind kind, Name& name, Name fallback, std::string_view what) {
    if (name.empty()) return;
    // One after the other most objects name the same record.
    Name& known = known_[static_cast<std::size_t>(kind)];
    if (known == name) return;
    if (findSymbol(drawing_, kind, name)) {
        known = name;
        return;
    }
    note(std::string(what) + " \"" + name.str() + "\" is missing",
         fallback.empty() ? "removed" : "set to " + fallback.str());
    if (mending_) name = fallback;
}

void mendSettings(Drawing& drawing) {
    Auditor auditor(drawing, nullptr, true);
    auditSettings(auditor, drawing);
}

void mendDictionary(std::vector<DictionaryEntry>& entries) {
    const Drawing none;
    Auditor auditor(none, nullptr, true);
    auditDictionary(auditor, entries);
}

void mendHandles(Drawing& drawing) {
    Auditor auditor(drawing, nullptr, true);
    auditHandles(auditor, drawing);
}

AuditReport auditDrawing(const Drawing& drawing) {
    AuditReport report;
    report.blocks = drawing.blocks().size();
    // The parts that look and repair alike take a drawing that they may change; here they only look.
    auto& looked = const_cast<Drawing&>(drawing);
    const auto part = [&](auto work) {
        Auditor auditor(drawing, &report, false);
        work(auditor);
        return auditor.count() != 0;
    };
    report.settings = part([&](Auditor& a) { auditSettings(a, looked); });
    auditTables(drawing, report);
    auditEntities(drawing, report);
    report.dictionary = part([&](Auditor& a) { auditDictionary(a, looked.objectDictionary); });
    report.handles = part([&](Auditor& a) { auditHandles(a, looked); });
    return report;
}

}  // namespace kova::engine
