#pragma once

#include <QObject>
#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "doc/undoable_action.hpp"

namespace kova::doc {

/// The undo and redo stacks, bounded by a number of groups and by estimated memory.
class UndoHistory : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t kDefaultMaxGroups = 1024;
    static constexpr std::size_t kDefaultMaxBytes = 536870912;  // 512 MiB

    explicit UndoHistory(QObject* parent = nullptr);
    ~UndoHistory() override;

    /// Puts a committed group on the undo stack, empties the redo stack, and drops the oldest groups over the limits.
    /// A group without actions is discarded without a trace.
    void push(std::unique_ptr<UndoGroup> group);

    bool canUndo() const { return !undo_.empty(); }
    bool canRedo() const { return !redo_.empty(); }
    /// Labels of the groups on top; empty when there is none.
    std::string undoLabel() const;
    std::string redoLabel() const;
    /// A group of the undo stack, counted from the top; null beyond the oldest.
    const UndoGroup* undoGroup(std::size_t fromTop) const {
        return fromTop < undo_.size() ? undo_[undo_.size() - 1 - fromTop].get() : nullptr;
    }
    std::size_t undoCount() const { return undo_.size(); }
    std::size_t redoCount() const { return redo_.size(); }
    /// Sequence number of the top undo group; 0 when there is none.
    std::uint64_t topSequence() const;
    std::uint64_t lastSequence() const { return sequence_; }
    std::size_t estimatedBytes() const { return bytes_; }

    std::size_t maxGroups() const { return maxGroups_; }
    std::size_t maxBytes() const { return maxBytes_; }
    /// Drops at once what is over the new limits.
    void setLimits(std::size_t maxGroups, std::size_t maxBytes);
    /// Destroys all groups; sequence numbers go on.
    void clear();

    /// Takes the top group off a stack; for the document, which puts it on the other one when it is done.
    std::unique_ptr<UndoGroup> takeUndo();
    std::unique_ptr<UndoGroup> takeRedo();
    void putRedo(std::unique_ptr<UndoGroup> group);
    void putUndo(std::unique_ptr<UndoGroup> group);

Q_SIGNALS:
    void historyChanged();
    /// All groups were destroyed: nothing that was taken out of the drawing can come back.
    void cleared();

private:
    void forget(std::size_t bytes) { bytes_ -= std::min(bytes_, bytes); }
    void trim();

    std::deque<std::unique_ptr<UndoGroup>> undo_;
    std::vector<std::unique_ptr<UndoGroup>> redo_;
    std::size_t maxGroups_ = kDefaultMaxGroups;
    std::size_t maxBytes_ = kDefaultMaxBytes;
    std::size_t bytes_ = 0;
    std::uint64_t sequence_ = 0;
};

}  // namespace kova::doc
