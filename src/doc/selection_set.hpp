#pragma once

#include <QObject>
#include <cstdint>
#include <set>
#include <vector>

namespace kova::doc {

/// The selected entities, by id, in the order they were selected.
class SelectionSet : public QObject {
    Q_OBJECT
public:
    explicit SelectionSet(QObject* parent = nullptr);

    const std::vector<std::uint64_t>& ids() const { return ids_; }
    std::size_t size() const { return ids_.size(); }
    bool empty() const { return ids_.empty(); }
    bool contains(std::uint64_t id) const { return members_.contains(id); }

    /// Adds what is not selected yet; gives the number added. One signal for all.
    std::size_t add(const std::vector<std::uint64_t>& ids);
    bool add(std::uint64_t id);
    /// Takes out what is selected; gives the number taken out. One signal for all; linear in the selection.
    std::size_t remove(const std::vector<std::uint64_t>& ids);
    bool remove(std::uint64_t id);
    void set(std::vector<std::uint64_t> ids);
    void clear();

Q_SIGNALS:
    void selectionChanged();

private:
    std::vector<std::uint64_t> ids_;
    std::set<std::uint64_t> members_;
};

}  // namespace kova::doc
