#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "engine/model/drawing.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/line.hpp"
#include "io/native/native_file.hpp"
#include "io/json/record_writer.hpp"
#include "io/native/sample_drawing.hpp"

namespace kova::io::native {
namespace {

using namespace engine;
using Json = nlohmann::ordered_json;

std::string entityText(const Entity& entity) {
    JsonWriter out(2);
    writeEntity(out, entity);
    return out.take();
}

std::vector<std::string> keysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    return keys;
}

TEST(NativeText, PlainLineHasItsMembersInOrder) {
    LineEntity line(math::Vector2{0, 0.1}, math::Vector2{10, -2.5e-7});
    line.setHandle(42);
    EXPECT_EQ(entityText(line), R"({
  "layer": "0",
  "color": {
    "method": "ByLayer"
  },
  "lineweight": -1,
  "visible": true,
  "handle": 42,
  "type": "Line",
  "startX": 0.0,
  "startY": 0.1,
  "endX": 10.0,
  "endY": -2.5e-07
})");
}

TEST(NativeText, RarePropertiesStandWhereTheyBelong) {
    ArcEntity arc;
    arc.layer = "Walls \"1\"";
    arc.color = Color::index(3);
    arc.lineweight = 50;
    arc.visible = false;
    arc.linetype = "Dashed";
    arc.setLinetypeScale(0.5);
    arc.transparency = 40;
    arc.elevation = -1.5;
    arc.setThickness(1e-12);
    arc.setNormal({0, 0, -1});
    arc.setPlotStyleName("Style");
    arc.setAnnotative(true);
    arc.setAnnotationScale(2.0);
    arc.setObjectScales({"1:1", "1:50"});
    XData xdata;
    xdata.set("APP", {{1000, std::string("t")}, {1010, math::Vector3{1, 2, 3}}, {1040, 2.0}, {1070, std::int64_t{5}}});
    arc.setXdata(xdata);
    const Json json = Json::parse(entityText(arc));
    EXPECT_EQ(json.dump(),
              R"({"layer":"Walls \"1\"","color":{"method":"ACI","aci":3},"lineweight":50,"visible":false,)"
              R"("linetype":"Dashed","linetypeScale":0.5,"transparency":40,"elevation":-1.5,"thickness":1e-12,)"
              R"("normalX":0.0,"normalY":0.0,"normalZ":-1.0,"plotStyleName":"Style","annotative":true,)"
              R"("annotationScale":2.0,"objectScales":["1:1","1:50"],"xdata":{"APP":[{"gc":1000,"value":"t"},)"
              R"({"gc":1010,"value":{"x":1.0,"y":2.0,"z":3.0}},{"gc":1040,"value":2.0},{"gc":1070,"value":5}]},)"
              R"("type":"Arc","centerX":0.0,"centerY":0.0,"radius":1.0,"startAngle":0.0,"endAngle":)" +
                  json["endAngle"].dump() + "}");
    // Within the tolerance of their defaults these are not written.
    LineEntity line;
    line.setLinetypeScale(1.0 + 5e-10);
    line.elevation = 9e-10;
    line.setNormal({1e-10, 0, 1});
    EXPECT_EQ(entityText(line), entityText(LineEntity()));
}

TEST(NativeText, AListedEntityShowsKindAndHandle) {
    LineEntity line;
    line.setHandle(0xAB1F);
    JsonWriter out(1, nullptr, 2);
    writeListedEntity(out, line);
    const std::string text = out.take();
    EXPECT_TRUE(text.starts_with("{\n   \"kind\": \"Line\",\n   \"handle\": \"AB1F\",\n   \"layer\": \"0\",")) << text;
    EXPECT_TRUE(text.ends_with("\"endY\": 0.0\n  }")) << text;

    // No member may be there twice, whatever the kind.
    for (int t = 0; t < kEntityTypeCount; ++t) {
        const auto entity = test::filledEntity(static_cast<EntityType>(t), t * 100);
        JsonWriter listed(1);
        writeListedEntity(listed, *entity);
        std::vector<std::set<std::string>> keys;
        bool repeated = false;
        const auto check = [&](int, Json::parse_event_t event, Json& value) {
            if (event == Json::parse_event_t::object_start) keys.emplace_back();
            if (event == Json::parse_event_t::object_end) keys.pop_back();
            if (event == Json::parse_event_t::key) repeated |= !keys.back().insert(value.get<std::string>()).second;
            return true;
        };
        const std::string filled = listed.take();
        const Json json = Json::parse(filled, check);
        EXPECT_FALSE(repeated) << filled;
        EXPECT_EQ(json["kind"], displayName(entity->type()));
        EXPECT_EQ(json["type"], nativeName(entity->type()));
    }
}

TEST(NativeText, UnknownKindsKeepTheirCommonMembers) {
    class Odd : public Entity {
    public:
        EntityType type() const override { return static_cast<EntityType>(200); }
        math::Bounds2 bounds() const override { return {}; }
        void transform(const math::Matrix4&) override {}
        std::unique_ptr<Entity> clone() const override { return nullptr; }
        double distanceTo(const math::Vector2&) const override { return 0; }
        math::Vector2 nearestPoint(const math::Vector2& p) const override { return p; }
        std::vector<math::Vector2> gripPoints() const override { return {}; }
        void moveGrip(std::size_t, const math::Vector2&) override {}
        void describe(FieldVisitor& v) override { v.text("secret", secret); }
        void emit(OutlineSink&, const OutlineStyle&) const override {}
        std::size_t sizeInBytes() const override { return 0; }
        std::string secret;
    };
    const Json json = Json::parse(entityText(Odd()));
    EXPECT_EQ(json["type"], "Unknown");
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"layer", "color", "lineweight", "visible", "type"}));
}

TEST(NativeText, ADocumentHasItsPartsInOrder) {
    const Drawing fresh;
    const Json plain = Json::parse(nativeText(fresh));
    EXPECT_EQ(keysOf(plain), (std::vector<std::string>{"format",          "version",           "layers",
                                                       "currentLayer",    "basePointX",        "basePointY",
                                                       "limits",          "snapBase",          "blocks",
                                                       "groups",          "textStyles",        "currentTextStyle",
                                                       "linetypes",       "currentLinetype",   "dimStyles",
                                                       "currentDimStyle", "mleaderStyles",     "currentMLeaderStyle",
                                                       "tableStyles",     "currentTableStyle", "nextHandle",
                                                       "appIds",          "ucsList",           "currentUcs",
                                                       "entities",        "layouts",           "activeLayout",
                                                       "tilemode",        "currentColor",      "systemVariables",
                                                       "namedViews",      "annotationScales",  "namedPageSetups"}));
    Drawing full;
    test::fillDrawing(full);
    const std::string text = nativeText(full);
    const Json json = Json::parse(text);
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"format",
                                                      "version",
                                                      "properties",
                                                      "layers",
                                                      "currentLayer",
                                                      "layerFilters",
                                                      "shapeFiles",
                                                      "basePointX",
                                                      "basePointY",
                                                      "limits",
                                                      "snapBase",
                                                      "blocks",
                                                      "groups",
                                                      "textStyles",
                                                      "currentTextStyle",
                                                      "linetypes",
                                                      "currentLinetype",
                                                      "dimStyles",
                                                      "currentDimStyle",
                                                      "dimStyleOverrides",
                                                      "dimStyleNameOverrides",
                                                      "mleaderStyles",
                                                      "currentMLeaderStyle",
                                                      "tableStyles",
                                                      "currentTableStyle",
                                                      "nextHandle",
                                                      "hatchPatterns",
                                                      "objectDictionary",
                                                      "appIds",
                                                      "ucsList",
                                                      "currentUcs",
                                                      "entities",
                                                      "layouts",
                                                      "activeLayout",
                                                      "tilemode",
                                                      "currentColor",
                                                      "systemVariables",
                                                      "layerStates",
                                                      "layerStateMasks",
                                                      "namedViews",
                                                      "annotationScales",
                                                      "namedPageSetups"}));
    // To the byte what the library makes of the same document.
    EXPECT_EQ(test::firstDifference(text, json.dump(2, ' ', false)), "");
    EXPECT_TRUE(text.starts_with("{\n  \"format\": \"kovacad\",\n  \"version\": 2,\n  \"properties\": {\n"));
}

TEST(NativeText, SystemVariablesHaveTheirTypes) {
    Drawing drawing;
    drawing.realVariables["LTSCALE"] = 10.0;
    drawing.integerVariables["LUNITS"] = 4;
    Json variables = Json::parse(nativeText(drawing))["systemVariables"];
    EXPECT_EQ(variables["LUNITS"].dump(), "4");
    EXPECT_TRUE(variables["LUPREC"].is_number_integer());
    EXPECT_EQ(variables["LTSCALE"].dump(), "10.0");
    EXPECT_EQ(variables["CTAB"], "Model");
    EXPECT_EQ(variables["CANNOSCALE"], "1:1");
    EXPECT_FALSE(variables.contains("TILEMODE"));
    // Settings of the program stay out, and so does what another member holds.
    EXPECT_FALSE(variables.contains("FILEDIA"));
    EXPECT_FALSE(variables.contains("DIMTXT"));
    drawing.tileMode = false;
    EXPECT_EQ(Json::parse(nativeText(drawing))["systemVariables"]["CTAB"], "Layout1");
    drawing.realVariables["LTSCALE"] = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(Json::parse(nativeText(drawing))["systemVariables"].contains("LTSCALE"));
}

}  // namespace
}  // namespace kova::io::native
