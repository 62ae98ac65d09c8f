#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kova::cmd {

/// One option of a prompt. Only the whole word or its one short form is accepted.
struct Keyword {
    std::string word;       ///< upper case: "CLOSE"
    std::string shortForm;  ///< upper case: "C"
};

/// Options from words that show their short form in capitals and digits: "3P 2P Ttr eXit LAyer" gives
/// 3P, 2P, TTR (T), EXIT (X), LAYER (LA).
std::vector<Keyword> parseKeywords(std::string_view words);

/// The upper-case word that a line names, or an empty string. A leading "_" is passed over; blanks are not trimmed.
std::string matchKeyword(std::string_view line, const std::vector<Keyword>& keywords);

}  // namespace kova::cmd
