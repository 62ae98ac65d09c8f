#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kova::io {

/// What a file holds and the program does not keep, counted by kind: nothing goes without a word.
class LeftOut {
public:
    /// A kind is what a record is called ("FIELD") or a few words ("extended data of layers"). Kinds may come from the
    /// file: their number and length are bounded, what is beyond counts as "others".
    void add(std::string_view kind, std::size_t count = 1);
    void add(const LeftOut& more);
    bool empty() const { return counts_.empty(); }
    std::size_t total() const;
    std::size_t of(std::string_view kind) const;
    const std::map<std::string, std::size_t, std::less<>>& counts() const { return counts_; }
    /// "1 FIELD, 3 XRECORD", in the order of the names; characters that cannot be shown as '?'.
    std::string list() const;

private:
    std::map<std::string, std::size_t, std::less<>> counts_;
};

/// The lines that tell of entities that could not be read, and of what else is not kept; none for what is empty.
void tellLeftOut(const LeftOut& entities, const LeftOut& others, std::vector<std::string>& lines);

}  // namespace kova::io
