#include "engine/curves/corner.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/curves/break_line.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/xline.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Vector2;

SplineEntity wave(const Vector2& at) {
    SplineEntity spline;
    for (const Vector2& p : {Vector2{-12, -3}, Vector2{-4, 9}, Vector2{2, -9}, Vector2{6, 8}, Vector2{14, 1}})
        spline.controlPoints.push_back(at + p);
    return spline;
}

double mismatch(const Vector2& direction, const Vector2& center, const Vector2& p) {
    return std::abs(direction.normalized().dot((p - center).normalized()));
}

TEST(Corner, EveryPairOfCurvesIsRoundedSmoothlyAndTrimmed) {
    for (const Vector2& o : {Vector2{}, Vector2{1e7, -2e7}}) {
        const double eps = o.length() > 0.0 ? 1e-6 : 3e-7;  // a rational one is searched as cubics
        std::vector<std::unique_ptr<Entity>> kinds;
        kinds.push_back(std::make_unique<LineEntity>(o + Vector2{-20, 1}, o + Vector2{20, 4}));
        kinds.push_back(std::make_unique<ArcEntity>(o, 8.0, 0.3, 6.0));
        kinds.push_back(std::make_unique<CircleEntity>(o + Vector2{5, 3}, 4.0));
        kinds.push_back(std::make_unique<EllipseEntity>(o + Vector2{1, 1}, Vector2{9, 2}, 0.5));
        kinds.push_back(std::make_unique<EllipseEntity>(o + Vector2{-3, 0}, Vector2{1, 7}, 0.6, 0.5, 5.0));
        kinds.push_back(std::make_unique<SplineEntity>(wave(o)));
        auto rational = std::make_unique<SplineEntity>(wave(o + Vector2{1, 2}));
        rational->weights = {1, 2, 1, 3, 1};
        kinds.push_back(std::move(rational));
        kinds.push_back(std::make_unique<PolylineEntity>(
            std::vector<Vector2>{o + Vector2{-15, -6}, o + Vector2{3, -4}, o + Vector2{5, 9}}));
        for (std::size_t i = 0; i < kinds.size(); ++i)
            for (std::size_t j = 0; j < kinds.size(); ++j) {
                if (i == j) continue;
                SCOPED_TRACE(std::to_string(i) + " and " + std::to_string(j));
                const auto first = EditCurve::of(*kinds[i]);
                const auto second = EditCurve::of(*kinds[j]);
                int made = 0;
                for (int pick = 0; pick < 9; ++pick) {
                    const auto at = [](const EditCurve& c, int k) { return c.pointAt(c.end() * (0.15 + 0.35 * k)); };
                    const PickedCurve p(*first, at(*first, pick % 3));
                    const PickedCurve q(*second, at(*second, pick / 3));
                    CornerFault fault = CornerFault::None;
                    const auto corner = filletCorner(p, q, 0.4, fault);
                    EXPECT_EQ(corner.has_value(), fault == CornerFault::None);
                    if (!corner) continue;
                    ++made;
                    const auto arc = math::arcFromBulge(corner->from, corner->to, corner->bulge);
                    ASSERT_TRUE(arc);
                    EXPECT_NEAR(arc->radius, 0.4, eps);
                    const auto cutA = cutToCorner(*first, corner->first);
                    const auto cutB = cutToCorner(*second, corner->second);
                    ASSERT_TRUE(cutA && cutB);
                    for (const auto& [cut, whole, end, rule] :
                         {std::tuple{cutA.get(), &*first, corner->from, corner->first},
                          std::tuple{cutB.get(), &*second, corner->to, corner->second}}) {
                        const auto left = EditCurve::of(*cut);
                        ASSERT_TRUE(left);
                        // What stays ends where the arc begins, in its direction.
                        if (whole->closed()) {
                            EXPECT_LT(cut->distanceTo(end), 10.0 * eps);
                            continue;
                        }
                        const double u = rule.keepsStart ? left->end() : left->start();
                        EXPECT_LT(left->pointAt(u).distance_to(end), 10.0 * eps);
                        EXPECT_LT(mismatch(left->tangentAt(u), arc->center, end), 1e-4);
                        const double other = rule.keepsStart ? left->start() : left->end();
                        EXPECT_LT(left->pointAt(other).distance_to(
                                      whole->pointAt(rule.keepsStart ? whole->start() : whole->end())),
                                  10.0 * eps);
                    }
                }
                EXPECT_GT(made, 0);
                CornerFault fault = CornerFault::None;
                const PickedCurve p(*first, first->pointAt(first->end() * 0.6));
                const PickedCurve q(*second, second->pointAt(second->end() * 0.6));
                const auto sharp = filletCorner(p, q, 0.0, fault);
                if (sharp) {
                    EXPECT_LT(kinds[i]->distanceTo(sharp->from), 30.0);
                    const auto cut = cutToCorner(*first, sharp->first);
                    EXPECT_LT(cut->distanceTo(sharp->from), 10.0 * eps);
                }
                if (i + j == 3 && i * j == 2) continue;  // two circles and nearly their common tangent
                EXPECT_FALSE(filletCorner(p, q, 1e9, fault));
                EXPECT_TRUE(fault == CornerFault::TooLarge || fault == CornerFault::NoSolution);
            }
    }
}

TEST(Corner, SplinesKeepDegreeAndWeightsWhenTheyAreTrimmed) {
    SplineEntity spline = wave({});
    spline.weights = {1, 2, 1, 3, 1};
    const LineEntity line(Vector2{0, -20}, Vector2{0.5, 20});
    const auto a = EditCurve::of(spline);
    const auto b = EditCurve::of(line);
    CornerFault fault = CornerFault::None;
    const auto corner =
        filletCorner(PickedCurve(*a, a->pointAt(a->end() * 0.2)), PickedCurve(*b, {0.4, 15}), 0.5, fault);
    ASSERT_TRUE(corner);
    const auto cut = cutToCorner(*a, corner->first);
    const auto& left = dynamic_cast<SplineEntity&>(*cut);
    EXPECT_EQ(left.degree, 3);
    EXPECT_EQ(left.weights.size(), left.controlPoints.size());
    EXPECT_LT(left.controlPoints.size(), 12u);
    for (const Vector2& p : {left.nearestPoint({-9, 2}), left.nearestPoint({-4, 3})})
        EXPECT_LT(spline.distanceTo(p), 1e-8);
}

TEST(Corner, SmallOnesFarFromTheOrigin) {
    const Vector2 o{1e7, 1e7};
    const LineEntity line(o, o + Vector2{0.05, 0});
    const ArcEntity arc(o + Vector2{0.02, 0}, 0.01, 0.0, math::kPi);
    const auto a = EditCurve::of(line);
    const auto b = EditCurve::of(arc);
    CornerFault fault = CornerFault::None;
    const auto corner =
        filletCorner(PickedCurve(*a, o + Vector2{0.045, 0}), PickedCurve(*b, o + Vector2{0.02, 0.01}), 0.002, fault);
    ASSERT_TRUE(corner);
    // Centre 0.002 over the line and 0.012 from the arc's.
    const double x = 0.02 + std::sqrt(0.012 * 0.012 - 0.002 * 0.002);
    EXPECT_NEAR(corner->from.x - o.x, x, 1e-8);
    EXPECT_NEAR(corner->from.y - o.y, 0.0, 1e-8);
    EXPECT_FALSE(corner->first.keepsStart);
}

PolylineEntity withCorner(const PolylineEntity& polyline, const Vector2& p, const Vector2& q, double radius,
                          CornerFault& fault) {
    const auto curve = EditCurve::of(polyline);
    const auto corner = filletCorner(PickedCurve(*curve, p), PickedCurve(*curve, q), radius, fault);
    if (!corner) return {};
    const auto made = cornerInPolyline(*curve, *corner);
    return made ? static_cast<const PolylineEntity&>(*made) : PolylineEntity();
}

TEST(Corner, SegmentsOfOnePolyline) {
    CornerFault fault = CornerFault::None;
    // The segment between goes, and both neighbours grow.
    const PolylineEntity bevelled({{0, 0}, {8, 0}, {10, 2}, {10, 10}});
    for (const bool swapped : {false, true}) {
        const Vector2 p = swapped ? Vector2{10, 6} : Vector2{4, 0};
        const Vector2 q = swapped ? Vector2{4, 0} : Vector2{10, 6};
        const PolylineEntity rounded = withCorner(bevelled, p, q, 1.0, fault);
        ASSERT_EQ(rounded.vertices.size(), 4u);
        EXPECT_NEAR(rounded.vertices[1].distance_to({9, 0}), 0.0, 1e-9);
        EXPECT_NEAR(rounded.vertices[2].distance_to({10, 1}), 0.0, 1e-9);
        EXPECT_NEAR(rounded.bulge(1), std::tan(math::kPi / 8.0), 1e-9);
        const PolylineEntity sharp = withCorner(bevelled, p, q, 0.0, fault);
        ASSERT_EQ(sharp.vertices.size(), 3u);
        EXPECT_NEAR(sharp.vertices[1].distance_to({10, 0}), 0.0, 1e-9);
    }
    // The same in a closed one, over its start too.
    const PolylineEntity ring({{2, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 2}}, true);
    const PolylineEntity rounded = withCorner(ring, {5, 0}, {0, 5}, 1.0, fault);
    EXPECT_TRUE(rounded.closed);
    EXPECT_EQ(rounded.vertices.size(), 5u);
    EXPECT_NEAR(rounded.area(), 99.0 + math::kPi / 4.0, 1e-9);
    // First and last of an open one close it.
    const PolylineEntity open({{5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 4}});
    const PolylineEntity closed = withCorner(open, {7, 0}, {0, 7}, 1.0, fault);
    EXPECT_TRUE(closed.closed);
    EXPECT_NEAR(closed.area(), 99.0 + math::kPi / 4.0, 1e-9);
    EXPECT_NEAR(withCorner(open, {7, 0}, {0, 7}, 0.0, fault).area(), 100.0, 1e-9);
    // Two segments between are too many.
    EXPECT_TRUE(withCorner(PolylineEntity({{0, 0}, {4, 0}, {5, 1}, {6, 3}, {6, 9}, {9, 9}}), {1, 0}, {6, 8}, 0.5, fault)
                    .vertices.empty());
    EXPECT_EQ(fault, CornerFault::Apart);
    // Parallel sides of a U: a half circle closes it.
    const PolylineEntity u =
        withCorner(PolylineEntity({{0, 0}, {0, -8}, {4, -8}, {4, 0}}), {0, -1}, {4, -1}, 0.0, fault);
    EXPECT_TRUE(u.closed);
    EXPECT_NEAR(u.area(), 32.0 + 2.0 * math::kPi, 1e-9);
}

TEST(Corner, WholePolylines) {
    const PolylineEntity square({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true);
    CornerMeasure rounding;
    rounding.round = true;
    rounding.radius = 2.0;
    const auto rounded = cutPolylineCorners(square, rounding);
    EXPECT_EQ(rounded.cut, 4);
    EXPECT_NEAR(rounded.polyline->area(), 100.0 - 16.0 + 4.0 * math::kPi, 1e-9);
    // Rounded corners get another radius, or none.
    rounding.radius = 1.0;
    EXPECT_NEAR(cutPolylineCorners(*rounded.polyline, rounding).polyline->area(), 100.0 - 4.0 + math::kPi, 1e-9);
    rounding.radius = 0.0;
    const auto back = cutPolylineCorners(*rounded.polyline, rounding);
    EXPECT_EQ(back.cut, 4);
    EXPECT_EQ(back.polyline->vertices.size(), 4u);
    EXPECT_NEAR(back.polyline->area(), 100.0, 1e-9);
    // No room: the arcs stay as they are.
    rounding.radius = 9.0;
    const auto kept = cutPolylineCorners(*rounded.polyline, rounding);
    EXPECT_EQ(kept.tooShort, 4);
    EXPECT_EQ(kept.polyline->vertices, rounded.polyline->vertices);
    // By length and angle at corners that are not right.
    CornerMeasure bevel;
    bevel.first = 1.0;
    bevel.angle = 30.0 * math::kDegree;
    const PolylineEntity bent({{0, 0}, {10, 0}, {15, 8}, {3, 16}});
    const auto cut = cutPolylineCorners(bent, bevel);
    ASSERT_EQ(cut.cut, 2);
    ASSERT_EQ(cut.polyline->vertices.size(), 6u);
    for (const std::size_t i : {1u, 3u}) {
        const auto& v = cut.polyline->vertices;
        const Vector2 in = v[i] - v[i - 1];
        const Vector2 across = v[i + 1] - v[i];
        EXPECT_NEAR(std::atan2(in.cross(across), in.dot(across)), 30.0 * math::kDegree, 1e-9);
    }
    EXPECT_NEAR(cut.polyline->vertices[1].distance_to({9, 0}), 0.0, 1e-9);
    // Flatter than the angle: there is no such bevel.
    bevel.angle = 80.0 * math::kDegree;
    EXPECT_EQ(cutPolylineCorners(bent, bevel).tooShort, 1);
    EXPECT_EQ(cutPolylineCorners(PolylineEntity(), rounding).cut, 0);
    EXPECT_EQ(cutPolylineCorners(PolylineEntity({{1, 1}}), rounding).polyline->vertices.size(), 1u);
}

TEST(BreakLine, FitsItsSymbolBetweenThePoints) {
    const auto line = breakLine({0, 0}, {10, 0}, {5, 3}, 2.0, 1.0);
    ASSERT_TRUE(line);
    ASSERT_EQ(line->vertices.size(), 6u);
    EXPECT_EQ(line->vertices.front(), Vector2(-1, 0));
    EXPECT_EQ(line->vertices.back(), Vector2(11, 0));
    EXPECT_NEAR(line->vertices[2].y, 1.0, 1e-12);
    EXPECT_NEAR(line->vertices[1].x, 4.0, 1e-12);
    EXPECT_NEAR(breakLine({0, 0}, {10, 0}, {-50, 0}, 2.0, 0.0)->vertices[1].x, 0.0, 1e-12);
    EXPECT_FALSE(breakLine({0, 0}, {1, 0}, {0, 0}, 2.0, 1.0));
    EXPECT_FALSE(breakLine({0, 0}, {NAN, 0}, {0, 0}, 2.0, 1.0));
}

}  // namespace
}  // namespace kova::engine
