// Loads any bytes as a DXF file, text or binary. What loads must have sound extents, save as DXF and load again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "engine/model/drawing.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kova;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    engine::Drawing first;
    if (!io::dxf::loadDxfText(text, first).empty()) return 0;
    first.extents(first.modelSpace());
    engine::Drawing second;
    if (!io::dxf::loadDxfText(io::dxf::dxfText(first), second).empty()) std::abort();
    return 0;
}
