#include <gtest/gtest.h>

#include "edit/array_record.hpp"
#include "cmd/edit_harness.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::LineEntity;
using math::Vector2;

/// Starts of the lines, in order of x, then y.
std::vector<Vector2> starts(Console& c) {
    std::vector<Vector2> out;
    for (const engine::Entity* e : c.entities())
        if (const auto* line = dynamic_cast<const LineEntity*>(e)) out.push_back(line->start);
    std::sort(out.begin(), out.end(),
              [](const Vector2& a, const Vector2& b) { return std::abs(a.x - b.x) > 1e-6 ? a.x < b.x : a.y < b.y; });
    return out;
}

void expectStarts(Console& c, const std::vector<Vector2>& wanted) {
    const std::vector<Vector2> got = starts(c);
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        SCOPED_TRACE(i);
        expectNear(got[i], wanted[i], 1e-8);
    }
}

std::size_t members(Console& c) { return c.drawing().groups.empty() ? 0 : c.drawing().groups[0].memberHandles.size(); }

TEST(ArrayExpression, CountsDistancesAndAngles) {
    Console c;
    c.addLine(0, 0, 2, 2);
    c.run({"ARRAYRECT", "ALL", "", "COL"});
    EXPECT_EQ(c.prompt(), "Enter the number of columns or [Expression] <4>:");
    c.feed("E");
    EXPECT_EQ(c.prompt(), "Enter expression <4>:");
    EXPECT_EQ(c.feed("2*("), Lines{"Error: the expression is incomplete."});
    EXPECT_EQ(c.feed("100000"), Lines{"Invalid value."});
    c.run({"E", "1+sqrt(1)"});
    EXPECT_EQ(c.prompt(), "Specify the distance between columns or [Total/Expression] <3>:");
    c.run({"E", "10*cos(60)", "R", "1", "", "", ""});
    expectStarts(c, {{0, 0}, {5, 0}});
    c.feed("U");
    c.run({"ARRAYPOLAR", "ALL", "", "10,0", "F", "EX", "360/4", "I", "E", "6/2", "ROT", "Y", ""});
    expectStarts(c, {{0, 0}, {10 - 10 * std::sqrt(0.5), -10 * std::sqrt(0.5)}, {10, -10}});
}

TEST(ArrayEdit, ChangesARectangularArray) {
    Console c;
    c.addLine(0, 0, 1, 1);
    c.addLine(50, 50, 60, 60);
    c.run({"ARRAYRECT", "0,0", "", "COU", "2", "2", "S", "10", "20", ""});
    EXPECT_EQ(members(c), 4u);
    c.feed("ARRAYEDIT");
    EXPECT_EQ(c.prompt(), "Select array:");
    EXPECT_EQ(c.feed("55,55"), Lines{"Object cannot be used here."});
    c.feed("10,20");
    EXPECT_EQ(c.prompt(), "Enter an option [Source/REPlace/Base point/Rows/Columns/Levels/RESet/eXit] <eXit>:");
    c.run({"C", "3", "5"});
    EXPECT_EQ(members(c), 6u);
    c.run({"R", "1", "", "", "L", "2", "7"});
    const std::uint64_t first = c.entities()[0]->id();
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(members(c), 6u);
    EXPECT_EQ(c.entities()[0]->id(), first);
    c.feed("U");
    expectStarts(c, {{0, 0}, {0, 20}, {10, 0}, {10, 20}, {50, 50}});
    EXPECT_EQ(members(c), 4u);
    // Enter at every question changes nothing.
    c.run({"ARRAYEDIT", "0,0", "R", "", "", "", "C", "", "", "L", "", "", "X"});
    expectStarts(c, {{0, 0}, {0, 20}, {10, 0}, {10, 20}, {50, 50}});
}

TEST(ArrayEdit, FollowsMovedTurnedScaledAndMirroredArrays) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"ARRAYRECT", "ALL", "", "COU", "2", "2", "S", "10", "20", ""});
    c.run({"MOVE", "ALL", "", "0,0", "100,0"});
    c.run({"ROTATE", "ALL", "", "100,0", "90"});
    c.run({"SCALE", "ALL", "", "100,0", "2"});
    expectStarts(c, {{60, 0}, {60, 20}, {100, 0}, {100, 20}});
    c.run({"ARRAYEDIT", "100,1", "C", "3", "", ""});
    expectStarts(c, {{60, 0}, {60, 20}, {60, 40}, {100, 0}, {100, 20}, {100, 40}});
    c.run({"MIRROR", "ALL", "", "100,0", "100,10", "Y"});
    c.run({"ARRAYEDIT", "100,1", "R", "3", "", "", ""});
    EXPECT_EQ(starts(c).back().x, 180.0);
    EXPECT_EQ(starts(c).size(), 9u);
}

TEST(ArrayEdit, ErasedAndReplacedItemsStayUntilReset) {
    Console c;
    c.addLine(0, 0, 1, 1);
    c.add(CircleEntity({500, 500}, 3));
    c.run({"ARRAYRECT", "0,0", "", "COU", "3", "1", "S", "10", "", ""});
    c.document.setVariable("PICKSTYLE", 0);
    c.run({"ERASE", "10,0", ""});
    c.run({"ARRAYEDIT", "0,0", "REP", "503,500", "", "", "20,0", "", ""});
    ASSERT_EQ(c.count(), 3u);
    expectNear(at<CircleEntity>(c, 2).center, {20.5, 0.5});
    c.run({"ARRAYEDIT", "0,0", "C", "4", "20", ""});
    // The erased place stays empty, the circle moves with its place, the fourth item is new.
    expectStarts(c, {{0, 0}, {60, 0}});
    bool moved = false;
    for (const engine::Entity* e : c.entities())
        if (const auto* circle = dynamic_cast<const CircleEntity*>(e))
            moved = moved || circle->center.near_equal({40.5, 0.5}, 1e-9);
    EXPECT_TRUE(moved);
    c.run({"ARRAYEDIT", "0,0", "RES", ""});
    expectStarts(c, {{0, 0}, {20, 0}, {40, 0}, {60, 0}});
    EXPECT_EQ(c.count(), 5u);
    // Even the first item may be gone.
    c.run({"ERASE", "0,0", "", "ARRAYEDIT", "20,0", "C", "5", "", ""});
    expectStarts(c, {{20, 0}, {40, 0}, {60, 0}, {80, 0}});
    c.run({"ARRAYEDIT", "20,0", "RES", ""});
    EXPECT_EQ(starts(c).size(), 5u);
    // All items become like one that was changed, or like other objects.
    c.run({"CHPROP", "20,0", "", "C", "1", "", "ARRAYEDIT", "80,0", "S", "20,0", ""});
    for (const engine::Entity* e : c.entities())
        if (e->type() == engine::EntityType::Line) {
            EXPECT_EQ(e->color, engine::Color::index(1));
        }
    c.run({"ARRAYEDIT", "80,0", "REP", "503,500", "", "K", "500,500", "S", ""});
    EXPECT_TRUE(starts(c).empty());
    EXPECT_EQ(c.count(), 6u);
    EXPECT_EQ(members(c), 5u);
}

TEST(ArrayEdit, PolarArrays) {
    Console c;
    c.addLine(10, 0, 12, 0);
    c.run({"ARRAYPOLAR", "ALL", "", "0,0", "I", "4", ""});
    c.run({"MOVE", "ALL", "", "0,0", "100,0"});
    c.run({"ARRAYEDIT", "110,0", "I", "2", "F", "90", "X"});
    expectStarts(c, {{100, 10}, {110, 0}});
    c.run({"ARRAYEDIT", "110,0", "A", "45", "I", "3"});
    expectStarts(c, {{100 + 10 * std::sqrt(0.5), 10 * std::sqrt(0.5)},
                     {100 + 10 * std::cos(math::kPi / 8), 10 * std::sin(math::kPi / 8)},
                     {110, 0}});
    c.feed("");
    c.run({"ARRAYEDIT", "110,0", "F", "180", "ROT", "N", ""});
    // The middle of the line goes round.
    expectStarts(c, {{88, 0}, {99, 11}, {110, 0}});
    c.run({"U", "U", "U"});
    expectStarts(c, {{90, 0}, {100, -10}, {100, 10}, {110, 0}});
}

TEST(ArrayEdit, PathArraysFollowTheirPath) {
    Console c;
    c.addLine(0, 0, 0, 1);
    auto& path = c.add(engine::PolylineEntity({{0, 0}, {100, 0}}));
    c.run({"ARRAYPATH", "0,1", "", "50,0", "M", "M", "I", "20", "3", ""});
    expectStarts(c, {{0, 0}, {20, 0}, {40, 0}});
    path.vertices = {{0, 0}, {0, 100}};
    c.drawing().modelSpace().touch(path);
    c.run({"ARRAYEDIT", "40,0.5", "I", "25", "4", ""});
    expectStarts(c, {{0, 0}, {0, 25}, {0, 50}, {0, 75}});
    expectNear(at<LineEntity>(c, 0).end, {-1, 0}, 1e-9);
    c.run({"ARRAYEDIT", "-1,25", "M", "D", "R", "2", "10", "", ""});
    EXPECT_EQ(starts(c).size(), 8u);
    c.document.removeEntity(path);
    EXPECT_EQ(c.run({"ARRAYEDIT", "-1,0", "L", "2", "", ""}), Lines{"The path of the array cannot be used any more."});
    EXPECT_EQ(starts(c).size(), 8u);
}

TEST(ArrayEdit, ExplodingLeavesTheItems) {
    Console c;
    c.add(engine::PolylineEntity({{0, 0}, {1, 0}, {1, 1}}));
    c.run({"ARRAYRECT", "ALL", "", "COU", "2", "2", "S", "10", "20", ""});
    c.run({"SELECT", "0,0", ""});
    EXPECT_EQ(c.feed("EXPLODE"), Lines{"1 object exploded."});
    EXPECT_EQ(c.count(), 4u);
    EXPECT_TRUE(c.drawing().groups.empty());
    EXPECT_EQ(c.run({"ARRAYEDIT", "0,0"}), Lines{"Object cannot be used here."});
    c.run({"", "U"});
    EXPECT_EQ(members(c), 4u);
    EXPECT_TRUE(arrayOf(c.document, *c.entities()[3]).has_value());
}

TEST(ArrayEdit, MalformedDataIsNoArray) {
    Console c;
    c.addLine(0, 0, 1, 1);
    c.run({"ARRAYRECT", "ALL", "", "COU", "2", "1", "S", "10", "", ""});
    const engine::Name application("KOVA_ARRAY");
    const std::vector<engine::XDataItem> good = *c.entities()[0]->xdata()->find(application);
    const auto tryWith = [&](std::vector<engine::XDataItem> items) {
        c.entities()[0]->ensureXdata().set(application, items);
        c.entities()[1]->ensureXdata().set(application, items);
        const bool found = arrayOf(c.document, *c.entities()[0]).has_value();
        c.run({"ARRAYEDIT", "0,0"});
        if (!c.idle()) c.processor.cancel();
        return found;
    };
    EXPECT_FALSE(tryWith({{1070, std::int64_t{1}}}));
    EXPECT_FALSE(tryWith({{1010, math::Vector3(-1, 0, 0)}}));
    EXPECT_FALSE(tryWith({{1010, math::Vector3(NAN, 0, 0)}}));
    EXPECT_FALSE(tryWith({{1010, math::Vector3()}, {1000, std::string("Rectangular")}, {1040, 1.0}}));
    auto items = good;
    for (auto& item : items)
        if (item.code == 1040) item.value = 1e300;
    EXPECT_FALSE(tryWith(items));
    for (auto& item : items)
        if (item.code == 1040) item.value = 32767.0;
    EXPECT_FALSE(tryWith(items));
    EXPECT_TRUE(tryWith(good));
}

}  // namespace
}  // namespace kova::cmd
