#include "io/dwg/dwg_save.hpp"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "io/atomic_file.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/file_content.hpp"
#include "kdraw/database.hpp"
#include "kdraw/dxf/dxf_file_input.hpp"
#include "kdraw/encoder.hpp"

namespace kova::io::dwg {

namespace fs = std::filesystem;

namespace {

/// A name that no other export, of this process or another one, uses at the same time.
fs::path intermediateName() {
    static std::atomic<unsigned> serial{0};
    std::error_code error;
    fs::path folder = fs::temp_directory_path(error);
    if (error) folder = "/tmp";
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return folder / ("kovacad_dwg_" + std::to_string(::getpid()) + "_" + std::to_string(now) + "_" +
                     std::to_string(++serial) + ".dxf");
}

/// Deletes the intermediate file at the end, unless it is to be kept.
struct Intermediate {
    fs::path path = intermediateName();
    ~Intermediate() {
        if (std::getenv("KOVA_DWG_EXPORT_KEEP_DXF") != nullptr) return;
        std::error_code error;
        fs::remove(path, error);
    }
};

/// Reads the intermediate file and encodes it; an error text with what failed in front.
std::string convert(const fs::path& dxf, kdraw::Version version, std::string& out, DwgSaveReport& report) {
    constexpr const char* kUnread = "DWG export: reading the intermediate DXF failed: ";
    kdraw::Database database;
    {
        FileContent file;
        if (const std::string error = file.open(dxf.string()); !error.empty()) return kUnread + error;
        if (const std::string error = kdraw::databaseFromDxf(file.view(), database); !error.empty())
            return kUnread + error;
    }
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

std::string saveDwg(const engine::Drawing& drawing, const std::string& path, std::string_view setting,
                    DwgSaveReport* report, Progress* progress) {
    DwgSaveReport own;
    DwgSaveReport& result = report != nullptr ? *report : own;
    result = {};
    const kdraw::Version version = versionOfSetting(setting);
    const Intermediate intermediate;
    dxf::DxfSaveReport notes;
    if (const std::string error = dxf::saveDxfForDwg(drawing, intermediate.path.string(), &notes, progress);
        !error.empty())
        return "DWG export: writing the intermediate DXF failed: " + error;
    result.total = notes.total;
    result.dropped = notes.dropped;
    result.replacedNumbers = notes.replacedNumbers;
    std::string bytes;
    try {
        if (const std::string error = convert(intermediate.path, version, bytes, result); !error.empty())
            return error;
    } catch (const std::bad_alloc&) {
        return "DWG export failed: not enough memory";
    }
    AtomicFile file;
    if (!file.open(path).empty()) return "DWG export failed: cannot open file for writing: " + path;
    if (!file.write(bytes) || !file.commit().empty()) return "DWG export failed: write failed: " + path;
    return {};
}

}  // namespace kova::io::dwg
