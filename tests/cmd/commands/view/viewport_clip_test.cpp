#include "cmd/draw_harness.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/viewport.hpp"

// Viewports that an entity of the sheet bounds.

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::PolylineEntity;
using engine::ViewportEntity;
using math::Vector2;

/// A sheet with a window that a circle of radius 20 about (100,100) bounds.
struct Clipped : DrawConsole {
    Clipped() {
        addLine(0, 0, 200, 100);
        run({"LAYOUT", "S", "Layout1", "CIRCLE", "100,100", "20", "MVIEW", "O", "120,100"});
    }
    template <class Kind>
    std::vector<Kind*> all() {
        std::vector<Kind*> found;
        for (engine::Entity* e : entities())
            if (auto* kind = dynamic_cast<Kind*>(e)) found.push_back(kind);
        return found;
    }
    ViewportEntity& window(std::size_t i = 0) { return *all<ViewportEntity>().at(i); }
};

void expectFrame(const ViewportEntity& v, const Vector2& min, const Vector2& max) {
    expectNear(v.frame().min, min);
    expectNear(v.frame().max, max);
}

TEST(ViewportClip, ObjectsThatEncloseAnAreaBoundWindows) {
    Clipped c;
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.window().clipEntity(), c.entities().front());
    EXPECT_NE(c.window().statusFlags & ViewportEntity::kNonRectangular, 0);
    expectFrame(c.window(), {80, 80}, {120, 120});
    EXPECT_EQ(c.run({"MVIEW", "O", "120,100"}), Lines{"The object bounds a viewport already."});
    c.feed("");
    c.run({"LINE", "200,10", "210,10", "", "PLINE", "200,20", "210,20", "210,30", ""});
    EXPECT_EQ(c.run({"MVIEW", "O", "205,20"}),
              Lines{"A closed polyline, circle, ellipse, spline or region is needed."});
    EXPECT_EQ(c.prompt(), "Select object to clip viewport:");
    c.feed("");
    // Commands on viewports take the border for the window.
    c.run({"MVIEW", "L", "ON", "120,100", ""});
    EXPECT_TRUE(c.window().locked);
    EXPECT_EQ(c.run({"UNDO", "UNDO", "UNDO", "UNDO"}).back(), "Undone: MVIEW");
    EXPECT_EQ(c.count(), 1u);
}

TEST(ViewportClip, PolygonalDrawsTheOutlineItself) {
    DrawConsole c;
    c.addLine(0, 0, 200, 100);
    c.run({"LAYOUT", "S", "Layout1", "MVIEW", "P", "10,10"});
    EXPECT_EQ(c.prompt(), "Specify next point or [Arc/Length/Undo]:");
    c.feed("60,10");
    EXPECT_EQ(c.prompt(), "Specify next point or [Arc/Close/Length/Undo]:");
    c.run({"@5,5", "U", "L", "10", "A", "@0,40", "L", "@-60,0", "C"});
    ASSERT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    const auto& outline = static_cast<PolylineEntity&>(*c.entities()[0]);
    expectPoints(outline.vertices, {{10, 10}, {60, 10}, {70, 10}, {70, 50}, {10, 50}});
    EXPECT_NEAR(outline.bulge(2), 1.0, 1e-12);  // a half circle
    EXPECT_TRUE(outline.closed);
    const auto& window = c.last<ViewportEntity>();
    EXPECT_EQ(window.clipEntity(), &outline);
    expectFrame(window, {10, 10}, {90, 50});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MVIEW"});
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.run({"MVIEW", "P", "0,0", "10,0", ""}).back(), "A viewport needs an outline that encloses an area.");
    // An arc alone closes with its chord; an outline that comes back to its start is closed by that.
    c.run({"MVIEW", "P", "0,0", "A", "S", "10,10", "20,0", ""});
    expectFrame(c.last<ViewportEntity>(), {0, 0}, {20, 10});
    c.run({"MVIEW", "P", "0,50", "9,50", "9,59", "0,50", ""});
    EXPECT_EQ(static_cast<PolylineEntity&>(*c.entities()[2]).vertices.size(), 3u);
}

TEST(ViewportClip, WindowAndBorderMoveTogether) {
    Clipped c;
    const Vector2 target = c.window().viewTarget;
    const double scale = c.window().viewScale;
    // The border takes the window and its view along.
    c.run({"MOVE", "120,100", "", "0,0", "30,5"});
    expectFrame(c.window(), {110, 85}, {150, 125});
    expectNear(c.window().viewTarget, target);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: MOVE"});
    expectFrame(c.window(), {80, 80}, {120, 120});
    expectNear(c.all<CircleEntity>().front()->center, {100, 100});
    // Grown, it shows more of the model at the same scale and place.
    const Vector2 seen = c.window().toPaper({10, 10});
    c.document.modifyEntity(*c.all<CircleEntity>().front(), [](engine::Entity& e) {
        static_cast<CircleEntity&>(e).center = {110, 100};
        static_cast<CircleEntity&>(e).radius = 40;
    });
    expectFrame(c.window(), {70, 60}, {150, 140});
    EXPECT_EQ(c.window().viewScale, scale);
    expectNear(c.window().toPaper({10, 10}), seen);
    // The window takes its border along.
    c.document.modifyEntity(c.window(), [](engine::Entity& e) { static_cast<ViewportEntity&>(e).center = {10, 20}; });
    expectNear(c.all<CircleEntity>().front()->center, {10, 20});
    c.document.modifyEntity(c.window(), [](engine::Entity& e) { static_cast<ViewportEntity&>(e).width = 160; });
    ASSERT_EQ(c.all<engine::EllipseEntity>().size(), 1u);
    EXPECT_EQ(c.window().clipEntity(), c.all<engine::EllipseEntity>().front());
    EXPECT_NEAR(c.window().clipEntity()->bounds().width(), 160.0, 1e-9);
    // Both chosen: moved once.
    c.run({"MOVE", "ALL", "", "0,0", "0,100"});
    expectNear(c.window().center, {10, 120});
    expectNear(c.window().clipEntity()->bounds().center(), {10, 120});
}

TEST(ViewportClip, OneGoesWithTheOther) {
    Clipped c;
    const std::uint64_t border = c.entities().front()->handle();
    c.run({"ERASE", "120,100", ""});
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ERASE"});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.window().clipEntity(), c.drawing().findByHandle(border));
    c.document.removeEntity(c.window());
    EXPECT_EQ(c.count(), 0u);
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 2u);
    c.feed("REDO");
    EXPECT_EQ(c.count(), 0u);
}

TEST(ViewportClip, CopiesHaveBordersOfTheirOwn) {
    Clipped c;
    c.run({"COPY", "ALL", "", "0,0", "100,0", ""});
    ASSERT_EQ(c.count(), 4u);
    EXPECT_EQ(c.window(0).clipEntity(), c.all<CircleEntity>()[0]);
    EXPECT_EQ(c.window(1).clipEntity(), c.all<CircleEntity>()[1]);
    c.feed("UNDO");
    // The window alone gets a new border; the border alone is a circle.
    const auto alone = [&](engine::Entity& entity) {
        auto copy = entity.clone();
        copy->transform(math::Matrix4::translation(0, 100));
        c.document.addEntity(std::move(copy));
    };
    alone(c.window());
    ASSERT_EQ(c.count(), 4u);
    expectNear(c.all<CircleEntity>()[1]->center, {100, 200});
    EXPECT_EQ(c.window(1).clipEntity(), c.all<CircleEntity>()[1]);
    c.feed("UNDO");
    alone(*c.all<CircleEntity>()[0]);
    EXPECT_EQ(c.count(), 3u);
    c.document.removeEntity(*c.all<CircleEntity>()[1]);
    EXPECT_EQ(c.count(), 2u);
}

}  // namespace
}  // namespace kova::cmd
