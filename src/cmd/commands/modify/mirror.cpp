#include <array>

#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// Text in this direction stands upright: it runs to the right, or straight up.
bool upright(double rotation) {
    const Vector2 d = Vector2::from_angle(rotation);
    return d.x > 1e-9 || (d.x > -1e-9 && d.y > 0.0);
}

/// The image's rotation has to turn by half a circle to stand upright (or not) as its original did.
bool turnsRound(double original, double image) { return upright(original) != upright(image); }

double halfTurn(double rotation) { return math::normalizeAngle(rotation + math::kPi); }

Vector2 boxCenter(const std::array<Vector2, 4>& box) { return (box[0] + box[2]) / 2.0; }

/// The middle of a line's box: the extents of its ink would not do, they depend on which way the glyphs stand.
Vector2 lineCenter(const engine::TextLine& line, const engine::Drawing* drawing) {
    const engine::TextLinePlacement placement = engine::placeTextLine(line, drawing);
    return placement.valid ? boxCenter(placement.box()) : line.position;
}

/// Moves a readable text onto the box that its mirror image fills.
void fitOnto(const Vector2& image, const Vector2& center, Vector2& position) {
    const Vector2 by = image - center;
    if (by.is_finite()) position += by;
}

/// TEXT and attribute definitions, whose first point is named differently.
template <class Kind>
void mirrorTextLine(Kind& text, Vector2& position, const math::Matrix4& matrix) {
    const double rotation = text.hasSecondPoint() ? (text.fitEnd - position).angle() : text.rotation;
    const std::int32_t generation = text.generation;
    const double oblique = text.oblique;
    text.transform(matrix);
    const Vector2 image = lineCenter(text.line(), text.drawing());
    const bool two = text.hasSecondPoint();
    const double turned = two ? (text.fitEnd - position).angle() : text.rotation;
    text.generation = generation;
    text.oblique = oblique;
    if (turnsRound(rotation, turned)) {
        text.rotation = halfTurn(text.rotation);
        if (two) std::swap(position, text.fitEnd);
    }
    const Vector2 before = position;
    fitOnto(image, lineCenter(text.line(), text.drawing()), position);
    text.fitEnd += position - before;
}

void mirrorMText(engine::MTextEntity& text, const math::Matrix4& matrix) {
    const double rotation = text.rotation;
    const bool backward = text.backward;
    text.transform(matrix);
    const Vector2 image = boxCenter(text.box());
    text.backward = backward;
    if (turnsRound(rotation, text.rotation)) text.rotation = halfTurn(text.rotation);
    fitOnto(image, boxCenter(text.box()), text.position);
}

/// The block turns over, the texts of its attributes do not.
void mirrorReference(engine::BlockReferenceEntity& reference, const math::Matrix4& matrix) {
    const std::vector<engine::BlockAttribute> before = reference.attributes;
    reference.transform(matrix);
    for (std::size_t i = 0; i < before.size() && i < reference.attributes.size(); ++i) {
        engine::BlockAttribute& a = reference.attributes[i];
        if (a.plane) continue;  // as texts in planes of their own
        const Vector2 image = lineCenter(a.line(), reference.drawing());
        a.generation = before[i].generation;
        a.oblique = before[i].oblique;
        if (turnsRound(before[i].rotation, a.rotation)) a.rotation = halfTurn(a.rotation);
        fitOnto(image, lineCenter(a.line(), reference.drawing()), a.position);
    }
}

/// Kinds with texts that are kept readable. Texts in a plane of their own are mirrored as they stand.
bool keepsReadable(const engine::Entity& entity) {
    if (!engine::inWorldPlane(entity)) return false;
    switch (entity.type()) {
        case engine::EntityType::Text:
        case engine::EntityType::AttributeDefinition:
        case engine::EntityType::MText:
            return true;
        case engine::EntityType::BlockReference:
            return !static_cast<const engine::BlockReferenceEntity&>(entity).attributes.empty();
        default:
            return false;
    }
}

void mirrorReadable(engine::Entity& entity, const math::Matrix4& matrix) {
    if (auto* text = dynamic_cast<engine::TextEntity*>(&entity))
        mirrorTextLine(*text, text->position, matrix);
    else if (auto* definition = dynamic_cast<engine::AttributeDefinitionEntity*>(&entity))
        mirrorTextLine(*definition, definition->insertion, matrix);
    else if (auto* paragraphs = dynamic_cast<engine::MTextEntity*>(&entity))
        mirrorMText(*paragraphs, matrix);
    else if (auto* reference = dynamic_cast<engine::BlockReferenceEntity*>(&entity))
        mirrorReference(*reference, matrix);
}

class MirrorTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer a = co_await ask.point("Specify first point of mirror line:");
        if (!a.isPoint()) co_return;
        Answer b;
        for (;;) {
            b = co_await ask.point("Specify second point of mirror line:", {}, a.point);
            if (!b.isPoint()) co_return;
            if (b.point != a.point) break;
            message("The two points coincide.");
        }
        const bool erase = co_await askYesNo(ask, "Erase source objects? [Yes/No] <N>:", false);
        mirror(selected.ids, math::Matrix4::mirror(a.point, b.point), erase);
    }

private:
    void mirror(const std::vector<std::uint64_t>& ids, const math::Matrix4& matrix, bool erase) {
        const bool readable = engine::sysVarInt(drawing(), "MIRRTEXT") == 0;
        const doc::GroupScope group(document(), "MIRROR");
        // Texts are measured where they stand: outside the drawing they know no style.
        for (engine::Entity* source : entitiesInOrder(document(), ids)) {
            const bool text = readable && keepsReadable(*source);
            const std::vector<std::uint64_t> one{source->id()};
            if (!text) {
                if (erase)
                    document().transformEntities(one, matrix);
                else
                    addCopies(document(), one, matrix);
                continue;
            }
            engine::Entity* image = source;
            if (!erase) {
                const auto added = addCopies(document(), one, math::Matrix4::identity());
                image = added.empty() ? nullptr : drawing().findById(added.front());
            }
            if (image != nullptr)
                document().modifyEntity(*image, [&](engine::Entity& e) { mirrorReadable(e, matrix); });
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Mirror, "MIRROR", "Mirror", "Modify", {"MI"})

}  // namespace kova::cmd::commands
