#pragma once

#include <string>
#include <vector>

#include "script/lisp/machine.hpp"
#include "script/lisp/reader.hpp"

namespace kova::script::lisp {

/// Evaluates expressions one after the other, in the global scope; its value is the last one's.
class Expressions final : public Continuation {
public:
    explicit Expressions(std::vector<Value> expressions) : expressions_(std::move(expressions)) {}
    Value step(Machine& machine, Value result) override;

private:
    std::vector<Value> expressions_;
    std::size_t next_ = 0;
};

/// Reads and evaluates a text: an error in it stops behind what came before.
class TextProgram final : public Continuation {
public:
    explicit TextProgram(std::string text) : text_(std::move(text)) {}
    Value step(Machine& machine, Value result) override;

private:
    std::string text_;
    std::unique_ptr<Reader> reader_;
    bool any_ = false;
};

/// Calls a function without arguments.
class Calling final : public Continuation {
public:
    explicit Calling(Value function) : function_(std::move(function)) {}
    Value step(Machine& machine, Value result) override;

private:
    Value function_;
    bool called_ = false;
};

}  // namespace kova::script::lisp
