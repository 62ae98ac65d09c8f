#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kdraw {
class Database;
class DxfFileOutput;
}
namespace kova::engine {
class Drawing;
}

namespace kova::io {
class Progress;
}

namespace kova::io::dwg {

/// What an import gives.
struct DwgLoadResult {
    bool success = false;
    std::string message;             ///< of a failure
    std::size_t skippedObjects = 0;  ///< records that did not decode
    std::vector<std::string> lines;  ///< what the user is told besides
};

/// The first step of importDatabase: tables and block definitions, as the groups from which the drawing is built.
void importBlocks(kdraw::DxfFileOutput& groups);
/// The second one: what stands in model space and on the active sheet.
void importEntities(kdraw::DxfFileOutput& groups);

/// Fills a new drawing from a database, which is empty afterwards: tables, blocks, entities, objects. After a failure the
/// drawing holds a part and should be thrown away.
DwgLoadResult importDatabase(kdraw::Database& database, engine::Drawing& drawing, Progress* progress = nullptr);

/// Reads a DWG file into a new drawing.
DwgLoadResult loadDwg(const std::string& path, engine::Drawing& drawing, Progress* progress = nullptr);
/// The same from memory.
DwgLoadResult loadDwgBytes(std::string_view bytes, engine::Drawing& drawing, Progress* progress = nullptr);

/// True when the first letters of a file are those of a DWG file of a version before R2007.
bool isOlderThanR2007(const std::string& path);

}  // namespace kova::io::dwg
