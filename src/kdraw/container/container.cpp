#include "kdraw/container/container.hpp"

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/layout2004.hpp"
#include "kdraw/container/readers.hpp"

namespace kdraw {

namespace {

/// The smallest file that can have a header, one of R2000 with three locators.
constexpr std::size_t smallestHeader = 0x15 + 4 + 3 * 9 + 2 + 16;

/// MEASUREMENT stands behind the drawing's description, a string with a length of two bytes.
void readMeasurement(Container& container) {
    const Section* const found = container.find(section::templateSettings);
    if (found == nullptr) return;
    ByteReader reader(found->bytes);
    const std::uint64_t length = reader.u16();
    reader.skip(length * (container.version >= Version::R2007 ? 2 : 1));
    const std::uint16_t measurement = reader.u16();
    if (reader.ok()) container.facts.metric = measurement != 0;
}

}  // namespace

const Section* Container::find(std::string_view name) const {
    for (const Section& section : sections)
        if (section.name == name) return &section;
    return nullptr;
}

std::string readContainer(std::string_view file, Container& container) {
    container = {};
    if (file.size() < smallestHeader) return std::string(tooSmall);
    container.version = versionOfTag(file);
    if (!isDecoded(container.version))
        return "unsupported DWG version (decoder handles R2000 / R2004 / R2007 / R2010 / R2013 / R2018)";
    container.maintenance = static_cast<unsigned char>(file[plain::maintenance]);
    container.codepage = loadLittle<std::uint16_t>(file.data() + plain::codepage);

    std::string error;
    switch (container.version) {
        case Version::R2000:
            error = readLayout2000(file, container);
            break;
        case Version::R2007:
            error = readLayout2007(file, container);
            break;
        default:
            error = readLayout2004(file, container);
            break;
    }
    if (!error.empty()) return error;
    for (const std::string_view needed : {section::handles, section::objects})
        if (container.find(needed) == nullptr) return "section " + std::string(needed) + " is missing";
    readMeasurement(container);
    return {};
}

}  // namespace kdraw
