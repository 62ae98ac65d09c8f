// Descriptions of the objects without a picture: bits, groups and known records.
#include <gtest/gtest.h>

#include <cmath>

#include "kdraw/database/database.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/entities/entity_samples.hpp"
#include "kdraw/database/completion.hpp"
#include "kdraw/objects/app_id.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/objects/dictionary.hpp"
#include "kdraw/objects/layer.hpp"
#include "kdraw/objects/layout.hpp"
#include "kdraw/objects/linetype.hpp"
#include "kdraw/objects/mline_style.hpp"
#include "kdraw/objects/table_style.hpp"
#include "kdraw/objects/views.hpp"
#include "kdraw/objects/xrecord.hpp"
#include "kdraw/database/record_codec.hpp"

using namespace kdraw;
using namespace kdraw::test;

namespace {

constexpr Version kWritten[] = {Version::R2010, Version::R2013, Version::R2018};

/// The header as an object.
class HeaderObject : public Object {
public:
    void describe(Fields& f) override { header.describe(f); }
    HeaderVariables header;
};
const ObjectKind kHeaderKind{1, "HEADER", "", nullptr, 0, false, &makeObject<HeaderObject>};

std::vector<const ObjectKind*> kinds() {
    std::vector<const ObjectKind*> list{&kHeaderKind};
    for (const ObjectKind& kind : objectKinds()) list.push_back(&kind);
    return list;
}

/// The same groups, with reals equal up to what a turn into degrees and back costs.
void expectSameGroups(const std::string& a, const std::string& b, const char* what) {
    Database none;
    DxfInput first(none), second(none);
    readGroups(a, first);
    readGroups(b, second);
    ASSERT_EQ(first.groups().size(), second.groups().size()) << what << "\n" << a << "\n---\n" << b;
    for (std::size_t i = 0; i < first.groups().size(); ++i) {
        const auto& x = first.groups()[i];
        const auto& y = second.groups()[i];
        ASSERT_EQ(x.code, y.code) << what << " group " << i;
        if (x.value == y.value) continue;
        EXPECT_NEAR(std::atof(std::string(x.value).c_str()), std::atof(std::string(y.value).c_str()), 1e-6)
            << what << " code " << x.code;
    }
}

std::string bytesOf(std::string_view hex) {
    std::string bytes, digits;
    for (const char c : hex)
        if (c != ' ') digits += c;
    appendHex(bytes, digits);
    return bytes;
}

/// Decodes one record as a file of a version has it.
std::unique_ptr<Object> decodeRecord(Version version, Handle handle, const std::string& bytes) {
    Database database;
    database.version = version;
    for (const auto& [number, name] : {std::pair(501, "ACDBPLACEHOLDER"), std::pair(503, "DICTIONARYVAR")})
        database.classes.push_back(classOf(*kindNamed(name), static_cast<std::uint16_t>(number)));
    const TextCodec codec;
    RecordDecoder decoder(database, codec);
    RecordDecoder::Result result = decoder.decode(bytes, 0, handle);
    EXPECT_FALSE(result.wrongChecksum);
    EXPECT_FALSE(result.uneven);
    EXPECT_NE(result.object, nullptr);
    return std::move(result.object);
}
template <class T>
std::unique_ptr<T> decodeAs(Version version, Handle handle, std::string_view hex) {
    auto object = decodeRecord(version, handle, bytesOf(hex));
    T* typed = dynamic_cast<T*>(object.get());
    EXPECT_NE(typed, nullptr);
    object.release();
    return std::unique_ptr<T>(typed);
}

}  // namespace

TEST(KdrawObjects, EveryMemberComesBackFromBits) {
    const NamedRecords tables;
    for (const ObjectKind* kind : kinds())
        for (const Version version : kWritten)
            for (unsigned seed = 1; seed < 6; ++seed) {
                const auto object = arbitrary(*kind, version, seed, tables, kObjectValues);
                const std::string before = listing(*object, version);
                BitEncoder encoder(version);
                object->describe(encoder);
                const std::size_t data = encoder.data.size();
                encoder.joinStrings();
                const std::size_t handleStart = encoder.data.size();
                encoder.data.append(encoder.handlesPart);
                encoder.data.align();
                const TextCodec codec;
                BitDecoder decoder(version, codec);
                decoder.partStreams(encoder.data.view(), 0, handleStart, encoder.data.size());
                const auto again = kind->make();
                again->describe(decoder);
                ASSERT_FALSE(decoder.damaged()) << kind->dxfName;
                EXPECT_EQ(decoder.data.position(), data) << kind->dxfName;
                EXPECT_EQ(decoder.strings.left(), 0U) << kind->dxfName;
                EXPECT_LT(decoder.handlesPart.left(), 8U) << kind->dxfName;
                EXPECT_EQ(listing(*again, version), before) << kind->dxfName;
            }
}

TEST(KdrawObjects, EveryGroupComesBack) {
    const NamedRecords tables;
    for (const ObjectKind* kind : kinds())
        for (const Version version : {Version::R2007, Version::R2018})
            for (unsigned seed = 1; seed < 6; ++seed) {
                const auto object = arbitrary(*kind, version, seed, tables, kObjectValues);
                // The records of a table stand behind its head: their reader lists them.
                if (dynamic_cast<Control*>(object.get()) != nullptr) continue;
                const std::string text = groupsOf(*object, tables.database);
                DxfInput in(tables.database);
                readGroups(text, in);
                DxfReadFields fields(in);
                const auto again = kind->make();
                again->owner = object->owner;
                again->describe(fields);
                ASSERT_FALSE(fields.failed()) << kind->dxfName;
                expectSameGroups(text, groupsOf(*again, tables.database), kind->dxfName);
            }
}

TEST(KdrawObjects, DamageEndsInFailure) {
    const NamedRecords tables;
    std::mt19937 random(7);
    for (const ObjectKind* kind : kinds())
        for (const Version version : {Version::R2000, Version::R2004, Version::R2007, Version::R2018})
            for (int round = 0; round < 20; ++round) {
                std::string bytes(64, '\0');
                for (char& c : bytes) c = static_cast<char>(random());
                const TextCodec codec;
                BitDecoder decoder(version, codec);
                decoder.partStreams(bytes, 0, 300, 512);
                const auto object = kind->make();
                object->describe(decoder);  // comes to an end, whatever the counts say
            }
    // A count that cannot be: nothing is allocated for it.
    BitWriter huge;
    huge.bl(0x7FFFFFFF);
    const TextCodec codec;
    BitDecoder decoder(Version::R2000, codec);
    decoder.partStreams(huge.view(), 0, huge.size(), huge.size());
    LayerControl control;
    control.describe(decoder);
    EXPECT_TRUE(decoder.damaged());
    EXPECT_TRUE(control.records.empty());
}

TEST(KdrawObjects, KnownRecordsOfFiles) {
    // Layers of five generations say the same.
    struct Vector {
        Version version;
        const char* bytes;
    };
    for (const Vector& v : {
             Vector{Version::R2000,
                    "18 00 4C DE 00 00 00 00 44 29 02 30 00 C3 C0 0D 07 41 02 31 E6 50 51 0F 51 16 2A 80"},
             {Version::R2004,
              "1D 00 4C E6 C0 00 00 00 44 28 81 18 00 61 E0 07 00 E0 00 18 60 08 20 46 3C CA 0A 21 EA 22 DF 23 2A"},
             {Version::R2007,
              "21 00 4C EA 80 00 00 00 44 29 1E 00 70 0E 00 01 86 00 80 98 00 0D 00 50 40 8C 79 94 14 43 D4 66 14 45 "
              "BF 7B C7"},
             {Version::R2010,
              "1D 00 5E 0C C0 44 29 1E 00 70 0E 00 01 86 00 80 98 00 0D 00 50 40 8C 79 94 14 43 D4 66 14 45 BF 59 62"},
             {Version::R2018,
              "1E 00 65 0C C0 44 28 8F 00 38 07 00 00 C3 00 40 4C 00 06 80 28 20 46 3C CA 0A 21 EA 33 0A 22 CA 1F 1F "
              "AA"},
         }) {
        const auto layer = decodeAs<LayerRecord>(v.version, 0x10, v.bytes);
        ASSERT_NE(layer, nullptr);
        EXPECT_EQ(layer->name, "0");
        EXPECT_EQ(layer->color.index(), 7);
        EXPECT_TRUE(layer->plottable);
        EXPECT_FALSE(layer->off || layer->frozen || layer->locked || layer->frozenInNew);
        EXPECT_EQ(lineweightOf(layer->lineweight), -3);
        EXPECT_EQ(layer->owner, 2U);
        EXPECT_EQ(layer->dictionary, 0xE6U);
        EXPECT_EQ(layer->plotStyle, 0xFU);
        EXPECT_EQ(layer->linetype, 0x16U);
        if (v.version < Version::R2010) continue;
        std::string again;
        RecordEncoder(v.version).encode(*layer, again);
        EXPECT_EQ(again, bytesOf(v.bytes));
    }
    const auto control = decodeAs<LinetypeControl>(Version::R2000, 5,
                                                   "21 00 4E 12 00 00 00 00 41 69 07 40 30 21 16 22 02 80 22 06 B2 22 "
                                                   "06 BF 22 06 CC 22 06 D9 20 31 14 31 15 3A 84");
    EXPECT_EQ(control->records, (std::vector<Handle>{0x16, 0x280, 0x6B2, 0x6BF, 0x6CC, 0x6D9, 0}));
    EXPECT_EQ(control->byBlock, 0x14U);
    EXPECT_EQ(control->byLayer, 0x15U);

    constexpr std::string_view kLinetype =
        "37 00 1F 0E 40 45 AA A4 10 04 29 0C 01 BC 01 B8 01 D0 01 A4 01 B8 01 D4 01 BC 01 D4 01 CC 01 0A 53 00 6F 00 "
        "6C 00 69 "
        "00 64 00 20 00 6C 00 69 00 6E 00 65 00 54 01 A0 82 A8 7F 95 FB";
    const auto linetype = decodeAs<LinetypeRecord>(Version::R2018, 0x16, kLinetype);
    EXPECT_EQ(linetype->name, "Continuous");
    EXPECT_EQ(linetype->description, "Solid line");
    EXPECT_EQ(linetype->alignment, 65);
    EXPECT_TRUE(linetype->dashes.empty());
    constexpr std::string_view kApplication =
        "14 00 1B 10 C0 44 AA 80 10 44 10 04 30 04 10 04 40 04 A0 0A 08 4A 87 43 77";
    const auto application = decodeAs<AppIdRecord>(Version::R2018, 0x12, kApplication);
    EXPECT_EQ(application->name, "ACAD");
    EXPECT_EQ(application->owner, 9U);
    for (const auto& [object, hex] :
         {std::pair<Object*, std::string_view>{linetype.get(), kLinetype}, {application.get(), kApplication}}) {
        std::string again;
        RecordEncoder(Version::R2018).encode(*object, again);
        EXPECT_EQ(again, bytesOf(hex));
    }

    for (const Vector& v : {
             Vector{Version::R2000,
                    "1E 00 4A AD 00 00 00 00 45 E4 05 01 40 40 10 95 37 46 16 E6 46 17 26 40 0C 10 B4 10 C3 02 11 8F "
                    "AE 84"},
             {Version::R2018,
              "22 00 31 0A 80 45 E4 06 40 50 10 04 21 4C 01 D0 01 84 01 B8 01 90 01 84 01 C8 01 90 02 28 03 82 16 82 "
              "18 42 31 37 DF"},
         }) {
        const auto dictionary = decodeAs<Dictionary>(v.version, 0x17, v.bytes);
        ASSERT_EQ(dictionary->entries.size(), 1U);
        EXPECT_EQ(dictionary->find("STANDARD"), 0x18U);
        EXPECT_EQ(dictionary->owner, 0xCU);
        EXPECT_EQ(dictionary->reactors, (std::vector<Handle>{0xC}));
        EXPECT_EQ(dictionary->cloning, 1);
        EXPECT_FALSE(dictionary->hardOwner);
    }
    for (const Vector& v : {Vector{Version::R2000, "0E 00 3D 40 53 80 00 00 00 43 E4 06 01 04 38 C3 84 43"},
                            {Version::R2018, "09 00 1F 14 00 43 E4 06 40 20 87 7F 0B 02"}})
        EXPECT_EQ(decodeAs<Placeholder>(v.version, 0xF, v.bytes)->owner, 0xEU);
    const auto variable = decodeAs<DictionaryVariable>(Version::R2018, 0x67,
                                                       "0F 00 1D 41 C0 59 E4 06 00 40 4C 80 06 80 30 08 2C DF 50 2E");
    EXPECT_EQ(variable->value, "2");
    EXPECT_EQ(variable->owner, 0x66U);
    const auto style = decodeAs<MLineStyle>(Version::R2018, 0x18,
                                            "53 00 3D 12 40 46 24 06 A0 00 00 03 00 00 18 2D 44 54 FB 21 F9 3F 06 0B "
                                            "51 15 3E C8 7E 4F C0 80 00 00 00 00 00 0E 03 "
                                            "F8 00 00 00 C0 00 00 00 00 00 00 00 38 2F E0 00 00 03 00 01 08 53 00 54 "
                                            "00 41 00 4E 00 44 00 41 00 52 00 44 00 A3 00 "
                                            "30 08 22 EA 22 AA 22 BF 1D 7A");
    EXPECT_EQ(style->name, "STANDARD");
    ASSERT_EQ(style->lines.size(), 2U);
    EXPECT_EQ(style->lines[0].offset, 0.5);
    EXPECT_EQ(style->lines[1].offset, -0.5);
    EXPECT_EQ(style->lines[1].linetype, 0x15U);
    EXPECT_EQ(style->fill.index(), 256);
    EXPECT_DOUBLE_EQ(style->startAngle, std::acos(0.0));
}

TEST(KdrawObjects, XRecordsKeepEveryKindOfGroup) {
    XRecord record;
    record.cloning = 2;
    for (const int code : {1, 2, 5, 102, 300, 1000}) {
        auto& item = record.items.emplace_back();
        item.code = code;
        item.text =
            "Stra\xC3\x9F"
            "e \xF0\x9F\x93\x90";
    }
    record.items.push_back({10, {}, {1.5, -2.5, 3.5}, 0, 0, 0});
    record.items.push_back({210, {}, {0, 0, 1}, 0, 0, 0});
    record.items.push_back({50, {}, {}, 0.0, 0, 0});
    record.items.push_back({40, {}, {}, 2.25, 0, 0});
    for (const int code : {70, 90, 160, 280, 290, 370, 1071})
        record.items.push_back({code, {}, {}, 0, 100 + code % 7, 0});
    record.items.push_back({70, {}, {}, 0, -3, 0});
    record.items.push_back({310, std::string("\x00\x01\xFF", 3), {}, 0, 0, 0});
    record.items.push_back({330, {}, {}, 0, 0, 0x1234567890});
    const auto same = [&](const XRecord& other, std::size_t from) {
        EXPECT_EQ(other.cloning, 2);
        ASSERT_EQ(other.items.size() + from, record.items.size());
        for (std::size_t i = 0; i < other.items.size(); ++i) {
            const XRecord::Item &a = record.items[i + from], &b = other.items[i];
            EXPECT_EQ(a.code, b.code);
            EXPECT_EQ(a.text, b.text) << a.code;
            EXPECT_TRUE(a.point == b.point && a.real == b.real && a.integer == b.integer && a.handle == b.handle)
                << a.code;
        }
    };
    for (const Version version : kWritten) {
        BitEncoder encoder(version);
        record.describe(encoder);
        const TextCodec codec;
        BitDecoder decoder(version, codec);
        encoder.joinStrings();
        const std::size_t end = encoder.data.size();
        encoder.data.align();
        decoder.partStreams(encoder.data.view(), 0, end, end);
        XRecord again;
        again.describe(decoder);
        EXPECT_FALSE(decoder.damaged());
        same(again, 0);
    }
    // Extended data begins at 1000 in groups.
    std::erase_if(record.items, [](const XRecord::Item& item) { return item.code >= 1000; });
    Database database;
    const std::string text = groupsOf(record, database);
    DxfInput in(database);
    readGroups(text, in);
    DxfReadFields fields(in);
    XRecord again;
    again.describe(fields);
    same(again, 0);
    // Before 2007 texts stand in a code page.
    BitWriter old;
    const std::string raw = bytesOf("01 00 02 00 1E 41 E9 28 00 00 00 00 00 00 00 F8 3F");
    old.bl(static_cast<std::int32_t>(raw.size()));
    old.bytes(raw);
    old.bs(1);
    const TextCodec codec;
    BitDecoder decoder(Version::R2004, codec);
    const std::size_t size = old.size();
    old.align();
    decoder.partStreams(old.view(), 0, size, size);
    again.describe(decoder);
    ASSERT_EQ(again.items.size(), 2U);
    EXPECT_EQ(again.items[0].text, "A\xC3\xA9");
    EXPECT_EQ(again.items[1].real, 1.5);
    // Angles are radians in files and degrees in groups.
    XRecord angle;
    angle.items.push_back({53, {}, {}, std::acos(0.0), 0, 0});
    EXPECT_NE(groupsOf(angle, database).find("53\n90\n"), std::string::npos) << groupsOf(angle, database);
}

TEST(KdrawObjects, PackedFieldsStandWhereFilesHaveThem) {
    // Texts of a linetype follow one another in one area.
    LinetypeRecord linetype;
    linetype.name = "GAS";
    for (const char* text : {"GAS", "", "H\xC3\xB6he"}) {
        auto& dash = linetype.dashes.emplace_back();
        dash.length = 1.0;
        dash.text = text;
        dash.flags = dash.text.empty() ? 0 : 10;
    }
    BitEncoder encoder(Version::R2018);
    linetype.describe(encoder);
    encoder.joinStrings();
    const std::size_t handleStart = encoder.data.size();
    encoder.data.append(encoder.handlesPart);
    encoder.data.align();
    const TextCodec codec;
    BitDecoder decoder(Version::R2018, codec);
    decoder.partStreams(encoder.data.view(), 0, handleStart, encoder.data.size());
    LinetypeRecord again;
    again.describe(decoder);
    ASSERT_EQ(again.dashes.size(), 3U);
    EXPECT_EQ(again.dashes[0].text, "GAS");
    EXPECT_EQ(again.dashes[2].text, "H\xC3\xB6he");
    EXPECT_EQ(again.dashes[2].shape, 4);

    // The sign of a layer's colour; its weight; the unit in a block's group 70.
    Database database;
    LayerRecord layer;
    layer.name = "Off";
    layer.off = layer.locked = true;
    layer.lineweight = lineweightIndex(50);
    const std::string text = groupsOf(layer, database);
    EXPECT_NE(text.find("\n-7\n"), std::string::npos);
    EXPECT_NE(text.find("370\n50\n"), std::string::npos);
    BlockHeader block;
    block.name = "*D12";
    block.units = 16;
    const std::string blockText = groupsOf(block, database);
    DxfInput in(database);
    readGroups(blockText, in);
    DxfReadFields fields(in);
    BlockHeader blockAgain;
    blockAgain.describe(fields);
    EXPECT_EQ(blockAgain.units, 16);
    EXPECT_FALSE(blockAgain.xrefDependent);
    EXPECT_TRUE(blockAgain.anonymous);
    EXPECT_EQ(blockAgain.storedName(), "*D");
    blockAgain.name = "*Paper_Space7";
    EXPECT_EQ(blockAgain.storedName(), "*Paper_Space");

    // Rows of a table style, through the form of 2010 and back.
    TableStyle style;
    style.rows[1].height = 5.0;
    style.rows[1].alignment = 2;
    style.rows[1].fill = true;
    style.rows[1].fillColor = Color::fromIndex(3);
    style.rows[2].borders[1].lineweight = 35;
    style.rows[2].borders[5].visible = false;
    style.makeCellStyles();
    BitEncoder table(Version::R2018);
    style.describe(table);
    table.joinStrings();
    const std::size_t tableHandles = table.data.size();
    table.data.append(table.handlesPart);
    table.data.align();
    BitDecoder tableDecoder(Version::R2018, codec);
    tableDecoder.partStreams(table.data.view(), 0, tableHandles, table.data.size());
    TableStyle styleAgain;
    styleAgain.describe(tableDecoder);
    EXPECT_EQ(groupsOf(styleAgain, database), groupsOf(style, database));
}

TEST(KdrawObjects, HeaderVariablesByName) {
    const NamedRecords tables;
    const std::string text =
        "9\n$ACADVER\n1\nAC1032\n9\n$LTSCALE\n40\n12.5\n9\n$CLAYER\n8\nrecord "
        "layer\n9\n$CELWEIGHT\n370\n35\n9\n$LWDISPLAY\n290\n1\n"
        "9\n$UNKNOWNVAR\n70\n3\n9\n$EXTMAX\n10\n1.0\n20\n2.0\n30\n3.0\n9\n$ANGBASE\n50\n90.0\n9\n$PSTYLEMODE\n290\n0\n"
        "9\n$DIMSCALE\n40\n7.0\n9\n$HANDSEED\n5\n2AB\n9\n$DIMBLK\n1\n\n";
    DxfInput in(tables.database);
    readGroups(text, in);
    HeaderVariables header;
    readHeaderGroups(header, in);
    EXPECT_EQ(header.ltscale, 12.5);
    EXPECT_EQ(header.clayer, tables.handles[1]);
    EXPECT_EQ(header.currentLineweight(), 35);
    EXPECT_EQ(header.flags & 0x200, 0);
    EXPECT_EQ(header.flags & 0x2000, 0);
    EXPECT_EQ(header.extmax.z, 3.0);
    EXPECT_NEAR(header.angbase, std::acos(0.0), 1e-15);
    EXPECT_EQ(header.dim.scale, 7.0);
    EXPECT_EQ(header.handseed, 0x2ABU);
    EXPECT_EQ(header.textsize, 2.5);  // not named: as before
}

TEST(KdrawObjects, ABlankDrawingIsComplete) {
    Database database;
    completeGraph(database);
    const HeaderVariables& h = database.header;
    for (const Handle handle : {h.clayer,       h.textstyle,       h.celtype,      h.dimstyle,        h.cmlstyle,
                                h.blockControl, h.layerControl,    h.styleControl, h.linetypeControl, h.viewControl,
                                h.ucsControl,   h.viewportControl, h.appIdControl, h.dimStyleControl, h.groups,
                                h.mlineStyles,  h.rootDictionary,  h.layouts,      h.plotSettings,    h.plotStyleNames,
                                h.modelSpace,   h.paperSpace,      h.byLayer,      h.byBlock,         h.continuous})
        EXPECT_NE(database.find(handle), nullptr);
    EXPECT_EQ(h.modelSpace, 0x1FU);
    EXPECT_GT(h.handseed, database.objects.back()->handle);
    const auto* layouts = database.as<Dictionary>(h.layouts);
    ASSERT_EQ(layouts->entries.size(), 2U);
    for (const auto& entry : layouts->entries) {
        const auto* layout = database.as<Layout>(entry.value);
        EXPECT_EQ(database.as<BlockHeader>(layout->block)->layout, layout->handle);
    }
    for (const auto& object : database.objects) {
        EXPECT_NE(object->type, 0) << typeid(*object).name();
        EXPECT_TRUE(object->type < 500 || object->type - 500U < database.classes.size());
    }
    // Doing it once more changes nothing.
    const std::size_t before = database.objects.size();
    const Handle next = database.nextHandle();
    completeGraph(database);
    EXPECT_EQ(database.objects.size(), before);
    EXPECT_EQ(database.nextHandle(), next);
    for (std::size_t i = 0; i < database.classes.size(); ++i) EXPECT_EQ(database.classes[i].number, 500 + i);
}

TEST(KdrawObjects, DanglingReferencesGo) {
    Database database;
    completeGraph(database);
    auto made = kindNamed("LAYER")->make();
    auto& layer = static_cast<LayerRecord&>(*made);
    layer.type = 0x33;
    layer.name = "Loose";
    layer.linetype = layer.material = layer.plotStyle = layer.owner = layer.dictionary = 0xDEAD;
    layer.reactors = {0xDEAD, database.header.rootDictionary};
    layer.xdata.emplace_back().application = 0xDEAD;
    database.add(std::move(made));
    database.as<Dictionary>(database.header.groups)->set("Gone", 0xDEAD);
    database.as<LayerControl>(database.header.layerControl)->records.push_back(0xDEAD);
    completeGraph(database);
    EXPECT_EQ(layer.linetype, database.header.continuous);
    EXPECT_NE(database.find(layer.plotStyle), nullptr);
    EXPECT_EQ(layer.dictionary, 0U);
    EXPECT_EQ(layer.reactors.size(), 1U);
    EXPECT_TRUE(layer.xdata.empty());
    EXPECT_TRUE(database.as<Dictionary>(database.header.groups)->entries.empty());
    EXPECT_EQ(database.as<LayerControl>(database.header.layerControl)->records.size(), 1U);
}
