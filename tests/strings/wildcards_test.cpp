#include "strings/wildcards.hpp"

#include <gtest/gtest.h>

namespace kova::cmd {
namespace {

TEST(Wildcards, MatchNamesWithoutRegardToCase) {
    const std::pair<const char*, const char*> good[] = {
        {"Walls", "walls"},       {"WALLS", "*"},     {"Walls", "w*s"},   {"Walls", "*l*l*"}, {"A1", "@#"},
        {"A-1", "?.?"},           {"b", "[abc]"},     {"d", "[~abc]"},    {"k", "[a-m]"},     {"Walls", "x,~y*,z"},
        {"Doors", "walls,doors"}, {"a*b", "a`*b"},    {"", "*"},          {"", ""},           {"[", "["},
        {"x[y", "x[y"},           {"Wände", "W?NDE"}, {"abcabd", "*abd"}, {"A,B", "A[,]B"}};
    for (const auto& [text, pattern] : good) EXPECT_TRUE(matchesWildcards(text, pattern)) << text << " " << pattern;
    const std::pair<const char*, const char*> bad[] = {
        {"Walls", "wall"}, {"Walls", "w?s"}, {"A1", "##"},    {"A1", "."},     {"b", "[~abc]"},
        {"Walls", "~w*"},  {"", "?"},        {"axb", "a`*b"}, {"abc", "*abd"}, {"n", "[a-m]"}};
    for (const auto& [text, pattern] : bad) EXPECT_FALSE(matchesWildcards(text, pattern)) << text << " " << pattern;
}

TEST(Wildcards, HostilePatternsEndSoon) {
    const std::string text(2000, 'a');
    std::string stars;
    for (int i = 0; i < 500; ++i) stars += "*a";
    EXPECT_FALSE(matchesWildcards(text, stars + "b"));
    EXPECT_FALSE(matchesWildcards("x", std::string(200000, '[')));
    EXPECT_TRUE(matchesWildcards("x", std::string(200000, '~') + "x"));
    EXPECT_FALSE(matchesWildcards("x", std::string(200001, '~') + "x"));
    EXPECT_EQ(splitNames(std::string(100000, '[') + ",a").size(), 2u);
}

TEST(Wildcards, NameListsArePartedAtCommas) {
    EXPECT_EQ(splitNames(" a , \"b c\",,[x,y]*,d"), (std::vector<std::string>{"a", "b c", "[x,y]*", "d"}));
    EXPECT_TRUE(splitNames(" , ").empty());
    EXPECT_TRUE(hasWildcards("a*"));
    EXPECT_FALSE(hasWildcards("a b_1-2"));
}

}  // namespace
}  // namespace kova::cmd
