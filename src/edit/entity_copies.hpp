#pragma once

#include <cstdint>
#include <vector>

#include "doc/document.hpp"
#include "math/matrix4.hpp"

namespace kova::cmd {

/// The entities of these ids that still stand, each once, in drawing order.
std::vector<engine::Entity*> entitiesInOrder(doc::Document& document, const std::vector<std::uint64_t>& ids);

/// Adds a transformed copy of each entity to the current space, as part of the open group. Gives the copies' ids; none
/// when the matrix is not finite.
std::vector<std::uint64_t> addCopies(doc::Document& document, const std::vector<std::uint64_t>& ids,
                                     const math::Matrix4& matrix);

}  // namespace kova::cmd
