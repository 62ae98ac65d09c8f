#include "math/curves/path.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/records.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::kTwoPi;
using math::Matrix4;
using math::Vector2;
using Kind = PathElement::Kind;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void expectNear(const Vector2& a, const Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}

std::vector<Kind> kinds(const Path& path) {
    std::vector<Kind> list;
    for (const PathElement& e : path.view()) list.push_back(e.kind);
    return list;
}

TEST(Path, BuildersStartAndJoinFigures) {
    Path path;
    path.arc({0, 0}, 2, 0, kPi / 2);
    EXPECT_EQ(kinds(path), (std::vector{Kind::Move, Kind::Arc}));
    EXPECT_EQ(path.view()[0].p, Vector2(2, 0));
    EXPECT_EQ(path.current(), Vector2(0, 2));
    // An arc that starts where the last one ended joins on; one that does not is reached by a line.
    path.arc({0, 4}, 2, 1.5 * kPi, kPi);
    path.arc({10, 10}, 1, 0, 1);
    EXPECT_EQ(kinds(path), (std::vector{Kind::Move, Kind::Arc, Kind::Arc, Kind::Line, Kind::Arc}));
    // After a close comes a new figure from the same start; moves in a row leave the last one.
    Path closed;
    closed.moveTo({9, 9}).moveTo({1, 1}).lineTo({2, 1}).close().lineTo({1, 5});
    EXPECT_EQ(kinds(closed), (std::vector{Kind::Move, Kind::Line, Kind::Close, Kind::Move, Kind::Line}));
    EXPECT_EQ(closed.view()[2].p, Vector2(1, 1));
    EXPECT_EQ(closed.view()[3].p, Vector2(1, 1));
    // Nothing to close.
    EXPECT_TRUE(Path().close().empty());
    EXPECT_TRUE(Path().polygon({}).empty());
}

TEST(Path, BulgesEndExactlyInTheirPoints) {
    Path path;
    path.moveTo({0.1, 0.2}).bulgeTo({0.7, 0.3}, 0.4).bulgeTo({5, 5}, 0.0).bulgeTo({5, 5}, 1.0).bulgeTo({6, 5}, kNan);
    EXPECT_EQ(kinds(path), (std::vector{Kind::Move, Kind::Arc, Kind::Line, Kind::Line, Kind::Line}));
    EXPECT_EQ(path.view()[1].p, Vector2(0.7, 0.3));
    expectNear(elementPoint(path.view()[1], {0.1, 0.2}, 0.0), {0.1, 0.2}, 1e-15);
    expectNear(elementPoint(path.view()[1], {0.1, 0.2}, 0.5), math::bulgeMidPoint({0.1, 0.2}, {0.7, 0.3}, 0.4), 1e-15);
}

TEST(Path, BoundsAreExact) {
    EXPECT_EQ(pathBounds(Path().arc({10, 20}, 5, 0, kTwoPi)), Bounds2({5, 15}, {15, 25}));
    EXPECT_EQ(pathBounds(Path().arc({0, 0}, 5, 0, kPi)), Bounds2({-5, 0}, {5, 5}));
    EXPECT_EQ(pathBounds(Path().arc({0, 0}, 5, kPi, 0)), Bounds2({-5, 0}, {5, 5}));
    EXPECT_EQ(pathBounds(Path().moveTo({0, 0}).cubicTo({0, 4}, {4, 4}, {4, 0})), Bounds2({0, 0}, {4, 3}));
    // A move alone draws nothing.
    EXPECT_TRUE(pathBounds(Path().moveTo({100, 100})).is_empty());
    EXPECT_EQ(pathBounds(Path().moveTo({1, 1}).lineTo({2, 2}).moveTo({100, 100})), Bounds2({1, 1}, {2, 2}));
    EXPECT_EQ(pathBounds(Path().moveTo({1, 1}).lineTo({kNan, kNan}).lineTo({2, 2})), Bounds2({1, 1}, {2, 2}));
}

TEST(Path, FlatteningKeepsTheTolerance) {
    Path path;
    path.moveTo({0, 0}).bulgeTo({10, 0}, -1.5).cubicTo({20, 30}, {-10, 30}, {0, 0}).close();
    path.ellipticArc({50, 0}, {20, 5}, {-1, 3}, 0.4, 5.0);
    for (const double tolerance : {1.0, 1e-2, 1e-4}) {
        const auto figures = flattenPath(path, tolerance);
        ASSERT_EQ(figures.size(), 2u);
        EXPECT_EQ(figures[0].front(), figures[0].back());
        std::size_t chords = 0;
        for (const auto& figure : figures) {
            chords += figure.size() - 1;
            for (std::size_t i = 0; i + 1 < figure.size(); ++i)
                for (const double t : {0.25, 0.5, 0.75}) {
                    const Vector2 p = figure[i].lerp(figure[i + 1], t);
                    EXPECT_LE(nearestOnPath(path, p).distance_to(p), tolerance * 1.0001);
                }
        }
        EXPECT_LT(chords, 20.0 + 40.0 / std::sqrt(tolerance));
    }
}

TEST(Path, FlatteningBadNumbersIsBounded) {
    const auto huge = flattenPath(Path().arc({0, 0}, 1e300, 0, 1e9), 1e-9);
    ASSERT_EQ(huge.size(), 1u);
    EXPECT_LE(huge[0].size(), 4097u);
    Path bad;
    bad.moveTo({0, 0}).lineTo({kNan, 1}).lineTo({1, 1}).cubicTo({kInf, 0}, {0, kInf}, {2, 2});
    bad.arc({0, 0}, kNan, 0, kInf);
    for (const auto& figure : flattenPath(bad, 0.01))
        for (const Vector2& p : figure) EXPECT_TRUE(p.is_finite());
    nearestOnPath(bad, {1, 2});
    pathBounds(bad);
    insidePath(bad, {1, 2});
    EXPECT_TRUE(flattenPath({}, 1).empty());
    // A tolerance that is none still ends.
    EXPECT_FALSE(flattenPath(Path().arc({0, 0}, 1, 0, 1), -1).empty());
}

TEST(Path, NearestPlaceNamesElementAndParameter) {
    Path path;
    path.moveTo({0, 0}).lineTo({10, 0}).arc({10, 5}, 5, -kPi / 2, kPi / 2).lineTo({0, 10}).close();
    auto place = nearestPlace(path, {4, -3});
    ASSERT_TRUE(place);
    EXPECT_EQ(place->element, 1u);
    EXPECT_DOUBLE_EQ(place->t, 0.4);
    EXPECT_DOUBLE_EQ(place->distance, 3.0);
    place = nearestPlace(path, {20, 5});
    EXPECT_EQ(place->element, 2u);
    EXPECT_DOUBLE_EQ(place->t, 0.5);
    expectNear(place->point, {15, 5});
    place = nearestPlace(path, {-1, 5});
    EXPECT_EQ(place->element, 4u);
    expectNear(place->point, {0, 5});
    // Mirrored arcs run the other way round.
    Path mirrored;
    transformPath(path, Matrix4::mirror({0, 0}, {0, 1}), mirrored);
    place = nearestPlace(mirrored, {-20, 6});
    EXPECT_EQ(place->element, 2u);
    EXPECT_GT(place->t, 0.5);
    EXPECT_FALSE(nearestPlace(Path().moveTo({1, 1}), {0, 0}));
    EXPECT_EQ(nearestOnPath({}, {3, 4}), Vector2(3, 4));
}

TEST(Path, TransformsKeepArcsExact) {
    Path path;
    path.moveTo({0, 0}).bulgeTo({10, 0}, 0.7).cubicTo({12, 3}, {14, 3}, {15, 0}).close();
    const Matrix4 m = Matrix4::translation(3, 4) * Matrix4::rotation_z(0.5) * Matrix4::scaling(2, -0.5);
    Path moved;
    moved.moveTo({99, 99});  // replaced
    transformPath(path, m, moved);
    ASSERT_EQ(moved.view().size(), path.view().size());
    Vector2 from;
    Vector2 movedFrom;
    for (std::size_t i = 0; i < path.view().size(); ++i) {
        for (const double t : {0.0, 0.3, 1.0})
            expectNear(elementPoint(moved.view()[i], movedFrom, t),
                       m.transform_point(elementPoint(path.view()[i], from, t)), i == 0 ? 1e3 : 1e-12);
        from = path.view()[i].p;
        movedFrom = moved.view()[i].p;
    }
    // What is drawn on starts from the moved figure.
    moved.lineTo({0, 0});
    EXPECT_EQ(moved.view()[moved.view().size() - 2].p, m.transform_point(Vector2{0, 0}));
}

TEST(Path, Lengths) {
    Path path;
    path.moveTo({0, 0}).lineTo({3, 4}).bulgeTo({3, 6}, 1).close();
    EXPECT_NEAR(pathLength(path), 5 + kPi + std::hypot(3, 6), 1e-12);
}

TEST(Path, InsideCountsRingsArcsAndCurves) {
    Path ring;
    ring.arc({0, 0}, 5, 0, kTwoPi).close();
    ring.moveTo({-2, -2}).lineTo({2, -2}).lineTo({2, 2}).lineTo({-2, 2}).close();
    EXPECT_TRUE(insidePath(ring, {3, 0}));
    EXPECT_FALSE(insidePath(ring, {0, 0}));
    EXPECT_TRUE(insidePath(ring, {0, 0}, false));
    EXPECT_FALSE(insidePath(ring, {4, 4}));
    // Open figures count as closed.
    Path open;
    open.moveTo({0, 0}).lineTo({4, 0}).lineTo({0, 4});
    EXPECT_TRUE(insidePath(open, {1, 1}));
    EXPECT_FALSE(insidePath(open, {3, 3}));
    // A half ellipse and a curve.
    const Path half = Path().ellipticArc({0, 0}, {4, 0}, {0, 2}, 0, kPi).close();
    EXPECT_TRUE(insidePath(half, {3, 1}));
    EXPECT_FALSE(insidePath(half, {3, -1}));
    EXPECT_FALSE(insidePath(half, {3.9, 1.9}));
    const Path curve = Path().moveTo({0, 0}).cubicTo({0, 4}, {4, 4}, {4, 0}).close();
    EXPECT_TRUE(insidePath(curve, {2, 2.9}));
    EXPECT_FALSE(insidePath(curve, {2, 3.1}));
    EXPECT_FALSE(insidePath({}, {0, 0}));
}

TEST(StrokeBounds, WidthsReachOut) {
    const Path line = Path().moveTo({0, 0}).lineTo({10, 0});
    const Vector2 widths[] = {{2, 4}};
    EXPECT_EQ(strokeBounds(line, widths), Bounds2({0, -2}, {10, 2}));
    // A ring of even width has exact sides.
    const Path circle = Path().moveTo({-5, 0}).bulgeTo({5, 0}, 1).bulgeTo({-5, 0}, 1).close();
    const Vector2 even[] = {{2, 2}, {2, 2}, {2, 2}};
    const Bounds2 box = strokeBounds(circle, even);
    expectNear(box.min, {-6, -6});
    expectNear(box.max, {6, 6});
    // Fewer widths than elements: the rest has none.
    EXPECT_EQ(strokeBounds(Path().moveTo({0, 0}).lineTo({10, 0}).lineTo({10, 10}), widths), Bounds2({0, -2}, {10, 10}));
}

// Sinks ----------------------------------------------------------------------------------------------------

/// Keeps what it is given.
class RecordingSink : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(PathView p, const OutlineStyle&, const StrokeOptions& options) override {
        path.append(p);
        widths.assign(options.widths.begin(), options.widths.end());
    }
    void fill(PathView p, const OutlineStyle&, const FillOptions& options) override {
        path.append(p);
        if (options.gradient != nullptr) gradientAngle = options.gradient->angle;
    }
    void text(const TextRun& run, const OutlineStyle&) override { runs.push_back(run); }
    void unbounded(const Vector2& base, const Vector2& direction, bool, const OutlineStyle&) override {
        path.moveTo(base).lineTo(base + direction);
    }
    void pattern(PathView p, std::span<const HatchFamily> list, const OutlineStyle&) override {
        path.append(p);
        families.assign(list.begin(), list.end());
    }
    bool wants(const Bounds2& extents) const override { return extents.intersects({{0, 0}, {1, 1}}); }

    Path path;
    std::vector<Vector2> widths;
    std::vector<TextRun> runs;
    std::vector<HatchFamily> families;
    double gradientAngle = 0.0;
};

TEST(TransformSink, CarriesEverythingAlong) {
    const Matrix4 m = Matrix4::translation(10, 0) * Matrix4::rotation_z(kPi / 2) * Matrix4::scaling(3, 3);
    RecordingSink target;
    TransformSink sink(target, m);
    const OutlineStyle style;

    sink.line({0, 0}, {1, 0}, style);
    expectNear(target.path.current(), {10, 3});
    StrokeOptions options;
    const Vector2 widths[] = {{1, 2}};
    options.widths = widths;
    sink.stroke(Path().moveTo({0, 0}).lineTo({0, 1}), style, options);
    expectNear(target.path.current(), {7, 0});
    ASSERT_EQ(target.widths.size(), 1u);
    expectNear(target.widths[0], {3, 6});

    TextRun run;
    run.origin = {1, 1};
    sink.text(run, style);
    expectNear(target.runs[0].origin, {7, 3});
    expectNear(target.runs[0].xAxis, {0, 3});
    expectNear(target.runs[0].yAxis, {-3, 0});

    sink.unbounded({0, 0}, {1, 0}, true, style);
    expectNear(target.path.current(), {10, 1});

    GradientFill gradient;
    FillOptions filling;
    filling.gradient = &gradient;
    sink.fill(Path().moveTo({0, 0}).lineTo({1, 0}).lineTo({0, 1}).close(), style, filling);
    EXPECT_NEAR(target.gradientAngle, kPi / 2, 1e-12);

    // Asked for the place where the extents will lie.
    EXPECT_FALSE(sink.wants({{0, 0}, {1, 1}}));
    EXPECT_TRUE(sink.wants({{0, 3}, {0.1, 3.2}}));
}

TEST(TransformSink, PatternFamiliesStayOnTheirLines) {
    HatchFamily family;
    family.angle = 0.3;
    family.origin = {1, 2};
    family.shift = {0.5, 2};
    family.dashes = {1, -0.5};
    const Matrix4 m = Matrix4::translation(-3, 1) * Matrix4::rotation_z(1) * Matrix4::scaling(2, -0.7);
    RecordingSink target;
    TransformSink sink(target, m);
    sink.pattern(Path().moveTo({0, 0}).lineTo({1, 0}).lineTo({0, 1}).close(), std::span(&family, 1), {});
    ASSERT_EQ(target.families.size(), 1u);
    const HatchFamily& f = target.families[0];
    // The start of dash i on line k, in both families.
    const auto dashStart = [](const HatchFamily& h, int k, double along) {
        const Vector2 d = Vector2::from_angle(h.angle);
        return h.origin + (d * h.shift.x + d.perpendicular() * h.shift.y) * k + d * along;
    };
    for (int k : {0, 1, -4}) {
        expectNear(dashStart(f, k, 0), m.transform_point(dashStart(family, k, 0)));
        expectNear(dashStart(f, k, f.dashes[0]), m.transform_point(dashStart(family, k, family.dashes[0])));
    }
}

/// Emits whatever a test wants emitted: a stand-in for kinds with complicated shapes.
class Drawn final : public Entity {
public:
    explicit Drawn(std::function<void(OutlineSink&)> f) : draw(std::move(f)) {}
    EntityType type() const override { return EntityType::Hatch; }
    Bounds2 bounds() const override { return outlineBounds(*this); }
    void transform(const Matrix4&) override {}
    std::unique_ptr<Entity> clone() const override { return std::make_unique<Drawn>(draw); }
    double distanceTo(const Vector2& p) const override { return nearestPoint(p).distance_to(p); }
    Vector2 nearestPoint(const Vector2& p) const override { return nearestOnOutline(*this, p); }
    std::vector<Vector2> gripPoints() const override { return {}; }
    void moveGrip(std::size_t, const Vector2&) override {}
    void describe(FieldVisitor&) override {}
    void emit(OutlineSink& sink, const OutlineStyle&) const override { draw(sink); }
    std::size_t sizeInBytes() const override { return sizeof *this; }

    std::function<void(OutlineSink&)> draw;
};

TEST(Outline, FillsAndWidthsAreHitInside) {
    const Drawn fill([](OutlineSink& sink) {
        sink.fill(Path().moveTo({0, 0}).lineTo({10, 0}).lineTo({10, 10}).lineTo({0, 10}).close(), {});
    });
    EXPECT_EQ(nearestOnOutline(fill, {3, 4}), Vector2(3, 4));
    expectNear(nearestOnOutline(fill, {13, 4}), {10, 4});
    const Drawn wide([](OutlineSink& sink) {
        StrokeOptions options;
        const Vector2 widths[] = {{2, 2}};
        options.widths = widths;
        sink.stroke(Path().moveTo({0, 0}).lineTo({10, 0}), {}, options);
    });
    EXPECT_EQ(nearestOnOutline(wide, {5, 0.7}), Vector2(5, 0.7));
    expectNear(nearestOnOutline(wide, {5, 4}), {5, 1});
    const Drawn nothing([](OutlineSink&) {});
    EXPECT_EQ(nearestOnOutline(nothing, {5, 4}), Vector2(5, 4));
    EXPECT_TRUE(outlineBounds(nothing).is_empty());
}

TEST(Outline, ClipsCutWhatIsSeen) {
    const auto draw = [](bool inverted) {
        return [inverted](OutlineSink& sink) {
            sink.pushClip(Path().moveTo({2, -1}).lineTo({4, -1}).lineTo({4, 1}).lineTo({2, 1}).close(), inverted);
            sink.line({0, 0}, {10, 0}, {});
            sink.popClip();
            sink.line({0, 50}, {1, 50}, {});
        };
    };
    const Drawn inside(draw(false));
    expectNear(nearestOnOutline(inside, {9, 0}), {4, 0});
    expectNear(nearestOnOutline(inside, {3, 0.5}), {3, 0});
    EXPECT_EQ(outlineBounds(inside), Bounds2({0, 0}, {4, 50}));
    const Drawn outside(draw(true));
    expectNear(nearestOnOutline(outside, {2.9, 0.5}), {2, 0});
    expectNear(nearestOnOutline(outside, {9, 0}), {9, 0});
    EXPECT_EQ(outlineBounds(outside), Bounds2({0, 0}, {10, 50}));
}

TEST(Outline, UnboundedLinesMeasureAsTheirBase) {
    const RayEntity ray({1, 2}, {5, 0});
    EXPECT_EQ(outlineBounds(ray), Bounds2({1, 2}, {1, 2}));
    expectNear(nearestOnOutline(ray, {100, 7}), {100, 2});
    expectNear(nearestOnOutline(ray, {-100, 7}), {1, 2});
}

TEST(Outline, StylesInsideBlocks) {
    OutlineStyle outer;
    outer.layer = "Walls";
    outer.color = Color::index(3);
    outer.linetype = "DASHED";
    outer.lineweight = 50;
    LineEntity line;
    OutlineStyle style = nestedStyle(line, outer);
    EXPECT_EQ(style.layer, Name("Walls"));
    EXPECT_EQ(style.color, Color::byLayer());
    EXPECT_EQ(style.linetype, Name("ByLayer"));
    line.layer = "Doors";
    line.color = Color::byBlock();
    line.linetype = "byblock";
    line.lineweight = -2;
    style = nestedStyle(line, outer);
    EXPECT_EQ(style.layer, Name("Doors"));
    EXPECT_EQ(style.color, Color::index(3));
    EXPECT_EQ(style.linetype, Name("DASHED"));
    EXPECT_EQ(style.lineweight, 50);
}

}  // namespace
}  // namespace kova::engine
