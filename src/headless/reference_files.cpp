#include "headless/reference_files.hpp"

#include <algorithm>
#include <filesystem>

#include "engine/symbols/external_reference.hpp"
#include "io/content.hpp"

namespace kova::headless {

namespace fs = std::filesystem;

using engine::Block;
using engine::Drawing;
using engine::XrefStatus;
using engine::XrefType;

namespace {

constexpr std::size_t kMaxDepth = 32;
/// Files read for one host: references that fan out at every level have no end in sight.
constexpr std::size_t kMaxFiles = 1000;
constexpr std::size_t kMaxLines = 100;

std::string canonical(const std::string& path) {
    std::error_code error;
    const fs::path full = fs::weakly_canonical(path, error);
    return error ? path : full.string();
}

bool isDwg(const std::string& path) { return io::kindByExtension(path) == io::FileKind::Dwg; }

}  // namespace

void ReferenceLoader::tell(std::string line) {
    if (lines_.size() < kMaxLines) lines_.push_back(std::move(line));
}

std::string ReferenceLoader::readFile(const std::string& file, bool nestedInDwg, Drawing& drawing) {
    const auto refuse = [&](const std::string& reason) {
        if (!isDwg(file)) return "Error loading xref: " + file + ": " + reason;
        return (nestedInDwg ? "Could not open nested DWG xref (" : "Could not open DWG xref (") + file + "): " + reason;
    };
    const std::string full = canonical(file);
    if (std::find(chain_.begin(), chain_.end(), full) != chain_.end()) return refuse("circular reference");
    if (chain_.size() > kMaxDepth) return refuse("references are nested too deeply");
    if (++count_ > kMaxFiles) return refuse("too many references");
    std::vector<std::string> lines;
    if (const std::string reason = reader_(file, drawing, lines); !reason.empty()) return refuse(reason);
    for (const std::string& line : lines) tell("Xref " + file + ": " + line);
    chain_.push_back(full);
    load(drawing, file, true);
    chain_.pop_back();
    return {};
}

void ReferenceLoader::load(Drawing& drawing, const std::string& file, bool nested) {
    // Blocks are added meanwhile, and stubs of what comes with a reference give way to it.
    std::vector<Block*> references;
    for (const auto& block : drawing.blocks())
        if (block->xrefType != XrefType::None && block->xrefStatus != XrefStatus::Unloaded &&
            engine::referenceOf(drawing, block->name) == nullptr)
            references.push_back(block.get());
    for (Block* reference : references) {
        if (nested && reference->xrefType == XrefType::Overlay) {
            reference->xrefStatus = XrefStatus::Unloaded;
            std::vector<std::unique_ptr<engine::Entity>> nothing;
            reference->entities.swapContents(nothing);
            continue;
        }
        const std::string found = findReferencedFile(reference->xrefPath, file);
        if (found.empty()) {
            reference->xrefStatus = XrefStatus::NotFound;
            tell("Xref not found: " + reference->xrefPath);
            continue;
        }
        Drawing source;
        if (std::string error = readFile(found, nested && isDwg(file), source); !error.empty()) {
            reference->xrefStatus = XrefStatus::Unresolved;
            tell(std::move(error));
            continue;
        }
        engine::showReference(drawing, *reference, engine::takeReferenceContents(source, reference->name));
    }
}

void ReferenceLoader::loadAll(Drawing& host, const std::string& hostFile) {
    chain_ = {canonical(hostFile)};
    load(host, hostFile, false);
    tellAsWanted(host);
}

/// XREFNOTIFY: 2 tells every reference that is missing or cannot be read, 1 that there are some, 0 nothing.
void ReferenceLoader::tellAsWanted(const Drawing& host) {
    const std::int32_t wanted = engine::sysVarInt(host, "XREFNOTIFY", 2);
    if (wanted >= 2) return;
    lines_.clear();
    const auto missing = std::count_if(host.blocks().begin(), host.blocks().end(), [](const auto& block) {
        return block->xrefStatus == XrefStatus::NotFound || block->xrefStatus == XrefStatus::Unresolved;
    });
    if (wanted == 1 && missing > 0)
        tell(std::to_string(missing) + " external reference(s) could not be loaded. -XREF ? lists them.");
}

std::string ReferenceLoader::loadOne(const std::string& path, const std::string& hostFile, Drawing& drawing) {
    const std::string found = findReferencedFile(path, hostFile);
    if (found.empty()) return "File not found: " + path;
    chain_.clear();
    if (!hostFile.empty()) chain_.push_back(canonical(hostFile));
    return readFile(found, false, drawing);
}

}  // namespace kova::headless
