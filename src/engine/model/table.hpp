#pragma once

#include <iterator>
#include <list>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/model/name.hpp"
#include "engine/model/numbered_names.hpp"

namespace kova::engine {

template <class Record>
class TableChanges;

/// A symbol table: records in the order they were added, found by name without regard to case. Adding, finding and
/// taking out a record takes the same time however many there are. `Record` has a `Name name` member; records keep
/// their addresses while they stand in the table.
///
/// While a TableChanges watches it, the table tells it of every record that is about to change: each way that leads to
/// a record for writing counts as a change of it.
template <class Record>
class Table {
    using Records = std::list<Record>;

public:
    using Iterator = typename Records::iterator;
    using ConstIterator = typename Records::const_iterator;

    Table() = default;
    ~Table() = default;
    Table(const Table& o) { *this = o; }
    Table(Table&& o) noexcept { exchangeContents(o); }
    Table& operator=(Table&& o) {
        if (this == &o) return *this;
        if (changes_ != nullptr) return *this = std::as_const(o);
        records_.clear();
        index_.clear();
        names_.forget();
        exchangeContents(o);
        return *this;
    }
    Table& operator=(const Table& o) {
        if (this == &o) return *this;
        clear();
        for (const Record& r : o) add(r);
        return *this;
    }

    Record* find(Name name) {
        const auto it = index_.find(name.key());
        if (it == index_.end()) return nullptr;
        if (changes_ != nullptr) changes_->changing(*it->second);
        return &*it->second;
    }
    const Record* find(Name name) const {
        const auto it = index_.find(name.key());
        return it == index_.end() ? nullptr : &*it->second;
    }
    bool contains(Name name) const { return index_.contains(name.key()); }

    /// Adds a record, or replaces the one of the same name in its place.
    Record& add(Record record) { return insertBefore({}, std::move(record)); }
    /// The record of that name, made with the record type's defaults when there is none.
    Record& ensure(Name name) {
        if (Record* known = find(name)) return *known;
        Record fresh;
        fresh.name = name;
        return add(std::move(fresh));
    }
    /// The name of the record that stands behind another one; empty: none does.
    Name after(Name name) const {
        const auto it = index_.find(name.key());
        if (it == index_.end()) return {};
        const auto next = std::next(it->second);
        return next == records_.end() ? Name() : next->name;
    }
    /// Adds a record before the one of a name (at the end when there is none), or replaces the one of the same name
    /// where that stands.
    Record& insertBefore(Name next, Record record) {
        if (Record* known = find(record.name)) {
            *known = std::move(record);
            return *known;
        }
        const auto behind = index_.find(next.key());
        const auto at = records_.insert(behind == index_.end() ? records_.end() : behind->second, std::move(record));
        index_.emplace(at->name.key(), at);
        if (changes_ != nullptr) changes_->added(at->name);
        return *at;
    }
    bool erase(Name name) {
        const auto it = index_.find(name.key());
        if (it == index_.end()) return false;
        if (changes_ != nullptr) changes_->removing(*it->second, after(name));
        records_.erase(it->second);
        index_.erase(it);
        names_.released(name);
        return true;
    }
    /// False when there is no such record or the new name is taken by another one.
    bool rename(Name from, Name to) {
        const auto it = index_.find(from.key());
        if (it == index_.end()) return false;
        const Iterator record = it->second;
        const auto taken = index_.find(to.key());
        if (taken != index_.end() && taken->second != record) return false;
        if (changes_ != nullptr) changes_->removing(*record, after(from));
        index_.erase(it);
        record->name = to;
        index_.emplace(to.key(), record);
        if (changes_ != nullptr) changes_->added(to);
        names_.released(from);
        return true;
    }
    void clear() {
        if (changes_ != nullptr)
            while (!records_.empty()) erase(records_.back().name);
        records_.clear();
        index_.clear();
        names_.forget();
    }
    /// The prefix with the lowest number from 1 on that makes a name which no record has: "*A1", "*A2" ...
    Name freeName(std::string_view prefix) const {
        return names_.next(prefix, [&](Name name) { return contains(name); });
    }

    /// The record at a position, less than size(); passes over those before it.
    Record& operator[](std::size_t position) {
        Record& record = *std::next(records_.begin(), static_cast<std::ptrdiff_t>(position));
        if (changes_ != nullptr) changes_->changing(record);
        return record;
    }
    const Record& operator[](std::size_t position) const {
        return *std::next(records_.begin(), static_cast<std::ptrdiff_t>(position));
    }
    std::size_t size() const { return records_.size(); }
    bool empty() const { return records_.empty(); }
    Iterator begin() {
        if (changes_ != nullptr)
            for (Record& record : records_) changes_->changing(record);
        return records_.begin();
    }
    Iterator end() { return records_.end(); }
    ConstIterator begin() const { return records_.begin(); }
    ConstIterator end() const { return records_.end(); }

private:
    friend class TableChanges<Record>;

    void exchangeContents(Table& o) noexcept {
        records_.swap(o.records_);
        index_.swap(o.index_);
        o.names_.forget();
    }

    Records records_;
    std::unordered_map<const void*, Iterator> index_;
    mutable NumberedNames names_;
    TableChanges<Record>* changes_ = nullptr;  ///< hears of changes; not owned, may be null
};

/// What was changed in a table while it was watched, record by record, so that an edit of one record holds one record.
template <class Record>
class TableChanges {
public:
    /// One name's place in the table, in the state that does not stand there.
    struct Change {
        Name name;
        std::unique_ptr<Record> other;  ///< null: the table has no record of that name then
        Name next;                      ///< the record that follows it where it is put in; empty: none
    };

    /// Hears of a table's changes for a scope.
    class Watch {
    public:
        Watch(Table<Record>& table, TableChanges& changes) : table_(table), outer_(table.changes_) {
            table.changes_ = &changes;
        }
        ~Watch() { table_.changes_ = outer_; }
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        Table<Record>& table_;
        TableChanges* outer_;
    };

    /// Brings the table back to the state before, or on to the one after. The table is not watched then.
    void undo(Table<Record>& table) {
        for (auto change = changes_.rbegin(); change != changes_.rend(); ++change) exchange(table, *change);
    }
    void redo(Table<Record>& table) {
        for (Change& change : changes_) exchange(table, change);
    }
    /// In the order in which they were made. A name may stand in several.
    const std::vector<Change>& list() const { return changes_; }
    /// No more changes will come.
    void close() {
        seen_ = {};
        changes_.shrink_to_fit();
    }

private:
    friend class Table<Record>;

    void changing(const Record& record) {
        if (seen_.insert(record.name.key()).second)
            changes_.push_back({record.name, std::make_unique<Record>(record), {}});
    }
    void added(Name name) {
        // What happens to a new record goes with it.
        seen_.insert(name.key());
        changes_.push_back({name, nullptr, {}});
    }
    void removing(const Record& record, Name next) {
        changes_.push_back({record.name, std::make_unique<Record>(record), next});
    }
    static void exchange(Table<Record>& table, Change& change) {
        Record* standing = table.find(change.name);
        if (standing != nullptr && change.other) {
            std::swap(*standing, *change.other);
        } else if (standing != nullptr) {
            change.next = table.after(change.name);
            change.other = std::make_unique<Record>(std::move(*standing));
            table.erase(change.name);
        } else if (change.other) {
            table.insertBefore(change.next, std::move(*change.other));
            change.other.reset();
        }
    }

    std::vector<Change> changes_;
    std::unordered_set<const void*> seen_;  ///< names whose record need not be kept any more
};

}  // namespace kova::engine
