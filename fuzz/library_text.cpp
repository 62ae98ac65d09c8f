// Pattern (.pat) and linetype (.lin) libraries.
#include "engine/libraries/libraries.hpp"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const kova::engine::HatchPattern& pattern : kova::engine::parsePatternLibrary(text))
        if (pattern.families.empty()) __builtin_trap();
    for (const kova::engine::Linetype& linetype : kova::engine::parseLinetypeLibrary(text))
        if (!(linetype.patternLength() > 0.0)) __builtin_trap();
    return 0;
}
