#pragma once

#include <string>
#include <string_view>

namespace kova::engine {

/// Solid-modeller text as interchange files hold it: every printable character turned round in its range. What turns
/// into a caret is written as caret and blank.
std::string codedModelerText(std::string_view text);
/// The plain text again; appends to `text`.
void appendModelerText(std::string& text, std::string_view coded);

/// Bytes as hexadecimal digits in upper case.
std::string hexDigits(std::string_view bytes);
/// Appends the bytes of hexadecimal digits; other characters, and a last digit that stands alone, are passed over.
void appendHexBytes(std::string& bytes, std::string_view digits);

}  // namespace kova::engine
