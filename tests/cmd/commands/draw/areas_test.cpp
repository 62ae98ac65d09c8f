#include <cmath>

#include "cmd/draw_harness.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/region.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/xline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::HatchEntity;
using engine::PolylineEntity;
using engine::RegionEntity;
using math::kPi;
using math::Vector2;

/// A box with a disc and a smaller disc in that.
void drawPlate(DrawConsole& c) { c.run({"REC", "0,0", "100,50", "CIRCLE", "30,25", "10", "CIRCLE", "30,25", "4"}); }

HatchEntity& hatchOf(DrawConsole& c) {
    for (engine::Entity* e : c.entities())
        if (auto* hatch = dynamic_cast<HatchEntity*>(e)) return *hatch;
    ADD_FAILURE() << "no hatch";
    return c.add(HatchEntity());
}

TEST(Hatch, PickedPointWithIslandStyles) {
    const double plate = 5000.0;
    const struct {
        const char* style;
        std::size_t loops;
        double area;
    } cases[] = {{"N", 3, plate - 84 * kPi}, {"O", 2, plate - 100 * kPi}, {"I", 1, plate}};
    for (const auto& item : cases) {
        SCOPED_TRACE(item.style);
        DrawConsole c;
        drawPlate(c);
        c.run({"-HATCH", "A", "S", item.style, "", "80,25", ""});
        EXPECT_TRUE(c.idle());
        EXPECT_EQ(c.count(), 4u);
        EXPECT_EQ(c.lastStep(), "HATCH");
        const auto& hatch = hatchOf(c);
        EXPECT_EQ(hatch.loops.size(), item.loops);
        EXPECT_NEAR(hatch.area(), item.area, 0.1);
        EXPECT_EQ(hatch.patternName, "ANSI31");
        ASSERT_EQ(hatch.seedPoints.size(), 1u);
        // Behind its boundary.
        EXPECT_EQ(c.entities().front(), &hatch);
        c.feed("U");
        EXPECT_EQ(c.count(), 3u);
    }
}

TEST(Hatch, AnAreaPickedTwiceCountsOnce) {
    DrawConsole c;
    c.run({"RECTANGLE", "0,0", "10,10", "CIRCLE", "5,5", "2"});
    EXPECT_EQ(c.run({"HATCH", "1,1", "9,9"}), Lines{"That area is chosen already."});
    c.run({"5,5", ""});
    EXPECT_EQ(hatchOf(c).loops.size(), 3u);
}

TEST(Hatch, PatternScaleAngleStay) {
    DrawConsole c;
    drawPlate(c);
    c.run({"HATCH", "P", "ANSI37", "2", "30", "80,25", ""});
    c.run({"HATCH", "30,25", ""});
    int hatches = 0;
    for (engine::Entity* e : c.entities())
        if (const auto* hatch = dynamic_cast<HatchEntity*>(e)) {
            ++hatches;
            EXPECT_EQ(hatch->patternName, "ANSI37");
            EXPECT_DOUBLE_EQ(hatch->patternScale, 2);
            EXPECT_NEAR(hatch->patternAngle, kPi / 6, 1e-12);
        }
    EXPECT_EQ(hatches, 2);
    EXPECT_EQ(c.run({"HATCH", "P", "nonsense"}), Lines{"Unknown pattern \"nonsense\"."});
}

TEST(Hatch, SolidUserGradientAndOrigin) {
    DrawConsole c;
    drawPlate(c);
    c.run({"HATCH", "P", "S", "80,25", ""});
    EXPECT_TRUE(hatchOf(c).isSolid());
    c.run({"U", "HATCH", "P", "U", "45", "3", "Y", "O", "7,8", "80,25", ""});
    auto& user = hatchOf(c);
    EXPECT_EQ(user.patternType, HatchEntity::kUserDefined);
    EXPECT_DOUBLE_EQ(user.patternScale, 3);
    EXPECT_TRUE(user.doubled);
    expectNear(user.patternOrigin, {7, 8});
    EXPECT_EQ(user.families().size(), 2u);
    c.run({"U", "GRADIENT", "CYLINDER", "1", "3", "90", "80,25", ""});
    const auto& gradient = hatchOf(c);
    ASSERT_TRUE(gradient.gradient);
    EXPECT_EQ(gradient.gradient->name, "CYLINDER");
    EXPECT_NEAR(gradient.gradient->angle, kPi / 2, 1e-12);
    EXPECT_FALSE(gradient.gradient->singleColor);
}

TEST(Hatch, SelectedObjectsClosedAndOpen) {
    DrawConsole c;
    // Four lines that make a box, an ellipse in it, and an open line that encloses nothing.
    c.run({"LINE", "0,0", "10,0", "10,10", "0,10", "C", "ELLIPSE", "C", "5,5", "@2,0", "1", "LINE", "20,0", "30,0", ""});
    c.run({"HATCH", "S", "ALL", "", ""});
    const auto& hatch = hatchOf(c);
    EXPECT_EQ(hatch.loops.size(), 2u);
    EXPECT_NEAR(hatch.area(), 100 - 2 * kPi, 0.05);
    // The old way: the pattern's name at the first prompt.
    c.run({"U", "-HATCH", "ANSI32,I", "1.5", "0", "ALL", ""});
    EXPECT_EQ(hatchOf(c).patternName, "ANSI32");
    EXPECT_EQ(hatchOf(c).islandStyle, HatchEntity::kIgnore);
    EXPECT_TRUE(c.idle());
}

TEST(Hatch, CurvesOfAnyKindBound) {
    DrawConsole c;
    c.run({"ELLIPSE", "C", "0,0", "10,0", "4", "XLINE", "0,0", "0,1", ""});
    c.run({"HATCH", "5,0", ""});
    EXPECT_NEAR(hatchOf(c).area(), 20 * kPi, 0.05);
    EXPECT_LT(hatchOf(c).loops[0].vertices.size(), 200u);
}

TEST(Hatch, TextsAreLeftFree) {
    DrawConsole c;
    c.run({"REC", "0,0", "100,50", "TEXT", "20,20", "5", "0", "Plate", ""});
    c.run({"HATCH", "80,40", ""});
    const auto& hatch = hatchOf(c);
    ASSERT_EQ(hatch.loops.size(), 2u);
    EXPECT_NE(hatch.loops[1].type & engine::HatchLoop::kTextBox, 0);
    EXPECT_LT(hatch.area(), 4950.0);
}

TEST(Hatch, GapsRefusalsAndUndo) {
    DrawConsole c;
    c.run({"LINE", "0,0", "10,0", "10,10", "0,10", "0,1", ""});
    EXPECT_EQ(c.run({"HATCH", "5,5"}), Lines{"Valid hatch boundary not found."});
    c.run({"A", "G", "2", "", "5,5", ""});
    EXPECT_NEAR(hatchOf(c).area(), 100, 1e-6);
    EXPECT_EQ(c.run({"HATCH", "zzz"}), Lines{"Invalid point or option keyword."});
    EXPECT_EQ(c.run({"5,5", "U", ""}), Lines{});
    EXPECT_EQ(c.count(), 5u);  // nothing chosen: nothing made
    // Invisible layers bound nothing.
    c.run({"-LAYER", "OFF", "0", "Y", "", "HPGAPTOL 0"});
    EXPECT_EQ(c.run({"HATCH", "5,5"}).back(), "Valid hatch boundary not found.");
}

TEST(Hatch, DrawnOutlineAndSeparateHatches) {
    DrawConsole c;
    c.run({"HATCH", "A",    "H",    "Y", "",      "W", "Y",     "0,0", "10,0", "10,10",
           "C",     "20,0", "30,0", "A", "30,10", "L", "20,10", "C",   "",     ""});
    int hatches = 0;
    int outlines = 0;
    double total = 0.0;
    for (engine::Entity* e : c.entities()) {
        if (const auto* hatch = dynamic_cast<HatchEntity*>(e)) {
            ++hatches;
            total += hatch->area();
        }
        outlines += dynamic_cast<PolylineEntity*>(e) != nullptr ? 1 : 0;
    }
    EXPECT_EQ(hatches, 2);
    EXPECT_EQ(outlines, 2);
    EXPECT_NEAR(total, 50 + 100 + 12.5 * kPi, 0.05);
}

TEST(Boundary, PolylinesAndRegions) {
    DrawConsole c;
    c.run({"CIRCLE", "0,0", "5", "CIRCLE", "6,0", "5"});
    EXPECT_EQ(c.run({"BOUNDARY", "3,0", "100,100", "-3,0", ""}),
              (Lines{"Valid boundary not found.", "BOUNDARY created 2 polylines."}));
    auto all = c.entities();
    ASSERT_EQ(all.size(), 4u);
    const double half = std::acos(0.6);
    const double lens = 25.0 * (2.0 * half - std::sin(2.0 * half));
    EXPECT_NEAR(static_cast<PolylineEntity*>(all[2])->area(), lens, 1e-9);
    EXPECT_NEAR(static_cast<PolylineEntity*>(all[3])->area(), 25 * kPi - lens, 1e-9);
    EXPECT_EQ(c.lastStep(), "BOUNDARY");
    c.run({"U", "BO", "A", "O", "R", "", "3,0", ""});
    EXPECT_NEAR(c.last<RegionEntity>().area(), lens, 1e-9);
}

TEST(Region, FromClosedAndChainedObjects) {
    DrawConsole c;
    c.run({"LINE", "0,0", "10,0", "10,10", "C", "CIRCLE", "50,0", "5", "LINE", "80,0", "90,0", ""});
    EXPECT_EQ(c.run({"REGION", "ALL", ""}), (Lines{"2 loops extracted.", "2 Regions created."}));
    EXPECT_EQ(c.count(), 3u);  // two regions, and the line that encloses nothing
    double total = 0.0;
    for (engine::Entity* e : c.entities())
        if (const auto* region = dynamic_cast<RegionEntity*>(e)) total += region->area();
    EXPECT_NEAR(total, 50 + 25 * kPi, 1e-9);
}

}  // namespace
}  // namespace kova::cmd
