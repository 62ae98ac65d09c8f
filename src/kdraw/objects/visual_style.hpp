#pragma once

#include <array>
#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// How shaded pictures look. A 2D program only needs its name and type; the properties are kept for writing.
class VisualStyle : public Object {
public:
    struct Property {
        std::int32_t number = 0;
        double real = 0.0;
        Color color;
        std::string text;
        std::int16_t set = 1;  ///< 0: inherited
    };
    static constexpr std::size_t kProperties2010 = 28, kProperties = 58;

    std::string description;
    std::int32_t type = 0;
    std::int16_t unknown = 2;
    bool internal = false;
    std::array<Property, kProperties> properties;

    void describe(Fields& f) override;

private:
    void describeOld(Fields& f);
};

}  // namespace kdraw
