#include "engine/entities/mtext.hpp"

#include "engine/model/drawing.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/text/text_line.hpp"
#include "engine/model/outline.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kMaxBackgroundScale = 5.0;

/// The corners of a box under a map, counter-clockwise from the lower left as the text is read.
std::array<Vector2, 4> cornersOf(const Bounds2& b, const Matrix4& m) {
    return {m.transform_point(b.min), m.transform_point(Vector2{b.max.x, b.min.y}), m.transform_point(b.max),
            m.transform_point(Vector2{b.min.x, b.max.y})};
}

/// The box that is filled or framed.
Bounds2 backgroundBox(const MTextEntity& t, const MTextLayout& layout) {
    const double scale = std::isfinite(t.bgScale) ? std::clamp(t.bgScale, 1.0, kMaxBackgroundScale) : 1.0;
    return layout.box.inflated((scale - 1.0) * std::abs(t.height));
}

/// Takes a code such as "\\W0.8;" off the beginning of a content.
std::optional<double> takeLeadingCode(std::string& content, char code) {
    if (content.size() < 4 || content[0] != '\\' || content[1] != code) return std::nullopt;
    double value = 0.0;
    const char* const end = strings::readReal(content.data() + 2, content.data() + content.size(), value);
    const auto size = static_cast<std::size_t>(end == nullptr ? 0 : end - content.data());
    if (size == 0 || size >= content.size() || *end != ';' || !std::isfinite(value)) return std::nullopt;
    content.erase(0, size + 1);
    return value;
}

constexpr std::int32_t kAnyBackground = kBackgroundColor | kBackgroundCanvas | kBackgroundFrame;

}  // namespace

MTextBlock MTextEntity::block() const {
    MTextBlock b;
    b.content = content;
    b.position = position;
    b.height = height;
    b.width = width;
    b.rotation = rotation;
    b.attachment = attachment;
    b.lineSpacingFactor = lineSpacingFactor;
    b.lineSpacingExact = lineSpacingExact;
    b.textStyle = textStyle;
    b.definedHeight = definedHeight;
    b.columns = columns.used() ? &columns : nullptr;
    b.backward = backward;
    return b;
}

std::array<Vector2, 4> MTextEntity::box() const {
    const MTextBlock b = block();
    return cornersOf(layoutMText(b, drawing()).box, mtextMatrix(b));
}

Bounds2 MTextEntity::bounds() const {
    Bounds2 bounds;
    if (!position.is_finite()) return bounds;
    const MTextBlock b = block();
    const MTextLayout layout = layoutMText(b, drawing());
    const Matrix4 m = mtextMatrix(b);
    bounds = layout.ink(m);
    if ((bgFlags & kAnyBackground) != 0 && layout.lineCount > 0)
        for (const Vector2& c : cornersOf(backgroundBox(*this, layout), m)) bounds.expand(c);
    if (bounds.is_empty()) bounds.expand(position);
    return bounds;
}

void MTextEntity::transform(const Matrix4& m) {
    const Vector2 at = m.transform_point(math::Vector3{position, elevation}).xy();
    elevation = m.transform_point(math::Vector3{position, elevation}).z;
    transformExtrusion(*this, m);
    position = at;

    const math::PlaneParts parts = math::planeParts(m);
    TextFrame frame{rotation, height, 1.0, 0.0, backward ? kTextBackward : 0};
    // Unequal scales change the characters' width and slant too. There are no fields for these: codes at the beginning
    // of the content hold them.
    double widthBefore = 1.0;
    if (!parts.uniform) {
        static const TextStyle standard;
        const TextStyle& style = drawing() != nullptr ? drawing()->textStyleOrStandard(textStyle) : standard;
        frame.oblique = math::toRadians(takeLeadingCode(content, 'Q').value_or(math::toDegrees(style.obliqueAngle)));
        widthBefore = takeLeadingCode(content, 'W').value_or(style.widthFactor);
        if (!(widthBefore > 0.0)) widthBefore = 1.0;
        frame.widthFactor = widthBefore;
    }
    transformTextFrame(frame, m);
    if (!parts.uniform && !content.empty())
        content.insert(0, "\\Q" + strings::shortest(math::toDegrees(frame.oblique)) + ";\\W" +
                              strings::shortest(frame.widthFactor) + ";");
    const double scaleY = height != 0.0 ? frame.height / height : 1.0;
    const double scaleX = scaleY * (parts.uniform ? 1.0 : frame.widthFactor / widthBefore);
    rotation = frame.rotation;
    height = frame.height;
    backward = (frame.generation & kTextBackward) != 0;
    if (!std::isfinite(scaleX) || !std::isfinite(scaleY)) return;
    width *= scaleX;
    definedHeight *= scaleY;
    columns.width *= scaleX;
    columns.gutter *= scaleX;
    for (double& h : columns.heights) h *= scaleY;
}

Vector2 MTextEntity::nearestPoint(const Vector2& p) const {
    const MTextBlock b = block();
    const MTextLayout layout = layoutMText(b, drawing());
    if (layout.lineCount == 0 || !position.is_finite()) return position;
    const bool masked = (bgFlags & kAnyBackground) != 0;
    return nearestInQuad(cornersOf(masked ? backgroundBox(*this, layout) : layout.box, mtextMatrix(b)), p);
}

double MTextEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

// Grips: the insertion point, then the four corners of the box; a corner sets the wrap width.
std::vector<Vector2> MTextEntity::gripPoints() const {
    std::vector<Vector2> grips{position};
    for (const Vector2& c : box()) grips.push_back(c);
    return grips;
}

void MTextEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (!to.is_finite()) return;
    if (index == 0) {
        position = to;
        return;
    }
    if (index > 4) return;
    // The side opposite the corner stays; the attachment point moves with the new box.
    const std::array<Vector2, 4> corner = box();
    const bool right = index == 2 || index == 3;
    const Vector2 along = Vector2::from_angle(rotation) * (backward ? -1.0 : 1.0);
    const Vector2 fixed = corner[right ? 0 : 1];
    const double reach = (to - fixed).dot(along) * (right ? 1.0 : -1.0);
    if (!(reach > math::kTolerance) || !std::isfinite(reach)) return;
    const double old = (corner[1] - corner[0]).dot(along);
    if (columns.used()) {
        const double gutters = std::max(0, columns.count - 1) * columns.gutter;
        const double each = (reach - gutters) / std::max(1, columns.count);
        if (!(each > math::kTolerance)) return;
        columns.width = each;
    }
    width = reach;
    const double part =
        ((attachment >= kAttachTopLeft && attachment <= kAttachBottomRight ? attachment : 1) - 1) % 3 / 2.0;
    // Distance of the attachment point from the side that stays, before and after.
    const double side = right ? part : part - 1.0;
    position += along * ((reach - old) * side);
}

void MTextEntity::describe(FieldVisitor& v) {
    v.point("", position);
    v.length("width", width);
    v.length("height", height);
    v.angle("rotation", rotation);
    v.text("content", content);
    v.integer("attachment", attachment);
    v.number("lineSpacingFactor", lineSpacingFactor);
    v.name("textStyle", textStyle);
    v.integer("bgFlags", bgFlags, 0);
    if (bgFlags != 0 || v.reading()) {
        v.color("bgColor", bgColor);
        v.number("bgScale", bgScale);
        v.integer("bgTransparency", bgTransparency);
    }
    v.length("definedHeight", definedHeight, 0.0);
    std::optional<MTextColumns> set;
    if (columns.used() && !v.reading()) set = columns;
    v.object("columns", set);
    if (v.reading() && set) columns = *set;
    v.boolean("lineSpacingExact", lineSpacingExact, false);
    v.boolean("backward", backward, false);
}

void MTextEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!position.is_finite()) return;
    const MTextBlock b = block();
    const MTextLayout layout = layoutMText(b, drawing());
    const Matrix4 m = mtextMatrix(b);
    if ((bgFlags & kAnyBackground) != 0 && layout.lineCount > 0) {
        const std::array<Vector2, 4> box = cornersOf(backgroundBox(*this, layout), m);
        Path ring;
        ring.polygon(box);
        if ((bgFlags & (kBackgroundColor | kBackgroundCanvas)) != 0) {
            FillOptions options;
            OutlineStyle fill = style;
            options.background = (bgFlags & kBackgroundCanvas) != 0;
            if (!options.background && bgColor.method != ColorMethod::ByBlock) fill.color = bgColor;
            if (bgTransparency > 0) fill.transparency = std::min(bgTransparency, 90);
            sink.fill(ring, fill, options);
        }
        if ((bgFlags & kBackgroundFrame) != 0) {
            StrokeOptions options;
            options.continuous = true;
            sink.stroke(ring, style, options);
        }
    }
    emitMTextLayout(layout, m, sink, style);
}

std::size_t MTextEntity::sizeInBytes() const {
    return sizeof *this + content.capacity() + columns.heights.capacity() * sizeof(double) + extrasSize();
}

}  // namespace kova::engine
