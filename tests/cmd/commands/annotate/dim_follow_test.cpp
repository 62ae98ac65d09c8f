// Leaders that follow their annotations, and dimensions on a sheet that measure the model.
#include "cmd/draw_harness.hpp"
#include "doc/pick/picking.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/viewport.hpp"

namespace kova::cmd {
namespace {

using engine::DimensionEntity;
using engine::LeaderEntity;
using engine::MTextEntity;
using engine::ViewportEntity;
using math::Vector2;

template <class Kind>
std::vector<Kind*> all(DrawConsole& c) {
    std::vector<Kind*> found;
    for (engine::Entity* entity : c.entities())
        if (auto* kind = dynamic_cast<Kind*>(entity)) found.push_back(kind);
    return found;
}

/// A leader from the origin to 20,20 with a text behind its hook.
DrawConsole& withLeader(DrawConsole& c) {
    c.run({"LEADER", "0,0", "20,20", "", "note", ""});
    return c;
}
std::string pickText(DrawConsole& c, std::size_t i = 0) {
    const Vector2 p = all<MTextEntity>(c).at(i)->bounds().center();
    return std::to_string(p.x) + "," + std::to_string(p.y);
}

TEST(LeaderFollows, ItsTextWithinTheSameStep) {
    DrawConsole c;
    withLeader(c);
    const double gap = all<MTextEntity>(c)[0]->position.x - all<LeaderEntity>(c)[0]->endPoint().x;
    c.run({"MOVE", pickText(c), "", "0,0", "30,-5"});
    const LeaderEntity& leader = *all<LeaderEntity>(c)[0];
    expectPoints(leader.vertices, {{0, 0}, {50, 15}});
    EXPECT_TRUE(leader.hookLine);
    EXPECT_EQ(c.lastStep(), "MOVE");
    c.feed("U");
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{0, 0}, {20, 20}});
    // What was undone does not count as where the text stood.
    c.feed("REDO");
    c.run({"MOVE", pickText(c), "", "0,0", "0,5"});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{0, 0}, {50, 20}});
    // To the other side of the arrow: the line meets the text's right edge.
    c.run({"MOVE", pickText(c), "", "0,0", "-150,0"});
    const LeaderEntity& turned = *all<LeaderEntity>(c)[0];
    EXPECT_EQ(turned.hookDir, 0);
    EXPECT_NEAR(turned.endPoint().x - all<MTextEntity>(c)[0]->bounds().max.x, gap, 1e-6);
    EXPECT_NEAR(turned.endPoint().y, 20, 1e-9);
}

TEST(LeaderFollows, MovedAloneItStaysTied) {
    DrawConsole c;
    withLeader(c);
    c.run({"MOVE", "10,10", "", "0,0", "0,10"});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{0, 10}, {20, 30}});
    c.run({"MOVE", pickText(c), "", "0,0", "1,2"});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{0, 10}, {21, 32}});
    // Both together: as they stand, whatever is done to them.
    c.run({"ROTATE", "ALL", "", "0,0", "90"});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{-10, 0}, {-32, 21}});
    c.run({"ROTATE", "ALL", "", "-32,21", "90"});
    expectNear(all<LeaderEntity>(c)[0]->vertices[1], {-32, 21});
    c.run({"ROTATE", "ALL", "", "-32,21", "-90"});
    // A change that leaves the text in its place moves nothing.
    c.run({"CHPROP", "ALL", "", "C", "1", ""});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{-10, 0}, {-32, 21}});
}

TEST(LeaderFollows, UntilTheTextIsErased) {
    DrawConsole c;
    withLeader(c);
    c.run({"ERASE", pickText(c), ""});
    EXPECT_EQ(c.only<LeaderEntity>().annotationHandle, 0u);
    c.feed("U");
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(all<LeaderEntity>(c)[0]->annotationHandle, all<MTextEntity>(c)[0]->handle());
    c.run({"MOVE", pickText(c), "", "0,0", "3,0"});
    EXPECT_NEAR(all<LeaderEntity>(c)[0]->vertices[1].x, 23, 1e-9);
}

TEST(LeaderFollows, CopiesAreTiedToCopies) {
    DrawConsole c;
    withLeader(c);
    c.run({"COPY", "ALL", "", "0,0", "0,100", "0,200", ""});
    ASSERT_EQ(all<LeaderEntity>(c).size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(all<LeaderEntity>(c)[i]->annotationHandle, all<MTextEntity>(c)[i]->handle()) << i;
    c.run({"MOVE", pickText(c, 1), "", "0,0", "5,0"});
    expectPoints(all<LeaderEntity>(c)[0]->vertices, {{0, 0}, {20, 20}});
    expectPoints(all<LeaderEntity>(c)[1]->vertices, {{0, 100}, {25, 120}});
    // A mirror image, whose text stays readable; and a turned one.
    c.run({"MIRROR", "C", "-1,195", "60,230", "", "-50,0", "-50,1", "N"});
    ASSERT_EQ(all<LeaderEntity>(c).size(), 4u);
    EXPECT_EQ(all<LeaderEntity>(c)[3]->annotationHandle, all<MTextEntity>(c)[3]->handle());
    // Alone a copy is tied to nothing.
    c.run({"COPY", "10,10", "", "0,0", "300,0", ""});
    EXPECT_EQ(all<LeaderEntity>(c).back()->annotationHandle, 0u);
    EXPECT_EQ(all<LeaderEntity>(c).front()->annotationHandle, all<MTextEntity>(c).front()->handle());
}

/// A layout with one window at 1:10 whose lower left corner 20,20 shows the model's origin.
ViewportEntity& withSheet(DrawConsole& c) {
    c.run({"LAYOUT", "S", "Layout1"});
    for (ViewportEntity* viewport : all<ViewportEntity>(c)) c.drawing().currentSpace().take(*viewport);
    ViewportEntity window;
    window.center = {120, 95};
    window.width = 200;
    window.height = 150;
    window.viewScale = 0.1;
    window.viewTarget = {1000, 750};
    window.vpId = 2;
    return c.add(window);
}

TEST(DimOnSheet, MeasuresTheModelThroughAViewport) {
    DrawConsole c;
    auto& line = c.addLine(100, 100, 900, 100);
    auto& circle = c.add(engine::CircleEntity(Vector2{1500, 700}, 200));
    ViewportEntity& window = withSheet(c);
    EXPECT_EQ(c.run({"DLI", "30,30", "110,30", "70,45"}).back(), "Dimension text = 800");
    EXPECT_EQ(c.run({"DLI", "", "70,30", "70,50"}).back(), "Dimension text = 800");
    EXPECT_EQ(c.run({"DRA", "190,90", "200,90"}).back(), "Dimension text = R200");
    ASSERT_EQ(all<DimensionEntity>(c).size(), 3u);
    for (const DimensionEntity* d : all<DimensionEntity>(c))
        EXPECT_EQ(engine::dimensionLinks(*d).at(0).viewport, window.handle());
    // The model changes while it is current.
    c.document.modifyEntity(line, [](engine::Entity& e) { static_cast<engine::LineEntity&>(e).end = {1300, 100}; });
    c.document.modifyEntity(circle, [](engine::Entity& e) { static_cast<engine::CircleEntity&>(e).radius = 100; });
    const auto dims = all<DimensionEntity>(c);
    for (const std::size_t i : {0, 1}) {
        expectNear(dims[i]->def2, {150, 30}, 1e-9);
        EXPECT_EQ(dims[i]->text(), "1200");
    }
    expectNear(dims[2]->def1, {170, 90}, 1e-9);
    EXPECT_EQ(dims[2]->text(), "R100");
    // So does the view: its scale and where it stands.
    c.document.modifyEntity(window, [](engine::Entity& e) {
        static_cast<ViewportEntity&>(e).viewScale = 0.05;
        static_cast<ViewportEntity&>(e).center.x = 130;
    });
    expectNear(dims[0]->def1, {85, 62.5}, 1e-9);
    EXPECT_EQ(dims[0]->text(), "1200");
    EXPECT_EQ(dims[2]->text(), "R100");
    c.feed("U");
    expectNear(all<DimensionEntity>(c)[0]->def1, {30, 30}, 1e-9);
    EXPECT_EQ(all<DimensionEntity>(c)[0]->text(), "1200");
    // A copy on the sheet stays what it is, tied to nothing.
    c.run({"COPY", "70,45", "", "0,0", "0,100", ""});
    EXPECT_TRUE(engine::dimensionLinks(*all<DimensionEntity>(c).back()).empty());
    EXPECT_EQ(all<DimensionEntity>(c).back()->text(), "1200");
}

TEST(DimOnSheet, SnapWordsNameWhatAViewportShows) {
    DrawConsole c;
    c.addLine(100, 100, 900, 100);
    c.add(engine::CircleEntity(Vector2{1500, 700}, 200));
    withSheet(c);
    // From an end of the line to the circle's centre, named by its edge.
    c.run({"DLI", "END 30.5,29.8", "cen of 190.1,90", "H"});
    EXPECT_EQ(c.feed("100,120").back(), "Dimension text = 1400");
    const auto& d = c.last<DimensionEntity>();
    expectNear(d.def1, {30, 30});
    expectNear(d.def2, {170, 90});
    EXPECT_EQ(engine::dimensionLinks(d).size(), 2u);
    EXPECT_EQ(c.run({"DCO", "MID 70,30"}).back(), "Dimension text = 1000");
    EXPECT_EQ(c.feed("END 100,140").back(), "No endpoint found for specified point.");
    EXPECT_EQ(c.feed("WHAT 100,140").back(), "Invalid point or option keyword.");
    c.run({"", ""});
    EXPECT_TRUE(c.idle());
    // A continued dimension is tied on its own, and follows.
    EXPECT_EQ(engine::dimensionLinks(c.last<DimensionEntity>()).size(), 2u);
}

TEST(DimOnSheet, ObjectsOfTheModelAreTakenByEveryKindOfPick) {
    DrawConsole c;
    const auto& line = c.addLine(100, 100, 900, 100);
    const auto& circle = c.add(engine::CircleEntity(Vector2{1500, 700}, 200));
    ViewportEntity& window = withSheet(c);
    const Vector2 onLine{50, 30};
    const std::vector<std::vector<std::string>> picks = {{"END 30.5,29.8"},
                                                         {"MID", "70,30"},
                                                         {"M2P", "60,30", "80,30"},
                                                         {"FROM 0,0 @70,30"},
                                                         {".x 70,0", "0,30"},
                                                         {namedPick(line.handle())},
                                                         {namedPick(line.handle(), &onLine)}};
    for (const auto& pick : picks) {
        SCOPED_TRACE(testing::PrintToString(pick));
        c.feed("DLI");
        c.feed("");
        c.run(pick);
        EXPECT_EQ(c.feed("70,50").back(), "Dimension text = 800");
        EXPECT_EQ(engine::dimensionLinks(c.last<DimensionEntity>()).at(0).viewport, window.handle());
    }
    EXPECT_EQ(c.run({"DRA", namedPick(circle.handle()), "200,90"}).back(), "Dimension text = R200");
    // Not by what no window shows.
    window.vpFrozenLayers = {engine::Name("0")};
    EXPECT_EQ(c.run({"DRA", namedPick(circle.handle())}).back(), "No object found.");
}

TEST(DimOnSheet, OnlyWhereAViewportShowsIt) {
    DrawConsole c;
    c.addLine(100, 100, 900, 100);
    ViewportEntity& window = withSheet(c);
    window.vpFrozenLayers = {engine::Name("0")};
    EXPECT_EQ(c.run({"DLI", "30,30", "110,30", "70,45"}).back(), "Dimension text = 80");
    EXPECT_EQ(c.run({"DLI", "", "70,30"}).back(), "No object found.");
    c.processor.cancel();
    window.vpFrozenLayers.clear();
    c.run({"DIMASSOC", "1"});
    EXPECT_EQ(c.run({"DLI", "30,30", "110,30", "70,45"}).back(), "Dimension text = 80");
    c.run({"DIMASSOC", "2"});
    // What lies on the sheet itself goes before what is seen.
    c.addLine(30, 30, 110, 30);
    EXPECT_EQ(c.run({"DLI", "30,30", "110,30", "70,55"}).back(), "Dimension text = 80");
    // Tied afterwards it shows the model's units, too.
    c.run({"ERASE", "L", "", "DIMREASSOCIATE", "70,45", "", "S", "70,30"});
    EXPECT_TRUE(c.idle());
}

}  // namespace
}  // namespace kova::cmd
