#include "engine/name.hpp"

#include <QString>
#include <deque>
#include <unordered_map>

namespace kova::engine {

namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
}

constexpr char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
constexpr char upperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

}  // namespace

std::string foldCase(std::string_view text) {
    if (!isAscii(text))
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toCaseFolded().toStdString();
    std::string out(text);
    for (char& c : out) c = lowerAscii(c);
    return out;
}

std::string upperCase(std::string_view text) {
    if (!isAscii(text))
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toUpper().toStdString();
    std::string out(text);
    for (char& c : out) c = upperAscii(c);
    return out;
}

bool equalNoCase(std::string_view a, std::string_view b) {
    if (isAscii(a) && isAscii(b))
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                                  [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
    return foldCase(a) == foldCase(b);
}

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
