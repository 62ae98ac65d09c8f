#include "doc/undo_history.hpp"

namespace kova::doc {

namespace {

/// What a group is counted with: a fixed part, its label, its list of actions and what the actions hold.
std::size_t estimateOf(const UndoGroup& group) {
    std::size_t bytes = 64 + group.label.capacity() + group.actions.capacity() * 8;
    if (group.measuredActions == group.actions.size()) return bytes + group.measuredBytes;
    for (const auto& action : group.actions) bytes += action->sizeInBytes();
    return bytes;
}

}  // namespace

UndoHistory::UndoHistory(QObject* parent) : QObject(parent) {}
UndoHistory::~UndoHistory() = default;

void UndoHistory::push(std::unique_ptr<UndoGroup> group) {
    if (!group || group->actions.empty()) return;
    for (const auto& undone : redo_) forget(undone->estimate);
    redo_.clear();
    group->estimate = estimateOf(*group);
    bytes_ += group->estimate;
    group->sequence = ++sequence_;
    undo_.push_back(std::move(group));
    trim();
    Q_EMIT historyChanged();
}

void UndoHistory::trim() {
    while (!undo_.empty() && (undo_.size() > maxGroups_ || bytes_ > maxBytes_)) {
        forget(undo_.front()->estimate);
        undo_.pop_front();
    }
}

std::string UndoHistory::undoLabel() const { return undo_.empty() ? std::string() : undo_.back()->label; }
std::string UndoHistory::redoLabel() const { return redo_.empty() ? std::string() : redo_.back()->label; }
std::uint64_t UndoHistory::topSequence() const { return undo_.empty() ? 0 : undo_.back()->sequence; }

void UndoHistory::setLimits(std::size_t maxGroups, std::size_t maxBytes) {
    maxGroups_ = maxGroups;
    maxBytes_ = maxBytes;
    const std::size_t before = undo_.size() + redo_.size();
    trim();
    // The front of the redo stack lies farthest from the present state.
    std::size_t dropped = 0;
    while (dropped < redo_.size() && (redo_.size() - dropped > maxGroups_ || bytes_ > maxBytes_))
        forget(redo_[dropped++]->estimate);
    redo_.erase(redo_.begin(), redo_.begin() + static_cast<std::ptrdiff_t>(dropped));
    if (undo_.size() + redo_.size() != before) Q_EMIT historyChanged();
}

void UndoHistory::clear() {
    undo_.clear();
    redo_.clear();
    bytes_ = 0;
    Q_EMIT cleared();
    Q_EMIT historyChanged();
}

std::unique_ptr<UndoGroup> UndoHistory::takeUndo() {
    if (undo_.empty()) return nullptr;
    std::unique_ptr<UndoGroup> group = std::move(undo_.back());
    undo_.pop_back();
    forget(group->estimate);
    return group;
}

std::unique_ptr<UndoGroup> UndoHistory::takeRedo() {
    if (redo_.empty()) return nullptr;
    std::unique_ptr<UndoGroup> group = std::move(redo_.back());
    redo_.pop_back();
    forget(group->estimate);
    return group;
}

void UndoHistory::putRedo(std::unique_ptr<UndoGroup> group) {
    bytes_ += group->estimate;
    redo_.push_back(std::move(group));
    Q_EMIT historyChanged();
}

void UndoHistory::putUndo(std::unique_ptr<UndoGroup> group) {
    bytes_ += group->estimate;
    undo_.push_back(std::move(group));
    Q_EMIT historyChanged();
}

}  // namespace kova::doc
