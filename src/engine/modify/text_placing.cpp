#include "engine/modify/text_placing.hpp"

#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/text/text_line.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// The fields that TEXT and attribute definitions share.
struct LineParts {
    Vector2& position;
    Vector2& fitEnd;
    bool& fit;
    double& height;
    double& rotation;
    std::int32_t& hAlign;
    std::int32_t& vAlign;
    double& widthFactor;
    TextLine line;
};

std::optional<LineParts> lineParts(Entity& entity) {
    if (entity.type() == EntityType::Text) {
        auto& t = static_cast<TextEntity&>(entity);
        return LineParts{t.position, t.fitEnd, t.fit,         t.height, t.rotation,
                         t.hAlign,   t.vAlign, t.widthFactor, t.line()};
    }
    if (entity.type() == EntityType::AttributeDefinition) {
        auto& a = static_cast<AttributeDefinitionEntity&>(entity);
        return LineParts{a.insertion, a.fitEnd, a.fit,         a.textHeight, a.rotation,
                         a.hAlign,    a.vAlign, a.widthFactor, a.line()};
    }
    return std::nullopt;
}

/// Looking changes nothing.
std::optional<LineParts> lineParts(const Entity& entity) { return lineParts(const_cast<Entity&>(entity)); }

const MTextEntity* multiline(const Entity& entity) {
    return entity.type() == EntityType::MText ? &static_cast<const MTextEntity&>(entity) : nullptr;
}

/// A line under another justification, its letters where they stand.
TextLine justified(TextLine line, std::int32_t hAlign, std::int32_t vAlign, const Drawing* drawing) {
    const TextLinePlacement before = placeTextLine(line, drawing);
    if (before.valid && line.hasSecondPoint) {
        const Vector2 along = before.xAxis.normalized();
        const double height = std::abs(along.cross(before.yAxis));
        line.rotation = (line.secondPoint - line.position).angle();
        line.height = height;
        line.widthFactor = before.xAxis.length() / height;
    }
    line.hasSecondPoint = false;
    line.hAlign = hAlign;
    line.vAlign = vAlign;
    if (!before.valid) return line;
    if ((hAlign == kHAlignAligned || hAlign == kHAlignFit) && !before.vertical) {
        line.position = before.origin + before.xAxis * before.start;
        line.secondPoint = before.origin + before.xAxis * before.end;
        if ((line.generation & kTextBackward) != 0) std::swap(line.position, line.secondPoint);
        line.hasSecondPoint = true;
        return line;
    }
    line.position += before.origin - placeTextLine(line, drawing).origin;
    return line;
}

/// Attachment of multiline text for a justification of lines.
std::int32_t attachmentFor(std::int32_t now, std::int32_t hAlign, std::int32_t vAlign) {
    std::int32_t row = (std::clamp(now, 1, 9) - 1) / 3;
    if (vAlign == kVAlignTop) row = 0;
    if (vAlign == kVAlignMiddle || hAlign == kHAlignMiddle) row = 1;
    if (vAlign == kVAlignBottom) row = 2;
    const std::int32_t column = hAlign == kHAlignCenter || hAlign == kHAlignMiddle ? 1 : hAlign == kHAlignRight ? 2 : 0;
    return row * 3 + column + 1;
}

Vector2 attachmentPoint(const MTextEntity& text, std::int32_t attachment) {
    const std::array<Vector2, 4> box = text.box();
    const double across = ((attachment - 1) % 3) / 2.0;
    const double up = (2 - (attachment - 1) / 3) / 2.0;
    return box[0] + (box[1] - box[0]) * across + (box[3] - box[0]) * up;
}

}  // namespace

bool isPlacedText(const Entity& entity) { return multiline(entity) != nullptr || lineParts(entity).has_value(); }

std::optional<std::array<Vector2, 4>> letterBox(const Entity& entity) {
    std::array<Vector2, 4> box;
    if (const auto parts = lineParts(entity)) {
        const TextLinePlacement place = placeTextLine(parts->line, entity.drawing());
        if (!place.valid) return std::nullopt;
        box = place.box();
        const double generation = parts->line.generation;
        if (generation != 0) {  // corners by where they lie, not by the letters' own axes
            const Vector2 along = Vector2::from_angle(readingAngle(entity));
            if ((box[1] - box[0]).dot(along) < 0.0) {
                std::swap(box[0], box[1]);
                std::swap(box[2], box[3]);
            }
            if ((box[3] - box[0]).dot(along.perpendicular()) < 0.0) {
                std::swap(box[0], box[3]);
                std::swap(box[1], box[2]);
            }
        }
    } else if (const MTextEntity* text = multiline(entity)) {
        const MTextBlock block = text->block();
        const math::Bounds2 ink = layoutMText(block, entity.drawing()).ink(math::Matrix4::identity());
        if (ink.is_empty()) return std::nullopt;
        const math::Matrix4 m = mtextMatrix(block);
        box = {m.transform_point(ink.min), m.transform_point(Vector2{ink.max.x, ink.min.y}), m.transform_point(ink.max),
               m.transform_point(Vector2{ink.min.x, ink.max.y})};
    } else {
        return std::nullopt;
    }
    for (const Vector2& p : box)
        if (!p.is_finite()) return std::nullopt;
    return box;
}

double letterHeight(const Entity& entity) {
    if (const MTextEntity* text = multiline(entity)) return text->height;
    const auto parts = lineParts(entity);
    if (!parts) return 0.0;
    if (parts->line.hAlign != kHAlignAligned) return parts->height;
    const TextLinePlacement place = placeTextLine(parts->line, entity.drawing());
    return place.valid ? std::abs(place.xAxis.normalized().cross(place.yAxis)) : parts->height;
}

double readingAngle(const Entity& entity) {
    if (const MTextEntity* text = multiline(entity)) return text->rotation;
    const auto parts = lineParts(entity);
    if (!parts) return 0.0;
    const Vector2 across = parts->line.secondPoint - parts->line.position;
    return parts->line.hasSecondPoint && across.length() > math::kTolerance ? across.angle() : parts->rotation;
}

Vector2 textAnchor(const Entity& entity) {
    if (const MTextEntity* text = multiline(entity)) return text->position;
    const auto parts = lineParts(entity);
    return parts ? parts->position : Vector2{};
}

Vector2 textAnchorAs(const Entity& entity, std::int32_t hAlign, std::int32_t vAlign) {
    if (const MTextEntity* text = multiline(entity))
        return attachmentPoint(*text, attachmentFor(text->attachment, hAlign, vAlign));
    const auto parts = lineParts(entity);
    return parts ? justified(parts->line, hAlign, vAlign, entity.drawing()).position : Vector2{};
}

void justifyText(Entity& entity, std::int32_t hAlign, std::int32_t vAlign) {
    if (entity.type() == EntityType::MText) {
        auto& text = static_cast<MTextEntity&>(entity);
        const std::int32_t attachment = attachmentFor(text.attachment, hAlign, vAlign);
        text.position = attachmentPoint(text, attachment);
        text.attachment = attachment;
    } else if (const auto parts = lineParts(entity)) {
        const TextLine line = justified(parts->line, hAlign, vAlign, entity.drawing());
        parts->position = line.position;
        parts->fitEnd = line.hasSecondPoint ? line.secondPoint : Vector2{};
        parts->fit = line.hasSecondPoint;
        parts->height = line.height;
        parts->rotation = line.rotation;
        parts->widthFactor = line.widthFactor;
        parts->hAlign = line.hAlign;
        parts->vAlign = line.vAlign;
    }
}

void scaleText(Entity& entity, double factor, const Vector2& base) {
    const double elevation = entity.elevation;
    entity.transform(math::Matrix4::scaling_about(base, factor));
    entity.elevation = elevation;
}

bool readsUpsideDown(const Entity& entity) {
    constexpr double kSame = 1e-9;
    const double angle = math::normalizeAngle(readingAngle(entity));
    return isPlacedText(entity) && angle > math::kPi / 2.0 + kSame && angle <= 1.5 * math::kPi + kSame;
}

void turnAround(Entity& entity) {
    if (const auto box = letterBox(entity))
        entity.transform(math::Matrix4::rotation_about((*box)[0].lerp((*box)[2], 0.5), math::kPi));
}

bool fitTextLine(Entity& entity, const Vector2& start, const Vector2& end) {
    const auto parts = lineParts(entity);
    const auto box = letterBox(entity);
    if (!parts || !box) return false;
    const Drawing* drawing = entity.drawing();
    const TextLinePlacement place = placeTextLine(parts->line, drawing);
    const Vector2 along = Vector2::from_angle(readingAngle(entity));
    const double wanted = (end - start).dot(along);
    const double now = (place.end - place.start) * place.xAxis.length();
    if (place.vertical || !(now > 0.0) || !(wanted > 0.0) || !std::isfinite(wanted / now)) return false;
    if (parts->line.hasSecondPoint) {
        parts->position = start;
        parts->fitEnd = start + along * wanted;
        return true;
    }
    parts->widthFactor *= wanted / now;
    TextLine line = parts->line;
    line.widthFactor = parts->widthFactor;
    const TextLinePlacement after = placeTextLine(line, drawing);
    const bool backward = (line.generation & kTextBackward) != 0;
    parts->position += start - (after.origin + after.xAxis * (backward ? after.end : after.start));
    return true;
}

}  // namespace kova::engine
