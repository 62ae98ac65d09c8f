#pragma once

#include <string>
#include <string_view>

namespace kova::strings {

// Letters without regard to case: Unicode's simple mappings, one character for one, which keep the number of characters
// ("ß" is not "ss"). The tables are made by case_tables.py. Bytes that are no UTF-8 stay as they are and differ from
// each other.

char32_t foldCase(char32_t c);
char32_t upperCase(char32_t c);
char32_t lowerCase(char32_t c);

/// UTF-8 text folded for comparison: two names are the same exactly when their folded texts are.
std::string foldCase(std::string_view text);
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
/// Equal without regard to case.
bool equalNoCase(std::string_view a, std::string_view b);

/// Letters of plain ASCII.
constexpr char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
constexpr char upperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

}  // namespace kova::strings
