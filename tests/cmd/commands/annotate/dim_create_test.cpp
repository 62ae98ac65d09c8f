// Commands that make dimensions.
#include "cmd/draw_harness.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::DimensionEntity;
using engine::DimensionType;
using math::Vector2;

bool said(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(DimLinear, TheSideOfTheLineDecidesTheDirection) {
    DrawConsole c;
    EXPECT_TRUE(said(c.run({"DIMLINEAR", "0,0", "30,10", "15,20"}), "Dimension text = 30"));
    EXPECT_EQ(c.last<DimensionEntity>().subType, DimensionType::Rotated);
    EXPECT_DOUBLE_EQ(c.last<DimensionEntity>().linearRotation, 0.0);
    EXPECT_TRUE(said(c.run({"DLI", "0,0", "30,10", "40,5"}), "Dimension text = 10"));
    EXPECT_NEAR(c.last<DimensionEntity>().linearRotation, math::kPi / 2, 1e-12);
    // A length of nothing is never meant, wherever the line is put.
    EXPECT_TRUE(said(c.run({"DLI", "0,0", "0,10", "0,50"}), "Dimension text = 10"));
    EXPECT_EQ(c.lastStep(), "DIMLINEAR");
    c.feed("U");
    EXPECT_EQ(c.count(), 2u);
}

TEST(DimLinear, Options) {
    DrawConsole c;
    c.run({"DLI", "0,0", "30,40", "T"});
    EXPECT_EQ(c.prompt(), "Enter dimension text <30>:");
    c.run({"<> typ.", "A", "45", "V", "T"});
    EXPECT_EQ(c.prompt(), "Enter dimension text <40>:");  // the override is not what is measured
    c.run({"", "50,20"});
    const auto& vertical = c.last<DimensionEntity>();
    EXPECT_EQ(vertical.text(), "40 typ.");
    EXPECT_NEAR(vertical.textRotation, math::kPi / 4, 1e-12);
    EXPECT_NEAR(vertical.measurement(), 40, 1e-12);
    c.run({"DLI", "0,0", "30,40", "R", "53.13010235415598", "0,50"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 50, 1e-9);
    c.run({"DLI", "0,0", "30,40", "H", "100,20"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 30, 1e-12);
    // Enter at the location, coincident origins and nonsense make nothing.
    const std::size_t count = c.count();
    EXPECT_TRUE(said(c.run({"DLI", "0,0", "0,0"}), "The two points coincide."));
    EXPECT_FALSE(c.idle());
    c.run({"5,5", "bogus", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), count);
}

TEST(DimLinear, SelectedObjects) {
    DrawConsole c;
    c.addLine(0, 0, 40, 0);
    c.add(engine::CircleEntity(Vector2{100, 0}, 10));
    c.add(engine::PolylineEntity({{0, 50}, {20, 50}, {20, 80}}));
    c.run({"DLI", "", "20,0", "20,10"});
    expectNear(c.last<DimensionEntity>().def2, {40, 0});
    EXPECT_EQ(engine::dimensionLinks(c.last<DimensionEntity>()).size(), 2u);
    // A circle is measured across, in the direction of the line.
    c.run({"DLI", "", "110,0", "130,0"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 20, 1e-12);
    expectNear(c.last<DimensionEntity>().def1, {100, -10});
    // Of a polyline the picked segment counts.
    c.run({"DLI", "", "20,70", "30,65"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 30, 1e-12);
    c.run({"DAL", "", "107.0710678118655,7.0710678118655", "120,30"});
    EXPECT_EQ(c.last<DimensionEntity>().kind(), DimensionType::Aligned);
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 20, 1e-9);
    EXPECT_TRUE(said(c.run({"DLI", "", "300,300"}), "No object found."));
}

TEST(DimLinear, StyleLayerAndCoordinateSystem) {
    DrawConsole c;
    c.run({"DIMTXT", "5", "DIMDEC", "0", "-LAYER", "N", "Dims", "", "DIMLAYER", "dims"});
    EXPECT_TRUE(said(c.run({"DLI", "0,0", "30.4,0", "15,20"}), "Dimension text = 30"));
    const auto& d = c.last<DimensionEntity>();
    EXPECT_DOUBLE_EQ(d.style().textHeight, 5);
    EXPECT_EQ(d.layer, "Dims");
    c.run({"UCS", "0,0", "0,10", ""});  // x points up
    c.run({"DLI", "0,0", "30,20", "15,50"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 30, 1e-9);
    EXPECT_NEAR(c.last<DimensionEntity>().linearRotation, math::kPi / 2, 1e-9);
}

TEST(DimLinear, ExplodedWithDimassocZero) {
    DrawConsole c;
    c.run({"DIMASSOC", "0", "DLI", "0,0", "30,0", "15,10"});
    EXPECT_GE(c.count(), 5u);
    for (const engine::Entity* e : c.entities()) EXPECT_NE(e->type(), engine::EntityType::Dimension);
    c.feed("U");
    EXPECT_EQ(c.count(), 0u);
}

TEST(DimRadial, RadiusDiameterJogAndMark) {
    DrawConsole c;
    c.add(engine::CircleEntity(Vector2{0, 0}, 25));
    EXPECT_TRUE(said(c.run({"DIMRADIUS", "25,0", "30,40"}), "Dimension text = R25"));
    expectNear(c.last<DimensionEntity>().def2, {15, 20});
    c.run({"DIMDIAMETER", "0,25", "T", "2x <>", "50<90"});
    expectNear(c.last<DimensionEntity>().def1, {0, 25});
    expectNear(c.last<DimensionEntity>().def2, {0, -25});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 50, 1e-12);
    EXPECT_TRUE(c.last<DimensionEntity>().text().starts_with("2x "));
    c.run({"DIMJOGGED", "0,25", "5,5", "30,0", "20,2"});
    EXPECT_TRUE(c.last<DimensionEntity>().isJoggedRadius());
    expectNear(c.last<DimensionEntity>().jogCenter, {5, 5});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 25, 1e-12);
    // A line is refused, the arc of a polyline is taken.
    c.addLine(100, 0, 200, 0);
    engine::PolylineEntity bow({{100, 100}, {140, 100}});
    bow.setBulge(0, 1);
    c.add(std::move(bow));
    EXPECT_TRUE(said(c.run({"DRA", "150,0"}), "Object cannot be used here."));
    c.run({"120,80", "120,60"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 20, 1e-9);
}

TEST(DimCenter, MarkAndLines) {
    DrawConsole c;
    c.add(engine::CircleEntity(Vector2{10, 10}, 25));
    c.run({"DIMCEN", "2", "DIMCENTER", "35,10"});
    ASSERT_EQ(c.count(), 3u);
    expectNear(c.last<engine::LineEntity>().start, {10, 8});
    c.run({"DIMCEN", "-2", "DCE", "35,10"});
    EXPECT_EQ(c.count(), 9u);
    c.feed("U");
    EXPECT_EQ(c.count(), 3u);
    EXPECT_TRUE(said(c.run({"DIMCEN", "0", "DCE"}), "Center marks are off: DIMCEN is 0."));
    EXPECT_TRUE(c.idle());
}

TEST(DimAngular, LinesArcCircleAndVertex) {
    DrawConsole c;
    c.addLine(0, 0, 50, 0);
    c.addLine(0, 0, 30, 30);
    c.addLine(0, 100, 50, 100);
    EXPECT_TRUE(said(c.run({"DIMANGULAR", "40,0", "20,20", "20,8"}), "Dimension text = 45\u00b0"));
    EXPECT_EQ(c.last<DimensionEntity>().kind(), DimensionType::Angular2Line);
    EXPECT_EQ(engine::dimensionLinks(c.last<DimensionEntity>()).size(), 4u);
    EXPECT_TRUE(said(c.run({"DAN", "40,0", "25,100"}), "The lines are parallel."));
    c.run({"20,20", "-20,5"});  // the sector beside: the rest of the straight angle
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 0.75 * math::kPi, 1e-9);
    c.add(engine::ArcEntity(Vector2{200, 0}, 20, 0, math::kPi / 2));
    c.run({"DAN", "220,0", "230,30"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), math::kPi / 2, 1e-9);
    c.run({"DAN", "220,0", "170,-30"});  // outside the arc: the rest of the turn
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 1.5 * math::kPi, 1e-9);
    c.add(engine::CircleEntity(Vector2{300, 0}, 20));
    c.run({"DAN", "320,0", "300,20", "330,30"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), math::kPi / 2, 1e-9);
    c.run({"DAN", "", "400,0", "410,0", "400,-10", "Q", "410,-5", "390,30"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), math::kPi / 2, 1e-9);
}

TEST(DimOrdinate, SideDatumAndOptions) {
    DrawConsole c;
    EXPECT_TRUE(said(c.run({"DIMORDINATE", "30,20", "32,40"}), "Dimension text = 30"));
    EXPECT_EQ(c.last<DimensionEntity>().kind(), DimensionType::OrdinateX);
    EXPECT_TRUE(said(c.run({"DOR", "30,20", "60,22"}), "Dimension text = 20"));
    EXPECT_TRUE(said(c.run({"DOR", "30,20", "X", "60,22"}), "Dimension text = 30"));
    EXPECT_TRUE(said(c.run({"DOR", "D", "10,10", "30,20", "60,22"}), "Dimension text = 10"));
}

TEST(DimArc, WholePartAndLeader) {
    DrawConsole c;
    c.add(engine::ArcEntity(Vector2{0, 0}, 10, 0, math::kPi));
    c.run({"DIMARC", "0,10", "0,20"});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 10 * math::kPi, 1e-9);
    c.run({"DAR", "0,10", "P", "10,0", "0,10", "L", "10,10"});
    const auto& part = c.last<DimensionEntity>();
    EXPECT_NEAR(part.measurement(), 5 * math::kPi, 1e-9);
    EXPECT_TRUE(part.partialArc);
    EXPECT_NEAR(part.def4.length(), 10, 1e-9);
    c.add(engine::CircleEntity(Vector2{100, 0}, 10));
    EXPECT_TRUE(said(c.run({"DAR", "110,0"}), "Object cannot be used here."));
}

TEST(DimRows, ContinueAndUndo) {
    DrawConsole c;
    c.run({"DLI", "0,0", "10,0", "5,10", "DIMCONTINUE"});
    EXPECT_EQ(c.prompt(), "Specify a second extension line origin or [Undo/Select] <Select>:");
    EXPECT_TRUE(said(c.run({"25,0", "40,0"}), "Dimension text = 15"));
    EXPECT_EQ(c.count(), 3u);
    c.feed("U");
    EXPECT_EQ(c.count(), 2u);
    c.run({"45,0", "", ""});
    EXPECT_TRUE(c.idle());
    const auto& last = c.last<DimensionEntity>();
    expectNear(last.def1, {25, 0});
    EXPECT_NEAR(last.measurement(), 20, 1e-12);
    EXPECT_DOUBLE_EQ(engine::linearFrame(last).p1.y, 10);
}

TEST(DimRows, BaselineIsSpacedByTheStyle) {
    DrawConsole c;
    c.run({"DIMDLI", "7", "DLI", "0,0", "10,0", "5,-10", "DIMBASELINE", "25,0", "40,0", "U", "50,0", "", ""});
    ASSERT_EQ(c.count(), 3u);
    const auto all = c.entities();
    EXPECT_DOUBLE_EQ(static_cast<DimensionEntity*>(all[1])->dimLine.y, -17);  // away from the origins
    EXPECT_DOUBLE_EQ(static_cast<DimensionEntity*>(all[2])->dimLine.y, -24);
    EXPECT_NEAR(static_cast<DimensionEntity*>(all[2])->measurement(), 50, 1e-12);
    // Chosen by a pick: the nearer extension line is the base, here the one at x = 10.
    c.run({"DBA", "S", "10,-8", "30,0", "", ""});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 20, 1e-12);
}

TEST(DimRows, AnglesAndOrdinates) {
    DrawConsole c;
    c.run({"DAN", "", "0,0", "20,0", "20,20", "15,5", "DCO", "0,20", "", ""});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), math::kPi / 4, 1e-9);
    c.run({"DAN", "", "0,0", "20,0", "20,20", "15,5", "DBA", "0,20", "", ""});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), math::kPi / 2, 1e-9);
    EXPECT_NEAR(c.last<DimensionEntity>().dimLine.length(), Vector2(15, 5).length() + 3.75, 1e-9);
    c.run({"DOR", "5,5", "30,5", "DCO", "8,12", "", ""});
    expectNear(c.last<DimensionEntity>().def2, {30, 12});
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 12, 1e-12);
}

TEST(DimRows, WithoutAFirstDimension) {
    DrawConsole c;
    c.feed("DCO");
    EXPECT_EQ(c.prompt(), "Select continued dimension:");
    c.feed("");
    EXPECT_TRUE(c.idle());
}

TEST(QDim, RowsOverSelectedPoints) {
    DrawConsole c;
    c.add(engine::PolylineEntity({{0, 0}, {10, 0}, {10, 20}, {30, 20}, {30, 0}, {60, 0}}));
    c.run({"QDIM", "ALL", "", "30,40"});
    ASSERT_EQ(c.count(), 4u);                              // 0, 10, 30, 60
    expectNear(c.last<DimensionEntity>().def1, {30, 20});  // the point nearer to the row
    EXPECT_EQ(c.lastStep(), "QDIM");
    c.feed("U");
    EXPECT_EQ(c.count(), 1u);
    c.run({"QDIM", "ALL", "", "P", "60,0", "B", "30,-10"});
    ASSERT_EQ(c.count(), 4u);
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 60, 1e-9);
    EXPECT_NEAR(c.last<DimensionEntity>().dimLine.y, -10 - 2 * 3.75, 1e-9);
    c.run({"U", "QDIM", "ALL", "", "S", "30,-10"});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_NEAR(c.last<DimensionEntity>().measurement(), 60, 1e-9);
    c.run({"U", "QDIM", "ALL", "", "E", "10,0", "10,20", "", "80,10"});  // upright, and a point taken out
    EXPECT_EQ(c.count(), 2u);
    c.run({"U", "QDIM", "ALL", "", "O", "30,40"});
    EXPECT_EQ(c.last<DimensionEntity>().kind(), DimensionType::OrdinateX);
    EXPECT_EQ(c.run({"U", "QDIM", "ALL", "", "D", "30,40"}).back(), "No circles or arcs to dimension.");
    c.run({"ERASE", "ALL", "", "CIRCLE", "0,0", "5", "CIRCLE", "40,0", "8", "QDIM", "ALL", "", "R", "10,0"});
    EXPECT_EQ(c.count(), 4u);
    expectNear(c.last<DimensionEntity>().def2, {48, 0});
    EXPECT_TRUE(c.idle());
}

// A locked layer is often what a plan is dimensioned from.
TEST(DimCreate, ObjectsOnLockedLayersAndOtherDimensions) {
    Console c;
    c.run({"-LAYER", "N", "BASE", ""});
    c.addLine(0, 0, 20, 0).layer = "BASE";
    c.run({"-LAYER", "LO", "BASE", ""});
    EXPECT_EQ(c.run({"DIMLINEAR", "", "10,0", "10,8"}).back(), "Dimension text = 20");
    EXPECT_EQ(c.count(), 2u);
    // The new dimension's line is none to dimension.
    EXPECT_EQ(c.run({"DIMLINEAR", "", "15,8"}).back(), "Object cannot be used here.");
    c.processor.cancel();
    // What would change such an object is refused, and the pick begins no window.
    EXPECT_EQ(c.run({"OFFSET", "1", "10,0"}).back(), "Object is on a locked layer.");
    EXPECT_EQ(c.feed("nonsense").back(), "Invalid point or option keyword.");
    EXPECT_EQ(c.feed("500,500").back(), "No object found.");
    c.processor.cancel();
    EXPECT_EQ(c.run({"MOVE", "5,0"}).back(), "1 was on a locked layer.");
    EXPECT_EQ(c.prompt(), "Select objects:");
    c.processor.cancel();
    c.addLine(0, 30, 20, 30);
    c.run({"MATCHPROP", "5,0", "5,30", ""});
    EXPECT_EQ(c.entities().back()->layer, engine::Name("BASE"));
}

}  // namespace
}  // namespace kova::cmd
