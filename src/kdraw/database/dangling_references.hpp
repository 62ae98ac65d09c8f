#pragma once

namespace kdraw {

class Database;

/// Makes references null whose object is not in the database or would not be written (records of unknown classes), and
/// takes them out of lists. Table records need the database's version for what they hold.
void dropDanglingReferences(Database& database);

}  // namespace kdraw
