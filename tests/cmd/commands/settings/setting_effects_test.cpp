// What variables do to commands, and what those that do nothing say.
#include <gmock/gmock.h>

#include "edit/text_fields.hpp"
#include "engine/entities/table_entity.hpp"
#include "engine/entities/text.hpp"
#include "engine/model/outline.hpp"
#include "engine/sysvars/notes.hpp"
#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Lines = std::vector<std::string>;

TEST(SettingEffects, LimitsRefusePointsOfCommandsThatDraw) {
    Console c;
    c.run({"LIMITS", "0,0", "100,100", "LIMITS ON"});
    EXPECT_EQ(c.run({"LINE", "50,50", "200,50"}), Lines{"**Outside limits"});
    EXPECT_EQ(c.count(), 0U);
    c.run({"100,50", ""});
    EXPECT_EQ(c.count(), 1U) << "the border belongs to the inside, and the command went on";
    EXPECT_EQ(c.run({"CIRCLE", "-1,50"}), Lines{"**Outside limits"});
    EXPECT_THAT(c.run({"50,50", "10"}), IsEmpty());
    EXPECT_EQ(c.run({"MOVE", "L", "", "0,0", "@500,0"}).back(), "**Outside limits");
    c.run({"@5,5"});
    // Looking and measuring go anywhere, and so do new limits.
    EXPECT_THAT(c.run({"ZOOM", "W", "-500,-500", "500,500"}), Not(Contains("**Outside limits")));
    EXPECT_THAT(c.run({"DIST", "-500,-500", "500,500"}), Not(Contains("**Outside limits")));
    EXPECT_THAT(c.run({"LIMITS", "-10,-10", "300,300"}), IsEmpty());
    EXPECT_THAT(c.run({"LINE", "250,250", "-5,-5", ""}), IsEmpty());
    // The limits are those of model space.
    c.run({"LAYOUT", "S", "Layout1"});
    EXPECT_THAT(c.run({"LINE", "0,0", "900,900", ""}), Not(Contains("**Outside limits")));
    c.run({"TILEMODE 1", "LIMCHECK 0"});
    EXPECT_THAT(c.run({"LINE", "0,0", "900,900", ""}), IsEmpty());
}

TEST(SettingEffects, WhatHasNoEffectSaysSo) {
    Console c;
    EXPECT_THAT(c.feed("PLINETYPE 0"), ElementsAre(HasSubstr("PLINETYPE is kept, but has no effect here")));
    EXPECT_THAT(c.run({"SETVAR", "GRIPS", "2"}), ElementsAre(HasSubstr("GRIPS is kept, but has no effect here")));
    EXPECT_THAT(c.feed("PDFFRAME 0"), ElementsAre(HasSubstr("underlays are not drawn")));
    EXPECT_THAT(c.feed("WIPEOUTFRAME 0"), IsEmpty());
    c.feed("FRAME 2");
    EXPECT_THAT(c.feed("WIPEOUTFRAME 1"), ElementsAre(HasSubstr("FRAME = 2 overrides")));
    EXPECT_THAT(c.feed("LTSCALE 2"), IsEmpty());
    // What does its job says nothing.
    for (const engine::SysVarDef& def : engine::sysVarTable())
        if (def.name == "LTSCALE" || def.name == "TEXTFILL" || def.name == "FILLMODE" || def.name == "XREFNOTIFY")
            EXPECT_EQ(engine::sysVarNote(c.drawing(), def), "") << def.name;
}

TEST(SettingEffects, TablesTakeTheSizesOfTheirStyleAndScaleWhole) {
    Console c;
    engine::TableStyle style;
    style.name = "Wide";
    style.defaultColWidth = 40.0;
    style.defaultRowHeight = 20.0;
    style.cellMargin = 3.0;
    style.verticalMargin = 2.0;
    c.drawing().tableStyles.add(style);
    c.drawing().currentTableStyle = engine::Name("Wide");
    c.run({"TABLE", "2", "1", "0,0", "."});
    auto& table = dynamic_cast<engine::TableEntity&>(*c.entities().back());
    EXPECT_EQ(table.totalWidth(), 80.0);
    EXPECT_EQ(table.totalHeight(), 60.0);
    table.ensureCell(2, 0).content = "x";
    table.ensureCell(2, 0).alignment = 1;
    const math::Bounds2 before = engine::outlineBounds(table);
    c.run({"SCALE", "L", "", "0,0", "10"});
    EXPECT_EQ(table.marginAcross(), 30.0);
    EXPECT_EQ(table.marginUpright(), 20.0);
    const math::Bounds2 after = engine::outlineBounds(table);
    EXPECT_NEAR(after.width(), 10.0 * before.width(), 1e-6);
    c.feed("U");
    // Undo puts the entity of before in its place.
    EXPECT_EQ(dynamic_cast<engine::TableEntity&>(*c.entities().back()).marginAcross(), 3.0);
    c.run({"MOVE", "L", "", "0,0", "5,5"});
    EXPECT_LT(dynamic_cast<engine::TableEntity&>(*c.entities().back()).horizontalMargin, 0.0) << "a table that was only moved follows its style";
}

TEST(SettingEffects, FieldsComeUpToDateWhenFieldevalSays) {
    Console c;
    auto text = std::make_unique<engine::TextEntity>();
    setTextFields(c.drawing(), *text, "%<SysVar LTSCALE>%");
    c.drawing().modelSpace().append(std::move(text));
    const auto shown = [&] { return dynamic_cast<engine::TextEntity&>(*c.entities().back()).content; };
    EXPECT_EQ(shown(), "1");
    c.run({"FIELDEVAL 0", "LTSCALE 2", "REGEN"});
    EXPECT_EQ(shown(), "1");
    c.run({"FIELDEVAL 16", "REGEN"});
    EXPECT_EQ(shown(), "2");
    c.feed("U");
    EXPECT_EQ(shown(), "1") << "a step of its own";
    updateFieldsAt(FieldMoment::Save, c.document);
    EXPECT_EQ(shown(), "1");
}

}  // namespace
}  // namespace kova::cmd
