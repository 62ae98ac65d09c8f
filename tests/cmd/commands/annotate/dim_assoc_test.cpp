// Dimensions that follow what they measure.
#include "cmd/draw_harness.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::DimensionEntity;
using engine::dimensionLinks;
using math::Vector2;

DimensionEntity& dimensionAt(DrawConsole& c, std::size_t i) {
    const auto all = c.entities();
    EXPECT_LT(i, all.size());
    return dynamic_cast<DimensionEntity&>(*all.at(i));
}

TEST(DimAssoc, FollowsWithinTheSameStep) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.run({"DLI", "0,0", "40,0", "20,10"});
    c.run({"SCALE", "40,0", "", "0,0", "2"});
    auto& d = dimensionAt(c, 1);
    EXPECT_NEAR(d.measurement(), 80, 1e-9);
    EXPECT_DOUBLE_EQ(d.dimLine.y, 10);
    EXPECT_EQ(c.lastStep(), "SCALE");
    c.feed("U");
    EXPECT_NEAR(dimensionAt(c, 1).measurement(), 40, 1e-9);
    c.feed("REDO");
    EXPECT_NEAR(dimensionAt(c, 1).measurement(), 80, 1e-9);
    // Moved as a whole the dimension keeps its distance, and so does a text that was put by hand.
    c.run({"DIMTEDIT", "40,10", "70,10"});
    const double height = dimensionAt(c, 1).dimLine.y;
    c.run({"MOVE", "40,0", "", "0,0", "5,5"});
    EXPECT_NEAR(dimensionAt(c, 1).measurement(), 80, 1e-9);
    EXPECT_NEAR(dimensionAt(c, 1).dimLine.y, height + 5, 1e-9);
    expectNear(dimensionAt(c, 1).userText, {75, 15}, 1e-9);
}

TEST(DimAssoc, MovedAloneItStaysOnItsPoints) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.run({"DLI", "0,0", "40,0", "20,10", "MOVE", "20,10", "", "0,0", "0,5"});
    const auto& d = dimensionAt(c, 1);
    expectNear(d.def1, {0, 0});
    EXPECT_NEAR(d.measurement(), 40, 1e-12);
}

TEST(DimAssoc, CirclesAndArcs) {
    DrawConsole c;
    auto& circle = c.add(engine::CircleEntity(Vector2{0, 0}, 10));
    c.run({"DRA", "10,0", "20,0", "DDI", "0,10", "0,-20", "DLI", "", "-10,0", "0,30"});
    c.add(engine::ArcEntity(Vector2{100, 0}, 10, 0, math::kPi / 2));
    c.run({"DAR", "110,0", "115,15"});
    c.document.modifyEntity(circle, [](engine::Entity& e) {
        static_cast<engine::CircleEntity&>(e).radius = 15;
        static_cast<engine::CircleEntity&>(e).center = {3, 0};
    });
    expectNear(dimensionAt(c, 1).def1, {3, 0});
    expectNear(dimensionAt(c, 1).def2, {18, 0});
    EXPECT_NEAR(dimensionAt(c, 2).measurement(), 30, 1e-9);
    EXPECT_NEAR(dimensionAt(c, 3).measurement(), 30, 1e-9);
    c.run({"ROTATE", "110,0", "", "100,0", "90"});
    expectNear(dimensionAt(c, 5).def1, {100, 10}, 1e-9);
    EXPECT_NEAR(dimensionAt(c, 5).measurement(), 5 * math::kPi, 1e-9);
}

TEST(DimAssoc, CopiesAreTiedToCopies) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.run({"DLI", "0,0", "40,0", "20,10"});
    c.run({"COPY", "ALL", "", "0,0", "0,100", ""});
    ASSERT_EQ(c.count(), 4u);
    const std::uint64_t copiedLine = c.entities()[2]->handle();
    for (const auto& link : dimensionLinks(dimensionAt(c, 3))) EXPECT_EQ(link.handle, copiedLine);
    expectNear(dimensionAt(c, 3).def1, {0, 100});
    c.run({"SCALE", "20,0", "", "0,0", "2"});
    EXPECT_NEAR(dimensionAt(c, 3).measurement(), 40, 1e-9);  // the original's change is not the copy's
    // Copied alone it is tied to nothing and stays where it was put.
    c.run({"COPY", "20,110", "", "0,0", "0,100", ""});
    EXPECT_TRUE(dimensionLinks(dimensionAt(c, 4)).empty());
    expectNear(dimensionAt(c, 4).def1, {0, 200});
    // Mirror images are tied to images.
    c.run({"MIRROR", "W", "-5,95", "45,115", "", "100,0", "100,1", "N"});
    ASSERT_EQ(c.count(), 7u);
    EXPECT_EQ(dimensionLinks(dimensionAt(c, 6)).size(), 2u);
}

TEST(DimAssoc, ErasedAndBroughtBack) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.run({"DLI", "0,0", "40,0", "20,10", "ERASE", "20,0", ""});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_NEAR(dimensionAt(c, 0).measurement(), 40, 1e-12);
    c.run({"OOPS", "MOVE", "20,0", "", "0,0", "7,0"});
    EXPECT_NEAR(dimensionAt(c, 0).def1.x, 7, 1e-9);
}

TEST(DimAssoc, TurnedOffAndUntied) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.run({"DIMASSOC", "1", "DLI", "0,0", "40,0", "20,10"});
    EXPECT_TRUE(dimensionLinks(dimensionAt(c, 1)).empty());
    c.run({"DRE", "20,10", "", "S", "20,0"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(dimensionLinks(dimensionAt(c, 1)).size(), 2u);
    c.run({"MOVE", "20,0", "", "0,0", "0,-5"});
    EXPECT_NEAR(dimensionAt(c, 1).def1.y, -5, 1e-9);
    EXPECT_EQ(c.run({"DDA", "ALL", ""}).back(), "1 disassociated.");
    c.run({"MOVE", "20,-5", "", "0,0", "0,-5"});
    EXPECT_NEAR(dimensionAt(c, 1).def1.y, -5, 1e-9);
    // By points: a point where nothing is stays untied.
    c.run({"DRE", "20,5", "", "0,-10", "33,33"});
    EXPECT_EQ(dimensionLinks(dimensionAt(c, 1)).size(), 1u);
}

TEST(DimAssoc, PolylineVerticesAndAngles) {
    DrawConsole c;
    auto& outline = c.add(engine::PolylineEntity({{0, 0}, {50, 0}, {50, 30}}));
    c.run({"DAL", "0,0", "50,30", "10,20", "DAN", "", "50,0", "0,0", "50,30", "40,10"});
    c.document.modifyEntity(outline, [](engine::Entity& e) {
        static_cast<engine::PolylineEntity&>(e).vertices[2] = {50, 120};
    });
    EXPECT_NEAR(dimensionAt(c, 1).measurement(), 130, 1e-9);
    expectNear(dimensionAt(c, 2).def2, {50, 120});
    // A vertex that is gone leaves its dimension where it was.
    c.document.modifyEntity(outline, [](engine::Entity& e) { static_cast<engine::PolylineEntity&>(e).eraseVertex(2); });
    EXPECT_NEAR(dimensionAt(c, 1).measurement(), 130, 1e-9);
}

TEST(DimAssoc, MalformedLinksAreNone) {
    DimensionEntity d;
    engine::setDimensionLinks(d, {{1, engine::LinkKind::End, 0x2A, 1, 0.5}});
    ASSERT_EQ(dimensionLinks(d).size(), 1u);
    EXPECT_EQ(dimensionLinks(d)[0].handle, 0x2Au);
    for (std::size_t i = 0; i < 5; ++i) {
        DimensionEntity broken(d);
        engine::XData data = *broken.xdata();
        data.applications[0].items[i].value = math::Vector3{1, 2, 3};
        broken.setXdata(data);
        EXPECT_TRUE(dimensionLinks(broken).empty()) << i;
    }
    engine::XData data = *d.xdata();
    data.applications[0].items[0].value = std::int64_t{9};
    d.setXdata(data);
    EXPECT_TRUE(dimensionLinks(d).empty());
}

}  // namespace
}  // namespace kova::cmd
