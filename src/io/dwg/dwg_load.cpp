#include "io/dwg/dwg_load.hpp"

#include <spdlog/spdlog.h>

#include <fstream>
#include <new>

#include "engine/model/drawing.hpp"
#include "engine/model/sysvar.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/file_content.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/decoder.hpp"
#include "kdraw/database/dxf_file_output.hpp"
#include "strings/code_page.hpp"

namespace kova::io::dwg {

namespace {

/// What the database holds and its groups leave out: objects of classes that nobody describes, and whole sections.
void noteForeign(const kdraw::Database& database, dxf::DxfLoadReport& report) {
    const auto kind = [](const kdraw::Object& object, const std::string& className) {
        return className.empty() ? "type " + std::to_string(object.type) : className;
    };
    for (const auto& object : database.objects) {
        if (!object->isOpaque()) continue;
        if (const auto* entity = dynamic_cast<const kdraw::OpaqueEntity*>(object.get()))
            report.skipped.add(kind(*entity, entity->className));
        else if (const auto* other = dynamic_cast<const kdraw::OpaqueObject*>(object.get()))
            report.leftOut.add(kind(*other, other->className));
    }
    for (const std::string& section : database.foreignSections) report.leftOut.add("section " + section);
}

}  // namespace

void importBlocks(kdraw::DxfFileOutput& groups) {
    groups.writeTables();
    groups.writeBlocks();
}

void importEntities(kdraw::DxfFileOutput& groups) { groups.writeEntities(); }

DwgLoadResult importDatabase(kdraw::Database& database, engine::Drawing& drawing, Progress* progress) {
    DwgLoadResult result;
    dxf::DxfLoadReport report;
    noteForeign(database, report);
    // The groups of DXF are what both formats mean: one reader builds the entities of either.
    std::string groups;
    {
        kdraw::DxfFileOutput output(database);
        importBlocks(output);
        importEntities(output);
        groups = output.finish();
    }
    result.skippedObjects = database.skipped.size();
    const int codePage = database.codePage;
    // A million objects need not stand beside the drawing that is built from their groups.
    database = kdraw::Database();
    result.message = dxf::loadDxfText(groups, drawing, &report, progress);
    // Files of this program have the usual number, and the name among the drawing's own variables.
    const strings::CodePage page = strings::CodePage::ofDrawing(codePage);
    if (page.number() != strings::CodePage().number())
        engine::loadSysVar(drawing, "DWGCODEPAGE", engine::SysVarValue(std::string(page.name())));
    result.lines = std::move(report.lines);
    result.success = result.message.empty();
    if (result.skippedObjects > 0)
        result.lines.push_back("DWG: " + std::to_string(result.skippedObjects) +
                               " object(s) could not be decoded and were skipped.");
    return result;
}

DwgLoadResult loadDwgBytes(std::string_view bytes, engine::Drawing& drawing, Progress* progress) {
    DwgLoadResult result;
    try {
        kdraw::Database database;
        result.message = kdraw::decode(bytes, database);
        if (!result.message.empty()) return result;
        for (const std::string& note : database.notes) spdlog::warn("DWG: {}", note);
        return importDatabase(database, drawing, progress);
    } catch (const std::bad_alloc&) {
        result.message = "not enough memory";
    } catch (const std::length_error&) {
        result.message = "not enough memory";
    }
    result.success = false;
    return result;
}

DwgLoadResult loadDwg(const std::string& path, engine::Drawing& drawing, Progress* progress) {
    FileContent file;
    DwgLoadResult result;
    result.message = file.open(path);
    if (!result.message.empty()) return result;
    return loadDwgBytes(file.view(), drawing, progress);
}

bool isOlderThanR2007(const std::string& path) {
    char bytes[6] = {};
    std::ifstream file(path, std::ios::binary);
    if (!file.read(bytes, sizeof bytes)) return false;
    const std::string_view tag(bytes, sizeof bytes);
    if (tag.starts_with("AC10")) return tag < "AC1021";
    return tag.starts_with("AC1.") || tag.starts_with("AC2.") || tag.starts_with("MC0.");
}

}  // namespace kova::io::dwg
