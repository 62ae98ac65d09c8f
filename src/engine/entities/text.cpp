#include "engine/entities/text.hpp"

#include "engine/model/object_plane.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

TextLineFields fieldsOf(TextEntity& t) {
    return {t.position, t.fitEnd, t.hasSecondPoint(), t.height, t.rotation, t.widthFactor, t.oblique, t.generation};
}

}  // namespace

TextLine TextEntity::line() const {
    return {content, position, fitEnd,    hasSecondPoint(), height,  rotation,
            hAlign,  vAlign,   textStyle, widthFactor,      oblique, generation};
}

math::Bounds2 TextEntity::bounds() const {
    if (inWorldPlane(*this)) return textLineBounds(line(), drawing());
    return outlineBounds(*this);
}

void TextEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    transformTextLine(fieldsOf(*this), plane);
}

Vector2 TextEntity::nearestPoint(const Vector2& p) const {
    const auto inPlane = objectFromPlan(*this, p);
    return inPlane ? planFromObject(*this, nearestOnTextLine(line(), drawing(), *inPlane))
                   : planFromObject(*this, position);
}

double TextEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

std::vector<Vector2> TextEntity::gripPoints() const {
    std::vector<Vector2> grips = textLineGrips(line(), drawing());
    for (Vector2& g : grips) g = planFromObject(*this, g);
    return grips;
}

void TextEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (const auto inPlane = objectFromPlan(*this, to))
        moveTextLineGrip(fieldsOf(*this), line(), drawing(), index, *inPlane);
}

void TextEntity::describe(FieldVisitor& v) {
    v.point("", position);
    v.length("height", height);
    v.angle("rotation", rotation);
    v.text("content", content);
    v.integer("hAlign", hAlign);
    v.integer("vAlign", vAlign);
    bool two = hasSecondPoint();
    v.boolean("fit", two, false);
    if (v.reading()) fit = two;
    if (two || v.reading()) v.point("fitEnd", fitEnd);
    v.name("textStyle", textStyle);
    v.number("widthFactor", widthFactor);
    v.angle("oblique", oblique);
    v.integer("generation", generation);
}

void TextEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitFromObjectPlane(*this, sink, [&](OutlineSink& s) { emitTextLine(line(), drawing(), s, style); });
}

std::size_t TextEntity::sizeInBytes() const { return sizeof *this + content.capacity() + extrasSize(); }

}  // namespace kova::engine
