#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kova::io {

/// What binary DXF files begin with; the reader wants the 22 bytes with the line's end and two more behind it.
inline constexpr std::string_view kBinaryDxfMark = "AutoCAD Binary DXF";

/// The formats that a drawing file may have.
enum class FileKind : std::uint8_t { Native, Dxf, Dwg };

/// The kind that the extension names, without regard to case: ".dxf", ".dwg", anything else native.
FileKind kindByExtension(std::string_view path);

/// The kind that the first bytes of a file show. Behind an optional byte-order mark and white space, "{" means the
/// native file and a first line of digits ended by a line break (a group code) means DXF; so does the mark of binary
/// DXF at the very start; else native, whose reader reports what is wrong. Only the first 63 bytes count.
FileKind kindByContent(std::string_view head);

/// How a file is to be opened: ".dxf" and ".dwg" by their extension, every other (drawings, templates, backups,
/// autosaves) by its content. A file that cannot be read counts as native.
FileKind recognise(const std::string& path);

}  // namespace kova::io
