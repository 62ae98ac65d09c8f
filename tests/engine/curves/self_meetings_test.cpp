#include "engine/curves/self_meetings.hpp"

#include <gtest/gtest.h>

#include "engine/entities/circle.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/spline.hpp"

namespace kova::engine {
namespace {

std::vector<double> cutsOf(const Entity& entity) {
    const auto curve = EditCurve::of(entity);
    std::vector<double> cuts;
    if (!curve || !SelfMeetings::possible(*curve)) return cuts;
    SelfMeetings(*curve).cuts(curve->start(), curve->end(), cuts);
    std::sort(cuts.begin(), cuts.end());
    return cuts;
}

TEST(SelfMeetings, OfPolylinesWithArcsAndIdleVertices) {
    PolylineEntity looped({{0, 0}, {10, 0}, {10, 0}, {10, 10}, {5, 10}, {5, -5}});
    const std::vector<double> cuts = cutsOf(looped);
    ASSERT_EQ(cuts.size(), 2u);
    EXPECT_NEAR(cuts[0], 0.5, 1e-12);
    EXPECT_NEAR(cuts[1], 4.0 + 10.0 / 15.0, 1e-12);
    // An arc that leaves its line, and cuts it again further back.
    PolylineEntity hook({{0, 0}, {10, 0}, {2, -1}});
    hook.setBulge(1, 1.5);
    const std::vector<double> hooked = cutsOf(hook);
    ASSERT_EQ(hooked.size(), 2u);
    EXPECT_LT(hooked[0], 0.9);
    EXPECT_GT(hooked[1], 1.5);
    // Rounded corners and closed figures only meet where they are tied.
    PolylineEntity slot({{0, 0}, {10, 0}, {10, 4}, {0, 4}}, true);
    slot.setBulge(1, 1.0);
    slot.setBulge(3, 1.0);
    EXPECT_TRUE(cutsOf(slot).empty());
    EXPECT_TRUE(cutsOf(PolylineEntity({{0, 0}, {10, 0}, {10, 0}, {10, 5}, {0, 0}}, true)).empty());
    EXPECT_TRUE(cutsOf(CircleEntity({0, 0}, 5.0)).empty());
    // A vertex on another segment counts.
    EXPECT_FALSE(cutsOf(PolylineEntity({{0, 0}, {10, 0}, {10, 5}, {5, 0}, {5, -5}})).empty());
}

TEST(SelfMeetings, OfSplinesOnlyWhereTheyCross) {
    SplineEntity wave;
    for (int i = 0; i < 40; ++i) wave.controlPoints.push_back({i * 1.0, i % 2 == 0 ? 5.0 : -5.0});
    EXPECT_TRUE(cutsOf(wave).empty());
    SplineEntity ring;
    ring.controlPoints = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    ring.closed = true;
    EXPECT_TRUE(cutsOf(ring).empty());
    SplineEntity loop;
    loop.controlPoints = {{0, 0}, {20, 15}, {-10, 15}, {10, 0}};
    const std::vector<double> cuts = cutsOf(loop);
    ASSERT_EQ(cuts.size(), 2u);
    EXPECT_NEAR(cuts[0] + cuts[1], 1.0, 1e-9);
    const auto curve = EditCurve::of(loop);
    EXPECT_NEAR(curve->pointAt(cuts[0]).distance_to(curve->pointAt(cuts[1])), 0.0, 1e-8);
}

}  // namespace
}  // namespace kova::engine
