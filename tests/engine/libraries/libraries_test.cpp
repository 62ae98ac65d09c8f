#include "engine/libraries/libraries.hpp"
#include "engine/model/linetype_flags.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

template <class Records>
const typename Records::value_type* find(const Records& records, std::string_view name) {
    for (const auto& record : records)
        if (record.name == name) return &record;
    return nullptr;
}

TEST(Libraries, PatternLibraryStandsInItsOrder) {
    const std::string_view text = builtinPatternText();
    EXPECT_TRUE(
        text.starts_with(";; KovaCAD Standard Hatch Pattern Definitions\n;; Compatible with AutoCAD .pat format\n"));
    constexpr std::string_view names[] = {
        "ANSI31",   "ANSI32",   "ANSI33", "ANSI34",   "ANSI35",   "ANSI36",     "ANSI37",    "ANSI38",     "ANGLE",
        "AR-B816",  "AR-B816C", "AR-B88", "AR-BRELM", "AR-BRSTD", "AR-CONC",    "AR-HBONE",  "AR-PARQ1",   "AR-RROOF",
        "AR-RSHKE", "AR-SAND",  "BOX",    "BRASS",    "BRICK",    "CLAY",       "CORK",      "CROSS",      "DASH",
        "DOLMIT",   "DOTS",     "EARTH",  "ESCHER",   "FLEX",     "GOST_GLASS", "GOST_WOOD", "GOST_EARTH", "GRAVEL",
        "GRASS",    "GRATE",    "HEX",    "HONEY",    "HOUND",    "INSUL",      "JIS_LC_20", "JIS_LC_20A", "LINE",
        "MUDST",    "NET",      "NET3",   "PLAST",    "PLASTI",   "SACNCR",     "SQUARE",    "STARS",      "STEEL",
        "SWAMP",    "TRANS",    "TRIANG", "ZIGZAG"};
    for (const bool metric : {true, false}) {
        const std::vector<HatchPattern>& patterns = builtinHatchPatterns(metric);
        ASSERT_EQ(patterns.size(), std::size(names));
        for (std::size_t i = 0; i < patterns.size(); ++i) {
            EXPECT_EQ(patterns[i].name.view(), names[i]);
            EXPECT_FALSE(patterns[i].families.empty()) << names[i];
        }
    }
    int skipped = -1;
    parsePatternLibrary(text, &skipped);
    EXPECT_EQ(skipped, 0);
}

TEST(Libraries, PatternValues) {
    const HatchPattern& ansi32 = builtinHatchPatterns(true)[1];
    EXPECT_EQ(ansi32.description, "ANSI Steel");
    ASSERT_EQ(ansi32.families.size(), 2u);
    EXPECT_DOUBLE_EQ(ansi32.families[0].angle, math::kPi / 4);
    EXPECT_EQ(ansi32.families[0].shift, (math::Vector2{0, 9.525}));
    EXPECT_EQ(ansi32.families[1].origin, (math::Vector2{4.49013, 0}));
    EXPECT_TRUE(ansi32.families[1].dashes.empty());

    // Inches are a 25.4th, but for the patterns that are millimetres in both sets.
    const HatchFamily& inch = builtinHatchPatterns(false)[0].families[0];
    EXPECT_DOUBLE_EQ(inch.shift.y, 0.125);
    for (const char* name : {"GOST_GLASS", "JIS_LC_20"})
        EXPECT_EQ(find(builtinHatchPatterns(false), name)->families[0].shift,
                  find(builtinHatchPatterns(true), name)->families[0].shift);
    EXPECT_EQ(find(builtinHatchPatterns(true), "GOST_EARTH")->description.empty(), false);
}

TEST(Libraries, TextIsTheTablesOne) {
    // The library is made from a table; both stand in the sources and must not drift apart.
    std::ifstream file(KOVA_SOURCE_DIR "/resources/tables/hatch-patterns.csv");
    ASSERT_TRUE(file);
    std::string line;
    std::getline(file, line);
    std::size_t rows = 0;
    while (std::getline(file, line)) ++rows;
    std::size_t families = 0;
    for (const HatchPattern& pattern : builtinHatchPatterns(true)) families += pattern.families.size();
    EXPECT_EQ(families, rows);
}

TEST(Libraries, LinetypesAndTheirVariants) {
    for (const bool metric : {true, false}) {
        const std::vector<Linetype>& linetypes = builtinLinetypes(metric);
        ASSERT_EQ(linetypes.size(), 24u);
        for (std::size_t i = 0; i < 24; i += 3) {
            const Linetype& base = linetypes[i];
            EXPECT_EQ(linetypes[i + 1].name.str(), base.name.str() + "2");
            EXPECT_EQ(linetypes[i + 2].name.str(), base.name.str() + "X2");
            ASSERT_EQ(linetypes[i + 1].pattern.size(), base.pattern.size());
            ASSERT_EQ(linetypes[i + 2].pattern.size(), base.pattern.size());
            for (std::size_t k = 0; k < base.pattern.size(); ++k) {
                EXPECT_DOUBLE_EQ(linetypes[i + 1].pattern[k] * 2, base.pattern[k]) << base.name.str();
                EXPECT_DOUBLE_EQ(linetypes[i + 2].pattern[k], base.pattern[k] * 2) << base.name.str();
                EXPECT_DOUBLE_EQ(builtinLinetypes(true)[i].pattern[k], builtinLinetypes(false)[i].pattern[k] * 25.4);
            }
        }
        for (const Linetype& linetype : linetypes) {
            EXPECT_TRUE(linetype.standard);
            EXPECT_TRUE(linetype.elements.empty());
        }
    }
    const Linetype& center = builtinLinetypes(true)[0];
    EXPECT_EQ(center.description, "Center ____ _ ____ _ ____");
    EXPECT_DOUBLE_EQ(center.patternLength(), 50.8);
    EXPECT_EQ(find(builtinLinetypes(true), "dotx2")->description, "Dot (2x) .  .  .  .");
}

TEST(Libraries, AnnotationScales) {
    const std::vector<AnnotationScale> scales = builtinAnnotationScales();
    constexpr std::string_view names[] = {"1:1",  "1:10", "1:16",  "1:20", "1:30",
                                          "1:40", "1:50", "1:100", "10:1", "100:1"};
    ASSERT_EQ(scales.size(), std::size(names));
    for (std::size_t i = 0; i < scales.size(); ++i) EXPECT_EQ(scales[i].name.view(), names[i]);
    EXPECT_EQ(scales[2].drawingUnits, 16.0);
    EXPECT_EQ(scales[9].paperUnits, 100.0);
    EXPECT_EQ(scales[9].drawingUnits, 1.0);
}

TEST(PatternText, IsReadTolerantly) {
    int skipped = -1;
    const std::vector<HatchPattern> patterns = parsePatternLibrary(
        "\xEF\xBB\xBF;%UNITS=MM\r\n*One , first, with comma\r\n  45 , +0,0, 0 ,1e-1 , .5,-.25, 0,\r\n"
        "90, 0,0, 0,1 ; a comment behind\n\n*two\n0,0,0,0,-2",
        &skipped);
    ASSERT_EQ(patterns.size(), 2u);
    EXPECT_EQ(skipped, 0);
    EXPECT_EQ(patterns[0].name.str(), "One");
    EXPECT_EQ(patterns[0].description, "first, with comma");
    ASSERT_EQ(patterns[0].families.size(), 2u);
    EXPECT_EQ(patterns[0].families[0].dashes, (std::vector<double>{0.5, -0.25, 0}));
    EXPECT_EQ(patterns[1].description, "");
    EXPECT_EQ(patterns[1].families[0].shift.y, -2.0);
}

TEST(PatternText, PassesOverWhatIsNone) {
    struct Case {
        const char* text;
        std::size_t patterns;
        int skipped;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"45,0,0,0,1\n", 0, 1},                // no header yet
        {"*A\n*B\n45,0,0,0,1\n", 1, 1},        // a pattern without lines
        {"*A\n45,0,0,0\n45,0,0,0,1\n", 1, 1},  // too few numbers
        {"*A\n45,0,0,0,0\n", 0, 2},            // lines that never part: no pattern is left
        {"*A\n45,0,0,0,nan\n45,0,0,inf,1\n", 0, 3},
        {"*A\n45,0,0,0,1e300\n", 0, 2},
        {"*A\n45,0,0,0,1,0,0\n", 0, 2},  // dots without gaps
        {"*A\n45,0,0,0,1x\n45,0,,0,1\n0,0,0,0,1", 1, 2},
        {"*A\n0,0,0,0,1\n*a\n0,0,0,0,2\n", 1, 2},  // a name that is taken, and its line
        {"*\n0,0,0,0,1\n*,only a description\n", 0, 3},
    };
    for (const Case& c : cases) {
        int skipped = -1;
        EXPECT_EQ(parsePatternLibrary(c.text, &skipped).size(), c.patterns) << c.text;
        EXPECT_EQ(skipped, c.skipped) << c.text;
    }
}

TEST(PatternText, IsBounded) {
    std::string many = "*A\n";
    for (int i = 0; i < 5000; ++i) many += "0,0,0,0,1\n";
    many += "0,0,0,0,1" + [] {
        std::string dashes;
        for (int i = 0; i < 1000; ++i) dashes += ",1";
        return dashes;
    }() + "\n";
    EXPECT_LE(parsePatternLibrary(many)[0].families.size(), 1000u);
    EXPECT_TRUE(parsePatternLibrary(std::string(1 << 20, '*')).empty());
    EXPECT_TRUE(parsePatternLibrary("*A\n" + std::string(1 << 20, '1')).empty());
}

TEST(LinetypeText, ShapesAndTextsStandAtTheirDash) {
    int skipped = -1;
    const std::vector<Linetype> linetypes = parseLinetypeLibrary(
        "*GAS,Gas ----GAS----\nA,12.7,-5.08,[\"GAS, 1\",STANDARD,S=2.54,R=90,X=-2.54,Y=-1.27],-6.35\n"
        "*UP\nA,1,-1,[\"U\",STANDARD,S=1,U=90,X=0,Y=0],-1\n"
        "*TRACK\na, 3.81 ,[TRACK1,ltypeshp.shx,s=6.35,A=0.5r], 3.81\n",
        &skipped);
    EXPECT_EQ(skipped, 0);
    ASSERT_EQ(linetypes.size(), 3u);
    EXPECT_EQ(linetypes[1].elements[1].flags, kElementText | kElementUpright);
    EXPECT_DOUBLE_EQ(linetypes[1].elements[1].rotation, math::kPi / 2);
    const Linetype& gas = linetypes[0];
    EXPECT_EQ(gas.pattern, (std::vector<double>{12.7, -5.08, -6.35}));
    ASSERT_EQ(gas.elements.size(), 3u);
    EXPECT_EQ(gas.elements[0].flags, 0);
    EXPECT_EQ(gas.elements[1].flags, 2);
    EXPECT_EQ(gas.elements[1].text, "GAS, 1");
    EXPECT_DOUBLE_EQ(gas.elements[1].rotation, math::kPi / 2);
    EXPECT_DOUBLE_EQ(gas.elements[1].offsetX, -2.54);
    EXPECT_EQ(linetypes[2].elements[0].flags, 5);
    EXPECT_EQ(linetypes[2].elements[0].style.str(), "ltypeshp.shx");
    EXPECT_DOUBLE_EQ(linetypes[2].elements[0].rotation, 0.5);
    EXPECT_FALSE(linetypes[2].standard);
}

TEST(LinetypeText, PassesOverWhatIsNone) {
    for (const char* text : {"*A,x\n", "*A,x\nB,1,-1\n", "*A,x\nA,1,oops\n", "*A,x\nA,0\n", "*A,x\nA\n", "A,1,-1\n",
                             "*A,x\nA,[\"T\",S,S=1],1\n", "*A,x\nA,1,[\"T\",S,Q=1]\n", "*A,x\nA,1,[\"T\",S,S=nan]\n",
                             "*A,x\nA,1,[,S]\n", "*A,x\nA,1,[\n"}) {
        int skipped = 0;
        EXPECT_TRUE(parseLinetypeLibrary(text, &skipped).empty()) << text;
        EXPECT_EQ(skipped, 1) << text;
    }
}

TEST(Libraries, DrawingsLoadByTheirUnits) {
    Drawing drawing;
    EXPECT_DOUBLE_EQ(drawing.loadLinetype("hidden")->pattern[0], 6.35);
    EXPECT_DOUBLE_EQ(drawing.findHatchPattern("ansi31")->families[0].shift.y, 3.175);
    applyStartingValues(drawing, UnitSystem::Imperial);
    EXPECT_DOUBLE_EQ(drawing.loadLinetype("Dashed")->pattern[0], 0.5);
    EXPECT_DOUBLE_EQ(drawing.findHatchPattern("ANSI31")->families[0].shift.y, 0.125);
    EXPECT_EQ(drawing.loadLinetype("nonsense"), nullptr);
}

}  // namespace
}  // namespace kova::engine
