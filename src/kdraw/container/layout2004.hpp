// What the reader and the writer of the layout of R2004, R2010, R2013 and R2018 share: marks, sizes, the masked header.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "kdraw/fields/version.hpp"

namespace kdraw {

inline constexpr std::size_t plainHeaderSize = 0x80;
inline constexpr std::size_t headerBlockSize = 0x6C;
inline constexpr std::size_t firstPageAddress = 0x100;
inline constexpr std::size_t pageAlignment = 0x20;

inline constexpr std::size_t systemPageHeaderSize = 20;
inline constexpr std::uint32_t pageMapMark = 0x41630E3B;
inline constexpr std::uint32_t sectionMapMark = 0x4163003B;

inline constexpr std::size_t dataPageHeaderSize = 32;
inline constexpr std::uint32_t dataPageMark = 0x4163043B;
inline constexpr std::uint32_t dataPageMask = 0x4164536B;  // xor the low half of the page's address

inline constexpr std::uint32_t storedPages = 1;
inline constexpr std::uint32_t compressedPages = 2;
inline constexpr std::uint32_t usualPageSize = 0x7400;

inline constexpr std::size_t sectionNameSize = 64;
inline constexpr std::size_t descriptorSize = 96;  // of a section in the section map, without its pages

/// Places in the plain header.
namespace plain {
inline constexpr std::size_t maintenance = 0x0B;
inline constexpr std::size_t preview = 0x0D;
inline constexpr std::size_t codepage = 0x13;
inline constexpr std::size_t security = 0x18;
inline constexpr std::size_t summary = 0x20;
inline constexpr std::size_t application = 0x2C;
}  // namespace plain

/// The masked block behind the plain header, which says where the two maps are. Addresses are of the file.
struct HeaderBlock {
    std::uint32_t lastPageId = 0;
    std::uint64_t endAddress = 0;   // behind the last page
    std::uint64_t copyAddress = 0;  // of the copy of this block
    std::uint32_t pageCount = 0;
    std::uint32_t pageMapId = 0;
    std::uint64_t pageMapAddress = 0;
    std::uint32_t sectionMapId = 0;
    bool sound = false;  // the CRC was right
};

/// Takes the mask off a block; false when there is no such block.
bool readHeaderBlock(std::string_view bytes, HeaderBlock& block);

/// The masked bytes of a block.
std::string writeHeaderBlock(const HeaderBlock& block);

/// The eight words in front of a page's data, unmasked.
struct DataPageHeader {
    std::uint32_t sectionId = 0;
    std::uint32_t storedSize = 0;
    std::uint64_t offset = 0;  // in the section
    bool sound = false;        // mark and checksums were right
};

/// Reads and checks the page at `address`. False when it is no data page or its data are not within the file.
bool readDataPage(std::string_view file, std::uint64_t address, DataPageHeader& header, std::string_view& data);

/// Appends a page that will stand at address `out.size()`, padded to the alignment. Returns its size.
std::uint32_t appendDataPage(std::string& out, std::uint32_t sectionId, std::uint64_t offset, std::string_view data);

/// Appends a compressed system page, padded to the alignment and at least to `minimalSize`. Returns its size.
std::uint32_t appendSystemPage(std::string& out, std::uint32_t mark, std::string_view content,
                               std::uint32_t minimalSize = 0);

/// Decompresses a system page. Returns an error text, empty on success; a wrong checksum only makes `sound` false.
std::string readSystemPage(std::string_view file, std::uint64_t address, std::uint32_t mark, std::string& content,
                           bool& sound);

}  // namespace kdraw
