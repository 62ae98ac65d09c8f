#include "engine/outline/hatch_lines.hpp"

#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

/// Beyond this line number the distance between lines drowns in the rounding of coordinates.
constexpr double kMaxLineNumber = 1e15;

/// Families times boundary points that are looked at.
constexpr double kMaxEdgeTests = 2e8;

/// Where a line of the family, told by its number from the origin, meets the boundary.
struct Crossing {
    std::int64_t line;
    double along;
    bool operator<(const Crossing& o) const { return line != o.line ? line < o.line : along < o.along; }
};

/// One entry of a dash list: where it begins within the period, and its length (0: a dot).
struct Dash {
    double start;
    double length;
};

/// One family in its own frame: u along its lines, w across them, from its origin.
class FamilyClipper {
public:
    FamilyClipper(const HatchFamily& family, const HatchLineLimits& limits, HatchLines& out)
        : limits_(limits),
          out_(out),
          origin_(family.origin),
          along_(math::unitAt(family.angle)),
          across_(along_.perpendicular()),
          step_(family.shift.y),
          lag_(family.shift.x) {
        // Counting the lines the other way turns both parts of the step round.
        if (step_ < 0.0) {
            step_ = -step_;
            lag_ = -lag_;
        }
        if (!std::isfinite(lag_)) lag_ = 0.0;
        // Without a distance there is one line only.
        single_ = !(step_ > 0.0) || !std::isfinite(step_);
        if (single_) step_ = 1.0;
        setDashes(family.dashes);
    }

    /// False when the limits are exceeded.
    bool clip(std::span<const HatchRing> rings, const Bounds2* window) {
        if (!origin_.is_finite() || !along_.is_finite()) return true;
        if (window != nullptr && !setWindow(*window)) return true;
        std::vector<Crossing> crossings;
        for (const HatchRing& ring : rings)
            if (!addRing(ring, crossings)) return false;
        std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            // Every line is crossed an even number of times, since an edge counts its lower but not its upper end.
            const double from = std::max(crossings[i].along, uMin_);
            const double to = std::min(crossings[i + 1].along, uMax_);
            if (from < to && !addInterval(crossings[i].line, from, to)) return false;
        }
        return true;
    }

private:
    void setDashes(const std::vector<double>& list) {
        bool gaps = false;
        bool ink = false;
        for (const double d : list) {
            if (!std::isfinite(d)) return;  // no pattern that could be drawn: continuous
            gaps = gaps || d < 0.0;
            ink = ink || d > 0.0;
        }
        if (list.empty() || (!gaps && ink)) return;
        if (!gaps) {
            // Dots without a distance of their own stand as far apart as the lines.
            dashes_ = {{0.0, 0.0}};
            period_ = step_;
            return;
        }
        entries_ = list.size();
        for (const double d : list) {
            if (d >= 0.0) dashes_.push_back({period_, d});
            period_ += std::abs(d);
        }
        dashed_ = true;
        if (!(period_ > 0.0) || !std::isfinite(period_)) {
            dashes_.clear();
            period_ = 0.0;
            dashed_ = false;
        }
    }

    bool setWindow(const Bounds2& window) {
        if (window.is_empty() || !window.min.is_finite() || !window.max.is_finite()) return !window.is_empty();
        uMin_ = wMin_ = std::numeric_limits<double>::infinity();
        uMax_ = wMax_ = -std::numeric_limits<double>::infinity();
        for (const Vector2& corner :
             {window.min, window.max, Vector2{window.min.x, window.max.y}, Vector2{window.max.x, window.min.y}}) {
            const Vector2 local = toLocal(corner);
            uMin_ = std::min(uMin_, local.x);
            uMax_ = std::max(uMax_, local.x);
            wMin_ = std::min(wMin_, local.y);
            wMax_ = std::max(wMax_, local.y);
        }
        return true;
    }

    Vector2 toLocal(const Vector2& p) const { return {(p - origin_).dot(along_), (p - origin_).dot(across_)}; }
    Vector2 toDrawing(double u, std::int64_t line) const {
        return origin_ + along_ * u + across_ * (static_cast<double>(line) * step_);
    }

    bool addRing(const HatchRing& ring, std::vector<Crossing>& crossings) {
        if (ring.size() < 3 || !std::all_of(ring.begin(), ring.end(), [](const Vector2& p) { return p.is_finite(); }))
            return true;
        Vector2 a = toLocal(ring.back());
        for (const Vector2& point : ring) {
            const Vector2 b = toLocal(point);
            const bool fits = addEdge(a, b, crossings);
            if (!fits) return false;
            a = b;
        }
        return true;
    }

    bool addEdge(const Vector2& a, const Vector2& b, std::vector<Crossing>& crossings) {
        double first = std::ceil(std::min(a.y, b.y) / step_);
        double last = std::ceil(std::max(a.y, b.y) / step_) - 1.0;
        if (single_) {
            first = std::max(first, 0.0);
            last = std::min(last, 0.0);
        }
        first = std::max(first, std::ceil(wMin_ / step_));
        last = std::min(last, std::floor(wMax_ / step_));
        if (!(first <= last)) return true;
        if (std::abs(first) > kMaxLineNumber || std::abs(last) > kMaxLineNumber) return false;
        if (static_cast<double>(out_.segments.size() + out_.dots.size()) > static_cast<double>(limits_.dashes) ||
            static_cast<double>(crossings.size()) + (last - first) + 1.0 > 2.0 * static_cast<double>(limits_.lines))
            return false;
        const double slope = (b.x - a.x) / (b.y - a.y);
        const auto end = static_cast<std::int64_t>(last);
        for (auto line = static_cast<std::int64_t>(first); line <= end; ++line) {
            // Measured from the lower end, so that an edge shared by two rings is cut at one and the same place.
            const Vector2& low = a.y < b.y ? a : b;
            crossings.push_back({line, low.x + slope * (static_cast<double>(line) * step_ - low.y)});
        }
        return true;
    }

    bool full() const { return out_.segments.size() + out_.dots.size() >= limits_.dashes; }

    bool addInterval(std::int64_t line, double from, double to) {
        if (dashes_.empty()) {
            if (dashed_) return true;  // gaps only
            if (full()) return false;
            out_.segments.push_back({toDrawing(from, line), toDrawing(to, line)});
            return true;
        }
        const double begin = static_cast<double>(line) * lag_;
        const double firstPeriod = std::floor((from - begin) / period_);
        const double lastPeriod = std::floor((to - begin) / period_);
        if (!std::isfinite(firstPeriod) || !std::isfinite(lastPeriod)) return false;
        // Entries looked at, not only those that are drawn, bound the work.
        looked_ += (lastPeriod - firstPeriod + 1.0) * static_cast<double>(std::max<std::size_t>(entries_, 1));
        if (looked_ > 4.0 * static_cast<double>(limits_.dashes) || std::abs(firstPeriod) > kMaxLineNumber ||
            std::abs(lastPeriod) > kMaxLineNumber)
            return false;
        for (double period = firstPeriod; period <= lastPeriod; period += 1.0) {
            for (const Dash& dash : dashes_) {
                const double start = begin + period * period_ + dash.start;
                if (start > to) break;
                const double end = start + dash.length;
                if (full()) return false;
                if (dash.length == 0.0) {
                    if (start >= from) out_.dots.push_back(toDrawing(start, line));
                    continue;
                }
                const double a = std::max(start, from);
                const double b = std::min(end, to);
                if (a < b) out_.segments.push_back({toDrawing(a, line), toDrawing(b, line)});
            }
        }
        return true;
    }

    const HatchLineLimits& limits_;
    HatchLines& out_;
    Vector2 origin_;
    Vector2 along_;
    Vector2 across_;
    double step_;
    double lag_;
    bool single_ = false;
    bool dashed_ = false;
    std::vector<Dash> dashes_;  ///< empty and not dashed: continuous
    std::size_t entries_ = 0;
    double period_ = 0.0;
    double looked_ = 0.0;
    double uMin_ = -std::numeric_limits<double>::infinity();
    double uMax_ = std::numeric_limits<double>::infinity();
    double wMin_ = -std::numeric_limits<double>::infinity();
    double wMax_ = std::numeric_limits<double>::infinity();
};

}  // namespace

HatchLines hatchLines(std::span<const HatchRing> rings, std::span<const HatchFamily> families, const Bounds2* window,
                      const HatchLineLimits& limits) {
    HatchLines out;
    double points = 0.0;
    for (const HatchRing& ring : rings) points += static_cast<double>(ring.size());
    const bool tooMuch = points * static_cast<double>(families.size()) > kMaxEdgeTests;
    for (const HatchFamily& family : families) {
        if (!tooMuch && FamilyClipper(family, limits, out).clip(rings, window)) continue;
        out.segments = {};
        out.dots = {};
        out.overflow = true;
        break;
    }
    return out;
}

HatchLines hatchLines(PathView rings, std::span<const HatchFamily> families, double tolerance, const Bounds2* window,
                      const HatchLineLimits& limits) {
    const std::vector<HatchRing> polygons = flattenPath(rings, tolerance);
    return hatchLines(polygons, families, window, limits);
}

}  // namespace kova::engine
