#pragma once

#include "kdraw/fields/object.hpp"

// Dimensions. The picture of each is an anonymous block.

namespace kdraw {

/// What all kinds of dimensions have. Points are in world coordinates unless stated.
class DimensionEntity : public Entity {
public:
    Vector3 normal{0.0, 0.0, 1.0};
    Vector2 textMiddle;  ///< in the object plane
    double elevation = 0.0;
    bool textPlaced = false;                               ///< by the user
    bool ownsBlock = true;                                 ///< nobody else refers to the block
    std::string text;                                      ///< empty or "<>": the measured value
    double textRotation = 0.0, horizontalDirection = 0.0;  ///< radians
    Vector3 blockScale{1.0, 1.0, 1.0};
    double blockRotation = 0.0;
    std::uint16_t attachment = 5;
    std::uint16_t spacingStyle = 1;
    double spacingFactor = 1.0;
    double measurement = 0.0;
    bool flag73 = false;
    bool flipFirstArrow = false, flipSecondArrow = false;
    Vector2 blockPosition;
    Handle style = 0;
    Handle block = 0;    ///< block record
    Vector3 definition;  ///< group 10

protected:
    /// `kind` is the value of group 70 without its bits; `ordinateX` stands in one of these.
    void describeCommon(Fields& f, std::uint16_t kind, bool* ordinateX = nullptr);
};

class OrdinateDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 feature, leaderEnd;
    bool xType = false;
};

class AlignedDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 first, second;
    double oblique = 0.0;  ///< of the extension lines, radians

protected:
    void describeLines(Fields& f);
};

class RotatedDimension : public AlignedDimension {
public:
    void describe(Fields& f) override;

    double rotation = 0.0;
};

class Angular3PointDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 first, second, vertex;
};

class Angular2LineDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector2 arcPoint;              ///< in the object plane
    Vector3 first, second, third;  ///< lines: first to second, third to definition
};

class RadialDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 curvePoint;  ///< the definition is the centre
    double leaderLength = 0.0;
};

class DiametricDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 nearPoint;  ///< the definition is the far one
    double leaderLength = 0.0;
};

class ArcDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 first, second, center;
    bool partial = false;
    double startAngle = 0.0, endAngle = 0.0;  ///< radians in groups too
    bool hasLeader = false;
    Vector3 leaderStart, leaderEnd;
};

class LargeRadialDimension : public DimensionEntity {
public:
    void describe(Fields& f) override;

    Vector3 curvePoint;
    double jogAngle = 0.0;
    Vector3 overrideCenter, jogPoint;
};

}  // namespace kdraw
