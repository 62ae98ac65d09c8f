#include "engine/entities/attribute_definition.hpp"

#include "engine/entities/block_reference.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/entity_list.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

TextLineFields fieldsOf(AttributeDefinitionEntity& a) {
    return {a.insertion, a.fitEnd,      a.hasSecondPoint(), a.textHeight,
            a.rotation,  a.widthFactor, a.oblique,          a.generation, &a.width};
}

}  // namespace

TextLine AttributeDefinitionEntity::line() const {
    return {constant && !defaultValue.empty() ? defaultValue : tag,
            insertion,
            fitEnd,
            hasSecondPoint(),
            textHeight,
            rotation,
            hAlign,
            vAlign,
            textStyle,
            widthFactor,
            oblique,
            generation,
            multiline,
            width};
}

math::Bounds2 AttributeDefinitionEntity::bounds() const {
    if (inWorldPlane(*this)) return textLineBounds(line(), drawing());
    return outlineBounds(*this);
}

void AttributeDefinitionEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    transformTextLine(fieldsOf(*this), plane);
}

Vector2 AttributeDefinitionEntity::nearestPoint(const Vector2& p) const {
    const auto inPlane = objectFromPlan(*this, p);
    return inPlane ? planFromObject(*this, nearestOnTextLine(line(), drawing(), *inPlane))
                   : planFromObject(*this, insertion);
}

double AttributeDefinitionEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

std::vector<Vector2> AttributeDefinitionEntity::gripPoints() const {
    std::vector<Vector2> grips = textLineGrips(line(), drawing());
    for (Vector2& g : grips) g = planFromObject(*this, g);
    return grips;
}

void AttributeDefinitionEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (const auto inPlane = objectFromPlan(*this, to))
        moveTextLineGrip(fieldsOf(*this), line(), drawing(), index, *inPlane);
}

void AttributeDefinitionEntity::describe(FieldVisitor& v) {
    v.text("tag", tag);
    v.text("prompt", prompt);
    v.text("defaultValue", defaultValue);
    v.point("insertion", insertion);
    v.length("textHeight", textHeight);
    v.angle("rotation", rotation);
    v.name("textStyle", textStyle);
    v.boolean("invisible", invisible);
    v.boolean("constant", constant);
    v.boolean("verify", verify);
    v.boolean("preset", preset);
    v.boolean("locked", locked, false);
    v.boolean("multiline", multiline, false);
    v.length("width", width, 0.0);
    v.integer("hAlign", hAlign);
    v.integer("vAlign", vAlign);
    v.integer("generation", generation);
    v.number("widthFactor", widthFactor);
    v.angle("oblique", oblique);
    bool two = hasSecondPoint();
    v.boolean("fit", two, false);
    if (v.reading()) fit = two;
    if (two || v.reading()) v.point("fitEnd", fitEnd);
}

void AttributeDefinitionEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitFromObjectPlane(*this, sink, [&](OutlineSink& s) { emitTextLine(line(), drawing(), s, style); });
}

std::size_t AttributeDefinitionEntity::sizeInBytes() const {
    return sizeof *this + tag.capacity() + prompt.capacity() + defaultValue.capacity() + extrasSize();
}

std::vector<const AttributeDefinitionEntity*> attributeDefinitions(const EntityList& contents) {
    std::vector<const AttributeDefinitionEntity*> found;
    for (const Entity& entity : contents) {
        if (entity.type() != EntityType::AttributeDefinition) continue;
        const auto& definition = static_cast<const AttributeDefinitionEntity&>(entity);
        if (!definition.constant) found.push_back(&definition);
    }
    return found;
}

BlockAttribute makeAttribute(const AttributeDefinitionEntity& definition, const math::Matrix4& placement,
                             std::string value, const Drawing& drawing) {
    AttributeDefinitionEntity placed(definition);
    placed.transform(placement);
    BlockAttribute attribute;
    attribute.tag = definition.tag;
    attribute.value = std::move(value);
    attribute.position = placed.insertion;
    attribute.textHeight = placed.textHeight;
    attribute.rotation = placed.rotation;
    attribute.textStyle = placed.textStyle;
    attribute.invisible = placed.invisible;
    attribute.layer = placed.layer;
    attribute.color = placed.color;
    attribute.hAlign = placed.hAlign;
    attribute.vAlign = placed.vAlign;
    attribute.generation = placed.generation;
    attribute.widthFactor = placed.widthFactor;
    attribute.oblique = placed.oblique;
    attribute.locked = placed.locked;
    attribute.multiline = placed.multiline;
    attribute.width = placed.width;
    if (!placed.hasSecondPoint()) return attribute;
    TextLine line = placed.line();
    line.content = attribute.value;
    const TextLinePlacement at = placeTextLine(line, &drawing);
    attribute.hAlign = kHAlignLeft;
    attribute.vAlign = kVAlignBaseline;
    attribute.rotation = (placed.fitEnd - placed.insertion).angle();
    if (attribute.multiline) {
        attribute.width = (placed.fitEnd - placed.insertion).length();
        return attribute;
    }
    const double height = at.yAxis.length();
    if (!at.valid || !(height > 0.0)) return attribute;
    attribute.position = at.origin;
    attribute.textHeight = height;
    attribute.widthFactor = at.xAxis.length() / height;
    return attribute;
}

}  // namespace kova::engine
