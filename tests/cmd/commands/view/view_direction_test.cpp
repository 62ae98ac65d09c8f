#include "cmd/draw_harness.hpp"
#include "doc/pick/picking.hpp"
#include "edit/view_state.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::LineEntity;
using engine::ViewportEntity;
using math::Vector2;
using math::Vector3;

const engine::NamedView& shown(DrawConsole& c) { return c.drawing().currentView; }
double twist(DrawConsole& c) { return viewState(c.drawing()).twist; }

void expectDirection(const Vector3& got, const Vector3& wanted) {
    const Vector3 unit = wanted.normalized();
    EXPECT_TRUE(got.near_equal(unit, 1e-9)) << got.text() << " for " << unit.text();
}

/// A post of height 10 at (20,30).
struct Post : DrawConsole {
    Post() { add(LineEntity(Vector3{20, 30, 0}, Vector3{20, 30, 10})); }
};

TEST(ViewDirection, VpointLooksAtEverything) {
    Post c;
    EXPECT_EQ(c.feed("VPOINT"), Lines{"Current view direction:  VIEWDIR=0.0000,0.0000,1.0000"});
    EXPECT_EQ(c.prompt(), "Specify a view point or [Rotate] <display compass and tripod>:");
    EXPECT_EQ(c.feed("0,0,0"), Lines{"Invalid view point."});
    c.feed("0,-1,0");
    expectDirection(shown(c).viewDirection, {0, -1, 0});
    // In view coordinates the post stands from 0 to 10 at x 20.
    expectNear(shown(c).center, {20, 5});
    EXPECT_NEAR(shown(c).height, 10.0, 1e-9);
    c.run({"-VP", "R"});
    EXPECT_EQ(c.prompt(), "Enter angle in XY plane from X axis <270>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter angle from XY plane <0>:");
    c.feed("30");
    expectDirection(shown(c).viewDirection, {0, -std::sqrt(3.0), 1});
    c.run({"DDVPOINT", "45", "35.26438968"});
    EXPECT_NEAR(shown(c).viewDirection.x, 1.0 / std::sqrt(3.0), 1e-8);
    EXPECT_EQ(twist(c), 0.0);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: DDVPOINT"});
    c.run({"ZOOM", "P", "ZOOM", "P"});
    EXPECT_NEAR(shown(c).height, 10.0, 1e-9);  // the view from the front
    c.run({"VPOINT", ""});
    EXPECT_TRUE(c.idle());
    c.run({"UCS", "Z", "30"});
    c.feed("PLAN");
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));
    EXPECT_NEAR(twist(c), math::toRadians(330.0), 1e-9);
    c.run({"UCS", "W", "'PLAN"});
    EXPECT_EQ(shown(c).upHint, Vector3(0, 1, 0));
    expectNear(shown(c).center, {20, 30});
    c.run({"LAYOUT", "S", "Layout1"});
    EXPECT_EQ(c.feed("PLAN"), Lines{"** Command not allowed in paper space **"});
    EXPECT_EQ(c.feed("VPOINT"), Lines{"** Command not allowed in paper space **"});
}

TEST(ViewDirection, ZoomAndPanKeepToTheView) {
    Post c;
    c.run({"VPOINT", "0,-1,0", "ZOOM", "2X"});
    EXPECT_NEAR(shown(c).height, 5.0, 1e-9);
    expectNear(shown(c).center, {20, 5});
    c.run({"PAN", "0,0", "3,0"});
    expectNear(shown(c).center, {17, 5});
    c.run({"ZOOM", "E"});
    expectNear(shown(c).center, {20, 5});
    EXPECT_NEAR(shown(c).height, 10.0, 1e-9);
    c.run({"VIEW", "S", "Front", "VIEW", "O", "T", "ZOOM", "P", "ZOOM", "P", "VIEW", "O", "T"});
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));
    c.run({"VIEW", "R", "Front"});
    expectDirection(shown(c).viewDirection, {0, -1, 0});
    expectNear(shown(c).center, {20, 5});
}

TEST(ViewDirection, OrbitTurnsRoundTheMiddle) {
    Post c;
    c.run({"ZOOM", "C", "20,30", "40", "3DORBIT"});
    EXPECT_EQ(c.prompt(), "Specify horizontal and vertical angle <0,0>:");
    EXPECT_EQ(c.feed("left"), Lines{"Two angles in degrees are needed, as 30,-15."});
    c.run({"0,-60"});
    expectDirection(shown(c).viewDirection, {0, -std::sqrt(3.0), 1});
    EXPECT_NEAR(shown(c).height, 40.0, 1e-9);
    EXPECT_TRUE(viewState(c.drawing()).middle().near_equal({20, 30, 0}, 1e-9));
    c.run({"90,0", "0,500", ""});
    EXPECT_TRUE(c.idle());
    // Back on top from the right: x of the world points down.
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));
    EXPECT_NEAR(twist(c), math::kPi * 1.5, 1e-9);
}

TEST(ViewDirection, ViewportsLookForThemselves) {
    Post c;
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "100,100", "MSPACE", "VPOINT", "1,1,1"});
    const ViewportEntity* viewport = c.drawing().activeViewport();
    ASSERT_NE(viewport, nullptr);
    expectDirection(viewport->viewDirection, {1, 1, 1});
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));
    const Vector2 foot = viewport->toPaper(Vector3{20, 30, 0});
    const Vector2 head = viewport->toPaper(Vector3{20, 30, 10});
    expectNear((foot + head) / 2.0, {50, 50}, 1e-6);  // all of it, in the middle
    EXPECT_NEAR(head.y - foot.y, 100.0, 1e-6);
    EXPECT_EQ(std::get<Vector3>(*engine::getSysVar(c.drawing(), "VIEWDIR")), viewport->viewDirection);
    c.run({"DVIEW", "", "TW", "90", ""});
    EXPECT_NEAR(c.drawing().activeViewport()->viewTwist, math::kPi / 2, 1e-12);
    c.run({"PSPACE", "MVIEW", "L", "ON", "ALL", "", "MSPACE"});
    EXPECT_EQ(c.feed("PLAN"), Lines{"Viewport is view-locked."});
}

TEST(Dview, ChangesTheViewAtItsEnd) {
    Post c;
    c.run({"DVIEW", ""});
    EXPECT_EQ(c.prompt(), "Enter option [CAmera/TArget/Distance/POints/PAn/Zoom/TWist/CLip/Hide/Off/Undo]:");
    c.run({"PO", "20,30,0", "20,20,10"});
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));  // not before the end
    c.feed("TW");
    EXPECT_EQ(c.prompt(), "Specify view twist angle <0>:");
    c.run({"15", "Z", "4", "U"});
    const double height = shown(c).height;
    c.feed("");
    expectDirection(shown(c).viewDirection, {0, -1, 1});
    EXPECT_NEAR(twist(c), math::toRadians(15.0), 1e-12);
    EXPECT_NEAR(shown(c).height, height, 1e-9);
    EXPECT_TRUE(shown(c).target.near_equal({20, 30, 0}, 1e-9));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: DVIEW"});
    EXPECT_TRUE(engine::isPlanView(shown(c).viewDirection));
    c.run({"DVIEW", "", "CA"});
    EXPECT_EQ(c.prompt(), "Specify camera location, or enter angle from XY plane, or [Toggle (angle in)] <90>:");
    c.run({"0", "T", "0"});
    EXPECT_EQ(c.prompt(), "Enter option [CAmera/TArget/Distance/POints/PAn/Zoom/TWist/CLip/Hide/Off/Undo]:");
    c.run({"U", "U", "CA", "0", "0", "X"});
    expectDirection(shown(c).viewDirection, {1, 0, 0});
    c.run({"DVIEW", "", "PAN", "0,0,0", "0,0,3", "PAN", "0,0", "5,0", ""});
    EXPECT_TRUE(c.idle());
}

TEST(Camera, KeepsANamedView) {
    Post c;
    EXPECT_EQ(c.feed("CAMERA"), Lines{"Current camera settings: Height=0  Lens Length=50 mm"});
    c.run({"0,0,5", "0,100,5"});
    EXPECT_EQ(c.prompt(), "Enter an option [?/Name/LOcation/Height/Target/LEns/Clipping/View/eXit] <eXit>:");
    c.run({"N", "North", "LE", "100", ""});
    const engine::NamedView* view = c.drawing().namedViews.find("North");
    ASSERT_NE(view, nullptr);
    expectDirection(view->viewDirection, {0, -1, 0});
    EXPECT_NEAR(view->height, 24.0, 1e-9);  // 24 mm of film at 100 mm, 100 units away
    EXPECT_EQ(c.run({"CAMERA", "1,1", "1,1"}).back(), "The target must lie away from the camera.");
    c.run({"5,1", "V", "Y"});
    EXPECT_TRUE(c.drawing().namedViews.contains("Camera1"));
    expectDirection(shown(c).viewDirection, {-1, 0, 0});
    c.run({"NEWSHOT", "Shot", "PLAN", "VIEWPLAY", "Shot"});
    expectDirection(shown(c).viewDirection, {-1, 0, 0});
    EXPECT_EQ(c.run({"VIEWPLAY", "None"}), Lines{"Cannot find view \"None\"."});
}

TEST(ViewDisplay, SwitchesAreKept) {
    DrawConsole c;
    c.feed("UCSICON");
    EXPECT_EQ(c.prompt(), "Enter an option [ON/OFF/All/Noorigin/ORigin/Selectable/Properties] <ON>:");
    c.run({"A", "N", "UCSICON", "OFF"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "UCSICON"), 0);
    EXPECT_EQ(c.run({"VS", "H"}), Lines{"The style is kept; pictures show all edges."});
    EXPECT_EQ(engine::sysVarString(c.drawing(), "VSCURRENT"), "Hidden");
    c.run({"VSCURRENT", "O", "shades of gray"});
    EXPECT_EQ(engine::sysVarString(c.drawing(), "VSCURRENT"), "Shades of Gray");
    c.run({"CUBE", "OFF"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "NAVVCUBEDISPLAY"), 0);
    c.feed("VIEWCUBE");
    EXPECT_EQ(c.prompt(), "Enter mode [ON/OFF] <OFF>:");
    c.feed("ON");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "NAVVCUBEDISPLAY"), 3);
    EXPECT_EQ(c.feed("WHEEL"), Lines{"\"Steering Wheel\" needs its dialog, which kovacad-cli cannot show; cancelled."});
}

TEST(Spaces, LengthsAndObjectsChangeSpace) {
    DrawConsole c;
    EXPECT_EQ(c.feed("VPSCALE"), Lines{"** Command not allowed in Model Tab **"});
    c.addLine(0, 0, 100, 0);
    c.add(engine::CircleEntity({50, 0}, 10));
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "100,100"});
    c.run({"MSPACE", "ZOOM", "1/50xp"});
    EXPECT_EQ(c.feed("VPSCALE"), Lines{"PS:MS == 1:50"});
    EXPECT_EQ(c.run({"SPACETRANS", ""}), Lines{"50"});
    c.feed("PSPACE");
    EXPECT_EQ(c.run({"VPSCALE", "100,30"}), Lines{"PS:MS == 1:50"});
    c.feed("SPACETRANS");
    EXPECT_EQ(c.prompt(), "Specify model space distance <1>:");
    EXPECT_EQ(c.feed("200"), Lines{"4"});
    c.feed("MSPACE");
    const math::Matrix4 toPaper = c.drawing().activeViewport()->modelToPaper();
    EXPECT_EQ(c.run({"CHSPACE", "60,0", ""}).front(), "1 object(s) changed from MODEL space to PAPER space.");
    EXPECT_EQ(c.drawing().modelSpace().size(), 1u);
    EXPECT_EQ(c.drawing().activeViewport(), nullptr);
    const auto& circle = c.last<engine::CircleEntity>();
    expectNear(circle.center, toPaper.transform_point(Vector2{50, 0}));
    EXPECT_NEAR(circle.radius, 0.2, 1e-9);
    c.run({"CHSPACE", namedPick(circle.handle()), ""});
    EXPECT_EQ(c.lines[c.lines.size() - 2], "1 object(s) changed from PAPER space to MODEL space.");
    EXPECT_EQ(c.drawing().modelSpace().size(), 2u);
    EXPECT_NEAR(static_cast<engine::CircleEntity*>(c.drawing().modelSpace().last())->radius, 10.0, 1e-9);
    EXPECT_EQ(c.run({"UNDO", "UNDO"}), (Lines{"Undone: CHSPACE", "Undone: CHSPACE"}));
    // Several windows: the one meant is named, or the current one taken.
    c.run({"PSPACE", "MVIEW", "100,0", "200,100", "LINE", "1,1", "2,2", "", "CHSPACE", "L", ""});
    EXPECT_EQ(c.prompt(), "Set the TARGET viewport active and press ENTER to continue.");
    EXPECT_EQ(c.feed("9"), Lines{"There is no such viewport that is on."});
    c.feed("3");
    EXPECT_EQ(c.drawing().activeViewport()->vpId, 3);
}

}  // namespace
}  // namespace kova::cmd
