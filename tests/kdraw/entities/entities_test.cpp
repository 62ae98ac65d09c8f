// Descriptions of the entities: bits, groups, known records, and what only some of them have.
#include <gtest/gtest.h>

#include <cmath>

#include "kdraw/fields/bit_fields.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/entities/curves.hpp"
#include "kdraw/entities/dimensions.hpp"
#include "kdraw/entities/entity_kinds.hpp"
#include "kdraw/entities/hatch.hpp"
#include "kdraw/entities/inserts.hpp"
#include "kdraw/entities/lines.hpp"
#include "kdraw/entities/multileader.hpp"
#include "kdraw/entities/polylines.hpp"
#include "kdraw/entities/solids.hpp"
#include "kdraw/entities/spline.hpp"
#include "kdraw/entities/table_entity.hpp"
#include "kdraw/entities/texts.hpp"
#include "kdraw/entities/entity_samples.hpp"
#include "kdraw/database/record_codec.hpp"

using namespace kdraw;
using namespace kdraw::test;

namespace {

constexpr Version kWritten[] = {Version::R2010, Version::R2013, Version::R2018};

const ObjectKind& kindOf(std::string_view cppClass) {
    for (const ObjectKind& kind : entityKinds())
        if (kind.cppClass == cppClass) return kind;
    ADD_FAILURE() << cppClass;
    return entityKinds()[0];
}

template <class T>
std::unique_ptr<T> coded(T& entity, std::string_view cppClass, Version version) {
    std::size_t left = 0;
    auto again = as<T>(throughBits(entity, kindOf(cppClass), version, left));
    EXPECT_NE(again, nullptr) << cppClass;
    return again;
}

template <class T>
std::unique_ptr<T> grouped(T& entity, std::string_view cppClass) {
    const Database none;
    auto again = as<T>(fromGroups(groupsOf(entity, none), kindOf(cppClass), none));
    EXPECT_NE(again, nullptr) << cppClass;
    return again;
}

/// Bodies have data that say themselves how long they are.
bool isBody(const ObjectKind& kind) {
    const auto object = kind.make();
    return dynamic_cast<ModelerEntity*>(object.get()) != nullptr;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> list;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        list.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return list;
}

}  // namespace

TEST(KdrawEntities, EveryMemberComesBackFromBits) {
    const NamedRecords records;
    for (const ObjectKind& kind : entityKinds())
        for (const Version version : kWritten)
            for (unsigned seed = 1; seed < 12; ++seed) {
                if (isBody(kind) && version == Version::R2010) continue;
                const auto entity = arbitrary(kind, version, seed, records);
                const std::string before = listing(*entity, version);
                std::size_t left = 0;
                const auto again = throughBits(*entity, kind, version, left);
                ASSERT_NE(again, nullptr) << kind.cppClass << versionName(version) << seed;
                EXPECT_EQ(left, 0U) << kind.cppClass << versionName(version);
                EXPECT_EQ(listing(*again, version), before) << kind.cppClass << versionName(version) << seed;
            }
}

TEST(KdrawEntities, EveryGroupComesBack) {
    const NamedRecords records;
    for (const ObjectKind& kind : entityKinds())
        for (unsigned seed = 1; seed < 12; ++seed) {
            const auto entity = arbitrary(kind, Version::R2018, seed, records);
            // Attributes are records of their own.
            auto& owner = static_cast<Entity&>(*entity);
            if (owner.owned() != nullptr) owner.owned()->clear();
            const std::string first = groupsOf(*entity, records.database);
            const auto again = fromGroups(first, kind, records.database);
            ASSERT_NE(again, nullptr) << kind.cppClass;
            const auto a = lines(first);
            const auto b = lines(groupsOf(*again, records.database));
            ASSERT_EQ(a.size(), b.size()) << kind.cppClass << seed << '\n'
                                          << first << "\n--\n"
                                          << groupsOf(*again, records.database);
            for (std::size_t i = 0; i < a.size(); ++i)
                if (a[i] != b[i]) {
                    EXPECT_NEAR(std::atof(a[i].c_str()), std::atof(b[i].c_str()), 1e-9)
                        << kind.cppClass << seed << " after " << a[i - 1];
                }
        }
}

TEST(KdrawEntities, DamageComesToAnEnd) {
    std::mt19937 random(7);
    const TextCodec codec;
    for (const ObjectKind& kind : entityKinds())
        for (const Version version : {Version::R2000, Version::R2004, Version::R2007, Version::R2010, Version::R2018})
            for (int round = 0; round < 60; ++round) {
                std::string bytes(256, '\0');
                // Many zeros make large numbers rarer and lists longer.
                for (char& c : bytes) c = random() % 3 == 0 ? static_cast<char>(0xAA) : static_cast<char>(random());
                BitDecoder decoder(version, codec);
                decoder.partStreams(bytes, 0, 1200, 2048);
                const auto entity = kind.make();
                entity->describe(decoder);
                const Database none;
                groupsOf(*entity, none);
            }
}

/// Records of other programs: what they hold is known.
TEST(KdrawEntities, KnownRecords) {
    const auto decoded = [](Version version, std::string_view hex) {
        std::string bytes, digits;
        for (const char c : hex)
            if (c != ' ') digits += c;
        appendHex(bytes, digits);
        Database database;
        database.version = version;
        const TextCodec codec;
        RecordDecoder decoder(database, codec);
        auto result = decoder.decode(bytes, 0, 0x100);
        EXPECT_FALSE(result.wrongChecksum);
        EXPECT_FALSE(result.uneven);
        EXPECT_NE(result.object, nullptr);
        return std::move(result.object);
    };
    for (const auto& [version, hex] :
         {std::pair<Version, std::string_view>{
              Version::R2010,
              "2D 00 17 04 C0 80 40 25 74 00 01 0E C0 00 00 00 00 00 00 00 30 00 00 00 00 00 02 44 00 00 "
              "00 00 00 00 00 00 0C 00 00 00 00 00 00 51 03 28 88 7F 8B 06"},
          {Version::R2018,
           "2D 00 16 04 C0 80 40 25 5A 00 00 87 60 00 00 00 00 00 00 00 18 00 00 00 00 00 01 22 00 00 00 "
           "00 00 00 00 00 06 00 00 00 00 00 00 28 81 94 44 3F 8F B9"}}) {
        const auto line = as<LineEntity>(decoded(version, hex));
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->start, (Vector3{0, 0, 0}));
        EXPECT_EQ(line->end, (Vector3{10, 5, 0}));
        EXPECT_EQ(line->layer, 0x10U);
    }
    const auto circle = as<CircleEntity>(
        decoded(Version::R2018,
                "1D 00 13 04 80 80 40 25 5A 00 00 87 50 00 00 00 00 00 00 01 02 00 00 00 00 00 00 01 10 "
                "32 88 87 C0 B7"));
    ASSERT_NE(circle, nullptr);
    EXPECT_EQ(circle->center, (Vector3{1, 2, 0}));
    EXPECT_EQ(circle->radius, 2.5);
    for (const auto& [version, hex] :
         {std::pair<Version, std::string_view>{
              Version::R2010,
              "2E 00 22 00 40 80 40 25 74 00 01 0E FF 80 00 00 00 00 00 78 1F 80 00 00 00 00 00 00 20 60 "
              "00 00 00 00 00 00 88 08 12 08 02 10 01 50 05 44 41 44 47 59 71"},
          {Version::R2018,
           "2E 00 21 00 40 80 40 25 5A 00 00 87 7F C0 00 00 00 00 00 3C 0F C0 00 00 00 00 00 00 10 30 00 "
           "00 00 00 00 00 44 04 09 04 01 08 00 A8 02 A2 20 A2 23 EF 96"}}) {
        const auto text = as<TextEntity>(decoded(version, hex));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->text, "AB");
        EXPECT_EQ(text->position, (Vector2{1, 2}));
        EXPECT_EQ(text->height, 2.5);
        EXPECT_EQ(text->style, 0x11U);
    }
}

TEST(KdrawEntities, KindsByGroups) {
    const Database none;
    const auto kind = [&](std::string_view type, std::vector<std::pair<int, std::string>> groups) -> std::string {
        DxfInput in(none);
        in.add(100, "AcDbEntity");
        for (const auto& [code, value] : groups) in.add(code, value);
        in.rewind();
        const ObjectKind* found = entityKindOf(type, in);
        EXPECT_EQ(in.cursor(), 0U);
        return found == nullptr ? "" : found->cppClass;
    };
    EXPECT_EQ(kind("POLYLINE", {{70, "1"}}), "AcDb2dPolyline");
    EXPECT_EQ(kind("POLYLINE", {{70, "9"}}), "AcDb3dPolyline");
    EXPECT_EQ(kind("POLYLINE", {{70, "16"}}), "AcDbPolygonMesh");
    EXPECT_EQ(kind("POLYLINE", {{70, "64"}}), "AcDbPolyFaceMesh");
    EXPECT_EQ(kind("VERTEX", {}), "AcDb2dVertex");
    EXPECT_EQ(kind("VERTEX", {{70, "192"}}), "AcDbPolyFaceMeshVertex");
    EXPECT_EQ(kind("VERTEX", {{70, "128"}}), "AcDbFaceRecord");
    EXPECT_EQ(kind("DIMENSION", {{70, "33"}}), "AcDbAlignedDimension");
    EXPECT_EQ(kind("DIMENSION", {{70, "102"}}), "AcDbOrdinateDimension");
    EXPECT_EQ(kind("INSERT", {{70, "1"}, {71, "1"}}), "AcDbBlockReference");
    EXPECT_EQ(kind("INSERT", {{71, "3"}}), "AcDbMInsertBlock");
    EXPECT_EQ(kind("MLEADER", {}), "AcDbMLeader");
    EXPECT_EQ(kind("LAYER", {}), "");
}

TEST(KdrawEntities, SplinesInEitherForm) {
    for (const Version version : kWritten) {
        SplineEntity byControl;
        byControl.closed = true;
        byControl.knots = {0, 0, 0, 0, 1, 1, 1, 1};
        byControl.control = {{0, 0, 1}, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
        byControl.weights = {1, 2, 3, 4};
        auto again = coded(byControl, "AcDbSpline", version);
        EXPECT_EQ(again->control, byControl.control);
        EXPECT_EQ(again->weights, byControl.weights);
        EXPECT_TRUE(again->closed);
        EXPECT_TRUE(again->fit.empty());

        SplineEntity byFit;
        byFit.closed = version != Version::R2010;  // which has no place for it
        byFit.fit = {{0, 0, 0}, {1, 1, 0}, {2, 0, 0}};
        byFit.startTangent = {1, 0, 0};
        again = coded(byFit, "AcDbSpline", version);
        EXPECT_EQ(again->fit, byFit.fit);
        EXPECT_EQ(again->startTangent, byFit.startTangent);
        EXPECT_EQ(again->closed, byFit.closed);
        EXPECT_TRUE(again->control.empty());
        again = grouped(byFit, "AcDbSpline");
        EXPECT_EQ(again->fit, byFit.fit);
    }
}

TEST(KdrawEntities, BodiesKeepTheirData) {
    using namespace std::string_literals;
    Solid3dEntity solid;
    // Longer than one block, with a caret among the letters.
    for (int i = 0; i < 900; ++i) solid.text += "body $-1 ^ " + std::to_string(i) + " ~A\n";
    solid.history = 0x77;
    auto again = coded(solid, "AcDb3dSolid", Version::R2010);
    EXPECT_EQ(again->text, solid.text);
    EXPECT_EQ(again->history, 0x77U);
    EXPECT_EQ(grouped(solid, "AcDb3dSolid")->text, solid.text);

    Solid3dEntity binary;
    binary.binary =
        "ACIS BinaryFile\1\2\3 data a\xE4\0\x11"s + "\x0E\x03" + "End\x0E\x02of\x0E\x03" + "ASM\x0D\x04" + "data";
    again = coded(binary, "AcDb3dSolid", Version::R2010);
    EXPECT_EQ(again->binary, binary.binary);
    EXPECT_TRUE(again->text.empty());
    EXPECT_EQ(grouped(binary, "AcDb3dSolid")->binary, binary.binary);
    // Without an end mark nobody could tell where the data end: it is added.
    binary.binary.pop_back();
    again = coded(binary, "AcDb3dSolid", Version::R2010);
    EXPECT_TRUE(again->binary.starts_with(binary.binary));
    EXPECT_GT(again->binary.size(), binary.binary.size());

    // From 2013 on they stand elsewhere, and the identifier comes from the groups.
    const Database none;
    const auto named = as<Solid3dEntity>(fromGroups(
        "100\nAcDbModelerGeometry\n290\n1\n2\n{7cf5f000-46fc-4a48-beef-14b47a01fb47}\n", kindOf("AcDb3dSolid"), none));
    EXPECT_EQ(named->guid, "\x00\xF0\xF5\x7C\xFC\x46\x48\x4A\xBE\xEF\x14\xB4\x7A\x01\xFB\x47"s);
    EXPECT_NE(groupsOf(*named, none).find("{7cf5f000-46fc-4a48-beef-14b47a01fb47}"), std::string::npos);
    coded(*named, "AcDb3dSolid", Version::R2013);
}

TEST(KdrawEntities, HatchEdgesOfAllKinds) {
    HatchEntity hatch;
    hatch.pattern = "ANSI31";
    hatch.elevation = 2.0;
    HatchEntity::Path polyline;
    polyline.flags |= HatchEntity::Path::kPolyline;
    polyline.bulged = true;
    polyline.vertices = {{0, 0, 0.5}, {4, 0, 0}, {4, 4, -1}};
    HatchEntity::Path edges;
    edges.sources = {0x51, 0x52};
    HatchEntity::Edge arc;
    arc.kind = HatchEntity::kArc;
    arc.end = 3.0;
    arc.counterClockwise = false;
    HatchEntity::Edge ellipse = arc;
    ellipse.kind = HatchEntity::kEllipse;
    ellipse.b = {3, 1};
    HatchEntity::Edge spline;
    spline.kind = HatchEntity::kSpline;
    spline.spline.emplace_back();
    spline.spline.front().rational = true;
    spline.spline.front().knots = {0, 0, 1, 1};
    spline.spline.front().control = {{0, 0, 1}, {1, 2, 3}};
    spline.spline.front().fit = {{0, 0}, {5, 5}};
    spline.spline.front().startTangent = {1, 1};
    edges.edges = {HatchEntity::Edge{}, arc, ellipse, spline, HatchEntity::Edge{}};
    hatch.paths = {polyline, edges, polyline};
    hatch.paths.back().sources = {0x53};
    hatch.lines = {{0.7, {1, 2}, {3, 4}, {0.5, -0.25}}, {0.1, {}, {0, 1}, {}}};
    hatch.seeds = {{1, 1}};
    for (const Version version : kWritten) {
        const auto again = coded(hatch, "AcDbHatch", version);
        EXPECT_EQ(listing(*again, version), listing(hatch, version));
        EXPECT_EQ(again->paths[1].sources, hatch.paths[1].sources);
    }
    const auto again = grouped(hatch, "AcDbHatch");
    ASSERT_EQ(again->paths.size(), 3U);
    ASSERT_EQ(again->paths[1].edges.size(), 5U);
    EXPECT_EQ(again->paths[1].edges[3].spline.front().control, spline.spline.front().control);
    EXPECT_EQ(again->paths[1].edges[3].spline.front().fit, spline.spline.front().fit);
    EXPECT_NEAR(again->paths[1].edges[2].end, 3.0, 1e-12);
    EXPECT_EQ(again->paths[2].sources, hatch.paths[2].sources);
    EXPECT_EQ(again->lines[0].dashes, hatch.lines[0].dashes);
    EXPECT_EQ(again->elevation, 2.0);
}

TEST(KdrawEntities, MultiLeadersKeepTheirPartsApart) {
    MultiLeaderEntity leader;
    leader.style = 0x33;
    leader.context.scale = 2.0;
    leader.context.hasText = true;
    leader.context.text.text = "LEADER_LINE{ is a text";
    leader.context.text.columnSizes = {1, 2, 3};
    leader.context.base = {1, 1, 1};
    for (int i = 0; i < 2; ++i) {
        MultiLeaderEntity::Root root;
        root.connection = {10.0 + i, 0, 0};
        root.breaks = {{{1, 2, 3}, {4, 5, 6}}};
        root.landing = 0.5 + i;
        root.attachmentDirection = 1;
        for (int k = 0; k <= i; ++k) {
            MultiLeaderEntity::Line line;
            line.points = {{0, 0, 0}, {5.0 + k, 5, 0}};
            line.index = k;
            line.arrowSize = 3.0;
            root.lines.push_back(line);
        }
        leader.context.roots.push_back(root);
    }
    leader.context.roots[1].lines[0].breakInfos = 1;
    leader.context.roots[1].lines[0].breaks = {{{7, 7, 7}, {8, 8, 8}}};
    leader.labels = {{0x44, "LABEL", 3, 1.5}, {0x45, "TWO", 4, 2.5}};
    for (const Version version : kWritten) {
        const auto again = coded(leader, "AcDbMLeader", version);
        EXPECT_EQ(listing(*again, version), listing(leader, version));
    }
    const auto again = grouped(leader, "AcDbMLeader");
    EXPECT_EQ(listing(*again, Version::R2018), listing(leader, Version::R2018));
    // Without any leader, and with nothing but a block.
    MultiLeaderEntity block;
    block.context.hasBlock = true;
    block.context.block.block = 0x20;
    block.context.block.matrix[3] = 12.0;
    block.context.topAttachment = 3;
    EXPECT_EQ(listing(*grouped(block, "AcDbMLeader"), Version::R2018), listing(block, Version::R2018));
}

TEST(KdrawEntities, TablesKeepCellsAndRanges) {
    TableEntity table;
    table.columns.resize(3);
    for (std::size_t c = 0; c < 3; ++c) table.columns[c].width = 10.0 + static_cast<double>(c);
    table.rows.resize(2);
    for (TableEntity::Row& row : table.rows) {
        row.height = 4.0;
        row.cells.resize(3);
        for (TableEntity::Cell& cell : row.cells) {
            cell.contents.emplace_back();
            cell.contents.back().value.text = cell.contents.back().value.shown = std::string(300, 'x') + "\xC3\xA4\\P";
        }
    }
    table.rows[1].cells[1].style.data.emplace_back();
    table.rows[1].cells[1].style.data.front().format.overrides = TableEntity::kAlignment | TableEntity::kTextHeight;
    table.rows[1].cells[1].style.data.front().format.alignment = 9;
    table.rows[1].cells[1].style.data.front().format.textHeight = 0.75;
    table.rows[0].cells[2].contents.clear();
    table.merges = {{0, 0, 0, 1}, {0, 0, 5, 5}, {-1, 0, 0, 0}};
    const auto same = [&](const TableEntity& again) {
        ASSERT_EQ(again.rows.size(), 2U);
        ASSERT_EQ(again.columns.size(), 3U);
        EXPECT_EQ(again.columns[2].width, 12.0);
        EXPECT_EQ(again.rows[1].cells[2].text(), table.rows[1].cells[2].text());
        EXPECT_EQ(again.rows[0].cells[2].text(), "");
        ASSERT_NE(again.rows[1].cells[1].formatWith(TableEntity::kAlignment), nullptr);
        EXPECT_EQ(again.rows[1].cells[1].formatWith(TableEntity::kAlignment)->alignment, 9);
        EXPECT_EQ(again.rows[1].cells[1].formatWith(TableEntity::kTextHeight)->textHeight, 0.75);
        EXPECT_EQ(again.rows[1].cells[0].formatWith(TableEntity::kAlignment), nullptr);
        EXPECT_EQ(again.merges[0].right, 1);
    };
    for (const Version version : kWritten) same(*coded(table, "AcDbTable", version));
    const auto again = grouped(table, "AcDbTable");
    same(*again);
    EXPECT_EQ(again->merges.size(), 1U);  // wrong ranges are left out
}

TEST(KdrawEntities, TextsOfSeveralLines) {
    AttributeEntity attribute;
    attribute.tag = "TAG";
    attribute.kind = AttributeLine::kMultiLine;
    attribute.lines = std::make_unique<MTextEntity>();
    attribute.lines->text = "{\\fArial|b0;First}\\PSecond \\{x\\}";
    attribute.lines->style = 0x12;
    attribute.style = 0x11;
    const auto again = coded(attribute, "AcDbAttribute", Version::R2018);
    ASSERT_NE(again->lines, nullptr);
    EXPECT_EQ(again->lines->text, attribute.lines->text);
    EXPECT_EQ(again->lines->style, 0x12U);
    EXPECT_EQ(again->style, 0x11U);
    EXPECT_EQ(grouped(attribute, "AcDbAttribute")->text, "First\nSecond {x}");
    EXPECT_EQ(grouped(attribute, "AcDbAttribute")->fieldLength, 0);  // and not a group of the inner text

    MTextEntity text;
    for (int i = 0; i < 100; ++i) text.text += "M\xC3\xB6" + std::to_string(i) + "\\P^ ";
    text.columns = {2, 2, 30.0, 5.0, false, true, {10.0, 20.0}};
    EXPECT_EQ(coded(text, "AcDbMText", Version::R2018)->columns.heights, text.columns.heights);
    const auto read = grouped(text, "AcDbMText");
    EXPECT_EQ(read->text, text.text);
    EXPECT_EQ(read->columns.heights, text.columns.heights);
    EXPECT_EQ(read->height, text.height);  // and not that of the columns

    // Columns and frame in extended data; the direction as an angle.
    const Database none;
    const auto framed = as<MTextEntity>(fromGroups(
        "100\nAcDbMText\n10\n1\n20\n2\n30\n0\n40\n3\n1\nabc\n50\n90\n1001\nACAD\n1000\n"
        "ACAD_MTEXT_COLUMN_INFO_BEGIN\n1070\n75\n1070\n1\n1070\n76\n1070\n3\n1070\n48\n1040\n12.5\n1070\n50\n"
        "1070\n2\n1040\n7\n1040\n8\n1070\n78\n1070\n1\n1000\nACAD_MTEXT_COLUMN_INFO_END\n1000\n"
        "ACAD_MTEXT_TEXT_BORDERS_BEGIN\n",
        kindOf("AcDbMText"), none));
    EXPECT_EQ(framed->columns.type, 1);
    EXPECT_EQ(framed->columns.count, 3);
    EXPECT_EQ(framed->columns.width, 12.5);
    EXPECT_TRUE(framed->columns.reversed);
    EXPECT_EQ(framed->background, MTextEntity::kFrame);
    EXPECT_NEAR(framed->direction.y, 1.0, 1e-15);
}

TEST(KdrawEntities, StoredFormsOfScalesAndWidths) {
    for (const Vector3 scale : {Vector3{1, 1, 1}, Vector3{2, 2, 2}, Vector3{2, -2, 3}, Vector3{1, 2, 1}}) {
        InsertEntity insert;
        insert.scale = scale;
        insert.attributes = {0x31, 0x32};
        insert.end = 0x33;
        const auto again = coded(insert, "AcDbBlockReference", Version::R2018);
        EXPECT_EQ(again->scale, scale);
        EXPECT_EQ(again->attributes, insert.attributes);
        EXPECT_EQ(again->end, 0x33U);
    }
    for (const auto& [from, to] : {std::pair{0.0, 0.0}, {2.0, 2.0}, {2.0, 3.0}, {0.0, 1.0}}) {
        Vertex2dEntity vertex;
        vertex.startWidth = from;
        vertex.endWidth = to;
        const auto again = coded(vertex, "AcDb2dVertex", Version::R2018);
        EXPECT_EQ(again->startWidth, from);
        EXPECT_EQ(again->endWidth, to);
    }
    LwPolylineEntity polyline;
    polyline.vertices = {{0, 0}, {1, 0}, {1, 1}};
    polyline.bulges = {0.0, 1.0, 0.0};
    polyline.closed = true;
    const auto again = grouped(polyline, "AcDbPolyline");
    EXPECT_EQ(again->vertices, polyline.vertices);
    EXPECT_EQ(again->bulges, polyline.bulges);
    EXPECT_TRUE(again->closed);
    EXPECT_TRUE(again->widths.empty());
}
