#pragma once

#include <string>
#include <string_view>

#include "strings/code_page.hpp"

namespace kdraw {

/// Texts of files before R2007: bytes of the drawing's code page, as UTF-8.
class TextCodec {
public:
    /// `page`: the number in the file's header (30: ANSI_1252). Unknown numbers count as 30.
    explicit TextCodec(int page = 30) : page_(kova::strings::CodePage::ofDrawing(page)) {}

    /// What the code page does not have becomes U+FFFD. Trailing zero bytes are cut off.
    std::string toUtf8(std::string_view raw) const;

private:
    kova::strings::CodePage page_;
};

/// UTF-16 (little-endian bytes) as UTF-8; lone surrogates become U+FFFD. Trailing zeros are cut off.
std::string utf8OfUtf16(std::string_view littleEndian);
using kova::strings::utf16OfUtf8;

}  // namespace kdraw
