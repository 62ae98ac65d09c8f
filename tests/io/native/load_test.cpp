#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/sysvar.hpp"
#include "io/native/native_file.hpp"
#include "io/native/sample_drawing.hpp"

namespace kova::io::native {
namespace {

using namespace engine;

std::string loadError(std::string_view text) {
    Drawing drawing;
    return loadNativeText(text, drawing);
}

/// A drawing from the members behind "format".
std::unique_ptr<Drawing> loaded(std::string_view members) {
    auto drawing = std::make_unique<Drawing>();
    EXPECT_EQ(loadNativeText(R"({"format":"kovacad",)" + std::string(members) + "}", *drawing), "");
    return drawing;
}

std::vector<std::uint64_t> handles(const EntityList& list) {
    std::vector<std::uint64_t> all;
    for (const Entity& e : list) all.push_back(e.handle());
    return all;
}

/// What the library itself says of a text.
std::string parseMessage(std::string_view text) {
    try {
        return nlohmann::json::parse(text).is_null() ? "null" : "no error";
    } catch (const std::exception& problem) {
        return problem.what();
    }
}

TEST(NativeLoad, SyntaxErrorsAreTheLibrarysAndComeFirst) {
    for (const std::string_view text :
         {"", "   ", "{", "not json", "{\"format\":\"kovacad\",}", "{\"format\":\"kovacad\"} x",
          "{\"format\":5,\"a\":}", "{\"format\":\"kovacad\" // no comments\n}", "[1,2", "{\"format\":\"kova\xFF\"}",
          "{\"format\":\"kovacad\",\"entities\":[{\"type\":\"Line\",\"startX\":\"no\"},{]}",
          "{\"format\":\"other\",\"entities\":[tru]}", "{\"format\":\"kovacad\",\"entities\":[{\"type\":\"Line\""})
        EXPECT_EQ(loadError(text), "JSON parse error: " + parseMessage(text)) << text;
    EXPECT_TRUE(loadError("{").starts_with("JSON parse error: [json.exception.parse_error.101] parse error at line 1"));
}

TEST(NativeLoad, OtherFilesAreNotTaken) {
    for (const std::string_view text :
         {"{}", "{\"format\":\"Kovacad\"}", "{\"format\":\"\",\"layers\":5}",
          "{\"entities\":[{\"type\":\"Line\",\"startX\":\"no\"}]}"})
        EXPECT_EQ(loadError(text), "Not an KovaCAD file") << text;
    EXPECT_EQ(loadError("[{\"format\":\"kovacad\"}]"),
              "Load error: [json.exception.type_error.306] cannot use value() with array");
    EXPECT_EQ(loadError("5"), "Load error: [json.exception.type_error.306] cannot use value() with number");
    EXPECT_EQ(loadError("\xEF\xBB\xBF null"), "Load error: [json.exception.type_error.306] cannot use value() with null");
}

TEST(NativeLoad, FilesThatCannotBeOpened) {
    Drawing drawing;
    EXPECT_EQ(loadNative("/no/such/file.kvcad", drawing), "Cannot open file: /no/such/file.kvcad");
    EXPECT_EQ(loadNative("/tmp", drawing), "Cannot open file: /tmp");
    EXPECT_EQ(saveNative(drawing, "/no/such/folder/a.kvcad"), "Cannot open file for writing: /no/such/folder/a.kvcad");
}

TEST(NativeLoad, WrongTypesFailWithTheLibrarysWords) {
    const auto error = [](std::string_view members) {
        return loadError(R"({"format":"kovacad",)" + std::string(members) + "}");
    };
    const std::string typeError = "Load error: [json.exception.type_error.302] type must be ";
    EXPECT_EQ(loadError(R"({"format":5})"), typeError + "string, but is number");
    EXPECT_EQ(error(R"("entities":[{"type":"Line","startX":"a"}])"), typeError + "number, but is string");
    EXPECT_EQ(error(R"("entities":[{"type":"Line","startX":null}])"), typeError + "number, but is null");
    EXPECT_EQ(error(R"("entities":[{"type":"Line","visible":1}])"), typeError + "boolean, but is number");
    EXPECT_EQ(error(R"("entities":[{"type":"Line","layer":[]}])"), typeError + "string, but is array");
    EXPECT_EQ(error(R"("entities":[{"type":7}])"), typeError + "string, but is number");
    EXPECT_EQ(error(R"("entities":[{"type":"Line","handle":"A"}])"), typeError + "number, but is string");
    EXPECT_EQ(error(R"("entities":{"a":1})"), typeError + "array, but is object");
    EXPECT_EQ(error(R"("entities":[{"type":"Line"},5])"),
              "Load error: [json.exception.type_error.306] cannot use value() with number");
    EXPECT_EQ(error(R"("layers":[{"name":"a","color":{"method":"ACI","aci":true}}])"),
              typeError + "number, but is boolean");
    EXPECT_EQ(error(R"("blocks":[{"name":"a","entities":[{"type":"Circle","radius":{}}]}])"),
              typeError + "number, but is object");
    EXPECT_EQ(error(R"("blocks":[{"name":"a","entities":"none"}])"), typeError + "array, but is string");
    EXPECT_EQ(error(R"("layouts":[{"name":"a","pageSetup":[]}])"), typeError + "object, but is array");
    EXPECT_EQ(error(R"("systemVariables":{"SAVETIME":"x","LTSCALE":1})"), "") << "a setting of the program";
    EXPECT_EQ(error(R"("systemVariables":{"LTSCALE":"1"})"), typeError + "number, but is string");
    EXPECT_EQ(error(R"("systemVariables":{"CANNOSCALE":1})"), typeError + "string, but is number");
    EXPECT_EQ(error(R"("nextHandle":"12")"), typeError + "number, but is string");
    EXPECT_EQ(error(R"("dimStyleOverrides":{"DIMTXT":"big"})"), typeError + "number, but is string");
    EXPECT_EQ(error(R"("hatchPatterns":"none","unknown":5)"), "") << "only an array counts";
    // In the order of reading, not of the file.
    EXPECT_EQ(error(R"("groups":5,"entities":true,"layers":"x")"), typeError + "array, but is string");
    EXPECT_EQ(error(R"("groups":5,"entities":true)"), typeError + "array, but is boolean");
}

TEST(NativeLoad, NumbersThatDoNotFitFail) {
    const auto entityError = [](std::string_view members) {
        return loadError(R"({"format":"kovacad","entities":[{"type":"Line",)" + std::string(members) + "}]}");
    };
    EXPECT_EQ(entityError(R"("lineweight":3000000000)"), "Load error: value of \"lineweight\" is out of range");
    EXPECT_EQ(entityError(R"("lineweight":18446744073709551615)"),
              "Load error: value of \"lineweight\" is out of range");
    EXPECT_EQ(entityError(R"("lineweight":1e300)"), "Load error: value of \"lineweight\" is out of range");
    EXPECT_EQ(entityError(R"("lineweight":50.0)"), "");
    EXPECT_EQ(entityError(R"("handle":-1)"), "Load error: value of \"handle\" is out of range");
    EXPECT_EQ(entityError(R"("color":{"method":"ACI","aci":256})"), "Load error: value of \"aci\" is out of range");
    EXPECT_EQ(entityError(R"("xdata":{"A":[{"gc":5000000000,"value":1}]})"),
              "Load error: value of \"gc\" is out of range");
    // The library reports a number beyond all doubles with words of its own.
    EXPECT_EQ(entityError(R"("startX":1e999)"),
              "Load error: [json.exception.out_of_range.406] number overflow parsing '1e999'");
}

TEST(NativeLoad, WhatIsNotKnownIsCountedByKind) {
    Drawing drawing;
    LoadNotes notes;
    ASSERT_EQ(loadNativeText(R"({"format":"kovacad","version":2,"novelties":[1,2],"layers":[{"name":"A","glow":1}],
        "blocks":[{"name":"B","entities":[]},{"name":"b","entities":[]}],"systemVariables":{"USERI9":3},
        "entities":[{"type":"Line","endX":1,"glow":2},{"type":"Hologram","depth":3},{"type":"Hologram"}]})",
                             drawing, nullptr, &notes),
              "");
    EXPECT_EQ(drawing.modelSpace().size(), 1U);
    EXPECT_EQ(notes.lines,
              (std::vector<std::string>{"2 entities could not be read: 2 Hologram.",
                                        "Not kept: 1 block of a name that is taken, 2 members \"glow\", 1 section "
                                        "\"novelties\"."}));
}

TEST(NativeLoad, MissingMembersKeepTheDefaults) {
    const Drawing fresh;
    for (const std::string_view version : {"", ",\"version\":1", ",\"version\":3", ",\"version\":\"x\""}) {
        Drawing drawing;
        ASSERT_EQ(loadNativeText("{\"format\":\"kovacad\"" + std::string(version) + "}", drawing), "");
        // The times of making differ from one drawing to the next.
        for (const char* time : {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE"})
            drawing.realVariables[time] = fresh.realVariables.at(time);
        EXPECT_EQ(test::firstDifference(nativeText(drawing), nativeText(fresh)), "");
    }
    Drawing marked;
    EXPECT_EQ(loadNativeText("\xEF\xBB\xBF \r\n\t{\"format\":\"kovacad\"}", marked), "");

    const auto drawing = loaded(R"("layers":[{"name":"A"}],"textStyles":[{"name":"T"},{}],"linetypes":[],
        "dimStyles":[{"name":"D","arrowSize":9}],"mleaderStyles":[],"tableStyles":[{"textHeight":7}],
        "layerStates":{"S":{"A":{"frozen":true}}}, "currentLayer":"a", "currentTextStyle":"gone",
        "entities":[{"type":"Line","layer":"B"}])");
    ASSERT_EQ(drawing->layers.size(), 3U);
    EXPECT_EQ(drawing->layers[0].linetype, "Continuous");
    EXPECT_EQ(drawing->layers[0].plotStyleName, "Normal");
    EXPECT_TRUE(drawing->layers.contains("0"));
    EXPECT_TRUE(drawing->layers.contains("b")) << "an entity stands on it";
    EXPECT_EQ(drawing->currentLayer, "A");
    EXPECT_EQ(drawing->textStyles.size(), 2U);
    EXPECT_EQ(drawing->textStyles[1].name.str(), "Standard");
    EXPECT_EQ(drawing->textStyles[1].fontFile.str(), "txt.shx");
    EXPECT_EQ(drawing->currentTextStyle, "Standard");
    EXPECT_EQ(drawing->linetypes.size(), 3U);
    EXPECT_EQ(drawing->linetypes.find("continuous")->description, "Solid line");
    EXPECT_EQ(drawing->dimStyles.size(), 2U);
    EXPECT_EQ(drawing->dimStyles[0].arrowSize, 9.0);
    EXPECT_EQ(drawing->dimStyles[0].textHeight, DimStyle().textHeight);
    EXPECT_EQ(drawing->mleaderStyles.size(), 1U);
    EXPECT_EQ(drawing->tableStyles.size(), 1U);
    EXPECT_EQ(drawing->tableStyles[0].textHeight, 7.0);
    EXPECT_EQ(drawing->layerStates[0].layers[0].second.plotStyle, "Normal");
    EXPECT_TRUE(drawing->layerStates[0].layers[0].second.frozen);
    EXPECT_TRUE(drawing->layerStates[0].mask.frozen);
}

TEST(NativeLoad, HandlesComeOutRight) {
    // None, used, used twice, used later: explicit handles stand, the others follow the counter.
    auto drawing = loaded(R"("entities":[{"type":"Line"},{"type":"Circle","handle":1},{"type":"Line","handle":2},
        {"type":"Line","handle":2},{"type":"Nonsense","handle":3},{"type":"Line","handle":0},{"type":"Line","handle":9}],
        "nextHandle":2)");
    EXPECT_EQ(handles(drawing->modelSpace()), (std::vector<std::uint64_t>{3, 1, 2, 4, 5, 9}));
    EXPECT_EQ(drawing->modelSpace().first()->type(), EntityType::Line);
    EXPECT_EQ(drawing->findByHandle(1)->type(), EntityType::Circle);

    drawing = loaded(R"("nextHandle":70,"entities":[{"type":"Line","handle":200}])");
    EXPECT_EQ(drawing->nextHandle, 70U);
    drawing = loaded(R"("entities":[{"type":"Line","handle":200},{"type":"Line"}])");
    EXPECT_EQ(handles(drawing->modelSpace()), (std::vector<std::uint64_t>{200, 201}));
    EXPECT_EQ(drawing->nextHandle, 202U);
    drawing = loaded(R"("entities":[{"type":"Line","handle":18446744073709551615},{"type":"Line"}])");
    EXPECT_EQ(drawing->modelSpace().first()->handle(), ~std::uint64_t{0});

    // Across spaces too, whatever the order of the parts.
    drawing = loaded(R"("entities":[{"type":"Line","handle":5},{"type":"Line","handle":6}],
        "layouts":[{"entities":[{"type":"Line","handle":6}],"name":"L"}],
        "blocks":[{"entities":[{"type":"Line"},{"type":"Line","handle":5}],"name":"B"}],"nextHandle":5)");
    EXPECT_EQ(handles(drawing->modelSpace()), (std::vector<std::uint64_t>{5, 6}));
    EXPECT_EQ(handles(drawing->findLayout("L")->entities).size(), 1U);
    std::set<std::uint64_t> all;
    for (const EntityList* list :
         {&drawing->modelSpace(), &drawing->findLayout("L")->entities, &drawing->findBlock("B")->entities})
        for (const Entity& e : *list) {
            all.insert(e.handle());
            EXPECT_EQ(drawing->findByHandle(e.handle()), &e);
            EXPECT_EQ(drawing->findById(e.id()), &e);
        }
    EXPECT_EQ(all.size(), 5U);
}

TEST(NativeLoad, BlocksAndLayoutsThatCannotStandAsTheyAre) {
    const auto drawing = loaded(R"("blocks":[{"name":"A","entities":[{"type":"Line","handle":1}]},
        {"name":"a","entities":[{"type":"Circle","handle":2},{"type":"Line"}]},{"entities":[{"type":"Line"}]},
        {"name":"*Model_Space","entities":[]},{"name":"C"}],
        "layouts":[{"name":"Sheet","entities":[{"type":"Line"}]},{"name":"SHEET","entities":[{"type":"Arc"}]},
        {"name":"Model"},{}],"activeLayout":"none")");
    ASSERT_EQ(drawing->blocks().size(), 2U);
    EXPECT_EQ(drawing->findBlock("a")->entities.first()->type(), EntityType::Line);
    EXPECT_EQ(drawing->findByHandle(2), nullptr);
    ASSERT_EQ(drawing->layouts().size(), 4U);
    EXPECT_EQ(drawing->layouts()[1]->entities.first()->type(), EntityType::Arc);
    std::set<std::string> names;
    for (const auto& layout : drawing->layouts()) names.insert(layout->name.folded());
    EXPECT_EQ(names.size(), 4U);
    EXPECT_FALSE(names.contains("model"));
    EXPECT_EQ(drawing->activeLayoutName, "Sheet");
    // Two lines and an arc are left of what the file holds.
    EXPECT_EQ(drawing->entityCount(), 3U);
}

TEST(NativeLoad, OlderSpellingsAreUnderstood) {
    const auto drawing =
        loaded(R"("groups":[{"name":"G","members":[1,2]},{"name":"H","memberHandles":[3],"members":[4]}],
        "blocks":[{"name":"B","entities":[],"isDynamic":true,"dynParams":[{"name":"p","basePointX":3,"basePointY":4},
        {"name":"q","baseX":5,"baseY":6}]}])");
    EXPECT_EQ(drawing->groups[0].memberHandles, (std::vector<std::uint64_t>{1, 2}));
    EXPECT_EQ(drawing->groups[1].memberHandles, (std::vector<std::uint64_t>{3}));
    const Block& block = *drawing->findBlock("B");
    ASSERT_EQ(block.dynParams.size(), 2U);
    EXPECT_EQ(block.dynParams[0].base, (math::Vector2{3, 4}));
    EXPECT_EQ(block.dynParams[1].base, (math::Vector2{5, 6}));
}

TEST(NativeLoad, OfTwoMembersWithOneKeyTheLastCounts) {
    const auto drawing = loaded(
        R"("entities":[{"type":"Line","startX":1,"type":"Line","color":{"method":"ACI","aci":1,"aci":5},"startX":2}])");
    const auto& line = dynamic_cast<const LineEntity&>(*drawing->modelSpace().first());
    EXPECT_EQ(line.start.x, 2.0);
    EXPECT_EQ(line.color, Color::index(5));
}

TEST(NativeLoad, SystemVariables) {
    auto drawing =
        loaded(R"("systemVariables":{"LTSCALE":3,"lunits":4.0,"SORTENTS":96,"MyFlag":true,"MY_BIG":5000000000,
        "MY_TEXT":"t","MY_REAL":1.0,"MY_LIST":[1],"FILEDIA":0,"TILEMODE":0})");
    EXPECT_EQ(sysVarReal(*drawing, "LTSCALE"), 3.0);
    EXPECT_EQ(sysVarInt(*drawing, "LUNITS"), 4);
    EXPECT_EQ(sysVarInt(*drawing, "SORTENTS"), 96);
    EXPECT_EQ(sysVarInt(*drawing, "FILEDIA"), 1) << "a setting of the program";
    EXPECT_FALSE(drawing->tileMode);
    EXPECT_EQ(drawing->integerVariables.at("MyFlag"), 1);
    EXPECT_EQ(drawing->realVariables.at("MY_BIG"), 5e9);
    EXPECT_EQ(drawing->realVariables.at("MY_REAL"), 1.0);
    EXPECT_EQ(drawing->stringVariables.at("MY_TEXT"), "t");
    // Out of range: the nearest value.
    drawing = loaded(R"("systemVariables":{"LUNITS":99,"LUPREC":-5})");
    EXPECT_EQ(sysVarInt(*drawing, "LUNITS"), 5);
    EXPECT_EQ(sysVarInt(*drawing, "LUPREC"), 0);
    // The current tab, from wherever the file tells it.
    EXPECT_FALSE(loaded(R"("tilemode":0)")->tileMode);
    EXPECT_TRUE(loaded(R"("tilemode":1,"systemVariables":{"CTAB":"Layout2"})")->tileMode);
    drawing = loaded(R"("systemVariables":{"CTAB":"Layout2"})");
    EXPECT_FALSE(drawing->tileMode);
    EXPECT_EQ(drawing->activeLayoutName, "Layout2");
}

}  // namespace
}  // namespace kova::io::native
