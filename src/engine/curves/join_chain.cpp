#include "engine/curves/join_chain.hpp"

#include <cmath>

#include "engine/curves/edit_curve.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "math/curves/intersect.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

class ChainBuilder {
public:
    ChainBuilder(const std::vector<JoinMember>& members, std::span<const JoinStep> steps, bool closed,
                 const JoinOptions& options, double same)
        : members_(members), steps_(steps), closed_(closed), options_(options), same_(same) {}

    std::unique_ptr<Entity> build(const Entity& like) const {
        std::unique_ptr<Entity> made;
        if (!options_.toPolylines) {
            made = asLine();
            if (!made) made = asArc();
            if (!made) made = asEllipse();
            if (made) made->copyCommonFrom(like);
        }
        if (!made) {
            const bool flat = isFlat();
            if (hasCurves() || (!flat && hasBends()))
                made = asSpline(like);
            else
                made = flat ? asPolyline(like) : asSpacePolyline(like);
        }
        if (!made) return nullptr;
        // Lines and splines hold their heights themselves.
        if (made->type() == EntityType::Line || made->type() == EntityType::Polyline3D ||
            made->type() == EntityType::Spline)
            made->elevation = from(steps_.front()).z;
        made->setHandle(0);
        return made;
    }

private:
    const Entity& entity(const JoinStep& step) const { return *members_[step.member].entity; }
    EntityType type(const JoinStep& step) const { return members_[step.member].type; }
    const Vector3& from(const JoinStep& step) const { return members_[step.member].ends[step.turned ? 1 : 0]; }
    const Vector3& to(const JoinStep& step) const { return members_[step.member].ends[step.turned ? 0 : 1]; }

    bool hasCurves() const {
        return std::any_of(steps_.begin(), steps_.end(), [&](const JoinStep& s) {
            return type(s) == EntityType::Spline || type(s) == EntityType::Ellipse;
        });
    }

    /// All in one plane z = const, and none of them a polyline in space.
    bool isFlat() const {
        const double z = from(steps_.front()).z;
        return std::all_of(steps_.begin(), steps_.end(), [&](const JoinStep& s) {
            return type(s) != EntityType::Polyline3D && std::abs(from(s).z - z) <= same_ &&
                   std::abs(to(s).z - z) <= same_;
        });
    }
    /// Arcs among them, which a polyline in space cannot hold.
    bool hasBends() const {
        return std::any_of(steps_.begin(), steps_.end(), [&](const JoinStep& s) {
            const auto* polyline = dynamic_cast<const PolylineEntity*>(&entity(s));
            return type(s) == EntityType::Arc || (polyline != nullptr && polyline->hasBulges());
        });
    }

    std::unique_ptr<Entity> asLine() const {
        Vector3 a = from(steps_.front());
        Vector3 b = to(steps_.back());
        const double length = (b - a).length();
        if (closed_ || !(length > 0.0)) return nullptr;
        const Vector3 along = (b - a) / length;
        for (const JoinStep& s : steps_)
            if (type(s) != EntityType::Line || (to(s) - from(s)).dot(along) < 0.0 ||
                along.cross(to(s) - a).length() > same_)
                return nullptr;
        // The direction of the first object stays.
        if (steps_.front().member < steps_.back().member ? steps_.front().turned : steps_.back().turned)
            std::swap(a, b);
        auto line = std::make_unique<LineEntity>(a, b);
        if (a.z == b.z) line->hasZ = false;
        return line;
    }

    std::unique_ptr<Entity> asArc() const {
        if (type(steps_.front()) != EntityType::Arc) return nullptr;
        const auto& first = static_cast<const ArcEntity&>(entity(steps_.front()));
        double sweep = 0.0;
        for (const JoinStep& s : steps_) {
            if (type(s) != EntityType::Arc || s.turned != steps_.front().turned) return nullptr;
            const auto& arc = static_cast<const ArcEntity&>(entity(s));
            if (arc.center.distance_to(first.center) > same_ || std::abs(arc.radius - first.radius) > same_)
                return nullptr;
            sweep += arc.sweep();
        }
        if (sweep > math::kTwoPi + 1e-6) return nullptr;
        if (closed_) return std::make_unique<CircleEntity>(first.center, first.radius);
        const bool turned = steps_.front().turned;
        const auto& last = static_cast<const ArcEntity&>(entity(steps_.back()));
        return std::make_unique<ArcEntity>(first.center, first.radius, turned ? last.startAngle : first.startAngle,
                                           turned ? first.endAngle : last.endAngle);
    }

    /// Elliptic arcs that follow each other on one ellipse.
    std::unique_ptr<Entity> asEllipse() const {
        if (type(steps_.front()) != EntityType::Ellipse) return nullptr;
        const auto& first = static_cast<const EllipseEntity&>(entity(steps_.front()));
        double sweep = 0.0;
        for (const JoinStep& s : steps_) {
            if (type(s) != EntityType::Ellipse || s.turned != steps_.front().turned) return nullptr;
            const auto& arc = static_cast<const EllipseEntity&>(entity(s));
            const bool opposite = arc.major.dot(first.major) < 0.0;
            if (arc.center.distance_to(first.center) > same_ ||
                (opposite ? -arc.major : arc.major).distance_to(first.major) > same_ ||
                std::abs(arc.minorRatio - first.minorRatio) * first.major.length() > same_)
                return nullptr;
            sweep += arc.sweep();
        }
        if (sweep > math::kTwoPi + 1e-6) return nullptr;
        auto made = std::make_unique<EllipseEntity>(first.center, first.major, first.minorRatio);
        if (closed_) return made;
        // Turned ones are run through clockwise: the last one begins first.
        const auto& start =
            static_cast<const EllipseEntity&>(entity(steps_.front().turned ? steps_.back() : steps_.front()));
        const double shift = start.major.dot(first.major) < 0.0 ? math::kPi : 0.0;
        made->startParam = math::normalizeAngle(start.startParam + shift);
        made->endParam = math::normalizeAngle(made->startParam + sweep);
        return made;
    }

    std::unique_ptr<Entity> asSpacePolyline(const Entity& like) const {
        auto out = std::make_unique<Polyline3DEntity>();
        out->copyCommonFrom(like);
        for (const JoinStep& s : steps_) {
            std::vector<Vector3> own;
            if (const auto* space = dynamic_cast<const Polyline3DEntity*>(&entity(s))) {
                own = space->vertices;
            } else if (const auto* flat = dynamic_cast<const PolylineEntity*>(&entity(s))) {
                for (const Vector2& p : flat->vertices) own.emplace_back(p, flat->elevation);
            } else {
                own.assign(members_[s.member].ends, members_[s.member].ends + 2);
            }
            if (s.turned) std::reverse(own.begin(), own.end());
            const bool tied = !out->vertices.empty() && (out->vertices.back() - own.front()).length() <= same_;
            out->vertices.insert(out->vertices.end(), own.begin() + (tied ? 1 : 0), own.end());
        }
        if (closed_ && out->vertices.size() > 2) {
            if ((out->vertices.back() - out->vertices.front()).length() <= same_) out->vertices.pop_back();
            out->closed = true;
        }
        return out;
    }

    /// The pieces of one member as cubics in the sense of the chain, with their heights: a height where they begin,
    /// and three to each cubic. False: they cannot be had.
    bool takeCubics(const JoinStep& s, std::vector<math::Cubic>& own, std::vector<double>& heights) const {
        const JoinMember& member = members_[s.member];
        const auto curve = EditCurve::of(entity(s));
        if (!curve) return false;
        for (const CurvePiece& piece : curve->pieces()) addCubics(piece, own);
        const auto* spline = dynamic_cast<const SplineEntity*>(&entity(s));
        if (spline != nullptr && !spline->controlZ.empty()) {
            // The heights run as another coordinate of the same curve would.
            SplineEntity upright = *spline;
            for (std::size_t i = 0; i < upright.controlPoints.size(); ++i)
                upright.controlPoints[i] = {i < spline->controlZ.size() ? spline->controlZ[i] : 0.0,
                                            static_cast<double>(i)};
            std::vector<double> z;
            const Path path = upright.path();
            for (const PathElement& e : path.view()) {
                if (e.kind == PathElement::Kind::Move) z.push_back(e.p.x);
                if (e.kind == PathElement::Kind::Cubic) z.insert(z.end(), {e.a.x, e.b.x, e.p.x});
            }
            if (z.size() != 3 * own.size() + 1) return false;
            heights = std::move(z);
        } else if (const auto* space = dynamic_cast<const Polyline3DEntity*>(&entity(s))) {
            if (own.size() + 1 != space->vertices.size()) return false;
            heights.push_back(space->vertices.front().z);
            for (std::size_t i = 1; i < space->vertices.size(); ++i) rise(heights, space->vertices[i].z);
        } else {
            // Lines rise evenly, everything else is level.
            heights.push_back(member.ends[0].z);
            for (std::size_t i = 0; i < own.size(); ++i) rise(heights, member.ends[own.size() == 1 ? 1 : 0].z);
        }
        if (s.turned) {
            std::reverse(own.begin(), own.end());
            for (math::Cubic& c : own) std::reverse(c.begin(), c.end());
            std::reverse(heights.begin(), heights.end());
        }
        return true;
    }
    static void rise(std::vector<double>& heights, double to) {
        const double from = heights.back();
        heights.insert(heights.end(), {from + (to - from) / 3.0, from + (to - from) * 2.0 / 3.0, to});
    }

    std::unique_ptr<Entity> asSpline(const Entity& like) const {
        std::vector<math::Cubic> cubics;
        std::vector<double> heights;
        for (const JoinStep& s : steps_) {
            std::vector<math::Cubic> own;
            std::vector<double> z;
            if (!takeCubics(s, own, z)) return nullptr;
            heights.insert(heights.end(), z.begin() + (heights.empty() ? 0 : 1), z.end());
            if (!cubics.empty() && !own.empty()) own.front()[0] = cubics.back()[3];
            cubics.insert(cubics.end(), own.begin(), own.end());
        }
        if (cubics.empty()) return nullptr;
        if (closed_) cubics.back()[3] = cubics.front()[0];
        auto made = splineAlong(cubics, closed_, like);
        if (std::any_of(heights.begin(), heights.end(), [&](double z) { return z != heights.front(); }))
            static_cast<SplineEntity&>(*made).controlZ = std::move(heights);
        return made;
    }

    static void addCubics(const CurvePiece& piece, std::vector<math::Cubic>& out) {
        const PathElement& e = piece.element;
        if (e.kind == PathElement::Kind::Cubic) {
            out.push_back({piece.from, e.a, e.b, e.p});
            return;
        }
        if (e.kind != PathElement::Kind::Arc) {
            out.push_back({piece.from, piece.from.lerp(e.p, 1.0 / 3.0), piece.from.lerp(e.p, 2.0 / 3.0), e.p});
            return;
        }
        // Sixteenths of a turn keep an arc within 1e-7 of its radius.
        const int count = std::max(1, static_cast<int>(std::ceil(std::abs(e.t1 - e.t0) / (math::kPi / 8.0))));
        const double step = (e.t1 - e.t0) / count;
        const double reach = 4.0 / 3.0 * std::tan(step / 4.0);
        const math::EllipticArc arc{e.center, e.a, e.b, e.t0, e.t1};
        for (int i = 0; i < count; ++i) {
            const double t0 = e.t0 + step * i;
            const double t1 = t0 + step;
            const Vector2 a = i == 0 ? piece.from : arc.pointAt(t0);
            const Vector2 b = i + 1 == count ? e.p : arc.pointAt(t1);
            out.push_back({a, a + arc.derivativeAt(t0) * reach, b - arc.derivativeAt(t1) * reach, b});
        }
    }

    std::unique_ptr<Entity> asPolyline(const Entity& like) const {
        auto out = std::make_unique<PolylineEntity>();
        out->copyCommonFrom(like);
        if (const auto* polyline = dynamic_cast<const PolylineEntity*>(&like)) out->ltgen = polyline->ltgen;
        PolylineEntity segment({Vector2{}, Vector2{}});
        for (const JoinStep& s : steps_) {
            if (type(s) == EntityType::Line) {
                segment.vertices = {from(s).xy(), to(s).xy()};
                append(*out, segment);
                continue;
            }
            std::unique_ptr<PolylineEntity> own = polylineFrom(entity(s));
            if (!own) return nullptr;
            if (s.turned) own->reverse();
            append(*out, *own);
        }
        if (closed_ && out->vertices.size() > 2) closeUp(*out);
        return out;
    }

    /// Adds `tail`; its first vertex takes the place of the last one.
    void append(PolylineEntity& out, const PolylineEntity& tail) const {
        std::size_t first = 0;
        if (!out.vertices.empty()) {
            Vector2 start = tail.vertices.front();
            if (bridge(out, tail, start)) {
                const std::size_t last = out.vertices.size() - 1;
                out.setBulge(last, tail.bulge(0));
                out.setWidths(last, tail.startWidth(0), tail.endWidth(0));
                first = 1;
            }
        }
        for (std::size_t i = first; i < tail.vertices.size(); ++i)
            out.addVertex(tail.vertices[i], tail.bulge(i), tail.startWidth(i), tail.endWidth(i));
    }

    /// Makes the end of `out` and the start of `tail` one point; false: the gap stays and becomes a segment.
    bool bridge(PolylineEntity& out, const PolylineEntity& tail, const Vector2& start) const {
        Vector2& end = out.vertices.back();
        const double gap = end.distance_to(start);
        if (gap <= same_) return true;
        if (options_.gap != JoinGap::Add && out.vertices.size() > 1 && tail.vertices.size() > 1 &&
            out.bulge(out.vertices.size() - 2) == 0.0 && tail.bulge(0) == 0.0) {
            const auto p = math::lineLine(out.vertices[out.vertices.size() - 2], end, start, tail.vertices[1]);
            if (p && p->distance_to(end) <= 8.0 * gap) {
                end = *p;
                return true;
            }
        }
        if (options_.gap != JoinGap::Extend) return false;
        end = (end + start) / 2.0;  // nothing to extend: they meet half-way
        return true;
    }

    void closeUp(PolylineEntity& out) const {
        PolylineEntity head({out.vertices[0], out.vertices[1]});
        head.setBulge(0, out.bulge(0));
        const std::size_t last = out.vertices.size() - 1;
        if (bridge(out, head, out.vertices.front())) {
            out.vertices.front() = out.vertices[last];
            out.eraseVertex(last);
        }
        out.closed = true;
    }

    const std::vector<JoinMember>& members_;
    std::span<const JoinStep> steps_;
    bool closed_;
    const JoinOptions& options_;
    double same_;
};

}  // namespace

std::unique_ptr<Entity> buildChain(const std::vector<JoinMember>& members, std::span<const JoinStep> steps, bool closed,
                                   const JoinOptions& options, double same, const Entity& like) {
    return ChainBuilder(members, steps, closed, options, same).build(like);
}

std::unique_ptr<PolylineEntity> polylineFrom(const Entity& entity, int precision) {
    std::unique_ptr<PolylineEntity> out;
    switch (entity.type()) {
        case EntityType::Polyline:
            return std::unique_ptr<PolylineEntity>(static_cast<PolylineEntity*>(entity.clone().release()));
        case EntityType::Line: {
            const auto& line = static_cast<const LineEntity&>(entity);
            out = std::make_unique<PolylineEntity>(std::vector<Vector2>{line.start, line.end});
            break;
        }
        case EntityType::Arc: {
            const auto& arc = static_cast<const ArcEntity&>(entity);
            out = std::make_unique<PolylineEntity>(std::vector<Vector2>{arc.startPoint(), arc.endPoint()});
            if (arc.sweep() > 1.999 * math::kPi)
                out->insertVertex(1, arc.midPoint(), math::bulgeFromSweep(arc.sweep() / 2.0));
            out->setBulge(0, math::bulgeFromSweep(arc.sweep() / static_cast<double>(out->vertices.size() - 1)));
            break;
        }
        case EntityType::Circle: {
            const auto& circle = static_cast<const CircleEntity&>(entity);
            const Vector2 reach{circle.radius, 0.0};
            out = std::make_unique<PolylineEntity>(std::vector<Vector2>{circle.center - reach, circle.center + reach},
                                                   true);
            out->setBulge(0, 1.0);
            out->setBulge(1, 1.0);
            break;
        }
        case EntityType::Spline:
        case EntityType::Ellipse: {
            const auto curve = EditCurve::of(entity);
            if (!curve) return nullptr;
            out = std::make_unique<PolylineEntity>();
            const int count = entity.type() == EntityType::Ellipse ? 4 * precision : precision;
            out->vertices.push_back(curve->pieces().front().from);
            for (const CurvePiece& piece : curve->pieces())
                for (int i = 1; i <= count; ++i) out->vertices.push_back(piece.pointAt(static_cast<double>(i) / count));
            if (curve->closed()) {
                out->vertices.pop_back();
                out->closed = true;
            }
            break;
        }
        default:
            return nullptr;
    }
    out->copyCommonFrom(entity);
    return out;
}

}  // namespace kova::engine
