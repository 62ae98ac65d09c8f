#include "kdraw/groups/dxf_input.hpp"

#include <charconv>

#include "kdraw/database/database.hpp"
#include "strings/numbers.hpp"

namespace kdraw {

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
    return text;
}

}  // namespace

std::string DxfInput::decoded() const {
    const std::string_view raw = text();
    std::string out;
    out.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != '^' || i + 1 == raw.size()) {
            out += raw[i];
            continue;
        }
        const char c = raw[++i];
        if (c == ' ')
            out += '^';
        else if (c >= 0x40 && c < 0x60)
            out += static_cast<char>(c - 0x40);
        else
            out += '^', out += c;
    }
    return out;
}

double DxfInput::real() const {
    const std::string_view value = trimmed(text());
    double v = 0.0;
    kova::strings::readReal(value.data(), value.data() + value.size(), v);
    return v;
}

std::int64_t DxfInput::integer() const {
    const std::string_view value = trimmed(text());
    std::int64_t v = 0;
    std::from_chars(value.data(), value.data() + value.size(), v);
    return v;
}

Handle DxfInput::handle() const {
    const std::string_view value = trimmed(text());
    Handle v = 0;
    std::from_chars(value.data(), value.data() + value.size(), v, 16);
    return v;
}

bool DxfInput::seek(int code) {
    for (std::size_t i = at_; i < last_; ++i)
        if (groups_[i].code == code) {
            at_ = i;
            return true;
        }
    return false;
}

bool DxfInput::find(int code) {
    for (std::size_t i = first_; i < last_; ++i)
        if (groups_[i].code == code) {
            at_ = i;
            return true;
        }
    return false;
}

bool DxfInput::findAnywhere(int code) {
    first_ = at_ = 0;
    last_ = own_;
    return find(code);
}

bool DxfInput::enter(std::string_view marker) {
    for (std::size_t i = 0; i < own_; ++i) {
        if (groups_[i].code != 100 || groups_[i].value != marker) continue;
        first_ = at_ = i + 1;
        last_ = first_;
        while (last_ < own_ && groups_[last_].code != 100) ++last_;
        return true;
    }
    return false;
}

bool DxfInput::enterVariable(std::string_view name) {
    // They mostly come in the order in which they are asked for.
    const std::size_t begin = last_ < own_ ? last_ : 0;
    for (std::size_t n = 0; n < own_; ++n) {
        const std::size_t i = begin + n < own_ ? begin + n : begin + n - own_;
        if (groups_[i].code != 9 || groups_[i].value != name) continue;
        first_ = at_ = last_ = i + 1;
        while (last_ < own_ && groups_[last_].code != 9) ++last_;
        return true;
    }
    return false;
}

Handle DxfInput::record(Table table, std::string_view name) const { return database_.recordNamed(table, name); }

void DxfInput::rewind() {
    own_ = 0;
    while (own_ < groups_.size() && groups_[own_].code < 1000) ++own_;
    first_ = at_ = 0;
    last_ = own_;
}

}  // namespace kdraw
