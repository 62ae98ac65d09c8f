#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kova::strings {

/// What stands for bytes and numbers that are no character.
inline constexpr char32_t kReplacement = 0xFFFD;

/// The next code point of a UTF-8 text, i moves past it; U+FFFD for a byte that is no UTF-8 (moves one byte).
char32_t nextCodePoint(std::string_view text, std::size_t& i);
/// Appends a code point as UTF-8; surrogates and values above U+10FFFF become U+FFFD.
void appendUtf8(std::string& out, char32_t c);
/// True for bytes that are well-formed UTF-8.
bool isUtf8(std::string_view text);
/// The text as it stands when it is well-formed; else with U+FFFD for each byte that is not.
std::string validUtf8(std::string_view text);

/// True for a byte in the middle of a character.
constexpr bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }
/// The number of characters.
std::size_t countCharacters(std::string_view text);
/// The size of the largest beginning that has no more than `limit` bytes and cuts no character.
std::size_t wholeCharacters(std::string_view text, std::size_t limit);

}  // namespace kova::strings
