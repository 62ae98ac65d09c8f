#include "cmd/draw_harness.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::Color;
using engine::Name;
using math::Vector2;

template <class Kind>
Kind& as(Console& c, std::size_t index) {
    return dynamic_cast<Kind&>(*c.entities().at(index));
}

// CHPROP, CHANGE -------------------------------------------------------------------------------------------

TEST(ChProp, ChangesSeveralPropertiesInOneStep) {
    Console c;
    c.drawing().layers.ensure("WALLS");
    c.addLine(0, 0, 1, 0);
    c.addLine(0, 1, 1, 1).color = Color::index(3);
    c.run({"CHPROP", "ALL", "", "C"});
    EXPECT_EQ(c.prompt(), "New color [Truecolor/COlorbook] <varies>:");
    c.run({"1", "LA"});
    EXPECT_EQ(c.prompt(), "Enter new layer name <0>:");
    EXPECT_EQ(c.feed("NOWHERE"), Lines{"Unknown layer \"NOWHERE\"."});
    c.run({"walls", "LT", "DASHED", "S", "2.5", "LW", "0.5", "T", "4", "TR", "91"});
    EXPECT_EQ(c.lines.back(), "Invalid number. Enter 0-90:");
    c.run({"40", "C"});
    EXPECT_EQ(c.prompt(), "New color [Truecolor/COlorbook] <red>:");
    EXPECT_EQ(as<engine::LineEntity>(c, 0).layer, "0");  // nothing yet
    c.run({"", ""});
    EXPECT_TRUE(c.idle());
    for (const engine::Entity* e : c.entities()) {
        EXPECT_EQ(e->color, Color::index(1));
        EXPECT_EQ(e->layer, "WALLS");
        EXPECT_EQ(e->linetype, "DASHED");
        EXPECT_EQ(e->linetypeScale(), 2.5);
        EXPECT_EQ(e->lineweight, 50);
        EXPECT_EQ(e->thickness(), 4.0);
        EXPECT_EQ(e->transparency, 40);
    }
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: CHPROP"});
    EXPECT_EQ(c.entities()[1]->color, Color::index(3));
    EXPECT_FALSE(c.drawing().linetypes.contains("DASHED"));
}

TEST(Change, BendsLinesResizesCirclesAndMovesTexts) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.add(engine::CircleEntity(Vector2{20, 0}, 1.0));
    engine::TextEntity text;
    text.content = "old";
    c.add(text);
    c.run({"CHANGE", "ALL", "", "12,3"});
    // Only the text asks on.
    EXPECT_EQ(c.prompt(), "Enter new text style <Standard>:");
    c.run({"", "7", "90"});
    EXPECT_EQ(c.prompt(), "Enter new text <old>:");
    c.feed("new words");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end, Vector2(12, 3));
    EXPECT_NEAR(as<engine::CircleEntity>(c, 1).radius, std::hypot(8, 3), 1e-12);
    const auto& changed = as<engine::TextEntity>(c, 2);
    EXPECT_EQ(changed.position, Vector2(12, 3));
    EXPECT_EQ(changed.height, 7.0);
    EXPECT_NEAR(changed.rotation, math::kPi / 2, 1e-12);
    EXPECT_EQ(changed.content, "new words");
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"UNDO", "CHANGE", "ALL", "", "P", "E", "25", ""});
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start3(), math::Vector3(0, 0, 25));
    EXPECT_EQ(as<engine::LineEntity>(c, 0).end3(), math::Vector3(10, 0, 25));
}

TEST(Change, AsksAttributeDefinitionsAndBlocksAndHeedsOrtho) {
    Console c;
    engine::AttributeDefinitionEntity definition;
    definition.tag = "OLD";
    definition.prompt = "Which?";
    definition.defaultValue = "none";
    definition.insertion = {5, 5};
    c.add(definition);
    c.run({"CHANGE", "ALL", "", "", "1,2", "", "", "", "new", "How?"});
    EXPECT_EQ(c.prompt(), "Enter new default value <none>:");
    c.feed("some");
    EXPECT_TRUE(c.idle());
    const auto& changed = as<engine::AttributeDefinitionEntity>(c, 0);
    EXPECT_EQ(changed.tag + changed.prompt + changed.defaultValue, "NEWHow?some");
    EXPECT_EQ(changed.insertion, Vector2(1, 2));
    c.run({"ERASE", "ALL", ""});
    c.drawing().addBlock(engine::Name("B"));
    c.add(engine::BlockReferenceEntity(engine::Name("B"), {10, 10}));
    c.addLine(0, 0, 10, 1);
    c.document.setVariable("ORTHOMODE", 1);
    c.run({"CHANGE", "ALL", "", "20,3"});
    EXPECT_EQ(c.prompt(), "Specify new block rotation angle <0>:");
    c.feed("90");
    const auto& reference = as<engine::BlockReferenceEntity>(c, 0);
    EXPECT_NEAR(reference.insert.x, 20.0, 1e-12);
    EXPECT_NEAR(reference.rotation, math::kPi / 2, 1e-12);
    EXPECT_EQ(as<engine::LineEntity>(c, 1).end, Vector2(20, 0));
    // A point on the far end would leave no line.
    c.run({"CHANGE", "20,0", "", "0,0"});
    EXPECT_EQ(as<engine::LineEntity>(c, 1).end, Vector2(20, 0));
}

// MATCHPROP ------------------------------------------------------------------------------------------------

TEST(MatchProp, CarriesTheLookOver) {
    Console c;
    auto& source = c.add(engine::PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    source.color = Color::index(5);
    source.layer = "A";
    source.lineweight = 30;
    source.setWidths(0, 2, 2);
    source.setWidths(1, 2, 2);
    c.add(engine::PolylineEntity({{0, 50}, {10, 50}}));
    c.addLine(0, 80, 10, 80);
    c.feed("MATCHPROP");
    EXPECT_EQ(c.prompt(), "Select source object:");
    c.feed("5,0");
    EXPECT_EQ(c.prompt(), "Select destination object(s) or [Settings]:");
    c.run({"5,50", "5,80", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::PolylineEntity>(c, 1).startWidth(0), 2.0);
    EXPECT_EQ(as<engine::LineEntity>(c, 2).color, Color::index(5));
    EXPECT_EQ(as<engine::LineEntity>(c, 2).layer, "A");
    EXPECT_EQ(as<engine::LineEntity>(c, 2).lineweight, 30);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"UNDO", "MA", "5,0", "S", "LA", "PO", "X", "5,50", ""});
    EXPECT_EQ(as<engine::PolylineEntity>(c, 1).color, Color::index(5));
    EXPECT_EQ(as<engine::PolylineEntity>(c, 1).layer, "0");
    EXPECT_EQ(as<engine::PolylineEntity>(c, 1).startWidth(0), 0.0);
}

// DRAWORDER ------------------------------------------------------------------------------------------------

std::vector<double> order(Console& c) {
    std::vector<double> out;
    for (const engine::Entity* e : c.entities()) out.push_back(e->bounds().min.x);
    return out;
}

TEST(DrawOrder, FrontBackAboveUnder) {
    Console c;
    for (int i = 0; i < 5; ++i) c.addLine(i * 100, 0, i * 100, 10);
    c.run({"DRAWORDER", "0,5", "100,5", "", "F"});
    EXPECT_EQ(order(c), (std::vector<double>{200, 300, 400, 0, 100}));
    c.run({"DR", "0,5", "", ""});
    EXPECT_EQ(order(c), (std::vector<double>{0, 200, 300, 400, 100}));
    c.run({"DR", "0,5", "", "A"});
    EXPECT_EQ(c.prompt(), "Select reference objects:");
    c.run({"200,5", "300,5", ""});
    EXPECT_EQ(order(c), (std::vector<double>{200, 300, 0, 400, 100}));
    c.run({"DR", "100,5", "", "U", "300,5", "0,5", ""});
    EXPECT_EQ(order(c), (std::vector<double>{200, 100, 300, 0, 400}));
    EXPECT_EQ(c.document.history().undoCount(), 4u);
    c.feed("UNDO");
    EXPECT_EQ(order(c), (std::vector<double>{200, 300, 0, 400, 100}));
    // P is what was put elsewhere, not the references.
    c.run({"ERASE", "P", ""});
    EXPECT_EQ(c.count(), 4u);
}

TEST(DrawOrder, TextsToFrontHatchesToBack) {
    Console c;
    engine::TextEntity text;
    text.content = "A";
    c.add(text);
    c.addLine(100, 0, 110, 0);
    engine::HatchEntity hatch;
    engine::HatchLoop loop;
    loop.vertices = {{200, 0}, {210, 0}, {210, 10}};
    hatch.loops.push_back(loop);
    c.add(hatch);
    EXPECT_EQ(c.feed("TEXTTOFRONT"), Lines{"1 object brought to front."});
    EXPECT_EQ(c.feed("HATCHTOBACK"), Lines{"1 hatch sent to back."});
    const auto all = c.entities();
    EXPECT_EQ(all[0]->type(), engine::EntityType::Hatch);
    EXPECT_EQ(all[2]->type(), engine::EntityType::Text);
}

// DDEDIT ---------------------------------------------------------------------------------------------------

TEST(DdEdit, TypesTextsAnewAndTakesThemBack) {
    Console c;
    engine::TextEntity text;
    text.content = "one";
    c.add(text);
    engine::AttributeDefinitionEntity definition;
    definition.tag = "NO";
    definition.insertion = {0, 100};
    c.add(definition);
    c.addLine(0, 200, 10, 200);
    c.run({"DDEDIT", "0,0"});
    EXPECT_EQ(c.prompt(), "Enter new text <one>:");
    c.feed("two  words");
    EXPECT_EQ(c.prompt(), "Select an annotation object or [Undo/Mode]:");
    EXPECT_EQ(as<engine::TextEntity>(c, 0).content, "two  words");
    EXPECT_EQ(c.feed("5,200"), Lines{"Object cannot be used here."});
    c.run({"0,100", "part no", "", "17"});
    EXPECT_EQ(as<engine::AttributeDefinitionEntity>(c, 1).tag, "PART_NO");
    EXPECT_EQ(as<engine::AttributeDefinitionEntity>(c, 1).defaultValue, "17");
    c.feed("U");
    EXPECT_EQ(as<engine::AttributeDefinitionEntity>(c, 1).tag, "NO");
    c.feed("U");
    EXPECT_EQ(as<engine::TextEntity>(c, 0).content, "one");
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
    c.run({"M", "S", "0,0", "three"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(as<engine::TextEntity>(c, 0).content, "three");
}

// Current elevation and thickness --------------------------------------------------------------------------

TEST(NewObjects, TakeElevationAndThickness) {
    Console c;
    c.run({"ELEVATION 5", "THICKNESS 3", "LINE", "0,0", "1,0", "", "CIRCLE", "0,0", "2"});
    ASSERT_EQ(c.count(), 2u);
    for (const engine::Entity* e : c.entities()) {
        EXPECT_EQ(e->elevation, 5.0);
        EXPECT_EQ(e->thickness(), 3.0);
    }
}

}  // namespace
}  // namespace kova::cmd
