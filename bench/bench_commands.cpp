// Editing commands on large drawings, driven by fed lines as a user would; each at its goal's size and at a tenth of
// it, so that growth shows.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <cmath>
#include <random>

#include "doc/document.hpp"
#include "doc/spatial_index.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "headless/session.hpp"
#include "math/angles.hpp"

using namespace kova;
using math::Vector2;

namespace {

using Lines = std::vector<std::string>;

std::string pointText(double x, double y) { return std::to_string(x) + "," + std::to_string(y); }

/// Appends without history: what is measured begins with the command.
void addLine(doc::Document& document, const Vector2& a, const Vector2& b) {
    document.drawing().modelSpace().append(std::make_unique<engine::LineEntity>(a, b));
}

std::size_t entityCount(headless::Session& session) { return session.document().drawing().modelSpace().size(); }

void feedAll(headless::Session& session, const Lines& lines) {
    for (const std::string& line : lines) session.feed(line);
    if (session.isWaiting()) session.cancel();
}

/// Runs the command and takes it back outside the clock; `check` looks at what the command did.
template <class Check>
void measure(benchmark::State& state, headless::Session& session, const Lines& lines, const Check& check) {
    doc::Document& document = session.document();
    // Picking and windows of all commands share the index; it is built with the first use.
    document.spatialIndex().extents();
    const std::size_t before = entityCount(session);
    for (auto _ : state) {
        feedAll(session, lines);
        state.PauseTiming();
        const bool done = check();
        document.undoTo(0);
        document.history().clear();
        const bool undone = entityCount(session) == before;
        state.ResumeTiming();
        if (!done) state.SkipWithError("the command did not do what it should");
        if (!undone) state.SkipWithError("not undone");
    }
}

/// Lines of random places and directions, 20 long in a field where each crosses about ten others.
void addScatter(doc::Document& document, std::int64_t count) {
    std::mt19937_64 random(7);
    const double side = std::sqrt(static_cast<double>(count)) * 5.0;
    std::uniform_real_distribution<double> place(0.0, side);
    std::uniform_real_distribution<double> direction(0.0, math::kTwoPi);
    for (std::int64_t i = 0; i < count; ++i) {
        const Vector2 a{place(random), place(random)};
        addLine(document, a, a + Vector2::from_angle(direction(random)) * 20.0);
    }
}

/// A pick near the middle of the scatter.
Lines pickInside(const char* command, std::int64_t count) {
    const double middle = std::sqrt(static_cast<double>(count)) * 2.5;
    return {command, pointText(middle + 0.137, middle + 0.211), ""};
}

void boundaryAmongLines(benchmark::State& state) {
    headless::Session session;
    addScatter(session.document(), state.range(0));
    const std::size_t before = entityCount(session);
    measure(state, session, pickInside("BOUNDARY", state.range(0)), [&] { return entityCount(session) > before; });
}
BENCHMARK(boundaryAmongLines)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void hatchAmongLines(benchmark::State& state) {
    headless::Session session;
    addScatter(session.document(), state.range(0));
    const std::size_t before = entityCount(session);
    measure(state, session, pickInside("HATCH", state.range(0)), [&] { return entityCount(session) > before; });
}
BENCHMARK(hatchAmongLines)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

/// The whole field is one face with the lines in it as islands and dangling edges.
void boundaryAroundLines(benchmark::State& state) {
    headless::Session session;
    const auto count = state.range(0);
    const auto rows = static_cast<std::int64_t>(std::sqrt(static_cast<double>(count) / 4.0));
    for (std::int64_t i = 0; i < rows * rows; ++i) {
        const double x = static_cast<double>(i % rows) * 10.0;
        const double y = static_cast<double>(i / rows) * 10.0;
        const Vector2 corners[] = {{x, y}, {x + 6.0, y}, {x + 6.0, y + 6.0}, {x, y + 6.0}};
        for (int k = 0; k < 4; ++k) addLine(session.document(), corners[k], corners[(k + 1) % 4]);
    }
    const double far = static_cast<double>(rows) * 10.0;
    const Vector2 frame[] = {{-9, -9}, {far, -9}, {far, far}, {-9, far}};
    for (int k = 0; k < 4; ++k) addLine(session.document(), frame[k], frame[(k + 1) % 4]);
    const std::size_t before = entityCount(session);
    measure(state, session, {"BOUNDARY", "-5,-5", ""},
            [&] { return entityCount(session) == before + static_cast<std::size_t>(rows * rows) + 1; });
}
BENCHMARK(boundaryAroundLines)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// Squares of four lines each, in no order.
void regionOfSquares(benchmark::State& state) {
    headless::Session session;
    const auto squares = state.range(0) / 4;
    std::vector<std::pair<Vector2, Vector2>> sides;
    for (std::int64_t i = 0; i < squares; ++i) {
        const Vector2 at{static_cast<double>(i % 200) * 3.0, static_cast<double>(i / 200) * 3.0};
        const Vector2 corners[] = {at, at + Vector2{2, 0}, at + Vector2{2, 2}, at + Vector2{0, 2}};
        for (int k = 0; k < 4; ++k) sides.emplace_back(corners[k], corners[(k + 1) % 4]);
    }
    std::mt19937_64 random(5);
    std::shuffle(sides.begin(), sides.end(), random);
    for (const auto& [a, b] : sides) addLine(session.document(), a, b);
    measure(state, session, {"REGION", "ALL", ""},
            [&] { return entityCount(session) == static_cast<std::size_t>(squares); });
}
BENCHMARK(regionOfSquares)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// Lines that all cross each other: nothing is closed end to end.
void regionOfCrossingLines(benchmark::State& state) {
    headless::Session session;
    const auto count = state.range(0);
    for (std::int64_t i = 0; i < count; ++i)
        addLine(session.document(), {0.0, static_cast<double>(i)}, {1000.0, static_cast<double>(count - i)});
    measure(state, session, {"REGION", "ALL", ""},
            [&] { return entityCount(session) == static_cast<std::size_t>(count); });
}
BENCHMARK(regionOfCrossingLines)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// N posts as cutting edges, N/10 rails across all of them, one pick on each.
void trimRails(benchmark::State& state) {
    headless::Session session;
    const auto posts = state.range(0);
    const auto rails = posts / 10;
    const auto height = static_cast<double>(rails) + 1.0;
    for (std::int64_t i = 0; i < posts; ++i)
        addLine(session.document(), {static_cast<double>(i), 0.0}, {static_cast<double>(i), height});
    Lines lines{"TRIM", "W", "-0.5,-1", pointText(static_cast<double>(posts), height + 1.0), ""};
    for (std::int64_t i = 0; i < rails; ++i) {
        const double y = static_cast<double>(i) + 1.0;
        addLine(session.document(), {-1.0, y}, {static_cast<double>(posts), y});
        lines.push_back(pointText(static_cast<double>((i * 7919) % (posts - 1)) + 0.5, y));
    }
    lines.push_back("");
    const std::size_t before = entityCount(session);
    measure(state, session, lines, [&] { return entityCount(session) == before + static_cast<std::size_t>(rails); });
}
BENCHMARK(trimRails)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

/// A wave with fine teeth, whose offset crosses itself in the valleys.
void offsetPolyline(benchmark::State& state) {
    headless::Session session;
    auto polyline = std::make_unique<engine::PolylineEntity>();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const auto x = static_cast<double>(i);
        polyline->addVertex({x, 50.0 * std::sin(x * 0.01) + (i % 3 == 0 ? 0.4 : 0.0)}, i % 10 == 0 ? 0.3 : 0.0);
    }
    session.document().drawing().modelSpace().append(std::move(polyline));
    measure(state, session, {"OFFSET", "2.5", "0,0.4", "0,100", ""}, [&] { return entityCount(session) > 1; });
}
BENCHMARK(offsetPolyline)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

void fillGrid(doc::Document& document, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        const Vector2 a{static_cast<double>(i % 1000), static_cast<double>(i / 1000)};
        addLine(document, a, a + Vector2{0.75, 0.325});
    }
}

void moveAll(benchmark::State& state) {
    headless::Session session;
    fillGrid(session.document(), state.range(0));
    measure(state, session, {"MOVE", "ALL", "", "0,0", "10,5"}, [&] {
        const engine::Entity& first = *session.document().drawing().modelSpace().begin();
        return static_cast<const engine::LineEntity&>(first).start == Vector2(10.0, 5.0);
    });
}
BENCHMARK(moveAll)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void copyAll(benchmark::State& state) {
    headless::Session session;
    fillGrid(session.document(), state.range(0));
    measure(state, session, {"COPY", "ALL", "", "0,0", "10,5", ""},
            [&] { return entityCount(session) == 2 * static_cast<std::size_t>(state.range(0)); });
}
BENCHMARK(copyAll)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void eraseAll(benchmark::State& state) {
    headless::Session session;
    fillGrid(session.document(), state.range(0));
    measure(state, session, {"ERASE", "ALL", ""}, [&] { return entityCount(session) == 0; });
}
BENCHMARK(eraseAll)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// Chains of 100 segments each, every segment turned and placed by chance in the drawing's order.
void joinSegments(benchmark::State& state) {
    headless::Session session;
    std::mt19937_64 random(11);
    std::vector<std::pair<Vector2, Vector2>> segments;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const auto row = static_cast<double>(i / 100) * 5.0;
        const auto x = static_cast<double>(i % 100);
        Vector2 a{x, row + static_cast<double>(i % 2)};
        Vector2 b{x + 1.0, row + static_cast<double>((i + 1) % 2)};
        if (random() % 2 == 0) std::swap(a, b);
        segments.emplace_back(a, b);
    }
    std::shuffle(segments.begin(), segments.end(), random);
    for (const auto& [a, b] : segments) addLine(session.document(), a, b);
    measure(state, session, {"JOIN", "ALL", ""},
            [&] { return entityCount(session) == static_cast<std::size_t>(state.range(0) / 100); });
}
BENCHMARK(joinSegments)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void explodeReferences(benchmark::State& state) {
    headless::Session session;
    engine::Drawing& drawing = session.document().drawing();
    engine::Block& block = *drawing.addBlock("Part");
    for (int k = 0; k < 4; ++k)
        block.entities.append(std::make_unique<engine::LineEntity>(Vector2::from_angle(k), Vector2::from_angle(k + 1)));
    auto circle = std::make_unique<engine::CircleEntity>();
    circle->radius = 2.0;
    block.entities.append(std::move(circle));
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        auto reference = std::make_unique<engine::BlockReferenceEntity>(
            "Part", Vector2{static_cast<double>(i % 100) * 5.0, static_cast<double>(i / 100) * 5.0});
        reference->rotation = 0.1 * static_cast<double>(i % 60);
        drawing.modelSpace().append(std::move(reference));
    }
    measure(state, session, {"SELECT", "ALL", "", "EXPLODE"},
            [&] { return entityCount(session) == 5 * static_cast<std::size_t>(state.range(0)); });
}
BENCHMARK(explodeReferences)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
