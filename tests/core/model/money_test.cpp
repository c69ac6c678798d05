#include "core/model/money.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

constexpr std::string_view kMinus = "\xE2\x88\x92";  // U+2212

std::string minus(std::string_view rest) {
    return std::string(kMinus) + std::string(rest);
}

struct ParseCase {
    std::string_view text;
    std::optional<int64_t> cents;
};

void expectParses(std::initializer_list<ParseCase> cases) {
    for (const auto& [text, cents] : cases) {
        EXPECT_EQ(Money::parseCents(text), cents) << "text: \"" << text << "\"";
    }
}

TEST(Money, ParseRefusesTextWithoutAnAmount) {
    expectParses({
        {"", std::nullopt},
        {"   ", std::nullopt},
        {"\n\t", std::nullopt},
        {"$", std::nullopt},
        {"USD", std::nullopt},
        {".", std::nullopt},
        {"-", std::nullopt},
        {"+", std::nullopt},
        {"()", std::nullopt},
        {"$ -", std::nullopt},
        {"abc", std::nullopt},
    });
}

TEST(Money, ParseReadsWhatBanksExportAndPeopleType) {
    expectParses({
        {"0", 0},
        {"0.00", 0},
        {"-0.00", 0},
        {"1,234.56", 123456},
        {"$1,234.56", 123456},
        {"USD 1,234.56", 123456},
        {"1,234.56 USD", 123456},
        {"1234.5", 123450},
        {"5.5", 550},
        {"5.", 500},
        {".50", 50},
        {".5", 50},
        {"+5", 500},
        {"1,234,567", 123456700},
        {"  12.34\r\n", 1234},
        {"1\xC2\xA0"
         "234.00",
         123400},
        {"$ 1 234.00", 123400},
    });
}

TEST(Money, ParseHonoursEveryWayOfWritingANegative) {
    expectParses({
        {"-$5.00", -500},
        {"$-5.00", -500},
        {"5.00-", -500},
        {"(5.00)", -500},
        {"($5.00)", -500},
        {"\xE2\x88\x92"
         "12.30",
         -1230},
        {"$\xE2\x88\x92"
         "12.30",
         -1230},
    });
}

TEST(Money, ParenthesesFlipRatherThanSetTheSign) {
    expectParses({
        {"(-5.00)", 500},
        {"(5.00-)", 500},
        {"(\xE2\x88\x92"
         "5.00)",
         500},
        // The parentheses must enclose everything; outside a sign they stay in the digits.
        {"-(5.00)", std::nullopt},
        {"(5.00)-", std::nullopt},
    });
}

TEST(Money, ParseTakesOnlyOneSign) {
    expectParses({
        // A trailing minus counts only when nothing stands in front.
        {"-5.00-", std::nullopt},
        {"+5.00-", std::nullopt},
        {"--5", std::nullopt},
        {"+-5", std::nullopt},
        {"-+5", std::nullopt},
    });
}

TEST(Money, ParseRefusesEuropeanAndBrokenGroupingInsteadOfMisreading) {
    expectParses({
        {"1.234,56", std::nullopt},
        {"1,23.45", std::nullopt},
        {"12,34", std::nullopt},
        {"1,23", std::nullopt},
        {",123", std::nullopt},
        {"1,,234", std::nullopt},
        {"1,234,", std::nullopt},
        {"1234,567", std::nullopt},
        {"1,2345", std::nullopt},
        {"1.2.3", std::nullopt},
        {"5.123", std::nullopt},
        {"5.1x", std::nullopt},
        {"5.-1", std::nullopt},
        {"1,2a4.00", std::nullopt},
        {"12a", std::nullopt},
        {"1e5", std::nullopt},
        {"\xEF\xBC\x95", std::nullopt},  // a full-width digit five
    });
}

struct StyleCase {
    std::string_view text;
    std::optional<int64_t> point;  // read with a decimal point
    std::optional<int64_t> comma;  // read with a decimal comma
};

// Each mark means one thing in one style and the other in the other; an
// amount that only one style can read exactly is refused by the other, never
// read as a different sum.
TEST(Money, EachNumberStyleReadsItsOwnMarksAndRefusesTheOther) {
    const StyleCase cases[] = {
        {"1.234,56", std::nullopt, 123456},
        {"-0,01", std::nullopt, -1},
        {"-12,50", std::nullopt, -1250},
        {"12,50-", std::nullopt, -1250},
        {"1.234", std::nullopt, 123400},
        {"12,345", 1234500, std::nullopt},
        {"1,234.56", 123456, std::nullopt},
        {"1 234,56", std::nullopt, 123456},
        {"1\xC2\xA0"
         "234,56",
         std::nullopt, 123456},  // no-break space
        {"1\xE2\x80\xAF"
         "234,56",
         std::nullopt, 123456},  // narrow no-break space
        {"12,50 EUR", std::nullopt, 1250},
        {"\xE2\x82\xAC 12,50", std::nullopt, 1250},
        {"(5,00)", std::nullopt, -500},
        {"12", 1200, 1200},
        {"0,5", std::nullopt, 50},
        {",50", std::nullopt, 50},
        {"1.234.567,89", std::nullopt, 123456789},
        {"1.23,45", std::nullopt, std::nullopt},
        {"1,234,56", std::nullopt, std::nullopt},
        {"12,3,4", std::nullopt, std::nullopt},
        {",", std::nullopt, std::nullopt},
        {"EUR", std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.text));
        EXPECT_EQ(Money::parseCents(c.text, NumberStyle::decimalPoint), c.point);
        EXPECT_EQ(Money::parseCents(c.text, NumberStyle::decimalComma), c.comma);
    }
}

TEST(Money, ADecimalCommaStopsAtTheLargestAmountToo) {
    EXPECT_EQ(Money::parseCents("900.000.000.000,00", NumberStyle::decimalComma),
              Money::kLargestAmount);
    EXPECT_EQ(Money::parseCents("900.000.000.000,01", NumberStyle::decimalComma), std::nullopt);
    EXPECT_EQ(Money::parseCents("9.223.372.036.854.775.808", NumberStyle::decimalComma),
              std::nullopt);
    EXPECT_EQ(Money::parseCents("10000000000000", NumberStyle::decimalComma), std::nullopt);
}

// A decimal-point file must read exactly as it did before there were styles:
// "EUR" and "€" are no noise there.
TEST(Money, TheDecimalPointStyleIsTheOldReading) {
    for (const std::string_view text :
         {"$1,234.56", "USD 1,234.56", "5.00-", "(-5.00)", "1.234,56", "12 EUR", "5.123"}) {
        EXPECT_EQ(Money::parseCents(text, NumberStyle::decimalPoint), Money::parseCents(text))
            << text;
    }
}

TEST(Money, ParseStopsAtTheLargestAmount) {
    expectParses({
        {"900000000000", Money::kLargestAmount},
        {"900,000,000,000", Money::kLargestAmount},
        {"-900000000000", -Money::kLargestAmount},
        {"900000000001", std::nullopt},
        {"900,000,000,001", std::nullopt},
        {"-900000000001", std::nullopt},
        // Fourteen digits are refused by their length, even with leading zeros;
        // thirteen are read.
        {"10000000000000", std::nullopt},
        {"00000000000001", std::nullopt},
        {"0000000000001", 100},
        // Grouped text has no length rule, and a value past 64 bits is a refusal,
        // never an overflow fault.
        {"000,000,000,000,000,000,001", 100},
        {"9,223,372,036,854,775,807", std::nullopt},
        {"99,999,999,999,999,999,999", std::nullopt},
    });
}

// "900,000,000,000.01" was read as a cent above the largest amount, which the
// rest of the program takes for granted no amount can be.
TEST(Money, ParseRefusesCentsPastTheLargestAmount) {
    expectParses({
        {"900,000,000,000.00", Money::kLargestAmount},
        {"900,000,000,000.01", std::nullopt},
        {"900000000000.99", std::nullopt},
        {"-900000000000.01", std::nullopt},
        {"(900,000,000,000.1)", std::nullopt},
        {"899,999,999,999.99", Money::kLargestAmount - 1},
    });
}

TEST(Money, FormatPutsTheSignBeforeTheCurrencyMark) {
    EXPECT_EQ(Money::format(-123456), minus("$1,234.56"));
    EXPECT_EQ(Money::format(-123456, "EUR"), minus("EUR 1,234.56"));
    EXPECT_EQ(Money::format(123456, "EUR"), "EUR 1,234.56");
    EXPECT_EQ(Money::format(-5, "USD", /*plain=*/true), "-$0.05");
    EXPECT_EQ(Money::format(-5, "GBP", /*plain=*/true, /*showPlus=*/true), "-GBP 0.05");
    EXPECT_EQ(Money::format(5, "USD", false, /*showPlus=*/true), "+$0.05");
    EXPECT_EQ(Money::format(5, "EUR", false, /*showPlus=*/true), "+EUR 0.05");
    EXPECT_EQ(Money::format(0, "USD", false, /*showPlus=*/true), "$0.00");
    EXPECT_EQ(Money::format(0, "USD", /*plain=*/true, true), "$0.00");
    // Only the exact code "USD" has a symbol.
    EXPECT_EQ(Money::format(100, "usd"), "usd 1.00");
}

TEST(Money, FormatKeepsTwoCentDigitsAndGroupsTheUnits) {
    EXPECT_EQ(Money::format(1), "$0.01");
    EXPECT_EQ(Money::format(10), "$0.10");
    EXPECT_EQ(Money::format(100), "$1.00");
    EXPECT_EQ(Money::format(99999), "$999.99");
    EXPECT_EQ(Money::format(100000), "$1,000.00");
    EXPECT_EQ(Money::format(Money::kLargestAmount), "$900,000,000,000.00");
    EXPECT_EQ(Money::format(-Money::kLargestAmount - 99, "USD", true), "-$900,000,000,000.99");
    // Far beyond any real figure the text still holds together.
    EXPECT_EQ(Money::format(std::numeric_limits<int64_t>::max()), "$92,233,720,368,547,758.07");
}

TEST(Money, GroupedCountsGroupsFromTheRight) {
    EXPECT_EQ(Money::grouped(0), "0");
    EXPECT_EQ(Money::grouped(999), "999");
    EXPECT_EQ(Money::grouped(1000), "1,000");
    EXPECT_EQ(Money::grouped(12345), "12,345");
    EXPECT_EQ(Money::grouped(100000), "100,000");
    EXPECT_EQ(Money::grouped(1234567), "1,234,567");
    EXPECT_EQ(Money::grouped(std::numeric_limits<uint64_t>::max()), "18,446,744,073,709,551,615");
}

TEST(Money, FormatWholeRoundsHalvesAwayButKeepsTheUnroundedSign) {
    EXPECT_EQ(Money::formatWhole(-49), minus("$0"));
    EXPECT_EQ(Money::formatWhole(49), "$0");
    EXPECT_EQ(Money::formatWhole(50), "$1");
    EXPECT_EQ(Money::formatWhole(-50), minus("$1"));
    EXPECT_EQ(Money::formatWhole(149), "$1");
    EXPECT_EQ(Money::formatWhole(150), "$2");
    EXPECT_EQ(Money::formatWhole(-150), minus("$2"));
    EXPECT_EQ(Money::formatWhole(0), "$0");
    EXPECT_EQ(Money::formatWhole(99999950), "$1,000,000");
    EXPECT_EQ(Money::formatWhole(-123456, "EUR"), minus("EUR 1,235"));
}

TEST(Money, DecimalStringIsPlainAsciiWithoutGrouping) {
    EXPECT_EQ(Money::decimalString(-123456), "-1234.56");
    EXPECT_EQ(Money::decimalString(5), "0.05");
    EXPECT_EQ(Money::decimalString(-5), "-0.05");
    EXPECT_EQ(Money::decimalString(0), "0.00");
    EXPECT_EQ(Money::decimalString(120), "1.20");
    EXPECT_EQ(Money::decimalString(Money::kLargestAmount), "900000000000.00");
}

TEST(Money, PercentTextSignsOnlyNonZeroValues) {
    EXPECT_EQ(Money::percentText(125), "12.5%");
    EXPECT_EQ(Money::percentText(-5), minus("0.5%"));
    EXPECT_EQ(Money::percentText(0, /*showPlus=*/true), "0.0%");
    EXPECT_EQ(Money::percentText(5, /*showPlus=*/true), "+0.5%");
    EXPECT_EQ(Money::percentText(-5, /*showPlus=*/true), minus("0.5%"));
    EXPECT_EQ(Money::percentText(1000), "100.0%");
    EXPECT_EQ(Money::percentText(-12340), minus("1234.0%"));
}

TEST(Money, ShareRoundsHalfAwayFromZeroOnBothSides) {
    EXPECT_EQ(Money::shareTenths(1, 3), 333);
    EXPECT_EQ(Money::shareTenths(2, 3), 667);
    EXPECT_EQ(Money::shareTenths(-1, 3), -333);
    EXPECT_EQ(Money::shareTenths(-2, 3), -667);
    // 62.5 tenths: the half goes away from zero, not up.
    EXPECT_EQ(Money::shareTenths(1, 16), 63);
    EXPECT_EQ(Money::shareTenths(-1, 16), -63);
    EXPECT_EQ(Money::shareTenths(1, 8), 125);
    EXPECT_EQ(Money::shareTenths(0, 1), 0);
    EXPECT_EQ(Money::shareTenths(3, 1), 3000);
    EXPECT_EQ(Money::shareTenths(Money::kLargestAmount, Money::kLargestAmount), 1000);
    EXPECT_EQ(Money::shareTenths(1, Money::kLargestAmount), 0);
}

TEST(Money, ShareNeedsAPositiveTotal) {
    EXPECT_EQ(Money::shareTenths(5, 0), std::nullopt);
    EXPECT_EQ(Money::shareTenths(5, -1), std::nullopt);
    EXPECT_EQ(Money::shareTenths(-5, -10), std::nullopt);
    EXPECT_EQ(Money::shareTenths(0, 0), std::nullopt);
}

TEST(Money, ChangeIsMeasuredAgainstTheMagnitudeOfTheBase) {
    EXPECT_EQ(Money::changeTenthsOfPercent(0, 5), std::nullopt);
    EXPECT_EQ(Money::changeTenthsOfPercent(0, 0), std::nullopt);
    EXPECT_EQ(Money::changeTenthsOfPercent(-200, -100), 500);
    EXPECT_EQ(Money::changeTenthsOfPercent(-100, -200), -1000);
    EXPECT_EQ(Money::changeTenthsOfPercent(200, 100), -500);
    EXPECT_EQ(Money::changeTenthsOfPercent(100, -100), -2000);
    EXPECT_EQ(Money::changeTenthsOfPercent(-100, 100), 2000);
    EXPECT_EQ(Money::changeTenthsOfPercent(5, 5), 0);
    EXPECT_EQ(Money::changeTenthsOfPercent(3, 4), 333);
    EXPECT_EQ(Money::changeTenthsOfPercent(16, 17), 63);
    EXPECT_EQ(Money::changeTenthsOfPercent(16, 15), -63);
    EXPECT_EQ(Money::changeTenthsOfPercent(-16, -17), -63);
    EXPECT_EQ(Money::changeTenthsOfPercent(-Money::kLargestAmount, Money::kLargestAmount), 2000);
}

TEST(Money, FormattedAmountsReadBackUnchanged) {
    for (const int64_t cents :
         {int64_t{0}, int64_t{1}, int64_t{-1}, int64_t{99}, int64_t{-100}, int64_t{123456},
          int64_t{-123456789}, Money::kLargestAmount, -Money::kLargestAmount}) {
        EXPECT_EQ(Money::parseCents(Money::format(cents)), cents) << cents;
        EXPECT_EQ(Money::parseCents(Money::format(cents, "USD", true, true)), cents) << cents;
        EXPECT_EQ(Money::parseCents(Money::decimalString(cents)), cents) << cents;
    }
}

}  // namespace
}  // namespace copperwick
