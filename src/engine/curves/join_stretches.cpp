#include "engine/curves/join_stretches.hpp"

#include <array>
#include <cmath>

#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "math/angles.hpp"
#include "math/curves/collinear.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// An arc by the whole curve that it is a part of; parameters in radians, counter-clockwise.
struct Round {
    static constexpr std::size_t kValues = 6;
    std::size_t index = 0;
    std::array<double, kValues> curve{};  ///< centre, major axis, length of the minor one, elevation
    double start = 0.0;
    double sweep = 0.0;
};

std::optional<Round> roundOf(const Entity& entity, std::size_t index) {
    if (!inWorldPlane(entity)) return std::nullopt;
    Round round;
    round.index = index;
    if (const auto* arc = dynamic_cast<const ArcEntity*>(&entity)) {
        round.curve = {arc->center.x, arc->center.y, arc->radius, 0.0, arc->radius, arc->elevation};
        round.start = arc->startAngle;
        round.sweep = arc->sweep();
    } else if (const auto* ellipse = dynamic_cast<const EllipseEntity*>(&entity)) {
        if (ellipse->isFull()) return std::nullopt;
        // The same ellipse may have been drawn with its axis the other way.
        const bool turned = ellipse->major.y < 0.0 || (ellipse->major.y == 0.0 && ellipse->major.x < 0.0);
        const Vector2 major = turned ? -ellipse->major : ellipse->major;
        round.curve = {ellipse->center.x, ellipse->center.y, major.x, major.y, major.length() * ellipse->minorRatio,
                       ellipse->elevation};
        round.start = ellipse->startParam + (turned ? math::kPi : 0.0);
        round.sweep = ellipse->sweep();
    } else {
        return std::nullopt;
    }
    round.start = math::normalizeAngle(round.start);
    for (const double v : round.curve)
        if (!std::isfinite(v)) return std::nullopt;
    const double size = std::hypot(round.curve[2], round.curve[3]);
    if (!(size > 0.0) || !std::isfinite(round.start) || !(round.sweep > 0.0)) return std::nullopt;
    return round;
}

bool onOneCurve(const Round& a, const Round& b, double same) {
    for (std::size_t i = 0; i < Round::kValues; ++i)
        if (std::abs(a.curve[i] - b.curve[i]) > same) return false;
    return true;
}

/// A stretch of the curve of `like`, which is an arc or elliptic arc; the whole circle or ellipse for a full turn.
std::unique_ptr<Entity> roundPart(const Entity& like, const Round& round, double start, double sweep) {
    const bool whole = sweep >= math::kTwoPi - 1e-9;
    std::unique_ptr<Entity> made;
    if (like.type() == EntityType::Ellipse) {
        made = like.clone();
        auto& ellipse = static_cast<EllipseEntity&>(*made);
        // The entity's own axis may be the turned one.
        const double shift = math::normalizeAngle(round.start - ellipse.startParam);
        ellipse.startParam = whole ? 0.0 : math::normalizeAngle(start - shift);
        ellipse.endParam = whole ? math::kTwoPi : math::normalizeAngle(start - shift + sweep);
    } else {
        const auto& arc = static_cast<const ArcEntity&>(like);
        if (whole)
            made = std::make_unique<CircleEntity>(arc.center, arc.radius);
        else
            made = std::make_unique<ArcEntity>(arc.center, arc.radius, math::normalizeAngle(start),
                                               math::normalizeAngle(start + sweep));
        made->copyCommonFrom(like);
    }
    made->setHandle(0);
    return made;
}

/// Sorts by the curve and calls use(first, last) for those on one curve.
template <class Use>
void eachCurve(std::vector<Round>& rounds, std::size_t begin, std::size_t end, std::size_t level, double same,
               const Use& use) {
    if (end - begin < 2) return;
    if (level == Round::kValues) return use(begin, end);
    const auto at = [&](std::size_t i) { return rounds.begin() + static_cast<std::ptrdiff_t>(i); };
    std::sort(at(begin), at(end), [&](const Round& a, const Round& b) { return a.curve[level] < b.curve[level]; });
    for (std::size_t i = begin; i < end;) {
        std::size_t stop = i + 1;
        while (stop < end && rounds[stop].curve[level] - rounds[stop - 1].curve[level] <= same) ++stop;
        eachCurve(rounds, i, stop, level + 1, same, use);
        i = stop;
    }
}

struct Run {
    double start;
    double end;
    std::vector<const Round*> members;
};

void joinRounds(std::span<const Entity* const> entities, std::span<Round> rounds, double same,
                std::vector<JoinedChain>& out) {
    std::sort(rounds.begin(), rounds.end(), [](const Round& a, const Round& b) { return a.start < b.start; });
    const double slack = same / std::hypot(rounds[0].curve[2], rounds[0].curve[3]);
    std::vector<Run> runs;
    for (const Round& round : rounds) {
        const double end = round.start + round.sweep;
        if (!runs.empty() && round.start < runs.back().end - slack) {
            runs.back().end = std::max(runs.back().end, end);
            runs.back().members.push_back(&round);
        } else {
            runs.push_back({round.start, end, {&round}});
        }
    }
    // The last one may reach over the turn into the first ones.
    std::size_t first = 0;
    Run& last = runs.back();
    for (; first + 1 < runs.size() && last.end - math::kTwoPi > runs[first].start + slack; ++first) {
        last.end = std::max(last.end, runs[first].end + math::kTwoPi);
        last.members.insert(last.members.end(), runs[first].members.begin(), runs[first].members.end());
    }
    for (const Run& run : std::span(runs).subspan(first)) {
        if (run.members.size() < 2) continue;
        JoinedChain& chain = out.emplace_back();
        for (const Round* round : run.members) chain.members.push_back(round->index);
        std::sort(chain.members.begin(), chain.members.end());
        const auto like = std::find_if(run.members.begin(), run.members.end(),
                                       [&](const Round* r) { return r->index == chain.members.front(); });
        chain.made = roundPart(*entities[chain.members.front()], **like, run.start, run.end - run.start);
    }
}

/// A line as what it becomes between two places along the direction it runs in.
std::unique_ptr<Entity> lineBetween(const LineEntity& like, double lo, double hi) {
    const Vector2 along = (like.end - like.start).normalized();
    const double length = (like.end - like.start).dot(along);
    // An end that stays keeps its exact coordinates.
    auto made = std::make_unique<LineEntity>(lo < 0.0 ? like.start + along * lo : like.start,
                                             hi > length ? like.start + along * hi : like.end);
    made->copyCommonFrom(like);
    return made;
}

bool isFlatLine(const Entity& entity) { return entity.type() == EntityType::Line && isJoinable(entity, false); }

/// Joins the lines of one group where they overlap.
void joinLines(std::span<const Entity* const> entities, std::span<const std::size_t> indexes,
               math::CollinearGroup& group, double same, std::vector<JoinedChain>& out) {
    auto& stretches = group.stretches;
    std::sort(stretches.begin(), stretches.end(), [](const auto& a, const auto& b) { return a.lo < b.lo; });
    for (std::size_t i = 0; i < stretches.size();) {
        double end = stretches[i].hi;
        std::size_t stop = i + 1;
        while (stop < stretches.size() && stretches[stop].lo < end - same) end = std::max(end, stretches[stop++].hi);
        if (stop - i > 1) {
            std::vector<std::size_t> members;
            for (std::size_t k = i; k < stop; ++k) members.push_back(indexes[stretches[k].index]);
            std::sort(members.begin(), members.end());
            const auto& like = static_cast<const LineEntity&>(*entities[members.front()]);
            const Vector2 along = (like.end - like.start).normalized();
            double lo = 0.0;
            double hi = 0.0;
            bool straight = true;
            for (const std::size_t m : members) {
                const auto& line = static_cast<const LineEntity&>(*entities[m]);
                straight = straight && math::inLineWith({line.start, line.end}, {like.start, like.end}, same);
                for (const Vector2& p : {line.start, line.end}) {
                    lo = std::min(lo, (p - like.start).dot(along));
                    hi = std::max(hi, (p - like.start).dot(along));
                }
            }
            if (straight) {
                JoinedChain& chain = out.emplace_back();
                chain.made = lineBetween(like, lo, hi);
                chain.members = std::move(members);
            }
        }
        i = stop;
    }
}

}  // namespace

bool isJoinable(const Entity& entity, bool inSpace) {
    if (!inWorldPlane(entity)) return inSpace && entity.type() == EntityType::Line;
    switch (entity.type()) {
        case EntityType::Line: {
            const auto& line = static_cast<const LineEntity&>(entity);
            return inSpace || !line.hasZ || line.endZ == line.elevation;
        }
        case EntityType::Arc:
        case EntityType::Polyline:
        case EntityType::Spline:
        case EntityType::Ellipse:
            return true;
        case EntityType::Polyline3D:
            return inSpace;
        default:
            return false;
    }
}

std::vector<JoinedChain> joinOverlaps(std::span<const Entity* const> entities, double same) {
    std::vector<JoinedChain> out;
    std::vector<math::FlatSegment> segments;
    std::vector<std::size_t> indexes;
    std::vector<Round> rounds;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        if (isFlatLine(*entities[i])) {
            const auto& line = static_cast<const LineEntity&>(*entities[i]);
            segments.push_back({line.start, line.end, line.elevation});
            indexes.push_back(i);
        } else if (const auto round = roundOf(*entities[i], i)) {
            rounds.push_back(*round);
        }
    }
    for (math::CollinearGroup& group : math::collinearGroups(segments, same))
        joinLines(entities, indexes, group, same, out);
    eachCurve(rounds, 0, rounds.size(), 0, same, [&](std::size_t begin, std::size_t end) {
        joinRounds(entities, std::span(rounds).subspan(begin, end - begin), same, out);
    });
    return out;
}

std::optional<JoinedChain> joinOverGaps(std::span<const Entity* const> entities, double same) {
    JoinedChain chain;
    if (isFlatLine(*entities.front())) {
        const auto& source = static_cast<const LineEntity&>(*entities.front());
        const Vector2 along = (source.end - source.start).normalized();
        if (along == Vector2{}) return std::nullopt;
        double lo = 0.0;
        double hi = 0.0;
        for (std::size_t i = 0; i < entities.size(); ++i) {
            if (!isFlatLine(*entities[i])) continue;
            const auto& line = static_cast<const LineEntity&>(*entities[i]);
            if (line.elevation != source.elevation || std::abs(along.cross(line.start - source.start)) > same ||
                std::abs(along.cross(line.end - source.start)) > same)
                continue;
            for (const Vector2& p : {line.start, line.end}) {
                lo = std::min(lo, (p - source.start).dot(along));
                hi = std::max(hi, (p - source.start).dot(along));
            }
            chain.members.push_back(i);
        }
        if (chain.members.size() < 2) return std::nullopt;
        chain.made = lineBetween(source, lo, hi);
        return chain;
    }
    const auto source = roundOf(*entities.front(), 0);
    if (!source) return std::nullopt;
    double sweep = source->sweep;
    const double slack = same / std::hypot(source->curve[2], source->curve[3]);
    for (std::size_t i = 0; i < entities.size(); ++i) {
        const auto round = roundOf(*entities[i], i);
        if (!round || entities[i]->type() != entities.front()->type() || !onOneCurve(*round, *source, same)) continue;
        double begin = math::normalizeAngle(round->start - source->start);
        if (begin > math::kTwoPi - slack) begin = 0.0;
        if (i > 0) sweep = std::max(sweep, begin + round->sweep);
        chain.members.push_back(i);
    }
    if (chain.members.size() < 2) return std::nullopt;
    chain.made = roundPart(*entities.front(), *source, source->start, sweep);
    return chain;
}

}  // namespace kova::engine
