#include <gtest/gtest.h>

#include "cmd/keywords.hpp"
#include "cmd/point_input.hpp"
#include "cmd/processor.hpp"
#include "cmd/script_lines.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using math::Vector2;

constexpr Vector2 kBase{1, 1};

std::optional<Vector2> point(std::string_view text, Vector2 base = kBase, Vector2 direction = {},
                             const PointContext& context = {}) {
    return parsePointInput(text, base, direction, context);
}

void expectPoint(std::string_view text, double x, double y, Vector2 base = kBase, Vector2 direction = {},
                 const PointContext& context = {}) {
    const auto p = point(text, base, direction, context);
    ASSERT_TRUE(p) << text;
    EXPECT_TRUE(p->near_equal({x, y}, 1e-9)) << text << " gave " << p->x << "," << p->y;
}

TEST(Numbers, AreDecimalAndConsumedWhole) {
    const std::pair<const char*, double> good[] = {{"12", 12},     {"-2.5", -2.5},      {".5", 0.5},
                                                   {"5.", 5},      {"1e3", 1000},       {"+7", 7},
                                                   {" \t4 \t", 4}, {"-.25E-1", -0.025}, {"1e+2", 100}};
    for (const auto& [text, value] : good) {
        ASSERT_TRUE(parseNumber(text)) << text;
        EXPECT_DOUBLE_EQ(*parseNumber(text), value) << text;
    }
    for (const char* text :
         {"",    " ",   "3/4", "10mm", "1,5", "0x10", "inf", "-inf",  "nan",    "infinity", "1e",    "--1",
          "+-1", "-+1", "+ 1", "- 1",  ".",   "-",    "e5",  "1e999", "-1e999", "1 2",      "1_000", "\n1"})
        EXPECT_FALSE(parseNumber(text)) << text;
    EXPECT_EQ(parseInteger(" +12 "), 12);
    EXPECT_EQ(parseInteger("-3"), -3);
    for (const char* text : {"", "1.0", "1e2", "2147483648", "+-1", "0x1"}) EXPECT_FALSE(parseInteger(text)) << text;
}

TEST(Points, CartesianAndPolarAbsoluteAndRelative) {
    expectPoint("3,4", 3, 4);
    expectPoint(" 3 , 4 ", 3, 4);
    expectPoint("3,4,5", 3, 4);
    expectPoint("@3,4", 4, 5);
    expectPoint("@ 3,4", 4, 5);
    expectPoint("@*5,5", 6, 6);
    expectPoint("@3,4,-9", 4, 5);
    expectPoint("10<90", 0, 10);
    expectPoint("@3<0", 4, 1);
    expectPoint("@2<180", -1, 1);
    expectPoint("-2<0", -2, 0);
    for (const char* text :
         {"",   " ",   "@",     "@*",    "@,",  "<",     ",",     "@<",  "1,",      ",1",    "1,2,x", "1,2,3,4",
          "1<", "<90", "1,2<3", "1<2,3", "1 2", "3/4,1", "@@1,1", "x,y", "1e999,0", "nan,0", "*5,5"})
        EXPECT_FALSE(point(text)) << text;
    // The result must stay a number.
    EXPECT_FALSE(point("@1.7e308,0", {1.7e308, 0}));
}

TEST(Points, AngleSenseAndBase) {
    const PointContext clockwise{0.0, true, nullptr};
    expectPoint("@1<90", 1, 0, kBase, {}, clockwise);
    const PointContext turned{math::kPi / 2.0, false, nullptr};
    expectPoint("@1<0", 1, 2, kBase, {}, turned);
    // The angle is negated before the base is added.
    const PointContext both{math::kPi / 2.0, true, nullptr};
    expectPoint("@1<90", 2, 1, kBase, {}, both);
    EXPECT_NEAR(*parseAngleInput("30", both), math::kPi / 3.0, 1e-12);
}

TEST(Points, BareNumbersFollowTheCursorOrTheAxis) {
    expectPoint("5", 6, 1, kBase, {2, 0});
    expectPoint(" 5 ", 1, 6, kBase, {0, 1e-9});
    expectPoint("-5", 1, -4, kBase, {0, 3});
    // With the cursor on the base point the number is an x coordinate, also behind "@".
    expectPoint("5", 5, 0, kBase, {});
    expectPoint("@5", 5, 0, kBase, {});
    expectPoint(" 5 ", 5, 0, kBase, {1e-11, 0});
    // No pointer: from the base towards the origin.
    expectPoint("5", 0, 5, {0, 10}, Vector2{} - Vector2{0, 10});
}

TEST(Points, UserCoordinateSystems) {
    engine::Ucs ucs;
    ucs.origin = {10, 20};
    ucs.xAxis = {0, 1};
    ucs.yAxis = {-1, 0};
    const PointContext context{0.0, false, &ucs};
    expectPoint("1,2", 8, 21, kBase, {}, context);
    expectPoint("@1,2", -1, 2, kBase, {}, context);
    expectPoint("@3<90", -2, 1, kBase, {}, context);
    expectPoint("3<90", 7, 20, kBase, {}, context);
    expectPoint("5", 10, 25, kBase, {}, context);
}

TEST(Keywords, OnlyTheWholeWordOrItsShortForm) {
    const auto options = parseKeywords("3P  2P Ttr eXit LAyer ON Undo ?");
    ASSERT_EQ(options.size(), 8u);
    const std::pair<const char*, const char*> good[] = {
        {"3p", "3P"},    {"t", "TTR"},        {"TTR", "TTR"},   {"x", "EXIT"}, {"Exit", "EXIT"},
        {"la", "LAYER"}, {"_LAYER", "LAYER"}, {"_la", "LAYER"}, {"on", "ON"},  {"?", "?"}};
    for (const auto& [typed, word] : good) EXPECT_EQ(matchKeyword(typed, options), word) << typed;
    for (const char* typed : {"", "_", "e", "ex", "l", "lay", "o", "un", " u", "u ", "__u", "tt", "3"})
        EXPECT_EQ(matchKeyword(typed, options), "") << typed;
}

TEST(Words, SplitAtBlanksOutsideQuotes) {
    EXPECT_EQ(splitWords("  LINE 0,0\t10,0  "), (std::vector<std::string>{"LINE", "0,0", "10,0"}));
    EXPECT_EQ(splitWords("OPEN \"a b.dxf\" x"), (std::vector<std::string>{"OPEN", "a b.dxf", "x"}));
    EXPECT_EQ(splitWords("a \"open end"), (std::vector<std::string>{"a", "\"open", "end"}));
    EXPECT_EQ(splitWords("x \"\" 5\""), (std::vector<std::string>{"x", "", "5\""}));
    EXPECT_TRUE(splitWords(" \t ").empty());
}

TEST(ScriptText, GivesTrimmedLinesWithoutComments) {
    EXPECT_EQ(scriptLines("\xEF\xBB\xBFLINE\r\n  0,0 \n;note\n ; note\n\n\t\nL"),
              (std::vector<std::string>{"LINE", "0,0", "", "", "L"}));
    EXPECT_TRUE(scriptLines("").empty());
    EXPECT_EQ(scriptLines("\n"), (std::vector<std::string>{""}));
}

}  // namespace
}  // namespace kova::cmd
