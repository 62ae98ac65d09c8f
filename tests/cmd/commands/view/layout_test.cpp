#include <gtest/gtest.h>

#include "cmd/draw_harness.hpp"
#include "doc/pick/picking.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/viewport.hpp"

namespace kova::cmd {
namespace {

using engine::ViewportEntity;
using math::Vector2;

std::vector<std::string> layoutNames(Console& c) {
    std::vector<std::string> names;
    for (const auto& layout : c.drawing().layouts()) names.push_back(layout->name.str());
    return names;
}
std::string tab(Console& c) { return engine::sysVarString(c.drawing(), "CTAB"); }

// LAYOUT -----------------------------------------------------------------------------------------------------

TEST(Layout, IsMadeCopiedRenamedAndDeleted) {
    DrawConsole c;
    c.run({"LAYOUT", "N"});
    EXPECT_EQ(c.prompt(), "Enter new Layout name <Layout3>:");
    c.feed("Plan");
    EXPECT_EQ(c.run({"LAYOUT", "N", "plan"}), Lines{"Layout \"plan\" already exists."});
    EXPECT_EQ(c.feed("a/b"), Lines{"Invalid layout name \"a/b\"."});
    c.feed("");
    EXPECT_EQ(layoutNames(c), (std::vector<std::string>{"Layout1", "Layout2", "Plan", "Layout3"}));
    c.run({"LAYOUT", "S", "Plan"});
    EXPECT_EQ(tab(c), "Plan");
    c.addLine(0, 0, 10, 10);
    c.drawing().activeLayout()->pageSetup.paperWidth = 841;
    c.run({"LAYOUT", "C", ""});
    EXPECT_EQ(c.prompt(), "Enter layout name for copy <Plan (2)>:");
    c.feed("");
    const engine::Layout* copy = c.drawing().findLayout("Plan (2)");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->entities.size(), 1u);
    EXPECT_EQ(copy->pageSetup.paperWidth, 841.0);
    EXPECT_NE(copy->entities.first()->handle(), c.entities()[0]->handle());
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().findLayout("Plan (2)"), nullptr);
    c.run({"LAYOUT", "R", "", "Sheet"});
    EXPECT_EQ(tab(c), "Sheet");
    EXPECT_EQ(c.run({"LAYOUT", "D", ""}), Lines{"Layout \"Sheet\" deleted."});
    EXPECT_EQ(c.run({"LAYOUT", "D", "*"}).back(), "The drawing's last layout cannot be deleted.");
    EXPECT_EQ(c.drawing().layouts().size(), 1u);
    EXPECT_EQ(c.run({"LAYOUT", "D", "Model"}), Lines{"The model tab cannot be deleted."});
    c.processor.cancel();
    EXPECT_EQ(c.run({"LAYOUT", "S", "Nowhere"}), Lines{"Layout \"Nowhere\" not found."});
    c.feed("Model");
    EXPECT_EQ(tab(c), "Model");
}

TEST(Layout, CarriesSheetsFromOneFileToAnother) {
    struct Files : DrawConsole {
        std::string writeDrawing(const engine::Drawing& drawing, const std::string& path) override {
            calls.push_back("write " + path);
            const engine::Layout& layout = *drawing.layouts().front();
            names = layout.name.str() + " " + std::to_string(drawing.layouts().size());
            for (const engine::Entity& entity : layout.entities) kept.push_back(entity.clone());
            inModel = drawing.modelSpace().size();
            return failure;
        }
        std::string readDrawing(const std::string&, engine::Drawing& drawing) override {
            engine::Layer layer;
            layer.name = "Frame";
            drawing.layers.add(layer);
            auto line = std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{1, 1});
            line->layer = "Frame";
            drawing.layouts().front()->entities.append(std::move(line));
            return failure;
        }
        std::string names;
        std::vector<std::unique_ptr<engine::Entity>> kept;
        std::size_t inModel = 9;
    } c;
    c.addLine(0, 0, 5, 5);
    c.run({"LAYOUT", "S", "Layout2"});
    c.addLine(0, 0, 7, 7);
    EXPECT_EQ(c.run({"LAYOUT", "SA", "", "/nowhere/x.dxf"}), Lines{"Saved: /nowhere/x.dxf"});
    EXPECT_EQ(c.names, "Layout2 1");
    EXPECT_EQ(c.inModel, 0u);
    ASSERT_EQ(c.kept.size(), 1u);
    EXPECT_EQ(c.run({"LAYOUT", "T", "any.dwt", "Layout1"}), Lines{"1 layout imported."});
    const engine::Layout* fresh = c.drawing().findLayout("Layout1 (2)");
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->entities.size(), 1u);
    EXPECT_TRUE(c.drawing().layers.contains("Frame"));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: LAYOUT"});
    EXPECT_FALSE(c.drawing().layers.contains("Frame"));
}

// MVIEW and the spaces -----------------------------------------------------------------------------------------

TEST(Mview, OpensWindowsThatShowTheModel) {
    DrawConsole c;
    EXPECT_EQ(c.feed("MVIEW"), Lines{"** Command not allowed in Model Tab **"});
    c.addLine(0, 0, 200, 100);
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "10,10"});
    EXPECT_EQ(c.prompt(), "Specify opposite corner:");
    EXPECT_EQ(c.feed("10,60"), Lines{"A viewport needs a width and a height."});
    c.feed("110,60");
    const auto& viewport = c.only<ViewportEntity>();
    expectNear(viewport.center, {60, 35});
    EXPECT_EQ(viewport.width, 100.0);
    EXPECT_EQ(viewport.vpId, 2);
    EXPECT_TRUE(viewport.modelWindow().contains_box({{0, 0}, {200, 100}}));
    EXPECT_NEAR(viewport.viewScale, 0.5, 0.02);
    c.run({"MVIEW", "3", "A", ""});
    EXPECT_EQ(c.count(), 4u);
    EXPECT_EQ(c.last<ViewportEntity>().vpId, 5);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MVIEW"});
    EXPECT_EQ(c.count(), 1u);
    c.run({"MVIEW", "L", "ON", "ALL", ""});
    EXPECT_TRUE(c.only<ViewportEntity>().locked);
    c.run({"MVIEW", "OFF", "ALL", ""});
    EXPECT_FALSE(c.only<ViewportEntity>().isOn());
    EXPECT_EQ(c.feed("MSPACE"), Lines{"There is no active viewport."});
    c.run({"MVIEW", "ON", "ALL", ""});
    EXPECT_TRUE(c.only<ViewportEntity>().isOn());
}

TEST(Spaces, WorkGoesThroughTheViewport) {
    DrawConsole c;
    EXPECT_EQ(c.feed("MSPACE"), Lines{"** Command not allowed in Model Tab **"});
    EXPECT_EQ(c.feed("PSPACE"), Lines{"** Command not allowed in Model Tab **"});
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "FIT", "MSPACE"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CVPORT"), 2);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "TILEMODE"), 0);
    c.run({"LINE", "0,0", "10,0", ""});
    EXPECT_EQ(c.drawing().modelSpace().size(), 1u);
    EXPECT_EQ(c.feed("PSPACE"), Lines{});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CVPORT"), 1);
    c.run({"LINE", "0,0", "10,0", ""});
    EXPECT_EQ(c.drawing().modelSpace().size(), 1u);
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.run({"UNDO", "UNDO", "UNDO"}).back(), "Undone: LINE");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CVPORT"), 2);
    // Without its viewport the model is out of reach.
    c.feed("PSPACE");
    c.run({"CVPORT", "2"});
    EXPECT_NE(c.drawing().activeViewport(), nullptr);
    c.feed("PSPACE");
    c.run({"ERASE", "ALL", ""});
    EXPECT_EQ(c.feed("MSPACE"), Lines{"There is no active viewport."});
    c.feed("MODEL");
    EXPECT_EQ(tab(c), "Model");
}

TEST(Vplayer, FreezesLayersInViewports) {
    DrawConsole c;
    c.run({"LAYER", "N", "A1,A2,B", ""});
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "2", "", ""});
    ASSERT_EQ(c.count(), 2u);
    c.run({"VPLAYER", "F", "A*"});
    EXPECT_EQ(c.prompt(), "Enter an option [All/Select/Current] <Current>:");
    c.run({"", "F", "B", "A", "T", "A1", "A", "N", "New", ""});
    EXPECT_TRUE(c.idle());
    auto* other = static_cast<ViewportEntity*>(c.entities()[0]);
    auto* current = static_cast<ViewportEntity*>(c.entities()[1]);
    EXPECT_FALSE(current->isFrozenHere("A1"));
    EXPECT_TRUE(current->isFrozenHere("A2") && current->isFrozenHere("B") && current->isFrozenHere("New"));
    EXPECT_TRUE(!other->isFrozenHere("A2") && other->isFrozenHere("B"));
    EXPECT_TRUE(c.drawing().layers.contains("New"));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: VPLAYER"});
    EXPECT_TRUE(static_cast<ViewportEntity*>(c.entities()[1])->vpFrozenLayers.empty());
}

TEST(Vplayer, EachSelectionOfViewportsBeginsAnew) {
    DrawConsole c;
    c.run({"LAYER", "N", "A,B", ""});
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "2", "", ""});
    auto* one = static_cast<ViewportEntity*>(c.entities()[0]);
    auto* two = static_cast<ViewportEntity*>(c.entities()[1]);
    c.run({"VPLAYER", "F", "A", "S", namedPick(one->handle()), "", "F", "\"B\"", "S", namedPick(two->handle()), "", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_TRUE(one->isFrozenHere("A") && !one->isFrozenHere("B"));
    EXPECT_TRUE(!two->isFrozenHere("A") && two->isFrozenHere("B"));
}

// ZOOM, PAN, VIEW ------------------------------------------------------------------------------------------------

const engine::NamedView& shown(DrawConsole& c) { return c.drawing().currentView; }

TEST(Zoom, ShowsWindowsExtentsAndScales) {
    DrawConsole c;
    const double ratio = shown(c).width / shown(c).height;
    c.addLine(1000, 1000, 1200, 1010);
    c.feed("ZOOM");
    EXPECT_EQ(c.prompt(),
              "Specify corner of window, enter a scale factor (nX or nXP), or "
              "[All/Center/Dynamic/Extents/Previous/Scale/Window/Object] <real time>:");
    c.feed("E");
    expectNear(shown(c).center, {1100, 1005});
    EXPECT_NEAR(shown(c).width, 200.0, 1e-9);
    EXPECT_NEAR(shown(c).width / shown(c).height, ratio, 1e-9);
    c.run({"ZOOM", "2X"});
    EXPECT_NEAR(shown(c).width, 100.0, 1e-9);
    c.run({"ZOOM", "W", "0,0", "10,100"});
    expectNear(shown(c).center, {5, 50});
    EXPECT_NEAR(shown(c).height, 100.0, 1e-9);
    c.run({"ZOOM", "P", "ZOOM", "P"});
    EXPECT_NEAR(shown(c).width, 200.0, 1e-9);
    c.run({"ZOOM", "C", "3,4", "50"});
    expectNear(shown(c).center, {3, 4});
    EXPECT_NEAR(shown(c).height, 50.0, 1e-9);
    c.run({"ZOOM", "0.5"});
    EXPECT_NEAR(shown(c).height, 2.0 * 297.0, 1e-6);
    c.run({"ZOOM", "1,1", "4,3"});
    expectNear(shown(c).center, {2.5, 2});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ZOOM"});
    EXPECT_EQ(c.run({"ZOOM", "-3"}), Lines{"Invalid value."});
    EXPECT_EQ(c.feed("here"), Lines{"Invalid point or option keyword."});
    EXPECT_EQ(c.run({"1xp"}), Lines{"A scale of paper units needs a viewport of a layout."});
    EXPECT_EQ(c.run({"ZOOM", "D"}), Lines{"Dynamic zoom needs a window, which kovacad-cli does not have."});
    EXPECT_TRUE(c.idle());
}

TEST(Zoom, ScalesAViewportUnlessItIsLocked) {
    DrawConsole c;
    c.addLine(0, 0, 1000, 1000);
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "100,100", "MSPACE"});
    c.run({"ZOOM", "1/50xp"});
    const ViewportEntity* viewport = c.drawing().activeViewport();
    ASSERT_NE(viewport, nullptr);
    EXPECT_NEAR(viewport->viewScale, 0.02, 1e-12);
    c.run({"PAN", "0,0", "10,20"});
    expectNear(c.drawing().activeViewport()->viewTarget, {490, 480});
    c.run({"PSPACE", "MVIEW", "L", "ON", "ALL", "", "MSPACE"});
    EXPECT_EQ(c.run({"ZOOM", "1xp"}), Lines{"Viewport is view-locked."});
    c.feed("PSPACE");
    EXPECT_EQ(c.run({"ZOOM", "E"}), Lines{"The sheet is always shown whole here."});
}

TEST(Mspace, WhatIsDrawnThroughAViewportIsOfModelSpace) {
    DrawConsole c;
    engine::setSysVar(c.drawing(), "DIMLFAC", -2.0);  // counts on paper only
    const auto shown = [&] {
        const Lines lines = c.run({"DIMLINEAR", "0,0", "100,0", "50,20"});
        return lines.empty() ? std::string() : lines.back();
    };
    c.run({"LAYOUT", "S", "Layout1"});
    EXPECT_EQ(shown(), "Dimension text = 200");
    c.run({"MVIEW", "0,0", "200,200", "MSPACE"});
    EXPECT_EQ(shown(), "Dimension text = 100");
    ASSERT_EQ(c.drawing().modelSpace().size(), 1u);
    const auto& stored = static_cast<const engine::DimensionEntity&>(*c.drawing().modelSpace().last());
    EXPECT_EQ(stored.textContent(), "100");
    c.feed("PSPACE");
    EXPECT_EQ(shown(), "Dimension text = 200");
    // A block that is edited is no sheet, whichever tab it was opened from.
    c.drawing().addBlock("B")->entities.append(std::make_unique<engine::LineEntity>());
    c.run({"BEDIT", "B"});
    EXPECT_EQ(shown(), "Dimension text = 100");
}

TEST(Mspace, AReferenceEditedThroughAViewportStandsInModelSpace) {
    DrawConsole c;
    c.drawing().addBlock("B")->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{10, 0}));
    c.add(engine::BlockReferenceEntity("B", Vector2{50, 50}));
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "200,200", "MSPACE", "REFEDIT", "55,50", "", "ALL", "NO"});
    ASSERT_TRUE(c.document.referenceEdit());
    c.run({"LINE", "50,60", "60,60", "", "REFCLOSE", "S"});
    EXPECT_EQ(c.drawing().findBlock("B")->entities.size(), 2u);
    EXPECT_EQ(c.drawing().modelSpace().size(), 1u);
}

TEST(Mspace, EntersTheNewestViewportOrTheOneThatWasLeft) {
    DrawConsole c;
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "50,50", "MVIEW", "60,0", "110,50", "MSPACE"});
    const ViewportEntity* second = c.drawing().activeViewport();
    ASSERT_NE(second, nullptr);
    EXPECT_NEAR(second->center.x, 85.0, 1e-9);
    c.run({"PSPACE", "MVIEW", "120,0", "170,50", "MSPACE"});
    const ViewportEntity* third = c.drawing().activeViewport();
    ASSERT_NE(third, nullptr);
    EXPECT_NEAR(third->center.x, 145.0, 1e-9);
    c.run({"PSPACE", "MVIEW", "OFF", "L", "", "MSPACE"});
    EXPECT_EQ(c.drawing().activeViewport(), second);
    c.run({"PSPACE", "MVIEW", "ON", "ALL", "", "MSPACE"});
    EXPECT_EQ(c.drawing().activeViewport(), second);
}

TEST(View, KeepsViewsUnderNames) {
    DrawConsole c;
    c.run({"ZOOM", "C", "10,20", "30"});
    c.run({"VIEW", "S", "Here"});
    c.run({"VIEW", "W", "Part", "0,0", "8,4"});
    c.run({"ZOOM", "A"});
    c.run({"VIEW", "R", "here"});
    expectNear(shown(c).center, {10, 20});
    EXPECT_NEAR(shown(c).height, 30.0, 1e-9);
    c.run({"VIEW", "R", "Part"});
    expectNear(shown(c).center, {4, 2});
    c.run({"VIEW", "S", "Part"});
    EXPECT_EQ(c.prompt(), "View \"Part\" already exists. Replace it? [Yes/No] <N>:");
    c.processor.cancel();
    EXPECT_EQ(c.run({"VIEW", "?", ""}).front().substr(0, 8), "  \"Here\"");
    EXPECT_EQ(c.run({"VIEW", "R", "Nowhere"}), Lines{"Cannot find view \"Nowhere\"."});
    c.feed("");
    EXPECT_EQ(c.run({"VIEW", "D", "*"}), Lines{"2 views deleted."});
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().namedViews.size(), 2u);
}

}  // namespace
}  // namespace kova::cmd
