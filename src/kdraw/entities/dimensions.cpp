#include "kdraw/entities/dimensions.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void DimensionEntity::describeCommon(Fields& f, std::uint16_t kind, bool* ordinateX) {
    constexpr std::uint16_t kOwnBlock = 32, kOrdinateX = 64, kPlaced = 128;
    f.subclass("AcDbDimension");
    if (f.dxf()) {
        f.constant(280, 0);
        f.record(Table::Block, 2, block);
        f.bd3(10, definition);
        f.rd2(11, textMiddle);
        f.rd(31, elevation);
        if (wanted(f, !(blockPosition == Vector2{}))) f.rd2(12, blockPosition);
        auto flags = static_cast<std::uint16_t>(kind | (ownsBlock ? kOwnBlock : 0) | (textPlaced ? kPlaced : 0) |
                                                (ordinateX != nullptr && *ordinateX ? kOrdinateX : 0));
        f.rs(70, flags);
        if (f.reading()) {
            ownsBlock = (flags & kOwnBlock) != 0;
            textPlaced = (flags & kPlaced) != 0;
            if (ordinateX != nullptr) *ordinateX = (flags & kOrdinateX) != 0;
        }
        if (wanted(f, !text.empty())) f.text(1, text);
    } else {
        std::uint8_t version = 0;
        if (f.since(Version::R2010)) f.rc(0, version);
        f.bd3(0, normal);
        f.rd2(0, textMiddle);
        f.bd(0, elevation);
        auto flags = static_cast<std::uint8_t>((textPlaced ? 0 : 1) | (ownsBlock ? 2 : 0));
        f.rc(0, flags);
        if (f.reading()) {
            textPlaced = (flags & 1) == 0;
            ownsBlock = (flags & 2) != 0;
        }
        f.text(0, text);
    }
    sparseAngle(f, 53, textRotation);
    sparseAngle(f, 51, horizontalDirection);
    f.bd3(0, blockScale);
    sparseAngle(f, 54, blockRotation);
    f.bs(71, attachment);
    f.bs(72, spacingStyle);
    f.bd(41, spacingFactor);
    f.bd(42, measurement);
    if (f.since(Version::R2007)) {
        if (wanted(f, flag73)) f.b(73, flag73);
        if (wanted(f, flipFirstArrow)) f.b(74, flipFirstArrow);
        if (wanted(f, flipSecondArrow)) f.b(75, flipSecondArrow);
    }
    if (f.dxf()) {
        f.extrusion(210, normal);
        f.record(Table::DimStyle, 3, style);
        standardWhenMissing(f, Table::DimStyle, style);
        return;
    }
    f.rd2(0, blockPosition);
    f.record(Table::DimStyle, 0, style);
    f.record(Table::Block, 0, block);
}

// Groups have the definition point in the common part; records have it among the kind's own points.

namespace {

void definitionPoint(Fields& f, Vector3& p) {
    if (!f.dxf()) f.bd3(0, p);
}

}  // namespace

void OrdinateDimension::describe(Fields& f) {
    describeCommon(f, 6, &xType);
    f.subclass("AcDbOrdinateDimension");
    definitionPoint(f, definition);
    f.bd3(13, feature);
    f.bd3(14, leaderEnd);
    if (f.dxf()) return;
    std::uint8_t flags = xType ? 1 : 0;
    f.rc(0, flags);
    xType = (flags & 1) != 0;
}

void AlignedDimension::describeLines(Fields& f) {
    f.subclass("AcDbAlignedDimension");
    f.bd3(13, first);
    f.bd3(14, second);
    definitionPoint(f, definition);
    sparseAngle(f, 52, oblique);
}

void AlignedDimension::describe(Fields& f) {
    describeCommon(f, 1);
    describeLines(f);
}

void RotatedDimension::describe(Fields& f) {
    describeCommon(f, 0);
    describeLines(f);
    f.angle(50, rotation);
    f.subclass("AcDbRotatedDimension");
}

void Angular3PointDimension::describe(Fields& f) {
    describeCommon(f, 5);
    f.subclass("AcDb3PointAngularDimension");
    definitionPoint(f, definition);
    f.bd3(13, first);
    f.bd3(14, second);
    f.bd3(15, vertex);
}

void Angular2LineDimension::describe(Fields& f) {
    describeCommon(f, 2);
    f.subclass("AcDb2LineAngularDimension");
    f.rd2(16, arcPoint);
    if (f.output() != nullptr) f.rd(36, elevation);
    f.bd3(13, first);
    f.bd3(14, second);
    f.bd3(15, third);
    definitionPoint(f, definition);
}

void RadialDimension::describe(Fields& f) {
    describeCommon(f, 4);
    f.subclass("AcDbRadialDimension");
    definitionPoint(f, definition);
    f.bd3(15, curvePoint);
    f.bd(40, leaderLength);
}

void DiametricDimension::describe(Fields& f) {
    describeCommon(f, 3);
    f.subclass("AcDbDiametricDimension");
    f.bd3(15, nearPoint);
    definitionPoint(f, definition);
    f.bd(40, leaderLength);
}

void ArcDimension::describe(Fields& f) {
    describeCommon(f, 8);
    f.subclass("AcDbArcDimension");
    definitionPoint(f, definition);
    f.bd3(13, first);
    f.bd3(14, second);
    f.bd3(15, center);
    f.b(70, partial);
    f.bd(40, startAngle);
    f.bd(41, endAngle);
    f.b(71, hasLeader);
    f.bd3(16, leaderStart);
    f.bd3(17, leaderEnd);
}

void LargeRadialDimension::describe(Fields& f) {
    describeCommon(f, 9);
    f.subclass("AcDbRadialDimensionLarge");
    definitionPoint(f, definition);
    f.bd3(15, curvePoint);
    f.bd(40, jogAngle);
    f.bd3(13, overrideCenter);
    f.bd3(14, jogPoint);
}

}  // namespace kdraw
