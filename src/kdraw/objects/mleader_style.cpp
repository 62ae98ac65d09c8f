#include "kdraw/objects/mleader_style.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void MLeaderStyle::describe(Fields& f) {
    const bool from2010 = f.since(Version::R2010);
    f.subclass("AcDbMLeaderStyle");
    if (from2010) f.bs(179, classVersion);
    f.bs(170, contentType);
    f.bs(171, contentOrder);
    f.bs(172, leaderOrder);
    f.bl(90, maxPoints);
    f.bd(40, firstAngle);
    f.bd(41, secondAngle);
    f.bs(173, leaderType);
    f.rawColor(91, lineColor);
    optionalHandle(f, Ref::HardPointer, 340, linetype);
    f.bl(92, lineweight);
    f.b(290, landing);
    f.bd(42, landingGap);
    f.b(291, dogleg);
    f.bd(43, doglegLength);
    f.text(3, description);
    optionalHandle(f, Ref::HardPointer, 341, arrow);
    f.bd(44, arrowSize);
    f.text(300, defaultText);
    optionalHandle(f, Ref::HardPointer, 342, textStyle);
    f.bs(174, leftAttachment);
    f.bs(178, rightAttachment);
    f.bs(175, textAngle);
    f.bs(176, textAlignment);
    f.rawColor(93, textColor);
    f.bd(45, textHeight);
    f.b(292, textFrame);
    f.b(297, alwaysLeft);
    f.bd(46, alignSpace);
    optionalHandle(f, Ref::HardPointer, 343, block);
    f.rawColor(94, blockColor);
    f.bd(47, blockScale.x);
    f.bd(49, blockScale.y);
    f.bd(140, blockScale.z);
    f.b(293, blockScaleOn);
    f.bd(141, blockRotation);
    f.b(294, blockRotationOn);
    f.bs(177, blockConnection);
    f.bd(142, scale);
    // Drawings have these two the other way round than their codes.
    f.b(296, annotative);
    f.b(295, changed);
    f.bd(143, breakSize);
    if (from2010) {
        f.bs(271, direction);
        f.bs(273, topAttachment);
        f.bs(272, bottomAttachment);
    }
    if (f.since(Version::R2013)) f.b(298, extended);
}

}  // namespace kdraw
