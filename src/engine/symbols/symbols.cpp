#include "engine/symbols/symbols.hpp"

#include "engine/model/drawing.hpp"
#include "engine/symbols/symbol_references.hpp"
#include "strings/utf8.hpp"

namespace kova::engine {

namespace {

/// Calls `visit` with the table of a kind; false for the kinds that stand in lists of their own.
template <class DrawingType, class Visit>
bool withTable(DrawingType& drawing, SymbolKind kind, Visit&& visit) {
    switch (kind) {
        case SymbolKind::DimStyle:
            visit(drawing.dimStyles);
            return true;
        case SymbolKind::Layer:
            visit(drawing.layers);
            return true;
        case SymbolKind::Linetype:
            visit(drawing.linetypes);
            return true;
        case SymbolKind::MLeaderStyle:
            visit(drawing.mleaderStyles);
            return true;
        case SymbolKind::TextStyle:
            visit(drawing.textStyles);
            return true;
        case SymbolKind::TableStyle:
            visit(drawing.tableStyles);
            return true;
        case SymbolKind::Ucs:
            visit(drawing.ucsList);
            return true;
        case SymbolKind::View:
            visit(drawing.namedViews);
            return true;
        case SymbolKind::Group:
            visit(drawing.groups);
            return true;
        case SymbolKind::Block:
        case SymbolKind::Layout:
            return false;
    }
    return false;
}

class Renamer final : public ReferenceSink {
public:
    explicit Renamer(const std::vector<SymbolRename>& renames) {
        for (const SymbolRename& rename : renames)
            names_[static_cast<std::size_t>(rename.kind)].emplace(rename.from.key(), rename.to);
    }
    void name(SymbolKind kind, Name& name, ReferenceStrength) override {
        if (const Name* fresh = find(kind, name)) name = *fresh;
    }
    void text(SymbolKind kind, std::string& name, ReferenceStrength) override {
        if (const Name* fresh = find(kind, Name(name))) name = fresh->str();
    }

private:
    const Name* find(SymbolKind kind, Name name) const {
        const auto& names = names_[static_cast<std::size_t>(kind)];
        const auto it = names.find(name.key());
        return it != names.end() ? &it->second : nullptr;
    }
    std::array<std::unordered_map<const void*, Name>, kSymbolKindCount> names_;
};

class Counter final : public ReferenceSink {
public:
    explicit Counter(Name name) : name_(name) {}
    std::size_t count() const { return count_; }
    void name(SymbolKind, Name& name, ReferenceStrength strength) override {
        if (strength == ReferenceStrength::Hard && name == name_) ++count_;
    }
    void text(SymbolKind, std::string& name, ReferenceStrength strength) override {
        if (strength == ReferenceStrength::Hard && equalNoCase(name, name_.view())) ++count_;
    }

private:
    Name name_;
    std::size_t count_ = 0;
};

template <class Counts>
class Tally final : public ReferenceSink {
public:
    explicit Tally(Counts& counts) : counts_(counts) {}
    void name(SymbolKind kind, Name& name, ReferenceStrength strength) override {
        if (strength == ReferenceStrength::Hard) ++counts_[static_cast<std::size_t>(kind)][name.key()];
    }
    void text(SymbolKind kind, std::string& name, ReferenceStrength strength) override {
        if (strength == ReferenceStrength::Hard) ++counts_[static_cast<std::size_t>(kind)][Name(name).key()];
    }

private:
    Counts& counts_;
};

/// "Layer", "UCS": the kind's name at the start of a message.
std::string capitalized(SymbolKind kind) {
    std::string text(symbolKindName(kind));
    text[0] = static_cast<char>(text[0] >= 'a' && text[0] <= 'z' ? text[0] - 32 : text[0]);
    return text;
}

std::string quoted(const Name& name) { return " \"" + name.str() + "\""; }

}  // namespace

std::string_view symbolKindName(SymbolKind kind) {
    switch (kind) {
        case SymbolKind::Block:
            return "block";
        case SymbolKind::DimStyle:
            return "dimension style";
        case SymbolKind::Layer:
            return "layer";
        case SymbolKind::Layout:
            return "layout";
        case SymbolKind::Linetype:
            return "linetype";
        case SymbolKind::MLeaderStyle:
            return "multileader style";
        case SymbolKind::TextStyle:
            return "text style";
        case SymbolKind::TableStyle:
            return "table style";
        case SymbolKind::Ucs:
            return "UCS";
        case SymbolKind::View:
            return "view";
        case SymbolKind::Group:
            return "group";
    }
    return "symbol";
}

bool isValidSymbolName(std::string_view name) {
    constexpr std::size_t maxCharacters = 255;
    if (name.empty() || name.size() > maxCharacters * 4) return false;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) return false;
        if (std::string_view("<>/\\\":;?*|,=`").find(c) != std::string_view::npos) return false;
    }
    return strings::countCharacters(name) <= maxCharacters;
}

std::optional<Name> findSymbol(const Drawing& drawing, SymbolKind kind, Name name) {
    std::optional<Name> found;
    const bool table = withTable(drawing, kind, [&](const auto& records) {
        if (const auto* record = records.find(name)) found = record->name;
    });
    if (table) return found;
    if (kind == SymbolKind::Block) {
        if (const Block* block = drawing.findBlock(name)) found = block->name;
    } else if (const Layout* layout = drawing.findLayout(name)) {
        found = layout->name;
    }
    return found;
}

bool isFixedSymbol(SymbolKind kind, Name name) {
    const CommonNames& names = commonNames();
    if (name.view().find('|') != std::string_view::npos) return true;
    switch (kind) {
        case SymbolKind::Layer:
            return name == names.layerZero;
        case SymbolKind::Linetype:
            return name == names.byLayer || name == names.byBlock || name == names.continuous;
        case SymbolKind::Block:
            return name.view().starts_with('*');
        case SymbolKind::TextStyle:
        case SymbolKind::DimStyle:
        case SymbolKind::MLeaderStyle:
        case SymbolKind::TableStyle:
            return name == names.standard;
        default:
            return false;
    }
}

std::string renameSymbol(Drawing& drawing, SymbolKind kind, Name from, Name to) {
    const std::optional<Name> known = findSymbol(drawing, kind, from);
    if (!known) return capitalized(kind) + quoted(from) + " not found.";
    if (isFixedSymbol(kind, from)) return capitalized(kind) + quoted(*known) + " cannot be renamed.";
    const bool reserved = (kind == SymbolKind::Layout && to == "Model") || (kind == SymbolKind::Ucs && to == "World");
    if (reserved || !isValidSymbolName(to.view()))
        return "Invalid " + std::string(symbolKindName(kind)) + " name" + quoted(to) + ".";
    const std::optional<Name> taken = findSymbol(drawing, kind, to);
    if (taken && !(*taken == *known)) return capitalized(kind) + quoted(*taken) + " already exists.";
    renameSymbolUnchecked(drawing, kind, from, to);
    return {};
}

namespace {

/// The record alone; what refers to it is the caller's.
bool renameRecord(Drawing& drawing, const SymbolRename& rename) {
    if (rename.kind == SymbolKind::Block) return drawing.renameBlock(rename.from, rename.to);
    if (rename.kind == SymbolKind::Layout) return drawing.renameLayout(rename.from, rename.to);
    bool renamed = false;
    withTable(drawing, rename.kind, [&](auto& table) { renamed = table.rename(rename.from, rename.to); });
    return renamed;
}

}  // namespace

bool renameSymbolUnchecked(Drawing& drawing, SymbolKind kind, Name from, Name to) {
    std::vector<SymbolRename> one;
    one.push_back({kind, from, to});
    renameSymbolsUnchecked(drawing, one);
    return !one.empty();
}

void renameSymbolsUnchecked(Drawing& drawing, std::vector<SymbolRename>& renames) {
    std::erase_if(renames, [&](const SymbolRename& rename) { return !renameRecord(drawing, rename); });
    if (renames.empty()) return;
    Renamer renamer(renames);
    SymbolKinds kinds = 0;
    for (const SymbolRename& rename : renames) kinds |= symbolBit(rename.kind);
    visitReferences(drawing, kinds, renamer);
}

std::size_t countReferences(const Drawing& drawing, SymbolKind kind, Name name) {
    Counter counter(name);
    visitReferences(const_cast<Drawing&>(drawing), symbolBit(kind), counter);  // the counter only looks
    return counter.count();
}

ReferenceCounts::ReferenceCounts(const Drawing& drawing) {
    Tally tally(counts_);
    visitReferences(const_cast<Drawing&>(drawing), kAllSymbolKinds, tally);  // the tally only looks
}

std::size_t ReferenceCounts::of(SymbolKind kind, Name name) const {
    const auto& counts = counts_[static_cast<std::size_t>(kind)];
    const auto it = counts.find(name.key());
    return it == counts.end() ? 0 : it->second;
}

}  // namespace kova::engine
