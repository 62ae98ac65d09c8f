#include <cmath>
#include <unordered_set>

#include "engine/audit/audit.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/model/idle_visitor.hpp"

namespace kova::engine {

namespace {

/// Takes note of the numbers of a record that is in order.
class DefaultNumbers final : public IdleVisitor {
public:
    std::map<std::string, double, std::less<>> numbers;

protected:
    void onNumber(const Field& f, double& v) override { numbers.emplace(f.key, v); }
};

/// Numbers of a record that are not finite become those of a fresh record.
template <class Record>
class NumberAudit final : public IdleVisitor {
public:
    explicit NumberAudit(Auditor& auditor) : auditor_(auditor) {}

protected:
    void onNumber(const Field& f, double& v) override {
        if (!std::isfinite(v)) auditor_.finite(v, fallback(f), f.key);
    }
    void onPointObject(const Field& f, math::Vector2& v) override { onPoint(f, v); }
    void onPoint(const Field& f, math::Vector2& v) override {
        auditor_.finite(v.x, 0.0, f.key);
        auditor_.finite(v.y, 0.0, f.key);
    }
    void onPointObject3(const Field& f, math::Vector3& v) override { onPoint3(f, v); }
    void onPoint3(const Field& f, math::Vector3& v) override {
        auditor_.finite(v.x, 0.0, f.key);
        auditor_.finite(v.y, 0.0, f.key);
        auditor_.finite(v.z, 0.0, f.key);
    }
    void onNumbers(const Field& f, std::vector<double>& v) override {
        for (double& number : v) auditor_.finite(number, 0.0, f.key);
    }

private:
    double fallback(const Field& f) const {
        if (f.optional) return f.fallback;
        if constexpr (requires(Record fresh, DefaultNumbers v) { fresh.describe(v); }) {
            Record fresh;
            DefaultNumbers defaults;
            fresh.describe(defaults);
            if (const auto it = defaults.numbers.find(f.key); it != defaults.numbers.end()) return it->second;
        }
        return 0.0;
    }

    Auditor& auditor_;
};

const Name& standard() { return commonNames().standard; }

/// An arrow head's block: a standard one, or one that the drawing holds.
void arrow(Auditor& a, Name& name, std::string_view what) {
    if (arrowKind(name.view()) == ArrowKind::User) a.reference(SymbolKind::Block, name, Name(), what);
}

/// Layers that a list names and the drawing has lost.
template <class List, class LayerOf>
void knownLayers(Auditor& a, List& list, LayerOf layerOf) {
    const auto unknown = [&](const auto& entry) { return !a.drawing().layers.contains(layerOf(entry)); };
    const auto count = std::count_if(list.begin(), list.end(), unknown);
    if (count == 0) return;
    a.note("names " + std::to_string(count) + " missing layers", "taken out");
    if (a.mending()) std::erase_if(list, unknown);
}

void above0(Auditor& a, double& v, std::string_view what) {
    if (v > 0.0) return;
    a.note(std::string(what) + " is not above 0", "set to 1");
    if (a.mending()) v = 1.0;
}

// What a record refers to, and its values that have bounds.
void audit(Auditor& a, Layer& layer) {
    a.reference(SymbolKind::Linetype, layer.linetype, commonNames().continuous, "linetype");
    if (layer.lineweight < -3 || layer.lineweight > 211) {
        a.note("lineweight " + std::to_string(layer.lineweight) + " is out of range", "set to default");
        if (a.mending()) layer.lineweight = -3;
    }
    if (layer.transparency < 0 || layer.transparency > 90) {
        a.note("transparency " + std::to_string(layer.transparency) + " is out of range", "set to 0");
        if (a.mending()) layer.transparency = 0;
    }
}
void audit(Auditor& a, LayerFilter& filter) {
    knownLayers(a, filter.members, [](Name name) { return name; });
}
void audit(Auditor& a, LayerState& state) {
    knownLayers(a, state.layers, [](const auto& entry) { return entry.first; });
    for (auto& [layer, entry] : state.layers)
        a.reference(SymbolKind::Linetype, entry.linetype, commonNames().continuous, "linetype");
}
void audit(Auditor& a, Linetype& linetype) {
    for (LinetypeElement& element : linetype.elements)
        a.reference(SymbolKind::TextStyle, element.style, standard(), "text style");
}
void audit(Auditor& a, TextStyle& style) {
    if (style.height < 0.0) {
        a.note("height is below 0", "set to 0");
        if (a.mending()) style.height = 0.0;
    }
    above0(a, style.widthFactor, "width factor");
}
void audit(Auditor& a, DimStyle& style) {
    a.reference(SymbolKind::TextStyle, style.textStyle, standard(), "text style");
    for (Name* block : {&style.arrowBlock, &style.arrowBlock1, &style.arrowBlock2, &style.leaderArrowBlock})
        arrow(a, *block, "arrow block");
    for (Name* linetype : {&style.dimLineLinetype, &style.extLine1Linetype, &style.extLine2Linetype})
        a.reference(SymbolKind::Linetype, *linetype, commonNames().byBlock, "linetype");
}
void audit(Auditor& a, MLeaderStyle& style) {
    a.reference(SymbolKind::TextStyle, style.textStyle, standard(), "text style");
    a.reference(SymbolKind::Linetype, style.leaderLinetype, commonNames().byBlock, "linetype");
    arrow(a, style.arrowBlock, "arrow block");
    a.reference(SymbolKind::Block, style.block, Name(), "block");
}
void audit(Auditor& a, TableStyle& style) {
    a.reference(SymbolKind::TextStyle, style.textStyle, standard(), "text style");
}
void audit(Auditor& a, Group& group) {
    const auto gone = [&](std::uint64_t handle) { return a.drawing().findByHandle(handle) == nullptr; };
    const auto count = std::count_if(group.memberHandles.begin(), group.memberHandles.end(), gone);
    if (count == 0) return;
    a.note(std::to_string(count) + " members are missing", "taken out");
    if (a.mending()) std::erase_if(group.memberHandles, gone);
}
void audit(Auditor& a, Ucs& ucs) {
    if (std::abs(ucs.xAxis.cross(ucs.yAxis)) > 1e-12) return;
    a.note("axes span no plane", "set to those of the world");
    if (!a.mending()) return;
    ucs.xAxis = {1, 0};
    ucs.yAxis = {0, 1};
}
void audit(Auditor& a, AnnotationScale& scale) {
    above0(a, scale.paperUnits, "paper units");
    above0(a, scale.drawingUnits, "drawing units");
}
void audit(Auditor& a, PageSetup& setup) {
    above0(a, setup.scalePaper, "plot scale");
    above0(a, setup.scaleDrawing, "plot scale");
}
template <class Record>
void audit(Auditor&, Record&) {}

template <class Record>
std::string_view nounOf() {
    if constexpr (std::is_same_v<Record, Layer>) return "Layer";
    if constexpr (std::is_same_v<Record, LayerFilter>) return "Layer filter";
    if constexpr (std::is_same_v<Record, LayerState>) return "Layer state";
    if constexpr (std::is_same_v<Record, Linetype>) return "Linetype";
    if constexpr (std::is_same_v<Record, TextStyle>) return "Text style";
    if constexpr (std::is_same_v<Record, DimStyle>) return "Dimension style";
    if constexpr (std::is_same_v<Record, MLeaderStyle>) return "Multileader style";
    if constexpr (std::is_same_v<Record, TableStyle>) return "Table style";
    if constexpr (std::is_same_v<Record, Group>) return "Group";
    if constexpr (std::is_same_v<Record, NamedView>) return "View";
    if constexpr (std::is_same_v<Record, Ucs>) return "UCS";
    if constexpr (std::is_same_v<Record, AnnotationScale>) return "Annotation scale";
    if constexpr (std::is_same_v<Record, PageSetup>) return "Page setup";
    return "Hatch pattern";
}

/// The records that the table of every drawing has.
template <class Record>
std::vector<Name> standardNames() {
    const CommonNames& names = commonNames();
    if constexpr (std::is_same_v<Record, Layer>) return {names.layerZero};
    if constexpr (std::is_same_v<Record, Linetype>) return {names.byLayer, names.byBlock, names.continuous};
    if constexpr (std::is_same_v<Record, TextStyle> || std::is_same_v<Record, DimStyle> ||
                  std::is_same_v<Record, MLeaderStyle> || std::is_same_v<Record, TableStyle>)
        return {names.standard};
    return {};
}

template <class Record>
void auditTable(Auditor& auditor, Table<Record>& table) {
    const std::string noun(nounOf<Record>());
    for (const Name name : standardNames<Record>()) {
        if (table.contains(name)) continue;
        auditor.setSubject(noun + " \"" + name.str() + "\"");
        auditor.note("is missing", "added");
        if (auditor.mending()) table.ensure(name);
    }
    NumberAudit<Record> numbers(auditor);
    for (Record& record : table) {
        auditor.setSubject(noun + " \"" + record.name.str() + "\"");
        if constexpr (!std::is_same_v<Record, LayerState>) record.describe(numbers);
        audit(auditor, record);
    }
}

/// A name made valid: other characters in the place of those that no table may hold, and a number where it is taken.
template <class Taken>
Name validName(Name wrong, Taken taken) {
    std::string text;
    for (const char c : wrong.str()) {
        const bool bad =
            static_cast<unsigned char>(c) < 32 || std::string_view("<>/\\\":;?*|,=`").find(c) != std::string_view::npos;
        if (text.size() < 240) text += bad ? '_' : c;
    }
    if (text.empty()) text = "_";
    std::string name = text;
    for (int i = 1; taken(Name(name)) && i < 100000; ++i) name = text + "_" + std::to_string(i);
    return Name(name);
}

/// Records whose names no table may hold.
template <class Records, class NameOf>
void auditNames(const Drawing& drawing, AuditReport& report, SymbolKind kind, const Records& records, NameOf nameOf) {
    Auditor auditor(drawing, &report, false);
    std::unordered_set<const void*> given;
    for (const auto& record : records) {
        const Name name = nameOf(record);
        if (name.empty() || isValidSymbolName(name.view()) || isFixedSymbol(kind, name)) continue;
        // Groups without a name of their own are *A1, *A2 ...
        if (name.view().front() == '*' && isValidSymbolName(name.view().substr(1))) continue;
        // What comes from a reference carries that one's name.
        if (name.view().find('|') != std::string_view::npos) continue;
        const Name valid = validName(name, [&](Name candidate) {
            return findSymbol(drawing, kind, candidate).has_value() || given.contains(candidate.key());
        });
        given.insert(valid.key());
        auditor.setSubject(std::string(symbolKindName(kind)) + " \"" + name.str() + "\"");
        auditor.note("is no valid name", "renamed to \"" + valid.str() + "\"");
        report.rename.push_back({kind, name, valid});
    }
}

}  // namespace

template <class Record>
void mendRecords(const Drawing& drawing, Table<Record>& table) {
    Auditor auditor(drawing, nullptr, true);
    auditTable(auditor, table);
}
template void mendRecords(const Drawing&, Table<Layer>&);
template void mendRecords(const Drawing&, Table<LayerFilter>&);
template void mendRecords(const Drawing&, Table<LayerState>&);
template void mendRecords(const Drawing&, Table<Linetype>&);
template void mendRecords(const Drawing&, Table<TextStyle>&);
template void mendRecords(const Drawing&, Table<DimStyle>&);
template void mendRecords(const Drawing&, Table<MLeaderStyle>&);
template void mendRecords(const Drawing&, Table<TableStyle>&);
template void mendRecords(const Drawing&, Table<Group>&);
template void mendRecords(const Drawing&, Table<NamedView>&);
template void mendRecords(const Drawing&, Table<Ucs>&);
template void mendRecords(const Drawing&, Table<AnnotationScale>&);
template void mendRecords(const Drawing&, Table<PageSetup>&);
template void mendRecords(const Drawing&, Table<HatchPattern>&);

void auditTables(const Drawing& drawing, AuditReport& report) {
    Auditor auditor(drawing, &report, false);
    const auto look = [&](AuditTable bit, const auto& table) {
        const std::size_t before = auditor.count();
        // Only looked at: nothing is mended.
        auditTable(auditor, const_cast<std::remove_cvref_t<decltype(table)>&>(table));
        if (auditor.count() != before) report.tables |= auditBit(bit);
    };
    look(AuditTable::Layers, drawing.layers);
    look(AuditTable::LayerFilters, drawing.layerFilters);
    look(AuditTable::LayerStates, drawing.layerStates);
    look(AuditTable::Linetypes, drawing.linetypes);
    look(AuditTable::TextStyles, drawing.textStyles);
    look(AuditTable::DimStyles, drawing.dimStyles);
    look(AuditTable::MLeaderStyles, drawing.mleaderStyles);
    look(AuditTable::TableStyles, drawing.tableStyles);
    look(AuditTable::Groups, drawing.groups);
    look(AuditTable::Views, drawing.namedViews);
    look(AuditTable::UcsList, drawing.ucsList);
    look(AuditTable::AnnotationScales, drawing.annotationScales);
    look(AuditTable::PageSetups, drawing.namedPageSetups);
    look(AuditTable::HatchPatterns, drawing.hatchPatterns);

    const auto own = [](const auto& record) { return record.name; };
    const auto pointed = [](const auto& record) { return record->name; };
    auditNames(drawing, report, SymbolKind::Layer, drawing.layers, own);
    auditNames(drawing, report, SymbolKind::Linetype, drawing.linetypes, own);
    auditNames(drawing, report, SymbolKind::TextStyle, drawing.textStyles, own);
    auditNames(drawing, report, SymbolKind::DimStyle, drawing.dimStyles, own);
    auditNames(drawing, report, SymbolKind::MLeaderStyle, drawing.mleaderStyles, own);
    auditNames(drawing, report, SymbolKind::TableStyle, drawing.tableStyles, own);
    auditNames(drawing, report, SymbolKind::Group, drawing.groups, own);
    auditNames(drawing, report, SymbolKind::View, drawing.namedViews, own);
    auditNames(drawing, report, SymbolKind::Ucs, drawing.ucsList, own);
    auditNames(drawing, report, SymbolKind::Block, drawing.blocks(), pointed);
    auditNames(drawing, report, SymbolKind::Layout, drawing.layouts(), pointed);
}

}  // namespace kova::engine
