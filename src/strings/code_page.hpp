#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kova::strings {

/// An encoding of texts that are older than Unicode, known by the number that DWG files give it and by its name in
/// $DWGCODEPAGE.
class CodePage {
public:
    /// ANSI_1252, what counts where nothing is said.
    CodePage() : CodePage(kUsual) {}
    /// By name, whatever its case and punctuation: "ANSI_1252", "1252", "cp1252", "windows-1252", "DOS850", "ISO8859-2",
    /// "latin1", "MACINTOSH", "BIG5", "JOHAB", "UTF-8" ...; nothing for a name that is not known.
    static std::optional<CodePage> named(std::string_view name);
    /// By the number in the header of a DWG file; unknown numbers count as ANSI_1252.
    static CodePage ofDrawing(int number) { return CodePage(number); }

    /// "ANSI_1252".
    std::string_view name() const;
    /// The number that DWG files use.
    int number() const { return number_; }
    /// Characters take one or two bytes, and two bytes of it are well-formed UTF-8 now and then.
    bool isMultibyte() const;

    /// What the page does not have becomes U+FFFD.
    std::string toUtf8(std::string_view bytes) const;

private:
    static constexpr int kUsual = 30;
    explicit CodePage(int number);

    struct Close {
        void operator()(void* converter) const;
    };
    int number_;
    std::unique_ptr<void, Close> converter_;  ///< iconv_t; null when the system does not have the page
};

/// The character that \M+nXXXX stands for in drawings: n is a digit for one of five multibyte pages, XXXX its one or two
/// bytes. U+FFFD when there is none.
std::string multibyteCharacter(char page, unsigned bytes);

/// UTF-16 (little-endian bytes) as UTF-8; lone surrogates become U+FFFD.
std::string utf8OfUtf16(std::string_view littleEndian);
/// UTF-8 as UTF-16; what is no UTF-8 becomes U+FFFD.
std::u16string utf16OfUtf8(std::string_view utf8);

/// The bytes of a text file as UTF-8 without a mark: by its byte-order mark (UTF-8, UTF-16 of either order), else as
/// UTF-8 when all of it is, else in the page given.
std::string textOfFile(std::string_view bytes, const CodePage& other);

}  // namespace kova::strings
