#include <gtest/gtest.h>

#include <ctime>
#include <limits>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/mesh.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::ArcEntity;
using engine::CircleEntity;
using engine::LineEntity;
using engine::PolylineEntity;
using math::Vector2;

// JOIN ---------------------------------------------------------------------------------------------------

TEST(Join, ChainsBecomePolylinesLinesArcsAndCircles) {
    Console c;
    c.addLine(0, 0, 10, 0).layer = engine::Name("A");
    c.addLine(10, 10, 10, 0);
    c.add(ArcEntity(Vector2{5, 10}, 5.0, 0.0, math::kPi));
    c.addLine(50, 50, 60, 60);
    const Lines told = c.run({"JOIN", "ALL", ""});
    EXPECT_EQ(told.at(told.size() - 2), "3 objects joined into 1 polyline");
    EXPECT_EQ(told.back(), "1 object discarded from the operation.");
    ASSERT_EQ(c.count(), 2u);
    const auto& chain = at<PolylineEntity>(c, 0);
    ASSERT_EQ(chain.vertices.size(), 4u);
    EXPECT_EQ(chain.layer, engine::Name("A"));
    expectNear(chain.vertices[0], {0, 0});
    EXPECT_NEAR(chain.bulge(2), 1.0, 1e-12);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: JOIN"});
    EXPECT_EQ(c.count(), 4u);
    Console l;
    l.addLine(0, 0, 5, 5);
    l.addLine(9, 9, 5, 5);
    l.run({"J", "ALL", ""});
    ASSERT_EQ(l.count(), 1u);
    expectNear(at<LineEntity>(l, 0).end, {9, 9});
    Console a;
    a.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, 1.0));
    a.add(ArcEntity(Vector2{0, 0}, 5.0, 1.0, 0.0));
    a.run({"J", "ALL", ""});
    ASSERT_EQ(a.count(), 1u);
    EXPECT_NEAR(at<CircleEntity>(a, 0).radius, 5.0, 1e-12);
    Console s;
    engine::SplineEntity spline;
    spline.controlPoints = {{0, 0}, {1, 3}, {4, 3}, {5, 0}};
    s.add(spline);
    s.addLine(5, 0, 9, 0);
    s.run({"J", "ALL", ""});
    ASSERT_EQ(s.count(), 1u);
    EXPECT_NEAR(s.entities()[0]->distanceTo({7, 0}), 0.0, 1e-9);
}

TEST(Join, SourceFirstBridgesGapsInOneLineAndClosesArcs) {
    Console c;
    c.addLine(0, 0, 2, 0);
    c.addLine(5, 0, 4, 0);
    c.addLine(7, 0, 9, 1);
    c.run({"JOIN", "1,0", ""});
    c.run({"4.5,0", "8.9,0.95", ""});
    ASSERT_EQ(c.count(), 2u);
    expectNear(at<LineEntity>(c, 0).start, {0, 0});
    expectNear(at<LineEntity>(c, 0).end, {5, 0});
    Console a;
    a.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, 1.0));
    a.run({"JOIN", "5,0", ""});
    EXPECT_EQ(a.prompt(), "Select arcs to join to source or [cLose]:");
    EXPECT_EQ(a.feed("L"), Lines{"Arc converted to a circle."});
    EXPECT_TRUE(a.idle());
    EXPECT_NEAR(at<CircleEntity>(a, 0).radius, 5.0, 1e-12);
    Console none;
    none.addLine(0, 0, 1, 0);
    none.addLine(5, 5, 6, 7);
    EXPECT_EQ(none.run({"J", "ALL", ""}).back(), "0 objects joined, 2 objects discarded from the operation.");
    EXPECT_EQ(none.document.history().undoCount(), 0u);
}

TEST(Join, ManyScatteredSegments) {
    Console c;
    constexpr int kCount = 100000;
    // A long zigzag whose segments come in no order and no direction.
    for (int k = 0; k < kCount; ++k) {
        const int i = static_cast<int>((static_cast<long long>(k) * 7919) % kCount);
        const double y0 = i % 2 == 0 ? 0.0 : 1.0;
        if (k % 3 == 0)
            c.addLine(i + 1, 1.0 - y0, i, y0);
        else
            c.addLine(i, y0, i + 1, 1.0 - y0);
    }
    const auto start = std::clock();
    c.run({"J", "ALL", ""});
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 60.0);
    ASSERT_EQ(c.count(), 1u);
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices.size(), static_cast<std::size_t>(kCount) + 1);
}

// PEDIT --------------------------------------------------------------------------------------------------

TEST(Pedit, ConvertsClosesAndSetsWidth) {
    Console c;
    c.addLine(0, 0, 10, 0);
    EXPECT_EQ(c.run({"PEDIT", "5,0"}).back(), "Object selected is not a polyline");
    EXPECT_EQ(c.prompt(), "Do you want to turn it into one? <Y>");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter an option [Close/Join/Width/Edit vertex/Fit/Spline/Decurve/Ltype gen/Reverse/Undo]:");
    c.run({"W", "0.5", "L", "ON", "R"});
    const auto& line = at<PolylineEntity>(c, 0);
    EXPECT_EQ(line.startWidth(0), 0.5);
    EXPECT_TRUE(line.ltgen);
    expectNear(line.vertices[0], {10, 0});
    c.run({"U", "U"});
    expectNear(at<PolylineEntity>(c, 0).vertices[0], {0, 0});
    EXPECT_FALSE(at<PolylineEntity>(c, 0).ltgen);
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: PEDIT"});
    at<LineEntity>(c, 0);
    Console d;
    d.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 0}}));
    d.run({"PE", "5,0", "C"});
    EXPECT_TRUE(at<PolylineEntity>(d, 0).closed);
    EXPECT_EQ(at<PolylineEntity>(d, 0).vertices.size(), 3u);
    EXPECT_EQ(d.prompt(), "Enter an option [Open/Join/Width/Edit vertex/Fit/Spline/Decurve/Ltype gen/Reverse/Undo]:");
    d.run({"O", ""});
    EXPECT_FALSE(at<PolylineEntity>(d, 0).closed);
    Console e;
    e.add(CircleEntity(Vector2{0, 0}, 5.0));
    EXPECT_EQ(e.run({"PE", "5,0"}).back(), "Object selected is not a polyline.");
}

TEST(Pedit, JoinsOneAndMany) {
    Console c;
    c.run({"PEDITACCEPT 1"});
    c.addLine(0, 0, 10, 0);
    c.addLine(10, 0, 10, 10);
    c.addLine(20, 20, 30, 30);
    EXPECT_EQ(c.run({"PE", "5,0", "J", "ALL", ""}).back(), "1 segment added to polyline");
    c.feed("");
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 3u);
    // With a gap: extended to a corner, or bridged by a segment.
    for (const bool add : {false, true}) {
        Console m;
        m.addLine(0, 0, 9, 0);
        m.addLine(10, 1, 10, 10);
        m.run({"PE", "M", "ALL", "", "Y", "J", "J", add ? "A" : "E", "2", ""});
        ASSERT_EQ(m.count(), 1u);
        const auto& joined = at<PolylineEntity>(m, 0);
        ASSERT_EQ(joined.vertices.size(), add ? 4u : 3u);
        if (!add) expectNear(joined.vertices[1], {10, 0});
    }
}

TEST(Pedit, FitsSplinesAndDecurves) {
    Console c;
    const std::vector<Vector2> frame{{0, 0}, {10, 10}, {20, 0}, {30, 10}};
    c.add(PolylineEntity(frame));
    c.run({"PE", "5,5", "F"});
    {
        const auto& p = at<PolylineEntity>(c, 0);
        ASSERT_EQ(p.vertices.size(), 7u);
        // Smooth at every vertex.
        const engine::Path path = p.path();
        const auto view = path.view();
        for (std::size_t i = 2; i < view.size(); ++i) {
            const Vector2 in = engine::elementTangent(view[i - 1], view[i - 2].p, 1.0).normalized();
            const Vector2 out = engine::elementTangent(view[i], view[i - 1].p, 0.0).normalized();
            EXPECT_NEAR(in.dot(out), 1.0, 1e-9) << i;
        }
        for (std::size_t i = 0; i < frame.size(); ++i) expectNear(p.vertices[2 * i], frame[i]);
    }
    c.feed("S");
    {
        const auto& p = at<PolylineEntity>(c, 0);
        EXPECT_TRUE(p.spline);
        EXPECT_EQ(p.curveType, 6);
        EXPECT_EQ(p.vertices.size(), 25u);
        EXPECT_EQ(p.fit, frame);
        expectNear(p.vertices.back(), {30, 10});
    }
    c.run({"D", ""});
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices, frame);
    EXPECT_FALSE(at<PolylineEntity>(c, 0).spline);
}

TEST(Pedit, EditsVertices) {
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {20, 10}}));
    c.run({"PE", "5,0", "E"});
    EXPECT_EQ(c.prompt(),
              "Enter a vertex editing option "
              "[Next/Previous/Break/Insert/Move/Regen/Straighten/Tangent/Width/eXit] <N>:");
    c.run({"", "M", "@0,-2"});
    expectNear(at<PolylineEntity>(c, 0).vertices[1], {10, -2});
    c.run({"I", "12,4"});
    ASSERT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 5u);
    expectNear(at<PolylineEntity>(c, 0).vertices[2], {12, 4});
    c.run({"W", "1", "2"});
    EXPECT_EQ(at<PolylineEntity>(c, 0).endWidth(1), 2.0);
    c.run({"S", "N", "N", "G"});
    ASSERT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 4u);
    expectNear(at<PolylineEntity>(c, 0).vertices[2], {10, 10});
    c.run({"B", "N", "G"});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 2u);
    expectNear(at<PolylineEntity>(c, 1).vertices[0], {10, 10});
    c.run({"X", "U", ""});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_TRUE(c.idle());
}

TEST(Pedit, VertexEditingOfACurveWorksOnItsFrame) {
    Console c;
    const std::vector<Vector2> frame{{0, 0}, {10, 10}, {20, 0}, {30, 10}};
    c.add(PolylineEntity(frame));
    c.run({"PE", "5,5", "S", "E", "N", "M", "10,20", "I", "15,15", "X", ""});
    {
        const auto& p = at<PolylineEntity>(c, 0);
        EXPECT_TRUE(p.spline);
        ASSERT_EQ(p.fit.size(), 5u);
        expectNear(p.fit[1], {10, 20});
        expectNear(p.fit[2], {15, 15});
        EXPECT_EQ(p.vertices.size(), 4u * 8u + 1u);
    }
    c.run({"PE", "0,0", "D", "E", "T", "90", "X", "F", "E", "N", "N", "N", "S", "P", "P", "G", "X", ""});
    {
        // The tangent stands, the two vertices between are gone.
        const auto& p = at<PolylineEntity>(c, 0);
        ASSERT_EQ(p.fit.size(), 4u);
        const auto path = p.path();
        EXPECT_NEAR(engine::elementTangent(path.view()[1], path.view()[0].p, 0.0).normalized().y, 1.0, 1e-9);
    }
    const double length = at<PolylineEntity>(c, 0).length();
    c.run({"PE", "0,0", "E", "N", "B", "G", "X", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_NEAR(at<PolylineEntity>(c, 0).length() + at<PolylineEntity>(c, 1).length(), length, 1e-6);
}

TEST(Pedit, SettingsSaySo) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(10, 0, 10, 10);
    c.run({"DELOBJ 0", "PEDITACCEPT 1", "PE", "M", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Enter an option [Close/Open/Join/Width/Fit/Spline/Decurve/Ltype gen/Reverse/Undo]:");
    c.run({"J", "0", ""});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_EQ(at<PolylineEntity>(c, 2).vertices.size(), 3u);
    c.run({"SPLINESEGS -3", "PE", "10,5", "S", ""});
    c.feed("UNDO");
    c.run({"PE", "L", "S", ""});
    EXPECT_TRUE(at<PolylineEntity>(c, 2).hasBulges());
    EXPECT_EQ(at<PolylineEntity>(c, 2).curveType, 6);
}

TEST(Pedit, ThreeDimensionalPolylines) {
    Console c;
    c.add(engine::Polyline3DEntity({{0, 0, 0}, {10, 0, 5}, {10, 10, 9}}));
    c.run({"PE", "5,0"});
    EXPECT_EQ(c.prompt(), "Enter an option [Close/Join/Edit vertex/Spline curve/Decurve/Reverse/Undo]:");
    c.run({"C", "R"});
    const auto& p = at<engine::Polyline3DEntity>(c, 0);
    EXPECT_TRUE(p.closed);
    EXPECT_EQ(p.vertices[0].z, 9.0);
    c.run({"O", "E"});
    EXPECT_EQ(c.prompt(), "Enter a vertex editing option [Next/Previous/Break/Insert/Move/Regen/Straighten/eXit] <N>:");
    EXPECT_EQ(c.feed("").back(), "Vertex 2 at 10,0,5");
    c.run({"M", "@1,0,2", "I", "11,2,8", "X", "S"});
    {
        const auto& e = at<engine::Polyline3DEntity>(c, 0);
        ASSERT_EQ(e.frame.size(), 4u);
        EXPECT_EQ(e.frame[1], math::Vector3(11, 0, 7));
        EXPECT_EQ(e.frame[2].z, 8.0);
        EXPECT_EQ(e.vertices.size(), 25u);
    }
    // Vertices of the frame are what is edited; the curve follows.
    c.run({"E", "S", "N", "N", "G", "X", "D"});
    EXPECT_EQ(at<engine::Polyline3DEntity>(c, 0).vertices.size(), 3u);
    c.addLine(0, 0, -5, -5);
    c.feed("J");
    EXPECT_EQ(c.run({"ALL", ""}).back(), "1 segment added to polyline");
    EXPECT_EQ(c.count(), 1u);
    c.run({"E", "N", "B", "N", "G", "X", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<engine::Polyline3DEntity>(c, 1).vertices.size(), 2u);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<engine::Polyline3DEntity>(c, 0).vertices[1], math::Vector3(10, 0, 5));
}

TEST(Pedit, Meshes) {
    Console m;
    engine::MeshEntity mesh;
    mesh.rows = mesh.cols = 4;
    for (int i = 0; i < 16; ++i) mesh.vertices.push_back({i % 4 * 5.0, i / 4 * 5.0, i % 3 * 2.0});
    const std::vector<math::Vector3> before = mesh.vertices;
    m.add(mesh);
    m.run({"PE", "0,0"});
    EXPECT_EQ(m.prompt(), "Enter an option [Edit vertex/Smooth surface/Desmooth/Mclose/Nclose/Undo]:");
    m.run({"N", "M", "U"});
    EXPECT_TRUE(at<engine::MeshEntity>(m, 0).closedN);
    EXPECT_FALSE(at<engine::MeshEntity>(m, 0).closedM);
    EXPECT_EQ(m.prompt(), "Enter an option [Edit vertex/Smooth surface/Desmooth/Mclose/Nopen/Undo]:");
    m.run({"N", "S"});
    EXPECT_EQ(at<engine::MeshEntity>(m, 0).rows, 7);
    EXPECT_EQ(at<engine::MeshEntity>(m, 0).surfaceType, 6);
    EXPECT_EQ(m.feed("E").back(), "Current vertex (0,0) at 0,0,0");
    EXPECT_EQ(m.prompt(), "Enter a vertex editing option [Next/Previous/Left/Right/Up/Down/Move/REgen/eXit] <N>:");
    EXPECT_EQ(m.run({"", "", "U", "L", "RE"}).back(), "Current vertex (1,1) at 5,5,4");
    m.run({"M", "5,5,50", "D", "L", "L", "D", "P"});
    EXPECT_EQ(m.lines.back(), "Current vertex (0,0) at 0,0,0");
    m.run({"X", "D", ""});
    std::vector<math::Vector3> after = before;
    after[5] = {5, 5, 50};
    EXPECT_EQ(at<engine::MeshEntity>(m, 0).vertices, after);
    m.run({"SURFTYPE 8", "SURFU 3", "PE", "0,0", "S", "M", ""});
    EXPECT_EQ(at<engine::MeshEntity>(m, 0).rows, 3);
    m.feed("UNDO");
    EXPECT_EQ(at<engine::MeshEntity>(m, 0).vertices, after);
    Console few;
    mesh.rows = 3;
    mesh.vertices.resize(12);
    few.add(mesh);
    EXPECT_EQ(few.run({"PE", "0,0", "S"}).back(), "The surface needs at least 4 vertices in both directions.");
    few.feed("");
    EXPECT_EQ(few.document.history().undoCount(), 0u);
}

TEST(Pedit, SurvivesOddObjects) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::string> options{"C", "O", "F", "S", "D", "R", "W", "1", "L", "ON", "M", "N", "M"};
    const std::vector<std::string> vertex{"E", "N", "M", "1e300,1", "I", "0,0", "S", "N",
                                          "N", "G", "B", "P",       "G", "P",   "X"};
    const auto edit = [&](Console& c) {
        const std::size_t before = c.count();
        for (const auto* lines : {&options, &vertex, &options}) {
            c.run({"PEDIT", "L"});
            c.run(*lines);
            while (!c.idle()) c.processor.cancel();
        }
        while (c.document.history().undoCount() > 0) c.feed("UNDO");
        EXPECT_EQ(c.count(), before);
    };
    const std::vector<std::vector<Vector2>> plane{
        {}, {{1, 1}}, {{1, 1}, {1, 1}, {1, 1}}, {{0, 0}, {nan, 1}, {2, 2}, {3, 0}}};
    for (const auto& points : plane) {
        Console c;
        c.add(PolylineEntity(points)).fit = {{5, 5}};
        edit(c);
        Console d;
        engine::Polyline3DEntity space;
        for (const Vector2& p : points) space.vertices.emplace_back(p);
        d.add(space).frame = {{1, 2, 3}, {4, 5, 6}};
        edit(d);
    }
    for (const std::int32_t rows : {-4, 0, 1, 4, 2'000'000'000}) {
        Console c;
        engine::MeshEntity mesh;
        mesh.rows = rows;
        mesh.cols = 4;
        mesh.vertices.resize(10, {1, 2, nan});
        mesh.frameRows = mesh.frameCols = rows;
        c.add(mesh);
        edit(c);
    }
}

TEST(Mpedit, EditsManyAtOnce) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(10, 0, 10, 10);
    c.add(PolylineEntity({{20, 0}, {30, 0}, {30, 10}}));
    c.add(CircleEntity(Vector2{50, 0}, 5.0));
    c.run({"MPEDIT", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Convert Lines, Arcs and Splines to polylines [Yes/No]? <Yes>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter an option [Open/Close/Join/Width/Fit/Spline/Decurve/Ltype gen/eXit] <eXit>:");
    c.feed("J");
    EXPECT_EQ(c.prompt(), "Enter fuzz distance or [Jointype] <0>:");
    c.run({"", "C", "W", "2", "L", "ON", ""});
    ASSERT_EQ(c.count(), 3u);
    for (const std::size_t i : {0u, 1u}) {
        EXPECT_TRUE(at<PolylineEntity>(c, i).closed);
        EXPECT_EQ(at<PolylineEntity>(c, i).endWidth(2), 2.0);
        EXPECT_TRUE(at<PolylineEntity>(c, i).ltgen);
    }
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MPEDIT"});
    EXPECT_EQ(c.count(), 4u);
    at<LineEntity>(c, 1);
}

// REVERSE ------------------------------------------------------------------------------------------------

TEST(Reverse, KeepsTheShape) {
    Console c;
    c.addLine(0, 0, 10, 5);
    PolylineEntity path({{0, 20}, {10, 20}, {10, 30}});
    path.setBulge(0, 0.5);
    path.setWidths(1, 1, 3);
    c.add(path);
    engine::SplineEntity spline;
    spline.controlPoints = {{0, 40}, {5, 50}, {10, 30}, {15, 40}, {20, 48}};
    spline.knots = {0, 0, 0, 0, 0.3, 1, 1, 1, 1};
    c.add(spline);
    c.add(CircleEntity(Vector2{50, 50}, 1.0));
    const Vector2 on = c.entities()[2]->nearestPoint({7, 40});
    EXPECT_EQ(c.run({"REVERSE", "ALL", ""}).back(), "3 objects reversed.");
    expectNear(at<LineEntity>(c, 0).start, {10, 5});
    const auto& turned = at<PolylineEntity>(c, 1);
    expectNear(turned.vertices[0], {10, 30});
    EXPECT_EQ(turned.bulge(1), -0.5);
    EXPECT_EQ(turned.startWidth(0), 3.0);
    expectNear(at<engine::SplineEntity>(c, 2).controlPoints[0], {20, 48});
    EXPECT_NEAR(c.entities()[2]->distanceTo(on), 0.0, 1e-9);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

TEST(Reverse, HelicesAndPolylinesInSpace) {
    Console c;
    c.run({"HELIX", "0,0", "10", "4", "T", "2", "20"});
    const engine::HelixData before = *at<engine::SplineEntity>(c, 0).helix;
    c.add(engine::Polyline3DEntity({{0, 0, 0}, {50, 0, 5}, {50, 50, 9}}));
    c.run({"PEDIT", "50,0", "S", ""});
    c.run({"REVERSE", "ALL", ""});
    const auto& spline = at<engine::SplineEntity>(c, 0);
    ASSERT_TRUE(spline.helix);
    EXPECT_TRUE(spline.helix->start.near_equal({4, 0, 20}, 1e-9));
    EXPECT_TRUE(spline.helix->axisBase.near_equal({0, 0, 20}, 1e-9));
    EXPECT_EQ(spline.helix->axis.z, -1.0);
    EXPECT_NEAR(spline.helix->topRadius, 10.0, 1e-9);
    // A right-handed screw stays one.
    EXPECT_EQ(spline.helix->ccw, before.ccw);
    EXPECT_EQ(spline.controlZ.front(), 20.0);
    const auto& polyline = at<engine::Polyline3DEntity>(c, 1);
    EXPECT_EQ(polyline.frame.front(), math::Vector3(50, 50, 9));
    EXPECT_EQ(polyline.vertices.back(), math::Vector3(0, 0, 0));
    c.run({"REVERSE", "ALL", ""});
    EXPECT_TRUE(at<engine::SplineEntity>(c, 0).helix->start.near_equal(before.start, 1e-9));
    EXPECT_NEAR(at<engine::SplineEntity>(c, 0).helix->topRadius, before.topRadius, 1e-9);
}

}  // namespace
}  // namespace kova::cmd
