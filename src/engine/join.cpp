#include "engine/join.hpp"

#include <cmath>
#include <unordered_map>

#include "engine/edit_curve.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/object_plane.hpp"
#include "math/intersect.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr double kSame = 1e-9;  ///< ends this near, as part of the coordinates, are one

struct Member {
    const Entity* entity = nullptr;
    Vector2 ends[2];
    std::size_t next[2] = {kNone, kNone};  ///< the end it is tied to: 2 * member + end
    bool used = false;
};

bool joinable(const Entity& entity) {
    if (!inWorldPlane(entity)) return false;
    switch (entity.type()) {
        case EntityType::Line: {
            const auto& line = static_cast<const LineEntity&>(entity);
            return !line.hasZ || line.endZ == line.elevation;
        }
        case EntityType::Arc:
        case EntityType::Polyline:
        case EntityType::Spline:
        case EntityType::Ellipse:
            return true;
        default:
            return false;
    }
}

/// Ties each open end to the nearest free end in reach, on a grid.
void tieEnds(std::vector<Member>& members, double reach) {
    const double cell = std::max(reach, 1e-300) * 2.0;
    const auto key = [](double x, double y) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(x)) * 0x9E3779B97F4A7C15ULL ^
               static_cast<std::uint64_t>(static_cast<std::int64_t>(y));
    };
    const auto place = [&](double v) { return std::clamp(std::floor(v / cell), -9e18, 9e18); };
    std::unordered_multimap<std::uint64_t, std::size_t> free;
    free.reserve(members.size() * 2);
    for (std::size_t end = 0; end < members.size() * 2; ++end) {
        Member& member = members[end / 2];
        const Vector2& p = member.ends[end % 2];
        std::size_t best = kNone;
        double least = reach;
        auto found = free.end();
        for (int i = -1; i <= 1; ++i)
            for (int j = -1; j <= 1; ++j) {
                const auto [from, to] = free.equal_range(key(place(p.x) + i, place(p.y) + j));
                for (auto it = from; it != to; ++it) {
                    if (it->second / 2 == end / 2) continue;
                    const Member& other = members[it->second / 2];
                    if (other.entity->elevation != member.entity->elevation) continue;
                    const double distance = other.ends[it->second % 2].distance_to(p);
                    if (!(distance <= least) || (best != kNone && distance == least && it->second > best)) continue;
                    least = distance;
                    best = it->second;
                    found = it;
                }
            }
        if (best == kNone) {
            free.emplace(key(place(p.x), place(p.y)), end);
            continue;
        }
        free.erase(found);
        member.next[end % 2] = best;
        members[best / 2].next[best % 2] = end;
    }
}

/// One member as it is run through: backwards when `turned`.
struct Step {
    std::size_t member;
    bool turned;
};

class ChainBuilder {
public:
    ChainBuilder(const std::vector<Member>& members, const std::vector<Step>& steps, bool closed,
                 const JoinOptions& options, double same)
        : members_(members), steps_(steps), closed_(closed), options_(options), same_(same) {}

    std::unique_ptr<Entity> build(const Entity& like) const {
        std::unique_ptr<Entity> made;
        if (!options_.toPolylines) {
            made = asLine();
            if (!made) made = asArc();
            if (made) made->copyCommonFrom(like);
        }
        if (!made) made = hasCurves() ? asSpline(like) : asPolyline(like);
        if (made) made->setHandle(0);
        return made;
    }

private:
    const Entity& entity(const Step& step) const { return *members_[step.member].entity; }
    const Vector2& from(const Step& step) const { return members_[step.member].ends[step.turned ? 1 : 0]; }
    const Vector2& to(const Step& step) const { return members_[step.member].ends[step.turned ? 0 : 1]; }

    bool hasCurves() const {
        return std::any_of(steps_.begin(), steps_.end(), [&](const Step& s) {
            return entity(s).type() == EntityType::Spline || entity(s).type() == EntityType::Ellipse;
        });
    }

    std::unique_ptr<Entity> asLine() const {
        const Vector2 a = from(steps_.front());
        const Vector2 b = to(steps_.back());
        const Vector2 along = (b - a).normalized();
        if (closed_ || along == Vector2{}) return nullptr;
        for (const Step& s : steps_)
            if (entity(s).type() != EntityType::Line || (to(s) - from(s)).dot(along) < 0.0 ||
                std::abs(along.cross(to(s) - a)) > same_)
                return nullptr;
        // The direction of the first object stays.
        const bool turned = steps_.front().member < steps_.back().member ? steps_.front().turned : steps_.back().turned;
        return turned ? std::make_unique<LineEntity>(b, a) : std::make_unique<LineEntity>(a, b);
    }

    std::unique_ptr<Entity> asArc() const {
        if (entity(steps_.front()).type() != EntityType::Arc) return nullptr;
        const auto& first = static_cast<const ArcEntity&>(entity(steps_.front()));
        double sweep = 0.0;
        for (const Step& s : steps_) {
            if (entity(s).type() != EntityType::Arc || s.turned != steps_.front().turned) return nullptr;
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

    std::unique_ptr<Entity> asSpline(const Entity& like) const {
        std::vector<math::Cubic> cubics;
        for (const Step& s : steps_) {
            const auto curve = EditCurve::of(entity(s));
            if (!curve) return nullptr;
            std::vector<math::Cubic> own;
            for (const CurvePiece& piece : curve->pieces()) addCubics(piece, own);
            if (s.turned) {
                std::reverse(own.begin(), own.end());
                for (math::Cubic& c : own) std::reverse(c.begin(), c.end());
            }
            if (!cubics.empty() && !own.empty()) own.front()[0] = cubics.back()[3];
            cubics.insert(cubics.end(), own.begin(), own.end());
        }
        if (cubics.empty()) return nullptr;
        if (closed_) cubics.back()[3] = cubics.front()[0];
        return splineAlong(cubics, closed_, like);
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
        for (const Step& s : steps_) {
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

    const std::vector<Member>& members_;
    const std::vector<Step>& steps_;
    bool closed_;
    const JoinOptions& options_;
    double same_;
};

/// Objects of one line or circle over their gaps: all lines in line with the first object, or all arcs on its circle.
std::optional<JoinedChain> joinOverGaps(std::span<const Entity* const> entities, double same) {
    JoinedChain chain;
    if (const auto* source = dynamic_cast<const LineEntity*>(entities.front())) {
        const Vector2 along = (source->end - source->start).normalized();
        if (along == Vector2{}) return std::nullopt;
        double lo = 0.0;
        double hi = (source->end - source->start).dot(along);
        for (std::size_t i = 0; i < entities.size(); ++i) {
            const auto* line = dynamic_cast<const LineEntity*>(entities[i]);
            if (line == nullptr || !joinable(*line) || line->elevation != source->elevation) continue;
            if (std::abs(along.cross(line->start - source->start)) > same ||
                std::abs(along.cross(line->end - source->start)) > same)
                continue;
            for (const Vector2& p : {line->start, line->end}) {
                lo = std::min(lo, (p - source->start).dot(along));
                hi = std::max(hi, (p - source->start).dot(along));
            }
            chain.members.push_back(i);
        }
        if (chain.members.size() < 2) return std::nullopt;
        auto made = std::make_unique<LineEntity>(source->start + along * lo, source->start + along * hi);
        made->copyCommonFrom(*source);
        chain.made = std::move(made);
        return chain;
    }
    const auto* source = dynamic_cast<const ArcEntity*>(entities.front());
    if (source == nullptr) return std::nullopt;
    double sweep = source->sweep();
    for (std::size_t i = 0; i < entities.size(); ++i) {
        const auto* arc = dynamic_cast<const ArcEntity*>(entities[i]);
        if (arc == nullptr || !joinable(*arc) || arc->elevation != source->elevation) continue;
        if (arc->center.distance_to(source->center) > same || std::abs(arc->radius - source->radius) > same) continue;
        // Counter-clockwise from the source on.
        const double begin = math::normalizeAngle(arc->startAngle - source->startAngle);
        sweep = std::max(sweep, i == 0 ? sweep : begin + arc->sweep());
        chain.members.push_back(i);
    }
    if (chain.members.size() < 2) return std::nullopt;
    if (sweep >= math::kTwoPi - 1e-9)
        chain.made = std::make_unique<CircleEntity>(source->center, source->radius);
    else
        chain.made = std::make_unique<ArcEntity>(source->center, source->radius, source->startAngle,
                                                 math::normalizeAngle(source->startAngle + sweep));
    chain.made->copyCommonFrom(*source);
    return chain;
}

}  // namespace

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

std::vector<JoinedChain> joinEntities(std::span<const Entity* const> entities, const JoinOptions& options) {
    std::vector<JoinedChain> out;
    if (entities.size() < 2) return out;
    std::vector<Member> members;
    std::vector<std::size_t> indexes;
    double scale = 0.0;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        if (!joinable(*entities[i])) continue;
        const auto curve = EditCurve::of(*entities[i]);
        if (!curve || curve->closed()) continue;
        Member member;
        member.entity = entities[i];
        member.ends[0] = curve->pieces().front().from;
        member.ends[1] = curve->pieces().back().element.p;
        scale = std::max(scale, curve->scale());
        members.push_back(member);
        indexes.push_back(i);
    }
    const double same = kSame * scale;
    if (options.overGaps) {
        if (auto chain = joinOverGaps(entities, same)) {
            out.push_back(std::move(*chain));
            return out;
        }
    }
    if (members.empty()) return out;
    tieEnds(members, std::max(options.fuzz, same));
    for (std::size_t seed = 0; seed < members.size(); ++seed) {
        if (members[seed].used) continue;
        // Back to where the chain begins; round and back to the seed when it is closed.
        std::size_t at = seed;
        std::size_t end = 0;  // the end of `at` that leads back
        bool closed = false;
        while (members[at].next[end] != kNone) {
            const std::size_t tied = members[at].next[end];
            at = tied / 2;
            end = 1 - tied % 2;
            if (at == seed) {
                closed = true;
                break;
            }
        }
        std::vector<Step> steps;
        while (true) {
            members[at].used = true;
            steps.push_back({at, end == 1});
            const std::size_t tied = members[at].next[1 - end];
            if (tied == kNone || members[tied / 2].used) break;
            at = tied / 2;
            end = tied % 2;
        }
        if (steps.size() < 2) continue;
        JoinedChain chain;
        for (const Step& step : steps) chain.members.push_back(indexes[step.member]);
        std::sort(chain.members.begin(), chain.members.end());
        // The direction of the first object stays.
        const auto first = std::find_if(steps.begin(), steps.end(),
                                        [&](const Step& s) { return indexes[s.member] == chain.members.front(); });
        if (first->turned) {
            std::reverse(steps.begin(), steps.end());
            for (Step& step : steps) step.turned = !step.turned;
        }
        chain.made = ChainBuilder(members, steps, closed, options, same).build(*entities[chain.members.front()]);
        if (chain.made) out.push_back(std::move(chain));
    }
    return out;
}

}  // namespace kova::engine
