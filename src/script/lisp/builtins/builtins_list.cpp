// Lists and kinds of values.

#include "script/lisp/function_table.hpp"

namespace kova::script::lisp {

namespace {

/// C[AD]+R by its letters: the last one is taken first.
const Value& path(const char* function, std::string_view letters, const Value& v) {
    const Value* at = &v;
    for (std::size_t i = letters.size(); i-- > 0;) {
        if (!at->isList()) badArgument(function, "a list", v);
        at = letters[i] == 'A' ? &at->car() : &at->cdr();
    }
    return *at;
}

template <std::size_t N>
struct Letters {
    constexpr Letters(const char (&text)[N]) { std::copy_n(text, N, value); }
    char value[N];
};

/// The function itself, by its whole name: "CADR".
template <Letters Name>
Value accessor(Machine&, Value* v, int) {
    constexpr std::size_t length = sizeof(Name.value) - 3;
    return path(Name.value, std::string_view(Name.value + 1, length), v[0]);
}

Value cons(Machine&, Value* v, int) { return Value::cons(std::move(v[0]), std::move(v[1])); }
Value list(Machine&, Value* v, int n) { return Value::list(v, static_cast<std::size_t>(n)); }

Value append(Machine&, Value* v, int n) {
    if (n == 0) return {};
    Value result = std::move(v[n - 1]);
    if (n > 1 && !result.isList()) badArgument("APPEND", "a list", result);
    std::vector<Value> items;
    for (int i = n - 1; i-- > 0;) {
        items.clear();
        for (ListView item(listArgument("APPEND", v[i])); item; ++item) items.push_back(*item);
        result = Value::list(items.data(), items.size(), std::move(result));
    }
    return result;
}

Value length(Machine&, Value* v, int) {
    std::int64_t count = 0;
    ListView item(listArgument("LENGTH", v[0]));
    for (; item; ++item) ++count;
    if (item.rest().isTrue()) badArgument("LENGTH", "a proper list", v[0]);
    return Value::integer(count);
}

Value last(Machine&, Value* v, int) {
    Value result;
    for (ListView item(listArgument("LAST", v[0])); item; ++item)
        if (!item.rest().cdr().isCons()) return *item;
    return result;
}

Value reverse(Machine&, Value* v, int) {
    Value result;
    for (ListView item(listArgument("REVERSE", v[0])); item; ++item) result = Value::cons(*item, std::move(result));
    return result;
}

Value nth(Machine&, Value* v, int) {
    std::int64_t n = integerArgument("NTH", v[0]);
    if (n < 0) badArgument("NTH", "an index that is not negative", v[0]);
    for (ListView item(listArgument("NTH", v[1])); item; ++item)
        if (n-- == 0) return *item;
    return {};
}

Value member(Machine&, Value* v, int) {
    for (ListView item(listArgument("MEMBER", v[1])); item; ++item)
        if (equalValues(v[0], *item)) return item.rest();
    return {};
}

Value assoc(Machine&, Value* v, int) {
    for (ListView item(listArgument("ASSOC", v[1])); item; ++item)
        if (item->isCons() && equalValues(v[0], item->car())) return *item;
    return {};
}

Value subst(Machine&, Value* v, int) {
    std::vector<Value> items;
    ListView item(listArgument("SUBST", v[2]));
    for (; item; ++item) items.push_back(equalValues(*item, v[1]) ? v[0] : *item);
    return Value::list(items.data(), items.size(), item.rest());
}

Value position(Machine&, Value* v, int) {
    std::int64_t n = 0;
    for (ListView item(listArgument("VL-POSITION", v[1])); item; ++item, ++n)
        if (equalValues(v[0], *item)) return Value::integer(n);
    return {};
}

Value removeItem(Machine&, Value* v, int) {
    std::vector<Value> items;
    for (ListView item(listArgument("VL-REMOVE", v[1])); item; ++item)
        if (!equalValues(v[0], *item)) items.push_back(*item);
    return Value::list(items);
}

Value listStar(Machine&, Value* v, int n) {
    return Value::list(v, static_cast<std::size_t>(n - 1), std::move(v[n - 1]));
}

Value listLength(Machine&, Value* v, int) {
    std::int64_t count = 0;
    ListView item(listArgument("VL-LIST-LENGTH", v[0]));
    for (; item; ++item) ++count;
    return item.rest().isTrue() ? Value() : Value::integer(count);
}

// Kinds -------------------------------------------------------------------------------------------------------

Value atom(Machine& m, Value* v, int) { return boolean(m, !v[0].isCons()); }
Value listp(Machine& m, Value* v, int) { return boolean(m, v[0].isList()); }
Value consp(Machine& m, Value* v, int) { return boolean(m, v[0].isCons()); }
Value numberp(Machine& m, Value* v, int) { return boolean(m, v[0].isNumber()); }
Value stringp(Machine& m, Value* v, int) { return boolean(m, v[0].isString()); }
Value symbolp(Machine& m, Value* v, int) { return boolean(m, v[0].isSymbol()); }

const char* typeName(const Value& v) {
    switch (v.kind()) {
        case Kind::Integer:
            return "INT";
        case Kind::Real:
            return "REAL";
        case Kind::String:
            return "STR";
        case Kind::Symbol:
            return "SYM";
        case Kind::Cons:
            return "LIST";
        case Kind::Builtin:
        case Kind::Function:
            return "SUBR";
        case Kind::Entity:
            return "ENAME";
        case Kind::Selection:
            return "PICKSET";
        case Kind::File:
            return "FILE";
        case Kind::Error:
            return "ERROR";
        default:
            return nullptr;
    }
}

Value type(Machine& m, Value* v, int) {
    const char* name = typeName(v[0]);
    return name != nullptr ? Value::symbol(m.symbols().intern(name)) : Value();
}

Value boundp(Machine& m, Value* v, int) {
    if (!v[0].isSymbol()) return {};
    const Value& value = m.variable(v[0].asSymbol());
    return boolean(m, value.kind() != Kind::Unbound && value.isTrue());
}

Value set(Machine& m, Value* v, int) {
    Symbol* symbol = symbolArgument("SET", v[0]);
    if (symbol->constant) throw LispError("SET: cannot change " + symbol->name);
    m.variable(symbol) = v[1];
    return v[1];
}

Value symbolName(Machine&, Value* v, int) { return Value::string(symbolArgument("VL-SYMBOL-NAME", v[0])->name); }

Value symbolValue(Machine& m, Value* v, int) {
    const Value& value = m.variable(symbolArgument("VL-SYMBOL-VALUE", v[0]));
    return value.kind() == Kind::Unbound ? Value() : value;
}

}  // namespace

#define KOVA_ACCESSOR(Name, Doc, Example) \
    { Name, 1, 1, accessor<Name>, "list", Doc, Example }

std::span<const BuiltinDef> listBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"CONS", 2, 2, cons, "value list", "A list with the value put in front; a dotted pair with an atom behind.",
         "(cons 1 '(2 3)) -> (1 2 3)"},
        KOVA_ACCESSOR("CAR", "The first item.", "(car '(1 2)) -> 1"),
        KOVA_ACCESSOR("CDR", "What follows the first item.", "(cdr '(1 2)) -> (2)"),
        KOVA_ACCESSOR("CAAR", "The CAR of the CAR.", "(caar '((1) 2)) -> 1"),
        KOVA_ACCESSOR("CADR", "The second item.", "(cadr '(1 2)) -> 2"),
        KOVA_ACCESSOR("CDAR", "The CDR of the CAR.", "(cdar '((1 2) 3)) -> (2)"),
        KOVA_ACCESSOR("CDDR", "What follows the second item.", "(cddr '(1 2 3)) -> (3)"),
        KOVA_ACCESSOR("CAAAR", "The CAR of the CAAR.", "(caaar '(((1)))) -> 1"),
        KOVA_ACCESSOR("CAADR", "The CAR of the CADR.", "(caadr '(1 (2))) -> 2"),
        KOVA_ACCESSOR("CADAR", "The CAR of the CDAR.", "(cadar '((1 2))) -> 2"),
        KOVA_ACCESSOR("CADDR", "The third item.", "(caddr '(1 2 3)) -> 3"),
        KOVA_ACCESSOR("CDAAR", "The CDR of the CAAR.", "(cdaar '(((1 2)))) -> (2)"),
        KOVA_ACCESSOR("CDADR", "The CDR of the CADR.", "(cdadr '(1 (2 3))) -> (3)"),
        KOVA_ACCESSOR("CDDAR", "The CDR of the CDAR.", "(cddar '((1 2 3))) -> (3)"),
        KOVA_ACCESSOR("CDDDR", "What follows the third item.", "(cdddr '(1 2 3 4)) -> (4)"),
        KOVA_ACCESSOR("CADDDR", "The fourth item.", "(cadddr '(1 2 3 4)) -> 4"),
        {"LIST", 0, kAny, list, "[value ...]", "A list of the values.", "(list 1 \"a\") -> (1 \"a\")"},
        {"APPEND", 0, kAny, append, "[list ...]", "One list of all items.", "(append '(1) '(2 3)) -> (1 2 3)"},
        {"LENGTH", 1, 1, length, "list", "The number of items.", "(length '(a b c)) -> 3"},
        {"LAST", 1, 1, last, "list", "The last item.", "(last '(1 2 3)) -> 3"},
        {"REVERSE", 1, 1, reverse, "list", "The items from last to first.", "(reverse '(1 2 3)) -> (3 2 1)"},
        {"NTH", 2, 2, nth, "index list", "The item at a position, from 0.", "(nth 1 '(a b c)) -> B"},
        {"MEMBER", 2, 2, member, "value list", "The rest of the list from the first equal item on.",
         "(member 2 '(1 2 3)) -> (2 3)"},
        {"ASSOC", 2, 2, assoc, "key list", "The first item that begins with the key.",
         "(assoc 2 '((1 . a) (2 . b))) -> (2 . B)"},
        {"SUBST", 3, 3, subst, "new old list", "The list with equal items replaced.",
         "(subst 9 1 '(1 2 1)) -> (9 2 9)"},
        {"VL-POSITION", 2, 2, position, "value list", "The position of the first equal item, from 0.",
         "(vl-position 'b '(a b)) -> 1"},
        {"VL-REMOVE", 2, 2, removeItem, "value list", "The list without equal items.", "(vl-remove 1 '(1 2 1)) -> (2)"},
        {"VL-LIST*", 1, kAny, listStar, "value [value ...]", "A list whose tail is the last value.",
         "(vl-list* 1 2 '(3)) -> (1 2 3)"},
        {"VL-LIST-LENGTH", 1, 1, listLength, "list", "The number of items; nil for a dotted list.",
         "(vl-list-length '(1 2)) -> 2"},
    };
    return rows;
}

std::span<const BuiltinDef> typeBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"ATOM", 1, 1, atom, "value", "T for everything but a list with items.", "(atom 'a) -> T"},
        {"LISTP", 1, 1, listp, "value", "T for a list, nil included.", "(listp '(1)) -> T"},
        {"VL-CONSP", 1, 1, consp, "value", "T for a list with items.", "(vl-consp nil) -> nil"},
        {"NUMBERP", 1, 1, numberp, "value", "T for an integer or a real.", "(numberp 1.5) -> T"},
        {"STRINGP", 1, 1, stringp, "value", "T for a string.", "(stringp \"a\") -> T"},
        {"VL-SYMBOLP", 1, 1, symbolp, "value", "T for a symbol.", "(vl-symbolp 'a) -> T"},
        {"TYPE", 1, 1, type, "value",
         "The kind of a value: INT, REAL, STR, SYM, LIST, SUBR, ENAME, PICKSET, FILE; nil for nil.",
         "(type 1.0) -> REAL"},
        {"BOUNDP", 1, 1, boundp, "symbol", "T when the symbol has a value other than nil.", "(boundp 'car) -> T"},
        {"SET", 2, 2, set, "symbol value", "Gives a symbol, which is evaluated, a value.", "(set 'a 5) -> 5"},
        {"VL-SYMBOL-NAME", 1, 1, symbolName, "symbol", "The symbol's name.", "(vl-symbol-name 'abc) -> \"ABC\""},
        {"VL-SYMBOL-VALUE", 1, 1, symbolValue, "symbol", "The symbol's value.", "(vl-symbol-value 'pi) -> 3.14159"},
    };
    return rows;
}

}  // namespace kova::script::lisp
