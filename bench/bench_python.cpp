// Python: adding entities in a transaction, passing over a million, reading and changing fields, and what a call costs.
#include <benchmark/benchmark.h>

#include <QApplication>

#include "headless/session.hpp"
#include "script/python/runner.hpp"

using namespace kova;

namespace {

script::python::Interpreter& interpreter() {
    static script::python::Interpreter one;
    return one;
}

void run(benchmark::State& state, script::python::Runner& runner, const std::string& code) {
    const auto result = runner.run(code);
    if (result.failed) state.SkipWithError(result.error.c_str());
}

constexpr const char* kImports =
    "from kova.doc import current, transaction\nfrom kova.ent import Line\nms = current().model_space\n";
constexpr const char* kAdd =
    "with transaction('fill'):\n    for i in range(100000): ms.add(Line(start=(i, 0), end=(i, 10)))\n";

void addLinesInATransaction(benchmark::State& state) {
    headless::Session session;
    script::python::Runner runner(interpreter(), session);
    run(state, runner, kImports);
    for (auto _ : state) {
        run(state, runner, kAdd);
        state.PauseTiming();
        session.newDrawing();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * 100'000);
}
BENCHMARK(addLinesInATransaction)->Unit(benchmark::kMillisecond);

/// What is done once to each entity of a million.
void overAMillion(benchmark::State& state, const char* code) {
    headless::Session session;
    script::python::Runner runner(interpreter(), session);
    run(state, runner, kImports);
    for (int i = 0; i < 10; ++i) run(state, runner, kAdd);
    for (auto _ : state) run(state, runner, code);
    state.SetItemsProcessed(state.iterations() * 1'000'000);
}
BENCHMARK_CAPTURE(overAMillion, iterate, "n = 0\nfor e in ms: n += 1\nassert n == 1000000")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(overAMillion, readAPoint, "x = sum(e.start.x for e in ms)")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(overAMillion, readALayer, "n = sum(e.layer_name == '0' for e in ms)")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(overAMillion, filter, "assert len(ms.filter(Line, layer='0')) == 1000000")
    ->Unit(benchmark::kMillisecond);

void emptyCall(benchmark::State& state) {
    headless::Session session;
    script::python::Runner runner(interpreter(), session);
    run(state, runner, kImports);
    for (auto _ : state) run(state, runner, "pass");
}
BENCHMARK(emptyCall)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
