#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

std::string TextCodec::toUtf8(std::string_view raw) const {
    while (!raw.empty() && raw.back() == '\0') raw.remove_suffix(1);
    return page_.toUtf8(raw);
}

std::string utf8OfUtf16(std::string_view bytes) {
    std::size_t size = bytes.size() & ~std::size_t{1};
    while (size >= 2 && bytes[size - 1] == '\0' && bytes[size - 2] == '\0') size -= 2;
    return kova::strings::utf8OfUtf16(bytes.substr(0, size));
}

}  // namespace kdraw
