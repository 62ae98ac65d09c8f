#pragma once

#include <QObject>
#include <cstdint>
#include <memory_resource>
#include <set>
#include <vector>

namespace kova::doc {

/// The selected entities, by id, in the order they were selected.
class SelectionSet : public QObject {
    Q_OBJECT
public:
    explicit SelectionSet(QObject* parent = nullptr);

    const std::vector<std::uint64_t>& ids() const {
        if (stale_) tidy();
        return ids_;
    }
    std::size_t size() const { return members_.size(); }
    bool empty() const { return members_.empty(); }
    bool contains(std::uint64_t id) const { return members_.contains(id); }

    /// Adds what is not selected yet; gives the number added. One signal for all.
    std::size_t add(const std::vector<std::uint64_t>& ids);
    bool add(std::uint64_t id);
    /// Takes out what is selected; gives the number taken out. One signal for all.
    std::size_t remove(const std::vector<std::uint64_t>& ids);
    bool remove(std::uint64_t id);
    /// Selects just these; repeated ids count once.
    void set(std::vector<std::uint64_t> ids);
    void clear();

Q_SIGNALS:
    void selectionChanged();

private:
    /// Drops from the list what is no member any more.
    void tidy() const;

    // Removal takes the id out of the members only; the list follows when it is looked at or added to, so that
    // taking out many one by one stays fast.
    mutable std::vector<std::uint64_t> ids_;
    mutable bool stale_ = false;
    std::pmr::unsynchronized_pool_resource pool_;  // keeps the members of a large selection close together
    std::pmr::set<std::uint64_t> members_{&pool_};
};

}  // namespace kova::doc
