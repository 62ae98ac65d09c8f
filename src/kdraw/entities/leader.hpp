#pragma once

#include "kdraw/fields/object.hpp"

// Leaders and feature control frames.

namespace kdraw {

class LeaderEntity : public Entity {
public:
    void describe(Fields& f) override;

    std::uint16_t annotationKind = 3;  ///< 0 text, 1 tolerance, 2 block reference, 3 none
    bool splined = false;
    std::vector<Vector3> points;  ///< the arrow's first
    Vector3 origin;               ///< of its plane
    Vector3 normal{0.0, 0.0, 1.0};
    Vector3 xDirection{1.0, 0.0, 0.0};
    Vector3 blockOffset, endOffset;
    double boxHeight = 0.0, boxWidth = 0.0;  ///< of the annotation; R2007 and earlier, and groups
    bool hookAlongX = false;                 ///< direction of the hook line
    bool hookLine = false;                   ///< groups only
    bool arrow = true;
    std::uint16_t arrowKind = 0;
    Handle annotation = 0;
    Handle style = 0;  ///< dimension style
};

class ToleranceEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 position;
    Vector3 xDirection{1.0, 0.0, 0.0};
    Vector3 normal{0.0, 0.0, 1.0};
    std::string text;  ///< rows parted by line feeds
    Handle style = 0;  ///< dimension style
};

}  // namespace kdraw
