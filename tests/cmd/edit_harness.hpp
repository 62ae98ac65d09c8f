#pragma once

#include "cmd/console.hpp"

namespace kova::cmd {

/// The entity at a place of the current space, as its kind.
template <class Kind>
Kind& at(Console& c, std::size_t index) {
    return dynamic_cast<Kind&>(*c.entities().at(index));
}

inline void expectNear(const math::Vector2& a, const math::Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}

inline void expectLine(Console& c, std::size_t index, const math::Vector2& a, const math::Vector2& b,
                       double eps = 1e-9) {
    const auto& line = at<engine::LineEntity>(c, index);
    expectNear(line.start, a, eps);
    expectNear(line.end, b, eps);
}

}  // namespace kova::cmd
