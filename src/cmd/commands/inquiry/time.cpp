#include <ctime>

#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

constexpr double kJulianOfEpoch = 2440588.0;  ///< 1970-01-01 00:00; the day changes at midnight
constexpr double kSecondsPerDay = 86400.0;

/// A Julian date as "Tuesday, November 21, 2023 17:04:11"; a dash for a time that was never noted.
std::string dateText(double julian) {
    const double seconds = (julian - kJulianOfEpoch) * kSecondsPerDay;
    if (!(seconds > 0.0 && seconds < 2.5e11)) return "-";
    const auto whole = static_cast<std::time_t>(seconds + 0.5);
    std::tm parts{};
    gmtime_r(&whole, &parts);
    char buffer[80];
    const std::size_t length = std::strftime(buffer, sizeof buffer, "%A, %B %d, %Y %H:%M:%S", &parts);
    return {buffer, length};
}

/// A number of days as "2 days 03:04:05".
std::string durationText(double days) {
    if (!(days > 0.0 && days < 1e9)) days = 0.0;
    const auto seconds = static_cast<long long>(days * kSecondsPerDay + 0.5);
    char clock[16];
    std::snprintf(clock, sizeof clock, "%02d:%02d:%02d", static_cast<int>(seconds / 3600 % 24),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    return std::to_string(seconds / 86400) + " days " + clock;
}

/// TIME: dates and times of the drawing, and the user's timer.
class TimeTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        display();
        for (;;) {
            const Answer option = co_await ask.keyword("Enter option [Display/ON/OFF/Reset]:", "Display ON OFF Reset");
            if (option.isEnter()) co_return;
            if (option.is("DISPLAY")) display();
            if (option.is("ON")) setTimer(true, timer());
            if (option.is("OFF")) setTimer(false, timer());
            if (option.is("RESET")) setTimer(isRunning(), 0.0);
        }
    }

private:
    double variable(std::string_view name) const { return engine::sysVarReal(drawing(), name); }
    bool isRunning() const { return engine::sysVarInt(drawing(), "USRTIMER", 1) != 0; }

    /// Days since the drawing was opened; the timer, while it runs, counts along with them.
    double openDays() const {
        const double opened = variable("TDOPENED");
        return opened > 0.0 ? std::max(0.0, variable("DATE") - opened) : 0.0;
    }
    double timer() const { return variable("TDUSRTIMER") + (isRunning() ? openDays() : 0.0); }
    void setTimer(bool running, double days) {
        engine::publishSysVar(drawing(), "USRTIMER", running ? 1 : 0);
        engine::publishSysVar(drawing(), "TDUSRTIMER", running ? days - openDays() : days);
        message(std::string("Timer ") + (running ? "on." : "off."));
    }

    void display() const {
        message("Current time:             " + dateText(variable("DATE")));
        message("Times for this drawing:");
        message("  Created:                " + dateText(variable("TDCREATE")));
        message("  Last updated:           " + dateText(variable("TDUPDATE")));
        message("  Total editing time:     " + durationText(variable("TDINDWG")));
        message(std::string("  Elapsed timer (") + (isRunning() ? "on):     " : "off):    ") + durationText(timer()));
        const int minutes = engine::sysVarInt(drawing(), "SAVETIME");
        message("  Automatic save:         " +
                (minutes > 0 ? "every " + std::to_string(minutes) + " minutes in a program with a window"
                             : std::string("off")));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Time, "TIME", "Time", "Inquiry")

}  // namespace kova::cmd::commands
