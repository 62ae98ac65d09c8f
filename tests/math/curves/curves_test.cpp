#include "math/curves/curves.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kova::math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void expectNear(const Vector2& a, const Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}

/// The least distance found by trying many parameters.
template <class F>
double sampledDistance(const F& pointAt, double lo, double hi, const Vector2& p, int samples = 20000) {
    double best = kInf;
    for (int i = 0; i <= samples; ++i) best = std::min(best, pointAt(lo + (hi - lo) * i / samples).distance_to(p));
    return best;
}

TEST(UnitAt, IsExactOnTheAxes) {
    EXPECT_EQ(unitAt(0), Vector2(1, 0));
    EXPECT_EQ(unitAt(kPi / 2), Vector2(0, 1));
    EXPECT_EQ(unitAt(kPi), Vector2(-1, 0));
    EXPECT_EQ(unitAt(1.5 * kPi), Vector2(0, -1));
    EXPECT_EQ(unitAt(kTwoPi), Vector2(1, 0));
    expectNear(unitAt(1.0), {std::cos(1.0), std::sin(1.0)}, 0.0);
}

TEST(Bulge, SemicircleQuarterAndFriends) {
    const auto half = arcFromBulge({0, 0}, {2, 0}, 1.0);
    ASSERT_TRUE(half);
    expectNear(half->center, {1, 0}, 1e-15);
    EXPECT_DOUBLE_EQ(half->radius, 1.0);
    EXPECT_DOUBLE_EQ(half->sweep, kPi);
    // Counter-clockwise from left to right runs below.
    expectNear(half->midPoint(), {1, -1}, 1e-15);
    expectNear(bulgeMidPoint({0, 0}, {2, 0}, 1.0), {1, -1}, 1e-15);
    EXPECT_DOUBLE_EQ(bulgeLength({0, 0}, {2, 0}, -1.0), kPi);

    const auto quarter = arcFromBulge({1, 0}, {0, 1}, std::tan(kPi / 8));
    ASSERT_TRUE(quarter);
    expectNear(quarter->center, {0, 0}, 1e-15);
    EXPECT_NEAR(quarter->radius, 1.0, 1e-15);

    const auto clockwise = arcFromBulge({1, 0}, {0, 1}, -std::tan(kPi / 8));
    ASSERT_TRUE(clockwise);
    expectNear(clockwise->center, {1, 1}, 1e-15);
    expectNear(clockwise->pointAt(clockwise->end()), {0, 1}, 1e-15);
}

TEST(Bulge, DegenerateInputIsStraight) {
    for (const double bulge : {0.0, 1e-12, kNan}) EXPECT_FALSE(arcFromBulge({0, 0}, {1, 0}, bulge)) << bulge;
    EXPECT_FALSE(arcFromBulge({1, 1}, {1, 1}, 1.0));
    EXPECT_FALSE(arcFromBulge({0, 0}, {1, 0}, kInf));
    EXPECT_FALSE(arcFromBulge({0, 0}, {kNan, 0}, 1.0));
    EXPECT_EQ(bulgeLength({0, 0}, {3, 4}, kNan), 5.0);
    EXPECT_EQ(bulgeMidPoint({0, 0}, {2, 0}, kInf), Vector2(1, 0));
}

TEST(Bulge, FromTangentPointAndSweep) {
    EXPECT_NEAR(bulgeFromTangent({0, 0}, {0, -1}, {2, 0}), 1.0, 1e-15);
    EXPECT_NEAR(bulgeFromTangent({0, 0}, {0, 5}, {2, 0}), -1.0, 1e-15);
    EXPECT_EQ(bulgeFromTangent({0, 0}, {1, 0}, {2, 0}), 0.0);
    EXPECT_NEAR(bulgeThrough({0, 0}, {1, -1}, {2, 0}), 1.0, 1e-15);
    EXPECT_EQ(bulgeThrough({0, 0}, {1, 0}, {2, 0}), 0.0);
    EXPECT_EQ(bulgeThrough({0, 0}, {0, 0}, {2, 0}), 0.0);
    for (const double sweep : {0.3, 3.0, 5.5, -2.0}) {
        const double bulge = bulgeFromSweep(sweep);
        const Vector2 a{3, 1};
        const Vector2 b{-2, 4};
        EXPECT_NEAR(arcFromBulge(a, b, bulge)->sweep, sweep, 1e-12);
        EXPECT_NEAR(bulgeThrough(a, bulgeMidPoint(a, b, bulge), b), bulge, 1e-12);
    }
}

TEST(ArcThrough, KeepsTheOrderOfItsPoints) {
    const auto arc = arcThrough({1, 0}, {0, 1}, {-1, 0});
    ASSERT_TRUE(arc);
    expectNear(arc->center, {0, 0});
    EXPECT_NEAR(arc->sweep, kPi, 1e-12);
    const auto back = arcThrough({-1, 0}, {0, 1}, {1, 0});
    ASSERT_TRUE(back);
    EXPECT_NEAR(back->sweep, -kPi, 1e-12);
    const auto large = arcThrough({1, 0}, {0, -1}, {0, 1});
    ASSERT_TRUE(large);
    EXPECT_NEAR(large->sweep, -1.5 * kPi, 1e-12);
    EXPECT_FALSE(arcThrough({0, 0}, {1, 1}, {2, 2}));
    EXPECT_FALSE(arcThrough({0, 0}, {0, 0}, {2, 2}));
    EXPECT_FALSE(arcThrough({0, 0}, {kNan, 0}, {2, 2}));
    // Far from the origin the circle keeps its size.
    const auto far = arcThrough({1e6 + 1, 1e6}, {1e6, 1e6 + 1}, {1e6 - 1, 1e6});
    ASSERT_TRUE(far);
    EXPECT_NEAR(far->radius, 1.0, 1e-9);
}

TEST(ClosestOnArc, EndsInsideAndCentre) {
    expectNear(closestOnArc({3, 3}, {0, 0}, 1, 0, kPi / 2), unitAt(kPi / 4));
    expectNear(closestOnArc({-1, 3}, {0, 0}, 1, 0, kPi / 2), {0, 1});
    expectNear(closestOnArc({0.3, -2}, {0, 0}, 1, 0, kPi / 2), {1, 0});
    expectNear(closestOnArc({0, 0}, {0, 0}, 2, 1.0, 2.0), 2 * unitAt(1.0));
    // Across the zero direction.
    expectNear(closestOnArc({5, 0}, {0, 0}, 1, 1.5 * kPi, 0.5 * kPi), {1, 0});
    closestOnArc({1, 2}, {0, 0}, 1, kNan, kInf);
}

TEST(Ellipse, ParameterAndAngleKeepTheirTurn) {
    for (const double t : {0.0, 0.4, kPi / 2, 3.0, kPi, 5.0, kTwoPi, 7.0, -4.0}) {
        const double angle = ellipseParameterToAngle(0.3, t);
        EXPECT_NEAR(ellipseAngleToParameter(0.3, angle), t, 1e-12);
        EXPECT_NEAR(std::sin(angle) * std::cos(t), 0.3 * std::sin(t) * std::cos(angle), 1e-12);
    }
    EXPECT_DOUBLE_EQ(ellipseParameterToAngle(0.3, kTwoPi), kTwoPi);
}

TEST(Ellipse, PrincipalAxesOfConjugateRadii) {
    const Vector2 major{3, 1};
    const Vector2 minor = major.perpendicular() * 0.4;
    // The same ellipse by another pair of conjugate radii.
    const double shift = 0.7;
    const Vector2 u = major * std::cos(shift) + minor * std::sin(shift);
    const Vector2 v = minor * std::cos(shift) - major * std::sin(shift);
    const PrincipalAxes axes = principalAxes(u, v);
    EXPECT_NEAR(std::abs(axes.major.cross(major)), 0.0, 1e-12);
    EXPECT_NEAR(axes.major.length(), major.length(), 1e-12);
    EXPECT_NEAR(axes.minor.length(), minor.length(), 1e-12);
    for (const double t : {0.0, 1.0, 4.0})
        expectNear(axes.major * std::cos(t - axes.shift) + axes.minor * std::sin(t - axes.shift),
                   u * std::cos(t) + v * std::sin(t));
    EXPECT_EQ(principalAxes({1, 0}, {0, 1}).shift, 0.0);
    EXPECT_NEAR(principalAxes({1, 0}, {0, 2}).major.length(), 2.0, 1e-15);
}

TEST(Ellipse, BoundsAreThoseOfTheArcOnly) {
    const EllipticArc full{{1, 2}, {3, 0}, {0, 1}, 0, kTwoPi};
    EXPECT_EQ(boundsOf(full), Bounds2({-2, 1}, {4, 3}));
    const EllipticArc quarter{{0, 0}, {5, 0}, {0, 5}, 0, kPi / 2};
    EXPECT_EQ(boundsOf(quarter), Bounds2({0, 0}, {5, 5}));
    const EllipticArc backwards{{0, 0}, {5, 0}, {0, 5}, kPi / 2, 0};
    EXPECT_EQ(boundsOf(backwards), Bounds2({0, 0}, {5, 5}));
    // Slanted: compared with many points.
    const EllipticArc slanted{{1, 1}, {3, 2}, {-1, 0.5}, 0.3, 4.1};
    Bounds2 sampled;
    for (int i = 0; i <= 100000; ++i) sampled.expand(slanted.pointAt(0.3 + 3.8 * i / 100000));
    const Bounds2 box = boundsOf(slanted);
    expectNear(box.min, sampled.min, 1e-8);
    expectNear(box.max, sampled.max, 1e-8);
    boundsOf(EllipticArc{{0, 0}, {1, 0}, {0, 1}, kNan, kInf});
}

TEST(Ellipse, NearestPointOfArcsFlatAndRound) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-4, 4);
    for (const double ratio : {1.0, 0.6, 0.1, 0.001}) {
        for (const auto& [t0, t1] : {std::pair{0.0, kTwoPi}, std::pair{0.5, 2.5}, std::pair{4.0, 1.0}}) {
            const EllipticArc arc{{0.5, -0.5}, {3, 0}, {0, 3 * ratio}, t0, t1};
            for (int i = 0; i < 60; ++i) {
                const Vector2 p{coordinate(random), coordinate(random)};
                const double t = closestParameter(arc, p);
                EXPECT_GE(t, std::min(t0, t1));
                EXPECT_LE(t, std::max(t0, t1));
                const double sampled = sampledDistance([&](double s) { return arc.pointAt(s); }, t0, t1, p);
                EXPECT_LE(arc.pointAt(t).distance_to(p), sampled + 1e-9) << ratio << " " << p.text();
            }
        }
    }
    // At the centre the ends of the minor axis are nearest; a circle's centre has no nearest point and no trouble.
    const EllipticArc arc{{0, 0}, {3, 0}, {0, 1}, 0, kTwoPi};
    EXPECT_NEAR(arc.pointAt(closestParameter(arc, {0, 0})).length(), 1.0, 1e-12);
    closestParameter(EllipticArc{{0, 0}, {1, 0}, {0, 1}, 0, 1e300}, {0, 0});
    closestParameter(EllipticArc{{0, 0}, {kNan, 0}, {0, kInf}, 0, 1}, {0, 0});
}

TEST(Ellipse, Lengths) {
    EXPECT_DOUBLE_EQ(lengthOf(EllipticArc{{0, 0}, {2, 0}, {0, 2}, 0, kPi}), kTwoPi);
    // Perimeter with the axes 2 and 1: 4 a E(e), from tables.
    EXPECT_NEAR(lengthOf(EllipticArc{{0, 0}, {2, 0}, {0, 1}, 0, kTwoPi}), 9.688448220547675, 1e-9);
    // Flat: there and back.
    EXPECT_NEAR(lengthOf(EllipticArc{{0, 0}, {1, 0}, {0, 0}, 0, kTwoPi}), 4.0, 1e-8);
    EXPECT_TRUE(std::isnan(lengthOf(EllipticArc{{0, 0}, {kNan, 0}, {0, 1}, 0, 1})));
}

TEST(Cubic, PartBoundsLengthAndNearest) {
    const Cubic c{{{0, 0}, {1, 3}, {4, -3}, {5, 1}}};
    const Cubic part = cubicPart(c, 0.2, 0.7);
    for (const double t : {0.0, 0.3, 1.0}) expectNear(cubicPoint(part, t), cubicPoint(c, 0.2 + 0.5 * t), 1e-12);
    Bounds2 sampled;
    double length = 0.0;
    Vector2 last = c[0];
    for (int i = 1; i <= 100000; ++i) {
        const Vector2 p = cubicPoint(c, i / 100000.0);
        sampled.expand(p);
        length += last.distance_to(p);
        last = p;
    }
    sampled.expand(c[0]);
    const Bounds2 box = boundsOf(c);
    expectNear(box.min, sampled.min, 1e-8);
    expectNear(box.max, sampled.max, 1e-8);
    EXPECT_NEAR(lengthOf(c), length, 1e-6);
    // A straight one is exact, whatever its parameter does.
    EXPECT_NEAR(lengthOf(Cubic{{{0, 0}, {0, 0}, {3, 4}, {3, 4}}}), 5.0, 1e-9);

    std::mt19937 random(11);
    std::uniform_real_distribution<double> coordinate(-5, 8);
    for (int i = 0; i < 200; ++i) {
        Cubic curve;
        for (Vector2& p : curve) p = {coordinate(random), coordinate(random)};
        const Vector2 p{coordinate(random), coordinate(random)};
        const double distance = cubicPoint(curve, closestParameter(curve, p)).distance_to(p);
        EXPECT_LE(distance, sampledDistance([&](double t) { return cubicPoint(curve, t); }, 0, 1, p) + 1e-9);
    }
}

TEST(Cubic, ParabolaAndStraightHaveTheirExtremes) {
    // Degenerate derivatives: a constant and a linear one.
    EXPECT_EQ(boundsOf(Cubic{{{0, 0}, {1, 1}, {2, 2}, {3, 3}}}), Bounds2({0, 0}, {3, 3}));
    const Bounds2 parabola = boundsOf(Cubic{{{0, 0}, {1, 2}, {2, 2}, {3, 0}}});
    EXPECT_DOUBLE_EQ(parabola.max.y, 1.5);
    EXPECT_EQ(parabola.min.y, 0.0);
}

}  // namespace
}  // namespace kova::math
