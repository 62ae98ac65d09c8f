#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kova::engine {
class Drawing;
}

namespace kova::io {
class ByteSink;
class Progress;
class Save;
}  // namespace kova::io

namespace kova::io::dxf {

/// What a save had to leave out or change.
struct DxfSaveReport {
    std::size_t total = 0;            ///< entities of the drawing, those in blocks and layouts included
    std::size_t dropped = 0;          ///< could not be written: degenerate (no vertices, no size, not finite)
    std::size_t droppedSat = 0;       ///< solids held only as modeller text, which this version of DXF cannot hold
    std::size_t replacedNumbers = 0;  ///< infinite numbers and such that are none, written as 0
    std::uint64_t size = 0;           ///< of the file; one above kMaxDxfFileSize is written, and refused by the reader
};

/// Saves a drawing as an AC1027 text DXF file, in a save that is not open yet. Error text ("Failed to open file for
/// writing: ", "Write error on file: " and the path), empty on success; after a failure an older file of that name
/// stands as it was.
std::string saveDxf(const engine::Drawing& drawing, Save& save, DxfSaveReport* report = nullptr,
                    Progress* progress = nullptr);
std::string saveDxf(const engine::Drawing& drawing, const std::string& path, DxfSaveReport* report = nullptr,
                    Progress* progress = nullptr);

/// Writes the intermediate form of a DWG export: what DXF can say and DWG cannot stands in the program's own data.
/// False when the sink did not take it all.
bool writeDxfForDwg(const engine::Drawing& drawing, ByteSink& sink, DxfSaveReport* report = nullptr,
                    Progress* progress = nullptr);

/// The same to memory.
std::string dxfText(const engine::Drawing& drawing, DxfSaveReport* report = nullptr);

}  // namespace kova::io::dxf
