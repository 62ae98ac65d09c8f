// Files in which one thing is named by many, or of which there are many: what they cost must grow as their size does.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <string>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/region.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"

namespace kova::test {

using namespace engine;
using io::dxf::DxfLoadReport;
using io::dxf::loadDxfText;

namespace {

/// "0 LINE|10 1.5" as groups of two lines each.
std::string groups(std::string_view compact) {
    std::string text;
    while (!compact.empty()) {
        const std::size_t end = std::min(compact.find('|'), compact.size());
        const std::string_view group = compact.substr(0, end);
        compact.remove_prefix(std::min(end + 1, compact.size()));
        const std::size_t blank = std::min(group.find(' '), group.size());
        text.append(group.substr(0, blank)).append("\n");
        text.append(group.substr(std::min(blank + 1, group.size()))).append("\n");
    }
    return text;
}

std::string hex(std::size_t value) {
    char digits[20];
    std::snprintf(digits, sizeof digits, "%zX", value);
    return digits;
}

std::string section(std::string_view name, const std::string& contents) {
    return groups("0 SECTION|2 " + std::string(name)) + contents + groups("0 ENDSEC");
}

std::string repeated(std::size_t count, const std::function<std::string(std::size_t)>& one) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += one(i);
    return text;
}

constexpr std::size_t kFirst = 0x100000;  ///< handles of what is many
constexpr std::size_t kOthers = 0x800000;

std::string lineWith(std::size_t i, std::size_t dictionary) {
    return groups("0 LINE|5 " + hex(kFirst + i) + "|102 {ACAD_XDICTIONARY|360 " + hex(dictionary) +
                  "|102 }|100 AcDbEntity|8 0|100 AcDbLine|10 0|20 0|11 1|21 1");
}

const std::string kRoot = "0 DICTIONARY|5 C|100 AcDbDictionary";

std::string file(const std::string& entities, const std::string& objects) {
    return section("ENTITIES", entities) + section("OBJECTS", objects) + groups("0 EOF");
}

double secondsOf(const std::function<void()>& work) {
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        const std::clock_t start = std::clock();
        work();
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        if (best > 3.0) break;
    }
    return best;
}

/// Eight times the size may cost three times eight times the time; what grows with the square costs 64 times.
void expectSteadyGrowth(std::size_t count, const std::function<std::function<void()>(std::size_t)>& workOn) {
    const double small = secondsOf(workOn(count));
    const double large = secondsOf(workOn(8 * count));
    EXPECT_LT(large, 24 * small + 0.04);
}

void expectFilesOpenSteadily(std::size_t count, const std::function<std::string(std::size_t)>& textOf) {
    expectSteadyGrowth(count, [&](std::size_t n) {
        return [text = textOf(n)] {
            Drawing drawing;
            ASSERT_EQ(loadDxfText(text, drawing), "");
        };
    });
}

}  // namespace

TEST(DxfGrowth, ADictionaryOrRecordThatManyObjectsName) {
    {
        SCOPED_TRACE("extension dictionary of many entries");
        expectFilesOpenSteadily(2000, [](std::size_t n) {
            return file(repeated(n, [](std::size_t i) { return lineWith(i, kOthers); }),
                        groups(kRoot + "|0 DICTIONARY|5 " + hex(kOthers) + "|100 AcDbDictionary") +
                            repeated(n, [](std::size_t i) {
                                return groups("3 KEY" + std::to_string(i) + "|360 " + hex(kOthers + 1));
                            }));
        });
    }
    {
        SCOPED_TRACE("record of own data");
        expectFilesOpenSteadily(1000, [](std::size_t n) {
            const std::string own(n * 20, ' ');
            return file(repeated(n, [](std::size_t i) { return lineWith(i, kOthers + 1 + i); }),
                        groups(kRoot) + repeated(n, [](std::size_t i) {
                            return groups("0 DICTIONARY|5 " + hex(kOthers + 1 + i) +
                                          "|100 AcDbDictionary|3 KOVA_FIELDS|360 " + hex(kOthers));
                        }) + groups("0 XRECORD|5 " + hex(kOthers) + "|100 AcDbXrecord|280 1|1 {" + own + "}"));
        });
    }
    {
        SCOPED_TRACE("group of many names");
        expectFilesOpenSteadily(1500, [](std::size_t n) {
            return file("", groups(kRoot + "|3 ACAD_GROUP|350 D|0 DICTIONARY|5 D|100 AcDbDictionary") +
                                repeated(n, [](std::size_t i) {
                                    return groups("3 G" + std::to_string(i) + "|350 E");
                                }) +
                                groups("0 GROUP|5 E|100 AcDbGroup") +
                                repeated(n, [](std::size_t i) { return groups("340 " + hex(kFirst + i)); }));
        });
    }
}

TEST(DxfGrowth, ManyBlocksLayersAndSheetsWithoutAName) {
    expectFilesOpenSteadily(1000, [](std::size_t n) {
        return section("TABLES", groups("0 TABLE|2 LAYER") + repeated(n, [](std::size_t i) {
                                     return groups("0 LAYER|2 L" + std::to_string(i) + "|70 0|62 1");
                                 }) + groups("0 ENDTAB")) +
               section("BLOCKS", repeated(n, [](std::size_t i) {
                           return groups("0 BLOCK|8 0|2 B" + std::to_string(i) + "|10 0|20 0|0 POINT|8 0|10 1|20 1|0 ENDBLK");
                       })) +
               file(repeated(n, [](std::size_t i) {
                        const std::string k = std::to_string(i);
                        return groups("0 INSERT|8 L" + k + "|2 B" + k + "|10 0|20 0");
                    }),
                    groups(kRoot));
    });
    expectFilesOpenSteadily(200, [](std::size_t n) {
        return section("BLOCKS", repeated(n, [](std::size_t i) {
                           return groups("0 BLOCK|8 0|2 *Paper_Space" + std::to_string(i) +
                                         "|10 0|20 0|0 POINT|8 0|10 1|20 1|0 ENDBLK");
                       })) +
               groups("0 EOF");
    });
}

TEST(DxfGrowth, TheProgramsOwnDimensions) {
    expectSteadyGrowth(400, [](std::size_t n) {
        Drawing drawing;
        for (std::size_t i = 0; i < n; ++i) {
            auto dimension = std::make_unique<DimensionEntity>();
            dimension->def1 = {static_cast<double>(i), 0};
            dimension->def2 = {static_cast<double>(i), 10};
            dimension->dimLine = {static_cast<double>(i) + 3, 5};
            drawing.modelSpace().append(std::move(dimension));
        }
        return [text = io::dxf::dxfText(drawing)] {
            Drawing again;
            DxfLoadReport report;
            ASSERT_EQ(loadDxfText(text, again, &report), "");
            EXPECT_TRUE(again.blocks().empty());
            EXPECT_TRUE(report.lines.empty());
        };
    });
}

/// What stands for a region is replaced by a region while its dictionary is read: the entries that follow meet that one.
TEST(DxfLinks, FollowAnEntityThatIsReplaced) {
    const std::string entity = groups("0 REGION|5 100|102 {ACAD_XDICTIONARY|360 1000|102 }|100 AcDbEntity|8 0|100 "
                                      "AcDbModelerGeometry|70 1|1 abc");
    const std::string objects =
        groups(kRoot + "|0 DICTIONARY|5 1000|100 AcDbDictionary|3 KOVA_REGION|360 5000|3 KOVA_REGION|360 5001|3 "
                       "KOVA_REGION|360 5000|0 XRECORD|5 5000|100 AcDbXrecord|280 1|1 "
                       "{\"vertices\":[{\"x\":0,\"y\":0},{\"x\":1,\"y\":0},{\"x\":1,\"y\":1}]}|0 XRECORD|5 5001|100 "
                       "AcDbXrecord|280 1|1 {\"elevation\":7}");
    Drawing drawing;
    ASSERT_EQ(loadDxfText(file(entity, objects), drawing), "");
    ASSERT_EQ(drawing.modelSpace().size(), 1U);
    const auto* region = dynamic_cast<const RegionEntity*>(drawing.modelSpace().first());
    ASSERT_NE(region, nullptr);
    EXPECT_EQ(region->handle(), 0x100U);
    EXPECT_EQ(region->elevation, 7.0);
    EXPECT_EQ(drawing.findByHandle(0x100), region);
}

/// A dictionary belongs to the first object that names it; the others are counted.
TEST(DxfLinks, ASharedDictionaryHasOneOwner) {
    const std::string objects = groups(kRoot + "|0 DICTIONARY|5 " + hex(kOthers) +
                                       "|100 AcDbDictionary|3 KOVA_FIELDS|360 5000|0 XRECORD|5 5000|100 "
                                       "AcDbXrecord|280 1|1 {\"elevation\":7}");
    Drawing drawing;
    DxfLoadReport report;
    ASSERT_EQ(loadDxfText(file(repeated(3, [](std::size_t i) { return lineWith(i, kOthers); }), objects), drawing, &report),
              "");
    EXPECT_EQ(drawing.modelSpace().first()->elevation, 7.0);
    EXPECT_EQ(drawing.modelSpace().last()->elevation, 0.0);
    ASSERT_EQ(report.lines.size(), 1U);
    EXPECT_EQ(report.lines[0], "Not kept: 2 extension dictionaries of another object.");
}

TEST(DxfLeftOut, WhatTheDrawingHasNoPlaceForIsCountedByKind) {
    const std::string text =
        section("HEADER", groups("9 $ACADVER|1 AC1027|9 $HYPERLINKBASE|1 http://x|9 $USERI1|70 0|9 $REGENMODE|70 1|9 "
                                 "$LTSCALE|40 2|9 $HANDSEED|5 FFFF|9 $NOSUCHTHING|40 1.5")) +
        section("CLASSES", groups("0 CLASS|1 SUN")) +
        section("TABLES", groups("0 TABLE|2 VPORT|0 VPORT|2 *Active|12 0|22 0|40 10|41 1|0 VPORT|2 *Active|12 0|22 0|40 "
                                 "10|41 1|0 ENDTAB|0 TABLE|2 LAYER|0 LAYER|2 A|70 0|62 1|1001 OTHER|1000 mine|0 "
                                 "LAYER|70 0|0 ENDTAB|0 TABLE|2 ODD|0 ODDITY|2 a|0 ODDITY|2 b|0 ENDTAB")) +
        section("BLOCKS", groups("0 BLOCK|8 0|2 B|10 0|20 0|0 ENDBLK|0 BLOCK|8 0|2 b|10 0|20 0|0 ENDBLK")) +
        section("ENTITIES", groups("0 LINE|5 20|102 {ACAD_XDICTIONARY|360 30|102 }|100 AcDbEntity|8 0|347 44|430 RAL$1|100 "
                                   "AcDbLine|10 0|20 0|11 1|21 1|0 VERTEX|8 0|10 0|20 0")) +
        section("OBJECTS", groups("0 DICTIONARY|5 C|100 AcDbDictionary|3 MINE|350 40|0 DICTIONARY|5 30|100 "
                                  "AcDbDictionary|3 ACAD_FIELD|360 31|0 FIELD|5 31|100 AcDbField|1 x|0 FIELD|5 32|100 "
                                  "AcDbField|1 y|0 XRECORD|5 40|100 AcDbXrecord|1 kept|0 MLINESTYLE|5 41|100 "
                                  "AcDbMlineStyle|2 STANDARD|0 XRECORD|100 AcDbXrecord|1 without a handle")) +
        section("ODDSECTION", groups("0 THING|1 x")) + groups("0 EOF");
    Drawing drawing;
    DxfLoadReport report;
    ASSERT_EQ(loadDxfText(text, drawing, &report), "");
    ASSERT_EQ(report.lines.size(), 2U);
    EXPECT_EQ(report.lines[0], "1 entities could not be read: 1 VERTEX.");
    EXPECT_EQ(report.lines[1],
              "Not kept: 1 BLOCK, 2 FIELD, 1 LAYER, 2 ODDITY, 1 VPORT, 1 XRECORD, 1 colour book name, 1 extended data of "
              "LAYER, 1 material of an entity, 1 section ODDSECTION, 1 setting HYPERLINKBASE, 1 setting NOSUCHTHING.");
    ASSERT_EQ(drawing.objectDictionary.size(), 1U);
    EXPECT_EQ(drawing.objectDictionary[0].name, "MINE");
}

}  // namespace kova::test
