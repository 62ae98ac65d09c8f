#include "engine/model/units.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "engine/text/text_codes.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

constexpr int kMaxPrecision = 8;
/// Above this, whole numbers of the smallest displayed unit no longer fit an integer.
constexpr double kExactLimit = 4e15;
constexpr double kPowersOfTen[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};

int clampPrecision(int precision) { return std::clamp(precision, 0, kMaxPrecision); }

/// Lifts a value by a few units in its last place, so that 2.675 and 0.1 + 0.025 round up as their decimals say.
double nudged(double v) { return std::abs(v) < kExactLimit ? v * (1.0 + 1e-14) : v; }

std::string notANumber(double v) { return std::isnan(v) ? "nan" : v > 0 ? "inf" : "-inf"; }

void stripTrailingZeros(std::string& digits) {
    if (digits.find('.') == std::string::npos) return;
    while (digits.back() == '0') digits.pop_back();
    if (digits.back() == '.') digits.pop_back();
}

void replaceSeparator(std::string& digits, char32_t separator) {
    if (separator == 0 || separator == U'.') return;
    const std::size_t at = digits.find('.');
    if (at == std::string::npos) return;
    std::string mark;
    appendUtf8(mark, separator);
    digits.replace(at, 1, mark);
}

/// The digits of |v| with a point; the sign is the caller's.
std::string decimalDigits(double v, int precision, int zeros) {
    std::string digits = strings::fixed(nudged(std::abs(v)), precision);
    if ((zeros & kTrailingZerosHidden) != 0) stripTrailingZeros(digits);
    if ((zeros & kLeadingZerosHidden) != 0 && digits.size() > 1 && digits[0] == '0' && digits[1] == '.')
        digits.erase(0, 1);
    return digits;
}

bool allZero(std::string_view digits) {
    return std::none_of(digits.begin(), digits.end(), [](char c) { return c >= '1' && c <= '9'; });
}

std::string decimalText(double v, int precision, int zeros, char32_t separator) {
    std::string text = decimalDigits(v, precision, zeros);
    const bool negative = v < 0 && !allZero(text);
    replaceSeparator(text, separator);
    return negative ? "-" + text : text;
}

std::string scientificText(double v, int precision, int zeros, char32_t separator) {
    const std::string text = strings::scientific(nudged(std::abs(v)), precision);
    const std::size_t e = text.find('e');
    std::string mantissa = text.substr(0, e);
    if ((zeros & kTrailingZerosHidden) != 0) stripTrailingZeros(mantissa);
    replaceSeparator(mantissa, separator);
    return (v < 0 ? "-" : "") + mantissa + "E" + text.substr(e + 1);
}

std::string wholeText(double whole) { return strings::fixed(whole, 0); }

std::string fractionText(long long numerator, long long denominator, FractionForm form) {
    const std::string a = std::to_string(numerator);
    const std::string b = std::to_string(denominator);
    switch (form) {
        case FractionForm::Horizontal:
            return "\\S" + a + "/" + b + ";";
        case FractionForm::Diagonal:
            return "\\S" + a + "#" + b + ";";
        case FractionForm::Plain:
            break;
    }
    return a + "/" + b;
}

/// Whole units and a fraction; "0" when both are nothing.
std::string mixedText(double whole, long long numerator, long long denominator, bool showZeroWhole,
                      const LinearFormat& f) {
    if (numerator == 0) return wholeText(whole);
    const long long common = std::gcd(numerator, denominator);
    const std::string fraction = fractionText(numerator / common, denominator / common, f.fraction);
    if (whole == 0 && !showZeroWhole) return fraction;
    const char* between = f.fraction != FractionForm::Plain ? "" : f.inputForm ? "-" : " ";
    return wholeText(whole) + between + fraction;
}

struct FeetInches {
    double feet = 0.0;
    std::string inches;
    std::string inchesBelowFeet;  ///< the same behind feet: with a zero before a bare fraction
    bool inchesZero = false;
};

std::string feetInchesText(bool negative, const FeetInches& v, const LinearFormat& f) {
    const int rule = f.zeros & 3;
    const bool feet = v.feet != 0 || rule == kZeroFeetInchesShown || rule == kZeroInchesHidden;
    const bool inches = !v.inchesZero || rule == kZeroFeetInchesShown || rule == kZeroFeetHidden || !feet;
    std::string text = negative && (v.feet != 0 || !v.inchesZero) ? "-" : "";
    if (feet) text += wholeText(v.feet) + "'";
    if (feet && inches && !f.inputForm) text += "-";
    if (inches) text += (feet ? v.inchesBelowFeet : v.inches) + "\"";
    return text;
}

std::string engineeringText(double v, int precision, const LinearFormat& f) {
    const double unit = kPowersOfTen[precision];
    const double size = nudged(std::abs(v));
    FeetInches parts;
    double inches = 0.0;
    if (size * unit < kExactLimit) {
        const long long n = std::llround(size * unit);
        const auto foot = static_cast<long long>(12 * unit);
        parts.feet = static_cast<double>(n / foot);
        inches = static_cast<double>(n % foot) / unit;
    } else {
        parts.feet = std::floor(size / 12.0);
    }
    parts.inchesZero = inches == 0;
    parts.inches = decimalDigits(inches, precision, f.zeros);
    replaceSeparator(parts.inches, f.separator);
    parts.inchesBelowFeet = parts.inches;
    return feetInchesText(v < 0, parts, f);
}

std::string architecturalText(double v, int precision, const LinearFormat& f) {
    const long long denominator = 1LL << precision;
    const double size = nudged(std::abs(v));
    FeetInches parts;
    long long whole = 0;
    long long numerator = 0;
    if (size * static_cast<double>(denominator) < kExactLimit) {
        const long long n = std::llround(size * static_cast<double>(denominator));
        parts.feet = static_cast<double>(n / (12 * denominator));
        whole = n / denominator % 12;
        numerator = n % denominator;
    } else {
        parts.feet = std::floor(size / 12.0);
    }
    parts.inchesZero = whole == 0 && numerator == 0;
    parts.inches = mixedText(static_cast<double>(whole), numerator, denominator, false, f);
    parts.inchesBelowFeet = mixedText(static_cast<double>(whole), numerator, denominator, true, f);
    return feetInchesText(v < 0, parts, f);
}

std::string fractionalText(double v, int precision, const LinearFormat& f) {
    const long long denominator = 1LL << precision;
    const double size = nudged(std::abs(v));
    double whole = std::floor(size);
    long long numerator = 0;
    if (size * static_cast<double>(denominator) < kExactLimit) {
        const long long n = std::llround(size * static_cast<double>(denominator));
        whole = static_cast<double>(n / denominator);
        numerator = n % denominator;
    }
    const bool negative = v < 0 && (whole != 0 || numerator != 0);
    return (negative ? "-" : "") + mixedText(whole, numerator, denominator, false, f);
}

/// Degrees, minutes and seconds of a size, in whole units of the last one shown.
std::string degreesMinutesSeconds(double radians, const AngularFormat& f, bool wrap) {
    const int precision = clampPrecision(f.precision);
    const int decimals = std::max(0, precision - 4);
    const double perDegree = precision == 0 ? 1.0 : precision <= 2 ? 60.0 : 3600.0 * kPowersOfTen[decimals];
    const double size = nudged(std::abs(math::toDegrees(radians)));
    if (size * perDegree >= kExactLimit) return wholeText(std::floor(size)) + std::string(f.degreeSign);
    long long n = std::llround(size * perDegree);
    if (wrap && n == static_cast<long long>(360 * perDegree)) n = 0;
    const auto unit = static_cast<long long>(perDegree);
    const long long degrees = n / unit;
    const long long rest = n % unit;
    std::string text = radians < 0 && n != 0 ? "-" : "";

    long long minutes = 0;
    std::string seconds;
    bool secondsZero = true;
    if (precision >= 3) {
        const long long perMinute = unit / 60;
        minutes = rest / perMinute;
        secondsZero = rest % perMinute == 0;
        seconds = decimalDigits(static_cast<double>(rest % perMinute) / kPowersOfTen[decimals], decimals,
                                f.zeros & kTrailingZerosHidden);
        replaceSeparator(seconds, f.separator);
    } else if (precision >= 1) {
        minutes = rest;
    }
    bool showSeconds = precision >= 3;
    bool showMinutes = precision >= 1;
    bool showDegrees = true;
    if ((f.zeros & kTrailingZerosHidden) != 0) {
        if (secondsZero) showSeconds = false;
        if (minutes == 0 && !showSeconds) showMinutes = false;
    }
    if ((f.zeros & kLeadingZerosHidden) != 0) {
        if (degrees == 0 && (showMinutes || showSeconds)) showDegrees = false;
        if (!showDegrees && minutes == 0 && showSeconds) showMinutes = false;
    }
    if (showDegrees) text += std::to_string(degrees) + std::string(f.degreeSign);
    if (showMinutes) text += std::to_string(minutes) + "'";
    if (showSeconds) text += seconds + "\"";
    return text;
}

std::string angleText(double radians, const AngularFormat& f, bool wrap) {
    if (!std::isfinite(radians)) return notANumber(radians);
    const int precision = clampPrecision(f.precision);
    const auto decimal = [&](double value, double turn, std::string_view suffix) {
        if (wrap && nudged(value) + 0.5 / kPowersOfTen[precision] >= turn) value = 0.0;
        return decimalText(value, precision, f.zeros, f.separator) + std::string(suffix);
    };
    switch (f.units) {
        case kDegreesMinSec:
        case kSurveyor:
            return degreesMinutesSeconds(radians, f, wrap);
        case kGrads:
            return decimal(math::toDegrees(radians) / 0.9, 400.0, "g");
        case kRadians:
            return decimalText(radians, precision, f.zeros, f.separator) + "r";
        default:
            return decimal(math::toDegrees(radians), 360.0, f.degreeSuffix);
    }
}

std::string bearing(double direction, const AngularFormat& f) {
    // From north (or south) towards east or west; what rounds to a quarter turn is named by its one letter.
    const double degrees = math::toDegrees(direction);
    const bool north = degrees >= 0.0 && degrees <= 180.0;
    const bool east = degrees <= 90.0 || degrees >= 270.0;
    const double fromPole = std::abs(std::remainder(degrees - (north ? 90.0 : 270.0), 360.0));
    const std::string size = degreesMinutesSeconds(math::toRadians(fromPole), f, false);
    if (size == degreesMinutesSeconds(0.0, f, false)) return north ? "N" : "S";
    if (size == degreesMinutesSeconds(math::kPi / 2, f, false)) return east ? "E" : "W";
    return std::string(north ? "N " : "S ") + size + (east ? " E" : " W");
}

}  // namespace

std::string formatLinear(double value, const LinearFormat& format) {
    if (!std::isfinite(value)) return notANumber(value);
    const int precision = clampPrecision(format.precision);
    switch (format.units) {
        case kScientific:
            return scientificText(value, precision, format.zeros, format.separator);
        case kEngineering:
            return engineeringText(value, precision, format);
        case kArchitectural:
            return architecturalText(value, precision, format);
        case kFractional:
            return fractionalText(value, precision, format);
        default:
            return decimalText(value, precision, format.zeros, format.separator);
    }
}

std::string formatLinear(double value, int lunits, int luprec, int zeros) {
    LinearFormat f;
    f.units = lunits;
    f.precision = luprec;
    f.zeros = zeros;
    return formatLinear(value, f);
}

std::string formatAngleSize(double radians, const AngularFormat& format) { return angleText(radians, format, false); }

std::string formatAngle(double radians, int aunits, int auprec, double angbase, bool angdir, int zeros) {
    AngularFormat f;
    f.units = aunits;
    f.precision = auprec;
    f.zeros = zeros;
    double a = radians - angbase;
    if (!std::isfinite(a)) return notANumber(a);
    if (angdir && aunits != kSurveyor) a = -a;
    a = math::normalizeAngle(a);
    if (math::kTwoPi - a < 1e-12) a = 0.0;
    return aunits == kSurveyor ? bearing(a, f) : angleText(a, f, true);
}

// Reading ------------------------------------------------------------------------------------------------------------

namespace {

/// Walks over a typed value.
struct Scanner {
    std::string_view rest;

    void skipBlanks() {
        while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t')) rest.remove_prefix(1);
    }
    bool take(char c) {
        if (rest.empty() || rest.front() != c) return false;
        rest.remove_prefix(1);
        return true;
    }
    bool takeNoCase(char upper) {
        if (rest.empty()) return false;
        const char c = rest.front();
        if (c != upper && c != upper + ('a' - 'A')) return false;
        rest.remove_prefix(1);
        return true;
    }
    bool takeText(std::string_view s) {
        if (!rest.starts_with(s)) return false;
        rest.remove_prefix(s.size());
        return true;
    }
    bool atDigit() const { return !rest.empty() && rest.front() >= '0' && rest.front() <= '9'; }
    /// An unsigned number; nothing is taken when there is none.
    std::optional<double> number() {
        if (rest.starts_with('-')) return {};
        double v = 0.0;
        const char* const end = strings::readReal(rest.data(), rest.data() + rest.size(), v);
        if (end == nullptr || std::isinf(v)) return {};
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return v;
    }
    std::optional<double> fraction() {
        Scanner s = *this;
        const auto whole = [&]() -> std::optional<double> {
            if (!s.atDigit()) return {};
            double v = 0.0;
            while (s.atDigit()) {
                v = v * 10.0 + (s.rest.front() - '0');
                s.rest.remove_prefix(1);
            }
            return v;
        };
        const auto a = whole();
        if (!a || !s.take('/')) return {};
        const auto b = whole();
        if (!b || *b == 0.0) return {};
        *this = s;
        return *a / *b;
    }
    /// "3", "3.5", "1/2", "3 1/2", "3-1/2".
    std::optional<double> mixed() {
        if (const auto f = fraction()) return f;
        const auto whole = number();
        if (!whole) return {};
        Scanner s = *this;
        if (*whole == std::floor(*whole)) {
            if (!s.take('-')) s.skipBlanks();
            if (s.rest.size() != rest.size())
                if (const auto f = s.fraction()) {
                    *this = s;
                    return *whole + *f;
                }
        }
        return whole;
    }
};

std::optional<double> finite(double v) { return std::isfinite(v) ? std::optional<double>(v) : std::nullopt; }

/// An angle without sign or letters, in radians.
std::optional<double> plainAngle(Scanner& s, int aunits) {
    const auto first = s.number();
    if (!first) return {};
    if (s.takeNoCase('G')) return math::toRadians(*first * 0.9);
    if (s.takeNoCase('R')) return *first;
    double degrees = 0.0;
    double value = *first;
    bool units = false;
    if (s.takeNoCase('D') || s.takeText("\xC2\xB0") || s.takeText("%%d") || s.takeText("%%D")) {
        degrees += value;
        units = true;
        s.skipBlanks();
        const auto next = s.number();
        if (!next) return math::toRadians(degrees);
        value = *next;
    }
    if (!s.rest.empty() && s.rest.front() == '\'' && !s.rest.starts_with("''")) {
        s.take('\'');
        degrees += value / 60.0;
        units = true;
        s.skipBlanks();
        const auto next = s.number();
        if (!next) return math::toRadians(degrees);
        value = *next;
    }
    if (s.take('"') || s.takeText("''")) return math::toRadians(degrees + value / 3600.0);
    if (units) return {};  // a number without its unit behind degrees or minutes
    if (aunits == kGrads) return math::toRadians(value * 0.9);
    if (aunits == kRadians) return value;
    return math::toRadians(value);
}

}  // namespace

std::optional<double> parseDistance(std::string_view text) {
    Scanner s{text};
    s.skipBlanks();
    const bool negative = s.take('-');
    if (!negative) s.take('+');
    const auto first = s.mixed();
    if (!first) return {};
    double value = *first;
    if (s.take('\'')) {
        value *= 12.0;
        const bool dash = s.take('-');
        s.skipBlanks();
        if (const auto inches = s.mixed()) {
            value += *inches;
            s.take('"');
        } else if (dash) {
            return {};
        }
    } else {
        s.take('"');
    }
    s.skipBlanks();
    if (!s.rest.empty()) return {};
    return finite(negative ? -value : value);
}

std::optional<double> parseAngle(std::string_view text, int aunits, double angbase, bool angdir) {
    Scanner s{text};
    s.skipBlanks();
    const auto end = [&](double a) -> std::optional<double> {
        s.skipBlanks();
        return s.rest.empty() ? finite(a) : std::nullopt;
    };
    const bool north = s.takeNoCase('N');
    if (north || s.takeNoCase('S')) {
        const double pole = north ? math::kPi / 2 : -math::kPi / 2;
        s.skipBlanks();
        if (s.rest.empty()) return end(angbase + math::normalizeAngle(pole));
        const auto size = plainAngle(s, kDegrees);
        if (!size || *size > math::kPi / 2 + 1e-12) return {};
        s.skipBlanks();
        const bool east = s.takeNoCase('E');
        if (!east && !s.takeNoCase('W')) return {};
        return end(angbase + math::normalizeAngle(north == east ? pole - *size : pole + *size));
    }
    if (s.takeNoCase('E')) return end(angbase);
    if (s.takeNoCase('W')) return end(angbase + math::kPi);
    const bool negative = s.take('-');
    if (!negative) s.take('+');
    const auto size = plainAngle(s, aunits);
    if (!size) return {};
    return end(angbase + (negative != angdir ? -*size : *size));
}

}  // namespace kova::engine
