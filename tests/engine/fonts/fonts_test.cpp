#include "engine/fonts/fonts.hpp"

#include <gtest/gtest.h>

#include "engine/text/text_codes.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::Vector2;

TextRun runOf(std::string_view text, const char* font = "txt.shx") {
    TextRun run;
    run.text = text;
    run.font = Name(font);
    return run;
}

Bounds2 emittedBounds(const TextRun& run) {
    Bounds2 box;
    const auto take = [&](PathView path) { box.expand(pathBounds(path)); };
    emitTextRun(run, take, take);
    return box;
}

void expectNear(const Bounds2& a, const Bounds2& b, double eps) {
    EXPECT_NEAR(a.min.x, b.min.x, eps);
    EXPECT_NEAR(a.min.y, b.min.y, eps);
    EXPECT_NEAR(a.max.x, b.max.x, eps);
    EXPECT_NEAR(a.max.y, b.max.y, eps);
}

TEST(StrokeFont, EveryLetterHasInkOfItsOwn) {
    const Glyph& box = strokeFont().glyph(0x10FFFE);
    EXPECT_FALSE(box.box.is_empty()) << "an unknown character is a box";
    const std::pair<char32_t, char32_t> ranges[] = {{0x21, 0x7E},   {0xA1, 0x17F},  {0x391, 0x3A1},
                                                    {0x3A3, 0x3CE}, {0x400, 0x45F}, {0x1EA0, 0x1EF9}};
    for (const auto& [first, last] : ranges) {
        for (char32_t c = first; c <= last; ++c) {
            const Glyph& g = strokeFont().glyph(c);
            ASSERT_FALSE(g.box.is_empty()) << std::hex << static_cast<unsigned>(c);
            ASSERT_FALSE(g.filled) << std::hex << static_cast<unsigned>(c);
            ASSERT_GT(g.advance, 0.0) << std::hex << static_cast<unsigned>(c);
            ASSERT_FALSE(g.box == box.box) << "missing: " << std::hex << static_cast<unsigned>(c);
            ASSERT_GE(g.box.min.x, -0.01) << std::hex << static_cast<unsigned>(c);
            ASSERT_LE(g.box.max.x, g.advance + 0.05) << std::hex << static_cast<unsigned>(c);
            ASSERT_GE(g.box.min.y, -0.6) << std::hex << static_cast<unsigned>(c);
            ASSERT_LE(g.box.max.y, 1.7) << std::hex << static_cast<unsigned>(c);
        }
    }
    for (const char32_t c : {U'\u00B0', U'\u2300', U'\u00B1', U'\u20AC', U'\u2316', U'\u24C2'})
        EXPECT_FALSE(strokeFont().glyph(c).box == box.box);
}

TEST(StrokeFont, CapitalsAreOneHighAndStandOnTheBaseline) {
    for (const char32_t c : U"AEHTZ\u0391\u0416\u0428") {
        if (c == 0) continue;
        const Bounds2& b = strokeFont().glyph(c).box;
        EXPECT_NEAR(b.min.y, 0.0, 1e-9);
        EXPECT_NEAR(b.max.y, 1.0, 1e-9);
    }
    EXPECT_GT(strokeFont().glyph(U'\u00C4').box.max.y, 1.1) << "accents stand over the capital";
    EXPECT_LT(strokeFont().glyph(U'\u00C7').box.min.y, -0.1) << "the cedilla hangs below";
    EXPECT_TRUE(strokeFont().glyph(U' ').box.is_empty());
    EXPECT_GT(strokeFont().glyph(U' ').advance, 0.3);
}

TEST(Fonts, FileNamesFindTheirFont) {
    for (const char* name : {"", "txt.shx", "TXT", "romans.shx", "isocp.shx", "C:\\fonts\\simplex.shx", "unknown.shx"})
        EXPECT_EQ(&fontFor(Name(name)), &strokeFont()) << name;
    EXPECT_EQ(&fontFor("arial.ttf"), &fontFor("ARIAL.TTF"));
    EXPECT_NE(&fontFor("gdt.shx"), &strokeFont());
    // Outline fonts are filled, on any machine that has one; letters that they lack come from the stroke font.
    const Font& arial = fontFor("arial.ttf");
    if (&arial == &strokeFont()) GTEST_SKIP() << "no outline font installed";
    EXPECT_TRUE(arial.glyph(U'A').filled);
    EXPECT_NEAR(arial.glyph(U'H').box.max.y, 1.0, 1e-6);
    EXPECT_FALSE(arial.glyph(U'\u232D').box.is_empty());
    EXPECT_NE(&arial, &fontFor("arialbd.ttf"));
    EXPECT_GT(fontFor("arial.ttf", {}, true).glyph(U'm').advance, arial.glyph(U'm').advance);
    EXPECT_NE(&fontFor("times.ttf"), &arial);
    EXPECT_FALSE(fontFor("No Such Family Anywhere").glyph(U'x').box.is_empty());
}

TEST(Fonts, BoundsHoldTheInkUnderEveryMap) {
    for (const char* font : {"txt.shx", "arial.ttf", "italic.shx"}) {
        TextRun run = runOf("Ajgp\u00C5 0.5\u00B1", font);
        run.underline = run.overline = run.strikeThrough = true;
        expectNear(textRunBounds(run), emittedBounds(run), 1e-6);
        // Mirrored, a quarter turn, and shifted: boxes stay boxes.
        run.origin = {10, -4};
        run.xAxis = {0, -2};
        run.yAxis = {3, 0};
        expectNear(textRunBounds(run), emittedBounds(run), 1e-6);
        // Slanted and turned: never smaller than the ink.
        run.xAxis = {1.5, 1.5};
        run.yAxis = {-0.5, 2};
        const Bounds2 box = textRunBounds(run);
        const Bounds2 ink = emittedBounds(run);
        EXPECT_TRUE(box.inflated(1e-6).contains_box(ink));
    }
    TextRun vertical = runOf("VER");
    vertical.vertical = true;
    const Bounds2 down = emittedBounds(vertical);
    expectNear(textRunBounds(vertical), down, 1e-9);
    EXPECT_NEAR(down.max.y, 0.0, 1e-9);
    EXPECT_NEAR(down.min.y, -textSpan(vertical).end, 1e-9);
    EXPECT_NEAR(down.center().x, 0.0, 1e-9);
}

TEST(Fonts, MeasuresAddUp) {
    const TextRun ab = runOf("AB");
    EXPECT_NEAR(textAdvance(ab), textAdvance(runOf("A")) + textAdvance(runOf("B")), 1e-12);
    TextRun wide = runOf("AB");
    wide.tracking = 2.0;
    EXPECT_NEAR(textAdvance(wide), 2.0 * textAdvance(ab), 1e-12);
    EXPECT_NEAR(textSpan(ab).start, emittedBounds(ab).min.x, 1e-9);
    EXPECT_NEAR(textSpan(ab).end, emittedBounds(ab).max.x, 1e-9);
    EXPECT_NEAR(textSpan(runOf("  ")).length(), textAdvance(runOf("  ")), 1e-12);
    EXPECT_NEAR(textSpan(runOf(" A ")).end, textAdvance(runOf(" A ")), 1e-12) << "blanks count";
}

TEST(Fonts, BadRunsAreHarmless) {
    EXPECT_TRUE(textRunBounds(runOf("")).is_empty());
    TextRun nan = runOf("A");
    nan.xAxis.x = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(textRunBounds(nan).is_empty());
    EXPECT_TRUE(emittedBounds(nan).is_empty());
    TextRun broken = runOf("A\xFF\xC3\xE2\x82");  // bytes that are no UTF-8
    EXPECT_FALSE(emittedBounds(broken).is_empty());
    TextRun blank = runOf("   ");
    EXPECT_FALSE(textRunBounds(blank).is_empty());
    EXPECT_EQ(textRunBounds(blank).height(), 0.0);
    const std::string million(1000000, 'x');
    EXPECT_NEAR(textAdvance(runOf(million)) / 1e6, strokeFont().glyph(U'x').advance, 1e-6);
}

TEST(Codes, AreResolved) {
    EXPECT_EQ(resolveCodesPlain("45%%d %%p0.1 %%C20 100%%%"), "45\u00B0 \u00B10.1 \u230020 100%");
    EXPECT_EQ(resolveCodesPlain("%%065%%066 %%176 %%129"), "AB \u00B0 \u2300");
    EXPECT_EQ(resolveCodesPlain("\\U+00D8 \\U+03a9 \\U+D83D\\U+DE00"), "\u00D8 \u03A9 \U0001F600");
    EXPECT_EQ(resolveCodesPlain("50% %% %%x %%12 a\\b \\U+12G4 %"), "50% %% %%x %%12 a\\b \\U+12G4 %") << "no codes";
    EXPECT_EQ(resolveCodesPlain("%%%%d"), "%%d") << "a per cent sign, and what is left of a code";
    EXPECT_EQ(resolveCodesPlain("\\M+80000"), "\\M+80000");
    const std::string japanese = resolveCodesPlain("\\M+18ABF");
    EXPECT_TRUE(japanese == "\u6F22" || japanese == "\uFFFD") << "known when the converters are there";
}

TEST(Codes, TogglesSplitTheText) {
    const std::vector<CodeRun> runs = resolveCodes("a%%ub%%oc%%Ud%%ke");
    ASSERT_EQ(runs.size(), 5U);
    EXPECT_EQ(runs[1].text, "b");
    EXPECT_TRUE(runs[1].underline && !runs[1].overline);
    EXPECT_TRUE(runs[2].underline && runs[2].overline);
    EXPECT_TRUE(!runs[3].underline && runs[3].overline);
    EXPECT_TRUE(runs[4].strikeThrough && runs[4].overline);
    EXPECT_TRUE(resolveCodes("%%u%%o").empty());
    EXPECT_TRUE(resolveCodes("").empty());
}

}  // namespace
}  // namespace kova::engine
