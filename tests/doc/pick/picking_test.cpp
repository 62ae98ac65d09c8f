#include "doc/pick/picking.hpp"

#include <gtest/gtest.h>

#include <random>

#include "cmd/console.hpp"
#include "engine/pick/selection_region.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/spline.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/wipeout.hpp"
#include "engine/entities/xline.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {
namespace {

using math::Bounds2;
using math::Vector2;
using Ids = std::vector<std::uint64_t>;
using Points = std::vector<Vector2>;

Ids box(Console& c, Vector2 a, Vector2 b, bool crossing) { return selectBox(c.document, a, b, crossing); }
Ids polygon(Console& c, const Points& points, bool crossing) { return selectPolygon(c.document, points, crossing); }

// The order of drawing says nothing of age.
TEST(Picking, LastIsTheNewest) {
    Console c;
    c.run({"RECTANGLE", "0,0", "10,10", "CIRCLE", "50,50", "5", "-HATCH", "5,5", ""});
    ASSERT_EQ(c.count(), 3u);
    c.run({"DRAWORDER", "8,8", "", "B"});
    ASSERT_NE(c.entities().back()->type(), engine::EntityType::Hatch);
    c.run({"ERASE", "L", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.entities()[0]->type(), engine::EntityType::Polyline);
    EXPECT_EQ(c.entities()[1]->type(), engine::EntityType::Circle);
    // Hidden and locked ones are passed over, and what comes back is as old as it was.
    c.feed("UNDO");
    c.run({"DRAWORDER", "0,5", "", "F", "-LAYER", "M", "Lock", "LO", "Lock", ""});
    c.addLine(0, 90, 1, 90).layer = "Lock";
    c.feed("SELECTLAST");
    ASSERT_EQ(c.selected().size(), 1u);
    EXPECT_EQ(c.drawing().findById(c.selected()[0])->type(), engine::EntityType::Hatch);
}

TEST(Picking, WindowTakesWhatLiesInsideCrossingWhatItTouches) {
    Console c;
    const auto inside = c.addLine(1, 1, 9, 9).id();
    const auto through = c.addLine(-5, 5, 15, 5).id();
    const auto outside = c.addLine(20, 0, 30, 0).id();
    // Its box meets the window, the circle itself does not.
    c.add(engine::CircleEntity({5, 5}, 50.0));
    const auto edge = c.addLine(10, 0, 10, 10).id();
    EXPECT_EQ(box(c, {0, 0}, {10, 10}, false), (Ids{inside, edge}));
    EXPECT_EQ(box(c, {10, 10}, {0, 0}, true), (Ids{inside, through, edge}));
    EXPECT_EQ(box(c, {-100, -100}, {100, 100}, false).size(), 5u);
    EXPECT_EQ(box(c, {20, 0}, {20, 0}, true), Ids{outside});
    // Every point of a diagonal's box but the diagonal itself.
    EXPECT_EQ(box(c, {1.5, 4}, {2.5, 4.9}, true), Ids{});
}

TEST(Picking, CurvesAreJudgedByTheirShape) {
    Console c;
    const auto arc = c.add(engine::ArcEntity({0, 0}, 10.0, 0.0, math::kPi / 2.0)).id();
    EXPECT_EQ(box(c, {-11, -11}, {-1, -1}, true), Ids{});
    EXPECT_EQ(box(c, {6, 6}, {9, 9}, true), Ids{arc});
    EXPECT_EQ(box(c, {0, 0}, {7, 7}, true), Ids{});
    EXPECT_EQ(box(c, {0, 0}, {10, 10}, false), Ids{arc});
    EXPECT_EQ(box(c, {0, 0}, {9.9999, 10}, false), Ids{});
    EXPECT_EQ(polygon(c, {{-1, -1}, {12, -1}, {12, 12}, {-1, 12}}, false), Ids{arc});
    // A chord cuts the belly of the arc off: both ends are inside, the arc is not.
    EXPECT_EQ(polygon(c, {{-1, -1}, {11, -1}, {-1, 11}}, false), Ids{});
    EXPECT_EQ(polygon(c, {{-1, -1}, {11, -1}, {-1, 11}}, true), Ids{arc});
    // A fence that touches the arc's top only.
    EXPECT_EQ(selectFence(c.document, Points{{-20, 10}, {20, 10}}), Ids{arc});
    EXPECT_EQ(selectFence(c.document, Points{{-20, 10.001}, {20, 10.001}}), Ids{});
    EXPECT_EQ(selectFence(c.document, Points{{0, 0}, {3, 3}}), Ids{});
    EXPECT_EQ(selectFence(c.document, Points{{0, 0}, {3, 3}, {9, 9}}), Ids{arc});
}

TEST(Picking, PolygonsMayBeTouchedFromWithinAndNeedNotBeConvex) {
    Console c;
    const auto line = c.addLine(0, 0, 10, 0).id();
    const Points notch{{0, 0}, {10, 0}, {10, 10}, {5, 2}, {0, 10}};
    EXPECT_EQ(polygon(c, notch, false), Ids{line});
    const auto across = c.addLine(1, 8, 9, 8).id();
    EXPECT_EQ(polygon(c, notch, false), Ids{line});
    EXPECT_EQ(polygon(c, notch, true), (Ids{line, across}));
    const auto between = c.addLine(4, 9, 6, 9).id();
    EXPECT_EQ(polygon(c, notch, true), (Ids{line, across}));
    EXPECT_EQ(polygon(c, {{3, 8.5}, {7, 8.5}, {5, 20}}, false), Ids{between});
    EXPECT_TRUE(polygon(c, {{0, 0}, {10, 10}}, true).empty());
    EXPECT_TRUE(selectFence(c.document, Points{{0, 0}}).empty());
}

TEST(Picking, UnboundedLinesAreCrossedButNeverInside) {
    Console c;
    const auto xline = c.add(engine::XlineEntity({0, 0}, {1, 1})).id();
    const auto ray = c.add(engine::RayEntity({0, 0}, {1, 0})).id();
    EXPECT_EQ(box(c, {1e6 - 1, 1e6 - 1}, {1e6 + 1, 1e6 + 1}, true), Ids{xline});
    EXPECT_EQ(box(c, {50, -1}, {60, 1}, true), Ids{ray});
    EXPECT_EQ(box(c, {-60, -1}, {-50, 1}, true), Ids{});
    EXPECT_EQ(box(c, {-60, -60}, {60, 60}, false), Ids{});
    EXPECT_EQ(selectFence(c.document, Points{{5, -1}, {5, 6}}), (Ids{xline, ray}));
}

TEST(Picking, AreasTextsAndWideLines) {
    Console c;
    engine::PolylineEntity wide(Points{{0, 0}, {100, 0}});
    wide.setWidths(0, 10.0, 10.0);
    const auto wideId = c.add(std::move(wide)).id();
    EXPECT_EQ(box(c, {40, 3}, {41, 4}, true), Ids{wideId});
    EXPECT_EQ(box(c, {40, 6}, {41, 7}, true), Ids{});
    EXPECT_EQ(box(c, {-1, -1}, {101, 1}, false), Ids{});
    EXPECT_EQ(box(c, {-1, -6}, {101, 6}, false), Ids{wideId});

    engine::TextEntity text;
    text.position = {0, 50};
    text.height = 10.0;
    text.content = "HH";
    text.rotation = math::kPi / 2.0;
    const auto textId = c.add(std::move(text)).id();
    // Within the text's box, between its strokes.
    EXPECT_EQ(box(c, {-6, 52}, {-5.5, 53}, true), Ids{textId});
    EXPECT_EQ(box(c, {1, 52}, {5, 53}, true), Ids{});
    EXPECT_EQ(box(c, {-11, 49}, {1, 90}, false), Ids{textId});

    const auto point = c.add(engine::PointEntity(Vector2{500, 500})).id();
    EXPECT_EQ(box(c, {499, 499}, {501, 501}, false), Ids{point});
    EXPECT_EQ(polygon(c, {{499, 499}, {502, 499}, {499, 502}}, true), Ids{point});
    EXPECT_EQ(polygon(c, {{499, 499}, {502, 499}, {499, 500.1}}, false), Ids{});
}

TEST(Picking, FilledAreasCountInsideMasksByTheirFrame) {
    Console c;
    engine::HatchEntity hatch;
    engine::HatchLoop loop;
    loop.vertices = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};
    engine::HatchLoop hole;
    hole.vertices = {{40, 40}, {60, 40}, {60, 60}, {40, 60}};
    hatch.loops = {loop, hole};
    const auto id = c.add(std::move(hatch)).id();
    EXPECT_EQ(box(c, {10, 10}, {20, 20}, true), Ids{id});
    EXPECT_EQ(box(c, {45, 45}, {55, 55}, true), Ids{});
    EXPECT_EQ(box(c, {-1, -1}, {101, 101}, false), Ids{id});
    EXPECT_EQ(box(c, {1, 1}, {101, 101}, false), Ids{});
    EXPECT_EQ(selectFence(c.document, Points{{10, 10}, {20, 20}}), Ids{id});
    const auto mask = c.add(engine::WipeoutEntity({{200, 0}, {300, 0}, {300, 100}})).id();
    EXPECT_EQ(box(c, {270, 20}, {280, 30}, true), Ids{});
    EXPECT_EQ(box(c, {290, 20}, {310, 30}, true), Ids{mask});
}

TEST(Picking, BlockReferencesAreJudgedByWhatTheyShow) {
    Console c;
    engine::Block* block = c.drawing().addBlock("Cross");
    block->entities.append(std::make_unique<engine::LineEntity>(Vector2{-10, 0}, Vector2{10, 0}));
    block->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, -10}, Vector2{0, 10}));
    auto hidden = std::make_unique<engine::CircleEntity>(Vector2{0, 0}, 10.0);
    hidden->layer = "Off";
    block->entities.append(std::move(hidden));
    c.drawing().layers.ensure("Off").on = false;
    engine::BlockReferenceEntity reference("Cross", {100, 100});
    reference.rotation = math::kPi / 4.0;
    const auto id = c.add(std::move(reference)).id();
    const double reach = 10.0 * std::sqrt(0.5);
    EXPECT_EQ(box(c, {106, 106}, {107, 107}, true), Ids{id});
    EXPECT_EQ(box(c, {105, 99}, {109.9, 101}, true), Ids{});
    EXPECT_EQ(box(c, {100 - reach, 100 - reach}, {100 + reach, 100 + reach}, false), Ids{id});
    // Clipped to its right half.
    auto& entity = static_cast<engine::BlockReferenceEntity&>(*c.drawing().findById(id));
    entity.clipBoundary = {{0, -20}, {20, 20}};
    c.drawing().currentSpace().touch(entity);
    EXPECT_EQ(box(c, {106, 106}, {107, 107}, true), Ids{id});
    EXPECT_EQ(box(c, {93, 93}, {95, 95}, true), Ids{});
    entity.clipInverted = true;
    c.drawing().currentSpace().touch(entity);
    EXPECT_EQ(box(c, {106, 106}, {107, 107}, true), Ids{});
    EXPECT_EQ(box(c, {93, 93}, {95, 95}, true), Ids{id});
}

TEST(Picking, PicksTheNearestWithinAHundredthOfTheExtents) {
    Console c;
    EXPECT_EQ(pickEntity(c.document, {0, 0}), nullptr);
    EXPECT_GT(pickTolerance(c.document), 0.0);
    engine::Entity& low = c.addLine(0, 0, 300, 0);
    engine::Entity& high = c.addLine(0, 400, 300, 400);
    EXPECT_DOUBLE_EQ(pickTolerance(c.document), 5.0);
    EXPECT_EQ(pickEntity(c.document, {100, 4.9}), &low);
    EXPECT_EQ(pickEntity(c.document, {100, 5.1}), nullptr);
    EXPECT_EQ(pickEntity(c.document, {100, 396}), &high);
    EXPECT_EQ(pickEntity(c.document, {100, 396}, [&](const engine::Entity& e) { return &e != &high; }), nullptr);
    c.drawing().layers.ensure("Locked").locked = true;
    low.layer = "Locked";
    EXPECT_EQ(pickEntity(c.document, {100, 0}), nullptr);
    EXPECT_EQ(selectAll(c.document), Ids{high.id()});
    EXPECT_EQ(lastEntity(c.document), high.id());
    high.visible = false;
    EXPECT_EQ(lastEntity(c.document), 0u);
}

/// Chords of everything that an entity strokes, fine enough to stand for the shape.
class ChordSink final : public engine::OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        for (const auto& figure : engine::flattenPath(path, 1e-6))
            for (std::size_t i = 0; i + 1 < figure.size(); ++i) addChord(figure[i], figure[i + 1]);
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
    static constexpr double kSpacing = 0.02;
    Points samples;

private:
    void addChord(const Vector2& a, const Vector2& b) {
        const int steps = static_cast<int>(a.distance_to(b) / kSpacing) + 1;
        for (int k = 0; k <= steps; ++k) samples.push_back(a.lerp(b, static_cast<double>(k) / steps));
    }
};

std::unique_ptr<engine::Entity> randomEntity(std::mt19937& random) {
    std::uniform_real_distribution<double> place(-20.0, 20.0);
    std::uniform_real_distribution<double> angle(0.0, math::kTwoPi);
    const auto p = [&] { return Vector2{place(random), place(random)}; };
    switch (random() % 5) {
        case 0:
            return std::make_unique<engine::LineEntity>(p(), p());
        case 1:
            return std::make_unique<engine::CircleEntity>(p(), std::abs(place(random)) + 0.1);
        case 2:
            return std::make_unique<engine::ArcEntity>(p(), std::abs(place(random)) + 0.1, angle(random),
                                                       angle(random));
        case 3: {
            auto line = std::make_unique<engine::PolylineEntity>(Points{p(), p(), p()}, random() % 2 == 0);
            line->setBulge(random() % 3, place(random) / 20.0);
            return line;
        }
        default: {
            engine::CircleEntity circle(p(), 5.0);
            math::Matrix4 m = math::Matrix4::rotation_z(angle(random)) * math::Matrix4::scaling(2.5, 0.5);
            return engine::transformedEntity(circle, m);
        }
    }
}

// Against samples of the shape: what has a sample well inside is crossed, what has one well outside is not inside, and
// nothing is said of the rest.
TEST(Picking, AgreesWithSamplesOfTheShape) {
    std::mt19937 random(20240607);
    std::uniform_real_distribution<double> place(-20.0, 20.0);
    const engine::Drawing drawing;
    int decided = 0;
    for (int round = 0; round < 1500; ++round) {
        const std::unique_ptr<engine::Entity> entity = randomEntity(random);
        Points corners;
        for (int i = 0; i < 5; ++i) corners.push_back({place(random), place(random)});
        const SelectionRegion region =
            round % 2 == 0 ? SelectionRegion::box(corners[0], corners[1]) : SelectionRegion::polygon(corners);
        ChordSink sink;
        entity->emit(sink, engine::outlineStyle(*entity));
        constexpr double kMargin = 0.6 * ChordSink::kSpacing;
        bool anyInside = false;
        bool anyOutside = false;
        bool unsure = false;
        for (const Vector2& p : sink.samples) {
            double edge = 1e9;
            for (std::size_t i = 0; i < region.edgeCount(); ++i)
                edge = std::min(edge, math::closestOnSegment(p, region.edgeStart(i), region.edgeEnd(i)).distance_to(p));
            if (edge < kMargin) {
                unsure = true;
            } else {
                const bool inside =
                    region.isBox() ? region.bounds().contains_point(p) : math::pointInPolygon(p, corners);
                (inside ? anyInside : anyOutside) = true;
            }
        }
        ASSERT_FALSE(sink.samples.empty());
        const bool touches = ShapeTest(drawing, region, ShapeTest::Mode::Touches).passes(*entity);
        const bool inside = ShapeTest(drawing, region, ShapeTest::Mode::Inside).passes(*entity);
        EXPECT_TRUE(touches || !anyInside) << "round " << round;
        EXPECT_TRUE(!touches || anyInside || unsure) << "round " << round;
        EXPECT_TRUE(!inside || !anyOutside) << "round " << round;
        EXPECT_TRUE(inside || anyOutside || unsure) << "round " << round;
        decided += unsure ? 0 : 1;
    }
    EXPECT_GT(decided, 300);
}

// A fence crosses a curve where the curve's distance to it changes side; splines are cubics to the sink.
TEST(Picking, FencesMeetSplinesWhereTheirChordsDo) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-20.0, 20.0);
    const engine::Drawing drawing;
    for (int round = 0; round < 500; ++round) {
        engine::Path path;
        path.moveTo({place(random), place(random)})
            .cubicTo({place(random), place(random)}, {place(random), place(random)}, {place(random), place(random)});
        const Points fence{{place(random), place(random)}, {place(random), place(random)}};
        const SelectionRegion region = SelectionRegion::fence(fence);
        ShapeTest test(drawing, region, ShapeTest::Mode::Touches);
        const engine::LineEntity nothing(Vector2{1e6, 1e6}, Vector2{1e6, 1e6});
        ASSERT_FALSE(test.passes(nothing));
        test.stroke(path, engine::OutlineStyle{}, engine::StrokeOptions{});
        bool crosses = false;
        double nearest = 1e9;
        const Points chords = engine::flattenPath(path, 1e-7).front();
        for (std::size_t i = 0; i + 1 < chords.size(); ++i) {
            const double a = (fence[1] - fence[0]).cross(chords[i] - fence[0]);
            const double b = (fence[1] - fence[0]).cross(chords[i + 1] - fence[0]);
            const Vector2 d = chords[i + 1] - chords[i];
            const double from = d.cross(fence[0] - chords[i]);
            const double to = d.cross(fence[1] - chords[i]);
            crosses = crosses || ((a < 0.0) != (b < 0.0) && (from < 0.0) != (to < 0.0));
            nearest = std::min(nearest, math::closestOnSegment(chords[i], fence[0], fence[1]).distance_to(chords[i]));
        }
        for (const Vector2& end : fence) nearest = std::min(nearest, engine::nearestOnPath(path, end).distance_to(end));
        if (nearest < 1e-3 && !crosses) continue;
        EXPECT_EQ(test.touched(), crosses) << "round " << round;
    }
}

TEST(Picking, ExtremeNumbersAreSafe) {
    Console c;
    c.addLine(-1e308, -1e308, 1e308, 1e308);
    c.add(engine::CircleEntity({1e200, 0}, 1e300));
    c.add(engine::XlineEntity({0, 0}, {1e-300, 0}));
    for (const bool crossing : {false, true}) {
        box(c, {-1e308, -1e308}, {1e308, 1e308}, crossing);
        polygon(c, {{-1e308, 0}, {1e308, 0}, {0, 1e308}}, crossing);
        polygon(c, {{0, 0}, {0, 0}, {0, 0}}, crossing);
    }
    selectFence(c.document, Points{{0, 0}, {0, 0}});
    pickEntity(c.document, {1e308, 1e308});
    EXPECT_GT(pickTolerance(c.document), 0.0);
}

}  // namespace
}  // namespace kova::cmd
