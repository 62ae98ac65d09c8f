#include "cmd/duplicates.hpp"

#include <array>
#include <unordered_map>

#include "cmd/entity_copies.hpp"
#include "engine/entities/all.hpp"
#include "engine/entities/object_plane.hpp"
#include "math/curves.hpp"

namespace kova::cmd {

using engine::Entity;
using engine::Field;
using math::Vector2;

namespace {

/// Lines whose directions differ by no more may lie in one another.
constexpr double kAngleTolerance = 1e-7;

/// All that an entity's own fields hold: numbers for comparing within a tolerance, the rest as one text.
class Fingerprint final : public engine::FieldVisitor {
public:
    std::vector<double> numbers;
    std::string text;

protected:
    void onNumber(const Field&, double& v) override { numbers.push_back(v); }
    void onInteger(const Field&, std::int64_t& v) override { add(std::to_string(v)); }
    void onBoolean(const Field&, bool& v) override { add(v ? "1" : "0"); }
    void onText(const Field&, std::string& v) override { add(v); }
    void onName(const Field&, engine::Name& v) override { add(v.folded()); }
    void onHandle(const Field&, std::uint64_t& v) override { add(std::to_string(v)); }
    void onColor(const Field&, engine::Color& v) override { add(engine::colorText(v)); }
    void onPointObject(const Field&, Vector2& v) override { add(v); }
    void onPointObject3(const Field&, math::Vector3& v) override { add(v); }
    void onPoints(const Field&, std::vector<Vector2>& v) override { list(v); }
    void onPoints3(const Field&, std::vector<math::Vector3>& v) override { list(v); }
    void onNumbers(const Field&, std::vector<double>& v) override {
        add(std::to_string(v.size()));
        numbers.insert(numbers.end(), v.begin(), v.end());
    }
    void onIntegers(const Field&, std::vector<std::int32_t>& v) override { list(v); }
    void onBooleans(const Field&, std::vector<bool>& v) override {
        for (const bool b : v) text += b ? '1' : '0';
        add(std::string_view{});
    }
    void onHandles(const Field&, std::vector<std::uint64_t>& v) override { list(v); }
    void onTexts(const Field&, std::vector<std::string>& v) override { list(v); }
    void onNames(const Field&, std::vector<engine::Name>& v) override {
        for (const engine::Name& name : v) add(name.folded());
    }
    void onIntegerLists(const Field&, std::vector<std::vector<std::int32_t>>& v) override {
        for (auto& inner : v) list(inner);
    }
    void onTextLists(const Field&, std::vector<std::vector<std::string>>& v) override {
        for (auto& inner : v) list(inner);
    }
    void onNumberMap(const Field&, std::map<std::string, double>& v) override {
        for (auto& [key, value] : v) {
            add(key);
            numbers.push_back(value);
        }
    }
    void onTextMap(const Field&, std::map<std::string, std::string>& v) override {
        for (auto& [key, value] : v) {
            add(key);
            add(value);
        }
    }
    bool beginObject(const Field&, bool present) override {
        add(present ? "{" : "-");
        return present;
    }
    void endObject() override {}
    bool beginList(const Field&, std::size_t& count) override {
        add(std::to_string(count));
        return count != 0;
    }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}

private:
    void add(std::string_view part) {
        text += part;
        text += '\x1f';
    }
    void add(const Vector2& v) { numbers.insert(numbers.end(), {v.x, v.y}); }
    void add(const math::Vector3& v) { numbers.insert(numbers.end(), {v.x, v.y, v.z}); }
    template <class Item>
    void list(std::vector<Item>& items) {
        add(std::string_view(std::to_string(items.size())));
        for (Item& item : items) {
            if constexpr (std::is_integral_v<Item>)
                add(std::string_view(std::to_string(item)));
            else
                add(item);
        }
    }
};

/// The kind and the properties that must agree.
std::string propertiesOf(const Entity& entity, unsigned ignore) {
    std::string out = std::to_string(static_cast<int>(entity.type()));
    const auto add = [&](unsigned bit, std::string_view value) {
        out += '\n';
        if ((ignore & bit) == 0) out += value;
    };
    add(DuplicateRules::kColor, engine::colorText(entity.color));
    add(DuplicateRules::kLayer, entity.layer.folded());
    add(DuplicateRules::kLinetype, entity.linetype.folded());
    add(DuplicateRules::kLinetypeScale, std::to_string(entity.linetypeScale()));
    add(DuplicateRules::kLineweight, std::to_string(entity.lineweight));
    add(DuplicateRules::kThickness, std::to_string(entity.thickness()));
    add(DuplicateRules::kTransparency, std::to_string(entity.transparency));
    add(DuplicateRules::kPlotStyle, entity.plotStyleName().folded());
    const math::Vector3 n = entity.normal();
    add(0, std::to_string(n.x) + ' ' + std::to_string(n.y) + ' ' + std::to_string(n.z));
    return out;
}

bool near(double a, double b, double tolerance) { return std::abs(a - b) <= tolerance || a == b; }

// Duplicates
// -----------------------------------------------------------------------------------------------------------

/// Finds things by place: each in the cells of its numbers, and looked for in all cells within the tolerance.
class CellIndex {
public:
    explicit CellIndex(double tolerance) : tolerance_(tolerance), cell_(std::max(8.0 * tolerance, 1e-9)) {}

    using Place = std::array<double, 4>;
    void insert(std::size_t what, std::size_t seed, const Place& place) { cells_[key(seed, place)].push_back(what); }
    /// Calls use(what) for what may lie at the place, until it gives true.
    template <class Use>
    bool look(std::size_t seed, const Place& place, const Use& use) const {
        std::size_t seen[16];
        std::size_t count = 0;
        for (unsigned corner = 0; corner < 16; ++corner) {
            Place at = place;
            for (std::size_t i = 0; i < 4; ++i) at[i] += ((corner >> i) & 1U) != 0 ? tolerance_ : -tolerance_;
            const std::size_t k = key(seed, at);
            if (std::find(seen, seen + count, k) != seen + count) continue;
            seen[count++] = k;
            const auto it = cells_.find(k);
            if (it == cells_.end()) continue;
            for (const std::size_t what : it->second)
                if (use(what)) return true;
        }
        return false;
    }

private:
    std::size_t key(std::size_t seed, const Place& place) const {
        std::size_t k = seed;
        for (const double v : place) {
            const double c = std::floor(v / cell_);
            const std::int64_t n = std::isfinite(c) && std::abs(c) < 9e18 ? static_cast<std::int64_t>(c) : 0;
            k = (k ^ std::hash<std::int64_t>{}(n)) * 0x9E3779B97F4A7C15ULL;
            k ^= k >> 29;
        }
        return k;
    }

    double tolerance_;
    double cell_;
    std::unordered_map<std::size_t, std::vector<std::size_t>> cells_;
};

struct Candidate {
    Entity* entity;
    std::string properties;
    std::vector<double> numbers;
};

/// Same numbers; the ends of a line may be exchanged.
bool sameShape(const Candidate& a, const Candidate& b, double tolerance) {
    const auto* la = dynamic_cast<const engine::LineEntity*>(a.entity);
    const auto* lb = dynamic_cast<const engine::LineEntity*>(b.entity);
    if (la != nullptr && lb != nullptr) {
        const auto equal = [&](const math::Vector3& p, const math::Vector3& q) {
            return near(p.x, q.x, tolerance) && near(p.y, q.y, tolerance) && near(p.z, q.z, tolerance);
        };
        return (equal(la->start3(), lb->start3()) && equal(la->end3(), lb->end3())) ||
               (equal(la->start3(), lb->end3()) && equal(la->end3(), lb->start3()));
    }
    if (a.numbers.size() != b.numbers.size() || !near(a.entity->elevation, b.entity->elevation, tolerance))
        return false;
    for (std::size_t i = 0; i < a.numbers.size(); ++i)
        if (!near(a.numbers[i], b.numbers[i], tolerance)) return false;
    return true;
}

// Overlaps
// -------------------------------------------------------------------------------------------------------------

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

/// Works on what is left when duplicates are gone.
class OverlapRemover {
public:
    OverlapRemover(doc::Document& document, const DuplicateRules& rules) : document_(document), rules_(rules) {}

    std::size_t lines(const std::vector<engine::LineEntity*>& all) {
        struct Directed {
            engine::LineEntity* line;
            double angle;
            double offset = 0.0;
        };
        std::vector<Directed> work;
        for (engine::LineEntity* line : all) {
            const Vector2 d = line->end - line->start;
            if (!(d.length() > rules_.tolerance) || !d.is_finite() || line->start3().z != line->end3().z) continue;
            double angle = d.angle();
            if (angle < 0.0) angle += math::kPi;
            if (angle >= math::kPi - kAngleTolerance) angle -= math::kPi;
            work.push_back({line, angle});
        }
        std::sort(work.begin(), work.end(), [](const Directed& p, const Directed& q) { return p.angle < q.angle; });
        std::size_t removed = 0;
        for (std::size_t i = 0; i < work.size();) {
            std::size_t end = i + 1;
            while (end < work.size() && work[end].angle - work[end - 1].angle <= kAngleTolerance) ++end;
            // Offsets are measured near the lines, so that far coordinates lose nothing.
            const Vector2 origin = work[i].line->start;
            const Vector2 along = Vector2::from_angle(work[i + (end - i) / 2].angle);
            for (std::size_t k = i; k < end; ++k)
                work[k].offset = along.cross((work[k].line->start + work[k].line->end) / 2.0 - origin);
            std::sort(work.begin() + static_cast<std::ptrdiff_t>(i), work.begin() + static_cast<std::ptrdiff_t>(end),
                      [](const Directed& p, const Directed& q) { return p.offset < q.offset; });
            for (std::size_t k = i; k < end;) {
                std::vector<Stretch> stretches;
                std::size_t stop = k;
                do {
                    engine::LineEntity* line = work[stop].line;
                    const double a = (line->start - origin).dot(along);
                    const double b = (line->end - origin).dot(along);
                    stretches.push_back({line, std::min(a, b), std::max(a, b)});
                    ++stop;
                } while (stop < end && work[stop].offset - work[k].offset <= rules_.tolerance &&
                         near(work[stop].line->elevation, work[k].line->elevation, rules_.tolerance));
                for (const Joined& joined : joinStretches(std::move(stretches), rules_))
                    removed += takeLine(joined, origin, along);
                k = stop;
            }
            i = end;
        }
        return removed;
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
                const bool even = out.endWidth(n - 1) == w && lean.startWidth(i) == w && lean.endWidth(i) == w;
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
    std::size_t takeLine(const Joined& joined, const Vector2& origin, const Vector2& along) {
        if (joined.gone.empty()) return 0;
        const auto& kept = static_cast<const engine::LineEntity&>(*joined.entity);
        // All of them must really lie in one line.
        const Vector2 direction = (kept.end - kept.start).normalized();
        const double reach = std::max(joined.b - joined.a, 1.0);
        for (const Entity* entity : joined.gone) {
            const auto& line = static_cast<const engine::LineEntity&>(*entity);
            const double off = std::max(std::abs(direction.cross(line.start - kept.start)),
                                        std::abs(direction.cross(line.end - kept.start)));
            if (off > rules_.tolerance + 1e-9 * reach) return 0;
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

}  // namespace

DuplicateCounts removeDuplicates(doc::Document& document, const std::vector<std::uint64_t>& ids,
                                 const DuplicateRules& rules) {
    DuplicateCounts counts;
    OverlapRemover overlaps(document, rules);
    if (rules.optimizePolylines)
        for (Entity* entity : entitiesInOrder(document, ids))
            if (auto* polyline = dynamic_cast<engine::PolylineEntity*>(entity))
                counts.overlaps += overlaps.polyline(*polyline);

    std::vector<Candidate> kept;
    CellIndex index(rules.tolerance);
    std::vector<std::uint64_t> gone;
    for (Entity* entity : entitiesInOrder(document, ids)) {
        Fingerprint print;
        entity->describe(print);
        Candidate candidate{entity, propertiesOf(*entity, rules.ignore), std::move(print.numbers)};
        // Which end of a line is in space does not matter: its ends are compared whole.
        if (entity->type() != engine::EntityType::Line) candidate.properties += '\n' + print.text;
        const math::Bounds2 box = entity->bounds();
        CellIndex::Place place{};
        if (!box.is_empty()) place = {box.center().x, box.center().y, box.width(), box.height()};
        const std::size_t seed = std::hash<std::string>{}(candidate.properties);
        const bool known = index.look(seed, place, [&](std::size_t other) {
            return kept[other].properties == candidate.properties && sameShape(kept[other], candidate, rules.tolerance);
        });
        if (known) {
            gone.push_back(entity->id());
            continue;
        }
        index.insert(kept.size(), seed, place);
        kept.push_back(std::move(candidate));
    }
    counts.duplicates = document.removeEntities(gone);
    if (!rules.partialOverlap && !rules.endToEnd) return counts;

    std::unordered_map<std::string, std::vector<engine::LineEntity*>> lines;
    std::unordered_map<std::string, std::vector<Entity*>> rounds;
    for (const Candidate& candidate : kept) {
        // The kind stands first in the properties: circles and arcs belong together.
        const auto common = [&] {
            const std::string properties = propertiesOf(*candidate.entity, rules.ignore);
            return properties.substr(properties.find('\n'));
        };
        if (auto* line = dynamic_cast<engine::LineEntity*>(candidate.entity))
            lines[common()].push_back(line);
        else if (candidate.entity->type() == engine::EntityType::Circle ||
                 candidate.entity->type() == engine::EntityType::Arc)
            rounds[common()].push_back(candidate.entity);
    }
    for (const auto& [properties, members] : lines) counts.overlaps += overlaps.lines(members);
    for (const auto& [properties, members] : rounds) counts.overlaps += overlaps.arcs(members);
    return counts;
}

}  // namespace kova::cmd
