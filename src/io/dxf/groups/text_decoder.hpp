#pragma once

#include <string>
#include <string_view>

#include "engine/model/name.hpp"
#include "strings/code_page.hpp"

namespace kova::io::dxf {

/// Turns the texts of a DXF file into UTF-8: code page, caret notation, \U+XXXX and \M+nXXXX.
class TextDecoder {
public:
    /// The encoding of texts that are not valid UTF-8: a $DWGCODEPAGE. Unknown names count as ANSI_1252.
    void setCodePage(std::string_view name);
    /// Files from AC1021 on are in UTF-8 whatever the code page says.
    void setUtf8(bool utf8) { utf8_ = utf8; }

    std::string decode(std::string_view raw) const;
    /// A table record's name: blanks at the ends do not count.
    engine::Name name(std::string_view raw) const;

private:
    bool utf8_ = false;
    strings::CodePage page_;
    // The name of the last call: entities that follow each other are mostly on one layer.
    mutable std::string lastRaw_;
    mutable engine::Name lastName_;
};

}  // namespace kova::io::dxf
