#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

class LinetypeRecord : public TableRecord {
public:
    /// A dash, a gap or a dot, with the shape or text at its end.
    struct Dash {
        static constexpr int kAbsolute = 1, kText = 2, kShape = 4;
        double length = 0.0;     ///< negative: a gap; 0: a dot
        std::int16_t shape = 0;  ///< number of the shape; of a text where it begins in the file's text area
        double x = 0.0, y = 0.0;
        double scale = 1.0;
        double rotation = 0.0;  ///< radians
        std::int16_t flags = 0;
        Handle style = 0;  ///< text style or shape file
        std::string text;
    };

    std::string description;
    double length = 0.0;  ///< of the whole pattern
    std::uint8_t alignment = 65;
    std::vector<Dash> dashes;

    void describe(Fields& f) override;

private:
    void describeGroups(Fields& f);
};

}  // namespace kdraw
