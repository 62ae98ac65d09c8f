#include "engine/curves/join.hpp"

#include <cmath>

#include "engine/curves/edit_curve.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "engine/curves/join_chain.hpp"
#include "engine/curves/join_stretches.hpp"

namespace kova::engine {

using math::Vector3;

namespace {

constexpr double kSame = 1e-9;  ///< ends this near, as part of the coordinates, are one

/// Open ends by place: lists of ends in the cells of a grid that is kept as a hash table.
class EndGrid {
public:
    EndGrid(std::size_t ends, double reach) : cell_(std::max(reach, 1e-300) * 8.0), next_(ends, kNone) {
        std::size_t size = 16;
        while (size < 2 * ends) size *= 2;
        first_.assign(size, kNone);
    }

    void add(const Vector3& p, std::size_t end) {
        std::uint32_t& first = first_[slot(cell(p.x), cell(p.y), cell(p.z))];
        next_[end] = first;
        first = static_cast<std::uint32_t>(end);
    }
    void remove(const Vector3& p, std::size_t end) {
        std::uint32_t* at = &first_[slot(cell(p.x), cell(p.y), cell(p.z))];
        while (*at != kNone && *at != end) at = &next_[*at];
        if (*at == end) *at = next_[end];
    }
    /// Calls use(end) for the ends that may lie within `reach` of p (and for others).
    template <class Use>
    void look(const Vector3& p, double reach, const Use& use) const {
        // Cells are wide against the reach: mostly there is one to look at.
        std::size_t seen[8];
        std::size_t count = 0;
        for (double x = cell(p.x - reach), x1 = cell(p.x + reach);; x = x1) {
            for (double y = cell(p.y - reach), y1 = cell(p.y + reach);; y = y1) {
                for (double z = cell(p.z - reach), z1 = cell(p.z + reach);; z = z1) {
                    const std::size_t at = slot(x, y, z);
                    if (std::find(seen, seen + count, at) == seen + count) {
                        seen[count++] = at;
                        for (std::uint32_t end = first_[at]; end != kNone; end = next_[end])
                            use(static_cast<std::size_t>(end));
                    }
                    if (z == z1) break;
                }
                if (y == y1) break;
            }
            if (x == x1) break;
        }
    }

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

    double cell(double v) const { return std::clamp(std::floor(v / cell_), -9e18, 9e18); }
    std::size_t slot(double x, double y, double z) const {
        std::uint64_t key = 0;
        for (const double v : {x, y, z}) {
            key = (key ^ static_cast<std::uint64_t>(static_cast<std::int64_t>(v))) * 0x9E3779B97F4A7C15ULL;
            key ^= key >> 32;
        }
        return static_cast<std::size_t>(key) & (first_.size() - 1);
    }

    double cell_;
    std::vector<std::uint32_t> first_;  ///< heads of the lists; a power of two of them
    std::vector<std::uint32_t> next_;
};

/// Ties each open end to the nearest free end in reach; of equally near ones to the first.
void tieEnds(std::vector<JoinMember>& members, double reach) {
    EndGrid free(members.size() * 2, reach);
    for (std::size_t end = 0; end < members.size() * 2; ++end) {
        JoinMember& member = members[end / 2];
        const Vector3& p = member.ends[end % 2];
        std::size_t best = kNoEnd;
        double least = reach;
        free.look(p, reach, [&](std::size_t other) {
            if (other / 2 == end / 2) return;
            const double distance = (members[other / 2].ends[other % 2] - p).length();
            if (!(distance <= least) || (distance == least && best != kNoEnd && other > best)) return;
            least = distance;
            best = other;
        });
        if (best == kNoEnd) {
            free.add(p, end);
            continue;
        }
        free.remove(members[best / 2].ends[best % 2], best);
        member.next[end % 2] = best;
        members[best / 2].next[best % 2] = end;
    }
}

/// Sets the ends of what can be joined and gives the size of its coordinates; nothing for anything else.
std::optional<double> takeEnds(const Entity& entity, bool inSpace, JoinMember& member) {
    if (!isJoinable(entity, inSpace)) return std::nullopt;
    member.entity = &entity;
    member.type = entity.type();
    if (member.type == EntityType::Line) {
        const auto& line = static_cast<const LineEntity&>(entity);
        member.ends[0] = line.start3();
        member.ends[1] = line.end3();
        double scale = 0.0;
        for (const Vector3& p : member.ends)
            for (const double v : {p.x, p.y, p.z}) {
                if (!std::isfinite(v)) return std::nullopt;
                scale = std::max(scale, std::abs(v));
            }
        const double length = (member.ends[1] - member.ends[0]).length();
        if (!(length > 0.0)) return std::nullopt;
        return std::max(scale, length);
    }
    const auto curve = EditCurve::of(entity);
    if (!curve || curve->closed()) return std::nullopt;
    double z[2] = {entity.elevation, entity.elevation};
    if (const auto* space = dynamic_cast<const Polyline3DEntity*>(&entity)) {
        z[0] = space->vertices.front().z;
        z[1] = space->vertices.back().z;
    } else if (const auto* spline = dynamic_cast<const SplineEntity*>(&entity);
               spline != nullptr && !spline->controlZ.empty()) {
        if (!inSpace || spline->controlZ.size() != spline->controlPoints.size()) return std::nullopt;
        z[0] = spline->controlZ.front();
        z[1] = spline->controlZ.back();
    }
    if (!std::isfinite(z[0]) || !std::isfinite(z[1])) return std::nullopt;
    member.ends[0] = Vector3(curve->pieces().front().from, z[0]);
    member.ends[1] = Vector3(curve->pieces().back().element.p, z[1]);
    return std::max({curve->scale(), std::abs(z[0]), std::abs(z[1])});
}

/// The chain that a member is in, from one end to the other; it counts as used then.
std::vector<JoinStep> chainOf(std::vector<JoinMember>& members, std::size_t seed, bool& closed) {
    // Back to where the chain begins; round and back to the seed when it is closed.
    std::size_t at = seed;
    std::size_t end = 0;  // the end of `at` that leads back
    closed = false;
    while (members[at].next[end] != kNoEnd) {
        const std::size_t tied = members[at].next[end];
        at = tied / 2;
        end = 1 - tied % 2;
        if (at == seed) {
            closed = true;
            break;
        }
    }
    std::vector<JoinStep> steps;
    for (;;) {
        members[at].used = true;
        steps.push_back({at, end == 1});
        const std::size_t tied = members[at].next[1 - end];
        if (tied == kNoEnd || members[tied / 2].used) break;
        at = tied / 2;
        end = tied % 2;
    }
    // The direction of the first object stays.
    const auto first = std::min_element(steps.begin(), steps.end(), [&](const JoinStep& a, const JoinStep& b) {
        return members[a.member].source < members[b.member].source;
    });
    if (first->turned) {
        std::reverse(steps.begin(), steps.end());
        for (JoinStep& step : steps) step.turned = !step.turned;
    }
    return steps;
}

}  // namespace

std::vector<JoinedChain> joinEntities(std::span<const Entity* const> entities, const JoinOptions& options) {
    std::vector<JoinedChain> out;
    if (entities.size() < 2) return out;
    std::vector<JoinMember> members;
    members.reserve(entities.size());
    double scale = 0.0;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        JoinMember member;
        member.source = i;
        const std::optional<double> size = takeEnds(*entities[i], options.inSpace, member);
        if (!size) continue;
        scale = std::max(scale, *size);
        members.push_back(member);
    }
    const double same = kSame * scale;
    const auto joinedOverGaps = [&](bool all) {
        auto chain = joinOverGaps(entities, same);
        if (!chain || (all && chain->members.size() < entities.size())) return false;
        out.push_back(std::move(*chain));
        return true;
    };
    const bool lines = entities.front()->type() == EntityType::Line;
    if (options.overGaps || (options.gapsIfAll && lines)) {
        if (joinedOverGaps(!options.overGaps)) return out;
    }
    // What overlaps goes on as one object, under the number of its first one.
    std::vector<JoinedChain> overlaps;
    std::vector<std::size_t> lotOf;  // by source: the lot it leads
    if (options.overlaps) overlaps = joinOverlaps(entities, same);
    if (!overlaps.empty()) {
        lotOf.assign(entities.size(), kNoEnd);
        std::vector<char> gone(entities.size(), 0);
        for (std::size_t k = 0; k < overlaps.size(); ++k) {
            for (const std::size_t i : overlaps[k].members) gone[i] = 1;
            lotOf[overlaps[k].members.front()] = k;
        }
        std::erase_if(members, [&](JoinMember& member) {
            const std::size_t lot = lotOf[member.source];
            if (lot == kNoEnd) return gone[member.source] != 0;
            // One that became closed ends here.
            return !takeEnds(*overlaps[lot].made, options.inSpace, member);
        });
    }
    if (!members.empty()) tieEnds(members, std::max(options.fuzz, same));
    for (std::size_t seed = 0; seed < members.size(); ++seed) {
        if (members[seed].used) continue;
        bool closed = false;
        const std::vector<JoinStep> steps = chainOf(members, seed, closed);
        if (steps.size() < 2) continue;
        JoinedChain chain;
        for (const JoinStep& step : steps) chain.members.push_back(members[step.member].source);
        std::sort(chain.members.begin(), chain.members.end());
        chain.made = buildChain(members, steps, closed, options, same, *entities[chain.members.front()]);
        if (!chain.made) continue;
        for (std::size_t k = 0, count = lotOf.empty() ? 0 : chain.members.size(); k < count; ++k)
            if (const std::size_t lot = lotOf[chain.members[k]]; lot != kNoEnd) {
                const auto& more = overlaps[lot].members;
                chain.members.insert(chain.members.end(), more.begin() + 1, more.end());
                lotOf[chain.members[k]] = kNoEnd;
            }
        std::sort(chain.members.begin(), chain.members.end());
        out.push_back(std::move(chain));
    }
    // Lots that nothing else was joined to.
    for (const std::size_t lot : lotOf)
        if (lot != kNoEnd) out.push_back(std::move(overlaps[lot]));
    // The gap that is closed depends on which arc is the first: that is only for arcs that touch nowhere.
    if (out.empty() && options.gapsIfAll && !lines) joinedOverGaps(true);
    return out;
}

}  // namespace kova::engine
