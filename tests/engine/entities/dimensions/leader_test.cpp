#include "engine/entities/dimensions/leader.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/text.hpp"
#include "engine/model/outline.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;

/// Keeps what is emitted, piece by piece.
class Recorder final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    struct Piece {
        Path path;
        OutlineStyle style;
    };
    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& /*options*/) override {
        strokes.push_back({Path().append(path), style});
    }
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& /*options*/) override {
        fills.push_back({Path().append(rings), style});
    }
    void text(const TextRun& run, const OutlineStyle& style) override {
        texts.emplace_back(run.text);
        textBox.expand(run.origin);
        textStyle = style;
    }
    std::vector<Piece> strokes;
    std::vector<Piece> fills;
    std::vector<std::string> texts;
    Bounds2 textBox;
    OutlineStyle textStyle;
};

Recorder record(const Entity& e) {
    Recorder sink;
    e.emit(sink, outlineStyle(e));
    return sink;
}

/// The end points of a path's elements.
std::vector<Vector2> corners(const Path& path) {
    std::vector<Vector2> points;
    for (const PathElement& e : path.view()) points.push_back(e.p);
    return points;
}

void expectPoints(const std::vector<Vector2>& points, const std::vector<Vector2>& wanted) {
    ASSERT_EQ(points.size(), wanted.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_NEAR(points[i].x, wanted[i].x, 1e-9) << i;
        EXPECT_NEAR(points[i].y, wanted[i].y, 1e-9) << i;
    }
}

// LEADER -----------------------------------------------------------------------------------------------------------

TEST(Leader, LineHookArrowAndText) {
    LeaderEntity l;
    l.vertices = {{0, 0}, {30, 40}};
    l.hookLine = true;
    l.annotation = "see";
    Recorder seen = record(l);
    ASSERT_EQ(seen.strokes.size(), 1u);
    // The line begins behind the arrow (2.5 long), hooks by as much and runs on below the text.
    const auto line = corners(seen.strokes[0].path);
    ASSERT_EQ(line.size(), 4u);
    expectPoints({line[0], line[1], line[2]}, {{1.5, 2}, {30, 40}, {32.5, 40}});
    EXPECT_GT(line[3].x, 36.0);
    EXPECT_EQ(line[3].y, 40);
    ASSERT_EQ(seen.fills.size(), 1u);
    EXPECT_NEAR(pathBounds(seen.fills[0].path).min.x, 0.0, 1e-9);
    EXPECT_EQ(seen.texts, std::vector<std::string>{"see"});
    EXPECT_GT(seen.textBox.min.x, 32.5);
    EXPECT_GT(seen.textBox.min.y, 40);

    // To the other side.
    l.hookDir = 0;
    seen = record(l);
    EXPECT_LT(corners(seen.strokes[0].path).back().x, 24.0);
    EXPECT_LT(seen.textBox.max.x, 27.5);

    l.hasArrow = false;
    l.hookLine = false;
    l.annotation.clear();
    seen = record(l);
    expectPoints(corners(seen.strokes[0].path), {{0, 0}, {30, 40}});
    EXPECT_TRUE(seen.fills.empty() && seen.texts.empty());

    l.vertices = {{0, 0}, {10, 10}, {20, 0}};
    l.splined = true;
    seen = record(l);
    EXPECT_EQ(seen.strokes[0].path.view().back().kind, PathElement::Kind::Cubic);
    EXPECT_EQ(seen.strokes[0].path.view().back().p, Vector2(20, 0));
    EXPECT_NEAR(l.bounds().max.y, 10, 1e-6);
}

TEST(Leader, TextOfItsOwnIsNotDrawnTwice) {
    Drawing drawing;
    auto text = std::make_unique<TextEntity>();
    text->content = "note";
    const std::uint64_t handle = drawing.modelSpace().append(std::move(text)).handle();
    auto made = std::make_unique<LeaderEntity>();
    made->vertices = {{0, 0}, {10, 0}};
    made->annotation = "note";
    made->annotationHandle = handle;
    auto& l = static_cast<LeaderEntity&>(drawing.modelSpace().append(std::move(made)));
    EXPECT_TRUE(record(l).texts.empty());
    l.annotationHandle = handle + 1000;  // gone
    EXPECT_EQ(record(l).texts.size(), 1u);
    // Sizes and colours come from the dimension style.
    DimStyle style;
    style.name = "S";
    style.arrowSize = 4;
    style.scaleFactor = 2;
    style.textHeight = 3;
    style.dimLineColor = Color::index(5);
    style.textColor = Color::index(6);
    style.leaderArrowBlock = "_DOTBLANK";
    drawing.dimStyles.add(style);
    l.dimStyleName = "S";
    EXPECT_EQ(l.effectiveArrowSize(), 8);
    EXPECT_EQ(l.effectiveTextHeight(), 6);
    const Recorder seen = record(l);
    EXPECT_EQ(seen.strokes[0].style.color, Color::index(5));
    EXPECT_EQ(seen.textStyle.color, Color::index(6));
    ASSERT_EQ(seen.strokes.size(), 2u);
    EXPECT_NEAR(pathBounds(seen.strokes[1].path).width(), 8, 1e-9);
    EXPECT_NEAR(corners(seen.strokes[0].path)[0].x, 4, 1e-9);
    l.arrowSize = 1;
    EXPECT_EQ(l.effectiveArrowSize(), 1);
}

TEST(Leader, TransformsAndGrips) {
    LeaderEntity l;
    l.vertices = {{0, 0}, {10, 5}};
    l.hookLine = true;
    l.arrowSize = 2;
    l.transform(Matrix4::mirror({0, 0}, {0, 1}) * Matrix4::scaling(3, 3, 3));
    expectPoints(l.vertices, {{0, 0}, {-30, 15}});
    EXPECT_EQ(l.hookDir, 0);
    EXPECT_EQ(l.arrowSize, 6);
    EXPECT_NEAR(l.endPoint().x, -36, 1e-9);
    l.moveGrip(1, {5, 5});
    l.moveGrip(7, {1, 1});
    l.moveGrip(0, {std::nan(""), 0});
    expectPoints(l.gripPoints(), {{0, 0}, {5, 5}});
    EXPECT_NEAR(l.distanceTo({2, 2}), 0, 1e-9);
}

// MULTILEADER ------------------------------------------------------------------------------------------------------

MLeaderEntity multileader() {
    MLeaderEntity m;
    m.heads = {{{{0, 0}, {20, 30}}}};
    m.textContent = "two\\Plines";
    m.contentPos = {30, 30};
    return m;
}

TEST(MLeader, LinesRunOverTheLandingToTheText) {
    const MLeaderEntity m = multileader();
    EXPECT_EQ(m.side(), 1.0);
    Recorder seen = record(m);
    ASSERT_EQ(seen.strokes.size(), 1u);
    const auto line = corners(seen.strokes[0].path);
    ASSERT_EQ(line.size(), 3u);
    EXPECT_EQ(line[1], Vector2(20, 30));
    EXPECT_NEAR(line[2].x, 28, 1e-9);  // the gap of 2 before the text
    EXPECT_NEAR(line[2].y, 30, 1e-9);
    EXPECT_NEAR(line[0].length(), 4, 1e-9);
    EXPECT_EQ(seen.fills.size(), 1u);
    EXPECT_EQ(seen.texts.size(), 2u);
    const Bounds2 box = m.contentBox();
    EXPECT_NEAR(box.min.x, 30, 1e-9);
    // The landing meets the middle of the first line.
    EXPECT_NEAR(box.max.y, 32, 0.6);
    EXPECT_LT(box.min.y, 28);
    EXPECT_EQ(m.nearestPoint(box.center()), box.center());

    // A second leader from the other side ends at the text's far edge.
    MLeaderEntity both = multileader();
    both.heads.push_back({{{100, 0}, {80, 30}}});
    seen = record(both);
    EXPECT_NEAR(corners(seen.strokes[1].path).back().x, box.max.x + 2, 1e-9);
    // Left of its leader, the text grows to the left.
    MLeaderEntity left = multileader();
    left.contentPos = {10, 30};
    EXPECT_EQ(left.side(), -1.0);
    EXPECT_NEAR(left.contentBox().max.x, 10, 1e-9);
    EXPECT_NEAR(left.contentBox().width(), box.width(), 1e-9);
    EXPECT_NEAR(corners(record(left).strokes[0].path).back().x, 12, 1e-9);

    MLeaderEntity bare = multileader();
    bare.hasDogleg = false;
    EXPECT_EQ(corners(record(bare).strokes[0].path).size(), 2u);
    // Only the arrow given: the landing is as long as the style says.
    MLeaderEntity point = multileader();
    point.heads = {{{{0, 0}}}};
    EXPECT_NEAR(point.landingPoint(point.heads[0]).x, 30 - 2 - 8, 1e-9);
}

TEST(MLeader, StylesAndBlocks) {
    Drawing drawing;
    MLeaderStyle style;
    style.name = "M";
    style.scaleFactor = 2;
    style.arrowBlock = "_NONE";
    style.leaderLineType = 2;
    style.textFrame = true;
    style.textColor = Color::index(2);
    style.textLeftAttachment = 5;  // underlined
    drawing.mleaderStyles.add(style);
    Block* block = drawing.addBlock("TAG");
    auto circle = std::make_unique<CircleEntity>();
    circle->center = {0, 0};
    circle->radius = 3;
    block->entities.append(std::move(circle));

    auto made = std::make_unique<MLeaderEntity>(multileader());
    made->styleName = "M";
    auto& m = static_cast<MLeaderEntity&>(drawing.modelSpace().append(std::move(made)));
    EXPECT_EQ(m.effectiveTextHeight(), 8);
    EXPECT_EQ(m.effectiveLandingGap(), 4);
    Recorder seen = record(m);
    EXPECT_TRUE(seen.fills.empty());
    ASSERT_EQ(seen.strokes.size(), 2u);  // leader and frame
    EXPECT_EQ(seen.textStyle.color, Color::index(2));
    const Bounds2 box = m.contentBox();
    EXPECT_NEAR(box.min.y, 34, 1e-9);
    EXPECT_NEAR(corners(seen.strokes[0].path).back().x, box.max.x, 1e-9);
    EXPECT_TRUE((pathBounds(seen.strokes[1].path) == box.inflated(4)));

    m.contentType = MLeaderContent::Block;
    m.blockName = "tag";
    seen = record(m);
    ASSERT_EQ(seen.strokes.size(), 2u);
    EXPECT_NEAR(pathBounds(seen.strokes[1].path).width(), 12, 1e-9);
    EXPECT_NEAR(corners(seen.strokes[0].path).back().x, 30 - 6, 1e-9);
    EXPECT_TRUE(seen.texts.empty());
    m.blockName = "gone";
    EXPECT_EQ(record(m).strokes.size(), 1u);
}

TEST(MLeader, ContentAndLandingMoveTogether) {
    MLeaderEntity m = multileader();
    ASSERT_EQ(m.gripPoints().size(), 3u);
    m.moveGrip(2, {35, 40});
    EXPECT_EQ(m.heads[0].vertices[1], Vector2(25, 40));
    m.moveGrip(1, {20, 30});
    EXPECT_EQ(m.contentPos, Vector2(30, 30));
    m.moveGrip(0, {1, 1});
    EXPECT_EQ(m.heads[0].vertices[0], Vector2(1, 1));
    m.arrowSize = 1;
    m.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_EQ(m.contentPos, Vector2(-30, 30));
    EXPECT_EQ(m.side(), -1.0);
    EXPECT_EQ(m.arrowSize, 1.0);
    EXPECT_EQ(record(m).texts.size(), 2u);
}

// MLINE ------------------------------------------------------------------------------------------------------------

TEST(MLine, ElementsRunParallelAndMeetInMitres) {
    MLineEntity m;
    m.vertices = {{0, 0}, {10, 0}, {10, 10}};
    m.justification = MLineJustification::Zero;
    m.scale = 2;
    Recorder seen = record(m);
    ASSERT_EQ(seen.strokes.size(), 2u);
    expectPoints(corners(seen.strokes[0].path), {{0, 1}, {9, 1}, {9, 10}});
    expectPoints(corners(seen.strokes[1].path), {{0, -1}, {11, -1}, {11, 10}});
    // The upper line through the points: everything else lies below (right of) them.
    m.justification = MLineJustification::Top;
    expectPoints(m.elementPoints(m.elements[0]), {{0, 0}, {10, 0}, {10, 10}});
    expectPoints(m.elementPoints(m.elements[1]), {{0, -2}, {12, -2}, {12, 10}});
    m.justification = MLineJustification::Bottom;
    expectPoints(m.elementPoints(m.elements[0]), {{0, 2}, {8, 2}, {8, 10}});

    m.justification = MLineJustification::Zero;
    m.vertices = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    m.closed = true;
    expectPoints(m.elementPoints(m.elements[0]), {{1, 1}, {9, 1}, {9, 9}, {1, 9}});
    EXPECT_EQ(record(m).strokes[0].path.view().back().kind, PathElement::Kind::Close);
    EXPECT_NEAR(m.bounds().max.x, 11, 1e-9);
    // Doubled points and turns on the spot keep the lines finite.
    m.closed = false;
    m.vertices = {{0, 0}, {0, 0}, {10, 0}, {10, 0}, {0, 0}};
    for (const Vector2& p : m.elementPoints(m.elements[0])) EXPECT_LT(std::abs(p.x) + std::abs(p.y), 12.0);
    m.vertices = {{5, 5}, {5, 5}};
    expectPoints(m.elementPoints(m.elements[0]), {{5, 5}, {5, 5}});
    m.vertices = {{5, 5}};
    EXPECT_TRUE(record(m).strokes.empty());
    m.vertices = {{5, 5}, {std::nan(""), 0}};
    EXPECT_TRUE(record(m).strokes.empty());
}

TEST(MLine, CapsFillAndColours) {
    MLineEntity m;
    m.vertices = {{0, 0}, {10, 0}, {20, 0}};
    m.justification = MLineJustification::Zero;
    m.elements = {{2, Color::index(1), "DASHED"}, {1}, {-1}, {-2}};
    m.flags = kMLineFill | kMLineJoints | kMLineStartSquare | kMLineEndRound | kMLineEndInnerArc;
    m.color = Color::index(4);
    m.fillColor = Color::index(9);
    const Recorder seen = record(m);
    ASSERT_EQ(seen.fills.size(), 1u);
    EXPECT_EQ(seen.fills[0].style.color, Color::index(9));
    EXPECT_EQ(pathBounds(seen.fills[0].path).height(), 4);
    ASSERT_EQ(seen.strokes.size(), 8u);  // four lines, a joint, a square start, two arcs at the end
    EXPECT_EQ(seen.strokes[0].style.color, Color::index(1));
    EXPECT_EQ(seen.strokes[0].style.linetype, "DASHED");
    EXPECT_EQ(seen.strokes[1].style.color, Color::index(4));
    expectPoints(corners(seen.strokes[5].path), {{0, -2}, {0, 2}});
    EXPECT_NEAR(pathBounds(seen.strokes[6].path).max.x, 22, 1e-9);
    EXPECT_NEAR(pathBounds(seen.strokes[7].path).max.x, 21, 1e-9);
}

TEST(MLine, MirrorImagesKeepTheirSides) {
    MLineEntity m;
    m.vertices = {{0, 0}, {10, 0}, {10, 10}};
    m.elements = {{1}, {0}, {-0.25}};
    m.startAngle = kPi / 3;
    std::vector<std::vector<Vector2>> wanted;
    const Matrix4 mirror = Matrix4::mirror({3, 1}, {7, 8}) * Matrix4::scaling(2, 2, 2);
    for (const MLineElement& e : m.elements) {
        wanted.push_back(m.elementPoints(e));
        for (Vector2& p : wanted.back()) p = mirror.transform_point(p);
    }
    m.transform(mirror);
    for (std::size_t i = 0; i < m.elements.size(); ++i) expectPoints(m.elementPoints(m.elements[i]), wanted[i]);
    EXPECT_EQ(m.gripPoints().size(), 3u);
}

/// What a multileader or one of its lines has of its own goes before the style; what it has not follows the style.
TEST(MLeader, OwnValuesGoBeforeTheStyle) {
    Drawing drawing;
    MLeaderStyle* style = drawing.mleaderStyles.find("Standard");
    ASSERT_NE(style, nullptr);
    style->leaderColor = Color::index(5);
    style->leaderLineweight = 50;
    auto made = std::make_unique<MLeaderEntity>();
    made->heads.resize(2);
    made->heads[0].vertices = {{0, 0}, {20, 20}};
    made->heads[1].vertices = {{0, 50}, {20, 20}};
    made->contentType = MLeaderContent::None;
    made->contentPos = {30, 20};
    made->setOverride(MLeaderOverrides::kLeaderColor, &MLeaderStyle::leaderColor, Color::index(1));
    MLeaderLineLook look;
    look.members = MLeaderLineLook::kColor | MLeaderLineLook::kArrowSize;
    look.color = Color::index(3);
    look.arrowSize = 11.0;
    made->heads[1].look = look;
    const auto& leader = static_cast<MLeaderEntity&>(drawing.modelSpace().append(std::move(made)));
    const Recorder seen = record(leader);
    ASSERT_EQ(seen.strokes.size(), 2u);
    EXPECT_EQ(seen.strokes[0].style.color, Color::index(1));
    EXPECT_EQ(seen.strokes[1].style.color, Color::index(3));
    EXPECT_EQ(seen.strokes[1].style.lineweight, 50);
    ASSERT_EQ(seen.fills.size(), 2u);
    EXPECT_GT(pathBounds(seen.fills[1].path).width(), 2.0 * pathBounds(seen.fills[0].path).width());
    style->leaderLineweight = 25;
    EXPECT_EQ(record(leader).strokes[0].style.lineweight, 25);
}

}  // namespace
}  // namespace kova::engine
