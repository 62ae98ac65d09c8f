#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <sstream>

#include "engine/kinds/all.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/groups/group_writer.hpp"
#include "io/native/native_file.hpp"
#include "io/dxf/dxf_tools.hpp"
#include "io/dxf/rich_drawing.hpp"
#include "math/angles.hpp"

namespace kova::test {

using namespace engine;
using namespace io::dxf;
using math::Vector2;

namespace {

/// The value behind a header variable's name.
std::string headerValue(const std::vector<DxfGroup>& groups, const std::string& name) {
    for (std::size_t i = 0; i + 1 < groups.size(); ++i)
        if (groups[i].code == 9 && groups[i].value == name) return groups[i + 1].value;
    return "?";
}

std::vector<std::string> sectionNames(const std::vector<DxfGroup>& groups) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i + 1 < groups.size(); ++i)
        if (groups[i].code == 0 && groups[i].value == "SECTION") names.push_back(groups[i + 1].value);
    return names;
}

/// Names of the records of one table, in order.
std::vector<std::string> tableRecords(const std::vector<DxfGroup>& groups, const std::string& table) {
    std::vector<std::string> names;
    bool inRecord = false;
    for (std::size_t i = 1; i < groups.size(); ++i) {
        if (groups[i].code == 0) inRecord = groups[i].value == table && groups[i - 1].value != "TABLE";
        if (inRecord && groups[i].code == 2) {
            names.push_back(groups[i].value);
            inRecord = false;
        }
    }
    return names;
}

std::size_t countRecords(const std::vector<DxfGroup>& groups, const std::string& type) {
    return static_cast<std::size_t>(
        std::count_if(groups.begin(), groups.end(), [&](const DxfGroup& g) { return g.code == 0 && g.value == type; }));
}

/// The lines round the place where two texts part; empty when they are equal.
std::string firstDifference(const std::string& a, const std::string& b) {
    if (a == b) return {};
    const auto at = static_cast<std::size_t>(
        std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())), b.begin())
            .first -
        a.begin());
    const std::size_t from = at > 80 ? at - 80 : 0;
    return a.substr(from, 160) + "\n-----\n" + b.substr(from, 160);
}

/// What any sound file keeps to: handles are unique and below the seed, pointers lead to a handle, extended data are
/// of registered applications, and no value breaks the line structure.
void expectSound(const std::vector<DxfGroup>& groups) {
    std::set<std::uint64_t> handles;
    std::set<std::string> applications;
    const auto number = [](const std::string& text) { return std::stoull(text, nullptr, 16); };
    std::string record;
    bool raw = false;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const DxfGroup& g = groups[i];
        if (g.code == 0) {
            record = g.value;
            raw = false;
        }
        if (g.code == 100 && g.value == "AcDbXrecord") raw = true;
        const bool own = record == "DIMSTYLE" ? g.code == 105 : g.code == 5;
        if (own && !raw && !(i > 0 && groups[i - 1].code == 9)) {
            EXPECT_TRUE(handles.insert(number(g.value)).second) << record << " has handle " << g.value << " again";
        }
        if (record == "APPID" && g.code == 2) applications.insert(g.value);
    }
    const std::uint64_t seed = number(headerValue(groups, "$HANDSEED"));
    ASSERT_FALSE(handles.empty());
    EXPECT_GT(seed, *handles.rbegin());
    raw = false;
    for (const DxfGroup& g : groups) {
        if (g.code == 0) {
            record = g.value;
            raw = false;
        }
        if (g.code == 100 && g.value == "AcDbXrecord") raw = true;
        if (g.code == 1001) {
            EXPECT_TRUE(applications.count(g.value)) << g.value << " is not registered";
        }
        const bool pointer = (g.code >= 320 && g.code < 370) || g.code == 390 || g.code == 1005;
        if (!pointer || raw || g.value == "0") continue;
        EXPECT_TRUE(handles.count(number(g.value))) << record << " points to " << g.value << " by " << g.code;
    }
}

}  // namespace

TEST(DxfWriter, EmptyDrawingHasAllSectionsAndStandardRecords) {
    const Drawing drawing;
    const std::string text = dxfText(drawing);
    const std::vector<DxfGroup> groups = dxfGroups(text);
    EXPECT_EQ(sectionNames(groups),
              (std::vector<std::string>{"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"}));
    EXPECT_EQ(groups.back().value, "EOF");
    EXPECT_EQ(text.find(kSeedPlaceholder), std::string::npos);
    // The header begins with the version.
    ASSERT_GT(groups.size(), 6U);
    EXPECT_EQ(groups[2].value, "$ACADVER");
    EXPECT_EQ(groups[3].value, "AC1027");
    EXPECT_EQ(groups[4].value, "$ACADMAINTVER");
    EXPECT_EQ(groups[5].code, 70);
    EXPECT_EQ(groups[5].value, "125");
    std::vector<std::string> variables;
    for (const DxfGroup& g : groups) {
        if (g.code == 0 && g.value == "ENDSEC") break;
        if (g.code == 9) variables.push_back(g.value.substr(1));
    }
    EXPECT_TRUE(std::equal(variables.begin(), variables.end(), headerVariables().begin(), headerVariables().end()));
    // The times stand behind the variables of a drawing.
    const auto last = std::find(variables.begin(), variables.end(), "HPANG");
    ASSERT_NE(last, variables.end());
    EXPECT_EQ((std::vector<std::string>(last + 1, variables.end())),
              (std::vector<std::string>{"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE", "TDINDWG", "TDUSRTIMER",
                                        "USRTIMER"}));

    const auto linetypes = tableRecords(groups, "LTYPE");
    ASSERT_GE(linetypes.size(), 3U);
    EXPECT_EQ((std::vector<std::string>{linetypes.begin(), linetypes.begin() + 3}),
              (std::vector<std::string>{"ByBlock", "ByLayer", "Continuous"}));
    const auto records = tableRecords(groups, "BLOCK_RECORD");
    ASSERT_GE(records.size(), 2U);
    EXPECT_EQ(records[0], "*Model_Space");
    EXPECT_EQ(records[1], "*Paper_Space");
    std::vector<std::string> tables;
    for (std::size_t i = 0; i + 1 < groups.size(); ++i)
        if (groups[i].code == 0 && groups[i].value == "TABLE") tables.push_back(groups[i + 1].value);
    EXPECT_EQ(tables, (std::vector<std::string>{"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE",
                                                "BLOCK_RECORD"}));
    const auto applications = tableRecords(groups, "APPID");
    for (const std::string_view name : registeredApplications())
        EXPECT_EQ(std::count(applications.begin(), applications.end(), name), 1) << name;
    expectSound(groups);
}

TEST(DxfWriter, RichDrawingIsSoundAndWritesEveryEntity) {
    Drawing drawing;
    fillRichDrawing(drawing);
    DxfSaveReport report;
    const std::string text = dxfText(drawing, &report);
    const std::vector<DxfGroup> groups = dxfGroups(text);
    EXPECT_EQ(report.dropped, 0U);
    EXPECT_EQ(report.total, drawing.entityCount());
    EXPECT_EQ(report.replacedNumbers, 0U);
    expectSound(groups);
    for (const char* kind : {"LINE",
                             "CIRCLE",
                             "ARC",
                             "LWPOLYLINE",
                             "POINT",
                             "TEXT",
                             "MTEXT",
                             "ELLIPSE",
                             "SPLINE",
                             "HELIX",
                             "DIMENSION",
                             "ARC_DIMENSION",
                             "LARGE_RADIAL_DIMENSION",
                             "LEADER",
                             "MULTILEADER",
                             "MLINE",
                             "HATCH",
                             "INSERT",
                             "IMAGE",
                             "WIPEOUT",
                             "TOLERANCE",
                             "REGION",
                             "3DSOLID",
                             "POLYLINE",
                             "ACAD_TABLE",
                             "SOLID",
                             "TRACE",
                             "3DFACE",
                             "XLINE",
                             "RAY",
                             "SHAPE",
                             "ATTDEF",
                             "ATTRIB",
                             "VIEWPORT",
                             "IMAGEDEF",
                             "SPATIAL_FILTER",
                             "ACDSRECORD"})
        EXPECT_GE(countRecords(groups, kind), 1U) << kind;
    // Saving says the same every time.
    EXPECT_EQ(firstDifference(text, dxfText(drawing)), "");
}

TEST(DxfWriter, RichDrawingComesBackWhole) {
    Drawing drawing;
    fillRichDrawing(drawing);
    Drawing again;
    ASSERT_EQ(loadDxfText(dxfText(drawing), again), "");
    EXPECT_EQ(firstDifference(io::native::nativeText(drawing), io::native::nativeText(again)), "");
    const auto first = tableRecords(dxfGroups(dxfText(drawing)), "APPID");
    const auto second = tableRecords(dxfGroups(dxfText(again)), "APPID");
    EXPECT_EQ(first, second);
    // And a second time to the letter.
    EXPECT_EQ(firstDifference(dxfText(drawing), dxfText(again)), "");
}

TEST(DxfWriter, UnitsOfSheetsAndJogAnglesAreThoseOfTheFormat) {
    Drawing drawing;
    DimStyle style = *drawing.dimStyles.find("Standard");
    style.name = "Jog";
    style.jogAngle = math::kPi / 3;
    drawing.dimStyles.add(style);
    PageSetup& sheet = drawing.layouts().front()->pageSetup;
    sheet.paperUnits = 0;
    sheet.paperWidth = 279.4;
    sheet.paperHeight = 215.9;
    sheet.marginLeft = 25.4;
    sheet.marginBottom = 12.7;
    // The first value of each group of the record that has `name` in a group `key` behind the subclass `marker`.
    const std::vector<DxfGroup> all = dxfGroups(dxfText(drawing));
    const auto recordOf = [&](std::string_view type, std::string_view marker, int key, std::string_view name) {
        std::map<int, std::string> values;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (all[i].code != 0 || all[i].value != type) continue;
            values.clear();
            std::string subclass;
            bool found = false;
            for (std::size_t k = i + 1; k < all.size() && all[k].code != 0; ++k) {
                if (all[k].code == 100) subclass = all[k].value;
                found = found || (subclass == marker && all[k].code == key && all[k].value == name);
                values.emplace(all[k].code, all[k].value);
            }
            if (found) return values;
        }
        return std::map<int, std::string>();
    };
    auto jog = recordOf("DIMSTYLE", "AcDbDimStyleTableRecord", 2, "Jog");
    EXPECT_NEAR(std::stod("0" + jog[50]), 60.0, 1e-12);
    auto paper = recordOf("LAYOUT", "AcDbLayout", 1, "Layout1");
    EXPECT_EQ(paper[72], "0");
    EXPECT_NEAR(std::stod("0" + paper[44]), 215.9, 1e-9);  // of the sheet before it is turned
    EXPECT_NEAR(std::stod("0" + paper[40]), 12.7, 1e-9);
    EXPECT_NEAR(std::stod("0" + paper[43]), 25.4, 1e-9);
    EXPECT_EQ(paper[10], "-1.0");  // in units of the sheet
}

TEST(DxfWriter, OtherSoftwareFindsNothingToMend) {
    const DxfFolder folder;
    std::vector<std::string> files;
    const auto save = [&](const Drawing& drawing, const std::string& name) {
        files.push_back(folder.file(name));
        EXPECT_EQ(saveDxf(drawing, files.back()), "");
    };
    save(Drawing(), "empty.dxf");
    Drawing imperial;
    applyStartingValues(imperial, UnitSystem::Imperial);
    save(imperial, "imperial.dxf");
    Drawing rich;
    fillRichDrawing(rich);
    save(rich, "rich.dxf");
    rich.tileMode = false;
    rich.activeLayoutName = "Details";
    save(rich, "paper.dxf");
    // Names that must not stand in a file, and some that are nowhere defined.
    Drawing odd;
    auto line = std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{1, 1});
    line->layer = "bad<>layer\n";
    line->linetype = "no*such?type";
    odd.modelSpace().append(std::move(line));
    auto text = std::make_unique<TextEntity>();
    text->content = "line\nbreak \xFF wrong";
    text->textStyle = "nowhere";
    odd.modelSpace().append(std::move(text));
    auto dimension = std::make_unique<DimensionEntity>();
    dimension->def2 = {5, 5};
    dimension->dimStyleName = "nowhere";
    odd.modelSpace().append(std::move(dimension));
    save(odd, "odd.dxf");
    std::string output;
    expectCleanAudit(files, output);
    if (IsSkipped()) return;
    // What was written is what they see in model space.
    std::map<std::string, int> seen;
    const std::size_t at = output.find("rich.dxf: ");
    ASSERT_NE(at, std::string::npos) << output;
    std::istringstream counts(output.substr(at + 10, output.find('\n', at) - at - 10));
    for (std::string word; counts >> word;)
        if (const std::size_t equals = word.find('='); equals != std::string::npos)
            seen[word.substr(0, equals)] = std::stoi(word.substr(equals + 1));
    int total = 0;
    for (const auto& [kind, count] : seen) total += count;
    EXPECT_EQ(total, static_cast<int>(rich.modelSpace().size())) << output;
    EXPECT_EQ(seen["INSERT"], 5);
    EXPECT_EQ(seen["DIMENSION"] + seen["ARC_DIMENSION"] + seen["LARGE_RADIAL_DIMENSION"], 10) << output;
}

TEST(DxfWriter, SolidsWithoutBinaryBodyAreLeftOutAndCounted) {
    Drawing drawing;
    auto solid = std::make_unique<Solid3DEntity>();
    solid->sat = "700 0 1 0\nEnd-of-ACIS-data";
    drawing.modelSpace().append(std::move(solid));
    auto empty = std::make_unique<PolylineEntity>();
    drawing.modelSpace().append(std::move(empty));
    DxfSaveReport report;
    const auto groups = dxfGroups(dxfText(drawing, &report));
    EXPECT_EQ(report.total, 2U);
    EXPECT_EQ(report.dropped, 2U);
    EXPECT_EQ(report.droppedSat, 1U);
    EXPECT_EQ(countRecords(groups, "3DSOLID"), 0U);
    EXPECT_EQ(sectionNames(groups).back(), "OBJECTS");
}

TEST(DxfWriter, FailuresNameThePathAndKeepAnOldFile) {
    const Drawing drawing;
    EXPECT_EQ(saveDxf(drawing, "/nowhere/at/all.dxf"), "Failed to open file for writing: /nowhere/at/all.dxf");
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(saveDxf(drawing, "/dev/full"), "Write error on file: /dev/full");
    }
}

TEST(DxfWriter, HostileValuesDoNotHarmTheFile) {
    Drawing drawing;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int t = 0; t < kEntityTypeCount; ++t) drawing.modelSpace().append(makeEntity(static_cast<EntityType>(t)));
    drawing.modelSpace().append(std::make_unique<LineEntity>(Vector2{nan, 0}, Vector2{1, 1}));
    auto huge = std::make_unique<CircleEntity>(Vector2{1e300, -1e300}, 1e308);
    huge->elevation = nan;
    drawing.modelSpace().append(std::move(huge));
    Block* self = drawing.addBlock("Self");
    self->entities.append(std::make_unique<BlockReferenceEntity>(Name("Self"), Vector2{0, 0}));
    DxfSaveReport report;
    const auto groups = dxfGroups(dxfText(drawing, &report));
    expectSound(groups);
    EXPECT_GE(report.replacedNumbers, 1U);
    for (const DxfGroup& g : groups)
        if (g.code >= 10 && g.code < 60) {
            EXPECT_TRUE(std::isfinite(std::strtod(g.value.c_str(), nullptr))) << g.code << ' ' << g.value;
        }
}

TEST(DxfWriter, FramesStandWhereOtherProgramsLookForThem) {
    const DxfFolder folder;
    const std::string file = folder.file("frames.dxf");
    engine::Drawing drawing;
    auto mask = std::make_unique<engine::WipeoutEntity>(std::vector<math::Vector2>{{0, 0}, {10, 0}, {10, 10}});
    mask->showFrame = false;
    drawing.modelSpace().append(std::move(mask));
    for (const auto& [name, value] : {std::pair{"IMAGEFRAME", 2}, {"WIPEOUTFRAME", 0}, {"FRAME", 2}, {"XCLIPFRAME", 1}})
        EXPECT_EQ(engine::setSysVar(drawing, name, value), "");
    ASSERT_EQ(io::dxf::saveDxf(drawing, file), "");
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    const std::vector<DxfGroup> groups = dxfGroups(text.str());
    std::string record;
    std::map<std::string, std::string> flags;
    for (const DxfGroup& g : groups) {
        if (g.code == 0) record = g.value;
        if (g.code == 70) flags[record] = g.value;
    }
    const auto number = [&](const char* key) { return std::atoi(flags[key].c_str()); };
    EXPECT_EQ(number("RASTERVARIABLES"), 2);
    EXPECT_EQ(number("WIPEOUTVARIABLES"), 0);
    EXPECT_EQ(number("WIPEOUT") & 1, 1) << "without this bit other programs hide the mask itself";
    engine::Drawing back;
    ASSERT_EQ(io::dxf::loadDxf(file, back), "");
    EXPECT_EQ(engine::sysVarInt(back, "IMAGEFRAME"), 2);
    EXPECT_EQ(engine::sysVarInt(back, "FRAME"), 2);
    EXPECT_EQ(engine::sysVarInt(back, "XCLIPFRAME"), 1);
    EXPECT_FALSE(static_cast<engine::WipeoutEntity&>(*back.modelSpace().entities().front()).showFrame);
    // Another program changes what it knows of.
    std::string changed = text.str();
    const std::size_t at = changed.rfind("AcDbRasterVariables");
    const std::size_t value = changed.find("\n 70\n", at) + 5;
    changed.replace(value, changed.find('\n', value) - value, "     0");
    std::ofstream(file) << changed;
    engine::Drawing edited;
    ASSERT_EQ(io::dxf::loadDxf(file, edited), "");
    EXPECT_EQ(engine::sysVarInt(edited, "IMAGEFRAME"), 0);
}

TEST(DxfStream, RealsAndTexts) {
    const auto written = [](auto&& write) {
        GroupWriter out;
        write(out);
        return std::string(out.view());
    };
    EXPECT_EQ(written([](GroupWriter& o) { o.real(40, 1.0); }), " 40\n1.0\n");
    EXPECT_EQ(written([](GroupWriter& o) { o.real(40, -0.0); }), " 40\n0.0\n");
    EXPECT_EQ(written([](GroupWriter& o) { o.real(140, 0.1); }), "140\n0.1\n");
    EXPECT_EQ(written([](GroupWriter& o) { o.real(1040, 1e300); }), "1040\n1e+300\n");
    EXPECT_EQ(written([](GroupWriter& o) { o.handle(5, 0xABC); }), "  5\nABC\n");
    EXPECT_EQ(written([](GroupWriter& o) { o.text(1, "a^b\tc\n\xC3\xA4\xFF"); }),
              "  1\na^ b^Ic^J\xC3\xA4\xEF\xBF\xBD\n");
    for (double v : {1e15, 123456789012345680.0, 4.9e-324, 0.30000000000000004, -1e22}) {
        const std::string text = written([&](GroupWriter& o) { o.real(40, v); });
        EXPECT_EQ(std::strtod(text.c_str() + 4, nullptr), v) << text;
        EXPECT_NE(text.find_first_of(".e"), std::string::npos) << text;
    }
}

TEST(DxfFacts, AnglesComeBackToTheLastBit) {
    char text[64];
    EXPECT_EQ(std::string_view(text, degreesText(math::kPi / 2, text)), "90.0");
    EXPECT_EQ(std::string_view(text, degreesText(-math::kPi / 4, text)), "-45.0");
    double state = 0.1;
    for (int i = 0; i < 20000; ++i) {
        state = std::fmod(state * 7.123456789 + 0.777, 13.0);
        for (const double angle : {state - 6.5, state * 1e-9, state * 1e9}) {
            const std::size_t length = degreesText(angle, text);
            double back = 0.0;
            ASSERT_TRUE(radiansFromDegrees(std::string_view(text, length), back));
            ASSERT_EQ(back, angle) << std::string_view(text, length);
        }
    }
    for (int percent = 1; percent <= 100; ++percent) EXPECT_EQ(transparencyPercent(transparencyCode(percent)), percent);
    EXPECT_EQ(transparencyCode(70), 33554508);
    EXPECT_EQ(nearestLineweight(36), 35);
    EXPECT_EQ(nearestLineweight(1000), 211);
    EXPECT_EQ(nearestLineweight(-2), -2);
}

TEST(DxfOwnData, ChosenFieldsComeBackAndTheOthersStay) {
    DimensionEntity from;
    from.def1 = {9, 9};
    from.styleOverrides = {{"DIMTXT", 2.5}};
    from.inspectLabel = "say \"\\U+00B0\" and \\M+1ABCD";
    from.jogged = true;
    from.jogPoint = {3, 4};
    from.elevation = 7.0;
    std::string json = ownDataOf(from, {"elevation"}, {"styleOverrides", "inspectLabel", "jogged", "jogPoint"});
    protectEscapes(json);
    EXPECT_EQ(json.find("\\U+"), std::string::npos) << json;
    EXPECT_EQ(json.find("\\M+"), std::string::npos) << json;
    EXPECT_EQ(json.find("def1"), std::string::npos) << json;
    DimensionEntity to;
    to.def1 = {1, 2};
    to.linearRotation = 0.5;
    ASSERT_TRUE(applyOwnData({json, {}}, to)) << json;
    EXPECT_EQ(to.def1, (Vector2{1, 2}));
    EXPECT_EQ(to.linearRotation, 0.5);
    EXPECT_EQ(to.styleOverrides, from.styleOverrides);
    EXPECT_EQ(to.inspectLabel, from.inspectLabel);
    EXPECT_EQ(to.jogPoint, from.jogPoint);
    EXPECT_EQ(to.elevation, 7.0);
    // A line's end keeps its height when only common fields come.
    LineEntity line(math::Vector3{0, 0, 1}, math::Vector3{1, 1, 5});
    ASSERT_TRUE(applyOwnData({R"({"annotative":true})", {}}, line));
    EXPECT_EQ(line.end3().z, 5.0);
    EXPECT_TRUE(line.annotative());
    EXPECT_FALSE(applyOwnData({"{\"a\":", {}}, line));
    EXPECT_FALSE(applyOwnData({"[]", {}}, line));
    EXPECT_TRUE(isPlaceholder({R"({"placeholder":true})", {}}));
    EXPECT_FALSE(isPlaceholder({R"({"name":"x"})", {}}));
    // Pieces never part a character.
    std::string joined;
    eachPiece("aa\xC3\xA4\xE2\x82\xAC!", 3, [&](std::string_view piece) {
        EXPECT_LE(piece.size(), 3U);
        EXPECT_NE(static_cast<unsigned char>(piece[0]) & 0xC0U, 0x80U);
        joined += piece;
    });
    EXPECT_EQ(joined, "aa\xC3\xA4\xE2\x82\xAC!");
}

}  // namespace kova::test
