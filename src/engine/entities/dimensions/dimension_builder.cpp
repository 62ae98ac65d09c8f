#include "engine/entities/dimensions/dimension_builder.hpp"

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/dimensions/dimension_text.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;

namespace {

/// The text's box keeps a hair's breadth less than DIMGAP, so that text placed exactly that far off a line leaves it.
constexpr double kGapSlack = 1.0 - 1e-6;
/// Width of the arc length symbol before the text, in text heights.
constexpr double kArcSymbolWidth = 0.9;
/// Inner margin of the fields of an inspection frame, in text heights.
constexpr double kFieldMargin = 0.5;

double sizeOr(double v, double fallback) { return std::isfinite(v) && v >= 0.0 ? v : fallback; }

/// The part [from, to] of the segment a-b that lies within the convex quad; empty (from >= to) when it misses it.
std::pair<double, double> insideQuad(const Vector2& a, const Vector2& b, const std::array<Vector2, 4>& quad) {
    double from = 0.0;
    double to = 1.0;
    const Vector2 d = b - a;
    for (std::size_t i = 0; i < 4; ++i) {
        const Vector2 edge = quad[(i + 1) % 4] - quad[i];
        const double at = edge.cross(a - quad[i]);  // positive inside
        const double rate = edge.cross(d);
        if (rate == 0.0) {
            if (at <= 0.0) return {0.0, 0.0};
        } else if (rate > 0.0) {
            from = std::max(from, -at / rate);
        } else {
            to = std::min(to, -at / rate);
        }
    }
    return {from, to};
}

bool inQuad(const Vector2& p, const std::array<Vector2, 4>& quad) {
    for (std::size_t i = 0; i < 4; ++i)
        if ((quad[(i + 1) % 4] - quad[i]).cross(p - quad[i]) <= 0.0) return false;
    return true;
}

Path rectangle(double halfWidth, double halfHeight) {
    return Path()
        .moveTo({-halfWidth, -halfHeight})
        .lineTo({halfWidth, -halfHeight})
        .lineTo({halfWidth, halfHeight})
        .lineTo({-halfWidth, halfHeight})
        .close();
}

}  // namespace

DimensionBuilder::DimensionBuilder(const DimensionEntity& dimension) : dim(dimension) {
    picture.style = dimension.style();
    resolveSizes();
    layoutText();
}

double DimensionBuilder::arrowGap(Name block, bool tick) const {
    return tick ? 0.0 : arrowSize * arrowLineGap(arrowKind(block));
}

void DimensionBuilder::resolveSizes() {
    const DimStyle& s = picture.style;
    double scale = s.scaleFactor;
    // DIMSCALE 0 leaves the size to the annotation scale.
    if (!(scale > 0.0) || !std::isfinite(scale)) scale = dim.annotative() ? dim.annotationScale() : 1.0;
    if (!(scale > 0.0) || !std::isfinite(scale)) scale = 1.0;
    picture.scale = scale;
    const DimStyle fallback;
    textHeight = sizeOr(s.textHeight, fallback.textHeight);
    if (const Drawing* drawing = dim.drawing())
        if (const double fixed = drawing->textStyleOrStandard(s.textStyle).height; fixed > 0.0) textHeight = fixed;
    if (textHeight <= 0.0) textHeight = fallback.textHeight;
    textHeight *= scale;
    gap = sizeOr(std::abs(s.textGap), 0.0) * scale;
    framed = s.textGap < 0.0;
    extGap = sizeOr(s.extGap, 0.0) * scale;
    extExtension = sizeOr(s.extExtension, 0.0) * scale;
    arrowSize = sizeOr(s.arrowSize, 0.0) * scale;
    const bool linear = dim.kind() == DimensionType::Rotated || dim.kind() == DimensionType::Aligned;
    const bool radial = dim.kind() == DimensionType::Radius || dim.kind() == DimensionType::Diameter;
    if (s.tickSize > 0.0 && std::isfinite(s.tickSize) && (linear || radial)) {
        arrow1 = arrow2 = Name(arrowBlockName(ArrowKind::Oblique));
        arrowSize = 2.0 * s.tickSize * scale;  // DIMTSZ is half of the stroke's extent
    } else {
        arrow1 = s.separateArrowBlocks ? s.arrowBlock1 : s.arrowBlock;
        arrow2 = s.separateArrowBlocks ? s.arrowBlock2 : s.arrowBlock;
    }
    ticks1 = arrowIsTick(arrowKind(arrow1));
    ticks2 = arrowIsTick(arrowKind(arrow2));
    if (ticks1 || ticks2) lineExtension = sizeOr(s.dimLineGap, 0.0) * scale;
}

// Text -------------------------------------------------------------------------------------------------------------

void DimensionBuilder::addPiece(std::string_view content) {
    MTextBlock block;
    block.content = content;
    block.height = textHeight;
    block.attachment = kAttachMiddleCenter;
    block.textStyle = picture.style.textStyle;
    DimensionPicture::Text piece;
    piece.layout = layoutMText(block, dim.drawing());
    picture.texts.push_back(std::move(piece));
}

void DimensionBuilder::layoutText() {
    picture.textContent = dim.textContent();
    if (picture.textContent.empty()) return;
    picture.hasText = true;
    const auto width = [&](std::size_t i) { return std::max(0.0, picture.texts[i].layout.box.width()); };
    const auto height = [&](std::size_t i) { return std::max(0.0, picture.texts[i].layout.box.height()); };
    if (const DimTextSplit parts = splitDimText(picture.textContent); parts.split && !parts.below.empty()) {
        split_ = true;
        addPiece(parts.above);
        addPiece(parts.below);
        picture.texts[0].middle = {0.0, gap + height(0) / 2.0};
        picture.texts[1].middle = {0.0, -gap - height(1) / 2.0};
        picture.textWidth = std::max(width(0), width(1));
        picture.textHeight = 2.0 * (gap + std::max(height(0), height(1)));
        return;
    }
    addPiece(picture.textContent);
    picture.textWidth = width(0);
    picture.textHeight = height(0);
    if (dim.inspectShape != InspectionShape::Off)
        layoutInspection();
    else if (dim.kind() == DimensionType::ArcLength && style().arcSymbol != 2)
        addArcSymbol();
}

void DimensionBuilder::addArcSymbol() {
    const double h = textHeight;
    if (style().arcSymbol == 1) {  // over the text
        const double rise = 0.35 * h;
        const double half = std::max(picture.textWidth / 2.0, h / 2.0);
        const double y = picture.textHeight / 2.0;
        textPaths_.push_back(Path().moveTo({-half, y}).bulgeTo({half, y}, -2.0 * (rise * 0.8) / (2.0 * half)));
        for (DimensionPicture::Text& t : picture.texts) t.middle.y -= rise / 2.0;
        for (Path& p : textPaths_) {
            Path moved;
            transformPath(p, Matrix4::translation(0.0, -rise / 2.0), moved);
            p = moved;
        }
        picture.textHeight += rise;
        picture.textWidth = std::max(picture.textWidth, 2.0 * half);
        return;
    }
    const double room = kArcSymbolWidth * h;
    const double left = -(picture.textWidth + room) / 2.0;
    const double width = 0.7 * h;
    textPaths_.push_back(Path().moveTo({left, -0.1 * h}).bulgeTo({left + width, -0.1 * h}, -1.0));
    for (DimensionPicture::Text& t : picture.texts) t.middle.x += room / 2.0;
    picture.textWidth += room;
}

void DimensionBuilder::layoutInspection() {
    const double margin = kFieldMargin * textHeight;
    struct FieldBox {
        std::size_t text;
        double width;
    };
    std::vector<FieldBox> fields;
    const auto add = [&](const std::string& text) {
        if (text.empty()) return;
        addPiece(text);
        fields.push_back({picture.texts.size() - 1, std::max(0.0, picture.texts.back().layout.box.width())});
    };
    add(dim.inspectLabel);
    fields.push_back({0, picture.textWidth});
    add(dim.inspectRate);

    double total = 0.0;
    for (const FieldBox& f : fields) {
        total += f.width + 2.0 * margin;
        picture.textHeight = std::max(picture.textHeight, picture.texts[f.text].layout.box.height());
    }
    const double half = picture.textHeight / 2.0 + gap;
    double x = -total / 2.0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0 && dim.inspectShape != InspectionShape::None)
            textPaths_.push_back(Path().moveTo({x, -half}).lineTo({x, half}));
        x += fields[i].width + 2.0 * margin;
        picture.texts[fields[i].text].middle = {x - margin - fields[i].width / 2.0, 0.0};
    }
    const double w = total / 2.0;
    switch (dim.inspectShape) {
        case InspectionShape::Round:
            textPaths_.push_back(Path()
                                     .moveTo({-w, -half})
                                     .lineTo({w, -half})
                                     .bulgeTo({w, half}, 1.0)
                                     .lineTo({-w, half})
                                     .bulgeTo({-w, -half}, 1.0)
                                     .close());
            total += 2.0 * half;
            break;
        case InspectionShape::Angular:
            textPaths_.push_back(Path()
                                     .moveTo({-w, -half})
                                     .lineTo({w, -half})
                                     .lineTo({w + half, 0.0})
                                     .lineTo({w, half})
                                     .lineTo({-w, half})
                                     .lineTo({-w - half, 0.0})
                                     .close());
            total += 2.0 * half;
            break;
        default:
            break;
    }
    picture.textWidth = total;
    framed = false;
}

double DimensionBuilder::halfExtent(double angle, double rotation) const {
    const double turn = rotation - angle;
    return 0.5 * (textWidth() * std::abs(std::cos(turn)) + textBoxHeight() * std::abs(std::sin(turn)));
}

double DimensionBuilder::textRotation(double angle, bool inside) const {
    if (dim.textRotation != 0.0) return dim.textRotation;
    if (inside ? style().textInsideHorizontal : style().textOutsideHorizontal) return 0.0;
    return readableAngle(angle);
}

int DimensionBuilder::textSide(double angle, double rotation) const {
    if (split_) return 0;
    const std::int32_t side = style().textVertical;
    // Text above a line it does not run along stands in the line.
    const bool along = dim.textRotation != 0.0 || std::abs(std::sin(rotation - angle)) < 1e-6;
    if (!along) return 0;
    return side == 3 ? 1 : side < 0 || side > 4 ? 0 : side;
}

double DimensionBuilder::textOffset(int side, double angle, double rotation) const {
    if (split_) return 0.0;
    if (side == 0) {
        const double shift = style().textVerticalPosition * textHeight;
        return std::isfinite(shift) ? shift : 0.0;
    }
    const double off = gap + halfExtent(angle + math::kPi / 2, rotation);
    return side == 4 ? -off : off;
}

DimensionBuilder::Fit DimensionBuilder::fit(double length, double textLength) const {
    const double slack = 1e-9 * (1.0 + length);
    const double arrows = arrowRoom();
    const bool both = textLength + arrows <= length + slack;
    const bool textOnly = textLength <= length + slack;
    const bool arrowsOnly = arrows <= length + slack;
    Fit f;
    if (both) return f;
    if (style().textInsideForced || !hasText()) {
        f.arrows = arrowsOnly && !hasText();
        f.suppressed = !f.arrows && style().textInsideForced && style().suppressOutsideDimLines;
        return f;
    }
    switch (style().fitOption) {
        case 0:
            f.text = f.arrows = false;
            break;
        case 1:
            f.arrows = false;
            f.text = textOnly;
            break;
        case 2:
            f.text = false;
            f.arrows = arrowsOnly;
            break;
        default:
            f.text = textOnly;
            f.arrows = !textOnly && arrowsOnly;
            break;
    }
    if (ticks1 && ticks2) f.arrows = true;
    return f;
}

void DimensionBuilder::placeText(const Vector2& middle, double rotation) {
    if (!middle.is_finite() || !std::isfinite(rotation)) return;
    picture.textMiddle = middle;
    picture.textRotation = rotation;
    placed_ = true;
}

// Lines ------------------------------------------------------------------------------------------------------------

void DimensionBuilder::addPath(DimPart part, Path path) {
    // Coordinates near the limits of numbers overflow on the way here.
    for (const PathElement& e : path.view())
        if (!e.p.is_finite() || !e.a.is_finite() || !e.b.is_finite() || !e.center.is_finite()) return;
    picture.strokes.push_back({part, std::move(path)});
}

void DimensionBuilder::addLine(DimPart part, const Vector2& a, const Vector2& b) {
    if (a.near_equal(b, 1e-12) || !a.is_finite() || !b.is_finite()) return;
    addPath(part, Path().moveTo(a).lineTo(b));
}

void DimensionBuilder::addCutLine(DimPart part, const Vector2& a, const Vector2& b) {
    if (!hasText() || !placed_ || split_) {
        addLine(part, a, b);
        return;
    }
    const auto [from, to] = insideQuad(a, b, picture.textBox(gap * kGapSlack));
    if (!(from < to)) {
        addLine(part, a, b);
        return;
    }
    addLine(part, a, a.lerp(b, from));
    addLine(part, a.lerp(b, to), b);
}

void DimensionBuilder::addArc(DimPart part, const Vector2& center, double radius, double from, double to) {
    if (!(radius > 0.0) || !std::isfinite(radius) || !(std::abs(to - from) > 1e-12)) return;
    addPath(part, Path().arc(center, radius, from, to));
}

void DimensionBuilder::addCutArc(DimPart part, const Vector2& center, double radius, double from, double to) {
    if (!hasText() || !placed_ || split_ || !(from < to)) {
        addArc(part, center, radius, from, to);
        return;
    }
    const std::array<Vector2, 4> quad = picture.textBox(gap * kGapSlack);
    // Where the circle crosses the box's edges; between two crossings the arc is all inside or all outside.
    std::vector<double> cuts{from, to};
    for (std::size_t i = 0; i < 4; ++i) {
        const Vector2 a = quad[i] - center;
        const Vector2 d = quad[(i + 1) % 4] - quad[i];
        const double dd = d.length_squared();
        const double ad = a.dot(d);
        const double root = ad * ad - dd * (a.length_squared() - radius * radius);
        if (!(dd > 0.0) || !(root >= 0.0)) continue;
        for (const double sign : {-1.0, 1.0}) {
            const double t = (-ad + sign * std::sqrt(root)) / dd;
            if (t < 0.0 || t > 1.0) continue;
            const double turn = from + math::normalizeAngle((a + d * t).angle() - from);
            if (turn < to) cuts.push_back(turn);
        }
    }
    std::sort(cuts.begin(), cuts.end());
    double begin = from;
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
        const double middle = 0.5 * (cuts[i] + cuts[i + 1]);
        if (!inQuad(center + radius * math::unitAt(middle), quad)) continue;
        addArc(part, center, radius, begin, cuts[i]);
        begin = cuts[i + 1];
    }
    addArc(part, center, radius, begin, to);
}

void DimensionBuilder::addExtension(DimPart part, const Vector2& origin, const Vector2& end) {
    if (part == DimPart::ExtLine1 ? style().suppressExtLine1 : style().suppressExtLine2) return;
    const double length = origin.distance_to(end);
    if (!(length > 1e-9) || !std::isfinite(length)) return;
    const Vector2 out = (end - origin) / length;
    double from = extGap;
    if (style().fixedExtLines && style().fixedExtLength >= 0.0)
        from = std::max(from, length - style().fixedExtLength * picture.scale);
    const double to = length + extExtension;
    if (from < to) addLine(part, origin + out * from, origin + out * to);
}

void DimensionBuilder::addArrow(const Vector2& tip, const Vector2& direction, bool second) {
    if (!(arrowSize > 0.0) || direction == Vector2{} || !direction.is_finite() || !tip.is_finite()) return;
    picture.arrows.push_back({tip, direction, arrowSize, second ? arrow2 : arrow1});
}

void DimensionBuilder::addTextLeader(const Vector2& from) {
    if (!hasText() || !placed_) return;
    const std::array<Vector2, 4> box = picture.textBox(gap);
    const bool underline = style().textVertical != 0;
    Vector2 left = underline ? box[0] : (box[0] + box[3]) / 2.0;
    Vector2 right = underline ? box[1] : (box[1] + box[2]) / 2.0;
    const bool fromLeft = from.distance_to(left) <= from.distance_to(right);
    Path path;
    path.moveTo(from).lineTo(fromLeft ? left : right);
    if (underline) path.lineTo(fromLeft ? right : left);
    addPath(DimPart::Leader, std::move(path));
}

void DimensionBuilder::addCenterMark(const Vector2& center, double radius) {
    const double size = std::abs(style().centerMark) * picture.scale;
    if (!(size > 0.0) || !std::isfinite(size)) return;
    const Vector2 axes[] = {{1, 0}, {0, 1}};
    for (const Vector2& axis : axes) {
        addLine(DimPart::CenterMark, center - axis * size, center + axis * size);
        if (style().centerMark > 0.0 || radius <= 2.0 * size) continue;
        for (const double sign : {-1.0, 1.0})
            addLine(DimPart::CenterMark, center + axis * (sign * 2.0 * size), center + axis * (sign * (radius + size)));
    }
}

void DimensionBuilder::finish() {
    if (!placed_) {  // nothing to measure
        picture.hasText = false;
        picture.texts.clear();
    }
    if (!hasText()) return;
    const Matrix4 frame = Matrix4::translation(picture.textMiddle) * Matrix4::rotation_z(picture.textRotation);
    for (DimensionPicture::Text& t : picture.texts)
        t.matrix = frame * Matrix4::translation(t.middle - t.layout.box.center());
    if (framed) textPaths_.push_back(rectangle(textWidth() / 2.0 + gap, textBoxHeight() / 2.0 + gap));
    for (const Path& path : textPaths_) {
        Path placed;
        transformPath(path, frame, placed);
        addPath(DimPart::Frame, std::move(placed));
    }
}

}  // namespace kova::engine
