#include "strings/code_page.hpp"

#include <gtest/gtest.h>

#include "strings/utf8.hpp"

namespace kova::strings {
namespace {

TEST(Utf8, OnlyWellFormedTextIsText) {
    for (const char* good : {"", "plain", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(isUtf8(good)) << good;
    // Stray and missing bytes, overlong forms, surrogates, beyond the last character.
    for (const char* bad : {"\x80", "\xC3", "a\xC3z", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                            "\xF5\x80\x80\x80", "\xE2\x82", "\xFF"})
        EXPECT_FALSE(isUtf8(bad));
    EXPECT_EQ(validUtf8("a\xFF\xC3\xA4\xC3"), "a\uFFFD\u00E4\uFFFD");
    for (const char32_t c : {U'a', U'\u00E4', U'\u20AC', U'\uFFFD', U'\U0001F600'}) {
        std::string text;
        appendUtf8(text, c);
        std::size_t i = 0;
        EXPECT_EQ(nextCodePoint(text, i), c);
        EXPECT_EQ(i, text.size());
    }
    std::string text;
    appendUtf8(text, 0xD800);
    appendUtf8(text, 0x110000);
    EXPECT_EQ(text, "\uFFFD\uFFFD");
}

TEST(Utf8, CutsBetweenCharacters) {
    const std::string text = "a\u00E4\u20AC\U0001F600z";  // 1, 2, 3, 4 and 1 bytes
    EXPECT_EQ(countCharacters(text), 5U);
    const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
    for (std::size_t limit = 1; limit < std::size(expected); ++limit)
        EXPECT_EQ(wholeCharacters(text, limit), expected[limit]) << limit;
    // What is no text is cut somewhere, but always ahead.
    EXPECT_EQ(wholeCharacters("\x80\x80\x80\x80\x80\x80", 4), 4U);
    EXPECT_EQ(wholeCharacters("\x80\x80\x80", 1), 1U);
}

TEST(CodePage, IsFoundByAllItsNames) {
    for (const auto& [name, page] : std::initializer_list<std::pair<const char*, const char*>>{
             {"ANSI_1252", "ANSI_1252"}, {"ansi_1252", "ANSI_1252"}, {"1252", "ANSI_1252"}, {"cp1251", "ANSI_1251"},
             {"windows-1250", "ANSI_1250"}, {"dos850", "DOS850"}, {"cp850", "DOS850"}, {"IBM437", "DOS437"},
             {"ISO-8859-2", "ISO8859-2"}, {"iso8859-1", "ISO8859-1"}, {"latin1", "ISO8859-1"}, {"utf-8", "UTF-8"},
             {"UTF8", "UTF-8"}, {"65001", "UTF-8"}, {"932", "ANSI_932"}, {"Shift_JIS", "ANSI_932"}, {"mac", "MACINTOSH"},
             {"JOHAB", "JOHAB"}, {"GB2312", "GB2312"}}) {
        const auto found = CodePage::named(name);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->name(), page) << name;
    }
    for (const char* name : {"", "ANSI_", "cp", "9999", "klingon"}) EXPECT_FALSE(CodePage::named(name)) << name;
    // Each one goes to and from the number that drawings carry, and to a converter that is there: ASCII stays ASCII.
    for (int number = 0; number < 45; ++number) {
        const CodePage page = CodePage::ofDrawing(number);
        EXPECT_EQ(page.number(), number);
        EXPECT_EQ(page.toUtf8("Az09\\~{}"), "Az09\\~{}") << page.name();
    }
    EXPECT_EQ(CodePage::ofDrawing(1000).name(), "ANSI_1252");
    EXPECT_EQ(CodePage::ofDrawing(-1).name(), "ANSI_1252");
}

TEST(CodePage, BytesBecomeTheirLetters) {
    const auto in = [](const char* page, std::string_view bytes) { return CodePage::named(page)->toUtf8(bytes); };
    EXPECT_EQ(in("1252", "M\xF6"  "bel \x80 \xA7"), "Möbel € §");
    EXPECT_EQ(in("1251", "\xD1\xF2\xE5\xED\xFB"), "Стены");
    EXPECT_EQ(in("850", "M\x94" "bel"), "Möbel");
    EXPECT_EQ(in("932", "\x83\x5C\x95\x5C"), "ソ表");
    EXPECT_EQ(in("949", "\xBA\xAE"), "벽");
    EXPECT_EQ(in("JOHAB", "\x88\x61\\"), "가\\");
    // Bytes that the page leaves free are kept; half a character is not.
    EXPECT_EQ(in("1252", "a\x81z"), "a\u0081z");
    EXPECT_EQ(in("932", "a\x83"), "a\uFFFD");
    const std::string longText(10'000, '\xE4');
    EXPECT_EQ(countCharacters(in("1252", longText)), longText.size());
    EXPECT_EQ(multibyteCharacter('1', 0x93FA), "日");
    EXPECT_EQ(multibyteCharacter('1', 0x41), "A");
    EXPECT_EQ(multibyteCharacter('7', 0x93FA), "\uFFFD");
}

TEST(CodePage, FilesAreReadByTheirMarkOrTheirContent) {
    const CodePage western;
    EXPECT_EQ(textOfFile("plain", western), "plain");
    EXPECT_EQ(textOfFile("\xEF\xBB\xBFM\xC3\xB6" "bel", western), "Möbel");
    EXPECT_EQ(textOfFile("M\xC3\xB6" "bel", western), "Möbel");
    EXPECT_EQ(textOfFile("M\xF6" "bel", western), "Möbel");
    EXPECT_EQ(textOfFile("\xCC\xEE\xF1\xF2", *CodePage::named("1251")), "Мост");
    using namespace std::string_view_literals;
    EXPECT_EQ(textOfFile("\xFF\xFEM\0\xF6\0=\xD8\0\xDE"sv, western), "Mö😀");
    EXPECT_EQ(textOfFile("\xFE\xFF\0M\0\xF6"sv, western), "Mö");
    EXPECT_EQ(textOfFile("\xFF\xFEM\0\xF6"sv, western), "M");
    EXPECT_EQ(textOfFile("", western), "");
}

TEST(CodePage, Utf16GoesBothWays) {
    const std::string text = "aä€😀";
    const std::u16string wide = utf16OfUtf8(text);
    EXPECT_EQ(wide, u"aä€😀");
    std::string bytes;
    for (const char16_t unit : wide) bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    EXPECT_EQ(utf8OfUtf16(bytes), text);
    EXPECT_EQ(utf16OfUtf8("\xFF"), u"\uFFFD");
    EXPECT_EQ(utf8OfUtf16(std::string_view("\x00\xD8\x41\x00", 4)), "\uFFFD" "A");
}

}  // namespace
}  // namespace kova::strings
