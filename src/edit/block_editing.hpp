#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cmd/command.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// Opens a block in the block editor as part of the open group: a copy of its contents becomes the current space. Error
/// text, empty on success.
std::string beginBlockEdit(doc::Document& document, engine::Name block);
/// Closes the block editor as part of the open group, with the definition changed or left as it was. Error text, empty
/// on success; on an error the group is to be rolled back.
std::string endBlockEdit(doc::Document& document, bool save);
/// Why a block may not be inserted into the one that is open; empty when it may.
std::string insertRefusal(const doc::Document& document, engine::Name block);

/// "NAME is allowed in the block editor only." when it is not open; empty when it is.
std::string editorRefusal(const doc::Document& document, std::string_view command);
/// Changes parameters, actions and states of the open block, as a step of its own. What was drawn since the last time
/// belongs to the visibility state shown before `change` sees them.
void changeEditedBlock(doc::Document& document, const std::string& label,
                       const std::function<void(engine::Block&, doc::BlockEdit&)>& change);
/// The numbers under which actions and states name these entities.
std::vector<std::int32_t> numbersOf(doc::BlockEdit& edit, const std::vector<std::uint64_t>& ids);
/// Shows the entities of the visibility state that the edit names, and hides the others; as part of the open group.
void showState(doc::Document& document, const engine::Block& block, const doc::BlockEdit& edit);

/// The block's visibility parameter; null: none.
engine::DynParameter* visibilityParameter(engine::Block& block);
engine::VisibilityState* findState(engine::Block& block, std::string_view name);

}  // namespace kova::cmd
