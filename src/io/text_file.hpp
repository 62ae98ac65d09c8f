#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/model/drawing.hpp"

namespace kova::cmd {

/// The code page of text files that go with a drawing: its DWGCODEPAGE.
std::string codePageOf(const engine::Drawing& drawing);

/// The text of a file that a command reads (script, linetype or alias file, LISP) as UTF-8: by its byte-order mark
/// (UTF-8, UTF-16), else as UTF-8 when all of it is, else in the code page of that name, ANSI_1252 when it is empty or
/// not known. Nothing when the path names no readable file or one above the limit of 256 MiB.
std::optional<std::string> readTextFile(const std::string& path, std::string_view codePage = {});
/// The same of bytes at hand.
std::string decodedText(std::string_view bytes, std::string_view codePage = {});

}  // namespace kova::cmd
