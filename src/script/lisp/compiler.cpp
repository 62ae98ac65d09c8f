#include "script/lisp/compiler.hpp"

#include "engine/model/name.hpp"

namespace kova::script::lisp {

namespace {

constexpr int kMaxNesting = 2000;
constexpr std::size_t kMaxVariables = 30'000;

/// The code being made of one function, and the ones around it.
struct Unit {
    Code* code;
    Unit* outer = nullptr;
    Environment* scope = nullptr;  ///< of the outermost unit: where the expression runs
    std::vector<bool> visible;     ///< variables that names reach; loop variables only within their loop
};

class Compiler {
public:
    explicit Compiler(SymbolTable& symbols) : symbols_(symbols) {}

    void expression(Unit& unit, const Value& x, bool tail);
    /// Parameters, locals and body of a function.
    void function(Unit& unit, const Value& parametersAndBody, const char* form);
    void sequence(Unit& unit, const Value& list, bool tail);

private:
    struct Place {
        enum class Kind : std::uint8_t { Global, Local, Outer } kind = Kind::Global;
        std::uint16_t depth = 0;
        std::int32_t index = 0;
    };
    struct Depth {
        explicit Depth(int& d) : depth(d) {
            if (++depth > kMaxNesting) {
                --depth;
                throw LispError("The expression is nested too deeply");
            }
        }
        ~Depth() { --depth; }
        int& depth;
    };

    static int emit(Unit& unit, Op op, std::int32_t index = 0, std::uint16_t depth = 0) {
        unit.code->code.push_back({static_cast<std::uint8_t>(op), depth, index});
        return static_cast<int>(unit.code->code.size()) - 1;
    }
    static int here(const Unit& unit) { return static_cast<int>(unit.code->code.size()); }
    static void land(Unit& unit, int jump) { unit.code->code[static_cast<std::size_t>(jump)].index = here(unit); }
    static std::int32_t constant(Unit& unit, Value v) {
        unit.code->constants.push_back(std::move(v));
        return static_cast<std::int32_t>(unit.code->constants.size()) - 1;
    }
    static void raise(Unit& unit, std::string text) {
        emit(unit, Op::Raise, constant(unit, Value::string(std::move(text))));
    }

    Place find(const Unit& unit, const Symbol* symbol) const;
    void load(Unit& unit, Symbol* symbol);
    void store(Unit& unit, Symbol* symbol);
    void call(Unit& unit, const Value& x, bool tail);
    void form(Unit& unit, Form form, const Value& x, bool tail);
    void setq(Unit& unit, const Value& x);
    void defun(Unit& unit, const Value& x);
    void cond(Unit& unit, const Value& clauses, bool tail);
    void loop(Unit& unit, Form form, const Value& rest);
    void foreach (Unit& unit, const Value& rest);
    void closure(Unit& unit, const std::string& name, const Value& rest, const char* form);
    bool isLambda(const Value& x) const {
        return x.isCons() && x.car().isSymbol() && x.car().asSymbol() == symbols_.lambda;
    }

    SymbolTable& symbols_;
    int nesting_ = 0;
};

Compiler::Place Compiler::find(const Unit& unit, const Symbol* symbol) const {
    std::uint16_t depth = 0;
    const Unit* u = &unit;
    for (;; u = u->outer, ++depth) {
        const auto& names = u->code->variables;
        for (std::size_t i = names.size(); i-- > 0;)
            if (names[i] == symbol && u->visible[i])
                return {depth == 0 ? Place::Kind::Local : Place::Kind::Outer, depth, static_cast<std::int32_t>(i)};
        if (u->outer == nullptr) break;
    }
    ++depth;
    for (Environment* e = u->scope; e != nullptr; e = e->parent(), ++depth) {
        for (std::uint32_t i = e->size(); i-- > 0;)
            if (e->code()->variables[i] == symbol && e->slots()[i].kind() != Kind::Unbound)
                return {Place::Kind::Outer, depth, static_cast<std::int32_t>(i)};
        if (depth == 0xFFFF) throw LispError("The expression is nested too deeply");
    }
    return {};
}

void Compiler::load(Unit& unit, Symbol* symbol) {
    const Place p = find(unit, symbol);
    switch (p.kind) {
        case Place::Kind::Local:
            emit(unit, Op::Local, p.index);
            break;
        case Place::Kind::Outer:
            emit(unit, Op::Outer, p.index, p.depth);
            break;
        case Place::Kind::Global:
            emit(unit, Op::Global, constant(unit, Value::symbol(symbol)));
            break;
    }
}

void Compiler::store(Unit& unit, Symbol* symbol) {
    const Place p = find(unit, symbol);
    switch (p.kind) {
        case Place::Kind::Local:
            emit(unit, Op::SetLocal, p.index);
            break;
        case Place::Kind::Outer:
            emit(unit, Op::SetOuter, p.index, p.depth);
            break;
        case Place::Kind::Global:
            emit(unit, Op::SetGlobal, constant(unit, Value::symbol(symbol)));
            break;
    }
}

void Compiler::sequence(Unit& unit, const Value& list, bool tail) {
    if (!list.isCons()) {
        emit(unit, Op::Nil);
        return;
    }
    for (ListView v(list); v;) {
        const Value& item = *v;
        ++v;
        expression(unit, item, tail && !v);
        if (v) emit(unit, Op::Pop);
    }
}

void Compiler::expression(Unit& unit, const Value& x, bool tail) {
    const Depth guard(nesting_);
    if (x.isSymbol()) return load(unit, x.asSymbol());
    if (x.isNil()) {
        emit(unit, Op::Nil);
        return;
    }
    if (!x.isCons()) {
        emit(unit, Op::Constant, constant(unit, x));
        return;
    }
    const Value& head = x.car();
    if (head.isSymbol() && head.asSymbol()->form != Form::None) return form(unit, head.asSymbol()->form, x, tail);
    call(unit, x, tail);
}

void Compiler::call(Unit& unit, const Value& x, bool tail) {
    const Value& head = x.car();
    bool takesFunctions = false;
    if (head.isSymbol()) {
        const Place p = find(unit, head.asSymbol());
        if (p.kind == Place::Kind::Global) {
            emit(unit, Op::GlobalFunction, constant(unit, head));
            takesFunctions = head.asSymbol()->value.kind() == Kind::Builtin;
        } else {
            load(unit, head.asSymbol());
            emit(unit, Op::Function);
        }
    } else if (head.isCons()) {
        expression(unit, head, false);
        emit(unit, Op::Function);
    } else {
        // No function, and never one: the text tells which.
        emit(unit, Op::Constant, constant(unit, head));
        emit(unit, Op::Function);
    }
    std::int32_t count = 0;
    for (ListView v(x.cdr()); v; ++v, ++count) {
        const Value& argument = *v;
        // (MAPCAR '(LAMBDA ...) list): the quoted function is compiled here, once, and sees the variables around it.
        if (takesFunctions && argument.isCons() && argument.car().isSymbol() &&
            argument.car().asSymbol() == symbols_.quote && isLambda(argument.cdr().car()) &&
            !argument.cdr().cdr().isCons()) {
            const std::string& name = head.asSymbol()->name;
            if (name == "MAPCAR" || name == "APPLY" || name.starts_with("VL-")) {
                closure(unit, "LAMBDA", argument.cdr().car().cdr(), "LAMBDA");
                continue;
            }
        }
        expression(unit, argument, false);
    }
    emit(unit, tail ? Op::TailCall : Op::Call, count);
}

void Compiler::form(Unit& unit, Form form, const Value& x, bool tail) {
    const Value& rest = x.cdr();
    switch (form) {
        case Form::Quote:
            emit(unit, Op::Constant, constant(unit, rest.car()));
            break;
        case Form::Function:
            if (isLambda(rest.car()))
                closure(unit, "LAMBDA", rest.car().cdr(), "LAMBDA");
            else
                emit(unit, Op::Constant, constant(unit, rest.car()));
            break;
        case Form::Setq:
            setq(unit, rest);
            break;
        case Form::Defun:
            defun(unit, rest);
            break;
        case Form::Lambda:
            closure(unit, "LAMBDA", rest, "LAMBDA");
            break;
        case Form::If: {
            expression(unit, rest.car(), false);
            const int otherwise = emit(unit, Op::JumpNil);
            expression(unit, rest.cdr().car(), tail);
            const int end = emit(unit, Op::Jump);
            land(unit, otherwise);
            expression(unit, rest.cdr().cdr().car(), tail);
            land(unit, end);
            break;
        }
        case Form::Cond:
            cond(unit, rest, tail);
            break;
        case Form::While:
        case Form::Repeat:
            loop(unit, form, rest);
            break;
        case Form::Foreach:
            foreach (unit, rest)
                ;
            break;
        case Form::Progn:
            sequence(unit, rest, tail);
            break;
        case Form::And:
        case Form::Or: {
            const bool isAnd = form == Form::And;
            if (!rest.isCons()) {
                if (isAnd)
                    emit(unit, Op::Constant, constant(unit, Value::symbol(symbols_.t)));
                else
                    emit(unit, Op::Nil);
                break;
            }
            std::vector<int> ends;
            for (ListView v(rest); v;) {
                expression(unit, *v, false);
                ++v;
                if (v) ends.push_back(emit(unit, isAnd ? Op::JumpNilKeep : Op::JumpTrueKeep));
            }
            for (const int end : ends) land(unit, end);
            emit(unit, Op::ToTrue);
            break;
        }
        case Form::None:
            break;
    }
}

void Compiler::setq(Unit& unit, const Value& rest) {
    if (!rest.isCons()) {
        emit(unit, Op::Nil);
        return;
    }
    for (ListView v(rest); v;) {
        if (!v->isSymbol()) return raise(unit, "SETQ: expected symbol");
        Symbol* symbol = v->asSymbol();
        ++v;
        if (!v) return raise(unit, "SETQ: too few arguments");
        expression(unit, *v, false);
        store(unit, symbol);
        ++v;
        if (v) emit(unit, Op::Pop);
    }
}

void Compiler::closure(Unit& unit, const std::string& name, const Value& rest, const char* form) {
    if (!rest.isCons()) return raise(unit, std::string(form) + ": expected params and body");
    const Value made = Value::object(new Code);
    Unit inner{made.as<Code>(), &unit};
    inner.code->name = name;
    function(inner, rest, form);
    inner.code->charge();
    emit(unit, Op::Closure, constant(unit, made));
}

void Compiler::defun(Unit& unit, const Value& rest) {
    if (!rest.isCons() || !rest.cdr().isCons()) return raise(unit, "DEFUN: expected name, params, body");
    if (!rest.car().isSymbol()) return raise(unit, "DEFUN: expected function name");
    Symbol* symbol = rest.car().asSymbol();
    closure(unit, symbol->name, rest.cdr(), "DEFUN");
    store(unit, symbol);
    emit(unit, Op::Pop);
    emit(unit, Op::Constant, constant(unit, rest.car()));
}

void Compiler::function(Unit& unit, const Value& rest, const char* form) {
    const auto fail = [&](const std::string& text) {
        raise(unit, std::string(form) + ": " + text);
        emit(unit, Op::Return);
    };
    if (!rest.isCons()) return fail("expected params and body");
    if (!rest.car().isList()) return fail("expected a parameter list");
    bool locals = false;
    for (ListView v(rest.car()); v; ++v) {
        if (!v->isSymbol()) return fail("expected symbol in the parameter list");
        if (v->asSymbol()->name == "/") {
            locals = true;
            continue;
        }
        if (v->asSymbol()->constant) return fail("cannot bind " + v->asSymbol()->name);
        if (unit.code->variables.size() >= kMaxVariables) return fail("too many parameters");
        unit.code->variables.push_back(v->asSymbol());
        unit.visible.push_back(true);
        ++unit.code->bound;
        if (!locals) ++unit.code->parameters;
    }
    sequence(unit, rest.cdr(), true);
    emit(unit, Op::Return);
}

void Compiler::cond(Unit& unit, const Value& clauses, bool tail) {
    std::vector<int> ends;
    for (ListView v(clauses); v; ++v) {
        if (!v->isCons()) {
            raise(unit, "COND: expected a clause");
            continue;
        }
        expression(unit, v->car(), false);
        if (!v->cdr().isCons()) {
            ends.push_back(emit(unit, Op::JumpTrueKeep));
            continue;
        }
        const int next = emit(unit, Op::JumpNil);
        sequence(unit, v->cdr(), tail);
        ends.push_back(emit(unit, Op::Jump));
        land(unit, next);
    }
    emit(unit, Op::Nil);
    for (const int end : ends) land(unit, end);
}

void Compiler::loop(Unit& unit, Form form, const Value& rest) {
    if (form == Form::While) {
        emit(unit, Op::Nil);
        const int start = here(unit);
        expression(unit, rest.car(), false);
        const int end = emit(unit, Op::JumpNil);
        if (rest.cdr().isCons()) {
            sequence(unit, rest.cdr(), false);
            emit(unit, Op::Swap1);
        }
        emit(unit, Op::Jump, start);
        land(unit, end);
        return;
    }
    expression(unit, rest.car(), false);
    emit(unit, Op::RepeatStart);
    const int start = emit(unit, Op::RepeatNext);
    if (rest.cdr().isCons()) {
        sequence(unit, rest.cdr(), false);
        emit(unit, Op::LoopEnd);
    }
    emit(unit, Op::Jump, start);
    land(unit, start);
}

void Compiler::foreach (Unit& unit, const Value& rest) {
    if (!rest.car().isSymbol() || rest.car().asSymbol()->constant) return raise(unit, "FOREACH: expected symbol");
    expression(unit, rest.cdr().car(), false);
    if (unit.code->variables.size() >= kMaxVariables) return raise(unit, "FOREACH: too many variables");
    const auto slot = static_cast<std::uint16_t>(unit.code->variables.size());
    unit.code->variables.push_back(rest.car().asSymbol());
    unit.visible.push_back(true);
    emit(unit, Op::ForeachStart);
    const int start = emit(unit, Op::ForeachNext, 0, slot);
    const Value& body = rest.cdr().cdr();
    if (body.isCons()) {
        sequence(unit, body, false);
        emit(unit, Op::LoopEnd);
    }
    emit(unit, Op::Jump, start);
    land(unit, start);
    emit(unit, Op::SetUnbound, slot);
    unit.visible[slot] = false;
}

}  // namespace

Value compileExpression(const Value& expression, Environment* scope, SymbolTable& symbols) {
    const Value made = Value::object(new Code);
    Unit unit{made.as<Code>(), nullptr, scope};
    Compiler compiler(symbols);
    compiler.expression(unit, expression, true);
    unit.code->code.push_back({static_cast<std::uint8_t>(Op::Return)});
    unit.code->charge();
    return made;
}

Value compileFunction(const std::string& name, const Value& rest, Environment* scope, SymbolTable& symbols) {
    const Value made = Value::object(new Code);
    Unit unit{made.as<Code>(), nullptr, scope};
    unit.code->name = name;
    Compiler compiler(symbols);
    compiler.function(unit, rest, "LAMBDA");
    unit.code->charge();
    return made;
}

}  // namespace kova::script::lisp
