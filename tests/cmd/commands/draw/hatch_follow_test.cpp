// Hatches that follow the objects around them.
#include "cmd/draw_harness.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::HatchEntity;
using math::kPi;
using math::Vector2;

std::vector<HatchEntity*> hatches(Console& c) {
    std::vector<HatchEntity*> found;
    for (engine::Entity* e : c.entities())
        if (auto* hatch = dynamic_cast<HatchEntity*>(e)) found.push_back(hatch);
    return found;
}
HatchEntity& hatch(Console& c, std::size_t i = 0) { return *hatches(c).at(i); }

void expectArea(Console& c, double area, const Vector2& low, const Vector2& high, std::size_t i = 0) {
    EXPECT_NEAR(hatch(c, i).area(), area, 1e-5 * area);
    const math::Bounds2 box = hatch(c, i).bounds();
    expectNear(box.min, low, 1e-6);
    expectNear(box.max, high, 1e-6);
}

/// Lines round the rectangle of 0,0 and 10,6, each its own, with tails at the corners; hatched by a point.
void fourLines(Console& c) {
    c.run({"LINE", "-2,0", "12,0", "", "LINE", "10,-2", "10,8", "", "LINE", "12,6", "-2,6", "", "LINE", "0,8", "0,-2",
           "", "HATCH", "1,1", ""});
    ASSERT_EQ(hatch(c).loops.at(0).sources.size(), 4u);
}

TEST(HatchFollows, PickedAreaWithinTheSameStep) {
    DrawConsole c;
    fourLines(c);
    // Past the ends of the others: nothing is closed any more.
    c.run({"MOVE", "10,7", "", "0,0", "5,0"});
    EXPECT_FALSE(hatch(c).isAssociative());
    expectArea(c, 60, {0, 0}, {10, 6});
    EXPECT_EQ(c.lines.back(), "Hatch boundary associativity removed.");
    EXPECT_EQ(c.lastStep(), "MOVE");
    c.feed("U");
    EXPECT_TRUE(hatch(c).isAssociative());
    c.run({"MOVE", "10,7", "", "0,0", "1,0"});
    expectArea(c, 66, {0, 0}, {11, 6});
    c.run({"MOVE", "-1,6", "", "0,0", "1,0"});  // along itself
    c.run({"STRETCH", "C", "-3,5", "13,7", "", "0,0", "0,1"});
    expectArea(c, 77, {0, 0}, {11, 7});
    c.run({"U", "U", "U"});
    expectArea(c, 60, {0, 0}, {10, 6});
    c.run({"REDO"});
    expectArea(c, 66, {0, 0}, {11, 6});
}

TEST(HatchFollows, AllOfItsObjectsAnywhere) {
    DrawConsole c;
    fourLines(c);
    std::vector<std::uint64_t> ids;
    for (engine::Entity* e : c.entities())
        if (e->type() == engine::EntityType::Line) ids.push_back(e->id());
    const auto all = [&](const math::Matrix4& m) {
        const doc::GroupScope group(c.document, "TEST");
        c.document.transformEntities(ids, m);
    };
    all(math::Matrix4::translation(Vector2{1000, -300}));
    expectArea(c, 60, {1000, -300}, {1010, -294});
    expectNear(hatch(c).seedPoints.at(0), {1001, -299}, 1e-6);
    all(math::Matrix4::rotation_z(kPi / 2.0));
    expectArea(c, 60, {294, 1000}, {300, 1010});
    all(math::Matrix4::scaling(2, 2, 1));
    expectArea(c, 240, {588, 2000}, {600, 2020});
    EXPECT_TRUE(hatch(c).isAssociative());
    c.run({"U", "U"});
    all(math::Matrix4::translation(Vector2{-1000, 300}));
    c.run({"U", "U"});
    expectArea(c, 60, {0, 0}, {10, 6});
}

TEST(HatchFollows, TheRightOneOfSeveralAreas) {
    // Two circles of one size that overlap: the two crescents differ by their place only.
    DrawConsole c;
    c.run({"CIRCLE", "0,0", "5", "CIRCLE", "6,0", "5", "HATCH", "-4,0", ""});
    const double area = hatch(c).area();
    std::vector<std::uint64_t> ids{c.entities().at(0)->id(), c.entities().at(1)->id()};
    if (c.entities().at(0)->type() == engine::EntityType::Hatch) ids = {c.entities()[1]->id(), c.entities()[2]->id()};
    c.document.transformEntities(ids, math::Matrix4::translation(Vector2{3, 1}));
    EXPECT_NEAR(hatch(c).area(), area, 1e-6);
    EXPECT_NEAR(hatch(c).bounds().min.x, -2, 1e-6);
    c.feed("U");
    // One of them farther in: the crescent shrinks.
    c.run({"MOVE", "11,0", "", "0,0", "-1,0"});
    EXPECT_LT(hatch(c).area(), area - 1);
    EXPECT_NEAR(hatch(c).bounds().min.x, -5, 1e-6);
    c.feed("U");
    // Stretched with its circles away from where it was picked.
    c.run({"STRETCH", "C", "-10,-10", "20,10", "", "0,0", "30,0"});
    c.document.transformEntities(ids, math::Matrix4::translation(Vector2{3, 1}));
    EXPECT_NEAR(hatch(c).area(), area, 1e-6);
    EXPECT_NEAR(hatch(c).bounds().min.x, 28, 1e-6);
}

TEST(HatchFollows, SelectedObjectsIslandsAndTexts) {
    DrawConsole c;
    c.run({"RECTANGLE", "0,0",  "20,20", "CIRCLE", "5,5",  "2", "ELLIPSE", "C", "15,15", "18,15", "1",
           "TEXT",      "12,4", "1",     "0",      "Room", "",  "HATCH",   "S", "ALL",   "",      ""});
    ASSERT_EQ(hatch(c).loops.size(), 4u);
    const double full = hatch(c).area();
    c.run({"SCALE", "7,5", "", "5,5", "0.5"});
    EXPECT_NEAR(hatch(c).area(), full + kPi * 3, 1e-3);
    c.run({"ROTATE", "18,15", "", "15,15", "90"});
    EXPECT_NEAR(hatch(c).area(), full + kPi * 3, 1e-3);
    EXPECT_NEAR(engine::pathBounds(hatch(c).loops[2].path()).height(), 6, 1e-6);
    // The text's box comes along, and grows with it.
    c.run({"MOVE", "12,4", "", "0,0", "-3,5"});
    math::Bounds2 box = engine::pathBounds(hatch(c).loops[3].path());
    EXPECT_TRUE(box.contains_point({9.5, 9.2}));
    EXPECT_FALSE(box.contains_point({12.5, 4.2}));
    c.run({"SCALE", "9.1,9", "", "9,9", "2"});
    EXPECT_NEAR(engine::pathBounds(hatch(c).loops[3].path()).height(), 2 * box.height(), 1e-6);
    // The outline is opened: that was the hatch.
    c.run({"PEDIT", "0,10", "O", ""});
    EXPECT_FALSE(hatch(c).isAssociative());
    c.feed("U");
    EXPECT_TRUE(hatch(c).isAssociative());
}

TEST(HatchFollows, LinesSelectedEndToEndAndARegion) {
    DrawConsole c;
    c.run({"LINE", "0,0", "10,0", "10,6", "0,6", "C", "HATCH", "S", "ALL", "", ""});
    c.run({"STRETCH", "C", "9,-1", "11,7", "", "0,0", "4,0"});
    expectArea(c, 84, {0, 0}, {14, 6});
    c.feed("U");
    expectArea(c, 60, {0, 0}, {10, 6});
    c.run({"ERASE", "ALL", "", "CIRCLE", "0,0", "3", "REGION", "L", "", "HATCH", "S", "L", "", ""});
    ASSERT_TRUE(hatch(c).isAssociative());
    c.run({"SCALE", "3,0", "", "0,0", "2"});
    EXPECT_NEAR(hatch(c).area(), kPi * 36, 1e-3);
}

TEST(HatchFollows, NothingTwiceWhenBothAreChanged) {
    DrawConsole c;
    fourLines(c);
    c.run({"MOVE", "ALL", "", "0,0", "100,50", "ROTATE", "ALL", "", "100,50", "90", "SCALE", "ALL", "", "100,50", "2"});
    expectArea(c, 240, {88, 50}, {100, 70});
    EXPECT_TRUE(hatch(c).isAssociative());
    c.run({"STRETCH", "C", "80,65", "110,75", "", "0,0", "0,5"});
    EXPECT_NEAR(hatch(c).area(), 300, 1e-3);
    c.run({"CHPROP", "ALL", "", "C", "1", ""});
    EXPECT_TRUE(hatch(c).isAssociative());
    // Alone it goes, and follows no more.
    c.run({"U", "U", "U", "U", "U"});
    expectArea(c, 60, {0, 0}, {10, 6});
    c.document.transformEntities({hatch(c).id()}, math::Matrix4::translation(Vector2{1, 0}));
    EXPECT_FALSE(hatch(c).isAssociative());
    expectArea(c, 60, {1, 0}, {11, 6});
    c.feed("U");
    EXPECT_TRUE(hatch(c).isAssociative());
}

TEST(HatchFollows, CopiesAreTiedToCopies) {
    DrawConsole c;
    fourLines(c);
    c.run({"COPY", "ALL", "", "0,0", "100,0", ""});
    ASSERT_EQ(hatches(c).size(), 2u);
    EXPECT_TRUE(hatch(c, 1).isAssociative());
    EXPECT_NE(hatch(c, 0).loops[0].sources, hatch(c, 1).loops[0].sources);
    c.run({"MOVE", "110,7", "", "0,0", "1,0"});
    EXPECT_NEAR(hatch(c, 0).area() + hatch(c, 1).area(), 126, 1e-6);
    c.run({"U", "U", "MIRROR", "ALL", "", "20,0", "20,1", "N", "MOVE", "30,7", "", "0,0", "-1,0"});
    EXPECT_NEAR(hatch(c, 0).area() + hatch(c, 1).area(), 126, 1e-6);
    c.run({"U", "U", "-ARRAY", "ALL", "", "R", "2", "2", "50", "50"});
    ASSERT_EQ(hatches(c).size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(hatch(c, i).isAssociative()) << i;
    c.feed("U");
    // The hatch alone, and with a part of its boundary.
    c.run({"COPY", "1,1", "", "0,0", "100,0", ""});
    ASSERT_EQ(hatches(c).size(), 2u);
    EXPECT_EQ(hatch(c, 0).isAssociative() + hatch(c, 1).isAssociative(), 1);
}

TEST(HatchFollows, ThroughBlocksAndTheClipboard) {
    DrawConsole c;
    fourLines(c);
    c.run({"-BLOCK", "B", "0,0", "ALL", ""});
    const engine::Block* block = c.drawing().findBlock("B");
    ASSERT_NE(block, nullptr);
    c.run({"-INSERT", "B", "50,0", "", "", ""});
    ASSERT_EQ(c.count(), 1u);
    c.run({"EXPLODE", "L", ""});
    ASSERT_EQ(hatches(c).size(), 1u);
    EXPECT_TRUE(hatch(c).isAssociative());
    c.run({"MOVE", "60,7", "", "0,0", "1,0"});
    expectArea(c, 66, {50, 0}, {61, 6});
    c.run({"COPYBASE", "0,0", "ALL", "", "PASTECLIP", "0,100"});
    ASSERT_EQ(hatches(c).size(), 2u);
    EXPECT_TRUE(hatch(c, 0).isAssociative() && hatch(c, 1).isAssociative());
    c.run({"MOVE", "61,107", "", "0,0", "-1,0"});
    EXPECT_NEAR(hatch(c, 0).area() + hatch(c, 1).area(), 126, 1e-6);
    // A boundary that is taken apart is another one.
    c.run({"ERASE", "ALL", "", "RECTANGLE", "0,0", "10,10", "HATCH", "5,5", "", "EXPLODE", "10,5", ""});
    EXPECT_FALSE(hatch(c).isAssociative());
    EXPECT_EQ(c.lines.back(), "Hatch boundary associativity removed.");
}

TEST(HatchAreas, TellWhenTheSearchIsGivenUp) {
    DrawConsole c;
    for (int i = 0; i < 2010; ++i) {
        c.addLine(i, -1, i, 2011);
        c.addLine(-1, i, 2011, i);
    }
    EXPECT_EQ(c.run({"HATCH", "S", "ALL", ""}).back(),
              "The boundary set crosses itself too often: choose a smaller one.");
}

TEST(HatchFollows, OnlyWhereAskedFor) {
    DrawConsole c;
    c.run({"RECTANGLE", "0,0", "10,10", "HPASSOC", "0", "HATCH", "5,5", ""});
    EXPECT_FALSE(hatch(c).isAssociative());
    c.run({"U", "HATCH", "A", "A", "Y", "", "5,5", ""});
    EXPECT_TRUE(hatch(c).isAssociative());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "HPASSOC"), 1);
    c.run({"U", "ERASE", "ALL", "", "HATCH", "W", "N", "0,0", "4,0", "4,4", "C", "", ""});
    EXPECT_FALSE(hatch(c).isAssociative());
    c.run({"U", "HATCH", "W", "Y", "0,0", "4,0", "4,4", "C", "", ""});
    ASSERT_TRUE(hatch(c).isAssociative());
    c.run({"SCALE", "2,0", "", "0,0", "2"});
    EXPECT_NEAR(hatch(c).area(), 32, 1e-9);
}

TEST(HatchFollows, EditedTies) {
    DrawConsole c;
    c.run({"RECTANGLE", "0,0", "10,10", "CIRCLE", "5,5", "2", "RECTANGLE", "20,0", "30,10", "HATCH", "1,1", ""});
    c.run({"HATCHEDIT", "1,1", "DI"});
    EXPECT_FALSE(hatch(c).isAssociative());
    EXPECT_EQ(c.run({"HATCHEDIT", "1,1", "DI"}).back(), "The hatch is not associative.");
    c.run({"MOVE", "10,5", "", "0,0", "0,1"});
    expectArea(c, 100 - 4 * kPi, {0, 0}, {10, 10});
    c.run({"U", "U"});
    // What is added follows too; what is removed follows no more.
    c.run({"HATCHEDIT", "1,1", "AD", "25,5", "", "MOVE", "30,5", "", "0,0", "0,5"});
    expectArea(c, 200 - 4 * kPi, {0, 0}, {30, 15});
    c.run({"HATCHEDIT", "1,1", "R", "7,5", "", "ERASE", "7,5", ""});
    EXPECT_TRUE(hatch(c).isAssociative());
    EXPECT_NEAR(hatch(c).area(), 200, 1e-6);
    // Each part of a separated hatch keeps its own.
    c.run({"HATCHEDIT", "1,1", "H", "MOVE", "30,10", "", "0,0", "0,-5", "MOVE", "10,5", "", "0,0", "0,1"});
    ASSERT_EQ(hatches(c).size(), 2u);
    EXPECT_NEAR(hatch(c, 0).bounds().min.y + hatch(c, 1).bounds().min.y, 1, 1e-6);
    c.run({"ERASE", "ALL", "", "CIRCLE", "0,0", "4", "CIRCLE", "20,0", "4", "HATCH", "0,0", "", "HATCHEDIT", "1,0",
           "AS", "24,0", ""});
    c.run({"MOVE", "24,0", "", "0,0", "5,0"});
    expectArea(c, 16 * kPi, {21, -4}, {29, 4});
    c.run({"HATCHEDIT", "25,0", "B", "P", "Y", "SCALE", "L", "", "25,0", "0.5"});
    expectArea(c, 4 * kPi, {23, -2}, {27, 2});
    const auto listed = c.run({"LIST", "ALL", "", ""});
    EXPECT_TRUE(std::any_of(listed.begin(), listed.end(),
                            [](const std::string& line) { return line.find("Associative") != std::string::npos; }));
}

TEST(HatchFollows, ManyAtOnceInLittleTime) {
    // One long line bounds 2,000 cells; all of them follow it.
    DrawConsole c;
    c.drawing();
    for (int i = 0; i <= 2000; ++i) c.addLine(i, -1, i, 5);
    c.addLine(-1, 0, 2001, 0);
    engine::LineEntity& top = c.addLine(-1, 1, 2001, 1);
    c.document.associativity().documentRestored(c.drawing());
    {
        const doc::GroupScope group(c.document, "TEST");
        const auto lines = c.entities();
        for (std::size_t i = 0; i < 2000; ++i) {
            auto h = std::make_unique<HatchEntity>();
            const double x = static_cast<double>(i);
            engine::HatchLoop loop;
            loop.type = engine::HatchLoop::kExternal | engine::HatchLoop::kPolyline | engine::HatchLoop::kDerived;
            loop.vertices = {{x, 0}, {x + 1, 0}, {x + 1, 1}, {x, 1}};
            loop.sources = {lines[i]->handle(), lines[i + 1]->handle(), lines[2001]->handle(), top.handle()};
            h->loops.push_back(loop);
            h->seedPoints = {{x + 0.5, 0.5}};
            c.document.addEntity(std::move(h));
        }
    }
    for (HatchEntity* h : hatches(c)) ASSERT_TRUE(h->isAssociative());
    c.document.transformEntities({top.id()}, math::Matrix4::translation(Vector2{0, 2}));
    double area = 0;
    for (HatchEntity* h : hatches(c)) area += h->area();
    EXPECT_NEAR(area, 6000, 1e-3);
    ASSERT_TRUE(c.document.undo());
    area = 0;
    for (HatchEntity* h : hatches(c)) area += h->area();
    EXPECT_NEAR(area, 2000, 1e-3);
}

}  // namespace
}  // namespace kova::cmd
