// Amounts shown with two or a chosen number of decimals, the zero text, and
// typed amounts read back.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

TEST(FormatNum, ShowsGroupedAmountsWithTwoDecimals) {
  clsPub pub;
  EXPECT_EQ(pub.FormatNum(1234.5), u"1,234.50");
  EXPECT_EQ(pub.FormatNum(-1234.5), u"-1,234.50");
  EXPECT_EQ(pub.FormatNum(2.345), u"2.35") << "halves judged on the 15-digit value";
  EXPECT_EQ(pub.FormatNum(-0.5), u"-0.50");
  // Not zero, so the pattern applies, however small the amount.
  EXPECT_EQ(pub.FormatNum(0.001), u"0.00");
  EXPECT_EQ(pub.FormatNum(-0.001), u"-0.00");
  // Any choice for zero is ignored, even one that is no truth value.
  EXPECT_EQ(pub.FormatNum(7, u"abc"), u"7.00");
}

TEST(FormatNum, ZeroShowsABareZeroOrNothing) {
  clsPub pub;
  EXPECT_EQ(pub.FormatNum(0), u"");
  EXPECT_EQ(pub.FormatNum(-0.0), u"") << "negative zero is zero";
  EXPECT_EQ(pub.FormatNum(0, true), u"0") << "not 0.00";
  EXPECT_EQ(pub.FormatNum(0, Variant::Null()), u"");
  EXPECT_EQ(pub.FormatNum(0, Variant()), u"");
  EXPECT_EQ(pub.FormatNum(0, int16_t{1}), u"0");
  EXPECT_EQ(pub.FormatNum(0, u"True"), u"0");
  EXPECT_EQ(pub.FormatNum(0, u"2"), u"0");
  EXPECT_KAVRIN_ERROR(pub.FormatNum(0, u"abc"), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub.FormatNum(0, Variant::Nothing()), errors::kTypeMismatch);
}

TEST(FormatNum1, ShowsTheChosenNumberOfDecimals) {
  clsPub pub;
  EXPECT_EQ(pub.FormatNum1(1234.5678), u"1,235");
  EXPECT_EQ(pub.FormatNum1(1234.5678, 1), u"1,234.6");
  EXPECT_EQ(pub.FormatNum1(1234.5678, 3), u"1,234.568");
  EXPECT_EQ(pub.FormatNum1(-1234.5678, 0), u"-1,235");
  EXPECT_EQ(pub.FormatNum1(2.5, 0), u"3") << "halves away from zero, not to even";
  EXPECT_EQ(pub.FormatNum1(-0.4, 0), u"-0");
  EXPECT_EQ(pub.FormatNum1(0, 2, true), u"0");
  EXPECT_EQ(pub.FormatNum1(0, 2), u"");
}

TEST(FormatNum1, FailsOnANegativeCountOnlyForAmountsAndOnTheChoiceOnlyForZero) {
  clsPub pub;
  EXPECT_KAVRIN_ERROR(pub.FormatNum1(5, -1), errors::kInvalidProcedureCall);
  EXPECT_KAVRIN_ERROR(pub.FormatNum1(5, -1, u"abc"), errors::kInvalidProcedureCall);
  EXPECT_EQ(pub.FormatNum1(0, -1), u"") << "no pattern is built for zero";
  EXPECT_EQ(pub.FormatNum1(0, -1, true), u"0");
  EXPECT_KAVRIN_ERROR(pub.FormatNum1(0, -1, u"abc"), errors::kTypeMismatch);
  EXPECT_EQ(pub.FormatNum1(5, 2, u"abc"), u"5.00");
}

TEST(ReFormat, ReadsTypedAmountsToSixDecimals) {
  clsPub pub;
  EXPECT_EQ(pub.ReFormat(u""), 0.0);
  EXPECT_EQ(pub.ReFormat(u"   "), 0.0);
  EXPECT_EQ(pub.ReFormat(u"1,234.50"), 1234.5);
  EXPECT_EQ(pub.ReFormat(u" -1,234,567.891 "), -1234567.891);
  EXPECT_EQ(pub.ReFormat(u"0.1234567"), 0.123457);
  EXPECT_EQ(pub.ReFormat(u"0.0000005"), 0.000001);
  EXPECT_EQ(pub.ReFormat(u"0.00000049"), 0.0);
  EXPECT_EQ(pub.ReFormat(u"2.0000025"), 2.000003) << "a half in the seventh place";
  EXPECT_KAVRIN_ERROR(pub.ReFormat(u"abc"), errors::kTypeMismatch);
  // Only spaces make a text blank; a tab is read as a number and is none.
  EXPECT_KAVRIN_ERROR(pub.ReFormat(u"\t"), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub.ReFormat(u"12 34"), errors::kTypeMismatch);
}

TEST(AmountsByName, CoerceTheirArgumentsAndLeaveThemAlone) {
  clsPub pub;
  std::vector<Variant> text_amount{u"1234.5"};
  EXPECT_EQ(pub.Call(u"FormatNum", text_amount), Variant(u"1,234.50"));
  EXPECT_EQ(text_amount[0], Variant(u"1234.5"));
  std::vector<Variant> zero_shown{int32_t{0}, true};
  EXPECT_EQ(pub.Call(u"formatnum", zero_shown), Variant(u"0"));
  std::vector<Variant> omitted_decimals{1234.5678, Variant::Missing(), Variant::Missing()};
  EXPECT_EQ(pub.Call(u"FormatNum1", omitted_decimals), Variant(u"1,235"));
  std::vector<Variant> decimals_as_text{1234.5678, u"2"};
  EXPECT_EQ(pub.Call(u"FormatNum1", decimals_as_text), Variant(u"1,234.57"));
  std::vector<Variant> negative_count{5.0, int32_t{-1}};
  EXPECT_KAVRIN_ERROR(pub.Call(u"FormatNum1", negative_count), errors::kInvalidProcedureCall);
  std::vector<Variant> typed{u"1,234.50"};
  EXPECT_EQ(pub.Call(u"ReFormat", typed), Variant(1234.5));
  std::vector<Variant> not_a_number{u"abc"};
  EXPECT_KAVRIN_ERROR(pub.Call(u"FormatNum", not_a_number), errors::kTypeMismatch);
}

}  // namespace
}  // namespace kavrin
