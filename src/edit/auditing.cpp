#include "edit/auditing.hpp"

#include "engine/inquiry/value_text.hpp"
#include "doc/table_edits.hpp"
#include "engine/audit/audit.hpp"

namespace kova::cmd {

namespace {

using engine::AuditReport;
using engine::AuditTable;
using engine::Drawing;

/// Repairs may bring up others: an erased object leaves a gap in its group.
constexpr int kMaxPasses = 4;

/// What an audit changes besides entities, tables and settings: the dictionary and the handles of records.
class RecordData {
public:
    static RecordData of(Drawing& drawing) {
        RecordData data;
        data.dictionary_ = drawing.objectDictionary;
        for (const auto& block : drawing.blocks()) data.blocks_.emplace_back(block->name, block->handle);
        for (const auto& layout : drawing.layouts()) data.layouts_.emplace_back(layout->name, layout->handle);
        data.nextHandle_ = drawing.nextHandle;
        return data;
    }
    void swapWith(Drawing& drawing) {
        drawing.objectDictionary.swap(dictionary_);
        for (auto& [name, handle] : blocks_)
            if (engine::Block* block = drawing.findBlock(name)) std::swap(block->handle, handle);
        for (auto& [name, handle] : layouts_)
            if (engine::Layout* layout = drawing.findLayout(name)) std::swap(layout->handle, handle);
        std::swap(drawing.nextHandle, nextHandle_);
    }

private:
    std::vector<engine::DictionaryEntry> dictionary_;
    std::vector<std::pair<engine::Name, std::uint64_t>> blocks_;
    std::vector<std::pair<engine::Name, std::uint64_t>> layouts_;
    std::uint64_t nextHandle_ = 1;
};

class RecordDataAction final : public doc::IUndoableAction {
public:
    explicit RecordDataAction(RecordData before) : other_(std::move(before)) {}
    void undo(Drawing& drawing) override { other_.swapWith(drawing); }
    void redo(Drawing& drawing) override { other_.swapWith(drawing); }
    std::string description() const override { return "Repair records"; }

private:
    RecordData other_;
};

template <class Traits>
void mendTable(doc::Document& document, const AuditReport& report, AuditTable table) {
    if ((report.tables & engine::auditBit(table)) == 0) return;
    document.editTable<Traits>([&](auto& records) { engine::mendRecords(document.drawing(), records); });
}

void repair(doc::Document& document, const AuditReport& report, bool eraseAll) {
    // Linetypes and text styles come first: the others refer to them.
    mendTable<doc::LineTypeTraits>(document, report, AuditTable::Linetypes);
    mendTable<doc::TextStyleTraits>(document, report, AuditTable::TextStyles);
    mendTable<doc::LayerTraits>(document, report, AuditTable::Layers);
    mendTable<doc::LayerFilterTraits>(document, report, AuditTable::LayerFilters);
    mendTable<doc::LayerStateTraits>(document, report, AuditTable::LayerStates);
    mendTable<doc::DimStyleTraits>(document, report, AuditTable::DimStyles);
    mendTable<doc::MLeaderStyleTraits>(document, report, AuditTable::MLeaderStyles);
    mendTable<doc::TableStyleTraits>(document, report, AuditTable::TableStyles);
    mendTable<doc::GroupTraits>(document, report, AuditTable::Groups);
    mendTable<doc::NamedViewTraits>(document, report, AuditTable::Views);
    mendTable<doc::UcsTraits>(document, report, AuditTable::UcsList);
    mendTable<doc::AnnotationScaleTraits>(document, report, AuditTable::AnnotationScales);
    mendTable<doc::PageSetupTraits>(document, report, AuditTable::PageSetups);
    mendTable<doc::HatchPatternTraits>(document, report, AuditTable::HatchPatterns);
    if (!report.rename.empty()) document.renameSymbolsUnchecked(report.rename);
    if (report.settings) document.editSettings(engine::mendSettings);
    std::vector<std::uint64_t> erase = report.erase;
    if (eraseAll) erase.insert(erase.end(), report.mend.begin(), report.mend.end());
    if (!eraseAll)
        for (const std::uint64_t id : report.mend)
            if (engine::Entity* entity = document.drawing().findById(id))
                document.modifyEntity(*entity, [&](engine::Entity& e) { engine::mendEntity(document.drawing(), e); });
    document.removeEntities(erase);
    if (!report.dictionary && !report.handles) return;
    RecordData before = RecordData::of(document.drawing());
    if (report.dictionary) engine::mendDictionary(document.drawing().objectDictionary);
    if (report.handles) engine::mendHandles(document.drawing());
    document.record(std::make_unique<RecordDataAction>(std::move(before)));
    document.setModified(true);
}

}  // namespace

AuditTotals auditDocument(doc::Document& document, bool fix, const std::string& label,
                          const std::function<void(const std::string&)>& print) {
    AuditTotals totals;
    const std::size_t objects = document.drawing().entityCount();
    AuditReport report;
    std::optional<doc::GroupScope> group;
    for (int pass = 1; pass <= kMaxPasses; ++pass) {
        report = engine::auditDrawing(document.drawing());
        if (pass == 1) print("Auditing Header");
        if (pass == 1) print("Auditing Tables");
        // A second look is taken after repairs only.
        if (pass == 1 || report.faults > 0) {
            print("Auditing Entities Pass " + std::to_string(pass));
            for (const engine::AuditFault& fault : report.listed)
                print("  " + fault.text + (fix ? ": " + fault.remedy + "." : "."));
            if (report.faults > report.listed.size())
                print("  ... " + std::to_string(report.faults - report.listed.size()) + " more");
            print("Pass " + std::to_string(pass) + " " + counted(report.objects, "object") + " audited");
        }
        totals.found += report.faults;
        if (!fix || report.faults == 0 || pass == kMaxPasses) break;
        if (!group) group.emplace(document, label);
        // What cannot be mended in two passes cannot be kept.
        repair(document, report, pass + 1 == kMaxPasses);
    }
    group.reset();
    totals.fixed = fix ? totals.found - report.faults : 0;
    const std::size_t left = document.drawing().entityCount();
    totals.erased = objects > left ? objects - left : 0;
    print(counted(report.blocks, "block") + " audited");
    print("Total errors found " + std::to_string(totals.found) + " fixed " + std::to_string(totals.fixed));
    print("Erased " + counted(totals.erased, "object"));
    return totals;
}

}  // namespace kova::cmd
