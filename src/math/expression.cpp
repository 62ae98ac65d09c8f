#include "math/expression.hpp"

#include <cmath>
#include <vector>

#include "math/angles.hpp"
#include "strings/case_fold.hpp"
#include "strings/numbers.hpp"

namespace kova::math {

namespace {

constexpr std::size_t kMaxLength = 4096;
constexpr int kMaxDepth = 100;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Sine and cosine that are exact at the quarters of a turn.
Vector2 directionAt(double degrees) {
    const double turn = std::fmod(degrees, 360.0);
    if (std::fmod(turn, 90.0) != 0.0) return Vector2::from_angle(toRadians(turn));
    const int quarter = (static_cast<int>(turn / 90.0) + 4) % 4;
    constexpr Vector2 kQuarters[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    return kQuarters[quarter];
}

struct Failure {
    std::string text;
};

double numberOf(const ExpressionValue& value) {
    if (const auto* number = std::get_if<double>(&value)) return *number;
    throw Failure{"a number is needed instead of a vector."};
}

Vector3 vectorOf(const ExpressionValue& value) {
    if (const auto* vector = std::get_if<Vector3>(&value)) return *vector;
    throw Failure{"a point or vector is needed instead of a number."};
}

using NumberFunction = double (*)(double);
struct NumberRow {
    std::string_view name;
    NumberFunction function;
};
constexpr NumberRow kNumberFunctions[] = {
    {"sin", [](double v) { return directionAt(v).y; }},
    {"cos", [](double v) { return directionAt(v).x; }},
    {"tan",
     [](double v) {
         const Vector2 d = directionAt(v);
         if (d.x == 0.0) throw Failure{"the tangent is not defined there."};
         return d.y / d.x;
     }},
    {"asin",
     [](double v) {
         if (std::abs(v) > 1.0) throw Failure{"the argument lies outside of -1 to 1."};
         return toDegrees(std::asin(v));
     }},
    {"acos",
     [](double v) {
         if (std::abs(v) > 1.0) throw Failure{"the argument lies outside of -1 to 1."};
         return toDegrees(std::acos(v));
     }},
    {"atan", [](double v) { return toDegrees(std::atan(v)); }},
    {"ln",
     [](double v) {
         if (!(v > 0.0)) throw Failure{"the logarithm needs a positive number."};
         return std::log(v);
     }},
    {"log",
     [](double v) {
         if (!(v > 0.0)) throw Failure{"the logarithm needs a positive number."};
         return std::log10(v);
     }},
    {"exp", [](double v) { return std::exp(v); }},
    {"exp10", [](double v) { return std::pow(10.0, v); }},
    {"sqr", [](double v) { return v * v; }},
    {"sqrt",
     [](double v) {
         if (v < 0.0) throw Failure{"the square root needs a number that is not negative."};
         return std::sqrt(v);
     }},
    {"round", [](double v) { return std::round(v); }},
    {"trunc", [](double v) { return std::trunc(v); }},
    {"r2d", [](double v) { return toDegrees(v); }},
    {"d2r", [](double v) { return toRadians(v); }},
};

double planAngle(const Vector3& v) { return toDegrees(normalizeAngle(std::atan2(v.y, v.x))); }

class Evaluator {
public:
    Evaluator(std::string_view text, ExpressionNames& names) : text_(text), names_(names) {}

    ExpressionValue run() {
        if (text_.size() > kMaxLength) throw Failure{"the expression is too long."};
        skip();
        if (at_ == text_.size()) throw Failure{"there is no expression."};
        const ExpressionValue value = sum();
        if (at_ < text_.size()) {
            if (text_[at_] == ')' || text_[at_] == ']') throw Failure{"unbalanced parentheses."};
            throw Failure{"unexpected \"" + std::string(text_.substr(at_, 12)) + "\"."};
        }
        return value;
    }

private:
    void skip() {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
    }
    bool next(char c) {
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        skip();
        return true;
    }
    void need(char c) {
        if (!next(c))
            throw Failure{at_ < text_.size() ? "unexpected \"" + std::string(text_.substr(at_, 12)) + "\"."
                                             : std::string("unbalanced parentheses.")};
    }
    bool ahead(char c) const { return at_ < text_.size() && text_[at_] == c; }

    static ExpressionValue checked(ExpressionValue value) {
        const bool finite = std::holds_alternative<double>(value) ? std::isfinite(std::get<double>(value))
                                                                  : std::get<Vector3>(value).is_finite();
        if (!finite) throw Failure{"the result is out of range."};
        return value;
    }

    /// Counts how deep parentheses, functions, signs and powers stand in each other.
    class Level {
    public:
        explicit Level(int& depth) : depth_(depth) {
            if (++depth_ > kMaxDepth) {
                --depth_;
                throw Failure{"the expression is nested too deep."};
            }
        }
        ~Level() { --depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        int& depth_;
    };

    ExpressionValue sum() {
        ExpressionValue left = product();
        for (;;) {
            const bool plus = ahead('+');
            if (!plus && !ahead('-')) return left;
            next(text_[at_]);
            const ExpressionValue right = product();
            if (left.index() != right.index()) throw Failure{"a number and a vector cannot be added."};
            if (const auto* a = std::get_if<double>(&left)) {
                const double b = std::get<double>(right);
                left = checked(plus ? *a + b : *a - b);
            } else {
                const Vector3 u = std::get<Vector3>(left);
                const Vector3 v = std::get<Vector3>(right);
                left = checked(plus ? u + v : u - v);
            }
        }
    }

    ExpressionValue product() {
        ExpressionValue left = sign();
        for (;;) {
            const char op = at_ < text_.size() ? text_[at_] : '\0';
            if (op != '*' && op != '/' && op != '&') return left;
            next(op);
            left = checked(combined(left, op, sign()));
        }
    }

    static ExpressionValue combined(const ExpressionValue& left, char op, const ExpressionValue& right) {
        const bool vectorLeft = std::holds_alternative<Vector3>(left);
        const bool vectorRight = std::holds_alternative<Vector3>(right);
        if (op == '&') return vectorOf(left).cross(vectorOf(right));
        if (op == '/') {
            const double by = numberOf(right);
            if (by == 0.0) throw Failure{"division by zero."};
            if (vectorLeft) return std::get<Vector3>(left) / by;
            return std::get<double>(left) / by;
        }
        if (vectorLeft && vectorRight) return std::get<Vector3>(left).dot(std::get<Vector3>(right));
        if (vectorLeft) return std::get<Vector3>(left) * std::get<double>(right);
        if (vectorRight) return std::get<Vector3>(right) * std::get<double>(left);
        return std::get<double>(left) * std::get<double>(right);
    }

    ExpressionValue sign() {
        const Level level(depth_);
        if (next('+')) return sign();
        if (!next('-')) return power();
        const ExpressionValue value = sign();
        if (const auto* number = std::get_if<double>(&value)) return -*number;
        return -std::get<Vector3>(value);
    }

    ExpressionValue power() {
        const ExpressionValue base = primary();
        if (!next('^')) return base;
        const double exponent = numberOf(sign());
        const double b = numberOf(base);
        if (b == 0.0 && exponent < 0.0) throw Failure{"division by zero."};
        if (b < 0.0 && exponent != std::trunc(exponent)) throw Failure{"a negative number has no such power."};
        return checked(std::pow(b, exponent));
    }

    ExpressionValue primary() {
        if (at_ >= text_.size()) throw Failure{"the expression is incomplete."};
        const Level level(depth_);
        if (next('(')) {
            const ExpressionValue value = sum();
            need(')');
            return value;
        }
        if (next('[')) return point();
        if (next('@')) return variable("@");
        const char c = text_[at_];
        if (isDigit(c) || c == '.') return number();
        if (isLetter(c)) return name();
        throw Failure{"unexpected \"" + std::string(text_.substr(at_, 12)) + "\"."};
    }

    double plainNumber() {
        double value = 0.0;
        const char* const begin = text_.data() + at_;
        const char* const end = strings::readReal(begin, text_.data() + text_.size(), value);
        if (end == nullptr || std::isinf(value)) throw Failure{"there is an invalid number."};
        at_ += static_cast<std::size_t>(end - begin);
        return value;
    }
    bool unit(char c) {
        if (at_ >= text_.size() || strings::foldCase(text_.substr(at_, 1))[0] != c) return false;
        if (at_ + 1 < text_.size() && isLetter(text_[at_ + 1])) return false;
        ++at_;
        return true;
    }

    double number() {
        double value = plainNumber();
        if (unit('d')) {
            const auto part = [&](char mark, double parts) {
                if (at_ >= text_.size() || !isDigit(text_[at_])) return;
                const double more = plainNumber();
                if (at_ >= text_.size() || text_[at_] != mark) throw Failure{"there is an invalid number."};
                ++at_;
                value += more / parts;
            };
            if (text_.substr(at_).find('\'') != std::string_view::npos) part('\'', 60.0);
            part('"', 3600.0);
        } else if (unit('r')) {
            value = toDegrees(value);
        } else if (unit('g')) {
            value *= 0.9;
        }
        skip();
        return value;
    }

    ExpressionValue variable(const std::string& name) {
        std::string error;
        if (const auto value = names_.variable(name, error)) return checked(*value);
        throw Failure{error.empty() ? "unknown name \"" + name + "\"." : error};
    }

    ExpressionValue name() {
        const std::size_t from = at_;
        while (at_ < text_.size() && (isLetter(text_[at_]) || isDigit(text_[at_]))) ++at_;
        const std::string word = strings::foldCase(text_.substr(from, at_ - from));
        skip();
        if (!next('(')) {
            if (word == "pi") return kPi;
            return variable(word);
        }
        std::vector<ExpressionValue> arguments;
        if (!ahead(')')) {
            do {
                arguments.push_back(sum());
            } while (next(','));
        }
        need(')');
        return checked(call(word, arguments));
    }

    ExpressionValue call(const std::string& word, const std::vector<ExpressionValue>& a) {
        for (const NumberRow& row : kNumberFunctions) {
            if (row.name != word) continue;
            want(word, a, 1);
            return row.function(numberOf(a[0]));
        }
        if (word == "abs") {
            want(word, a, 1);
            if (const auto* vector = std::get_if<Vector3>(&a[0])) return vector->length();
            return std::abs(numberOf(a[0]));
        }
        if (const auto value = vectorFunction(word, a)) return *value;
        std::string error;
        if (const auto value = names_.call(word, a, error)) return *value;
        throw Failure{error.empty() ? "unknown function \"" + word + "\"." : error};
    }

    static void want(const std::string& word, const std::vector<ExpressionValue>& a, std::size_t count) {
        if (a.size() == count) return;
        throw Failure{"wrong number of arguments for \"" + word + "\"."};
    }

    static std::optional<ExpressionValue> vectorFunction(const std::string& word,
                                                         const std::vector<ExpressionValue>& a) {
        const auto p = [&](std::size_t i) { return vectorOf(a[i]); };
        if (word == "xof" || word == "yof" || word == "zof") {
            want(word, a, 1);
            return p(0)[static_cast<std::size_t>(word[0] - 'x')];
        }
        if (word == "vec" || word == "vec1" || word == "dist") {
            want(word, a, 2);
            const Vector3 way = p(1) - p(0);
            if (word == "dist") return way.length();
            if (word == "vec") return way;
            return unitVector(way);
        }
        if (word == "ang") {
            if (a.size() == 1) return planAngle(p(0));
            if (a.size() == 2) return planAngle(p(1) - p(0));
            want(word, a, 3);
            const double angle = planAngle(p(2) - p(0)) - planAngle(p(1) - p(0));
            return angle < 0.0 ? angle + 360.0 : angle;
        }
        if (word == "dpl") {
            want(word, a, 3);
            return (p(0) - p(1)).cross(unitVector(p(2) - p(1))).length();
        }
        if (word == "plt") {
            want(word, a, 3);
            return p(0) + (p(1) - p(0)) * numberOf(a[2]);
        }
        if (word == "pld") {
            want(word, a, 3);
            return p(0) + unitVector(p(1) - p(0)) * numberOf(a[2]);
        }
        if (word == "rot") {
            want(word, a, 3);
            const Vector3 way = p(0) - p(1);
            const Vector2 turn = directionAt(numberOf(a[2]));
            return p(1) + Vector3(way.x * turn.x - way.y * turn.y, way.x * turn.y + way.y * turn.x, way.z);
        }
        if (word == "ill") {
            want(word, a, 4);
            const Vector3 u = p(1) - p(0);
            const Vector3 v = p(3) - p(2);
            const Vector3 w = p(2) - p(0);
            const Vector3 normal = u.cross(v);
            const double area = normal.length_squared();
            const double scale = u.length_squared() * v.length_squared();
            if (!(area > 1e-24 * scale)) throw Failure{"the lines are parallel."};
            if (std::abs(w.dot(normal)) > 1e-9 * std::sqrt(area) * (w.length() + 1.0))
                throw Failure{"the lines do not meet."};
            return p(0) + u * (w.cross(v).dot(normal) / area);
        }
        return std::nullopt;
    }

    static Vector3 unitVector(const Vector3& v) {
        const double length = v.length();
        if (!(length > 0.0)) throw Failure{"the two points coincide."};
        return v / length;
    }

    /// Behind the opening bracket.
    ExpressionValue point() {
        bool relative = false;
        bool world = false;
        for (;;) {
            if (!relative && next('@'))
                relative = true;
            else if (!world && next('*'))
                world = true;
            else
                break;
        }
        Vector3 p;
        const double first = coordinate();
        if (next('<')) {
            const Vector2 direction = directionAt(coordinate());
            if (next('<')) {
                const Vector2 up = directionAt(coordinate());
                p = Vector3(direction * (first * up.x), first * up.y);
            } else {
                p = Vector3(direction * first);
                if (next(',')) p.z = coordinate();
            }
        } else {
            p.x = first;
            if (next(',')) p.y = coordinate();
            if (next(',')) p.z = coordinate();
        }
        need(']');
        if (world) p = names_.fromWorld(p);
        if (relative) p = p + vectorOf(variable("@"));
        return checked(p);
    }
    double coordinate() {
        if (ahead(',') || ahead(']') || ahead('<')) return 0.0;
        return numberOf(sum());
    }

    std::string_view text_;
    ExpressionNames& names_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

}  // namespace

std::optional<ExpressionValue> ExpressionNames::variable(std::string_view, std::string&) { return std::nullopt; }

std::optional<ExpressionValue> ExpressionNames::call(std::string_view, std::span<const ExpressionValue>, std::string&) {
    return std::nullopt;
}

Vector3 ExpressionNames::fromWorld(const Vector3& world) { return world; }

std::optional<double> ExpressionResult::number() const {
    if (!ok() || !std::holds_alternative<double>(value)) return std::nullopt;
    return std::get<double>(value);
}

ExpressionResult evaluate(std::string_view text, ExpressionNames& names) {
    ExpressionResult result;
    try {
        result.value = Evaluator(text, names).run();
    } catch (const Failure& failure) {
        result.error = "Error: " + failure.text;
    }
    return result;
}

ExpressionResult evaluate(std::string_view text) {
    ExpressionNames none;
    return evaluate(text, none);
}

std::optional<ExpressionAssignment> parseAssignment(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    std::string_view name = text.substr(0, equals);
    while (!name.empty() && (name.front() == ' ' || name.front() == '\t')) name.remove_prefix(1);
    while (!name.empty() && (name.back() == ' ' || name.back() == '\t')) name.remove_suffix(1);
    if (name.empty() || !isLetter(name.front())) return std::nullopt;
    for (const char c : name)
        if (!isLetter(c) && !isDigit(c)) return std::nullopt;
    return ExpressionAssignment{strings::foldCase(name), std::string(text.substr(equals + 1))};
}

}  // namespace kova::math
