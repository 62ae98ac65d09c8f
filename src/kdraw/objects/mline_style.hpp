#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

class LinetypeControl;

class MLineStyle : public Object {
public:
    struct Line {
        static constexpr int kByLayer = 32767, kByBlock = 32766;
        double offset = 0.0;
        Color color;
        Handle linetype = 0;
        int linetypeIndex = kByLayer;  ///< up to R2013 in place of the reference: entry of the linetype table
    };

    std::string name;
    std::string description;
    int flags = 0;  ///< as group 70
    Color fill;
    double startAngle = 1.5707963267948966;  ///< radians
    double endAngle = 1.5707963267948966;
    std::vector<Line> lines;

    void describe(Fields& f) override;
    /// Linetypes of the indexes that a file up to R2013 has.
    void resolveLinetypes(const LinetypeControl& table);
    /// The indexes for such a file.
    void indexLinetypes(const LinetypeControl& table);

private:
    void describeGroups(Fields& f);
};

}  // namespace kdraw
