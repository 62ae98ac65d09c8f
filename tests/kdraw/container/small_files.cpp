#include "small_files.hpp"

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"

namespace kdraw::testing {

namespace {

constexpr std::size_t objectSize = 20;
constexpr std::size_t objectCount = 30;

/// The object map when the objects begin at `first`.
std::string objectMap(std::uint64_t first) {
    std::vector<ObjectMapEntry> entries;
    for (std::size_t i = 0; i < objectCount; ++i) entries.push_back({0x10 + 3 * i, first + i * objectSize});
    return writeObjectMap(entries);
}

std::string objects() {
    std::string bytes;
    for (std::size_t i = 0; i < objectCount * objectSize; ++i)
        bytes += static_cast<char>(i % objectSize < 8 ? 0x40 + i % 7 : randomBytes()[i % 256]);
    return bytes;
}

/// A flat file with locators for the first three sections.
std::string file2000() {
    constexpr std::size_t headerSize = 0x15 + 4 + 3 * 9 + 2 + 16;
    const Container small = smallContainer(Version::R2000);
    std::string body = objects();
    std::string header = "AC1015";
    header.resize(0x15);
    header[0x13] = 30;
    appendU32(header, 3);
    const std::string parts[] = {small.find(section::header)->bytes, small.find(section::classes)->bytes,
                                 objectMap(headerSize)};
    for (std::size_t i = 0; i < 3; ++i) {
        header += static_cast<char>(i);
        appendU32(header, static_cast<std::uint32_t>(headerSize + body.size()));
        appendU32(header, static_cast<std::uint32_t>(parts[i].size()));
        body += parts[i];
    }
    appendU16(header, crc16(crcSeed, header));
    header.append(16, '\x5A');
    return header + body;
}

/// Spreads data over interleaved blocks of 255 bytes with parity bytes of zero.
std::string interleave(std::string_view data, std::size_t dataBytes, std::size_t blocks = 0) {
    if (blocks == 0) blocks = (roundUp(data.size(), 8) + dataBytes - 1) / dataBytes;
    std::string out(blocks * 255, '\0');
    for (std::size_t i = 0; i < data.size(); ++i) out[i % dataBytes * blocks + i / dataBytes] = data[i];
    out.resize(roundUp(out.size(), 32));
    return out;
}

/// A file of the layout of R2007 whose pages hold everything uncompressed.
std::string file2007() {
    const Container small = smallContainer(Version::R2007);
    std::string pages;
    std::string pageMap;
    std::string sectionMap;
    std::uint64_t id = 2;  // of the section map; 1 is the page map
    for (const Section& given : small.sections) {
        const bool plain = given.name == section::header;
        const std::string disk = plain ? given.bytes : interleave(given.bytes, 251);
        ++id;
        pages += disk;
        appendU64(pageMap, disk.size());
        appendU64(pageMap, id);
        const std::uint64_t size = given.bytes.size();
        const std::uint64_t nameBytes = (given.name.size() + 1) * 2;
        for (const std::uint64_t word : {size, std::uint64_t{0xF800}, std::uint64_t{0}, std::uint64_t{0}, nameBytes,
                                         std::uint64_t{0}, std::uint64_t{plain ? 1u : 4u}, std::uint64_t{1}})
            appendU64(sectionMap, word);
        for (const char c : given.name) appendU16(sectionMap, static_cast<unsigned char>(c));
        appendU16(sectionMap, 0);
        for (const std::uint64_t word : {std::uint64_t{0}, size, id, size, size, std::uint64_t{0}, std::uint64_t{0}})
            appendU64(sectionMap, word);
    }
    const std::string sectionMapPage = interleave(sectionMap, 239);
    const std::size_t pageMapSize = pageMap.size() + 32;
    const std::string room(roundUp((roundUp(pageMapSize, 8) + 238) / 239 * 255, 32), '\0');
    std::string whole;
    for (const std::uint64_t word :
         {std::uint64_t{room.size()}, std::uint64_t{1}, std::uint64_t{sectionMapPage.size()}, std::uint64_t{2}})
        appendU64(whole, word);
    whole += pageMap;

    std::string fields(0x110, '\0');
    const auto set = [&](std::size_t field, std::uint64_t value) { storeLittle(fields.data() + 8 * field, value); };
    set(0, 0x70);
    set(3, 1);
    set(10, whole.size());
    set(11, whole.size());
    set(22, sectionMap.size());
    set(24, 2);
    set(25, sectionMap.size());
    set(27, 1);
    std::string coded(0x20, '\0');
    storeLittle(coded.data() + 0x18, static_cast<std::uint32_t>(-0x110));
    coded += fields;
    std::string header = interleave(coded, 239, 3);
    header.resize(0x400);

    std::string file = "AC1021";
    file.resize(0x80);
    file += header + interleave(whole, 239) + sectionMapPage + pages + header;
    return file;
}

}  // namespace

Container smallContainer(Version version) {
    Container container;
    container.version = version;
    container.maintenance = version == Version::R2018 ? 4 : 0x7D;
    const std::string mark = version == Version::R2000 ? std::string() : std::string("\xCA\x0D\0\0", 4);
    container.sections.push_back(
        {std::string(section::header), writeFrame(FramedSection::Header, version, "header variables")});
    container.sections.push_back(
        {std::string(section::classes), writeFrame(FramedSection::Classes, version, "class records")});
    container.sections.push_back({std::string(section::handles), objectMap(mark.size())});
    container.sections.push_back({std::string(section::objects), mark + objects()});
    return container;
}

std::string smallFile(Version version) {
    if (version == Version::R2000) return file2000();
    if (version == Version::R2007) return file2007();
    Container small = smallContainer(version);
    small.version = std::max(version, Version::R2010);
    std::string file;
    writeContainer(small, file);
    if (version == Version::R2004) file.replace(0, 6, versionTag(version));
    return file;
}

}  // namespace kdraw::testing
