#include "engine/entities/text.hpp"

#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/shape.hpp"
#include "math/angles.hpp"
#include "text_sinks.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;

TextEntity makeText(std::string content, std::int32_t h = kHAlignLeft, std::int32_t v = kVAlignBaseline) {
    TextEntity t;
    t.position = {10, 20};
    t.height = 2.0;
    t.content = std::move(content);
    t.hAlign = h;
    t.vAlign = v;
    return t;
}

RecordingSink emitted(const Entity& e) {
    RecordingSink sink;
    e.emit(sink, outlineStyle(e));
    return sink;
}

void expectSame(const Bounds2& a, const Bounds2& b) {
    EXPECT_NEAR(a.min.x, b.min.x, 1e-9);
    EXPECT_NEAR(a.min.y, b.min.y, 1e-9);
    EXPECT_NEAR(a.max.x, b.max.x, 1e-9);
    EXPECT_NEAR(a.max.y, b.max.y, 1e-9);
}

TEST(Text, AlignmentsPutTheTextAtItsPoint) {
    const Bounds2 left = makeText("HEH").bounds();
    EXPECT_NEAR(left.min.x, 10.0, 1e-9);
    EXPECT_NEAR(left.min.y, 20.0, 1e-9);
    EXPECT_NEAR(left.height(), 2.0, 1e-9) << "capitals";
    const double width = left.width();
    EXPECT_NEAR(makeText("HEH", kHAlignRight).bounds().max.x, 10.0, 1e-9);
    EXPECT_NEAR(makeText("HEH", kHAlignCenter).bounds().center().x, 10.0, 1e-9);
    const Bounds2 middle = makeText("HEH", kHAlignMiddle).bounds();
    EXPECT_NEAR(middle.center().x, 10.0, 1e-9);
    EXPECT_NEAR(middle.center().y, 20.0, 1e-9);
    const Bounds2 topRight = makeText("HEH", kHAlignRight, kVAlignTop).bounds();
    EXPECT_NEAR(topRight.max.y, 20.0, 1e-9);
    EXPECT_NEAR(topRight.min.x, 10.0 - width, 1e-9);
    EXPECT_NEAR(makeText("HEH", kHAlignCenter, kVAlignMiddle).bounds().center().y, 20.0, 1e-9);
    EXPECT_GT(makeText("HEH", kHAlignLeft, kVAlignBottom).bounds().min.y, 20.3) << "room for descenders";
}

TEST(Text, FitAndAlignedTextSpanTheirPoints) {
    for (const std::int32_t align : {kHAlignFit, kHAlignAligned}) {
        TextEntity t = makeText("HEEEH", align);
        t.fitEnd = {40, 20};
        const Bounds2 b = t.bounds();
        EXPECT_NEAR(b.min.x, 10.0, 1e-9);
        EXPECT_NEAR(b.max.x, 40.0, 1e-9);
        const double natural = makeText("HEEEH").bounds().width();
        EXPECT_NEAR(b.height(), align == kHAlignFit ? 2.0 : 2.0 * 30.0 / natural, 1e-9);
        // Along a slanted line it runs from point to point too.
        t.fitEnd = {10, 50};
        expectSame(t.bounds(), Bounds2{{10.0 - b.height(), 20}, {10, 50}});
        // Both points in one place: drawn in its natural width.
        t.fitEnd = t.position;
        EXPECT_NEAR(t.bounds().width(), natural, 1e-9);
    }
}

TEST(Text, CodesBecomeRunsWithLines) {
    const RecordingSink sink = emitted(makeText("%%c20 %%uH7%%u end"));
    ASSERT_EQ(sink.texts.size(), 3U);
    EXPECT_EQ(sink.joined(), "\u230020 |H7| end");
    EXPECT_FALSE(sink.texts[0].run.underline);
    EXPECT_TRUE(sink.texts[1].run.underline);
    EXPECT_LT(sink.texts[1].bounds.min.y, 20.0);
    const double pen = strokeFont().advance("\u230020 ") * 2.0;
    EXPECT_NEAR(sink.texts[1].run.origin.x - sink.texts[0].run.origin.x, pen, 1e-9) << "runs follow each other";
    // A right-aligned text of several runs still ends at its point.
    EXPECT_NEAR(makeText("a%%ub%%uH", kHAlignRight).bounds().max.x, 10.0, 1e-9);
}

TEST(Text, GenerationFlagsMirrorAboutThePoint) {
    const Bounds2 plain = makeText("FL").bounds();
    TextEntity t = makeText("FL");
    t.generation = kTextBackward;
    expectSame(t.bounds(), Bounds2{{20 - plain.max.x, 20}, {10, 22}});
    t.generation = kTextUpsideDown;
    expectSame(t.bounds(), Bounds2{{10, 18}, {plain.max.x, 20}});
}

TEST(Text, StylesGiveFontAndDirection) {
    Drawing drawing;
    TextStyle down;
    down.name = Name("Down");
    down.vertical = true;
    drawing.textStyles.add(down);
    auto text = std::make_unique<TextEntity>(makeText("HHH"));
    text->textStyle = Name("Down");
    const TextEntity& t = static_cast<TextEntity&>(drawing.modelSpace().append(std::move(text)));
    const Bounds2 b = t.bounds();
    EXPECT_GT(b.height(), 2.0 * b.width());
    EXPECT_NEAR(b.max.y, 20.0, 1e-9);
    EXPECT_NEAR(b.center().x, 10.0, 1e-9);
}

TEST(Text, TransformsMoveTheShapeExactly) {
    Matrix4 uneven = Matrix4::scaling(3.0, 0.5);
    uneven(0, 1) = 0.4;
    const Matrix4 maps[] = {Matrix4::translation(5, -3),         Matrix4::rotation_about({1, 2}, 0.7),
                            Matrix4::scaling_about({3, 3}, 2.5), Matrix4::mirror({0, 0}, {0, 1}),
                            Matrix4::mirror({0, 0}, {1, 0}),     Matrix4::mirror({1, 0}, {4, 5}),
                            Matrix4::scaling(2.0, 0.5),          uneven};
    for (const std::int32_t align : {kHAlignLeft, kHAlignRight, kHAlignMiddle, kHAlignFit}) {
        for (const Matrix4& m : maps) {
            TextEntity t = makeText("FLag", align);
            t.rotation = 0.3;
            t.oblique = 0.2;
            t.widthFactor = 0.8;
            t.fitEnd = {18, 23};
            const RecordingSink before = emitted(t);
            t.transform(m);
            const RecordingSink after = emitted(t);
            ASSERT_EQ(after.texts.size(), 1U);
            const TextRun& a = before.texts[0].run;
            const TextRun& b = after.texts[0].run;
            if (align == kHAlignFit && !math::planeParts(m).uniform) continue;  // its slant follows the new direction
            EXPECT_TRUE(m.transform_point(a.origin).near_equal(b.origin, 1e-7)) << align;
            EXPECT_TRUE(m.transform_direction(a.xAxis).near_equal(b.xAxis, 1e-7)) << align;
            EXPECT_TRUE(m.transform_direction(a.yAxis).near_equal(b.yAxis, 1e-7)) << align;
        }
    }
    TextEntity moved = makeText("x");
    moved.rotation = 0.1;
    moved.transform(Matrix4::translation(1, 1));
    EXPECT_EQ(moved.height, 2.0);
    EXPECT_EQ(moved.rotation, 0.1) << "a move leaves what it does not touch exactly";
}

TEST(Text, MirrorTwiceIsBack) {
    TextEntity t = makeText("abc", kHAlignAligned);
    t.fitEnd = {30, 25};
    const RecordingSink before = emitted(t);
    t.transform(Matrix4::mirror({2, 1}, {7, 9}));
    EXPECT_EQ(t.generation, kTextBackward);
    t.transform(Matrix4::mirror({2, 1}, {7, 9}));
    EXPECT_EQ(t.generation, 0);
    EXPECT_TRUE(t.position.near_equal({10, 20}, 1e-9));
    expectSame(emitted(t).textBox, before.textBox);
}

TEST(Text, PicksItsBoxAndDragsByItsPoints) {
    TextEntity t = makeText("HH", kHAlignRight);
    EXPECT_EQ(t.distanceTo({9, 21}), 0.0) << "inside the box";
    EXPECT_NEAR(t.distanceTo({14, 21}), 4.0, 1e-9);
    ASSERT_EQ(t.gripPoints().size(), 2U);
    EXPECT_NEAR(t.gripPoints()[1].x, t.bounds().min.x, 1e-9);
    t.moveGrip(1, t.gripPoints()[1] + Vector2{1, 2});
    EXPECT_TRUE(t.position.near_equal({11, 22}));
    t.moveGrip(7, {0, 0});
    EXPECT_TRUE(t.position.near_equal({11, 22}));
    TextEntity fit = makeText("HH", kHAlignFit);
    fit.fitEnd = {30, 20};
    fit.moveGrip(1, {10, 60});
    EXPECT_NEAR(fit.bounds().max.y, 60.0, 1e-9);
}

TEST(Text, ObjectPlaneOfMirroredEntities) {
    TextEntity t = makeText("FL");
    t.setNormal({0, 0, -1});
    const Bounds2 b = t.bounds();
    EXPECT_NEAR(b.max.x, -10.0, 1e-9);
    EXPECT_EQ(t.distanceTo(b.center()), 0.0);
    EXPECT_TRUE(t.gripPoints()[0].near_equal({-10, 20}, 1e-9));
}

TEST(Text, BadValuesAreHarmless) {
    const double bad[] = {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                          1e308};
    for (const double value : bad) {
        for (int field = 0; field < 5; ++field) {
            TextEntity t = makeText("abc", kHAlignFit);
            t.fitEnd = {20, 20};
            (field == 0   ? t.height
             : field == 1 ? t.widthFactor
             : field == 2 ? t.oblique
             : field == 3 ? t.rotation
                          : t.fitEnd.x) = value;
            emitted(t);
            t.bounds();
            t.nearestPoint({1, 1});
            t.transform(Matrix4::scaling(2, 3));
            t.gripPoints();
        }
    }
    EXPECT_EQ(makeText("").bounds().width(), 0.0);
    EXPECT_TRUE(emitted(makeText("")).texts.empty());
    TextEntity flat = makeText("abc");
    flat.transform(Matrix4::scaling(0, 0));
    EXPECT_GT(flat.height, 0.0);
}

TEST(AttributeDefinition, ShowsItsTagAndTransformsLikeText) {
    AttributeDefinitionEntity a;
    a.tag = "TAG";
    a.defaultValue = "7";
    a.insertion = {10, 20};
    a.textHeight = 2.0;
    a.hAlign = kHAlignRight;
    EXPECT_EQ(emitted(a).joined(), "TAG");
    EXPECT_NEAR(a.bounds().max.x, 10.0, 1e-9);
    a.constant = true;
    EXPECT_EQ(emitted(a).joined(), "7");
    a.transform(Matrix4::scaling(3, 3));
    EXPECT_EQ(a.textHeight, 6.0);
    EXPECT_TRUE(a.insertion.near_equal({30, 60}));
}

TEST(Shape, IsAFramedNameThatNeverVanishes) {
    ShapeEntity s;
    s.position = {5, 5};
    s.size = 4.0;
    s.rotation = kPi / 2;
    s.name = "A RATHER LONG SHAPE NAME";
    const RecordingSink sink = emitted(s);
    EXPECT_EQ(sink.joined(), s.name);
    expectSame(sink.strokeBox, Bounds2{{1, 5}, {5, 9}});
    expectSame(s.bounds(), sink.strokeBox);
    EXPECT_TRUE(sink.strokeBox.contains_box(sink.textBox)) << "the name fits into its box";
    s.name.clear();
    EXPECT_EQ(emitted(s).joined(), "?");
    s.transform(Matrix4::mirror({0, 0}, {0, 1}));
    expectSame(s.bounds(), Bounds2{{-5, 5}, {-1, 9}});
    EXPECT_LT(s.widthFactor, 0.0);
}

}  // namespace
}  // namespace kova::engine
