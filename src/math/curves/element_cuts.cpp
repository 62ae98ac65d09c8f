#include "math/curves/element_cuts.hpp"

#include "math/angles.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

void cutLine(const Vector2& from, const Vector2& to, const Vector2& a, const Vector2& b, double tolerance,
             std::vector<double>& out) {
    const Vector2 d = to - from;
    const Vector2 e = b - a;
    const double length = d.length();
    const double edge = e.length();
    const double cross = d.cross(e);
    if (std::abs(cross) > 1e-12 * length * edge) {
        const double s = (a - from).cross(e) / cross;
        const double t = (a - from).cross(d) / cross;
        const double es = tolerance / length;
        const double et = tolerance / edge;
        if (s >= -es && s <= 1.0 + es && t >= -et && t <= 1.0 + et) out.push_back(std::clamp(s, 0.0, 1.0));
        return;
    }
    // Parallel, or one of them a point: the ends that lie on the other one.
    for (const Vector2& p : {a, b}) {
        const double s = length > 0.0 ? std::clamp((p - from).dot(d) / (length * length), 0.0, 1.0) : 0.0;
        if (from.lerp(to, s).distance_to(p) <= tolerance) out.push_back(s);
    }
    if (math::closestOnSegment(from, a, b).distance_to(from) <= tolerance) out.push_back(0.0);
    if (math::closestOnSegment(to, a, b).distance_to(to) <= tolerance) out.push_back(1.0);
}

/// True when p, a point of the line through ab, lies between a and b.
bool between(const Vector2& p, const Vector2& a, const Vector2& b, double tolerance) {
    return math::closestOnSegment(p, a, b).distance_to(p) <= tolerance;
}

void cutArc(const PathElement& e, const Vector2& from, const Vector2& a, const Vector2& b, double tolerance,
            std::vector<double>& out) {
    const double sweep = e.t1 - e.t0;
    const Vector2 n = (b - a).normalized().perpendicular();
    const double cosine = n.dot(e.a);
    const double sine = n.dot(e.b);
    const double offset = n.dot(a - e.center);
    const double reach = std::hypot(cosine, sine);
    if (!(std::abs(sweep) > 0.0) || n == Vector2{} || reach <= tolerance) {
        // No length, or flat along the line: its ends stand for it.
        if (between(from, a, b, tolerance)) out.push_back(0.0);
        if (between(e.p, a, b, tolerance)) out.push_back(1.0);
        return;
    }
    if (!(std::abs(offset) <= reach + tolerance)) return;
    const double middle = std::atan2(sine, cosine);
    const double half = std::acos(std::clamp(offset / reach, -1.0, 1.0));
    const double size = std::max(e.a.length(), e.b.length());
    const double slack = tolerance / size;
    for (const double angle : {middle - half, middle + half}) {
        double run = math::normalizeAngle(sweep > 0.0 ? angle - e.t0 : e.t0 - angle);
        if (run > math::kTwoPi - slack) run = 0.0;
        if (run > std::abs(sweep) + slack) continue;
        const double s = std::min(run / std::abs(sweep), 1.0);
        if (between(elementPoint(e, from, s), a, b, 2.0 * tolerance)) out.push_back(s);
    }
}

/// The roots in [0, 1] of the polynomial with these Bernstein coefficients.
void bernsteinRoots(const std::array<double, 4>& c, std::vector<double>& roots) {
    const auto value = [&](double t) {
        const double s = 1.0 - t;
        return c[0] * s * s * s + 3.0 * c[1] * s * s * t + 3.0 * c[2] * s * t * t + c[3] * t * t * t;
    };
    // Between the extremes the curve rises or falls all the way, so that halving finds the one root there.
    std::array<double, 4> stops{0.0, 1.0, 1.0, 1.0};
    std::size_t count = 1;
    const double qa = c[3] - 3.0 * c[2] + 3.0 * c[1] - c[0];
    const double qb = 2.0 * (c[2] - 2.0 * c[1] + c[0]);
    const double qc = c[1] - c[0];
    const auto stop = [&](double t) {
        if (t > 0.0 && t < 1.0) stops[count++] = t;
    };
    if (std::abs(qa) > 1e-14 * (std::abs(qb) + std::abs(qc))) {
        const double discriminant = qb * qb - 4.0 * qa * qc;
        if (discriminant > 0.0) {
            const double q = -0.5 * (qb + std::copysign(std::sqrt(discriminant), qb));
            stop(q / qa);
            if (q != 0.0) stop(qc / q);
        } else if (discriminant == 0.0) {
            stop(-0.5 * qb / qa);
        }
    } else if (qb != 0.0) {
        stop(-qc / qb);
    }
    if (count == 3 && stops[1] > stops[2]) std::swap(stops[1], stops[2]);
    stops[count++] = 1.0;
    for (std::size_t i = 0; i + 1 < count; ++i) {
        double lo = stops[i];
        double hi = stops[i + 1];
        const double atLo = value(lo);
        const double atHi = value(hi);
        if (atLo == 0.0) roots.push_back(lo);
        if (atHi == 0.0) roots.push_back(hi);
        if (!(atLo * atHi < 0.0)) continue;
        for (int step = 0; step < 60 && lo < hi; ++step) {
            const double middle = 0.5 * (lo + hi);
            if ((value(middle) < 0.0) == (atLo < 0.0))
                lo = middle;
            else
                hi = middle;
        }
        roots.push_back(0.5 * (lo + hi));
    }
    // A curve that only touches the line has its root at an extreme, where rounding may keep it off zero.
    const double scale = std::max({std::abs(c[0]), std::abs(c[1]), std::abs(c[2]), std::abs(c[3])});
    for (std::size_t i = 0; i < count; ++i)
        if (std::abs(value(stops[i])) <= 1e-14 * scale) roots.push_back(stops[i]);
}

void cutCubic(const PathElement& e, const Vector2& from, const Vector2& a, const Vector2& b, double tolerance,
              std::vector<double>& out) {
    const math::Cubic curve{from, e.a, e.b, e.p};
    const Vector2 along = (b - a).normalized();
    const Vector2 n = along == Vector2{} ? Vector2{1, 0} : along.perpendicular();
    const auto coefficients = [&](const Vector2& axis, const Vector2& origin) {
        std::array<double, 4> c{};
        for (std::size_t i = 0; i < 4; ++i) c[i] = axis.dot(curve[i] - origin);
        return c;
    };
    const auto isFlat = [&](const std::array<double, 4>& c) {
        return std::all_of(c.begin(), c.end(), [&](double v) { return std::abs(v) <= tolerance; });
    };
    std::vector<double> roots;
    const auto across = coefficients(n, a);
    if (isFlat(across)) {
        const Vector2 axis = along == Vector2{} ? Vector2{0, 1} : along;
        bernsteinRoots(coefficients(axis, a), roots);
        bernsteinRoots(coefficients(axis, b), roots);
        roots.push_back(0.0);
        roots.push_back(1.0);
    } else {
        bernsteinRoots(across, roots);
    }
    for (const double t : roots)
        if (between(math::cubicPoint(curve, t), a, b, 2.0 * tolerance)) out.push_back(t);
}

}  // namespace

void cutElement(const PathElement& e, const Vector2& from, const Vector2& a, const Vector2& b, double tolerance,
                std::vector<double>& out) {
    switch (e.kind) {
        case PathElement::Kind::Move:
            return;
        case PathElement::Kind::Line:
        case PathElement::Kind::Close:
            return cutLine(from, e.p, a, b, tolerance, out);
        case PathElement::Kind::Arc:
            return cutArc(e, from, a, b, tolerance, out);
        case PathElement::Kind::Cubic:
            return cutCubic(e, from, a, b, tolerance, out);
    }
}

}  // namespace kova::engine
