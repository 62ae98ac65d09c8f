#include <gtest/gtest.h>

#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

using engine::Layer;

class LayerCommand : public ::testing::Test {
protected:
    const Layer& layer(const char* name) {
        const Layer* found = c.drawing().layers.find(name);
        EXPECT_NE(found, nullptr) << name;
        static const Layer none;
        return found != nullptr ? *found : none;
    }
    bool has(const char* name) { return c.drawing().layers.contains(name); }
    Console c;
};

constexpr const char* kPrompt =
    "Enter an option [?/Make/Set/New/Rename/ON/OFF/Color/Ltype/LWeight/TRansparency/Plot/Freeze/Thaw/LOck/Unlock/stAte/"
    "Description]:";

TEST_F(LayerCommand, MakesSetsAndLoopsUntilEnter) {
    EXPECT_EQ(c.feed("-LAYER"), Lines{"Current layer: \"0\""});
    EXPECT_EQ(c.prompt(), kPrompt);
    EXPECT_EQ(c.feed("ma"), Lines{"Invalid option keyword."});
    c.feed("M");
    EXPECT_EQ(c.prompt(), "Enter name for new layer (becomes the current layer) <0>:");
    c.feed("Walls");
    EXPECT_EQ(c.prompt(), kPrompt);
    EXPECT_EQ(c.drawing().currentLayer, "Walls");
    c.run({"N", " Doors,\"Wall lines\",doors"});
    EXPECT_EQ(c.lines.back(), "Layer \"doors\" already exists.");
    EXPECT_TRUE(has("Wall lines"));
    EXPECT_EQ(layer("Doors").color, engine::Color::index(7));
    c.feed("S");
    EXPECT_EQ(c.prompt(), "Enter layer name to make current or <select object>:");
    EXPECT_EQ(c.feed("Nope"), Lines{"Unknown layer \"Nope\"."});
    c.feed("doors");
    EXPECT_EQ(c.drawing().currentLayer.str(), "Doors");
    c.feed("");
    EXPECT_TRUE(c.idle());
    // One undo step for all of it.
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LAYER"});
    EXPECT_FALSE(has("Walls"));
    EXPECT_EQ(c.drawing().currentLayer, "0");
    c.feed("REDO");
    EXPECT_TRUE(has("Wall lines"));
    EXPECT_EQ(c.drawing().currentLayer, "Doors");
}

TEST_F(LayerCommand, NameListsTakeCommasAndWildcardsAllOrNothing) {
    c.run({"LAYER", "N", "A-1,A-2,B-1"});
    c.feed("LO");
    EXPECT_EQ(c.prompt(), "Enter name list of layer(s) to lock:");
    EXPECT_EQ(c.feed("A-1,X"), Lines{"Unknown layer \"X\"."});
    EXPECT_FALSE(layer("A-1").locked);
    EXPECT_EQ(c.feed("Q*"), Lines{"No matching names found."});
    c.feed("a-*,b-1");
    EXPECT_TRUE(layer("A-1").locked && layer("A-2").locked && layer("B-1").locked);
    c.run({"U", "*-1"});
    EXPECT_TRUE(!layer("A-1").locked && layer("A-2").locked && !layer("B-1").locked);
    c.run({"OFF", "A-?", "ON", "A-2", "F", "B-1", "T", "*"});
    EXPECT_TRUE(!layer("A-1").on && layer("A-2").on && !layer("B-1").frozen);
    c.run({"F", "B-1", ""});
    EXPECT_TRUE(layer("B-1").frozen);
    EXPECT_EQ(c.feed("CLAYER B-1").size(), 1u);
}

TEST_F(LayerCommand, ValuesGoToTheNamedLayersOrTheCurrentOne) {
    c.run({"LAYER", "N", "A,B", "C"});
    EXPECT_EQ(c.prompt(), "New color [Truecolor/COlorbook]:");
    EXPECT_EQ(c.feed("300"), Lines{"Invalid color. Enter ByLayer/ByBlock/1-255:"});
    EXPECT_EQ(c.feed("reddish"), Lines{"Invalid color format. Enter color:"});
    EXPECT_EQ(c.feed("bylayer").size(), 1u);
    c.feed("1");
    EXPECT_EQ(c.prompt(), "Enter name list of layer(s) for color 1 (red) <0>:");
    c.feed("");
    EXPECT_EQ(layer("0").color, engine::Color::index(1));
    c.run({"Color", "T", "10,20,30", "A,B"});
    EXPECT_EQ(layer("B").color, engine::Color::rgb(10, 20, 30));
    EXPECT_EQ(c.run({"L", "nosuch"}), Lines{"Unknown linetype \"nosuch\"."});
    c.feed("hidden");
    EXPECT_EQ(c.prompt(), "Enter name list of layer(s) for linetype \"Hidden\" <0>:");
    c.feed("A");
    EXPECT_EQ(layer("A").linetype, "Hidden");
    EXPECT_TRUE(c.drawing().linetypes.contains("Hidden"));
    EXPECT_EQ(c.run({"LW", "3"}), Lines{"Invalid value."});
    EXPECT_EQ(c.feed("bylayer"), Lines{"Invalid value."});
    c.run({"0.26mm", "A"});
    EXPECT_EQ(layer("A").lineweight, 25);
    EXPECT_EQ(c.run({"TR", "91"}), Lines{"Invalid number. Enter 0-90:"});
    c.run({"50", "A,B"});
    EXPECT_EQ(layer("B").transparency, 50);
    c.run({"P", "N", "A", "D", "walls, inner ones", "A", ""});
    EXPECT_FALSE(layer("A").plottable);
    EXPECT_EQ(layer("A").description, "walls, inner ones");
    c.feed("U");
    EXPECT_FALSE(has("A"));
    EXPECT_FALSE(c.drawing().linetypes.contains("Hidden"));
    EXPECT_EQ(layer("0").color, engine::Color::index(7));
}

TEST_F(LayerCommand, TheCurrentLayerIsProtected) {
    EXPECT_EQ(c.run({"LAYER", "F", "0"}),
              (Lines{"Current layer: \"0\"", "Cannot freeze layer \"0\". It is the CURRENT layer."}));
    EXPECT_FALSE(layer("0").frozen);
    c.run({"OFF", "0"});
    EXPECT_EQ(c.prompt(), "Really want layer \"0\" (the CURRENT layer) off? [Yes/No] <No>:");
    c.feed("");
    EXPECT_TRUE(layer("0").on);
    c.run({"OFF", "*", "Y"});
    EXPECT_FALSE(layer("0").on);
    c.run({"ON", "*", "", "EXPERT 1", "LAYER", "OFF", "0"});
    EXPECT_EQ(c.prompt(), kPrompt);
    EXPECT_FALSE(layer("0").on);
}

TEST_F(LayerCommand, RenamesWithEverythingOnTheLayer) {
    c.run({"LAYER", "M", "Walls", "", "LINE 0,0 1,1", "", "LAYER", "R", "walls", "bad|name*"});
    EXPECT_EQ(c.prompt(), "Enter new layer name:");
    c.run({"Outer walls", ""});
    EXPECT_EQ(c.entities()[0]->layer, "Outer walls");
    EXPECT_EQ(c.drawing().currentLayer, "Outer walls");
    EXPECT_EQ(c.run({"LAYER", "R", "Nope"}).back(), "Unknown layer \"Nope\".");
    c.run({"R", "0", "Zero", ""});
    EXPECT_TRUE(has("0"));
    EXPECT_TRUE(c.idle());
}

TEST_F(LayerCommand, RefusesNamesThatNoTableCanHold) {
    c.run({"LAYER", "N"});
    for (const char* name : {"a<b", "a/b", "x;y", "bad*", "q?"})
        EXPECT_EQ(c.feed(name), Lines{"Invalid layer name \"" + std::string(name) + "\"."}) << name;
    EXPECT_EQ(c.feed("good,bad|"), Lines{"Invalid layer name \"bad|\"."});
    EXPECT_FALSE(has("good"));
    c.feed(std::string(300, 'x'));
    EXPECT_EQ(c.prompt(), "Enter name list for new layer(s):");
    c.run({"", "M"});
    EXPECT_EQ(c.feed("a,b"), Lines{"Invalid layer name \"a,b\"."});
}

TEST_F(LayerCommand, StatesSaveAndRestoreWhatTheyAreAskedTo) {
    c.run({"LAYER", "N", "A,B", "C", "1", "A", "A"});
    EXPECT_EQ(c.prompt(), "Enter an option [?/Save/Restore/Edit/Name/Delete/Import/EXport]:");
    c.run({"S", "Before", ""});
    EXPECT_EQ(c.prompt(), kPrompt);
    c.run({"C", "5", "A", "LO", "A,B", "F", "B", "A", "S", "Locks", "L", "", "U", "*", "A", "S", "before"});
    EXPECT_EQ(c.lines.back(), "Layer state \"before\" already exists.");
    c.feed("");
    c.run({"A", "R", "locks"});
    EXPECT_TRUE(layer("A").locked);
    EXPECT_TRUE(layer("B").frozen);
    EXPECT_EQ(layer("A").color, engine::Color::index(5));
    c.run({"A", "R", "Before"});
    EXPECT_FALSE(layer("A").locked);
    EXPECT_FALSE(layer("B").frozen);
    EXPECT_EQ(layer("A").color, engine::Color::index(1));
    EXPECT_EQ(c.run({"A", "?", ""}).size(), 2u);
    EXPECT_EQ(c.run({"A", "D", "nope"}), Lines{"Unknown layer state \"nope\"."});
    c.run({"Locks", "A", "N", "Before", "Start", ""});
    ASSERT_EQ(c.drawing().layerStates.size(), 1u);
    EXPECT_EQ(c.drawing().layerStates[0].name, "Start");
    c.feed("U");
    EXPECT_TRUE(c.drawing().layerStates.empty());
}

TEST_F(LayerCommand, ListsAndCancelKeepsWhatWasDone) {
    c.run({"LAYER", "N", "Zulu,alpha"});
    const Lines listed = c.run({"?", ""});
    ASSERT_EQ(listed.size(), 5u);
    EXPECT_NE(listed[1].find("\"0\""), std::string::npos);
    EXPECT_NE(listed[2].find("\"alpha\""), std::string::npos);
    EXPECT_NE(listed[4].find("\"Zulu\""), std::string::npos);
    EXPECT_TRUE(c.document.isGroupOpen());
    c.processor.cancel();
    EXPECT_FALSE(c.document.isGroupOpen());
    EXPECT_TRUE(has("alpha"));
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LAYER"});
    // Nothing was changed: nothing to undo.
    c.run({"LAYER", ""});
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
}

TEST_F(LayerCommand, SetByObject) {
    c.run({"LAYER", "N", "A", ""});
    c.addLine(0, 0, 100, 0).layer = "A";
    c.run({"LAYER", "S", "", "50,0", ""});
    EXPECT_EQ(c.drawing().currentLayer, "A");
}

}  // namespace
}  // namespace kova::cmd
