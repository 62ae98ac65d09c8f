#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "io/left_out.hpp"

namespace kova::engine {
class Drawing;
}

namespace kova::io {
class Progress;
}

namespace kova::io::dxf {

/// Larger files are refused before they are opened.
inline constexpr std::uint64_t kMaxDxfFileSize = 268435456;

/// What a load has to tell besides an error.
struct DxfLoadReport {
    /// Entities that could not be read, by the name of their record.
    LeftOut skipped;
    /// What else the file holds and the drawing does not: objects, table records, settings.
    LeftOut leftOut;
    /// What the user is told, a line each: what could not be read, and where the file is damaged.
    std::vector<std::string> lines;
};

/// Fills a new drawing from a DXF file: ASCII or binary, from release 9 on. What it refers to is left out. Error text,
/// empty on success; after a failure the drawing holds a part of the file and should be thrown away.
std::string loadDxf(const std::string& path, engine::Drawing& drawing, DxfLoadReport* report = nullptr,
                    Progress* progress = nullptr);

/// The same from memory.
std::string loadDxfText(std::string_view text, engine::Drawing& drawing, DxfLoadReport* report = nullptr,
                        Progress* progress = nullptr);

}  // namespace kova::io::dxf
