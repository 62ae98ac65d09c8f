#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "math/vector3.hpp"

namespace kova::math {

/// What an expression gives: a number, or a point or vector.
using ExpressionValue = std::variant<double, Vector3>;

/// What an expression finds outside itself: variables, functions of the caller, and the meaning of typed points. The
/// functions here know nothing.
class ExpressionNames {
public:
    virtual ~ExpressionNames() = default;
    /// The value of a name without parentheses ("width", "cur", "@"), in lower case; nothing: unknown. A text in
    /// `error` says instead why a known name has no value.
    virtual std::optional<ExpressionValue> variable(std::string_view name, std::string& error);
    /// A function that is none of the built-in ones, by its name in lower case. As above.
    virtual std::optional<ExpressionValue> call(std::string_view name, std::span<const ExpressionValue> arguments,
                                                std::string& error);
    /// The point that "[*x,y,z]" means, typed in world coordinates instead of the current ones.
    virtual Vector3 fromWorld(const Vector3& world);
};

struct ExpressionResult {
    ExpressionValue value = 0.0;
    std::string error;  ///< "Error: ..."; empty when there is a value

    bool ok() const { return error.empty(); }
    /// The value when it is a number.
    std::optional<double> number() const;
};

/// Evaluates what a calculator is given. Numbers, also angles as 30d15'20" or with r (radians) or g (grads) behind,
/// which become degrees; + - * / ^ and parentheses; points and vectors [x,y,z], [distance<angle], [distance<angle,z],
/// [distance<angle<angle], with @ (from the variable "@") or * (world) in front, missing coordinates being 0. Vectors
/// are added, scaled, multiplied to their scalar (*) and vector (&) product. Angles are degrees.
/// Functions of numbers: sin cos tan asin acos atan ln log exp exp10 sqr sqrt abs round trunc r2d d2r; of vectors: abs,
/// vec(a,b), vec1(a,b), xof, yof, zof, dist(a,b), ang(v), ang(a,b), ang(apex,a,b), dpl(p,a,b), plt(a,b,t), pld(a,b,d),
/// ill(a,b,c,d), rot(p,origin,angle). pi is a constant.
/// Time and recursion are bounded by the length of the text, which may be 4096 characters.
ExpressionResult evaluate(std::string_view text, ExpressionNames& names);
ExpressionResult evaluate(std::string_view text);

/// "name = expression" taken apart; nothing when the text assigns to no name.
struct ExpressionAssignment {
    std::string name;  ///< in lower case
    std::string expression;
};
std::optional<ExpressionAssignment> parseAssignment(std::string_view text);

}  // namespace kova::math
