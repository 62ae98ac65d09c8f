#include "doc/selection_set.hpp"

namespace kova::doc {

namespace {

/// Appends to `list` the ids that are no members yet, and makes them members.
void insertNew(const std::vector<std::uint64_t>& ids, std::vector<std::uint64_t>& list,
               std::pmr::set<std::uint64_t>& members) {
    for (const std::uint64_t id : ids) {
        // Ids mostly come in rising order, for which the end is the right hint.
        const std::size_t known = members.size();
        members.insert(members.end(), id);
        if (members.size() != known) list.push_back(id);
    }
}

}  // namespace

SelectionSet::SelectionSet(QObject* parent) : QObject(parent) {}

void SelectionSet::tidy() const {
    std::erase_if(ids_, [this](std::uint64_t id) { return !members_.contains(id); });
    stale_ = false;
}

std::size_t SelectionSet::add(const std::vector<std::uint64_t>& ids) {
    if (stale_) tidy();
    const std::size_t before = members_.size();
    insertNew(ids, ids_, members_);
    const std::size_t added = members_.size() - before;
    if (added != 0) Q_EMIT selectionChanged();
    return added;
}

bool SelectionSet::add(std::uint64_t id) {
    if (members_.contains(id)) return false;
    if (stale_) tidy();
    members_.insert(id);
    ids_.push_back(id);
    Q_EMIT selectionChanged();
    return true;
}

std::size_t SelectionSet::remove(const std::vector<std::uint64_t>& ids) {
    if (!stale_ && !ids.empty() && ids == ids_) {
        // All that is selected, as after ERASE: no search for each.
        const std::size_t all = members_.size();
        clear();
        return all;
    }
    std::size_t removed = 0;
    auto next = members_.end();
    for (const std::uint64_t id : ids) {
        // Ids mostly come in rising order: the next one stands behind the last.
        if (next == members_.end() || *next != id) next = members_.find(id);
        if (next == members_.end()) continue;
        next = members_.erase(next);
        ++removed;
    }
    if (removed == 0) return 0;
    stale_ = true;
    Q_EMIT selectionChanged();
    return removed;
}

bool SelectionSet::remove(std::uint64_t id) {
    if (members_.erase(id) == 0) return false;
    stale_ = true;
    Q_EMIT selectionChanged();
    return true;
}

void SelectionSet::set(std::vector<std::uint64_t> ids) {
    std::vector<std::uint64_t> list;
    std::pmr::set<std::uint64_t> members(&pool_);
    list.reserve(ids.size());
    insertNew(ids, list, members);
    if (list == this->ids()) return;
    ids_ = std::move(list);
    members_ = std::move(members);
    Q_EMIT selectionChanged();
}

void SelectionSet::clear() {
    ids_.clear();
    stale_ = false;
    if (members_.empty()) return;
    members_.clear();
    Q_EMIT selectionChanged();
}

}  // namespace kova::doc
