#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/model/sysvar.hpp"
#include "io/native/native_file.hpp"
#include "io/native/field_visitors.hpp"
#include "io/native/sample_drawing.hpp"

namespace kova::io::native {
namespace {

using namespace engine;
using Json = nlohmann::ordered_json;

/// The common members as lines, and the kind's own.
std::vector<std::string> allFields(const Entity& entity) {
    test::CollectVisitor collect;
    auto& e = const_cast<Entity&>(entity);
    e.describeCommon(collect);
    e.describe(collect);
    collect.lines.push_back("handle " + std::to_string(e.handle()));
    if (e.xdata() != nullptr) {
        for (const auto& application : e.xdata()->applications)
            collect.lines.push_back(application.name.str() + std::to_string(application.items.size()));
    }
    return collect.lines;
}

void expectSameEntities(const EntityList& a, const EntityList& b) {
    ASSERT_EQ(a.size(), b.size());
    auto other = b.begin();
    for (const Entity& entity : a) {
        EXPECT_EQ(entity.type(), other->type());
        EXPECT_EQ(allFields(entity), allFields(*other)) << displayName(entity.type());
        ASSERT_EQ(entity.xdata() == nullptr, other->xdata() == nullptr);
        if (entity.xdata() != nullptr) {
            for (const auto& application : entity.xdata()->applications)
                EXPECT_EQ(application.items, *other->xdata()->find(application.name));
        }
        ++other;
    }
}

class KindRoundTrip : public testing::TestWithParam<int> {};

TEST_P(KindRoundTrip, KeepsEveryField) {
    const auto type = static_cast<EntityType>(GetParam());
    Drawing drawing;
    const Entity& plain = drawing.modelSpace().append(makeEntity(type));
    for (int seed = 0; seed < 3; ++seed) {
        const Entity& filled = test::addFilledEntity(drawing.modelSpace(), type, seed * 7);
        // A field that filling left at its default is not tested.
        const auto before = test::fieldsOf(plain);
        const auto after = test::fieldsOf(filled);
        EXPECT_NE(before, after);
    }
    const std::string text = nativeText(drawing);
    Drawing loaded;
    LoadNotes notes;
    ASSERT_EQ(loadNativeText(text, loaded, nullptr, &notes), "");
    for (const std::string& line : notes.lines) ADD_FAILURE() << line;
    EXPECT_EQ(test::firstDifference(text, nativeText(loaded)), "");
    expectSameEntities(drawing.modelSpace(), loaded.modelSpace());
}

INSTANTIATE_TEST_SUITE_P(AllKinds, KindRoundTrip, testing::Range(0, kEntityTypeCount),
                         [](const auto& kind) { return std::string(nativeName(static_cast<EntityType>(kind.param))); });

TEST(RoundTrip, AFullDrawingLosesNothing) {
    Drawing drawing;
    test::fillDrawing(drawing);
    const std::string text = nativeText(drawing);
    Drawing loaded;
    LoadNotes notes;
    ASSERT_EQ(loadNativeText(text, loaded, nullptr, &notes), "");
    for (const std::string& line : notes.lines) ADD_FAILURE() << line;
    EXPECT_EQ(test::firstDifference(text, nativeText(loaded)), "");

    expectSameEntities(drawing.modelSpace(), loaded.modelSpace());
    ASSERT_EQ(drawing.blocks().size(), loaded.blocks().size());
    for (const auto& block : drawing.blocks()) {
        const Block* other = loaded.findBlock(block->name);
        ASSERT_NE(other, nullptr);
        expectSameEntities(block->entities, other->entities);
        test::CollectVisitor a;
        test::CollectVisitor b;
        for (auto [from, to] : {std::pair{block.get(), &a}, std::pair{const_cast<Block*>(other), &b}}) {
            from->describeHead(*to);
            from->describeDynamic(*to);
        }
        EXPECT_EQ(a.lines, b.lines);
    }
    ASSERT_EQ(drawing.layouts().size(), loaded.layouts().size());
    for (const auto& layout : drawing.layouts()) {
        const Layout* other = loaded.findLayout(layout->name);
        ASSERT_NE(other, nullptr);
        EXPECT_EQ(layout->tabOrder, other->tabOrder);
        EXPECT_EQ(layout->handle, other->handle);
        EXPECT_EQ(test::fieldsOf(layout->pageSetup), test::fieldsOf(other->pageSetup));
        expectSameEntities(layout->entities, other->entities);
    }
    const auto expectSameTable = [](const auto& a, const auto& b) {
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t i = 0; i < a.size(); ++i) EXPECT_EQ(test::fieldsOf(a[i]), test::fieldsOf(b[i]));
    };
    expectSameTable(drawing.layers, loaded.layers);
    expectSameTable(drawing.layerFilters, loaded.layerFilters);
    expectSameTable(drawing.groups, loaded.groups);
    expectSameTable(drawing.textStyles, loaded.textStyles);
    expectSameTable(drawing.linetypes, loaded.linetypes);
    expectSameTable(drawing.dimStyles, loaded.dimStyles);
    expectSameTable(drawing.mleaderStyles, loaded.mleaderStyles);
    expectSameTable(drawing.tableStyles, loaded.tableStyles);
    expectSameTable(drawing.hatchPatterns, loaded.hatchPatterns);
    expectSameTable(drawing.ucsList, loaded.ucsList);
    expectSameTable(drawing.namedViews, loaded.namedViews);
    expectSameTable(drawing.annotationScales, loaded.annotationScales);
    expectSameTable(drawing.namedPageSetups, loaded.namedPageSetups);
    ASSERT_EQ(loaded.objectDictionary.size(), 2U);
    EXPECT_EQ(test::fieldsOf(drawing.objectDictionary[1]), test::fieldsOf(loaded.objectDictionary[1]));
    ASSERT_EQ(loaded.layerStates.size(), 2U);
    EXPECT_EQ(loaded.layerStates[1].description, drawing.layerStates[1].description);
    EXPECT_EQ(test::fieldsOf(loaded.layerStates[1].mask), test::fieldsOf(drawing.layerStates[1].mask));
    ASSERT_EQ(loaded.layerStates[1].layers.size(), 2U);
    EXPECT_EQ(test::fieldsOf(loaded.layerStates[1].layers[1].second),
              test::fieldsOf(drawing.layerStates[1].layers[1].second));

    EXPECT_EQ(loaded.properties.author, drawing.properties.author);
    EXPECT_EQ(loaded.limits.upper, drawing.limits.upper);
    EXPECT_TRUE(loaded.limits.check);
    EXPECT_EQ(loaded.currentLayer, drawing.currentLayer);
    EXPECT_EQ(loaded.currentDimStyle, drawing.currentDimStyle);
    EXPECT_EQ(loaded.dimStyleOverrides, drawing.dimStyleOverrides);
    EXPECT_EQ(loaded.dimStyleNameOverrides, drawing.dimStyleNameOverrides);
    EXPECT_EQ(loaded.currentUcs, drawing.currentUcs);
    EXPECT_EQ(loaded.currentColor, drawing.currentColor);
    EXPECT_EQ(loaded.activeLayoutName, drawing.activeLayoutName);
    EXPECT_FALSE(loaded.tileMode);
    EXPECT_EQ(loaded.nextHandle, drawing.nextHandle);
    // Variables that live only while a drawing is open begin anew.
    const auto expectSameVariables = [](const auto& a, const auto& b) {
        for (const auto& [name, value] : a) {
            const SysVarDef* def = findSysVar(name);
            if (def != nullptr && (def->saved & saved::Native) == 0) continue;
            ASSERT_TRUE(b.contains(name)) << name;
            EXPECT_EQ(value, b.at(name)) << name;
        }
    };
    expectSameVariables(drawing.integerVariables, loaded.integerVariables);
    expectSameVariables(drawing.realVariables, loaded.realVariables);
    expectSameVariables(drawing.stringVariables, loaded.stringVariables);
}

TEST(RoundTrip, AFreshDrawingStaysAsItIs) {
    const Drawing drawing;
    const std::string text = nativeText(drawing);
    Drawing loaded;
    LoadNotes notes;
    ASSERT_EQ(loadNativeText(text, loaded, nullptr, &notes), "");
    for (const std::string& line : notes.lines) ADD_FAILURE() << line;
    EXPECT_EQ(test::firstDifference(text, nativeText(loaded)), "");
    EXPECT_EQ(loaded.nextHandle, drawing.nextHandle);
}

TEST(RoundTrip, ASystemWithoutANameStaysInForce) {
    Drawing drawing;
    drawing.ucs.origin = {5, 6};
    drawing.ucs.xAxis = {0, 1};
    drawing.ucs.yAxis = {-1, 0};
    Drawing loaded;
    ASSERT_EQ(loadNativeText(nativeText(drawing), loaded), "");
    EXPECT_TRUE(loaded.currentUcs.empty());
    EXPECT_EQ(loaded.ucs.origin, drawing.ucs.origin);
    EXPECT_EQ(loaded.ucs.xAxis, drawing.ucs.xAxis);
    EXPECT_EQ(loaded.ucs.yAxis, drawing.ucs.yAxis);
}

TEST(RoundTrip, LongTextsAndLongListsPass) {
    Drawing drawing;
    auto solid = std::make_unique<Solid3DEntity>();
    for (int i = 0; i < 40'000; ++i) solid->sat += "line \"" + std::to_string(i) + "\"\n";
    for (int i = 0; i < 300'000; ++i) solid->sab += static_cast<char>(i * 7);
    const std::string sat = solid->sat;
    const std::string sab = solid->sab;
    drawing.modelSpace().append(std::move(solid));
    Drawing loaded;
    ASSERT_EQ(loadNativeText(nativeText(drawing), loaded), "");
    const auto& back = dynamic_cast<const Solid3DEntity&>(*loaded.modelSpace().first());
    EXPECT_EQ(back.sat, sat);
    EXPECT_EQ(back.sab, sab);
}

TEST(RoundTrip, NumbersThatAreNoneDoNotSpoilTheFile) {
    Drawing drawing;
    auto line = std::make_unique<LineEntity>(math::Vector2{1, 2}, math::Vector2{std::nan(""), 3});
    line->elevation = -std::numeric_limits<double>::infinity();
    line->setLinetypeScale(std::nan(""));
    drawing.modelSpace().append(std::move(line));
    Drawing loaded;
    ASSERT_EQ(loadNativeText(nativeText(drawing), loaded), "");
    const auto& back = dynamic_cast<const LineEntity&>(*loaded.modelSpace().first());
    EXPECT_EQ(back.end, (math::Vector2{0, 3}));
    EXPECT_EQ(back.elevation, 0.0);
    EXPECT_EQ(back.linetypeScale(), 1.0);
}

TEST(RoundTrip, AHundredThousandLinesThroughAFile) {
    constexpr int kCount = 100'000;
    Drawing drawing;
    for (int i = 0; i < kCount; ++i) {
        auto line = std::make_unique<LineEntity>(math::Vector2{i * 0.37, i / 3.0}, math::Vector2{i * 1e-3, -1.0 * i});
        if (i % 3 == 0) line->layer = "Walls";
        drawing.modelSpace().append(std::move(line));
    }
    const std::string path = testing::TempDir() + "kova_many_lines.kvcad";
    SaveNotes notes;
    ASSERT_EQ(saveNative(drawing, path, &notes), "");
    EXPECT_EQ(notes.replacedNumbers, 0U);
    Drawing loaded;
    ASSERT_EQ(loadNative(path, loaded), "");
    std::remove(path.c_str());
    ASSERT_EQ(loaded.modelSpace().size(), static_cast<std::size_t>(kCount));
    EXPECT_EQ(loaded.nextHandle, drawing.nextHandle);
    auto other = loaded.modelSpace().begin();
    for (const Entity& entity : drawing.modelSpace()) {
        const auto& a = static_cast<const LineEntity&>(entity);
        const auto& b = static_cast<const LineEntity&>(*other);
        ASSERT_EQ(a.handle(), b.handle());
        ASSERT_EQ(a.start, b.start);
        ASSERT_EQ(a.end, b.end);
        ASSERT_EQ(a.layer, b.layer);
        ++other;
    }
}

}  // namespace
}  // namespace kova::io::native
