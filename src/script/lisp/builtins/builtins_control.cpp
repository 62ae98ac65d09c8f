// Functions that call functions, errors, loading.

#include <filesystem>

#include "io/text_file.hpp"
#include "engine/sysvars/host.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/compiler.hpp"
#include "script/lisp/cycles.hpp"
#include "script/lisp/files.hpp"
#include "script/lisp/programs.hpp"

namespace kova::script::lisp {

namespace {

Value eval(Machine& m, Value* v, int) {
    Environment* scope = m.scope();
    Value code = compileExpression(v[0], scope, m.symbols());
    Heap::charge(sizeof(FunctionObject));
    return m.call(Value::object(new FunctionObject(std::move(code), scope != nullptr ? Value::object(scope) : Value())),
                  {});
}

Value apply(Machine& m, Value* v, int n) {
    Value function = functionArgument(m, v[0]);
    std::vector<Value> arguments(v + 1, v + n - 1);
    for (ListView item(listArgument("APPLY", v[n - 1])); item; ++item) arguments.push_back(*item);
    return m.call(std::move(function), std::move(arguments));
}

/// MAPCAR, and the functions that test the items of lists.
class Mapping final : public Continuation {
public:
    enum class Kind { Collect, Every, Some, RemoveIf, KeepIf, Member, MemberNot };
    Mapping(Kind kind, Value function, std::vector<Value> lists)
        : kind_(kind), function_(std::move(function)), lists_(std::move(lists)) {}

    Value step(Machine& m, Value result) override {
        if (std::exchange(started_, true)) {
            switch (kind_) {
                case Kind::Collect:
                    results_.push_back(std::move(result));
                    break;
                case Kind::Every:
                    if (result.isNil()) return {};
                    break;
                case Kind::Some:
                    if (result.isTrue()) return result;
                    break;
                case Kind::RemoveIf:
                case Kind::KeepIf:
                    if (result.isTrue() == (kind_ == Kind::KeepIf)) results_.push_back(lists_[0].car());
                    break;
                case Kind::Member:
                case Kind::MemberNot:
                    if (result.isTrue() == (kind_ == Kind::Member)) return lists_[0];
                    break;
            }
            for (Value& list : lists_) list = Value(list.cdr());
        }
        std::vector<Value> arguments;
        arguments.reserve(lists_.size());
        for (const Value& list : lists_) {
            if (!list.isCons()) return finish(m);
            arguments.push_back(list.car());
        }
        return m.call(function_, std::move(arguments));
    }

private:
    Value finish(Machine& m) const {
        switch (kind_) {
            case Kind::Every:
                return boolean(m, true);
            case Kind::Collect:
            case Kind::RemoveIf:
            case Kind::KeepIf:
                return Value::list(results_);
            default:
                return {};
        }
    }

    Kind kind_;
    Value function_;
    std::vector<Value> lists_;
    std::vector<Value> results_;
    bool started_ = false;
};

template <Mapping::Kind K>
Value mapping(Machine& m, Value* v, int n) {
    static constexpr const char* names[] = {"MAPCAR",           "VL-EVERY",     "VL-SOME",         "VL-REMOVE-IF",
                                            "VL-REMOVE-IF-NOT", "VL-MEMBER-IF", "VL-MEMBER-IF-NOT"};
    Value function = functionArgument(m, v[0]);
    for (int i = 1; i < n; ++i) listArgument(names[static_cast<int>(K)], v[i]);
    return m.start(m, std::make_unique<Mapping>(K, std::move(function), std::vector<Value>(v + 1, v + n)));
}

/// A stable merge sort whose comparisons are calls.
class Sorting final : public Continuation {
public:
    Sorting(Value less, std::vector<Value> items, bool indexes)
        : less_(std::move(less)), indexes_(indexes), from_(items.size()), to_(items.size()), items_(std::move(items)) {
        for (std::size_t i = 0; i < from_.size(); ++i) from_[i] = i;
    }

    Value step(Machine& m, Value result) override {
        const std::size_t n = from_.size();
        if (std::exchange(comparing_, false)) take(result.isTrue());
        for (;;) {
            if (width_ >= n) return finish();
            if (!merging_) {
                if (low_ >= n) {
                    from_.swap(to_);
                    width_ *= 2;
                    low_ = 0;
                    continue;
                }
                middle_ = std::min(low_ + width_, n);
                high_ = std::min(low_ + 2 * width_, n);
                left_ = low_;
                right_ = middle_;
                out_ = low_;
                merging_ = true;
            }
            if (left_ < middle_ && right_ < high_) {
                comparing_ = true;
                return m.call(less_, {items_[from_[right_]], items_[from_[left_]]});
            }
            while (left_ < middle_) to_[out_++] = from_[left_++];
            while (right_ < high_) to_[out_++] = from_[right_++];
            merging_ = false;
            low_ += 2 * width_;
        }
    }

private:
    void take(bool right) { to_[out_++] = from_[right ? right_++ : left_++]; }
    Value finish() const {
        ListBuilder list;
        for (const std::size_t i : from_) list.add(indexes_ ? Value::integer(static_cast<std::int64_t>(i)) : items_[i]);
        return list.finish();
    }

    Value less_;
    bool indexes_;
    std::vector<std::size_t> from_;
    std::vector<std::size_t> to_;
    std::vector<Value> items_;
    std::size_t width_ = 1;
    std::size_t low_ = 0, middle_ = 0, high_ = 0, left_ = 0, right_ = 0, out_ = 0;
    bool merging_ = false;
    bool comparing_ = false;
};

template <bool Indexes>
Value sort(Machine& m, Value* v, int) {
    const char* name = Indexes ? "VL-SORT-I" : "VL-SORT";
    std::vector<Value> items;
    for (ListView item(listArgument(name, v[0])); item; ++item) items.push_back(*item);
    Value less;
    try {
        less = functionArgument(m, v[1]);
    } catch (const LispError&) {
        throw LispError(std::string(name) + ": second argument is not a function");
    }
    return m.start(m, std::make_unique<Sorting>(std::move(less), std::move(items), Indexes));
}

class Catching final : public Continuation {
public:
    Catching(Value function, std::vector<Value> arguments)
        : function_(std::move(function)), arguments_(std::move(arguments)) {}
    Value step(Machine& m, Value result) override {
        if (std::exchange(called_, true)) return result;
        return m.call(function_, std::move(arguments_));
    }
    bool catches() const override { return true; }
    Value caught(const std::string& message) override { return Value::error(message); }

private:
    Value function_;
    std::vector<Value> arguments_;
    bool called_ = false;
};

Value catchAll(Machine& m, Value* v, int n) {
    std::vector<Value> arguments;
    if (n > 1)
        for (ListView item(listArgument("VL-CATCH-ALL-APPLY", v[1])); item; ++item) arguments.push_back(*item);
    Value function;
    try {
        function = functionArgument(m, v[0]);
    } catch (const LispError& error) {
        return Value::error(error.what());
    }
    return m.start(m, std::make_unique<Catching>(std::move(function), std::move(arguments)));
}

Value isError(Machine& m, Value* v, int) { return boolean(m, v[0].kind() == Kind::Error); }

Value errorMessage(Machine&, Value* v, int) {
    if (v[0].kind() != Kind::Error) badArgument("VL-CATCH-ALL-ERROR-MESSAGE", "an error", v[0]);
    return Value::string(v[0].as<ErrorObject>()->message);
}

Value quit(Machine&, Value*, int) { throw LispError("quit / exit abort"); }
Value nothing(Machine&, Value*, int) { return {}; }
Value quiet(Machine&, Value*, int) { return Value::quiet(); }

Value collect(Machine&, Value*, int) {
    Cycles::collect();
    return {};
}

Value load(Machine& m, Value* v, int n) {
    const std::string& name = stringArgument("LOAD", v[0]);
    const auto path = findProgramFile(m, name, true);
    std::optional<std::string> text;
    if (path) text = cmd::readTextFile(*path, cmd::codePageOf(m.drawing()));
    if (!text) {
        if (n > 1) return v[1].isCallable() ? m.call(v[1], {}) : v[1];
        throw LispError("LOAD: cannot read " + name);
    }
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(*path, error);
    const std::string known = error ? *path : full.lexically_normal().string();
    if (std::find(m.loadedFiles.begin(), m.loadedFiles.end(), known) == m.loadedFiles.end())
        m.loadedFiles.push_back(known);
    return m.start(m, std::make_unique<TextProgram>(std::move(*text)));
}

Value ver(Machine&, Value*, int) { return Value::string("Kova LISP (en)"); }

/// Functions or symbols that are defined, as names; a second argument other than 0 is of no further effect.
Value atomsFamily(Machine& m, Value* v, int n) {
    const bool names = integerArgument("ATOMS-FAMILY", v[0]) != 0;
    ListBuilder out;
    const auto known = [](const Symbol& s) { return s.value.kind() != Kind::Unbound && s.value.isTrue(); };
    if (n > 1) {
        for (ListView item(listArgument("ATOMS-FAMILY", v[1])); item; ++item) {
            const std::string& text = item->isSymbol() ? item->asSymbol()->name : stringArgument("ATOMS-FAMILY", *item);
            Symbol* s = m.symbols().intern(text);
            out.add(!known(*s) && s->form == Form::None ? Value() : names ? Value::string(s->name) : Value::symbol(s));
        }
        return out.finish();
    }
    std::vector<Symbol*> all;
    for (const auto& [name, s] : m.symbols().all())
        if (known(*s)) all.push_back(s.get());
    std::sort(all.begin(), all.end(), [](const Symbol* a, const Symbol* b) { return a->name < b->name; });
    for (Symbol* s : all) out.add(names ? Value::string(s->name) : Value::symbol(s));
    return out.finish();
}

}  // namespace

std::span<const BuiltinDef> controlBuiltins() {
    using K = Mapping::Kind;
    static constexpr BuiltinDef rows[] = {
        {"EVAL", 1, 1, eval, "expression", "The value of an expression's value.", "(eval '(+ 1 2)) -> 3"},
        {"APPLY", 2, kAny, apply, "function [value ...] list", "Calls a function with the items of a list.",
         "(apply '+ '(1 2 3)) -> 6"},
        {"MAPCAR", 2, kAny, mapping<K::Collect>, "function list [list ...]",
         "The values of a function for the items of lists.", "(mapcar '+ '(1 2) '(10 20)) -> (11 22)"},
        {"VL-SORT", 2, 2, sort<false>, "list less", "The items in order; equal ones keep theirs.",
         "(vl-sort '(3 1 2) '<) -> (1 2 3)"},
        {"VL-SORT-I", 2, 2, sort<true>, "list less", "The positions of the items in order.",
         "(vl-sort-i '(30 10 20) '<) -> (1 2 0)"},
        {"VL-EVERY", 2, kAny, mapping<K::Every>, "test list [list ...]", "T when the test holds for all items.",
         "(vl-every 'numberp '(1 2)) -> T"},
        {"VL-SOME", 2, kAny, mapping<K::Some>, "test list [list ...]", "The test's first value that is not nil.",
         "(vl-some 'minusp '(1 -2)) -> T"},
        {"VL-REMOVE-IF", 2, 2, mapping<K::RemoveIf>, "test list", "The items for which the test does not hold.",
         "(vl-remove-if 'minusp '(1 -2 3)) -> (1 3)"},
        {"VL-REMOVE-IF-NOT", 2, 2, mapping<K::KeepIf>, "test list", "The items for which the test holds.",
         "(vl-remove-if-not 'minusp '(1 -2 3)) -> (-2)"},
        {"VL-MEMBER-IF", 2, 2, mapping<K::Member>, "test list",
         "The rest of the list from the first item on for which the test holds.",
         "(vl-member-if 'minusp '(1 -2 3)) -> (-2 3)"},
        {"VL-MEMBER-IF-NOT", 2, 2, mapping<K::MemberNot>, "test list",
         "The same for the first item for which it does not hold.", "(vl-member-if-not 'minusp '(-1 2)) -> (2)"},
        {"VL-CATCH-ALL-APPLY", 1, 2, catchAll, "function [list]",
         "Calls a function with the items of a list; an error becomes the value.",
         "(vl-catch-all-error-p (vl-catch-all-apply '/ '(1 0))) -> T"},
        {"VL-CATCH-ALL-ERROR-P", 1, 1, isError, "value", "T for an error that was caught.",
         "(vl-catch-all-error-p 1) -> nil"},
        {"VL-CATCH-ALL-ERROR-MESSAGE", 1, 1, errorMessage, "error", "The error's text.",
         "(vl-catch-all-error-message (vl-catch-all-apply '/ '(1 0))) -> \"/: divide by zero\""},
        {"QUIT", 0, 0, quit, "", "Ends the evaluation with an error.", "(quit)"},
        {"EXIT", 0, 0, quit, "", "Ends the evaluation with an error.", "(exit)"},
        {"LOAD", 1, 2, load, "file [on-failure]",
         "Evaluates a file's expressions; \".lsp\" may be left out. Gives the last value.", "(load \"bolt\")"},
        {"VL-LOAD-COM", 0, 0, quiet, "", "Does nothing: programs call it before they use the VL- functions.",
         "(vl-load-com)"},
        {"*PUSH-ERROR-USING-COMMAND*", 0, 0, nothing, "",
         "Does nothing: *ERROR* functions may use COMMAND and see local variables.",
         "(*push-error-using-command*) -> nil"},
        {"*PUSH-ERROR-USING-STACK*", 0, 0, nothing, "", "Does nothing, as *PUSH-ERROR-USING-COMMAND*.",
         "(*push-error-using-stack*) -> nil"},
        {"*POP-ERROR-MODE*", 0, 0, nothing, "", "Does nothing.", "(*pop-error-mode*) -> nil"},
        {"GC", 0, 0, collect, "",
         "Frees functions and scopes that only hold each other, which else happens now and then; all other memory is "
         "freed as soon as it is not used.",
         "(gc) -> nil"},
        {"VER", 0, 0, ver, "", "The name of this LISP.", "(ver) -> \"Kova LISP (en)\""},
        {"ATOMS-FAMILY", 1, 2, atomsFamily, "format [names]",
         "The symbols that have a value: as symbols for format 0, as strings for 1; of given names only, with nil for "
         "those "
         "that have none.",
         "(atoms-family 1 '(\"CAR\" \"NOPE\")) -> (\"CAR\" nil)"},
    };
    return rows;
}

}  // namespace kova::script::lisp
