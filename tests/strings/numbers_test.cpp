#include "strings/numbers.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace kova::strings {
namespace {

/// Runs the C library by the conventions of its own "C" locale for as long as it lives.
class PlainLocale {
public:
    PlainLocale() : before_(std::setlocale(LC_NUMERIC, nullptr)) { std::setlocale(LC_NUMERIC, "C"); }
    ~PlainLocale() { std::setlocale(LC_NUMERIC, before_.c_str()); }

private:
    std::string before_;
};

std::string printedBy(const char* format, int digits, double value) {
    char buffer[800];
    std::snprintf(buffer, sizeof buffer, format, digits, value);
    return buffer;
}

/// Numbers of every size, with few and with many digits, ties of rounding and the ends of the range among them.
std::vector<double> manyNumbers() {
    std::vector<double> out = {0.0, -0.0, 1.0, 0.5, 1.5, 2.5, 0.125, 2.675, 1e15, 1e16, 999999.5, 9.9999995, 1e-5, 0.0001,
                               std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
                               std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()};
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-30, 30);
    for (int i = 0; i < 20'000; ++i) out.push_back(mantissa(random) * std::pow(10.0, exponent(random)));
    for (int i = 0; i < 20'000; ++i) out.push_back(std::round(mantissa(random) * 1e5) / 1e4);
    return out;
}

TEST(Numbers, ArePrintedAsPrintfDoesWithoutALocale) {
    const PlainLocale plain;
    for (const double v : manyNumbers())
        for (const int digits : {0, 1, 2, 4, 8, 15, 17}) {
            ASSERT_EQ(fixed(v, digits), printedBy("%.*f", digits, v));
            ASSERT_EQ(scientific(v, digits), printedBy("%.*e", digits, v));
            ASSERT_EQ(general(v, digits), printedBy("%.*g", digits, v));
        }
    EXPECT_EQ(fixed(-std::numeric_limits<double>::max(), 400).size(), 1U + 309 + 1 + 400);
    EXPECT_EQ(fixed(1.0, 1000).size(), 402U);
    EXPECT_EQ(fixed(2.7, -1), "3");
}

TEST(Numbers, ShortestReadsBackToTheBit) {
    for (const double v : manyNumbers()) {
        if (!std::isfinite(v)) continue;
        const std::string text = shortest(v);
        const auto back = parseReal(text);
        ASSERT_TRUE(back) << text;
        ASSERT_EQ(*back, v);
        ASSERT_EQ(std::signbit(*back), std::signbit(v));
    }
    EXPECT_EQ(shortest(0.1), "0.1");
    EXPECT_EQ(shortest(3.0), "3");
    EXPECT_EQ(shortest(1e30), "1e+30");
    EXPECT_EQ(shortest(-std::numeric_limits<double>::max()).size(), kShortestSize - 1);
}

TEST(Numbers, OnlyDecimalNumbersAreRead) {
    for (const auto& [text, value] : std::initializer_list<std::pair<const char*, double>>{
             {"1.5", 1.5}, {"+1.5", 1.5}, {"-.5", -0.5}, {"5.", 5.0}, {"1e3", 1000.0}, {"1E-3", 0.001}, {"-0", 0.0}})
        EXPECT_EQ(parseReal(text), value) << text;
    for (const char* text : {"", "+", "-", ".", "+-1", "-+1", "--1", "1,5", "1.5 ", " 1", "1.5m", "0x10", "inf", "nan", "-inf",
                             "e5", ".e5", "1e", "1e999", "-1e999"})
        EXPECT_FALSE(parseReal(text)) << text;

    const auto begins = [](std::string_view text) {
        double value = -1.0;
        const char* end = readReal(text.data(), text.data() + text.size(), value);
        return std::make_pair(value, end == nullptr ? std::string("none") : std::string(end, text.data() + text.size()));
    };
    using Begin = std::pair<double, std::string>;
    EXPECT_EQ(begins("2.5mm"), Begin(2.5, "mm"));
    EXPECT_EQ(begins("1,5"), Begin(1.0, ",5"));
    EXPECT_EQ(begins("1ex"), Begin(1.0, "ex"));
    EXPECT_EQ(begins("mm"), Begin(-1.0, "none"));
    // Beyond what a double holds: the sign of the exponent is not all that decides.
    const double endless = std::numeric_limits<double>::infinity();
    EXPECT_EQ(begins("1e999;"), Begin(endless, ";"));
    EXPECT_EQ(begins("-1e999"), Begin(-endless, ""));
    EXPECT_EQ(begins("1e-999"), Begin(0.0, ""));
    EXPECT_EQ(begins("0." + std::string(400, '0') + "1"), Begin(0.0, ""));
    EXPECT_EQ(begins("1" + std::string(400, '0') + ".5"), Begin(endless, ""));
    EXPECT_EQ(begins("0." + std::string(400, '0') + "1e5"), Begin(0.0, ""));
    EXPECT_EQ(begins("0e999"), Begin(0.0, ""));
    EXPECT_EQ(begins("1e-99999999999999999999"), Begin(0.0, ""));
}

TEST(Numbers, IntegersAndHandles) {
    EXPECT_EQ(parseInteger("+12"), 12);
    EXPECT_EQ(parseInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    for (const char* text : {"", "+", "+-1", "9223372036854775808", "1.0", "1 ", "0x1"}) EXPECT_FALSE(parseInteger(text)) << text;
    EXPECT_EQ(parseHex("2aF"), 0x2AFU);
    EXPECT_EQ(parseHex("FFFFFFFFFFFFFFFF"), ~std::uint64_t{0});
    for (const char* text : {"", "-1", "0x1", "10000000000000000", "G"}) EXPECT_FALSE(parseHex(text)) << text;
    EXPECT_EQ(hexText(0), "0");
    EXPECT_EQ(hexText(~std::uint64_t{0}), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(hexText(0x2AF), "2AF");
}

}  // namespace
}  // namespace kova::strings
