// What the program, the machine and the running command tell of themselves, and the results commands leave behind.
#include <sys/utsname.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "engine/model/drawing.hpp"
#include "engine/sysvars/host.hpp"
#include "engine/sysvars/rows.hpp"
#include "strings/code_page.hpp"

namespace kova::engine {

namespace {

/// The Julian day number of 1970-01-01. Dates are this number of their day and the part of it since midnight (not since
/// noon, as astronomers count): 2451544.91568 is 1999-12-31 21:58:35.
constexpr double kJulianOfEpoch = 2440588.0;
constexpr double kSecondsPerDay = 86400.0;

double secondsSinceEpoch() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::tm localTime(double seconds) {
    const auto whole = static_cast<std::time_t>(seconds);
    std::tm parts{};
    localtime_r(&whole, &parts);
    return parts;
}

}  // namespace

double julianNow(bool universal) {
    const double seconds = secondsSinceEpoch();
    const double offset = universal ? 0.0 : static_cast<double>(localTime(seconds).tm_gmtoff);
    return kJulianOfEpoch + (seconds + offset) / kSecondsPerDay;
}

double calendarNow() {
    const double seconds = secondsSinceEpoch();
    const std::tm t = localTime(seconds);
    const double fraction = seconds - std::floor(seconds);
    return (t.tm_year + 1900) * 10000.0 + (t.tm_mon + 1) * 100.0 + t.tm_mday +
           (t.tm_hour * 10000.0 + t.tm_min * 100.0 + t.tm_sec + fraction) / 1e6;
}

std::string temporaryFolder() {
    std::error_code error;
    std::string folder = std::filesystem::temp_directory_path(error).string();
    if (error || folder.empty()) folder = "/tmp";
    if (folder.back() != '/') folder += '/';
    return folder;
}

namespace rows {

namespace {

std::string environmentText(const char* name, const char* fallback) {
    const char* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? text : fallback;
}

std::string platformText() {
    utsname system{};
    if (uname(&system) != 0) return "Linux";
    return std::string(system.sysname) + " " + system.release + " (" + system.machine + ")";
}

bool isCodePage(const SysVarValue& value) { return strings::CodePage::named(std::get<std::string>(value)).has_value(); }

/// Kept under the name that drawings use, however it was typed.
std::string setCodePage(Drawing& drawing, const SysVarValue& value) {
    drawing.stringVariables["DWGCODEPAGE"] = strings::CodePage::named(std::get<std::string>(value))->name();
    return {};
}

/// Milliseconds of the machine's running clock, within an integer's range.
SysVarValue milliseconds(const Drawing&) {
    using Clock = std::chrono::steady_clock;
    const auto count = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count();
    return static_cast<std::int32_t>(count & 0x7fffffff);
}

std::int32_t told(const std::function<std::int32_t()>& source, std::int32_t fallback) {
    return source ? source() : fallback;
}

}  // namespace

std::vector<SysVarDef> sessionVariables() {
    std::vector<SysVarDef> rows = {
        // The running command
        integer("DBMOD", 0, 0, 63, saved::Nowhere,
                "What was changed since the drawing was saved, sum of: 1 objects, 2 tables, 4 variables, 8 the "
                "current viewport, 16 the view")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return told(sysVarEnvironment().modified, 0); }),
        integer("CMDACTIVE", 0, 0, 255, saved::Nowhere,
                "What is running, sum of: 1 command, 4 script")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return told(sysVarEnvironment().commandActive, 0); }),
        string("CMDNAMES", "", saved::Nowhere, "Names of the running commands")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue {
                const auto& source = sysVarEnvironment().commandNames;
                return source ? source() : std::string();
            }),
        integer("UNDOCTL", 5, 0, 127, saved::Nowhere,
                "State of UNDO, sum of: 1 on, 4 groups by itself, 8 a group is open")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return told(sysVarEnvironment().undoControl, 5); }),
        integer("UNDOMARKS", 0, 0, 0x7fffffff, saved::Nowhere, "Number of marks set by UNDO")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return told(sysVarEnvironment().undoMarks, 0); }),
        string("LASTPROMPT", "", saved::Nowhere, "The last line of the transcript")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue {
                const auto& source = sysVarEnvironment().lastPrompt;
                return source ? source() : std::string();
            }),
        integer("ERRNO", 0, 0, 0x7fffffff, saved::Nowhere, "Code of the last error in a LISP call"),

        // Results
        real("AREA", 0.0, saved::Nowhere, "The last area computed").own().readOnly(),
        real("PERIMETER", 0.0, saved::Nowhere, "The last perimeter computed").readOnly(),
        real("DISTANCE", 0.0, saved::Nowhere, "The last distance computed").readOnly(),
        angle("LASTANGLE", 0.0, saved::Nowhere, "End angle of the last arc or line").readOnly(),

        // Time
        real("DATE", 0.0, saved::Nowhere, "Date and time as Julian date")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return julianNow(); }),
        real("CDATE", 0.0, saved::Nowhere, "Date and time as YYYYMMDD.HHMMSSmmm")
            .readOnly()
            .get([](const Drawing&) -> SysVarValue { return calendarNow(); }),
        integer("MILLISECS", 0, 0, 0x7fffffff, saved::Nowhere, "Milliseconds of a running clock")
            .readOnly()
            .get(milliseconds),

        // Program and machine
        // The release number of the drawing format written, against which scripts compare.
        string("ACADVER", "19.0", saved::Nowhere, "Version of the drawing format that is written").readOnly(),
        string("PROGRAM", "kovacad", saved::Nowhere, "Name of the program").readOnly(),
        string("PRODUCT", "KovaCAD", saved::Nowhere, "Name of the product").readOnly(),
        string("CPROFILE", "<<Unnamed Profile>>", saved::Nowhere, "Name of the user's profile").readOnly(),
        string("LOCALE", "ENU", saved::Nowhere, "Language of the program").readOnly(),
        string("LOGINNAME", environmentText("USER", environmentText("LOGNAME", "user").c_str()), saved::Nowhere,
               "Name of the user")
            .readOnly(),
        string("PLATFORM", platformText(), saved::Nowhere, "Operating system").readOnly(),
        string("SYSCODEPAGE", "UTF-8", saved::Nowhere, "Code page of the system").readOnly(),
        string("DWGCODEPAGE", "ANSI_1252", kDrawing, "Code page of text files that are not UTF-8")
            .code(3)
            .accepts(isCodePage)
            .set(setCodePage),
        string("TEMPPREFIX", temporaryFolder(), saved::Nowhere, "Folder of temporary files").readOnly(),
        string("MENUNAME", ".", saved::Nowhere, "Menu file").readOnly(),
        point("SCREENSIZE", {1024, 768, 0}, saved::Nowhere, "Size of the view in pixels").readOnly(),
        toggle("POPUPS", 0, saved::Nowhere, "Dialogs can be shown").readOnly(),
        toggle("FULLOPEN", 1, saved::Nowhere, "The drawing was loaded whole").readOnly(),
        toggle("WRITESTAT", 1, saved::Nowhere, "The drawing may be saved").readOnly(),
    };
    // Values for scripts, free for any use.
    static constexpr std::string_view whole[] = {"USERI1", "USERI2", "USERI3", "USERI4", "USERI5"};
    static constexpr std::string_view reals[] = {"USERR1", "USERR2", "USERR3", "USERR4", "USERR5"};
    static constexpr std::string_view texts[] = {"USERS1", "USERS2", "USERS3", "USERS4", "USERS5"};
    for (const std::string_view name : whole)
        rows.push_back(integer(name, 0, -32768, 32767, kHeader, "Whole number for scripts").code(70));
    for (const std::string_view name : reals) rows.push_back(real(name, 0.0, kHeader, "Number for scripts").code(40));
    for (const std::string_view name : texts) rows.push_back(string(name, "", saved::Nowhere, "Text for scripts"));
    return rows;
}

}  // namespace rows

}  // namespace kova::engine
