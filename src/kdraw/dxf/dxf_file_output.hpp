#pragma once

#include <string>

namespace kdraw {

class Database;

/// The whole database as the text of a DXF file of the newest version. Objects of unknown classes are left out.
std::string databaseToDxf(Database& database);

}  // namespace kdraw
