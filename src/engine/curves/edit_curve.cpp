#include "engine/curves/edit_curve.hpp"

#include <cmath>

#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/xline.hpp"
#include "math/curves/nurbs.hpp"

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Parameters this near to a piece's end are the end.
constexpr double kSnap = 1e-12;

CurvePiece linePiece(const Vector2& a, const Vector2& b) {
    CurvePiece piece;
    piece.from = a;
    piece.element.kind = Kind::Line;
    piece.element.p = b;
    return piece;
}

void addPath(PathView path, std::vector<CurvePiece>& out) {
    Vector2 from;
    for (const PathElement& e : path) {
        if (e.kind != Kind::Move && !(e.kind == Kind::Close && e.p == from)) out.push_back({from, e});
        from = e.p;
    }
}

/// One piece per segment, those without length too, so that piece and segment numbers agree.
std::vector<CurvePiece> polylinePieces(const PolylineEntity& polyline) {
    std::vector<CurvePiece> out;
    out.reserve(polyline.segmentCount());
    for (std::size_t i = 0; i < polyline.segmentCount(); ++i) {
        Path path;
        path.moveTo(polyline.vertices[i]).bulgeTo(polyline.segmentEnd(i), polyline.bulge(i));
        if (path.view().size() == 2)
            out.push_back({polyline.vertices[i], path.view()[1]});
        else
            out.push_back(linePiece(polyline.vertices[i], polyline.segmentEnd(i)));
    }
    return out;
}

math::Cubic cubicOf(const CurvePiece& piece) { return {piece.from, piece.element.a, piece.element.b, piece.element.p}; }

double lengthTo(const CurvePiece& piece, double t) {
    const PathElement& e = piece.element;
    switch (e.kind) {
        case Kind::Arc: {
            const double to = e.t0 + (e.t1 - e.t0) * t;
            if (piece.isCircular()) return e.a.length() * std::abs(to - e.t0);
            return math::lengthOf(math::EllipticArc{e.center, e.a, e.b, e.t0, to});
        }
        case Kind::Cubic:
            return t > 0.0 ? math::lengthOf(math::cubicPart(cubicOf(piece), 0.0, t)) : 0.0;
        default:
            return piece.from.distance_to(e.p) * t;
    }
}

/// The parameter at which a piece's length from its start is reached.
double parameterAt(const CurvePiece& piece, double length) {
    const double total = lengthTo(piece, 1.0);
    if (!(total > 0.0) || length <= 0.0) return 0.0;
    if (length >= total) return 1.0;
    double t = length / total;
    if (piece.isStraight() || piece.isCircular()) return t;
    double lo = 0.0;
    double hi = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double off = lengthTo(piece, t) - length;
        if (std::abs(off) <= 1e-13 * total) break;
        (off > 0.0 ? hi : lo) = t;
        const double speed = piece.tangentAt(t).length();
        const double next = speed > 0.0 ? t - off / speed : lo;
        t = next > lo && next < hi ? next : (lo + hi) / 2.0;
    }
    return t;
}

}  // namespace

bool CurvePiece::isCircular() const {
    if (element.kind != Kind::Arc) return false;
    const double r = element.a.length();
    return std::abs(element.b.length() - r) <= 1e-9 * r && std::abs(element.a.dot(element.b)) <= 1e-9 * r * r;
}

std::optional<EditCurve> EditCurve::of(const Entity& entity) {
    EditCurve curve;
    curve.entity_ = &entity;
    bool inPlane = true;  // coordinates of the object plane
    Path path;
    switch (entity.type()) {
        case EntityType::Line: {
            const auto& line = static_cast<const LineEntity&>(entity);
            curve.pieces_.push_back(linePiece(line.start, line.end));
            inPlane = false;
            break;
        }
        case EntityType::Circle: {
            const auto& circle = static_cast<const CircleEntity&>(entity);
            path.arc(circle.center, circle.radius, 0.0, math::kTwoPi);
            curve.closed_ = true;
            break;
        }
        case EntityType::Arc: {
            const auto& arc = static_cast<const ArcEntity&>(entity);
            path.arc(arc.center, arc.radius, arc.startAngle, arc.startAngle + arc.sweep());
            break;
        }
        case EntityType::Ellipse: {
            const auto& ellipse = static_cast<const EllipseEntity&>(entity);
            path.ellipticArc(ellipse.center, ellipse.major, ellipse.minor(), ellipse.startParam,
                             ellipse.startParam + ellipse.sweep());
            curve.closed_ = ellipse.isFull();
            inPlane = false;
            break;
        }
        case EntityType::Polyline: {
            const auto& polyline = static_cast<const PolylineEntity&>(entity);
            curve.pieces_ = polylinePieces(polyline);
            curve.closed_ = polyline.closed;
            break;
        }
        case EntityType::Polyline3D: {
            const auto& polyline = static_cast<const Polyline3DEntity&>(entity);
            const std::size_t n = polyline.vertices.size();
            for (std::size_t i = 0; i + (polyline.closed ? 0 : 1) < n; ++i)
                curve.pieces_.push_back(
                    linePiece(polyline.vertices[i].xy(), polyline.vertices[i + 1 < n ? i + 1 : 0].xy()));
            curve.closed_ = polyline.closed;
            inPlane = false;
            break;
        }
        case EntityType::Spline: {
            const auto& spline = static_cast<const SplineEntity&>(entity);
            path = spline.path();
            const PathView view = path.view();
            const double reach =
                pathBounds(view).is_empty() ? 0.0 : pathBounds(view).width() + pathBounds(view).height();
            curve.closed_ =
                view.size() > 1 && (spline.closed || view.front().p.distance_to(view.back().p) <= 1e-9 * reach);
            inPlane = false;
            break;
        }
        case EntityType::Xline: {
            const auto& xline = static_cast<const XlineEntity&>(entity);
            curve.pieces_.push_back(linePiece(xline.base, xline.base + xline.dir.normalized()));
            curve.unbounded_ = 2;
            inPlane = false;
            break;
        }
        case EntityType::Ray: {
            const auto& ray = static_cast<const RayEntity&>(entity);
            curve.pieces_.push_back(linePiece(ray.origin, ray.origin + ray.dir.normalized()));
            curve.unbounded_ = 1;
            inPlane = false;
            break;
        }
        default:
            return std::nullopt;
    }
    addPath(path, curve.pieces_);
    if (inPlane && !inWorldPlane(entity)) {
        const math::Matrix4 plane = objectPlane(entity);
        if (std::abs(plane.plane_determinant()) < 1e-9) return std::nullopt;
        for (CurvePiece& piece : curve.pieces_) {
            piece.from = plane.transform_point(piece.from);
            piece.element.p = plane.transform_point(piece.element.p);
            piece.element.center = plane.transform_point(piece.element.center);
            piece.element.a = plane.transform_direction(piece.element.a);
            piece.element.b = plane.transform_direction(piece.element.b);
        }
    }
    math::Bounds2 box;
    for (const CurvePiece& piece : curve.pieces_) box.expand(piece.bounds());
    if (curve.pieces_.empty() || box.is_empty() || !box.min.is_finite() || !box.max.is_finite()) return std::nullopt;
    if (!(box.width() + box.height() > 0.0)) return std::nullopt;
    curve.scale_ = std::max({std::abs(box.min.x), std::abs(box.min.y), std::abs(box.max.x), std::abs(box.max.y),
                             box.width() + box.height()});
    return curve;
}

double EditCurve::start() const { return unbounded_ == 2 ? -std::numeric_limits<double>::infinity() : 0.0; }

double EditCurve::end() const {
    return unbounded_ != 0 ? std::numeric_limits<double>::infinity() : static_cast<double>(pieces_.size());
}

namespace {

/// Piece and parameter of a place; beyond the ends they belong to the first and the last piece.
std::pair<std::size_t, double> placeOf(double u, std::size_t count, bool unbounded) {
    if (unbounded) return {0, u};
    const double i = std::clamp(std::floor(u), 0.0, static_cast<double>(count - 1));
    return {static_cast<std::size_t>(i), u - i};
}

}  // namespace

Vector2 EditCurve::pointAt(double u) const {
    const auto [i, t] = placeOf(u, pieces_.size(), unbounded_ != 0);
    const CurvePiece& piece = pieces_[i];
    if (t >= 0.0 && t <= 1.0) return piece.pointAt(t);
    if (piece.element.kind == Kind::Arc) {
        const PathElement& e = piece.element;
        return math::EllipticArc{e.center, e.a, e.b, e.t0, e.t1}.pointAt(e.t0 + (e.t1 - e.t0) * t);
    }
    if (piece.isStraight()) return piece.from + (piece.element.p - piece.from) * t;
    return piece.pointAt(std::clamp(t, 0.0, 1.0));
}

Vector2 EditCurve::tangentAt(double u) const {
    const auto [i, t] = placeOf(u, pieces_.size(), unbounded_ != 0);
    if (pieces_[i].element.kind == Kind::Arc) {
        const PathElement& e = pieces_[i].element;
        return math::EllipticArc{e.center, e.a, e.b, e.t0, e.t1}.derivativeAt(e.t0 + (e.t1 - e.t0) * t) * (e.t1 - e.t0);
    }
    return pieces_[i].tangentAt(std::clamp(t, 0.0, 1.0));
}

double EditCurve::nearest(const Vector2& p) const {
    if (unbounded_ != 0) {
        const double u = (p - pieces_[0].from).dot(pieces_[0].element.p - pieces_[0].from);
        return unbounded_ == 1 ? std::max(0.0, u) : u;
    }
    double best = 0.0;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        PathElement pair[2];
        pair[0].p = pieces_[i].from;
        pair[1] = pieces_[i].element;
        const auto place = nearestPlace(pair, p);
        if (!place || !(place->distance < least)) continue;
        least = place->distance;
        best = static_cast<double>(i) + std::clamp(place->t, 0.0, 1.0);
    }
    return best;
}

double EditCurve::length(double u0, double u1) const {
    if (u1 < u0) return closed_ ? length(u0, end()) + length(0.0, u1) : length(u1, u0);
    if (unbounded_ != 0) return u1 - u0;
    const auto [i, s] = placeOf(u0, pieces_.size(), false);
    const auto [j, t] = placeOf(u1, pieces_.size(), false);
    if (i == j) return lengthTo(pieces_[j], t) - lengthTo(pieces_[i], s);
    double sum = lengthTo(pieces_[i], 1.0) - lengthTo(pieces_[i], s) + lengthTo(pieces_[j], t);
    for (std::size_t k = i + 1; k < j; ++k) sum += lengthTo(pieces_[k], 1.0);
    return sum;
}

double EditCurve::advance(double u, double length) const {
    if (unbounded_ != 0) return u + length;
    auto [i, t] = placeOf(u, pieces_.size(), false);
    double at = lengthTo(pieces_[i], t) + length;
    for (;;) {
        const double total = lengthTo(pieces_[i], 1.0);
        if (at > total && i + 1 < pieces_.size()) {
            at -= total;
            ++i;
        } else if (at < 0.0 && i > 0) {
            --i;
            at += lengthTo(pieces_[i], 1.0);
        } else {
            return static_cast<double>(i) + parameterAt(pieces_[i], at);
        }
    }
}

bool EditCurve::extendable(bool atEnd) const {
    if (closed_ || unbounded_ == 2 || (unbounded_ == 1 && atEnd)) return false;
    return pieces_[atEnd ? pieces_.size() - 1 : 0].element.kind != Kind::Cubic;
}

std::unique_ptr<Entity> EditCurve::part(double u0, double u1) const {
    if (!closed_ && !(u1 > u0)) return nullptr;
    std::unique_ptr<Entity> made;
    const auto angleAt = [](double from, double sweep, double u) { return math::normalizeAngle(from + sweep * u); };
    switch (entity_->type()) {
        case EntityType::Line: {
            made = entity_->clone();
            auto& line = static_cast<LineEntity&>(*made);
            const math::Vector3 a = line.start3();
            const math::Vector3 way = line.end3() - a;
            const math::Vector3 end = line.end3();
            line.setEnds(u0 == 0.0 ? a : a + way * u0, u1 == 1.0 ? end : a + way * u1);
            break;
        }
        case EntityType::Circle: {
            const auto& circle = static_cast<const CircleEntity&>(*entity_);
            auto arc = std::make_unique<ArcEntity>(circle.center, circle.radius, angleAt(0, math::kTwoPi, u0),
                                                   angleAt(0, math::kTwoPi, u1));
            arc->copyCommonFrom(circle);
            made = std::move(arc);
            break;
        }
        case EntityType::Arc: {
            made = entity_->clone();
            auto& arc = static_cast<ArcEntity&>(*made);
            const double from = arc.startAngle;
            const double sweep = arc.sweep();
            if (u0 != 0.0) arc.startAngle = angleAt(from, sweep, u0);
            if (u1 != 1.0) arc.endAngle = angleAt(from, sweep, u1);
            break;
        }
        case EntityType::Ellipse: {
            made = entity_->clone();
            auto& ellipse = static_cast<EllipseEntity&>(*made);
            const double from = ellipse.startParam;
            const double sweep = ellipse.sweep();
            ellipse.startParam = angleAt(from, sweep, u0);
            ellipse.endParam = angleAt(from, sweep, u1);
            break;
        }
        case EntityType::Polyline:
        case EntityType::Polyline3D:
            made = polylinePart(u0, u1);
            break;
        case EntityType::Spline:
            made = splinePart(u0, u1);
            break;
        case EntityType::Xline:
        case EntityType::Ray: {
            const Vector2 dir = pieces_[0].element.p - pieces_[0].from;
            if (std::isinf(u0) && std::isinf(u1)) return entity_->clone();
            if (std::isinf(u1))
                made = std::make_unique<RayEntity>(pointAt(u0), dir);
            else if (std::isinf(u0))
                made = std::make_unique<RayEntity>(pointAt(u1), -dir);
            else
                made = std::make_unique<LineEntity>(pointAt(u0), pointAt(u1));
            made->copyCommonFrom(*entity_);
            break;
        }
        default:
            break;
    }
    if (made) made->setHandle(0);
    return made;
}

std::unique_ptr<Entity> EditCurve::polylinePart(double u0, double u1) const {
    std::unique_ptr<Entity> made = entity_->clone();
    const std::size_t n = pieces_.size();
    const bool over = u1 <= u0;
    auto [i, s] = placeOf(u0, n, false);
    auto [j, t] = placeOf(u1, n, false);
    if (s > 1.0 - kSnap && s <= 1.0 && i + 1 < n) {
        ++i;
        s = 0.0;
    }
    if (t < kSnap && t >= 0.0 && j > 0) {
        --j;
        t = 1.0;
    }
    if (over && s >= 1.0 && i + 1 == n) {
        i = 0;
        s = 0.0;
    }
    const std::size_t count = (over && j < i) || (over && j == i && t <= s) ? j + n - i + 1 : j - i + 1;
    if (count > n + 1) return nullptr;
    if (auto* space = dynamic_cast<Polyline3DEntity*>(made.get())) {
        const auto& source = static_cast<const Polyline3DEntity&>(*entity_).vertices;
        const auto at = [&](std::size_t k, double v) {
            const math::Vector3& a = source[k];
            const math::Vector3& b = source[k + 1 < source.size() ? k + 1 : 0];
            return v == 1.0 ? b : a + (b - a) * v;
        };
        space->closed = false;
        space->vertices.assign(1, at(i, s));
        for (std::size_t k = 0; k < count; ++k) space->vertices.push_back(at((i + k) % n, k + 1 == count ? t : 1.0));
        return made;
    }
    const auto& source = static_cast<const PolylineEntity&>(*entity_);
    auto fresh = std::make_unique<PolylineEntity>();
    fresh->copyCommonFrom(source);
    fresh->ltgen = source.ltgen;
    // Place on a segment in the entity's own plane.
    const auto at = [&](std::size_t k, double v) {
        const Vector2& a = source.vertices[k];
        const Vector2& b = source.segmentEnd(k);
        if (v == 0.0) return a;
        if (v == 1.0) return b;
        if (const auto arc = math::arcFromBulge(a, b, source.bulge(k)))
            return arc->pointAt(arc->start + arc->sweep * v);
        return a + (b - a) * v;
    };
    const bool wide = source.hasWidths();
    fresh->vertices.reserve(count + 1);
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t segment = (i + k) % n;
        const double v0 = k == 0 ? s : 0.0;
        const double v1 = k + 1 == count ? t : 1.0;
        const double bulge = source.bulge(segment);
        const double w0 = wide ? source.startWidth(segment) : 0.0;
        const double w1 = wide ? source.endWidth(segment) : 0.0;
        const auto width = [&](double v) { return w0 + (w1 - w0) * std::clamp(v, 0.0, 1.0); };
        fresh->vertices.push_back(at(segment, v0));
        const std::size_t index = fresh->vertices.size() - 1;
        if (bulge != 0.0)
            fresh->setBulge(index, v0 == 0.0 && v1 == 1.0 ? bulge : std::tan(std::atan(bulge) * (v1 - v0)));
        if (wide) fresh->setWidths(index, width(v0), width(v1));
    }
    fresh->vertices.push_back(at((i + count - 1) % n, t));
    const std::size_t end = fresh->vertices.size() - 1;
    if (wide) fresh->setWidths(end, fresh->endWidth(end - 1), fresh->endWidth(end - 1));
    return fresh;
}

std::unique_ptr<Entity> EditCurve::splinePart(double u0, double u1) const {
    const double end = static_cast<double>(pieces_.size());
    return static_cast<const SplineEntity&>(*entity_).part(std::clamp(u0, 0.0, end), std::clamp(u1, 0.0, end));
}

std::unique_ptr<Entity> splineAlong(const std::vector<math::Cubic>& cubics, bool closed, const Entity& like) {
    auto spline = std::make_unique<SplineEntity>();
    spline->copyCommonFrom(like);
    spline->degree = 3;
    spline->closed = closed;
    spline->controlPoints.reserve(cubics.size() * 3 + 1);
    spline->controlPoints.push_back(cubics.front()[0]);
    spline->knots.assign(4, 0.0);
    double knot = 0.0;
    for (const math::Cubic& c : cubics) {
        spline->controlPoints.insert(spline->controlPoints.end(), c.begin() + 1, c.end());
        knot += 1.0;
        spline->knots.insert(spline->knots.end(), 3, knot);
    }
    spline->knots.push_back(knot);
    spline->setHandle(0);
    return spline;
}

}  // namespace kova::engine
