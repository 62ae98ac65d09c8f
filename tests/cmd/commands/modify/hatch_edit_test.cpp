#include <fstream>

#include "cmd/draw_harness.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd {
namespace {

using engine::HatchEntity;
using math::Vector2;

/// The first one. An undo may put another object in its place.
HatchEntity& theHatch(Console& c) {
    for (engine::Entity* e : c.entities())
        if (auto* hatch = dynamic_cast<HatchEntity*>(e)) return *hatch;
    throw std::runtime_error("no hatch");
}

/// A square of side 10, a circle in it, another square beside it; the first is hatched with the circle left free.
void hatchedSquare(Console& c) {
    c.run({"RECTANGLE", "0,0", "10,10", "CIRCLE", "5,5", "2", "RECTANGLE", "20,0", "30,10", "HATCH", "P", "ANSI31", "1",
           "0", "1,1", ""});
}

TEST(HatchEdit, PatternStyleAndProperties) {
    DrawConsole c;
    hatchedSquare(c);
    ASSERT_EQ(theHatch(c).loops.size(), 2u);
    c.run({"HATCHEDIT", "1,1", "", "ANSI37", "2", "30"});
    EXPECT_EQ(theHatch(c).patternName, "ANSI37");
    EXPECT_DOUBLE_EQ(theHatch(c).patternScale, 2);
    EXPECT_EQ(c.lastStep(), "HATCHEDIT");
    c.run({"HE", "1,1", "P", "U", "45", "3", "Y"});
    EXPECT_EQ(theHatch(c).patternType, HatchEntity::kUserDefined);
    EXPECT_DOUBLE_EQ(theHatch(c).patternScale, 3);
    EXPECT_TRUE(theHatch(c).doubled);
    c.run({"HE", "1,1", "P", "SOLID", "HE", "1,1", "S", "I", "HE", "1,1", "CO", "1", "HE", "1,1", "T", "40"});
    EXPECT_TRUE(theHatch(c).isSolid());
    EXPECT_EQ(theHatch(c).islandStyle, HatchEntity::kIgnore);
    EXPECT_EQ(theHatch(c).color, engine::Color::index(1));
    EXPECT_EQ(theHatch(c).transparency, 40);
    EXPECT_EQ(c.run({"HE", "1,1", "LA", "none such"}).back(), "Unknown layer \"none such\".");
    c.feed("");
    c.run({"HE", "1,1", "O", "D", "C"});
    expectNear(theHatch(c).patternOrigin, {5, 5});
    c.run({"HE", "1,1", "O", "S", "2,3"});
    expectNear(theHatch(c).patternOrigin, {2, 3});
    c.feed("U");
    expectNear(theHatch(c).patternOrigin, {5, 5});
    // The defaults of new hatches are none of its business.
    EXPECT_EQ(engine::sysVarString(c.drawing(), "HPNAME"), "ANSI31");
}

TEST(HatchEdit, BoundariesComeAndGo) {
    DrawConsole c;
    hatchedSquare(c);
    EXPECT_EQ(c.run({"HE", "1,1", "AD", "1,2"}).back(), "That area is chosen already.");
    c.run({"25,5", ""});
    ASSERT_EQ(theHatch(c).loops.size(), 3u);
    EXPECT_NEAR(theHatch(c).area(), 200 - 3.14159265 * 4, 1e-3);
    const std::size_t before = c.count();
    c.run({"HE", "1,1", "B", "", ""});
    EXPECT_EQ(c.count(), before + 3);
    c.feed("U");
    c.run({"HE", "1,1", "H"});
    ASSERT_EQ(c.count(), before + 1);
    EXPECT_EQ(theHatch(c).loops.size(), 2u);  // the island stays with the square around it
    c.feed("U");
    EXPECT_EQ(c.count(), before);
    c.run({"HE", "1,1", "R", "7,5", ""});
    EXPECT_EQ(theHatch(c).loops.size(), 2u);
    EXPECT_NEAR(theHatch(c).area(), 200, 1e-6);
    c.run({"HE", "1,1", "DR", "F"});
    EXPECT_EQ(c.entities().back(), &theHatch(c));
    c.run({"HE", "1,1", "DR", "B"});
    EXPECT_EQ(c.entities().front(), &theHatch(c));
}

TEST(HatchPattern, NamesFilesAndRefusals) {
    DrawConsole c;
    EXPECT_EQ(c.run({"HATCHPATTERN", "nothing"}).back(), "Unknown pattern \"nothing\".");
    EXPECT_EQ(c.run({"?", ""}).front(), "SOLID - Solid fill");
    EXPECT_EQ(c.run({"X,/no/such/file.pat"}).back(), "Cannot read \"/no/such/file.pat\".");
    const std::string path = testing::TempDir() + "kova_own.pat";
    std::ofstream(path) << ";own\n*OWNPAT, Lines of our own\n45, 0,0, 0,3\n";
    c.run({"ownpat," + path});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(engine::sysVarString(c.drawing(), "HPNAME"), "OWNPAT");
    EXPECT_TRUE(c.drawing().hatchPatterns.contains("OWNPAT"));
    c.feed("U");
    EXPECT_FALSE(c.drawing().hatchPatterns.contains("OWNPAT"));
}

}  // namespace
}  // namespace kova::cmd
