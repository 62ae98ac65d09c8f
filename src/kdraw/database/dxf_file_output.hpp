#pragma once

#include <memory>
#include <string>

namespace kdraw {

class Database;

/// A database as the text of a DXF file of the newest version, part by part: each is called once, in this order.
/// Objects of unknown classes are left out.
class DxfFileOutput {
public:
    explicit DxfFileOutput(Database& database);
    ~DxfFileOutput();

    void writeTables();    ///< header variables, classes, tables
    void writeBlocks();    ///< blocks with what they hold, and the layouts beside the active one
    void writeEntities();  ///< model space and the active layout
    std::string finish();  ///< objects, modeller data; gives the whole text

private:
    class Sections;
    std::unique_ptr<Sections> sections_;
};

/// All parts at once.
std::string databaseToDxf(Database& database);

}  // namespace kdraw
