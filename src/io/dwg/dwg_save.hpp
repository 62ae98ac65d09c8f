#pragma once

#include <cstddef>
#include <string>

#include "io/left_out.hpp"
#include "kdraw/version.hpp"

namespace kova::engine {
class Drawing;
}

namespace kova::io {
class Progress;
}

namespace kova::io::dwg {

/// What a save had to leave out.
struct DwgSaveReport {
    std::size_t total = 0;            ///< entities of the drawing, those in blocks and layouts included
    std::size_t dropped = 0;          ///< could not be written, solids that exist only as modeller text included
    LeftOut leftOut;                  ///< records besides entities that DWG writing has no form for, by their names
    std::size_t replacedNumbers = 0;  ///< infinite numbers and such that are none, written as 0
};

/// The version that a setting's text asks for: "2010" anywhere in it, else "2013", else R2018.
kdraw::Version versionOfSetting(std::string_view setting);

/// Saves a drawing as DWG by way of an intermediate DXF file in the temporary folder, which stays there when the
/// environment variable KOVA_DWG_EXPORT_KEEP_DXF is set. Error text, empty on success; after a failure an older file of
/// that name stands as it was.
std::string saveDwg(const engine::Drawing& drawing, const std::string& path, std::string_view setting,
                    DwgSaveReport* report = nullptr, Progress* progress = nullptr);

}  // namespace kova::io::dwg
