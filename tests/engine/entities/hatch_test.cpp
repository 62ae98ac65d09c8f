#include "engine/entities/hatch.hpp"

#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/outline/hatch_lines.hpp"
#include "engine/libraries/libraries.hpp"
#include "engine/entities/shape_sink.hpp"
#include "io/native/native_file.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;
using Kind = ShapeSink::Shape::Kind;

HatchRing box(double x0, double y0, double x1, double y1) { return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}; }

HatchFamily family(double degrees, double step, std::vector<double> dashes = {}, double lag = 0.0) {
    return {math::toRadians(degrees), {}, {lag, step}, std::move(dashes)};
}

HatchLines lines(const std::vector<HatchRing>& rings, const HatchFamily& f, const Bounds2* window = nullptr) {
    return hatchLines(rings, std::vector<HatchFamily>{f}, window);
}

double total(const HatchLines& l) {
    double sum = 0.0;
    for (const HatchSegment2& s : l.segments) sum += s.a.distance_to(s.b);
    return sum;
}

HatchLoop loopOf(const HatchRing& ring) {
    HatchLoop loop;
    loop.type = HatchLoop::kExternal | HatchLoop::kPolyline;
    loop.vertices = ring;
    return loop;
}

TEST(HatchLines, ClipsLinesEvenOddAtComputedPlaces) {
    // A square of 10 with a hole of 4 in its middle; lines at y = 0.5, 1.5 ... by the origin.
    HatchFamily f = family(0, 1);
    f.origin = {0, 0.5};
    const HatchLines l = lines({box(0, 0, 10, 10), box(3, 3, 7, 7)}, f);
    EXPECT_FALSE(l.overflow);
    ASSERT_EQ(l.segments.size(), 6u + 4u * 2u);
    EXPECT_NEAR(total(l), 100 - 16, 1e-9);
    EXPECT_TRUE(l.segments[3].a.near_equal({0, 3.5}, 1e-12));
    EXPECT_TRUE(l.segments[3].b.near_equal({3, 3.5}, 1e-12));
    EXPECT_TRUE(l.segments[4].a.near_equal({7, 3.5}, 1e-12));

    // Lines through vertices and along edges: half-open, so every line is crossed an even number of times.
    const HatchLines edge = lines({box(0, 0, 10, 10)}, family(0, 5));
    EXPECT_EQ(edge.segments.size(), 2u);  // y = 0 and 5; the upper edge does not count
    const HatchLines diamond = lines({{{0, 0}, {2, -2}, {4, 0}, {2, 2}}}, family(0, 2));
    ASSERT_EQ(diamond.segments.size(), 1u + 0u);
    EXPECT_NEAR(total(diamond), 4, 1e-12);
    // At 45 degrees the length follows from area and distance.
    EXPECT_NEAR(total(lines({box(0, 0, 100, 100)}, family(45, 0.25))), 100 * 100 / 0.25, 30);
    // A negative step counts the same lines the other way.
    EXPECT_NEAR(total(lines({box(0, 0, 10, 10)}, family(0, -5))), 20, 1e-12);
}

TEST(HatchLines, DashesKeepTheirPhaseFromLineToLine) {
    // 2 on, 1 off; each line starts 0.5 later than the one below it.
    const HatchLines l = lines({box(0, 0, 10, 2.5)}, family(0, 1, {2, -1}, 0.5));
    // y = 0: 0-2 3-5 6-8 9-10; y = 1: 0.5-2.5 3.5-5.5 6.5-8.5 9.5-10; y = 2: 0-1... 1-3 4-6 7-9 and 0 (gap)
    ASSERT_EQ(l.segments.size(), 4u + 4u + 3u);
    EXPECT_TRUE(l.segments[3].a.near_equal({9, 0}, 1e-12));
    EXPECT_TRUE(l.segments[3].b.near_equal({10, 0}, 1e-12));
    EXPECT_TRUE(l.segments[4].a.near_equal({0.5, 1}, 1e-12));
    EXPECT_TRUE(l.segments[8].a.near_equal({1, 2}, 1e-12));
    EXPECT_NEAR(total(l), 7 + 6.5 + 6, 1e-12);

    const HatchLines dots = lines({box(-0.5, -0.5, 3.5, 0.5)}, family(0, 1, {0, -1}));
    EXPECT_TRUE(dots.segments.empty());
    ASSERT_EQ(dots.dots.size(), 4u);
    EXPECT_TRUE(dots.dots[3].near_equal({3, 0}, 1e-12));
    // A list may begin with a gap; one without gaps is a continuous line; dots alone stand as far apart as lines.
    EXPECT_TRUE(lines({box(0, -1, 3, 1)}, family(0, 5, {-1, 1})).segments[0].a.near_equal({1, 0}, 1e-12));
    EXPECT_EQ(lines({box(0, -1, 300, 1)}, family(0, 5, {1, 0, 2})).segments.size(), 1u);
    EXPECT_EQ(lines({box(-0.5, -0.5, 1.5, 1.5)}, family(0, 1, {0, 0})).dots.size(), 4u);
    EXPECT_TRUE(lines({box(0, 0, 3, 3)}, family(0, 1, {-1})).segments.empty());
}

TEST(HatchLines, LimitsWindowAndBadInput) {
    const std::vector<HatchRing> square{box(0, 0, 1000, 1000)};
    const HatchLines dense = lines(square, family(0, 1e-7));
    EXPECT_TRUE(dense.overflow);
    EXPECT_TRUE(dense.segments.empty());
    EXPECT_TRUE(lines(square, family(0, 1, {1e-9, -1e-9})).overflow);
    EXPECT_TRUE(lines(square, family(0, 1e-300)).overflow);
    // What is too dense as a whole can be shown in a small window.
    const Bounds2 window{{10, 10}, {10 + 1e-4, 10 + 1e-4}};
    const HatchLines near = lines(square, family(0, 1e-7), &window);
    EXPECT_FALSE(near.overflow);
    EXPECT_NEAR(static_cast<double>(near.segments.size()), 1000, 2);
    EXPECT_NEAR(near.segments[5].a.distance_to(near.segments[5].b), 1e-4, 1e-9);

    const double nan = std::nan("");
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(lines({{{0, 0}, {nan, 0}, {1, 1}}, {{0, 0}, {1, 0}}}, family(0, 0.1)).segments.empty());
    for (const HatchFamily& f : {family(nan, 1), family(0, nan), family(0, inf), family(0, 1, {nan, -1}),
                                 family(0, 1, {inf, -1}), family(0, 1, {}, inf), family(0, 0)})
        EXPECT_LE(lines(square, f).segments.size(), 1001u);
    EXPECT_TRUE(lines({box(0, 0, 1e300, 1e300)}, family(0, 1)).overflow);
    // A pattern far from its origin still has the right number of lines.
    EXPECT_EQ(lines({box(1e8, 1e8 + 0.5, 1e8 + 10, 1e8 + 10.5)}, family(0, 1)).segments.size(), 10u);
}

TEST(HatchLines, EveryBuiltInPatternFillsASheet) {
    for (const HatchPattern& pattern : builtinHatchPatterns(true)) {
        // Those of masonry and floors are at the size of buildings.
        const double scale = pattern.name.view().starts_with("AR-") ? 10 : 1;
        const Bounds2 sheet{{0, 0}, {420 * scale, 297 * scale}};
        const std::vector<HatchRing> rings{box(0, 0, sheet.max.x, sheet.max.y)};
        const HatchLines l = hatchLines(rings, pattern.families);
        EXPECT_FALSE(l.overflow) << pattern.name.str();
        EXPECT_GT(l.segments.size() + l.dots.size(), 40u) << pattern.name.str();
        for (const HatchSegment2& s : l.segments)
            ASSERT_TRUE(sheet.inflated(1e-6).contains_point((s.a + s.b) / 2)) << pattern.name.str();
    }
}

TEST(Hatch, IslandStylesChooseBoundaries) {
    HatchEntity hatch;
    // Out of order on purpose: what lies in what follows from the boundaries, not from their order.
    for (const double inset : {20.0, 0.0, 30.0, 10.0})
        hatch.loops.push_back(loopOf(box(inset, inset, 100 - inset, 100 - inset)));
    EXPECT_NEAR(hatch.area(), 10000 - 6400 + 3600 - 1600, 1e-6);
    hatch.islandStyle = HatchEntity::kOuter;
    EXPECT_NEAR(hatch.area(), 10000 - 6400, 1e-6);
    EXPECT_DOUBLE_EQ(hatch.distanceTo({5, 50}), 0);
    EXPECT_NEAR(hatch.distanceTo({25, 50}), 15, 1e-12);  // an island that the style leaves out
    hatch.islandStyle = HatchEntity::kIgnore;
    EXPECT_NEAR(hatch.area(), 10000, 1e-6);
    EXPECT_DOUBLE_EQ(hatch.distanceTo({25, 50}), 0);
    EXPECT_NEAR(hatch.distanceTo({50, 103}), 3, 1e-12);
    EXPECT_EQ(shapesOf(hatch).shapes.at(0).kind, Kind::Fill);
}

TEST(Hatch, EdgesAreChainedWhateverTheirOrder) {
    // A half disc of radius 5 over a rectangle, edges shuffled and partly reversed.
    HatchLoop loop;
    loop.edges = {HatchLineEdge{{5, 0}, {5, -4}}, HatchLineEdge{{-5, -4}, {-5, 0}}, HatchArcEdge{{0, 0}, 5, 0, kPi},
                  HatchLineEdge{{5, -4}, {-5, -4}}};
    HatchEntity hatch;
    hatch.loops = {loop};
    const double want = 40 + kPi * 25 / 2;
    EXPECT_NEAR(hatch.area(), want, 1e-3);
    EXPECT_EQ(hatch.bounds(), (Bounds2{{-5, -4}, {5, 5}}));
    std::get<HatchLineEdge>(hatch.loops[0].edges[3]) = {{-5, -4}, {5, -4}};
    std::get<HatchArcEdge>(hatch.loops[0].edges[2]) = {{0, 0}, 5, kPi, 0};  // clockwise
    EXPECT_NEAR(hatch.area(), want, 1e-3);
    std::get<HatchLineEdge>(hatch.loops[0].edges[0]) = {{5, -4}, {5, 0}};
    EXPECT_NEAR(hatch.area(), want, 1e-3);
    // Two rings among the edges of one loop, and a small gap.
    loop.edges = {HatchArcEdge{{0, 0}, 5, 0, 2 * kPi}, HatchLineEdge{{20, 0}, {30, 0}},
                  HatchLineEdge{{30, 0}, {30, 10}}, HatchLineEdge{{30.001, 10}, {20, 0.001}}};
    hatch.loops = {loop};
    EXPECT_NEAR(hatch.area(), kPi * 25 + 50, 0.1);
    // A spline and an elliptic arc.
    HatchSplineEdge spline;
    spline.control = {{0, 0}, {0, 4}, {6, 4}, {6, 0}};
    spline.knots = {0, 0, 0, 0, 1, 1, 1, 1};
    loop.edges = {spline, HatchEllipseEdge{{3, 0}, {3, 0}, {0, 1}, 0, -kPi}};
    hatch.loops = {loop};
    EXPECT_NEAR(hatch.area(), 0.6 * 6 * 4 + kPi * 3 / 2, 1e-3);
}

TEST(Hatch, PatternsFollowEveryTransform) {
    Drawing drawing;
    auto owned = std::make_unique<HatchEntity>();
    HatchEntity& hatch = *owned;
    drawing.modelSpace().append(std::move(owned));
    hatch.loops = {loopOf(box(0, 0, 40, 30))};
    hatch.loops[0].bulges = {0.5};
    hatch.patternName = "ANSI33";
    hatch.patternScale = 2;
    hatch.patternAngle = 0.4;
    hatch.patternOrigin = {3, 1};
    const std::vector<HatchRing> rings{box(0, 0, 40, 30)};
    Matrix4 slant = Matrix4::scaling(1.5, 0.5);
    slant(0, 1) = 0.7;
    for (const Matrix4& m :
         {Matrix4::translation(5, 6), Matrix4::rotation_about({1, 1}, 1.0), Matrix4::scaling_about({2, 2}, 3.0),
          Matrix4::mirror({0, 0}, {2, 1}), Matrix4::mirror({0, 0}, {2, 1}), slant, Matrix4::mirror({1, 0}, {0, 7})}) {
        const HatchLines before = hatchLines(hatch.rings(), hatch.families(), 1e-4);
        const Path ringsBefore = hatch.rings();
        hatch.transform(m);
        const HatchLines after = hatchLines(hatch.rings(), hatch.families(), 1e-4);
        Path expected;
        transformPath(ringsBefore, m, expected);
        const Bounds2 want = pathBounds(expected);
        EXPECT_TRUE(hatch.bounds().min.near_equal(want.min, 1e-9) && hatch.bounds().max.near_equal(want.max, 1e-9));
        ASSERT_GT(before.segments.size(), 10u);
        // Every dash stands where the map carries it: its middle lies on a dash of the new pattern.
        int checked = 0;
        for (std::size_t i = 0; i < before.segments.size(); i += 7, ++checked) {
            const Vector2 middle = m.transform_point((before.segments[i].a + before.segments[i].b) / 2);
            double nearest = 1e9;
            for (const HatchSegment2& s : after.segments) {
                const Vector2 d = s.b - s.a;
                const double t = std::clamp((middle - s.a).dot(d) / d.length_squared(), 0.0, 1.0);
                nearest = std::min(nearest, middle.distance_to(s.a + d * t));
            }
            ASSERT_LT(nearest, 1e-6);
        }
        EXPECT_GT(checked, 2);
    }
    // A library pattern keeps its name through similarities, and a mirror image twice over is what it was.
    HatchEntity plain;
    plain.patternName = "BRICK";
    plain.patternAngle = 0.5;
    plain.loops = {loopOf(box(0, 0, 1, 1))};
    plain.transform(Matrix4::mirror({0, 0}, {1, 3}));
    EXPECT_TRUE(plain.patternMirrored);
    plain.transform(Matrix4::mirror({0, 0}, {1, 3}));
    EXPECT_FALSE(plain.patternMirrored);
    EXPECT_NEAR(plain.patternAngle, 0.5, 1e-12);
    EXPECT_TRUE(plain.ownPattern.empty());
}

TEST(Hatch, PatternKinds) {
    HatchEntity hatch;
    hatch.loops = {loopOf(box(0, 0, 10, 10))};
    hatch.patternType = HatchEntity::kUserDefined;
    hatch.patternName = "_USER";
    hatch.patternScale = 2.5;
    hatch.patternAngle = kPi / 6;
    hatch.doubled = true;
    std::vector<HatchFamily> f = hatch.families();
    ASSERT_EQ(f.size(), 2u);
    EXPECT_DOUBLE_EQ(f[0].shift.y, 2.5);
    EXPECT_NEAR(f[1].angle, kPi / 6 + kPi / 2, 1e-12);
    EXPECT_EQ(shapesOf(hatch).shapes.at(0).families.size(), 2u);

    // Final values from a file and back.
    const std::vector<HatchFamily> file{{1.1, {4, 5}, {0.3, -2}, {1, -0.5}}};
    hatch.patternOrigin = {1, 1};
    hatch.setFinalPattern(file);
    f = hatch.families();
    ASSERT_EQ(f.size(), 1u);
    EXPECT_NEAR(f[0].angle, 1.1, 1e-12);
    EXPECT_TRUE(f[0].origin.near_equal({4, 5}, 1e-12));
    EXPECT_TRUE(f[0].shift.near_equal({0.3, -2}, 1e-12));
    EXPECT_NEAR(f[0].dashes[1], -0.5, 1e-12);
    hatch.patternScale = 5;  // twice as large
    EXPECT_NEAR(hatch.families()[0].dashes[0], 2, 1e-12);

    hatch.ownPattern.clear();
    hatch.patternType = HatchEntity::kPredefined;
    hatch.patternName = "no such pattern";
    EXPECT_EQ(shapesOf(hatch).shapes.at(0).families.size(), 2u);  // lines, crossed

    hatch.patternName = "SOLID";
    hatch.gradient.emplace();
    hatch.gradient->name = "CYLINDER";
    hatch.gradient->stops = {{1.0, Color::index(1)}, {0.0, Color::rgb(0, 0, 200)}};
    const auto two = shapesOf(hatch).shapes.at(0);
    EXPECT_EQ(two.gradient, "CYLINDER");
    EXPECT_EQ(two.from, Color::rgb(0, 0, 200));
    EXPECT_EQ(two.to, Color::index(1));
    hatch.gradient->singleColor = true;
    hatch.gradient->tint = 1.0;
    EXPECT_EQ(shapesOf(hatch).shapes.at(0).to, Color::rgb(255, 255, 255));
    hatch.gradient->tint = 0.25;
    EXPECT_EQ(shapesOf(hatch).shapes.at(0).to, Color::rgb(0, 0, 100));
}

TEST(Hatch, GripsMoveBoundaryAndPattern) {
    HatchEntity hatch;
    hatch.loops = {loopOf(box(0, 0, 10, 10))};
    HatchLoop edges;
    edges.edges = {HatchLineEdge{{20, 0}, {30, 0}}, HatchLineEdge{{30, 0}, {30, 10}}, HatchLineEdge{{30, 10}, {20, 0}}};
    hatch.loops.push_back(edges);
    ASSERT_EQ(hatch.gripPoints().size(), 1u + 4u + 3u);
    EXPECT_EQ(hatch.gripPoints()[0], (Vector2{15, 5}));
    hatch.moveGrip(6, {31, 1});  // where the first edge ends and the second begins
    EXPECT_EQ(std::get<HatchLineEdge>(hatch.loops[1].edges[0]).end, (Vector2{31, 1}));
    EXPECT_EQ(std::get<HatchLineEdge>(hatch.loops[1].edges[1]).start, (Vector2{31, 1}));
    hatch.moveGrip(3, {12, 12});
    EXPECT_EQ(hatch.loops[0].vertices[2], (Vector2{12, 12}));
    const Bounds2 before = hatch.bounds();
    hatch.moveGrip(0, before.center() + Vector2{0, 100});
    EXPECT_NEAR(hatch.bounds().min.y, before.min.y + 100, 1e-9);
    EXPECT_EQ(hatch.patternOrigin, (Vector2{0, 100}));
    hatch.moveGrip(99, {0, 0});
}

TEST(Hatch, FilesKeepEveryFieldAndTheOrderOfEdges) {
    Drawing drawing;
    auto hatch = std::make_unique<HatchEntity>();
    hatch->patternType = HatchEntity::kCustom;
    hatch->patternName = "MINE";
    hatch->doubled = hatch->patternMirrored = true;
    hatch->seedPoints = {{1, 2}};
    hatch->ownPattern = {{0.5, {1, 2}, {3, 4}, {1, -2}}};
    hatch->gradient.emplace();
    hatch->gradient->stops = {{0.0, Color::index(30)}, {1.0, Color::rgb(1, 2, 3)}, {0.5, Color::byLayer()}};
    HatchLoop loop;
    loop.type = 5;
    loop.inner = true;
    HatchSplineEdge spline;
    spline.control = {{0, 0}, {1, 1}};
    spline.degree = 1;
    spline.knots = {0, 0, 1, 1};
    spline.startTangent = {1, 0};
    loop.edges = {HatchEllipseEdge{{1, 2}, {3, 0}, {0, 1}, 0.5, -1}, HatchArcEdge{{0, 0}, 2, 3, 1}, spline,
                  HatchLineEdge{{1, 1}, {2, 2}}, HatchEllipseEdge{{9, 2}, {3, 0}, {0, 1}, 0, 1}};
    hatch->loops = {loopOf(box(0, 0, 1, 1)), loop};
    hatch->loops[0].bulges = {0, 1};
    drawing.modelSpace().append(std::move(hatch));
    const std::string text = io::native::nativeText(drawing);
    Drawing copy;
    ASSERT_EQ(io::native::loadNativeText(text, copy), "");
    EXPECT_EQ(io::native::nativeText(copy), text);
    const auto& back = static_cast<const HatchEntity&>(*copy.modelSpace().first());
    ASSERT_EQ(back.loops[1].edges.size(), 5u);
    EXPECT_EQ(back.loops[1].edges[0].index(), 2u);
    EXPECT_EQ(std::get<HatchArcEdge>(back.loops[1].edges[1]).startAngle, 3);
    EXPECT_EQ(back.loops[1].edges[2].index(), 3u);
    EXPECT_EQ(std::get<HatchEllipseEdge>(back.loops[1].edges[4]).center.x, 9);
    EXPECT_EQ(back.gradient->stops[1].color, Color::rgb(1, 2, 3));
    EXPECT_EQ(back.gradient->stops[2].color, Color::byLayer());
}

TEST(Hatch, OddBoundaries) {
    const double nan = std::nan("");
    HatchEntity hatch;
    EXPECT_TRUE(hatch.bounds().is_empty());
    EXPECT_TRUE(shapesOf(hatch).shapes.empty());
    hatch.loops = {loopOf({}), loopOf({{1, 1}}), loopOf({{nan, 0}, {1, 1}, {2, nan}})};
    HatchLoop loop;
    loop.edges = {HatchArcEdge{{0, 0}, nan, 0, 1}, HatchLineEdge{{nan, nan}, {0, 0}}, HatchSplineEdge{},
                  HatchEllipseEdge{}, HatchArcEdge{{0, 0}, 1, 0, std::numeric_limits<double>::infinity()}};
    hatch.loops.push_back(loop);
    for (const int style : {0, 1, 2, 77}) {
        hatch.islandStyle = style;
        hatch.patternName = style == 1 ? "ANSI31" : "SOLID";
        hatch.patternScale = nan;
        shapesOf(hatch);
        static_cast<void>(hatch.bounds());
        static_cast<void>(hatch.area());
        hatch.nearestPoint({1, 2});
        hatch.transform(Matrix4::scaling(2, 0));
        hatch.gripPoints();
        hatch.moveGrip(0, {5, 5});
    }
}

}  // namespace
}  // namespace kova::engine
