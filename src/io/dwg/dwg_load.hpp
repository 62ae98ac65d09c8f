#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kdraw {
class Database;
}
namespace kova::engine {
class Drawing;
}

namespace kova::io::dwg {

/// What an import gives.
struct DwgLoadResult {
    bool success = false;
    std::string message;             ///< of a failure
    std::size_t skippedObjects = 0;  ///< records that did not decode
    std::vector<std::string> lines;  ///< what the user is told besides
};

/// Fills a new drawing from a database: tables, blocks, entities, objects; relative paths of
/// external references count from `folder`. After a failure the drawing holds a part and
/// should be thrown away.
DwgLoadResult importDatabase(kdraw::Database& database, engine::Drawing& drawing, const std::string& folder = {});

/// Reads a DWG file into a new drawing.
DwgLoadResult loadDwg(const std::string& path, engine::Drawing& drawing);
/// The same from memory.
DwgLoadResult loadDwgBytes(std::string_view bytes, engine::Drawing& drawing, const std::string& folder = {});

/// True when the first letters of a file are those of a DWG file of a version before R2007.
bool isOlderThanR2007(const std::string& path);

}  // namespace kova::io::dwg
