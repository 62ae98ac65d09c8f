// The LISP evaluator, and entities made from LISP.

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdlib>

#include "headless/session.hpp"
#include "script/lisp/engine.hpp"

namespace {

using kova::headless::Session;

std::string eval(Session& session, const std::string& text) {
    const auto result = session.lisp()->evaluate(text);
    if (!result.error.empty()) std::abort();
    return result.printed;
}

void fib25(benchmark::State& state) {
    Session session;
    eval(session, "(defun fib (n) (if (< n 2) n (+ (fib (- n 1)) (fib (- n 2)))))");
    for (auto _ : state)
        if (eval(session, "(fib 25)") != "75025") std::abort();
}
BENCHMARK(fib25)->Unit(benchmark::kMillisecond);

void millionIncrements(benchmark::State& state) {
    Session session;
    for (auto _ : state)
        if (eval(session, "(progn (setq i 0) (repeat 1000000 (setq i (1+ i))))") != "1000000") std::abort();
}
BENCHMARK(millionIncrements)->Unit(benchmark::kMillisecond);

void millionWhile(benchmark::State& state) {
    Session session;
    for (auto _ : state)
        if (eval(session, "(progn (setq i 0) (while (< i 1000000) (setq i (1+ i))))") != "1000000") std::abort();
}
BENCHMARK(millionWhile)->Unit(benchmark::kMillisecond);

void entmakeLines(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto session = std::make_unique<Session>();
        state.ResumeTiming();
        eval(*session,
             "(progn (setq i 0) (repeat 100000 (entmake (list '(0 . \"LINE\") (list 10 i 0.0 0.0)"
             " (list 11 i 10.0 0.0))) (setq i (1+ i))))");
        if (session->document().drawing().modelSpace().size() != 100'000) std::abort();
        state.PauseTiming();
        session.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(entmakeLines)->Unit(benchmark::kMillisecond);

void entgetLines(benchmark::State& state) {
    Session session;
    eval(session, "(repeat 10000 (entmake '((0 . \"LINE\") (10 0.0 0.0 0.0) (11 1.0 1.0 0.0))))");
    for (auto _ : state)
        eval(session,
             "(progn (setq e (entnext) n 0) (while e (if (assoc 10 (entget e)) (setq n (1+ n))) (setq e (entnext e))) "
             "n)");
}
BENCHMARK(entgetLines)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
