#include <gtest/gtest.h>

#include "cmd/edit_harness.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/region.hpp"
#include "engine/entities/spline.hpp"

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::LineEntity;
using engine::PolylineEntity;
using math::Vector2;
using math::Vector3;

// OVERKILL -----------------------------------------------------------------------------------------------

TEST(OverkillOptions, PromptsToTheLetter) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"OVERKILL", "ALL", ""});
    EXPECT_EQ(c.prompt(),
              "Enter an option to change [Done/Ignore/tOlerance/optimize Plines/combine parTial overlap/combine "
              "Endtoend/Associativity] <Done>:");
    c.feed("I");
    EXPECT_EQ(c.prompt(),
              "Enter object properties to ignore "
              "[None/All/Color/LAyer/Ltype/ltScale/LWeight/Thickness/TRansparency/plotSTyle/Material] <None>:");
    c.run({"M", "P"});
    EXPECT_EQ(c.prompt(), "Optimize segments within plines [segment wiDth/Break polyline/Yes/No] <Yes>:");
    c.run({"D", "Y", "B", "N", "N", "T", "N", "E", "", "A", "N", "O"});
    EXPECT_EQ(c.prompt(), "Specify tolerance for numeric comparisons <0.000001>:");
    const Lines told = c.run({"0.5", "D"});
    EXPECT_EQ(told.at(told.size() - 2), "0 duplicate(s) deleted.");
    EXPECT_EQ(told.back(), "0 overlapping object(s) or segment(s) deleted.");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 0u);
}

TEST(OverkillOptions, LinesAndSegmentsOnPolylines) {
    const PolylineEntity left({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true);
    const PolylineEntity right({{10, 0}, {20, 0}, {20, 10}, {10, 10}}, true);
    Console c;
    c.addLine(10, 2, 10, 7);  // on the common side
    c.addLine(5, 0, 5, 10);
    c.add(left);
    c.add(right);
    EXPECT_EQ(c.run({"OVERKILL", "ALL", "", ""}).back(), "2 overlapping object(s) or segment(s) deleted.");
    ASSERT_EQ(c.count(), 3u);
    EXPECT_TRUE(at<PolylineEntity>(c, 1).closed);
    const auto& open = at<PolylineEntity>(c, 2);
    EXPECT_FALSE(open.closed);
    EXPECT_EQ(open.vertices, (std::vector<Vector2>{{10, 0}, {20, 0}, {20, 10}, {10, 10}}));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: OVERKILL"});
    ASSERT_EQ(c.count(), 4u);
    // Polylines stay whole where that is asked for; lines on them go all the same.
    c.run({"OVERKILL", "ALL", "", "P", "B", "N", "", ""});
    ASSERT_EQ(c.count(), 3u);
    EXPECT_TRUE(at<PolylineEntity>(c, 2).closed);
    c.run({"UNDO", "OVERKILL", "ALL", "", "P", "N", ""});
    EXPECT_EQ(c.count(), 4u);
    // In the middle of an open one two parts are left.
    Console two;
    two.add(PolylineEntity({{0, 0}, {4, 0}}));
    two.add(PolylineEntity({{1, 5}, {1, 0}, {3, 0}, {3, 5}}));
    two.run({"OVERKILL", "ALL", "", ""});
    ASSERT_EQ(two.count(), 3u);
    EXPECT_EQ(at<PolylineEntity>(two, 1).vertices, (std::vector<Vector2>{{1, 5}, {1, 0}}));
    EXPECT_EQ(at<PolylineEntity>(two, 2).vertices, (std::vector<Vector2>{{3, 0}, {3, 5}}));
}

TEST(OverkillOptions, WidthsAndAssociativity) {
    Console c;
    PolylineEntity wide({{0, 0}, {5, 0}, {10, 0}});
    wide.setWidths(0, 0, 1);
    wide.setWidths(1, 1, 2);
    c.add(wide);
    c.run({"OVERKILL", "ALL", "", ""});
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 3u);
    c.run({"OVERKILL", "ALL", "", "P", "D", "Y", "", ""});
    EXPECT_EQ(at<PolylineEntity>(c, 0).vertices.size(), 2u);

    for (const bool keep : {true, false}) {
        Console d;
        d.addLine(0, 0, 10, 0);
        d.run({"LINE", "0,0", "10,0", ""});
        const std::uint64_t second = d.entities()[1]->handle();
        auto dimension = std::make_unique<engine::DimensionEntity>();
        dimension->def2 = Vector2{0, 0};
        dimension->def3 = Vector2{10, 0};
        engine::setDimensionLinks(*dimension, {{2, engine::LinkKind::End, second, 0, 0.0}});
        d.drawing().modelSpace().append(std::move(dimension));
        d.run({"OVERKILL", "ALL", ""});
        if (!keep) d.run({"A", "N"});
        d.feed("");
        ASSERT_EQ(d.count(), 2u);
        EXPECT_EQ(d.entities()[0]->handle() == second, keep);
    }
}

// FLATTEN, CONVERTPOLY -----------------------------------------------------------------------------------

TEST(Flatten, HeightsAndThicknessesGo) {
    Console c;
    c.add(LineEntity(Vector3{0, 0, 5}, Vector3{10, 0, 9}));
    c.add(LineEntity(Vector3{3, 4, 0}, Vector3{3, 4, 9}));  // on edge
    c.add(engine::Polyline3DEntity({{0, 0, 1}, {5, 5, 2}, {9, 5, 3}}, true));
    CircleEntity high(Vector2{1, 1}, 2.0);
    high.elevation = 7.0;
    high.setThickness(3.0);
    c.add(high);
    CircleEntity mirrored = high;
    mirrored.setNormal(Vector3{0, 0, -1});
    c.add(mirrored);
    CircleEntity tilted(Vector2{0, 0}, 4.0);
    tilted.setNormal(Vector3{0, -1, 1} / std::sqrt(2.0));
    c.add(tilted);
    engine::SplineEntity spline;
    spline.controlPoints = {{0, 0}, {1, 3}, {4, 3}, {5, 0}};
    spline.controlZ = {0, 1, 2, 3};
    c.add(spline);
    c.addLine(0, 0, 1, 1);
    EXPECT_EQ(c.run({"FLATTEN"}).back(), "7 objects flattened.");
    EXPECT_EQ(at<LineEntity>(c, 0).end3(), Vector3(10, 0, 0));
    EXPECT_EQ(at<engine::PointEntity>(c, 1).position, Vector2(3, 4));
    EXPECT_TRUE(at<PolylineEntity>(c, 2).closed);
    EXPECT_EQ(at<CircleEntity>(c, 3).thickness(), 0.0);
    const auto& ellipse = at<engine::EllipseEntity>(c, 5);
    EXPECT_NEAR(ellipse.major.length(), 4.0, 1e-9);
    EXPECT_NEAR(ellipse.minorRatio, std::sqrt(0.5), 1e-9);
    EXPECT_TRUE(at<engine::SplineEntity>(c, 6).controlZ.empty());
    for (const engine::Entity* e : c.entities()) EXPECT_EQ(e->elevation, 0.0);
    EXPECT_EQ(c.feed("FLATTEN"), Lines{"0 objects flattened."});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: FLATTEN"});
    c.run({"SELECT", "0,0", "", "FLATTEN"});  // only what is selected
    EXPECT_EQ(at<CircleEntity>(c, 3).elevation, 7.0);
}

TEST(ConvertPoly, OldPolylinesBecomeLight) {
    Console c;
    PolylineEntity old({{0, 0}, {5, 0}, {5, 5}});
    engine::PolylineRecord record;
    record.vertex = 1;
    record.flags = engine::PolylineRecord::kTangent;
    old.records = {record};
    c.add(old);
    old.fit = old.vertices;  // fitted: stays
    c.add(old);
    c.add(PolylineEntity({{0, 0}, {5, 0}}));
    EXPECT_EQ(c.feed("CONVERTPOLY"), Lines{"1 polyline converted."});
    EXPECT_TRUE(at<PolylineEntity>(c, 0).records.empty());
    EXPECT_EQ(at<PolylineEntity>(c, 1).records.size(), 1u);
}

// REGION -------------------------------------------------------------------------------------------------

TEST(RegionLoops, EndToEndOnlyAndAtOneHeight) {
    Console c;
    for (const auto& [x0, y0, x1, y1] : {std::array{0, 2, 9, 2}, {0, 7, 9, 7}, {2, 0, 2, 9}, {7, 0, 7, 9}})
        c.addLine(x0, y0, x1, y1);                                        // they cross, but share no ends
    c.add(PolylineEntity({{20, 0}, {30, 10}, {30, 0}, {20, 10}}, true));  // a bow tie
    const Lines told = c.run({"REGION", "ALL", ""});
    EXPECT_EQ(told, (Lines{"1 loop rejected.", "0 loops extracted.", "0 Regions created."}));
    EXPECT_EQ(c.count(), 5u);
    Console high;
    for (const double z : {0.0, 4.0}) {
        high.addLine(0, 0, 5, 0).elevation = z;
        high.addLine(5, 0, 5, 5).elevation = z;
        high.addLine(5, 5, 0, 0).elevation = z;
    }
    EXPECT_EQ(high.run({"REGION", "ALL", ""}).back(), "2 Regions created.");
    EXPECT_EQ(at<engine::RegionEntity>(high, 1).elevation, 4.0);
    EXPECT_NEAR(at<engine::RegionEntity>(high, 0).area(), 12.5, 1e-9);
}

TEST(RegionLoops, ManyLinesThatAllCrossEachOther) {
    Console c;
    constexpr int kCount = 50000;
    for (int i = 0; i < kCount; ++i) c.addLine(0, i, 1000, kCount - i);
    EXPECT_EQ(c.run({"REGION", "ALL", ""}).back(), "0 Regions created.");
    EXPECT_EQ(c.count(), static_cast<std::size_t>(kCount));
}

}  // namespace
}  // namespace kova::cmd
