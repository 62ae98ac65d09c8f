#include "engine/corner.hpp"

#include <cmath>

#include "engine/entities/arc.hpp"
#include "math/intersect.hpp"
#include "math/tangent_circles.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

bool isRound(const CurvePiece& piece) { return piece.isCircular(); }

math::TangentCurve tangentCurve(const CurvePiece& piece) {
    if (piece.isStraight()) return math::TangentCurve::line(piece.from, piece.element.p);
    return math::TangentCurve::circle(piece.element.center, piece.element.a.length());
}

/// Parameter on the piece of a point of its line or circle. On a circle a place off the arc can be had from either end:
/// beyond the far one when `keepsStart`.
double parameterOf(const CurvePiece& piece, const Vector2& p, bool keepsStart) {
    if (piece.isStraight()) {
        const Vector2 d = piece.element.p - piece.from;
        return (p - piece.from).dot(d) / d.length_squared();
    }
    const PathElement& e = piece.element;
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

/// Direction of the piece's line or circle at a point of it, as its parameter grows.
Vector2 directionAt(const CurvePiece& piece, const Vector2& p) {
    if (piece.isStraight()) return (piece.element.p - piece.from).normalized();
    const double turn = (piece.element.t1 > piece.element.t0 ? 1.0 : -1.0) *
                        (piece.element.a.cross(piece.element.b) > 0.0 ? 1.0 : -1.0);
    return (p - piece.element.center).normalized().perpendicular() * turn;
}

CornerCut cutAt(const PickedCurve& picked, const Vector2& p, bool keepsStart) {
    const double t = parameterOf(picked.at(), p, keepsStart);
    return {picked.curve->isUnbounded() ? t : static_cast<double>(picked.piece) + t, keepsStart};
}

/// False when the cut would leave nothing of the picked piece, or would have to lengthen it in the middle of a
/// polyline.
bool possible(const PickedCurve& picked, const CornerCut& cut) {
    if (picked.curve->entity().type() == EntityType::Circle) return true;
    if (picked.curve->isUnbounded()) return cut.keepsStart ? cut.u > picked.curve->start() : true;
    const double t = cut.u - static_cast<double>(picked.piece);
    const std::size_t last = picked.curve->pieces().size() - 1;
    if (cut.keepsStart) return t > 1e-12 && (t <= 1.0 + 1e-9 || (!picked.curve->closed() && picked.piece == last));
    return t < 1.0 - 1e-12 && (t >= -1e-9 || (!picked.curve->closed() && picked.piece == 0));
}

/// A corner from p on the first curve to q on the second, along a circle about `center`.
Corner arcCorner(const PickedCurve& a, const PickedCurve& b, const Vector2& p, const Vector2& q,
                 const Vector2& center) {
    Corner corner;
    corner.from = p;
    corner.to = q;
    double sweep = math::normalizeAngle((q - center).angle() - (p - center).angle());
    if (sweep > math::kPi) sweep -= math::kTwoPi;
    corner.bulge = math::bulgeFromSweep(sweep);
    // What stays of a curve runs smoothly into the arc.
    const Vector2 leaving = (p - center).perpendicular() * (sweep > 0.0 ? 1.0 : -1.0);
    const Vector2 arriving = (q - center).perpendicular() * (sweep > 0.0 ? 1.0 : -1.0);
    corner.first = cutAt(a, p, directionAt(a.at(), p).dot(leaving) > 0.0);
    corner.second = cutAt(b, q, directionAt(b.at(), q).dot(arriving) < 0.0);
    return corner;
}

/// Where the two picked pieces' lines and circles meet, nearest to the picks.
std::optional<Vector2> meetingOf(const PickedCurve& a, const PickedCurve& b) {
    std::vector<PieceHit> hits;
    const double tolerance = 1e-10 * std::max(a.curve->scale(), b.curve->scale());
    meetPieces(a.at(), b.at(), tolerance, hits, true, true);
    std::optional<Vector2> best;
    double least = 0.0;
    for (const PieceHit& hit : hits) {
        Vector2 p;
        if (a.at().isStraight())
            p = a.at().from + (a.at().element.p - a.at().from) * hit.s;
        else
            p = math::EllipticArc{a.at().element.center, a.at().element.a, a.at().element.b}.pointAt(
                a.at().element.t0 + (a.at().element.t1 - a.at().element.t0) * hit.s);
        const double distance = p.distance_to(a.point) + p.distance_to(b.point);
        if (best && !(distance < least)) continue;
        best = p;
        least = distance;
    }
    return best;
}

bool parallel(const PickedCurve& a, const PickedCurve& b) {
    return a.at().isStraight() && b.at().isStraight() &&
           !math::lineParameters(a.at().from, a.at().element.p, b.at().from, b.at().element.p);
}

/// True when the pick lies on the part before p.
bool picksStart(const PickedCurve& picked, const Vector2& p) {
    const double u = parameterOf(picked.at(), picked.point, true);
    if (picked.at().isStraight()) return u < parameterOf(picked.at(), p, true);
    // On an arc: the part of it between its start and p, when p lies on it; else the end nearer to p gives way.
    const double t = parameterOf(picked.at(), p, true);
    if (t <= 1.0) return u < t;
    const double turn = math::kTwoPi / std::abs(picked.at().element.t1 - picked.at().element.t0);
    return t - 1.0 < turn - t;
}

std::optional<Corner> joinParallel(const PickedCurve& a, const PickedCurve& b, CornerFault& fault) {
    const CurvePiece& line = a.at();
    const Vector2 along = (line.element.p - line.from).normalized();
    const double apart = along.cross(b.at().from - line.from);
    if (!(std::abs(apart) > 1e-12 * a.curve->scale())) {
        fault = CornerFault::Parallel;
        return std::nullopt;
    }
    if (a.curve->isUnbounded()) {
        fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    // The half circle bulges out over the end of the first line that lies nearer to the pick.
    const bool atEnd = a.point.distance_to(line.element.p) < a.point.distance_to(line.from);
    Corner corner;
    corner.from = atEnd ? line.element.p : line.from;
    corner.to = corner.from + along.perpendicular() * apart;
    const bool left = apart > 0.0;
    corner.bulge = atEnd == left ? 1.0 : -1.0;
    corner.first = {static_cast<double>(a.piece) + (atEnd ? 1.0 : 0.0), atEnd};
    const bool same = directionAt(b.at(), corner.to).dot(along) > 0.0;
    corner.second = cutAt(b, corner.to, atEnd == same);
    if (!possible(b, corner.second)) {
        fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    return corner;
}

}  // namespace

PickedCurve::PickedCurve(const EditCurve& of, const Vector2& pick) : curve(&of) {
    const double u = of.nearest(pick);
    point = of.pointAt(u);
    if (!of.isUnbounded())
        piece = static_cast<std::size_t>(std::clamp(std::floor(u), 0.0, static_cast<double>(of.pieces().size() - 1)));
}

std::optional<Corner> filletCorner(const PickedCurve& a, const PickedCurve& b, double radius, CornerFault& fault) {
    fault = CornerFault::None;
    const auto fits = [](const CurvePiece& piece) {
        return (piece.isStraight() && piece.from != piece.element.p) || isRound(piece);
    };
    if (!fits(a.at()) || !fits(b.at())) {
        fault = CornerFault::WrongKind;
        return std::nullopt;
    }
    if (parallel(a, b)) return joinParallel(a, b, fault);
    if (!(radius > 0.0)) {
        const auto p = meetingOf(a, b);
        if (!p) {
            fault = CornerFault::NoSolution;
            return std::nullopt;
        }
        Corner corner;
        corner.sharp = true;
        corner.from = corner.to = *p;
        corner.first = cutAt(a, *p, picksStart(a, *p));
        corner.second = cutAt(b, *p, picksStart(b, *p));
        if (possible(a, corner.first) && possible(b, corner.second)) return corner;
        fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    std::optional<Corner> best;
    double least = 0.0;
    bool any = false;
    for (const math::TangentCircle& circle : math::tangentCircles(tangentCurve(a.at()), tangentCurve(b.at()), radius)) {
        any = true;
        const double distance = circle.touch[0].distance_to(a.point) + circle.touch[1].distance_to(b.point);
        if (best && !(distance < least)) continue;
        if (circle.touch[0].distance_to(circle.touch[1]) <= 1e-12 * radius) continue;
        const Corner corner = arcCorner(a, b, circle.touch[0], circle.touch[1], circle.center);
        if (!possible(a, corner.first) || !possible(b, corner.second)) continue;
        // On lines the pick tells which side of the meeting point stays.
        if (a.at().isStraight() && b.at().isStraight())
            if (const auto p = meetingOf(a, b))
                if (corner.first.keepsStart != picksStart(a, *p) || corner.second.keepsStart != picksStart(b, *p))
                    continue;
        best = corner;
        least = distance;
    }
    if (!best) fault = any ? CornerFault::TooLarge : CornerFault::NoSolution;
    return best;
}

std::optional<Corner> chamferCorner(const PickedCurve& a, const PickedCurve& b, double first, double second,
                                    CornerFault& fault) {
    fault = CornerFault::None;
    if (!a.at().isStraight() || !b.at().isStraight()) fault = CornerFault::WrongKind;
    if (fault == CornerFault::None && parallel(a, b)) fault = CornerFault::Parallel;
    if (fault != CornerFault::None) return std::nullopt;
    const auto p = meetingOf(a, b);
    if (!p) {
        fault = CornerFault::NoSolution;
        return std::nullopt;
    }
    Corner corner;
    const bool startA = picksStart(a, *p);
    const bool startB = picksStart(b, *p);
    corner.from = *p + directionAt(a.at(), *p) * (startA ? -first : first);
    corner.to = *p + directionAt(b.at(), *p) * (startB ? -second : second);
    corner.sharp = first == 0.0 && second == 0.0;
    corner.first = cutAt(a, corner.from, startA);
    corner.second = cutAt(b, corner.to, startB);
    if (possible(a, corner.first) && possible(b, corner.second)) return corner;
    fault = CornerFault::TooLarge;
    return std::nullopt;
}

double chamferDistance(const PickedCurve& a, const PickedCurve& b, double length, double angle) {
    const auto p = meetingOf(a, b);
    if (!p) return -1.0;
    const Vector2 da = directionAt(a.at(), *p) * (picksStart(a, *p) ? -1.0 : 1.0);
    const Vector2 db = directionAt(b.at(), *p) * (picksStart(b, *p) ? -1.0 : 1.0);
    const double opening = std::abs(std::atan2(da.cross(db), da.dot(db)));
    const double rest = math::kPi - opening - angle;
    return rest > 1e-9 ? length * std::sin(angle) / std::sin(rest) : -1.0;
}

std::unique_ptr<Entity> cutToCorner(const EditCurve& curve, const CornerCut& cut) {
    if (curve.entity().type() == EntityType::Circle) return curve.entity().clone();
    return cut.keepsStart ? curve.part(curve.start(), cut.u) : curve.part(cut.u, curve.end());
}

std::unique_ptr<Entity> cornerInPolyline(const EditCurve& curve, const Corner& corner) {
    if (curve.entity().type() != EntityType::Polyline || corner.first.keepsStart == corner.second.keepsStart)
        return nullptr;
    const bool forward = corner.first.keepsStart;
    const double before = forward ? corner.first.u : corner.second.u;
    const double behind = forward ? corner.second.u : corner.first.u;
    const double bulge = forward ? corner.bulge : -corner.bulge;
    if (curve.closed()) {
        std::unique_ptr<Entity> made = curve.part(behind, before);
        if (!made) return nullptr;
        auto& polyline = static_cast<PolylineEntity&>(*made);
        polyline.closed = true;
        if (corner.sharp)
            polyline.eraseVertex(polyline.vertices.size() - 1);
        else
            polyline.setBulge(polyline.vertices.size() - 1, bulge);
        return made;
    }
    if (!(before < behind)) return nullptr;
    std::unique_ptr<Entity> made = curve.part(curve.start(), before);
    const std::unique_ptr<Entity> rest = curve.part(behind, curve.end());
    if (!made || !rest) return nullptr;
    auto& polyline = static_cast<PolylineEntity&>(*made);
    const auto& tail = static_cast<const PolylineEntity&>(*rest);
    if (corner.sharp)
        polyline.eraseVertex(polyline.vertices.size() - 1);
    else
        polyline.setBulge(polyline.vertices.size() - 1, bulge);
    for (std::size_t i = 0; i < tail.vertices.size(); ++i)
        polyline.addVertex(tail.vertices[i], tail.bulge(i), tail.startWidth(i), tail.endWidth(i));
    return made;
}

PolylineCorners cutPolylineCorners(const PolylineEntity& source, double radius, double first, double second) {
    PolylineCorners result;
    const std::size_t n = source.vertices.size();
    result.polyline = std::make_unique<PolylineEntity>();
    PolylineEntity& out = *result.polyline;
    out.copyCommonFrom(source);
    out.ltgen = source.ltgen;
    out.closed = source.closed;
    const std::size_t segments = source.segmentCount();
    // What is taken from both ends of every segment.
    struct Cut {
        double in = 0.0;
        double away = 0.0;
        double bulge = 0.0;
    };
    std::vector<Cut> cuts(n);
    std::vector<double> taken(segments, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        if (!source.closed && (i == 0 || i + 1 >= n)) continue;
        if (segments < 2) break;
        const std::size_t before = i > 0 ? i - 1 : segments - 1;
        if (source.bulge(before) != 0.0 || source.bulge(i) != 0.0) continue;
        const Vector2 in = source.vertices[i] - source.vertices[before];
        const Vector2 away = source.segmentEnd(i) - source.vertices[i];
        const double turn = std::atan2(in.cross(away), in.dot(away));
        if (!(std::abs(turn) > 1e-9) || !(math::kPi - std::abs(turn) > 1e-9)) {
            ++result.parallel;
            continue;
        }
        Cut cut{first, second, 0.0};
        if (radius > 0.0) {
            cut.in = cut.away = radius * std::tan(std::abs(turn) / 2.0);
            cut.bulge = std::tan(turn / 4.0);
        }
        const auto room = [&](std::size_t segment, double length) { return length * (1.0 + 1e-12) - taken[segment]; };
        if (!(cut.in <= room(before, in.length())) || !(cut.away <= room(i, away.length())) ||
            !(cut.in + cut.away > 0.0)) {
            ++result.tooShort;
            continue;
        }
        taken[before] += cut.in;
        taken[i] += cut.away;
        cuts[i] = cut;
        ++result.cut;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const Vector2& p = source.vertices[i];
        const double w0 = source.startWidth(i);
        const double w1 = source.endWidth(i);
        const Cut& cut = cuts[i];
        if (cut.in + cut.away == 0.0) {
            out.addVertex(p, source.bulge(i), w0, w1);
            continue;
        }
        const std::size_t before = i > 0 ? i - 1 : segments - 1;
        const Vector2 a = p + (source.vertices[before] - p).normalized() * cut.in;
        const Vector2 b = p + (source.segmentEnd(i) - p).normalized() * cut.away;
        out.addVertex(a, cut.bulge, w0, w0);
        out.addVertex(b, 0.0, w0, w1);
    }
    return result;
}

}  // namespace kova::engine
