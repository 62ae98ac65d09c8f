#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kova::engine {

class Entity;

/// One character that a reader of a text sees, and where it stands in the content.
struct TextLetter {
    std::size_t begin = 0;  ///< bytes of the content; a code such as %%d or \P is one character
    std::size_t end = 0;
    char32_t value = 0;   ///< paragraphs and column breaks are '\n'
    bool literal = true;  ///< stands in the content as itself
};

/// The characters of a content in order, without what only formats them. `inlineCodes`: the content of multiline text;
/// else only the %% codes and \U+XXXX count.
std::vector<TextLetter> textLetters(std::string_view content, bool inlineCodes);

enum class LetterCase { Sentence, Lower, Upper, Title, Toggle };
/// The content with its letters in that case; codes stay as they are.
std::string withCase(std::string_view content, bool inlineCodes, LetterCase letterCase);

/// Where a plain text occurs in what a reader sees, without regard to case; occurrences do not overlap.
std::size_t countOccurrences(std::string_view content, bool inlineCodes, std::string_view what);
/// Replaces all of them by a plain text, which takes the format of their first character. Gives the number.
std::size_t replaceOccurrences(std::string& content, bool inlineCodes, std::string_view what, std::string_view with);

/// Calls use(content, inlineCodes) for every text that an annotation, a table or a block reference's attributes hold;
/// an attribute definition gives its default value, a dimension the text typed for it.
void eachText(Entity& entity, const std::function<void(std::string& content, bool inlineCodes)>& use);

}  // namespace kova::engine
