#include "engine/model/layer.hpp"

namespace kova::engine {

bool Layer::isInternal() const {
    std::string_view text = name.view();
    // A layer of an external reference stands behind its file's name.
    if (const std::size_t bar = text.rfind('|'); bar != std::string_view::npos) text.remove_prefix(bar + 1);
    constexpr std::string_view kMark = "ADSK_";
    const bool starred = text.starts_with('*');
    if (starred) text.remove_prefix(1);
    if (text.size() < kMark.size() || !equalNoCase(text.substr(0, kMark.size()), kMark)) return false;
    if (starred) return true;
    // Files before R2007 have the names without the star, which names of their kind may not begin with.
    for (const std::string_view known : {"ADSK_CONSTRAINTS", "ADSK_ASSOC_ENTITY_BACKUPS", "ADSK_SYSTEM_LIGHTS"})
        if (equalNoCase(text, known)) return true;
    return false;
}

void Layer::describe(FieldVisitor& v) {
    v.name("name", name);
    v.color("color", color);
    v.integer("lineweight", lineweight);
    v.boolean("frozen", frozen);
    v.boolean("locked", locked);
    v.boolean("plottable", plottable);
    v.integer("transparency", transparency);
    v.text("description", description);
    v.name("linetype", linetype);
    v.name("plotStyleName", plotStyleName);
    v.boolean("on", on, true);
}

void LayerFilter::describe(FieldVisitor& v) {
    v.name("name", name);
    std::string type = kind == LayerFilterKind::Group ? "group" : "property";
    v.text("type", type);
    if (v.reading()) kind = type == "group" ? LayerFilterKind::Group : LayerFilterKind::Property;
    v.text("parent", parent);
    // A filter keeps what belongs to its kind; a reader takes whatever is there.
    if (kind == LayerFilterKind::Property || v.reading()) {
        v.text("expression", expression, "");
        v.text("namePattern", namePattern, "");
        v.text("onFilter", onFilter, "");
        v.text("frozenFilter", frozenFilter, "");
        v.text("lockedFilter", lockedFilter, "");
        v.text("colorFilter", colorFilter, "");
    }
    if (kind == LayerFilterKind::Group) v.names("members", members);
}

void LayerStateEntry::describe(FieldVisitor& v) {
    v.boolean("frozen", frozen);
    v.boolean("locked", locked);
    v.boolean("plottable", plottable);
    v.color("color", color);
    v.integer("lineweight", lineweight);
    v.integer("transparency", transparency);
    v.name("linetype", linetype);
    v.text("description", description);
    v.name("plotStyle", plotStyle);
    v.boolean("on", on, true);
}

void LayerStateMask::describe(FieldVisitor& v) {
    v.boolean("on", on);
    v.boolean("frozen", frozen);
    v.boolean("locked", locked);
    v.boolean("plottable", plottable);
    v.boolean("color", color);
    v.boolean("lineweight", lineweight);
    v.boolean("transparency", transparency);
    v.boolean("linetype", linetype);
    v.boolean("description", description);
    v.boolean("plotStyle", plotStyle);
}

}  // namespace kova::engine
