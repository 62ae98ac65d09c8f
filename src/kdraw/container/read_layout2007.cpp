#include <algorithm>
#include <cstring>
#include <vector>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/lz2007.hpp"
#include "kdraw/container/readers.hpp"

namespace kdraw {

namespace {

constexpr std::size_t codedHeader = 0x80;
constexpr std::size_t codedHeaderSize = 0x400;
constexpr std::size_t firstPage = codedHeader + codedHeaderSize;
constexpr std::size_t decodedHeaderSize = 0x110;
constexpr std::size_t systemData = 239;  // data bytes in a block of 255: of maps and the header
constexpr std::size_t pageData = 251;    // of data pages
constexpr std::size_t blockSize = 255;
constexpr std::uint64_t storedPlain = 1;  // the encoding of sections whose pages hold the bytes as they are
constexpr std::uint64_t maxMapSize = 64 << 20;
constexpr std::uint64_t maxNameBytes = 0x200;
constexpr std::size_t pageEntrySize = 56;

/// The fields of the file header that lead to the maps.
struct FileHeader {
    std::uint64_t pageMapRepeat = 0;
    std::uint64_t pageMapOffset = 0;  // from the first page, as all addresses
    std::uint64_t pageMapStored = 0;
    std::uint64_t pageMapSize = 0;
    std::uint64_t sectionMapStored = 0;
    std::uint64_t sectionMapId = 0;
    std::uint64_t sectionMapSize = 0;
    std::uint64_t sectionMapRepeat = 0;
};

/// Decodes the file header from its coded area; false when it is damaged.
bool readFileHeader(std::string_view area, FileHeader& header) {
    constexpr std::size_t blocks = 3;
    const std::string data = deinterleave(area, blocks, systemData);
    if (data.empty()) return false;
    const auto stored = static_cast<std::int32_t>(loadLittle<std::uint32_t>(data.data() + 0x18));
    const std::string_view body = std::string_view(data).substr(0x20);
    std::string fields(decodedHeaderSize, '\0');
    if (stored > 0) {
        if (static_cast<std::size_t>(stored) > body.size()) return false;
        const Decompressed result =
            decompress2007(body.substr(0, static_cast<std::size_t>(stored)), fields.data(), fields.size());
        if (!result.sound || result.size != fields.size()) return false;
    } else {
        std::memcpy(fields.data(), body.data(), fields.size());
    }
    const auto field = [&](std::size_t number) { return loadLittle<std::uint64_t>(fields.data() + 8 * number); };
    header = {field(3), field(7), field(10), field(11), field(22), field(24), field(25), field(27)};
    return field(0) == 0x70;
}

struct Page2007 {
    std::int64_t id = 0;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

/// Decodes a map that starts at an address. The stored bytes stand several times in the coded blocks; one is enough.
bool readMap(std::string_view file, std::uint64_t address, std::uint64_t stored, std::uint64_t size,
             std::uint64_t repeat, std::string& content) {
    if (stored == 0 || stored > file.size() || repeat == 0 || repeat > file.size() / stored || size > maxMapSize ||
        size > maxExpansion * stored || address > file.size())
        return false;
    const std::uint64_t blocks = (roundUp(stored, 8) * repeat + systemData - 1) / systemData;
    if (!holds(file, address, blocks * blockSize)) return false;
    const std::string data = deinterleave(file.substr(address, blocks * blockSize), blocks, systemData);
    if (data.size() < stored) return false;
    if (stored == size) {
        content = data.substr(0, size);
        return true;
    }
    content.assign(size, '\0');
    const Decompressed result =
        decompress2007(std::string_view(data).substr(0, stored), content.data(), content.size());
    return result.sound && result.size == size;
}

std::vector<Page2007> readPageMap2007(std::string_view content) {
    std::vector<Page2007> pages;
    ByteReader reader(content);
    std::uint64_t address = firstPage;
    while (reader.remaining() >= 16) {
        const std::uint64_t size = reader.u64();
        const std::int64_t id = reader.i64();
        if (id > 0) pages.push_back({id, address, size});
        address += size;
    }
    sortById(pages);
    return pages;
}

class SectionReader2007 {
public:
    SectionReader2007(std::string_view file, const std::vector<Page2007>& pages, Container& container)
        : m_file(file), m_pages(pages), m_container(container), m_sizes(file), m_work(file) {}

    /// Reads one descriptor of the section map and its section. False when the map makes no sense.
    bool read(ByteReader& map) {
        const std::uint64_t size = map.u64();
        map.skip(24);
        const std::uint64_t nameBytes = map.u64();
        map.skip(8);
        const std::uint64_t encoding = map.u64();
        const std::uint64_t pageCount = map.u64();
        const std::string_view nameUnits = map.bytes(nameBytes);
        if (!map.ok() || nameBytes > maxNameBytes || pageCount > maxPages ||
            pageCount > map.remaining() / pageEntrySize) {
            m_container.notes.emplace_back("the section map is damaged");
            return false;
        }
        ByteReader entries(map.bytes(pageEntrySize * pageCount));
        std::string name;
        for (std::size_t i = 0; i + 1 < nameUnits.size() && (nameUnits[i] | nameUnits[i + 1]) != 0; i += 2)
            name += nameUnits[i + 1] == 0 ? nameUnits[i] : '?';
        if (name.empty() || m_container.find(name) != nullptr || m_container.sections.size() >= maxSections)
            return true;
        if (size > maxSectionSize || !m_sizes.spend(size)) {
            m_container.notes.push_back("section " + name + " claims more than the file can hold");
            return true;
        }
        Section& section = m_container.sections.emplace_back();
        section.name = std::move(name);
        section.bytes.resize(size);
        PageFaults faults;
        for (std::uint64_t i = 0; i < pageCount; ++i) {
            const std::uint64_t offset = entries.u64();
            entries.skip(8);
            const std::int64_t id = entries.i64();
            const std::uint64_t pageSize = entries.u64();
            const std::uint64_t stored = entries.u64();
            entries.skip(16);
            if (offset < size && !readPage(section.bytes, id, offset, pageSize, stored, encoding)) ++faults.damaged;
        }
        faults.note(section.name, m_container);
        return true;
    }

private:
    bool readPage(std::string& bytes, std::int64_t id, std::uint64_t offset, std::uint64_t size, std::uint64_t stored,
                  std::uint64_t encoding) {
        const Page2007* const page = findPage(m_pages, id);
        if (page == nullptr || size > maxPageSize || stored > maxPageSize || page->address > m_file.size())
            return false;
        const std::string_view disk = m_file.substr(page->address, page->size);
        char* const to = bytes.data() + offset;
        const std::size_t room = std::min<std::uint64_t>(bytes.size() - offset, size);
        if (!m_work.spend(size)) return false;
        if (encoding == storedPlain) {
            std::memcpy(to, disk.data(), std::min(disk.size(), room));
            return disk.size() >= room;
        }
        const std::uint64_t blocks = (roundUp(stored, 8) + pageData - 1) / pageData;
        if (!m_work.spend(blocks * blockSize)) return false;
        const std::string data = deinterleave(disk, blocks, pageData);
        if (data.size() < stored) return false;
        if (stored == size) {
            std::memcpy(to, data.data(), room);
            return true;
        }
        const std::string_view packed = std::string_view(data).substr(0, stored);
        if (room == size) {
            const Decompressed result = decompress2007(packed, to, size);
            return result.sound && result.size == size;
        }
        m_scratch.resize(size);
        const Decompressed result = decompress2007(packed, m_scratch.data(), size);
        std::memcpy(to, m_scratch.data(), std::min(result.size, room));
        return result.sound;
    }

    std::string_view m_file;
    const std::vector<Page2007>& m_pages;
    Container& m_container;
    Budget m_sizes;
    Budget m_work;
    std::string m_scratch;
};

/// Follows a coded file header to the two maps. Returns an error text, empty on success.
std::string readMaps(std::string_view file, std::string_view coded, std::vector<Page2007>& pages, std::string& sectionMap) {
    FileHeader header;
    if (!readFileHeader(coded, header)) return "the file header is damaged";
    std::string content;
    if (header.pageMapOffset > file.size() || !readMap(file, firstPage + header.pageMapOffset, header.pageMapStored,
                                                       header.pageMapSize, header.pageMapRepeat, content))
        return "the page map is damaged";
    pages = readPageMap2007(content);
    const Page2007* const page = findPage(pages, static_cast<std::int64_t>(header.sectionMapId));
    if (page == nullptr) return "the section map is missing";
    if (!readMap(file, page->address, header.sectionMapStored, header.sectionMapSize, header.sectionMapRepeat,
                 sectionMap))
        return "the section map is damaged";
    return {};
}

}  // namespace

std::string readLayout2007(std::string_view file, Container& container) {
    if (file.size() < firstPage) return std::string(tooSmall);
    std::vector<Page2007> pages;
    std::string sectionMap;
    const std::string error = readMaps(file, file.substr(codedHeader, codedHeaderSize), pages, sectionMap);
    if (!error.empty()) {
        // The header stands at the end of the file once more.
        if (!readMaps(file, file.substr(file.size() - codedHeaderSize), pages, sectionMap).empty()) return error;
        container.notes.emplace_back("the file header is damaged; its copy was used");
    }
    ByteReader map(sectionMap);
    SectionReader2007 sections(file, pages, container);
    while (map.remaining() >= 64 && sections.read(map)) {
    }
    return {};
}

}  // namespace kdraw
