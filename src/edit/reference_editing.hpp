#pragma once

#include <string>
#include <unordered_set>

#include "cmd/command.hpp"
#include "doc/document.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

/// What is to be edited in place.
struct ReferenceEditPlan {
    engine::BlockReferenceEntity* reference = nullptr;  ///< in the current space; hidden meanwhile
    engine::Name block;                                 ///< its block, or one within it
    math::Matrix4 matrix;                               ///< from the block to the space
    bool withDefinitions = false;                       ///< attribute definitions too
    bool all = true;
    std::unordered_set<std::uint64_t> chosen;  ///< ids of the block's entities; counts when `all` is false
};

/// Lays the contents of a block out in the current space, as part of the open group, and locks the rest of it. Gives
/// the number of objects laid out; 0: nothing was done.
std::size_t beginReferenceEdit(doc::Document& document, const ReferenceEditPlan& plan);

/// Ends the edit as part of the open group. `save`: what the working set holds goes back into the block, and for an
/// external reference into its file; what was not changed goes back exactly as it was. Error text, empty on success; on
/// an error the group is to be rolled back.
std::string endReferenceEdit(doc::Document& document, AppServices* services, bool save);

}  // namespace kova::cmd
