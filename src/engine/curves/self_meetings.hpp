#pragma once

#include <memory>
#include <vector>

#include "engine/curves/edit_curve.hpp"
#include "math/curves/box_tree.hpp"

namespace kova::engine {

/// Where a curve crosses or touches itself. Made once for a curve (n log n), then asked for stretches of it.
class SelfMeetings {
public:
    /// The curve must outlive this.
    explicit SelfMeetings(const EditCurve& curve);

    /// True for the kinds that can meet themselves: several pieces, or a spline.
    static bool possible(const EditCurve& curve);
    /// Appends the places u between u0 and u1 at which the curve meets another part of itself, in no order.
    void cuts(double u0, double u1, std::vector<double>& out) const;

private:
    /// A piece, or a part of one that turns too little to meet itself.
    struct Part {
        CurvePiece piece;
        double u0;
        double u1;
    };
    void addCubic(const CurvePiece& piece, double u);
    bool follows(std::size_t a, std::size_t b) const;

    bool closed_;
    double tolerance_;
    std::vector<Part> parts_;
    std::unique_ptr<math::BoxTree> tree_;
};

}  // namespace kova::engine
