#include "cmd/prompts/array_prompts.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "math/expression.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

namespace {

/// An amount of turning, not a direction: a whole turn is 360.
std::string degrees(double angle) { return strings::general(math::toDegrees(angle), 6); }

/// "question or [Options/Expression] <fallback>:".
std::string withExpression(const std::string& question, const char* options, std::string_view fallback) {
    return withDefault(question + " or [" + options + "Expression]", fallback);
}

Task<double> askDistance(Ask& ask, const engine::Drawing& drawing, std::string question, double fallback,
                         Range range = {}) {
    std::string text = lengthDefault(drawing, fallback);
    for (;;) {
        const Answer answer =
            co_await ask.distance(withExpression(question, "", text), "Expression", std::nullopt, range);
        if (answer.isEnter()) co_return fallback;
        if (answer.isNumber()) co_return answer.number;
        const std::optional<double> value = co_await askExpression(ask, text);
        if (value && *value >= range.minimum && *value <= range.maximum) co_return *value;
        if (value) ask.message("Invalid value.");
    }
}

}  // namespace

Task<std::optional<double>> askExpression(Ask& ask, std::string fallback) {
    for (;;) {
        const Answer answer = co_await ask.text(withDefault("Enter expression", fallback));
        if (answer.isEnter()) co_return std::nullopt;
        const math::ExpressionResult result = math::evaluate(answer.text);
        if (const auto number = result.number()) co_return number;
        ask.message(result.ok() ? "Error: a number is needed instead of a vector." : result.error);
    }
}

Task<int> askArrayCount(Ask& ask, std::string question, int fallback) {
    const std::string text = std::to_string(fallback);
    for (;;) {
        const Answer answer = co_await ask.integer(withExpression(question, "", text), 1, kMostInArray, "Expression");
        if (answer.isEnter()) co_return fallback;
        if (answer.isNumber()) co_return answer.integer();
        const std::optional<double> value = co_await askExpression(ask, text);
        if (value && *value >= 0.5 && *value < kMostInArray + 0.5) co_return static_cast<int>(std::lround(*value));
        if (value) ask.message("Invalid value.");
    }
}

Task<double> askArrayPitch(Ask& ask, const engine::Drawing& drawing, std::string what, int count, double fallback) {
    const std::string text = lengthDefault(drawing, fallback);
    for (;;) {
        const Answer answer = co_await ask.distance(
            withExpression("Specify the distance between " + what, "Total/", text), "Total Expression");
        if (answer.isNumber()) co_return answer.number;
        if (answer.isEnter()) co_return fallback;
        if (answer.is("TOTAL")) {
            const double total = co_await askDistance(
                ask, drawing, "Enter the total distance between start and end " + what, fallback * (count - 1));
            co_return count > 1 ? total / (count - 1) : fallback;
        }
        const std::optional<double> value = co_await askExpression(ask, text);
        if (value) co_return *value;
    }
}

Task<void> askArrayRows(Ask& ask, const engine::Drawing& drawing, ArrayRows& rows) {
    rows.rows = co_await askArrayCount(ask, "Enter the number of rows", rows.rows);
    rows.distance = co_await askArrayPitch(ask, drawing, "rows", rows.rows, rows.distance);
    rows.rise = co_await askDistance(ask, drawing, "Specify the incrementing elevation between rows", rows.rise);
}

Task<void> askArrayLevels(Ask& ask, const engine::Drawing& drawing, ArrayRows& rows) {
    rows.levels = co_await askArrayCount(ask, "Enter the number of levels", rows.levels);
    rows.levelDistance = co_await askArrayPitch(ask, drawing, "levels", rows.levels, rows.levelDistance);
}

Task<void> askArrayColumns(Ask& ask, const engine::Drawing& drawing, RectangularArray& array) {
    array.columns = co_await askArrayCount(ask, "Enter the number of columns", array.columns);
    array.columnDistance = co_await askArrayPitch(ask, drawing, "columns", array.columns, array.columnDistance);
}

void setAngleBetween(PolarArray& array, double between) {
    const double whole = between * array.count;
    array.fill = std::abs(std::abs(whole) - math::kTwoPi) < 1e-9 ? whole : between * (array.count - 1);
}

Task<void> askAngleBetween(Ask& ask, const engine::Drawing& drawing, PolarArray& array) {
    const std::string text = degrees(array.step());
    for (;;) {
        std::string prompt = withDefault("Specify angle between items or [EXpression]", text);
        const Answer answer = co_await ask.angle(std::move(prompt), "EXpression", array.center.xy());
        if (answer.isEnter()) co_return;
        double between = 0.0;
        if (answer.isNumber()) {
            between = includedAngle(answer, drawing);
        } else {
            const std::optional<double> value = co_await askExpression(ask, text);
            if (!value) continue;
            between = math::toRadians(*value);
        }
        if (between != 0.0 && std::abs(between) <= math::kTwoPi) co_return setAngleBetween(array, between);
        ask.message("Invalid value.");
    }
}

Task<void> askFillAngle(Ask& ask, const engine::Drawing& drawing, PolarArray& array) {
    const std::string text = degrees(array.fill);
    for (;;) {
        std::string prompt = withDefault("Specify the angle to fill (+=ccw, -=cw) or [EXpression]", text);
        const Answer answer = co_await ask.angle(std::move(prompt), "EXpression", array.center.xy());
        if (answer.isEnter()) co_return;
        double fill = 0.0;
        if (answer.isNumber()) {
            fill = includedAngle(answer, drawing);
        } else {
            const std::optional<double> value = co_await askExpression(ask, text);
            if (!value) continue;
            fill = math::toRadians(*value);
        }
        if (fill != 0.0 && std::abs(fill) <= math::kTwoPi + 1e-9) {
            array.fill = fill;
            co_return;
        }
        ask.message("Invalid value.");
    }
}

Task<void> askTurnItems(Ask& ask, PolarArray& array) {
    const char* prompt =
        array.turnItems ? "Rotate arrayed items? [Yes/No] <Yes>:" : "Rotate arrayed items? [Yes/No] <No>:";
    array.turnItems = co_await askYesNo(ask, prompt, array.turnItems);
}

Task<void> askPathMethod(Ask& ask, PathArray& array) {
    const char* prompt =
        array.divide ? "Enter path method [Divide/Measure] <Divide>:" : "Enter path method [Divide/Measure] <Measure>:";
    const Answer method = co_await ask.keyword(prompt, "Divide Measure");
    if (!method.isEnter()) array.divide = method.is("DIVIDE");
}

Task<void> askPathItems(Ask& ask, const engine::Drawing& drawing, PathArray& array, CurveRuler path) {
    if (array.divide) {
        array.count = co_await askArrayCount(ask, "Enter number of items along path", array.count);
        co_return;
    }
    array.distance =
        co_await askDistance(ask, drawing, "Specify the distance between items along path", array.distance, kPositive);
    const int fitting = array.fitting(path);
    ask.message("Maximum items = " + std::to_string(fitting));
    const std::string text = std::to_string(fitting);
    for (;;) {
        const Answer number = co_await ask.integer(withExpression("Specify number of items", "Fill entire path/", text),
                                                   1, kMostInArray, "Fill Expression");
        std::optional<double> value;
        if (number.isNumber()) {
            value = number.number;
        } else if (number.is("EXPRESSION")) {
            value = co_await askExpression(ask, text);
            if (!value) continue;
        } else {
            value = fitting;
        }
        if (*value >= 0.5 && *value < kMostInArray + 0.5) {
            array.count = std::min(static_cast<int>(std::lround(*value)), fitting);
            co_return;
        }
        ask.message("Invalid value.");
    }
}

Task<void> askAlignItems(Ask& ask, PathArray& array) {
    const char* prompt = array.alignItems ? "Align arrayed items to path? [Yes/No] <Yes>:"
                                          : "Align arrayed items to path? [Yes/No] <No>:";
    array.alignItems = co_await askYesNo(ask, prompt, array.alignItems);
}

}  // namespace kova::cmd
