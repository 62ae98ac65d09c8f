#pragma once

#include <vector>

#include "math/curves/path.hpp"
#include "render/view.hpp"

namespace kova::render {

/// A flattened curve in pixels.
struct Figure {
    std::vector<math::Vector2> points;
    /// For each chord, the path element it comes from.
    std::vector<std::uint32_t> elements;
    bool closed = false;
};

/// Flattens a path to pixels, no chord farther than `tolerance` pixels from its curve where it is visible; what lies
/// outside the view is kept coarse, so that the work is bounded whatever the size of a curve. Figures are reused:
/// `count` of them are valid afterwards.
class Flattener {
public:
    static constexpr double kTolerance = 0.1;

    explicit Flattener(const View& view) : view_(view) {}
    void flatten(engine::PathView path);
    std::size_t count() const { return count_; }
    Figure& operator[](std::size_t i) { return figures_[i]; }

private:
    Figure& begin(const math::Vector2& p);
    void addArc(const engine::PathElement& e, std::uint32_t index);
    template <class Curve>
    void subdivide(const Curve& curve, double t0, const math::Vector2& p0, double t1, const math::Vector2& p1,
                   int depth, std::uint32_t index);
    void add(const math::Vector2& p, std::uint32_t index);

    const View& view_;
    std::vector<Figure> figures_;
    std::size_t count_ = 0;
};

/// Clips a segment to a box; false when nothing is left of it.
bool clipSegment(math::Vector2& a, math::Vector2& b, const math::Bounds2& box);
/// Clips a closed polygon to a box (edges along the box may be added); exact for even-odd and non-zero filling.
std::vector<math::Vector2> clipPolygon(std::vector<math::Vector2> polygon, const math::Bounds2& box);

}  // namespace kova::render
