#include <algorithm>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/layout2004.hpp"
#include "kdraw/container/lz2004.hpp"
#include "kdraw/container/small_sections.hpp"

namespace kdraw {

namespace {

constexpr std::uint64_t maxFileSize = 0x7FFF'FFFF;
constexpr std::uint32_t solidsId = 12;
constexpr std::uint32_t dependenciesId = 13;

/// How a section is written. Stored sections have one page of the content rounded up to `granularity`.
struct Plan {
    std::string_view name;
    std::uint32_t id;
    std::uint32_t granularity;  // 0: compressed pages of the usual size
    bool given;                 // the caller must give it
};

/// In the order in which they stand in the file.
constexpr Plan plans[] = {
    {section::summary, 9, 0x80, false},
    {section::preview, 10, 0x400, false},
    {section::application, 11, 0x80, false},
    {section::dependencies, dependenciesId, 0x80, false},
    {section::solids, solidsId, 0, false},
    {section::revisions, 8, 0, false},
    {section::objects, 7, 0, true},
    {section::freeSpace, 6, 0, false},
    {section::templateSettings, 5, 0, false},
    {section::handles, 4, 0, true},
    {section::classes, 3, 0, true},
    {section::auxHeader, 2, 0, false},
    {section::header, 1, 0, true},
};

struct WrittenPage {
    std::uint32_t id;
    std::uint32_t storedSize;
    std::uint64_t offset;
};

struct WrittenSection {
    std::string_view name;
    std::uint32_t id = 0;
    std::uint64_t size = 0;
    std::uint32_t pageSize = usualPageSize;
    std::uint32_t compression = compressedPages;
    std::uint32_t encryption = 0;
    std::uint64_t address = 0;  // of the first page's data; 0 without pages
    std::vector<WrittenPage> pages;
};

bool allZero(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == 0; });
}

class Writer {
public:
    Writer(const Container& container, std::string& out) : m_container(container), m_out(out) {}

    std::string write() {
        m_out.assign(firstPageAddress, '\0');
        std::uint64_t total = 0;
        for (const Section& given : m_container.sections) total += given.bytes.size();
        if (total < maxFileSize) m_out.reserve(firstPageAddress + total / 2);
        for (const Plan& plan : plans) {
            const Section* const given = m_container.find(plan.name);
            if (given == nullptr && plan.given) return "section " + std::string(plan.name) + " is missing";
            if (given == nullptr && plan.name == section::solids) continue;
            const bool preview = plan.name == section::preview;
            if (given != nullptr && !preview) {
                writeSection(plan, given->bytes);
            } else {
                std::string bytes = given != nullptr ? given->bytes : makeSmallSection(plan.name, m_container);
                if (preview) relocatePreview(bytes, m_out.size() + dataPageHeaderSize);
                writeSection(plan, bytes);
            }
            if (m_out.size() > maxFileSize) return "the drawing is too large for a DWG file";
        }
        finish();
        return m_out.size() > maxFileSize ? "the drawing is too large for a DWG file" : std::string();
    }

private:
    struct PageMapEntry {
        std::uint32_t id;
        std::uint32_t size;
    };

    std::uint32_t addPage(std::uint32_t size) {
        const auto id = static_cast<std::uint32_t>(m_pages.size() + 1);
        m_pages.push_back({id, size});
        return id;
    }

    void writeSection(const Plan& plan, std::string_view bytes) {
        WrittenSection& written = m_sections.emplace_back();
        written.name = plan.name;
        // Without solids the section behind them moves up.
        written.id = plan.id == dependenciesId && m_container.find(section::solids) == nullptr ? solidsId : plan.id;
        written.size = bytes.size();
        if (plan.granularity != 0) {
            written.compression = storedPages;
            written.pageSize =
                static_cast<std::uint32_t>(roundUp(std::max<std::size_t>(bytes.size(), 1), plan.granularity));
        }
        if (plan.name == section::dependencies) written.encryption = 2;

        std::string page;
        for (std::uint64_t offset = 0; offset < bytes.size(); offset += written.pageSize) {
            std::string_view chunk = bytes.substr(offset, written.pageSize);
            // A page of zeros need not be there; a long row of them that is not would look like a bloated file.
            if (!plan.given && bytes.size() <= usualPageSize && allZero(chunk)) continue;
            if (chunk.size() < written.pageSize) {
                page.assign(chunk).resize(written.pageSize);
                chunk = page;
            }
            if (plan.granularity == 0) {
                m_packed.clear();
                compress2004(chunk, m_packed);
                chunk = m_packed;
            }
            if (written.address == 0) written.address = m_out.size() + dataPageHeaderSize;
            const std::uint32_t size = appendDataPage(m_out, written.id, offset, chunk);
            written.pages.push_back({addPage(size), static_cast<std::uint32_t>(chunk.size()), offset});
            if (m_out.size() > maxFileSize) return;
        }
    }

    std::string sectionMap() const {
        std::vector<const WrittenSection*> byId;
        for (const WrittenSection& written : m_sections) byId.push_back(&written);
        std::sort(byId.begin(), byId.end(), [](const auto* a, const auto* b) { return a->id > b->id; });
        const WrittenSection empty;
        byId.insert(byId.begin(), &empty);

        std::string map;
        const auto count = static_cast<std::uint32_t>(byId.size());
        for (const std::uint32_t word : {count, 2u, usualPageSize, 0u, count}) appendU32(map, word);
        for (const WrittenSection* written : byId) {
            appendU64(map, written->size);
            appendU32(map, static_cast<std::uint32_t>(written->pages.size()));
            appendU32(map, written->pageSize);
            appendU32(map, 1);
            appendU32(map, written->compression);
            appendU32(map, written->id);
            appendU32(map, written->encryption);
            map += written->name;
            map.append(sectionNameSize - written->name.size(), '\0');
            for (const WrittenPage& page : written->pages) {
                appendU32(map, page.id);
                appendU32(map, page.storedSize);
                appendU64(map, page.offset);
            }
        }
        return map;
    }

    std::string pageMap() const {
        std::string map;
        for (const PageMapEntry& page : m_pages) {
            appendU32(map, page.id);
            appendU32(map, page.size);
        }
        return map;
    }

    /// The two maps, the copy of the header block and the header itself.
    void finish() {
        HeaderBlock block;
        block.sectionMapId = addPage(appendSystemPage(m_out, sectionMapMark, sectionMap()));

        // The page map has an entry of its own, whose size shows only when it is compressed.
        block.pageMapAddress = m_out.size();
        block.pageMapId = addPage(0);
        PageMapEntry& own = m_pages.back();
        for (;;) {
            m_out.resize(block.pageMapAddress);
            const std::uint32_t size = appendSystemPage(m_out, pageMapMark, pageMap(), own.size);
            if (size == own.size) break;
            own.size = size;  // larger than before: the page is never smaller than it was said to be
        }
        block.lastPageId = block.pageMapId;
        block.pageCount = static_cast<std::uint32_t>(m_pages.size());
        block.endAddress = block.copyAddress = m_out.size();
        const std::string masked = writeHeaderBlock(block);
        m_out += masked;
        std::copy(masked.begin(), masked.end(), m_out.begin() + plainHeaderSize);
        std::copy(randomBytes().begin() + 236, randomBytes().end(), m_out.begin() + plainHeaderSize + headerBlockSize);
        writePlainHeader();
    }

    void writePlainHeader() {
        char* const header = m_out.data();
        const std::string_view tag = versionTag(m_container.version);
        std::copy(tag.begin(), tag.end(), header);
        // Programs differ in which of the two bytes they take for the maintenance release.
        header[plain::maintenance] = header[0x12] = static_cast<char>(writtenMaintenance(m_container));
        header[0x0C] = 3;
        header[0x11] = static_cast<char>(internalVersion(m_container.version));
        storeLittle(header + plain::codepage, static_cast<std::uint16_t>(m_container.codepage));
        storeLittle(header + 0x28, std::uint32_t{0x80});
        for (const WrittenSection& written : m_sections) {
            const auto address = static_cast<std::uint32_t>(written.address);
            if (written.name == section::preview) storeLittle(header + plain::preview, address);
            if (written.name == section::summary) storeLittle(header + plain::summary, address);
            if (written.name == section::application) storeLittle(header + plain::application, address);
        }
    }

    const Container& m_container;
    std::string& m_out;
    std::string m_packed;
    std::vector<PageMapEntry> m_pages;  // in the order of the file
    std::vector<WrittenSection> m_sections;
};

}  // namespace

std::string writeContainer(const Container& container, std::string& out) {
    if (!isWritten(container.version))
        return "DWG version " + std::string(versionName(container.version)) + " cannot be written";
    return Writer(container, out).write();
}

}  // namespace kdraw
