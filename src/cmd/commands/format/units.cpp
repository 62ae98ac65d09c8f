#include "engine/model/units.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

/// UNITS: how lengths and angles are shown, and where and which way angles count.
class UnitsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (const char* line : {"Report formats:            (Examples)", "  1. Scientific            1.55E+01",
                                 "  2. Decimal               15.50", "  3. Engineering           1'-3.50\"",
                                 "  4. Architectural         1'-3 1/2\"", "  5. Fractional            15 1/2"})
            message(line);
        const int linear = co_await choose(ask, "LUNITS", "Enter choice, 1 to 5", 1, 5, 0);
        int precision = engine::sysVarInt(drawing(), "LUPREC", 4);
        if (linear == engine::kArchitectural || linear == engine::kFractional)
            precision = co_await denominator(ask, precision);
        else
            precision =
                co_await choose(ask, "LUPREC", "Enter number of digits to right of decimal point (0 to 8)", 0, 8, 0);
        for (const char* line : {"Systems of angle measure:     (Examples)", "  1. Decimal degrees          45.0000",
                                 "  2. Degrees/minutes/seconds  45d0'0\"", "  3. Grads                    50.0000g",
                                 "  4. Radians                  0.7854r", "  5. Surveyor's units         N 45d0'0\" E"})
            message(line);
        const int angular = co_await choose(ask, "AUNITS", "Enter choice, 1 to 5", 1, 5, -1);
        const int places =
            co_await choose(ask, "AUPREC", "Enter number of fractional places for display of angles (0 to 8)", 0, 8, 0);
        for (const char* line : {"Direction for angle 0:", "  East    3 o'clock  =  0", "  North  12 o'clock  =  90",
                                 "  West    9 o'clock  =  180", "  South   6 o'clock  =  270"})
            message(line);
        // The direction itself counts from east, whatever the base is now.
        double base = engine::sysVarReal(drawing(), "ANGBASE");
        std::string prompt = withDefault("Enter direction for angle 0", degrees(base));
        const Answer direction = co_await ask.number(std::move(prompt));
        if (direction.isNumber()) base = math::normalizeAngle(math::toRadians(direction.number));
        const bool clockwiseNow = engine::sysVarInt(drawing(), "ANGDIR") == 1;
        const char* question =
            clockwiseNow ? "Measure angles clockwise? [Yes/No] <Y>:" : "Measure angles clockwise? [Yes/No] <N>:";
        const bool clockwise = co_await askYesNo(ask, question, clockwiseNow);
        const doc::GroupScope group(document(), "UNITS");
        message(document().setVariable("LUNITS", linear));
        message(document().setVariable("LUPREC", precision));
        message(document().setVariable("AUNITS", angular - 1));
        message(document().setVariable("AUPREC", places));
        message(document().setVariable("ANGBASE", base));
        message(document().setVariable("ANGDIR", clockwise ? 1 : 0));
    }

private:
    static std::string degrees(double radians) {
        return engine::formatLinear(math::toDegrees(radians), engine::kDecimal, 4, engine::kTrailingZerosHidden);
    }

    /// A number from a range, with a variable's value as default; `shift`: the variable's value is that much higher.
    Task<int> choose(Ask& ask, const char* variable, const char* question, int lowest, int highest, int shift) {
        const int now = engine::sysVarInt(drawing(), variable) - shift;
        std::string prompt = withDefault(question, std::to_string(now));
        const Answer answer = co_await ask.integer(std::move(prompt), lowest, highest);
        co_return answer.isNumber() ? answer.integer() : now;
    }

    /// The power of two of a denominator that is typed as a number.
    Task<int> denominator(Ask& ask, int now) {
        std::string prompt =
            withDefault("Enter denominator of smallest fraction to display (1, 2, 4, 8, 16, 32, 64, 128, or 256)",
                        std::to_string(1 << std::clamp(now, 0, 8)));
        for (;;) {
            const Answer answer = co_await ask.integer(prompt, 1, 256);
            if (!answer.isNumber()) co_return now;
            for (int power = 0; power <= 8; ++power)
                if (1 << power == answer.integer()) co_return power;
            message("Invalid value.");
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Units, "UNITS", "Units", "Format", {"UN", "DDUNITS"})

}  // namespace kova::cmd::commands
