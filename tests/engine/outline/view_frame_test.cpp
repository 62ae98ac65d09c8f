#include "engine/model/view_frame.hpp"

#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/face3d.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/outline/spatial_sink.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

void expectNear(const Vector2& got, const Vector2& wanted) {
    EXPECT_NEAR(got.x, wanted.x, 1e-9);
    EXPECT_NEAR(got.y, wanted.y, 1e-9);
}
void expectBox(const Bounds2& got, const Bounds2& wanted) {
    expectNear(got.min, wanted.min);
    expectNear(got.max, wanted.max);
}
Vector2 seen(const Vector3& direction, double twist, const Vector3& p) {
    return worldToView(direction, {}, twist).transform_point(p).xy();
}

TEST(ViewFrame, PlacesTheAxesOfTheWorld) {
    EXPECT_EQ(worldToView({0, 0, 7}, {}, 0.0), Matrix4());
    expectNear(seen({0, -1, 0}, 0, {3, 5, 2}), {3, 2});  // from the front: x right, z up
    expectNear(seen({1, 0, 0}, 0, {3, 5, 2}), {5, 2});   // from the right: y right
    expectNear(seen({-1, 0, 0}, 0, {3, 5, 2}), {-5, 2});
    expectNear(seen({0, 0, -1}, 0, {3, 5, 2}), {-3, 5});  // from below
    expectNear(seen({0, 0, 1}, math::kPi / 2, {3, 5, 2}), {-5, 3});
    // A cube's corners from the isometric direction: the nearest one in the middle, z straight up.
    expectNear(seen({1, 1, 1}, 0, {1, 1, 1}), {0, 0});
    expectNear(seen({1, 1, 1}, 0, {0, 0, 1}), {0, std::sqrt(2.0 / 3.0)});
    // The direction is towards the viewer.
    EXPECT_GT(worldToView({1, -2, 3}, {}, 0.4).transform_point(Vector3{1, -2, 3}).z, 0.0);
    for (const Vector3& bad : {Vector3{}, Vector3{0, 0, std::nan("")}, Vector3{1e308, 1e308, -1e308} * 1e10})
        EXPECT_TRUE(isPlanView(bad));
}

TEST(ViewFrame, TwistAndUpSayTheSame) {
    for (const Vector3& direction : {Vector3{0, 0, 1}, Vector3{1, 1, 1}, Vector3{0, -1, 0}, Vector3{0.001, 0, -1}}) {
        EXPECT_EQ(viewTwist(direction, viewUp(direction, 0.0)), 0.0);
        EXPECT_NEAR(viewTwist(direction, viewUp(direction, 1.25)), 1.25, 1e-12);
        EXPECT_EQ(viewTwist(direction, direction), 0.0);
    }
    EXPECT_EQ(viewUp({0, 0, 1}, 0.0), Vector3(0, 1, 0));
    EXPECT_EQ(viewUp({0, -1, 0}, 0.0), Vector3(0, 0, 1));
    const Matrix4 m = worldToView({1, -2, 3}, {4, 5, 6}, 0.3);
    const Vector2 shown = m.transform_point(Vector3{7, 8, 2}).xy();
    expectNear(onGround(m, shown, 2.0).value(), {7, 8});
    EXPECT_FALSE(onGround(worldToView({0, -1, 0}, {}, 0.0), {1, 2}));
    EXPECT_TRUE(directionByAngles(math::toRadians(270), math::toRadians(90)) == Vector3(0, 0, 1));
}

TEST(SpatialSink, ShowsHeightsThicknessesAndTiltedPlanes) {
    Drawing drawing;
    EntityList& space = drawing.modelSpace();
    const auto fromFront = [&] { return viewedExtents(space, worldToView({0, -1, 0}, {}, 0.0)); };
    auto& circle = static_cast<CircleEntity&>(space.append(std::make_unique<CircleEntity>(Vector2{10, 20}, 5.0)));
    circle.elevation = 3.0;
    expectBox(fromFront(), {{5, 3}, {15, 3}});
    circle.setThickness(4.0);
    expectBox(fromFront(), {{5, 3}, {15, 7}});
    // Upright, facing the viewer: its own x runs to the right, its y up, the thickness towards the viewer.
    circle.setNormal({0, -1, 0});
    expectBox(fromFront(), {{5, 15}, {15, 25}});
    EXPECT_TRUE(viewedExtents(space, Matrix4()).contains_box({{5, -7}, {15, -3}}));
    space.append(std::make_unique<LineEntity>(Vector3{0, 0, -2}, Vector3{1, 9, 40}));
    Face3DEntity face;
    face.corners = {Vector3{0, 0, 0}, Vector3{30, 0, 0}, Vector3{30, 9, 9}, Vector3{0, 9, 9}};
    space.append(std::make_unique<Face3DEntity>(face));
    expectBox(fromFront(), {{0, -2}, {30, 40}});
}

TEST(SpatialSink, LooksIntoBlocksWithinBlocks) {
    Drawing drawing;
    Block* inner = drawing.addBlock("Post");
    inner->entities.append(std::make_unique<LineEntity>(Vector3{0, 0, 0}, Vector3{0, 0, 10}));
    Block* outer = drawing.addBlock("Fence");
    auto post = std::make_unique<BlockReferenceEntity>();
    post->blockName = "Post";
    post->insert = {2, 0};
    post->elevation = 1.0;
    outer->entities.append(std::move(post));
    auto fence = std::make_unique<BlockReferenceEntity>();
    fence->blockName = "Fence";
    fence->insert = {100, 50};
    fence->scaleX = fence->scaleY = 2.0;
    fence->elevation = 7.0;
    drawing.modelSpace().append(std::move(fence));
    expectBox(viewedExtents(drawing.modelSpace(), worldToView({0, -1, 0}, {}, 0.0)), {{104, 9}, {104, 29}});
}

TEST(ViewportView, PointsGoBothWaysInEveryDirection) {
    ViewportEntity v;
    v.center = {100, 50};
    v.viewScale = 0.5;
    v.viewTwist = 0.7;
    v.viewTarget = {10, 20};
    v.viewTargetZ = 5.0;
    for (const Vector3& direction : {Vector3{0, 0, 1}, Vector3{1, -2, 3}, Vector3{0, 0, -1}}) {
        v.viewDirection = direction;
        expectNear(v.toPaper(Vector3{10, 20, 5}), {100, 50});
        expectNear(v.toModel(v.toPaper(Vector3{-3, 8, 5})), {-3, 8});
        ViewportEntity aimed = v;
        const Vector2 place = v.toPaper(Vector3{40, 60, 5});
        aimed.aimAt(place);
        const Vector3 now(aimed.viewTarget, aimed.viewTargetZ);
        expectNear(v.toPaper(now), place);
    }
    // A front view has no plan to point at, and its window can be stretched all the same.
    v.viewDirection = {0, -1, 0};
    expectNear(v.toModel({0, 0}), v.viewTarget);
    const Vector2 before = v.toPaper(Vector3{12, 0, 9});
    v.moveGrip(2, {300, 200});
    expectNear(v.toPaper(Vector3{12, 0, 9}), before);
}

}  // namespace
}  // namespace kova::engine
