#include "headless/files.hpp"

#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "engine/model/name.hpp"
#include "engine/model/sysvar.hpp"
#include "headless/reference_files.hpp"
#include "headless/terminal_progress.hpp"
#include "io/content.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/native/native_file.hpp"
#include "io/save.hpp"

namespace kova::headless {

namespace fs = std::filesystem;

namespace {

/// An extension that promises another format than the one that is written.
void tellOddExtension(const std::string& path, const std::string& extension, SaveReport& report) {
    for (const char* native : {"", ".kvcad", ".dwt", ".bak", ".sv$"})
        if (extension == native) return;
    std::string line = path + " is a KovaCAD drawing: drawings are saved as .dwg, .dxf or .kvcad";
    if (const char* exporter = cmd::commands::exporterOf(extension); exporter != nullptr)
        line += std::string(", ") + exporter + " writes " + extension;
    report.lines.push_back(line + ".");
}

void tellReplaced(std::size_t count, SaveReport& report) {
    if (count > 0) report.lines.push_back(std::to_string(count) + " number(s) without a finite value were saved as 0.");
}

std::string saveAsDxf(const engine::Drawing& drawing, io::Save& save, SaveReport& report) {
    TerminalProgress progress("Saving", save.path());
    io::dxf::DxfSaveReport notes;
    std::string error = io::dxf::saveDxf(drawing, save, &notes, progress.watcher());
    if (!error.empty()) return error;
    if (notes.droppedSat > 0)
        report.lines.push_back(
            "DXF: " + std::to_string(notes.droppedSat) +
            " ACIS solid(s) held only as SAT text could not be written; save as .kvcad to keep them.");
    if (notes.dropped > notes.droppedSat)
        report.lines.push_back("DXF: " + std::to_string(notes.dropped - notes.droppedSat) + " of " +
                               std::to_string(notes.total) +
                               " entities could not be written (unsupported kind or degenerate geometry).");
    if (notes.size > io::dxf::kMaxDxfFileSize)
        report.lines.push_back("DXF: the file has " + std::to_string(notes.size >> 20) +
                               " MB, and none above 256 MB can be opened again here; save as .dwg or .kvcad as well.");
    tellReplaced(notes.replacedNumbers, report);
    return error;
}

std::string saveAsDwg(const engine::Drawing& drawing, io::Save& save, const std::string& version, SaveReport& report) {
    TerminalProgress progress("Saving", save.path());
    io::dwg::DwgSaveReport notes;
    std::string error = io::dwg::saveDwg(drawing, save, version, &notes, progress.watcher());
    if (!error.empty()) return error;
    if (!io::dwg::isWrittenVersion(version))
        report.lines.push_back("DWG " + version + " is not written, this is R2018. The versions written are " +
                               io::dwg::kWrittenVersions + ".");
    if (notes.dropped > 0)
        report.lines.push_back("DWG: " + std::to_string(notes.dropped) + " of " + std::to_string(notes.total) +
                               " entities could not be written (unsupported kind or degenerate geometry).");
    if (!notes.leftOut.empty())
        report.lines.push_back("DWG: not written, of kinds that are not known: " + notes.leftOut.list() + ".");
    tellReplaced(notes.replacedNumbers, report);
    return error;
}

std::string saveAsNative(const engine::Drawing& drawing, io::Save& save, SaveReport& report) {
    TerminalProgress progress("Saving", save.path());
    io::native::SaveNotes notes;
    std::string error = io::native::saveNative(drawing, save, &notes, progress.watcher());
    if (!error.empty()) return error;
    tellOddExtension(save.path(), engine::foldCase(fs::path(save.path()).extension().string()), report);
    tellReplaced(notes.replacedNumbers, report);
    return error;
}

std::string openDwg(const std::string& path, engine::Drawing& drawing, std::vector<std::string>& lines,
                    io::Progress* progress) {
    io::dwg::DwgLoadResult result = io::dwg::loadDwg(path, drawing, progress);
    lines = std::move(result.lines);
    if (result.success) return {};
    std::string error = "Could not open DWG (" + path + "): " + result.message;
    if (io::dwg::isOlderThanR2007(path))
        error += ". Older DWG versions (R13 / R14 / R2000) are not supported in this release; Save As R2007+ or DXF.";
    return error;
}

/// The file itself, without what it refers to.
std::string readAnyFormat(const std::string& path, engine::Drawing& drawing, std::vector<std::string>& lines) {
    TerminalProgress progress("Opening", path);
    switch (io::recognise(path)) {
        case io::FileKind::Dxf: {
            io::dxf::DxfLoadReport notes;
            std::string error = io::dxf::loadDxf(path, drawing, &notes, progress.watcher());
            lines = std::move(notes.lines);
            return error;
        }
        case io::FileKind::Dwg:
            return openDwg(path, drawing, lines, progress.watcher());
        case io::FileKind::Native:
            break;
    }
    io::native::LoadNotes notes;
    std::string error = io::native::loadNative(path, drawing, progress.watcher(), &notes);
    lines = std::move(notes.lines);
    return error;
}

/// A reason why a referenced file cannot be read, without what its reader puts in front of it for the host.
std::string readReferenced(const std::string& path, engine::Drawing& drawing, std::vector<std::string>& lines) {
    if (io::recognise(path) != io::FileKind::Dwg) return readAnyFormat(path, drawing, lines);
    TerminalProgress progress("Opening", path);
    io::dwg::DwgLoadResult result = io::dwg::loadDwg(path, drawing, progress.watcher());
    lines = std::move(result.lines);
    return result.success ? std::string() : result.message;
}

}  // namespace

std::string openDrawing(const std::string& path, engine::Drawing& drawing, OpenReport& report) {
    if (std::string error = readAnyFormat(path, drawing, report.lines); !error.empty()) return error;
    ReferenceLoader references(readReferenced);
    references.loadAll(drawing, path);
    report.lines.insert(report.lines.end(), references.lines().begin(), references.lines().end());
    return {};
}

std::string openReference(const std::string& path, const std::string& hostFile, engine::Drawing& drawing,
                          OpenReport& report) {
    ReferenceLoader references(readReferenced);
    std::string error = references.loadOne(path, hostFile, drawing);
    report.lines = std::move(references.lines());
    return error;
}

std::string saveDrawing(const engine::Drawing& drawing, const std::string& path, const std::string& dwgVersion,
                        SaveReport& report) {
    const bool keep = engine::sysVarInt(drawing, "ISAVEBAK", 1) != 0;
    io::Save save(path, keep ? io::Backup::Keep : io::Backup::None);
    const std::string extension = engine::foldCase(fs::path(path).extension().string());
    std::string error = extension == ".dxf"   ? saveAsDxf(drawing, save, report)
                        : extension == ".dwg" ? saveAsDwg(drawing, save, dwgVersion, report)
                                              : saveAsNative(drawing, save, report);
    if (!error.empty() && !save.backupPath().empty()) error += "; the old file is kept as " + save.backupPath();
    if (!error.empty()) return error;
    if (!save.backupTrouble().empty()) report.lines.push_back(save.backupTrouble());
    report.replaced = save.replaces();
    report.backup = save.backupPath();
    return {};
}

}  // namespace kova::headless
