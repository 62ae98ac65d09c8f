#include "script/lisp/engine.hpp"

#include <numbers>

#include "script/lisp/function_table.hpp"
#include "script/lisp/printer.hpp"
#include "script/lisp/programs.hpp"
#include "script/lisp/reader.hpp"

namespace kova::script::lisp {

LispEngine::LispEngine(LispHost& host)
    : symbols_(std::make_unique<SymbolTable>()), machine_(std::make_unique<Machine>(host, *symbols_)) {
    registerBuiltins();
    registerCadBindings();
}

void LispEngine::registerGroups(bool cad) {
    for (const BuiltinGroup& group : builtinGroups()) {
        if (group.cad != cad) continue;
        for (const BuiltinDef& row : group.rows) symbols_->intern(row.name)->value = Value::builtin(&row);
    }
}

void LispEngine::registerBuiltins() {
    registerGroups(false);
    symbols_->intern("PI")->value = Value::real(std::numbers::pi);
}

void LispEngine::registerCadBindings() {
    registerGroups(true);
    symbols_->pause->value = Value::string("\\");
}

LispEngine::~LispEngine() { machine_.reset(); }

LispEngine::Result LispEngine::resultOf(Machine::Outcome outcome) {
    switch (outcome.state) {
        case Machine::State::Waiting:
            return {};
        case Machine::State::Failed:
            return {{}, std::move(outcome.error)};
        case Machine::State::Done:
            break;
    }
    try {
        return {printed(outcome.value), {}};
    } catch (const std::exception& error) {
        return {{}, error.what()};
    }
}

LispEngine::Result LispEngine::evaluate(const std::string& text) {
    if (!machine_->isIdle()) return {{}, "LISP is at work already"};
    std::vector<Value> expressions;
    try {
        Reader reader(text, *symbols_);
        for (Value v; reader.read(v);) expressions.push_back(std::move(v));
    } catch (const std::exception& error) {
        return {{}, error.what()};
    }
    return resultOf(machine_->start(std::make_unique<Expressions>(std::move(expressions))));
}

LispEngine::Result LispEngine::feed(const std::string& line) { return resultOf(machine_->feed(line)); }

LispEngine::Result LispEngine::cancel() {
    if (!machine_->isWaiting()) return {};
    return resultOf(machine_->cancel("Function cancelled"));
}

LispEngine::Result LispEngine::loadFile(const std::string& path) {
    if (!machine_->isIdle()) return {{}, "LISP is at work already"};
    const Value load = Value::list({Value::symbol(symbols_->intern("LOAD")), Value::string(path)});
    return resultOf(machine_->start(std::make_unique<Expressions>(std::vector{load})));
}

}  // namespace kova::script::lisp
