// Decodes any bytes as records of DWG objects, or as a whole file, and writes them as groups. These groups must read
// back, and the records of what they give must decode again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "dwg_records.hpp"
#include "kdraw/database/dxf_file_input.hpp"
#include "kdraw/database/dxf_file_output.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kdraw;
    Database first;
    if (!fuzz::databaseOf({reinterpret_cast<const char*>(data), size}, first)) return 0;
    const std::string groups = databaseToDxf(first);
    Database second;
    if (!databaseFromDxf(groups, second).empty()) std::abort();
    constexpr Version kWritten[] = {Version::R2010, Version::R2013, Version::R2018};
    second.version = kWritten[size % 3];
    completeGraph(second);
    const TextCodec codec(second.codePage);
    const RecordDecoder decoder(second, codec);
    RecordEncoder encoder(second.version);
    std::string section;
    for (const auto& object : second.objects) {
        section.clear();
        encoder.encode(*object, section);
        const RecordDecoder::Result again = decoder.decode(section, 0, object->handle);
        if (!again.object || again.uneven || again.wrongChecksum || again.type != object->type) std::abort();
    }
    return 0;
}
