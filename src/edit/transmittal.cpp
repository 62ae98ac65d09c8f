#include "edit/transmittal.hpp"

#include <filesystem>
#include <set>

#include "engine/entities/image.hpp"
#include "engine/symbols/external_reference.hpp"

namespace kova::cmd {

namespace fs = std::filesystem;

namespace {

class Collector {
public:
    explicit Collector(const engine::Drawing& drawing) : drawing_(drawing) {}

    void add(const char* kind, const std::string& named) {
        if (named.empty() || !seen_.emplace(kind, named).second) return;
        files_.push_back({kind, named, engine::findReferencedFile(named, drawing_.fileName)});
    }
    void images(const engine::EntityList& list) {
        for (const engine::Entity& entity : list)
            if (entity.type() == engine::EntityType::Image)
                add("Image", static_cast<const engine::ImageEntity&>(entity).filePath);
    }
    std::vector<NeededFile> take() { return std::move(files_); }

private:
    const engine::Drawing& drawing_;
    std::set<std::pair<std::string, std::string>> seen_;
    std::vector<NeededFile> files_;
};

}  // namespace

std::vector<NeededFile> neededFiles(const engine::Drawing& drawing) {
    Collector all(drawing);
    for (const auto& block : drawing.blocks())
        if (block->xrefType != engine::XrefType::None) all.add("Xref", block->xrefPath);
    all.images(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) all.images(layout->entities);
    for (const auto& block : drawing.blocks()) all.images(block->entities);
    for (const std::string& file : drawing.shapeFiles) all.add("Shape file", file);
    for (const engine::TextStyle& style : drawing.textStyles) {
        all.add("Font", style.fontFile.str());
        all.add("Font", style.bigFontFile.str());
    }
    for (const auto& layout : drawing.layouts()) all.add("Plot style table", layout->pageSetup.plotStyleTable);
    return all.take();
}

std::vector<std::string> copyFiles(const std::vector<NeededFile>& files, const std::string& folder) {
    std::vector<std::string> lines;
    std::set<std::string> sources;
    for (const NeededFile& file : files) {
        if (file.found.empty() || !sources.insert(file.found).second) continue;
        const fs::path source(file.found);
        fs::path target = fs::path(folder) / source.filename();
        std::error_code error;
        for (int number = 1; fs::exists(target, error) && !fs::equivalent(source, target, error) && number < 1000;
             ++number)
            target = fs::path(folder) /
                     (source.stem().string() + "-" + std::to_string(number) + source.extension().string());
        if (fs::equivalent(source, target, error)) continue;
        fs::copy_file(source, target, error);
        lines.push_back(error ? "Could not copy " + file.found + ": " + error.message() : "Copied: " + target.string());
    }
    return lines;
}

}  // namespace kova::cmd
