#include <algorithm>
#include <cstring>
#include <vector>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/layout2004.hpp"
#include "kdraw/container/lz2004.hpp"
#include "kdraw/container/readers.hpp"

namespace kdraw {

namespace {

struct Page {
    std::uint32_t id = 0;
    std::uint64_t address = 0;
};

/// The pages of the page map in ascending order of ids. Addresses follow from the sizes of all entries before.
std::vector<Page> readPageMap(std::string_view content) {
    std::vector<Page> pages;
    ByteReader reader(content);
    std::uint64_t address = firstPageAddress;
    while (reader.remaining() >= 8) {
        const std::int32_t id = reader.i32();
        const std::uint32_t size = reader.u32();
        if (id > 0)
            pages.push_back({static_cast<std::uint32_t>(id), address});
        else if (id < 0)
            reader.skip(16);  // the place of the gap among the others
        address += size;
    }
    sortById(pages);
    return pages;
}

class SectionReader {
public:
    SectionReader(std::string_view file, const std::vector<Page>& pages, Container& container)
        : m_file(file), m_pages(pages), m_container(container), m_sizes(file), m_work(file) {}

    /// Reads one descriptor of the section map and its section. False when the map ends or makes no sense.
    bool read(ByteReader& map) {
        const std::uint64_t size = map.u64();
        const std::uint32_t pageCount = map.u32();
        const std::uint32_t pageSize = map.u32();
        map.skip(4);
        const std::uint32_t compression = map.u32();
        const std::uint32_t id = map.u32();
        map.skip(4);
        const std::string_view nameField = map.bytes(sectionNameSize);
        std::string name(nameField.substr(0, nameField.find('\0')));
        if (!map.ok() || pageCount > maxPages || pageCount > map.remaining() / 16) {
            m_container.notes.emplace_back("the section map is damaged");
            return false;
        }
        ByteReader entries(map.bytes(std::uint64_t{16} * pageCount));
        if (name.empty()) return true;
        if (m_container.find(name) != nullptr || m_container.sections.size() >= maxSections) return true;
        if (size > maxSectionSize || (compression == compressedPages && pageSize > maxPageSize) ||
            !m_sizes.spend(size)) {
            m_container.notes.push_back("section " + name + " claims more than the file can hold");
            return true;
        }
        Section& section = m_container.sections.emplace_back();
        section.name = std::move(name);
        section.bytes.resize(size);
        PageFaults faults;
        for (std::uint32_t i = 0; i < pageCount; ++i) {
            const std::uint32_t pageId = entries.u32();
            entries.skip(4);
            const std::uint64_t offset = entries.u64();
            readPage(section.bytes, pageId, id, offset, pageSize, compression, faults);
        }
        faults.note(section.name, m_container);
        return true;
    }

private:
    void readPage(std::string& bytes, std::uint32_t pageId, std::uint32_t sectionId, std::uint64_t offset,
                  std::uint32_t pageSize, std::uint32_t compression, PageFaults& faults) {
        if (offset >= bytes.size()) return;
        const Page* const page = findPage(m_pages, pageId);
        DataPageHeader header;
        std::string_view data;
        if (page == nullptr || !readDataPage(m_file, page->address, header, data) || header.sectionId != sectionId ||
            !m_work.spend(data.size())) {
            ++faults.damaged;
            return;
        }
        if (!header.sound) ++faults.wrongSums;
        const std::size_t room = std::min<std::uint64_t>(bytes.size() - offset, pageSize);
        char* const to = bytes.data() + offset;
        if (compression != compressedPages) {
            std::memcpy(to, data.data(), std::min(data.size(), room));
            return;
        }
        if (!m_work.spend(pageSize)) {
            ++faults.damaged;
            return;
        }
        Decompressed result;
        if (room == pageSize) {
            result = decompress2004(data, to, pageSize);
        } else {
            // The last page expands to a whole page too, of which the section ends within.
            m_scratch.resize(pageSize);
            result = decompress2004(data, m_scratch.data(), pageSize);
            std::memcpy(to, m_scratch.data(), std::min(result.size, room));
        }
        if (!result.sound) ++faults.damaged;
    }

    std::string_view m_file;
    const std::vector<Page>& m_pages;
    Container& m_container;
    Budget m_sizes;
    Budget m_work;
    std::string m_scratch;
};

/// The header block, or its copy at the end of the file when the first one is damaged.
bool findHeaderBlock(std::string_view file, HeaderBlock& block, std::vector<std::string>& notes) {
    if (readHeaderBlock(file.substr(plainHeaderSize), block) && block.sound) return true;
    HeaderBlock copy;
    if (readHeaderBlock(file.substr(file.size() - headerBlockSize), copy) && copy.sound) {
        notes.emplace_back("the file header is damaged; its copy was used");
        block = copy;
        return true;
    }
    if (!readHeaderBlock(file.substr(plainHeaderSize), block)) return false;
    notes.emplace_back("wrong CRC of the file header");
    return true;
}

}  // namespace

std::string readLayout2004(std::string_view file, Container& container) {
    if (file.size() < firstPageAddress) return std::string(tooSmall);
    if (loadLittle<std::uint32_t>(file.data() + plain::security) & 1) return "the drawing is protected by a password";
    HeaderBlock block;
    if (!findHeaderBlock(file, block, container.notes)) return "the file header is damaged";

    bool sound = true;
    std::string content;
    if (std::string error = readSystemPage(file, block.pageMapAddress, pageMapMark, content, sound); !error.empty())
        return error;
    if (!sound) container.notes.emplace_back("wrong checksum of the page map");
    const std::vector<Page> pages = readPageMap(content);

    const Page* const mapPage = findPage(pages, block.sectionMapId);
    if (mapPage == nullptr) return "the section map is missing";
    if (std::string error = readSystemPage(file, mapPage->address, sectionMapMark, content, sound); !error.empty())
        return error;
    if (!sound) container.notes.emplace_back("wrong checksum of the section map");

    ByteReader map(content);
    const std::uint32_t count = map.u32();
    map.skip(16);
    SectionReader sections(file, pages, container);
    for (std::uint32_t i = 0; i < count && sections.read(map); ++i) {
    }
    return {};
}

}  // namespace kdraw
