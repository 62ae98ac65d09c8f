#pragma once

#include <cstddef>
#include <string>

#include "io/left_out.hpp"
#include "kdraw/fields/version.hpp"

namespace kova::engine {
class Drawing;
}

namespace kova::io {
class Progress;
class Save;
}  // namespace kova::io

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
/// False when the setting's text asks for a version that is not written. None at all asks for the newest.
bool isWrittenVersion(std::string_view setting);
/// The versions that are written, as a message names them.
inline constexpr const char* kWrittenVersions = "2010, 2013 and 2018";

/// Saves a drawing as DWG, in a save that is not open yet, by way of an intermediate DXF file in the temporary folder,
/// which only its owner may read. It loses its name at once, unless the environment variable KOVA_DWG_EXPORT_KEEP_DXF is
/// set. Error text, empty on success; after a failure an older file of that name stands as it was.
std::string saveDwg(const engine::Drawing& drawing, Save& save, std::string_view setting,
                    DwgSaveReport* report = nullptr, Progress* progress = nullptr);
std::string saveDwg(const engine::Drawing& drawing, const std::string& path, std::string_view setting,
                    DwgSaveReport* report = nullptr, Progress* progress = nullptr);

}  // namespace kova::io::dwg
