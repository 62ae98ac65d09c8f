#include <gtest/gtest.h>

#include <limits>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "engine/curves/polyline_fit.hpp"
#include "engine/curves/spline_edit.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::SplineEntity;
using math::Vector2;

const std::vector<Vector2> kVertices{{0, 0}, {4, 9}, {9, -5}, {15, 7}, {20, 0}};

SplineEntity byVertices() { return *engine::splineByVertices(kVertices, 3, false); }

SplineEntity byFitPoints() {
    SplineEntity s;
    s.fitPoints = {{0, 0}, {10, 8}, {20, 0}, {30, 8}};
    s.fitThroughPoints();
    return s;
}

TEST(Splinedit, MainOptions) {
    Console c;
    c.add(byVertices());
    c.addLine(100, 100, 110, 100);
    c.run({"SPLINEDIT", "0,0"});
    EXPECT_EQ(c.prompt(),
              "Enter an option [Close/Join/Fit data/Edit vertex/convert to Polyline/Reverse/Undo/eXit] <eXit>:");
    c.feed("C");
    EXPECT_TRUE(at<SplineEntity>(c, 0).closed);
    EXPECT_EQ(c.prompt(),
              "Enter an option [Open/Join/Fit data/Edit vertex/convert to Polyline/Reverse/Undo/eXit] <eXit>:");
    c.run({"O", "R"});
    EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints.front(), Vector2(20, 0));
    c.feed("U");
    EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints, kVertices);
    EXPECT_EQ(c.feed("F").back(), "The spline has no fit data.");
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: SPLINEDIT"});
    EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints, kVertices);
    EXPECT_EQ(c.run({"SPE", "100,100"}).back(), "Object selected is not a spline.");
}

TEST(Splinedit, JoinsAndConverts) {
    Console c;
    c.add(byVertices());
    c.addLine(20, 0, 30, 0);
    c.add(engine::ArcEntity(Vector2{30, 5}, 5.0, 1.5 * math::kPi, 0.5 * math::kPi));
    c.addLine(60, 60, 70, 70);
    c.feed("SPE");
    c.run({"0,0", "J"});
    EXPECT_EQ(c.prompt(), "Select any open curves to join to source:");
    EXPECT_EQ(c.run({"ALL", ""}).back(), "2 objects joined to source");
    ASSERT_EQ(c.count(), 2u);
    for (const Vector2& p : {Vector2{25, 0}, Vector2{35, 5}, Vector2{30, 10}})
        EXPECT_NEAR(at<SplineEntity>(c, 0).distanceTo(p), 0.0, 1e-4);
    c.run({"U", "P"});
    EXPECT_EQ(c.prompt(), "Specify a precision <10>:");
    c.feed("5");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 4u);
    EXPECT_EQ(at<engine::PolylineEntity>(c, 0).vertices.size(), 11u);
    c.run({"UNDO", "DELOBJ 0", "SPE", "0,0", "P", ""});
    EXPECT_EQ(c.count(), 5u);
    at<SplineEntity>(c, 0);
    Console space;
    SplineEntity s = byVertices();
    s.controlZ = {0, 1, 2, 3, 4};
    space.add(s);
    space.run({"SPE", "0,0", "P", "10"});
    EXPECT_EQ(at<engine::Polyline3DEntity>(space, 0).vertices.back().z, 4.0);
    // A polyline that PEDIT made a spline of is one.
    Console fitted;
    engine::PolylineEntity frame(kVertices);
    engine::fitWithSpline(frame, 3, 8);
    frame.layer = engine::Name("A");
    fitted.add(frame);
    fitted.run({"SPE", "0,0", ""});
    EXPECT_EQ(at<SplineEntity>(fitted, 0).controlPoints, kVertices);
    EXPECT_EQ(at<SplineEntity>(fitted, 0).layer, engine::Name("A"));
}

TEST(Splinedit, EditsVertices) {
    Console c;
    c.add(byVertices());
    const SplineEntity before = byVertices();
    c.run({"SPE", "0,0", "E"});
    EXPECT_EQ(c.prompt(), "Enter a vertex editing option [Add/Delete/Elevate order/Move/Weight/eXit] <eXit>:");
    c.run({"A", "10,1", "", "E", "6"});
    {
        const auto& s = at<SplineEntity>(c, 0);
        EXPECT_EQ(s.degree, 5);
        const math::SplineData curve = before.curve();
        for (double u = 0.0; u <= 2.0; u += 0.125)
            EXPECT_NEAR(s.distanceTo(math::splinePoint(curve.view(), u)), 0.0, 1e-9) << u;
    }
    EXPECT_EQ(c.feed("E").size(), 0u);
    EXPECT_EQ(c.feed("3").back(), "Invalid value.");
    c.run({"", "X", "U", "U", "E", "M"});
    EXPECT_EQ(c.prompt(), "Specify new location or [Next/Previous/Select point/eXit] <N>:");
    EXPECT_EQ(c.feed("").back(), "Control vertex 2 at 4,9");
    c.run({"@0,5", "S", "15,7", "16,8", "P"});
    EXPECT_EQ(c.lines.back(), "Control vertex 3 at 9,-5");
    c.run({"X", "W", "N", "S", "9,-5", "2.5", "X"});
    {
        const auto& s = at<SplineEntity>(c, 0);
        EXPECT_EQ(s.controlPoints[1], Vector2(4, 14));
        EXPECT_EQ(s.controlPoints[3], Vector2(16, 8));
        EXPECT_EQ(s.weights, (std::vector<double>{1, 1, 2.5, 1, 1}));
    }
    EXPECT_EQ(c.run({"D", "9,-5", "4,14"}).back(), "The spline needs the points that are left.");
    EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints.size(), 4u);
    c.run({"", "X", ""});
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints, kVertices);
    EXPECT_TRUE(at<SplineEntity>(c, 0).weights.empty());
}

TEST(Splinedit, EditsFitData) {
    Console c;
    c.add(byFitPoints());
    c.run({"SPE", "0,0", "F"});
    EXPECT_EQ(c.prompt(), "Enter a fit data option [Add/Close/Delete/Kink/Move/Purge/Tangents/toLerance/eXit] <eXit>:");
    const auto fit = [&]() -> const std::vector<Vector2>& { return at<SplineEntity>(c, 0).fitPoints; };
    c.run({"A", "10,8", "15,2", "17,1", "", "0,0", "B", "-5,3", "", ""});
    EXPECT_EQ(fit(), (std::vector<Vector2>{{-5, 3}, {0, 0}, {10, 8}, {15, 2}, {17, 1}, {20, 0}, {30, 8}}));
    for (const Vector2& p : fit()) EXPECT_NEAR(at<SplineEntity>(c, 0).distanceTo(p), 0.0, 1e-9);
    c.run({"D", "16,1.5", "17,1", "", "M", "N", "0,-4", "X"});
    EXPECT_EQ(fit(), (std::vector<Vector2>{{-5, 3}, {0, -4}, {10, 8}, {20, 0}, {30, 8}}));
    c.run({"T", "90", "S"});
    EXPECT_NEAR(std::abs(at<SplineEntity>(c, 0).endTangents().first.normalized().y), 1.0, 1e-9);
    EXPECT_EQ(at<SplineEntity>(c, 0).endTangents().second, Vector2());
    c.run({"L", "3"});
    for (const Vector2& p : fit()) EXPECT_LE(at<SplineEntity>(c, 0).distanceTo(p), 3.0);
    c.run({"L", "0", "K", "15,4", "", "C"});
    EXPECT_TRUE(at<SplineEntity>(c, 0).closed);
    EXPECT_EQ(fit().size(), 6u);
    EXPECT_EQ(c.run({"T"}).back(), "A closed spline has no end tangents.");
    c.run({"O", "P", ""});
    EXPECT_TRUE(fit().empty());
    EXPECT_FALSE(at<SplineEntity>(c, 0).closed);
    EXPECT_TRUE(c.idle());
    c.feed("UNDO");
    EXPECT_EQ(fit(), byFitPoints().fitPoints);
}

TEST(Splinedit, SurvivesOddSplines) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<SplineEntity> odd(8);
    odd[1].controlPoints = {{1, 1}};
    odd[2].controlPoints = {{1, 1}, {1, 1}, {1, 1}, {1, 1}};
    odd[3].controlPoints = {{0, 0}, {nan, 1}, {2, 2}, {3, 3}};
    odd[4].fitPoints = {{5, 5}, {5, 5}};
    odd[5].fitPoints = {{0, 0}, {1e300, 1e300}, {-1e300, 1e300}};
    odd[6].controlPoints = kVertices;
    odd[6].knots = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    odd[7].controlPoints = kVertices;
    odd[7].degree = 1000000;
    odd[7].weights = {0, -1, nan, 1, 1};
    for (std::size_t i = 0; i < odd.size(); ++i)
        for (const bool closed : {false, true}) {
            SCOPED_TRACE(i);
            Console c;
            odd[i].closed = closed;
            c.add(odd[i]);
            for (const char* option : {"C", "O", "R", "F", "E", "P"}) {
                c.run({"SPLINEDIT", "L", option});
                for (const char* inner : {"A", "D", "M", "W", "K", "T", "L"})
                    c.run({inner, "1,1", "2,2", "1e300,0", "X", "X", "", ""});
                c.processor.cancel();
                while (!c.idle()) c.processor.cancel();
            }
            while (c.document.history().undoCount() > 0) c.feed("UNDO");
            ASSERT_EQ(c.count(), 1u);
            EXPECT_EQ(at<SplineEntity>(c, 0).controlPoints.size(), odd[i].controlPoints.size());
        }
}

}  // namespace
}  // namespace kova::cmd
