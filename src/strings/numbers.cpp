#include "strings/numbers.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kova::strings {

namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What a number is that from_chars finds out of range: more than any double, or less.
double beyondRange(std::string_view digits) {
    const bool negative = digits.front() == '-';
    if (negative) digits.remove_prefix(1);
    // The power of ten of the first digit that counts.
    const std::size_t e = std::min(digits.find_first_of("eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, e);
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::int64_t>(std::min(mantissa.find_first_not_of("0."), mantissa.size()));
    std::int64_t power = 0;
    std::string_view exponent = digits.substr(std::min(e + 1, digits.size()));
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    const auto read = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
    constexpr std::int64_t kFar = std::int64_t{1} << 60;
    if (read.ec == std::errc::result_out_of_range) power = exponent.starts_with('-') ? -kFar : kFar;
    power = std::clamp(power, -kFar, kFar) + point - first;
    const double size = power < 0 ? 0.0 : std::numeric_limits<double>::infinity();
    return negative ? -size : size;
}

std::string printed(double value, std::chars_format format, int digits) {
    digits = std::clamp(digits, 0, 400);
    char buffer[740];  // 309 digits of the largest double, the point, 400 decimals, sign and exponent
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value, format, digits).ptr};
}

std::string_view withoutPlus(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

template <class Number>
std::optional<Number> whole(std::string_view text, int base) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

const char* readReal(const char* from, const char* to, double& value) {
    const char* first = from != to && *from == '-' ? from + 1 : from;
    if (first == to || !(isDigit(*first) || (*first == '.' && to - first > 1 && isDigit(first[1])))) return nullptr;
    double read = 0.0;
    const auto [end, error] = std::from_chars(from, to, read);
    if (error == std::errc::result_out_of_range)
        read = beyondRange({from, static_cast<std::size_t>(end - from)});
    else if (error != std::errc{})
        return nullptr;
    value = read;
    return end;
}

std::optional<double> parseReal(std::string_view text) {
    text = withoutPlus(text);
    double value = 0.0;
    const char* const to = text.data() + text.size();
    if (readReal(text.data(), to, value) != to || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<std::int64_t> parseInteger(std::string_view text) { return whole<std::int64_t>(withoutPlus(text), 10); }

std::optional<std::uint64_t> parseHex(std::string_view text) { return whole<std::uint64_t>(text, 16); }

std::string shortest(double value) {
    char buffer[kShortestSize];
    return {buffer, writeShortest(buffer, value)};
}

std::string fixed(double value, int decimals) { return printed(value, std::chars_format::fixed, decimals); }

std::string scientific(double value, int decimals) { return printed(value, std::chars_format::scientific, decimals); }

std::string general(double value, int digits) { return printed(value, std::chars_format::general, digits); }

std::string hexText(std::uint64_t value) {
    char buffer[16];
    char* const end = std::to_chars(buffer, buffer + sizeof buffer, value, 16).ptr;
    for (char* c = buffer; c != end; ++c)
        if (*c >= 'a') *c = static_cast<char>(*c - 'a' + 'A');
    return {buffer, end};
}

}  // namespace kova::strings
