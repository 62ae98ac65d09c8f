#include <gtest/gtest.h>

#include "cmd/edit_harness.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::BlockReferenceEntity;
using engine::CircleEntity;
using engine::LineEntity;
using engine::Name;
using math::Vector2;

// MOCORO -------------------------------------------------------------------------------------------------

TEST(Mocoro, DoesItAllAboutOnePoint) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"MOCORO", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Base point:");
    c.feed("0,0");
    EXPECT_EQ(c.prompt(), "[Move/Copy/Rotate/Scale/Base pnt/Undo/eXit] <eXit>:");
    c.feed("M");
    EXPECT_EQ(c.prompt(), "Second point of displacement:");
    c.run({"100,0", "R", "90"});
    // The base point went along.
    expectLine(c, 0, {100, 0}, {100, 10});
    c.run({"S", "2", "C", "@50,0"});
    ASSERT_EQ(c.count(), 2u);
    expectLine(c, 0, {100, 0}, {100, 20});
    expectLine(c, 1, {150, 0}, {150, 20});
    c.run({"B", "100,20", "R", "200,20"});
    // A point shows where the x axis is to lie: nothing turns.
    expectLine(c, 0, {100, 0}, {100, 20});
    c.run({"U", "U", "U", "U", "S", "0.5"});
    ASSERT_EQ(c.count(), 1u);
    expectLine(c, 0, {100, 0}, {100, 5});
    c.run({"U", "U", "U"});
    expectLine(c, 0, {0, 0}, {10, 0});
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
    c.run({"R", "180", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MOCORO"});
    expectLine(c, 0, {0, 0}, {10, 0});
}

// NCOPY --------------------------------------------------------------------------------------------------

void define(Console& c, const char* name, std::vector<std::unique_ptr<engine::Entity>> contents,
            engine::XrefType type = engine::XrefType::None) {
    engine::Block* added = c.drawing().addBlock(Name(name));
    added->xrefType = type;
    for (auto& entity : contents) added->entities.append(std::move(entity));
}

TEST(Ncopy, CopiesWhatStandsInBlocks) {
    Console c;
    std::vector<std::unique_ptr<engine::Entity>> inner;
    inner.push_back(std::make_unique<CircleEntity>(Vector2{0, 0}, 1.0));
    inner.back()->layer = Name("HOLES");
    define(c, "INNER", std::move(inner));
    std::vector<std::unique_ptr<engine::Entity>> outer;
    outer.push_back(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{10, 0}));
    outer.push_back(std::make_unique<BlockReferenceEntity>(Name("INNER"), Vector2{5, 5}));
    define(c, "OUTER", std::move(outer));
    BlockReferenceEntity reference(Name("OUTER"), Vector2{100, 0});
    reference.scaleX = reference.scaleY = 2.0;
    reference.rotation = math::kPi / 2;
    c.add(reference);
    EXPECT_EQ(c.feed("NCOPY"), Lines{"Current settings: Insert"});
    EXPECT_EQ(c.prompt(), "Select nested objects to copy or [Settings]:");
    // The circle stands at 90,10 with a radius of 2; the line runs from 100,0 to 100,20.
    c.run({"92,10", "100,8", "100,9"});
    EXPECT_EQ(c.lines.back(), "1 found (1 duplicate), 2 total");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Specify base point or [Displacement/Multiple] <Displacement>:");
    c.run({"M", "0,0", "50,0", "0,50", ""});
    ASSERT_EQ(c.count(), 5u);
    expectNear(at<CircleEntity>(c, 1).center, {140, 10});
    EXPECT_NEAR(at<CircleEntity>(c, 1).radius, 2.0, 1e-12);
    EXPECT_EQ(c.entities()[1]->layer, Name("HOLES"));
    expectLine(c, 2, {150, 0}, {150, 20});
    expectLine(c, 4, {100, 50}, {100, 70});
    EXPECT_NE(c.entities()[1]->handle(), 0u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: NCOPY"});
    EXPECT_EQ(c.count(), 1u);
    c.run({"NCOPY", "100,8", "", "", "5,0"});
    expectLine(c, 1, {105, 0}, {105, 20});
    c.run({"NCOPY", ""});
    EXPECT_TRUE(c.idle());
}

TEST(Ncopy, ReferencesBringTheirLayers) {
    for (const bool bind : {false, true}) {
        Console c;
        engine::Linetype dashes;
        dashes.name = Name("plan|DASHES");
        c.drawing().linetypes.add(dashes);
        engine::Layer layer;
        layer.name = Name("plan|WALLS");
        layer.color = engine::Color::index(1);
        layer.linetype = Name("plan|DASHES");
        c.drawing().layers.add(layer);
        std::vector<std::unique_ptr<engine::Entity>> contents;
        contents.push_back(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{10, 0}));
        contents.back()->layer = Name("plan|WALLS");
        define(c, "plan", std::move(contents), engine::XrefType::Attach);
        c.add(BlockReferenceEntity(Name("plan"), Vector2{0, 0}));
        c.run({"NCOPY", "S", bind ? "B" : "I", "5,0", "", "0,0", "0,20"});
        ASSERT_EQ(c.count(), 2u);
        expectLine(c, 1, {0, 20}, {10, 20});
        const Name expected(bind ? "plan$0$WALLS" : "WALLS");
        EXPECT_EQ(c.entities()[1]->layer, expected);
        const engine::Layer* made = c.drawing().layers.find(expected);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->linetype, Name(bind ? "plan$0$DASHES" : "DASHES"));
        EXPECT_NE(c.drawing().linetypes.find(made->linetype), nullptr);
        // Again: the same layer.
        const std::size_t layers = c.drawing().layers.size();
        EXPECT_EQ(c.feed("NCOPY"), Lines{bind ? "Current settings: Bind" : "Current settings: Insert"});
        c.run({"5,0", "", "0,0", "0,40"});
        EXPECT_EQ(c.drawing().layers.size(), layers);
        c.run({"UNDO", "UNDO"});
        EXPECT_EQ(c.drawing().layers.find(expected), nullptr);
    }
}

}  // namespace
}  // namespace kova::cmd
