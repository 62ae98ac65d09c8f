#include "engine/model/records.hpp"

namespace kova::engine {

namespace {

/// Dictionaries nested deeper than this are cut off: only a damaged file holds such.
constexpr int kMaxDictionaryDepth = 64;
thread_local int dictionaryDepth = 0;

}  // namespace

void Group::describe(FieldVisitor& v) {
    v.name("name", name);
    v.text("description", description);
    v.boolean("selectable", selectable);
    v.handles("memberHandles", memberHandles);
}

math::Vector2 Ucs::fromWorld(const math::Vector2& p) const {
    const double determinant = xAxis.cross(yAxis);
    if (!(std::abs(determinant) > 1e-12)) return p;
    const math::Vector2 d = p - origin;
    return {d.cross(yAxis) / determinant, xAxis.cross(d) / determinant};
}

void Ucs::describe(FieldVisitor& v) {
    v.name("name", name);
    v.point("origin", origin);
    v.point("xAxis", xAxis);
    v.point("yAxis", yAxis);
}

void NamedView::describe(FieldVisitor& v) {
    v.name("name", name);
    v.point("center", center);
    v.length("width", width);
    v.length("height", height);
    v.number("zoom", zoom);
    v.pointObject("viewDirection", viewDirection);
    v.pointObject("target", target);
    v.pointObject("upHint", upHint);
}

void AnnotationScale::describe(FieldVisitor& v) {
    v.name("name", name);
    v.number("paperUnits", paperUnits);
    v.number("drawingUnits", drawingUnits);
}

void PageSetup::describe(FieldVisitor& v) {
    // A layout's own page setup has no name.
    v.name("name", name, "");
    v.number("paperWidth", paperWidth);
    v.number("paperHeight", paperHeight);
    v.integer("paperUnits", paperUnits, 1);
    v.boolean("landscape", landscape);
    v.number("marginLeft", marginLeft);
    v.number("marginRight", marginRight);
    v.number("marginTop", marginTop);
    v.number("marginBottom", marginBottom);
    v.text("plotDevice", plotDevice);
    v.text("paperSizeName", paperSizeName);
    v.integer("plotArea", plotArea);
    v.integer("scaleType", scaleType);
    v.number("scalePaper", scalePaper);
    v.number("scaleDrawing", scaleDrawing);
    v.number("offsetX", offsetX);
    v.number("offsetY", offsetY);
    v.boolean("centerOnPage", centerOnPage);
    v.text("plotStyleTable", plotStyleTable);
    v.boolean("plotWithLineweights", plotWithLineweights);
    v.boolean("plotTransparency", plotTransparency);
    v.integer("dpi", dpi);
}

void HatchFamily::describe(FieldVisitor& v) {
    v.angle("angle", angle);
    v.point("origin", origin);
    v.point("shift", shift);
    v.numbers("dashes", dashes, true);
}

void HatchPattern::describe(FieldVisitor& v) {
    v.name("name", name);
    v.text("description", description);
    v.objects("families", families);
}

void DictionaryEntry::describe(FieldVisitor& v) {
    v.name("name", name);
    v.text("type", type);
    v.optionalHandle("handle", handle);
    v.texts("data", data, true);
    if (dictionaryDepth >= kMaxDictionaryDepth) return;
    struct Deeper {
        Deeper() { ++dictionaryDepth; }
        ~Deeper() { --dictionaryDepth; }
    } deeper;
    v.objects("entries", entries, true);
}

}  // namespace kova::engine
