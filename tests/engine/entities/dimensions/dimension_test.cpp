#include "engine/entities/dimensions/dimension.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "engine/entities/dimensions/dimension_samples.hpp"
#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/outline.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::toRadians;
using math::Vector2;

/// Keeps what is emitted, piece by piece.
class Recorder final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    struct Piece {
        Path path;
        OutlineStyle style;
        double width = 0.0;
    };
    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) override {
        strokes.push_back({Path().append(path), style, options.widths.empty() ? 0.0 : options.widths[0].x});
    }
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override {
        fills.push_back({Path().append(rings), style});
        background |= options.background;
    }
    void text(const TextRun& run, const OutlineStyle& style) override {
        texts.emplace_back(run.text);
        textStyle = style;
    }
    std::vector<Piece> strokes;
    std::vector<Piece> fills;
    std::vector<std::string> texts;
    OutlineStyle textStyle;
    bool background = false;
};

Recorder record(const Entity& e) {
    Recorder sink;
    e.emit(sink, outlineStyle(e));
    return sink;
}

using Segment = std::pair<Vector2, Vector2>;

/// The straight pieces of a part, each with its left end (the lower of vertical ones) first.
std::vector<Segment> segments(const DimensionPicture& picture, DimPart part) {
    std::vector<Segment> list;
    for (const auto& s : picture.strokes) {
        if (s.part != part) continue;
        Vector2 from;
        for (const PathElement& e : s.path.view()) {
            if (e.kind == PathElement::Kind::Line) {
                const bool ordered = from.x < e.p.x - 1e-9 || (std::abs(from.x - e.p.x) < 1e-9 && from.y <= e.p.y);
                list.push_back(ordered ? Segment{from, e.p} : Segment{e.p, from});
            }
            from = e.p;
        }
    }
    return list;
}

/// The arcs of a part as (start angle, end angle) in degrees.
std::vector<std::pair<double, double>> arcs(const DimensionPicture& picture, DimPart part) {
    std::vector<std::pair<double, double>> list;
    for (const auto& s : picture.strokes) {
        if (s.part != part) continue;
        for (const PathElement& e : s.path.view())
            if (e.kind == PathElement::Kind::Arc) list.emplace_back(math::toDegrees(e.t0), math::toDegrees(e.t1));
    }
    return list;
}

MATCHER_P3(At, x, y, eps, "") { return std::abs(arg.x - x) <= eps && std::abs(arg.y - y) <= eps; }
MATCHER_P4(Line, ax, ay, bx, by, "") {
    return std::abs(arg.first.x - ax) < 1e-6 && std::abs(arg.first.y - ay) < 1e-6 &&
           std::abs(arg.second.x - bx) < 1e-6 && std::abs(arg.second.y - by) < 1e-6;
}
void expectAt(const Vector2& p, double x, double y, double eps = 1e-6) { EXPECT_THAT(p, At(x, y, eps)); }

// What is measured -------------------------------------------------------------------------------------------------

TEST(Dimension, Measurements) {
    EXPECT_DOUBLE_EQ(linear({0, 0}, {30, 40}, {0, 50}).measurement(), 30);
    EXPECT_NEAR(linear({0, 0}, {30, 40}, {-9, 0}, kPi / 2).measurement(), 40, 1e-12);
    DimensionEntity aligned = linear({0, 0}, {30, 40}, {0, 50});
    aligned.subType = DimensionType::Aligned;
    EXPECT_DOUBLE_EQ(aligned.measurement(), 50);
    // Slanted extension lines of an aligned dimension move its line, not its length.
    aligned.obliqueAngle = kPi / 2;
    EXPECT_NEAR(aligned.measurement(), 50, 1e-9);

    EXPECT_DOUBLE_EQ(radial(DimensionType::Radius, {1, 1}, {4, 5}, {9, 9}).measurement(), 5);
    EXPECT_DOUBLE_EQ(radial(DimensionType::Diameter, {0, 0}, {6, 8}, {9, 9}).measurement(), 10);

    DimensionEntity ordinate = radial(DimensionType::Ordinate, {10, -25}, {40, -20}, {});
    ordinate.def3 = {2, 5};
    EXPECT_DOUBLE_EQ(ordinate.measurement(), 30);
    ordinate.subType = DimensionType::OrdinateX;
    EXPECT_DOUBLE_EQ(ordinate.measurement(), 8);
    ordinate.linearRotation = kPi / 2;
    EXPECT_NEAR(ordinate.measurement(), 30, 1e-12);

    // The same points: the dimension line point chooses between the angle and the rest of the turn.
    EXPECT_NEAR(angular({0, 0}, {10, 0}, {0, 10}, {5, 5}).measurement(), kPi / 2, 1e-12);
    EXPECT_NEAR(angular({0, 0}, {10, 0}, {0, 10}, {-5, -5}).measurement(), 1.5 * kPi, 1e-12);

    // Two crossing lines: four sectors.
    DimensionEntity lines = angular({-10, 0}, {10, 0}, {0, 0}, {});
    lines.subType = DimensionType::Angular2Line;
    lines.def1 = {-10, 0};
    lines.def2 = {10, 0};
    lines.def3 = {5, 5};
    lines.def4 = {20, 20};
    for (const auto& [line, degrees] : {std::pair{Vector2{9, 3}, 45.0}, std::pair{Vector2{-3, 9}, 135.0},
                                        std::pair{Vector2{-9, -3}, 45.0}, std::pair{Vector2{3, -9}, 135.0}}) {
        lines.dimLine = line;
        EXPECT_NEAR(math::toDegrees(lines.measurement()), degrees, 1e-9);
    }
    lines.subType = DimensionType::Angular3Point;
    lines.angularLines = true;
    EXPECT_NEAR(math::toDegrees(lines.measurement()), 135.0, 1e-9);
    lines.def4 = {25, 5};  // parallel
    EXPECT_EQ(lines.measurement(), 0.0);

    DimensionEntity arc = angular({0, 0}, {10, 0}, {0, 10}, {12, 12});
    arc.subType = DimensionType::ArcLength;
    EXPECT_NEAR(arc.measurement(), 5 * kPi, 1e-9);
    std::swap(arc.def1, arc.def2);
    EXPECT_NEAR(arc.measurement(), 15 * kPi, 1e-9);
}

// Lines of linear dimensions ---------------------------------------------------------------------------------------

TEST(DimensionLayout, LinearStandsBetweenItsExtensionLines) {
    const DimensionPicture p = layoutDimension(linear({0, 0}, {100, 5}, {40, 20}));
    EXPECT_THAT(segments(p, DimPart::ExtLine1), testing::ElementsAre(Line(0, 0.625, 0, 21.25)));
    EXPECT_THAT(segments(p, DimPart::ExtLine2), testing::ElementsAre(Line(100, 5.625, 100, 21.25)));
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(2.5, 20, 97.5, 20)));
    ASSERT_EQ(p.arrows.size(), 2u);
    expectAt(p.arrows[0].tip, 0, 20);
    expectAt(p.arrows[0].direction, -1, 0);
    expectAt(p.arrows[1].tip, 100, 20);
    expectAt(p.arrows[1].direction, 1, 0);
    EXPECT_EQ(p.arrows[0].size, 2.5);
    // Above the line by the gap, in the middle.
    expectAt(p.textMiddle, 50, 20 + 0.625 + p.textHeight / 2);
    EXPECT_EQ(p.textRotation, 0);
    EXPECT_GT(p.textWidth, 3.0);

    // Points given from right to left, the line below: the text stays readable and above the line.
    const DimensionPicture q = layoutDimension(linear({100, 0}, {0, 0}, {0, -20}));
    EXPECT_THAT(segments(q, DimPart::ExtLine1), testing::ElementsAre(Line(100, -21.25, 100, -0.625)));
    expectAt(q.arrows[0].tip, 100, -20);
    expectAt(q.arrows[0].direction, 1, 0);
    expectAt(q.textMiddle, 50, -20 + 0.625 + q.textHeight / 2);

    // Vertical: read from the right.
    const DimensionPicture v = layoutDimension(linear({0, 0}, {0, 80}, {-10, 0}, kPi / 2));
    EXPECT_NEAR(v.textRotation, kPi / 2, 1e-9);
    expectAt(v.textMiddle, -10 - 0.625 - v.textHeight / 2, 40);
}

TEST(DimensionLayout, StylesShiftTheLines) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    d.styleOverrides = {{"DIMSCALE", 2}, {"DIMTAD", 0}, {"DIMEXO", 1}, {"DIMEXE", 3}};
    DimensionPicture p = layoutDimension(d);
    EXPECT_THAT(segments(p, DimPart::ExtLine1), testing::ElementsAre(Line(0, 2, 0, 26)));
    // The text stands in the line, which leaves a gap of DIMGAP on both sides.
    expectAt(p.textMiddle, 50, 20);
    const double half = p.textWidth / 2 + 1.25;
    const auto parts = segments(p, DimPart::DimLine);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_NEAR(parts[0].first.x, 5, 1e-9);
    EXPECT_NEAR(parts[0].second.x, 50 - half, 1e-4);
    EXPECT_NEAR(parts[1].first.x, 50 + half, 1e-4);
    EXPECT_NEAR(parts[1].second.x, 95, 1e-9);

    d.styleOverrides = {{"DIMSE1", 1}, {"DIMSD2", 1}, {"DIMFXLON", 1}, {"DIMFXL", 4}};
    p = layoutDimension(d);
    EXPECT_TRUE(segments(p, DimPart::ExtLine1).empty());
    EXPECT_THAT(segments(p, DimPart::ExtLine2), testing::ElementsAre(Line(100, 16, 100, 21.25)));
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(2.5, 20, 50, 20)));
    ASSERT_EQ(p.arrows.size(), 1u);
    expectAt(p.arrows[0].tip, 0, 20);

    // Ticks: strokes of twice DIMTSZ, the line drawn over them by DIMDLE.
    d.styleOverrides = {{"DIMTSZ", 1.5}, {"DIMDLE", 2}};
    p = layoutDimension(d);
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(-2, 20, 102, 20)));
    EXPECT_EQ(arrowKind(p.arrows[0].block), ArrowKind::Oblique);
    EXPECT_EQ(p.arrows[0].size, 3.0);

    // Sizes of the dimension itself count before those of the style, overrides before both.
    d.styleOverrides.clear();
    d.arrowSize = 4;
    d.extExtension = 2;
    EXPECT_THAT(segments(layoutDimension(d), DimPart::DimLine), testing::ElementsAre(Line(4, 20, 96, 20)));
    EXPECT_THAT(segments(layoutDimension(d), DimPart::ExtLine1), testing::ElementsAre(Line(0, 0.625, 0, 22)));
    d.styleOverrides = {{"DIMASZ", 1}};
    EXPECT_THAT(segments(layoutDimension(d), DimPart::DimLine), testing::ElementsAre(Line(1, 20, 99, 20)));
}

TEST(DimensionLayout, TextPositions) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    const auto with = [&](std::map<std::string, double> overrides) {
        d.styleOverrides = std::move(overrides);
        return layoutDimension(d);
    };
    DimensionPicture p = with({{"DIMJUST", 1}});
    EXPECT_NEAR(p.textMiddle.x, 2.5 + 0.625 + p.textWidth / 2, 1e-9);
    p = with({{"DIMJUST", 2}});
    EXPECT_NEAR(p.textMiddle.x, 100 - 2.5 - 0.625 - p.textWidth / 2, 1e-9);
    p = with({{"DIMJUST", 3}});  // along the first extension line
    EXPECT_NEAR(p.textRotation, kPi / 2, 1e-9);
    EXPECT_NEAR(p.textMiddle.x, -0.625 - p.textHeight / 2, 1e-9);
    EXPECT_GT(p.textMiddle.y, 20 + p.textWidth / 2);
    p = with({{"DIMTAD", 4}});
    EXPECT_NEAR(p.textMiddle.y, 20 - 0.625 - p.textHeight / 2, 1e-9);
    p = with({{"DIMTAD", 0}, {"DIMTVP", 2}});
    EXPECT_NEAR(p.textMiddle.y, 25, 1e-9);
    EXPECT_EQ(segments(p, DimPart::DimLine).size(), 1u);

    // Outside: away from what is measured.
    d.dimLine = {0, -20};
    p = with({{"DIMTAD", 2}});
    EXPECT_LT(p.textMiddle.y, -20);
    p = with({{"DIMTAD", 1}});
    EXPECT_GT(p.textMiddle.y, -20);

    // Horizontal text beside a slanted line stands in the line.
    d.def2 = {60, 60};
    d.dimLine = {-20, 0};
    d.linearRotation = kPi / 4;
    p = with({{"DIMTIH", 1}});
    EXPECT_EQ(p.textRotation, 0);
    EXPECT_EQ(segments(p, DimPart::DimLine).size(), 2u);
    d.textRotation = toRadians(30);
    EXPECT_NEAR(with({}).textRotation, toRadians(30), 1e-12);
}

TEST(DimensionLayout, WhatDoesNotFitGoesOutside) {
    // The text is about 3 to 6 wide, both arrows take 5.
    const auto layout = [](double length, std::map<std::string, double> overrides) {
        DimensionEntity d = linear({0, 0}, {length, 0}, {0, 20});
        d.textOverride = "88";
        d.styleOverrides = std::move(overrides);
        return layoutDimension(d);
    };
    const double text = layout(100, {}).textWidth + 2 * 0.625;
    ASSERT_GT(text, 4.0);
    ASSERT_LT(text, 6.5);
    const double both = text + 5.0;
    const double loose = 0.5;

    DimensionPicture p = layout(both + loose, {});
    EXPECT_TRUE(p.arrowsInside && p.textInside);
    p = layout(both - loose, {});  // best fit keeps the text
    EXPECT_FALSE(p.arrowsInside);
    EXPECT_TRUE(p.textInside);
    // Arrows point inwards from outside, each with a line as long again; DIMTOFL keeps the line between.
    const double x = both - loose;
    expectAt(p.arrows[0].direction, 1, 0);
    expectAt(p.arrows[1].direction, -1, 0);
    EXPECT_THAT(segments(p, DimPart::DimLine),
                testing::ElementsAre(Line(0, 20, x, 20), Line(-5, 20, -2.5, 20), Line(x + 2.5, 20, x + 5, 20)));
    EXPECT_THAT(segments(layout(x, {{"DIMTOFL", 0}}), DimPart::DimLine),
                testing::ElementsAre(Line(-5, 20, -2.5, 20), Line(x + 2.5, 20, x + 5, 20)));

    p = layout(both - loose, {{"DIMATFIT", 0}});
    EXPECT_FALSE(p.arrowsInside || p.textInside);
    p = layout(both - loose, {{"DIMATFIT", 2}});
    EXPECT_TRUE(p.arrowsInside);
    EXPECT_FALSE(p.textInside);
    p = layout(2, {});
    EXPECT_FALSE(p.arrowsInside || p.textInside);
    // Beyond the second extension line, the line drawn out below it.
    EXPECT_GT(p.textMiddle.x - p.textWidth / 2, 2 + 5);
    const auto lines = segments(p, DimPart::DimLine);
    EXPECT_NEAR(lines.back().second.x, p.textMiddle.x + p.textWidth / 2, 1e-6);

    p = layout(2, {{"DIMTIX", 1}});
    EXPECT_TRUE(p.textInside);
    EXPECT_EQ(p.arrows.size(), 2u);
    p = layout(2, {{"DIMTIX", 1}, {"DIMSOXD", 1}});
    EXPECT_TRUE(p.arrows.empty());

    // Ticks need no room.
    p = layout(text + loose, {{"DIMTSZ", 1}});
    EXPECT_TRUE(p.arrowsInside && p.textInside);
    // Instead of a line drawn out: over the middle, with or without leader.
    p = layout(2, {{"DIMTMOVE", 1}});
    EXPECT_FALSE(segments(p, DimPart::Leader).empty());
    p = layout(2, {{"DIMTMOVE", 2}});
    EXPECT_TRUE(segments(p, DimPart::Leader).empty());
    EXPECT_NEAR(p.textMiddle.x, 1, 1e-9);
}

TEST(DimensionLayout, TextPutByTheUser) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    EXPECT_FALSE(d.hasUserText());
    d.setUserText({30, 20});
    DimensionPicture p = layoutDimension(d);
    expectAt(p.textMiddle, 30, 20);
    EXPECT_EQ(segments(p, DimPart::DimLine).size(), 2u);
    d.setUserText({130, 20});  // the line follows to the text
    p = layoutDimension(d);
    EXPECT_NEAR(segments(p, DimPart::DimLine).back().second.x, 130 - p.textWidth / 2 - 0.625, 1e-4);
    d.setUserText({50, 40});
    d.styleOverrides["DIMTMOVE"] = 1;
    EXPECT_FALSE(segments(layoutDimension(d), DimPart::Leader).empty());
    // The origin is a place like any other.
    d.setUserText({0, 0});
    EXPECT_TRUE(d.hasUserText());
    expectAt(layoutDimension(d).textMiddle, 0, 0);
    d.clearUserText();
    EXPECT_FALSE(d.hasUserText());
}

TEST(DimensionLayout, ObliqueSplitAndFramedTexts) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    d.obliqueAngle = toRadians(45);
    EXPECT_DOUBLE_EQ(d.measurement(), 100);
    DimensionPicture p = layoutDimension(d);
    expectAt(p.arrows[0].tip, 20, 20);
    expectAt(p.arrows[1].tip, 120, 20);

    d.obliqueAngle = 0;
    d.textOverride = "above\\Xbelow";
    p = layoutDimension(d);
    ASSERT_EQ(p.texts.size(), 2u);
    expectAt(p.textMiddle, 50, 20);
    EXPECT_EQ(segments(p, DimPart::DimLine).size(), 1u);  // the line passes between
    EXPECT_THAT(record(d).texts, testing::ElementsAre("above", "below"));

    d.textOverride = "basic";
    d.styleOverrides = {{"DIMGAP", -1}};
    p = layoutDimension(d);
    const auto frame = segments(p, DimPart::Frame);
    ASSERT_GE(frame.size(), 3u);
    Bounds2 box;
    for (const auto& s : frame) {
        box.expand(s.first);
        box.expand(s.second);
    }
    EXPECT_NEAR(box.width(), p.textWidth + 2, 1e-9);
    EXPECT_NEAR(box.min.y, 20, 1e-9);

    d.styleOverrides.clear();
    const double plainWidth = layoutDimension(d).textWidth;
    d.inspectShape = InspectionShape::Round;
    d.inspectLabel = "A";
    d.inspectRate = "100%";
    p = layoutDimension(d);
    EXPECT_EQ(p.texts.size(), 3u);
    EXPECT_GT(p.textWidth, plainWidth);
    EXPECT_EQ(arcs(p, DimPart::Frame).size(), 2u);
    const Recorder seen = record(d);
    EXPECT_THAT(seen.texts, testing::UnorderedElementsAre("A", "basic", "100%"));

    DimensionEntity jog = linear({0, 0}, {100, 0}, {0, 20});
    jog.jogged = true;
    jog.jogPoint = {75, 20};
    p = layoutDimension(jog);
    EXPECT_EQ(segments(p, DimPart::DimLine).size(), 5u);  // line, three strokes of the jog, line
    jog.textOverride = " ";
    p = layoutDimension(jog);
    EXPECT_FALSE(p.hasText);
    EXPECT_TRUE(record(jog).texts.empty());
}

// The other kinds --------------------------------------------------------------------------------------------------

TEST(DimensionLayout, Angular) {
    DimensionEntity d = angular({0, 0}, {20, 0}, {0, 60}, {30, 30});
    const double r = std::hypot(30, 30);
    DimensionPicture p = layoutDimension(d);
    EXPECT_THAT(segments(p, DimPart::ExtLine1), testing::ElementsAre(Line(20.625, 0, r + 1.25, 0)));
    // The other point lies beyond the arc: its line runs inwards.
    EXPECT_THAT(segments(p, DimPart::ExtLine2), testing::ElementsAre(Line(0, r - 1.25, 0, 59.375)));
    ASSERT_EQ(p.arrows.size(), 2u);
    expectAt(p.arrows[0].tip, r, 0);
    expectAt(p.arrows[1].tip, 0, r);
    EXPECT_LT(p.arrows[0].direction.y, -0.99);
    EXPECT_LT(p.arrows[1].direction.x, -0.99);
    EXPECT_NEAR(p.textMiddle.angle(), kPi / 4, 1e-9);
    EXPECT_NEAR(p.textRotation, -kPi / 4, 1e-9);
    EXPECT_NEAR(p.textMiddle.length(), r + 0.625 + p.textHeight / 2, 1e-9);
    const auto one = arcs(p, DimPart::DimLine);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_NEAR(one[0].first, math::toDegrees(2.5 / r), 1e-9);
    EXPECT_NEAR(one[0].second, 90 - math::toDegrees(2.5 / r), 1e-9);

    d.styleOverrides = {{"DIMTAD", 0}};  // in the line, which is parted
    const auto parted = arcs(layoutDimension(d), DimPart::DimLine);
    ASSERT_EQ(parted.size(), 2u);
    EXPECT_LT(parted[0].second, 45);
    EXPECT_GT(parted[1].first, 45);
    EXPECT_NEAR(parted[0].second + parted[1].first, 90, 1e-6);

    // Text within a reflex arc stays clear of it: the arc is whole.
    p = layoutDimension(angular({0, 0}, {10, 0}, {0, 10}, {-12, -12}));
    EXPECT_EQ(arcs(p, DimPart::DimLine).size(), 1u);
    for (const Vector2& corner : p.textBox()) EXPECT_LT(corner.length(), std::hypot(12, 12) - 0.5);

    // A small angle: arrows outside.
    p = layoutDimension(angular({0, 0}, {20, 0}, {20, 0.5}, {20, 0.2}));
    EXPECT_FALSE(p.arrowsInside);
    EXPECT_GT(p.arrows[0].direction.y, 0.9);

    // Lines need an extension line only beyond their ends.
    DimensionEntity lines;
    lines.subType = DimensionType::Angular2Line;
    lines.def1 = {10, 0};
    lines.def2 = {50, 0};
    lines.def3 = {0, 5};
    lines.def4 = {0, 15};
    lines.dimLine = {20, 20};
    p = layoutDimension(lines);
    EXPECT_TRUE(segments(p, DimPart::ExtLine1).empty());
    EXPECT_THAT(segments(p, DimPart::ExtLine2), testing::ElementsAre(Line(0, 15.625, 0, std::hypot(20, 20) + 1.25)));
}

TEST(DimensionLayout, ArcLengths) {
    // A quarter and more: radial extension lines.
    DimensionEntity d = angular({0, 0}, {20, 0}, {-20, 0}, {0, 30});
    d.subType = DimensionType::ArcLength;
    DimensionPicture p = layoutDimension(d);
    EXPECT_EQ(d.text(), "62.83");
    EXPECT_THAT(segments(p, DimPart::ExtLine1), testing::ElementsAre(Line(20.625, 0, 31.25, 0)));
    EXPECT_EQ(arcs(p, DimPart::Frame).size(), 1u);  // the symbol before the text
    d.styleOverrides = {{"DIMARCSYM", 2}};
    EXPECT_TRUE(arcs(layoutDimension(d), DimPart::Frame).empty());
    // A shorter arc: parallel extension lines, the arc itself moved.
    d.def1 = 20 * Vector2::from_angle(toRadians(60));
    d.def2 = 20 * Vector2::from_angle(toRadians(120));
    p = layoutDimension(d);
    EXPECT_NEAR(d.measurement(), 20 * kPi / 3, 1e-9);
    EXPECT_THAT(segments(p, DimPart::ExtLine1),
                testing::ElementsAre(Line(10, d.def1.y + 0.625, 10, d.def1.y + 10 + 1.25)));
    expectAt(p.arrows[0].tip, 10, d.def1.y + 10);
    EXPECT_EQ(p.arrows.size(), 2u);
    d.def4 = {0, 20};  // a leader to the arc
    p = layoutDimension(d);
    ASSERT_EQ(p.arrows.size(), 3u);
    expectAt(p.arrows[2].tip, 0, 20);
}

TEST(DimensionLayout, Radial) {
    DimensionEntity d = radial(DimensionType::Radius, {0, 0}, {50, 0}, {25, 0});
    DimensionPicture p = layoutDimension(d);
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(0, 0, 47.5, 0)));
    ASSERT_EQ(p.arrows.size(), 1u);
    expectAt(p.arrows[0].tip, 50, 0);
    expectAt(p.arrows[0].direction, 1, 0);
    expectAt(p.textMiddle, 25, 0.625 + p.textHeight / 2);
    EXPECT_TRUE(segments(p, DimPart::CenterMark).empty());

    // Outside with a line from the centre; without DIMTOFL the arrow comes from outside and the centre is marked.
    d.dimLine = {80, 0};
    p = layoutDimension(d);
    expectAt(p.arrows[0].direction, 1, 0);
    EXPECT_NEAR(segments(p, DimPart::DimLine).back().second.x, 80 + p.textWidth / 2, 1e-6);
    d.styleOverrides = {{"DIMTOFL", 0}, {"DIMTAD", 0}};
    p = layoutDimension(d);
    expectAt(p.arrows[0].direction, -1, 0);
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(52.5, 0, 80 - p.textWidth / 2 - 0.625, 0)));
    EXPECT_THAT(segments(p, DimPart::CenterMark), testing::ElementsAre(Line(-2.5, 0, 2.5, 0), Line(0, -2.5, 0, 2.5)));
    d.styleOverrides["DIMCEN"] = -2;
    EXPECT_EQ(segments(layoutDimension(d), DimPart::CenterMark).size(), 6u);
    d.styleOverrides["DIMCEN"] = 0;
    EXPECT_TRUE(segments(layoutDimension(d), DimPart::CenterMark).empty());

    // Horizontal text at the end of a hook.
    DimensionEntity hooked = radial(DimensionType::Radius, {0, 0}, {30, 40}, {60, 80});
    hooked.styleOverrides = {{"DIMTOH", 1}, {"DIMTAD", 0}, {"DIMTOFL", 0}};
    p = layoutDimension(hooked);
    EXPECT_EQ(p.textRotation, 0);
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(31.5, 42, 60, 80), Line(60, 80, 62.5, 80)));
    expectAt(p.textMiddle, 62.5 + 0.625 + p.textWidth / 2, 80);

    p = layoutDimension(radial(DimensionType::Diameter, {40, 0}, {-40, 0}, {-10, 0}));
    EXPECT_THAT(segments(p, DimPart::DimLine), testing::ElementsAre(Line(-37.5, 0, 37.5, 0)));
    ASSERT_EQ(p.arrows.size(), 2u);
    expectAt(p.arrows[0].tip, -40, 0);  // the near point
    expectAt(p.arrows[1].tip, 40, 0);
    // Too small for its text.
    p = layoutDimension(radial(DimensionType::Diameter, {1, 0}, {-1, 0}, {0.5, 0}));
    EXPECT_FALSE(p.textInside);
    EXPECT_GT(p.textMiddle.x - p.textWidth / 2, 1 + 2.5);
}

TEST(DimensionLayout, JoggedRadiusAndOrdinates) {
    DimensionEntity d = radial(DimensionType::Radius, {0, 0}, {100, 0}, {90, 0});
    d.jogged = true;
    d.jogCenter = {40, 10};
    d.jogPoint = {70, 5};
    EXPECT_EQ(d.measurement(), 100);
    DimensionPicture p = layoutDimension(d);
    const auto lines = segments(p, DimPart::DimLine);
    // Parallel to the radius from the override centre, back over the jog at 45 degrees, along the radius.
    EXPECT_THAT(lines, testing::ElementsAre(Line(40, 10, 75, 10), Line(65, 0, 75, 10), Line(65, 0, 97.5, 0)));

    DimensionEntity o = radial(DimensionType::Ordinate, {0, 0}, {30, 8}, {});
    o.def3 = {0, -25};
    p = layoutDimension(o);
    EXPECT_EQ(o.text(), "25");
    const auto leader = segments(p, DimPart::ExtLine1);
    EXPECT_THAT(leader, testing::ElementsAre(Line(0.625, 0, 20, 0), Line(20, 0, 25, 8),
                                             Line(25, 8, 30 + 0.625 + p.textWidth, 8)));
    EXPECT_TRUE(p.arrows.empty());
    o.subType = DimensionType::OrdinateX;
    o.def2 = {0, 40};
    p = layoutDimension(o);
    EXPECT_NEAR(p.textRotation, kPi / 2, 1e-9);
    EXPECT_EQ(segments(p, DimPart::ExtLine1).size(), 1u);
    EXPECT_GT(p.textMiddle.y, 40);
}

// In the drawing ---------------------------------------------------------------------------------------------------

TEST(Dimension, TakesItsStyleFromTheDrawing) {
    Drawing drawing;
    DimStyle style;
    style.name = "Big";
    style.textHeight = 10;
    style.arrowBlock = "_DOT";
    style.dimLineColor = Color::index(1);
    style.extLineColor = Color::byLayer();
    style.extLine1Linetype = "DASHED";
    style.dimLineLineweight = 50;
    style.textFill = 1;
    style.separateArrowBlocks = true;
    style.arrowBlock1 = "_ARCHTICK";
    style.arrowBlock2 = "MYARROW";
    drawing.dimStyles.add(style);
    Block* arrow = drawing.addBlock("MyArrow");
    auto line = std::make_unique<LineEntity>();
    line->start = {0, 0};
    line->end = {-1, 1};
    arrow->entities.append(std::move(line));

    auto made = std::make_unique<DimensionEntity>(linear({0, 0}, {100, 0}, {0, 20}));
    made->dimStyleName = "big";
    made->color = Color::index(3);
    auto& d = static_cast<DimensionEntity&>(drawing.modelSpace().append(std::move(made)));
    EXPECT_EQ(d.style().textHeight, 10);
    const Recorder seen = record(d);
    // Extension lines, dimension line, wide tick, the user's arrow turned and scaled.
    ASSERT_EQ(seen.strokes.size(), 5u);
    EXPECT_EQ(seen.strokes[0].style.color, Color::byLayer());
    EXPECT_EQ(seen.strokes[0].style.linetype, "DASHED");
    EXPECT_EQ(seen.strokes[2].style.color, Color::index(1));
    EXPECT_EQ(seen.strokes[2].style.lineweight, 50);
    EXPECT_NEAR(seen.strokes[3].width, 0.15 * 2.5, 1e-12);
    Bounds2 box = pathBounds(seen.strokes[4].path);
    expectAt(box.min, 97.5, 20);
    expectAt(box.max, 100, 22.5);
    EXPECT_EQ(seen.textStyle.color, Color::index(3));
    EXPECT_TRUE(seen.background);
    // A style that is gone leaves the standard one.
    d.dimStyleName = "Nowhere";
    EXPECT_EQ(d.style().textHeight, drawing.dimStyleOrStandard("Standard").textHeight);
}

TEST(Dimension, EveryStandardArrowStaysNearItsTip) {
    for (int i = 0; i < kStandardArrowCount; ++i) {
        const auto kind = static_cast<ArrowKind>(i);
        EXPECT_EQ(arrowKind(arrowBlockName(kind)), kind) << i;
        Recorder seen;
        emitArrow(seen, {}, nullptr, Name(arrowBlockName(kind)), {10, 10}, {0, 1}, 2.0);
        Bounds2 box;
        for (const auto& s : seen.strokes) box.expand(pathBounds(s.path));
        for (const auto& f : seen.fills) box.expand(pathBounds(f.path));
        EXPECT_EQ(box.is_empty(), kind == ArrowKind::None) << arrowBlockName(kind);
        if (kind == ArrowKind::None) continue;
        EXPECT_TRUE((Bounds2{{8.8, 7.9}, {11.2, 11.1}}.contains_box(box))) << arrowBlockName(kind);
    }
    EXPECT_EQ(arrowKind("ClosedFilled"), ArrowKind::ClosedFilled);
    EXPECT_EQ(arrowKind("oblique"), ArrowKind::Oblique);
    EXPECT_EQ(arrowKind("MyOwn"), ArrowKind::User);
    // A user's arrow that is missing is still an arrow; sizes of nothing and worse draw nothing.
    Recorder seen;
    emitArrow(seen, {}, nullptr, "MyOwn", {0, 0}, {1, 0}, 1.0);
    EXPECT_EQ(seen.fills.size(), 1u);
    for (const double size : {0.0, -1.0, std::nan("")}) emitArrow(seen, {}, nullptr, "", {0, 0}, {1, 0}, size);
    EXPECT_EQ(seen.fills.size(), 1u);
}

TEST(Dimension, BoundsAndPickingFollowThePicture) {
    const DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    const Bounds2 box = d.bounds();
    EXPECT_NEAR(box.min.x, 0, 1e-6);
    EXPECT_NEAR(box.min.y, 0.625, 1e-6);
    EXPECT_NEAR(box.max.x, 100, 1e-6);
    EXPECT_GT(box.max.y, 22.5);
    EXPECT_LT(box.max.y, 26);
    expectAt(d.nearestPoint({30, 12}), 30, 20);
    expectAt(d.nearestPoint({-3, 10}), 0, 10);
    const Vector2 inText = layoutDimension(d).textMiddle + Vector2{0.3, 0.2};
    EXPECT_EQ(d.nearestPoint(inText), inText);
    EXPECT_EQ(d.distanceTo(inText), 0.0);
}

TEST(Dimension, Transforms) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    d.setUserText({30, 25});
    d.textHeight = 3;
    d.transform(Matrix4::translation(10, 5) * Matrix4::rotation_z(kPi / 2) * Matrix4::scaling(2, 2, 2));
    EXPECT_NEAR(d.measurement(), 200, 1e-9);
    expectAt(d.dimLine, -30, 5);
    expectAt(d.userText, -40, 65);
    EXPECT_NEAR(d.linearRotation, kPi / 2, 1e-12);
    EXPECT_NEAR(d.textHeight, 6, 1e-12);
    EXPECT_EQ(d.arrowSize, 0.0);   // stays the style's
    EXPECT_EQ(d.def3, Vector2{});  // not used by the kind

    // A mirror image reads as the original does.
    DimensionEntity m = linear({0, 0}, {100, 0}, {0, 20});
    m.textRotation = toRadians(20);
    m.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_NEAR(m.measurement(), 100, 1e-9);
    EXPECT_EQ(m.text(), "100");
    DimensionPicture p = layoutDimension(m);
    EXPECT_NEAR(p.textRotation, toRadians(-20), 1e-9);
    EXPECT_NEAR(p.textMiddle.x, -50, 1e-9);
    EXPECT_GT(p.textMiddle.y, 20);
    m.textRotation = 0;
    p = layoutDimension(m);
    EXPECT_NEAR(p.textRotation, 0, 1e-9);

    // An arc keeps its length, a rotated dimension under unequal scales measures along its own axis.
    DimensionEntity arc = angular({0, 0}, {20, 0}, {0, 20}, {20, 20});
    arc.subType = DimensionType::ArcLength;
    arc.transform(Matrix4::mirror({0, 0}, {1, 3}));
    EXPECT_NEAR(arc.measurement(), 10 * kPi, 1e-9);
    DimensionEntity s = linear({0, 0}, {100, 30}, {0, 50});
    s.transform(Matrix4::scaling(3, 0.5));
    EXPECT_NEAR(s.measurement(), 300, 1e-9);
    expectAt(s.dimLine, 0, 25);
    DimensionEntity r = radial(DimensionType::Radius, {0, 0}, {5, 0}, {20, 0});
    r.transform(Matrix4::scaling(2, 2, 2));
    EXPECT_EQ(r.measurement(), 10);
    expectAt(r.dimLine, 40, 0);
}

TEST(Dimension, GripsEditAsUsersExpect) {
    DimensionEntity d = linear({0, 0}, {100, 0}, {0, 20});
    ASSERT_EQ(d.gripPoints().size(), 4u);
    d.moveGrip(1, {50, 5});
    EXPECT_EQ(d.measurement(), 50);
    d.moveGrip(2, {10, 40});
    expectAt(layoutDimension(d).arrows[0].tip, 0, 40);
    // Moving the text takes the line along.
    const Vector2 text = d.gripPoints()[3];
    d.moveGrip(3, text + Vector2{5, -10});
    expectAt(d.gripPoints()[3], text.x + 5, text.y - 10);
    EXPECT_NEAR(layoutDimension(d).arrows[0].tip.y, 30, 1e-9);
    d.moveGrip(2, {0, 50});
    EXPECT_NEAR(d.gripPoints()[3].y, text.y + 10, 1e-9);
    d.styleOverrides["DIMTMOVE"] = 2;
    d.moveGrip(3, {7, 7});
    EXPECT_EQ(layoutDimension(d).arrows[0].tip.y, 50);
    const DimensionEntity before = d;
    d.moveGrip(99, {1, 1});
    d.moveGrip(0, {std::nan(""), 1});
    EXPECT_EQ(d.def1, before.def1);

    // Aligned: the line keeps its distance as an origin moves.
    DimensionEntity a = linear({0, 0}, {100, 0}, {0, 20});
    a.subType = DimensionType::Aligned;
    a.moveGrip(1, {0, 60});
    EXPECT_NEAR(a.measurement(), 60, 1e-12);
    expectAt(layoutDimension(a).arrows[0].tip, -20, 0);

    // Radius: it turns towards the text.
    DimensionEntity r = radial(DimensionType::Radius, {0, 0}, {50, 0}, {80, 0});
    r.moveGrip(2, {0, 90});
    expectAt(r.def2, 0, 50);
    EXPECT_EQ(r.measurement(), 50);
    EXPECT_NEAR(layoutDimension(r).textMiddle.y, 90, 1e-6);
    DimensionEntity w = angular({0, 0}, {20, 0}, {0, 20}, {30, 0.001});
    w.moveGrip(2, {-30, -30});
    EXPECT_NEAR(w.measurement(), 1.5 * kPi, 1e-9);
}

TEST(Dimension, HostileInputDrawsNothingStrange) {
    const double bad[] = {std::nan(""), std::numeric_limits<double>::infinity(), 1e308, -1e300, 0.0};
    for (int kind = 0; kind <= 12; ++kind) {
        for (const double v : bad) {
            for (int member = 0; member < 8; ++member) {
                DimensionEntity d = angular({0, 0}, {20, 0}, {0, 20}, {30, 31});
                d.subType = static_cast<DimensionType>(kind);
                Vector2* points[] = {&d.def1, &d.def2, &d.dimLine, &d.def3, &d.def4, &d.userText, &d.jogPoint};
                if (member < 7)
                    *points[member] = {v, 1};
                else
                    d.styleOverrides = {{"DIMTXT", v},  {"DIMASZ", v}, {"DIMGAP", v}, {"DIMSCALE", v}, {"DIMDEC", v},
                                        {"DIMLFAC", v}, {"DIMEXO", v}, {"DIMTSZ", v}, {"DIMCEN", v},   {"DIMRND", v}};
                d.jogged = member % 2 == 0;
                d.textRotation = member == 6 ? v : 0.0;
                d.measurement();
                d.text();
                const Bounds2 box = d.bounds();
                EXPECT_TRUE(box.is_empty() || (box.min.is_finite() && box.max.is_finite())) << kind << " " << v;
                EXPECT_LT(record(d).strokes.size(), 40u);
                d.nearestPoint({1, 2});
                for (std::size_t i = 0; i < d.gripPoints().size(); ++i) d.moveGrip(i, {3, v});
                d.transform(Matrix4::scaling(0, 0, 0));
                d.bounds();
            }
        }
    }
    // Everything in one place.
    for (int kind = 0; kind <= 8; ++kind) {
        DimensionEntity d;
        d.subType = static_cast<DimensionType>(kind);
        d.bounds();
        EXPECT_EQ(d.measurement(), 0.0) << kind;
    }
}

}  // namespace
}  // namespace kova::engine
