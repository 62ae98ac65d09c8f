#include "engine/entities/mtext.hpp"

#include <gtest/gtest.h>

#include <chrono>

#include "engine/model/drawing.hpp"
#include "engine/entities/table_entity.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "math/angles.hpp"
#include "text_sinks.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;

MTextLayout layout(std::string_view content, double width = 0.0, std::int32_t attachment = kAttachTopLeft,
                   const MTextColumns* columns = nullptr) {
    MTextBlock block;
    block.content = content;
    block.height = 2.0;
    block.width = width;
    block.attachment = attachment;
    block.columns = columns;
    return layoutMText(block, nullptr);
}

/// Texts of the pieces, those of one line joined, lines parted by '/'.
std::string lines(const MTextLayout& l) {
    std::string all;
    double y = std::numeric_limits<double>::quiet_NaN();
    for (const MTextLayout::Piece& p : l.pieces) {
        if (!all.empty() && p.run.origin.y != y) all += '/';
        y = p.run.origin.y;
        all += l.runOf(p).text;
    }
    return all;
}

Bounds2 boundsOf(const MTextLayout& l, std::size_t piece) { return textRunBounds(l.runOf(l.pieces[piece])); }

double widthOf(std::string_view text, double height = 2.0) {
    TextRun run;
    run.text = text;
    return textSpan(run).length() * height;
}

RecordingSink emitted(const Entity& e) {
    RecordingSink sink;
    e.emit(sink, outlineStyle(e));
    return sink;
}

TEST(MTextLayout, CodesFormatWhatFollows) {
    const MTextLayout l =
        layout("a{\\C1;\\H3;b\\H0.5x;c}d\\W2;e\\Q15;\\T1.5;f{\\fArial|b1|i1|c0|p0;g\\Fromans;h}\\Li\\lj\\c255;k");
    ASSERT_EQ(l.pieces.size(), 11U);
    EXPECT_FALSE(l.pieces[0].color);
    EXPECT_EQ(l.pieces[1].color, Color::index(1));
    EXPECT_EQ(l.pieces[1].run.yAxis.y, 3.0);
    EXPECT_EQ(l.pieces[2].run.yAxis.y, 1.5);
    EXPECT_FALSE(l.pieces[3].color) << "a group ends what it began";
    EXPECT_EQ(l.pieces[3].run.yAxis.y, 2.0);
    EXPECT_EQ(l.pieces[4].run.xAxis.x, 4.0);
    EXPECT_NEAR(l.pieces[5].run.yAxis.x, 2.0 * std::tan(15.0 * math::kDegree), 1e-12);
    EXPECT_EQ(l.pieces[5].run.tracking, 1.5);
    EXPECT_EQ(l.pieces[6].run.font, Name("Arial"));
    EXPECT_TRUE(l.pieces[6].run.bold && l.pieces[6].run.italic);
    EXPECT_EQ(l.pieces[7].run.font, Name("romans.shx"));
    EXPECT_FALSE(l.pieces[7].run.bold);
    EXPECT_TRUE(l.pieces[8].run.underline);
    EXPECT_FALSE(l.pieces[9].run.underline);
    EXPECT_EQ(l.pieces[10].color, Color::rgb(255, 0, 0));
}

TEST(MTextLayout, EscapesAndUnknownCodesAreText) {
    EXPECT_EQ(lines(layout("\\\\ \\{x\\} a\\~b %%d\\U+00D8")), "\\ {x} a\u00A0b \u00B0\u00D8");
    EXPECT_EQ(lines(layout("\\y \\H; \\Cx")), "\\y \\H; \\Cx");
    EXPECT_EQ(lines(layout("\\fnever ends")), "\\fnever ends");
    EXPECT_EQ(lines(layout("\\S1/2")), "\\S1/2");
    EXPECT_EQ(lines(layout("end\\")), "end\\");
    EXPECT_EQ(lines(layout("a}b{c")), "abc") << "braces without a partner";
    EXPECT_EQ(lines(layout("a\\Pb\nc^Jd^M^Je\r\nf")), "a/b/c/d/e/f");
    EXPECT_EQ(lines(layout("5^3")), "5^3") << "a caret that begins no code";
}

TEST(MTextLayout, WrapsAtBlanks) {
    const double width = widthOf("HHHH HHHH");
    const MTextLayout l = layout("HHHH HHHH HHHH   HHHH", width * 1.001);
    EXPECT_EQ(lines(l), "HHHH HHHH/HHHH/HHHH") << "the wider blanks do not fit";
    EXPECT_EQ(layout("HHHH HHHH HHHH", width * 0.999).lineCount, 3U);
    EXPECT_EQ(layout("HHHH HHHH HHHH", 0.0).lineCount, 1U);
    // A word is never broken, even when a format changes within it, and one that is too long stands alone.
    EXPECT_EQ(lines(layout("HHHH H{\\C1;HHHH}H HH", width * 0.8)), "HHHH/HHHHHH/HH");
    EXPECT_EQ(lines(layout("\u6F22\u5B57\u6F22\u5B57", layout("\u6F22\u5B57").box.width() * 1.001)),
              "\u6F22\u5B57/\u6F22\u5B57");
    EXPECT_EQ(lines(layout("HHHH\\~HHHH", width * 0.8)), "HHHH\u00A0HHHH");
}

TEST(MTextLayout, LineDistances) {
    const MTextLayout l = layout("H\\PH\\PH");
    EXPECT_NEAR(l.baseline, -2.0, 1e-12);
    EXPECT_NEAR(l.lastBaseline, -2.0 - 2 * 10.0 / 3.0, 1e-12);
    EXPECT_NEAR(l.box.height(), 2.0 + 2 * 10.0 / 3.0, 1e-12);
    EXPECT_NEAR(layout("H\\P\\PH").box.height(), l.box.height(), 1e-12) << "an empty line counts";
    EXPECT_NEAR(layout("H\\P{\\H4;H}").lastBaseline, -2.0 - 20.0 / 3.0, 1e-12)
        << "tall characters push their line down";
    MTextBlock exact;
    exact.content = "H\\P{\\H4;H}";
    exact.height = 2.0;
    exact.lineSpacingExact = true;
    exact.lineSpacingFactor = 1.5;
    EXPECT_NEAR(layoutMText(exact, nullptr).lastBaseline, -2.0 - 5.0, 1e-12);
    EXPECT_NEAR(layout("{\\H4;H}h").baseline, -4.0, 1e-12);
}

TEST(MTextLayout, AttachmentsPlaceTheBox) {
    for (std::int32_t a = 1; a <= 9; ++a) {
        const MTextLayout l = layout("HEH\\PH", 0.0, a);
        const Bounds2 ink = l.ink(Matrix4::identity());
        const int column = (a - 1) % 3;
        const int row = (a - 1) / 3;
        EXPECT_NEAR(column == 0 ? ink.min.x : column == 1 ? ink.center().x : ink.max.x, 0.0, 1e-9) << a;
        EXPECT_NEAR(row == 0 ? ink.max.y : row == 1 ? ink.center().y : ink.min.y, 0.0, 1e-9) << a;
        // The short line stands at the same side.
        const Bounds2 second = boundsOf(l, 1);
        EXPECT_NEAR(column == 0 ? second.min.x : column == 1 ? second.center().x : second.max.x, 0.0, 1e-9) << a;
    }
    EXPECT_EQ(layout("HEH", 50.0, kAttachMiddleCenter).box.min.x, -25.0) << "the wrap width is the box";
    EXPECT_EQ(lines(layout("H", 0.0, 77)), "H");
}

TEST(MTextLayout, StacksStandAsTheirKindSays) {
    const MTextLayout fraction = layout("x\\S1/22;");
    ASSERT_EQ(fraction.pieces.size(), 3U);
    ASSERT_EQ(fraction.rules.size(), 1U);
    EXPECT_EQ(fraction.rules[0].a.y, fraction.rules[0].b.y);
    EXPECT_GT(boundsOf(fraction, 1).min.y, fraction.rules[0].a.y);
    EXPECT_LT(boundsOf(fraction, 2).max.y, fraction.rules[0].a.y);
    EXPECT_NEAR(boundsOf(fraction, 1).center().x, boundsOf(fraction, 2).center().x, 1e-9);
    EXPECT_NEAR(boundsOf(fraction, 2).min.y, fraction.baseline, 1e-9);
    EXPECT_GT(boundsOf(fraction, 1).min.x, boundsOf(fraction, 0).max.x);

    const MTextLayout tolerance = layout("\\S+0.1^ -0.2;");
    EXPECT_TRUE(tolerance.rules.empty());
    EXPECT_EQ(lines(tolerance), "+0.1/-0.2");
    EXPECT_NEAR(tolerance.pieces[0].run.origin.x + textSpan(tolerance.runOf(tolerance.pieces[0])).start * 2.0,
                tolerance.pieces[1].run.origin.x + textSpan(tolerance.runOf(tolerance.pieces[1])).start * 2.0, 1e-9);

    const MTextLayout slanted = layout("\\S1#2;");
    ASSERT_EQ(slanted.rules.size(), 1U);
    EXPECT_LT(slanted.rules[0].a.y, slanted.rules[0].b.y);
    EXPECT_LT(boundsOf(slanted, 0).max.x, boundsOf(slanted, 1).min.x);

    const MTextLayout centred = layout("\\A1;H\\S1/2;H");
    const double middle = centred.baseline + 1.0;
    EXPECT_NEAR(centred.rules[0].a.y, middle, 1e-9);
    EXPECT_EQ(lines(layout("\\Sa\\/b\\;;")), "a/b;") << "escaped marks do not stack";
    // A tall stack keeps off the line above it.
    const MTextLayout below = layout("H\\P\\S1/2;");
    EXPECT_LT(below.ink(Matrix4::identity()).min.y, -8.0);
    EXPECT_LT(boundsOf(below, 1).max.y, boundsOf(below, 0).min.y);
}

TEST(MTextLayout, Paragraphs) {
    const MTextLayout l = layout("\\pi2,l1,qr;HH\\P\\pi*,l*,qc;HH\\P\\pq*;HH", 100.0);
    EXPECT_NEAR(boundsOf(l, 0).max.x, 100.0, 1e-9);
    EXPECT_NEAR(boundsOf(l, 1).center().x, 50.0, 1e-9);
    EXPECT_NEAR(boundsOf(l, 2).min.x, 0.0, 1e-9);
    // A hanging indent: first line at 0, the others at 3 heights.
    const MTextLayout hang = layout("\\pi-3,l3;HHHH HHHH HHHH", widthOf("HHHH HHHH") * 1.01);
    EXPECT_NEAR(boundsOf(hang, 0).min.x, 0.0, 1e-9);
    EXPECT_NEAR(boundsOf(hang, 1).min.x, 6.0, 1e-9);
    // Justified lines reach both sides, the last one does not.
    const double width = widthOf("HH HH HH") * 1.2;
    const MTextLayout j = layout("\\pqj;HH HH HH HH HH", width);
    EXPECT_NEAR(boundsOf(j, 2).max.x, width, 1e-9);
    EXPECT_LT(boundsOf(j, j.pieces.size() - 1).max.x, width * 0.9);
}

TEST(MTextLayout, Tabs) {
    const MTextLayout l = layout("H\tH^IH");
    EXPECT_NEAR(boundsOf(l, 1).min.x, 8.0 + boundsOf(l, 0).min.x, 1.0);
    EXPECT_NEAR(l.pieces[1].run.origin.x - l.pieces[0].run.origin.x, 8.0, 1e-9) << "every four heights";
    EXPECT_NEAR(l.pieces[2].run.origin.x - l.pieces[0].run.origin.x, 16.0, 1e-9);
    const MTextLayout stops = layout("\\pt10,r30;a\tb\tHH");
    EXPECT_NEAR(stops.pieces[1].run.origin.x, 20.0, 1.0);
    EXPECT_NEAR(boundsOf(stops, 2).max.x, 60.0, 1.0) << "right-aligned at its stop";
    EXPECT_LT(boundsOf(stops, 2).min.x, 57.0);
}

TEST(MTextLayout, Columns) {
    MTextColumns columns;
    columns.type = 1;
    columns.count = 2;
    columns.width = 40.0;
    columns.gutter = 5.0;
    const MTextLayout even = layout("H\\PH\\PH\\PH", 0.0, kAttachTopLeft, &columns);
    EXPECT_EQ(even.columns.size(), 2U);
    EXPECT_NEAR(even.box.width(), 85.0, 1e-9);
    EXPECT_NEAR(boundsOf(even, 2).min.x, 45.0, 1e-9);
    EXPECT_NEAR(boundsOf(even, 2).max.y, 0.0, 1e-9);
    columns.flowReversed = true;
    EXPECT_NEAR(boundsOf(layout("H\\NE", 0.0, kAttachTopLeft, &columns), 0).min.x, 45.0, 1e-9);

    MTextColumns dynamic;
    dynamic.type = 2;
    dynamic.width = 40.0;
    dynamic.gutter = 5.0;
    dynamic.heights = {2.5, 6.0, 0.0};
    const MTextLayout own = layout("A\\PB\\PC\\PD\\PE", 0.0, kAttachTopLeft, &dynamic);
    EXPECT_EQ(own.columns.size(), 3U);
    EXPECT_NEAR(boundsOf(own, 1).min.x, 45.0, 0.1);
    EXPECT_NEAR(boundsOf(own, 4).min.x, 90.0, 0.5);
    EXPECT_EQ(layout("Wipeout\\N").lineCount, 1U) << "a break behind the last line adds none";
}

TEST(MTextLayout, HostileContentEndsSoon) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const std::size_t million = 1000000;
    EXPECT_EQ(layout(std::string(million, 'x'), 10.0).pieces.size(), 1U);
    EXPECT_EQ(layout(std::string(million, '{') + "deep" + std::string(million, '}')).pieces.size(), 1U);
    std::string words;
    std::string codes;
    for (int i = 0; i < 100000; ++i) {
        words += "word ";
        codes += "{\\C" + std::to_string(i % 255 + 1) + ";\\H2x;a";
    }
    EXPECT_GT(layout(words, 100.0).lineCount, 1000U);
    EXPECT_GT(layout(codes, 100.0).pieces.size(), 1U);
    layout(std::string(million, '\\'));
    layout(std::string(million / 2, '^') + "\\S" + std::string(million / 2, '/'));
    std::string fonts;
    for (int i = 0; i < 100000; ++i) fonts += "\\f\\S\\p";
    layout(fonts);
    std::string breaks;
    for (int i = 0; i < 100000; ++i) breaks += "\\N\\P";
    MTextColumns columns;
    columns.type = 2;
    columns.count = std::numeric_limits<std::int32_t>::max();
    columns.width = 1.0;
    columns.heights = {1e-300};
    layout(breaks, 0.0, kAttachTopLeft, &columns);
    EXPECT_LT(std::chrono::duration<double>(Clock::now() - start).count(), 20.0);

    for (const double bad :
         {0.0, -3.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (int field = 0; field < 6; ++field) {
            MTextEntity t;
            t.content = "a \\H1e9;b \\W0;c";
            (field == 0   ? t.height
             : field == 1 ? t.width
             : field == 2 ? t.lineSpacingFactor
             : field == 3 ? t.rotation
             : field == 4 ? t.position.x
                          : t.bgScale) = bad;
            t.bgFlags = kBackgroundColor;
            emitted(t);
            t.bounds();
            t.transform(Matrix4::scaling(2, 3));
            t.moveGrip(2, {5, 5});
        }
    }
}

TEST(PlainText, ReadsAsTheReaderDoes) {
    EXPECT_EQ(plainText("{\\fArial|b0;Line} 1\\PLine\\~2\\tx \\S1/2; \\S+1^ -1; \\{%%c\\}"),
              "Line 1\nLine\u00A02\tx 1/2 +1 -1 {\u2300}");
    const std::string awkward = "a\\b {c}\nd;^x";
    EXPECT_EQ(plainText(mtextFromPlain(awkward)), awkward);
}

TEST(MText, BoundsTurnWithTheText) {
    MTextEntity t;
    t.content = "HEH\\PHHHHH";
    t.position = {3, 4};
    const Bounds2 plain = t.bounds();
    t.rotation = kPi / 2;
    const Bounds2 turned = t.bounds();
    EXPECT_NEAR(turned.width(), plain.height(), 1e-9);
    EXPECT_NEAR(turned.min.x, 3.0, 1e-9);
    EXPECT_NEAR(turned.max.y, 4.0 + plain.width(), 1e-9);
    EXPECT_EQ(t.distanceTo(turned.center()), 0.0);
    EXPECT_NEAR(t.distanceTo({3 - 2, 5}), 2.0, 1e-9);
}

TEST(MText, TransformsMoveTheShapeExactly) {
    for (const Matrix4& m : {Matrix4::rotation_about({1, 2}, 0.7), Matrix4::scaling_about({3, 3}, 2.5),
                             Matrix4::mirror({1, 0}, {4, 5}), Matrix4::scaling(3.0, 0.5)}) {
        MTextEntity t;
        t.content = "One two three four five six";
        t.width = widthOf("One two three", 2.5) * 1.1;
        t.attachment = kAttachBottomRight;
        t.position = {7, 8};
        const RecordingSink before = emitted(t);
        ASSERT_GT(before.texts.size(), 1U);
        t.transform(m);
        t.transform(m);
        const RecordingSink after = emitted(t);
        ASSERT_EQ(after.joined(), before.joined()) << "wrapped at the same words";
        const Matrix4 twice = m * m;
        for (std::size_t i = 0; i < after.texts.size(); ++i) {
            EXPECT_TRUE(twice.transform_point(before.texts[i].run.origin).near_equal(after.texts[i].run.origin, 1e-6));
            EXPECT_TRUE(
                twice.transform_direction(before.texts[i].run.yAxis).near_equal(after.texts[i].run.yAxis, 1e-6));
        }
    }
}

TEST(MText, GripsSetTheWrapWidth) {
    for (const std::int32_t attachment : {kAttachTopLeft, kAttachTopCenter, kAttachBottomRight}) {
        MTextEntity t;
        t.content = "HH HH";
        t.width = 20.0;
        t.rotation = kPi / 6;
        t.attachment = attachment;
        const auto before = t.box();
        t.moveGrip(2, before[1] + Vector2::from_angle(t.rotation) * 5.0);
        EXPECT_NEAR(t.width, 25.0, 1e-9);
        EXPECT_TRUE(t.box()[0].near_equal(before[0], 1e-9)) << "the other side stays";
        t.moveGrip(1, before[0] - Vector2::from_angle(t.rotation) * 5.0);
        EXPECT_NEAR(t.width, 30.0, 1e-9);
        EXPECT_TRUE(t.box()[1].near_equal(before[1] + Vector2::from_angle(t.rotation) * 5.0, 1e-9));
    }
}

TEST(MText, BackgroundLiesBelowTheText) {
    MTextEntity t;
    t.content = "HEH";
    t.bgFlags = kBackgroundCanvas;
    RecordingSink sink = emitted(t);
    ASSERT_EQ(sink.fills.size(), 1U);
    EXPECT_TRUE(sink.fills[0].background);
    EXPECT_TRUE(sink.fills[0].box.contains_box(sink.textBox));
    EXPECT_NEAR(sink.fills[0].box.min.y, sink.textBox.min.y - 1.25, 1e-9);
    t.bgFlags = kBackgroundColor | kBackgroundFrame;
    t.bgColor = Color::index(2);
    sink = emitted(t);
    EXPECT_FALSE(sink.fills[0].background);
    EXPECT_EQ(sink.fills[0].style.color, Color::index(2));
    EXPECT_EQ(sink.strokeBox, sink.fills[0].box);
    EXPECT_EQ(t.bounds(), sink.strokeBox);
}

TEST(Tolerance, ContentReadsBackAsItIs) {
    const char* contents[] = {"{\\Fgdt;j}%%v{\\Fgdt;n}0.5{\\Fgdt;m}%%v%%vA%%vB{\\Fgdt;m}%%v",
                              "{\\Fgdt;r}%%v1%%v2%%v%%v%%v\n10", "{\\Fgdt;j}%%v1%%v%%v%%v%%v",
                              "{\\Fgdt;j}%%v1%%v%%vA%%v%%v\n{\\Fgdt;j}%%v0.2%%v%%vA%%v%%v\n10{\\Fgdt;p}\n-A-", "odd"};
    for (const char* content : contents) {
        ToleranceEntity t;
        t.setContentText(content);
        EXPECT_EQ(t.contentText(), content);
    }
    ToleranceEntity t;
    t.setContentText(contents[0]);
    EXPECT_EQ(toleranceSymbolName(t.first.symbol), "Position");
    EXPECT_EQ(t.first.toleranceValue, "%%c0.5");
    EXPECT_EQ(t.first.toleranceMC, "m");
    EXPECT_EQ(t.first.datum2MC, "m");
    std::string rows;
    for (int i = 0; i < 100000; ++i) rows += "x\n";
    t.setContentText(rows);
    EXPECT_LE(t.rows.size(), ToleranceEntity::kMaxRows);
}

TEST(Tolerance, FrameHoldsItsCells) {
    ToleranceEntity t;
    t.setContentText("{\\Fgdt;j}%%v{\\Fgdt;n}0.5{\\Fgdt;m}%%v%%vA%%v%%v\n{\\Fgdt;j}%%v0.2%%v%%vA%%vB%%v");
    t.insertion = {10, 10};
    t.textHeight = 3.0;
    const RecordingSink sink = emitted(t);
    EXPECT_EQ(sink.joined(), "j|n|0.5|m|A|0.2|A|B") << "the symbol that both rows share is drawn once";
    EXPECT_TRUE(sink.strokeBox.contains_box(sink.textBox));
    EXPECT_EQ(t.bounds(), sink.strokeBox);
    EXPECT_NEAR(sink.strokeBox.min.x, 10.0, 1e-9);
    EXPECT_NEAR(sink.strokeBox.max.y, 13.0, 1e-9);
    EXPECT_NEAR(sink.strokeBox.min.y, 1.0, 1e-9);
    const Bounds2 before = t.bounds();
    t.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_NEAR(t.bounds().min.x, -before.max.x, 1e-9) << "takes the place of its image";
    EXPECT_NEAR(t.bounds().max.x, -before.min.x, 1e-9);
    t.transform(Matrix4::scaling(2, 2));
    EXPECT_NEAR(t.bounds().height(), 2.0 * before.height(), 1e-9);
}

TableEntity makeTable(std::int32_t rows, std::int32_t cols) {
    TableEntity t;
    t.insertion = {100, 50};
    t.resize(rows, cols);
    t.rowHeights.assign(static_cast<std::size_t>(rows), 10.0);
    t.colWidths.assign(static_cast<std::size_t>(cols), 20.0);
    return t;
}

TEST(Table, GridLeavesMergedAreasOpen) {
    TableEntity t = makeTable(3, 3);
    const double full = pathLength(emitted(t).strokes);
    EXPECT_NEAR(full, 2 * (60 + 30) + 2 * 60 + 2 * 30, 1e-9);
    EXPECT_TRUE(t.mergeCells(0, 0, 0, 2));
    EXPECT_TRUE(t.mergeCells(1, 1, 2, 2));
    EXPECT_FALSE(t.mergeCells(1, 1, 3, 2));
    EXPECT_NEAR(pathLength(emitted(t).strokes), full - 2 * 10 - 20 * 2 - 10 * 2, 1e-9);
    EXPECT_EQ(t.cellBox(2, 2), (Bounds2{{20, -30}, {60, -10}}));
    std::int32_t row = -1;
    std::int32_t col = -1;
    EXPECT_TRUE(t.cellAt({155, 25}, row, col));
    EXPECT_EQ(row * 10 + col, 11);
    EXPECT_FALSE(t.cellAt({99, 45}, row, col));
    t.unmergeCells(2, 2);
    t.unmergeCells(0, 1);
    EXPECT_NEAR(pathLength(emitted(t).strokes), full, 1e-9);
}

TEST(Table, CellsAlignTheirTextWithinTheirArea) {
    TableEntity t = makeTable(3, 2);
    t.rotation = kPi / 2;
    for (std::int32_t a = 1; a <= 9; ++a) {
        TableCell& c = t.ensureCell(2, 1);
        c.content = "HEH";
        c.alignment = a;
        const RecordingSink sink = emitted(t);
        ASSERT_EQ(sink.texts.size(), 1U);
        // In the turned table the cell lies at x 120..130, y 70..90.
        const Bounds2 cell{{120, 70}, {130, 90}};
        EXPECT_TRUE(cell.contains_box(sink.textBox)) << a;
        const int down = (a - 1) / 3;
        const int across = (a - 1) % 3;
        EXPECT_NEAR(across == 0   ? sink.textBox.min.y
                    : across == 1 ? sink.textBox.center().y
                                  : sink.textBox.max.y,
                    across == 0   ? 71.5
                    : across == 1 ? 80.0
                                  : 88.5,
                    1e-9);
        EXPECT_NEAR(down == 0   ? sink.textBox.min.x
                    : down == 1 ? sink.textBox.center().x
                                : sink.textBox.max.x,
                    down == 0   ? 121.5
                    : down == 1 ? 125.0
                                : 128.5,
                    1e-9);
    }
    EXPECT_EQ(t.cellTextHeight(0), 6.0) << "the title row of the style";
    EXPECT_EQ(t.cellTextHeight(2), 4.5);
    t.rowTextHeights = {0.0, 0.0, 3.0};
    EXPECT_EQ(t.cellTextHeight(2), 3.0);
    t.ensureCell(1, 0).content = "many words that need many lines in a narrow cell";
    t.fitRowHeights();
    EXPECT_GT(t.rowHeight(1), 30.0);
    EXPECT_EQ(t.rowHeight(2), 10.0);
}

TEST(Table, GripsAndTransformsKeepItsProportions) {
    TableEntity t = makeTable(2, 3);
    ASSERT_EQ(t.gripPoints().size(), 6U);
    t.moveGrip(4, {130, 50});
    EXPECT_EQ(t.colWidth(0), 30.0);
    EXPECT_EQ(t.colWidth(1), 10.0);
    t.moveGrip(4, {300, 50});
    EXPECT_EQ(t.colWidth(0), 30.0) << "a border does not pass its neighbour";
    t.moveGrip(3, {220, 10});
    EXPECT_NEAR(t.totalWidth(), 120.0, 1e-9);
    EXPECT_NEAR(t.totalHeight(), 40.0, 1e-9);
    const Bounds2 before = t.bounds();
    t.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_NEAR(t.bounds().min.x, -before.max.x, 1e-9);
    t.transform(Matrix4::scaling(0.5, 0.5));
    EXPECT_NEAR(t.totalWidth(), 60.0, 1e-9);
    EXPECT_NEAR(t.cellTextHeight(1), 2.25, 1e-9);
}

TEST(Table, AbsurdSizesAreHarmless) {
    TableEntity t;
    t.rows = t.cols = std::numeric_limits<std::int32_t>::max();
    t.cells.resize(5);
    t.cells[0].mergeRight = t.cells[0].mergeDown = std::numeric_limits<std::int32_t>::max();
    t.cells[1].mergeRight = -5;
    t.rowHeights = {std::numeric_limits<double>::quiet_NaN(), -1.0};
    t.bounds();
    t.gripPoints();
    emitted(t);
    EXPECT_EQ(t.cell(-1, 0), nullptr);
    EXPECT_THROW(t.ensureCell(-1, 0), std::out_of_range);
    t.rows = t.cols = -4;
    EXPECT_TRUE(emitted(t).strokes.empty());
    t.resize(2, 2);
    EXPECT_EQ(t.cells.size(), 4U);
}

}  // namespace
}  // namespace kova::engine
