#include <algorithm>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/readers.hpp"

namespace kdraw {

namespace {

constexpr std::size_t locatorCount = 0x15;
constexpr std::size_t locators = 0x19;
constexpr std::size_t locatorSize = 9;
constexpr std::uint32_t maxLocators = 64;
constexpr std::size_t previewAddress = 0x0D;
constexpr std::size_t markSize = 16;

/// The sections by the numbers of their locator records; the first three must be there.
constexpr std::string_view names[] = {section::header,    section::classes,          section::handles,
                                      section::freeSpace, section::templateSettings, section::auxHeader};
constexpr std::size_t neededNames = 3;

void addPreview(std::string_view file, Container& container) {
    const std::uint64_t address = loadLittle<std::uint32_t>(file.data() + previewAddress);
    if (address == 0 || !holds(file, address, markSize + 4)) return;
    const std::uint64_t size =
        markSize + 4 + std::uint64_t{loadLittle<std::uint32_t>(file.data() + address + markSize)} + markSize;
    if (holds(file, address, size))
        container.sections.push_back({std::string(section::preview), std::string(file.substr(address, size))});
}

/// Objects lie anywhere in the file, so their section is the part of the file from the first one on.
void addObjects(std::string_view file, Container& container) {
    std::vector<std::string> ignored;
    std::uint64_t first = file.size();
    for (const ObjectMapEntry& entry : readObjectMap(container.find(section::handles)->bytes, ignored))
        first = std::min(first, entry.offset);
    container.sections.push_back({std::string(section::objects), std::string(file.substr(first)), first});
}

}  // namespace

std::string readLayout2000(std::string_view file, Container& container) {
    const std::string invalid = "R2000 section locators are invalid";
    const std::uint64_t count = loadLittle<std::uint32_t>(file.data() + locatorCount);
    if (count == 0 || count > maxLocators || !holds(file, locators, count * locatorSize + 2)) return invalid;
    const std::size_t end = locators + static_cast<std::size_t>(count) * locatorSize;
    const bool sound = crc16(crcSeed, file.substr(0, end)) == loadLittle<std::uint16_t>(file.data() + end);
    for (std::size_t i = 0; i < count; ++i) {
        const char* const record = file.data() + locators + i * locatorSize;
        const std::size_t number = static_cast<unsigned char>(record[0]);
        const std::uint64_t address = loadLittle<std::uint32_t>(record + 1);
        const std::uint64_t size = loadLittle<std::uint32_t>(record + 5);
        if (number >= std::size(names) || address == 0 || size == 0 || container.find(names[number]) != nullptr)
            continue;
        if (holds(file, address, size))
            container.sections.push_back({std::string(names[number]), std::string(file.substr(address, size))});
    }
    for (std::size_t i = 0; i < neededNames; ++i)
        if (container.find(names[i]) == nullptr) return invalid;
    if (!sound) container.notes.emplace_back("wrong CRC of the file header");
    addPreview(file, container);
    addObjects(file, container);
    return {};
}

}  // namespace kdraw
