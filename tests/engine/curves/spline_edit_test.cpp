#include "engine/curves/spline_edit.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace kova::engine {
namespace {

using math::Vector2;

/// The control polygon zigzags; the curve does not cross itself.
SplineEntity zigzag(bool closed = false) {
    const std::vector<Vector2> points{{0, 0}, {4, 9}, {9, -5}, {15, 7}, {20, 0}, {26, 4}};
    return *splineByVertices(points, 3, closed);
}

SplineEntity throughPoints(bool closed = false) {
    SplineEntity s;
    s.closed = closed;
    s.fitPoints = {{0, 0}, {10, 8}, {20, 0}, {30, 8}, {40, 0}};
    s.fitThroughPoints();
    return s;
}

void expectSameShape(const SplineEntity& a, const SplineEntity& b, double eps = 1e-8) {
    const math::SplineData curve = a.curve();
    for (int i = 0; i <= 60; ++i) {
        const double u = curve.view().domainStart() + (curve.view().domainEnd() - curve.view().domainStart()) * i / 60;
        EXPECT_LT(b.distanceTo(math::splinePoint(curve.view(), u)), eps) << i;
    }
}

/// Directions in which the curve reaches its middle fit point and leaves it.
double turnAt(const SplineEntity& s, const Vector2& p) {
    const math::SplineData c = s.curve();
    const double u = math::closestSplineParameter(c.view(), p);
    const double step = 1e-7 * (c.view().domainEnd() - c.view().domainStart());
    const Vector2 in = math::splineDerivatives(c.view(), u - step).first.normalized();
    const Vector2 out = math::splineDerivatives(c.view(), u + step).first.normalized();
    return in.dot(out);
}

TEST(SplineEdit, VerticesOfClosedCurvesStayTogether) {
    SplineEntity s = zigzag(true);
    ASSERT_EQ(splineVertexCount(s), 6u);
    ASSERT_EQ(s.controlPoints.size(), 9u);
    moveSplineVertex(s, 1, {5, 12});
    EXPECT_EQ(s.controlPoints[7], Vector2(5, 12));
    setSplineWeight(s, 2, 4.0);
    EXPECT_EQ(s.weights[8], 4.0);
    EXPECT_EQ(s.weights[3], 1.0);
    const SplineEntity before = s;
    ASSERT_TRUE(addSplineVertex(s, {12, 2}));
    EXPECT_EQ(splineVertexCount(s), s.controlPoints.size() - 1);
    expectSameShape(before, s);
    ASSERT_TRUE(elevateSpline(s, 5));
    expectSameShape(before, s);
    EXPECT_FALSE(elevateSpline(s, 5));
    // The start and end are one vertex.
    moveSplineVertex(s, 0, {-3, -3});
    EXPECT_EQ(s.controlPoints.back(), Vector2(-3, -3));
    SplineEntity few = zigzag(true);
    while (removeSplineVertex(few, 0)) {
    }
    EXPECT_EQ(splineVertexCount(few), 3u);
    EXPECT_TRUE(few.curve().view().usable());
    SplineEntity nothing;
    EXPECT_EQ(splineVertexCount(nothing), 0u);
    EXPECT_FALSE(addSplineVertex(nothing, {0, 0}));
    EXPECT_FALSE(removeSplineVertex(nothing, 0));
    moveSplineVertex(nothing, 3, {1, 1});
}

TEST(SplineEdit, ClosesAndOpens) {
    SplineEntity s = zigzag();
    ASSERT_TRUE(setSplineClosed(s, true));
    EXPECT_EQ(splineVertexCount(s), 6u);
    const math::SplineData c = s.curve();
    const auto from = math::splineDerivatives(c.view(), c.view().domainStart());
    const auto to = math::splineDerivatives(c.view(), c.view().domainEnd());
    EXPECT_LT(from.point.distance_to(to.point), 1e-9);
    EXPECT_LT(from.first.distance_to(to.first), 1e-9);
    EXPECT_LT(from.second.distance_to(to.second), 1e-9);
    ASSERT_TRUE(setSplineClosed(s, false));
    EXPECT_EQ(s.controlPoints, zigzag().controlPoints);
    expectSameShape(zigzag(), s);

    SplineEntity f = throughPoints();
    ASSERT_TRUE(setSplineClosed(f, true));
    EXPECT_TRUE(f.closed);
    EXPECT_NEAR(turnAt(f, {20, 0}), 1.0, 1e-6);
    ASSERT_TRUE(setSplineClosed(f, false));
    expectSameShape(throughPoints(), f);
    SplineEntity two;
    two.fitPoints = {{0, 0}, {5, 5}};
    two.fitThroughPoints();
    EXPECT_FALSE(setSplineClosed(two, true));
}

TEST(SplineEdit, FitDataKeepTangentsAndKinks) {
    SplineEntity s = throughPoints();
    SplineFit fit = *splineFit(s);
    EXPECT_EQ(fit.startTangent, Vector2());
    fit.startTangent = {0, 2};
    ASSERT_TRUE(applySplineFit(s, fit));
    fit = *splineFit(s);
    EXPECT_NEAR(fit.startTangent.normalized().y, 1.0, 1e-9);
    // A kink changes nothing until a point is moved.
    const SplineEntity before = s;
    ASSERT_TRUE(addSplineKink(s, {25, 4.2}));
    expectSameShape(before, s);
    fit = *splineFit(s);
    ASSERT_EQ(fit.points.size(), 6u);
    ASSERT_EQ(fit.kinks, std::vector<std::size_t>{3});
    const Vector2 bend{25, 20};
    fit.points[3] = bend;
    ASSERT_TRUE(applySplineFit(s, fit));
    EXPECT_LT(turnAt(s, bend), 0.5);
    EXPECT_NEAR(turnAt(s, {10, 8}), 1.0, 1e-5);
    EXPECT_NEAR(splineFit(s)->startTangent.normalized().y, 1.0, 1e-9);
    fit = *splineFit(s);
    fit.insert(1, {5, 6});
    EXPECT_EQ(fit.kinks.front(), 4u);
    fit.erase(4);
    EXPECT_TRUE(fit.kinks.empty());
    for (const Vector2& p : fit.points) EXPECT_TRUE(p.is_finite());
    SplineEntity inSpace = throughPoints();
    inSpace.controlZ.assign(inSpace.controlPoints.size(), 1.0);
    EXPECT_FALSE(splineFit(inSpace));
}

TEST(SplineEdit, ToleranceMissesPointsByNoMore) {
    for (const bool closed : {false, true}) {
        SplineEntity s;
        s.closed = closed;
        // Noise on a circle.
        for (int i = 0; i < 90; ++i) {
            const double a = i * 0.0698;
            const double r = 50.0 + (i % 2 == 0 ? 0.2 : -0.2);
            s.fitPoints.push_back({r * std::cos(a), r * std::sin(a)});
        }
        s.fitThroughPoints();
        SplineFit fit = *splineFit(s);
        fit.tolerance = 0.5;
        ASSERT_TRUE(applySplineFit(s, fit));
        EXPECT_LT(s.controlPoints.size(), 40u);
        ASSERT_EQ(s.fitPoints.size(), 90u);
        for (const Vector2& p : s.fitPoints) EXPECT_LE(s.distanceTo(p), 0.5 + 1e-9);
    }
    SplineFit many;
    many.tolerance = 1.0;
    for (std::size_t i = 0; i <= kMostToleranced; ++i) many.points.push_back({static_cast<double>(i), 0.0});
    SplineEntity s = throughPoints();
    EXPECT_FALSE(applySplineFit(s, many));
    many.points = {{1, 1}, {1, 1}};
    EXPECT_FALSE(applySplineFit(s, many));
    many.points = {{1, 1}, {std::numeric_limits<double>::infinity(), 1}};
    EXPECT_FALSE(applySplineFit(s, many));
    EXPECT_EQ(s.fitPoints.size(), 5u);
}

TEST(SplineEdit, PolylineInSpaceFollowsTheCurve) {
    SplineEntity s = zigzag();
    for (std::size_t i = 0; i < s.controlPoints.size(); ++i) s.controlZ.push_back(static_cast<double>(i));
    const auto line = polyline3dFrom(s, 10);
    ASSERT_TRUE(line);
    ASSERT_EQ(line->vertices.size(), 31u);
    EXPECT_EQ(line->vertices.back().z, 5.0);
    for (const math::Vector3& p : line->vertices) EXPECT_LT(s.distanceTo(p.xy()), 1e-9);
}

}  // namespace
}  // namespace kova::engine
