// Arithmetic and comparison.

#include <cmath>
#include <numeric>

#include "script/lisp/function_table.hpp"

namespace kova::script::lisp {

namespace {

/// An integer while everything is one and fits, else a real.
struct Number {
    bool real = false;
    std::int64_t i = 0;
    double r = 0.0;

    double value() const { return real ? r : static_cast<double>(i); }
    Value toValue() const { return real ? Value::real(r) : Value::integer(i); }
    void makeReal(double v) {
        real = true;
        r = v;
    }
};

Number numberOf(const char* function, const Value& v) {
    Number n;
    if (v.isInteger())
        n.i = v.asInteger();
    else
        n.makeReal(numberArgument(function, v));
    return n;
}

enum class Operation { Add, Subtract, Multiply };

template <Operation O>
void combine(const char* function, Number& a, const Value& v) {
    const Number b = numberOf(function, v);
    if (!a.real && !b.real) {
        std::int64_t result = 0;
        bool over = false;
        if constexpr (O == Operation::Add) over = __builtin_add_overflow(a.i, b.i, &result);
        if constexpr (O == Operation::Subtract) over = __builtin_sub_overflow(a.i, b.i, &result);
        if constexpr (O == Operation::Multiply) over = __builtin_mul_overflow(a.i, b.i, &result);
        if (!over) {
            a.i = result;
            return;
        }
    }
    if constexpr (O == Operation::Add) a.makeReal(a.value() + b.value());
    if constexpr (O == Operation::Subtract) a.makeReal(a.value() - b.value());
    if constexpr (O == Operation::Multiply) a.makeReal(a.value() * b.value());
}

Value add(Machine&, Value* v, int n) {
    Number sum;
    for (int i = 0; i < n; ++i) combine<Operation::Add>("+", sum, v[i]);
    return sum.toValue();
}

Value subtract(Machine&, Value* v, int n) {
    if (n == 0) return Value::integer(0);
    Number result;
    int i = 0;
    if (n > 1) result = numberOf("-", v[i++]);
    for (; i < n; ++i) combine<Operation::Subtract>("-", result, v[i]);
    return result.toValue();
}

Value multiply(Machine&, Value* v, int n) {
    if (n == 0) return Value::integer(0);
    Number result = numberOf("*", v[0]);
    for (int i = 1; i < n; ++i) combine<Operation::Multiply>("*", result, v[i]);
    return result.toValue();
}

Value divide(Machine&, Value* v, int n) {
    if (n == 0) return Value::integer(0);
    Number a = numberOf("/", v[0]);
    for (int i = 1; i < n; ++i) {
        const Number b = numberOf("/", v[i]);
        if (b.value() == 0.0) throw LispError("/: divide by zero");
        if (!a.real && !b.real && !(b.i == -1 && a.i == std::numeric_limits<std::int64_t>::min()))
            a.i /= b.i;
        else
            a.makeReal(a.value() / b.value());
    }
    return a.toValue();
}

Value rem(Machine&, Value* v, int n) {
    if (n == 0) return Value::integer(0);
    Number a = numberOf("REM", v[0]);
    for (int i = 1; i < n; ++i) {
        const Number b = numberOf("REM", v[i]);
        if (b.value() == 0.0) throw LispError("REM: divide by zero");
        if (!a.real && !b.real)
            a.i = b.i == -1 ? 0 : a.i % b.i;
        else
            a.makeReal(std::fmod(a.value(), b.value()));
    }
    return a.toValue();
}

Value increment(Machine&, Value* v, int) {
    Number a = numberOf("1+", v[0]);
    combine<Operation::Add>("1+", a, Value::integer(1));
    return a.toValue();
}

Value decrement(Machine&, Value* v, int) {
    Number a = numberOf("1-", v[0]);
    combine<Operation::Subtract>("1-", a, Value::integer(1));
    return a.toValue();
}

Value absolute(Machine&, Value* v, int) {
    Number a = numberOf("ABS", v[0]);
    if (a.real) return Value::real(std::abs(a.r));
    if (a.i == std::numeric_limits<std::int64_t>::min()) return Value::real(-static_cast<double>(a.i));
    return Value::integer(std::abs(a.i));
}

template <bool Max>
Value extreme(Machine&, Value* v, int n) {
    const char* name = Max ? "MAX" : "MIN";
    if (n == 0) return Value::integer(0);
    Number best = numberOf(name, v[0]);
    bool real = best.real;
    for (int i = 1; i < n; ++i) {
        const Number b = numberOf(name, v[i]);
        real = real || b.real;
        if (Max ? b.value() > best.value() : b.value() < best.value()) best = b;
    }
    // One real makes the result a real.
    if (real && !best.real) best.makeReal(best.value());
    return best.toValue();
}

Value gcd(Machine&, Value* v, int n) {
    std::int64_t result = 0;
    for (int i = 0; i < n; ++i) {
        const std::int64_t b = integerArgument("GCD", v[i]);
        if (b == std::numeric_limits<std::int64_t>::min()) badArgument("GCD", "a smaller number", v[i]);
        result = std::gcd(result, b);
    }
    return Value::integer(result);
}

Value fix(Machine&, Value* v, int) {
    if (v[0].isInteger()) return v[0];
    const double r = std::trunc(numberArgument("FIX", v[0]));
    if (!(std::abs(r) < 9.2e18)) return Value::real(r);
    return Value::integer(static_cast<std::int64_t>(r));
}

Value toFloat(Machine&, Value* v, int) { return Value::real(numberArgument("FLOAT", v[0])); }

Value finite(const char* function, double result) {
    if (!std::isfinite(result)) throw LispError(std::string(function) + ": the result is out of range");
    return Value::real(result);
}

Value squareRoot(Machine&, Value* v, int) {
    const double r = numberArgument("SQRT", v[0]);
    if (r < 0.0) badArgument("SQRT", "a number that is not negative", v[0]);
    return Value::real(std::sqrt(r));
}

Value expt(Machine&, Value* v, int) {
    Number base = numberOf("EXPT", v[0]);
    const Number power = numberOf("EXPT", v[1]);
    if (!base.real && !power.real && power.i >= 0) {
        std::int64_t result = 1;
        std::int64_t factor = base.i;
        bool over = false;
        for (std::int64_t p = power.i; p > 0 && !over; p >>= 1) {
            if ((p & 1) != 0) over = __builtin_mul_overflow(result, factor, &result);
            if (p > 1) over = over || __builtin_mul_overflow(factor, factor, &factor);
        }
        if (!over) return Value::integer(result);
    }
    return finite("EXPT", std::pow(base.value(), power.value()));
}

Value exponential(Machine&, Value* v, int) { return finite("EXP", std::exp(numberArgument("EXP", v[0]))); }

Value logarithm(Machine&, Value* v, int) {
    const double r = numberArgument("LOG", v[0]);
    if (!(r > 0.0)) badArgument("LOG", "a positive number", v[0]);
    return Value::real(std::log(r));
}

Value sine(Machine&, Value* v, int) { return finite("SIN", std::sin(numberArgument("SIN", v[0]))); }
Value cosine(Machine&, Value* v, int) { return finite("COS", std::cos(numberArgument("COS", v[0]))); }

Value arcTangent(Machine&, Value* v, int n) {
    const double y = numberArgument("ATAN", v[0]);
    return Value::real(n == 1 ? std::atan(y) : std::atan2(y, numberArgument("ATAN", v[1])));
}

Value logAnd(Machine&, Value* v, int n) {
    std::int64_t result = n == 0 ? 0 : -1;
    for (int i = 0; i < n; ++i) result &= integerArgument("LOGAND", v[i]);
    return Value::integer(result);
}

Value logOr(Machine&, Value* v, int n) {
    std::int64_t result = 0;
    for (int i = 0; i < n; ++i) result |= integerArgument("LOGIOR", v[i]);
    return Value::integer(result);
}

Value bitNot(Machine&, Value* v, int) { return Value::integer(~integerArgument("~", v[0])); }

Value shift(Machine&, Value* v, int) {
    const auto bits = static_cast<std::uint64_t>(integerArgument("LSH", v[0]));
    const std::int64_t by = integerArgument("LSH", v[1]);
    if (by >= 64 || by <= -64) return Value::integer(0);
    return Value::integer(static_cast<std::int64_t>(by >= 0 ? bits << by : bits >> -by));
}

Value boole(Machine&, Value* v, int n) {
    const std::int64_t f = integerArgument("BOOLE", v[0]);
    if (f < 0 || f > 15) badArgument("BOOLE", "a function from 0 to 15", v[0]);
    std::int64_t x = integerArgument("BOOLE", v[1]);
    for (int i = 2; i < n; ++i) {
        const std::int64_t y = integerArgument("BOOLE", v[i]);
        x = ((f & 1) != 0 ? x & y : 0) | ((f & 2) != 0 ? x & ~y : 0) | ((f & 4) != 0 ? ~x & y : 0) |
            ((f & 8) != 0 ? ~x & ~y : 0);
    }
    return Value::integer(x);
}

// Comparison --------------------------------------------------------------------------------------------------

bool same(const Value& a, const Value& b) {
    if (a.isNumber() && b.isNumber()) {
        return a.isInteger() && b.isInteger() ? a.asInteger() == b.asInteger() : a.number() == b.number();
    }
    return eqValues(a, b);
}

/// -1, 0 or 1; 2 when a number is none. Numbers, or texts.
int order(const char* function, const Value& a, const Value& b) {
    if (a.isString() && b.isString()) {
        const int c = a.text().compare(b.text());
        return c < 0 ? -1 : c > 0 ? 1 : 0;
    }
    if (a.isInteger() && b.isInteger())
        return a.asInteger() < b.asInteger() ? -1 : a.asInteger() > b.asInteger() ? 1 : 0;
    const double x = numberArgument(function, a);
    const double y = numberArgument(function, b);
    return x < y ? -1 : x > y ? 1 : x == y ? 0 : 2;
}

Value equalSign(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i)
        if (!same(v[i - 1], v[i])) return {};
    return boolean(m, true);
}

Value notEqualSign(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i)
        if (same(v[i - 1], v[i])) return {};
    return boolean(m, true);
}

Value less(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i)
        if (order("<", v[i - 1], v[i]) != -1) return {};
    return boolean(m, true);
}

Value lessEqual(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i) {
        const int c = order("<=", v[i - 1], v[i]);
        if (c != -1 && c != 0) return {};
    }
    return boolean(m, true);
}

Value greater(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i)
        if (order(">", v[i - 1], v[i]) != 1) return {};
    return boolean(m, true);
}

Value greaterEqual(Machine& m, Value* v, int n) {
    for (int i = 1; i < n; ++i) {
        const int c = order(">=", v[i - 1], v[i]);
        if (c != 1 && c != 0) return {};
    }
    return boolean(m, true);
}

Value eq(Machine& m, Value* v, int) { return boolean(m, eqValues(v[0], v[1])); }

Value equal(Machine& m, Value* v, int n) {
    const double fuzz = n > 2 ? numberArgument("EQUAL", v[2]) : 0.0;
    return boolean(m, equalValues(v[0], v[1], fuzz));
}

Value negate(Machine& m, Value* v, int) { return boolean(m, v[0].isNil()); }

Value zerop(Machine& m, Value* v, int) { return boolean(m, numberArgument("ZEROP", v[0]) == 0.0); }
Value minusp(Machine& m, Value* v, int) { return boolean(m, numberArgument("MINUSP", v[0]) < 0.0); }

}  // namespace

std::span<const BuiltinDef> numberBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"+", 0, kAny, add, "[number ...]", "The sum; an integer while all numbers are.", "(+ 1 2 3) -> 6"},
        {"-", 0, kAny, subtract, "[number ...]", "The first less the others; one number alone is negated.",
         "(- 10 1 2) -> 7"},
        {"*", 0, kAny, multiply, "[number ...]", "The product.", "(* 2 3.5) -> 7.0"},
        {"/", 0, kAny, divide, "[number ...]", "The first divided by the others; integers give an integer.",
         "(/ 7 2) -> 3"},
        {"1+", 1, 1, increment, "number", "One more.", "(1+ 4) -> 5"},
        {"1-", 1, 1, decrement, "number", "One less.", "(1- 4) -> 3"},
        {"ABS", 1, 1, absolute, "number", "The absolute value.", "(abs -2.5) -> 2.5"},
        {"MAX", 0, kAny, extreme<true>, "[number ...]", "The greatest; a real when one of them is.",
         "(max 1 5 3) -> 5"},
        {"MIN", 0, kAny, extreme<false>, "[number ...]", "The least.", "(min 1 5.0) -> 1.0"},
        {"REM", 0, kAny, rem, "[number ...]", "The remainder of the division.", "(rem 17 5) -> 2"},
        {"GCD", 0, kAny, gcd, "[integer ...]", "The greatest common divisor.", "(gcd 12 18) -> 6"},
        {"FIX", 1, 1, fix, "number", "The integer part.", "(fix -3.7) -> -3"},
        {"FLOAT", 1, 1, toFloat, "number", "The number as a real.", "(float 3) -> 3.0"},
        {"ATAN", 1, 2, arcTangent, "number [x]", "The arc tangent of a number, or of y / x in all four quadrants.",
         "(atan 0.0 -1.0) -> 3.14159"},
        {"SIN", 1, 1, sine, "angle", "The sine of an angle in radians.", "(sin 0.0) -> 0.0"},
        {"COS", 1, 1, cosine, "angle", "The cosine of an angle in radians.", "(cos 0.0) -> 1.0"},
        {"SQRT", 1, 1, squareRoot, "number", "The square root.", "(sqrt 9) -> 3.0"},
        {"EXPT", 2, 2, expt, "base power", "A power; an integer when both are and the power is not negative.",
         "(expt 2 10) -> 1024"},
        {"EXP", 1, 1, exponential, "number", "A power of e.", "(exp 0) -> 1.0"},
        {"LOG", 1, 1, logarithm, "number", "The natural logarithm.", "(log 1.0) -> 0.0"},
        {"LOGAND", 0, kAny, logAnd, "[integer ...]", "The bits that all integers have.", "(logand 7 12) -> 4"},
        {"LOGIOR", 0, kAny, logOr, "[integer ...]", "The bits that some integer has.", "(logior 1 4) -> 5"},
        {"BOOLE", 2, kAny, boole, "function integer [integer ...]",
         "Combines integers bit by bit. The function's bits 1, 2, 4 and 8 tell the result for bits of the first and "
         "second integer that are 11, 10, 01 and 00: 1 is AND, 6 is XOR, 7 is OR, 8 is NOR.",
         "(boole 6 12 10) -> 6"},
        {"~", 1, 1, bitNot, "integer", "All bits turned over.", "(~ 0) -> -1"},
        {"LSH", 2, 2, shift, "integer count", "The bits shifted left, or right for a negative count.",
         "(lsh 1 4) -> 16"},
    };
    return rows;
}

std::span<const BuiltinDef> comparisonBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"=", 1, kAny, equalSign, "atom [atom ...]", "T when all are equal: numbers by value, strings to the letter.",
         "(= 2 2.0) -> T"},
        {"/=", 1, kAny, notEqualSign, "atom [atom ...]", "T when no two neighbours are equal.", "(/= 1 2) -> T"},
        {"<", 1, kAny, less, "atom [atom ...]", "T when numbers, or strings, rise.", "(< 1 2 3) -> T"},
        {"<=", 1, kAny, lessEqual, "atom [atom ...]", "T when none is less than the one before.", "(<= 1 1 2) -> T"},
        {">", 1, kAny, greater, "atom [atom ...]", "T when they fall.", "(> 3 2 1) -> T"},
        {">=", 1, kAny, greaterEqual, "atom [atom ...]", "T when none is greater than the one before.",
         "(>= 1 2) -> nil"},
        {"EQ", 2, 2, eq, "value value", "T when both are the same object or equal atoms.", "(eq 'a 'a) -> T"},
        {"EQUAL", 2, 3, equal, "value value [fuzz]",
         "T when both are equal in structure; numbers may differ by the fuzz.",
         "(equal '(1 2.0) '(1 2.001) 0.01) -> T"},
        {"NOT", 1, 1, negate, "value", "T for nil, nil for everything else.", "(not nil) -> T"},
        {"NULL", 1, 1, negate, "value", "T for nil, nil for everything else.", "(null '(1)) -> nil"},
        {"ZEROP", 1, 1, zerop, "number", "T for zero.", "(zerop 0.0) -> T"},
        {"MINUSP", 1, 1, minusp, "number", "T for a negative number.", "(minusp -1) -> T"},
    };
    return rows;
}

}  // namespace kova::script::lisp
