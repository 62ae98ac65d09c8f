#include "engine/symbols/symbol_references.hpp"

#include <array>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/model/idle_visitor.hpp"

namespace kova::engine {

namespace {

/// The kind of record that a name-valued dimension variable refers to.
std::optional<SymbolKind> kindOfDimVariable(std::string_view variable) {
    static constexpr std::pair<std::string_view, SymbolKind> kinds[] = {
        {"DIMBLK", SymbolKind::Block},      {"DIMBLK1", SymbolKind::Block},      {"DIMBLK2", SymbolKind::Block},
        {"DIMLDRBLK", SymbolKind::Block},   {"DIMTXSTY", SymbolKind::TextStyle}, {"DIMLTYPE", SymbolKind::Linetype},
        {"DIMLTEX1", SymbolKind::Linetype}, {"DIMLTEX2", SymbolKind::Linetype},  {"DIMSTYLE", SymbolKind::DimStyle}};
    for (const auto& [name, kind] : kinds)
        if (name == variable) return kind;
    return std::nullopt;
}

/// Passes on what the sink asked for.
class Reporter {
public:
    Reporter(SymbolKinds kinds, ReferenceSink& sink) : kinds_(kinds), sink_(sink) {}

    bool wants(SymbolKind kind) const { return (kinds_ & symbolBit(kind)) != 0; }
    bool wantsAny(SymbolKinds kinds) const { return (kinds_ & kinds) != 0; }
    void operator()(SymbolKind kind, Name& name, ReferenceStrength strength = ReferenceStrength::Hard) {
        if (wants(kind) && !name.empty()) sink_.name(kind, name, strength);
    }
    void operator()(SymbolKind kind, std::string& name, ReferenceStrength strength = ReferenceStrength::Hard) {
        if (wants(kind) && !name.empty()) sink_.text(kind, name, strength);
    }
    void dimOverrides(std::map<std::string, std::string>& overrides) {
        for (auto& [variable, value] : overrides)
            if (const auto kind = kindOfDimVariable(variable)) (*this)(*kind, value);
    }

private:
    SymbolKinds kinds_;
    ReferenceSink& sink_;
};

/// Finds the references among an entity's own fields by their keys, which mean the same in all kinds of entities.
class FieldReferences final : public IdleVisitor {
public:
    explicit FieldReferences(Reporter& report) : report_(report) {}
    void visit(Entity& entity) {
        type_ = entity.type();
        entity.describe(*this);
    }

protected:
    void onName(const Field& f, Name& v) override {
        if (const auto kind = kindOf(f.key)) report_(*kind, v);
    }
    void onText(const Field& f, std::string& v) override {
        if (const auto kind = kindOf(f.key)) report_(*kind, v);
    }
    void onNames(const Field& f, std::vector<Name>& v) override {
        if (f.key != "vpFrozenLayers") return;
        for (Name& name : v) report_(SymbolKind::Layer, name, ReferenceStrength::Soft);
    }
    void onTextMap(const Field& f, std::map<std::string, std::string>& v) override {
        if (f.key == "nameOverrides") report_.dimOverrides(v);
    }

private:
    std::optional<SymbolKind> kindOf(std::string_view key) const { return referencedKind(type_, key); }

    Reporter& report_;
    EntityType type_ = EntityType::Line;
};

/// Layers that extended data names (group code 1003).
void visitXData(Entity& entity, Reporter& report) {
    const XData* data = entity.xdata();
    if (data == nullptr || !report.wants(SymbolKind::Layer)) return;
    for (XData::Application& application : entity.ensureXdata().applications)
        for (XDataItem& item : application.items)
            if (item.code == 1003)
                if (auto* text = std::get_if<std::string>(&item.value)) report(SymbolKind::Layer, *text);
}

void visit(Entity& entity, Reporter& report, FieldReferences& fields) {
    report(SymbolKind::Layer, entity.layer);
    report(SymbolKind::Linetype, entity.linetype);
    visitXData(entity, report);
    fields.visit(entity);
    // The picture's block is no field of the dimension: files of other programs bring it along.
    if (entity.type() == EntityType::Dimension)
        report(SymbolKind::Block, static_cast<DimensionEntity&>(entity).blockName);
}

void visitEntities(EntityList& list, Reporter& report, FieldReferences& fields) {
    for (Entity& entity : list) visit(entity, report, fields);
}

void visit(Layer& layer, Reporter& report) { report(SymbolKind::Linetype, layer.linetype); }

void visit(Linetype& linetype, Reporter& report) {
    for (LinetypeElement& element : linetype.elements) report(SymbolKind::TextStyle, element.style);
}

void visit(DimStyle& style, Reporter& report) {
    report(SymbolKind::TextStyle, style.textStyle);
    for (Name* block : {&style.arrowBlock, &style.arrowBlock1, &style.arrowBlock2, &style.leaderArrowBlock})
        report(SymbolKind::Block, *block);
    for (Name* linetype : {&style.dimLineLinetype, &style.extLine1Linetype, &style.extLine2Linetype})
        report(SymbolKind::Linetype, *linetype);
}

void visit(MLeaderStyle& style, Reporter& report) {
    report(SymbolKind::TextStyle, style.textStyle);
    report(SymbolKind::Linetype, style.leaderLinetype);
    report(SymbolKind::Block, style.arrowBlock);
    report(SymbolKind::Block, style.block);
}

void visit(TableStyle& style, Reporter& report) { report(SymbolKind::TextStyle, style.textStyle); }

void visitStyles(Drawing& drawing, Reporter& report) {
    for (Linetype& linetype : drawing.linetypes) visit(linetype, report);
    for (DimStyle& style : drawing.dimStyles) visit(style, report);
    for (MLeaderStyle& style : drawing.mleaderStyles) visit(style, report);
    for (TableStyle& style : drawing.tableStyles) visit(style, report);
}

void visitLayers(Drawing& drawing, Reporter& report) {
    for (Layer& layer : drawing.layers) visit(layer, report);
    for (LayerFilter& filter : drawing.layerFilters)
        for (Name& member : filter.members) report(SymbolKind::Layer, member, ReferenceStrength::Soft);
    for (LayerState& state : drawing.layerStates)
        for (auto& [layer, entry] : state.layers) {
            report(SymbolKind::Layer, layer, ReferenceStrength::Soft);
            report(SymbolKind::Linetype, entry.linetype, ReferenceStrength::Soft);
        }
}

void visitSettings(Drawing& drawing, Reporter& report) {
    report(SymbolKind::Layer, drawing.currentLayer);
    report(SymbolKind::Linetype, drawing.currentLinetype);
    report(SymbolKind::TextStyle, drawing.currentTextStyle);
    report(SymbolKind::DimStyle, drawing.currentDimStyle);
    report(SymbolKind::MLeaderStyle, drawing.currentMLeaderStyle);
    report(SymbolKind::TableStyle, drawing.currentTableStyle);
    report(SymbolKind::Ucs, drawing.currentUcs);
    report(SymbolKind::Ucs, drawing.ucs.name, ReferenceStrength::Soft);
    report(SymbolKind::View, drawing.currentView.name, ReferenceStrength::Soft);
    report(SymbolKind::Layout, drawing.activeLayoutName);
    report.dimOverrides(drawing.dimStyleNameOverrides);
    // Variables that preset the layer, linetype or block of new objects.
    static constexpr std::pair<std::string_view, SymbolKind> variables[] = {
        {"CENTERLAYER", SymbolKind::Layer}, {"DIMLAYER", SymbolKind::Layer},  {"HPLAYER", SymbolKind::Layer},
        {"TEXTLAYER", SymbolKind::Layer},   {"XREFLAYER", SymbolKind::Layer}, {"CENTERLTYPE", SymbolKind::Linetype},
        {"INSNAME", SymbolKind::Block}};
    for (const auto& [variable, kind] : variables)
        if (const auto it = drawing.stringVariables.find(variable); it != drawing.stringVariables.end())
            report(kind, it->second, ReferenceStrength::Soft);
}

}  // namespace

std::optional<SymbolKind> referencedKind(EntityType type, std::string_view key) {
    if (key == "textStyle") return SymbolKind::TextStyle;
    if (key == "blockName" || key == "arrowBlock") return SymbolKind::Block;
    if (key == "dimStyleName") return SymbolKind::DimStyle;
    if (key == "layer") return SymbolKind::Layer;
    if (key == "linetype") return SymbolKind::Linetype;
    if (key != "styleName") return std::nullopt;
    switch (type) {
        case EntityType::MLeader:
            return SymbolKind::MLeaderStyle;
        case EntityType::Table:
            return SymbolKind::TableStyle;
        case EntityType::Tolerance:
        case EntityType::Leader:
        case EntityType::Dimension:
            return SymbolKind::DimStyle;
        default:
            return std::nullopt;
    }
}

void visitReferences(Drawing& drawing, SymbolKinds kinds, ReferenceSink& sink) {
    Reporter report(kinds, sink);
    constexpr SymbolKinds fieldKinds = symbolBit(SymbolKind::Block) | symbolBit(SymbolKind::DimStyle) |
                                       symbolBit(SymbolKind::Layer) | symbolBit(SymbolKind::Linetype) |
                                       symbolBit(SymbolKind::MLeaderStyle) | symbolBit(SymbolKind::TextStyle) |
                                       symbolBit(SymbolKind::TableStyle);
    if (report.wantsAny(fieldKinds)) {
        FieldReferences fields(report);
        visitEntities(drawing.modelSpace(), report, fields);
        for (const auto& layout : drawing.layouts()) visitEntities(layout->entities, report, fields);
        for (const auto& block : drawing.blocks()) visitEntities(block->entities, report, fields);
        if (Block* edited = drawing.editedBlock()) visitEntities(edited->entities, report, fields);
    }
    visitStyles(drawing, report);
    visitLayers(drawing, report);
    visitSettings(drawing, report);
}

namespace {

template <class Record>
void visitRecord(Record& record, ReferenceSink& sink) {
    Reporter report(kAllSymbolKinds, sink);
    visit(record, report);
}

}  // namespace

void visitReferences(Layer& layer, ReferenceSink& sink) { visitRecord(layer, sink); }
void visitReferences(Linetype& linetype, ReferenceSink& sink) { visitRecord(linetype, sink); }
void visitReferences(DimStyle& style, ReferenceSink& sink) { visitRecord(style, sink); }
void visitReferences(MLeaderStyle& style, ReferenceSink& sink) { visitRecord(style, sink); }
void visitReferences(TableStyle& style, ReferenceSink& sink) { visitRecord(style, sink); }

void visitReferences(Entity& entity, ReferenceSink& sink) {
    Reporter report(kAllSymbolKinds, sink);
    FieldReferences fields(report);
    visit(entity, report, fields);
}

}  // namespace kova::engine
