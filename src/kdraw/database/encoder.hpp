#pragma once

#include <string>

namespace kdraw {

class Database;

/// Writes a database as the bytes of a DWG file of its version (R2010, R2013, R2018). Adds what every drawing must hold
/// and this one lacks. Error text, empty on success.
std::string encode(Database& database, std::string& file);

}  // namespace kdraw
