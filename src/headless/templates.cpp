#include "headless/templates.hpp"

#include <QCoreApplication>
#include <QStandardPaths>
#include <filesystem>

#include "engine/model/name.hpp"
#include "engine/model/sysvar.hpp"
#include "headless/files.hpp"

namespace kova::headless {

namespace fs = std::filesystem;

namespace {

struct StandardTemplate {
    std::string_view file;
    std::string_view shortName;
    engine::UnitSystem units;
    std::string_view paper;
    double paperWidth;
    double paperHeight;
};

constexpr StandardTemplate kTemplates[] = {
    {"acad.dwt", "imperial", engine::UnitSystem::Imperial, "Letter", 279.4, 215.9},
    {"acadiso.dwt", "metric", engine::UnitSystem::Metric, "ISO A3", 420.0, 297.0},
    {"acadiso-a4.dwt", "metric-a4", engine::UnitSystem::Metric, "ISO A4", 297.0, 210.0},
};

constexpr const char* kDateVariables[] = {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE"};

void applyStandard(const StandardTemplate& standard, engine::Drawing& drawing) {
    engine::applyStartingValues(drawing, standard.units);
    drawing.layers.ensure(engine::commonNames().defpoints);
    for (const auto& layout : drawing.layouts()) {
        layout->pageSetup.paperSizeName = standard.paper;
        layout->pageSetup.paperWidth = standard.paperWidth;
        layout->pageSetup.paperHeight = standard.paperHeight;
    }
}

/// The file in a template directory whose name equals `file` without regard to case; empty: none.
std::string findInDirectories(const std::string& file) {
    for (const std::string& directory : templateDirectories()) {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(directory, error))
            if (engine::equalNoCase(entry.path().filename().string(), file)) return entry.path().string();
    }
    return {};
}

}  // namespace

std::unique_ptr<engine::Drawing> freshDrawing() { return std::make_unique<engine::Drawing>(); }

std::vector<std::string> templateDirectories() {
    std::vector<std::string> all;
    const auto add = [&](const fs::path& directory) {
        std::error_code error;
        if (fs::is_directory(directory, error)) all.push_back(directory.string());
    };
    if (QCoreApplication::instance() != nullptr) {
        const fs::path program = QCoreApplication::applicationDirPath().toStdString();
        add(program / "templates");
        add(program / ".." / "share" / "kovacad" / "templates");
    }
    for (const QString& location : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        add(fs::path(location.toStdString()) / "kovacad" / "templates");
    return all;
}

std::string resolveTemplateName(const std::string& name) {
    for (const StandardTemplate& standard : kTemplates) {
        const std::string_view stem = standard.file.substr(0, standard.file.size() - 4);
        if (name == standard.shortName || name == stem) return std::string(standard.file);
    }
    return name;
}

std::string loadTemplate(const std::string& name, engine::Drawing& drawing, std::vector<std::string>* lines) {
    const std::string resolved = resolveTemplateName(name);
    std::string path = findInDirectories(resolved);
    std::error_code error;
    if (path.empty()) {
        path = resolved;
        if (!fs::exists(path, error)) {
            for (const StandardTemplate& standard : kTemplates)
                if (engine::equalNoCase(standard.file, resolved)) {
                    applyStandard(standard, drawing);
                    return {};
                }
            return "Template not found: " + name;
        }
    }
    // A drawing made from a template is as old as a fresh one, not as old as the template.
    const auto fresh = drawing.realVariables;
    OpenReport report;
    const std::string reason = openDrawing(path, drawing, report);
    if (!reason.empty()) return "Could not load the template: " + reason;
    if (lines != nullptr) *lines = report.lines;
    for (const char* date : kDateVariables)
        if (const auto it = fresh.find(date); it != fresh.end()) drawing.realVariables[date] = it->second;
    drawing.realVariables.erase("TDEDITED");
    if (drawing.realVariables.count("TDUSRTIMER") != 0) drawing.realVariables["TDUSRTIMER"] = 0.0;
    return {};
}

}  // namespace kova::headless
