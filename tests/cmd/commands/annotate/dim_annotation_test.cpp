// Several multileaders at once, annotation scales, fields, and tolerances of many parts.
#include "cmd/draw_harness.hpp"
#include "edit/text_fields.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "engine/libraries/libraries.hpp"

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::MLeaderContent;
using engine::MLeaderEntity;
using engine::Name;
using engine::TextEntity;
using math::Vector2;

MLeaderEntity& leaderAt(DrawConsole& c, std::size_t i) { return dynamic_cast<MLeaderEntity&>(*c.entities().at(i)); }

/// Three multileaders with texts whose landings stand at 30,0 and 40,50 and 20,90.
void drawLeaders(DrawConsole& c) {
    const char* const points[][2] = {{"0,0", "30,0"}, {"0,20", "40,50"}, {"0,40", "20,90"}};
    for (const auto& [arrow, landing] : points) c.run({"MLEADER", arrow, landing, "text", ""});
    ASSERT_EQ(c.count(), 3u);
}

TEST(MLeaderAlign, OntoALineAndApart) {
    DrawConsole c;
    drawLeaders(c);
    const double x = leaderAt(c, 0).contentPos.x;
    const double reach = x - 30.0;
    EXPECT_EQ(c.run({"MLEADERALIGN", "ALL", ""}).back(), "Current mode: Use current spacing");
    c.run({"15,0", "@0,1"});
    EXPECT_TRUE(c.idle());
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(leaderAt(c, i).contentPos.x, x, 1e-9);
    EXPECT_NEAR(leaderAt(c, 1).contentPos.y, 50, 1e-9);
    expectPoints(leaderAt(c, 1).heads[0].vertices, {{0, 20}, {x - reach, 50}});
    EXPECT_EQ(c.lastStep(), "MLEADERALIGN");
    c.feed("U");
    EXPECT_NEAR(leaderAt(c, 1).contentPos.x, 40 + reach, 1e-9);
    // The boxes of the texts stand apart by what was asked for, on both sides of the one that stays.
    c.run({"MLA", "ALL", "", "O", "S", "3", "20,35", "@0,1"});
    EXPECT_TRUE(c.idle());
    expectNear(leaderAt(c, 1).contentPos, {40 + reach, 50});
    EXPECT_NEAR(leaderAt(c, 2).contentBox().min.y - leaderAt(c, 1).contentBox().max.y, 3, 1e-9);
    EXPECT_NEAR(leaderAt(c, 1).contentBox().min.y - leaderAt(c, 0).contentBox().max.y, 3, 1e-9);
    c.feed("U");
    // Between two points, the mode being remembered until it is changed.
    c.run({"MLA", "ALL", "", "O", "D", "100,0", "100,80"});
    expectNear(leaderAt(c, 0).contentPos, {100, 0});
    expectNear(leaderAt(c, 1).contentPos, {100, 40});
    expectNear(leaderAt(c, 2).contentPos, {100, 80});
    c.feed("U");
    c.run({"MLA", "ALL", "", "O", "P", "20,35"});
    for (const std::size_t i : {0, 2}) {
        const auto& line = leaderAt(c, i).heads[0].vertices;
        EXPECT_NEAR((line[1] - line[0]).normalized().cross(Vector2{40, 30}.normalized()), 0, 1e-9) << i;
    }
    EXPECT_EQ(c.run({"MLA", "", ""}).back(), "No multileaders selected.");
}

TEST(MLeaderCollect, GathersBlocksInOneMultileader) {
    DrawConsole c;
    engine::Block* block = c.drawing().addBlock(Name("BALLOON"));
    block->entities.append(std::make_unique<CircleEntity>(Vector2{0, 0}, 5.0));
    for (int i = 0; i < 3; ++i) {
        const std::string y = std::to_string(40 * i);
        c.run({"MLEADER", "O", "C", "B", "BALLOON", "X", "0," + y, "30," + y});
    }
    c.run({"MLEADER", "0,200", "30,200", "text", ""});
    ASSERT_EQ(c.count(), 4u);
    // The landing runs up to the block's edge.
    expectNear(leaderAt(c, 1).connectionPoint(leaderAt(c, 1).heads[0]), {38, 40}, 1e-6);
    EXPECT_NEAR(leaderAt(c, 1).contentBox().min.x, 38, 1e-6);
    const auto all = c.run({"MLEADERCOLLECT", "ALL", "", "W", "N", "2"});
    EXPECT_EQ(all.front(), "1 multileader without block content passed over.");
    c.feed("100,100");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    const auto& made = c.last<MLeaderEntity>();
    EXPECT_EQ(made.contentType, MLeaderContent::Block);
    ASSERT_EQ(made.heads.size(), 1u);
    expectNear(made.heads[0].vertices.front(), {0, 0});
    // Two in the first row, one below; the first one's centre is where the user pointed.
    const math::Bounds2 box = made.contentBox();
    expectNear(box.min, {95, 85}, 1e-6);
    expectNear(box.max, {115, 105}, 1e-6);
    EXPECT_LT(made.heads[0].vertices.back().x, box.min.x);
    c.feed("U");
    EXPECT_EQ(c.count(), 4u);
    EXPECT_EQ(c.drawing().blocks().size(), 1u);
    EXPECT_EQ(c.run({"MLC", "L", ""}).back(), "At least two multileaders with block content are needed.");
}

TEST(AnnotationScales, ListAndObjects) {
    DrawConsole c;
    const std::size_t count = c.drawing().annotationScales.size();
    c.run({"SCALELISTEDIT", "A", "1:25", "1:0"});
    EXPECT_EQ(c.lines.back(), "Invalid value.");
    c.run({"1=25", "E"});
    ASSERT_TRUE(c.drawing().annotationScales.contains(Name("1:25")));
    EXPECT_EQ(c.drawing().annotationScales.find(Name("1:25"))->drawingUnits, 25.0);
    // An annotative object holds scales.
    c.run({"-DIMSTYLE", "AN", "Y", "Anno", "DLI", "0,0", "40,0", "20,10"});
    auto& dimension = c.last<engine::DimensionEntity>();
    ASSERT_TRUE(dimension.annotative());
    c.run({"OBJECTSCALE", "ALL", "", "A", "9:9"});
    EXPECT_EQ(c.lines.back(), "Unknown annotation scale \"9:9\".");
    c.feed("1:25");
    EXPECT_EQ(dimension.objectScales(), (std::vector<Name>{Name("1:1"), Name("1:25")}));
    EXPECT_EQ(dimension.annotationScale(), 1.0);
    EXPECT_EQ(c.run({"SCALELISTEDIT", "D", "1:25", "D", "1:1", "E"}).front(),
              "The scale \"1:25\" is in use and stays.");
    c.run({"CANNOSCALE", "1:25", "ANNORESET", "ALL", ""});
    EXPECT_EQ(c.lines.back(), "1 object reset.");
    EXPECT_EQ(dimension.annotationScale(), 25.0);
    c.run({"OBJECTSCALE", "ALL", "", "D", "1:25"});
    EXPECT_EQ(dimension.objectScales(), std::vector<Name>{Name("1:1")});
    EXPECT_EQ(dimension.annotationScale(), 1.0);
    c.run({"OBJECTSCALE", "ALL", "", "D", "1:1"});
    EXPECT_EQ(dimension.objectScales().size(), 1u);  // one stays
    c.run({"CANNOSCALE", "1:1", "SCALELISTEDIT", "R", "N", "R", "Y", "E"});
    EXPECT_EQ(c.drawing().annotationScales.size(), count);
    c.feed("U");
    EXPECT_TRUE(c.drawing().annotationScales.contains(Name("1:25")));
    c.addLine(0, 50, 10, 50);
    EXPECT_EQ(c.run({"OBJECTSCALE", "5,50", ""}).back(), "1 object not annotative.");
}

TEST(Fields, ShowAndFollowValues) {
    DrawConsole c;
    c.drawing().properties.title = "Gear";
    auto& circle = c.add(CircleEntity(Vector2{0, 0}, 10.0));
    c.run({"FIELD", "T", "50,0", "2.5", "0"});
    c.run({"FIELD", "O", "10,0", "Nothing", "Radius", "50,10", "", ""});
    c.run({"FIELD", "SV", "NOSUCH", "CLAYER", "50,20", "", ""});
    c.run({"FIELD", "AUTHOR", "50,30", "", ""});
    ASSERT_EQ(c.count(), 5u);
    const auto text = [&](std::size_t i) { return dynamic_cast<TextEntity&>(*c.entities().at(i)).content; };
    EXPECT_EQ(text(1), "Gear");
    EXPECT_EQ(text(2), "10");
    EXPECT_EQ(text(3), "0");
    EXPECT_EQ(text(4), "----");
    c.drawing().properties.title = "Wheel";
    c.document.modifyEntity(circle, [](engine::Entity& e) { static_cast<CircleEntity&>(e).radius = 12.5; });
    EXPECT_EQ(c.feed("UPDATEFIELD"), (Lines{"4 field(s) found", "2 field(s) updated"}));
    EXPECT_EQ(text(1), "Wheel");
    EXPECT_EQ(text(2), "12.5");
    EXPECT_EQ(c.lastStep(), "UPDATEFIELD");
    c.feed("U");
    EXPECT_EQ(text(1), "Gear");
    // What it showed is gone: the text says so. An edited field is plain text from then on.
    dynamic_cast<TextEntity&>(*c.entities().at(1)).content = "my own";
    c.run({"ERASE", "12.5,0", "", "UPDATEFIELD"});
    EXPECT_EQ(dynamic_cast<TextEntity&>(*c.entities().at(1)).content, "####");
    EXPECT_EQ(dynamic_cast<TextEntity&>(*c.entities().at(0)).content, "my own");
}

TEST(Fields, CodesWithinATextAndMalformedOnes) {
    DrawConsole c;
    c.drawing().properties.subject = "S";
    engine::MTextEntity text;
    const std::string codes = "a %<Subject>% b %<Nothing>% %<Object ZZ Area>% %<open " + std::string(600, 'x');
    ASSERT_TRUE(setTextFields(c.drawing(), text, codes));
    EXPECT_EQ(text.content.substr(0, 20), "a S b #### #### %<op");
    EXPECT_EQ(textFields(text), codes);
    engine::XData data = *text.xdata();
    data.applications[0].items.resize(1);
    text.setXdata(data);
    EXPECT_FALSE(textFields(text).has_value());
}

TEST(Tolerance, RowsZoneAndIdentifier) {
    DrawConsole c;
    c.run({"TOLERANCE", "PO", "%%c0.1", "M",    "A", "B(L)", "C", "S", "0.2", "R",    "D",
           "X",         "R",  "PA",     "0.05", "",  "A",    "",  "P", "12",  "10,10"});
    const auto& t = c.only<engine::ToleranceEntity>();
    EXPECT_EQ(t.first.toleranceValue2, "0.2");
    EXPECT_EQ(t.first.toleranceMC2, "s");
    EXPECT_EQ(t.first.datum2MC, "l");
    ASSERT_EQ(t.rows.size(), 3u);
    EXPECT_EQ(t.rows[0].symbol, "f");
    EXPECT_EQ(t.rows[0].datum1, "A");
    EXPECT_EQ(t.rows[1].toleranceMC, "p");
    EXPECT_EQ(t.rows[2].toleranceValue, "X");
    engine::ToleranceEntity again;
    again.setContentText(t.contentText());
    EXPECT_EQ(again.rows, t.rows);
}

}  // namespace
}  // namespace kova::cmd
