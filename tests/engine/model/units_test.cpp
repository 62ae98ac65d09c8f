#include "engine/model/units.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::kPi;
using math::toRadians;

struct LinearCase {
    double value;
    int units;
    int precision;
    int zeros;
    const char* text;
};

TEST(Units, LinearFormats) {
    const LinearCase cases[] = {
        // Scientific and decimal.
        {1550, kScientific, 2, 0, "1.55E+03"},
        {-0.00015, kScientific, 4, 0, "-1.5000E-04"},
        {1550, kScientific, 4, kTrailingZerosHidden, "1.55E+03"},
        {0, kScientific, 1, 0, "0.0E+00"},
        {15.5, kDecimal, 4, 0, "15.5000"},
        {15.5, kDecimal, 4, kTrailingZerosHidden, "15.5"},
        {16, kDecimal, 4, kTrailingZerosHidden, "16"},
        {0.5, kDecimal, 2, kLeadingZerosHidden, ".50"},
        {-0.5, kDecimal, 2, kLeadingZerosHidden | kTrailingZerosHidden, "-.5"},
        {100, kDecimal, 0, kTrailingZerosHidden, "100"},
        {0, kDecimal, 2, kLeadingZerosHidden | kTrailingZerosHidden, "0"},
        // Ties round away from zero although their doubles lie a little below; nothing has no sign.
        {0.125, kDecimal, 2, 0, "0.13"},
        {2.675, kDecimal, 2, 0, "2.68"},
        {-2.675, kDecimal, 2, 0, "-2.68"},
        {2.6749, kDecimal, 2, 0, "2.67"},
        {-0.004, kDecimal, 2, 0, "0.00"},
        {-0.0, kDecimal, 1, 0, "0.0"},
        {0.1 + 0.2, kDecimal, 8, kTrailingZerosHidden, "0.3"},
        {1e22, kDecimal, 1, 0, "10000000000000000000000.0"},
        {5, 99, 1, 0, "5.0"},
        {5.25, kDecimal, 99, kTrailingZerosHidden, "5.25"},
        {5.25, kDecimal, -3, 0, "5"},
        // Engineering.
        {15.5, kEngineering, 2, 0, "1'-3.50\""},
        {6, kEngineering, 2, 0, "6.00\""},
        {12, kEngineering, 2, 0, "1'"},
        {12, kEngineering, 2, kZeroFeetInchesShown, "1'-0.00\""},
        {6, kEngineering, 1, kZeroFeetInchesShown, "0'-6.0\""},
        {11.9999, kEngineering, 2, kZeroFeetInchesShown, "1'-0.00\""},
        {-143.999, kEngineering, 1, kZeroFeetHidden, "-12'-0.0\""},
        {1e20, kEngineering, 0, 0, "8333333333333332992'"},
        // Architectural.
        {15.5, kArchitectural, 4, 0, "1'-3 1/2\""},
        {12.5, kArchitectural, 4, 0, "1'-0 1/2\""},
        {0.5, kArchitectural, 4, 0, "1/2\""},
        {0.5, kArchitectural, 4, kZeroFeetInchesShown, "0'-0 1/2\""},
        {0.5, kArchitectural, 4, kZeroFeetHidden, "1/2\""},
        {6, kArchitectural, 4, kZeroInchesHidden, "0'-6\""},
        {12, kArchitectural, 4, kZeroInchesHidden, "1'"},
        {12, kArchitectural, 4, kZeroFeetHidden, "1'-0\""},
        {12, kArchitectural, 4, 0, "1'"},
        {0, kArchitectural, 4, 0, "0\""},
        {0, kArchitectural, 4, kZeroFeetInchesShown, "0'-0\""},
        {11.9999, kArchitectural, 4, 0, "1'"},
        {23.97, kArchitectural, 4, 0, "2'"},
        {-15.25, kArchitectural, 8, 0, "-1'-3 1/4\""},
        {-0.001, kArchitectural, 4, 0, "0\""},
        // Fractional.
        {15.5, kFractional, 4, 0, "15 1/2"},
        {0.75, kFractional, 2, 0, "3/4"},
        {0.999, kFractional, 4, 0, "1"},
        {-0.375, kFractional, 3, 0, "-3/8"},
        {0.01, kFractional, 4, 0, "0"},
        {1.0 / 256, kFractional, 8, 0, "1/256"},
        {3.7, kFractional, 0, 0, "4"},
    };
    for (const LinearCase& c : cases)
        EXPECT_EQ(formatLinear(c.value, c.units, c.precision, c.zeros), c.text)
            << c.value << " in units " << c.units << ", precision " << c.precision << ", zeros " << c.zeros;
}

TEST(Units, LinearFormVariants) {
    LinearFormat f;
    f.units = kArchitectural;
    f.inputForm = true;
    EXPECT_EQ(formatLinear(15.5, f), "1'3-1/2\"");
    f.inputForm = false;
    f.fraction = FractionForm::Horizontal;
    EXPECT_EQ(formatLinear(15.5, f), "1'-3\\S1/2;\"");
    f.units = kFractional;
    f.fraction = FractionForm::Diagonal;
    EXPECT_EQ(formatLinear(0.25, f), "\\S1#4;");
    f.units = kDecimal;
    f.precision = 2;
    f.separator = U',';
    EXPECT_EQ(formatLinear(-12.5, f), "-12,50");
    f.separator = U'٫';  // the Arabic decimal separator
    EXPECT_EQ(formatLinear(12.5, f), "12٫50");
}

TEST(Units, WhatIsNoNumberIsNamed) {
    const double inf = std::numeric_limits<double>::infinity();
    for (int units = 0; units <= 6; ++units) {
        EXPECT_EQ(formatLinear(std::nan(""), units, 4), "nan");
        EXPECT_EQ(formatLinear(inf, units, 4), "inf");
        EXPECT_EQ(formatLinear(-inf, units, 4), "-inf");
        EXPECT_EQ(formatAngle(std::nan(""), units, 4), "nan");
        // Long texts, but no overflow and no end in sight of the buffer.
        EXPECT_LT(formatLinear(std::numeric_limits<double>::max(), units, 8).size(), 330u);
        EXPECT_LT(formatAngleSize(std::numeric_limits<double>::max(), {.units = units, .precision = 8}).size(), 330u);
        EXPECT_NE(formatLinear(std::numeric_limits<double>::denorm_min(), units, 8), "");
    }
}

struct AngleCase {
    double degrees;
    int units;
    int precision;
    const char* text;
};

TEST(Units, Directions) {
    const AngleCase cases[] = {
        {45, kDegrees, 0, "45"},
        {45, kDegrees, 4, "45.0000"},
        {-90, kDegrees, 1, "270.0"},
        {359.996, kDegrees, 2, "0.00"},
        {359.994, kDegrees, 2, "359.99"},
        {360, kDegrees, 2, "0.00"},
        {725, kDegrees, 0, "5"},
        {45.5, kDegreesMinSec, 0, "46d"},
        {45.5, kDegreesMinSec, 2, "45d30'"},
        {45.504166666666666, kDegreesMinSec, 4, "45d30'15\""},
        {45.504166666666666, kDegreesMinSec, 6, "45d30'15.00\""},
        {29.99999, kDegreesMinSec, 4, "30d0'0\""},
        {359.99999, kDegreesMinSec, 4, "0d0'0\""},
        {90, kGrads, 2, "100.00g"},
        {359.9999, kGrads, 1, "0.0g"},
        {180, kRadians, 4, "3.1416r"},
        {0, kSurveyor, 4, "E"},
        {90, kSurveyor, 4, "N"},
        {180, kSurveyor, 4, "W"},
        {270, kSurveyor, 4, "S"},
        {44.495833333333334, kSurveyor, 4, "N 45d30'15\" E"},
        {135, kSurveyor, 0, "N 45d W"},
        {225, kSurveyor, 2, "S 45d0' W"},
        {300, kSurveyor, 4, "S 30d0'0\" E"},
        {89.99999, kSurveyor, 4, "N"},
        {359.99999, kSurveyor, 4, "E"},
    };
    for (const AngleCase& c : cases)
        EXPECT_EQ(formatAngle(toRadians(c.degrees), c.units, c.precision), c.text)
            << c.degrees << " in units " << c.units << ", precision " << c.precision;
    EXPECT_EQ(formatAngle(toRadians(30), kDegrees, 0, toRadians(90), true), "60");
    EXPECT_EQ(formatAngle(toRadians(30), kDegrees, 0, toRadians(90), false), "300");
}

TEST(Units, AngleSizesKeepTheirTurns) {
    AngularFormat f;
    f.precision = 1;
    EXPECT_EQ(formatAngleSize(toRadians(-400), f), "-400.0");
    EXPECT_EQ(formatAngleSize(toRadians(360), f), "360.0");
    f.degreeSuffix = "\xC2\xB0";
    f.zeros = kTrailingZerosHidden;
    EXPECT_EQ(formatAngleSize(toRadians(45), f), "45\xC2\xB0");
    f.units = kDegreesMinSec;
    f.precision = 4;
    EXPECT_EQ(formatAngleSize(toRadians(45), f), "45d");
    EXPECT_EQ(formatAngleSize(toRadians(45.5), f), "45d30'");
    f.zeros = kLeadingZerosHidden;
    EXPECT_EQ(formatAngleSize(toRadians(0.5), f), "30'0\"");
}

TEST(Units, DistancesAreRead) {
    const std::pair<const char*, double> good[] = {
        {"12.5", 12.5},      {" -3 ", -3},         {"+.5", 0.5},         {"1e3", 1000},  {"5.", 5},
        {"3/4", 0.75},       {"3-1/2", 3.5},       {"3 1/2", 3.5},       {"5'", 60},     {"5'6", 66},
        {"5'3-1/2\"", 63.5}, {"5'-3 1/2\"", 63.5}, {"5'-3.25\"", 63.25}, {"6\"", 6},     {"-1'6\"", -18},
        {"1/2\"", 0.5},      {"0'-0 1/2\"", 0.5},  {"1.5'", 18},         {"2' 6\"", 30}, {"1.55E+01", 15.5},
    };
    for (const auto& [text, value] : good) {
        const auto read = parseDistance(text);
        ASSERT_TRUE(read.has_value()) << text;
        EXPECT_DOUBLE_EQ(*read, value) << text;
    }
    for (const char* text : {"", "-", "abc", "nan", "inf", "1e999", "5'-", "1/0", "3.5-1/2", "5-3", "12 13", "5''",
                             "--5", "1,5", "5\"3'", "0x10"})
        EXPECT_FALSE(parseDistance(text).has_value()) << text;
}

TEST(Units, AnglesAreRead) {
    const std::tuple<const char*, int, double> good[] = {
        {"45", kDegrees, 45},
        {"-45.5", kDegrees, -45.5},
        {"50", kGrads, 45},
        {"50g", kDegrees, 45},
        {"3.14159265358979323846", kRadians, 180},
        {"1.5707963267948966R", kDegrees, 90},
        {"45d", kGrads, 45},
        {"45d30'", kDegreesMinSec, 45.5},
        {"45D30'15\"", kDegrees, 45 + 30.0 / 60 + 15.0 / 3600},
        {"45\xC2\xB0"
         "30'15.5\"",
         kDegrees, 45 + 30.0 / 60 + 15.5 / 3600},
        {"30'", kDegrees, 0.5},
        {"n45d30'e", kDegrees, 44.5},
        {"S 30 W", kSurveyor, 240},
        {"N", kSurveyor, 90},
        {"w", kSurveyor, 180},
    };
    for (const auto& [text, units, degrees] : good) {
        const auto read = parseAngle(text, units);
        ASSERT_TRUE(read.has_value()) << text;
        EXPECT_NEAR(*read, toRadians(degrees), 1e-12) << text;
    }
    EXPECT_NEAR(*parseAngle("30", kDegrees, kPi / 2, true), toRadians(60), 1e-12);
    for (const char* text : {"", "d", "45d30", "45x", "N95E", "N45", "45 30", "nan", "N45EE", "1e400"})
        EXPECT_FALSE(parseAngle(text).has_value()) << text;
}

TEST(Units, WhatIsWrittenReadsBack) {
    for (const double value : {0.0, 0.5, -7.25, 15.5, 143.75, 1234.0}) {
        for (int units = kScientific; units <= kFractional; ++units)
            for (const int zeros : {0, 1, 2, 3, 12})
                EXPECT_EQ(parseDistance(formatLinear(value, units, 8, zeros)), value)
                    << formatLinear(value, units, 8, zeros);
    }
    for (double degrees = 0.0; degrees < 360.0; degrees += 7.5) {
        for (int units = kDegrees; units <= kSurveyor; ++units) {
            const std::string text = formatAngle(toRadians(degrees), units, 8, 0.3, true);
            const auto read = parseAngle(text, units, 0.3, true);
            ASSERT_TRUE(read.has_value()) << text;
            const double turn = std::remainder(*read - toRadians(degrees), 2 * kPi);
            EXPECT_NEAR(turn, 0.0, 1e-7) << text;
        }
    }
}

}  // namespace
}  // namespace kova::engine
