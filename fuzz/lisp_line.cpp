// Evaluates any bytes as a line of LISP and answers its questions: no crash, no hang, bounded memory.
#include <cstdint>
#include <string>

#include "lisp_line.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kova::fuzz::lispLine(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
