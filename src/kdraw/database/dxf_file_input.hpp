#pragma once

#include <string>
#include <string_view>

namespace kdraw {

class Database;

/// Reads the text of a DXF file of the newest version, as this program writes it, into an empty database. Gives an error
/// text, empty on success. Records of kinds that the library does not know are counted in Database::skipped.
std::string databaseFromDxf(std::string_view text, Database& database);

}  // namespace kdraw
