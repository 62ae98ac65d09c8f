#include "script/lisp/programs.hpp"

#include "script/lisp/compiler.hpp"

namespace kova::script::lisp {

namespace {

Value callable(const Value& expression, SymbolTable& symbols) {
    Value code = compileExpression(expression, nullptr, symbols);
    Heap::charge(sizeof(FunctionObject));
    return Value::object(new FunctionObject(std::move(code), Value()));
}

}  // namespace

Value Expressions::step(Machine& machine, Value result) {
    if (expressions_.empty()) return {};
    if (next_ >= expressions_.size()) return result;
    return machine.call(callable(expressions_[next_++], machine.symbols()), {});
}

Value TextProgram::step(Machine& machine, Value result) {
    if (!reader_) {
        std::string_view text = text_;
        if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
        reader_ = std::make_unique<Reader>(text, machine.symbols());
    }
    Value expression;
    if (!reader_->read(expression)) return std::exchange(any_, true) ? result : Value();
    any_ = true;
    return machine.call(callable(expression, machine.symbols()), {});
}

Value Calling::step(Machine& machine, Value result) {
    if (std::exchange(called_, true)) return result;
    return machine.call(function_, {});
}

}  // namespace kova::script::lisp
