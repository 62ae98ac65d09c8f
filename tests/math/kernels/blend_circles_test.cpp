#include "math/kernels/blend_circles.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "math/kernels/tangent_circles.hpp"

namespace kova::math {
namespace {

ParametricCurve ellipse(const Vector2& center, const Vector2& u, const Vector2& v) {
    ParametricCurve out;
    out.stops = {0.0, kTwoPi};
    out.chords = 256;
    out.closed = true;
    out.at = [arc = EllipticArc{center, u, v}](double t) {
        return SplineDerivatives{arc.pointAt(t), arc.derivativeAt(t), arc.center - arc.pointAt(t)};
    };
    return out;
}

ParametricCurve line(const Vector2& a, const Vector2& b) {
    ParametricCurve out;
    out.stops = {-10.0, 10.0};
    out.chords = 1;
    out.at = [=](double t) { return SplineDerivatives{a.lerp(b, t), b - a, {}}; };
    return out;
}

/// Distance of p from a curve, looked for plainly.
double distanceFrom(const ParametricCurve& curve, const Vector2& p) {
    double best = 1e300;
    double at = 0.0;
    double step = (curve.stops.back() - curve.stops.front()) / 4000.0;
    for (int i = 0; i <= 4000; ++i) {
        const double u = curve.stops.front() + step * i;
        const double d = curve.at(u).point.distance_to(p);
        if (d < best) {
            best = d;
            at = u;
        }
    }
    for (int i = 0; i < 60; ++i, step /= 2.0)
        for (const double u : {at - step, at + step})
            if (const double d = curve.at(u).point.distance_to(p); d < best) {
                best = d;
                at = u;
            }
    return best;
}

TEST(BlendCircles, AgreeWithTheFormulasForLinesAndCircles) {
    const Vector2 a{-4, 1};
    const Vector2 b{6, 2};
    for (const double radius : {0.3, 1.0, 2.5}) {
        const auto expected = tangentCircles(TangentCurve::line(a, b), TangentCurve::circle({1, 0}, 3.0), radius);
        const auto found = blendCircles(line(a, b), ellipse({1, 0}, {3, 0}, {0, 3}), radius);
        EXPECT_EQ(found.size(), expected.size());
        for (const TangentCircle& circle : expected)
            EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const BlendCircle& f) {
                return f.center.distance_to(circle.center) < 1e-8 && f.first.distance_to(circle.touch[0]) < 1e-8 &&
                       f.second.distance_to(circle.touch[1]) < 1e-8;
            }));
    }
}

TEST(BlendCircles, TouchBothCurvesAndNoneIsMissed) {
    const ParametricCurve flat = ellipse({0, 0}, {6, 1}, {-0.4, 2.4});
    const ParametricCurve steep = ellipse({3, 1}, {1, 5}, {-2, 0.4});
    EXPECT_EQ(blendCircles(flat, steep, 0.0).size(), 4u);
    for (const double radius : {0.1, 0.4, 1.0}) {
        const auto found = blendCircles(flat, steep, radius);
        // Every crossing has one in each of its four corners as long as they are small.
        if (radius < 0.2) {
            EXPECT_EQ(found.size(), 16u);
        }
        EXPECT_GE(found.size(), 4u);
        for (const BlendCircle& f : found) {
            EXPECT_NEAR(f.center.distance_to(f.first), radius, 1e-8);
            EXPECT_NEAR(f.center.distance_to(f.second), radius, 1e-8);
            EXPECT_LT(f.first.distance_to(flat.at(f.s).point), 1e-9);
            // The radius stands at right angles to both.
            EXPECT_NEAR((f.center - f.first).dot(flat.at(f.s).first.normalized()), 0.0, 1e-7);
            EXPECT_NEAR((f.center - f.second).dot(steep.at(f.t).first.normalized()), 0.0, 1e-7);
            EXPECT_LE(distanceFrom(flat, f.center), radius + 1e-8);
        }
    }
}

TEST(BlendCircles, EndsOnWhatHasNone) {
    const ParametricCurve circle = ellipse({0, 0}, {2, 0}, {0, 2});
    EXPECT_LT(blendCircles(circle, circle, 0.5).size(), 5000u);
    EXPECT_TRUE(blendCircles(circle, ellipse({50, 0}, {2, 0}, {0, 2}), 1.0).empty());
    EXPECT_TRUE(blendCircles(circle, ellipse({NAN, 0}, {2, 0}, {0, 2}), 1.0).empty());
    EXPECT_TRUE(blendCircles(circle, circle, NAN).empty());
    EXPECT_TRUE(blendCircles(circle, {}, 1.0).empty());
    // Lying within each other they touch from inside, where the circle just fits.
    const auto within = blendCircles(circle, ellipse({0, 0}, {1, 0}, {0, 0.5}), 0.5);
    ASSERT_FALSE(within.empty());
    for (const BlendCircle& f : within) EXPECT_NEAR(std::abs(f.center.x), 1.5, 1e-4);
}

}  // namespace
}  // namespace kova::math
