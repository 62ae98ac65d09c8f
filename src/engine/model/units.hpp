#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kova::engine {

/// Formats of lengths, as LUNITS and DIMLUNIT count them.
enum LinearUnits : int {
    kScientific = 1,     ///< 1.55E+01
    kDecimal = 2,        ///< 15.50
    kEngineering = 3,    ///< 1'-3.50"
    kArchitectural = 4,  ///< 1'-3 1/2"
    kFractional = 5,     ///< 15 1/2
};
/// Formats of angles, as AUNITS and DIMAUNIT count them.
enum AngularUnits : int {
    kDegrees = 0,        ///< 45.0000
    kDegreesMinSec = 1,  ///< 45d30'15"
    kGrads = 2,          ///< 50.0000g
    kRadians = 3,        ///< 0.7854r
    kSurveyor = 4,       ///< N 45d30'15" E
};
/// How the fraction of architectural and fractional lengths is written.
enum class FractionForm : std::uint8_t {
    Plain,       ///< 3 1/2
    Horizontal,  ///< multiline text code \S1/2; behind the whole number
    Diagonal,    ///< \S1#2;
};
/// Bits of zero suppression (DIMZIN): the two lowest choose what happens to feet and inches.
enum ZeroSuppression : int {
    kZeroFeetInchesHidden = 0,  ///< 6", 1'
    kZeroFeetInchesShown = 1,   ///< 0'-6", 1'-0"
    kZeroInchesHidden = 2,      ///< 0'-6", 1'
    kZeroFeetHidden = 3,        ///< 6", 1'-0"
    kLeadingZerosHidden = 4,    ///< .5
    kTrailingZerosHidden = 8,   ///< 12.5 for 12.5000
};

struct LinearFormat {
    int units = kDecimal;       ///< LinearUnits; any other value is decimal
    int precision = 4;          ///< decimals, or the power of two of the denominator: 0..8
    int zeros = 0;              ///< ZeroSuppression
    char32_t separator = U'.';  ///< of decimals; 0 is '.'
    FractionForm fraction = FractionForm::Plain;
    bool inputForm = false;  ///< as it can be typed at a prompt: 1'3-1/2"
};
/// A length in drawing units (inches in engineering and architectural format) as text. Ties are rounded away from
/// zero; what rounds to zero has no sign; "nan", "inf" and "-inf" for what is no number.
std::string formatLinear(double value, const LinearFormat& format);
std::string formatLinear(double value, int lunits, int luprec, int zeros = 0);

struct AngularFormat {
    int units = kDegrees;  ///< AngularUnits; any other value is degrees
    int precision = 0;     ///< 0..8. Degrees, minutes, seconds: 0 degrees, 1-2 minutes, 3-4 seconds, 5-8 decimals
    int zeros = 0;         ///< leading and trailing bits of ZeroSuppression (DIMAZIN: times 4)
    char32_t separator = U'.';
    std::string_view degreeSign = "d";  ///< behind whole degrees of kDegreesMinSec and kSurveyor
    std::string_view degreeSuffix{};    ///< behind decimal degrees
};
/// An angle's size as text: signed, not brought into one turn.
std::string formatAngleSize(double radians, const AngularFormat& format);
/// A direction as text, brought into [0, one turn): measured from `base` (radians), clockwise when `clockwise`
/// (surveyor's bearings always from north and south in the drawing's axes, turned by the base).
std::string formatAngle(double radians, int aunits, int auprec, double angbase = 0.0, bool angdir = false,
                        int zeros = 0);

/// A length as typed: "12.5", "1e3", "3/4", "3-1/2", "3 1/2", "5'", "5'3-1/2\"", "5'-3 1/2\"", "6\"", with a sign.
/// Nothing for anything else, and for what is not finite.
std::optional<double> parseDistance(std::string_view text);
/// An angle as typed, in radians: a plain number in the units of `aunits`, or "45d30'15\"" (also with the degree sign),
/// "50g", "0.5r", "N45d30'E", with a sign. `angbase` and `angdir` as in formatAngle, which this reads back.
std::optional<double> parseAngle(std::string_view text, int aunits = kDegrees, double angbase = 0.0,
                                 bool angdir = false);
/// The size of an angle as typed: parseAngle without base and sense.
inline std::optional<double> parseAngleSize(std::string_view text, int aunits = kDegrees) {
    return parseAngle(text, aunits, 0.0, false);
}

}  // namespace kova::engine
