#include "math/expression.hpp"

#include <gtest/gtest.h>

#include "math/angles.hpp"

namespace kova::math {
namespace {

double value(std::string_view text) {
    const ExpressionResult result = evaluate(text);
    EXPECT_TRUE(result.ok()) << text << " " << result.error;
    EXPECT_TRUE(result.number().has_value()) << text;
    return result.number().value_or(NAN);
}

Vector3 vectorValue(std::string_view text) {
    const ExpressionResult result = evaluate(text);
    EXPECT_TRUE(result.ok()) << text << " " << result.error;
    const auto* v = std::get_if<Vector3>(&result.value);
    EXPECT_NE(v, nullptr) << text;
    return v != nullptr ? *v : Vector3{NAN, NAN, NAN};
}

TEST(Expression, CountsAsUsual) {
    EXPECT_EQ(value("1+2*3-4/8"), 6.5);
    EXPECT_EQ(value(" ( 1 + 2 ) * 3 "), 9.0);
    EXPECT_EQ(value("2^3^2"), 512.0);
    EXPECT_EQ(value("-2^2"), -4.0);
    EXPECT_EQ(value("2^-1"), 0.5);
    EXPECT_EQ(value("2--3"), 5.0);
    EXPECT_EQ(value("7/2"), 3.5);
    EXPECT_EQ(value(".5e2+1E-1"), 50.1);
    EXPECT_EQ(value("10-3-2"), 5.0);
    EXPECT_DOUBLE_EQ(value("2*pi*PI"), 2.0 * kPi * kPi);
}

TEST(Expression, FunctionsAndAnglesAreInDegrees) {
    EXPECT_DOUBLE_EQ(value("sin(30)+0*cos(1)"), 0.5);
    EXPECT_EQ(value("cos(90)"), 0.0);
    EXPECT_EQ(value("sin(-450)"), -1.0);
    EXPECT_DOUBLE_EQ(value("tan(45)"), 1.0);
    EXPECT_DOUBLE_EQ(value("asin(1)+acos(0)+atan(1)"), 225.0);
    EXPECT_DOUBLE_EQ(value("ln(exp(2))+log(1000)+exp10(2)"), 105.0);
    EXPECT_EQ(value("sqrt(16)+sqr(3)+abs(-2)+round(2.5)+trunc(-2.7)"), 16.0);
    EXPECT_DOUBLE_EQ(value("r2d(pi)+d2r(180)/pi"), 181.0);
    EXPECT_DOUBLE_EQ(value("30d15'36\""), 30.26);
    EXPECT_DOUBLE_EQ(value("sin(1r)"), std::sin(1.0));
    EXPECT_DOUBLE_EQ(value("100g"), 90.0);
}

TEST(Expression, PointsAndVectors) {
    EXPECT_EQ(vectorValue("[1,2,3]+[1,,1]*2"), Vector3(3, 2, 5));
    EXPECT_EQ(vectorValue("[1+1,sqrt(4)]"), Vector3(2, 2, 0));
    EXPECT_EQ(vectorValue("[2<90]"), Vector3(0, 2, 0));
    EXPECT_EQ(vectorValue("[2<180,5]"), Vector3(-2, 0, 5));
    EXPECT_EQ(vectorValue("[2<0<90]"), Vector3(0, 0, 2));
    EXPECT_EQ(value("[1,2,3]*[4,5,6]"), 32.0);
    EXPECT_EQ(vectorValue("[1,0]&[0,1]"), Vector3(0, 0, 1));
    EXPECT_EQ(value("abs([3,4])+dist([1,1],[4,5])+yof([7,8,9])"), 18.0);
    EXPECT_DOUBLE_EQ(value("ang([0,0],[-1,0])"), 180.0);
    EXPECT_DOUBLE_EQ(value("ang([0,0],[0,1],[1,0])"), 270.0);
    EXPECT_EQ(vectorValue("ill([0,0],[10,10],[0,10],[10,0])"), Vector3(5, 5, 0));
    EXPECT_EQ(vectorValue("plt([0,0],[10,4],1/2)"), Vector3(5, 2, 0));
    EXPECT_EQ(vectorValue("pld([0,0],[10,0],3)"), Vector3(3, 0, 0));
    EXPECT_EQ(vectorValue("rot([2,1],[1,1],90)"), Vector3(1, 2, 0));
    EXPECT_EQ(value("dpl([3,7],[0,0],[10,0])"), 7.0);
}

TEST(Expression, AsksForNamesThatItDoesNotKnow) {
    struct Names final : ExpressionNames {
        std::optional<ExpressionValue> variable(std::string_view name, std::string& error) override {
            if (name == "width") return 4.0;
            if (name == "@") return Vector3(10, 20, 0);
            if (name == "end") error = "nothing can be picked here.";
            return std::nullopt;
        }
        std::optional<ExpressionValue> call(std::string_view name, std::span<const ExpressionValue> a,
                                            std::string&) override {
            if (name == "twice" && a.size() == 1) return std::get<double>(a[0]) * 2.0;
            return std::nullopt;
        }
        Vector3 fromWorld(const Vector3& world) override { return world - Vector3(1, 1, 0); }
    } names;
    EXPECT_EQ(evaluate("twice(Width)+1", names).number(), 9.0);
    EXPECT_EQ(std::get<Vector3>(evaluate("[@1,2]", names).value), Vector3(11, 22, 0));
    EXPECT_EQ(std::get<Vector3>(evaluate("[*1,2]", names).value), Vector3(0, 1, 0));
    EXPECT_EQ(std::get<Vector3>(evaluate("@+[0,0,1]", names).value), Vector3(10, 20, 1));
    EXPECT_EQ(evaluate("end", names).error, "Error: nothing can be picked here.");
    EXPECT_EQ(evaluate("depth", names).error, "Error: unknown name \"depth\".");
    EXPECT_EQ(evaluate("thrice(1)", names).error, "Error: unknown function \"thrice\".");
}

TEST(Expression, SaysWhatIsWrong) {
    EXPECT_EQ(evaluate("").error, "Error: there is no expression.");
    EXPECT_EQ(evaluate("1/0").error, "Error: division by zero.");
    EXPECT_EQ(evaluate("0^-1").error, "Error: division by zero.");
    EXPECT_EQ(evaluate("(1+2").error, "Error: unbalanced parentheses.");
    EXPECT_EQ(evaluate("1+2)").error, "Error: unbalanced parentheses.");
    EXPECT_EQ(evaluate("1+").error, "Error: the expression is incomplete.");
    EXPECT_EQ(evaluate("10 km").error, "Error: unexpected \"km\".");
    EXPECT_EQ(evaluate("sqrt(-1)").error, "Error: the square root needs a number that is not negative.");
    EXPECT_EQ(evaluate("1+[1,2]").error, "Error: a number and a vector cannot be added.");
    EXPECT_EQ(evaluate("sin(1,2)").error, "Error: wrong number of arguments for \"sin\".");
    EXPECT_EQ(evaluate("sin()").error, "Error: wrong number of arguments for \"sin\".");
    EXPECT_EQ(evaluate("ill([0,0],[1,0],[0,1],[1,1])").error, "Error: the lines are parallel.");
    EXPECT_EQ(evaluate("10^400").error, "Error: the result is out of range.");
    EXPECT_FALSE(evaluate("1e999").ok());
    EXPECT_FALSE(evaluate("(-8)^.5").ok());
    for (const char* text : {".", "1..2", "[", "[1", "[1,2,3,4]", "@", "f(", "f(1,", "[<", "*", "^2", "3 4", "1d2"})
        EXPECT_FALSE(evaluate(text).ok()) << text;
    // Depth and length are bounded.
    EXPECT_FALSE(evaluate(std::string(3000, '(')).ok());
    EXPECT_FALSE(evaluate(std::string(3000, '-') + "1").ok());
    std::string powers = "1";
    for (int i = 0; i < 1500; ++i) powers += "^1";
    EXPECT_FALSE(evaluate(powers).ok());
    EXPECT_FALSE(evaluate(std::string(5000, '1')).ok());
    std::string sum = "1";
    for (int i = 0; i < 1500; ++i) sum += "+1";
    EXPECT_EQ(value(sum), 1501.0);
}

TEST(Expression, TakesAssignmentsApart) {
    const auto assignment = parseAssignment(" Width = 2*3 ");
    ASSERT_TRUE(assignment.has_value());
    EXPECT_EQ(assignment->name, "width");
    EXPECT_EQ(evaluate(assignment->expression).number(), 6.0);
    EXPECT_FALSE(parseAssignment("2*3"));
    EXPECT_FALSE(parseAssignment("2=3"));
    EXPECT_FALSE(parseAssignment("=3"));
}

}  // namespace
}  // namespace kova::math
