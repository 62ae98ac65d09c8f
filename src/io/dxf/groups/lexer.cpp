#include "io/dxf/groups/lexer.hpp"
#include "strings/case_fold.hpp"
#include "strings/numbers.hpp"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace kova::io::dxf {

namespace {

constexpr bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\0' || c == '\v' || c == '\f'; }

/// "nan", "-inf" and their like, as some writers print them.
bool isNotFinite(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    return strings::equalNoCase(text.substr(0, 3), "nan") || strings::equalNoCase(text.substr(0, 3), "inf");
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

double parseReal(std::string_view text) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0.0;
    const char* const rest = strings::readReal(text.data(), text.data() + text.size(), value);
    if (rest == nullptr) return isNotFinite(text) ? std::numeric_limits<double>::quiet_NaN() : 0.0;
    // "1.#IND" and its like.
    if (rest != text.data() + text.size() && *rest == '#') return std::numeric_limits<double>::quiet_NaN();
    return std::isfinite(value) ? value : std::numeric_limits<double>::quiet_NaN();
}

std::int64_t parseInteger(std::string_view text) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && (rest == text.data() + text.size() || (*rest != '.' && *rest != 'e' && *rest != 'E')))
        return value;
    const double real = parseReal(text);
    return std::abs(real) < 9e18 ? static_cast<std::int64_t>(real) : 0;
}

std::uint64_t parseHandle(std::string_view text) {
    text = trimmed(text);
    std::uint64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return error == std::errc() && rest == text.data() + text.size() ? value : 0;
}

std::string_view Tag::trimmed() const { return dxf::trimmed(text()); }
double Tag::real() const { return parseReal(text()); }
std::int64_t Tag::integer() const { return parseInteger(text()); }
std::uint64_t Tag::handle() const { return parseHandle(text()); }

TagReader::TagReader(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    begin_ = at_ = text.data();
    end_ = begin_ + text.size();
    const std::string_view head = text.substr(0, 65536);
    if (head.find('\n') == head.npos && head.find('\r') != head.npos) newline_ = '\r';
}

void TagReader::seek(std::size_t position) { at_ = begin_ + std::min(position, size()); }

std::size_t TagReader::lineAt(std::size_t position) const {
    const char* to = begin_ + std::min(position, size());
    return static_cast<std::size_t>(std::count(begin_, to, newline_)) + 1;
}

bool TagReader::line(const char*& from, const char*& to) {
    if (at_ == end_) return false;
    from = at_;
    const auto* stop = static_cast<const char*>(std::memchr(at_, newline_, static_cast<std::size_t>(end_ - at_)));
    if (stop == nullptr) {
        to = end_;
        at_ = end_;
    } else {
        to = stop;
        at_ = stop + 1;
    }
    if (to != from && to[-1] == '\r') --to;
    return true;
}

bool TagReader::readCode(std::int32_t& code) {
    for (;;) {
        const char* from = nullptr;
        const char* to = nullptr;
        const char* before = at_;
        if (!line(from, to)) return false;
        while (from != to && isBlank(*from)) ++from;
        while (from != to && isBlank(to[-1])) --to;
        if (from == to) continue;
        const auto [rest, error] = std::from_chars(from, to, code);
        if (error == std::errc() && rest == to && code >= -10 && code < 10000) {
            if (code == 999) {
                if (!line(from, to)) return false;
                continue;
            }
            return true;
        }
        at_ = before;
        if (!resynchronise()) return false;
    }
}

bool TagReader::readValue(Tag& tag) {
    const char* from = nullptr;
    const char* to = nullptr;
    // A code without a value: the text was cut off here.
    if (!line(from, to)) return false;
    tag.data = from;
    tag.size = static_cast<std::uint32_t>(to - from);
    return true;
}

/// Goes on at the next line that holds a bare 0 and is followed by a name in capitals.
bool TagReader::resynchronise() {
    if (damage_++ == 0) firstDamage_ = position();
    if (damage_ > kMaxDamage) return false;
    const char* from = nullptr;
    const char* to = nullptr;
    if (!line(from, to)) return false;
    for (;;) {
        const char* here = at_;
        if (!line(from, to)) return false;
        if (trimmed({from, static_cast<std::size_t>(to - from)}) != "0") continue;
        const char* afterCode = at_;
        if (!line(from, to)) return false;
        const std::string_view name = trimmed({from, static_cast<std::size_t>(to - from)});
        const bool isName = name.size() >= 3 &&
                            name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == name.npos &&
                            name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") != name.npos;
        if (isName) {
            at_ = here;
            return true;
        }
        at_ = afterCode;
    }
}

const Tag* Record::find(std::int32_t code) const {
    for (const Tag& tag : tags)
        if (tag.code == code) return &tag;
    return nullptr;
}

bool RecordReader::next(Record& record) {
    record.tags.clear();
    record.complete = true;
    record.oversized = false;
    Tag tag;
    if (!pending_) {
        do {
            headPosition_ = tags_.position();
            if (!tags_.next(head_)) return false;
        } while (head_.code != 0);
    }
    record.type = head_.trimmed();
    record.position = start_ = headPosition_;
    pending_ = false;
    // What follows the end mark is no part of the drawing, and may be anything.
    if (record.type == "EOF") return true;
    for (;;) {
        const std::size_t here = tags_.position();
        if (!tags_.next(tag)) {
            record.complete = false;
            return true;
        }
        if (tag.code == 0) {
            head_ = tag;
            headPosition_ = here;
            pending_ = true;
            return true;
        }
        if (record.tags.size() < Record::kMaxTags)
            record.tags.push_back(tag);
        else
            record.oversized = true;
    }
}

bool RecordReader::at(std::size_t position, Record& record) {
    tags_.seek(position);
    pending_ = false;
    return next(record);
}

}  // namespace kova::io::dxf
