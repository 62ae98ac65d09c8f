#include "engine/pick/snap_points.hpp"

#include <bit>

#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"
#include "math/angles.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Differences in closeness below this part of the reach are none: picks are typed with a few decimals.
constexpr double kSameCloseness = 1e-6;
/// Pieces whose meetings are looked for; the nearest ones where there are more.
constexpr std::size_t kMostPieces = 1000;
/// Steps in which the feet of perpendiculars and tangents on a curve are looked for.
constexpr int kRootSteps = 64;

bool isFullTurn(const PathElement& e) { return std::abs(e.t1 - e.t0) >= math::kTwoPi - 1e-9; }

/// True when an arc with these ends runs over the parameter t, whatever its turn.
bool runsOver(const PathElement& e, double t) {
    if (isFullTurn(e)) return true;
    const double low = std::min(e.t0, e.t1);
    double past = std::fmod(t - low, math::kTwoPi);
    if (past < 0.0) past += math::kTwoPi;
    constexpr double slack = 1e-9;
    return past <= std::abs(e.t1 - e.t0) + slack || past >= math::kTwoPi - slack;
}

/// The parameter of an arc at which it passes a point of its ellipse; nothing for one without width.
std::optional<double> arcParameter(const PathElement& e, const Vector2& p) {
    const double area = e.a.cross(e.b);
    if (area == 0.0 || !std::isfinite(area)) return std::nullopt;
    const Vector2 d = p - e.center;
    return std::atan2(e.a.cross(d) / area, d.cross(e.b) / area);
}

/// Calls take(t) with the places between from and to where f changes its sign.
template <class Function, class Take>
void eachRoot(const Function& f, double from, double to, const Take& take) {
    double t = from;
    double value = f(t);
    for (int i = 1; i <= kRootSteps; ++i) {
        const double next = from + (to - from) * i / kRootSteps;
        const double after = f(next);
        if (value == 0.0) {
            take(t);
        } else if (value * after < 0.0) {
            double low = t;
            double high = next;
            for (int k = 0; k < 80 && low != high; ++k) {
                const double middle = low + (high - low) / 2.0;
                if (middle == low || middle == high) break;
                (f(middle) * value > 0.0 ? low : high) = middle;
            }
            take(low + (high - low) / 2.0);
        }
        t = next;
        value = after;
    }
    if (value == 0.0) take(t);
}

/// The parameter of an arc half its length along.
double middleOf(const PathElement& e, bool circular) {
    double t = (e.t0 + e.t1) / 2.0;
    if (circular) return t;
    const double half = math::lengthOf(math::EllipticArc{e.center, e.a, e.b, e.t0, e.t1}) / 2.0;
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 50; ++i) {
        const double share = (low + high) / 2.0;
        t = e.t0 + (e.t1 - e.t0) * share;
        (math::lengthOf(math::EllipticArc{e.center, e.a, e.b, e.t0, t}) < half ? low : high) = share;
    }
    return t;
}

math::Cubic cubicOf(const PathElement& e, const Vector2& from) { return {from, e.a, e.b, e.p}; }

/// The point half the length along cubics that follow each other.
Vector2 middleOfCubics(PathView cubics, const Vector2& start) {
    double total = 0.0;
    Vector2 from = start;
    for (const PathElement& e : cubics) {
        total += math::lengthOf(cubicOf(e, from));
        from = e.p;
    }
    double rest = total / 2.0;
    from = start;
    for (const PathElement& e : cubics) {
        const math::Cubic cubic = cubicOf(e, from);
        const double length = math::lengthOf(cubic);
        if (rest <= length && length > 0.0) {
            double low = 0.0;
            double high = 1.0;
            for (int i = 0; i < 50; ++i) {
                const double t = (low + high) / 2.0;
                (math::lengthOf(math::cubicPart(cubic, 0.0, t)) < rest ? low : high) = t;
            }
            return math::cubicPoint(cubic, (low + high) / 2.0);
        }
        rest -= length;
        from = e.p;
    }
    return from;
}

}  // namespace

SnapSearch::SnapSearch(const Vector2& pick, double reach, SnapKinds kinds) : pick_(pick), reach_(reach), kinds_(kinds) {
    window_.expand(pick);
    window_ = window_.inflated(reach);
}

bool SnapSearch::isBetter(const Found& a, const Found& b, double reach) {
    if (std::abs(a.closeness - b.closeness) > kSameCloseness * reach) return a.closeness < b.closeness;
    return a.distance < b.distance;
}

void SnapSearch::offerPoint(const Vector2& p) {
    if (!p.is_finite()) return;
    const double distance = p.distance_to(pick_);
    const Found found{p, distance, distance};
    if (!best_ || isBetter(found, *best_, reach_)) best_ = found;
}

void SnapSearch::offerOf(double distance, const Vector2& p) {
    if (!p.is_finite()) return;
    // Among several kinds the nearest point counts; of one kind what was picked does.
    const double away = p.distance_to(pick_);
    const Found found{p, std::popcount(kinds_) == 1 ? std::min(distance, away) : away, away};
    if (!best_ || isBetter(found, *best_, reach_)) best_ = found;
}

void SnapSearch::add(const Entity& entity) {
    if (!(reach_ > 0.0) || !window_.min.is_finite() || !window_.max.is_finite()) return;
    if (wantsKind(snap::kInsertion | snap::kNode)) takePlaces(entity);
    constexpr SnapKinds places = snap::kInsertion | snap::kNode;
    const bool pointsOnly = (kinds_ & ~places) == 0;
    const EntityType type = entity.type();
    if (type == EntityType::Hatch || (pointsOnly && type != EntityType::BlockReference && type != EntityType::Point))
        return;
    inBlock_ = type == EntityType::BlockReference;
    takeFills_ = type == EntityType::Solid2D;
    entity.emit(*this, outlineStyle(entity));
}

void SnapSearch::takePlaces(const Entity& entity) {
    const auto place = [&](SnapKinds kinds, const Vector2& p) {
        if (wantsKind(kinds)) offerOf(entity.distanceTo(pick_), planFromObject(entity, p));
    };
    const double away = entity.distanceTo(pick_);
    const bool passes = away <= reach_;
    // What lies beside the shape (the definition points of a dimension) counts where it stands.
    const auto near = [&](const Vector2& p) { return passes || p.distance_to(pick_) <= reach_; };
    switch (entity.type()) {
        case EntityType::Text: {
            const auto& text = static_cast<const TextEntity&>(entity);
            if (near(planFromObject(entity, text.position))) place(snap::kInsertion | snap::kNode, text.position);
            break;
        }
        case EntityType::MText: {
            const auto& text = static_cast<const MTextEntity&>(entity);
            if (near(text.position) && wantsKind(snap::kInsertion | snap::kNode)) offerOf(away, text.position);
            break;
        }
        case EntityType::AttributeDefinition: {
            const auto& text = static_cast<const AttributeDefinitionEntity&>(entity);
            if (near(planFromObject(entity, text.insertion))) place(snap::kInsertion, text.insertion);
            break;
        }
        case EntityType::Shape: {
            const auto& shape = static_cast<const ShapeEntity&>(entity);
            if (near(planFromObject(entity, shape.position))) place(snap::kInsertion, shape.position);
            break;
        }
        case EntityType::BlockReference: {
            if (!wantsKind(snap::kInsertion)) break;
            const auto& reference = static_cast<const BlockReferenceEntity&>(entity);
            if (near(planFromObject(entity, reference.insert))) place(snap::kInsertion, reference.insert);
            for (const BlockAttribute& attribute : reference.attributes) {
                const Vector2 p = reference.planFromAttribute(attribute, attribute.position);
                if (!attribute.invisible && p.distance_to(pick_) <= reach_) offerOf(away, p);
            }
            break;
        }
        case EntityType::Image: {
            const auto& image = static_cast<const ImageEntity&>(entity);
            if (wantsKind(snap::kInsertion) && near(image.insertion)) offerOf(away, image.insertion);
            break;
        }
        case EntityType::Tolerance: {
            const auto& tolerance = static_cast<const ToleranceEntity&>(entity);
            if (wantsKind(snap::kInsertion) && near(tolerance.insertion)) offerOf(away, tolerance.insertion);
            break;
        }
        case EntityType::Table: {
            const auto& table = static_cast<const TableEntity&>(entity);
            if (wantsKind(snap::kInsertion) && near(table.insertion)) offerOf(away, table.insertion);
            break;
        }
        case EntityType::Dimension:
            if (!wantsKind(snap::kNode)) break;
            for (const Vector2& p : entity.gripPoints())
                if (near(p)) offerPoint(p);
            break;
        default:
            break;
    }
}

void SnapSearch::stroke(PathView path, const OutlineStyle&, const StrokeOptions&) {
    Vector2 from;
    std::size_t figure = 0;
    Vector2 figureStart;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const PathElement& e = path[i];
        if (e.kind == Kind::Move) {
            figure = i + 1;
            figureStart = e.p;
        } else if (e.kind == Kind::Arc) {
            takeArc(from, e);
        } else if (e.kind == Kind::Cubic) {
            // What runs on smoothly is one curve.
            std::size_t end = i + 1;
            while (end < path.size() && path[end].kind == Kind::Cubic) ++end;
            takeCubics(path.subspan(i, end - i), from);
            i = end - 1;
        } else if (!(e.kind == Kind::Close && e.p == from)) {
            takeLine(from, e);
        }
        from = path[i].p;
        const bool last = i + 1 == path.size() || path[i + 1].kind == Kind::Move || path[i].kind == Kind::Close;
        if (last && wantsKind(snap::kCentroid) && i > figure &&
            (path[i].kind == Kind::Close || from.near_equal(figureStart)))
            takeCentroid(path.subspan(figure, i + 1 - figure), figureStart);
        if (path[i].kind == Kind::Close) figure = i + 1;
    }
}

void SnapSearch::fill(PathView rings, const OutlineStyle& style, const FillOptions&) {
    if (takeFills_) stroke(rings, style, StrokeOptions{});
}

void SnapSearch::point(const Vector2& p, const OutlineStyle&) {
    if (wantsKind(snap::kNode) && p.distance_to(pick_) <= reach_) offerPoint(p);
}

void SnapSearch::unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle&) {
    const double along = (pick_ - base).dot(direction);
    const Vector2 nearest = base + direction * (bothWays ? along : std::max(along, 0.0));
    const double distance = nearest.distance_to(pick_);
    if (!(distance <= reach_)) return;
    if (wantsKind(snap::kNearest)) offerOf(distance, nearest);
    if (wantsKind(snap::kEnd) && !bothWays) offerPoint(base);
    if (wantsKind(snap::kMiddle) && bothWays) offerOf(distance, base);
    if (wantsKind(snap::kPerpendicular) && base_) offerOf(distance, base + direction * (*base_ - base).dot(direction));
    if (!wantsKind(snap::kIntersection)) return;
    Near near{{base, {}}, distance, true, !bothWays};
    near.piece.element.kind = Kind::Line;
    near.piece.element.p = base + direction;
    near_.push_back(near);
}

void SnapSearch::takeLine(const Vector2& from, const PathElement& e) {
    const Vector2& to = e.p;
    // Without square roots for all that lies elsewhere.
    if (std::min(from.x, to.x) > window_.max.x || std::max(from.x, to.x) < window_.min.x ||
        std::min(from.y, to.y) > window_.max.y || std::max(from.y, to.y) < window_.min.y)
        return;
    const Vector2 nearest = math::closestOnSegment(pick_, from, to);
    const double distance = nearest.distance_to(pick_);
    if (!(distance <= reach_)) return;
    if (wantsKind(snap::kNearest)) offerOf(distance, nearest);
    if (wantsKind(snap::kEnd)) {
        offerPoint(from);
        offerPoint(to);
    }
    if (wantsKind(snap::kMiddle)) offerOf(distance, from + (to - from) / 2.0);
    if (wantsKind(snap::kPerpendicular) && base_ && from != to) {
        const Vector2 direction = (to - from).normalized();
        offerOf(distance, from + direction * (*base_ - from).dot(direction));
    }
    if (wantsKind(snap::kIntersection)) {
        near_.push_back({{from, e}, distance});
        near_.back().piece.element.kind = Kind::Line;
    }
}

void SnapSearch::takeArc(const Vector2& from, const PathElement& e) {
    const math::EllipticArc arc{e.center, e.a, e.b, e.t0, e.t1};
    const PathElement pair[2] = {{Kind::Move, from, {}, {}, {}, 0.0, 0.0}, e};
    const double toCenter = e.center.distance_to(pick_);
    const double largest = e.a.length() + e.b.length();
    if (!std::isfinite(largest) || toCenter > largest + reach_) return;
    const auto place = nearestPlace(pair, pick_);
    if (!place) return;
    const double edge = place->distance;
    const bool full = isFullTurn(e);
    if (wantsKind(snap::kCenter) && (edge <= reach_ || toCenter <= reach_)) offerOf(edge, e.center);
    if (!(edge <= reach_)) return;
    const CurvePiece piece{from, e};
    const bool circular = piece.isCircular();
    if (wantsKind(snap::kNearest)) offerOf(edge, place->point);
    if (wantsKind(snap::kEnd) && !full) {
        offerPoint(from);
        offerPoint(e.p);
    }
    if (wantsKind(snap::kMiddle) && !full) offerOf(edge, arc.pointAt(middleOf(e, circular)));
    if (wantsKind(snap::kQuadrant)) {
        const math::PrincipalAxes axes = circular ? math::PrincipalAxes{} : math::principalAxes(e.a, e.b);
        for (int quarter = 0; quarter < 4; ++quarter) {
            Vector2 p;
            if (circular) {
                // In a block they turn with it.
                const double first = inBlock_ ? e.a.angle() : axis_;
                p = e.center + math::unitAt(first + quarter * math::kPi / 2.0) * e.a.length();
            } else {
                p = e.center + (quarter % 2 == 0 ? axes.major : axes.minor) * (quarter < 2 ? 1.0 : -1.0);
            }
            const auto t = arcParameter(e, p);
            if (t && runsOver(e, *t)) offerOf(edge, p);
        }
    }
    if (wantsKind(snap::kPerpendicular) && base_) {
        if (circular) {
            const Vector2 direction = (*base_ - e.center).normalized();
            for (const double side : {-1.0, 1.0})
                if (direction != Vector2{}) offerOf(edge, e.center + direction * (side * e.a.length()));
        } else {
            const auto slope = [&](double t) { return (arc.pointAt(t) - *base_).dot(arc.derivativeAt(t)); };
            eachRoot(slope, 0.0, math::kTwoPi, [&](double t) { offerOf(edge, arc.pointAt(t)); });
        }
    }
    if (wantsKind(snap::kTangent) && base_) {
        // In coordinates in which the ellipse is the unit circle, the base point d has its tangents at the angle of d
        // plus and minus the arc cosine of 1 / |d|.
        const double area = e.a.cross(e.b);
        const Vector2 d = *base_ - e.center;
        const Vector2 unit{d.cross(e.b) / area, e.a.cross(d) / area};
        const double length = unit.length();
        if (std::isfinite(length) && length >= 1.0 - 1e-9) {
            const double turn = std::acos(std::min(1.0, 1.0 / length));
            for (const double side : {-1.0, 1.0}) offerOf(edge, arc.pointAt(unit.angle() + side * turn));
        }
    }
    if (wantsKind(snap::kIntersection)) near_.push_back({piece, edge});
}

void SnapSearch::takeCubics(PathView cubics, const Vector2& start) {
    Vector2 from = start;
    double least = reach_;
    std::optional<Vector2> nearest;
    for (const PathElement& e : cubics) {
        if (elementBounds(e, from).intersects(window_)) {
            const math::Cubic cubic = cubicOf(e, from);
            const Vector2 p = math::cubicPoint(cubic, math::closestParameter(cubic, pick_));
            const double distance = p.distance_to(pick_);
            if (distance <= least) {
                least = distance;
                nearest = p;
            }
            if (distance <= reach_ && wantsKind(snap::kIntersection)) near_.push_back({{from, e}, distance});
        }
        from = e.p;
    }
    if (!nearest) return;
    if (wantsKind(snap::kNearest)) offerOf(least, *nearest);
    if (wantsKind(snap::kEnd)) {
        offerPoint(start);
        offerPoint(cubics.back().p);
    }
    if (wantsKind(snap::kMiddle)) offerOf(least, middleOfCubics(cubics, start));
    if (!wantsKind(snap::kPerpendicular | snap::kTangent) || !base_) return;
    from = start;
    for (const PathElement& e : cubics) {
        const math::Cubic cubic = cubicOf(e, from);
        const auto place = [&](double t) { offerOf(least, math::cubicPoint(cubic, t)); };
        const auto step = [&](double t) { return math::cubicPoint(cubic, t) - *base_; };
        if (wantsKind(snap::kPerpendicular))
            eachRoot([&](double t) { return step(t).dot(math::cubicDerivative(cubic, t)); }, 0.0, 1.0, place);
        if (wantsKind(snap::kTangent))
            eachRoot([&](double t) { return step(t).cross(math::cubicDerivative(cubic, t)); }, 0.0, 1.0, place);
        from = e.p;
    }
}

void SnapSearch::takeCentroid(PathView figure, const Vector2& start) {
    Path path;
    path.moveTo(start);
    path.append(figure);
    const Bounds2 box = pathBounds(path);
    if (box.is_empty() || !box.intersects(window_)) return;
    const double size = std::max(box.width(), box.height());
    if (!std::isfinite(size) || !(size > 0.0)) return;
    std::vector<Vector2> points;
    std::vector<double> bulges;
    Vector2 from = start;
    bool exact = true;
    for (const PathElement& e : figure) {
        const bool arc = e.kind == Kind::Arc;
        if (e.kind == Kind::Cubic || (arc && (!CurvePiece{from, e}.isCircular() || isFullTurn(e)))) exact = false;
        if (!exact) break;
        points.push_back(from);
        const double sweep = arc ? (e.t1 - e.t0) * (e.a.cross(e.b) < 0.0 ? -1.0 : 1.0) : 0.0;
        bulges.push_back(arc ? math::bulgeFromSweep(sweep) : 0.0);
        from = e.p;
    }
    if (!exact) {
        // Circles and ellipses have a centre instead.
        if (figure.front().kind == Kind::Arc && isFullTurn(figure.front())) return;
        const auto rings = flattenPath(path, size * 1e-7);
        if (rings.empty()) return;
        points = rings.front();
        bulges.clear();
    }
    if (points.size() < 2) return;
    // Far from the origin the products of coordinates would lose what counts.
    for (Vector2& p : points) p = p - start;
    const Vector2 middle = start + math::centroid(points, bulges);
    const auto edge = nearestPlace(path, pick_);
    if (!edge || (edge->distance > reach_ && middle.distance_to(pick_) > reach_)) return;
    offerOf(edge->distance, middle);
}

void SnapSearch::takeMeetings() {
    if (near_.size() > kMostPieces) {
        const auto middle = near_.begin() + kMostPieces;
        std::nth_element(near_.begin(), middle, near_.end(),
                         [](const Near& a, const Near& b) { return a.distance < b.distance; });
        near_.erase(middle, near_.end());
    }
    const double scale = std::max({1.0, std::abs(pick_.x), std::abs(pick_.y)});
    std::vector<PieceHit> hits;
    for (std::size_t i = 0; i < near_.size(); ++i)
        for (std::size_t j = i + 1; j < near_.size(); ++j) {
            const Near& a = near_[i];
            const Near& b = near_[j];
            hits.clear();
            meetPieces(a.piece, b.piece, 1e-10 * scale, hits, a.unbounded, b.unbounded);
            for (const PieceHit& hit : hits) {
                if ((a.ray && hit.s < 0.0) || (b.ray && hit.t < 0.0)) continue;
                const Vector2 p = a.piece.pointAt(hit.s);
                if (p.distance_to(pick_) <= reach_) offerPoint(p);
            }
        }
    near_.clear();
}

std::optional<SnapSearch::Found> SnapSearch::result() {
    takeMeetings();
    return best_;
}

}  // namespace kova::engine
