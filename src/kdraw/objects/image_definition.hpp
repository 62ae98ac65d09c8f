#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A picture's file.
class ImageDefinition : public Object {
public:
    std::int32_t classVersion = 0;
    Vector2 size;  ///< in pixels
    std::string path;
    bool loaded = true;
    std::uint8_t unit = 0;    ///< 0 none, 2 cm, 5 inch
    Vector2 pixel{1.0, 1.0};  ///< size of a pixel in drawing units

    void describe(Fields& f) override;
};

/// Links an image definition to one image, which owns it.
class ImageReactor : public Object {
public:
    std::int32_t classVersion = 2;

    void describe(Fields& f) override;
};

/// A file that an underlay shows.
class UnderlayDefinition : public Object {
public:
    std::string path;
    std::string page;

    void describe(Fields& f) override;
};

}  // namespace kdraw
