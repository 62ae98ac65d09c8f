#include "engine/curves/space_fit.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/curves/polyline_fit.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {
namespace {

using math::Vector2;
using math::Vector3;

const std::vector<Vector3> kFrame{{0, 0, 0}, {10, 0, 5}, {10, 10, 9}, {0, 10, 2}, {-5, 5, 1}};

TEST(SpaceFit, PolylinesRunOverTheirFrameAndBack) {
    Polyline3DEntity p(kFrame);
    fitWithSpline(p, 3, 8);
    ASSERT_EQ(p.vertices.size(), 33u);
    EXPECT_EQ(p.vertices.front(), kFrame.front());
    EXPECT_EQ(p.vertices.back(), kFrame.back());
    EXPECT_EQ(p.curveType, 6);
    // The cubic leaves along the first side of its frame.
    const Vector3 way = (p.vertices[1] - p.vertices[0]).normalized();
    EXPECT_GT(way.dot((kFrame[1] - kFrame[0]).normalized()), 0.99);
    p.transform(math::Matrix4::translation({100, 0}));
    EXPECT_EQ(p.frame.front(), Vector3(100, 0, 0));
    editFrame(p, 4, [](Polyline3DEntity& frame) { frame.vertices.pop_back(); });
    EXPECT_EQ(p.vertices.size(), 13u);
    decurve(p);
    EXPECT_EQ(p.vertices.size(), 4u);
    EXPECT_EQ(p.curveType, 0);
    Polyline3DEntity ring(kFrame, true);
    fitWithSpline(ring, 2, 10);
    EXPECT_EQ(ring.vertices.size(), 50u);
    EXPECT_EQ(ring.curveType, 5);
    // A quadratic over equal knots passes half-way between the points of its frame.
    EXPECT_TRUE(std::any_of(ring.vertices.begin(), ring.vertices.end(),
                            [](const Vector3& v) { return v.near_equal({5, 0, 2.5}, 1e-9); }));
    Polyline3DEntity two({{0, 0, 0}, {1, 1, 1}});
    fitWithSpline(two, 3, 8);
    EXPECT_EQ(two.vertices.size(), 2u);
    Polyline3DEntity bad({{0, 0, 0}, {std::numeric_limits<double>::quiet_NaN(), 1, 1}, {2, 2, 2}});
    fitWithSpline(bad, 3, 8);
    EXPECT_EQ(bad.vertices.size(), 3u);
}

MeshEntity grid(std::int32_t rows, std::int32_t cols) {
    MeshEntity m;
    m.rows = rows;
    m.cols = cols;
    // A plane, tilted: whatever surface has these control points lies in it.
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) m.vertices.push_back({i * 3.0, j * 2.0, i * 1.0 + j * 0.5});
    return m;
}

TEST(SpaceFit, MeshesAreSmoothedAndGivenBack) {
    for (const int type : {5, 6, 8}) {
        MeshEntity m = grid(4, 5);
        const std::vector<Vector3> before = m.vertices;
        ASSERT_EQ(smoothMesh(m, type, 7, 9), SmoothRefusal::None);
        EXPECT_EQ(m.rows, 8);
        EXPECT_EQ(m.cols, 10);
        ASSERT_EQ(m.vertices.size(), 80u);
        EXPECT_TRUE(m.vertices.front().near_equal(before.front(), 1e-9));
        EXPECT_TRUE(m.vertices.back().near_equal(before.back(), 1e-9));
        for (const Vector3& p : m.vertices) EXPECT_NEAR(p.z, p.x / 3.0 + p.y / 4.0, 1e-9);
        // Again: from the frame, not from the surface.
        ASSERT_EQ(smoothMesh(m, 5, 3, 3), SmoothRefusal::None);
        EXPECT_EQ(m.frame, before);
        desmoothMesh(m);
        EXPECT_EQ(m.vertices, before);
        EXPECT_EQ(m.rows, 4);
        EXPECT_EQ(m.surfaceType, 0);
    }
    MeshEntity closed = grid(4, 4);
    closed.closedM = true;
    ASSERT_EQ(smoothMesh(closed, 6, 8, 6), SmoothRefusal::None);
    EXPECT_EQ(closed.rows, 8);
    EXPECT_EQ(closed.cols, 7);
    MeshEntity few = grid(3, 3);
    EXPECT_EQ(smoothMesh(few, 6, 6, 6), SmoothRefusal::TooFew);
    EXPECT_EQ(smoothMesh(few, 5, 6, 6), SmoothRefusal::None);
    MeshEntity many = grid(12, 3);
    EXPECT_EQ(smoothMesh(many, 8, 6, 6), SmoothRefusal::TooMany);
    MeshEntity torn = grid(4, 4);
    torn.vertices.resize(9);
    EXPECT_EQ(smoothMesh(torn, 6, 6, 6), SmoothRefusal::TooFew);
    MeshEntity none;
    EXPECT_EQ(smoothMesh(none, 8, 6, 6), SmoothRefusal::TooFew);
}

TEST(SpaceFit, PolylinesInSpaceAreJoined) {
    LineEntity a;
    a.setEnds({10, 10, 9}, {20, 10, 9});
    LineEntity b;
    b.setEnds({-5, 0, 1}, {0, 0, 0});
    LineEntity above;
    above.setEnds({20, 10, 0}, {30, 0, 0});
    PolylineEntity flat(std::vector<Vector2>{{25, 10}, {20, 10}});
    flat.elevation = 9.0;
    Polyline3DEntity p({{0, 0, 0}, {10, 0, 5}, {10, 10, 9}});
    const std::vector<const Entity*> others{&above, &flat, &a, &b};
    EXPECT_EQ(joinInSpace(p, others), (JoinedParts{2, 1, 3}));
    ASSERT_EQ(p.vertices.size(), 6u);
    EXPECT_EQ(p.vertices.front(), Vector3(-5, 0, 1));
    EXPECT_EQ(p.vertices.back(), Vector3(25, 10, 9));
    LineEntity back;
    back.setEnds({25, 10, 9}, {-5, 0, 1});
    const std::vector<const Entity*> closing{&back};
    EXPECT_EQ(joinInSpace(p, closing).size(), 1u);
    EXPECT_TRUE(p.closed);
    EXPECT_EQ(p.vertices.size(), 6u);
}

TEST(PolylineFit, TangentsOutliveTheCurve) {
    PolylineEntity p(std::vector<Vector2>{{0, 0}, {10, 0}, {20, 10}});
    PolylineRecord record;
    record.vertex = 1;
    record.flags = PolylineRecord::kTangent;
    record.tangent = math::kPi / 2;
    p.records.push_back(record);
    fitWithArcs(p);
    const std::vector<Vector2> curve = p.vertices;
    ASSERT_EQ(curve.size(), 5u);
    fitWithArcs(p);
    ASSERT_EQ(p.vertices.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) EXPECT_LT(p.vertices[i].distance_to(curve[i]), 1e-9);
    decurve(p);
    ASSERT_EQ(p.records.size(), 1u);
    EXPECT_EQ(p.records[0].vertex, 1);
    fitWithArcs(p);
    EXPECT_LT(p.vertices[1].distance_to(curve[1]), 1e-9);
    // The arc arrives at the vertex in the direction given.
    const auto arc = math::arcFromBulge(p.vertices[1], p.vertices[2], p.bulge(1));
    ASSERT_TRUE(arc);
    EXPECT_NEAR((p.vertices[2] - arc->center).normalized().y, 0.0, 1e-9);
    // A negative number of segments: arcs through the points of the spline.
    fitWithSpline(p, 2, -4);
    EXPECT_TRUE(p.hasBulges());
    EXPECT_EQ(p.fit.size(), 3u);
    decurve(p);
    EXPECT_FALSE(p.hasBulges());
    EXPECT_EQ(p.vertices.size(), 3u);
}

}  // namespace
}  // namespace kova::engine
