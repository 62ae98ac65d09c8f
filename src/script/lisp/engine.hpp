#pragma once

#include <memory>
#include <string>
#include <vector>

#include "script/lisp/evaluator.hpp"
#include "script/lisp/machine.hpp"

namespace kova::script::lisp {

/// The LISP of one session: its symbols, and the machine that evaluates. Errors come out as texts.
class LispEngine final : public LispEvaluator {
public:
    /// The host must outlive the engine.
    explicit LispEngine(LispHost& host);
    ~LispEngine() override;

    /// Evaluates all expressions of a text, once the whole text has been read; the last one's value counts.
    Result evaluate(const std::string& text) override;
    bool isWaiting() const override { return machine_->isWaiting(); }
    std::string prompt() const override { return machine_->prompt(); }
    Result feed(const std::string& line) override;
    Result cancel() override;

    /// Evaluates a file, as (load path) does.
    Result loadFile(const std::string& path);
    /// The files that were loaded since the start, each once, in order.
    const std::vector<std::string>& loadedFiles() const { return machine_->loadedFiles; }

    Machine& machine() { return *machine_; }
    SymbolTable& symbols() { return *symbols_; }

private:
    Result resultOf(Machine::Outcome outcome);
    /// The core of the language.
    void registerBuiltins();
    /// What works on the drawing and the command line.
    void registerCadBindings();
    void registerGroups(bool cad);

    std::unique_ptr<SymbolTable> symbols_;
    std::unique_ptr<Machine> machine_;
};

}  // namespace kova::script::lisp
