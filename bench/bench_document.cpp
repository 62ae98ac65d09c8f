// Document-level measurements: drawing, erasing and undoing many lines, saving and loading them.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <cstdio>

#include "doc/document.hpp"
#include "engine/entities/line.hpp"
#include "headless/session.hpp"
#include "io/native/native_file.hpp"

using namespace kova;

namespace {

void addLines(doc::Document& document, std::int64_t count) {
    const doc::GroupScope group(document, "fill");
    for (std::int64_t i = 0; i < count; ++i) {
        auto line = std::make_unique<engine::LineEntity>();
        line->start = {static_cast<double>(i % 1000), static_cast<double>(i / 1000)};
        line->end = line->start + math::Vector2{0.75, 0.325};
        document.addEntity(std::move(line));
    }
}

void eraseAllAndUndo(benchmark::State& state) {
    headless::Session session;
    addLines(session.document(), state.range(0));
    for (auto _ : state) {
        for (const char* line : {"ERASE", "ALL", ""}) session.feed(line);
        if (!session.document().drawing().modelSpace().empty()) state.SkipWithError("not erased");
        session.feed("UNDO");
        if (session.document().drawing().modelSpace().size() != static_cast<std::size_t>(state.range(0)))
            state.SkipWithError("not brought back");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(eraseAllAndUndo)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(5);

void saveNativeLines(benchmark::State& state) {
    doc::Document document;
    addLines(document, state.range(0));
    const std::string path = std::tmpnam(nullptr);
    for (auto _ : state)
        if (!io::native::saveNative(document.drawing(), path).empty()) state.SkipWithError("not saved");
    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    state.SetBytesProcessed(state.iterations() * std::ftell(file));
    std::fclose(file);
    std::remove(path.c_str());
}
BENCHMARK(saveNativeLines)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(3);

void memoryOfLines(benchmark::State& state) {
    for (auto _ : state) {
        const auto before = mallinfo2().uordblks + mallinfo2().hblkhd;
        doc::Document document;
        addLines(document, state.range(0));
        document.history().clear();
        const auto after = mallinfo2().uordblks + mallinfo2().hblkhd;
        state.counters["bytes_per_line"] = static_cast<double>(after - before) / static_cast<double>(state.range(0));
    }
}
BENCHMARK(memoryOfLines)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void feedLines(benchmark::State& state) {
    headless::Session session;
    for (auto _ : state)
        for (const char* line : {"LINE", "0,0", "100,50", ""}) benchmark::DoNotOptimize(session.feed(line));
    state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(feedLines);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
