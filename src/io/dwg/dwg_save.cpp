#include "io/dwg/dwg_save.hpp"

#include <cstdlib>
#include <new>

#include "io/dxf/dxf_save.hpp"
#include "io/save.hpp"
#include "io/scratch_file.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/dxf_file_input.hpp"
#include "kdraw/database/encoder.hpp"

namespace kova::io::dwg {

namespace {

constexpr const char* kUnread = "DWG export: reading the intermediate DXF failed: ";

/// Reads the intermediate file and encodes it; an error text with what failed in front.
std::string convert(std::string_view dxf, kdraw::Version version, std::string& out, DwgSaveReport& report) {
    kdraw::Database database;
    if (const std::string error = kdraw::databaseFromDxf(dxf, database); !error.empty()) return kUnread + error;
    for (const auto& skipped : database.skipped) {
        if (skipped.entity)
            ++report.dropped;
        else
            report.leftOut.add(skipped.name);
    }
    database.version = version;
    if (const std::string error = kdraw::encode(database, out); !error.empty()) return "DWG export failed: " + error;
    return {};
}

}  // namespace

kdraw::Version versionOfSetting(std::string_view setting) {
    if (setting.find("2010") != std::string_view::npos) return kdraw::Version::R2010;
    if (setting.find("2013") != std::string_view::npos) return kdraw::Version::R2013;
    return kdraw::Version::R2018;
}

bool isWrittenVersion(std::string_view setting) {
    if (setting.empty()) return true;
    for (const char* year : {"2010", "2013", "2018"})
        if (setting.find(year) != std::string_view::npos) return true;
    return false;
}

std::string saveDwg(const engine::Drawing& drawing, Save& save, std::string_view setting, DwgSaveReport* report,
                    Progress* progress) {
    DwgSaveReport own;
    DwgSaveReport& result = report != nullptr ? *report : own;
    result = {};
    const kdraw::Version version = versionOfSetting(setting);
    std::string bytes;
    {
        // It lives no longer than it takes to read it: what it needs of the disk is free again for the file itself.
        ScratchFile intermediate;
        dxf::DxfSaveReport notes;
        const bool keep = std::getenv("KOVA_DWG_EXPORT_KEEP_DXF") != nullptr;
        constexpr const char* kUnwritten = "DWG export: writing the intermediate DXF failed: ";
        if (!intermediate.create("kovacad_dwg_", ".dxf", keep))
            return std::string(kUnwritten) + "Failed to open file for writing: " + intermediate.path();
        if (!dxf::writeDxfForDwg(drawing, intermediate, &notes, progress))
            return std::string(kUnwritten) + "Write error on file: " + intermediate.path();
        result.total = notes.total;
        result.dropped = notes.dropped;
        result.replacedNumbers = notes.replacedNumbers;
        if (!intermediate.map()) return kUnread + ("Cannot open file: " + intermediate.path());
        try {
            if (std::string error = convert(intermediate.view(), version, bytes, result); !error.empty())
                return error;
        } catch (const std::bad_alloc&) {
            return "DWG export failed: not enough memory";
        }
    }
    if (!save.open().empty()) return "DWG export failed: cannot open file for writing: " + save.path();
    if (!save.bytes().write(bytes.data(), bytes.size()) || !save.commit().empty())
        return "DWG export failed: write failed: " + save.path();
    return {};
}

std::string saveDwg(const engine::Drawing& drawing, const std::string& path, std::string_view setting,
                    DwgSaveReport* report, Progress* progress) {
    Save save(path);
    return saveDwg(drawing, save, setting, report, progress);
}

}  // namespace kova::io::dwg
