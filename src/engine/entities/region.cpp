#include "engine/entities/region.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/ring_nesting.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

/// Arcs that a transform bends to parts of ellipses become chords within this part of the boundary's size.
constexpr double kBentTolerance = 1e-6;

void appendRing(Path& path, std::span<const Vector2> vertices, std::span<const double> bulges) {
    if (vertices.size() < 2) return;
    path.moveTo(vertices[0]);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const double bulge = i < bulges.size() ? bulges[i] : 0.0;
        const bool back = i + 1 == vertices.size();
        // A straight way back to the start is the closing line itself.
        if (back && std::abs(bulge) < math::kStraightBulge) break;
        path.bulgeTo(back ? vertices[0] : vertices[i + 1], bulge);
    }
    path.close();
}

Path ringPath(std::span<const Vector2> vertices, std::span<const double> bulges) {
    Path path;
    appendRing(path, vertices, bulges);
    return path;
}

struct Moments {
    double area = 0.0;
    Vector2 centroid;
};

/// Area and centroid, arcs exactly; a boundary inside an odd number of others is a hole.
Moments regionMoments(const RegionEntity& region) {
    struct Boundary {
        std::span<const Vector2> points;
        std::span<const double> bulges;
    };
    std::vector<Boundary> boundaries;
    std::vector<std::vector<Ring>> rings;
    const auto add = [&](const std::vector<Vector2>& points, const std::vector<double>& bulges) {
        if (points.size() < 2) return;
        boundaries.push_back({points, bulges});
        rings.push_back(ringsOf(ringPath(points, bulges)));
    };
    add(region.vertices, region.bulges);
    for (const RegionLoop& loop : region.loops) add(loop.vertices, loop.bulges);
    const std::optional<std::vector<int>> depths = ringDepths(rings);
    Moments sum;
    Vector2 weighted;
    for (std::size_t i = 0; i < boundaries.size(); ++i) {
        const bool hole = depths && (*depths)[i] % 2 != 0;
        const double size = std::abs(math::signedArea(boundaries[i].points, boundaries[i].bulges));
        const double area = hole ? -size : size;
        sum.area += area;
        weighted += math::centroid(boundaries[i].points, boundaries[i].bulges) * area;
    }
    if (sum.area != 0.0) sum.centroid = weighted / sum.area;
    return sum;
}

void transformRing(std::vector<Vector2>& points, std::vector<double>& bulges, const math::Matrix4& m, double z) {
    const auto carry = [&](const Vector2& p) { return m.transform_point(Vector3(p, z)).xy(); };
    const bool curved = std::any_of(bulges.begin(), bulges.end(), [](double b) { return b != 0.0; });
    if (curved && !math::planeParts(m).uniform) {
        const std::vector<Ring> flat = ringsOf(ringPath(points, bulges), kBentTolerance);
        bulges.clear();
        if (!flat.empty()) {
            points = flat.front();
            if (points.size() > 1 && points.back() == points.front()) points.pop_back();
        }
    }
    for (Vector2& p : points) p = carry(p);
    if (m.plane_determinant() < 0.0)
        for (double& bulge : bulges) bulge = -bulge;
}

}  // namespace

void RegionLoop::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.numbers("bulges", bulges, true);
}

Path RegionEntity::path() const {
    Path path = ringPath(vertices, bulges);
    for (const RegionLoop& loop : loops) appendRing(path, loop.vertices, loop.bulges);
    return path;
}

double RegionEntity::area() const { return regionMoments(*this).area; }
Vector2 RegionEntity::centroid() const { return regionMoments(*this).centroid; }
double RegionEntity::perimeter() const { return pathLength(path()); }
math::Bounds2 RegionEntity::bounds() const { return pathBounds(path()); }

void RegionEntity::transform(const math::Matrix4& m) {
    transformRing(vertices, bulges, m, elevation);
    for (RegionLoop& loop : loops) transformRing(loop.vertices, loop.bulges, m, elevation);
    if (isPlanar(m)) elevation = m(2, 2) * elevation + m(2, 3);
}

double RegionEntity::distanceTo(const Vector2& p) const {
    return distanceToShape(*this, p, vertices.empty() && loops.empty());
}
Vector2 RegionEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(path(), p); }

std::vector<Vector2> RegionEntity::gripPoints() const {
    std::vector<Vector2> grips = vertices;
    for (const RegionLoop& loop : loops) grips.insert(grips.end(), loop.vertices.begin(), loop.vertices.end());
    return grips;
}

void RegionEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size()) {
        vertices[index] = to;
        return;
    }
    index -= vertices.size();
    for (RegionLoop& loop : loops) {
        if (index < loop.vertices.size()) {
            loop.vertices[index] = to;
            return;
        }
        index -= loop.vertices.size();
    }
}

void RegionEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.numbers("bulges", bulges, true);
    v.objects("loops", loops, true);
}

void RegionEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path outline = path();
    if (!outline.empty()) sink.stroke(outline, style);
}

std::size_t RegionEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() + vertices.capacity() * sizeof(Vector2) +
                       bulges.capacity() * sizeof(double) + loops.capacity() * sizeof(RegionLoop);
    for (const RegionLoop& loop : loops)
        size += loop.vertices.capacity() * sizeof(Vector2) + loop.bulges.capacity() * sizeof(double);
    return size;
}

}  // namespace kova::engine
