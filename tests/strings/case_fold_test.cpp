#include "strings/case_fold.hpp"

#include <gtest/gtest.h>

#include <QChar>
#include <QList>
#include <QString>

#include "strings/case_tables.hpp"
#include "strings/utf8.hpp"

namespace kova::strings {
namespace {

TEST(CaseFold, TablesAreUnicodesAsQtKnowsThem) {
    // Letters that are younger than one of the two tables are left to the other.
    const UnicodeVersion made = caseTableVersion();
    const auto known = [&](char32_t c) {
        const auto version = QChar::unicodeVersion(c);
        if (version == QChar::Unicode_Unassigned) return false;
        static constexpr std::pair<QChar::UnicodeVersion, int> kLater[] = {{QChar::Unicode_13_0, 13}, {QChar::Unicode_14_0, 14}};
        for (const auto& [later, number] : kLater)
            if (version == later) return number <= made.major;
        return version < QChar::Unicode_13_0;
    };
    std::size_t compared = 0;
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (!known(c)) continue;
        ++compared;
        // Qt leaves a letter alone for which the full mapping has several; Unicode has a simple one for some of these.
        const QString text = QString::fromUcs4(&c, 1);
        const auto single = [](const QString& mapped) { return mapped.toUcs4().size() == 1; };
        if (single(text.toCaseFolded())) {
            ASSERT_EQ(foldCase(c), QChar::toCaseFolded(c)) << std::hex << static_cast<std::uint32_t>(c);
        }
        if (single(text.toUpper())) {
            ASSERT_EQ(upperCase(c), QChar::toUpper(c)) << std::hex << static_cast<std::uint32_t>(c);
        }
        if (single(text.toLower())) {
            ASSERT_EQ(lowerCase(c), QChar::toLower(c)) << std::hex << static_cast<std::uint32_t>(c);
        }
        ASSERT_EQ(foldCase(foldCase(c)), foldCase(c));
    }
    EXPECT_GT(compared, 100'000U);
}

TEST(CaseFold, NamesAreTheSameInEveryAlphabet) {
    EXPECT_TRUE(equalNoCase("Layer1", "LAYER1"));
    EXPECT_TRUE(equalNoCase("Möbel", "MÖBEL"));
    EXPECT_TRUE(equalNoCase("Стены", "СТЕНЫ"));
    EXPECT_TRUE(equalNoCase("ΤΟΊΧΟΣ", "τοίχος"));
    EXPECT_TRUE(equalNoCase("Größe", "GRÖßE"));
    EXPECT_TRUE(equalNoCase("\u1E9E\u1F88", "\u00DF\u1F80"));
    EXPECT_FALSE(equalNoCase("Größe", "GRÖSSE"));
    EXPECT_FALSE(equalNoCase("Möbel", "Mobel"));
    EXPECT_FALSE(equalNoCase("wall", "walls"));
    EXPECT_EQ(upperCase("straße-ä"), "STRAßE-Ä");
    EXPECT_EQ(lowerCase("ΤΟΊΧΟΣ Ä"), "τοίχοσ ä");
    // Lower case keeps letters that only folding puts together.
    EXPECT_EQ(lowerCase("ς"), "ς");
    EXPECT_EQ(foldCase("ς"), "σ");
}

TEST(CaseFold, BytesThatAreNoTextStayAndDiffer) {
    EXPECT_EQ(foldCase("A\xFF" "B"), "a\xFF" "b");
    EXPECT_FALSE(equalNoCase("A\xFF", "A\xFE"));
    EXPECT_FALSE(equalNoCase("\xFF", "\xEF\xBF\xBD"));
    EXPECT_EQ(upperCase("\xEF\xBF\xBD\xC3"), "\xEF\xBF\xBD\xC3");
}

}  // namespace
}  // namespace kova::strings
