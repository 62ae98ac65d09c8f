#pragma once

#include <string>
#include <string_view>

namespace kdraw {

class Database;

/// Fills an empty database from the bytes of a DWG file (R2000 to R2018). Error text, empty on success. Records that do
/// not decode are listed in Database::skipped.
std::string decode(std::string_view file, Database& database);

}  // namespace kdraw
