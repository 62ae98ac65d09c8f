#include <cmath>

#include "engine/curves/edit_curve.hpp"
#include "math/curves/element_cuts.hpp"
#include "math/curves/intersect.hpp"

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Chords that a curved piece is looked at by: a whole ellipse, and a cubic.
constexpr double kArcChords = 64.0;
constexpr int kCubicChords = 16;
/// Two curves of these degrees cross at most so often; more meetings mean that they run along each other.
constexpr std::size_t kMostCrossings = 9;

/// Parameter of the point of an arc element in direction of p, from 0 up to just below a full turn. Rounding before the
/// start stays a small negative value.
double arcParameter(const PathElement& e, const Vector2& p) {
    const double det = e.a.cross(e.b);
    const Vector2 d = p - e.center;
    const double angle = std::atan2(e.a.cross(d) / det, d.cross(e.b) / det);
    const double sweep = e.t1 - e.t0;
    double run = math::normalizeAngle(sweep > 0.0 ? angle - e.t0 : e.t0 - angle);
    if (run > math::kTwoPi - 1e-9) run -= math::kTwoPi;
    return run / std::abs(sweep);
}

/// Takes a parameter to [0, 1] when it is outside by no more than rounding. False: it lies outside.
bool settle(const CurvePiece& piece, double& t, double tolerance, bool whole) {
    if (whole || (t >= 0.0 && t <= 1.0)) return true;
    const double speed = piece.tangentAt(std::clamp(t, 0.0, 1.0)).length();
    const double slack = speed > 0.0 ? tolerance / speed : 0.0;
    if (t < -slack || t > 1.0 + slack) return false;
    t = std::clamp(t, 0.0, 1.0);
    return true;
}

void meetLines(const CurvePiece& a, const CurvePiece& b, double tolerance, std::vector<PieceHit>& out, bool wholeA,
               bool wholeB) {
    const Vector2 da = a.element.p - a.from;
    const Vector2 db = b.element.p - b.from;
    const auto at = math::lineParameters(a.from, a.element.p, b.from, b.element.p);
    if (at) {
        double s = at->s;
        double t = at->t;
        if (settle(a, s, tolerance, wholeA) && settle(b, t, tolerance, wholeB)) out.push_back({s, t});
        return;
    }
    // Parallel: the ends that lie on the other one.
    const auto along = [&](const Vector2& p, const CurvePiece& on, const Vector2& d, bool whole, double& u) {
        if (!(d.length_squared() > 0.0)) return false;
        u = (p - on.from).dot(d) / d.length_squared();
        if (p.distance_to(on.from + d * u) > tolerance) return false;
        return settle(on, u, tolerance, whole);
    };
    double u;
    if (along(b.from, a, da, wholeA, u)) out.push_back({u, 0.0});
    if (along(b.element.p, a, da, wholeA, u)) out.push_back({u, 1.0});
    if (along(a.from, b, db, wholeB, u)) out.push_back({0.0, u});
    if (along(a.element.p, b, db, wholeB, u)) out.push_back({1.0, u});
}

/// A line and a curve; `curve` as a whole ellipse where asked for.
void meetLine(const CurvePiece& line, const CurvePiece& curve, double tolerance, std::vector<PieceHit>& out,
              bool wholeLine, bool wholeCurve, bool swapped) {
    CurvePiece c = curve;
    if (wholeCurve && c.element.kind == Kind::Arc)
        c.element.t1 = c.element.t0 + std::copysign(math::kTwoPi, c.element.t1 - c.element.t0);
    const Vector2 d = line.element.p - line.from;
    const double length = d.length();
    if (!(length > 0.0)) return;
    Vector2 a = line.from;
    Vector2 b = line.element.p;
    if (wholeLine) {
        // As far as the curve reaches.
        const math::Bounds2 box = c.bounds();
        const double reach = box.width() + box.height() + tolerance;
        const double middle = (box.center() - a).dot(d) / length;
        a = line.from + d * ((middle - reach) / length);
        b = line.from + d * ((middle + reach) / length);
    }
    std::vector<double> cuts;
    cutElement(c.element, c.from, a, b, tolerance, cuts);
    std::sort(cuts.begin(), cuts.end());
    Vector2 last;
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        const Vector2 p = c.pointAt(cuts[i]);
        if (i > 0 && p.distance_to(last) <= tolerance) continue;
        last = p;
        double s = (p - line.from).dot(d) / (length * length);
        if (!settle(line, s, 2.0 * tolerance, wholeLine)) continue;
        double t = cuts[i];
        if (wholeCurve && c.element.kind == Kind::Arc)
            t *= math::kTwoPi / std::abs(curve.element.t1 - curve.element.t0);
        out.push_back(swapped ? PieceHit{t, s} : PieceHit{s, t});
    }
}

void meetCircles(const CurvePiece& a, const CurvePiece& b, double tolerance, std::vector<PieceHit>& out, bool wholeA,
                 bool wholeB) {
    const double ra = a.element.a.length();
    const double rb = b.element.a.length();
    const auto take = [&](const Vector2& p) {
        double s = arcParameter(a.element, p);
        double t = arcParameter(b.element, p);
        if (settle(a, s, tolerance, wholeA) && settle(b, t, tolerance, wholeB)) out.push_back({s, t});
    };
    if (a.element.center.distance_to(b.element.center) <= tolerance && std::abs(ra - rb) <= tolerance) {
        for (const CurvePiece* piece : {&a, &b}) {
            take(piece->from);
            take(piece->element.p);
        }
        return;
    }
    for (const Vector2& p : math::circleCircle(a.element.center, ra, b.element.center, rb, tolerance)) take(p);
}

CurvePiece wholeOf(const CurvePiece& piece, double& factor) {
    CurvePiece whole = piece;
    factor = 1.0;
    if (piece.element.kind != Kind::Arc) return whole;
    const double sweep = piece.element.t1 - piece.element.t0;
    factor = math::kTwoPi / std::abs(sweep);
    whole.element.t1 = piece.element.t0 + std::copysign(math::kTwoPi, sweep);
    whole.element.p = piece.from;
    return whole;
}

struct Chord {
    double t0;
    double t1;
    math::Bounds2 box;
};

std::vector<Chord> chordsOf(const CurvePiece& piece) {
    int count = kCubicChords;
    if (piece.element.kind == Kind::Arc)
        count = std::max(
            2, static_cast<int>(std::ceil(std::abs(piece.element.t1 - piece.element.t0) / math::kTwoPi * kArcChords)));
    std::vector<Chord> out;
    Vector2 from = piece.from;
    for (int i = 0; i < count; ++i) {
        Chord chord{static_cast<double>(i) / count, static_cast<double>(i + 1) / count, {}};
        const Vector2 to = piece.pointAt(chord.t1);
        const Vector2 middle = piece.pointAt((chord.t0 + chord.t1) / 2.0);
        chord.box.expand(from);
        chord.box.expand(to);
        chord.box.expand(middle);
        // The bow over the chord, with room to spare.
        chord.box = chord.box.inflated(middle.distance_to((from + to) / 2.0) + 1e-12 * from.length());
        out.push_back(chord);
        from = to;
    }
    return out;
}

/// Walks two parameters to where the curves come nearest to each other.
bool refine(const CurvePiece& a, const CurvePiece& b, double& s, double& t, double tolerance) {
    for (int i = 0; i < 40; ++i) {
        const Vector2 off = b.pointAt(t) - a.pointAt(s);
        const Vector2 da = a.tangentAt(s);
        const Vector2 db = b.tangentAt(t);
        const double det = da.cross(db);
        double ds;
        double dt;
        if (std::abs(det) > 1e-7 * da.length() * db.length()) {
            ds = off.cross(db) / det;
            dt = off.cross(da) / det;
        } else {
            // Nearly along each other: share the way.
            const double size = da.length_squared() + db.length_squared();
            if (!(size > 0.0)) break;
            ds = off.dot(da) / size;
            dt = -off.dot(db) / size;
        }
        const double s1 = std::clamp(s + std::clamp(ds, -0.1, 0.1), 0.0, 1.0);
        const double t1 = std::clamp(t + std::clamp(dt, -0.1, 0.1), 0.0, 1.0);
        const bool still = std::abs(s1 - s) + std::abs(t1 - t) < 1e-15;
        s = s1;
        t = t1;
        if (still) break;
    }
    return a.pointAt(s).distance_to(b.pointAt(t)) <= tolerance;
}

void meetCurves(const CurvePiece& a, const CurvePiece& b, double tolerance, std::vector<PieceHit>& out, bool wholeA,
                bool wholeB) {
    double fa = 1.0;
    double fb = 1.0;
    const CurvePiece ca = wholeA ? wholeOf(a, fa) : a;
    const CurvePiece cb = wholeB ? wholeOf(b, fb) : b;
    if (!ca.bounds().inflated(tolerance).intersects(cb.bounds())) return;
    std::vector<PieceHit> found;
    const std::vector<Chord> chordsA = chordsOf(ca);
    const std::vector<Chord> chordsB = chordsOf(cb);
    for (const Chord& p : chordsA)
        for (const Chord& q : chordsB) {
            if (!p.box.inflated(tolerance).intersects(q.box)) continue;
            double s = (p.t0 + p.t1) / 2.0;
            double t = (q.t0 + q.t1) / 2.0;
            if (!refine(ca, cb, s, t, tolerance)) continue;
            const Vector2 at = ca.pointAt(s);
            const bool known = std::any_of(found.begin(), found.end(), [&](const PieceHit& h) {
                return ca.pointAt(h.s).distance_to(at) <= 1e3 * tolerance && std::abs(h.s - s) < 0.05;
            });
            if (!known) found.push_back({s, t});
        }
    if (found.size() > kMostCrossings) {
        // They run along each other: the ends of what they share.
        const auto bySource = [](const PieceHit& x, const PieceHit& y) { return x.s < y.s; };
        const auto [first, last] = std::minmax_element(found.begin(), found.end(), bySource);
        found = {*first, *last};
    }
    for (const PieceHit& hit : found) out.push_back({hit.s * fa, hit.t * fb});
}

}  // namespace

void meetPieces(const CurvePiece& a, const CurvePiece& b, double tolerance, std::vector<PieceHit>& out, bool wholeA,
                bool wholeB) {
    if (a.isStraight() && b.isStraight()) return meetLines(a, b, tolerance, out, wholeA, wholeB);
    if (a.isStraight()) return meetLine(a, b, tolerance, out, wholeA, wholeB, false);
    if (b.isStraight()) return meetLine(b, a, tolerance, out, wholeB, wholeA, true);
    if (a.isCircular() && b.isCircular()) return meetCircles(a, b, tolerance, out, wholeA, wholeB);
    meetCurves(a, b, tolerance, out, wholeA, wholeB);
}

}  // namespace kova::engine
