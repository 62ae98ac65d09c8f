#include "edit/array_items.hpp"

#include "math/curves/curves.hpp"

namespace kova::cmd {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

Matrix4 moved(const Vector3& by) { return Matrix4::translation(by.x, by.y, by.z); }

/// A turn about an axis through a point (Rodrigues).
Matrix4 turnedAbout(const Vector3& center, const Vector3& axis, double angle) {
    if (axis == Vector3{0, 0, 1}) return Matrix4::rotation_about(center.xy(), angle);
    const Vector2 turn = math::unitAt(angle);
    const auto image = [&](const Vector3& v) {
        return v * turn.x + axis.cross(v) * turn.y + axis * (axis.dot(v) * (1.0 - turn.x));
    };
    const Vector3 x = image({1, 0, 0});
    const Vector3 y = image({0, 1, 0});
    const Vector3 z = image({0, 0, 1});
    Matrix4 m;
    m.m = {x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, 0, 0, 0, 1};
    return moved(center) * m * moved(-center);
}

/// Calls use(row, level, way in the elevation) for all rows and levels, level by level.
template <class Use>
void eachRow(const ArrayRows& rows, Use use) {
    for (int level = 0; level < rows.levels; ++level)
        for (int row = 0; row < rows.rows; ++row) use(row, level, row * rows.rise + level * rows.levelDistance);
}

}  // namespace

std::vector<Matrix4> RectangularArray::items() const {
    std::vector<Matrix4> out;
    const Vector2 along = math::unitAt(angle);
    const Vector2 up = along.perpendicular();
    eachRow(rows, [&](int row, int, double z) {
        for (int column = 0; column < columns; ++column) {
            out.push_back(moved(Vector3(along * (column * columnDistance) + up * (row * rows.distance), z)));
        }
    });
    return out;
}

double PolarArray::step() const {
    if (count < 2) return 0.0;
    const bool whole = std::abs(std::abs(fill) - math::kTwoPi) < 1e-9;
    return fill / (whole ? count : count - 1);
}

std::vector<Matrix4> PolarArray::items() const {
    std::vector<Matrix4> out;
    const double between = step();
    const Vector3 at(base, center.z);
    Vector3 outward = at - center;
    outward = outward - axis * axis.dot(outward);
    outward = outward.normalized();
    eachRow(rows, [&](int row, int, double rise) {
        const Vector3 shift = outward * (row * rows.distance) + axis * rise;
        for (int i = 0; i < count; ++i) {
            const Matrix4 turn = turnedAbout(center, axis, i * between);
            if (turnItems)
                out.push_back(turn * moved(shift));
            else
                out.push_back(moved(turn.transform_point(at + shift) - at));
        }
    });
    return out;
}

int PathArray::fitting(const CurveRuler& path) const {
    if (!(distance > 0.0)) return 1;
    const double whole = path.length() / distance * (1.0 + 1e-12) + 1e-9;
    // On a closed path the last item would fall onto the first.
    const bool meets = path.closed() && std::abs(whole - std::round(whole)) < 1e-6;
    return static_cast<int>(std::min(32767.0, std::floor(whole) + (meets ? 0.0 : 1.0)));
}

std::vector<PathArray::Stand> PathArray::stands(const CurveRuler& path) const {
    const auto place = [&](double length) {
        CurveRuler::Place p = path.at(reversed ? path.length() - length : length);
        if (reversed) p.direction = -p.direction;
        return p;
    };
    const double from = direction ? direction->angle() : place(0.0).direction.angle();
    const Vector2 side = math::unitAt(from).perpendicular();
    const int n = number(path);
    const int gaps = path.closed() ? n : n - 1;
    const double between = divide ? (gaps > 0 ? path.length() / gaps : 0.0) : distance;
    std::vector<Stand> out;
    out.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const CurveRuler::Place p = place(i * between);
        out.push_back({p.point, alignItems ? p.direction.angle() - from : 0.0, side});
    }
    return out;
}

Matrix4 PathArray::way(const Stand& stand, int row, int level) const {
    return moved(Vector3(stand.point, row * rows.rise + level * rows.levelDistance)) * Matrix4::rotation_z(stand.turn) *
           Matrix4::translation(stand.side * (row * rows.distance) - base);
}

std::vector<Matrix4> PathArray::items(const CurveRuler& path) const {
    std::vector<Matrix4> out;
    const std::vector<Stand> along = stands(path);
    eachRow(rows, [&](int row, int level, double) {
        for (const Stand& stand : along) out.push_back(way(stand, row, level));
    });
    return out;
}

std::vector<ArrayPlace> arrayPlaces(int items, const ArrayRows& rows) {
    std::vector<ArrayPlace> out;
    eachRow(rows, [&](int row, int level, double) {
        for (int i = 0; i < items; ++i) out.push_back({i, row, level});
    });
    return out;
}

math::Bounds2 boundsOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    math::Bounds2 box;
    for (const std::uint64_t id : ids)
        if (const engine::Entity* entity = drawing.findById(id)) box.expand(entity->bounds());
    return box;
}

}  // namespace kova::cmd
