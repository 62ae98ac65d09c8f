#pragma once

#include "cmd/console.hpp"

namespace kova::cmd {

/// A console with looks at what has been drawn.
class DrawConsole : public Console {
public:
    /// The only entity of the space, as a kind; fails and gives a fresh one when there is another number or kind.
    template <class Kind>
    Kind& only() {
        const auto all = entities();
        EXPECT_EQ(all.size(), 1u);
        return last<Kind>();
    }
    /// The entity drawn last, as a kind.
    template <class Kind>
    Kind& last() {
        const auto all = entities();
        Kind* found = all.empty() ? nullptr : dynamic_cast<Kind*>(all.back());
        EXPECT_NE(found, nullptr);
        if (found != nullptr) return *found;
        fallback_ = std::make_unique<Kind>();
        return static_cast<Kind&>(*fallback_);
    }
    /// Label of the last step; empty without one.
    std::string lastStep() { return document.history().canUndo() ? document.history().undoLabel() : std::string(); }

private:
    std::unique_ptr<engine::Entity> fallback_;
};

inline void expectNear(const math::Vector2& got, const math::Vector2& wanted, double tolerance = 1e-9) {
    EXPECT_NEAR(got.x, wanted.x, tolerance);
    EXPECT_NEAR(got.y, wanted.y, tolerance);
}

inline void expectPoints(const std::vector<math::Vector2>& got, const std::vector<math::Vector2>& wanted,
                         double tolerance = 1e-9) {
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        SCOPED_TRACE(i);
        expectNear(got[i], wanted[i], tolerance);
    }
}

}  // namespace kova::cmd
