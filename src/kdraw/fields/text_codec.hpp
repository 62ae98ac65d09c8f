#pragma once

#include <string>
#include <string_view>

namespace kdraw {

/// Texts of files before R2007: bytes of the drawing's code page, as UTF-8.
class TextCodec {
public:
    /// `page`: the number in the file's header (30: ANSI_1252). Unknown numbers count as 30.
    explicit TextCodec(int page = 30) { setPage(page); }
    ~TextCodec();
    TextCodec(const TextCodec&) = delete;
    TextCodec& operator=(const TextCodec&) = delete;

    void setPage(int page);
    /// What the code page does not have becomes U+FFFD. Trailing zero bytes are cut off.
    std::string toUtf8(std::string_view raw) const;

private:
    void close();
    void* converter_ = nullptr;  ///< iconv_t
};

/// UTF-16 (little-endian bytes) as UTF-8 and back; lone surrogates become U+FFFD. Trailing zeros are cut off.
std::string utf8OfUtf16(std::string_view littleEndian);
std::u16string utf16OfUtf8(std::string_view utf8);

}  // namespace kdraw
