#include "kdraw/container/layout2004.hpp"

#include <algorithm>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/lz2004.hpp"

namespace kdraw {

namespace {

constexpr std::string_view blockName("AcFssFcAJMB\0", 12);
constexpr std::uint64_t maxSystemPage = 64 << 20;

/// Places in the header block.
namespace at {
constexpr std::size_t lastPageId = 0x28;
constexpr std::size_t endAddress = 0x2C;
constexpr std::size_t copyAddress = 0x34;
constexpr std::size_t pageCount = 0x40;
constexpr std::size_t pageMapId = 0x50;
constexpr std::size_t pageMapAddress = 0x54;
constexpr std::size_t sectionMapId = 0x5C;
constexpr std::size_t pageArraySize = 0x60;
constexpr std::size_t crc = 0x68;
}  // namespace at

void maskBlock(std::string& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(bytes[i] ^ randomBytes()[i]);
}

void padPage(std::string& out, std::size_t start, std::size_t size) {
    for (std::size_t i = 0; out.size() < start + size; ++i) out += randomBytes()[i % randomBytes().size()];
}

/// The checksum of a page's data, and of its header with the fields of checksums as they count.
std::uint32_t headerSum(std::uint32_t dataSum, const std::uint32_t (&words)[8]) {
    char bytes[dataPageHeaderSize];
    for (std::size_t i = 0; i < 8; ++i) storeLittle(bytes + 4 * i, i == 6 ? 0u : i == 7 ? dataSum : words[i]);
    return pageSum(dataSum, {bytes, sizeof bytes});
}

}  // namespace

bool readHeaderBlock(std::string_view bytes, HeaderBlock& block) {
    if (bytes.size() < headerBlockSize) return false;
    std::string plain(bytes.substr(0, headerBlockSize));
    maskBlock(plain);
    if (!plain.starts_with(blockName)) return false;
    const char* const p = plain.data();
    block.lastPageId = loadLittle<std::uint32_t>(p + at::lastPageId);
    block.endAddress = loadLittle<std::uint64_t>(p + at::endAddress) + firstPageAddress;
    block.copyAddress = loadLittle<std::uint64_t>(p + at::copyAddress);
    block.pageCount = loadLittle<std::uint32_t>(p + at::pageCount);
    block.pageMapId = loadLittle<std::uint32_t>(p + at::pageMapId);
    block.pageMapAddress = loadLittle<std::uint64_t>(p + at::pageMapAddress) + firstPageAddress;
    block.sectionMapId = loadLittle<std::uint32_t>(p + at::sectionMapId);
    const std::uint32_t crc = loadLittle<std::uint32_t>(p + at::crc);
    storeLittle(plain.data() + at::crc, std::uint32_t{0});
    block.sound = crc32(0, plain) == crc;
    return true;
}

std::string writeHeaderBlock(const HeaderBlock& block) {
    std::string bytes(headerBlockSize, '\0');
    char* const p = bytes.data();
    std::copy(blockName.begin(), blockName.end(), p);
    storeLittle(p + 0x10, std::uint32_t{headerBlockSize});
    storeLittle(p + 0x14, std::uint32_t{4});
    storeLittle(p + 0x24, std::uint32_t{1});
    storeLittle(p + at::lastPageId, block.lastPageId);
    storeLittle(p + at::endAddress, block.endAddress - firstPageAddress);
    storeLittle(p + at::copyAddress, block.copyAddress);
    storeLittle(p + at::pageCount, block.pageCount);
    storeLittle(p + 0x44, std::uint32_t{0x20});
    storeLittle(p + 0x48, std::uint32_t{0x80});
    storeLittle(p + 0x4C, std::uint32_t{0x40});
    storeLittle(p + at::pageMapId, block.pageMapId);
    storeLittle(p + at::pageMapAddress, block.pageMapAddress - firstPageAddress);
    storeLittle(p + at::sectionMapId, block.sectionMapId);
    storeLittle(p + at::pageArraySize, block.lastPageId);
    storeLittle(p + at::crc, crc32(0, bytes));
    maskBlock(bytes);
    return bytes;
}

bool readDataPage(std::string_view file, std::uint64_t address, DataPageHeader& header, std::string_view& data) {
    if (!holds(file, address, dataPageHeaderSize)) return false;
    std::uint32_t words[8];
    for (std::size_t i = 0; i < 8; ++i)
        words[i] = loadLittle<std::uint32_t>(file.data() + address + 4 * i) ^ dataPageMask ^
                   static_cast<std::uint32_t>(address);
    if (words[0] != dataPageMark || !holds(file, address + dataPageHeaderSize, words[2])) return false;
    header.sectionId = words[1];
    header.storedSize = words[2];
    header.offset = words[4] | static_cast<std::uint64_t>(words[5]) << 32;
    data = file.substr(address + dataPageHeaderSize, header.storedSize);
    const std::uint32_t dataSum = pageSum(0, data);
    header.sound = words[7] == dataSum && words[6] == headerSum(dataSum, words);
    return true;
}

std::uint32_t appendDataPage(std::string& out, std::uint32_t sectionId, std::uint64_t offset, std::string_view data) {
    const std::size_t start = out.size();
    const auto size = static_cast<std::uint32_t>(roundUp(dataPageHeaderSize + data.size(), pageAlignment));
    std::uint32_t words[8] = {dataPageMark,
                              sectionId,
                              static_cast<std::uint32_t>(data.size()),
                              size,
                              static_cast<std::uint32_t>(offset),
                              static_cast<std::uint32_t>(offset >> 32),
                              0,
                              pageSum(0, data)};
    words[6] = headerSum(words[7], words);
    for (const std::uint32_t word : words) appendU32(out, word ^ dataPageMask ^ static_cast<std::uint32_t>(start));
    out += data;
    padPage(out, start, size);
    return size;
}

std::uint32_t appendSystemPage(std::string& out, std::uint32_t mark, std::string_view content,
                               std::uint32_t minimalSize) {
    const std::size_t start = out.size();
    std::string data;
    compress2004(content, data);
    std::string header;
    appendU32(header, mark);
    appendU32(header, static_cast<std::uint32_t>(content.size()));
    appendU32(header, static_cast<std::uint32_t>(data.size()));
    appendU32(header, compressedPages);
    appendU32(header, 0);
    storeLittle(header.data() + 16, pageSum(pageSum(0, header), data));
    out += header;
    out += data;
    const auto size = std::max(static_cast<std::uint32_t>(roundUp(out.size() - start, pageAlignment)), minimalSize);
    padPage(out, start, size);
    return size;
}

std::string readSystemPage(std::string_view file, std::uint64_t address, std::uint32_t mark, std::string& content,
                           bool& sound) {
    const std::string name = mark == pageMapMark ? "the page map" : "the section map";
    if (!holds(file, address, systemPageHeaderSize)) return name + " is outside the file";
    std::string header(file.substr(address, systemPageHeaderSize));
    const std::uint64_t size = loadLittle<std::uint32_t>(header.data() + 4);
    const std::uint64_t stored = loadLittle<std::uint32_t>(header.data() + 8);
    const std::uint32_t sum = loadLittle<std::uint32_t>(header.data() + 16);
    if (loadLittle<std::uint32_t>(header.data()) != mark || !holds(file, address + systemPageHeaderSize, stored) ||
        size > maxSystemPage || size > maxExpansion * stored)
        return name + " is damaged";
    const std::string_view data = file.substr(address + systemPageHeaderSize, stored);
    storeLittle(header.data() + 16, std::uint32_t{0});
    sound = pageSum(pageSum(0, header), data) == sum;
    content.assign(size, '\0');
    const Decompressed result = decompress2004(data, content.data(), content.size());
    if (!result.sound || result.size != size) return name + " is damaged";
    return {};
}

}  // namespace kdraw
