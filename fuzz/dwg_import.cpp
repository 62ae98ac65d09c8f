// Imports any bytes, a DWG file or a row of records, into a drawing. What it gives must have sound extents, and must be
// saved as groups that the DWG library encodes to a file which opens again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "dwg_records.hpp"
#include "engine/model/drawing.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dxf/dxf_save.hpp"
#include "kdraw/database/dxf_file_input.hpp"
#include "kdraw/database/encoder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kova;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    engine::Drawing first;
    if (bytes.starts_with("AC1")) {
        if (!io::dwg::loadDwgBytes(bytes, first).success) return 0;
    } else {
        kdraw::Database database;
        if (!kdraw::fuzz::databaseOf(bytes, database)) return 0;
        if (!io::dwg::importDatabase(database, first).success) std::abort();
    }
    first.extents(first.modelSpace());
    const std::string groups = io::dxf::dxfText(first);
    kdraw::Database database;
    if (!kdraw::databaseFromDxf(groups, database).empty()) std::abort();
    std::string file;
    if (!kdraw::encode(database, file).empty()) std::abort();
    engine::Drawing second;
    if (!io::dwg::loadDwgBytes(file, second).success) std::abort();
    return 0;
}
