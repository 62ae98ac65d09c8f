#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cmd/edit_harness.hpp"
#include "edit/layer_state_file.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/model/xdata.hpp"

namespace kova::cmd {
namespace {

using engine::BlockReferenceEntity;
using engine::Layer;
using engine::LineEntity;
using engine::Name;

/// A line on each of the layers 0, A, B and C, 10 apart.
class LayerTools : public ::testing::Test {
protected:
    LayerTools() {
        for (const char* name : {"A", "B", "C"}) c.drawing().layers.ensure(Name(name));
        double y = 0.0;
        for (const char* name : {"0", "A", "B", "C"}) {
            c.addLine(0, y, 100, y).layer = Name(name);
            y += 10.0;
        }
    }
    Layer& layer(const char* name) {
        Layer* found = c.drawing().layers.find(Name(name));
        if (found != nullptr) return *found;
        ADD_FAILURE() << name;
        static Layer none;
        return none;
    }
    bool has(const char* name) { return c.drawing().layers.contains(Name(name)); }
    std::string layerAt(std::size_t i) { return c.entities().at(i)->layer.str(); }
    Console c;
};

TEST_F(LayerTools, FreezeAndOffWorkLayerByLayerWithUndo) {
    EXPECT_EQ(c.feed("LAYFRZ"), Lines{"Current settings: Viewports=Vpfreeze, Block nesting level=Block"});
    EXPECT_EQ(c.prompt(), "Select an object on the layer to be frozen or [Settings/Undo]:");
    EXPECT_EQ(c.feed("50,10"), Lines{"Layer \"A\" has been frozen."});
    EXPECT_EQ(c.feed("50,0"), Lines{"Cannot freeze layer \"0\". It is the CURRENT layer."});
    EXPECT_EQ(c.feed("50,10"), Lines{"No object found."});
    c.feed("50,20");
    EXPECT_EQ(c.feed("U"), Lines{"Last layer restored."});
    EXPECT_FALSE(layer("B").frozen);
    EXPECT_TRUE(layer("A").frozen);
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LAYFRZ"});
    EXPECT_FALSE(layer("A").frozen);

    c.run({"LAYOFF", "50,0"});
    EXPECT_EQ(c.prompt(), "Layer \"0\" is current, do you want to turn it off? [Yes/No] <No>:");
    c.feed("");
    EXPECT_TRUE(layer("0").on);
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
    c.run({"50,0", "Y", "50,30", ""});
    EXPECT_FALSE(layer("0").on);
    EXPECT_FALSE(layer("C").on);
    layer("A").frozen = true;
    EXPECT_EQ(c.feed("LAYON"), Lines{"All layers have been turned on."});
    EXPECT_TRUE(layer("0").on && layer("C").on && layer("A").frozen);
    EXPECT_EQ(c.feed("LAYTHW"), Lines{"All layers have been thawed."});
    EXPECT_FALSE(layer("A").frozen);
}

TEST_F(LayerTools, LocksAndMakesCurrent) {
    EXPECT_EQ(c.run({"LAYLCK", "50,20"}), Lines{"Layer \"B\" has been locked."});
    EXPECT_TRUE(layer("B").locked && c.idle());
    // What is locked can still say which layer is meant.
    EXPECT_EQ(c.run({"LAYMCUR", "50,20"}), Lines{"B is now the current layer."});
    EXPECT_EQ(c.drawing().currentLayer, "B");
    EXPECT_EQ(c.run({"LAYMCUR", "500,500"}), Lines{"No object found."});
    EXPECT_EQ(c.feed("abc"), Lines{"Invalid input."});
    c.feed("");
    layer("C").locked = true;
    EXPECT_EQ(c.feed("LAYULK B"), Lines{"Layer \"B\" has been unlocked."});
    EXPECT_TRUE(layer("C").locked && !layer("B").locked);
    EXPECT_EQ(c.feed("LAYULK"), Lines{"All layers have been unlocked."});
    EXPECT_FALSE(layer("C").locked);
    EXPECT_EQ(
        c.feed("LAYERPALETTE"),
        (Lines{"\"Layer Palette\" needs its dialog, which kovacad-cli cannot show; cancelled.", "Use LAYER instead."}));
}

TEST_F(LayerTools, ObjectsGoToOtherLayers) {
    EXPECT_EQ(c.run({"SELECT", "ALL", ""}).size(), 0u);
    EXPECT_EQ(c.feed("LAYCUR"), Lines{"3 objects changed to layer 0 (the current layer)."});
    EXPECT_EQ(layerAt(3), "0");
    c.feed("U");
    EXPECT_EQ(layerAt(3), "C");
    c.run({"LAYCUR", "50,10"});
    EXPECT_EQ(c.feed(""), Lines{"1 object changed to layer 0 (the current layer)."});

    EXPECT_EQ(c.run({"LAYMCH", "50,20", "", "50,30"}), Lines{"1 object changed to layer C."});
    EXPECT_EQ(layerAt(2), "C");
    c.run({"LAYMCH", "50,20", "", "N"});
    EXPECT_EQ(c.feed("none"), Lines{"Unknown layer \"none\"."});
    EXPECT_EQ(c.feed("A"), Lines{"1 object changed to layer A."});

    c.run({"COPYTOLAYER", "50,0", "", "B"});
    EXPECT_EQ(c.prompt(), "Specify base point or [Displacement/eXit] <eXit>:");
    EXPECT_EQ(c.feed(""), Lines{"1 object copied and placed on layer \"B\"."});
    ASSERT_EQ(c.count(), 5u);
    EXPECT_EQ(layerAt(4), "B");
    expectLine(c, 4, {0, 0}, {100, 0});
    c.run({"COPYTOLAYER", "50,0", "", "", "C", "1,1", "@0,50"});
    expectLine(c, 5, {0, 50}, {100, 50});
    c.run({"COPYTOLAYER", "50,30", "", "50,50", "D", "5,60"});
    expectLine(c, 6, {5, 90}, {105, 90});
    EXPECT_EQ(layerAt(6), "C");
    c.feed("U");
    EXPECT_EQ(c.count(), 6u);
}

TEST_F(LayerTools, SetByLayerDropsOwnLooks) {
    LineEntity& line = at<LineEntity>(c, 0);
    line.color = engine::Color::index(3);
    line.transparency = 40;
    at<LineEntity>(c, 1).linetype = Name("ByBlock");
    at<LineEntity>(c, 2).lineweight = -2;
    c.run({"SELECT", "ALL", ""});
    EXPECT_EQ(c.feed("SETBYLAYER"), Lines{"3 objects modified, 1 object did not need to be changed."});
    EXPECT_EQ(at<LineEntity>(c, 0).color, engine::Color::byLayer());
    EXPECT_EQ(at<LineEntity>(c, 0).transparency, 0);
    EXPECT_EQ(at<LineEntity>(c, 1).linetype, "ByLayer");
    EXPECT_EQ(at<LineEntity>(c, 2).lineweight, -1);
    c.feed("U");
    EXPECT_EQ(at<LineEntity>(c, 0).color, engine::Color::index(3));
}

TEST_F(LayerTools, IsolationLocksOrHidesAndComesBack) {
    layer("B").locked = true;
    c.run({"LAYISO", "50,10", ""});
    EXPECT_EQ(c.lines.back(), "A is now the current layer.");
    EXPECT_TRUE(layer("0").locked && layer("B").locked && layer("C").locked && !layer("A").locked);
    // What the user changes meanwhile stays.
    layer("C").color = engine::Color::index(2);
    EXPECT_EQ(c.feed("LAYUNISO"), Lines{"Layers isolated by the LAYISO command have been restored."});
    EXPECT_TRUE(!layer("0").locked && layer("B").locked && !layer("C").locked);
    EXPECT_EQ(layer("C").color, engine::Color::index(2));
    EXPECT_EQ(c.feed("LAYUNISO"), Lines{"There are no isolated layers."});

    layer("B").locked = false;
    layer("C").on = false;
    c.run({"LAYISO", "S", "O", "", "50,10", "50,20", ""});
    EXPECT_EQ(c.lines.back(), "2 layers have been isolated.");
    EXPECT_TRUE(!layer("0").on && layer("A").on && layer("B").on && !layer("C").on);
    c.feed("LAYUNISO");
    EXPECT_TRUE(layer("0").on && !layer("C").on);
    // It does not outlive its drawing.
    c.run({"LAYISO", "50,10", ""});
    c.document.setDrawing(std::make_unique<engine::Drawing>());
    EXPECT_EQ(c.feed("LAYUNISO"), Lines{"There are no isolated layers."});
}

TEST_F(LayerTools, WalkShowsAloneAndRestores) {
    const Lines listed = c.feed("LAYWALK");
    ASSERT_GE(listed.size(), 4u);
    EXPECT_EQ(listed[1], "\"A\"  1 object");
    EXPECT_EQ(c.prompt(), "Enter layer name(s) to show or [Restore/eXit] <eXit>:");
    layer("B").frozen = true;
    c.feed("A,B");
    EXPECT_TRUE(!layer("0").on && layer("A").on && !layer("B").frozen && !layer("C").on);
    c.feed("C");
    EXPECT_TRUE(layer("C").on && !layer("A").on);
    c.feed("");
    EXPECT_TRUE(layer("0").on && layer("A").on && layer("B").frozen);
    EXPECT_FALSE(c.document.history().canUndo());
    c.run({"LAYWALK", "A", "R", "X"});
    EXPECT_TRUE(layer("A").on && !layer("0").on);
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LAYWALK"});
    EXPECT_TRUE(layer("0").on);
}

/// A block with a line on layer A and one on B, inserted with an attribute on layer A.
BlockReferenceEntity& addBlockOnLayers(Console& c) {
    engine::Block* block = c.drawing().addBlock(Name("PART"));
    for (const char* name : {"A", "B"}) {
        auto line = std::make_unique<LineEntity>(math::Vector2{0, 0}, math::Vector2{1, 1});
        line->layer = Name(name);
        block->entities.append(std::move(line));
    }
    block->visibilityStates.push_back({"one", {1}});
    auto& reference = c.add(BlockReferenceEntity(Name("PART"), {200, 200}));
    engine::BlockAttribute attribute;
    attribute.tag = "T";
    attribute.layer = Name("A");
    reference.attributes.push_back(attribute);
    return reference;
}

TEST_F(LayerTools, DeletingTakesAllThatIsOnTheLayer) {
    addBlockOnLayers(c);
    c.feed("LAYDEL");
    EXPECT_EQ(c.prompt(), "Select object on layer to delete or [Name]:");
    EXPECT_EQ(c.feed("50,0"), Lines{"Cannot delete layer \"0\"."});
    EXPECT_EQ(c.feed("50,10"), Lines{"Selected layers: A."});
    EXPECT_EQ(c.prompt(), "Select object on layer to delete or [Name/Undo]:");
    EXPECT_EQ(c.run({"N", "C"}), Lines{"Selected layers: A,C."});
    EXPECT_EQ(c.feed("U"), Lines{"Selected layers: A."});
    c.feed("");
    EXPECT_EQ(c.prompt(), "Do you wish to continue? [Yes/No] <No>:");
    c.feed("");
    EXPECT_TRUE(has("A"));
    c.run({"LAYDEL", "A", "", "Y"});
    EXPECT_EQ(c.lines.back(), "1 layer deleted.");
    EXPECT_FALSE(has("A"));
    EXPECT_EQ(c.count(), 4u);
    engine::Block* block = c.drawing().findBlock(Name("PART"));
    EXPECT_EQ(block->entities.size(), 1u);
    EXPECT_EQ(block->visibilityStates[0].visibleEntityIndices, std::vector<std::int32_t>{0});
    EXPECT_TRUE(at<BlockReferenceEntity>(c, 3).attributes.empty());
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LAYDEL"});
    EXPECT_TRUE(has("A"));
    EXPECT_EQ(block->entities.size(), 2u);
    EXPECT_EQ(block->visibilityStates[0].visibleEntityIndices, std::vector<std::int32_t>{1});
    EXPECT_EQ(at<BlockReferenceEntity>(c, 4).attributes.size(), 1u);
    EXPECT_EQ(layerAt(1), "A");
}

TEST_F(LayerTools, MergingBringsEverythingToTheTarget) {
    addBlockOnLayers(c);
    engine::XData data;
    data.set(Name("APP"), {{1003, std::string("A")}});
    c.entities()[0]->setXdata(data);
    EXPECT_EQ(c.run({"LAYMRG", "50,10", "N", "C", "", "50,10"}).back(), "Layer \"A\" is one of those to be merged.");
    c.run({"50,20", "Y"});
    EXPECT_EQ(c.lines.back(), "2 layers deleted.");
    EXPECT_FALSE(has("A") || has("C"));
    EXPECT_EQ(layerAt(1) + layerAt(3), "BB");
    EXPECT_EQ(c.drawing().findBlock(Name("PART"))->entities.first()->layer, "B");
    EXPECT_EQ(at<BlockReferenceEntity>(c, 4).attributes[0].layer, "B");
    EXPECT_EQ(std::get<std::string>((*c.entities()[0]->xdata()->find(Name("APP")))[0].value), "B");
    c.feed("U");
    EXPECT_TRUE(has("A") && has("C"));
    EXPECT_EQ(layerAt(1) + layerAt(3), "AC");
}

TEST_F(LayerTools, TranslationRenamesMergesAndExchanges) {
    const std::size_t layers = c.drawing().layers.size();
    layer("A").color = engine::Color::index(1);
    EXPECT_EQ(c.run({"LAYTRANS", "A", "Walls", "nope", ""}).back(), "1 object translated.");
    EXPECT_FALSE(has("A"));
    EXPECT_EQ(layer("Walls").color, engine::Color::index(1));
    EXPECT_EQ(layerAt(1), "Walls");
    c.feed("U");
    EXPECT_TRUE(has("A") && !has("Walls"));
    EXPECT_EQ(c.run({"LAYTRANS", "A", "B", "B", "A", ""}).back(), "2 objects translated.");
    EXPECT_EQ(layerAt(1) + layerAt(2), "BA");
    EXPECT_EQ(c.drawing().layers.size(), layers);
    const auto path = std::filesystem::temp_directory_path() / "kova_layer_map.txt";
    std::ofstream(path) << "; a map\nB=Doors\r\nunknown*=X\nC = Doors\n0=<bad>\n";
    c.run({"LAYTRANS", path.string(), ""});
    std::filesystem::remove(path);
    EXPECT_EQ(layerAt(1) + layerAt(3), "DoorsDoors");
    EXPECT_FALSE(has("B") || has("C"));
}

TEST_F(LayerTools, PreviousStatesComeBackStepByStep) {
    EXPECT_EQ(c.feed("LAYERP"), Lines{"No previous layer status."});
    c.run({"LAYER", "OFF", "A", "C", "1", "B", ""});
    c.run({"LINE", "500,0", "510,0", ""});
    c.run({"LAYER", "LO", "C", "S", "B", "N", "New", ""});
    c.run({"CIRCLE", "500,500", "5"});
    EXPECT_EQ(c.feed("LAYERP"), Lines{"Restored previous layer states."});
    // Objects and new layers stay.
    EXPECT_EQ(c.count(), 6u);
    EXPECT_TRUE(has("New"));
    EXPECT_FALSE(layer("C").locked);
    EXPECT_EQ(c.drawing().currentLayer, "0");
    EXPECT_FALSE(layer("A").on);
    c.feed("LAYERP");
    EXPECT_TRUE(layer("A").on);
    EXPECT_EQ(layer("B").color, engine::Color::index(7));
    EXPECT_EQ(c.feed("LAYERP"), Lines{"No previous layer status."});
    // It can be undone itself, and forgets nothing then.
    c.feed("U");
    EXPECT_FALSE(layer("A").on);
    c.feed("LAYERP");
    EXPECT_TRUE(layer("A").on);
}

TEST_F(LayerTools, StatesAreEditedAndGoThroughFiles) {
    const std::string path = (std::filesystem::temp_directory_path() / "kova_layer_state.las").string();
    layer("A").color = engine::Color::rgb(1, 2, 3);
    layer("B").on = false;
    layer("C").frozen = true;
    layer("C").linetype = Name("Dashed");
    c.run({"LAYERSTATE", "S", "Plan", ""});
    EXPECT_TRUE(c.idle());
    c.run({"LAYERSTATE", "EX", "Plan", path});
    c.run({"LAYERSTATE", "D", "Plan", "LAYERSTATE", "I", path});
    EXPECT_EQ(c.lines.back(), "Layer state \"Plan\" imported, 5 layers.");
    layer("A").color = engine::Color::index(5);
    layer("B").on = true;
    layer("C").frozen = false;
    c.run({"LAYERSTATE", "R", "Plan"});
    EXPECT_EQ(layer("A").color, engine::Color::rgb(1, 2, 3));
    EXPECT_TRUE(!layer("B").on && layer("C").frozen);
    EXPECT_EQ(layer("C").linetype, "Dashed");
    // Only what the state is to restore.
    c.run({"LAYERSTATE", "E", "Plan", "C", ""});
    layer("A").color = engine::Color::index(5);
    layer("B").on = true;
    c.run({"LAS", "R", "Plan"});
    EXPECT_EQ(layer("A").color, engine::Color::rgb(1, 2, 3));
    EXPECT_TRUE(layer("B").on);
    EXPECT_EQ(c.run({"LAYERSTATE", "I", "/nowhere/x"}), Lines{"Cannot open \"/nowhere/x.las\"."});
    std::filesystem::remove(path);
    for (const char* bad : {"", "0", "x\ny\n", "0\nLAYERSTATE\n8\nA\n", "0\nLAYERSTATE\n1\na/b\n", "91\n1\n8\nA\n62"})
        EXPECT_TRUE(parseLayerStates(bad).empty()) << bad;
}

TEST_F(LayerTools, HiddenObjectsAreOutOfReach) {
    c.run({"HIDEOBJECTS", "50,10"});
    EXPECT_EQ(c.feed(""), Lines{"1 object hidden."});
    EXPECT_EQ(c.feed("SELECTALL").size(), 1u);
    EXPECT_EQ(c.selected().size(), 3u);
    EXPECT_EQ(c.drawing().extents(c.drawing().modelSpace()).max.y, 30.0);
    c.run({"DESELECT", "SELECT", "50,0", "50,20", ""});
    EXPECT_EQ(c.feed("ISOLATE"), Lines{"2 objects isolated, 1 object hidden."});
    EXPECT_EQ(c.feed("UNHIDE"), Lines{"2 objects shown."});
    c.feed("U");
    c.feed("U");
    EXPECT_TRUE(c.entities()[3]->visible);
    EXPECT_FALSE(c.entities()[1]->visible);
}

TEST_F(LayerTools, GetselElevAndFilter) {
    c.add(engine::CircleEntity({50, 60}, 5)).layer = Name("A");
    EXPECT_EQ(c.run({"GETSEL", "50,10", "line"}), (Lines{"Collecting all LINE objects on layer A...",
                                                         "1 object have been placed in the active selection set."}));
    EXPECT_EQ(c.selected(), std::vector<std::uint64_t>{c.entities()[1]->id()});
    EXPECT_EQ(c.run({"GETSEL", "A", ""}).front(), "Collecting all objects on layer A...");
    EXPECT_EQ(c.selected().size(), 2u);
    EXPECT_EQ(c.run({"GETSEL", "", "55,60"}).front(), "Collecting all CIRCLE objects...");
    EXPECT_EQ(c.selected(), std::vector<std::uint64_t>{c.entities()[4]->id()});
    c.run({"GETSEL", "*", "*"});
    EXPECT_EQ(c.selected().size(), 5u);
    EXPECT_EQ(c.feed("FILTER").back(), "Use QSELECT instead.");

    c.feed("ELEV");
    EXPECT_EQ(c.prompt(), "Specify new default elevation <0>:");
    c.feed("2.5");
    EXPECT_EQ(c.prompt(), "Specify new default thickness <0>:");
    c.feed("4");
    c.run({"LINE", "0,70", "1,70", ""});
    EXPECT_EQ(c.entities().back()->elevation, 2.5);
    EXPECT_EQ(c.entities().back()->thickness(), 4.0);
    c.run({"U", "U"});
    EXPECT_EQ(engine::sysVarReal(c.drawing(), "ELEVATION"), 0.0);
    c.run({"ELEV", "", ""});
    EXPECT_FALSE(c.document.history().canUndo() && c.document.history().undoLabel() == "ELEV");
}

}  // namespace
}  // namespace kova::cmd
