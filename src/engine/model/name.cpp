#include "engine/model/name.hpp"

#include <deque>
#include <unordered_map>

#include "strings/case_fold.hpp"

namespace kova::engine {

std::string foldCase(std::string_view text) { return strings::foldCase(text); }
std::string upperCase(std::string_view text) { return strings::upperCase(text); }
bool equalNoCase(std::string_view a, std::string_view b) { return strings::equalNoCase(a, b); }

/// The interned texts. Entries stand in a deque, so that their addresses and texts never move.
class NamePool {
public:
    static NamePool& instance() {
        static NamePool* pool = new NamePool;  // never destroyed: names may outlive every static object
        return *pool;
    }

    const Name::Entry* intern(std::string_view text) {
        if (const auto it = index_.find(text); it != index_.end()) return it->second;
        const std::string folded = foldCase(text);
        const Name::Entry* foldedEntry = nullptr;
        if (folded != text) foldedEntry = intern(folded);
        Name::Entry& entry = entries_.emplace_back(Name::Entry{std::string(text), foldedEntry});
        if (foldedEntry == nullptr) entry.folded = &entry;
        index_.emplace(entry.text, &entry);
        return &entry;
    }

    const Name::Entry* empty() const { return empty_; }

private:
    NamePool() { empty_ = intern(std::string_view{}); }

    std::deque<Name::Entry> entries_;
    std::unordered_map<std::string_view, const Name::Entry*> index_;
    const Name::Entry* empty_ = nullptr;
};

Name::Name() noexcept : entry_(NamePool::instance().empty()) {}
Name::Name(std::string_view text) : entry_(NamePool::instance().intern(text)) {}

const CommonNames& commonNames() {
    static const CommonNames names;
    return names;
}

}  // namespace kova::engine
