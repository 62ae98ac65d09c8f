#include "io/left_out.hpp"

namespace kova::io {

namespace {

constexpr std::size_t kMaxKinds = 200;
constexpr std::size_t kMaxLength = 64;

/// A kind as it stands behind a number: words of the language in their plural ("overrides of the dimension style"), names of
/// records as they are.
std::string counted(std::string_view kind, std::size_t count) {
    const auto isLower = [](char c) { return c >= 'a' && c <= 'z'; };
    std::string text(kind);
    if (count == 1) return text;
    // The noun is the last of the words before "of", a name or the end.
    std::size_t end = 0;
    for (std::size_t at = 0; at < kind.size() && isLower(kind[at]);) {
        std::size_t stop = at;
        while (stop < kind.size() && isLower(kind[stop])) ++stop;
        const std::string_view word = kind.substr(at, stop - at);
        if (word == "of" || word == "without") break;
        end = stop;
        at = stop < kind.size() && kind[stop] == ' ' ? stop + 1 : kind.size();
    }
    const std::string_view noun = kind.substr(0, end);
    if (noun.empty() || noun.ends_with('s') || noun.ends_with("data")) return text;
    if (noun.ends_with('y')) return text.replace(end - 1, 1, "ies");
    return text.insert(end, "s");
}

}  // namespace

void LeftOut::add(std::string_view kind, std::size_t count) {
    if (count == 0) return;
    std::string key(kind.substr(0, kMaxLength));
    if (counts_.size() >= kMaxKinds && !counts_.contains(key)) key = "others";
    counts_[key] += count;
}

void LeftOut::add(const LeftOut& more) {
    for (const auto& [kind, count] : more.counts_) add(kind, count);
}

std::size_t LeftOut::total() const {
    std::size_t sum = 0;
    for (const auto& [kind, count] : counts_) sum += count;
    return sum;
}

std::size_t LeftOut::of(std::string_view kind) const {
    const auto found = counts_.find(kind);
    return found == counts_.end() ? 0 : found->second;
}

std::string LeftOut::list() const {
    std::string text;
    for (const auto& [kind, count] : counts_) {
        if (!text.empty()) text += ", ";
        text += std::to_string(count) + ' ';
        for (const char c : counted(kind, count)) text += c >= ' ' && c <= '~' ? c : '?';
    }
    return text;
}

void tellLeftOut(const LeftOut& entities, const LeftOut& others, std::vector<std::string>& lines) {
    if (!entities.empty())
        lines.push_back(std::to_string(entities.total()) + " entities could not be read: " + entities.list() + ".");
    if (!others.empty()) lines.push_back("Not kept: " + others.list() + ".");
}

}  // namespace kova::io
