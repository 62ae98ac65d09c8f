#pragma once

#include <vector>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::cmd {

/// True for the kinds that run along one line: lines, arcs, circles, ellipses, polylines and splines.
bool isCurve(const engine::Entity& entity);

/// Walks a curve by its length, in plan. Places are found in logarithmic time.
class CurveRuler {
public:
    /// Along the first figure that the entity strokes.
    explicit CurveRuler(const engine::Entity& entity);

    double length() const { return marks_.empty() ? 0.0 : marks_.back().length; }
    bool closed() const;

    struct Place {
        math::Vector2 point;
        math::Vector2 direction;  ///< of the curve there, length 1; zero where it has none
    };
    /// `length` is measured from the curve's start and kept within the curve.
    Place at(double length) const;

private:
    /// Length of the curve up to parameter t of an element.
    struct Mark {
        double length;
        std::size_t element;
        double t;
    };
    void addElement(std::size_t i, const math::Vector2& from);

    std::vector<engine::PathElement> figure_;
    std::vector<Mark> marks_;
};

}  // namespace kova::cmd
