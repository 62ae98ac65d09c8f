#include "cmd/draw_harness.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using math::Vector2;

template <class Kind>
Kind& as(Console& c, std::size_t index) {
    return dynamic_cast<Kind&>(*c.entities().at(index));
}

// STRETCH ------------------------------------------------------------------------------------------------

TEST(Stretch, MovesThePointsInsideTheCrossingWindow) {
    Console c;
    c.addLine(0, 0, 10, 0);
    engine::PolylineEntity room({{0, 0}, {10, 0}, {10, 5}, {0, 5}}, true);
    room.setBulge(1, 0.5);
    c.add(room);
    c.addLine(9, 1, 11, 1);
    c.add(engine::CircleEntity(Vector2{0, 2}, 9.5));  // crossed, its centre outside
    c.feed("STRETCH");
    c.run({"C", "8,-1", "12,6", ""});
    EXPECT_EQ(c.prompt(), "Specify base point or [Displacement] <Displacement>:");
    c.run({"0,0", "3,1"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, 0));
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(13, 1));
    const auto& stretched = as<engine::PolylineEntity>(c, 1);
    expectPoints(stretched.vertices, {{0, 0}, {13, 1}, {13, 6}, {0, 5}});
    EXPECT_EQ(stretched.bulge(1), 0.5);
    EXPECT_EQ(as<engine::LineEntity>(c, 2).start, Vector2(12, 2));
    EXPECT_EQ(as<engine::LineEntity>(c, 2).end, Vector2(14, 2));
    EXPECT_EQ(as<engine::CircleEntity>(c, 3).center, Vector2(0, 2));
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: STRETCH"});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(10, 0));
}

TEST(Stretch, PolygonsPicksAndDisplacements) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(0, 50, 10, 50);
    // One by a crossing polygon about its end, the other by a pick: that one moves as a whole.
    c.run({"S", "CP", "9,-1", "12,0", "9,1", "", "5,50", "", "D", "0,7"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, 0));
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(10, 7));
    EXPECT_EQ(as<engine::LineEntity>(c, 1).start, Vector2(0, 57));
    EXPECT_EQ(as<engine::LineEntity>(c, 1).end, Vector2(10, 57));
}

TEST(Stretch, TheWindowIsRememberedWithTheSelection) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"SELECT", "C", "8,-1", "12,1", ""});
    c.run({"STRETCH", "", "0,0", "1,2"});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, 0));
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(11, 2));
    // By now the window holds nothing of the line: it moves as what was picked does.
    c.run({"STRETCH", "P", "", "0,0", "0,-2"});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, -2));
    c.run({"COPY", "C", "8,-1", "12,1", "", "0,0", "500,500", "", "S", "P", "", "0,0", "0,5"});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, -2));
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(11, 5));
    // A selection of another kind has no window.
    c.run({"SELECT", "5,1.1", "", "STRETCH", "", "0,0", "5,0"});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(5, -2));
}

TEST(Stretch, ArcsKeepTheirHeightDimensionsFollowTextsMoveWhole) {
    Console c;
    c.add(engine::ArcEntity(Vector2{0, 0}, 5.0, 0.0, math::kPi));  // from (5,0) to (-5,0), 5 high
    engine::DimensionEntity dimension;
    dimension.def1 = {-5, -10};
    dimension.def2 = {5, -10};
    dimension.dimLine = {5, -20};
    c.add(dimension);
    engine::TextEntity text;
    text.position = {4.5, 20};
    text.content = "T";
    c.add(text);
    c.run({"S", "C", "4,-30", "6,30", "", "0,0", "10,0"});
    const auto& arc = as<engine::ArcEntity>(c, 0);
    expectNear(arc.startPoint(), {15, 0});
    expectNear(arc.endPoint(), {-5, 0});
    expectNear(arc.midPoint(), {5, 5});
    EXPECT_NEAR(as<engine::DimensionEntity>(c, 1).measurement(), 20.0, 1e-9);
    EXPECT_EQ(as<engine::TextEntity>(c, 2).position, Vector2(14.5, 20));
}

// ALIGN --------------------------------------------------------------------------------------------------

TEST(Align, OneTwoAndThreePairs) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"ALIGN", "ALL", "", "0,0", "5,5", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(5, 5));
    c.run({"UNDO", "AL", "ALL", "", "0,0", "5,5", "10,0", "5,25"});
    EXPECT_EQ(c.prompt(), "Specify third source point or <continue>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Scale objects based on alignment points? [Yes/No] <N>:");
    c.feed("");
    expectNear(as<engine::LineEntity>(c, 0).end, {5, 15});
    c.run({"UNDO", "AL", "ALL", "", "0,0", "5,5", "10,0", "5,25", "", "Y"});
    expectNear(as<engine::LineEntity>(c, 0).end, {5, 25});
    // A third pair on the other side turns the objects over.
    Console t;
    t.addLine(0, 0, 10, 3);
    t.run({"AL", "ALL", "", "0,0", "100,0", "10,0", "110,0", "5,3", "105,-8"});
    EXPECT_TRUE(t.idle());
    expectNear(as<engine::LineEntity>(t, 0).end, {110, -3});
    EXPECT_EQ(t.document.history().undoCount(), 1u);
}

// ARRAY --------------------------------------------------------------------------------------------------

std::vector<Vector2> starts(Console& c) {
    std::vector<Vector2> out;
    for (const engine::Entity* e : c.entities())
        if (const auto* line = dynamic_cast<const engine::LineEntity*>(e)) out.push_back(line->start);
    return out;
}

TEST(Array, RectangularByOptions) {
    Console c;
    c.addLine(0, 0, 2, 2);
    c.run({"ARRAYRECT", "ALL", "", "COU", "3", "2", "S", "10", "20", ""});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {10, 0}, {20, 0}, {0, 20}, {10, 20}, {20, 20}});
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    // By totals, with levels and a turned grid.
    c.run({"AR", "ALL", "", "R", "COL", "3", "T", "10", "R", "1", "", "", "L", "2", "4", "AN", "90", "X"});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {0, 5}, {0, 10}, {0, 0}, {0, 5}, {0, 10}});
    EXPECT_EQ(c.entities().back()->elevation, 4.0);
    c.feed("UNDO");
    EXPECT_EQ(c.run({"ARRAYRECT", "ALL", "", "COU", "30000", "30000", ""}).back(), "Too many objects to array.");
    EXPECT_EQ(c.count(), 1u);
}

TEST(Array, AssociativeOnesBecomeGroups) {
    Console c;
    c.addLine(0, 0, 2, 2);
    c.run({"ARRAYRECT", "ALL", "", "AS", "Y", "COU", "2", "1", "S", "10", "", ""});
    ASSERT_EQ(c.drawing().groups.size(), 1u);
    EXPECT_EQ(c.drawing().groups[0].memberHandles.size(), 2u);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    EXPECT_TRUE(c.drawing().groups.empty());
}

TEST(Array, PolarFillsAndTurns) {
    Console c;
    c.addLine(10, 0, 12, 0);
    c.run({"ARRAYPOLAR", "ALL", "", "0,0", "I", "4", ""});
    expectPoints(starts(c), {{10, 0}, {0, 10}, {-10, 0}, {0, -10}});
    c.feed("UNDO");
    c.run({"ARRAYPOLAR", "ALL", "", "0,0", "I", "3", "F", "-90", "ROW", "2", "5", "", ""});
    const double h = 10 * std::sqrt(0.5);
    const double g = 15 * std::sqrt(0.5);
    expectPoints(starts(c), {{10, 0}, {h, -h}, {0, -10}, {15, 0}, {g, -g}, {0, -15}});
    c.feed("UNDO");
    // Not turned, the objects stay upright and their middle goes round.
    c.run({"ARRAYPOLAR", "ALL", "", "0,0", "I", "4", "ROT", "N", ""});
    expectPoints(starts(c), {{10, 0}, {-1, 11}, {-12, 0}, {-1, -11}});
    c.feed("UNDO");
    c.run({"ARRAYPOLAR", "ALL", "", "B", "10,0", "0,0", "I", "4", "A", "30", "ROT", "N", ""});
    EXPECT_NEAR(starts(c)[3].x, 0.0, 1e-9);
    EXPECT_NEAR(starts(c)[3].y, 10.0, 1e-9);
}

TEST(Array, AlongAPath) {
    Console c;
    c.addLine(0, 0, 0, 1);
    c.add(engine::PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    c.run({"ARRAYPATH", "0,1", "", "5,0", "I", "5", "F", ""});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}});
    expectNear(as<engine::LineEntity>(c, 5).end, {9, 10});  // turned with the path
    c.feed("UNDO");
    // Spread evenly, from the end that was picked, upright.
    c.run({"ARRAYPATH", "0,1", "", "10,8", "M", "D", "I", "3", "AL", "Y", "A", "N", "B", "0,0", ""});
    // "AL" is no option: the short form is A.
    expectPoints(starts(c), {{10, 10}, {10, 0}, {0, 0}});
    expectNear(as<engine::LineEntity>(c, 0).end, {10, 11});
    c.feed("UNDO");
    // On a closed path the last item does not fall onto the first.
    c.add(engine::CircleEntity(Vector2{100, 0}, 10.0));
    c.run({"ARRAYPATH", "0,1", "", "110,0", "M", "D", "I", "4", "B", "0,0", ""});
    expectPoints(starts(c), {{110, 0}, {100, 10}, {90, 0}, {100, -10}});
}

TEST(Array, ClassicDialogue) {
    Console c;
    c.addLine(0, 0, 2, 2);
    c.run({"-ARRAY", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Enter the type of array [Rectangular/Polar] <R>:");
    c.run({"R", "2", "3"});
    EXPECT_EQ(c.prompt(), "Enter the distance between rows or specify unit cell (---):");
    c.run({"-5", "10"});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {10, 0}, {20, 0}, {0, -5}, {10, -5}, {20, -5}});
    c.feed("UNDO");
    c.run({"-ARRAY", "ALL", "", "", "2", "2", "1,1", "4,6"});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {3, 0}, {0, 5}, {3, 5}});
    c.feed("UNDO");
    EXPECT_EQ(c.run({"-ARRAY", "ALL", "", "R", "1", "1"}).back(), "One-element array, nothing to do.");
    c.run({"-ARRAY", "ALL", "", "P", "10,0", "4", "", ""});
    EXPECT_TRUE(c.idle());
    expectPoints(starts(c), {{0, 0}, {10, -10}, {20, 0}, {10, 10}});
    c.feed("UNDO");
    // The number of items from the angles.
    c.run({"-ARRAY", "ALL", "", "", "10,0", "", "90", "30", "Y"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 4u);
}

}  // namespace
}  // namespace kova::cmd
