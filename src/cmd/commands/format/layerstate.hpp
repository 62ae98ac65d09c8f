#pragma once

#include "cmd/dialogue.hpp"

namespace kova::cmd::commands {

/// The dialogue of saved layer states: list, save, restore, edit, rename, delete, read from and written to
/// files. `changing` is called before the first
/// change, so that the caller can open its undo group.
Task<void> layerStateDialogue(Ask& ask, doc::Document& document, std::function<void()> changing);

}  // namespace kova::cmd::commands
