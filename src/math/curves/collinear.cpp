#include "math/curves/collinear.hpp"

#include <algorithm>
#include <cmath>

#include "math/angles.hpp"

namespace kova::math {

namespace {

/// Segments whose directions differ by no more may lie in one another.
constexpr double kAngleTolerance = 1e-7;
/// Rounding of coordinates, as part of their distances.
constexpr double kRounding = 1e-9;

struct Directed {
    std::size_t index;
    double angle;
    double offset = 0.0;
};

}  // namespace

std::vector<CollinearGroup> collinearGroups(std::span<const FlatSegment> segments, double tolerance) {
    std::vector<Directed> work;
    work.reserve(segments.size());
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const Vector2 d = segments[i].b - segments[i].a;
        if (!(d.length() > tolerance) || !d.is_finite() || !segments[i].a.is_finite()) continue;
        double angle = d.angle();
        if (angle < 0.0) angle += kPi;
        if (angle >= kPi - kAngleTolerance) angle -= kPi;
        work.push_back({i, angle});
    }
    std::sort(work.begin(), work.end(), [](const Directed& p, const Directed& q) { return p.angle < q.angle; });
    std::vector<CollinearGroup> groups;
    for (std::size_t begin = 0; begin < work.size();) {
        std::size_t end = begin + 1;
        while (end < work.size() && work[end].angle - work[end - 1].angle <= kAngleTolerance) ++end;
        // Offsets are measured near the segments, so that far coordinates lose nothing.
        const Vector2 origin = segments[work[begin].index].a;
        const Vector2 along = Vector2::from_angle(work[begin + (end - begin) / 2].angle);
        for (std::size_t k = begin; k < end; ++k) {
            const FlatSegment& s = segments[work[k].index];
            work[k].offset = along.cross((s.a + s.b) / 2.0 - origin);
        }
        std::sort(work.begin() + static_cast<std::ptrdiff_t>(begin), work.begin() + static_cast<std::ptrdiff_t>(end),
                  [&](const Directed& p, const Directed& q) {
                      const double zp = segments[p.index].z;
                      const double zq = segments[q.index].z;
                      return zp != zq ? zp < zq : p.offset < q.offset;
                  });
        for (std::size_t k = begin; k < end;) {
            std::size_t stop = k + 1;
            while (stop < end && std::abs(work[stop].offset - work[k].offset) <= tolerance &&
                   std::abs(segments[work[stop].index].z - segments[work[k].index].z) <= tolerance)
                ++stop;
            if (stop - k > 1) {
                CollinearGroup& group = groups.emplace_back();
                group.origin = origin;
                group.along = along;
                group.stretches.reserve(stop - k);
                for (std::size_t i = k; i < stop; ++i) {
                    const FlatSegment& s = segments[work[i].index];
                    const double a = (s.a - origin).dot(along);
                    const double b = (s.b - origin).dot(along);
                    group.stretches.push_back({work[i].index, std::min(a, b), std::max(a, b)});
                }
            }
            k = stop;
        }
        begin = end;
    }
    return groups;
}

bool inLineWith(const FlatSegment& segment, const FlatSegment& line, double tolerance) {
    const Vector2 direction = (line.b - line.a).normalized();
    const double reach = std::max({1.0, segment.a.distance_to(line.a), segment.b.distance_to(line.a)});
    const double off =
        std::max(std::abs(direction.cross(segment.a - line.a)), std::abs(direction.cross(segment.b - line.a)));
    return off <= tolerance + kRounding * reach;
}

}  // namespace kova::math
