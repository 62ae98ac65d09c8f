// Takes any bytes apart as a DWG file. What opens must be written again, and that file must open without a note and
// hold the same sections.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kdraw/container/container.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kdraw;
    Container first;
    if (!readContainer({reinterpret_cast<const char*>(data), size}, first).empty()) return 0;
    std::vector<std::string> notes;
    for (const auto& [name, kind] :
         {std::pair{section::header, FramedSection::Header}, std::pair{section::classes, FramedSection::Classes}}) {
        const Section* const found = first.find(name);
        std::string_view body;
        if (found != nullptr && readFrame(kind, first.version, first.maintenance, found->bytes, body, notes).empty() &&
            body.size() > found->bytes.size())
            std::abort();
    }
    const auto map = readObjectMap(first.find(section::handles)->bytes, notes);
    notes.clear();
    if (readObjectMap(writeObjectMap(map), notes) != map || !notes.empty()) std::abort();

    if (!isWritten(first.version)) first.version = Version::R2018;
    std::string file;
    if (!writeContainer(first, file).empty()) return 0;
    Container second;
    if (!readContainer(file, second).empty() || !second.notes.empty()) std::abort();
    for (const Section& written : second.sections) {
        const Section* const given = first.find(written.name);
        // Addresses within a preview change with its place.
        if (given != nullptr && written.name != section::preview && written.bytes != given->bytes) std::abort();
    }
    return 0;
}
