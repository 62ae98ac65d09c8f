#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "engine/model/name.hpp"

class QStringDecoder;

namespace kova::io::dxf {

/// Turns the texts of a DXF file into UTF-8: code page, caret notation, \U+XXXX and \M+nXXXX.
class TextDecoder {
public:
    TextDecoder();
    ~TextDecoder();

    /// The encoding of texts that are not valid UTF-8: a $DWGCODEPAGE. Unknown names count as ANSI_1252.
    void setCodePage(std::string_view name);
    /// Files from AC1021 on are in UTF-8 whatever the code page says.
    void setUtf8(bool utf8) { utf8_ = utf8; }

    std::string decode(std::string_view raw) const;
    /// A table record's name: blanks at the ends do not count.
    engine::Name name(std::string_view raw) const;

private:
    std::string fromCodePage(std::string_view raw) const;

    bool utf8_ = false;
    bool johab_ = false;
    bool multibyte_ = false;  ///< characters of the code page take one or two bytes
    mutable std::unique_ptr<QStringDecoder> decoder_;
    // The name of the last call: entities that follow each other are mostly on one layer.
    mutable std::string lastRaw_;
    mutable engine::Name lastName_;
};

/// True for bytes that are well-formed UTF-8.
bool isUtf8(std::string_view text);
/// A code point as UTF-8 behind a text; surrogates and numbers beyond Unicode give U+FFFD.
void appendUtf8(std::string& text, std::uint32_t codePoint);

}  // namespace kova::io::dxf
