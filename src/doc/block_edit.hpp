#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/model/name.hpp"

namespace kova::doc {

/// A block that is open in the block editor: its contents stand as entities of their own in the drawing's edited block
/// until the editor is closed, and its definition stays as it is until they are saved.
struct BlockEdit {
    engine::Name block;
    /// The actions and visibility states of the edited block name entities by a place in this list (of entity ids)
    /// instead of a position, so that erasing and undo need not renumber them.
    std::vector<std::uint64_t> ids;
    std::unordered_map<std::uint64_t, std::uint64_t> handles;  ///< id in the editor: handle in the definition
    std::unordered_set<std::uint64_t> hidden;                  ///< ids of what is hidden in every visibility state
    std::string state;                                         ///< the visibility state shown; empty: there are none
};

}  // namespace kova::doc
