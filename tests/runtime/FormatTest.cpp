// Numbers shown by pattern: grouping, rounding on the shown digits, signs,
// texts and the patterns the component and its callers use.
#include "kavrin/Format.h"

#include <gtest/gtest.h>

#include <memory>

#include "kavrin/Dispatch.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

TEST(FormatNumber, GroupsTheWholeIntegerPartByThree) {
  EXPECT_EQ(FormatNumber(1234.5, u"##,##0.00"), u"1,234.50");
  EXPECT_EQ(FormatNumber(1234567.891, u"##,##0"), u"1,234,568");
  EXPECT_EQ(FormatNumber(1234567.891, u"##,##0.000"), u"1,234,567.891");
  EXPECT_EQ(FormatNumber(100000.0, u"#,###,###,###"), u"100,000");
  EXPECT_EQ(FormatNumber(1e20, u"##,##0.00"), u"100,000,000,000,000,000,000.00");
  // Only 15 digits exist; the positions after them show as zeros.
  EXPECT_EQ(FormatNumber(123456789012345678.0, u"##,##0"), u"123,456,789,012,346,000");
  EXPECT_EQ(FormatNumber(1234567.0, u"0"), u"1234567") << "no grouping asked";
}

TEST(FormatNumber, RoundsTheFifteenDigitValueHalvesAwayFromZero) {
  // Each of these is just below the half as a binary double.
  EXPECT_EQ(FormatNumber(2.345, u"##,##0.00"), u"2.35");
  EXPECT_EQ(FormatNumber(1.005, u"##,##0.00"), u"1.01");
  EXPECT_EQ(FormatNumber(0.075, u"##,##0.00"), u"0.08");
  EXPECT_EQ(FormatNumber(2.675, u"0.00"), u"2.68");
  EXPECT_EQ(FormatNumber(1234.5678, u"##,##0"), u"1,235");
  EXPECT_EQ(FormatNumber(1234.5678, u"##,##0.000"), u"1,234.568");
  // Halves of whole numbers are not taken to the even neighbour.
  EXPECT_EQ(FormatNumber(2.5, u"##,##0"), u"3");
  EXPECT_EQ(FormatNumber(-2.5, u"##,##0"), u"-3");
  // A carry runs through the integer part and into a new group.
  EXPECT_EQ(FormatNumber(999.995, u"##,##0.00"), u"1,000.00");
  EXPECT_EQ(FormatNumber(99999999999999.99, u"##,##0.00"), u"100,000,000,000,000.00");
  EXPECT_EQ(FormatNumber(9.9999999, u"#0.000000"), u"10.000000");
  // Beyond the decimals shown: below a half vanishes, a half counts.
  EXPECT_EQ(FormatNumber(0.0000005, u"0.000000"), u"0.000001");
  EXPECT_EQ(FormatNumber(0.00000049, u"0.000000"), u"0.000000");
  EXPECT_EQ(FormatNumber(1e-300, u"0.00"), u"0.00");
}

TEST(FormatNumber, NegativeAmountsKeepTheirSignEvenWhenShownAsZero) {
  EXPECT_EQ(FormatNumber(-1234.5, u"##,##0.00"), u"-1,234.50");
  EXPECT_EQ(FormatNumber(-0.5, u"##,##0.00"), u"-0.50");
  EXPECT_EQ(FormatNumber(-999.995, u"##,##0.00"), u"-1,000.00");
  EXPECT_EQ(FormatNumber(-0.001, u"##,##0.00"), u"-0.00");
  EXPECT_EQ(FormatNumber(-0.4, u"##,##0"), u"-0");
  EXPECT_EQ(FormatNumber(-0.0, u"0.00"), u"0.00") << "negative zero is zero";
  EXPECT_EQ(FormatNumber(0.0, u"##,##0.00"), u"0.00");
}

TEST(FormatNumber, OptionalPlaceholdersShowOnlySignificantDigits) {
  EXPECT_EQ(FormatNumber(0.0049, u"#.##"), u".");
  EXPECT_EQ(FormatNumber(0.0995, u"#.##"), u".1");
  EXPECT_EQ(FormatNumber(-0.1, u".#"), u"-.1");
  EXPECT_EQ(FormatNumber(1.5, u"0.0#"), u"1.5");
  EXPECT_EQ(FormatNumber(1.256, u"0.0#"), u"1.26");
  EXPECT_EQ(FormatNumber(0.0, u"#"), u"");
  EXPECT_EQ(FormatNumber(5.0, u"000"), u"005");
}

TEST(FormatNumber, TwoDigitPeriods) {
  EXPECT_EQ(FormatNumber(int16_t{3}, u"00"), u"03");
  EXPECT_EQ(FormatNumber(uint8_t{12}, u"00"), u"12");
  EXPECT_EQ(FormatNumber(int32_t{0}, u"00"), u"00");
  EXPECT_EQ(FormatNumber(int32_t{123}, u"00"), u"123");
  EXPECT_EQ(FormatNumber(1.5, u"00"), u"02");
  EXPECT_EQ(FormatNumber(u"3", u"00"), u"03");
  EXPECT_EQ(FormatNumber(Variant(), u"00"), u"00") << "Empty is 0";
}

TEST(FormatNumber, TextsAreFormattedAsTheirNumberOrReturnedAsTheyAre) {
  EXPECT_EQ(FormatNumber(u" 3 ", u"00"), u"03");
  EXPECT_EQ(FormatNumber(u"1,234.5", u"##,##0.00"), u"1,234.50");
  EXPECT_EQ(FormatNumber(u"-2.345", u"0.00"), u"-2.35");
  EXPECT_EQ(FormatNumber(u"abc", u"00"), u"abc");
  EXPECT_EQ(FormatNumber(u"12a", u"0.00"), u"12a");
  EXPECT_KAVRIN_ERROR(FormatNumber(u"1e999", u"0"), errors::kOverflow);
}

TEST(FormatNumber, OtherValuesAndThePatternsItCannotShow) {
  EXPECT_EQ(FormatNumber(true, u"0"), u"-1");
  EXPECT_EQ(FormatNumber(Date{45000.25}, u"0.00"), u"45000.25");
  EXPECT_EQ(FormatNumber(Variant::Null(), u"0.00"), u"");
  EXPECT_EQ(FormatNumber(0.1 + 0.2, u""), u"0.3") << "the empty pattern shows the plain text";
  EXPECT_KAVRIN_ERROR(FormatNumber(Variant::Missing(), u"0"), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(FormatNumber(Variant::Nothing(), u"0"), errors::kTypeMismatch);
  for (const char16_t* pattern : {u"0,", u",0", u"0.0.0", u"0.0,0", u"$0", u"0;(0)", u"0%"}) {
    EXPECT_KAVRIN_ERROR(FormatNumber(1.0, pattern), errors::kInvalidProcedureCall);
  }
}

}  // namespace
}  // namespace kavrin
