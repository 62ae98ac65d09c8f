// The DXF reader on texts that are written out here: what the format allows, and what careless or hostile files hold.
#include "io/dxf/dxf_load.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "engine/model/drawing.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/text.hpp"
#include "engine/model/sysvar.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/native/native_file.hpp"

namespace kova::test {

namespace fs = std::filesystem;
using namespace engine;
using io::dxf::DxfLoadReport;
using io::dxf::loadDxfText;

namespace {

/// "0 LINE|10 1.5" as groups of two lines each.
std::string groups(std::string_view compact, std::string_view eol = "\n") {
    std::string text;
    while (!compact.empty()) {
        const std::size_t end = std::min(compact.find('|'), compact.size());
        const std::string_view group = compact.substr(0, end);
        compact.remove_prefix(std::min(end + 1, compact.size()));
        const std::size_t blank = group.find(' ');
        text += std::string(group.substr(0, blank)) + std::string(eol);
        text += (blank == group.npos ? std::string() : std::string(group.substr(blank + 1))) + std::string(eol);
    }
    return text;
}

std::string header(std::string_view version, std::string_view more = {}) {
    return groups("0 SECTION|2 HEADER|9 $ACADVER|1 " + std::string(version) +
                  (more.empty() ? "" : "|" + std::string(more)) + "|0 ENDSEC");
}

std::string entities(std::string_view compact) {
    return groups("0 SECTION|2 ENTITIES|" + std::string(compact) + "|0 ENDSEC|0 EOF");
}

constexpr const char* kLine = "0 LINE|5 2A|100 AcDbEntity|8 Walls|62 1|100 AcDbLine|10 1|20 2|30 0|11 3.5|21 -4e0|31 0";

/// The first entity of model space; a failed cast shows as null.
template <class Kind>
Kind* first(Drawing& d) {
    return dynamic_cast<Kind*>(d.modelSpace().first());
}

}  // namespace

// What some programs of the field make a habit of.
TEST(DxfReader, CommonGroupsBehindTheMarkerOfTheKind) {
    Drawing drawing;
    ASSERT_EQ(loadDxfText(header("AC1015") +
                              entities("0 LINE|5 10|100 AcDbEntity|100 AcDbLine|8 X|62 1|370 70|420 255|440 33554508|"
                                       "48 2.5|60 1|6 CONTINUOUS|10 0|20 0|11 9|21 9"),
                          drawing),
              "");
    const auto* line = first<LineEntity>(drawing);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->layer, "X");
    EXPECT_EQ(line->lineweight, 70);
    EXPECT_EQ(line->color, Color::rgb(0, 0, 255));
    EXPECT_EQ(line->transparency, 70);
    EXPECT_EQ(line->linetypeScale(), 2.5);
    EXPECT_FALSE(line->visible);
    EXPECT_EQ(line->linetype, "Continuous");
}

TEST(DxfReader, Index7WithTrueColourWhiteIsIndex7) {
    const std::string layer =
        groups("0 SECTION|2 TABLES|0 TABLE|2 LAYER|70 1|0 LAYER|2 White|70 0|62 -7|420 16777215|6 Continuous|0 ENDTAB|"
               "0 ENDSEC");
    const std::string lines =
        entities("0 LINE|100 AcDbEntity|8 0|420 16777215|62 7|100 AcDbLine|10 0|20 0|11 9|21 9|"
                 "0 LINE|100 AcDbEntity|8 0|62 255|420 16777215|100 AcDbLine|10 0|20 0|11 9|21 9");
    Drawing drawing;
    ASSERT_EQ(loadDxfText(header("AC1018") + layer + lines, drawing), "");
    ASSERT_EQ(drawing.modelSpace().size(), 2U);
    EXPECT_EQ(drawing.modelSpace().first()->color, Color::index(7));
    EXPECT_EQ(drawing.modelSpace().last()->color, Color::rgb(255, 255, 255));
    ASSERT_NE(drawing.layers.find("White"), nullptr);
    EXPECT_EQ(drawing.layers.find("White")->color, Color::index(7));
    EXPECT_FALSE(drawing.layers.find("White")->on);
}

// Mirrored blocks of other programs have attributes that are seen from behind while their reference is not.
TEST(DxfReader, AttributesKeepTheirExtrusion) {
    const std::string block =
        groups("0 SECTION|2 BLOCKS|0 BLOCK|8 0|2 B|70 2|10 0|20 0|30 0|0 ATTDEF|8 0|10 2|20 1|30 3|40 1|1 x|210 0|220 0|"
               "230 -1|2 T|3 Value|70 0|0 ENDBLK|0 ENDSEC");
    const std::string reference =
        "0 INSERT|5 33|8 0|66 1|2 B|10 1|20 0|30 0|"
        "0 ATTRIB|5 35|8 0|10 10|20 5|30 2|40 1|1 abc|210 0|220 0|230 -1|2 T|70 0|0 ATTRIB|5 36|8 0|10 3|20 5|30 0|40 1|"
        "1 plain|2 U|70 0|0 SEQEND|5 34";
    Drawing drawing;
    ASSERT_EQ(loadDxfText(header("AC1015") + block + entities(reference), drawing), "");
    const auto check = [](Drawing& d, const char* what) {
        SCOPED_TRACE(what);
        auto* r = first<BlockReferenceEntity>(d);
        ASSERT_NE(r, nullptr);
        ASSERT_EQ(r->attributes.size(), 2U);
        const BlockAttribute& a = r->attributes[0];
        ASSERT_TRUE(a.plane.has_value());
        EXPECT_EQ(a.plane->normal, (math::Vector3{0, 0, -1}));
        EXPECT_EQ(a.plane->elevation, 2.0);
        EXPECT_EQ(a.position, (math::Vector2{10, 5}));
        EXPECT_FALSE(r->attributes[1].plane.has_value());
        EXPECT_TRUE(r->gripPoints()[1].near_equal({-10, 5}, 1e-12));
        // Seen from behind the letters run to the left of their place.
        const math::Bounds2 box = r->bounds();
        EXPECT_NEAR(box.min.y, 5.0, 0.5);
        EXPECT_LT(box.min.x, -11.0);
        EXPECT_GT(box.max.x, 5.0);
        const Block* definition = d.findBlock("B");
        ASSERT_NE(definition, nullptr);
        EXPECT_EQ(definition->entities.first()->normal(), (math::Vector3{0, 0, -1}));
        EXPECT_EQ(definition->entities.first()->elevation, 3.0);
    };
    check(drawing, "read");
    Drawing saved;
    ASSERT_EQ(loadDxfText(io::dxf::dxfText(drawing), saved), "");
    check(saved, "DXF");
    Drawing native;
    ASSERT_EQ(io::native::loadNativeText(io::native::nativeText(drawing), native), "");
    check(native, "native");

    // It goes along with its reference, and with its insertion grip.
    auto* r = first<BlockReferenceEntity>(drawing);
    r->transform(math::Matrix4::translation(100, 20, 0));
    EXPECT_TRUE(r->gripPoints()[1].near_equal({90, 25}, 1e-9));
    EXPECT_LT(r->attributes[0].plane->normal.z, 0.0);
    r->moveGrip(0, {1, 0});
    EXPECT_TRUE(r->gripPoints()[1].near_equal({-10, 5}, 1e-9));
    r->moveGrip(1, {-4, 4});
    EXPECT_TRUE(r->attributes[0].position.near_equal({4, 4}, 1e-9));
}

TEST(DxfReader, TimesOfTheFileGoOn) {
    Drawing drawing;
    ASSERT_EQ(loadDxfText(header("AC1018", "9 $TDCREATE|40 2451544.5|9 $TDUCREATE|40 2451544.375|9 $TDUPDATE|"
                                           "40 2451600.25|9 $TDINDWG|40 1.5") +
                              entities(kLine),
                          drawing),
              "");
    EXPECT_EQ(sysVarReal(drawing, "TDCREATE"), 2451544.5);
    EXPECT_EQ(sysVarReal(drawing, "TDUCREATE"), 2451544.375);
    EXPECT_EQ(sysVarReal(drawing, "TDUPDATE"), 2451600.25);
    // The file has the local time only.
    EXPECT_NEAR(sysVarReal(drawing, "TDUUPDATE"), 2451600.25, 0.6);
    EXPECT_NEAR(sysVarReal(drawing, "TDINDWG"), 1.5, 0.01);
    for (const bool native : {false, true}) {
        Drawing again;
        if (native)
            ASSERT_EQ(io::native::loadNativeText(io::native::nativeText(drawing), again), "");
        else
            ASSERT_EQ(loadDxfText(io::dxf::dxfText(drawing), again), "");
        for (const char* name : {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE"})
            EXPECT_EQ(sysVarReal(again, name), sysVarReal(drawing, name)) << name;
        EXPECT_NEAR(sysVarReal(again, "TDINDWG"), 1.5, 0.01);
    }
}

TEST(DxfReader, LineEndsBlankLinesAndOrderOfSectionsDoNotMatter) {
    std::string cr = entities(kLine);
    std::replace(cr.begin(), cr.end(), '\n', '\r');
    std::string blanks = entities(kLine);
    // A blank line where a code must stand, and one of blanks.
    blanks.insert(blanks.find("0\nLINE"), "\n   \n");
    const std::string texts[] = {
        entities(kLine),
        groups("0 SECTION|2 ENTITIES|" + std::string(kLine) + "|0 ENDSEC|0 EOF", "\r\n"),
        cr,
        blanks,
        "\xEF\xBB\xBF" + groups("999 made by hand") + entities(kLine) + "what follows the end\nis nothing\n",
        groups("0 SECTION|2 UNKNOWN|0 THING|1 x|0 ENDSEC") + entities(kLine),
        entities(std::string(kLine)) + "0\n",
    };
    for (const std::string& text : texts) {
        Drawing d;
        DxfLoadReport report;
        ASSERT_EQ(loadDxfText(text, d, &report), "");
        auto* line = first<LineEntity>(d);
        ASSERT_NE(line, nullptr) << text;
        EXPECT_EQ(line->end, (math::Vector2{3.5, -4}));
        EXPECT_EQ(line->layer, "Walls");
        EXPECT_EQ(line->color, Color::index(1));
        EXPECT_EQ(line->handle(), 0x2Au);
        EXPECT_TRUE(d.layers.contains("Walls"));
        EXPECT_GT(d.nextHandle, 0x2Au);
        std::vector<std::string> expected;
        if (text.find("UNKNOWN") != text.npos) expected.push_back("Not kept: 1 section UNKNOWN.");
        EXPECT_EQ(report.lines, expected);
    }
}

TEST(DxfReader, BinaryFilesOfBothFormsHoldTheSameAsText) {
    for (const bool wide : {true, false}) {
        std::string bytes("AutoCAD Binary DXF\r\n\x1A\0", 22);
        const auto code = [&](unsigned c) {
            if (!wide && c >= 255) bytes += '\xFF';
            bytes += static_cast<char>(c & 255);
            if (wide || c >= 255) bytes += static_cast<char>(c >> 8);
        };
        const auto text = [&](unsigned c, const char* v) {
            code(c);
            bytes += v;
            bytes += '\0';
        };
        const auto real = [&](unsigned c, double v) {
            code(c);
            bytes.append(reinterpret_cast<const char*>(&v), 8);
        };
        const auto small = [&](unsigned c, std::int16_t v) {
            code(c);
            bytes.append(reinterpret_cast<const char*>(&v), 2);
        };
        text(0, "SECTION");
        text(2, "ENTITIES");
        text(0, "LINE");
        text(8, "A");
        small(62, 3);
        real(10, 0.1);
        real(20, -2.5);
        real(11, 1e300);
        real(21, 4);
        text(1001, "APP");
        code(1071);
        const std::int32_t big = 70000;
        bytes.append(reinterpret_cast<const char*>(&big), 4);
        text(0, "ENDSEC");
        text(0, "EOF");
        Drawing d;
        ASSERT_EQ(loadDxfText(bytes, d), "");
        auto* line = first<LineEntity>(d);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->start, (math::Vector2{0.1, -2.5}));
        EXPECT_EQ(line->end, (math::Vector2{1e300, 4}));
        EXPECT_EQ(line->color, Color::index(3));
        ASSERT_NE(line->xdata(), nullptr);
        EXPECT_EQ(std::get<std::int64_t>(line->xdata()->find("APP")->front().value), 70000);
        // Cut off anywhere: an error or what was there, never a crash.
        for (std::size_t n = 0; n < bytes.size(); ++n) {
            Drawing part;
            loadDxfText(std::string_view(bytes).substr(0, n), part);
        }
    }
}

TEST(DxfReader, TextsAreDecodedByVersionAndCodePage) {
    const auto content = [](std::string_view version, std::string_view page, std::string_view raw) {
        Drawing d;
        EXPECT_EQ(loadDxfText(header(version, "9 $DWGCODEPAGE|3 " + std::string(page)) +
                                  entities("0 TEXT|8 0|10 0|20 0|40 1|1 " + std::string(raw)),
                              d),
                  "");
        auto* text = first<TextEntity>(d);
        return text != nullptr ? text->content : "none";
    };
    EXPECT_EQ(content("AC1015", "ANSI_1252", "\x80\xC4"), "\xE2\x82\xAC\xC3\x84");
    EXPECT_EQ(content("AC1015", "ANSI_1251", "\xC4"), "\xD0\x94");
    EXPECT_EQ(content("AC1015", "ansi_932", "\x93\xFA"), "\xE6\x97\xA5");
    // A word of two characters that happens to be valid UTF-8.
    EXPECT_EQ(content("AC1015", "ANSI_936", "\xC4\xA3"), "\xE6\xA8\xA1");
    EXPECT_EQ(content("AC1009", "dos437", "\x81"), "\xC3\xBC");
    EXPECT_EQ(content("AC1009", "JOHAB", "\x88\x61"), "\xEA\xB0\x80");
    EXPECT_EQ(content("AC1015", "NO_SUCH_PAGE", "\xC4"), "\xC3\x84");
    // From AC1021 on in UTF-8, and the code page where it is none.
    EXPECT_EQ(content("AC1027", "ANSI_1251", "\xC3\x84"), "\xC3\x84");
    EXPECT_EQ(content("AC1027", "ANSI_1252", "\xC4"), "\xC3\x84");
    EXPECT_EQ(content("AC1015", "ANSI_1252", "94\\U+00B0 \\M+193FA \\U+D83D\\U+DE00"),
              "94\xC2\xB0 \xE6\x97\xA5 \xF0\x9F\x98\x80");
    EXPECT_EQ(content("AC1027", "ANSI_1252", "a^Jb^ c^Id %%c"), "a\nb^c\td %%c");
    EXPECT_EQ(content("AC1027", "ANSI_1252", "   leading"), "   leading");
    EXPECT_EQ(content("AC1027", "ANSI_1252", "\\U+12"), "\\U+12");
}

TEST(DxfReader, OldReleasesHavePolylinesOfVerticesAndNoMarkers) {
    Drawing d;
    DxfLoadReport report;
    ASSERT_EQ(
        loadDxfText(
            header("AC1009", "9 $DIMTXT|40 3.5|9 $LTSCALE|40 2.5|9 $CLAYER|8 PIPES") +
                groups("0 SECTION|2 BLOCKS|0 BLOCK|8 0|2 DOOR|70 2|10 1|20 2|30 0|0 POINT|8 0|10 3|20 4|0 ENDBLK|0 "
                       "ENDSEC") +
                entities(
                    "0 POLYLINE|8 0|66 1|70 1|40 0.5|41 0.25|0 VERTEX|8 0|10 0|20 0|42 1|0 VERTEX|8 0|10 4|20 0|40 2|0 "
                    "SEQEND|8 0|0 INSERT|8 0|66 1|2 DOOR|10 5|20 6|50 90|0 ATTRIB|8 0|10 1|20 1|40 2|1 value|2 TAG|70 "
                    "1|0 "
                    "SEQEND|0 POLYLINE|8 0|70 64|71 3|72 1|0 VERTEX|10 0|20 0|30 1|70 192|0 VERTEX|10 1|20 0|30 1|70 "
                    "192|0 VERTEX|10 0|20 1|30 1|70 192|0 VERTEX|70 128|71 1|72 -2|73 3|0 SEQEND"),
            d, &report),
        "");
    EXPECT_TRUE(report.lines.empty());
    const auto list = d.modelSpace().entities();
    ASSERT_EQ(list.size(), 3u);
    const auto& line = dynamic_cast<const PolylineEntity&>(*list[0]);
    EXPECT_TRUE(line.closed);
    EXPECT_EQ(line.bulge(0), 1.0);
    EXPECT_EQ(line.startWidth(0), 0.5);
    EXPECT_EQ(line.startWidth(1), 2.0);
    EXPECT_EQ(line.endWidth(1), 0.25);
    const auto& door = dynamic_cast<const BlockReferenceEntity&>(*list[1]);
    EXPECT_NEAR(door.rotation, math::kPi / 2, 1e-15);
    ASSERT_EQ(door.attributes.size(), 1u);
    EXPECT_EQ(door.attributes[0].value, "value");
    EXPECT_TRUE(door.attributes[0].invisible);
    ASSERT_NE(d.findBlock("Door"), nullptr);
    EXPECT_EQ(d.findBlock("Door")->base, (math::Vector2{1, 2}));
    EXPECT_EQ(list[2]->type(), EntityType::Polyface);
    EXPECT_EQ(sysVarReal(d, "LTSCALE"), 2.5);
    EXPECT_EQ(d.dimStyles.find("Standard")->textHeight, 3.5);
    EXPECT_EQ(d.currentLayer, "PIPES");
}

TEST(DxfReader, AttributesOfSeveralLinesAndLockedOnes) {
    Drawing d;
    DxfLoadReport report;
    ASSERT_EQ(loadDxfText(
                  header("AC1032", "") +
                      entities(
                          "0 INSERT|5 A1|100 AcDbEntity|8 0|100 AcDbBlockReference|66 1|2 B|10 5|20 6|0 ATTRIB|5 A2|100 "
                          "AcDbEntity|8 0|100 AcDbText|10 1|20 1|40 2|1 flat|71 2|100 AcDbAttribute|280 0|2 NOTE|70 0|71 "
                          "2|280 1|101 Embedded Object|70 1|10 7|20 8|40 3|41 25|71 9|1 one\\Ptwo|0 ATTRIB|5 A3|100 "
                          "AcDbEntity|8 0|100 AcDbText|10 1|20 1|40 2|1 plain|100 AcDbAttribute|280 0|2 P|70 0|280 0|0 "
                          "SEQEND|5 A4|0 ATTDEF|5 A5|100 AcDbEntity|8 0|100 AcDbText|10 1|20 1|40 2|1 x|100 "
                          "AcDbAttributeDefinition|280 0|3 Prompt|2 T|70 4|280 1"),
                  d, &report),
              "");
    const auto list = d.modelSpace().entities();
    ASSERT_EQ(list.size(), 2u);
    const auto& reference = dynamic_cast<const BlockReferenceEntity&>(*list[0]);
    ASSERT_EQ(reference.attributes.size(), 2u);
    const BlockAttribute& note = reference.attributes[0];
    EXPECT_TRUE(note.multiline && note.locked);
    EXPECT_EQ(note.value, "one\\Ptwo");
    EXPECT_EQ(note.position, (math::Vector2{7, 8}));
    EXPECT_EQ(note.textHeight, 3.0);
    EXPECT_EQ(note.width, 25.0);
    EXPECT_EQ(note.hAlign, kHAlignRight);
    EXPECT_EQ(note.vAlign, kVAlignBottom);
    EXPECT_EQ(note.generation, 2);  // the first group 71 is the text's own
    EXPECT_FALSE(reference.attributes[1].multiline || reference.attributes[1].locked);
    const auto& definition = dynamic_cast<const AttributeDefinitionEntity&>(*list[1]);
    EXPECT_TRUE(definition.locked && definition.verify && !definition.multiline);
}

TEST(DxfReader, PlanesAnglesAndDimensionsKeepTheirMeaning) {
    Drawing d;
    ASSERT_EQ(
        loadDxfText(
            entities(
                "0 ARC|8 0|10 5|20 1|30 7|40 2|50 0|51 90|210 0|220 0|230 -1|0 DIMENSION|8 0|100 AcDbEntity|8 0|100 "
                "AcDbDimension|2 *D1|10 0|20 5|11 3|21 6|70 161|3 Standard|100 AcDbAlignedDimension|13 0|23 0|14 6|24 "
                "0|1001 "
                "ACAD|1000 DSTYLE|1002 {|1070 140|1040 4.5|1070 176|1070 3|1002 }"),
            d),
        "");
    auto* arc = first<ArcEntity>(d);
    ASSERT_NE(arc, nullptr);
    EXPECT_EQ(arc->normal(), (math::Vector3{0, 0, -1}));
    EXPECT_EQ(arc->elevation, 7.0);
    // Seen from above it is the mirror image: from (-7, 1) to (-5, 3).
    const auto box = arc->bounds();
    EXPECT_NEAR(box.min.x, -7, 1e-9);
    EXPECT_NEAR(box.max.y, 3, 1e-9);
    auto* dimension = dynamic_cast<DimensionEntity*>(d.modelSpace().last());
    ASSERT_NE(dimension, nullptr);
    EXPECT_EQ(dimension->subType, DimensionType::Aligned);
    EXPECT_NEAR(dimension->measurement(), 6.0, 1e-12);
    EXPECT_TRUE(dimension->hasUserText());
    EXPECT_EQ(dimension->styleOverrides.at("DIMTXT"), 4.5);
    EXPECT_EQ(dimension->styleOverrides.at("DIMCLRD"), 3.0);
    EXPECT_EQ(dimension->xdata(), nullptr);
}

TEST(DxfReader, HatchEdgesRunAsTheFileSays) {
    Drawing d;
    ASSERT_EQ(loadDxfText(entities("0 HATCH|8 0|100 AcDbEntity|8 0|100 AcDbHatch|10 0|20 0|30 0|2 ANSI31|70 0|71 0|91 "
                                   "1|92 1|93 2|72 1|10 -1|20 "
                                   "0|11 1|21 0|72 2|10 0|20 0|40 1|50 180|51 360|73 0|97 0|75 0|76 1|52 45|41 2|77 "
                                   "0|78 1|53 90|43 0|44 0|45 "
                                   "-6.35|46 0|79 2|49 3|49 -1|98 1|10 0|20 0.5"),
                          d),
              "");
    auto* hatch = first<HatchEntity>(d);
    ASSERT_NE(hatch, nullptr);
    // A clockwise edge from 180 to 360 degrees is the upper half circle.
    EXPECT_NEAR(hatch->area(), math::kPi / 2, 1e-3);
    EXPECT_NEAR(hatch->bounds().max.y, 1.0, 1e-9);
    const auto families = hatch->families();
    ASSERT_EQ(families.size(), 1u);
    EXPECT_NEAR(families[0].shift.y, 6.35, 1e-9);
    EXPECT_NEAR(families[0].dashes.at(0), 3.0, 1e-9);
    EXPECT_EQ(hatch->seedPoints.size(), 1u);
}

TEST(DxfReader, WhatCannotBeReadIsCountedAndSaid) {
    Drawing d;
    DxfLoadReport report;
    ASSERT_EQ(
        loadDxfText(entities("0 LINE|8 0|10 nan|20 0|11 1|21 1|0 CIRCLE|8 0|10 0|20 1.#IND|40 1|0 ACAD_PROXY_ENTITY|5 "
                             "9|90 1|310 00FF|0 "
                             "LWPOLYLINE|8 0|90 5|0 CIRCLE|5 9|8 0|10 1|20 1|40 2|0 CIRCLE|5 9|8 0|10 1|20 1|40 3"),
                    d, &report),
        "");
    EXPECT_EQ(d.modelSpace().size(), 2u);
    EXPECT_EQ(report.skipped.of("LINE"), 1u);
    EXPECT_EQ(report.skipped.of("CIRCLE"), 1u);
    EXPECT_EQ(report.skipped.of("ACAD_PROXY_ENTITY"), 1u);
    EXPECT_EQ(report.skipped.of("LWPOLYLINE"), 1u);
    ASSERT_EQ(report.lines.size(), 1u);
    EXPECT_EQ(report.lines[0], "4 entities could not be read: 1 ACAD_PROXY_ENTITY, 1 CIRCLE, 1 LINE, 1 LWPOLYLINE.");
    // The first of two entities of one handle keeps it.
    EXPECT_NE(d.modelSpace().first()->handle(), d.modelSpace().last()->handle());
}

TEST(DxfReader, DamageIsSteppedOver) {
    Drawing d;
    DxfLoadReport report;
    std::string text = entities(std::string(kLine) + "|0 CIRCLE|8 0|10 1|20 1|40 2|0 POINT|8 0|10 1|20 1");
    text.insert(text.find("40\n2\n"), "rubbish that is no code\n");
    ASSERT_EQ(loadDxfText(text, d, &report), "");
    EXPECT_NE(dynamic_cast<LineEntity*>(d.modelSpace().first()), nullptr);
    EXPECT_EQ(d.modelSpace().last()->type(), EntityType::Point);
    ASSERT_FALSE(report.lines.empty());
    EXPECT_NE(report.lines.back().find("damaged at line"), std::string::npos);

    Drawing none;
    EXPECT_NE(loadDxfText("this is no drawing\n", none), "");
    Drawing empty;
    EXPECT_NE(loadDxfText("", empty), "");
}

TEST(DxfReader, HostileCountsAndCyclesAreHarmless) {
    Drawing d;
    EXPECT_EQ(
        loadDxfText(
            groups("0 SECTION|2 BLOCKS|0 BLOCK|2 A|10 0|20 0|0 INSERT|8 0|2 B|10 0|20 0|0 ENDBLK|0 BLOCK|2 B|10 0|20 "
                   "0|0 INSERT|8 "
                   "0|2 A|10 0|20 0|0 ENDBLK|0 ENDSEC") +
                groups("0 SECTION|2 OBJECTS|0 DICTIONARY|5 C|100 AcDbDictionary|3 LOOP|350 D|0 DICTIONARY|5 D|100 "
                       "AcDbDictionary|3 BACK|350 D|3 ROOT|350 C|0 ENDSEC") +
                entities("0 INSERT|8 0|2 A|10 0|20 0|70 32767|71 32767|0 HATCH|8 0|100 AcDbHatch|2 SOLID|70 1|91 "
                         "2147483647|92 "
                         "2|72 0|73 1|93 2147483647|10 0|20 0|10 1|20 0|10 1|20 1|97 2147483647|75 0|0 SPLINE|8 0|71 "
                         "99999|72 "
                         "2000000000|73 2000000000|10 0|20 0|10 1|20 1|0 ACAD_TABLE|8 0|100 AcDbTable|91 2147483647|92 "
                         "2147483647|171 1|1 "
                         "x|0 MESH|8 0|100 AcDbSubDMesh|92 2000000000|10 0|20 0|30 0|93 2000000000|90 2000000000|90 0"),
            d),
        "");
    EXPECT_GE(d.modelSpace().size(), 4u);
    for (const Entity& e : d.modelSpace()) e.bounds();
}

TEST(DxfReader, ColumnsOfTextAreJoinedOnceEvenWhenTheyNameEachOther) {
    const auto column = [](const char* handle, const char* text, const char* next) {
        return std::string("0 MTEXT|5 ") + handle + "|100 AcDbEntity|8 0|100 AcDbMText|10 0|20 0|40 1|71 1|1 " + text +
               "|1001 ACAD|1000 ACAD_MTEXT_COLUMNS_BEGIN|1070 47|1070 2|1005 " + next + "|1000 ACAD_MTEXT_COLUMNS_END";
    };
    Drawing d;
    ASSERT_EQ(loadDxfText(entities(column("A1", "one ", "A2") + "|" + column("A2", "two", "A1")), d), "");
    ASSERT_EQ(d.modelSpace().size(), 1u);
    EXPECT_EQ(first<MTextEntity>(d)->content, "one two");
    EXPECT_EQ(first<MTextEntity>(d)->columns.count, 2);
}

TEST(DxfReader, TruncationAndRandomBytesNeverCrash) {
    const std::string whole =
        header("AC1027") +
        groups(
            "0 SECTION|2 TABLES|0 TABLE|2 LAYER|5 2|70 1|0 LAYER|5 10|2 A|70 0|62 -3|6 Continuous|0 ENDTAB|0 ENDSEC") +
        entities(std::string(kLine) +
                 "|0 MTEXT|8 0|100 AcDbMText|10 0|20 0|40 1|71 1|3 abc|1 def|1001 ACAD|1000 "
                 "ACAD_MTEXT_COLUMN_INFO_BEGIN|1070 75|1070 2|1070 50|1070 99|1040 1|1000 ACAD_MTEXT_COLUMN_INFO_END");
    for (std::size_t n = 0; n < whole.size(); ++n) {
        Drawing d;
        loadDxfText(std::string_view(whole).substr(0, n), d);
    }
    std::mt19937 random(7);
    for (int round = 0; round < 600; ++round) {
        std::string text = whole;
        for (int k = 0; k < 1 + round % 12; ++k) text[random() % text.size()] = static_cast<char>(random());
        Drawing d;
        loadDxfText(text, d);
        for (const Entity& e : d.modelSpace()) e.bounds();
    }
}

/// A short run of what the fuzz target does at length: its seeds, whole and with bytes, lines and pieces changed.
TEST(DxfReader, SeedsAndTheirMutations) {
    std::mt19937 random(11);
    std::size_t seeds = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(KOVA_SOURCE_DIR) / "fuzz/corpus/dxf_loader")) {
        SCOPED_TRACE(entry.path().filename().string());
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string seed((std::istreambuf_iterator<char>(in)), {});
        Drawing whole;
        DxfLoadReport report;
        ASSERT_EQ(loadDxfText(seed, whole, &report), "");
        for (const std::string& line : report.lines) EXPECT_TRUE(line.starts_with("Not kept: ")) << line;
        ++seeds;
        for (int round = 0; round < 250; ++round) {
            std::string text = seed;
            for (int k = 0; k < 1 + round % 6; ++k) {
                const std::size_t at = random() % text.size();
                switch (random() % 5) {
                    case 0:
                        text[at] = static_cast<char>(random());
                        break;
                    case 1:
                        text.erase(at, random() % 20);
                        break;
                    case 2:
                        text.insert(at, seed.substr(random() % seed.size(), random() % 60));
                        break;
                    case 3:
                        text.insert(at, std::to_string(static_cast<std::int64_t>(random()) * 1000 - 5));
                        break;
                    default:
                        text[at] = static_cast<char>('0' + random() % 10);
                        break;
                }
            }
            Drawing d;
            loadDxfText(text, d);
            for (const Entity& e : d.modelSpace()) e.bounds();
        }
    }
    EXPECT_GE(seeds, 3u);
}

TEST(DxfReader, SizeLimitAndMissingFiles) {
    const fs::path folder = fs::temp_directory_path() / ("kova_dxf_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    const std::string path = (folder / "big.dxf").string();
    {
        std::ofstream out(path, std::ios::binary);
        out << entities(kLine);
    }
    // What stands behind the end mark is not looked at; the file is sparse.
    fs::resize_file(path, 268435456);
    Drawing exact;
    EXPECT_EQ(io::dxf::loadDxf(path, exact), "");
    EXPECT_EQ(exact.modelSpace().size(), 1u);
    fs::resize_file(path, 268435457);
    Drawing over;
    EXPECT_EQ(io::dxf::loadDxf(path, over), "DXF file rejected: size exceeds the 256 MB safety limit.");
    Drawing none;
    const std::string missing = (folder / "none.dxf").string();
    EXPECT_EQ(io::dxf::loadDxf(missing, none), "Failed to open file: " + missing);
    fs::remove_all(folder);
}

TEST(DxfReader, SheetsKeepTheirUnits) {
    const auto load = [](std::string_view settings, Drawing& d) {
        const std::string objects =
            "0 SECTION|2 OBJECTS|0 DICTIONARY|5 C|330 0|100 AcDbDictionary|3 ACAD_LAYOUT|350 1A|"
            "0 DICTIONARY|5 1A|330 C|100 AcDbDictionary|3 Sheet|350 1E|"
            "0 LAYOUT|5 1E|330 1A|100 AcDbPlotSettings|40 1|41 2|42 3|43 4|44 215.9|45 279.4|" +
            std::string(settings) + "|100 AcDbLayout|1 Sheet|71 1|330 1B|0 ENDSEC|0 EOF";
        const std::string records = "0 SECTION|2 TABLES|0 TABLE|2 BLOCK_RECORD|5 1|0 BLOCK_RECORD|5 1B|330 1|100 "
                                    "AcDbSymbolTableRecord|100 AcDbBlockTableRecord|2 *Paper_Space|340 1E|0 ENDTAB|0 ENDSEC";
        EXPECT_EQ(loadDxfText(header("AC1027") + groups(records) + groups(objects), d), "");
        const Layout* layout = d.findLayout("Sheet");
        return layout != nullptr ? layout->pageSetup : PageSetup();
    };
    Drawing inches;
    const PageSetup letter = load("142 1|143 1|70 16|72 0|73 1|75 16", inches);
    EXPECT_EQ(letter.paperUnits, 0);
    EXPECT_NEAR(letter.sheet().width(), 11.0, 1e-12);
    EXPECT_NEAR(letter.sheet().height(), 8.5, 1e-12);
    // Turned a quarter: the margin at the top comes to the left.
    EXPECT_EQ(letter.marginLeft, 4.0);
    EXPECT_EQ(letter.marginBottom, 1.0);
    EXPECT_EQ(letter.marginRight, 2.0);
    EXPECT_EQ(letter.marginTop, 3.0);
    Drawing other;
    const PageSetup scaled = load("142 1|143 7|70 0|72 1|73 0|75 0", other);
    EXPECT_EQ(scaled.paperUnits, 1);
    EXPECT_NE(scaled.scaleType, 0);  // no standard scale, so not "fit" either
    EXPECT_EQ(scaled.scaleDrawing, 7.0);
    EXPECT_EQ(scaled.marginTop, 4.0);
}

/// A text may be placed by the variable alone; without a place to go by it stands where it stands by itself.
TEST(DxfReader, DimensionTextsPlacedByTheirVariable) {
    const std::string radius =
        "0 DIMENSION|5 2A|100 AcDbEntity|8 0|100 AcDbDimension|2 *D1|10 100|20 100|TEXT70 36|71 5|100 "
        "AcDbRadialDimension|15 107|25 107|1001 ACAD|1000 DSTYLE|1002 {|1070 288|1070 1|1002 }";
    for (const bool placed : {true, false}) {
        std::string text = radius;
        text.replace(text.find("TEXT"), 4, placed ? "11 108|21 120|" : "");
        Drawing d;
        ASSERT_EQ(loadDxfText(header("AC1027") + entities(text), d), "");
        const auto* dimension = first<DimensionEntity>(d);
        ASSERT_NE(dimension, nullptr);
        EXPECT_EQ(dimension->hasUserText(), placed);
        EXPECT_EQ(dimension->styleOverrides.count("DIMUPT"), 1u);
        EXPECT_FALSE(dimension->bounds().contains_point({0, 0}));
        if (placed) {
            EXPECT_EQ(dimension->userText, (math::Vector2{108, 120}));
        }
    }
}

/// The angle of the jog stands in degrees in styles and in radians elsewhere, and some programs mix that up.
TEST(DxfReader, JogAnglesInDegreesAndRadians) {
    for (const char* value : {"60.0", "1.0471975511965976"}) {
        const std::string styles = std::string("0 SECTION|2 TABLES|0 TABLE|2 DIMSTYLE|0 DIMSTYLE|105 27|100 "
                                               "AcDbDimStyleTableRecord|2 Jog|50 ") +
                                   value + "|0 ENDTAB|0 ENDSEC";
        const std::string dimension =
            std::string("0 DIMENSION|5 2A|100 AcDbEntity|8 0|100 AcDbDimension|3 Jog|70 4|100 AcDbRadialDimension|15 "
                        "7|25 7|1001 ACAD|1000 DSTYLE|1002 {|1070 50|1040 ") +
            value + "|1002 }";
        Drawing d;
        ASSERT_EQ(loadDxfText(header("AC1027") + groups(styles) + entities(dimension), d), "");
        EXPECT_NEAR(d.dimStyles.find("Jog")->jogAngle, 1.0471975511965976, 1e-12) << value;
        EXPECT_NEAR(first<DimensionEntity>(d)->style().jogAngle, 1.0471975511965976, 1e-12) << value;
        // A file without a table of styles has its one style in the header.
        Drawing old;
        ASSERT_EQ(loadDxfText(header("AC1021", std::string("9 $DIMJOGANG|40 ") + value) + entities(kLine), old), "");
        EXPECT_NEAR(old.dimStyles.find("Standard")->jogAngle, 1.0471975511965976, 1e-12) << value;
    }
}

/// Values of a balloon's attributes, what the multileader has of its own, and what one of its lines has.
TEST(DxfReader, MultileadersKeepValuesAndOwnLook) {
    const std::string blocks =
        "0 SECTION|2 TABLES|0 TABLE|2 BLOCK_RECORD|5 1|0 BLOCK_RECORD|5 91|330 1|100 AcDbSymbolTableRecord|100 "
        "AcDbBlockTableRecord|2 Balloon|0 ENDTAB|0 ENDSEC|0 SECTION|2 BLOCKS|0 BLOCK|5 92|330 91|100 AcDbEntity|8 0|100 "
        "AcDbBlockBegin|2 Balloon|10 0|20 0|0 ATTDEF|5 95|330 91|100 AcDbEntity|8 0|100 AcDbText|10 0|20 0|40 2|1 "
        "1|100 AcDbAttributeDefinition|3 Number|2 NO|70 0|0 ENDBLK|5 93|0 ENDSEC";
    const std::string leader =
        "0 MULTILEADER|5 2A|100 AcDbEntity|8 0|100 AcDbMLeader|270 2|300 CONTEXT_DATA{|40 1|10 5|20 -100|290 0|296 "
        "1|341 91|15 5|25 -100|302 LEADER{|290 1|291 1|10 -9|20 -100|11 1|21 0|40 8|304 LEADER_LINE{|10 -40|20 -110|92 "
        "-1023410173|93 2|91 0|305 }|303 }|301 }|90 3|170 2|91 -1023410175|171 50|172 1|344 91|330 95|177 0|44 1.0|302 "
        "27|45 1";
    Drawing d;
    ASSERT_EQ(loadDxfText(header("AC1027") + groups(blocks) + entities(leader), d), "");
    const auto* found = first<MLeaderEntity>(d);
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->attributes.size(), 1u);
    EXPECT_EQ(found->attributes[0].tag, "NO");
    ASSERT_EQ(found->placedAttributes().size(), 1u);
    EXPECT_EQ(found->placedAttributes()[0].value, "27");
    const MLeaderStyle look = found->style();
    EXPECT_EQ(look.leaderLineType, 2);
    EXPECT_EQ(look.leaderColor, Color::index(1));
    EXPECT_EQ(look.leaderLineweight, found->namedStyle().leaderLineweight);  // its bit is not set
    ASSERT_EQ(found->heads.size(), 1u);
    ASSERT_TRUE(found->heads[0].look);
    EXPECT_EQ(found->heads[0].look->members, unsigned(MLeaderLineLook::kColor));
    EXPECT_EQ(found->heads[0].look->color, Color::index(3));
}

}  // namespace kova::test
