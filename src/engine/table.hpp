#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "engine/name.hpp"

namespace kova::engine {

/// A symbol table: records in the order they were added, found by name without regard to case.
/// `Record` has a `Name name` member; records keep their addresses while they stand in the table. A table is
/// copied with its records, so that an edit can be undone by putting the old copy back.
template <class Record>
class Table {
public:
    Table() = default;
    Table(const Table& o) { *this = o; }
    Table(Table&&) noexcept = default;
    Table& operator=(Table&&) noexcept = default;
    Table& operator=(const Table& o) {
        if (this == &o) return *this;
        clear();
        for (const Record& r : o) add(r);
        return *this;
    }

    Record* find(Name name) {
        const auto it = index_.find(name.key());
        return it == index_.end() ? nullptr : it->second;
    }
    const Record* find(Name name) const { return const_cast<Table*>(this)->find(name); }
    bool contains(Name name) const { return find(name) != nullptr; }

    /// Adds a record, or replaces the one of the same name in its place.
    Record& add(Record record) {
        if (Record* known = find(record.name)) {
            *known = std::move(record);
            return *known;
        }
        const void* key = record.name.key();
        records_.push_back(std::make_unique<Record>(std::move(record)));
        index_.emplace(key, records_.back().get());
        return *records_.back();
    }
    /// The record of that name, made with the record type's defaults when there is none.
    Record& ensure(Name name) {
        if (Record* known = find(name)) return *known;
        Record fresh;
        fresh.name = name;
        return add(std::move(fresh));
    }
    /// Position of a record; size() when there is none of that name.
    std::size_t indexOf(Name name) const {
        const Record* record = find(name);
        std::size_t i = 0;
        while (i < records_.size() && records_[i].get() != record) ++i;
        return i;
    }
    /// Adds a record before position `at` (at the end when that lies beyond), or replaces the one of the same name
    /// where that stands.
    Record& insert(std::size_t at, Record record) {
        if (at >= records_.size() || contains(record.name)) return add(std::move(record));
        auto fresh = std::make_unique<Record>(std::move(record));
        Record& placed = *fresh;
        records_.insert(records_.begin() + static_cast<std::ptrdiff_t>(at), std::move(fresh));
        index_.emplace(placed.name.key(), &placed);
        return placed;
    }
    bool erase(Name name) {
        const auto it = index_.find(name.key());
        if (it == index_.end()) return false;
        std::erase_if(records_, [&](const std::unique_ptr<Record>& r) { return r.get() == it->second; });
        index_.erase(it);
        return true;
    }
    /// False when there is no such record or the new name is taken by another one.
    bool rename(Name from, Name to) {
        Record* record = find(from);
        if (record == nullptr) return false;
        Record* taken = find(to);
        if (taken != nullptr && taken != record) return false;
        index_.erase(from.key());
        record->name = to;
        index_.emplace(to.key(), record);
        return true;
    }
    void clear() {
        records_.clear();
        index_.clear();
    }

    std::size_t size() const { return records_.size(); }
    bool empty() const { return records_.empty(); }
    Record& operator[](std::size_t i) { return *records_[i]; }
    const Record& operator[](std::size_t i) const { return *records_[i]; }

    template <class T, class Inner>
    struct Iterator {
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        Inner at{};
        T& operator*() const { return **at; }
        T* operator->() const { return at->get(); }
        Iterator& operator++() {
            ++at;
            return *this;
        }
        Iterator operator++(int) {
            Iterator old = *this;
            ++at;
            return old;
        }
        bool operator==(const Iterator& o) const { return at == o.at; }
    };
    using Records = std::vector<std::unique_ptr<Record>>;
    auto begin() { return Iterator<Record, typename Records::iterator>{records_.begin()}; }
    auto end() { return Iterator<Record, typename Records::iterator>{records_.end()}; }
    auto begin() const { return Iterator<const Record, typename Records::const_iterator>{records_.begin()}; }
    auto end() const { return Iterator<const Record, typename Records::const_iterator>{records_.end()}; }

private:
    Records records_;
    std::unordered_map<const void*, Record*> index_;
};

}  // namespace kova::engine
