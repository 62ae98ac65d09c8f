#include "engine/inquiry/mass_properties.hpp"

#include <gtest/gtest.h>

#include "engine/entities/mesh.hpp"
#include "engine/entities/polyface.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::kPi;
using math::Vector2;
using math::Vector3;

Path rectangle(double x, double y, double w, double h) {
    Path path;
    const Vector2 corners[] = {{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}};
    path.polygon(corners);
    return path;
}

TEST(AreaMoments, OfShapesWithKnownFormulas) {
    // A rectangle off the origin: b h^3 / 12 and the theorem of parallel axes.
    const AreaMoments r = figureMoments(rectangle(1, 2, 4, 3));
    EXPECT_NEAR(r.area, 12.0, 1e-12);
    EXPECT_NEAR(r.yy, 4.0 * 27.0 / 12.0 + 12.0 * 3.5 * 3.5, 1e-11);
    EXPECT_NEAR(r.xx, 3.0 * 64.0 / 12.0 + 12.0 * 3.0 * 3.0, 1e-11);
    EXPECT_NEAR(r.xy, 12.0 * 3.0 * 3.5, 1e-11);
    // A circle far from the origin, run through clockwise.
    Path circle;
    circle.arc({1e5, 0}, 2.0, 2.0 * kPi, 0.0).close();
    const AreaMoments c = figureMoments(circle);
    EXPECT_NEAR(c.area, -4.0 * kPi, 1e-9);
    const AreaMoments own = c.about({1e5, 0}) * -1.0;
    EXPECT_NEAR(own.yy, kPi * 16.0 / 4.0, 1e-3);
    // A half disc left open: its chord closes it. The centroid lies 4 r / (3 pi) above it.
    Path half;
    half.arc({0, 0}, 3.0, 0.0, kPi);
    EXPECT_NEAR(figureMoments(half).centroid().y, 4.0 * 3.0 / (3.0 * kPi), 1e-12);
    // An ellipse about its centre: pi a b^3 / 4.
    Path ellipse;
    ellipse.ellipticArc({0, 0}, {5, 0}, {0, 2}, 0.0, 2.0 * kPi).close();
    EXPECT_NEAR(figureMoments(ellipse).yy, kPi * 5.0 * 8.0 / 4.0, 1e-10);
    EXPECT_EQ(figureMoments(Path()).area, 0.0);
}

TEST(AreaMoments, HolesCountAgainstTheirSurroundings) {
    Path path = rectangle(0, 0, 10, 10);
    path.append(rectangle(2, 2, 6, 6));
    path.append(rectangle(4, 4, 2, 2));
    path.append(rectangle(20, 0, 1, 1));
    const AreaMoments m = evenOddMoments(path);
    EXPECT_NEAR(m.area, 100.0 - 36.0 + 4.0 + 1.0, 1e-11);
    EXPECT_NEAR(m.x, 500.0 - 180.0 + 20.0 + 20.5, 1e-10);
}

TEST(AreaMoments, PrincipalAxesOfATurnedRectangle) {
    const double turn = math::toRadians(30.0);
    const Vector2 u = Vector2::from_angle(turn);
    const Vector2 v = u.perpendicular();
    const Vector2 corners[] = {u * 3.0 + v, u * -3.0 + v, u * -3.0 - v, u * 3.0 - v};
    Path path;
    path.polygon(corners);
    const auto principal = principalMoments(evenOddMoments(path));
    EXPECT_NEAR(principal[0].moment, 6.0 * 8.0 / 12.0, 1e-11);
    EXPECT_NEAR(principal[1].moment, 2.0 * 216.0 / 12.0, 1e-11);
    EXPECT_NEAR(principal[0].axis.x, std::cos(turn), 1e-12);
    EXPECT_NEAR(principal[0].axis.y, std::sin(turn), 1e-12);
}

PolyfaceEntity box(double x, double y, double z) {
    PolyfaceEntity p;
    for (const double c : {0.0, z})
        for (const Vector2& corner : {Vector2{0, 0}, Vector2{x, 0}, Vector2{x, y}, Vector2{0, y}})
            p.vertices.emplace_back(corner, c);
    p.faces = {{1, 4, 3, 2}, {5, 6, 7, 8}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 4, 8, 7}, {4, 1, 5, 8}};
    return p;
}

TEST(BodyMoments, OfABoxAndATube) {
    const auto m = bodyMoments(meshTriangles(box(2, 3, 4)));
    ASSERT_TRUE(m.has_value());
    EXPECT_NEAR(m->volume, 24.0, 1e-12);
    EXPECT_NEAR(m->centroid().z, 2.0, 1e-12);
    // About a corner: m (b^2 + c^2) / 3, and m a b / 4.
    EXPECT_NEAR(m->inertia().x, 24.0 * (9.0 + 16.0) / 3.0, 1e-10);
    EXPECT_NEAR(m->products.x, 24.0 * 6.0 / 4.0, 1e-10);
    const auto principal = principalMoments(*m);
    EXPECT_NEAR(principal[0].moment, 24.0 * (9.0 + 16.0) / 12.0, 1e-10);
    EXPECT_NEAR(principal[2].axis.z, 1.0, 1e-12);

    // A ring of square section, closed both ways.
    MeshEntity ring;
    ring.rows = 4;
    ring.cols = 4;
    ring.closedM = ring.closedN = true;
    for (const Vector2& way : {Vector2{1, 0}, Vector2{0, 1}, Vector2{-1, 0}, Vector2{0, -1}})
        for (const Vector2& section : {Vector2{2, 0}, Vector2{3, 0}, Vector2{3, 1}, Vector2{2, 1}})
            ring.vertices.emplace_back(way * section.x, section.y);
    const auto hollow = bodyMoments(meshTriangles(ring));
    ASSERT_TRUE(hollow.has_value());
    EXPECT_NEAR(hollow->volume, 2.0 * 9.0 - 2.0 * 4.0, 1e-10);
}

TEST(BodyMoments, OpenSurfacesHaveNone) {
    PolyfaceEntity open = box(1, 1, 1);
    open.faces.pop_back();
    EXPECT_FALSE(bodyMoments(meshTriangles(open)).has_value());
    PolyfaceEntity turned = box(1, 1, 1);
    std::reverse(turned.faces[0].begin(), turned.faces[0].end());
    EXPECT_FALSE(bodyMoments(meshTriangles(turned)).has_value());
    EXPECT_FALSE(bodyMoments({}).has_value());
}

}  // namespace
}  // namespace kova::engine
