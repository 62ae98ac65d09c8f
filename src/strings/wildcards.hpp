#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kova::cmd {

/// True when the text matches one of the patterns of a comma list, without regard to case unless it matters. In a pattern * stands for
/// any characters, ? for one, # for a digit, @ for a letter, . for what is neither, [abc], [a-z] and [~abc] for one of
/// or none of a set; ~ in front turns the pattern round, and ` takes the next character as it is.
/// Linear space, at most length times pattern time.
bool matchesWildcards(std::string_view text, std::string_view patterns, bool caseMatters = false);

/// True when the text holds a character that patterns use.
bool hasWildcards(std::string_view text);

/// The names of a comma list, blanks and double quotes round each taken off, empty ones left out. Commas within
/// brackets or quotes do not part.
std::vector<std::string> splitNames(std::string_view list);

}  // namespace kova::cmd
