#pragma once

#include <functional>

#include "doc/document.hpp"

namespace kova::cmd {

/// A filter of Ask::object for what is only looked at (measured, copied from): objects on locked layers do as well.
struct ReadOnlyFilter {
    std::function<bool(const engine::Entity&)> accepts;  ///< empty: anything
    bool operator()(const engine::Entity& entity) const { return !accepts || accepts(entity); }
};

/// The entity on a locked layer of the current space nearest to p within pickTolerance; null: none.
engine::Entity* pickLocked(doc::Document& document, const math::Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter = {});

}  // namespace kova::cmd
