#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

/// A text style, or a file of shapes.
class StyleRecord : public TableRecord {
public:
    bool isShapeFile = false;
    bool vertical = false;
    double height = 0.0;  ///< 0: asked for every text
    double width = 1.0;
    double oblique = 0.0;         ///< radians
    std::uint8_t generation = 0;  ///< 2 backward, 4 upside down
    double lastHeight = 2.5;
    std::string font;
    std::string bigFont;

    void describe(Fields& f) override;
};

}  // namespace kdraw
