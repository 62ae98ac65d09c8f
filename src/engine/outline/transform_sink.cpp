#include <cmath>

#include "engine/entities/image.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/records.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// A family of hatch lines under an affine map: a family again, since parallels stay parallel.
HatchFamily transformFamily(const HatchFamily& family, const math::Matrix4& m) {
    const Vector2 along = Vector2::from_angle(family.angle);
    const Vector2 newAlong = m.transform_direction(along);
    const double stretch = newAlong.length();
    HatchFamily result = family;
    result.origin = m.transform_point(family.origin);
    if (!(stretch > 0.0)) return result;
    const Vector2 unit = newAlong / stretch;
    const Vector2 step = m.transform_direction(along * family.shift.x + along.perpendicular() * family.shift.y);
    result.angle = newAlong.angle();
    result.shift = {step.dot(unit), unit.cross(step)};
    for (double& dash : result.dashes) dash *= stretch;
    return result;
}

}  // namespace

TransformSink::TransformSink(OutlineSink& target, const math::Matrix4& matrix)
    : target_(target), matrix_(matrix), widthScale_(std::sqrt(std::abs(matrix.plane_determinant()))) {}

void TransformSink::stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) {
    transformPath(path, matrix_, scratch_);
    if (options.widths.empty()) {
        target_.stroke(scratch_, style, options);
        return;
    }
    std::vector<Vector2> widths(options.widths.begin(), options.widths.end());
    for (Vector2& w : widths) w *= widthScale_;
    StrokeOptions scaled = options;
    scaled.widths = widths;
    target_.stroke(scratch_, style, scaled);
}

void TransformSink::fill(PathView rings, const OutlineStyle& style, const FillOptions& options) {
    transformPath(rings, matrix_, scratch_);
    if (options.gradient == nullptr) {
        target_.fill(scratch_, style, options);
        return;
    }
    GradientFill turned = *options.gradient;
    turned.angle = matrix_.transform_direction(Vector2::from_angle(turned.angle)).angle();
    FillOptions own = options;
    own.gradient = &turned;
    target_.fill(scratch_, style, own);
}

void TransformSink::text(const TextRun& run, const OutlineStyle& style) {
    TextRun moved = run;
    moved.origin = matrix_.transform_point(run.origin);
    moved.xAxis = matrix_.transform_direction(run.xAxis);
    moved.yAxis = matrix_.transform_direction(run.yAxis);
    target_.text(moved, style);
}

void TransformSink::image(const ImageEntity& image, const OutlineStyle& style) {
    ImageEntity moved = image;
    moved.transform(matrix_);
    target_.image(moved, style);
}

void TransformSink::point(const Vector2& p, const OutlineStyle& style) {
    target_.point(matrix_.transform_point(p), style);
}

void TransformSink::unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle& style) {
    const Vector2 d = matrix_.transform_direction(direction);
    const double length = d.length();
    if (length > 0.0) target_.unbounded(matrix_.transform_point(base), d / length, bothWays, style);
}

void TransformSink::pattern(PathView rings, std::span<const HatchFamily> families, const OutlineStyle& style) {
    transformPath(rings, matrix_, scratch_);
    std::vector<HatchFamily> moved;
    moved.reserve(families.size());
    for (const HatchFamily& family : families) moved.push_back(transformFamily(family, matrix_));
    target_.pattern(scratch_, moved, style);
}

void TransformSink::line(const Vector2& a, const Vector2& b, const OutlineStyle& style) {
    target_.line(matrix_.transform_point(a), matrix_.transform_point(b), style);
}

void TransformSink::viewport(const ViewportEntity& viewport, const OutlineStyle& style) {
    ViewportEntity moved = viewport;
    moved.transform(matrix_);
    target_.viewport(moved, style);
}

bool TransformSink::wants(const math::Bounds2& extents) const {
    if (extents.is_empty()) return target_.wants(extents);
    math::Bounds2 box;
    for (const Vector2& corner :
         {extents.min, extents.max, Vector2{extents.min.x, extents.max.y}, Vector2{extents.max.x, extents.min.y}})
        box.expand(matrix_.transform_point(corner));
    return target_.wants(box);
}

bool TransformSink::wantsLayer(Name layer) const { return target_.wantsLayer(layer); }

void TransformSink::pushClip(PathView path, bool inverted) {
    transformPath(path, matrix_, scratch_);
    target_.pushClip(scratch_, inverted);
}

void TransformSink::popClip() { target_.popClip(); }

}  // namespace kova::engine
