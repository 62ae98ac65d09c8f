// Rendering measurements: a mixed drawing to a PNG, a small window onto a large drawing, and plain lines against a bare
// painter loop.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <cmath>

#include "doc/document.hpp"
#include "doc/spatial_index.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"
#include "render/renderer.hpp"

using namespace kova;
using math::Vector2;

namespace {

/// SplitMix64: the same drawing on every machine.
struct Random {
    std::uint64_t state = 1;
    std::uint64_t next() {
        state += 0x9E3779B97F4A7C15ULL;
        std::uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    double real(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(next() >> 11) / 9007199254740992.0; }
    int integer(int lo, int hi) { return lo + static_cast<int>(next() % static_cast<std::uint64_t>(hi - lo + 1)); }
};

constexpr double kCell = 10.0;  // one entity per cell on average, whatever the count

/// 55% lines, 15% polylines, 8% circles, 8% arcs, 8% texts, 3% block references, 2% hatches, 1% multiline texts.
void fillMixed(engine::Drawing& drawing, std::int64_t count) {
    Random random;
    const double side = std::sqrt(static_cast<double>(count)) * kCell;
    for (int i = 0; i < 20; ++i) {
        engine::Block& block = *drawing.addBlock("B" + std::to_string(i));
        for (int k = 0; k < 4; ++k)
            block.entities.append(std::make_unique<engine::LineEntity>(Vector2{random.real(-4, 4), random.real(-4, 4)},
                                                                       Vector2{random.real(-4, 4), random.real(-4, 4)}));
        auto circle = std::make_unique<engine::CircleEntity>();
        circle->radius = random.real(1, 4);
        block.entities.append(std::move(circle));
    }
    for (int i = 0; i < 50; ++i)
        drawing.layers.ensure("L" + std::to_string(i)).color = engine::Color::index(static_cast<std::uint8_t>(1 + i % 250));
    for (std::int64_t i = 0; i < count; ++i) {
        const Vector2 at{random.real(0, side), random.real(0, side)};
        const auto near = [&](double reach) { return at + Vector2{random.real(-reach, reach), random.real(-reach, reach)}; };
        const int kind = random.integer(0, 99);
        std::unique_ptr<engine::Entity> entity;
        if (kind < 55) {
            entity = std::make_unique<engine::LineEntity>(at, near(15));
        } else if (kind < 70) {
            auto e = std::make_unique<engine::PolylineEntity>();
            const int n = random.integer(4, 12);
            for (int k = 0; k < n; ++k) e->addVertex(near(12), random.integer(0, 3) == 0 ? random.real(-1, 1) : 0.0);
            e->closed = random.integer(0, 2) == 0;
            entity = std::move(e);
        } else if (kind < 78) {
            auto e = std::make_unique<engine::CircleEntity>();
            e->center = at;
            e->radius = random.real(0.5, 8);
            entity = std::move(e);
        } else if (kind < 86) {
            auto e = std::make_unique<engine::ArcEntity>();
            e->center = at;
            e->radius = random.real(0.5, 8);
            e->startAngle = random.real(0, math::kTwoPi);
            e->endAngle = random.real(0, math::kTwoPi);
            entity = std::move(e);
        } else if (kind < 94) {
            auto e = std::make_unique<engine::TextEntity>();
            e->position = at;
            e->height = random.real(1, 4);
            e->rotation = random.real(0, math::kTwoPi);
            e->content = "Beam HEA " + std::to_string(i % 500);
            entity = std::move(e);
        } else if (kind < 97) {
            auto e = std::make_unique<engine::BlockReferenceEntity>("B" + std::to_string(random.integer(0, 19)), at);
            e->rotation = random.real(0, math::kTwoPi);
            entity = std::move(e);
        } else if (kind < 99) {
            auto e = std::make_unique<engine::HatchEntity>();
            engine::HatchLoop loop;
            const int n = random.integer(4, 8);
            for (int k = 0; k < n; ++k) loop.vertices.push_back(at + Vector2::from_angle(math::kTwoPi * k / n) * random.real(2, 8));
            e->loops.push_back(std::move(loop));
            entity = std::move(e);
        } else {
            auto e = std::make_unique<engine::MTextEntity>();
            e->position = at;
            e->height = 2.0;
            e->width = 30.0;
            e->content = "Note " + std::to_string(i) + "\\Psee detail {\\H0.7x;A}";
            entity = std::move(e);
        }
        entity->layer = "L" + std::to_string(random.integer(0, 49));
        drawing.modelSpace().append(std::move(entity));
    }
}

void mixedToPng(benchmark::State& state) {
    engine::Drawing drawing;
    fillMixed(drawing, state.range(0));
    for (auto _ : state) {
        const QImage image = render::renderImage(drawing, 1600, 1000);
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        benchmark::DoNotOptimize(png.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(mixedToPng)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(2);

void zoomedWindow(benchmark::State& state) {
    doc::Document document;
    fillMixed(document.drawing(), state.range(0));
    const double side = std::sqrt(static_cast<double>(state.range(0))) * kCell;
    QImage image(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    render::RenderRequest request;
    request.area = render::Area::Window;
    request.window = {{side / 2, side / 2}, {side / 2 + 160, side / 2 + 100}};
    request.query = [&](engine::EntityList& space, const math::Bounds2& box) { return document.spatialIndex(space).query(box); };
    for (auto _ : state) {
        QPainter painter(&image);
        render::render(painter, document.drawing(), request);
    }
}
BENCHMARK(zoomedWindow)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

std::vector<std::pair<Vector2, Vector2>> plainLines(int count) {
    Random random;
    std::vector<std::pair<Vector2, Vector2>> lines;
    for (int i = 0; i < count; ++i) {
        const Vector2 at{random.real(0, 1500), random.real(0, 900)};
        lines.emplace_back(at, at + Vector2{random.real(-20, 20), random.real(-20, 20)});
    }
    return lines;
}

void plainLinesRendered(benchmark::State& state) {
    engine::Drawing drawing;
    for (const auto& [a, b] : plainLines(100'000)) drawing.modelSpace().append(std::make_unique<engine::LineEntity>(a, b));
    for (auto _ : state) benchmark::DoNotOptimize(render::renderImage(drawing, 1600, 1000));
}
BENCHMARK(plainLinesRendered)->Unit(benchmark::kMillisecond);

void plainLinesBarePainter(benchmark::State& state) {
    const auto lines = plainLines(100'000);
    for (auto _ : state) {
        QImage image(1600, 1000, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::black, 25 / 100.0 * 150 / 25.4));
        for (const auto& [a, b] : lines) painter.drawLine(QPointF(a.x, 1000 - a.y), QPointF(b.x, 1000 - b.y));
        painter.end();
        benchmark::DoNotOptimize(image);
    }
}
BENCHMARK(plainLinesBarePainter)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
