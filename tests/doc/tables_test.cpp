#include "doc/table_edits.hpp"

#include <random>

#include "doc/settings_actions.hpp"
#include "doc/sysvar_actions.hpp"
#include "doc_tools.hpp"

namespace kova::doc {
namespace {

using test::addLine;
using test::idsOf;
using test::makeLine;

template <class Table>
std::vector<std::string> namesOf(const Table& table) {
    std::vector<std::string> names;
    for (const auto& record : table) names.push_back(record.name.str());
    return names;
}

std::vector<std::string> layoutNames(const engine::Drawing& drawing) {
    std::vector<std::string> names;
    for (const auto& layout : drawing.layouts()) names.push_back(layout->name.str());
    return names;
}

std::unique_ptr<engine::Block> makeBlock(const char* name, int lines) {
    auto block = std::make_unique<engine::Block>(name);
    for (int i = 0; i < lines; ++i) block->entities.append(makeLine(i, 0, i, 1));
    return block;
}

class Tables : public ::testing::Test {
protected:
    Tables() {
        QObject::connect(&document, &Document::spaceChanged, &document, [this] { ++spaces; });
    }
    engine::Drawing& drawing() { return document.drawing(); }
    void undoRedo() {
        ASSERT_TRUE(document.undo());
        ASSERT_TRUE(document.redo());
    }
    Document document;
    int spaces = 0;
};

TEST_F(Tables, EditIsUndoneAsAWhole) {
    document.editTable<LayerTraits>([](engine::Table<engine::Layer>& layers) {
        layers.ensure("WALLS").color = engine::Color::index(1);
        layers.find("0")->frozen = true;
        layers.erase("Defpoints");
    });
    EXPECT_EQ(namesOf(drawing().layers), (std::vector<std::string>{"0", "WALLS"}));
    document.undo();
    EXPECT_EQ(namesOf(drawing().layers), (std::vector<std::string>{"0", "Defpoints"}));
    EXPECT_FALSE(drawing().layers.find("0")->frozen);
    document.redo();
    EXPECT_EQ(namesOf(drawing().layers), (std::vector<std::string>{"0", "WALLS"}));
    EXPECT_TRUE(drawing().layers.find("0")->frozen);
    EXPECT_EQ(drawing().layers.find("walls")->color, engine::Color::index(1));

    EXPECT_THROW(document.editTable<LayerTraits>([](auto& layers) {
        layers.clear();
        throw std::runtime_error("refused");
    }),
                 std::runtime_error);
    EXPECT_EQ(drawing().layers.size(), 2U);
    EXPECT_EQ(document.history().undoCount(), 1U);
}

TEST_F(Tables, AnySequenceOfEditsComesBackInItsOrder) {
    using Layers = engine::Table<engine::Layer>;
    const auto state = [&] {
        std::vector<std::pair<std::string, int>> all;
        for (const engine::Layer& layer : std::as_const(drawing()).layers)
            all.emplace_back(layer.name.str(), layer.lineweight);
        return all;
    };
    std::mt19937 random(7);
    const auto name = [&] { return engine::Name((random() % 2 == 0 ? "L" : "l") + std::to_string(random() % 12)); };
    const auto layer = [&] {
        engine::Layer fresh;
        fresh.name = name();
        fresh.lineweight = static_cast<int>(random() % 200);
        return fresh;
    };
    const std::function<void(Layers&)> changes[] = {
        [&](Layers& t) { t.add(layer()); },
        [&](Layers& t) { t.insertBefore(name(), layer()); },
        [&](Layers& t) { t.ensure(name()).lineweight = static_cast<int>(random() % 200); },
        [&](Layers& t) {
            if (engine::Layer* found = t.find(name())) found->lineweight += 1;
        },
        [&](Layers& t) { t.erase(name()); },
        [&](Layers& t) { t.erase(name()); },
        [&](Layers& t) { t.rename(name(), name()); },
        [&](Layers& t) {
            for (engine::Layer& each : t) each.lineweight += 3;
        },
        [&](Layers& t) {
            if (!t.empty()) t[random() % t.size()].lineweight = 5;
        }};
    std::vector<std::vector<std::pair<std::string, int>>> states{state()};
    for (int edit = 0; edit < 300; ++edit) {
        document.editTable<LayerTraits>([&](Layers& t) {
            for (std::size_t n = random() % 6 + 1; n > 0; --n) changes[random() % std::size(changes)](t);
            if (random() % 40 == 0) t.clear();
            if (random() % 40 == 0) t = Layers(drawing().layers);
        });
        states.push_back(state());
    }
    for (std::size_t i = states.size() - 1; i-- > 0;) {
        ASSERT_TRUE(document.undo());
        ASSERT_EQ(state(), states[i]) << i;
    }
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(document.redo());
        ASSERT_EQ(state(), states[i]) << i;
    }
}

TEST_F(Tables, AnEditOfOneRecordHoldsOneRecord) {
    const auto bytesOfAdding = [&](const std::string& layer) {
        document.editTable<LayerTraits>([&](auto& layers) { layers.ensure(layer); });
        return document.history().undoGroup(0)->estimate;
    };
    const std::size_t early = bytesOfAdding("first");
    for (int i = 0; i < 3000; ++i) drawing().layers.ensure("many " + std::to_string(i));
    EXPECT_EQ(bytesOfAdding("later"), early);
    document.editTable<LayerTraits>([](auto& layers) { layers.find("many 17")->frozen = true; });
    EXPECT_LT(document.history().undoGroup(0)->estimate, 2 * early);
}

TEST_F(Tables, FreeNamesAreTheLowest) {
    engine::Table<engine::Group> groups;
    for (const char* expected : {"*A1", "*A2", "*A3", "*A4"}) {
        EXPECT_EQ(groups.freeName("*A").str(), expected);
        groups.ensure(groups.freeName("*a"));
    }
    groups.erase("*A2");
    groups.rename("*a3", "*B1");
    EXPECT_EQ(groups.freeName("*A").str(), "*A2");
    groups.ensure("*A2");
    EXPECT_EQ(groups.freeName("*A").str(), "*A3");
    groups.clear();
    EXPECT_EQ(groups.freeName("*A").str(), "*A1");

    for (const char* expected : {"*U1", "*U2"}) {
        EXPECT_EQ(drawing().nextAnonymousName("*U").str(), expected);
        drawing().addBlock(drawing().nextAnonymousName("*U"));
    }
    drawing().addBlock("*U4");
    drawing().takeBlock("*u1");
    EXPECT_EQ(drawing().nextAnonymousName("*U").str(), "*U1");
    drawing().addBlock("*U1");
    EXPECT_EQ(drawing().nextAnonymousName("*U").str(), "*U3");
}

TEST_F(Tables, EveryTableCanBeEdited) {
    const auto edit = [&]<class Traits>(Traits) {
        const std::size_t before = Traits::table(drawing()).size();
        document.editTable<Traits>([](auto& table) { table.ensure("NEW ONE"); });
        EXPECT_EQ(Traits::table(drawing()).size(), before + 1) << Traits::description;
        EXPECT_EQ(document.history().undoLabel(), Traits::description);
        document.undo();
        EXPECT_EQ(Traits::table(drawing()).size(), before) << Traits::description;
        document.redo();
        EXPECT_TRUE(Traits::table(drawing()).contains("NEW ONE")) << Traits::description;
    };
    edit(LayerTraits());
    edit(LayerFilterTraits());
    edit(LayerStateTraits());
    edit(LineTypeTraits());
    edit(TextStyleTraits());
    edit(DimStyleTraits());
    edit(MLeaderStyleTraits());
    edit(TableStyleTraits());
    edit(GroupTraits());
    edit(NamedViewTraits());
    edit(UcsTraits());
    edit(AnnotationScaleTraits());
    edit(PageSetupTraits());
    edit(HatchPatternTraits());
}

TEST_F(Tables, LargeRecordsAreCountedInTheHistory) {
    document.editTable<GroupTraits>([](auto& groups) { groups.ensure("G").memberHandles.resize(100'000); });
    const std::size_t small = document.history().estimatedBytes();
    // What an edit touches counts, what stands beside it does not.
    document.editTable<GroupTraits>([](auto& groups) { groups.ensure("H"); });
    EXPECT_LT(document.history().estimatedBytes() - small, 2'000U);
    document.editTable<GroupTraits>([](auto& groups) { groups.find("G")->selectable = false; });
    EXPECT_GT(document.history().estimatedBytes() - small, 800'000U);
}

TEST_F(Tables, StylesAndLayersComeBackToTheirPlace) {
    for (const char* name : {"A", "B", "C"}) drawing().textStyles.ensure(name);
    drawing().currentTextStyle = "C";
    EXPECT_FALSE(document.deleteStyle<engine::TextStyle>("Standard"));
    EXPECT_FALSE(document.deleteStyle<engine::TextStyle>("c"));
    EXPECT_FALSE(document.deleteStyle<engine::TextStyle>("unknown"));
    EXPECT_TRUE(document.deleteStyle<engine::TextStyle>("a"));
    EXPECT_EQ(document.history().undoLabel(), "Delete text style A");
    EXPECT_EQ(namesOf(drawing().textStyles), (std::vector<std::string>{"Standard", "B", "C"}));
    undoRedo();
    document.undo();
    EXPECT_EQ(namesOf(drawing().textStyles), (std::vector<std::string>{"Standard", "A", "B", "C"}));

    for (const char* name : {"L1", "L2"}) drawing().layers.ensure(name).description = name;
    drawing().currentLayer = "L2";
    EXPECT_FALSE(document.deleteLayer("0"));
    EXPECT_FALSE(document.deleteLayer("L2"));
    EXPECT_FALSE(document.deleteLayer("L3"));
    EXPECT_TRUE(document.deleteLayer("l1"));
    EXPECT_EQ(document.history().undoLabel(), "Delete layer L1");
    EXPECT_FALSE(drawing().layers.contains("L1"));
    document.undo();
    EXPECT_EQ(namesOf(drawing().layers), (std::vector<std::string>{"0", "Defpoints", "L1", "L2"}));
    EXPECT_EQ(drawing().layers.find("L1")->description, "L1");
}

TEST_F(Tables, Blocks) {
    engine::Block* door = document.addBlock(makeBlock("DOOR", 3));
    ASSERT_NE(door, nullptr);
    EXPECT_EQ(document.history().undoLabel(), "Add blocks");
    EXPECT_EQ(document.addBlock(makeBlock("door", 1)), nullptr);
    EXPECT_EQ(document.addBlock(makeBlock("*Model_Space", 1)), nullptr);
    EXPECT_EQ(document.addBlock(makeBlock("", 1)), nullptr);
    EXPECT_EQ(document.addBlock(nullptr), nullptr);
    std::vector<std::unique_ptr<engine::Block>> several;
    for (const char* name : {"A", "DOOR", "B"}) several.push_back(makeBlock(name, 1));
    EXPECT_EQ(document.addBlocks(std::move(several)), 2U);
    const std::vector<std::uint64_t> ids = idsOf(door->entities);
    const std::uint64_t handle = door->entities.first()->handle();
    EXPECT_NE(handle, 0U);

    document.selection().add(ids);
    EXPECT_TRUE(document.deleteBlock("door"));
    EXPECT_FALSE(document.deleteBlock("door"));
    EXPECT_EQ(document.history().undoLabel(), "Delete block DOOR");
    EXPECT_EQ(drawing().findById(ids[0]), nullptr);
    EXPECT_TRUE(document.selection().empty());
    document.undo();
    ASSERT_EQ(drawing().blocks().size(), 3U);
    EXPECT_EQ(drawing().blocks().front()->name, "DOOR");  // at its old place
    EXPECT_EQ(drawing().findByHandle(handle), drawing().findById(ids[0]));
    document.undo();
    document.undo();
    EXPECT_TRUE(drawing().blocks().empty());
    EXPECT_EQ(drawing().entityCount(), 0U);
    while (document.redo()) {
    }
    ASSERT_EQ(drawing().blocks().size(), 2U);
    EXPECT_EQ(drawing().blocks().front()->name, "A");
}

TEST_F(Tables, ReplacedBlockContentsKeepTheirPlaces) {
    engine::Block* block = document.addBlock(makeBlock("B", 4));
    const std::vector<std::uint64_t> ids = idsOf(block->entities);
    document.removeEntities({ids[1]});
    document.selection().add(ids[2]);
    std::vector<std::unique_ptr<engine::Entity>> contents;
    contents.push_back(makeLine(0, 0, 5, 5));
    contents.push_back(nullptr);
    document.replaceBlockContents(*block, std::move(contents));
    EXPECT_EQ(document.history().undoLabel(), "Replace block contents");
    EXPECT_EQ(block->entities.size(), 1U);
    EXPECT_TRUE(document.selection().empty());
    const std::vector<std::uint64_t> fresh = idsOf(block->entities);
    document.undo();
    document.undo();
    EXPECT_EQ(idsOf(block->entities), ids);
    document.redo();
    document.redo();
    EXPECT_EQ(idsOf(block->entities), fresh);
    document.undoTo(0);
    EXPECT_EQ(drawing().findBlock("B"), nullptr);
}

TEST_F(Tables, BlockAndLayoutSettings) {
    engine::Block* block = document.addBlock(makeBlock("B", 1));
    document.editBlock(*block, [](engine::Block& b) {
        b.description = "a door";
        b.base = {1, 2};
    });
    document.undo();
    EXPECT_EQ(block->description, "");
    EXPECT_EQ(block->base, (math::Vector2{}));
    document.redo();
    EXPECT_EQ(block->description, "a door");
    engine::Layout* layout = drawing().findLayout("Layout1");
    document.editLayout(*layout, [](engine::Layout& l) { l.pageSetup.paperWidth = 841; });
    undoRedo();
    EXPECT_EQ(layout->pageSetup.paperWidth, 841);
    document.undo();
    EXPECT_EQ(layout->pageSetup.paperWidth, 420);
    document.editSettings([](engine::Drawing& d) {
        d.properties.title = "House";
        d.tileMode = false;
    });
    EXPECT_EQ(spaces, 1);
    document.undo();
    EXPECT_EQ(drawing().properties.title, "");
    EXPECT_TRUE(drawing().tileMode);
    EXPECT_EQ(spaces, 2);
}

TEST_F(Tables, LayoutsComeBackWithTheirEntities) {
    EXPECT_EQ(document.addLayout("Model"), nullptr);
    EXPECT_EQ(document.addLayout("layout1"), nullptr);
    EXPECT_EQ(document.addLayout("a*b"), nullptr);
    engine::Layout* sheet = document.addLayout("Sheet");
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(document.history().undoLabel(), "Add layout Sheet");
    const std::uint64_t id = document.addEntity(makeLine(0, 0, 1, 1), sheet->entities).id();
    document.setVariable("CTAB", std::string("Sheet"));
    EXPECT_EQ(spaces, 1);
    document.selection().add(id);

    EXPECT_TRUE(document.deleteLayout("SHEET"));
    EXPECT_EQ(document.history().undoLabel(), "Delete layout Sheet");
    EXPECT_EQ(layoutNames(drawing()), (std::vector<std::string>{"Layout1", "Layout2"}));
    EXPECT_EQ(drawing().activeLayoutName, "Layout2");
    EXPECT_FALSE(drawing().tileMode);
    EXPECT_EQ(spaces, 2);
    EXPECT_TRUE(document.selection().empty());
    EXPECT_TRUE(document.deleteLayout("Layout1"));
    EXPECT_FALSE(document.deleteLayout("Layout2"));  // the last one
    EXPECT_FALSE(document.deleteLayout("Layout1"));
    document.undo();
    document.undo();
    EXPECT_EQ(layoutNames(drawing()), (std::vector<std::string>{"Layout1", "Layout2", "Sheet"}));
    EXPECT_EQ(drawing().activeLayoutName, "Sheet");
    EXPECT_EQ(spaces, 3);
    ASSERT_NE(drawing().findById(id), nullptr);
    EXPECT_EQ(drawing().findById(id)->owner(), &drawing().currentSpace());
    document.undoTo(0);
    EXPECT_EQ(layoutNames(drawing()), (std::vector<std::string>{"Layout1", "Layout2"}));
    EXPECT_TRUE(drawing().tileMode);
    EXPECT_EQ(drawing().activeLayoutName, "Layout1");
    while (document.redo()) {
    }
    EXPECT_EQ(layoutNames(drawing()), (std::vector<std::string>{"Layout2"}));
}

TEST_F(Tables, VariablesOfEveryType) {
    const auto check = [&](const char* name, const engine::SysVarValue& value) {
        const engine::SysVarValue before = *engine::getSysVar(drawing(), name);
        ASSERT_NE(before, value) << name;
        EXPECT_EQ(document.setVariable(name, value), "") << name;
        EXPECT_EQ(document.history().undoLabel(), "Set " + std::string(engine::findSysVar(name)->name));
        const std::size_t entries = document.history().undoCount();
        EXPECT_EQ(document.setVariable(name, value), "");  // the present value: nothing to record
        EXPECT_EQ(document.history().undoCount(), entries);
        document.undo();
        EXPECT_EQ(engine::getSysVar(drawing(), name), before) << name;
        document.redo();
        EXPECT_EQ(engine::getSysVar(drawing(), name), value) << name;
    };
    check("ORTHOMODE", 1);
    check("splinesegs", 12);
    check("LTSCALE", 2.5);
    check("USERS1", std::string("a text"));
    check("INSBASE", math::Vector3{1, 2, 0});
    check("LIMMAX", math::Vector3{841, 594, 0});
    check("CLAYER", std::string("Defpoints"));
    EXPECT_EQ(document.history().undoLabel(), "Set CLAYER");
}

TEST_F(Tables, RefusedAndProgramWideVariablesLeaveNoEntry) {
    EXPECT_NE(document.setVariable("NOSUCHVARIABLE", 1), "");
    EXPECT_NE(document.setVariable("CLAYER", std::string("no such layer")), "");
    EXPECT_NE(document.setVariable("LTSCALE", -1.0), "");
    EXPECT_FALSE(document.history().canUndo());
    const std::int32_t dialogs = engine::sysVarInt(drawing(), "FILEDIA", 1);
    EXPECT_EQ(document.setVariable("FILEDIA", 1 - dialogs), "");
    EXPECT_EQ(engine::sysVarInt(drawing(), "FILEDIA"), 1 - dialogs);
    EXPECT_FALSE(document.history().canUndo());
    document.setVariable("FILEDIA", dialogs);
}

TEST_F(Tables, CurrentSpaceFollowsItsVariables) {
    const std::uint64_t id = addLine(document);
    document.selection().add(id);
    EXPECT_EQ(document.setVariable("CTAB", std::string("Layout2")), "");
    EXPECT_EQ(spaces, 1);
    EXPECT_TRUE(document.selection().empty());  // of another space
    EXPECT_FALSE(drawing().tileMode);
    EXPECT_EQ(document.history().undoLabel(), "Set CTAB");
    document.undo();
    EXPECT_EQ(spaces, 2);
    EXPECT_TRUE(drawing().tileMode);
    EXPECT_EQ(drawing().activeLayoutName, "Layout1");  // exactly as it was
    document.redo();
    EXPECT_EQ(spaces, 3);
    EXPECT_EQ(&drawing().currentSpace(), &drawing().findLayout("Layout2")->entities);
    EXPECT_EQ(document.setVariable("TILEMODE", 1), "");
    EXPECT_EQ(spaces, 4);
    document.undo();
    EXPECT_EQ(spaces, 5);
    EXPECT_FALSE(drawing().tileMode);
    document.modifyEntity(*drawing().findById(id), [](engine::Entity& e) { e.visible = false; });
    document.undo();
    EXPECT_EQ(spaces, 5);
}

TEST_F(Tables, DimensionVariableLeavesNoOverrideAfterUndo) {
    const double before = std::get<double>(*engine::getSysVar(drawing(), "DIMTXT"));
    const auto overrides = drawing().dimStyleOverrides;
    EXPECT_EQ(document.setVariable("DIMTXT", before * 2), "");
    document.undo();
    EXPECT_EQ(engine::getSysVar(drawing(), "DIMTXT"), engine::SysVarValue(before));
    EXPECT_EQ(drawing().dimStyleOverrides, overrides);
    document.redo();
    EXPECT_EQ(engine::getSysVar(drawing(), "DIMTXT"), engine::SysVarValue(before * 2));
}

TEST(SysVarActions, SizesAndOutOfRangeValues) {
    engine::Drawing drawing;
    EXPECT_EQ(SetSysVarIntAction("ORTHOMODE", 0, 1).sizeInBytes(), 64U);
    EXPECT_GE(SetSysVarStringAction("USERS1", std::string(5000, 'a'), "").sizeInBytes(), 5000U);
    // A value that a file brought in and that a user could not set comes back all the same.
    drawing.realVariables["LTSCALE"] = -3.0;
    SetSysVarRealAction action("LTSCALE", -3.0, 2.0);
    action.redo(drawing);
    EXPECT_EQ(engine::sysVarReal(drawing, "LTSCALE"), 2.0);
    action.undo(drawing);
    EXPECT_EQ(engine::sysVarReal(drawing, "LTSCALE"), -3.0);
}

}  // namespace
}  // namespace kova::doc
