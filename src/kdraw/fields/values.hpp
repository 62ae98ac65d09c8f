#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kdraw {

using kova::math::Vector2;
using kova::math::Vector3;

/// Handle of an object; 0 is the null reference.
using Handle = std::uint64_t;

/// Relation of a reference, as its code in the file says (2 to 5).
enum class Ref : std::uint8_t { SoftOwner = 2, HardOwner = 3, SoftPointer = 4, HardPointer = 5 };

/// A colour as object bodies and header variables hold it: the method in the high byte, the value below.
struct Color {
    static constexpr std::uint32_t kByLayer = 0xC0000000, kByBlock = 0xC1000000, kTrue = 0xC2000000, kIndexed = 0xC3000000,
                                   kForeground = 0xC5000000, kNone = 0xC8000000;
    std::uint32_t raw = kByLayer;
    std::string name;  ///< of a colour book's colour
    std::string book;

    static Color fromIndex(int index);  ///< 0 ByBlock, 256 ByLayer, else 1 to 255
    /// The colour index that DXF shows; for a true colour the nearest of the palette is not known here: 7.
    int index() const;
    bool isTrue() const { return (raw & 0xFF000000) == kTrue; }
    std::uint32_t rgb() const { return raw & 0xFFFFFF; }
};

/// One item of extended data. Which member counts follows from the code.
struct XItem {
    int code = 1000;           ///< DXF group code, 1000 to 1071
    std::string text;          ///< 1000, 1002 ("{", "}"), UTF-8; 1004 bytes
    Handle handle = 0;         ///< 1003 (a layer), 1005
    Vector3 point;             ///< 1010 to 1013
    double real = 0.0;         ///< 1040 to 1042
    std::int32_t integer = 0;  ///< 1070, 1071
};

/// Extended data of one application.
struct XBlock {
    Handle application = 0;  ///< APPID record
    std::vector<XItem> items;
};

}  // namespace kdraw
