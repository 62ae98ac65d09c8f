#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kova::engine {
class Drawing;
}

namespace kova::doc {

/// What of a drawing was changed, in the bits of DBMOD.
namespace changed {
inline constexpr std::int32_t kObjects = 1;
inline constexpr std::int32_t kTables = 2;  ///< their records are objects, too
inline constexpr std::int32_t kVariables = 4;
inline constexpr std::int32_t kWindow = 8;  ///< another viewport is the current one
inline constexpr std::int32_t kView = 16;
}  // namespace changed

/// One change of a drawing that can be taken back and made again. It is recorded after it was applied.
class IUndoableAction {
public:
    virtual ~IUndoableAction() = default;
    virtual void undo(engine::Drawing& drawing) = 0;
    virtual void redo(engine::Drawing& drawing) = 0;
    /// The label of the action.
    virtual std::string description() const = 0;
    /// Estimated memory the action holds, in bytes.
    virtual std::size_t sizeInBytes() const { return 2048; }
    /// What it changes, a sum of `changed` bits; 0 for a mark in the history.
    virtual std::int32_t changes() const { return changed::kObjects; }
};

/// The actions of one command, undone and redone together.
struct UndoGroup {
    std::string label;
    std::vector<std::unique_ptr<IUndoableAction>> actions;
    /// Sum of the sizes of the first `measuredActions` actions, taken as they were recorded: what an action holds
    /// is in the cache then.
    std::size_t measuredBytes = 0;
    std::size_t measuredActions = 0;
    std::uint64_t sequence = 0;  ///< given when the group enters the history; the first gets 1
    std::size_t estimate = 0;    ///< bytes, as counted in the history's total
};

}  // namespace kova::doc
