#include "engine/entities/dimensions/leader.hpp"

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/dimensions/leader_line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

const DimStyle& dimStyleOf(const LeaderEntity& leader) {
    static const DimStyle plain;
    const Drawing* drawing = leader.drawing();
    return drawing != nullptr ? drawing->dimStyleOrStandard(leader.dimStyleName) : plain;
}

double scaleOf(const LeaderEntity& leader, const DimStyle& style) {
    double scale = style.scaleFactor;
    if (!(scale > 0.0) || !std::isfinite(scale)) scale = leader.annotative() ? leader.annotationScale() : 1.0;
    return scale > 0.0 && std::isfinite(scale) ? scale : 1.0;
}

bool given(double size) { return size > 0.0 && std::isfinite(size); }

/// +1 when the text stands to the right of the leader's end.
double textSense(const LeaderEntity& leader) {
    if (leader.hookLine || leader.vertices.size() < 2) return leader.hookDirection().x;
    const std::size_t n = leader.vertices.size();
    return leader.vertices[n - 1].x < leader.vertices[n - 2].x ? -1.0 : 1.0;
}

}  // namespace

double LeaderEntity::effectiveArrowSize() const {
    if (given(arrowSize)) return arrowSize;
    const DimStyle& style = dimStyleOf(*this);
    return given(style.arrowSize) ? style.arrowSize * scaleOf(*this, style) : 0.0;
}

double LeaderEntity::effectiveTextHeight() const {
    if (given(textHeight)) return textHeight;
    const DimStyle& style = dimStyleOf(*this);
    return (given(style.textHeight) ? style.textHeight : 2.5) * scaleOf(*this, style);
}

Vector2 LeaderEntity::endPoint() const {
    if (vertices.empty()) return {};
    return hookLine ? vertices.back() + hookDirection() * effectiveArrowSize() : vertices.back();
}

Path LeaderEntity::path() const {
    Path path = leaderLine(vertices, splined, 0.0);
    if (hookLine && !path.empty()) path.lineTo(endPoint());
    return path;
}

bool LeaderEntity::drawsText() const {
    if (annotation.empty() || vertices.empty()) return false;
    if (annotationHandle == 0) return true;
    const Drawing* owner = drawing();
    return owner == nullptr || owner->findByHandle(annotationHandle) == nullptr;
}

MTextBlock LeaderEntity::textBlock() const {
    const DimStyle& style = dimStyleOf(*this);
    const double gap = std::isfinite(style.textGap) ? std::abs(style.textGap) * scaleOf(*this, style) : 0.0;
    const double sense = textSense(*this);
    MTextBlock block;
    block.content = annotation;
    block.height = effectiveTextHeight();
    block.width = given(annotationWidth) ? annotationWidth : 0.0;
    block.textStyle = style.textStyle;
    block.position = endPoint() + Vector2{sense * gap, 0.0};
    block.attachment = sense > 0.0 ? kAttachMiddleLeft : kAttachMiddleRight;
    if (style.textVertical != 0) {
        // The text stands on the line, which runs on below it.
        block.position.y += gap;
        block.attachment = sense > 0.0 ? kAttachBottomLeft : kAttachBottomRight;
    }
    return block;
}

math::Bounds2 LeaderEntity::bounds() const { return outlineBounds(*this); }

void LeaderEntity::transform(const math::Matrix4& m) {
    for (Vector2& p : vertices) p = m.transform_point(p);
    const Vector2 hook = m.transform_direction(hookDirection());
    if (std::abs(hook.x) > 1e-9 * std::abs(hook.y)) hookDir = hook.x > 0.0 ? 1 : 0;
    const double factor = std::sqrt(std::abs(m.plane_determinant()));
    if (factor > 0.0 && std::isfinite(factor))
        for (double* size : {&arrowSize, &textHeight, &annotationWidth}) *size *= factor;
    elevation = m.transform_point(math::Vector3(Vector2{}, elevation)).z;
    transformExtrusion(*this, m);
}

double LeaderEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 LeaderEntity::nearestPoint(const Vector2& p) const { return nearestOnOutline(*this, p); }
std::vector<Vector2> LeaderEntity::gripPoints() const { return vertices; }

void LeaderEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size() && to.is_finite()) vertices[index] = to;
}

void LeaderEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.text("annotation", annotation);
    v.length("arrowSize", arrowSize);
    v.length("textHeight", textHeight);
    v.boolean("hasArrow", hasArrow);
    v.boolean("splined", splined);
    v.boolean("hookLine", hookLine);
    v.integer("hookDir", hookDir);
    v.name("arrowBlock", arrowBlock, "");
    v.optionalHandle("annotationHandle", annotationHandle);
    v.length("annotationWidth", annotationWidth, 0.0);
    v.name("dimStyleName", dimStyleName, "Standard");
}

void LeaderEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (vertices.empty()) return;
    const DimStyle& dim = dimStyleOf(*this);
    OutlineStyle lines = style;
    if (dim.dimLineColor.method != ColorMethod::ByBlock) lines.color = dim.dimLineColor;
    if (dim.dimLineLineweight != -2) lines.lineweight = dim.dimLineLineweight;
    if (!dim.dimLineLinetype.empty() && dim.dimLineLinetype != commonNames().byBlock)
        lines.linetype = dim.dimLineLinetype;

    const double size = effectiveArrowSize();
    const Name arrow = arrowBlock.empty() ? dim.leaderArrowBlock : arrowBlock;
    const LeaderArrow head = leaderArrow(vertices, hasArrow ? size : 0.0, arrow);
    Path line = leaderLine(vertices, splined, head.lineGap);
    if (!line.empty() && hookLine) line.lineTo(endPoint());
    const bool text = drawsText();
    MTextLayout layout;
    MTextBlock block;
    if (text) {
        block = textBlock();
        layout = layoutMText(block, drawing());
        const double width = layout.box.width();
        if (dim.textVertical != 0 && !line.empty() && width > 0.0)
            line.lineTo({block.position.x + textSense(*this) * width, endPoint().y});
    }
    if (!line.empty()) {
        StrokeOptions options;
        options.patternThroughVertices = splined;
        sink.stroke(line, lines, options);
    }
    if (head.visible) emitArrow(sink, lines, drawing(), arrow, head.tip, head.direction, size);
    if (!text) return;
    OutlineStyle letters = style;
    if (dim.textColor.method != ColorMethod::ByBlock) letters.color = dim.textColor;
    emitMTextLayout(layout, mtextMatrix(block), sink, letters);
}

std::size_t LeaderEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + vertices.capacity() * sizeof(Vector2) + annotation.capacity();
}

}  // namespace kova::engine
