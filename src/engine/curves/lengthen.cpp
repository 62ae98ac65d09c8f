#include "engine/curves/lengthen.hpp"

#include <cmath>

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// The parameter beyond an end piece (from 1 on, or below 0) at which `more` drawing units have been run.
std::optional<double> beyond(const CurvePiece& piece, bool atEnd, double more) {
    if (piece.isStraight()) {
        const double speed = piece.from.distance_to(piece.element.p);
        if (!(speed > 0.0)) return std::nullopt;
        return atEnd ? 1.0 + more / speed : -more / speed;
    }
    if (piece.element.kind != Kind::Arc) return std::nullopt;
    const PathElement& e = piece.element;
    const double sweep = e.t1 - e.t0;
    const double sense = sweep > 0.0 ? 1.0 : -1.0;
    const double room = math::kTwoPi - std::abs(sweep);
    const auto run = [&](double turn) {
        const double from = atEnd ? e.t1 : e.t0;
        return math::lengthOf(math::EllipticArc{e.center, e.a, e.b, from, from + (atEnd ? turn : -turn) * sense});
    };
    double turn = more / e.a.length();
    if (!piece.isCircular()) {
        double lo = 0.0;
        double hi = room;
        if (run(hi) <= more) return std::nullopt;
        for (int i = 0; i < 60; ++i) {
            turn = (lo + hi) / 2.0;
            (run(turn) < more ? lo : hi) = turn;
        }
    }
    if (turn >= room - 1e-12) return std::nullopt;
    return atEnd ? 1.0 + turn / std::abs(sweep) : -turn / std::abs(sweep);
}

bool canChange(const EditCurve& curve) { return !curve.closed() && !curve.isUnbounded(); }

}  // namespace

std::optional<double> includedAngle(const EditCurve& curve) {
    if (curve.pieces().size() != 1 || !curve.pieces()[0].isCircular() || curve.closed()) return std::nullopt;
    return std::abs(curve.pieces()[0].element.t1 - curve.pieces()[0].element.t0);
}

std::unique_ptr<Entity> withLength(const EditCurve& curve, bool atEnd, double length) {
    if (!canChange(curve) || !(length > 0.0) || !std::isfinite(length)) return nullptr;
    const double now = curve.length(curve.start(), curve.end());
    if (length <= now) {
        const double u = atEnd ? curve.advance(curve.start(), length) : curve.advance(curve.start(), now - length);
        return atEnd ? curve.part(curve.start(), u) : curve.part(u, curve.end());
    }
    const std::size_t index = atEnd ? curve.pieces().size() - 1 : 0;
    const auto t = beyond(curve.pieces()[index], atEnd, length - now);
    if (!t) return nullptr;
    const double u = static_cast<double>(index) + *t;
    return atEnd ? curve.part(curve.start(), u) : curve.part(u, curve.end());
}

std::unique_ptr<Entity> withEndNear(const EditCurve& curve, bool atEnd, const Vector2& p) {
    if (!canChange(curve)) return nullptr;
    const std::size_t index = atEnd ? curve.pieces().size() - 1 : 0;
    const CurvePiece& piece = curve.pieces()[index];
    double t = 0.0;
    if (piece.isStraight()) {
        const Vector2 d = piece.element.p - piece.from;
        if (!(d.length_squared() > 0.0)) return nullptr;
        t = (p - piece.from).dot(d) / d.length_squared();
    } else if (piece.element.kind == Kind::Arc) {
        const PathElement& e = piece.element;
        const double det = e.a.cross(e.b);
        const Vector2 d = p - e.center;
        const double angle = std::atan2(e.a.cross(d) / det, d.cross(e.b) / det);
        const double sweep = e.t1 - e.t0;
        t = math::normalizeAngle(sweep > 0.0 ? angle - e.t0 : e.t0 - angle) / std::abs(sweep);
        // Seen from the end that stays, the arc runs the same way round as before.
        if (!atEnd && t >= 1.0) t -= math::kTwoPi / std::abs(sweep);
    } else {
        t = curve.nearest(p) - static_cast<double>(index);
    }
    const double u = static_cast<double>(index) + t;
    return atEnd ? curve.part(curve.start(), u) : curve.part(u, curve.end());
}

}  // namespace kova::engine
