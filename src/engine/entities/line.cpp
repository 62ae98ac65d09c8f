#include "engine/entities/line.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

/// Squared length below which a segment is a point.
constexpr double kPointLike = 1e-10;
/// Numbers closer than this are the same in a file.
constexpr double kFileTolerance = 1e-9;

}  // namespace

LineEntity::LineEntity(const Vector3& from, const Vector3& to) { setEnds(from, to); }

void LineEntity::setEnds(const Vector3& from, const Vector3& to) {
    start = from.xy();
    end = to.xy();
    elevation = from.z;
    hasZ = from.z != to.z;
    endZ = hasZ ? to.z : 0.0;
}

math::Bounds2 LineEntity::bounds() const {
    math::Bounds2 box;
    box.expand(start);
    box.expand(end);
    return box;
}

void LineEntity::transform(const math::Matrix4& m) {
    setEnds(m.transform_point(start3()), m.transform_point(end3()));
    transformExtrusion(*this, m);
}

double LineEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 LineEntity::nearestPoint(const Vector2& p) const {
    if ((end - start).length_squared() < kPointLike) return start;
    return math::closestOnSegment(p, start, end);
}

std::vector<Vector2> LineEntity::gripPoints() const { return {start, (start + end) / 2.0, end}; }

void LineEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index == 0) start = to;
    if (index == 2) end = to;
    if (index != 1) return;
    const Vector2 shift = to - (start + end) / 2.0;
    start += shift;
    end += shift;
}

void LineEntity::describe(FieldVisitor& v) {
    v.point("start", start);
    v.point("end", end);
    // The file's end z is absolute, and 0 when it is not there; so a level line at a height has one too.
    double z = v.reading() ? 0.0 : end3().z;
    v.length("endZ", z, 0.0);
    if (!v.reading()) return;
    hasZ = z != elevation;
    endZ = hasZ ? z : 0.0;
}

void LineEntity::emit(OutlineSink& sink, const OutlineStyle& style) const { sink.line(start, end, style); }

std::size_t LineEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
