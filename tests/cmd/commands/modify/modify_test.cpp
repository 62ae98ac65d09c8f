#include <gtest/gtest.h>

#include "cmd/console.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::LineEntity;
using math::Vector2;

/// The starts of all lines, in drawing order.
std::vector<Vector2> starts(Console& c) {
    std::vector<Vector2> out;
    for (const engine::Entity* e : c.entities())
        if (const auto* line = dynamic_cast<const LineEntity*>(e)) out.push_back(line->start);
    return out;
}

Vector2 endOf(Console& c, std::size_t index) { return static_cast<LineEntity*>(c.entities().at(index))->end; }

void expectNear(const Vector2& a, const Vector2& b) {
    EXPECT_NEAR(a.x, b.x, 1e-9);
    EXPECT_NEAR(a.y, b.y, 1e-9);
}

using Points = std::vector<Vector2>;

// COPY ---------------------------------------------------------------------------------------------------

TEST(Copy, RepeatsWithAStepForEach) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"COPY", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Specify base point or [Displacement/mOde] <Displacement>:");
    c.feed("1,1");
    EXPECT_EQ(c.prompt(), "Specify second point or [Array] <use first point as displacement>:");
    c.feed("@5,0");
    EXPECT_EQ(c.prompt(), "Specify second point or [Array/Exit/Undo] <Exit>:");
    c.run({"@0,5", "U", "11,1"});
    EXPECT_EQ(starts(c), (Points{{0, 0}, {5, 0}, {10, 0}}));
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_NE(c.entities()[0]->handle(), c.entities()[1]->handle());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: COPY"});
    EXPECT_EQ(c.count(), 1u);
}

TEST(Copy, UndoGoesNoFurtherThanTheCommand) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"CO", "ALL", "", "0,0", "5,0", "U"});
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
    EXPECT_EQ(c.count(), 1u);
    c.feed("X");
    EXPECT_FALSE(c.idle());  // the short form is E
    c.feed("E");
    EXPECT_TRUE(c.idle());
}

TEST(Copy, ByDisplacementFromTheOriginOfTheUcs) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"CP", "ALL", "", "2,3", ""});
    EXPECT_TRUE(c.idle());
    c.run({"UCS 100,100", "", "COPY", "L", "", "", "1,0"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(starts(c), (Points{{0, 0}, {2, 3}, {3, 3}}));
}

TEST(Copy, ModesSingleAndMultiple) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"COPY", "ALL", "", "O"});
    EXPECT_EQ(c.prompt(), "Enter a copy mode option [Single/Multiple] <Multiple>:");
    c.run({"S", "0,0", "5,0"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "COPYMODE"), 1);
    c.run({"COPY", "L", "", "0,0", "5,0"});
    EXPECT_TRUE(c.idle());
    c.run({"COPY", "L", "", "M", "0,0", "5,0", "6,0", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(starts(c), (Points{{0, 0}, {5, 0}, {10, 0}, {15, 0}, {16, 0}}));
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "COPYMODE"), 1);
}

TEST(Copy, ArraysCountTheOriginalAndFit) {
    Console c;
    c.addLine(0, 0, 1, 0);
    c.run({"COPY", "ALL", "", "0,0", "A"});
    EXPECT_EQ(c.prompt(), "Enter number of items to array:");
    EXPECT_EQ(c.feed("1"), Lines{"Invalid value."});
    c.feed("3");
    EXPECT_EQ(c.prompt(), "Specify second point or [Fit]:");
    c.run({"2,0", ""});
    EXPECT_EQ(starts(c), (Points{{0, 0}, {2, 0}, {4, 0}}));
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"UNDO", "COPY", "ALL", "", "0,0", "A", "5", "F", "0,8", ""});
    EXPECT_EQ(starts(c), (Points{{0, 0}, {0, 2}, {0, 4}, {0, 6}, {0, 8}}));
}

// ROTATE -------------------------------------------------------------------------------------------------

TEST(Rotate, ByAngleAndPoint) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"ROTATE", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Specify base point:");
    c.feed("0,0");
    EXPECT_EQ(c.prompt(), "Specify rotation angle or [Copy/Reference] <0>:");
    c.feed("90");
    EXPECT_TRUE(c.idle());
    expectNear(endOf(c, 0), {0, 10});
    c.run({"RO", "ALL", "", "0,0", "0,-3"});
    expectNear(endOf(c, 0), {10, 0});
    EXPECT_EQ(c.document.history().undoCount(), 2u);
    c.run({"RO", "ALL", "", "0,0", ""});
    EXPECT_EQ(c.document.history().undoCount(), 2u);
    // How far to turn is no direction: ANGBASE does not count, ANGDIR does.
    c.run({"ANGBASE 90", "ANGDIR 1", "RO", "ALL", "", "0,0", "90"});
    expectNear(endOf(c, 0), {0, -10});
}

TEST(Rotate, CopyLeavesTheSource) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"RO", "ALL", "", "0,0", "C"});
    EXPECT_EQ(c.prompt(), "Specify rotation angle or [Copy/Reference] <0>:");
    c.feed("180");
    ASSERT_EQ(c.count(), 2u);
    expectNear(endOf(c, 0), {10, 0});
    expectNear(endOf(c, 1), {-10, 0});
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 1u);
}

TEST(Rotate, FromAReferenceToANewAngle) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"RO", "ALL", "", "0,0", "R"});
    EXPECT_EQ(c.prompt(), "Specify the reference angle <0>:");
    c.feed("30");
    EXPECT_EQ(c.prompt(), "Specify the new angle or [Points] <0>:");
    c.feed("120");
    expectNear(endOf(c, 0), {0, 10});
    // The line itself as the reference, from the base point on; then the new direction by two points elsewhere.
    c.run({"RO", "ALL", "", "0,0", "R", "@", "0,10", "P", "50,50", "49,50"});
    EXPECT_TRUE(c.idle());
    expectNear(endOf(c, 0), {-10, 0});
    EXPECT_EQ(c.run({"RO", "ALL", "", "0,0", "R", "nonsense"}).back(), "Invalid value.");
    EXPECT_EQ(c.prompt(), "Specify the reference angle <0>:");
    c.run({"", ""});
    EXPECT_TRUE(c.idle());
    expectNear(endOf(c, 0), {-10, 0});
}

// SCALE --------------------------------------------------------------------------------------------------

TEST(Scale, ByFactorPointAndReference) {
    Console c;
    c.addLine(1, 1, 3, 1);
    c.run({"SCALE", "ALL", "", "1,1"});
    EXPECT_EQ(c.prompt(), "Specify scale factor or [Copy/Reference] <1>:");
    EXPECT_EQ(c.feed("0"), Lines{"Invalid value."});
    EXPECT_EQ(c.feed("-2"), Lines{"Invalid value."});
    c.feed("2");
    EXPECT_TRUE(c.idle());
    expectNear(endOf(c, 0), {5, 1});
    c.run({"SC", "ALL", "", "1,1", "1,4"});
    expectNear(endOf(c, 0), {13, 1});
    c.run({"SC", "ALL", "", "1,1", "R"});
    EXPECT_EQ(c.prompt(), "Specify reference length <1>:");
    c.run({"@", "13,1"});
    EXPECT_EQ(c.prompt(), "Specify new length or [Points] <1>:");
    c.feed("6");
    expectNear(endOf(c, 0), {7, 1});
    c.run({"SC", "ALL", "", "1,1", "R", "2", "P", "100,0", "100,1"});
    expectNear(endOf(c, 0), {4, 1});
    EXPECT_EQ(c.document.history().undoCount(), 4u);
}

TEST(Scale, CopyAndFactorsBeyondNumbers) {
    Console c;
    c.add(engine::CircleEntity(Vector2{2, 0}, 1.0));
    c.run({"SC", "ALL", "", "0,0", "C", "3"});
    ASSERT_EQ(c.count(), 2u);
    const auto& copy = *static_cast<engine::CircleEntity*>(c.entities()[1]);
    EXPECT_EQ(copy.center, Vector2(6, 0));
    EXPECT_EQ(copy.radius, 3.0);
    EXPECT_EQ(static_cast<engine::CircleEntity*>(c.entities()[0])->radius, 1.0);
    EXPECT_EQ(c.run({"SC", "L", "", "0,0", "R", "0.0001", "1" + std::string(299, '0') + "000000"}).back(),
              "Invalid value.");
}

// MIRROR -------------------------------------------------------------------------------------------------

TEST(Mirror, KeepsOrErasesTheSource) {
    Console c;
    c.addLine(1, 0, 2, 5);
    c.run({"MIRROR", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Specify first point of mirror line:");
    c.feed("0,0");
    EXPECT_EQ(c.prompt(), "Specify second point of mirror line:");
    EXPECT_EQ(c.feed("0,0"), Lines{"The two points coincide."});
    c.feed("0,10");
    EXPECT_EQ(c.prompt(), "Erase source objects? [Yes/No] <N>:");
    c.feed("");
    ASSERT_EQ(c.count(), 2u);
    expectNear(endOf(c, 1), {-2, 5});
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 1u);
    c.run({"MI", "ALL", "", "0,0", "0,10", "Y"});
    ASSERT_EQ(c.count(), 1u);
    expectNear(endOf(c, 0), {-2, 5});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MIRROR"});
    expectNear(endOf(c, 0), {2, 5});
}

engine::TextEntity sample(double degrees) {
    engine::TextEntity text;
    text.position = {10, 4};
    text.content = "Room";
    text.rotation = degrees * math::kDegree;
    return text;
}

TEST(Mirror, TextsStayReadableInTheMirroredPlace) {
    for (const double degrees : {0.0, 30.0, 90.0, 200.0}) {
        for (const char* end : {"0,1", "1,0", "1,1"}) {
            SCOPED_TRACE(std::to_string(degrees) + " in the line to " + end);
            Console c;
            c.add(sample(degrees));
            c.run({"MIRRTEXT 1", "MI", "ALL", "", "0,0", end, "N", "MIRRTEXT 0"});
            c.run({"MI", "10,4", "", "0,0", end, "N"});
            ASSERT_EQ(c.count(), 3u);
            const auto& exact = *static_cast<engine::TextEntity*>(c.entities()[1]);
            const auto& readable = *static_cast<engine::TextEntity*>(c.entities()[2]);
            EXPECT_EQ(exact.generation, engine::kTextBackward);
            EXPECT_EQ(readable.generation, 0);
            // The same four corners, whichever comes first.
            const auto from = engine::placeTextLine(exact.line(), &c.drawing()).box();
            for (const Vector2& corner : engine::placeTextLine(readable.line(), &c.drawing()).box())
                EXPECT_TRUE(std::any_of(from.begin(), from.end(),
                                        [&](const Vector2& p) { return p.distance_to(corner) < 1e-9; }));
            const bool rightWay =
                std::cos(readable.rotation) > 1e-9 || std::abs(readable.rotation - math::kPi / 2) < 1e-9;
            EXPECT_EQ(rightWay, degrees != 200.0);
        }
    }
}

TEST(Mirror, ParagraphsAndAttributesStayReadableToo) {
    Console c;
    engine::MTextEntity paragraphs;
    paragraphs.position = {10, 4};
    paragraphs.content = "One\\PTwo";
    c.add(paragraphs);
    engine::BlockReferenceEntity reference(engine::Name("NONE"), Vector2{30, 0});
    engine::BlockAttribute attribute;
    attribute.tag = "NO";
    attribute.value = "17";
    attribute.position = {31, 1};
    reference.attributes.push_back(attribute);
    c.add(reference);
    const math::Bounds2 before = c.entities()[0]->bounds();
    c.run({"MI", "ALL", "", "0,0", "0,1", "Y"});
    ASSERT_EQ(c.count(), 2u);
    const auto& text = *static_cast<engine::MTextEntity*>(c.entities()[0]);
    EXPECT_FALSE(text.backward);
    EXPECT_NEAR(std::cos(text.rotation), 1.0, 1e-9);
    expectNear(text.bounds().min, {-before.max.x, before.min.y});
    const auto& image = *static_cast<engine::BlockReferenceEntity*>(c.entities()[1]);
    EXPECT_EQ(image.attributes.at(0).generation, 0);
    EXPECT_NEAR(std::cos(image.attributes[0].rotation), 1.0, 1e-9);
    EXPECT_LT(image.attributes[0].position.x, -31.0);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

// All ----------------------------------------------------------------------------------------------------

TEST(ModifyCommands, NothingSelectedAndCancelledChangesNothing) {
    Console c;
    c.addLine(0, 0, 1, 0);
    for (const char* name : {"COPY", "ROTATE", "SCALE", "MIRROR"}) {
        SCOPED_TRACE(name);
        c.run({name, ""});
        EXPECT_TRUE(c.idle());
        c.run({name, "ALL", "", "0,0"});
        c.processor.cancel();
        EXPECT_TRUE(c.idle());
        EXPECT_FALSE(c.document.isGroupOpen());
    }
    EXPECT_EQ(c.document.history().undoCount(), 0u);
}

// Solids whose data say nothing of a place --------------------------------------------------------------------

TEST(Move, RefusesSolidsThatItCannotPlace) {
    Console c;
    c.addLine(0, 0, 1, 0);
    auto solid = std::make_unique<engine::Solid3DEntity>();
    solid->sat = "no modeller text";
    c.document.addEntity(std::move(solid));
    const Lines refused{"1 solid left unchanged: the modeller data cannot be transformed."};
    EXPECT_EQ(c.run({"MOVE", "ALL", "", "0,0", "5,0"}).back(), refused.back());
    EXPECT_EQ(starts(c), (Points{{5, 0}}));
    // A copy at the old place would be as wrong; and the line is said once.
    EXPECT_EQ(c.run({"COPY", "ALL", "", "0,0", "0,5", ""}).back(), refused.back());
    EXPECT_EQ(c.count(), 3u);
    EXPECT_TRUE(c.run({"MOVE", "L", "", "0,0", "1,0"}).empty() || c.lines.back() != refused.back());
}

}  // namespace
}  // namespace kova::cmd
