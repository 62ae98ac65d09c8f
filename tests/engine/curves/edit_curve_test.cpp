#include "engine/curves/edit_curve.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/curves/corner.hpp"
#include "engine/curves/curve_cuts.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/xline.hpp"
#include "engine/curves/lengthen.hpp"
#include "engine/curves/offset_entity.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Vector2;

SplineEntity sampleSpline(const Vector2& at = {}) {
    SplineEntity spline;
    for (const Vector2& p : {Vector2{-8, -3}, Vector2{-3, 9}, Vector2{2, -9}, Vector2{5, 6}, Vector2{9, 1}})
        spline.controlPoints.push_back(at + p);
    return spline;
}

std::vector<Vector2> meetings(const Entity& a, const Entity& b) {
    const auto first = EditCurve::of(a);
    const auto second = EditCurve::of(b);
    std::vector<Vector2> out;
    for (const CurvePiece& p : first->pieces())
        for (const CurvePiece& q : second->pieces()) {
            std::vector<PieceHit> hits;
            meetPieces(p, q, 1e-9, hits);
            for (const PieceHit& hit : hits) {
                EXPECT_NEAR(p.pointAt(hit.s).distance_to(q.pointAt(hit.t)), 0.0, 1e-8);
                out.push_back(p.pointAt(hit.s));
            }
        }
    return out;
}

/// How often a finely chopped curve changes sides of another one's outline: the least number of crossings.
std::size_t crossings(const Entity& a, const Entity& b) {
    const auto first = EditCurve::of(a);
    const auto second = EditCurve::of(b);
    std::size_t count = 0;
    const auto chop = [](const EditCurve& c) {
        std::vector<Vector2> points;
        for (const CurvePiece& piece : c.pieces())
            for (int i = 0; i <= 400; ++i) points.push_back(piece.pointAt(i / 400.0));
        return points;
    };
    const std::vector<Vector2> p = chop(*first);
    const std::vector<Vector2> q = chop(*second);
    for (std::size_t i = 0; i + 1 < p.size(); ++i)
        for (std::size_t j = 0; j + 1 < q.size(); ++j) {
            const double s0 = (q[j + 1] - q[j]).cross(p[i] - q[j]);
            const double s1 = (q[j + 1] - q[j]).cross(p[i + 1] - q[j]);
            const double t0 = (p[i + 1] - p[i]).cross(q[j] - p[i]);
            const double t1 = (p[i + 1] - p[i]).cross(q[j + 1] - p[i]);
            if ((s0 < 0.0) != (s1 < 0.0) && (t0 < 0.0) != (t1 < 0.0)) ++count;
        }
    return count;
}

TEST(MeetPieces, EveryPairOfCurvesFindsAllItsCrossings) {
    for (const Vector2& origin : {Vector2{}, Vector2{1e5, -2e5}}) {
        std::vector<std::unique_ptr<Entity>> kinds;
        kinds.push_back(std::make_unique<LineEntity>(origin + Vector2{-9, -4.1}, origin + Vector2{9, 5.3}));
        kinds.push_back(std::make_unique<CircleEntity>(origin + Vector2{0.5, 0.3}, 4.2));
        kinds.push_back(std::make_unique<ArcEntity>(origin + Vector2{2, 0.1}, 5.1, 1.0, 5.0));
        kinds.push_back(std::make_unique<EllipseEntity>(origin + Vector2{0.2, -0.4}, Vector2{7, 2}, 0.4));
        kinds.push_back(std::make_unique<EllipseEntity>(origin + Vector2{-0.3, 0.7}, Vector2{-2, 6}, 0.5, 0.3, 4.0));
        kinds.push_back(std::make_unique<SplineEntity>(sampleSpline(origin)));
        auto polyline = std::make_unique<PolylineEntity>(
            std::vector<Vector2>{origin + Vector2{-7, 2}, origin + Vector2{1, -5}, origin + Vector2{6, 5}});
        polyline->setBulge(0, 0.7);
        kinds.push_back(std::move(polyline));
        for (std::size_t i = 0; i < kinds.size(); ++i)
            for (std::size_t j = 0; j < kinds.size(); ++j) {
                if (i == j) continue;
                SCOPED_TRACE(std::to_string(i) + " and " + std::to_string(j));
                EXPECT_EQ(meetings(*kinds[i], *kinds[j]).size(), crossings(*kinds[i], *kinds[j]));
            }
    }
}

TEST(MeetPieces, TangentsCoincidenceAndEnds) {
    EXPECT_EQ(meetings(CircleEntity({0, 0}, 2.0), LineEntity(Vector2{-5, 2}, Vector2{5, 2})).size(), 1u);
    EXPECT_EQ(meetings(CircleEntity({0, 0}, 2.0), CircleEntity({5, 0}, 3.0)).size(), 1u);
    EXPECT_TRUE(meetings(CircleEntity({0, 0}, 2.0), CircleEntity({5, 0}, 2.9999)).empty());
    // Lines that overlap share a stretch: its ends.
    const auto shared = meetings(LineEntity(Vector2{0, 0}, Vector2{10, 0}), LineEntity(Vector2{4, 0}, Vector2{20, 0}));
    EXPECT_EQ(shared.size(), 2u);
    EXPECT_EQ(meetings(LineEntity(Vector2{0, 0}, Vector2{10, 0}), LineEntity(Vector2{10, 0}, Vector2{10, 5})).size(),
              1u);
    // An ellipse in itself ends somewhere.
    const EllipseEntity ellipse({0, 0}, {5, 0}, 0.5);
    EXPECT_LE(meetings(ellipse, EllipseEntity(ellipse)).size(), 4u);
    EXPECT_FALSE(EditCurve::of(LineEntity(Vector2{1, 1}, Vector2{1, 1})));
    EXPECT_FALSE(EditCurve::of(LineEntity(Vector2{1, NAN}, Vector2{1, 1})));
    EXPECT_FALSE(EditCurve::of(TextEntity()));
    EXPECT_FALSE(EditCurve::of(PolylineEntity()));
    EXPECT_FALSE(EditCurve::of(SplineEntity()));
}

TEST(EditCurve, PartsLieOnTheWholeAndAddUp) {
    PolylineEntity polyline({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true);
    polyline.setBulge(1, 0.6);
    polyline.setBulge(3, -0.4);
    const SplineEntity spline = sampleSpline();
    const ArcEntity arc({1, 2}, 4.0, 5.0, 2.0);
    const EllipseEntity ellipse({0, 0}, {6, 1}, 0.3, 1.0, 5.5);
    for (const Entity* entity : {static_cast<const Entity*>(&polyline), static_cast<const Entity*>(&spline),
                                 static_cast<const Entity*>(&arc), static_cast<const Entity*>(&ellipse)}) {
        SCOPED_TRACE(std::string(displayName(entity->type())));
        const auto curve = EditCurve::of(*entity);
        ASSERT_TRUE(curve);
        const double end = curve->end();
        const double whole = curve->length(0.0, end);
        for (const double share : {0.1, 0.5, 0.77}) {
            const double u = curve->advance(0.0, whole * share);
            EXPECT_NEAR(curve->length(0.0, u), whole * share, 1e-6 * whole);
            const auto first = curve->part(0.0, u);
            const auto second = curve->part(u, end);
            ASSERT_TRUE(first && second);
            const auto a = EditCurve::of(*first);
            const auto b = EditCurve::of(*second);
            EXPECT_NEAR(a->length(a->start(), a->end()) + b->length(b->start(), b->end()), whole, 1e-6 * whole);
            for (const EditCurve* part : {&*a, &*b})
                for (int i = 0; i <= 10; ++i)
                    EXPECT_LT(entity->distanceTo(part->pointAt(part->end() * i / 10.0)), 1e-7);
        }
    }
    // Over the start of a closed one.
    const auto ring = EditCurve::of(polyline);
    const auto over = EditCurve::of(*ring->part(3.5, 0.5));
    EXPECT_NEAR(over->length(0.0, over->end()), ring->length(3.5, 4.0) + ring->length(0.0, 0.5), 1e-9);
    // All of it, opened at one place.
    EXPECT_NEAR(EditCurve::of(*ring->part(1.25, 1.25))->length(0.0, 5.0), ring->length(0.0, 4.0), 1e-6);
}

TEST(EditCurve, MirroredPlanesGiveTheSamePlan) {
    ArcEntity arc({-3, 1}, 2.0, 0.2, 1.9);
    arc.setNormal({0, 0, -1});
    const auto curve = EditCurve::of(arc);
    ASSERT_TRUE(curve);
    const auto half = curve->part(0.0, 0.5);
    EXPECT_LT(half->distanceTo(curve->pointAt(0.25)), 1e-9);
    EXPECT_GT(half->distanceTo(curve->pointAt(0.9)), 0.1);
    PolylineEntity square({{0, 0}, {4, 0}, {4, 4}, {0, 4}}, true);
    square.setNormal({0, 0, -1});
    const Vector2 inside = EditCurve::of(square)->pointAt(0.5).lerp(EditCurve::of(square)->pointAt(2.5), 0.5);
    const auto parallels = offsetEntity(square, std::copysign(1.0, *offsetDistanceTo(square, inside)), {});
    ASSERT_EQ(parallels.size(), 1u);
    EXPECT_NEAR(static_cast<PolylineEntity&>(*parallels[0]).area(), 4.0, 1e-9);
}

TEST(Corner, FilletsTouchBothCurvesWhereverTheyArePicked) {
    const LineEntity line({-20, 1}, {20, 4});
    const LineEntity steep({3, -20}, {1, 20});
    const ArcEntity arc({0, 0}, 8.0, 0.3, 6.0);
    const CircleEntity circle({12, 5}, 4.0);
    const Entity* kinds[] = {&line, &steep, &arc, &circle};
    int made = 0;
    for (const Entity* a : kinds)
        for (const Entity* b : kinds)
            for (const double radius : {0.5, 1.5, 3.0})
                for (int pick = 0; pick < 16; ++pick) {
                    if (a == b) continue;
                    const auto first = EditCurve::of(*a);
                    const auto second = EditCurve::of(*b);
                    const PickedCurve p(*first, first->pointAt(0.1 + 0.25 * (pick % 4)));
                    const PickedCurve q(*second, second->pointAt(0.1 + 0.25 * (pick / 4)));
                    CornerFault fault;
                    const auto corner = filletCorner(p, q, radius, fault);
                    if (!corner) continue;
                    ++made;
                    const auto rounding = math::arcFromBulge(corner->from, corner->to, corner->bulge);
                    ASSERT_TRUE(rounding);
                    EXPECT_NEAR(rounding->radius, radius, 1e-6);
                    const auto cutA = cutToCorner(*first, corner->first);
                    const auto cutB = cutToCorner(*second, corner->second);
                    ASSERT_TRUE(cutA && cutB);
                    EXPECT_LT(cutA->distanceTo(corner->from), 1e-7);
                    EXPECT_LT(cutB->distanceTo(corner->to), 1e-7);
                }
    EXPECT_GT(made, 100);
}

TEST(Offset, SplinesAndTightOnes) {
    const SplineEntity spline = sampleSpline();
    const auto near = offsetEntity(spline, 0.05, math::OffsetGap::Extended);
    ASSERT_EQ(near.size(), 1u);
    EXPECT_EQ(near[0]->type(), EntityType::Spline);
    // Where it would fold back, what is left keeps its distance.
    const EllipseEntity flat({0, 0}, {10, 0}, 0.2);
    const auto inside = offsetEntity(flat, 1.0, math::OffsetGap::Extended);
    ASSERT_FALSE(inside.empty());
    for (const auto& part : inside) {
        ASSERT_EQ(part->type(), EntityType::Polyline);
        for (const Vector2& p : static_cast<const PolylineEntity&>(*part).vertices)
            EXPECT_NEAR(flat.distanceTo(p), 1.0, 5e-3);
    }
    EXPECT_TRUE(offsetEntity(flat, 3.0, math::OffsetGap::Extended).empty());
    EXPECT_TRUE(offsetEntity(CircleEntity({0, 0}, 1.0), 1.0, {}).empty());
    EXPECT_FALSE(offsetDistanceTo(CircleEntity({0, 0}, 1.0), {1, 0}));
}

TEST(Lengthen, EllipticArcsByTheirLength) {
    const EllipseEntity ellipse({0, 0}, {6, 0}, 0.5, 0.0, 1.0);
    const auto curve = EditCurve::of(ellipse);
    for (const double length : {1.0, 9.0, 15.0})
        for (const bool atEnd : {true, false}) {
            const auto changed = withLength(*curve, atEnd, length);
            ASSERT_TRUE(changed);
            EXPECT_NEAR(static_cast<EllipseEntity&>(*changed).length(), length, 1e-6);
        }
    EXPECT_FALSE(withLength(*curve, true, 1000.0));
    EXPECT_FALSE(withLength(*curve, true, 0.0));
}

}  // namespace
}  // namespace kova::engine
