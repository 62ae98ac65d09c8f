#include "math/curves/path.hpp"

#include <cmath>

#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

void Path::continueFigure() {
    if (elements_.empty() || elements_.back().kind == Kind::Close) moveTo(start_);
}

Path& Path::moveTo(const Vector2& p) {
    PathElement e;
    e.kind = Kind::Move;
    e.p = p;
    // Of several moves in a row only the last one counts.
    if (!elements_.empty() && elements_.back().kind == Kind::Move)
        elements_.back() = e;
    else
        elements_.push_back(e);
    start_ = p;
    return *this;
}

Path& Path::lineTo(const Vector2& p) {
    if (elements_.empty()) return moveTo(p);
    continueFigure();
    PathElement e;
    e.kind = Kind::Line;
    e.p = p;
    elements_.push_back(e);
    return *this;
}

Path& Path::arc(const Vector2& center, double radius, double t0, double t1) {
    return ellipticArc(center, {radius, 0.0}, {0.0, radius}, t0, t1);
}

Path& Path::ellipticArc(const Vector2& center, const Vector2& u, const Vector2& v, double t0, double t1) {
    const Vector2 d0 = math::unitAt(t0);
    const Vector2 d1 = math::unitAt(t1);
    const Vector2 first = center + u * d0.x + v * d0.y;
    if (elements_.empty() || elements_.back().kind == Kind::Close) {
        moveTo(first);
    } else {
        const double size = std::abs(first.x) + std::abs(first.y) + u.length() + v.length();
        if (current().distance_to(first) > 1e-9 * size) lineTo(first);
    }
    PathElement e;
    e.kind = Kind::Arc;
    e.p = center + u * d1.x + v * d1.y;
    e.a = u;
    e.b = v;
    e.center = center;
    e.t0 = t0;
    e.t1 = t1;
    elements_.push_back(e);
    return *this;
}

Path& Path::bulgeTo(const Vector2& to, double bulge) {
    if (elements_.empty()) return moveTo(to);
    const auto arc = math::arcFromBulge(current(), to, bulge);
    if (!arc) return lineTo(to);
    continueFigure();
    PathElement e;
    e.kind = Kind::Arc;
    e.p = to;  // to the last bit: what follows joins on
    e.a = {arc->radius, 0.0};
    e.b = {0.0, arc->radius};
    e.center = arc->center;
    e.t0 = arc->start;
    e.t1 = arc->end();
    elements_.push_back(e);
    return *this;
}

Path& Path::cubicTo(const Vector2& c1, const Vector2& c2, const Vector2& p) {
    if (elements_.empty()) moveTo(c1);
    continueFigure();
    PathElement e;
    e.kind = Kind::Cubic;
    e.p = p;
    e.a = c1;
    e.b = c2;
    elements_.push_back(e);
    return *this;
}

Path& Path::close() {
    if (elements_.empty() || elements_.back().kind == Kind::Close || elements_.back().kind == Kind::Move) return *this;
    PathElement e;
    e.kind = Kind::Close;
    e.p = start_;
    elements_.push_back(e);
    return *this;
}

Path& Path::polygon(std::span<const Vector2> points, bool closed) {
    if (points.empty()) return *this;
    elements_.reserve(elements_.size() + points.size() + 1);
    moveTo(points[0]);
    for (const Vector2& p : points.subspan(1)) lineTo(p);
    return closed ? close() : *this;
}

Path& Path::append(PathView other) {
    elements_.reserve(elements_.size() + other.size());
    for (const PathElement& e : other) {
        if (e.kind == Kind::Move) {
            moveTo(e.p);
            continue;
        }
        if (elements_.empty()) moveTo(e.p);
        if (e.kind == Kind::Close) {
            close();
            continue;
        }
        continueFigure();
        elements_.push_back(e);
    }
    return *this;
}

void transformPath(PathView path, const math::Matrix4& m, Path& out) {
    out.elements_.assign(path.begin(), path.end());
    for (PathElement& e : out.elements_) {
        e.p = m.transform_point(e.p);
        if (e.kind == Kind::Move) out.start_ = e.p;
        if (e.kind == Kind::Cubic) {
            e.a = m.transform_point(e.a);
            e.b = m.transform_point(e.b);
        } else if (e.kind == Kind::Arc) {
            e.center = m.transform_point(e.center);
            e.a = m.transform_direction(e.a);
            e.b = m.transform_direction(e.b);
        }
    }
}

}  // namespace kova::engine
