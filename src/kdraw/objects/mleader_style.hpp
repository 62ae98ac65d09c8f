#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// How multileaders look. Its name is the key in the dictionary. Angles in radians, in groups as well.
class MLeaderStyle : public Object {
public:
    std::int16_t classVersion = 2;
    std::int16_t contentType = 2;  ///< 0 none, 1 block, 2 text, 3 tolerance
    std::int16_t contentOrder = 1, leaderOrder = 0;
    std::int32_t maxPoints = 2;
    double firstAngle = 0.0, secondAngle = 0.0;
    std::int16_t leaderType = 1;  ///< 0 invisible, 1 straight, 2 spline
    Color lineColor = Color::fromIndex(0);
    Handle linetype = 0;
    std::int32_t lineweight = -2;
    bool landing = true;
    double landingGap = 2.0;
    bool dogleg = true;
    double doglegLength = 8.0;
    std::string description = "Standard";
    Handle arrow = 0;
    double arrowSize = 4.0;
    std::string defaultText;
    Handle textStyle = 0;
    std::int16_t leftAttachment = 1, rightAttachment = 1, textAngle = 1, textAlignment = 0;
    Color textColor = Color::fromIndex(0);
    double textHeight = 4.0;
    bool textFrame = false;
    bool alwaysLeft = false;
    double alignSpace = 4.0;
    Handle block = 0;
    Color blockColor = Color::fromIndex(0);
    Vector3 blockScale{1.0, 1.0, 1.0};
    bool blockScaleOn = true;
    double blockRotation = 0.0;
    bool blockRotationOn = true;
    std::int16_t blockConnection = 0;
    double scale = 1.0;
    bool changed = false;
    bool annotative = false;
    double breakSize = 3.75;
    std::int16_t direction = 0, topAttachment = 9, bottomAttachment = 9;
    bool extended = false;

    void describe(Fields& f) override;
};

}  // namespace kdraw
