#include "engine/entities/dimensions/dimension_text.hpp"

#include <cmath>

#include "engine/model/units.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

constexpr std::string_view kDegree = "\xC2\xB0";
/// Texts are bounded however often an override repeats "<>".
constexpr std::size_t kMaxText = 20000;

double rounded(double value, double step) {
    if (!(step > 0.0) || !std::isfinite(step)) return value;
    const double r = std::round(value / step * (1.0 + 1e-14)) * step;
    return std::isfinite(r) ? r : value;
}

/// DIMPOST or DIMAPOST: what stands before and behind the number. Without a place holder it is all suffix.
struct Affixes {
    std::string prefix;
    std::string suffix;
    bool breakAfter = false;  ///< ends in \X: the alternate units go below the dimension line
};
Affixes affixes(std::string_view post, std::string_view placeHolder) {
    Affixes a;
    if (post == ".") return a;  // the way to type an empty text
    std::string_view suffix = post;
    if (const std::size_t at = post.find(placeHolder); at != std::string_view::npos) {
        a.prefix = post.substr(0, at);
        suffix = post.substr(at + placeHolder.size());
    }
    if (suffix.ends_with("\\X")) {
        a.breakAfter = true;
        suffix.remove_suffix(2);
    }
    a.suffix = suffix;
    return a;
}

FractionForm fractionForm(std::int32_t dimfrac) {
    return dimfrac == 0 ? FractionForm::Horizontal : dimfrac == 1 ? FractionForm::Diagonal : FractionForm::Plain;
}

/// One number of the primary or alternate units.
struct NumberFormat {
    LinearFormat linear;
    AngularFormat angular;
    bool angle = false;

    std::string operator()(double value) const {
        return angle ? formatAngleSize(value, angular) : formatLinear(value, linear);
    }
    NumberFormat with(std::int32_t precision, std::int32_t zeros) const {
        NumberFormat f = *this;
        f.linear.precision = f.angular.precision = precision;
        f.linear.zeros = zeros;
        if (!angle) return f;
        f.angular.zeros = zeros & (kLeadingZerosHidden | kTrailingZerosHidden);
        return f;
    }
    /// Within a stack a fraction may not be stacked again.
    NumberFormat stacked() const {
        NumberFormat f = *this;
        f.linear.fraction = FractionForm::Plain;
        return f;
    }
};

char32_t separatorOf(const DimStyle& style) {
    const std::int32_t c = style.decimalSeparator;
    return c > 0x20 && c < 0x110000 ? static_cast<char32_t>(c) : U'.';
}

NumberFormat primaryFormat(const DimStyle& style, DimMeasure measure) {
    NumberFormat f;
    f.angle = measure == DimMeasure::Angle;
    f.linear.units = style.linearUnitFormat == 6 ? kDecimal : style.linearUnitFormat;
    f.linear.precision = style.decimalPlaces;
    f.linear.zeros = style.zeroSuppression();
    f.linear.fraction = fractionForm(style.fractionFormat);
    f.linear.separator = separatorOf(style);
    f.angular.units = style.angularUnitFormat;
    f.angular.precision = style.angularDecimals < 0 ? style.decimalPlaces : style.angularDecimals;
    f.angular.zeros = (style.angularZeroSuppression & 3) * 4;
    f.angular.separator = separatorOf(style);
    f.angular.degreeSign = kDegree;
    f.angular.degreeSuffix = kDegree;
    return f;
}

NumberFormat alternateFormat(const DimStyle& style) {
    NumberFormat f;
    switch (style.altFormat) {
        case 1:
        case 3:
            f.linear.units = style.altFormat;
            break;
        case 4:
        case 6:
            f.linear.units = kArchitectural;
            break;
        case 5:
        case 7:
            f.linear.units = kFractional;
            break;
        default:
            break;
    }
    f.linear.fraction = style.altFormat == 4 || style.altFormat == 5 ? fractionForm(style.fractionFormat == 1 ? 1 : 0)
                                                                     : FractionForm::Plain;
    f.linear.precision = style.altDecimals;
    f.linear.zeros = style.altZeros;
    f.linear.separator = separatorOf(style);
    return f;
}

/// A part of a stack, its own marks guarded.
std::string guarded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        // What the user's affixes escape already stays one character.
        if (text[i] == '\\' && i + 1 < text.size()) {
            out += text.substr(i, 2);
            ++i;
            continue;
        }
        if (text[i] == '/' || text[i] == '#' || text[i] == '^' || text[i] == ';') out += '\\';
        out += text[i];
    }
    return out;
}

std::string stack(const std::string& top, const std::string& bottom) {
    return "\\S" + guarded(top) + "^ " + guarded(bottom) + ";";
}

/// A tolerance value with its sign; nothing has none.
std::string signedText(const NumberFormat& format, double value) {
    const std::string text = format(value);
    if (text.starts_with('-')) return text;
    const bool nothing = text.find_first_of("123456789") == std::string::npos;
    return (nothing ? " " : "+") + text;
}

/// Wraps what is smaller than the main text (DIMTFAC) and stands at its bottom, middle or top (DIMTOLJ).
std::string toleranceGroup(const DimStyle& style, const std::string& content, bool stacked) {
    const double factor = style.toleranceTextScale;
    const bool smaller = factor > 0.0 && std::isfinite(factor) && std::abs(factor - 1.0) > 1e-9;
    if (!stacked && !smaller) return content;
    std::string text = "{";
    if (stacked) text += "\\A" + std::to_string(std::clamp(style.toleranceVertical, 0, 2)) + ";";
    if (smaller) text += "\\H" + strings::shortest(factor) + "x;";
    return text + content + "}";
}

/// A number whose fraction is stacked: the stack stands beside the middle of the whole number, as small as DIMTFAC says.
std::string withFraction(const DimStyle& style, const std::string& number) {
    const std::size_t at = number.find("\\S");
    const std::size_t end = at == std::string::npos ? at : number.find(';', at);
    if (end == std::string::npos) return number;
    const double factor = style.toleranceTextScale;
    const bool smaller = factor > 0.0 && std::isfinite(factor) && std::abs(factor - 1.0) > 1e-9;
    std::string text = number.substr(0, at) + "{\\A1;";
    if (smaller) text += "\\H" + strings::shortest(factor) + "x;";
    return text + number.substr(at, end + 1 - at) + "}" + number.substr(end + 1);
}

/// Number with affixes and tolerance or limits.
struct Composer {
    const DimStyle& style;
    NumberFormat number;
    NumberFormat tolerance;
    std::string prefix;
    std::string suffix;
    double plus = 0.0;
    double minus = 0.0;

    std::string limits(double value) const {
        const NumberFormat f = number.stacked();
        return toleranceGroup(style, stack(prefix + f(value + plus) + suffix, prefix + f(value - minus) + suffix),
                              true);
    }
    std::string deviations() const {
        const NumberFormat f = tolerance.stacked();
        if (std::abs(plus - minus) <= 1e-12 * std::max(1.0, std::abs(plus)))
            return toleranceGroup(style, "%%p" + tolerance(std::abs(plus)) + suffix, false);
        return toleranceGroup(style, stack(signedText(f, plus) + suffix, signedText(f, -minus) + suffix), true);
    }
    std::string text(double value) const {
        if (style.showLimits) return limits(value);
        const std::string main = prefix + withFraction(style, number(value)) + suffix;
        return style.showTolerance ? main + deviations() : main;
    }
};

double scaledValue(const DimStyle& style, const DimTextInput& input) {
    if (input.measure == DimMeasure::Angle) return input.value;
    const double factor = style.linearScale;
    if (!std::isfinite(factor) || factor == 0.0) return input.value;
    if (factor < 0.0) return input.paperSpace ? input.value * -factor : input.value;
    return input.value * factor;
}

/// Angular tolerances are given in degrees.
double toleranceValue(double value, DimMeasure measure) {
    return measure == DimMeasure::Angle ? value * 0.017453292519943295 : value;
}

bool onlyBlanks(std::string_view text) {
    return !text.empty() && text.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace

std::string dimPrimaryText(const DimStyle& style, const DimTextInput& input) {
    const bool angle = input.measure == DimMeasure::Angle;
    double value = scaledValue(style, input);
    if (!angle) value = rounded(value, style.rounding);
    Composer c{style, primaryFormat(style, input.measure), {}, std::string(input.prefix), {}};
    c.tolerance = c.number.with(style.toleranceDecimals, style.toleranceZeros);
    if (!angle) {
        const Affixes post = affixes(style.postfix, "<>");
        if (!post.prefix.empty()) c.prefix = post.prefix;
        c.suffix = post.suffix;
    }
    c.plus = toleranceValue(style.tolerancePlus, input.measure);
    c.minus = toleranceValue(style.toleranceMinus, input.measure);
    return c.text(value);
}

std::string dimAlternateText(const DimStyle& style, const DimTextInput& input) {
    if (input.measure == DimMeasure::Angle) return {};
    const double factor = std::isfinite(style.altFactor) && style.altFactor > 0.0 ? style.altFactor : 1.0;
    const double value = rounded(scaledValue(style, input) * factor, style.altRounding);
    Composer c{style, alternateFormat(style), {}, std::string(input.prefix), {}};
    c.tolerance = c.number.with(style.altToleranceDecimals, style.altToleranceZeros);
    const Affixes post = affixes(style.altPostfix, "[]");
    if (!post.prefix.empty()) c.prefix = post.prefix;
    c.suffix = post.suffix;
    c.plus = style.tolerancePlus * factor;
    c.minus = style.toleranceMinus * factor;
    return c.text(value);
}

std::string dimTextContent(const DimStyle& style, const DimTextInput& input) {
    const std::string_view given = input.textOverride;
    if (onlyBlanks(given)) return {};
    const std::string primary = dimPrimaryText(style, input);
    const bool alternates = style.altUnits && input.measure == DimMeasure::Length;
    const auto measured = [&](bool withAlternate) {
        if (!withAlternate) return primary;
        const bool below = affixes(style.postfix, "<>").breakAfter;
        return primary + (below ? "\\X[" : " [") + dimAlternateText(style, input) + "]";
    };
    if (given.empty() || given == "<>") return measured(alternates);
    const bool ownPlace = given.find("[]") != std::string_view::npos;
    std::string out;
    for (std::size_t i = 0; i < given.size();) {
        if (out.size() > kMaxText) break;
        const std::string_view two = given.substr(i, 2);
        if (two == "<>") {
            out += measured(alternates && !ownPlace);
            i += 2;
        } else if (two == "[]") {
            const std::string alternate = dimAlternateText(style, input);
            if (!alternate.empty()) out += "[" + alternate + "]";
            i += 2;
        } else {
            out += given[i++];
        }
    }
    return out;
}

DimTextSplit splitDimText(std::string_view content) {
    for (std::size_t i = 0; i + 1 < content.size(); ++i) {
        if (content[i] != '\\') continue;
        if (content[i + 1] == 'X') return {content.substr(0, i), content.substr(i + 2), true};
        ++i;  // an escaped character
    }
    return {content, {}, false};
}

}  // namespace kova::engine
