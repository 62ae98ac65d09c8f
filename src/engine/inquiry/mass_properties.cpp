#include "engine/inquiry/mass_properties.hpp"

#include <cmath>
#include <map>
#include <tuple>

#include "engine/entities/mesh.hpp"
#include "engine/entities/polyface.hpp"
#include "math/curves/ring_nesting.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;
using math::Vector3;

namespace {

// Gauss-Legendre with eight points: exact up to degree 15 (a cubic needs 11).
constexpr std::array<double, 4> kNodes{0.1834346424956498, 0.5255324099163290, 0.7966664774136267, 0.9602898564975363};
constexpr std::array<double, 4> kWeights{0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                                         0.1012285362903763};

/// Steps of an arc in which its powers of sine and cosine are integrated to rounding.
constexpr double kArcStep = math::kPi / 4.0;
constexpr int kMaxArcSteps = 64;

/// Adds what one point of the outline, with its step, gives to the integrals.
void addPoint(AreaMoments& m, const Vector2& p, const Vector2& d, double weight) {
    m.area += weight * 0.5 * (p.x * d.y - p.y * d.x);
    m.x += weight * 0.5 * p.x * p.x * d.y;
    m.y -= weight * 0.5 * p.y * p.y * d.x;
    m.xx += weight * p.x * p.x * p.x * d.y / 3.0;
    m.yy -= weight * p.y * p.y * p.y * d.x / 3.0;
    m.xy += weight * 0.25 * (p.x * p.x * p.y * d.y - p.x * p.y * p.y * d.x);
}

void addElement(AreaMoments& m, const PathElement& e, const Vector2& from, const Vector2& origin) {
    int steps = 1;
    if (e.kind == PathElement::Kind::Arc)
        steps = static_cast<int>(std::clamp(std::ceil(std::abs(e.t1 - e.t0) / kArcStep), 1.0, double(kMaxArcSteps)));
    for (int step = 0; step < steps; ++step) {
        const double middle = (step + 0.5) / steps;
        const double half = 0.5 / steps;
        for (std::size_t i = 0; i < kNodes.size(); ++i)
            for (const double side : {-1.0, 1.0}) {
                const double t = middle + side * half * kNodes[i];
                addPoint(m, elementPoint(e, from, t) - origin, elementTangent(e, from, t), kWeights[i] * half);
            }
    }
}

PathElement lineTo(const Vector2& p) {
    PathElement line;
    line.kind = PathElement::Kind::Line;
    line.p = p;
    return line;
}

}  // namespace

AreaMoments& AreaMoments::operator+=(const AreaMoments& o) {
    area += o.area;
    x += o.x;
    y += o.y;
    xx += o.xx;
    yy += o.yy;
    xy += o.xy;
    return *this;
}

AreaMoments AreaMoments::operator*(double f) const { return {area * f, x * f, y * f, xx * f, yy * f, xy * f}; }

Vector2 AreaMoments::centroid() const { return area != 0.0 ? Vector2{x / area, y / area} : Vector2{}; }

AreaMoments AreaMoments::about(const Vector2& o) const {
    AreaMoments m;
    m.area = area;
    m.x = x - o.x * area;
    m.y = y - o.y * area;
    m.xx = xx - 2.0 * o.x * x + o.x * o.x * area;
    m.yy = yy - 2.0 * o.y * y + o.y * o.y * area;
    m.xy = xy - o.x * y - o.y * x + o.x * o.y * area;
    return m;
}

AreaMoments figureMoments(PathView figure) {
    AreaMoments m;
    const Bounds2 box = pathBounds(figure);
    if (box.is_empty() || !box.min.is_finite() || !box.max.is_finite()) return m;
    // About the middle of the figure, so that one far from the origin keeps its digits.
    const Vector2 middle = box.center();
    Vector2 start;
    Vector2 from;
    const auto close = [&] {
        if (from != start) addElement(m, lineTo(start), from, middle);
        from = start;
    };
    for (const PathElement& e : figure) {
        if (e.kind == PathElement::Kind::Move) {
            close();
            start = e.p;
        } else if (e.kind == PathElement::Kind::Close) {
            close();
        } else {
            addElement(m, e, from, middle);
        }
        from = e.p;
    }
    close();
    return m.about(-middle);
}

AreaMoments evenOddMoments(PathView path) {
    std::vector<AreaMoments> figures;
    std::vector<std::vector<Ring>> rings;
    const auto add = [&](std::size_t begin, std::size_t end) {
        if (end <= begin + 1) return;
        const PathView figure = path.subspan(begin, end - begin);
        AreaMoments m = figureMoments(figure);
        if (m.area < 0.0) m = m * -1.0;
        figures.push_back(m);
        rings.push_back(ringsOf(figure));
    };
    std::size_t begin = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i].kind != PathElement::Kind::Move) continue;
        add(begin, i);
        begin = i;
    }
    add(begin, path.size());
    const std::optional<std::vector<int>> depths = ringDepths(rings);
    AreaMoments sum;
    for (std::size_t i = 0; i < figures.size(); ++i)
        sum += depths && (*depths)[i] % 2 != 0 ? figures[i] * -1.0 : figures[i];
    return sum;
}

std::array<PrincipalMoment, 2> principalMoments(const AreaMoments& moments) {
    const AreaMoments m = moments.about(moments.centroid());
    // About the x axis stands the integral of y squared. The axes are those in which the product vanishes.
    const double ix = m.yy;
    const double iy = m.xx;
    double angle = 0.0;
    const double size = std::abs(ix) + std::abs(iy);
    if (std::abs(m.xy) > 1e-14 * size) angle = 0.5 * std::atan2(-2.0 * m.xy, ix - iy);
    if (angle > math::kPi / 4.0) angle -= math::kPi / 2.0;
    if (angle < -math::kPi / 4.0) angle += math::kPi / 2.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    std::array<PrincipalMoment, 2> out;
    out[0] = {ix * c * c + iy * s * s - 2.0 * m.xy * s * c, {c, s, 0.0}};
    out[1] = {ix * s * s + iy * c * c + 2.0 * m.xy * s * c, {-s, c, 0.0}};
    return out;
}

VolumeMoments& VolumeMoments::operator+=(const VolumeMoments& o) {
    volume += o.volume;
    first = first + o.first;
    squares = squares + o.squares;
    products = products + o.products;
    return *this;
}

VolumeMoments VolumeMoments::operator*(double f) const { return {volume * f, first * f, squares * f, products * f}; }

Vector3 VolumeMoments::centroid() const { return volume != 0.0 ? first / volume : Vector3{}; }

VolumeMoments VolumeMoments::about(const Vector3& o) const {
    VolumeMoments m;
    m.volume = volume;
    m.first = first - o * volume;
    m.squares = {squares.x - 2.0 * o.x * first.x + o.x * o.x * volume,
                 squares.y - 2.0 * o.y * first.y + o.y * o.y * volume,
                 squares.z - 2.0 * o.z * first.z + o.z * o.z * volume};
    m.products = {products.x - o.x * first.y - o.y * first.x + o.x * o.y * volume,
                  products.y - o.y * first.z - o.z * first.y + o.y * o.z * volume,
                  products.z - o.z * first.x - o.x * first.z + o.z * o.x * volume};
    return m;
}

Vector3 VolumeMoments::inertia() const { return {squares.y + squares.z, squares.z + squares.x, squares.x + squares.y}; }

std::array<PrincipalMoment, 3> principalMoments(const VolumeMoments& moments) {
    const VolumeMoments m = moments.about(moments.centroid());
    const Vector3 diagonal = m.inertia();
    double a[3][3] = {{diagonal.x, -m.products.x, -m.products.z},
                      {-m.products.x, diagonal.y, -m.products.y},
                      {-m.products.z, -m.products.y, diagonal.z}};
    double v[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    // Jacobi's rotations; three by three settles within a few sweeps.
    const double size = std::abs(diagonal.x) + std::abs(diagonal.y) + std::abs(diagonal.z);
    for (int sweep = 0; sweep < 30; ++sweep) {
        if (!(std::abs(a[0][1]) + std::abs(a[0][2]) + std::abs(a[1][2]) > 1e-15 * size)) break;
        for (int p = 0; p < 2; ++p)
            for (int q = p + 1; q < 3; ++q) {
                if (a[p][q] == 0.0) continue;
                const double theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
                const double t = (theta >= 0.0 ? 1.0 : -1.0) / (std::abs(theta) + std::hypot(theta, 1.0));
                const double c = 1.0 / std::hypot(t, 1.0);
                const double s = t * c;
                for (auto& row : a) {
                    const double rp = row[p];
                    row[p] = c * rp - s * row[q];
                    row[q] = s * rp + c * row[q];
                }
                for (int k = 0; k < 3; ++k) {
                    const double pk = a[p][k];
                    a[p][k] = c * pk - s * a[q][k];
                    a[q][k] = s * pk + c * a[q][k];
                    const double vp = v[k][p];
                    v[k][p] = c * vp - s * v[k][q];
                    v[k][q] = s * vp + c * v[k][q];
                }
            }
    }
    std::array<PrincipalMoment, 3> all;
    for (int i = 0; i < 3; ++i) all[static_cast<std::size_t>(i)] = {a[i][i], {v[0][i], v[1][i], v[2][i]}};
    const auto nearest = [&](std::size_t from, double Vector3::*axis) {
        std::size_t best = from;
        for (std::size_t i = from; i < 3; ++i)
            if (std::abs(all[i].axis.*axis) > std::abs(all[best].axis.*axis)) best = i;
        std::swap(all[from], all[best]);
        if (all[from].axis.*axis < 0.0) all[from].axis = -all[from].axis;
    };
    nearest(0, &Vector3::x);
    nearest(1, &Vector3::y);
    all[2].axis = all[0].axis.cross(all[1].axis);
    return all;
}

std::optional<VolumeMoments> bodyMoments(std::span<const Triangle> triangles) {
    if (triangles.size() < 4) return std::nullopt;
    using Key = std::tuple<double, double, double>;
    const auto key = [](const Vector3& p) { return Key{p.x, p.y, p.z}; };
    std::map<std::pair<Key, Key>, int> edges;
    Vector3 sum;
    for (const Triangle& t : triangles) {
        for (std::size_t i = 0; i < 3; ++i) {
            const Vector3& from = t[i];
            const Vector3& to = t[(i + 1) % 3];
            if (!from.is_finite()) return std::nullopt;
            if (from == to) continue;
            if (key(from) < key(to))
                ++edges[{key(from), key(to)}];
            else
                --edges[{key(to), key(from)}];
        }
        sum = sum + t[0];
    }
    for (const auto& [edge, balance] : edges)
        if (balance != 0) return std::nullopt;
    // Tetrahedra from a point in the midst of the body to its faces.
    const Vector3 middle = sum / static_cast<double>(triangles.size());
    VolumeMoments m;
    for (const Triangle& t : triangles) {
        const Vector3 a = t[0] - middle;
        const Vector3 b = t[1] - middle;
        const Vector3 c = t[2] - middle;
        const double volume = a.dot(b.cross(c)) / 6.0;
        const Vector3 s = a + b + c;
        m.volume += volume;
        m.first = m.first + s * (volume / 4.0);
        // Over a tetrahedron with one corner at the origin: volume / 20 (sum of squares + square of the sum).
        const auto square = [&](double Vector3::*k) {
            return a.*k * (a.*k) + b.*k * (b.*k) + c.*k * (c.*k) + s.*k * (s.*k);
        };
        const auto product = [&](double Vector3::*k, double Vector3::*l) {
            return a.*k * (a.*l) + b.*k * (b.*l) + c.*k * (c.*l) + s.*k * (s.*l);
        };
        const double share = volume / 20.0;
        m.squares = m.squares + Vector3{square(&Vector3::x), square(&Vector3::y), square(&Vector3::z)} * share;
        m.products = m.products + Vector3{product(&Vector3::x, &Vector3::y), product(&Vector3::y, &Vector3::z),
                                          product(&Vector3::z, &Vector3::x)} *
                                      share;
    }
    if (m.volume < 0.0) m = m * -1.0;
    if (!(m.volume > 0.0)) return std::nullopt;
    return m.about(-middle);
}

std::vector<Triangle> meshTriangles(const Entity& entity) {
    std::vector<Triangle> out;
    if (entity.type() == EntityType::Mesh) {
        const auto& mesh = static_cast<const MeshEntity&>(entity);
        const std::size_t rows = mesh.filledRows();
        const std::size_t cols = mesh.filledColumns();
        if (rows < 2 || cols < 2) return out;
        for (std::size_t i = 0; i + (mesh.closedM ? 0 : 1) < rows; ++i)
            for (std::size_t j = 0; j + (mesh.closedN ? 0 : 1) < cols; ++j) {
                const std::size_t i1 = (i + 1) % rows;
                const std::size_t j1 = (j + 1) % cols;
                const Vector3& a = mesh.vertices[i * cols + j];
                const Vector3& b = mesh.vertices[i1 * cols + j];
                const Vector3& c = mesh.vertices[i1 * cols + j1];
                const Vector3& d = mesh.vertices[i * cols + j1];
                out.push_back({a, b, c});
                out.push_back({a, c, d});
            }
    } else if (entity.type() == EntityType::Polyface) {
        const auto& faces = static_cast<const PolyfaceEntity&>(entity);
        for (const std::vector<std::int32_t>& face : faces.faces) {
            const auto at = [&](std::size_t i) { return faces.vertexIndex(face[i]); };
            for (std::size_t i = 1; i + 1 < face.size(); ++i)
                if (const auto a = at(0), b = at(i), c = at(i + 1); a && b && c)
                    out.push_back({faces.vertices[*a], faces.vertices[*b], faces.vertices[*c]});
        }
    }
    return out;
}

}  // namespace kova::engine
