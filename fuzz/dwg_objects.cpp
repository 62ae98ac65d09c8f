// Decodes any bytes as records of DWG objects, or as a whole file, and writes them as groups. These groups must read
// back, and what they give must encode to a file whose records all decode.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "dwg_records.hpp"
#include "kdraw/dxf/dxf_file_input.hpp"
#include "kdraw/dxf/dxf_file_output.hpp"
#include "kdraw/encoder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kdraw;
    Database first;
    if (!fuzz::databaseOf({reinterpret_cast<const char*>(data), size}, first)) return 0;
    const std::string groups = databaseToDxf(first);
    Database second;
    if (!databaseFromDxf(groups, second).empty()) std::abort();
    constexpr Version kWritten[] = {Version::R2010, Version::R2013, Version::R2018};
    second.version = kWritten[size % 3];
    std::string file;
    if (!encode(second, file).empty()) std::abort();
    Database third;
    if (!decode(file, third).empty()) std::abort();
    if (!third.skipped.empty() || !third.uneven.empty() || !third.notes.empty()) std::abort();
    if (third.objects.size() != second.objects.size()) std::abort();
    return 0;
}
