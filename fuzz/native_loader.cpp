// Loads any bytes as a native drawing file. What loads must save, and what was saved must load and save to the same
// bytes again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "engine/model/drawing.hpp"
#include "io/native/native_file.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kova;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    engine::Drawing first;
    if (!io::native::loadNativeText(text, first).empty()) return 0;
    const std::string saved = io::native::nativeText(first);
    engine::Drawing second;
    if (!io::native::loadNativeText(saved, second).empty()) std::abort();
    if (io::native::nativeText(second) != saved) std::abort();
    return 0;
}
