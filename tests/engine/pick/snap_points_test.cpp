#include "engine/pick/snap_points.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Vector2;

/// What a pick on one entity finds.
std::optional<Vector2> found(const Entity& entity, SnapKinds kinds, const Vector2& pick, double reach = 0.5,
                             const std::optional<Vector2>& base = {}) {
    SnapSearch search(pick, reach, kinds);
    if (base) search.setBase(*base);
    search.add(entity);
    const auto result = search.result();
    if (!result) return std::nullopt;
    return result->point;
}

#define EXPECT_AT(got, wanted, tolerance)                                       \
    do {                                                                        \
        const std::optional<Vector2> at = (got);                                \
        ASSERT_TRUE(at.has_value());                                            \
        EXPECT_LT(at->distance_to(wanted), tolerance) << at->x << "," << at->y; \
    } while (false)

TEST(SnapPoints, OfLinesArcsAndPolylinesNearAndFarFromTheOrigin) {
    for (const Vector2& o : {Vector2{}, Vector2{1e7, -2e7}}) {
        const double eps = o.length() > 0.0 ? 1e-6 : 1e-9;
        const LineEntity line(o, o + Vector2{10, 0});
        EXPECT_AT(found(line, snap::kEnd, o + Vector2{7, 0.2}), o + Vector2(10, 0), eps);
        EXPECT_AT(found(line, snap::kMiddle, o + Vector2{1, 0}), o + Vector2(5, 0), eps);
        EXPECT_AT(found(line, snap::kNearest, o + Vector2{3, 0.4}), o + Vector2(3, 0), eps);
        EXPECT_FALSE(found(line, snap::kEnd, o + Vector2{7, 0.6}));
        EXPECT_FALSE(found(line, snap::kCenter, o + Vector2{5, 0}));
        // The foot may lie beyond the ends.
        EXPECT_AT(found(line, snap::kPerpendicular, o + Vector2{3, 0}, 0.5, o + Vector2{14, 5}), o + Vector2(14, 0),
                  eps);

        ArcEntity arc(o, 10.0, 0.0, math::kPi / 2);
        EXPECT_AT(found(arc, snap::kEnd, o + Vector2{0.5, 10}), o + Vector2(0, 10), eps);
        EXPECT_AT(found(arc, snap::kMiddle, o + Vector2{10, 0}), o + Vector2(std::sqrt(50.0), std::sqrt(50.0)), eps);
        EXPECT_AT(found(arc, snap::kCenter, o + Vector2{10, 0.1}), o, eps);
        EXPECT_AT(found(arc, snap::kQuadrant, o + Vector2{1, 9.9}), o + Vector2(0, 10), eps);

        PolylineEntity polyline;
        polyline.vertices = {o, o + Vector2{10, 0}, o + Vector2{10, 10}, o + Vector2{0, 10}};
        polyline.bulges = {0.0, 1.0};
        polyline.closed = true;
        EXPECT_AT(found(polyline, snap::kMiddle, o + Vector2{15, 5}), o + Vector2(15, 5), eps);
        EXPECT_AT(found(polyline, snap::kCenter, o + Vector2{14.8, 5}), o + Vector2(10, 5), eps);
        EXPECT_AT(found(polyline, snap::kMiddle, o + Vector2{0, 9}), o + Vector2(0, 5), eps);
        polyline.bulges.clear();
        EXPECT_AT(found(polyline, snap::kCentroid, o + Vector2{3, 0}), o + Vector2(5, 5), eps);
        EXPECT_AT(found(polyline, snap::kCentroid, o + Vector2{5.2, 5.2}), o + Vector2(5, 5), eps);
        EXPECT_FALSE(found(polyline, snap::kCentroid, o + Vector2{3, 3}));
    }
}

TEST(SnapPoints, OfEllipsesAndSplines) {
    const EllipseEntity ellipse(Vector2{5, 5}, Vector2{8, 6}, 0.5);
    EXPECT_AT(found(ellipse, snap::kQuadrant, {13, 10.8}), Vector2(13, 11), 1e-9);
    EXPECT_AT(found(ellipse, snap::kQuadrant, {2, 9}), Vector2(2, 9), 1e-9);
    EXPECT_FALSE(found(ellipse, snap::kEnd, {13, 11}));
    // Half of it: the middle by length is the end of the minor axis.
    const EllipseEntity half(Vector2{}, Vector2{10, 0}, 0.3, 0.0, math::kPi);
    EXPECT_AT(found(half, snap::kMiddle, {10, 0}), Vector2(0, 3), 1e-7);
    // From the axis' extension the tangents touch at x = a * a / 20.
    EXPECT_AT(found(half, snap::kTangent, {9, 3 * std::sqrt(1 - 0.81)}, 0.5, Vector2{20, 0}),
              Vector2(5, 3 * std::sqrt(0.75)), 1e-9);
    const auto foot = found(ellipse, snap::kPerpendicular, {13, 11}, 0.5, Vector2{20, 12});
    ASSERT_TRUE(foot);
    const Vector2 nearest = ellipse.nearestPoint({20, 12});
    EXPECT_LT(foot->distance_to(nearest), 1e-7);

    SplineEntity spline;
    spline.controlPoints = {{0, 0}, {3, 9}, {9, 9}, {12, 0}};
    EXPECT_AT(found(spline, snap::kEnd, {11.8, 0.4}), Vector2(12, 0), 1e-9);
    EXPECT_AT(found(spline, snap::kMiddle, {0, 0}), Vector2(6, 6.75), 1e-7);
    EXPECT_AT(found(spline, snap::kTangent, {6, 6.75}, 0.5, Vector2{-20, 6.75}), Vector2(6, 6.75), 1e-7);
}

TEST(SnapPoints, OfCirclesFromABasePoint) {
    const CircleEntity circle(Vector2{10, 0}, 5.0);
    // 5-12-13: the tangent from 13 away.
    const Vector2 base{-3, 0};
    const double along = 25.0 / 13.0;
    EXPECT_AT(found(circle, snap::kTangent, {8, 4.6}, 0.5, base), Vector2(10 - along, 60.0 / 13.0), 1e-9);
    EXPECT_AT(found(circle, snap::kTangent, {8, -4.6}, 0.5, base), Vector2(10 - along, -60.0 / 13.0), 1e-9);
    EXPECT_FALSE(found(circle, snap::kTangent, {8, 4.6}, 0.5, Vector2{9, 1}));
    EXPECT_FALSE(found(circle, snap::kTangent, {8, 4.6}));
    EXPECT_AT(found(circle, snap::kPerpendicular, {14.9, 0.3}, 0.5, base), Vector2(15, 0), 1e-9);
    EXPECT_AT(found(circle, snap::kPerpendicular, {5.1, 0.3}, 0.5, base), Vector2(5, 0), 1e-9);
    EXPECT_AT(found(circle, snap::kCenter, {10.2, 0.1}), Vector2(10, 0), 1e-9);
    EXPECT_FALSE(found(circle, snap::kCentroid, {15, 0}));
    SnapSearch turned({13.5, 3.5}, 0.5, snap::kQuadrant);
    turned.setAxis(math::kPi / 4);
    turned.add(circle);
    EXPECT_LT(turned.result()->point.distance_to({10 + std::sqrt(12.5), std::sqrt(12.5)}), 1e-9);
}

TEST(SnapPoints, WithinBlocksAndOfWhatIsInserted) {
    Drawing drawing;
    Block& block = *drawing.addBlock("B");
    block.entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{10, 0}));
    block.entities.append(std::make_unique<CircleEntity>(Vector2{0, 0}, 4.0));
    auto hidden = std::make_unique<LineEntity>(Vector2{0, 20}, Vector2{10, 20});
    hidden->layer = Name("Off");
    block.entities.append(std::move(hidden));
    auto made = std::make_unique<BlockReferenceEntity>(Name("B"), Vector2{100, 100});
    made->scaleX = 2.0;
    made->scaleY = 1.0;
    made->rotation = math::kPi / 2;
    BlockAttribute attribute;
    attribute.position = {130, 130};
    attribute.value = "A";
    made->attributes.push_back(attribute);
    const auto& reference = static_cast<const BlockReferenceEntity&>(drawing.modelSpace().append(std::move(made)));
    EXPECT_AT(found(reference, snap::kEnd, {100, 119}), Vector2(100, 120), 1e-9);
    EXPECT_AT(found(reference, snap::kMiddle, {100, 119}), Vector2(100, 110), 1e-9);
    // The circle has become an ellipse, 8 high and 4 wide.
    EXPECT_AT(found(reference, snap::kQuadrant, {104, 100.3}), Vector2(104, 100), 1e-9);
    EXPECT_AT(found(reference, snap::kIntersection, {100.1, 108}), Vector2(100, 108), 1e-8);
    EXPECT_AT(found(reference, snap::kInsertion, {100, 115}), Vector2(100, 100), 1e-9);
    EXPECT_AT(found(reference, snap::kInsertion, {130.1, 130}), Vector2(130, 130), 1e-9);
    EXPECT_TRUE(found(reference, snap::kEnd, {80, 100}));
    SnapSearch shown({80, 100}, 0.5, snap::kEnd);
    shown.setLayerTest([](Name layer) { return layer != Name("Off"); });
    shown.add(reference);
    EXPECT_FALSE(shown.result());
}

TEST(SnapPoints, OfPointsTextsSolidsAndUnboundedLines) {
    const PointEntity point(Vector2{3, 4});
    EXPECT_AT(found(point, snap::kNode, {3.2, 4}), Vector2(3, 4), 1e-12);
    EXPECT_FALSE(found(point, snap::kEnd, {3, 4}));
    Drawing drawing;
    auto text = std::make_unique<TextEntity>();
    text->position = {10, 10};
    text->content = "ABCDEFGH";
    const Entity& standing = drawing.modelSpace().append(std::move(text));
    EXPECT_AT(found(standing, snap::kInsertion, standing.bounds().center()), Vector2(10, 10), 1e-12);
    EXPECT_FALSE(found(standing, snap::kEnd, {10, 10}));
    DimensionEntity dimension;
    dimension.def1 = {0, 0};
    dimension.def2 = {20, 0};
    dimension.dimLine = {20, 8};
    const Entity& measured = drawing.modelSpace().append(dimension.clone());
    EXPECT_AT(found(measured, snap::kNode, {20.1, 0}), Vector2(20, 0), 1e-12);
    Solid2DEntity solid;
    solid.corners = {Vector2{0, 0}, Vector2{8, 0}, Vector2{0, 8}, Vector2{8, 8}};
    EXPECT_AT(found(solid, snap::kEnd, {7, 8}), Vector2(8, 8), 1e-12);
    const RayEntity ray(Vector2{1, 1}, Vector2{1, 0});
    EXPECT_AT(found(ray, snap::kEnd, {900, 1}), Vector2(1, 1), 1e-12);
    EXPECT_FALSE(found(ray, snap::kNearest, {-5, 1}));
}

TEST(SnapPoints, MeetingsOfWhatIsNear) {
    const LineEntity a(Vector2{0, 0}, Vector2{10, 10});
    const LineEntity b(Vector2{0, 10}, Vector2{10, 0});
    const CircleEntity c(Vector2{5, 0}, 5.0);
    const RayEntity away(Vector2{7, 0}, Vector2{0, -1});
    const XlineEntity across(Vector2{0, 2}, Vector2{1, 0});
    const auto meet = [&](const Vector2& pick) -> std::optional<Vector2> {
        SnapSearch search(pick, 0.5, snap::kIntersection);
        for (const Entity* e :
             {static_cast<const Entity*>(&a), static_cast<const Entity*>(&b), static_cast<const Entity*>(&c),
              static_cast<const Entity*>(&away), static_cast<const Entity*>(&across)})
            search.add(*e);
        const auto result = search.result();
        if (!result) return std::nullopt;
        return result->point;
    };
    EXPECT_AT(meet({5.2, 5.1}), Vector2(5, 5), 1e-9);
    EXPECT_AT(meet({2.1, 2}), Vector2(2, 2), 1e-9);
    EXPECT_AT(meet({7.1, -4.5}), Vector2(7, -std::sqrt(21.0)), 1e-8);
    // The ray runs down from its start: nothing meets above it.
    EXPECT_FALSE(meet({7, 1.8}));
    EXPECT_FALSE(meet({3, 7.6}));
}

TEST(SnapPoints, BadNumbersFindNothing) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr SnapKinds all = 2047;
    for (const double bad : {inf, nan, 1e308}) {
        const LineEntity line(Vector2{bad, 0}, Vector2{-bad, bad});
        const CircleEntity circle(Vector2{0, bad}, bad);
        const EllipseEntity ellipse(Vector2{0, 0}, Vector2{bad, 0}, bad);
        for (const Entity* e : {static_cast<const Entity*>(&line), static_cast<const Entity*>(&circle),
                                static_cast<const Entity*>(&ellipse)}) {
            const auto p = found(*e, all, {0, 0}, 1.0, Vector2{1, 1});
            EXPECT_TRUE(!p || p->is_finite());
        }
        const LineEntity good(Vector2{0, 0}, Vector2{1, 0});
        const auto p = found(good, all, {bad, 0}, bad, Vector2{bad, bad});
        EXPECT_TRUE(!p || p->is_finite());
    }
    const CircleEntity none(Vector2{0, 0}, 0.0);
    EXPECT_FALSE(found(none, snap::kTangent, {0, 0}, 1.0, Vector2{5, 5}));
}

}  // namespace
}  // namespace kova::engine
