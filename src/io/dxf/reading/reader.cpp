#include "io/dxf/reading/reader.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <new>

#include "engine/libraries/standard_records.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/file_content.hpp"

namespace kova::io::dxf {

using engine::Name;

Reader::Reader(std::string_view text, engine::Drawing& drawing, DxfLoadReport& report, Progress* progress)
    : drawing_(drawing), report_(report), reader_(text), progress_(progress) {}

void Reader::skipSection() {
    while (reader_.next(record_)) {
        if (!endsSection(record_)) continue;
        if (record_.type != "ENDSEC") reader_.unread();
        return;
    }
}

void Reader::readSections() {
    // The layouts of the new drawing give way to those of the file.
    while (!drawing_.layouts().empty()) drawing_.takeLayout(drawing_.layouts().back()->name);
    while (reader_.next(record_)) {
        if (record_.type == "EOF") {
            complete_ = true;
            return;
        }
        if (record_.type != "SECTION") continue;
        const Tag* title = record_.find(2);
        const std::string section = title != nullptr ? engine::upperCase(title->trimmed()) : std::string();
        if (section == "HEADER")
            readHeader(record_);
        else if (section == "TABLES")
            readTables();
        else if (section == "BLOCKS")
            readBlocks();
        else if (section == "ENTITIES")
            readEntities();
        else if (section == "OBJECTS")
            indexObjects();
        else if (section == "ACDSDATA")
            readDataStorage();
        else {
            // Classes follow from the objects, the picture of the drawing from the drawing.
            if (section != "CLASSES" && section != "THUMBNAILIMAGE") leaveOut("section " + section);
            skipSection();
        }
    }
}

/// The records that every drawing has, and those that entities name.
void Reader::ensureRecords() {
    // A drawing that this program wrote has the layers that it had.
    engine::ensureStandardRecords(drawing_, own_ ? std::span<const Name>() : std::span<const Name>(usedLayers_));
    if (std::find(drawing_.appIds.begin(), drawing_.appIds.end(), Name("ACAD")) == drawing_.appIds.end() && !own_)
        drawing_.appIds.insert(drawing_.appIds.begin(), Name("ACAD"));
}

void Reader::finish() {
    settleBodies();
    readObjects();
    settleViewports();
    settleStyles();
    settleExtensions();
    settleRecordExtensions();
    settleImages();
    joinColumns();
    settleDrawOrder();
    // Layouts that no object names, from files of releases without such objects.
    int number = 1;
    for (const auto& [block, layout] : papers_) {
        if (!layout->name.view().starts_with('\x01')) continue;
        while (number < 100000 && !drawing_.renameLayout(layout->name, Name("Layout" + std::to_string(number))))
            ++number;
    }
    if (own_) dropPictures();
    if (drawing_.layouts().empty() && !own_) drawing_.addLayout(Name("Layout1"));
    for (const auto& [block, layout] : papers_)
        if (block == "*Paper_Space") drawing_.activeLayoutName = layout->name;
    if (drawing_.activeLayout() == nullptr && !drawing_.layouts().empty())
        drawing_.activeLayoutName = drawing_.layouts().front()->name;
    drawing_.nextHandle = std::max({drawing_.nextHandle, seed_ < kMaxHandle ? seed_ : 0, highestHandle_ + 1});
    applyHeaderDimensions();
    const bool ownRecord = readDrawingRecord(dictionaryEntry(rootDictionary_, kDrawingKey));
    // The header comes last: another program may have set its variables and knows nothing of the record.
    applyHeader(ownRecord);
    // Again, since other programs change what stands there and not what stands in the record.
    readVariables(dictionaryEntry(rootDictionary_, "AcDbVariableDictionary"));
    dropAdditions();
    ensureRecords();
    if (ownNextHandle_ != 0) drawing_.nextHandle = ownNextHandle_;
    ++drawing_.styleRevision;
    noteUnreadObjects();
}

void Reader::tellSkipped() {
    tellLeftOut(report_.skipped, report_.leftOut, report_.lines);
    TagReader& tags = reader_.tags();
    if (tags.damage() > 0)
        report_.lines.push_back("The file is damaged at line " + std::to_string(tags.lineAt(tags.firstDamage())) +
                                "; what could be read was kept.");
    else if (!complete_)
        report_.lines.push_back("The file ends without its end mark; what could be read was kept.");
}

std::string Reader::run() {
    readSections();
    finish();
    tellSkipped();
    return {};
}

namespace {

/// True when the bytes may be ASCII DXF: the first line that is not blank holds a group code.
bool looksLikeDxf(std::string_view text) {
    TagReader tags(text.substr(0, 65536));
    Tag tag;
    return tags.next(tag) && tags.damage() == 0;
}

std::string load(std::string_view bytes, engine::Drawing& drawing, DxfLoadReport* report, Progress* progress) {
    DxfLoadReport unused;
    DxfLoadReport& out = report != nullptr ? *report : unused;
    try {
        std::string converted;
        std::string_view text = bytes;
        if (isBinaryDxf(bytes)) {
            const std::string problem = binaryToText(bytes, converted);
            if (!problem.empty())
                out.lines.push_back("The file is damaged: " + problem + "; what could be read was kept.");
            text = converted;
        }
        if (!looksLikeDxf(text)) return "DXF read failed: not a DXF file (no group code at line 1)";
        return Reader(text, drawing, out, progress).run();
    } catch (const std::exception& problem) {
        return std::string("DXF read failed: ") + problem.what();
    } catch (...) {
        return "DXF read failed: unrecognised error";
    }
}

}  // namespace

std::string loadDxfText(std::string_view text, engine::Drawing& drawing, DxfLoadReport* report, Progress* progress) {
    return load(text, drawing, report, progress);
}

std::string loadDxf(const std::string& path, engine::Drawing& drawing, DxfLoadReport* report, Progress* progress) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size > kMaxDxfFileSize) return "DXF file rejected: size exceeds the 256 MB safety limit.";
    FileContent file;
    if (!file.open(path).empty()) return "Failed to open file: " + path;
    return load(file.view(), drawing, report, progress);
}

}  // namespace kova::io::dxf
