#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using errors::kInvalidUseOfNull;
using errors::kOverflow;
using errors::kSubscriptOutOfRange;
using errors::kTypeMismatch;

TEST(Convert, NumbersAsTextKeepFifteenDigitsAndSwitchToENotation) {
  // clang-format off
  const std::vector<std::pair<double, String>> table = {
      {3.0, u"3"},               {999999999999999.0, u"999999999999999"},
      {1e15, u"1E+15"},          {1234567890123456.0, u"1.23456789012346E+15"},
      {1.2e15, u"1.2E+15"},      {1e16, u"1E+16"},
      {0.1 + 0.2, u"0.3"},       {1.0 / 3, u"0.333333333333333"},
      {-1234.5, u"-1234.5"},     {2.0 / 3, u"0.666666666666667"},
      {0.00001, u"0.00001"},     {5.6789e-11, u"0.000000000056789"},
      {1e300, u"1E+300"},        {5.6789e-12, u"5.6789E-12"},
      {-0.0, u"0"},              {1.23456789012345e-05, u"1.23456789012345E-05"},
      {-1e-20, u"-1E-20"},       {100.0, u"100"},
  };
  // clang-format on
  for (const auto& [value, text] : table)
    EXPECT_EQ(ToString(value), text) << value;

  EXPECT_EQ(ToString(int16_t{-32768}), u"-32768");
  EXPECT_EQ(ToString(uint8_t{255}), u"255");
  EXPECT_EQ(ToString(true), u"True");
  EXPECT_EQ(ToString(false), u"False");
  EXPECT_EQ(ToString(Variant()), u"");
  EXPECT_KAVRIN_ERROR(ToString(Variant::Nothing()), kTypeMismatch);
  EXPECT_KAVRIN_ERROR(ToString(Variant::Missing()), kTypeMismatch);
  EXPECT_KAVRIN_ERROR(ToString(Array(0, VarType::Long, 1)), kTypeMismatch);
}

TEST(Convert, TextsReadAsNumbersWithSignsGroupingAndRadixPrefixes) {
  // clang-format off
  const std::vector<std::pair<String, double>> accepted = {
      {u" 12 ", 12},     {u"\t12\r\n", 12}, {u"-5", -5},        {u"- 5", -5},
      {u"5-", -5},       {u"+5", 5},         {u"(5)", -5},       {u"1,000", 1000},
      {u"1,2,3", 123},   {u"1,,000", 1000},  {u"1000,", 1000},   {u".5", 0.5},
      {u"5.", 5},        {u"1e3", 1000},     {u"1E+03", 1000},   {u"1.5e-2", 0.015},
      {u"&H1F", 31},     {u"&hff", 255},     {u"&O17", 15},      {u"&HFFFF", 65535},
      {u"0.1", 0.1},     {u"1,234.5", 1234.5}, {u"1e-94938484", 0},
      {u"2.2250738585072014e-308", 2.2250738585072014e-308},
  };
  // clang-format on
  for (const auto& [text, value] : accepted)
    EXPECT_EQ(ParseNumber(text), value);

  const std::vector<String> rejected = {
      u"",     u" ",   u"--5",  u"+ +0", u"(5",  u"5)",   u",5",  u"1.2.3", u".",    u"1e",
      u"1 e3", u"1d3", u"0x1F", u"abc",  u"12a", u"True", u"1/2", u"$5",    u"-&H1", u"&H"};
  for (const String& text : rejected) {
    EXPECT_KAVRIN_ERROR(ParseNumber(text), kTypeMismatch);
    double untouched = 7;
    EXPECT_FALSE(TryParseNumber(text, untouched));
    EXPECT_EQ(untouched, 7);
  }
  EXPECT_KAVRIN_ERROR(ParseNumber(u"1e400"), kOverflow);
  EXPECT_KAVRIN_ERROR(ParseNumber(u"&H100000000"), kOverflow);
  EXPECT_KAVRIN_ERROR(ToDouble(String(u"2x3")), kTypeMismatch);
  EXPECT_EQ(ToDouble(String(u"&HFFFF")), 65535);
}

TEST(Convert, NullFailsEveryConversionWith94) {
  const Variant null = Variant::Null();
  EXPECT_KAVRIN_ERROR(ToString(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToDouble(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToInteger(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToLong(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToByte(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToBoolean(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ToDate(null), kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(ConvertTo(null, VarType::String), kInvalidUseOfNull);
  // Conditions and Not let Null through; the Variant target keeps it.
  EXPECT_FALSE(IsTrueCondition(null));
  EXPECT_TRUE(Not(null).IsNull());
  EXPECT_TRUE(ConvertTo(null, VarType::Variant).IsNull());
}

TEST(Convert, WholeNumbersRoundHalvesToEvenAndOverflowWith6) {
  // clang-format off
  const std::vector<std::pair<Variant, int16_t>> integers = {
      {0.5, 0},      {1.5, 2},        {2.5, 2},     {3.5, 4},     {-2.5, -2},   {2.51, 3},
      {-32768.5, -32768},             {u"2.5", 2},  {u"-0.5", 0}, {u"0.6", 1},  {u"3.5", 4},
      {u"2.50000000000000001", 3},    {u"3.49999999999999999", 3},
      {u"&HFFFF", -1}, {u"&H8000", -32768},         {Variant(), 0}, {true, -1},
      {Date{1.5}, 2},  {uint8_t{200}, 200},
  };
  // clang-format on
  for (const auto& [value, expected] : integers) {
    EXPECT_EQ(ToInteger(value), expected) << ToUtf8(ToString(value));
  }
  for (const Variant& big : {Variant(32767.5), Variant(-32768.6), Variant(u"40000"),
                             Variant(u"&H10000"), Variant(int32_t{32768})}) {
    EXPECT_KAVRIN_ERROR(ToInteger(big), kOverflow);
  }
  for (const Variant& text : {Variant(u""), Variant(u" "), Variant(u"x")}) {
    EXPECT_KAVRIN_ERROR(ToInteger(text), kTypeMismatch);
  }

  EXPECT_EQ(ToLong(String(u"&HFFFF")), 65535);
  EXPECT_EQ(ToLong(String(u"&HFFFFFFFF")), -1);
  EXPECT_EQ(ToLong(-2147483648.0), INT32_MIN);
  EXPECT_KAVRIN_ERROR(ToLong(2147483647.5), kOverflow);
  EXPECT_KAVRIN_ERROR(ToLong(3e9), kOverflow);

  EXPECT_EQ(ToByte(true), 255);
  EXPECT_EQ(ToByte(-0.4), 0);
  EXPECT_KAVRIN_ERROR(ToByte(int16_t{-1}), kOverflow);
  EXPECT_KAVRIN_ERROR(ToByte(255.5), kOverflow);
}

TEST(Convert, BooleansFromWordsNumbersAndTexts) {
  for (const Variant& yes :
       {Variant(u"True"), Variant(u"true"), Variant(u"TRUE"), Variant(u"#TRUE#"), Variant(u"-1"),
        Variant(u"+1"), Variant(u"0.1"), Variant(u"1,5"), Variant(0.001), Variant(int16_t{-1}),
        Variant(Date{1})}) {
    EXPECT_TRUE(ToBoolean(yes)) << ToUtf8(ToString(yes));
  }
  for (const Variant& no :
       {Variant(u"False"), Variant(u"false"), Variant(u"#FALSE#"), Variant(u"0"), Variant(u" 0 "),
        Variant(u"0.0"), Variant(-0.0), Variant()}) {
    EXPECT_FALSE(ToBoolean(no)) << ToUtf8(ToString(no));
  }
  for (const Variant& bad : {Variant(u"#True#"), Variant(u" True"), Variant(u"Yes"), Variant(u"On"),
                             Variant(u""), Variant::Nothing()}) {
    EXPECT_KAVRIN_ERROR(ToBoolean(bad), kTypeMismatch);
  }
  EXPECT_EQ(ToDouble(true), -1);
  EXPECT_FALSE(IsTrueCondition(Variant()));
  EXPECT_TRUE(IsTrueCondition(u"1"));
  EXPECT_KAVRIN_ERROR(IsTrueCondition(u"abc"), kTypeMismatch);
}

TEST(Convert, NotIsLogicalOnBooleansAndBitwiseOtherwise) {
  // clang-format off
  const std::vector<std::pair<Variant, Variant>> table = {
      {true, false},               {false, true},              {Variant(), int16_t{-1}},
      {int16_t{0}, int16_t{-1}},   {int16_t{1}, int16_t{-2}},  {int16_t{-1}, int16_t{0}},
      {int32_t{7}, int32_t{-8}},   {uint8_t{1}, uint8_t{254}}, {Date{1.0}, int32_t{-2}},
      {1.5, int32_t{-3}},          {2.5, int32_t{-3}},         {0.5, int32_t{-1}},
      {u"1", int32_t{-2}},         {u"0", int32_t{-1}},        {u"1.5", int32_t{-3}},
      {u"True", false},            {u"#TRUE#", false},         {u"#FALSE#", true},
  };
  // clang-format on
  for (const auto& [operand, result] : table) {
    EXPECT_EQ(Not(operand), result) << ToUtf8(ToString(operand));
  }
  EXPECT_KAVRIN_ERROR(Not(u"abc"), kTypeMismatch);
  EXPECT_KAVRIN_ERROR(Not(u""), kTypeMismatch);
  EXPECT_KAVRIN_ERROR(Not(3e9), kOverflow);
  EXPECT_KAVRIN_ERROR(Not(u"3E9"), kOverflow);
}

TEST(Convert, ValReadsTheLeadingNumberAndNeverFails) {
  // clang-format off
  const std::vector<std::pair<String, double>> table = {
      {u"2x3", 2},        {u" 12 34", 1234},   {u" 2 45 7", 2457}, {u" 1615 198th Street", 1615198},
      {u"", 0},           {u"x", 0},           {u"24 and 57", 24}, {u"1,234", 1},
      {u"$12", 0},        {u".5", 0.5},        {u"5.", 5},         {u"1.2.3", 1.2},
      {u"1e3", 1000},     {u"1.5E-2", 0.015},  {u"2d2", 200},      {u"1e", 1},
      {u"-  12", -12},    {u"12-3", 12},       {u"\t\n-1\r2", -12}, {u"+-5", 0},
      {u"&H1F", 31},      {u"&O777", 511},     {u"0x1F", 0},       {u"&HFFFF", -1},
      {u"&H8000", -32768}, {u"&H10000", 65536}, {u"&HFFFFFFFF", -1}, {u"&HZ", 0},
      {u"True", 0},       {u"50%", 50},
  };
  // clang-format on
  for (const auto& [text, value] : table)
    EXPECT_EQ(Val(text), value) << ToUtf8(text);
}

TEST(Convert, ArrayStoreCoercesToTheElementTypeOrLeavesTheElement) {
  Array flags(1, VarType::Boolean, 2);
  flags.Store(1, u"-1");
  EXPECT_EQ(flags.At(1), Variant(true));
  EXPECT_KAVRIN_ERROR(flags.Store(1, Variant::Null()), kInvalidUseOfNull);
  EXPECT_EQ(flags.At(1), Variant(true));
  EXPECT_KAVRIN_ERROR(flags.Store(3, true), kSubscriptOutOfRange);
  EXPECT_KAVRIN_ERROR(flags.Store(0, true), kSubscriptOutOfRange);

  Array counts(0, VarType::Integer, 1);
  counts.Store(0, u"2.5");
  EXPECT_EQ(counts.At(0), Variant(int16_t{2}));
  EXPECT_KAVRIN_ERROR(counts.Store(0, 40000.0), kOverflow);
  EXPECT_KAVRIN_ERROR(counts.Store(0, u"abc"), kTypeMismatch);
  EXPECT_EQ(counts.At(0), Variant(int16_t{2}));

  Array texts(0, VarType::String, 1);
  texts.Store(0, 0.00001);
  EXPECT_EQ(texts.At(0), Variant(u"0.00001"));

  Array objects(0, VarType::Object, 1);
  EXPECT_KAVRIN_ERROR(objects.Store(0, u"x"), kTypeMismatch);
  objects.Store(0, Variant::Nothing());

  Array any(0, VarType::Variant, 1);
  any.Store(0, Variant::Null());
  EXPECT_TRUE(any.At(0).IsNull());
}

}  // namespace
}  // namespace kavrin
