#include "script/lisp/function_table.hpp"
#include "script/lisp/compiler.hpp"
#include "script/lisp/printer.hpp"

namespace kova::script::lisp {

void badArgument(const char* function, const char* expected, const Value& got) {
    std::string text = printed(got);
    if (text.size() > 60) text = text.substr(0, 57) + "...";
    throw LispError(std::string(function) + ": expected " + expected + ", got " + text);
}

double numberArgument(const char* function, const Value& v) {
    if (!v.isNumber()) badArgument(function, "a number", v);
    return v.number();
}

std::int64_t integerArgument(const char* function, const Value& v) {
    if (v.isInteger()) return v.asInteger();
    if (v.isReal() && v.asReal() == std::trunc(v.asReal()) && std::abs(v.asReal()) < 9e18)
        return static_cast<std::int64_t>(v.asReal());
    badArgument(function, "an integer", v);
}

const std::string& stringArgument(const char* function, const Value& v) {
    if (!v.isString()) badArgument(function, "a string", v);
    return v.text();
}

const Value& listArgument(const char* function, const Value& v) {
    if (!v.isList()) badArgument(function, "a list", v);
    return v;
}

Symbol* symbolArgument(const char* function, const Value& v) {
    if (!v.isSymbol()) throw LispError(std::string(function) + ": expected symbol");
    return v.asSymbol();
}

std::uint64_t entityArgument(const char* function, const Value& v) {
    if (!v.isEntity()) badArgument(function, "an entity name", v);
    return v.handle();
}

SelectionObject* selectionArgument(const char* function, const Value& v) {
    if (v.kind() != Kind::Selection) badArgument(function, "a selection set", v);
    return v.as<SelectionObject>();
}

FileObject* fileArgument(const char* function, const Value& v) {
    if (v.kind() != Kind::File) badArgument(function, "an open file", v);
    return v.as<FileObject>();
}

Value functionArgument(Machine& machine, const Value& v) {
    if (v.isCallable()) return v;
    if (v.isSymbol()) {
        const Value& bound = machine.variable(v.asSymbol());
        if (bound.isCallable()) return bound;
        if (bound.isCons()) return functionArgument(machine, bound);
    }
    if (v.isCons() && v.car().isSymbol() && v.car().asSymbol() == machine.symbols().lambda) {
        Environment* scope = machine.scope();
        Value code = compileFunction("LAMBDA", v.cdr(), scope, machine.symbols());
        Heap::charge(sizeof(FunctionObject));
        return Value::object(new FunctionObject(std::move(code), scope != nullptr ? Value::object(scope) : Value()));
    }
    throw LispError("Not a function: " + printed(v));
}

bool isPoint(const Value& v) {
    int count = 0;
    ListView item(v);
    for (; item && count < 4; ++item, ++count)
        if (!item->isNumber()) return false;
    return (count == 2 || count == 3) && item.rest().isNil();
}

math::Vector3 pointArgument(const char* function, const Value& v) {
    if (!isPoint(v)) badArgument(function, "a point", v);
    const Value& rest = v.cdr();
    math::Vector3 p(v.car().number(), rest.car().number(), 0.0);
    if (rest.cdr().isCons()) p.z = rest.cdr().car().number();
    if (!p.is_finite()) badArgument(function, "a point", v);
    return p;
}

Value pointValue(const math::Vector3& p) { return Value::list({Value::real(p.x), Value::real(p.y), Value::real(p.z)}); }

Value boolean(Machine& machine, bool on) { return on ? Value::symbol(machine.symbols().t) : Value(); }

}  // namespace kova::script::lisp
