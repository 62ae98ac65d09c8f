#include <gtest/gtest.h>

#include <ctime>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/xline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::ArcEntity;
using engine::CircleEntity;
using engine::LineEntity;
using engine::PolylineEntity;
using math::Vector2;

double seconds(const std::function<void()>& work) {
    const auto start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// OFFSET -------------------------------------------------------------------------------------------------

TEST(Offset, LinesAndCirclesOnThePickedSide) {
    Console c;
    c.addLine(0, 0, 10, 0).layer = engine::Name("WALL");
    c.run({"OFFSET", "2"});
    EXPECT_EQ(c.prompt(), "Select object to offset or [Exit/Undo] <Exit>:");
    c.feed("5,0");
    EXPECT_EQ(c.prompt(), "Specify point on side to offset or [Exit/Multiple/Undo] <Exit>:");
    c.feed("5,9");
    expectLine(c, 1, {0, 2}, {10, 2});
    EXPECT_EQ(c.entities()[1]->layer, engine::Name("WALL"));
    c.run({"5,0", "50,-1"});
    expectLine(c, 2, {0, -2}, {10, -2});
    c.run({"U", ""});
    EXPECT_EQ(c.count(), 2u);
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: OFFSET"});
    EXPECT_EQ(c.count(), 1u);
    c.add(CircleEntity(Vector2{20, 0}, 3.0));
    c.run({"O", "2", "23,0", "20,0", "23,0", "30,0", ""});
    EXPECT_NEAR(at<CircleEntity>(c, 2).radius, 1.0, 1e-12);
    EXPECT_NEAR(at<CircleEntity>(c, 3).radius, 5.0, 1e-12);
    EXPECT_EQ(c.run({"O", "4", "23,0", "20,0"}).back(), "No parallel at that offset.");
    EXPECT_EQ(c.count(), 4u);
}

TEST(Offset, ThroughPointsMultipleAndErase) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"OFFSET", "T", "5,0", "3,4"});
    expectLine(c, 1, {0, 4}, {10, 4});
    c.run({"", "O", "1", "5,0", "M", "5,-1", "5,-9", "5,-9", "", "", "", ""});
    EXPECT_EQ(c.count(), 5u);
    expectLine(c, 4, {0, -3}, {10, -3});
    Console d;
    d.addLine(0, 0, 10, 0);
    d.run({"O", "E", "Y", "2", "5,0", "5,1", ""});
    ASSERT_EQ(d.count(), 1u);
    expectLine(d, 0, {0, 2}, {10, 2});
    EXPECT_EQ(d.feed("UNDO"), Lines{"Undone: OFFSET"});
    expectLine(d, 0, {0, 0}, {10, 0});
}

TEST(Offset, PolylinesEllipsesAndConstructionLines) {
    Console c;
    PolylineEntity square({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true);
    c.add(square);
    c.run({"O", "1", "5,0", "5,5", "5,0", "5,-5", ""});
    EXPECT_NEAR(at<PolylineEntity>(c, 1).area(), 64.0, 1e-9);
    EXPECT_NEAR(at<PolylineEntity>(c, 2).area(), 144.0, 1e-9);
    // Through a point beyond a corner: the parallel's side runs through it.
    c.run({"O", "T", "10,9", "12,13", ""});
    EXPECT_NEAR(at<PolylineEntity>(c, 3).area(), 256.0, 1e-9);
    Console d;
    d.add(engine::EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5));
    d.run({"O", "1", "10,0", "20,0", ""});
    const auto& out = at<engine::SplineEntity>(d, 1);
    EXPECT_NEAR(out.nearestPoint({11, 0}).x, 11.0, 1e-6);
    EXPECT_NEAR(out.nearestPoint({0, 6}).y, 6.0, 1e-6);
    for (int i = 0; i < 50; ++i) {
        const Vector2 p = out.path().view()[1 + static_cast<std::size_t>(i) % (out.path().view().size() - 2)].p;
        EXPECT_NEAR(d.entities()[0]->distanceTo(p), 1.0, 1e-4);
    }
    Console x;
    x.add(engine::XlineEntity(Vector2{0, 0}, Vector2{1, 1}));
    x.run({"O", "T", "5,5", "0,2", ""});
    EXPECT_NEAR(x.entities()[1]->distanceTo({0, 2}), 0.0, 1e-9);
}

// TRIM ---------------------------------------------------------------------------------------------------

TEST(Trim, LinesAtOneAndTwoEdges) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(3, -5, 3, 5);
    c.addLine(7, -5, 7, 5);
    c.run({"TRIM"});
    EXPECT_EQ(c.prompt(), "Select objects or <select all>:");
    c.run({"3,4", "7,4", "", "9,0"});
    expectLine(c, 0, {0, 0}, {7, 0});
    c.feed("5,0");
    expectLine(c, 0, {0, 0}, {3, 0});
    EXPECT_EQ(c.feed("1,0"), Lines{"Object does not intersect an edge."});
    c.feed("U");
    expectLine(c, 0, {0, 0}, {7, 0});
    c.run({"U", "5,0"});
    ASSERT_EQ(c.count(), 4u);
    expectLine(c, 0, {0, 0}, {3, 0});
    expectLine(c, 3, {7, 0}, {10, 0});
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: TRIM"});
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 0, {0, 0}, {10, 0});
}

TEST(Trim, RefusesWhatMeetsNoEdgeAndWhatIsLocked) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(20, -5, 20, 5);
    EXPECT_EQ(c.run({"TR", "", "5,0"}).back(), "Object does not intersect an edge.");
    c.run({"E", "E"});
    c.feed("5,0");  // now the edge counts as longer, but it meets beyond the line's end
    expectLine(c, 0, {0, 0}, {10, 0});
    c.run({""});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "EDGEMODE"), 1);
    c.addLine(4, 3, 4, 8);
    c.run({"TR", "4,5", "", "8,0", ""});
    expectLine(c, 0, {0, 0}, {4, 0});
    Console d;
    engine::Layer layer;
    layer.name = engine::Name("FIX");
    layer.locked = true;
    d.drawing().layers.add(layer);
    d.addLine(0, 0, 10, 0).layer = engine::Name("FIX");
    d.addLine(5, -5, 5, 5);
    d.run({"TR", "", "8,0"});
    expectLine(d, 0, {0, 0}, {10, 0});
    d.feed("5,4");  // an edge on a locked layer cuts all the same
    expectLine(d, 1, {5, -5}, {5, 0});
}

TEST(Trim, CirclesArcsEllipsesAndSplines) {
    Console c;
    c.add(CircleEntity(Vector2{0, 0}, 5.0));
    c.addLine(0, -10, 0, 10);
    c.run({"TR", "0,8", "", "5,0", ""});
    const auto& arc = at<ArcEntity>(c, 0);
    EXPECT_NEAR(arc.startAngle, math::kPi / 2, 1e-9);
    EXPECT_NEAR(arc.endAngle, 1.5 * math::kPi, 1e-9);
    Console t;
    t.add(CircleEntity(Vector2{0, 0}, 5.0));
    t.addLine(5, -10, 5, 10);
    EXPECT_EQ(t.run({"TR", "", "0,5"}).back(), "Circle must intersect twice.");  // a tangent touches it once
    Console e;
    e.add(engine::EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5));
    e.add(CircleEntity(Vector2{0, 0}, 7.0));
    e.run({"TR", "0,7", "", "10,0", ""});
    const auto& rest = at<engine::EllipseEntity>(e, 0);
    EXPECT_NEAR(rest.startPoint().length(), 7.0, 1e-8);
    EXPECT_NEAR(rest.endPoint().length(), 7.0, 1e-8);
    EXPECT_GT(rest.distanceTo({10, 0}), 1.0);
    Console s;
    engine::SplineEntity spline;
    spline.controlPoints = {{0, 0}, {5, 10}, {10, -10}, {15, 0}, {20, 8}};
    s.add(spline);
    s.addLine(7.5, -20, 7.5, 20);
    const Vector2 before = s.entities()[0]->nearestPoint({2, 3});
    s.run({"TR", "7.5,19", "", "18,5", ""});
    EXPECT_NEAR(s.entities()[0]->bounds().max.x, 7.5, 1e-8);
    EXPECT_NEAR(s.entities()[0]->distanceTo(before), 0.0, 1e-9);
}

TEST(Trim, PolylinesOpenAndClosed) {
    Console c;
    PolylineEntity path({{0, 0}, {10, 0}, {10, 10}});
    path.setWidths(0, 1, 3);
    c.add(path);
    c.addLine(5, -3, 5, 3);
    c.run({"TR", "5,2", "", "2,0", ""});
    const auto& rest = at<PolylineEntity>(c, 0);
    ASSERT_EQ(rest.vertices.size(), 3u);
    expectNear(rest.vertices[0], {5, 0});
    EXPECT_NEAR(rest.startWidth(0), 2.0, 1e-9);
    Console d;
    d.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    d.addLine(5, -5, 5, 15);
    d.run({"TR", "5,14", "", "0,5", ""});
    const auto& half = at<PolylineEntity>(d, 0);
    EXPECT_FALSE(half.closed);
    ASSERT_EQ(half.vertices.size(), 4u);
    expectNear(half.vertices[0], {5, 0});
    expectNear(half.vertices[3], {5, 10});
    expectNear(half.vertices[1], {10, 0});
}

TEST(Trim, ClosedPolylinesWithManySidesOverTheirStart) {
    std::vector<Vector2> points;
    for (int i = 0; i < 1000; ++i) points.push_back(Vector2::from_angle(math::kTwoPi * i / 1000) * 100.0);
    for (const auto& [pick, kept] : {std::pair{"100,0", Vector2{-100, 0}}, std::pair{"-100,0", Vector2{100, 0}}}) {
        Console c;
        c.add(PolylineEntity(points, true));
        c.addLine(0, -3, 120, -3);
        c.addLine(0, 3, 120, 3);
        c.run({"TR", "", pick, ""});
        const auto& rest = at<PolylineEntity>(c, 0);
        EXPECT_LT(rest.distanceTo(kept), 1e-6);
        EXPECT_NEAR(std::abs(rest.vertices.front().y), 3.0, 1e-9);
        EXPECT_NEAR(std::abs(rest.vertices.back().y), 3.0, 1e-9);
        EXPECT_EQ(rest.vertices.size() < 50, kept.x > 0.0);
    }
}

TEST(Trim, UnboundedLinesFencesAndErasing) {
    Console c;
    c.add(engine::XlineEntity(Vector2{0, 0}, Vector2{1, 0}));
    c.addLine(5, -5, 5, 5);
    c.addLine(9, -5, 9, 5);
    c.run({"TR", "", "7,0", ""});
    ASSERT_EQ(c.count(), 4u);
    expectNear(at<engine::RayEntity>(c, 0).origin, {5, 0});
    expectNear(at<engine::RayEntity>(c, 3).origin, {9, 0});
    Console f;
    for (int i = 0; i < 5; ++i) f.addLine(0, i, 10, i);
    f.addLine(5, -1, 5, 10);
    f.run({"TR", "5,9", "", "F", "7,-1", "7,10", "", ""});
    for (std::size_t i = 0; i < 5; ++i) expectLine(f, i, {0, static_cast<double>(i)}, {5, static_cast<double>(i)});
    EXPECT_EQ(f.document.history().undoCount(), 1u);
    f.run({"TR", "5,9", "", "R", "2,0", "", "C", "1,0.5", "4,4.5", ""});
    EXPECT_EQ(f.count(), 5u);
}

TEST(Trim, QuickModeTakesAllEdgesAndErasesTheRest) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(5, -5, 5, 5);
    c.addLine(0, 20, 10, 20);
    c.run({"TR", "", "O", "Q", ""});
    c.feed("TR");
    EXPECT_TRUE(c.prompt().starts_with("Select object to trim"));
    c.run({"8,0", "2,20", ""});
    ASSERT_EQ(c.count(), 2u);
    expectLine(c, 0, {0, 0}, {5, 0});
    // A window across them all picks the parts inside.
    Console w;
    for (int i = 0; i < 3; ++i) w.addLine(0, i, 10, i);
    w.addLine(5, -1, 5, 3);
    w.run({"TR", "5,2.5", "", "C", "7,-0.5", "9,2.5", ""});
    for (std::size_t i = 0; i < 3; ++i) expectLine(w, i, {0, static_cast<double>(i)}, {5, static_cast<double>(i)});
}

TEST(Offset, TenThousandVerticesAndOne) {
    Console c;
    std::vector<Vector2> points;
    for (int i = 0; i < 10001; ++i) points.push_back({static_cast<double>(i), i % 2 == 0 ? 0.0 : 1.0});
    c.add(PolylineEntity(points));
    EXPECT_LT(seconds([&] { c.run({"O", "0.2", "0,0", "5000,50", "0,0", "5000,-50", ""}); }), 60.0);
    EXPECT_EQ(c.count(), 3u);
}

TEST(Trim, ABlockCanBeAnEdge) {
    Console c;
    auto* block = c.drawing().addBlock(engine::Name("POST"));
    block->entities.append(std::make_unique<CircleEntity>(Vector2{0, 0}, 1.0));
    c.addLine(0, 0, 10, 0);
    c.add(engine::BlockReferenceEntity(engine::Name("POST"), Vector2{5, 0}));
    c.run({"TR", "", "5,0", "4.5,0", ""});
    ASSERT_GE(c.count(), 2u);
    double longest = 0.0;
    for (const engine::Entity* e : c.entities())
        if (const auto* line = dynamic_cast<const LineEntity*>(e)) longest = std::max(longest, line->end.x);
    EXPECT_NEAR(longest, 10.0, 1e-9);
    EXPECT_NEAR(at<LineEntity>(c, 0).end.x, 4.0, 1e-9);
}

TEST(Trim, FarOutWithSmallFeatures) {
    Console c;
    c.addLine(1e7, 1e7, 1e7 + 0.01, 1e7);
    c.addLine(1e7 + 0.004, 1e7 - 1, 1e7 + 0.004, 1e7 + 1);
    c.run({"TR", "10000000.004,10000000.9", "", "10000000.009,10000000", ""});
    EXPECT_NEAR(at<LineEntity>(c, 0).end.x - 1e7, 0.004, 1e-8);
}

TEST(Trim, ManyEdgesAndManyPicks) {
    Console c;
    for (int i = 0; i < 10000; ++i) c.addLine(i + 0.5, -10, i + 0.5, 1010);
    for (int i = 0; i < 1000; ++i) c.addLine(0, i, 10000, i);
    EXPECT_LT(seconds([&] {
                  c.run({"TR", ""});
                  for (int i = 0; i < 1000; ++i) {
                      c.feed("5000," + std::to_string(i));
                  }
                  c.feed("");
              }),
              60.0);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.count(), 12000u);
}

TEST(Trim, APolylineCutsItselfWhereItCrossesItself) {
    // A loop in an open polyline: the loop goes, the two arms stay.
    const PolylineEntity looped({{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, -5}});
    Console c;
    c.add(looped);
    c.run({"TR", "", "10,5", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices, (std::vector<Vector2>{{0, 0}, {5, 0}}));
    expectNear(at<PolylineEntity>(c, 1).vertices.front(), {5, 0});
    expectNear(at<PolylineEntity>(c, 1).vertices.back(), {5, -5});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: TRIM"});
    // An arm goes when it is picked; only edges cut: with others chosen it does not cut itself.
    c.run({"TR", "", "1,0", ""});
    ASSERT_EQ(c.count(), 1u);
    expectNear(at<PolylineEntity>(c, 0).vertices.front(), {5, 0});
    Console other;
    other.add(looped);
    other.addLine(50, 0, 50, 10);
    EXPECT_EQ(other.run({"TR", "50,5", "", "10,5"}).back(), "Object does not intersect an edge.");
    // A bow tie, closed: one wing goes. Neighbours that only meet at their vertex are no crossing.
    Console tie;
    tie.add(PolylineEntity({{0, 0}, {10, 10}, {10, 0}, {0, 10}}, true));
    tie.run({"TR", "", "10,5", ""});
    ASSERT_EQ(tie.count(), 1u);
    EXPECT_EQ(at<PolylineEntity>(tie, 0).vertices.size(), 4u);
    EXPECT_NEAR(at<PolylineEntity>(tie, 0).bounds().max.x, 5.0, 1e-9);
    Console plain;
    plain.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    EXPECT_EQ(plain.run({"TR", "", "10,5"}).back(), "Object does not intersect an edge.");
}

TEST(Trim, ASplineCutsItself) {
    Console c;
    engine::SplineEntity spline;  // one cubic with a loop
    spline.controlPoints = {{0, 0}, {20, 15}, {-10, 15}, {10, 0}};
    c.add(spline);
    const Vector2 top = c.entities()[0]->nearestPoint({5, 20});
    c.run({"TR", "", std::to_string(top.x) + "," + std::to_string(top.y), ""});
    ASSERT_EQ(c.count(), 2u);
    const double meeting = at<engine::SplineEntity>(c, 0).bounds().max.y;
    EXPECT_NEAR(meeting, at<engine::SplineEntity>(c, 1).bounds().max.y, 1e-7);
    EXPECT_LT(meeting, top.y - 1.0);
    EXPECT_NEAR(c.entities()[0]->nearestPoint({5, 30}).x, 5.0, 1e-6);
}

TEST(Trim, ALongPolylineAmongItsOwnCrossings) {
    Console c;
    std::vector<Vector2> points;
    for (int i = 0; i < 20000; ++i) {
        const double t = i * 0.05;  // a long row of loops
        points.push_back({t + 2.0 * std::sin(3.0 * t), 2.0 * std::cos(3.0 * t)});
    }
    c.add(PolylineEntity(points));
    c.run({"TR", ""});
    for (int i = 1; i <= 20; ++i) c.feed(std::to_string(i * 40) + ",2");
    c.feed("");
    EXPECT_GT(c.count(), 15u);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

TEST(Trim, ConstructionLinesAmongManyEdges) {
    Console c;
    for (int i = 0; i < 5000; ++i) c.addLine(i, -5, i, 5);
    c.add(engine::XlineEntity(Vector2{0, 1}, Vector2{1, 0}));
    c.run({"TR", "", "2500.5,1", ""});
    expectNear(at<engine::RayEntity>(c, 5000).origin, {2500, 1});
    expectNear(at<engine::RayEntity>(c, 5001).origin, {2501, 1});
    c.run({"TR", "", "-50,1", ""});  // beyond all edges: back to the first one
    expectLine(c, 5000, {2500, 1}, {0, 1});
}

// EXTEND -------------------------------------------------------------------------------------------------

TEST(Extend, TheEndThatWasPicked) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(15, -5, 15, 5);
    c.addLine(-4, -5, -4, 5);
    c.run({"EXTEND", "", "9,0"});
    expectLine(c, 0, {0, 0}, {15, 0});
    c.feed("1,0");
    expectLine(c, 0, {-4, 0}, {15, 0});
    EXPECT_EQ(c.feed("1,0"), Lines{"Object does not intersect an edge."});
    c.run({"U", ""});
    expectLine(c, 0, {0, 0}, {15, 0});
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

TEST(Extend, ArcsPolylinesRaysAndWhatCannotGrow) {
    Console c;
    c.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, math::kPi / 2));
    c.addLine(-10, 0, -1, 0);
    c.run({"EX", "-9,0", "", "1,4.9", ""});
    EXPECT_NEAR(at<ArcEntity>(c, 0).endAngle, math::kPi, 1e-9);
    EXPECT_NEAR(at<ArcEntity>(c, 0).startAngle, 0.0, 1e-12);
    Console p;
    p.add(PolylineEntity({{0, 0}, {5, 0}, {5, 5}}));
    p.addLine(0, 9, 10, 9);
    p.run({"EX", "9,9", "", "5,4", ""});
    expectNear(at<PolylineEntity>(p, 0).vertices[2], {5, 9});
    Console k;
    k.add(CircleEntity(Vector2{0, 0}, 5.0));
    k.addLine(8, -5, 8, 5);
    EXPECT_EQ(k.run({"EX", "", "5,0"}).back(), "Cannot extend that object.");
}

TEST(Extend, APolylineToItself) {
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 5}}));
    c.run({"EX", "", "5,6", ""});
    expectNear(at<PolylineEntity>(c, 0).vertices.back(), {5, 0});
}

TEST(Extend, ToImpliedEdgesAndThroughFences) {
    Console c;
    for (int i = 0; i < 4; ++i) c.addLine(0, i, 5, i);
    c.addLine(9, 20, 9, 30);
    EXPECT_EQ(c.run({"EX", "9,25", "", "4,0"}).back(), "Object does not intersect an edge.");
    c.run({"E", "E", "F", "4,-1", "4,5", "", "E", "N", ""});
    for (std::size_t i = 0; i < 4; ++i) expectLine(c, i, {0, static_cast<double>(i)}, {9, static_cast<double>(i)});
}

}  // namespace
}  // namespace kova::cmd
