#pragma once

#include <string>
#include <vector>

#include "engine/model/drawing.hpp"

namespace kova::headless {

/// What opening a file has to tell besides an error.
struct OpenReport {
    std::vector<std::string> lines;
};
/// What saving a file has to tell besides an error.
struct SaveReport {
    std::vector<std::string> lines;
    bool replaced = false;  ///< an older file stood there
    std::string backup;     ///< as which it is kept; empty: it is not
};

/// Reads a drawing into a fresh one: .dxf and .dwg by extension, everything else by content, then what it refers to.
/// Error text, empty on success; on an error the drawing is to be thrown away.
std::string openDrawing(const std::string& path, engine::Drawing& drawing, OpenReport& report);

/// Reads the drawing that a reference of a host (its file; empty: none yet) names, with what that refers to.
std::string openReference(const std::string& path, const std::string& hostFile, engine::Drawing& drawing,
                          OpenReport& report);

/// Writes a drawing in the format of the path's extension; `dwgVersion` as in "R2018" for .dwg. A failed save leaves
/// an old file whole. An old file is kept beside it as .bak while ISAVEBAK is on.
std::string saveDrawing(const engine::Drawing& drawing, const std::string& path, const std::string& dwgVersion,
                        SaveReport& report);

}  // namespace kova::headless
