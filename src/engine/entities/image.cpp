#include "engine/entities/image.hpp"

#include "engine/text/text_line.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

std::array<Vector2, 4> ImageEntity::corners() const {
    const Vector2 u = Vector2::from_angle(rotation) * width;
    const Vector2 v = Vector2::from_angle(rotation).perpendicular() * height;
    return {insertion, insertion + u, insertion + u + v, insertion + v};
}

std::vector<Vector2> ImageEntity::frame() const {
    if (!isClipped()) {
        const auto all = corners();
        return {all.begin(), all.end()};
    }
    if (clipBoundary.size() > 2) return clipBoundary;
    // Two points are opposite corners of a rectangle along the image's own directions.
    const Vector2 u = Vector2::from_angle(rotation);
    const Vector2 v = u.perpendicular();
    const Vector2 d = clipBoundary[1] - clipBoundary[0];
    return {clipBoundary[0], clipBoundary[0] + u * d.dot(u), clipBoundary[1], clipBoundary[0] + v * d.dot(v)};
}

math::Bounds2 ImageEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector2& p : frame()) box.expand(p);
    return box;
}

void ImageEntity::transform(const math::Matrix4& m) {
    const auto old = corners();
    const Vector2 origin = m.transform_point(old[0]);
    const Vector2 u = m.transform_point(old[1]) - origin;
    const Vector2 v = m.transform_point(old[3]) - origin;
    for (Vector2& p : clipBoundary) p = m.transform_point(p);
    insertion = origin;
    // The frame stays a rectangle: its width follows u, its height what of v stands square to it.
    const double sign = width < 0.0 ? -1.0 : 1.0;
    const double length = u.length();
    if (length < math::kTolerance) return;
    rotation = (u * sign).angle();
    width = sign * length;
    height = v.dot((u * sign / length).perpendicular());
}

double ImageEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 ImageEntity::nearestPoint(const Vector2& p) const {
    if (!isClipped()) return nearestInQuad(corners(), p);
    Path path;
    path.polygon(frame());
    return insidePath(path, p) ? p : nearestOnPath(path, p);
}

std::vector<Vector2> ImageEntity::gripPoints() const {
    const auto all = corners();
    return {all.begin(), all.end()};
}

void ImageEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index > 3) return;
    // The opposite corner stays, and so do the picture's proportions.
    const auto all = corners();
    const Vector2 fixed = all[(index + 2) % 4];
    const Vector2 diagonal = all[index] - fixed;
    const double length = diagonal.length_squared();
    if (length < math::kTolerance) return;
    const double factor = (to - fixed).dot(diagonal) / length;
    if (!(factor > 1e-9) || !std::isfinite(factor)) return;
    transform(math::Matrix4::scaling_about(fixed, factor));
}

void ImageEntity::describe(FieldVisitor& v) {
    v.text("filePath", filePath);
    v.point("insertion", insertion);
    v.length("width", width);
    v.length("height", height);
    v.angle("rotation", rotation);
    v.integer("brightness", brightness);
    v.integer("contrast", contrast);
    v.integer("fade", fade);
    v.boolean("showFrame", showFrame);
    v.integer("imageTransparency", imageTransparency);
    v.integer("pixelWidth", pixelWidth);
    v.integer("pixelHeight", pixelHeight);
    v.points("clipBoundary", clipBoundary, true);
    v.boolean("clipEnabled", clipEnabled, false);
}

void ImageEntity::emit(OutlineSink& sink, const OutlineStyle& style) const { sink.image(*this, style); }

std::size_t ImageEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + filePath.capacity() + clipBoundary.capacity() * sizeof(Vector2);
}

}  // namespace kova::engine
