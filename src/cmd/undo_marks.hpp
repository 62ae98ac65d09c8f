#pragma once

#include "doc/undo_history.hpp"

namespace kova::cmd {

/// Label of the groups that UNDO Mark leaves in the history.
inline constexpr const char* kUndoMark = "Mark";

/// How many of them can be gone back to.
inline std::int32_t undoMarks(const doc::UndoHistory& history) {
    std::int32_t marks = 0;
    for (std::size_t i = 0; const doc::UndoGroup* group = history.undoGroup(i); ++i) marks += group->label == kUndoMark;
    return marks;
}

}  // namespace kova::cmd
