#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kova::engine {

/// A stretch of text in one state of the toggles, all codes resolved, UTF-8.
struct CodeRun {
    std::string text;
    bool underline = false;
    bool overline = false;
    bool strikeThrough = false;
};

/// Resolves the codes of single-line text: %%d degree, %%p plus-minus, %%c diameter, %%% per cent, %%nnn character
/// number nnn, the toggles %%u %%o %%k, \U+XXXX and \M+nXXXX. Anything else stands as it is. Empty stretches are
/// left out; toggles still open at the end end there.
std::vector<CodeRun> resolveCodes(std::string_view text);
/// The same as plain text without the toggles.
std::string resolveCodesPlain(std::string_view text);
/// True when the text holds nothing that resolveCodes would change: a cheap test that avoids copies.
bool hasCodes(std::string_view text);

/// Reads a %% code at text[i] (i at the first per cent sign): the character it stands for goes to `out`, or a toggle
/// ('u', 'o', 'k') to `toggle`; i moves past the code. False when there is no code, and i stays.
bool readPercentCode(std::string_view text, std::size_t& i, std::string& out, char& toggle);
/// Reads \U+XXXX (surrogate pairs are joined) or \M+nXXXX at text[i] (i at the backslash) the same way.
bool readUnicodeCode(std::string_view text, std::size_t& i, std::string& out);

/// The next code point of a UTF-8 text, i moves past it; U+FFFD for a byte that is no UTF-8 (moves one byte).
char32_t nextCodePoint(std::string_view text, std::size_t& i);
/// Appends a code point as UTF-8; surrogates and values above U+10FFFF become U+FFFD.
void appendUtf8(std::string& out, char32_t c);

}  // namespace kova::engine
