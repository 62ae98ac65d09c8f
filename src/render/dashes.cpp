#include "render/dashes.hpp"

#include <cmath>

namespace kova::render {

using math::Vector2;

namespace {

// Finer patterns look continuous and cost time.
constexpr double kFinestRound = 1.5;         // dots for one round of the pattern
constexpr std::size_t kMaxDashes = 200'000;  // of one line

/// A chain of points measured along its length.
class Chain {
public:
    explicit Chain(std::span<const Vector2> points) : points_(points), reach_(points.size(), 0.0) {
        for (std::size_t i = 1; i < points.size(); ++i)
            reach_[i] = reach_[i - 1] + points[i - 1].distance_to(points[i]);
    }
    double length() const { return reach_.empty() ? 0.0 : reach_.back(); }
    double reach(std::size_t i) const { return reach_[i]; }

    /// The stretch from one length to another, `from` <= `to`.
    void piece(double from, double to, std::vector<Vector2>& out) const {
        out.clear();
        std::size_t i = chord(from);
        out.push_back(at(i, from));
        while (i + 2 < points_.size() && reach_[i + 1] < to) out.push_back(points_[++i]);
        out.push_back(at(i, to));
    }
    Vector2 position(double s, double& angle) const {
        const std::size_t i = chord(s);
        angle = (points_[i + 1] - points_[i]).angle();
        return at(i, s);
    }

private:
    std::size_t chord(double s) const {
        const auto it = std::upper_bound(reach_.begin(), reach_.end(), s);
        const auto i = static_cast<std::size_t>(it - reach_.begin());
        return std::clamp<std::size_t>(i, 1, points_.size() - 1) - 1;
    }
    Vector2 at(std::size_t i, double s) const {
        const double part = reach_[i + 1] - reach_[i];
        return part > 0.0 ? points_[i].lerp(points_[i + 1], std::clamp((s - reach_[i]) / part, 0.0, 1.0)) : points_[i];
    }

    std::span<const Vector2> points_;
    std::vector<double> reach_;
};

}  // namespace

bool layDashes(std::span<const Vector2> points, std::span<const double> pattern, const math::Bounds2& visible,
               double dot, const std::function<void(std::span<const Vector2>)>& dash,
               const std::function<void(std::size_t, const Vector2&, double)>& mark) {
    if (points.size() < 2 || pattern.size() < 2) return false;
    std::vector<double> starts;  // of the entries within a round
    double round = 0.0;
    for (const double entry : pattern) {
        starts.push_back(round);
        round += std::abs(entry);
    }
    const Chain chain(points);
    const double length = chain.length();
    const double first = std::max(pattern[0], 0.0);
    const double rounds = std::floor((length - first) / round);
    if (!std::isfinite(round) || !std::isfinite(length) || round < kFinestRound * dot || !(rounds >= 1.0)) return false;

    // What is left over goes to the first and the last dash, half each.
    const double lead = (length - first - rounds * round) / 2.0;
    const math::Bounds2 near = visible.inflated(8.0);
    std::vector<Vector2> piece;
    std::size_t count = 0;
    double done = -1.0;  // entries that begin up to here are drawn already
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        math::Bounds2 box;
        box.expand(points[i]);
        box.expand(points[i + 1]);
        if (!box.intersects(near)) continue;
        // Only the visible part of a chord is walked, however long the chord is.
        double from = chain.reach(i);
        double to = chain.reach(i + 1);
        if (to <= from) continue;
        if (!near.contains_box(box)) {
            const Vector2 along = (points[i + 1] - points[i]) / (to - from);
            const Vector2 middle = near.center();
            const double radius = (near.max - near.min).length() / 2.0;
            const double nearest = from + along.dot(middle - points[i]);
            from = std::max(from, nearest - radius);
            to = std::min(to, nearest + radius);
        }
        for (double k = std::max(0.0, std::floor((from - lead) / round)); k <= rounds; k += 1.0) {
            const double base = lead + k * round;
            if (base > to) break;
            for (std::size_t j = 0; j < pattern.size(); ++j) {
                if (k == rounds && j > 0) break;
                const double begin = j == 0 && k == 0.0 && first > 0.0 ? 0.0 : base + starts[j];
                double end = base + starts[j] + std::abs(pattern[j]);
                if (k == rounds && first > 0.0) end = length;
                if (begin <= done || end < from || begin > to) continue;
                done = begin;
                if (++count > kMaxDashes) return true;
                if (mark && k < rounds) {
                    double angle = 0.0;
                    const Vector2 at = chain.position(end, angle);
                    mark(j, at, angle);
                }
                if (pattern[j] < 0.0) continue;
                chain.piece(begin, std::min(end, length), piece);
                dash(piece);
            }
        }
    }
    return true;
}

}  // namespace kova::render
