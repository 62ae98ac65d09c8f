#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/xline.hpp"
#include "engine/model/idle_visitor.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::kTwoPi;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void expectNear(const Vector2& a, const Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}
void expectNear(const Bounds2& a, const Bounds2& b, double eps = 1e-9) {
    expectNear(a.min, b.min, eps);
    expectNear(a.max, b.max, eps);
}

/// Numbers and lists of numbers by key; `written` in file order. With `reading` set, assigns the numbers it holds.
class NumberVisitor final : public IdleVisitor {
public:
    bool isReading = false;
    std::map<std::string, double> numbers;
    std::map<std::string, std::vector<double>> lists;
    std::vector<std::string> written;

    bool reading() const override { return isReading; }

protected:
    void onNumber(const Field& f, double& v) override {
        const std::string key(f.key);
        if (isReading) {
            if (const auto it = numbers.find(key); it != numbers.end()) v = it->second;
        } else if (!f.optional || std::abs(v - f.fallback) > 1e-9) {
            numbers[key] = v;
            written.push_back(key);
        }
    }
    void onInteger(const Field& f, std::int64_t& v) override {
        auto number = static_cast<double>(v);
        onNumber(f, number);
        v = static_cast<std::int64_t>(number);
    }
    void onBoolean(const Field& f, bool& v) override {
        double number = v ? 1.0 : 0.0;
        onNumber(f, number);
        v = number != 0.0;
    }
    void onNumbers(const Field& f, std::vector<double>& v) override { list(f, v); }
    void onPoints(const Field& f, std::vector<Vector2>& v) override {
        if (!isReading && (!f.optional || !v.empty())) written.emplace_back(f.key);
    }
    bool beginList(const Field&, std::size_t& count) override { return !isReading && count > 0; }

private:
    void list(const Field& f, std::vector<double>& v) {
        const std::string key(f.key);
        if (isReading) {
            if (const auto it = lists.find(key); it != lists.end()) v = it->second;
        } else if (!f.optional || !v.empty()) {
            lists[key] = v;
            written.push_back(key);
        }
    }
};

template <class E>
NumberVisitor fieldsOf(E& entity) {
    NumberVisitor v;
    entity.describe(v);
    return v;
}

/// Collects everything an entity draws as one path.
class PathSink final : public OutlineSink {
public:
    using OutlineSink::stroke;
    void stroke(PathView p, const OutlineStyle&, const StrokeOptions&) override { path.append(p); }
    void fill(PathView p, const OutlineStyle&, const FillOptions&) override { path.append(p); }
    void text(const TextRun&, const OutlineStyle&) override {}
    void unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle&) override {
        path.moveTo(bothWays ? base - direction * 1000 : base).lineTo(base + direction * 1000);
    }
    Path path;
};
Path shapeOf(const Entity& entity) {
    PathSink sink;
    entity.emit(sink, outlineStyle(entity));
    return sink.path;
}
std::vector<Vector2> samples(const Path& path) {
    std::vector<Vector2> points;
    Vector2 from;
    for (const PathElement& e : path.view()) {
        if (e.kind != PathElement::Kind::Move)
            for (const double t : {0.0, 0.2, 0.5, 0.9, 1.0}) points.push_back(elementPoint(e, from, t));
        from = e.p;
    }
    return points;
}
/// Both paths cover the same points of the plane.
void expectSameShape(const Path& a, const Path& b, double eps, const std::string& what) {
    for (const Vector2& p : samples(a)) EXPECT_LE(nearestOnPath(b, p).distance_to(p), eps) << what << " " << p.text();
    for (const Vector2& p : samples(b)) EXPECT_LE(nearestOnPath(a, p).distance_to(p), eps) << what << " " << p.text();
}

/// One of each kind with nothing symmetric about it.
std::vector<std::unique_ptr<Entity>> specimens() {
    std::vector<std::unique_ptr<Entity>> list;
    list.push_back(std::make_unique<LineEntity>(Vector2{1, 2}, Vector2{4, 3}));
    list.push_back(std::make_unique<CircleEntity>(Vector2{3, 1}, 2.0));
    list.push_back(std::make_unique<ArcEntity>(Vector2{3, 1}, 2.0, 5.5, 2.0));
    auto polyline = std::make_unique<PolylineEntity>();
    polyline->addVertex({0, 0}, 0.5);
    polyline->addVertex({4, 0}, 0.0);
    polyline->addVertex({5, 3}, -1.5);
    polyline->addVertex({1, 4}, 0.2);
    polyline->closed = true;
    list.push_back(std::move(polyline));
    list.push_back(std::make_unique<PointEntity>(Vector2{7, 2}));
    auto spline = std::make_unique<SplineEntity>();
    spline->controlPoints = {{0, 0}, {1, 3}, {3, 3}, {4, -1}, {6, 0}};
    spline->knots = {0, 0, 0, 0, 1, 2, 2, 2, 2};
    list.push_back(std::move(spline));
    list.push_back(std::make_unique<EllipseEntity>(Vector2{1, 1}, Vector2{3, 1}, 0.4));
    list.push_back(std::make_unique<EllipseEntity>(Vector2{1, 1}, Vector2{3, 1}, 0.4, 5.0, 1.5));
    list.push_back(std::make_unique<XlineEntity>(Vector2{1, 1}, Vector2{2, 1}));
    list.push_back(std::make_unique<RayEntity>(Vector2{1, 1}, Vector2{2, 1}));
    return list;
}

TEST(CurveEntities, TypesDefaultsAndClones) {
    const EntityType types[] = {EntityType::Line,  EntityType::Circle, EntityType::Arc,     EntityType::Polyline,
                                EntityType::Point, EntityType::Spline, EntityType::Ellipse, EntityType::Ellipse,
                                EntityType::Xline, EntityType::Ray};
    const int numbers[] = {0, 1, 2, 3, 4, 11, 12, 12, 13, 14};
    std::size_t i = 0;
    for (const auto& e : specimens()) {
        EXPECT_EQ(e->type(), types[i]);
        EXPECT_EQ(static_cast<int>(e->type()), numbers[i++]);
        EXPECT_EQ(e->layer, Name("0"));
        EXPECT_EQ(e->color, Color::byLayer());
        EXPECT_EQ(e->linetype, Name("ByLayer"));
        EXPECT_EQ(e->lineweight, -1);
        EXPECT_TRUE(e->visible);
        EXPECT_EQ(e->normal(), Vector3(0, 0, 1));
        EXPECT_EQ(e->linetypeScale(), 1.0);
        e->layer = "Other";
        e->setThickness(3);
        const auto one = e->clone();
        const auto two = one->clone();
        EXPECT_NE(one->id(), two->id());
        EXPECT_NE(one->id(), e->id());
        EXPECT_EQ(two->layer, Name("Other"));
        EXPECT_EQ(two->thickness(), 3.0);
        EXPECT_EQ(fieldsOf(*two).numbers, fieldsOf(*e).numbers);
        EXPECT_EQ(fieldsOf(*two).lists, fieldsOf(*e).lists);
        EXPECT_EQ(two->bounds(), e->bounds());
    }
    EXPECT_EQ(displayName(static_cast<EntityType>(31)), "Unknown");
}

TEST(CurveEntities, BoundsAreThoseOfTheShape) {
    for (const auto& e : specimens()) {
        const Bounds2 box = e->bounds();
        expectNear(box, outlineBounds(*e), 1e-9);
        if (e->type() == EntityType::Xline || e->type() == EntityType::Ray) {
            EXPECT_EQ(box, Bounds2({1, 1}, {1, 1}));
            continue;
        }
        Bounds2 sampled;
        Vector2 from;
        const Path shape = shapeOf(*e);
        for (const PathElement& element : shape.view()) {
            if (element.kind != PathElement::Kind::Move)
                for (int i = 0; i <= 20000; ++i) sampled.expand(elementPoint(element, from, i / 20000.0));
            from = element.p;
        }
        expectNear(box, sampled, 1e-6);
    }
}

TEST(CurveEntities, TransformsCarryTheShape) {
    const Matrix4 matrices[] = {
        Matrix4::translation(10, -3),
        Matrix4::rotation_about({1, 1}, 2.2),
        Matrix4::mirror({0, 0}, {2, 1}),
        Matrix4::scaling_about({5, 5}, 0.3),
        Matrix4::translation(1, 2) * Matrix4::scaling(3, 0.5) * Matrix4::rotation_z(0.7),
        Matrix4::scaling(-2, 1),
    };
    for (const auto& e : specimens()) {
        for (std::size_t i = 0; i < std::size(matrices); ++i) {
            const Matrix4& m = matrices[i];
            const auto moved = transformedEntity(*e, m);
            EXPECT_NE(moved->id(), e->id());
            Path expected;
            transformPath(shapeOf(*e), m, expected);
            // An ellipse in arcs is no exact ellipse; an unbounded line is drawn in other lengths.
            const bool chain = e->type() == EntityType::Polyline && i >= 4;
            const bool unbounded = e->type() == EntityType::Xline || e->type() == EntityType::Ray;
            const std::string what = std::string(displayName(e->type())) + " " + std::to_string(i);
            if (unbounded) {
                expectNear(moved->nearestPoint(m.transform_point(Vector2{41, 21})), m.transform_point(Vector2{41, 21}));
                expectNear(moved->gripPoints()[0], m.transform_point(Vector2{1, 1}));
                continue;
            }
            expectSameShape(shapeOf(*moved), expected, chain ? 2e-4 : 1e-9, what);
        }
    }
}

TEST(CurveEntities, TransformsInSpaceGoThereAndBack) {
    // A turn about a slanted axis, and a mirror in a vertical plane.
    Matrix4 turn = Matrix4::object_to_world(Vector3{0.3, -0.5, 0.8}.normalized()) * Matrix4::translation(1, 2, 3);
    Matrix4 flip = turn * Matrix4::scaling(1, 1, -1);
    for (const Matrix4& m : {turn, flip}) {
        const Matrix4 back = *m.inverse();
        for (const auto& e : specimens()) {
            // An unbounded line has no z direction to come back from.
            if (e->type() == EntityType::Xline || e->type() == EntityType::Ray) continue;
            e->elevation = 2.5;
            const auto moved = transformedEntity(*e, m);
            EXPECT_EQ(moved->type(), e->type()) << displayName(e->type());
            // In plan the shape is what the matrix makes of the plane at z = 2.5.
            Path expected;
            transformPath(shapeOf(*e), m * Matrix4::translation(0, 0, 2.5), expected);
            expectSameShape(shapeOf(*moved), expected, 1e-9, std::string(displayName(e->type())));
            moved->transform(back);
            expectSameShape(shapeOf(*moved), shapeOf(*e), 1e-8, std::string(displayName(e->type())));
            // A spline keeps its heights point by point.
            if (e->type() != EntityType::Spline) {
                EXPECT_NEAR(moved->elevation, 2.5, 1e-9);
            }
            EXPECT_TRUE(moved->normal().near_equal({0, 0, 1}, 1e-9)) << displayName(e->type());
        }
    }
}

TEST(CurveEntities, BelowThePlane) {
    // Object coordinates of the normal -z run backwards in x.
    ArcEntity arc({-10, 5}, 2, 0, kPi / 2);
    arc.setNormal({0, 0, -1});
    expectNear(arc.bounds(), Bounds2({8, 5}, {10, 7}), 1e-12);
    expectNear(arc.gripPoints()[0], {8, 5}, 1e-12);
    expectNear(arc.gripPoints()[3], {10, 5}, 1e-12);
    expectNear(arc.nearestPoint({5, 5}), {8, 5}, 1e-12);
    arc.moveGrip(3, {20, 5});
    expectNear(arc.bounds(), Bounds2({18, 5}, {20, 7}), 1e-12);
    CircleEntity circle({-10, 5}, 2);
    circle.setNormal({0, 0, -1});
    EXPECT_NEAR(circle.distanceTo({10, 5}), 2.0, 1e-12);
    // An ellipse stands in world coordinates, but runs clockwise in plan.
    EllipseEntity ellipse({0, 0}, {2, 0}, 0.5, 0, kPi / 2);
    ellipse.setNormal({0, 0, -1});
    expectNear(ellipse.bounds(), Bounds2({0, -1}, {2, 0}), 1e-12);
    // A normal that is none counts as +z.
    circle.setNormal({kNan, 0, 0});
    EXPECT_EQ(circle.bounds(), Bounds2({-12, 3}, {-8, 7}));
}

// Line -------------------------------------------------------------------------------------------------------

TEST(LineEntity, NearestPointAndGrips) {
    LineEntity line({0, 0}, {10, 0});
    EXPECT_EQ(line.nearestPoint({3, 4}), Vector2(3, 0));
    EXPECT_EQ(line.nearestPoint({13, 4}), Vector2(10, 0));
    EXPECT_EQ(line.distanceTo({13, 4}), 5.0);
    EXPECT_EQ(LineEntity(Vector2{2, 3}, Vector2{2, 3}).nearestPoint({9, 9}), Vector2(2, 3));
    EXPECT_EQ(LineEntity(Vector2{2, 3}, Vector2{2 + 5e-6, 3}).nearestPoint({9, 9}), Vector2(2, 3));
    line.moveGrip(1, {5, 3});
    EXPECT_EQ(line.start, Vector2(0, 3));
    EXPECT_EQ(line.end, Vector2(10, 3));
    line.moveGrip(0, {1, 1});
    line.moveGrip(2, {7, 1});
    line.moveGrip(3, {99, 99});
    EXPECT_EQ(line.gripPoints(), (std::vector<Vector2>{{1, 1}, {4, 1}, {7, 1}}));
}

TEST(LineEntity, EndZ) {
    LineEntity flat({0, 0}, {1, 0});
    EXPECT_EQ(fieldsOf(flat).written, (std::vector<std::string>{"startX", "startY", "endX", "endY"}));
    LineEntity slanted(Vector3{0, 0, 5}, Vector3{1, 0, 8});
    EXPECT_EQ(slanted.elevation, 5.0);
    EXPECT_EQ(fieldsOf(slanted).numbers.at("endZ"), 8.0);
    // Whatever the two heights: what is written reads back.
    for (const auto& [z0, z1] : {std::pair{0.0, 0.0}, {5.0, 5.0}, {5.0, 0.0}, {0.0, 5.0}, {-1.0, 4.0}}) {
        LineEntity line(Vector3{0, 0, z0}, Vector3{1, 0, z1});
        NumberVisitor fields = fieldsOf(line);
        LineEntity read;
        read.elevation = z0;  // a common property
        fields.isReading = true;
        read.describe(fields);
        EXPECT_EQ(read.start3(), Vector3(0, 0, z0));
        EXPECT_EQ(read.end3(), Vector3(1, 0, z1));
    }
}

TEST(LineEntity, TransformsInSpace) {
    LineEntity line(Vector3{0, 0, 1}, Vector3{1, 0, 3});
    line.transform(Matrix4::translation(1, 2, 10) * Matrix4::scaling(2, 2, 2));
    EXPECT_EQ(line.start3(), Vector3(1, 2, 12));
    EXPECT_EQ(line.end3(), Vector3(3, 2, 16));
    // The homogeneous divisor.
    Matrix4 perspective;
    perspective.m[15] = 2;
    line.transform(perspective);
    EXPECT_EQ(line.end3(), Vector3(1.5, 1, 8));
    // A level line raised at one end gets a z of its own.
    LineEntity level({0, 0}, {2, 0});
    level.setThickness(4);
    Matrix4 tilt;  // a quarter turn about y
    tilt.m = {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1};
    level.transform(tilt);
    EXPECT_EQ(level.end3(), Vector3(0, 0, -2));
    EXPECT_TRUE(level.hasZ);
    EXPECT_EQ(level.normal(), Vector3(1, 0, 0));
    EXPECT_EQ(level.thickness(), 4.0);
}

// Circle and arc -----------------------------------------------------------------------------------------------

TEST(CircleEntity, DistanceGripsAndBounds) {
    CircleEntity circle({3, 4}, 2);
    EXPECT_EQ(circle.distanceTo({3, 4}), 2.0);
    EXPECT_EQ(circle.distanceTo({3, 9}), 3.0);
    EXPECT_EQ(circle.bounds(), Bounds2({1, 2}, {5, 6}));
    EXPECT_EQ(circle.gripPoints(), (std::vector<Vector2>{{3, 4}, {5, 4}, {3, 6}, {1, 4}, {3, 2}}));
    circle.moveGrip(2, {3, 9});
    EXPECT_EQ(circle.radius, 5.0);
    circle.moveGrip(0, {0, 0});
    EXPECT_EQ(circle.center, Vector2(0, 0));
    circle.moveGrip(1, {0, 0});  // would vanish
    EXPECT_EQ(circle.radius, 5.0);
    circle.moveGrip(5, {9, 9});
    EXPECT_EQ(circle.center, Vector2(0, 0));
}

TEST(CircleEntity, UnequalScalesMakeAnEllipse) {
    CircleEntity circle({1, 0}, 2);
    circle.layer = "Pipes";
    circle.setHandle(0x2A);
    circle.elevation = 3;
    circle.setThickness(5);
    const auto moved = transformedEntity(circle, Matrix4::scaling(1, 3));
    ASSERT_EQ(moved->type(), EntityType::Ellipse);
    const auto& ellipse = static_cast<const EllipseEntity&>(*moved);
    EXPECT_EQ(ellipse.layer, Name("Pipes"));
    EXPECT_EQ(ellipse.handle(), 0x2Au);
    EXPECT_EQ(ellipse.elevation, 3.0);
    EXPECT_EQ(ellipse.thickness(), 5.0);
    expectNear(ellipse.center, {1, 0});
    EXPECT_NEAR(ellipse.major.length(), 6.0, 1e-12);
    EXPECT_NEAR(ellipse.minorRatio, 1.0 / 3.0, 1e-12);
    EXPECT_TRUE(ellipse.isFull());
    expectNear(ellipse.bounds(), Bounds2({-1, -6}, {3, 6}));
    // Scaled in z only it stays a circle.
    const auto lifted = transformedEntity(circle, Matrix4::scaling(1, 1, 2));
    EXPECT_EQ(lifted->type(), EntityType::Circle);
    EXPECT_EQ(lifted->elevation, 6.0);
    EXPECT_EQ(lifted->thickness(), 10.0);
}

TEST(ArcEntity, GripsAndBounds) {
    const ArcEntity arc({0, 0}, 2, 1.5 * kPi, 0.5 * kPi);
    const auto grips = arc.gripPoints();
    ASSERT_EQ(grips.size(), 4u);
    EXPECT_EQ(grips[0], Vector2(0, -2));
    expectNear(grips[1], {2, 0}, 1e-15);
    EXPECT_EQ(grips[2], Vector2(0, 2));
    EXPECT_EQ(grips[3], Vector2(0, 0));
    EXPECT_EQ(arc.bounds(), Bounds2({0, -2}, {2, 2}));
    // Equal angles are a full turn.
    const ArcEntity full({0, 0}, 2, 1, 1);
    expectNear(full.midPoint(), full.startPoint() * -1.0);
    EXPECT_EQ(full.bounds(), Bounds2({-2, -2}, {2, 2}));
    EXPECT_EQ(ArcEntity({1, 1}, 5, 0, kPi / 2).bounds(), Bounds2({1, 1}, {6, 6}));
}

TEST(ArcEntity, MovingOneGripKeepsTheOthers) {
    const ArcEntity original({0, 0}, 2, 0, kPi);
    ArcEntity end = original;
    end.moveGrip(0, {5, 1});
    expectNear(end.startPoint(), {5, 1});
    expectNear(end.endPoint(), {-2, 0});
    EXPECT_NEAR(end.distanceTo({0, 2}), 0.0, 1e-9);
    ArcEntity middle = original;
    middle.moveGrip(1, {0, -1});  // to the other side of the chord
    EXPECT_NEAR(middle.distanceTo({0, -1}), 0.0, 1e-9);
    EXPECT_NEAR(middle.distanceTo({2, 0}), 0.0, 1e-9);
    EXPECT_NEAR(middle.distanceTo({-2, 0}), 0.0, 1e-9);
    EXPECT_LT(middle.sweep(), kPi);
    ArcEntity arc = original;
    arc.moveGrip(1, {0, 0});  // in line: no arc
    EXPECT_EQ(arc.center, original.center);
    EXPECT_EQ(arc.radius, 2.0);
    arc.moveGrip(3, {7, 7});
    expectNear(arc.startPoint(), {9, 7});
}

TEST(ArcEntity, TransformsOfAngles) {
    ArcEntity arc({1, 1}, 2, 0.25, 2.5);
    arc.transform(Matrix4::translation(5, 0));
    EXPECT_EQ(arc.startAngle, 0.25);  // untouched to the last bit
    EXPECT_EQ(arc.endAngle, 2.5);
    arc.transform(Matrix4::mirror({0, 0}, {1, 0}));
    EXPECT_NEAR(arc.startAngle, kTwoPi - 2.5, 1e-12);
    EXPECT_NEAR(arc.endAngle, kTwoPi - 0.25, 1e-12);
    EXPECT_EQ(arc.normal(), Vector3(0, 0, 1));
    // A full turn stays one under every rotation.
    for (int i = 1; i < 100; ++i) {
        ArcEntity full({0, 0}, 1, 0, kTwoPi);
        full.transform(Matrix4::rotation_z(0.1 * i));
        EXPECT_DOUBLE_EQ(full.sweep(), kTwoPi);
    }
}

// Polyline -----------------------------------------------------------------------------------------------------

TEST(PolylineEntity, ParallelListsMayBeShort) {
    PolylineEntity p({{0, 0}, {4, 0}, {4, 3}});
    EXPECT_EQ(p.bulge(2), 0.0);
    EXPECT_FALSE(p.hasBulges());
    p.setBulge(1, 0.5);
    p.setWidths(0, 1, 2);
    p.setBulge(7, 1);  // no such vertex
    EXPECT_EQ(p.bulges, (std::vector<double>{0, 0.5, 0}));
    p.insertVertex(1, {2, 0});
    EXPECT_EQ(p.bulges, (std::vector<double>{0, 0, 0.5, 0}));
    EXPECT_EQ(p.startWidth(0), 1.0);
    p.eraseVertex(0);
    EXPECT_EQ(p.bulges, (std::vector<double>{0, 0.5, 0}));
    EXPECT_EQ(p.endWidth(0), 0.0);
    p.eraseVertex(9);
    EXPECT_EQ(p.vertices.size(), 3u);
}

TEST(PolylineEntity, FieldsAreWrittenForEveryVertex) {
    PolylineEntity p({{0, 0}, {4, 0}, {4, 3}});
    NumberVisitor fields = fieldsOf(p);
    EXPECT_EQ(fields.written, (std::vector<std::string>{"closed", "vertices", "bulges", "startWidths", "endWidths"}));
    EXPECT_EQ(fields.lists.at("bulges"), (std::vector<double>{0, 0, 0}));
    fields.lists["bulges"] = {0, 0.5, 0};
    fields.isReading = true;
    p.describe(fields);
    EXPECT_EQ(p.bulges, (std::vector<double>{0, 0.5, 0}));
    EXPECT_TRUE(p.startWidths.empty());  // zeros need no room
    p.ltgen = true;
    p.spline = true;
    p.curveType = 6;
    EXPECT_EQ(fieldsOf(p).written, (std::vector<std::string>{"closed", "ltgen", "spline", "curveType", "vertices",
                                                             "bulges", "startWidths", "endWidths"}));
}

TEST(PolylineEntity, BoundsLengthAndArea) {
    PolylineEntity p({{0, 0}, {4, 0}});
    p.bulges = {1, 1};
    p.closed = true;
    expectNear(p.bounds(), Bounds2({0, -2}, {4, 2}), 1e-12);
    EXPECT_NEAR(p.length(), 4 * kPi, 1e-12);
    EXPECT_NEAR(p.area(), 4 * kPi, 1e-12);
    p.setWidths(0, 1, 1);
    p.setWidths(1, 1, 1);
    expectNear(p.bounds(), Bounds2({-0.5, -2.5}, {4.5, 2.5}), 1e-9);
    p.closed = false;  // the bulge of the last vertex no longer counts
    p.startWidths.clear();
    p.endWidths.clear();
    expectNear(p.bounds(), Bounds2({0, -2}, {4, 0}), 1e-12);
    EXPECT_NEAR(p.area(), 2 * kPi, 1e-12);
    EXPECT_EQ(PolylineEntity().area(), 0.0);
    EXPECT_TRUE(PolylineEntity().bounds().is_empty());
    EXPECT_EQ(PolylineEntity({{1, 2}}).bounds(), Bounds2({1, 2}, {1, 2}));
    EXPECT_EQ(PolylineEntity({{1, 2}}).nearestPoint({9, 9}), Vector2(1, 2));
}

TEST(PolylineEntity, NearestPointAgreesWithItsPath) {
    PolylineEntity p({{0, 0}, {4, 0}, {5, 3}, {1, 4}, {1, 4}, {-3, 1}}, true);
    p.bulges = {0.5, 0, -1.5, 2, 0.2, -6};
    for (double x = -9; x < 12; x += 0.7)
        for (double y = -9; y < 12; y += 0.7)
            EXPECT_NEAR(p.distanceTo({x, y}), nearestOnPath(p.path(), {x, y}).distance_to({x, y}), 1e-9);
    EXPECT_EQ(PolylineEntity().nearestPoint({3, 4}), Vector2(3, 4));
}

TEST(PolylineEntity, ReverseKeepsTheShape) {
    for (const bool closed : {false, true}) {
        PolylineEntity p({{0, 0}, {4, 0}, {5, 3}, {1, 4}}, closed);
        p.bulges = {0.5, 0, -1.5, 0.2};
        p.startWidths = {1, 2, 3, 4};
        p.endWidths = {5, 6, 7, 8};
        PolylineEntity turned = p;
        turned.reverse();
        expectSameShape(shapeOf(turned), shapeOf(p), 1e-9, "reversed");
        EXPECT_EQ(turned.vertices.front(), Vector2(1, 4));
        // The first segment is the old third one, its widths exchanged.
        EXPECT_EQ(turned.startWidth(0), 7.0);
        EXPECT_EQ(turned.endWidth(0), 3.0);
        turned.reverse();
        EXPECT_EQ(turned.vertices, p.vertices);
        EXPECT_EQ(turned.bulges, p.bulges);
        EXPECT_EQ(turned.startWidths, p.startWidths);
    }
}

TEST(PolylineEntity, EmitsWidthsForEveryDrawnElement) {
    class WidthSink final : public OutlineSink {
    public:
        using OutlineSink::stroke;
        void stroke(PathView p, const OutlineStyle&, const StrokeOptions& options) override {
            drawn = p.size() - 1;
            widths.assign(options.widths.begin(), options.widths.end());
            through = options.patternThroughVertices;
        }
        void fill(PathView, const OutlineStyle&, const FillOptions&) override {}
        void text(const TextRun&, const OutlineStyle&) override {}
        std::size_t drawn = 0;
        std::vector<Vector2> widths;
        bool through = false;
    };
    for (const double lastBulge : {0.0, 0.5}) {
        PolylineEntity p({{0, 0}, {4, 0}, {4, 3}}, true);
        p.setWidths(0, 1, 2);
        p.setBulge(2, lastBulge);
        p.ltgen = lastBulge != 0.0;
        WidthSink sink;
        p.emit(sink, outlineStyle(p));
        EXPECT_EQ(sink.widths.size(), sink.drawn);
        EXPECT_EQ(sink.widths[0], Vector2(1, 2));
        EXPECT_EQ(sink.through, p.ltgen);
    }
}

TEST(PolylineEntity, HugeOnesAreDrawnInPiecesWithoutGaps) {
    PolylineEntity p;
    for (int i = 0; i < 600000; ++i) p.vertices.emplace_back(i % 1000, i / 1000);
    p.closed = true;
    p.setWidths(7, 1, 1);
    class CountingSink final : public OutlineSink {
    public:
        using OutlineSink::stroke;
        void stroke(PathView path, const OutlineStyle&, const StrokeOptions& options) override {
            ++strokes;
            EXPECT_EQ(options.widths.size(), path.size() - 1);
            if (segments > 0) {
                EXPECT_EQ(path.front().p, end);
            }
            segments += path.size() - 1;
            end = path.back().p;
        }
        void fill(PathView, const OutlineStyle&, const FillOptions&) override {}
        void text(const TextRun&, const OutlineStyle&) override {}
        std::size_t strokes = 0;
        std::size_t segments = 0;
        Vector2 end;
    };
    CountingSink sink;
    p.emit(sink, outlineStyle(p));
    EXPECT_EQ(sink.segments, 600000u);
    EXPECT_EQ(sink.end, p.vertices[0]);
    EXPECT_GT(sink.strokes, 1u);
}

TEST(PolylineEntity, UnequalScalesKeepArcsClose) {
    PolylineEntity p({{0, 0}, {4, 0}});
    p.bulges = {1, 1};
    p.closed = true;
    p.setWidths(0, 0, 1);
    p.setWidths(1, 1, 0);
    p.records.push_back({1, PolylineRecord::kTangent, 0.0, 0});
    const auto moved = transformedEntity(p, Matrix4::scaling(1, 0.25));
    const auto& chain = static_cast<const PolylineEntity&>(*moved);
    const EllipseEntity ellipse({2, 0}, {2, 0}, 0.25);
    expectSameShape(shapeOf(chain), ellipse.path(), 1e-4, "ellipse in arcs");
    EXPECT_LT(chain.vertices.size(), 100u);
    // Widths run on evenly: 0 .. 0.5 .. 0 after the scale of the area.
    const std::size_t half = chain.vertices.size() / 2;
    EXPECT_NEAR(chain.endWidth(half - 1), 0.5, 1e-12);
    EXPECT_NEAR(chain.startWidth(half / 2), 0.25, 1e-12);
    EXPECT_EQ(chain.records[0].vertex, static_cast<int>(half));
    EXPECT_EQ(chain.vertices[half], Vector2(4, 0));
}

// Ellipse ------------------------------------------------------------------------------------------------------

TEST(EllipseEntity, BoundsAndGrips) {
    EllipseEntity e({1, 2}, {4, 0}, 0.5);
    EXPECT_EQ(e.bounds(), Bounds2({-3, 0}, {5, 4}));
    EXPECT_EQ(e.gripPoints().size(), 5u);
    e.moveGrip(2, {1, 5});
    EXPECT_DOUBLE_EQ(e.minorRatio, 0.75);
    e.moveGrip(1, {3, 2});  // now the other axis is the longer one
    EXPECT_NEAR(e.major.length(), 3.0, 1e-12);
    EXPECT_NEAR(e.minorRatio, 2.0 / 3.0, 1e-12);
    expectNear(e.bounds(), Bounds2({-1, -1}, {3, 5}));
    e.moveGrip(0, {0, 0});
    EXPECT_EQ(e.center, Vector2(0, 0));

    EllipseEntity arc({0, 0}, {4, 0}, 0.5, 0, kPi / 2);
    EXPECT_EQ(arc.bounds(), Bounds2({0, 0}, {4, 2}));
    ASSERT_EQ(arc.gripPoints().size(), 7u);
    arc.moveGrip(6, {-8, 0});
    EXPECT_NEAR(arc.endParam, kPi, 1e-12);
    expectNear(arc.nearestPoint({0, 9}), {0, 2});
    expectNear(arc.nearestPoint({0.5, -9}), {4, 0});
    expectNear(arc.nearestPoint({-0.5, -9}), {-4, 0});
}

TEST(EllipseEntity, SimilaritiesKeepTheRatio) {
    EllipseEntity e({1, 2}, {4, 1}, 1.0 / 3.0, 0.5, 2.0);
    e.transform(Matrix4::rotation_z(1.1) * Matrix4::scaling(7, 7));
    EXPECT_EQ(e.minorRatio, 1.0 / 3.0);
    EXPECT_EQ(e.startParam, 0.5);
    e.transform(Matrix4::mirror({0, 0}, {1, 3}));
    EXPECT_NEAR(e.sweep(), 1.5, 1e-12);
    EXPECT_EQ(e.normal(), Vector3(0, 0, 1));
    // Back to a circle: equal axes.
    EllipseEntity flat({0, 0}, {4, 0}, 0.25);
    flat.transform(Matrix4::scaling(1, 4));
    EXPECT_NEAR(flat.minorRatio, 1.0, 1e-12);
    EXPECT_NEAR(flat.length(), 8 * kPi, 1e-9);
}

// Spline -------------------------------------------------------------------------------------------------------

TEST(SplineEntity, FitPointsAloneAreACurve) {
    SplineEntity s;
    s.fitPoints = {{0, 0}, {5, 5}, {10, 0}};
    EXPECT_NEAR(s.distanceTo({5, 5}), 0.0, 1e-9);
    EXPECT_EQ(s.gripPoints(), s.fitPoints);
    s.moveGrip(1, {5, 8});
    EXPECT_TRUE(s.controlPoints.empty());
    EXPECT_NEAR(s.distanceTo({5, 8}), 0.0, 1e-9);
    const Path before = s.path();
    s.fitThroughPoints();
    EXPECT_EQ(s.controlPoints.size(), 5u);
    expectSameShape(s.path(), before, 1e-9, "fitted");
    s.moveGrip(0, {1, -1});
    EXPECT_EQ(s.controlPoints.front(), Vector2(1, -1));
    EXPECT_NEAR(s.distanceTo({5, 8}), 0.0, 1e-9);
    s.moveGrip(99, {0, 0});
}

TEST(SplineEntity, MovingAFitPointKeepsEndDirections) {
    SplineEntity s;
    s.fitPoints = {{0, 0}, {5, 5}, {10, 0}};
    // Leaves straight down and arrives straight up: no free ends.
    s.degree = 3;
    s.controlPoints = {{0, 0}, {0, -4}, {5, 14}, {10, -4}, {10, 0}};
    s.knots = {0, 0, 0, 0, 7, 14, 14, 14, 14};
    s.moveGrip(1, {5, 9});
    EXPECT_NEAR(s.distanceTo({5, 9}), 0.0, 1e-9);
    const Vector2 leaving = s.controlPoints[1] - s.controlPoints[0];
    EXPECT_NEAR(leaving.x, 0.0, 1e-9);
    EXPECT_LT(leaving.y, 0.0);
}

TEST(SplineEntity, IncompleteDataIsCompleted) {
    SplineEntity s;
    s.controlPoints = {{0, 0}, {2, 4}, {4, 0}};
    EXPECT_FALSE(s.bounds().is_empty());  // too few points for the degree, no knots
    EXPECT_NEAR(s.bounds().max.y, 2.0, 1e-12);
    s.closed = true;
    s.controlPoints = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    const Path ring = s.path();
    EXPECT_EQ(ring.view().back().kind, PathElement::Kind::Close);
    expectNear(s.bounds().center(), {2, 2});
    s.weights = {1, 1, 0, -1};  // unusable: as if there were none
    expectSameShape(s.path(), ring, 1e-9, "weights");
    s.controlPoints[2] = {kNan, 1};
    EXPECT_TRUE(s.path().empty());
    EXPECT_TRUE(s.bounds().is_empty());
    s.nearestPoint({1, 1});
    SplineEntity single;
    single.fitPoints = {{3, 3}};
    EXPECT_EQ(single.bounds(), Bounds2({3, 3}, {3, 3}));
    single.degree = 1000000;
    EXPECT_EQ(single.nearestPoint({1, 1}), Vector2(3, 3));
}

TEST(SplineEntity, RationalCurvesAreExactWhereItCounts) {
    // A quarter circle.
    SplineEntity s;
    s.degree = 2;
    s.controlPoints = {{2, 0}, {2, 2}, {0, 2}};
    s.knots = {0, 0, 0, 1, 1, 1};
    s.weights = {1, std::sqrt(0.5), 1};
    expectNear(s.nearestPoint({5, 5}), 2 * math::unitAt(kPi / 4), 1e-12);
    for (const Vector2& p : samples(s.path())) EXPECT_NEAR(p.length(), 2.0, 1e-6);
    EXPECT_NEAR(s.length(), kPi, 1e-6);
    expectNear(s.bounds(), Bounds2({0, 0}, {2, 2}), 1e-12);
}

TEST(SplineEntity, HelixFollowsSimilaritiesOnly) {
    SplineEntity s;
    s.controlPoints = {{1, 0}, {1, 1}, {-1, 1}, {-1, 0}};
    s.controlZ = {0, 1, 2, 3};
    s.helix.emplace();
    s.helix->start = {1, 0, 0};
    const auto turned = transformedEntity(s, Matrix4::mirror({0, 0}, {0, 1}) * Matrix4::scaling(2, 2, 2));
    const auto& t = static_cast<const SplineEntity&>(*turned);
    ASSERT_TRUE(t.helix);
    EXPECT_EQ(t.helix->topRadius, 2.0);
    EXPECT_FALSE(t.helix->ccw);
    EXPECT_EQ(t.controlZ, (std::vector<double>{0, 2, 4, 6}));
    EXPECT_TRUE(t.helix->start.near_equal({-2, 0, 0}));
    const auto squashed = transformedEntity(s, Matrix4::scaling(2, 1));
    EXPECT_FALSE(static_cast<const SplineEntity&>(*squashed).helix);
}

// Unbounded ----------------------------------------------------------------------------------------------------

TEST(Unbounded, NearestPointsAndGrips) {
    XlineEntity xline({1, 1}, {2, 0});
    RayEntity ray({1, 1}, {2, 0});
    EXPECT_EQ(xline.nearestPoint({-50, 7}), Vector2(-50, 1));
    EXPECT_EQ(ray.nearestPoint({-50, 7}), Vector2(1, 1));
    EXPECT_EQ(ray.nearestPoint({50, 7}), Vector2(50, 1));
    xline.moveGrip(0, {0, 0});
    EXPECT_EQ(xline.dir, Vector2(2, 0));
    xline.moveGrip(1, {0, 3});
    EXPECT_EQ(xline.dir, Vector2(0, 3));
    xline.moveGrip(1, {0, 0});  // no direction
    EXPECT_EQ(xline.dir, Vector2(0, 3));
    ray.transform(Matrix4::scaling_about({0, 0}, 10));
    EXPECT_EQ(ray.origin, Vector2(10, 10));
    expectNear(ray.dir, {2, 0}, 1e-12);
    ray.dir = {0, 0};
    EXPECT_EQ(ray.nearestPoint({5, 5}), Vector2(10, 10));
    EXPECT_TRUE(shapeOf(ray).empty());
}

// Bad numbers --------------------------------------------------------------------------------------------------

TEST(CurveEntities, BadNumbersNeverHang) {
    for (const double bad : {kNan, kInf, 1e308, -1e308}) {
        std::vector<std::unique_ptr<Entity>> list;
        list.push_back(std::make_unique<LineEntity>(Vector2{bad, 0}, Vector2{1, bad}));
        list.push_back(std::make_unique<CircleEntity>(Vector2{bad, 0}, bad));
        list.push_back(std::make_unique<ArcEntity>(Vector2{0, 0}, 1, bad, 1));
        list.push_back(std::make_unique<ArcEntity>(Vector2{bad, 0}, bad, 0, bad));
        auto polyline = std::make_unique<PolylineEntity>(std::vector<Vector2>{{0, 0}, {bad, 1}, {2, 2}}, true);
        polyline->bulges = {bad, 1, bad};
        polyline->startWidths = {bad, 1};
        list.push_back(std::move(polyline));
        list.push_back(std::make_unique<EllipseEntity>(Vector2{0, 0}, Vector2{bad, 1}, bad, bad, bad));
        auto spline = std::make_unique<SplineEntity>();
        spline->fitPoints = {{0, 0}, {bad, 1}, {2, 2}, {3, bad}};
        list.push_back(std::move(spline));
        auto knots = std::make_unique<SplineEntity>();
        knots->controlPoints = {{0, 0}, {1, 1}, {2, 2}, {3, bad}};
        knots->knots = {0, 0, 0, 0, bad, bad, bad, bad};
        knots->weights = {1, bad, 1, 1};
        list.push_back(std::move(knots));
        list.push_back(std::make_unique<RayEntity>(Vector2{0, 0}, Vector2{bad, bad}));
        for (const auto& e : list) {
            e->bounds();
            e->nearestPoint({1, 2});
            e->distanceTo({bad, 2});
            e->gripPoints();
            shapeOf(*e);
            outlineBounds(*e);
            nearestOnOutline(*e, {3, 4});
            for (std::size_t i = 0; i < 8; ++i) e->clone()->moveGrip(i, {bad, 1});
            transformedEntity(*e, Matrix4::rotation_z(1) * Matrix4::scaling(1, bad));
            transformedEntity(*e, Matrix4::object_to_world({0, 1, 1}) * Matrix4::scaling(0, 1, 0));
        }
    }
}

}  // namespace
}  // namespace kova::engine
