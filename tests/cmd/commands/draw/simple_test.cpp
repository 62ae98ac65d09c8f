#include <cmath>

#include "cmd/draw_harness.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/solid2d.hpp"
#include "engine/entities/xline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using math::Vector2;

TEST(Xline, EveryOption) {
    DrawConsole c;
    c.run({"XLINE", "1,1", "4,5", "1,1", "1,9", ""});  // a through point on the first one makes no line
    ASSERT_EQ(c.count(), 2u);
    const double h = std::sqrt(0.5);
    const struct {
        std::vector<std::string> input;
        Vector2 base;
        Vector2 direction;
    } cases[] = {
        {{"H", "3,4", ""}, {3, 4}, {1, 0}},
        {{"V", "3,4", ""}, {3, 4}, {0, 1}},
        {{"A", "45", "3,4", ""}, {3, 4}, {h, h}},
        {{"A", "R", "50,0", "90", "3,4", ""}, {3, 4}, {0, 1}},
        {{"B", "0,0", "10,0", "0,10", ""}, {0, 0}, {h, h}},
        {{"O", "5", "50,0", "50,10", ""}, {50, 5}, {1, 0}},
        {{"O", "T", "50,0", "7,9", ""}, {7, 9}, {1, 0}},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(::testing::PrintToString(item.input));
        DrawConsole one;
        one.addLine(0, 0, 100, 0);
        one.feed("XL");
        one.run(item.input);
        EXPECT_TRUE(one.idle());
        const auto& line = one.last<engine::XlineEntity>();
        EXPECT_NEAR((line.base - item.base).cross(item.direction), 0.0, 1e-9);
        expectNear(line.dir, item.direction);
        EXPECT_EQ(one.lastStep(), "XLINE");
    }
}

TEST(Ray, LoopsThroughPoints) {
    DrawConsole c;
    EXPECT_EQ(c.run({"RAY", "1,1", "1,1"}), Lines{"The two points coincide."});
    c.run({"4,5", "@0,3", ""});
    ASSERT_EQ(c.count(), 2u);
    expectNear(c.last<engine::RayEntity>().origin, {1, 1});
    expectNear(static_cast<engine::RayEntity*>(c.entities()[0])->dir, {0.6, 0.8});
}

TEST(Point, TakesCurrentValues) {
    DrawConsole c;
    c.run({"ELEVATION 3", "CECOLOR 1", "POINT", "5,6"});
    const auto& p = c.only<engine::PointEntity>();
    expectNear(p.position, {5, 6});
    EXPECT_DOUBLE_EQ(p.elevation, 3);
    EXPECT_EQ(p.color, engine::Color::index(1));
}

TEST(Donut, DiametersStayAndTakeAnyOrder) {
    DrawConsole c;
    c.run({"DONUT", "10", "6", "0,0", "20,0", ""});
    ASSERT_EQ(c.count(), 2u);
    const auto ring = c.last<engine::PolylineEntity>();
    EXPECT_TRUE(ring.closed);
    expectPoints(ring.vertices, {{16, 0}, {24, 0}});
    EXPECT_DOUBLE_EQ(ring.startWidth(0), 2);
    c.run({"DO", "0", "", "0,50", ""});
    const auto& disc = c.last<engine::PolylineEntity>();
    EXPECT_DOUBLE_EQ(disc.endWidth(1), 5);
    const auto box = disc.bounds();
    EXPECT_NEAR(box.width(), 10, 1e-9);
}

TEST(Solid, QuadranglesGoOnAndTrianglesEnd) {
    DrawConsole c;
    c.run({"SOLID", "0,0", "10,0", "0,10", "10,10", "5,20", "", ""});
    const auto all = c.entities();
    ASSERT_EQ(all.size(), 2u);
    const auto& quad = *static_cast<engine::Solid2DEntity*>(all[0]);
    const auto& triangle = *static_cast<engine::Solid2DEntity*>(all[1]);
    EXPECT_FALSE(quad.isTriangle());
    EXPECT_TRUE(triangle.isTriangle());
    expectNear(triangle.corners[0], {0, 10});
    EXPECT_TRUE(c.idle());
}

}  // namespace
}  // namespace kova::cmd
