#include "engine/symbols/symbols.hpp"

#include "doc_tools.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/table_entity.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "engine/entities/viewport.hpp"

namespace kova::doc {
namespace {

using engine::SymbolKind;
using test::makeLine;

class Symbols : public ::testing::Test {
protected:
    engine::Drawing& drawing() { return document.drawing(); }
    std::string rename(SymbolKind kind, const char* from, const char* to) {
        return document.renameSymbol(kind, from, to);
    }
    Document document;
};

TEST(SymbolNames, Validity) {
    for (const char* good : {"0", "Walls", "a b", "W\xC3\xA4nde", "$", "x.y-z_#", "*"})
        EXPECT_EQ(engine::isValidSymbolName(good), std::string(good) != "*") << good;
    for (const char* bad : {"", "a<b", "a>b", "a/b", "a\\b", "a\"b", "a:b", "a;b", "a?b", "a*b", "a|b", "a,b", "a=b",
                            "a`b", "a\nb", "a\x7f"})
        EXPECT_FALSE(engine::isValidSymbolName(bad)) << bad;
    EXPECT_TRUE(engine::isValidSymbolName(std::string(255, 'x')));
    EXPECT_FALSE(engine::isValidSymbolName(std::string(256, 'x')));
    std::string umlauts;
    for (int i = 0; i < 255; ++i) umlauts += "\xC3\xA4";
    EXPECT_TRUE(engine::isValidSymbolName(umlauts));
    EXPECT_FALSE(engine::isValidSymbolName(umlauts + "x"));
}

TEST_F(Symbols, Refusals) {
    drawing().layers.ensure("A");
    drawing().layers.ensure("B");
    EXPECT_EQ(rename(SymbolKind::Layer, "Z", "Y"), "Layer \"Z\" not found.");
    EXPECT_EQ(rename(SymbolKind::Layer, "a", "b"), "Layer \"B\" already exists.");
    EXPECT_EQ(rename(SymbolKind::Layer, "A", "x|y"), "Invalid layer name \"x|y\".");
    EXPECT_EQ(rename(SymbolKind::Layer, "0", "ZERO"), "Layer \"0\" cannot be renamed.");
    EXPECT_EQ(rename(SymbolKind::Linetype, "bylayer", "X"), "Linetype \"ByLayer\" cannot be renamed.");
    EXPECT_EQ(rename(SymbolKind::TextStyle, "Standard", "X"), "Text style \"Standard\" cannot be renamed.");
    EXPECT_EQ(rename(SymbolKind::Layout, "Layout1", "model"), "Invalid layout name \"model\".");
    EXPECT_EQ(rename(SymbolKind::Ucs, "U", "V"), "UCS \"U\" not found.");
    EXPECT_EQ(rename(SymbolKind::Layer, "A", "A"), "");
    EXPECT_FALSE(document.history().canUndo());
    // Another spelling of the same name is a rename.
    EXPECT_EQ(rename(SymbolKind::Layer, "A", "a"), "");
    EXPECT_EQ(drawing().layers.find("A")->name.str(), "a");
    EXPECT_EQ(document.history().undoLabel(), "Rename A to a");
    document.undo();
    EXPECT_EQ(drawing().layers.find("A")->name.str(), "A");
}

TEST_F(Symbols, LayerRenameReachesEveryReference) {
    drawing().layers.ensure("Walls");
    drawing().currentLayer = "Walls";
    engine::Block* block = drawing().addBlock("B");
    auto text = std::make_unique<engine::TextEntity>();
    text->layer = "WALLS";
    engine::Entity& inModel = drawing().modelSpace().append(std::move(text));
    engine::Entity& onPaper = drawing().findLayout("Layout2")->entities.append(makeLine(0, 0, 1, 1));
    engine::Entity& inBlock = block->entities.append(makeLine(0, 0, 1, 1));
    engine::Entity& other = drawing().modelSpace().append(makeLine(0, 0, 1, 1));
    onPaper.layer = "walls";
    inBlock.layer = "Walls";
    engine::XData data;
    data.set("KOVA_TEST", {{1003, std::string("WALLS")}, {1000, std::string("Walls")}});
    other.setXdata(data);
    engine::LayerFilter& filter = drawing().layerFilters.ensure("F");
    filter.members = {"0", "walls"};
    drawing().layerStates.ensure("S").layers = {{"Walls", {}}, {"0", {}}};

    EXPECT_EQ(engine::countReferences(drawing(), SymbolKind::Layer, "walls"), 5U);  // filters and states are soft
    EXPECT_EQ(rename(SymbolKind::Layer, "WALLS", "Partitions"), "");
    EXPECT_EQ(document.history().undoLabel(), "Rename Walls to Partitions");
    const auto expectAll = [&](const char* name) {
        EXPECT_TRUE(drawing().layers.contains(name));
        EXPECT_EQ(drawing().layers.size(), 3U);
        for (const engine::Entity* e : {&inModel, &onPaper, &inBlock}) EXPECT_EQ(e->layer.str(), name);
        EXPECT_EQ(other.layer.str(), "0");
        EXPECT_EQ(std::get<std::string>((*other.xdata()->find("KOVA_TEST"))[0].value), name);
        EXPECT_EQ(std::get<std::string>((*other.xdata()->find("KOVA_TEST"))[1].value), "Walls");
        EXPECT_EQ(drawing().currentLayer.str(), name);
        EXPECT_EQ(drawing().layerFilters.find("F")->members[1].str(), name);
        EXPECT_EQ(drawing().layerStates.find("S")->layers[0].first.str(), name);
    };
    expectAll("Partitions");
    EXPECT_EQ(engine::countReferences(drawing(), SymbolKind::Layer, "walls"), 0U);
    document.undo();
    expectAll("Walls");
    document.redo();
    expectAll("Partitions");
}

TEST_F(Symbols, LinetypesAndStylesOfRecords) {
    drawing().linetypes.ensure("Dashed");
    drawing().textStyles.ensure("Notes");
    engine::Block* arrow = drawing().addBlock("Arrow");
    ASSERT_NE(arrow, nullptr);
    drawing().layers.ensure("L").linetype = "DASHED";
    drawing().modelSpace().append(makeLine(0, 0, 1, 1)).linetype = "dashed";
    engine::DimStyle& dim = *drawing().dimStyles.find("Standard");
    dim.extLine2Linetype = "Dashed";
    dim.textStyle = "Notes";
    dim.arrowBlock2 = "Arrow";
    drawing().mleaderStyles.find("Standard")->textStyle = "Notes";
    drawing().tableStyles.find("Standard")->textStyle = "Notes";
    engine::LinetypeElement element;
    element.style = "notes";
    drawing().linetypes.find("Dashed")->elements.push_back(element);
    drawing().dimStyleNameOverrides = {{"DIMBLK", "ARROW"}, {"DIMLTYPE", "Dashed"}, {"DIMTXSTY", "Notes"}};
    auto text = std::make_unique<engine::TextEntity>();
    text->textStyle = "Notes";
    auto& styled = static_cast<engine::TextEntity&>(drawing().modelSpace().append(std::move(text)));

    const engine::ReferenceCounts counts(drawing());
    EXPECT_EQ(counts.of(SymbolKind::Linetype, "Dashed"), 4U);
    EXPECT_EQ(counts.of(SymbolKind::TextStyle, "NOTES"), 6U);
    EXPECT_EQ(counts.of(SymbolKind::Block, "Arrow"), 2U);
    EXPECT_EQ(counts.of(SymbolKind::Block, "Notes"), 0U);
    for (const SymbolKind kind : {SymbolKind::Linetype, SymbolKind::TextStyle, SymbolKind::Block})
        for (const char* name : {"Dashed", "Notes", "Arrow", "Standard"})
            EXPECT_EQ(counts.of(kind, name), engine::countReferences(drawing(), kind, name)) << name;

    EXPECT_EQ(rename(SymbolKind::Linetype, "Dashed", "Broken"), "");
    EXPECT_EQ(rename(SymbolKind::TextStyle, "Notes", "Remarks"), "");
    EXPECT_EQ(rename(SymbolKind::Block, "Arrow", "Pointer"), "");
    EXPECT_EQ(drawing().layers.find("L")->linetype, "Broken");
    EXPECT_EQ(dim.extLine2Linetype, "Broken");
    EXPECT_EQ(dim.arrowBlock2, "Pointer");
    EXPECT_EQ(styled.textStyle, "Remarks");
    EXPECT_EQ(drawing().linetypes.find("Broken")->elements[0].style, "Remarks");
    EXPECT_EQ(
        drawing().dimStyleNameOverrides,
        (std::map<std::string, std::string>{{"DIMBLK", "Pointer"}, {"DIMLTYPE", "Broken"}, {"DIMTXSTY", "Remarks"}}));
    const engine::ReferenceCounts after(drawing());
    EXPECT_EQ(after.of(SymbolKind::Linetype, "Broken"), 4U);
    EXPECT_EQ(after.of(SymbolKind::TextStyle, "Remarks"), 6U);
    document.undoTo(0);
    EXPECT_EQ(styled.textStyle, "Notes");
    EXPECT_EQ(drawing().findBlock("Arrow"), arrow);
}

TEST_F(Symbols, AnnotationsNameTheirStyles) {
    drawing().dimStyles.ensure("D");
    drawing().mleaderStyles.ensure("M");
    drawing().tableStyles.ensure("T");
    drawing().textStyles.ensure("X");
    drawing().linetypes.ensure("L");
    drawing().addBlock("B");
    engine::EntityList& list = drawing().modelSpace();
    auto& dimension = static_cast<engine::DimensionEntity&>(list.append(std::make_unique<engine::DimensionEntity>()));
    dimension.dimStyleName = "D";
    dimension.nameOverrides = {{"DIMBLK1", "B"}, {"DIMTXSTY", "x"}};
    auto& leader = static_cast<engine::LeaderEntity&>(list.append(std::make_unique<engine::LeaderEntity>()));
    leader.dimStyleName = "D";
    leader.arrowBlock = "B";
    auto& mleader = static_cast<engine::MLeaderEntity&>(list.append(std::make_unique<engine::MLeaderEntity>()));
    mleader.styleName = "M";
    mleader.blockName = "B";
    auto& tolerance = static_cast<engine::ToleranceEntity&>(list.append(std::make_unique<engine::ToleranceEntity>()));
    tolerance.styleName = "D";
    auto& table = static_cast<engine::TableEntity&>(list.append(std::make_unique<engine::TableEntity>()));
    table.styleName = "T";
    table.cells.resize(2);
    table.cells[1].textStyle = "X";
    auto& mline = static_cast<engine::MLineEntity&>(list.append(std::make_unique<engine::MLineEntity>()));
    mline.elements.resize(2);
    mline.elements[1].linetype = "L";

    const engine::ReferenceCounts counts(drawing());
    EXPECT_EQ(counts.of(SymbolKind::DimStyle, "D"), 3U);
    EXPECT_EQ(counts.of(SymbolKind::Block, "B"), 3U);
    EXPECT_EQ(counts.of(SymbolKind::TextStyle, "X"), 2U);
    const std::pair<SymbolKind, const char*> all[] = {{SymbolKind::DimStyle, "D"},   {SymbolKind::MLeaderStyle, "M"},
                                                      {SymbolKind::TableStyle, "T"}, {SymbolKind::TextStyle, "X"},
                                                      {SymbolKind::Linetype, "L"},   {SymbolKind::Block, "B"}};
    for (const auto& [kind, name] : all) EXPECT_EQ(rename(kind, name, (std::string(name) + "2").c_str()), "");
    EXPECT_EQ(dimension.dimStyleName, "D2");
    EXPECT_EQ(dimension.nameOverrides, (std::map<std::string, std::string>{{"DIMBLK1", "B2"}, {"DIMTXSTY", "X2"}}));
    EXPECT_EQ(leader.dimStyleName, "D2");
    EXPECT_EQ(leader.arrowBlock, "B2");
    EXPECT_EQ(mleader.styleName, "M2");
    EXPECT_EQ(mleader.blockName, "B2");
    EXPECT_EQ(tolerance.styleName, "D2");
    EXPECT_EQ(table.styleName, "T2");
    EXPECT_EQ(table.cells[1].textStyle, "X2");
    EXPECT_EQ(mline.elements[1].linetype, "L2");
    document.undoTo(0);
    EXPECT_EQ(leader.arrowBlock, "B");
    EXPECT_EQ(table.styleName, "T");
}

TEST_F(Symbols, BlockReferencesAndViewports) {
    drawing().layers.ensure("Tags");
    drawing().textStyles.ensure("Notes");
    drawing().addBlock("Door");
    engine::Block* house = drawing().addBlock("House");
    auto made = std::make_unique<engine::BlockReferenceEntity>("DOOR", math::Vector2{});
    made->attributes.resize(1);
    made->attributes[0].layer = "Tags";
    made->attributes[0].textStyle = "Notes";
    auto& inside = static_cast<engine::BlockReferenceEntity&>(house->entities.append(std::move(made)));
    auto window = std::make_unique<engine::ViewportEntity>();
    window->vpFrozenLayers = {"0", "tags"};
    auto& viewport = static_cast<engine::ViewportEntity&>(drawing().layouts()[0]->entities.append(std::move(window)));

    EXPECT_EQ(engine::countReferences(drawing(), SymbolKind::Block, "Door"), 1U);
    EXPECT_EQ(engine::countReferences(drawing(), SymbolKind::Block, "House"), 0U);
    EXPECT_EQ(engine::countReferences(drawing(), SymbolKind::Layer, "Tags"), 1U);
    EXPECT_EQ(rename(SymbolKind::Block, "door", "Gate"), "");
    EXPECT_EQ(rename(SymbolKind::Layer, "tags", "Labels"), "");
    EXPECT_EQ(rename(SymbolKind::TextStyle, "notes", "Remarks"), "");
    EXPECT_EQ(inside.blockName, "Gate");
    EXPECT_EQ(inside.attributes[0].layer, "Labels");
    EXPECT_EQ(inside.attributes[0].textStyle, "Remarks");
    EXPECT_EQ(viewport.vpFrozenLayers[1], "Labels");
    document.undoTo(0);
    EXPECT_EQ(inside.blockName.str(), "Door");
    EXPECT_EQ(inside.attributes[0].layer, "Tags");
}

TEST_F(Symbols, LayoutsUcsViewsAndGroups) {
    int spaces = 0;
    QObject::connect(&document, &Document::spaceChanged, &document, [&] { ++spaces; });
    EXPECT_EQ(rename(SymbolKind::Layout, "Layout1", "Plan"), "");
    EXPECT_EQ(drawing().activeLayoutName, "Plan");
    EXPECT_EQ(spaces, 0);  // model space is current
    const std::uint64_t id = document.addEntity(makeLine(0, 0, 1, 1), drawing().findLayout("Plan")->entities).id();
    EXPECT_EQ(rename(SymbolKind::Layout, "Plan", "Sheet"), "");
    document.undo();
    document.undo();
    EXPECT_EQ(drawing().findById(id), nullptr);
    document.redo();
    EXPECT_EQ(drawing().findById(id)->owner(), &drawing().findLayout("Plan")->entities);

    drawing().ucsList.ensure("Front");
    drawing().currentUcs = "Front";
    drawing().ucs.name = "Front";
    EXPECT_EQ(rename(SymbolKind::Ucs, "front", "World"), "Invalid UCS name \"World\".");
    EXPECT_EQ(rename(SymbolKind::Ucs, "front", "Back"), "");
    EXPECT_EQ(drawing().currentUcs, "Back");
    EXPECT_EQ(drawing().ucs.name, "Back");
    drawing().namedViews.ensure("V");
    drawing().groups.ensure("G");
    EXPECT_EQ(rename(SymbolKind::View, "V", "W"), "");
    EXPECT_EQ(rename(SymbolKind::Group, "G", "H"), "");
    EXPECT_TRUE(drawing().namedViews.contains("W"));
    EXPECT_TRUE(drawing().groups.contains("H"));
}

TEST_F(Symbols, UndoGivesBackANameThatCouldNotBeTyped) {
    drawing().layers.ensure("a*b");
    engine::Entity& line = drawing().modelSpace().append(makeLine(0, 0, 1, 1));
    line.layer = "a*b";
    EXPECT_EQ(rename(SymbolKind::Layer, "a*b", "clean"), "");
    EXPECT_EQ(line.layer, "clean");
    document.undo();
    EXPECT_EQ(line.layer, "a*b");
    EXPECT_TRUE(drawing().layers.contains("a*b"));
}

}  // namespace
}  // namespace kova::doc
