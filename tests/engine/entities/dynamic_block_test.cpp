// What references of dynamic blocks show under the values of their parameters.
#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/modify/stretch_points.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Vector2;

/// A window 100 by 50 as a polyline (0) and a circle of radius 2 at its upper right corner (1).
class DynamicBlocks : public ::testing::Test {
protected:
    DynamicBlocks() {
        block.isDynamic = true;
        auto frame = std::make_unique<PolylineEntity>();
        frame->vertices = {{0, 0}, {100, 0}, {100, 50}, {0, 50}};
        frame->closed = true;
        block.entities.append(std::move(frame));
        block.entities.append(std::make_unique<CircleEntity>(Vector2{100, 50}, 2.0));
    }
    std::int32_t parameter(const char* type, const char* name, Vector2 base, Vector2 end, double value = 0.0) {
        DynParameter& p = block.dynParams.emplace_back();
        p.type = type;
        p.name = name;
        p.base = base;
        p.endPoint = end;
        p.value = value;
        return static_cast<std::int32_t>(block.dynParams.size()) - 1;
    }
    DynAction& action(const char* type, std::int32_t of, std::vector<std::int32_t> entities,
                      std::vector<Vector2> frame = {}) {
        DynAction& a = block.dynActions.emplace_back();
        a.type = type;
        a.parameterIndex = of;
        a.affectedEntityIndices = std::move(entities);
        a.stretchFrame = std::move(frame);
        ++drawing.styleRevision;
        return a;
    }
    std::string set(const char* name, const char* text) {
        for (const DynProperty& property : dynProperties(block))
            if (equalNoCase(property.name, name)) return setDynValue(reference, block, property, text);
        return "unknown";
    }
    std::string get(const char* name) {
        for (const DynProperty& property : dynProperties(block))
            if (equalNoCase(property.name, name)) return dynValueText(reference, block, property);
        return "unknown";
    }
    std::vector<Entity*> shown() {
        kept = shownBlock(block, reference);
        return kept.block->entities.entities();
    }
    std::vector<Vector2> frame() { return static_cast<PolylineEntity&>(*shown()[0]).vertices; }
    Vector2 center(std::size_t i = 1) { return static_cast<CircleEntity&>(*shown()[i]).center; }
    static void expectAt(const Vector2& got, double x, double y) {
        EXPECT_NEAR(got.x, x, 1e-9);
        EXPECT_NEAR(got.y, y, 1e-9);
    }

    Drawing drawing;
    Block& block = *drawing.addBlock("Window");
    BlockReferenceEntity& reference = static_cast<BlockReferenceEntity&>(
        drawing.modelSpace().append(std::make_unique<BlockReferenceEntity>("Window", Vector2{1000, 0})));
    ShownBlock kept;
};

TEST_F(DynamicBlocks, WidthAndHeightStretchWithoutHinderingEachOther) {
    const auto width = parameter("Linear", "Width", {0, 0}, {100, 0});
    const auto height = parameter("Linear", "Height", {0, 0}, {0, 50});
    action("Stretch", width, {0, 1}, {{90, -10}, {110, 60}});
    action("Stretch", height, {0, 1}, {{-10, 40}, {110, 40}, {110, 60}, {-10, 60}});
    EXPECT_EQ(shownBlock(block, reference).block, &block);
    EXPECT_EQ(set("width", "300"), "");
    EXPECT_EQ(set("Height", "80.5"), "");
    const auto now = frame();
    expectAt(now[0], 0, 0);
    expectAt(now[1], 300, 0);
    expectAt(now[2], 300, 80.5);  // out of the second frame by the first stretch, and yet of it
    expectAt(now[3], 0, 80.5);
    expectAt(center(), 300, 80.5);
    const math::Bounds2 box = reference.bounds();
    expectAt(box.max, 1302, 82.5);
    EXPECT_LT(reference.distanceTo({1150, 80.5}), 1e-9);
    // The definition stays, and the drawing does not know what is only shown.
    EXPECT_EQ(drawing.entityCount(), 3u);
    expectAt(static_cast<PolylineEntity&>(*block.entities.first()).vertices[2], 100, 50);
    // A change of the definition shows at once.
    auto& circle = static_cast<CircleEntity&>(*block.entities.last());
    circle.radius = 5.0;
    block.entities.touch(circle);
    EXPECT_NEAR(reference.bounds().max.x, 1305, 1e-9);
    EXPECT_EQ(get("Width"), "300");
    resetDynValues(reference);
    EXPECT_NEAR(reference.bounds().max.x, 1105, 1e-9);
    for (const char* bad : {"0", "-5", "nan", "", "12x", "1e400"})
        EXPECT_EQ(set("Width", bad), "Invalid value.") << bad;
}

TEST_F(DynamicBlocks, MoveScaleRotateAndFlip) {
    const auto point = parameter("Point", "Knob", {100, 50}, {100, 60});
    action("Move", point, {1, 1, 77, -1});
    set("Knob X", "20");
    expectAt(center(), 20, 50);
    const auto turn = parameter("Rotation", "Turn", {0, 0}, {10, 0});
    action("Rotate", turn, {0, 1});
    set("Turn", "90");
    expectAt(center(), -50, 20);
    EXPECT_EQ(get("Turn"), "90");
    const auto flip = parameter("Flip", "Side", {0, 0}, {0, 10});
    action("Flip", flip, {0, 1});
    EXPECT_EQ(set("Side", "sideways"), "Enter Flipped or Not flipped.");
    EXPECT_EQ(set("Side", "flipped"), "");
    expectAt(center(), 50, 20);
    const auto size = parameter("XY", "Size", {0, 0}, {100, 50});
    DynAction& scale = action("Scale", size, {1});
    scale.constrainToAxis = true;
    set("Size X", "200");
    resetDynValues(reference);
    set("Size X", "200");
    set("Size Y", "500");  // the axis lets only X through
    ASSERT_EQ(shown()[1]->type(), EntityType::Ellipse);
    EXPECT_NEAR(shown()[1]->bounds().width(), 8.0, 1e-9);
    EXPECT_NEAR(shown()[1]->bounds().height(), 4.0, 1e-9);
}

TEST_F(DynamicBlocks, ArraysAndPolarStretch) {
    const auto row = parameter("Linear", "Row", {0, 0}, {10, 0});
    action("Array", row, {1}).arraySpacing = 10.0;
    set("Row", "39.9");
    EXPECT_EQ(shown().size(), 4u);
    expectAt(center(3), 120, 50);
    set("Row", "1e300");
    EXPECT_LE(shown().size(), 200'002u);
    block.dynActions.clear();
    resetDynValues(reference);
    const auto arm = parameter("Polar", "Arm", {0, 0}, {100, 0});
    action("Polar Stretch", arm, {0}, {{90, -10}, {110, 60}});
    set("Arm", "150");
    set("Arm angle", "90");
    const auto now = frame();
    expectAt(now[0], 0, 0);
    expectAt(now[1], 0, 150);
    expectAt(now[2], -50, 150);
    expectAt(now[3], -50, 0);
    // Actions that do not fit their parameter do nothing.
    action("Flip", arm, {0});
    action("Stretch", 99, {0}, {{0, 0}, {1, 1}});
    expectAt(frame()[2], -50, 150);
}

TEST_F(DynamicBlocks, ValueSetsMidpointsStatesAndLookup) {
    const auto width = parameter("Linear", "Width", {0, 0}, {100, 0});
    block.dynParams[0].constraint = 1;
    block.dynParams[0].increment = 25;
    block.dynParams[0].valueList = {50, 200};
    block.dynParams[0].baseAtMidpoint = true;
    action("Stretch", width, {0}, {{90, -10}, {110, 60}});
    action("Stretch", width, {0}, {{-10, -10}, {10, 60}}).atStartPoint = true;
    set("Width", "160");
    EXPECT_EQ(get("Width"), "150");
    expectAt(frame()[0], -25, 0);
    expectAt(frame()[1], 125, 0);
    set("Width", "9000");
    EXPECT_EQ(get("Width"), "200");
    block.dynParams[0].constraint = 2;
    set("Width", "60");
    EXPECT_EQ(get("Width"), "50");

    parameter("Visibility", "State", {}, {});
    block.dynParams[1].activeVisibility = "Bare";
    block.visibilityStates = {{"Bare", {0}}, {"Full", {0, 1}}};
    ++drawing.styleRevision;
    EXPECT_EQ(shown().size(), 1u);
    EXPECT_EQ(set("State", "none"), "No such visibility state.");
    EXPECT_EQ(set("State", "FULL"), "");
    EXPECT_EQ(shown().size(), 2u);

    parameter("Lookup", "Kind", {}, {});
    EXPECT_NE(set("Kind", "Wide"), "");
    block.lookupTable = LookupTable{{{"Width", true}, {"State", true}, {"Kind", false}},
                                    {{"50", "Bare", "Narrow"}, {"200.0", "Full", "Wide"}, {"short"}},
                                    false};
    EXPECT_EQ(get("Kind"), "Custom");
    EXPECT_EQ(set("Kind", "Wide"), "The lookup table gives values only.");
    block.lookupTable->allowReverseLookup = true;
    EXPECT_EQ(set("Kind", "wide"), "");
    EXPECT_EQ(get("Width"), "200");
    EXPECT_EQ(get("Kind"), "Wide");
    set("Width", "50");
    EXPECT_EQ(get("Kind"), "Custom");
    set("State", "Bare");
    EXPECT_EQ(get("Kind"), "Narrow");
}

TEST_F(DynamicBlocks, ABlockWithinItselfEnds) {
    const auto flip = parameter("Flip", "Side", {0, 0}, {0, 10});
    auto inner = std::make_unique<BlockReferenceEntity>("Window", Vector2{5, 5});
    inner->dynFlipValues["Side"] = 1.0;
    block.entities.append(std::move(inner));
    action("Flip", flip, {0, 1, 2});
    reference.dynFlipValues["Side"] = 1.0;
    EXPECT_TRUE(reference.bounds().min.is_finite());
    EXPECT_TRUE(drawing.blockContainsItself("Window"));
}

}  // namespace
}  // namespace kova::engine
