#include "math/kernels/blend_circles.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "math/curves/box_tree.hpp"

namespace kova::math {

namespace {

constexpr std::size_t kMostSeeds = 4096;
constexpr int kMostSteps = 40;

/// The parallel of a curve at a signed distance (positive: to the left).
class Parallel {
public:
    Parallel(const ParametricCurve& curve, double distance) : curve_(curve), d_(distance) {}

    struct Place {
        Vector2 point;
        Vector2 speed;
        Vector2 foot;
    };
    std::optional<Place> at(double u) const {
        const SplineDerivatives e = curve_.at(u);
        if (d_ == 0.0) return Place{e.point, e.first, e.point};
        const double speed = e.first.length();
        if (!(speed > 0.0)) return std::nullopt;
        const double bend = e.first.cross(e.second) / (speed * speed * speed);
        return Place{e.point + e.first.perpendicular() * (d_ / speed), e.first * (1.0 - d_ * bend), e.point};
    }
    double from() const { return curve_.stops.front(); }
    double to() const { return curve_.stops.back(); }
    /// A step from u that stays on the curve.
    double moved(double u, double step) const {
        u += step;
        if (!curve_.closed) return std::clamp(u, from(), to());
        const double turn = to() - from();
        const double run = std::fmod(u - from(), turn);
        return from() + (run < 0.0 ? run + turn : run);
    }

    struct Chord {
        double u0 = 0.0;
        double u1 = 0.0;
        Vector2 a;
        Vector2 b;
        double slack = 0.0;  ///< how far the curve may be off the chord
        Bounds2 box;

        /// True when the other chord lies beside this one's line, with room for what both curves may be off.
        bool passes(const Chord& other) const {
            const Vector2 n = (b - a).perpendicular();
            const double room = (slack + other.slack) * n.length();
            const double p = n.dot(other.a - a);
            const double q = n.dot(other.b - a);
            return (p > room && q > room) || (p < -room && q < -room);
        }
    };
    std::vector<Chord> chords() const {
        std::vector<Chord> out;
        out.reserve((curve_.stops.size() - 1) * static_cast<std::size_t>(curve_.chords));
        for (std::size_t i = 0; i + 1 < curve_.stops.size(); ++i) {
            // Just inside the stops: a corner of the curve has the directions of its sides there.
            const double width = curve_.stops[i + 1] - curve_.stops[i];
            if (!(width > 0.0)) continue;
            const auto place = [&](double share) {
                return curve_.stops[i] + width * std::clamp(share, 1e-9, 1.0 - 1e-9);
            };
            auto last = at(place(0.0));
            for (int k = 0; k < curve_.chords; ++k) {
                const double u0 = place(static_cast<double>(k) / curve_.chords);
                const double u1 = place(static_cast<double>(k + 1) / curve_.chords);
                const auto next = at(u1);
                const auto middle = at((u0 + u1) / 2.0);
                if (last && next && middle && (next->point + middle->point).is_finite()) {
                    Chord chord{u0, u1, last->point, next->point, 0.0, {}};
                    chord.box.expand(last->point);
                    chord.box.expand(next->point);
                    chord.box.expand(middle->point);
                    const double length = last->point.distance_to(next->point);
                    const double bow = middle->point.distance_to((last->point + next->point) / 2.0);
                    chord.slack = curve_.chords > 1 ? 2.0 * bow + 1e-2 * length : 1e-9 * length;
                    chord.box = chord.box.inflated(chord.slack);
                    out.push_back(chord);
                }
                last = next;
            }
        }
        return out;
    }

private:
    const ParametricCurve& curve_;
    double d_;
};

/// Where two chords would cross, as shares of them; their middles when they hardly turn from each other.
std::pair<double, double> crossing(const Parallel::Chord& p, const Parallel::Chord& q) {
    const Vector2 a = p.b - p.a;
    const Vector2 b = q.b - q.a;
    const double det = a.cross(b);
    if (!(std::abs(det) > 1e-3 * a.length() * b.length())) return {0.5, 0.5};
    return {std::clamp((q.a - p.a).cross(b) / det, 0.0, 1.0), std::clamp((q.a - p.a).cross(a) / det, 0.0, 1.0)};
}

class Search {
public:
    Search(const ParametricCurve& first, const ParametricCurve& second, double radius, std::vector<BlendCircle>& out)
        : first_(first), second_(second), radius_(radius), out_(out) {}

    void run(double sideA, double sideB) {
        const Parallel a(first_, sideA * radius_);
        const Parallel b(second_, sideB * radius_);
        const std::vector<Parallel::Chord> chordsA = a.chords();
        const std::vector<Parallel::Chord> chordsB = b.chords();
        if (chordsA.empty() || chordsB.empty()) return;
        Bounds2 reach;
        std::vector<Bounds2> boxes;
        boxes.reserve(chordsB.size());
        for (const auto& chord : chordsB) {
            boxes.push_back(chord.box);
            reach.expand(chord.box);
        }
        size_ = reach.width() + reach.height() + radius_;
        const BoxTree tree(std::move(boxes));
        std::size_t seeds = 0;
        for (const auto& chord : chordsA) {
            if (seeds >= kMostSeeds) return;
            tree.query(chord.box, [&](std::size_t i) {
                if (chord.passes(chordsB[i]) || chordsB[i].passes(chord)) return true;
                const auto [s, t] = crossing(chord, chordsB[i]);
                refine(a, b, chord, chordsB[i], s, t);
                return ++seeds < kMostSeeds;
            });
        }
    }

private:
    void refine(const Parallel& a, const Parallel& b, const Parallel::Chord& p, const Parallel::Chord& q, double shareA,
                double shareB) {
        double s = p.u0 + (p.u1 - p.u0) * shareA;
        double t = q.u0 + (q.u1 - q.u0) * shareB;
        const double mostS = 2.0 * (p.u1 - p.u0);
        const double mostT = 2.0 * (q.u1 - q.u0);
        double gap = std::numeric_limits<double>::infinity();
        std::optional<Parallel::Place> x;
        std::optional<Parallel::Place> y;
        int idle = 0;
        for (int i = 0; i < kMostSteps; ++i) {
            const auto nextX = a.at(s);
            const auto nextY = b.at(t);
            if (!nextX || !nextY) return;
            const Vector2 off = nextY->point - nextX->point;
            const double now = off.length();
            idle = now < 0.9 * gap ? 0 : idle + 1;
            if (!x || now < gap) {
                gap = now;
                x = nextX;
                y = nextY;
                bestS_ = s;
                bestT_ = t;
            }
            if (gap == 0.0 || (idle > 3 && gap <= 1e-9 * size_) || idle > 12) break;
            const double det = nextX->speed.cross(nextY->speed);
            double ds = 0.0;
            double dt = 0.0;
            if (std::abs(det) > 1e-9 * nextX->speed.length() * nextY->speed.length()) {
                ds = off.cross(nextY->speed) / det;
                dt = off.cross(nextX->speed) / det;
            } else {
                const double both = nextX->speed.length_squared() + nextY->speed.length_squared();
                if (!(both > 0.0)) break;
                ds = off.dot(nextX->speed) / both;
                dt = -off.dot(nextY->speed) / both;
            }
            if (!std::isfinite(ds) || !std::isfinite(dt)) break;
            s = a.moved(s, std::clamp(ds, -mostS, mostS));
            t = b.moved(t, std::clamp(dt, -mostT, mostT));
        }
        if (!x || !(gap <= 1e-9 * size_)) return;
        add(*x, *y);
    }

    void add(const Parallel::Place& x, const Parallel::Place& y) {
        // A circle through a common point of the curves touches nothing there.
        if (radius_ > 0.0 && x.foot.distance_to(y.foot) <= 1e-7 * radius_) return;
        const Vector2 center = (x.point + y.point) / 2.0;
        for (const BlendCircle& known : out_)
            if (known.first.distance_to(x.foot) + known.second.distance_to(y.foot) <= 1e-6 * size_ &&
                known.center.distance_to(center) <= 1e-6 * size_)
                return;
        out_.push_back({center, bestS_, bestT_, x.foot, y.foot});
    }

    const ParametricCurve& first_;
    const ParametricCurve& second_;
    double radius_;
    double size_ = 1.0;
    double bestS_ = 0.0;
    double bestT_ = 0.0;
    std::vector<BlendCircle>& out_;
};

}  // namespace

std::vector<BlendCircle> blendCircles(const ParametricCurve& first, const ParametricCurve& second, double radius) {
    std::vector<BlendCircle> out;
    if (first.stops.size() < 2 || second.stops.size() < 2 || !(radius >= 0.0) || !std::isfinite(radius)) return out;
    Search search(first, second, radius, out);
    if (radius == 0.0) {
        search.run(0.0, 0.0);
        return out;
    }
    for (const double a : {1.0, -1.0})
        for (const double b : {1.0, -1.0}) search.run(a, b);
    return out;
}

}  // namespace kova::math
