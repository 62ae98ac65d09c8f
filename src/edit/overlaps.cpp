#include "edit/overlaps.hpp"

#include <map>
#include <unordered_map>

#include "edit/cell_index.hpp"
#include "engine/curves/edit_curve.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"
#include "math/curves/collinear.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd {

using engine::Entity;
using math::Vector2;

namespace {

/// A stretch of a common line or circle, from a to b along it.
struct Stretch {
    Entity* entity;
    double a;
    double b;
};

/// A stretch after others were joined to it: `entity` stays, `gone` go.
struct Joined {
    Entity* entity;
    double a;
    double b;
    std::vector<Entity*> gone;
};

/// Puts stretches together that overlap or touch.
std::vector<Joined> joinStretches(std::vector<Stretch> stretches, const DuplicateRules& rules) {
    std::sort(stretches.begin(), stretches.end(), [](const Stretch& p, const Stretch& q) { return p.a < q.a; });
    std::vector<Joined> out;
    for (const Stretch& s : stretches) {
        Joined* last = out.empty() ? nullptr : &out.back();
        const bool overlaps = last != nullptr && s.a < last->b - rules.tolerance && rules.partialOverlap;
        const bool touches = last != nullptr && std::abs(s.a - last->b) <= rules.tolerance && rules.endToEnd;
        if (!overlaps && !touches) {
            out.push_back({s.entity, s.a, s.b, {}});
            continue;
        }
        last->b = std::max(last->b, s.b);
        // The one drawn first stays.
        Entity* other = s.entity;
        if (other->order() < last->entity->order()) std::swap(other, last->entity);
        last->gone.push_back(other);
    }
    return out;
}

}  // namespace

/// Works on what is left when duplicates are gone.
class OverlapRemover::Impl {
public:
    Impl(doc::Document& document, const DuplicateRules& rules) : document_(document), rules_(rules) {}

    std::size_t lines(const std::vector<engine::LineEntity*>& all) {
        std::vector<math::FlatSegment> segments;
        std::vector<engine::LineEntity*> flat;
        for (engine::LineEntity* line : all) {
            if (line->start3().z != line->end3().z) continue;
            segments.push_back({line->start, line->end, line->elevation});
            flat.push_back(line);
        }
        std::size_t removed = 0;
        for (const math::CollinearGroup& group : math::collinearGroups(segments, rules_.tolerance)) {
            std::vector<Stretch> stretches;
            for (const auto& s : group.stretches) stretches.push_back({flat[s.index], s.lo, s.hi});
            for (const Joined& joined : joinStretches(std::move(stretches), rules_))
                removed += takeLine(joined, group.origin, group.along);
        }
        return removed;
    }

    /// Lines that lie on segments of polylines, and segments that lie on earlier polylines.
    std::size_t segments(const std::vector<Entity*>& all) {
        std::vector<math::FlatSegment> flat;
        std::vector<SegmentOwner> owners;
        for (Entity* entity : all) takeSegments(*entity, flat, owners);
        std::unordered_map<engine::PolylineEntity*, std::vector<std::size_t>> covered;
        std::vector<std::uint64_t> gone;
        for (math::CollinearGroup& group : math::collinearGroups(flat, rules_.tolerance)) {
            // What is askew to the others by more than the tolerance has nothing to do with them.
            std::erase_if(group.stretches, [&](const auto& s) {
                const math::FlatSegment& segment = flat[s.index];
                const double askew = std::abs(group.along.cross(segment.b - segment.a));
                return askew > rules_.tolerance + 1e-9 * (s.hi - s.lo);
            });
            if (group.stretches.size() < 2) continue;
            // Polylines first, in drawing order: what lies on an earlier one goes.
            const auto rank = [&](const math::CollinearGroup::Stretch& s) {
                const SegmentOwner& owner = owners[s.index];
                return std::tuple(owner.polyline == nullptr, owner.entity->order(), owner.segment);
            };
            std::sort(group.stretches.begin(), group.stretches.end(),
                      [&](const auto& p, const auto& q) { return rank(p) < rank(q); });
            std::map<double, double> known;  // stretches of earlier polylines, put together
            for (std::size_t i = 0; i < group.stretches.size();) {
                std::size_t end = i + 1;
                while (end < group.stretches.size() &&
                       owners[group.stretches[end].index].entity == owners[group.stretches[i].index].entity)
                    ++end;
                for (std::size_t k = i; k < end; ++k) {
                    const auto& s = group.stretches[k];
                    const SegmentOwner& owner = owners[s.index];
                    if (!covers(known, s.lo, s.hi)) continue;
                    if (owner.polyline == nullptr)
                        gone.push_back(owner.entity->id());
                    else if (rules_.breakPolylines)
                        covered[owner.polyline].push_back(owner.segment);
                }
                if (owners[group.stretches[i].index].polyline == nullptr) break;
                for (std::size_t k = i; k < end; ++k) cover(known, group.stretches[k].lo, group.stretches[k].hi);
                i = end;
            }
        }
        // In drawing order, so that equal drawings give equal results.
        std::size_t broken = 0;
        for (Entity* entity : all) {
            const auto it = covered.find(dynamic_cast<engine::PolylineEntity*>(entity));
            if (it == covered.end()) continue;
            broken += it->second.size();
            breakOut(*it->first, std::move(it->second));
        }
        return document_.removeEntities(gone) + broken;
    }

    /// Arcs of one circle, and the circle itself.
    std::size_t arcs(std::vector<Entity*> all) {
        std::size_t removed = 0;
        struct Round {
            Entity* entity;
            Vector2 center;
            double radius;
        };
        std::vector<Round> work;
        for (Entity* entity : all) {
            if (auto* circle = dynamic_cast<engine::CircleEntity*>(entity))
                work.push_back({entity, circle->center, std::abs(circle->radius)});
            else if (auto* arc = dynamic_cast<engine::ArcEntity*>(entity))
                work.push_back({entity, arc->center, std::abs(arc->radius)});
        }
        CellIndex index(rules_.tolerance);
        std::vector<std::vector<std::size_t>> sets;
        for (std::size_t i = 0; i < work.size(); ++i) {
            const CellIndex::Place place{work[i].center.x, work[i].center.y, work[i].radius, work[i].entity->elevation};
            std::size_t set = sets.size();
            index.look(0, place, [&](std::size_t s) {
                const Round& other = work[sets[s].front()];
                const bool same = other.center.near_equal(work[i].center, rules_.tolerance) &&
                                  near(other.radius, work[i].radius, rules_.tolerance) &&
                                  near(other.entity->elevation, work[i].entity->elevation, rules_.tolerance);
                if (same) set = s;
                return same;
            });
            if (set == sets.size()) {
                sets.emplace_back();
                index.insert(set, 0, place);
            }
            sets[set].push_back(i);
        }
        for (const std::vector<std::size_t>& set : sets) {
            if (set.size() < 2) continue;
            std::vector<engine::ArcEntity*> pieces;
            bool circle = false;
            for (const std::size_t i : set) {
                if (auto* arc = dynamic_cast<engine::ArcEntity*>(work[i].entity))
                    pieces.push_back(arc);
                else
                    circle = true;
            }
            if (circle && rules_.partialOverlap) {
                for (engine::ArcEntity* arc : pieces) document_.removeEntity(*arc);
                removed += pieces.size();
            } else if (pieces.size() > 1) {
                removed += joinArcs(pieces);
            }
        }
        return removed;
    }

    std::size_t polyline(engine::PolylineEntity& polyline) {
        if (polyline.spline || !polyline.records.empty() || polyline.vertices.size() < 3) return 0;
        const engine::PolylineEntity& lean = polyline;
        std::size_t removed = 0;
        const auto straight = [](const engine::PolylineEntity& p, std::size_t i) { return p.bulge(i) == 0.0; };
        engine::PolylineEntity out;
        // A vertex stays when the way bends there or its widths change.
        for (std::size_t i = 0; i < lean.vertices.size(); ++i) {
            const Vector2& p = lean.vertices[i];
            const std::size_t n = out.vertices.size();
            // Of vertices that coincide the last one says how the way goes on.
            if (i + 1 < lean.vertices.size() && straight(lean, i) &&
                p.distance_to(lean.vertices[i + 1]) <= rules_.tolerance) {
                ++removed;
                continue;
            }
            const bool inner = i + 1 < lean.vertices.size() && n > 0 && straight(out, n - 1) && straight(lean, i);
            if (inner) {
                const Vector2& next = lean.vertices[i + 1];
                const Vector2& before = out.vertices[n - 1];
                const double w = out.startWidth(n - 1);
                const bool even = rules_.ignoreWidths ||
                                  (out.endWidth(n - 1) == w && lean.startWidth(i) == w && lean.endWidth(i) == w);
                const bool between = (p - before).dot(next - p) > 0.0;
                if (even && between && p.distance_to(math::closestOnSegment(p, before, next)) <= rules_.tolerance) {
                    ++removed;
                    continue;
                }
            }
            out.addVertex(p, lean.bulge(i), lean.startWidth(i), lean.endWidth(i));
        }
        if (removed == 0 || out.vertices.size() < 2) return 0;
        document_.modifyEntity(polyline, [&](Entity& e) {
            auto& target = static_cast<engine::PolylineEntity&>(e);
            target.vertices = std::move(out.vertices);
            target.bulges = std::move(out.bulges);
            target.startWidths = std::move(out.startWidths);
            target.endWidths = std::move(out.endWidths);
        });
        return removed;
    }

private:
    struct SegmentOwner {
        Entity* entity;
        engine::PolylineEntity* polyline;  ///< null: the entity is a line
        std::size_t segment;
    };

    void takeSegments(Entity& entity, std::vector<math::FlatSegment>& flat, std::vector<SegmentOwner>& owners) const {
        if (auto* line = dynamic_cast<engine::LineEntity*>(&entity)) {
            if (line->start3().z == line->end3().z) {
                flat.push_back({line->start, line->end, line->elevation});
                owners.push_back({&entity, nullptr, 0});
            }
            return;
        }
        auto* polyline = dynamic_cast<engine::PolylineEntity*>(&entity);
        if (polyline == nullptr || polyline->spline || !polyline->records.empty() || !engine::inWorldPlane(entity))
            return;
        const engine::PolylineEntity& lean = *polyline;
        for (std::size_t i = 0; i < lean.segmentCount(); ++i) {
            const bool thin = rules_.ignoreWidths || (lean.startWidth(i) == 0.0 && lean.endWidth(i) == 0.0);
            if (lean.bulge(i) != 0.0 || !thin) continue;
            flat.push_back({lean.vertices[i], lean.segmentEnd(i), lean.elevation});
            owners.push_back({&entity, polyline, i});
        }
    }

    bool covers(const std::map<double, double>& known, double lo, double hi) const {
        auto it = known.upper_bound(lo + rules_.tolerance);
        return it != known.begin() && std::prev(it)->second >= hi - rules_.tolerance;
    }
    void cover(std::map<double, double>& known, double lo, double hi) const {
        auto it = known.upper_bound(lo + rules_.tolerance);
        if (it != known.begin() && std::prev(it)->second >= lo - rules_.tolerance) {
            --it;
            lo = std::min(lo, it->first);
        }
        while (it != known.end() && it->first <= hi + rules_.tolerance) {
            hi = std::max(hi, it->second);
            it = known.erase(it);
        }
        known.emplace(lo, hi);
    }

    /// Takes segments out of a polyline; what is left of it stands in its place.
    void breakOut(engine::PolylineEntity& polyline, std::vector<std::size_t> segments) {
        const auto curve = engine::EditCurve::of(polyline);
        if (!curve) return;
        const std::size_t n = curve->pieces().size();
        std::vector<char> out(n, 0);
        for (const std::size_t i : segments)
            if (i < n) out[i] = 1;
        std::vector<std::unique_ptr<Entity>> parts;
        // A closed one is run through from behind the first gap.
        const std::size_t shift =
            curve->closed() ? static_cast<std::size_t>(std::find(out.begin(), out.end(), 1) - out.begin()) : 0;
        for (std::size_t k = 0; k < n;) {
            if (out[(k + shift) % n] != 0) {
                ++k;
                continue;
            }
            std::size_t end = k;
            while (end < n && out[(end + shift) % n] == 0) ++end;
            const std::size_t from = (k + shift) % n;
            std::size_t to = (end + shift) % n;
            if (to == 0) to = n;
            if (auto part = curve->part(static_cast<double>(from), static_cast<double>(to)))
                parts.push_back(std::move(part));
            k = end;
        }
        if (parts.empty()) return document_.removeEntity(polyline);
        document_.replaceEntity(polyline, std::move(parts.front()));
        for (std::size_t i = 1; i < parts.size(); ++i) document_.addEntity(std::move(parts[i]));
    }

    std::size_t takeLine(const Joined& joined, const Vector2& origin, const Vector2& along) {
        if (joined.gone.empty()) return 0;
        const auto& kept = static_cast<const engine::LineEntity&>(*joined.entity);
        // All of them must really lie in one line.
        for (const Entity* entity : joined.gone) {
            const auto& line = static_cast<const engine::LineEntity&>(*entity);
            if (!math::inLineWith({line.start, line.end}, {kept.start, kept.end}, rules_.tolerance)) return 0;
        }
        const double across = along.cross(kept.start - origin);
        const Vector2 side = along.perpendicular() * across;
        const bool forward = (kept.end - kept.start).dot(along) > 0.0;
        const double keptA = (kept.start - origin).dot(along);
        const double keptB = (kept.end - origin).dot(along);
        document_.modifyEntity(*joined.entity, [&](Entity& e) {
            auto& line = static_cast<engine::LineEntity&>(e);
            // An end that stays where it is keeps its exact coordinates.
            if (joined.a < std::min(keptA, keptB)) (forward ? line.start : line.end) = origin + along * joined.a + side;
            if (joined.b > std::max(keptA, keptB)) (forward ? line.end : line.start) = origin + along * joined.b + side;
        });
        for (Entity* entity : joined.gone) document_.removeEntity(*entity);
        return joined.gone.size();
    }

    std::size_t joinArcs(const std::vector<engine::ArcEntity*>& arcs) {
        const double radius = std::max(std::abs(arcs.front()->radius), 1e-12);
        std::vector<Stretch> stretches;
        for (engine::ArcEntity* arc : arcs) {
            const double start = math::normalizeAngle(arc->startAngle) * radius;
            stretches.push_back({arc, start, start + arc->sweep() * radius});
        }
        std::vector<Joined> joined = joinStretches(std::move(stretches), rules_);
        // The last one may run past the turn into the first ones.
        const double turn = math::kTwoPi * radius;
        while (joined.size() > 1) {
            Joined& last = joined.back();
            Joined& first = joined.front();
            const double gap = last.b - (first.a + turn);
            if (!(gap > rules_.tolerance && rules_.partialOverlap) &&
                !(std::abs(gap) <= rules_.tolerance && rules_.endToEnd))
                break;
            last.b = std::max(last.b, first.b + turn);
            last.gone.insert(last.gone.end(), first.gone.begin(), first.gone.end());
            Entity* other = first.entity;
            if (other->order() < last.entity->order()) std::swap(other, last.entity);
            last.gone.push_back(other);
            joined.erase(joined.begin());
        }
        std::size_t removed = 0;
        for (const Joined& j : joined) {
            if (j.gone.empty()) continue;
            auto& kept = static_cast<engine::ArcEntity&>(*j.entity);
            if (j.b - j.a >= turn - rules_.tolerance) {
                auto circle = std::make_unique<engine::CircleEntity>(kept.center, radius);
                circle->copyCommonFrom(kept);
                document_.replaceEntity(kept, std::move(circle));
            } else {
                document_.modifyEntity(kept, [&](Entity& e) {
                    auto& arc = static_cast<engine::ArcEntity&>(e);
                    arc.startAngle = math::normalizeAngle(j.a / radius);
                    arc.endAngle = math::normalizeAngle(j.b / radius);
                });
            }
            for (Entity* entity : j.gone) document_.removeEntity(*entity);
            removed += j.gone.size();
        }
        return removed;
    }

    doc::Document& document_;
    const DuplicateRules& rules_;
};

OverlapRemover::OverlapRemover(doc::Document& document, const DuplicateRules& rules)
    : impl_(std::make_unique<Impl>(document, rules)) {}
OverlapRemover::~OverlapRemover() = default;

std::size_t OverlapRemover::lines(const std::vector<engine::LineEntity*>& all) { return impl_->lines(all); }
std::size_t OverlapRemover::segments(const std::vector<Entity*>& all) { return impl_->segments(all); }
std::size_t OverlapRemover::arcs(const std::vector<Entity*>& all) { return impl_->arcs(all); }
std::size_t OverlapRemover::polyline(engine::PolylineEntity& polyline) { return impl_->polyline(polyline); }

}  // namespace kova::cmd
