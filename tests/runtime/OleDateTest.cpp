#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/OleDate.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

TEST(OleDate, CalendarPartsRoundTripIncludingTheZeroDateAndDaysBeforeIt) {
  const std::vector<std::pair<DateParts, double>> table = {
      {{1899, 12, 30, 0, 0, 0}, 0.0},    {{1899, 12, 29, 0, 0, 0}, -1.0},
      {{1899, 12, 29, 6, 0, 0}, -1.25},  // the time counts forward from the day
      {{1900, 12, 30, 6, 0, 0}, 365.25}, {{1970, 1, 2, 0, 0, 0}, 25570.0},
      {{100, 1, 1, 0, 0, 0}, -657434.0}, {{2000, 2, 29, 12, 0, 0}, 36585.5}};
  for (const auto& [parts, value] : table) {
    EXPECT_EQ(MakeDate(parts), Date{value}) << value;
    EXPECT_EQ(SplitDate(Date{value}), parts) << value;
  }
  const DateParts last{9999, 12, 31, 23, 59, 59};
  EXPECT_EQ(SplitDate(*MakeDate(last)), last);
  EXPECT_EQ(SplitDate(Date{-0.5}), SplitDate(Date{0.5}));
  EXPECT_EQ(SplitDate(Date{3.34}), (DateParts{1900, 1, 2, 8, 9, 36}));
  // Just before midnight rounds to the next day, also before the epoch.
  EXPECT_EQ(SplitDate(Date{1.999999999}), (DateParts{1900, 1, 1, 0, 0, 0}));
  EXPECT_EQ(SplitDate(Date{-1.999999999}), (DateParts{1899, 12, 30, 0, 0, 0}));

  for (const DateParts& impossible :
       {DateParts{1900, 2, 29}, DateParts{2001, 13, 1}, DateParts{99, 12, 31},
        DateParts{10000, 1, 1}, DateParts{2001, 4, 31}, DateParts{2001, 1, 1, 24, 0, 0},
        DateParts{2001, 1, 1, 0, 60, 0}}) {
    EXPECT_FALSE(MakeDate(impossible)) << impossible.year << "-" << impossible.month;
  }
}

TEST(OleDate, DatesAsTextOmitTheZeroDayAndMidnight) {
  EXPECT_EQ(ToString(Date{0.0}), u"00:00:00");
  EXPECT_EQ(ToString(Date{0.75}), u"18:00:00");
  EXPECT_EQ(ToString(Date{365.0}), u"1900-12-30");
  EXPECT_EQ(ToString(Date{3.34}), u"1900-01-02 08:09:36");
  EXPECT_EQ(ToString(Date{-1.25}), u"1899-12-29 06:00:00");
  EXPECT_EQ(ToString(Date{-657434.0}), u"0100-01-01");
  EXPECT_EQ(FormatIsoDateTime(Date{0.0}), u"1899-12-30T00:00:00");
  EXPECT_EQ(FormatIsoDateTime(Date{40724.0 + 4834.0 / 86400}), u"2011-06-30T01:20:34");
}

TEST(OleDate, ParsesIsoUsAndMonthNameForms) {
  // clang-format off
  const std::vector<std::pair<String, String>> table = {
      {u"2020-01-11", u"2020-01-11T00:00:00"},   {u"1970-1-13", u"1970-01-13T00:00:00"},
      {u"2013-05-14 02:04:12", u"2013-05-14T02:04:12"}, {u"2013-05-14T02:04", u"2013-05-14T02:04:00"},
      {u"2013/5/14", u"2013-05-14T00:00:00"},    {u"1/2/1970", u"1970-01-02T00:00:00"},
      {u"1-2-1970", u"1970-01-02T00:00:00"},     {u"1 2 1970", u"1970-01-02T00:00:00"},
      {u"13-1-1970", u"1970-01-13T00:00:00"},    // no 13th month: day and month swap
      {u"6/30/2011 01:20:34 PM", u"2011-06-30T13:20:34"},
      {u"2 Jan 1970", u"1970-01-02T00:00:00"},   {u"2-Jan-1970", u"1970-01-02T00:00:00"},
      {u"2/jan/1970", u"1970-01-02T00:00:00"},   {u"2 January, 1970", u"1970-01-02T00:00:00"},
      {u"December 25, 2010", u"2010-12-25T00:00:00"}, {u"1/1/100", u"0100-01-01T00:00:00"},
      {u"1/2/29", u"2029-01-02T00:00:00"},       {u"1/2/30", u"1930-01-02T00:00:00"},
      {u" 0:20 ", u"1899-12-30T00:20:00"},       {u"1 am", u"1899-12-30T01:00:00"},
      {u"12:59 AM", u"1899-12-30T00:59:00"},     {u"12:00 pm", u"1899-12-30T12:00:00"},
      {u"13:00 AM", u"1899-12-30T13:00:00"},     {u"23:59:59", u"1899-12-30T23:59:59"},
  };
  // clang-format on
  for (const auto& [text, iso] : table) {
    const auto date = ParseDate(text);
    ASSERT_TRUE(date) << ToUtf8(text);
    EXPECT_EQ(FormatIsoDateTime(*date), iso) << ToUtf8(text);
  }
  EXPECT_EQ(ToDate(String(u"2011-06-30")), *MakeDate({2011, 6, 30}));
  EXPECT_EQ(ToDate(String(u"1899-12-29 06:00:00")), Date{-1.25});
}

TEST(OleDate, RejectsNumbersWordsAndImpossibleTimes) {
  const std::vector<String> rejected = {
      u"",           u"0",          u"1",         u"36000",     u"0.0",          u"2.5",
      u"True",       u"abc",        u"24:00",     u"0:60",      u"02:04:12.017", u"02.01.1970",
      u"2/30/1970",  u"2020-13-01", u"1:2:3:4",   u"1 : 20",    u"1,5",          u"Jan",
      u"1970 2 Jan", u"2 Jan Feb",  u"-1/2/1970", u"1//2/1970", u"12345-1-1",    u"PM"};
  for (const String& text : rejected) {
    EXPECT_FALSE(ParseDate(text)) << ToUtf8(text);
    EXPECT_KAVRIN_ERROR(ToDate(text), errors::kTypeMismatch);
  }
}

TEST(OleDate, NumbersBecomeDatesWithinTheCalendarRange) {
  EXPECT_EQ(ToDate(int32_t{25570}), Date{25570});
  EXPECT_EQ(ToDate(true), Date{-1});
  EXPECT_EQ(ToDate(Variant()), Date{0});
  EXPECT_EQ(ToDate(2958465.5), Date{2958465.5});
  EXPECT_KAVRIN_ERROR(ToDate(2958466.0), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(ToDate(-657435.0), errors::kOverflow);
  EXPECT_EQ(ToDouble(Date{-1.25}), -1.25);
  EXPECT_EQ(ToLong(Date{2.5}), 2);
}

}  // namespace
}  // namespace kavrin
