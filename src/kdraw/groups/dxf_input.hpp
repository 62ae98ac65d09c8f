#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/fields/fields.hpp"

namespace kdraw {

class Database;

/// The groups of one record of a DXF text, with a cursor. Values stay in the text.
class DxfInput {
public:
    explicit DxfInput(const Database& database) : database_(database) {}

    struct Group {
        int code = 0;
        std::string_view value;
    };

    // Cursor. The "present part" reaches from behind a subclass marker up to the next one.
    bool atEnd() const { return at_ >= last_; }
    /// Code of the group at the cursor; -1 at the end of the record.
    int peek() const { return atEnd() ? -1 : groups_[at_].code; }
    std::string_view text() const { return atEnd() ? std::string_view() : groups_[at_].value; }
    /// The text with caret notation undone.
    std::string decoded() const;
    double real() const;
    std::int64_t integer() const;
    Handle handle() const;
    void skip() {
        if (!atEnd()) ++at_;
    }
    /// Forward from the cursor within the present part; false leaves the cursor where it is.
    bool seek(int code);
    /// From the beginning of the present part.
    bool find(int code);
    /// Anywhere in the record; the cursor then stands there and the part is the whole record.
    bool findAnywhere(int code);
    /// Makes the part behind this marker the present one; false when there is none: the present part stays.
    bool enter(std::string_view marker);
    /// Makes the groups behind a header variable's name (group 9) the present part; false when it is not there.
    bool enterVariable(std::string_view name);
    /// Handle of the table record of this name (no regard to case); 0 when there is none.
    Handle record(Table table, std::string_view name) const;

    std::size_t cursor() const { return at_; }
    void setCursor(std::size_t place) { at_ = place; }
    /// Also behind the record's own groups.
    void setCursorAnywhere(std::size_t place) {
        at_ = place;
        last_ = groups_.size();
    }

    // The present part by places in groups(). Kinds with parts inside parts narrow it down to one of these.
    std::size_t partBegin() const { return first_; }
    std::size_t partEnd() const { return last_; }
    void setPart(std::size_t begin, std::size_t end) {
        first_ = at_ = begin;
        last_ = end;
    }

    // Filling: one record at a time.
    void clear() {
        groups_.clear();
        at_ = first_ = last_ = 0;
    }
    void add(int code, std::string_view value) { groups_.push_back({code, value}); }
    /// Puts the cursor at the beginning, with everything before the extended data as the present part.
    void rewind();
    const std::vector<Group>& groups() const { return groups_; }
    /// Number of groups before the extended data (1001 ...).
    std::size_t ownGroups() const { return own_; }
    const Database& database() const { return database_; }

private:
    const Database& database_;
    std::vector<Group> groups_;
    std::size_t at_ = 0;
    std::size_t first_ = 0, last_ = 0;  ///< the present part
    std::size_t own_ = 0;
};

}  // namespace kdraw
