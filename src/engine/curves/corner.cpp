#include "engine/curves/corner.hpp"

#include <cmath>

#include "math/kernels/blend_circles.hpp"
#include "math/curves/intersect.hpp"
#include "math/kernels/tangent_circles.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Pieces of a spline that are searched, about the picked one.
constexpr std::size_t kMostPieces = 4096;
/// Chords of a whole turn, and of all of a spline.
constexpr int kTurnChords = 256;
constexpr std::size_t kSplineChords = 16384;
/// Radii beyond so many times the size of the curves leave nothing of them.
constexpr double kMostRadius = 1e6;

/// A place on a curve. u counts on splines only; elsewhere the point says it.
struct Place {
    Vector2 point;
    double u = 0.0;
};

/// One of the two curves, in coordinates about the first pick: rounding goes by the size of the corner then, not by the
/// place of the drawing.
class Side {
public:
    Side(const PickedCurve& picked, const Vector2& origin) : picked_(picked), origin_(origin), piece_(picked.at()) {
        move(piece_);
        pick_ = picked.point - origin;
        spline_ = picked.curve->entity().type() == EntityType::Spline;
        if (spline_) {
            const std::size_t n = picked.curve->pieces().size();
            first_ = picked.piece > kMostPieces / 2 ? picked.piece - kMostPieces / 2 : 0;
            last_ = std::min(n, first_ + kMostPieces);
        }
    }

    const CurvePiece& piece() const { return piece_; }
    const Vector2& pick() const { return pick_; }
    const PickedCurve& picked() const { return picked_; }
    const Entity& entity() const { return picked_.curve->entity(); }
    bool isStraight() const { return !spline_ && piece_.isStraight(); }
    /// A line or circle, as which there are formulas for.
    bool isSimple() const { return !spline_ && (piece_.isStraight() || piece_.isCircular()); }
    bool hasLength() const { return spline_ || !piece_.isStraight() || piece_.from != piece_.element.p; }
    /// A closed curve, which a corner with another one leaves whole.
    bool isRing() const { return picked_.curve->closed() && entity().type() != EntityType::Polyline; }

    math::TangentCurve tangentCurve() const {
        if (isStraight()) return math::TangentCurve::line(piece_.from, piece_.element.p);
        return math::TangentCurve::circle(piece_.element.center, piece_.element.a.length());
    }

    /// Parameter on the piece of a point of its line or ellipse. On an ellipse a place off the arc can be had from
    /// either end: beyond the far one when `keepsStart`.
    double parameterOf(const Vector2& p, bool keepsStart) const {
        if (piece_.isStraight()) {
            const Vector2 d = piece_.element.p - piece_.from;
            return (p - piece_.from).dot(d) / d.length_squared();
        }
        const PathElement& e = piece_.element;
        const double det = e.a.cross(e.b);
        const Vector2 d = p - e.center;
        const double angle = std::atan2(e.a.cross(d) / det, d.cross(e.b) / det);
        const double sweep = e.t1 - e.t0;
        double run = math::normalizeAngle(sweep > 0.0 ? angle - e.t0 : e.t0 - angle);
        if (run > math::kTwoPi - 1e-12) run = 0.0;
        const double t = run / std::abs(sweep);
        if (!keepsStart && t > 1.0 + 1e-12) return t - math::kTwoPi / std::abs(sweep);
        return t;
    }

    /// Direction of the curve there, as its parameter grows.
    Vector2 directionAt(const Place& at) const {
        if (spline_) return picked_.curve->tangentAt(at.u).normalized();
        if (piece_.isStraight()) return (piece_.element.p - piece_.from).normalized();
        const PathElement& e = piece_.element;
        const double t = e.t0 + (e.t1 - e.t0) * parameterOf(at.point, true);
        const Vector2 speed = math::EllipticArc{e.center, e.a, e.b}.derivativeAt(t);
        return speed / (speed.length() * (e.t1 > e.t0 ? 1.0 : -1.0));
    }

    CornerCut cutAt(const Place& at, bool keepsStart) const {
        if (spline_) return {at.u, keepsStart, 0};
        const double t = parameterOf(at.point, keepsStart);
        if (picked_.curve->isUnbounded()) return {t, keepsStart, 0};
        return {static_cast<double>(picked_.piece) + t, keepsStart, picked_.piece};
    }

    /// True when the pick lies on the part before a place.
    bool picksStart(const Place& at) const {
        if (spline_) return picked_.u < at.u;
        const double u = parameterOf(pick_, true);
        const double t = parameterOf(at.point, true);
        if (piece_.isStraight()) return u < t;
        // On an arc: the part of it between its start and the place, when that lies on it; else the end nearer to the
        // place gives way.
        if (t <= 1.0) return u < t;
        const double turn = math::kTwoPi / std::abs(piece_.element.t1 - piece_.element.t0);
        return t - 1.0 < turn - t;
    }

    /// False when a cut would leave nothing of the picked piece, or would have to lengthen what cannot grow; inside a
    /// polyline it can where the neighbour goes (`free`).
    bool allows(const CornerCut& cut, bool free) const {
        const EditCurve& curve = *picked_.curve;
        if (isRing()) return true;
        if (curve.isUnbounded()) return cut.keepsStart ? cut.u > curve.start() : true;
        if (spline_) return cut.keepsStart ? cut.u > 1e-12 : cut.u < curve.end() - 1e-12;
        const double t = cut.u - static_cast<double>(picked_.piece);
        const std::size_t last = curve.pieces().size() - 1;
        if (cut.keepsStart) return t > 1e-12 && (t <= 1.0 + 1e-9 || free || (!curve.closed() && picked_.piece == last));
        return t < 1.0 - 1e-12 && (t >= -1e-9 || free || (!curve.closed() && picked_.piece == 0));
    }

    math::Bounds2 bounds() const {
        math::Bounds2 box;
        if (!spline_) {
            CurvePiece whole = piece_;
            if (whole.element.kind == PathElement::Kind::Arc) whole.element.t1 = whole.element.t0 + math::kTwoPi;
            return whole.bounds();
        }
        for (std::size_t i = first_; i < last_; ++i) box.expand(picked_.curve->pieces()[i].bounds());
        return math::Bounds2(box.min - origin_, box.max - origin_);
    }

    /// The curve as it can be prolonged; a straight one as far as `window` reaches.
    math::ParametricCurve parametric(const math::Bounds2& window) const {
        math::ParametricCurve out;
        if (spline_) {
            for (std::size_t i = first_; i <= last_; ++i) out.stops.push_back(static_cast<double>(i));
            out.chords = static_cast<int>(std::clamp<std::size_t>(kSplineChords / (last_ - first_), 4, 48));
            out.closed = picked_.curve->closed() && last_ - first_ == picked_.curve->pieces().size();
            out.at = [this](double u) { return onSpline(u); };
            return out;
        }
        if (piece_.isStraight()) {
            const Vector2 d = piece_.element.p - piece_.from;
            const double middle = parameterOf(window.center(), true);
            const double reach = (window.width() + window.height()) / d.length();
            out.stops = {middle - reach, middle + reach};
            out.chords = 1;
            out.at = [from = piece_.from, d](double u) { return math::SplineDerivatives{from + d * u, d, {}}; };
            return out;
        }
        out.stops = {0.0, math::kTwoPi};
        out.chords = kTurnChords;
        out.closed = true;
        out.at = [e = piece_.element](double u) {
            const math::EllipticArc arc{e.center, e.a, e.b};
            const Vector2 p = arc.pointAt(u);
            return math::SplineDerivatives{p, arc.derivativeAt(u), e.center - p};
        };
        return out;
    }

private:
    void move(CurvePiece& piece) const {
        piece.from -= origin_;
        piece.element.p -= origin_;
        if (piece.element.kind == PathElement::Kind::Arc) {
            piece.element.center -= origin_;
        } else if (piece.element.kind == PathElement::Kind::Cubic) {
            piece.element.a -= origin_;
            piece.element.b -= origin_;
        }
    }

    math::SplineDerivatives onSpline(double u) const {
        const auto& pieces = picked_.curve->pieces();
        const auto i = std::min(static_cast<std::size_t>(std::max(0.0, u)), pieces.size() - 1);
        CurvePiece piece = pieces[i];
        move(piece);
        if (piece.isStraight()) {
            const Vector2 d = piece.element.p - piece.from;
            return {piece.from + d * (u - static_cast<double>(i)), d, {}};
        }
        const math::Cubic c{piece.from, piece.element.a, piece.element.b, piece.element.p};
        const double t = u - static_cast<double>(i);
        return {math::cubicPoint(c, t), math::cubicDerivative(c, t), math::cubicSecondDerivative(c, t)};
    }

    const PickedCurve& picked_;
    Vector2 origin_;
    CurvePiece piece_;
    Vector2 pick_;
    bool spline_ = false;
    std::size_t first_ = 0;
    std::size_t last_ = 0;
};

/// A circle that touches both, or (radius 0) a point that both have.
struct Contact {
    Vector2 center;
    Place a;
    Place b;
};

/// Size of both together.
double sizeOf(const Side& a, const Side& b) {
    const math::Bounds2 boxA = a.bounds();
    const math::Bounds2 boxB = b.bounds();
    return boxA.width() + boxA.height() + boxB.width() + boxB.height();
}

std::vector<Contact> blends(const Side& a, const Side& b, double radius) {
    std::vector<Contact> out;
    const double size = sizeOf(a, b);
    if (!(radius <= kMostRadius * size)) return out;
    const double room = 2.5 * radius + 0.01 * size;
    for (const math::BlendCircle& circle :
         math::blendCircles(a.parametric(b.bounds().inflated(room)), b.parametric(a.bounds().inflated(room)), radius))
        out.push_back({circle.center, {circle.first, circle.s}, {circle.second, circle.t}});
    return out;
}

/// Where the curves, prolonged, meet.
std::vector<Contact> meetings(const Side& a, const Side& b) {
    if (!a.isSimple() || !b.isSimple()) return blends(a, b, 0.0);
    std::vector<Contact> out;
    std::vector<PieceHit> hits;
    meetPieces(a.piece(), b.piece(), 1e-10 * sizeOf(a, b), hits, true, true);
    for (const PieceHit& hit : hits) {
        const CurvePiece& piece = a.piece();
        const PathElement& e = piece.element;
        const Vector2 p = piece.isStraight()
                              ? piece.from + (e.p - piece.from) * hit.s
                              : math::EllipticArc{e.center, e.a, e.b}.pointAt(e.t0 + (e.t1 - e.t0) * hit.s);
        out.push_back({p, {p}, {p}});
    }
    return out;
}

std::vector<Contact> circlesOf(const Side& a, const Side& b, double radius) {
    if (!a.isSimple() || !b.isSimple()) return blends(a, b, radius);
    std::vector<Contact> out;
    const double size = sizeOf(a, b);
    for (const math::TangentCircle& circle : math::tangentCircles(a.tangentCurve(), b.tangentCurve(), radius)) {
        // A huge circle touches nothing truly.
        const auto off = [&](const Vector2& p) { return std::abs(p.distance_to(circle.center) - radius); };
        if (off(circle.touch[0]) + off(circle.touch[1]) > 1e-7 * size) continue;
        out.push_back({circle.center, {circle.touch[0]}, {circle.touch[1]}});
    }
    return out;
}

double fromPicks(const Side& a, const Side& b, const Contact& contact) {
    return contact.a.point.distance_to(a.pick()) + contact.b.point.distance_to(b.pick());
}

/// The meeting that the picks mean.
std::optional<Contact> meetingOf(const Side& a, const Side& b) {
    const std::vector<Contact> all = meetings(a, b);
    const auto best = std::min_element(all.begin(), all.end(), [&](const Contact& x, const Contact& y) {
        return fromPicks(a, b, x) < fromPicks(a, b, y);
    });
    return best == all.end() ? std::nullopt : std::optional(*best);
}

bool parallel(const Side& a, const Side& b) {
    return a.isStraight() && b.isStraight() &&
           !math::lineParameters(a.piece().from, a.piece().element.p, b.piece().from, b.piece().element.p);
}

/// None when both curves can be cut so; else what is against it.
CornerFault check(const Side& a, const Side& b, const Corner& corner) {
    bool free = false;
    if (&a.entity() == &b.entity()) {
        // What lies between the two segments goes, one segment at most; or an open polyline is closed.
        const auto n = a.picked().curve->pieces().size();
        if (corner.first.keepsStart == corner.second.keepsStart) return CornerFault::NoSolution;
        const std::size_t in = corner.first.keepsStart ? a.picked().piece : b.picked().piece;
        const std::size_t out = corner.first.keepsStart ? b.picked().piece : a.picked().piece;
        const bool closing = !a.picked().curve->closed() && in > out;
        if (closing && (out != 0 || in + 1 != n)) return CornerFault::Apart;
        const std::size_t between = (out + n - in - 1) % n;
        if (!closing && between > 1) return CornerFault::Apart;
        free = !closing && between == 1;
    }
    return a.allows(corner.first, free) && b.allows(corner.second, free) ? CornerFault::None : CornerFault::TooLarge;
}

/// A corner along a circle.
Corner arcCorner(const Side& a, const Side& b, const Contact& contact) {
    Corner corner;
    corner.from = contact.a.point;
    corner.to = contact.b.point;
    const Vector2 p = corner.from - contact.center;
    const Vector2 q = corner.to - contact.center;
    const double sweep = std::atan2(p.cross(q), p.dot(q));
    corner.bulge = math::bulgeFromSweep(sweep);
    // What stays of a curve runs smoothly into the arc.
    const double sense = sweep > 0.0 ? 1.0 : -1.0;
    corner.first = a.cutAt(contact.a, a.directionAt(contact.a).dot(p.perpendicular()) * sense > 0.0);
    corner.second = b.cutAt(contact.b, b.directionAt(contact.b).dot(q.perpendicular()) * sense < 0.0);
    return corner;
}

std::optional<Corner> joinParallel(const Side& a, const Side& b, CornerFault& fault) {
    const CurvePiece& line = a.piece();
    const Vector2 along = (line.element.p - line.from).normalized();
    const double apart = along.cross(b.piece().from - line.from);
    const double size = line.from.distance_to(line.element.p) + b.piece().from.distance_to(b.piece().element.p);
    if (!(std::abs(apart) > 1e-9 * size)) {
        fault = CornerFault::Parallel;
        return std::nullopt;
    }
    if (a.picked().curve->isUnbounded()) {
        fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    // The half circle bulges out over the end of the first line that lies nearer to the pick.
    const bool atEnd = a.pick().distance_to(line.element.p) < a.pick().distance_to(line.from);
    Corner corner;
    corner.from = atEnd ? line.element.p : line.from;
    corner.to = corner.from + along.perpendicular() * apart;
    const bool left = apart > 0.0;
    corner.bulge = atEnd == left ? 1.0 : -1.0;
    corner.first = {static_cast<double>(a.picked().piece) + (atEnd ? 1.0 : 0.0), atEnd, a.picked().piece};
    const bool same = b.directionAt({corner.to}).dot(along) > 0.0;
    corner.second = b.cutAt({corner.to}, atEnd == same);
    fault = check(a, b, corner);
    if (fault == CornerFault::None) return corner;
    if (fault == CornerFault::TooLarge) fault = CornerFault::NoSolution;
    return std::nullopt;
}

/// The sharp corner at the nearest meeting that can have one.
std::optional<Corner> sharpCorner(const Side& a, const Side& b, CornerFault& fault) {
    fault = CornerFault::NoSolution;
    std::optional<Corner> best;
    double least = 0.0;
    for (const Contact& contact : meetings(a, b)) {
        Corner corner;
        corner.sharp = true;
        corner.from = corner.to = contact.center;
        corner.first = a.cutAt(contact.a, a.picksStart(contact.a));
        corner.second = b.cutAt(contact.b, b.picksStart(contact.b));
        const CornerFault found = check(a, b, corner);
        if (found == CornerFault::Apart) fault = found;
        const double distance = fromPicks(a, b, contact);
        if (found != CornerFault::None || (best && !(distance < least))) continue;
        best = corner;
        least = distance;
    }
    if (best) fault = CornerFault::None;
    return best;
}

std::optional<Corner> roundCorner(const Side& a, const Side& b, double radius, CornerFault& fault) {
    fault = CornerFault::NoSolution;
    const std::optional<Contact> meeting = meetingOf(a, b);
    // On lines the pick tells which side of the meeting point stays; with other curves that comes first, too, as long
    // as such a circle exists.
    const auto strays = [&](const Side& side, const CornerCut& cut, const Place& place) {
        return !side.isRing() && cut.keepsStart != side.picksStart(place) ? 1 : 0;
    };
    const bool lines = a.isStraight() && b.isStraight();
    std::optional<Corner> best;
    int bestOff = 0;
    double least = 0.0;
    for (const Contact& contact : circlesOf(a, b, radius)) {
        if (contact.a.point.distance_to(contact.b.point) <= 1e-9 * radius) continue;
        const Corner corner = arcCorner(a, b, contact);
        const CornerFault found = check(a, b, corner);
        if (fault != CornerFault::Apart) fault = found == CornerFault::Apart ? found : CornerFault::TooLarge;
        if (found != CornerFault::None) continue;
        const int off = meeting ? strays(a, corner.first, meeting->a) + strays(b, corner.second, meeting->b) : 0;
        if (lines && off > 0) continue;
        const double distance = fromPicks(a, b, contact);
        if (best && (off > bestOff || (off == bestOff && !(distance < least)))) continue;
        best = corner;
        bestOff = off;
        least = distance;
    }
    if (best) fault = CornerFault::None;
    return best;
}

}  // namespace

PickedCurve::PickedCurve(const EditCurve& of, const Vector2& pick) : curve(&of), u(of.nearest(pick)) {
    point = of.pointAt(u);
    if (!of.isUnbounded())
        piece = static_cast<std::size_t>(std::clamp(std::floor(u), 0.0, static_cast<double>(of.pieces().size() - 1)));
}

std::optional<Corner> filletCorner(const PickedCurve& a, const PickedCurve& b, double radius, CornerFault& fault) {
    const Side first(a, a.point);
    const Side second(b, a.point);
    std::optional<Corner> corner;
    if (!first.hasLength() || !second.hasLength() || !(radius >= 0.0))
        fault = CornerFault::WrongKind;
    else if (parallel(first, second))
        corner = joinParallel(first, second, fault);
    else
        corner = radius > 0.0 ? roundCorner(first, second, radius, fault) : sharpCorner(first, second, fault);
    if (corner) {
        corner->from += a.point;
        corner->to += a.point;
    }
    return corner;
}

std::optional<Corner> chamferCorner(const PickedCurve& a, const PickedCurve& b, double first, double second,
                                    CornerFault& fault) {
    const Side sideA(a, a.point);
    const Side sideB(b, a.point);
    fault = CornerFault::None;
    if (!sideA.isStraight() || !sideB.isStraight() || !sideA.hasLength() || !sideB.hasLength())
        fault = CornerFault::WrongKind;
    else if (parallel(sideA, sideB))
        fault = CornerFault::Parallel;
    const auto meeting = fault == CornerFault::None ? meetingOf(sideA, sideB) : std::nullopt;
    if (!meeting) {
        if (fault == CornerFault::None) fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    Corner corner;
    const bool startA = sideA.picksStart(meeting->a);
    const bool startB = sideB.picksStart(meeting->b);
    corner.from = meeting->center + sideA.directionAt(meeting->a) * (startA ? -first : first);
    corner.to = meeting->center + sideB.directionAt(meeting->b) * (startB ? -second : second);
    corner.sharp = first == 0.0 && second == 0.0;
    corner.first = sideA.cutAt({corner.from}, startA);
    corner.second = sideB.cutAt({corner.to}, startB);
    fault = check(sideA, sideB, corner);
    if (fault != CornerFault::None) return std::nullopt;
    corner.from += a.point;
    corner.to += a.point;
    return corner;
}

double chamferDistance(const PickedCurve& a, const PickedCurve& b, double length, double angle) {
    const Side sideA(a, a.point);
    const Side sideB(b, a.point);
    if (!sideA.isStraight() || !sideB.isStraight()) return -1.0;
    const auto meeting = meetingOf(sideA, sideB);
    if (!meeting) return -1.0;
    const Vector2 da = sideA.directionAt(meeting->a) * (sideA.picksStart(meeting->a) ? -1.0 : 1.0);
    const Vector2 db = sideB.directionAt(meeting->b) * (sideB.picksStart(meeting->b) ? -1.0 : 1.0);
    const double opening = std::abs(std::atan2(da.cross(db), da.dot(db)));
    const double rest = math::kPi - opening - angle;
    return rest > 1e-9 ? length * std::sin(angle) / std::sin(rest) : -1.0;
}

std::unique_ptr<Entity> cutToCorner(const EditCurve& curve, const CornerCut& cut) {
    if (curve.closed()) return curve.entity().clone();
    return cut.keepsStart ? curve.part(curve.start(), cut.u) : curve.part(cut.u, curve.end());
}

}  // namespace kova::engine
