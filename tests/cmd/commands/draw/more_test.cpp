#include <cmath>

#include "cmd/draw_harness.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/face3d.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/table_entity.hpp"
#include "engine/entities/wipeout.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::PolylineEntity;
using engine::SplineEntity;
using math::kPi;
using math::Vector2;
using math::Vector3;

TEST(Spline, FitPointsTangentsCloseUndo) {
    DrawConsole c;
    c.run({"SPLINE", "0,0", "T", "90", "10,10", "99,99", "U", "20,0", "T", "270"});
    const auto& s = c.only<SplineEntity>();
    EXPECT_EQ(s.fitPoints.size(), 3u);
    EXPECT_EQ(c.lastStep(), "SPLINE");
    for (const Vector2& p : s.fitPoints) EXPECT_LT(s.distanceTo(p), 1e-7);
    // Leaves upwards, arrives downwards.
    EXPECT_NEAR(s.controlPoints[1].x, 0.0, 1e-9);
    EXPECT_GT(s.controlPoints[1].y, 0.0);
    EXPECT_NEAR(s.controlPoints[s.controlPoints.size() - 2].x, 20.0, 1e-9);
    c.run({"SPL", "0,0", "10,0", "10,10", "C"});
    const auto& closed = c.last<SplineEntity>();
    EXPECT_TRUE(closed.closed);
    EXPECT_GT(closed.length(), 30.0);
}

TEST(Spline, KnotsAreKeptForTheNext) {
    DrawConsole c;
    c.run({"SPLINE", "K", "S", "0,0", "9,0", "9,4", ""});
    const auto& s = c.only<SplineEntity>();
    EXPECT_DOUBLE_EQ(s.knots.back() - s.knots.front(), 5.0);
    c.run({"SPLINE", "K"});
    EXPECT_EQ(c.prompt(), "Enter knot parameterization [Chord/Square root/Uniform] <Square root>:");
    c.run({"C", "0,0", "9,0", "9,4", ""});
    EXPECT_DOUBLE_EQ(c.last<SplineEntity>().knots.back() - c.last<SplineEntity>().knots.front(), 13.0);
}

TEST(Spline, ControlVertices) {
    DrawConsole c;
    c.run({"SPLINE", "M", "CV", "D", "2", "0,0", "5,10", "10,0", ""});
    const auto& s = c.only<SplineEntity>();
    EXPECT_EQ(s.degree, 2);
    expectPoints(s.controlPoints, {{0, 0}, {5, 10}, {10, 0}});
    EXPECT_LT(s.distanceTo({5, 5}), 1e-6);
    c.run({"SPLINE", "0,0", "10,0", "10,10", "0,10", "C"});
    const auto& closed = c.last<SplineEntity>();
    const auto path = closed.path();
    expectNear(path.view().front().p, path.current(), 1e-9);
    c.run({"SPLINE", "M", "F", "0,0", "5,5", ""});
    EXPECT_FALSE(c.last<SplineEntity>().fitPoints.empty());
}

TEST(Mline, OptionsAndClose) {
    DrawConsole c;
    c.run({"MLINE", "J", "Z", "S", "4", "ST", "other", "0,0", "10,0", "10,10", "50,50", "U", "C"});
    EXPECT_EQ(c.lines.back(), "Multiline style \"other\" not found.");
    const auto& m = c.only<engine::MLineEntity>();
    EXPECT_TRUE(m.closed);
    EXPECT_EQ(m.vertices.size(), 3u);
    EXPECT_DOUBLE_EQ(m.scale, 4);
    EXPECT_EQ(m.justification, engine::MLineJustification::Zero);
}

TEST(Wipeout, PointsPolylineAndFrames) {
    DrawConsole c;
    c.run({"WIPEOUT", "0,0", "10,0", "10,10", ""});
    EXPECT_EQ(c.only<engine::WipeoutEntity>().vertices.size(), 3u);
    c.run({"REC", "20,0", "30,10", "WIPEOUT", "P", "20,5", "Y"});
    EXPECT_EQ(c.count(), 2u);  // the polyline went
    EXPECT_EQ(c.last<engine::WipeoutEntity>().vertices.size(), 4u);
    c.run({"WIPEOUT", "F", "OFF"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "WIPEOUTFRAME"), 0);
    EXPECT_EQ(c.run({"WIPEOUT", "0,0", "5,5", ""}), Lines{"Invalid input."});
}

std::vector<Vector2> pointsOf(DrawConsole& c) {
    std::vector<Vector2> points;
    for (engine::Entity* e : c.entities())
        if (const auto* p = dynamic_cast<engine::PointEntity*>(e)) points.push_back(p->position);
    return points;
}

TEST(Divide, OpenClosedAndPolylinesWithArcs) {
    DrawConsole line;
    line.addLine(0, 0, 10, 0);
    line.run({"DIVIDE", "5,0", "4"});
    expectPoints(pointsOf(line), {{2.5, 0}, {5, 0}, {7.5, 0}});
    EXPECT_EQ(line.lastStep(), "DIVIDE");
    DrawConsole circle;
    circle.run({"CIRCLE", "0,0", "5", "DIV", "5,0", "4"});
    expectPoints(pointsOf(circle), {{5, 0}, {0, 5}, {-5, 0}, {0, -5}});
    DrawConsole mixed;
    mixed.run({"PLINE", "0,0", "10,0", "A", "10,10", ""});
    const double half = (10 + 5 * kPi) / 2;
    mixed.run({"DIVIDE", "5,0", "2"});
    const double angle = -kPi / 2 + (half - 10) / 5;
    expectPoints(pointsOf(mixed), {Vector2(10, 5) + 5 * Vector2::from_angle(angle)});
    // Equal lengths along an ellipse, too.
    DrawConsole ellipse;
    ellipse.run({"ELLIPSE", "C", "0,0", "10,0", "3", "DIVIDE", "10,0", "4"});
    expectPoints(pointsOf(ellipse), {{10, 0}, {0, 3}, {-10, 0}, {0, -3}}, 1e-3);
}

TEST(Measure, FromTheEndPickedAndBlocks) {
    DrawConsole c;
    c.addLine(0, 0, 10, 0);
    c.run({"MEASURE", "9,0", "4"});
    expectPoints(pointsOf(c), {{6, 0}, {2, 0}});
    EXPECT_EQ(c.run({"MEASURE", "5,0", "1e-9"}), Lines{"Invalid value."});
    c.processor.cancel();
    c.drawing().addBlock("Mark");
    DrawConsole slanted;
    slanted.drawing().addBlock("Mark");
    slanted.addLine(0, 0, 10, 10);
    slanted.run({"DIVIDE", "5,5", "B", "nothing", "mark", "Y", "2"});
    EXPECT_EQ(slanted.lines.back(), "Cannot find block \"nothing\".");
    const auto& reference = slanted.last<engine::BlockReferenceEntity>();
    expectNear(reference.insert, {5, 5});
    EXPECT_NEAR(reference.rotation, kPi / 4, 1e-12);
}

TEST(Revcloud, ArcsBendOutwards) {
    DrawConsole c;
    c.run({"REVCLOUD", "A", "2", "", "R", "0,0", "20,10"});
    const auto cloud = c.only<PolylineEntity>();
    EXPECT_TRUE(cloud.closed);
    EXPECT_EQ(cloud.vertices.size(), 30u);
    EXPECT_GT(cloud.area(), 200.0);
    // Clockwise outlines bend outwards as well; reversed they bend in.
    c.run({"REVCLOUD", "P", "0,20", "0,40", "20,40", "20,20", "", "N"});
    EXPECT_GT(c.last<PolylineEntity>().area(), 400.0);
    c.run({"REVCLOUD", "P", "0,20", "0,40", "20,40", "20,20", "", "Y"});
    EXPECT_LT(c.last<PolylineEntity>().area(), 400.0);
    c.run({"CIRCLE", "100,0", "10", "REVCLOUD", "O", "110,0", "N"});
    EXPECT_GT(c.last<PolylineEntity>().area(), 100 * kPi);
    EXPECT_EQ(c.count(), 4u);  // the circle became the cloud
    EXPECT_EQ(c.run({"REVCLOUD", "A", "2", "7"}).back(), "Invalid value.");
}

TEST(Table, CellsRowByRow) {
    DrawConsole c;
    c.run({"TABLE", "2", "2", "W", "30", "10,20", "Parts", "No", "Name", "1", ".", "LINE", "0,0", "1,1", ""});
    ASSERT_EQ(c.count(), 2u);
    const auto& table = *static_cast<engine::TableEntity*>(c.entities()[0]);
    EXPECT_EQ(table.rows, 4);
    EXPECT_EQ(table.cols, 2);
    EXPECT_EQ(table.cell(0, 0)->content, "Parts");
    EXPECT_EQ(table.cell(0, 0)->mergeRight, 1);
    EXPECT_EQ(table.cell(1, 1)->content, "Name");
    EXPECT_EQ(table.cell(2, 0)->content, "1");
    EXPECT_DOUBLE_EQ(table.totalWidth(), 60);
    c.run({"TABLE", "2", "", "10,20"});
    EXPECT_EQ(c.prompt(), "Enter text for cell A1 <>:");
    c.feed("T");
    EXPECT_EQ(c.prompt(), "Enter text for cell A2 <>:");  // the rest of the title row is merged
    c.feed(".");
    EXPECT_TRUE(c.idle());
}

TEST(Space, FacesPolylinesWithHeights) {
    DrawConsole c;
    c.run({"3DFACE", "0,0,0", "10,0,0", "I", "10,10,5", "0,10,5", "0,20,7", "", ""});
    const auto all = c.entities();
    ASSERT_EQ(all.size(), 2u);
    const auto& face = *static_cast<engine::Face3DEntity*>(all[0]);
    EXPECT_EQ(face.corners[2], Vector3(10, 10, 5));
    EXPECT_EQ(face.edgeFlags, 4);
    const auto& next = *static_cast<engine::Face3DEntity*>(all[1]);
    EXPECT_EQ(next.corners[0], Vector3(10, 10, 5));
    EXPECT_TRUE(next.isTriangle());
    c.run({"3DPOLY", "0,0,1", "@5,0,2", "@0,5", "9,9,9", "U", "C"});
    const auto& poly = c.last<engine::Polyline3DEntity>();
    ASSERT_EQ(poly.vertices.size(), 3u);
    EXPECT_EQ(poly.vertices[1], Vector3(5, 0, 3));
    EXPECT_EQ(poly.vertices[2], Vector3(5, 5, 3));
    EXPECT_TRUE(poly.closed);
    c.run({"3DPOLY", "0,0", "1,1,1"});
    c.processor.cancel();
    EXPECT_EQ(c.count(), 4u);
}

TEST(Helix, RadiiTurnsAndTwist) {
    DrawConsole c;
    c.run({"HELIX", "1,2", "5", "5", "T", "4", "W", "CW", "20"});
    const auto& s = c.only<SplineEntity>();
    ASSERT_TRUE(s.helix);
    EXPECT_DOUBLE_EQ(s.helix->turns, 4);
    EXPECT_DOUBLE_EQ(s.helix->turnHeight, 5);
    EXPECT_FALSE(s.helix->ccw);
    EXPECT_DOUBLE_EQ(s.controlZ.back(), 20);
    expectNear(s.controlPoints.back(), {6, 2});
    const auto path = s.path();
    for (const auto& e : path.view()) EXPECT_NEAR(e.p.distance_to({1, 2}), 5.0, 1e-6);
    c.run({"HELIX", "0,0", "5", "0", "H", "2", "10"});
    EXPECT_DOUBLE_EQ(c.last<SplineEntity>().helix->turns, 5);
    expectNear(c.last<SplineEntity>().controlPoints.back(), {0, 0});
    EXPECT_EQ(c.run({"HELIX", "0,0", "0", "0"}).back(), "Invalid value.");
    // The twist and the number of turns stay.
    EXPECT_EQ(c.feed("HELIX").front(), "Number of turns = 5.0000   Twist=CW");
    // About a slanting axis: as far from it everywhere, from its foot to its top.
    c.run({"10,0,5", "3", "3", "T", "2", "A", "10,0,5", "A", "40,0,45"});
    const auto& slanting = c.last<SplineEntity>();
    const math::Vector3 axis{0.6, 0, 0.8};
    for (std::size_t i = 0; i < slanting.controlPoints.size(); i += 3) {
        const math::Vector3 arm =
            math::Vector3(slanting.controlPoints[i], slanting.controlZ[i]) - math::Vector3{10, 0, 5};
        const double along = arm.dot(axis);
        EXPECT_NEAR(along, 50.0 * static_cast<double>(i) / static_cast<double>(slanting.controlPoints.size() - 1),
                    1e-9);
        EXPECT_NEAR((arm - axis * along).length(), 3.0, 1e-9);
    }
    ASSERT_TRUE(slanting.helix);
    EXPECT_TRUE(slanting.helix->axis.near_equal(axis, 1e-12));
    EXPECT_DOUBLE_EQ(slanting.helix->turnHeight, 25.0);
}

}  // namespace
}  // namespace kova::cmd
