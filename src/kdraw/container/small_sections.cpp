#include "kdraw/container/small_sections.hpp"

#include <algorithm>

#include "kdraw/container/bytes.hpp"

namespace kdraw {

namespace {

constexpr unsigned char previewMark[16] = {0x1F, 0x25, 0x6D, 0x07, 0xD4, 0x36, 0x28, 0x28,
                                           0x9D, 0x57, 0xCA, 0x3F, 0x9D, 0x44, 0x10, 0x2B};
constexpr std::size_t previewTable = sizeof previewMark + 4;
constexpr std::size_t previewEntrySize = 9;

/// A string in the form of these sections: the count of UTF-16 units with the ending zero, then the units.
void appendText(std::string& out, std::string_view ascii) {
    appendU16(out, static_cast<std::uint16_t>(ascii.size() + 1));
    for (const char c : ascii)
        appendU16(out, static_cast<unsigned char>(c) < 0x80 ? static_cast<unsigned char>(c) : '?');
    appendU16(out, 0);
}

void appendDate(std::string& out, std::uint32_t day, std::uint32_t ms) {
    appendU32(out, day);
    appendU32(out, ms);
}

/// Title, subject and so on, all empty, then the times.
std::string makeSummary(const FileFacts& facts) {
    std::string out;
    for (int i = 0; i < 8; ++i) appendText(out, {});
    appendDate(out, facts.editingDays, facts.editingMs);
    appendDate(out, facts.createdDay, facts.createdMs);
    appendDate(out, facts.updatedDay, facts.updatedMs);
    appendU16(out, 0);  // no properties of the user's own
    appendU64(out, 0);
    return out;
}

/// No picture.
std::string makePreview() {
    std::string out;
    for (const unsigned char byte : previewMark) out += static_cast<char>(byte);
    appendU32(out, 1);
    out += '\0';
    for (const unsigned char byte : previewMark) out += static_cast<char>(~byte);
    return out;
}

std::string makeApplication(const FileFacts& facts) {
    const std::string program = facts.program.substr(0, 200);
    const std::string version = facts.programVersion.substr(0, 200);
    std::string out;
    appendU32(out, 3);
    appendText(out, "AppInfoDataList");
    const std::string texts[] = {version, "Written by " + program,
                                 "<ProductInformation name=\"" + program + "\" build_version=\"" + version + "\"/>"};
    appendU32(out, static_cast<std::uint32_t>(std::size(texts)));
    for (const std::string& text : texts) {
        out.append(16, '\0');  // a checksum, which may be missing
        appendText(out, text);
    }
    return out;
}

std::string makeRevisions() {
    std::string out;
    for (const std::uint32_t word : {0, 0, 1, 0}) appendU32(out, word);
    return out;
}

std::string makeTemplate(const FileFacts& facts) {
    std::string out;
    appendText(out, {});
    appendU16(out, facts.metric ? 1 : 0);
    return out;
}

std::string makeFreeSpace(const FileFacts& facts) {
    std::string out;
    appendU64(out, 0);
    appendU64(out, facts.objectCount);
    appendDate(out, facts.updatedDay, facts.updatedMs);
    out += '\4';  // four pairs of numbers
    for (const std::uint64_t value : {0x32ull, 0x64ull, 0x200ull, 0xFFFF'FFFFull}) {
        appendU64(out, value);
        appendU64(out, 0);
    }
    return out;
}

std::string makeAuxHeader(const Container& container) {
    const FileFacts& facts = container.facts;
    const auto version = static_cast<std::uint16_t>(internalVersion(container.version));
    const auto appendVersion = [&](std::string& out) {
        appendU16(out, version);
        if (container.version >= Version::R2018)
            appendU32(out, static_cast<std::uint32_t>(writtenMaintenance(container)));
        else
            appendU16(out, static_cast<std::uint16_t>(writtenMaintenance(container)));
    };
    std::string out = "\xFF\x77\x01";
    appendVersion(out);
    appendU32(out, facts.saves);
    appendU32(out, 0xFFFF'FFFF);
    appendU16(out, static_cast<std::uint16_t>(std::min<std::uint32_t>(facts.saves, 0xFFFF)));
    appendU16(out, 0);
    appendU32(out, 0);
    appendVersion(out);
    appendVersion(out);
    for (const std::uint16_t value : {5, 0x893, 5, 0x893, 0, 1}) appendU16(out, value);
    for (int i = 0; i < 5; ++i) appendU32(out, 0);
    appendDate(out, facts.createdDay, facts.createdMs);
    appendDate(out, facts.updatedDay, facts.updatedMs);
    appendU32(out, facts.handSeed > 0x7FFF'FFFF ? 0xFFFF'FFFF : static_cast<std::uint32_t>(facts.handSeed));
    appendU32(out, 0);
    appendU16(out, 0);
    appendU16(out, static_cast<std::uint16_t>(std::min<std::uint32_t>(facts.saves, 0xFFFF)));
    for (int i = 0; i < 3; ++i) appendU32(out, 0);
    appendU32(out, facts.saves);
    for (int i = 0; i < 4; ++i) appendU32(out, 0);
    return out;
}

/// A length with the final zero, and as many bytes, or units of UTF-16 since R2007.
std::string takeText(ByteReader& bytes, Version version, const TextCodec& codec) {
    const std::size_t length = bytes.u16();
    if (version < Version::R2007) return codec.toUtf8(bytes.bytes(length));
    return utf8OfUtf16(bytes.bytes(length * 2));
}

}  // namespace

std::vector<SummaryProperty> readSummary(std::string_view section, Version version, const TextCodec& codec) {
    constexpr std::size_t kDates = 3 * 8;
    std::vector<SummaryProperty> properties;
    ByteReader bytes(section);
    const auto add = [&](const char* name, std::string text) {
        if (bytes.ok() && !text.empty()) properties.push_back({name, std::move(text)});
    };
    for (const char* name : {"TITLE", "SUBJECT", "AUTHOR", "KEYWORDS", "COMMENTS", "LASTSAVEDBY", "REVISIONNUMBER",
                             "HYPERLINKBASE"})
        add(name, takeText(bytes, version, codec));
    bytes.skip(kDates);
    for (std::size_t left = bytes.u16(); left > 0 && bytes.ok(); --left) {
        const std::string name = takeText(bytes, version, codec);
        add("CUSTOMPROPERTY", name + '=' + takeText(bytes, version, codec));
    }
    return properties;
}

std::string makeSmallSection(std::string_view name, const Container& container) {
    if (name == section::summary) return makeSummary(container.facts);
    if (name == section::preview) return makePreview();
    if (name == section::application) return makeApplication(container.facts);
    if (name == section::dependencies) return std::string(8, '\0');  // no kinds, no files
    if (name == section::revisions) return makeRevisions();
    if (name == section::freeSpace) return makeFreeSpace(container.facts);
    if (name == section::templateSettings) return makeTemplate(container.facts);
    if (name == section::auxHeader) return makeAuxHeader(container);
    return {};
}

int writtenMaintenance(const Container& container) {
    if (container.version >= Version::R2018) return container.maintenance == 0 ? 0 : 4;
    // Sizes of 64 bits, as they are written, go with releases above 3 only.
    if (container.maintenance > 3 && container.maintenance < 0x100) return container.maintenance;
    return container.version == Version::R2010 ? 0x6D : 0x7D;
}

void relocatePreview(std::string& bytes, std::uint64_t address) {
    if (!holds(bytes, previewTable, 1)) return;
    const std::size_t count = static_cast<unsigned char>(bytes[previewTable]);
    const std::size_t blobs = previewTable + 1 + count * previewEntrySize;
    if (count == 0 || !holds(bytes, 0, blobs)) return;
    std::uint32_t first = 0xFFFF'FFFF;
    const auto startOf = [&](std::size_t i) { return bytes.data() + previewTable + 1 + i * previewEntrySize + 1; };
    for (std::size_t i = 0; i < count; ++i) first = std::min(first, loadLittle<std::uint32_t>(startOf(i)));
    for (std::size_t i = 0; i < count; ++i)
        storeLittle(startOf(i),
                    static_cast<std::uint32_t>(loadLittle<std::uint32_t>(startOf(i)) - first + address + blobs));
}

}  // namespace kdraw
