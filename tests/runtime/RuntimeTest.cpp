// The platform's conversions: values as text, texts as numbers and dates,
// whole numbers, Booleans, Not, Val, numbers shown by pattern, typed array
// elements and UTF-8.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/Format.h"
#include "kavrin/OleDate.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using errors::kInvalidUseOfNull, errors::kOverflow, errors::kSubscriptOutOfRange,
    errors::kTypeMismatch;

// The text of what `answer` gives, or "error N" when it fails with N.
template <typename F>
std::string Outcome(F&& answer) {
  try {
    return ToUtf8(ToString(Variant(answer())));
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
}

// Expects `convert` to give, for each value, the outcome beside it.
template <typename Conversion>
void Expect(Conversion convert, const std::vector<std::pair<Variant, std::string>>& table) {
  for (size_t i = 0; i < table.size(); ++i)
    EXPECT_EQ(Outcome([&] { return convert(table[i].first); }), table[i].second) << "row " << i;
}

const Variant kNull = Variant::Null();

TEST(Convert, ValuesAsTextKeepFifteenDigitsAndSwitchToENotation) {
  // clang-format off
  Expect(ToString, {
      {3.0, "3"}, {100.0, "100"}, {999999999999999.0, "999999999999999"}, {1e15, "1E+15"},
      {1.2e15, "1.2E+15"}, {1234567890123456.0, "1.23456789012346E+15"}, {1e300, "1E+300"},
      {0.1 + 0.2, "0.3"}, {2.0 / 3, "0.666666666666667"}, {-1234.5, "-1234.5"}, {-0.0, "0"},
      {0.00001, "0.00001"}, {5.6789e-11, "0.000000000056789"}, {5.6789e-12, "5.6789E-12"},
      {1.23456789012345e-05, "1.23456789012345E-05"}, {-1e-20, "-1E-20"}, {uint8_t{255}, "255"},
      {int16_t{-32768}, "-32768"}, {true, "True"}, {false, "False"}, {Variant(), ""},
      {Variant::Nothing(), "error 13"}, {Variant::Missing(), "error 13"}, {kNull, "error 94"},
      {Array(0, VarType::Long, 1), "error 13"},
      // Dates omit the zero day and midnight.
      {Date{0.0}, "00:00:00"}, {Date{0.75}, "18:00:00"}, {Date{365.0}, "1900-12-30"},
      {Date{3.34}, "1900-01-02 08:09:36"}, {Date{-657434.0}, "0100-01-01"},
  });
  // clang-format on
  EXPECT_EQ(FormatIsoDateTime(Date{-1.25}), u"1899-12-29T06:00:00");
}

TEST(Convert, TextsReadAsNumbersWithSignsGroupingAndRadixPrefixes) {
  // clang-format off
  const std::vector<std::pair<String, double>> accepted = {
      {u" 12 ", 12}, {u"\t12\r\n", 12}, {u"-5", -5}, {u"- 5", -5}, {u"5-", -5}, {u"+5", 5},
      {u"(5)", -5}, {u"1,000", 1000}, {u"1,2,3", 123}, {u"1,,000", 1000}, {u"1000,", 1000},
      {u".5", 0.5}, {u"5.", 5}, {u"1e3", 1000}, {u"1E+03", 1000}, {u"1.5e-2", 0.015},
      {u"&H1F", 31}, {u"&hff", 255}, {u"&O17", 15}, {u"&HFFFF", 65535}, {u"1,234.5", 1234.5},
      {u"0.1", 0.1}, {u"1e-94938484", 0}, {u"2.2250738585072014e-308", 2.2250738585072014e-308},
      // The currency sign, once, before or after the number and its sign.
      {u"$1,234.5", 1234.5}, {u"5$", 5}, {u"$-5", -5}, {u"-$5", -5}, {u"($ 5)", -5},
  };
  const std::vector<String> rejected = {
      u"",     u" ",   u"--5",  u"+ +0", u"(5",  u"5)",   u",5",  u"1.2.3", u".",    u"1e",
      u"1 e3", u"1d3", u"0x1F", u"abc",  u"12a", u"True", u"1/2", u"$$5",   u"-&H1", u"&H",
      u"$",    u"$5$", u"$&H1F", u"5 €"};
  // clang-format on
  for (const auto& [text, value] : accepted)
    EXPECT_EQ(ParseNumber(text), value) << ToUtf8(text);
  for (const String& text : rejected) {
    EXPECT_KAVRIN_ERROR(ParseNumber(text), kTypeMismatch);
    double untouched = 7;
    EXPECT_FALSE(TryParseNumber(text, untouched));
    EXPECT_EQ(untouched, 7);
  }
  Expect(ToDouble, {{u"1e400", "error 6"},
                    {u"&H100000000", "error 6"},
                    {u"2x3", "error 13"},
                    {kNull, "error 94"},
                    {true, "-1"}});
}

TEST(Convert, WholeNumbersRoundHalvesToEvenAndOverflowWith6) {
  // clang-format off
  Expect(ToInteger, {
      {0.5, "0"}, {1.5, "2"}, {2.5, "2"}, {-2.5, "-2"}, {2.51, "3"}, {-32768.5, "-32768"},
      {u"2.5", "2"}, {u"-0.5", "0"}, {u"0.6", "1"}, {u"3.5", "4"}, {true, "-1"}, {Variant(), "0"},
      // Texts round by their digits, not by the nearest double.
      {u"2.50000000000000001", "3"}, {u"3.49999999999999999", "3"},
      {u"&HFFFF", "-1"}, {u"&H8000", "-32768"}, {Date{2.5}, "2"}, {uint8_t{200}, "200"},
      {32767.5, "error 6"}, {-32768.6, "error 6"}, {u"40000", "error 6"}, {u"&H10000", "error 6"},
      {int32_t{32768}, "error 6"}, {u"", "error 13"}, {u" ", "error 13"}, {u"x", "error 13"},
      {kNull, "error 94"},
  });
  Expect(ToLong, {{u"&HFFFF", "65535"}, {u"&HFFFFFFFF", "-1"}, {-2147483648.0, "-2147483648"},
                  {2147483647.5, "error 6"}});
  Expect(ToByte, {{true, "255"}, {-0.4, "0"}, {int16_t{-1}, "error 6"}, {255.5, "error 6"}});
  // clang-format on
}

TEST(Convert, BooleansFromWordsNumbersAndTextsAndConditionsLetNullThrough) {
  // clang-format off
  Expect(ToBoolean, {
      {u"True", "True"}, {u"true", "True"}, {u"TRUE", "True"}, {u"#TRUE#", "True"}, {u"-1", "True"},
      {u"+1", "True"}, {u"0.1", "True"}, {u"1,5", "True"}, {0.001, "True"}, {int16_t{-1}, "True"},
      {Date{1}, "True"}, {u"False", "False"}, {u"false", "False"}, {u"#FALSE#", "False"},
      {u"0", "False"}, {u" 0 ", "False"}, {u"0.0", "False"}, {-0.0, "False"}, {Variant(), "False"},
      {u"#True#", "error 13"}, {u" True", "error 13"}, {u"Yes", "error 13"}, {u"On", "error 13"},
      {u"", "error 13"}, {Variant::Nothing(), "error 13"}, {kNull, "error 94"},
  });
  // clang-format on
  EXPECT_FALSE(IsTrueCondition(kNull));
}

TEST(Convert, NotIsLogicalOnBooleansAndBitwiseOtherwise) {
  // clang-format off
  const std::vector<std::pair<Variant, Variant>> table = {
      {true, false}, {false, true}, {Variant(), int16_t{-1}}, {int16_t{0}, int16_t{-1}},
      {int16_t{1}, int16_t{-2}}, {int32_t{7}, int32_t{-8}}, {uint8_t{1}, uint8_t{254}},
      {Date{1.0}, int32_t{-2}}, {1.5, int32_t{-3}}, {2.5, int32_t{-3}}, {0.5, int32_t{-1}},
      {u"1", int32_t{-2}}, {u"1.5", int32_t{-3}}, {u"True", false}, {u"#FALSE#", true},
  };
  // clang-format on
  for (const auto& [operand, result] : table)
    EXPECT_EQ(Not(operand), result) << ToUtf8(ToString(operand));
  EXPECT_TRUE(Not(kNull).IsNull());
  Expect(Not, {{u"abc", "error 13"}, {u"", "error 13"}, {3e9, "error 6"}, {u"3E9", "error 6"}});
}

TEST(Convert, ValReadsTheLeadingNumberAndNeverFails) {
  // clang-format off
  const std::vector<std::pair<String, double>> table = {
      {u"2x3", 2}, {u" 2 45 7", 2457}, {u" 1615 198th Street", 1615198}, {u"", 0}, {u"$12", 0},
      {u"24 and 57", 24}, {u"1,234", 1}, {u".5", 0.5}, {u"1.2.3", 1.2}, {u"1.5E-2", 0.015},
      {u"2d2", 200}, {u"1e", 1}, {u"-  12", -12}, {u"12-3", 12}, {u"\t\n-1\r2", -12}, {u"+-5", 0},
      {u"&O777", 511}, {u"0x1F", 0}, {u"&HFFFF", -1}, {u"&H8000", -32768}, {u"&H10000", 65536},
      {u"&HFFFFFFFF", -1}, {u"&HZ", 0}, {u"True", 0}, {u"50%", 50},
  };
  // clang-format on
  for (const auto& [text, value] : table)
    EXPECT_EQ(Val(text), value) << ToUtf8(text);
}

TEST(Convert, ArrayStoreCoercesToTheElementTypeOrLeavesTheElement) {
  Array flags(1, VarType::Boolean, 2);
  flags.Store(1, u"-1");
  EXPECT_KAVRIN_ERROR(flags.Store(1, kNull), kInvalidUseOfNull);
  EXPECT_EQ(flags.At(1), Variant(true));
  EXPECT_KAVRIN_ERROR(flags.Store(3, true), kSubscriptOutOfRange);
  EXPECT_KAVRIN_ERROR(flags.Store(0, true), kSubscriptOutOfRange);
  Array counts(0, VarType::Integer, 1);
  counts.Store(0, u"2.5");
  EXPECT_KAVRIN_ERROR(counts.Store(0, 40000.0), kOverflow);
  EXPECT_KAVRIN_ERROR(counts.Store(0, u"abc"), kTypeMismatch);
  EXPECT_EQ(counts.At(0), Variant(int16_t{2}));
  Array objects(0, VarType::Object, 1);
  EXPECT_KAVRIN_ERROR(objects.Store(0, u"x"), kTypeMismatch);
  objects.Store(0, Variant::Nothing());
  Array any(0, VarType::Variant, 1);
  any.Store(0, kNull);
  EXPECT_TRUE(any.At(0).IsNull());
}

TEST(FormatNumber, GroupsRoundsHalvesAwayFromZeroAndKeepsTheSign) {
  // clang-format off
  const std::vector<std::tuple<Variant, const char16_t*, std::string>> table = {
      // The whole integer part is grouped by three; only 15 digits exist.
      {1234567.891, u"##,##0", "1,234,568"}, {1234567.891, u"##,##0.000", "1,234,567.891"},
      {100000.0, u"#,###,###,###", "100,000"}, {1234567.0, u"0", "1234567"},
      {1e20, u"##,##0.00", "100,000,000,000,000,000,000.00"},
      {123456789012345678.0, u"##,##0", "123,456,789,012,346,000"},
      // Halves judged on the 15-digit value (each is just below as a double),
      // away from zero; a carry runs into a new group.
      {1.005, u"##,##0.00", "1.01"}, {2.675, u"0.00", "2.68"}, {-2.5, u"##,##0", "-3"},
      {999.995, u"##,##0.00", "1,000.00"}, {9.9999999, u"#0.000000", "10.000000"},
      {99999999999999.99, u"##,##0.00", "100,000,000,000,000.00"}, {1e-300, u"0.00", "0.00"},
      {-0.0, u"0.00", "0.00"}, {0.0, u"##,##0.00", "0.00"},
      // Optional placeholders show significant digits only.
      {0.0049, u"#.##", "."}, {0.0995, u"#.##", ".1"}, {-0.1, u".#", "-.1"}, {1.5, u"0.0#", "1.5"},
      {1.256, u"0.0#", "1.26"}, {0.0, u"#", ""}, {5.0, u"000", "005"},
      // Two-digit periods, from any type; Empty is 0.
      {int16_t{3}, u"00", "03"}, {int32_t{123}, u"00", "123"}, {1.5, u"00", "02"},
      {Variant(), u"00", "00"}, {true, u"0", "-1"}, {Date{45000.25}, u"0.00", "45000.25"},
      // Texts are shown as their number, or as they are; Null shows nothing.
      {u" 3 ", u"00", "03"}, {u"1,234.5", u"##,##0.00", "1,234.50"}, {u"abc", u"00", "abc"},
      {u"-2.345", u"0.00", "-2.35"}, {u"12a", u"0.00", "12a"}, {Variant::Null(), u"0.00", ""},
      {0.1 + 0.2, u"", "0.3"},  // the empty pattern shows the plain text
      {u"1e999", u"0", "error 6"}, {Variant::Missing(), u"0", "error 13"},
      {Variant::Nothing(), u"0", "error 13"}, {1.0, u"0,", "error 5"}, {1.0, u",0", "error 5"},
      {1.0, u"0.0.0", "error 5"}, {1.0, u"0.0,0", "error 5"}, {1.0, u"$0", "error 5"},
      {1.0, u"0;(0)", "error 5"}, {1.0, u"0%", "error 5"},
  };
  // clang-format on
  for (const auto& [value, pattern, shown] : table)
    EXPECT_EQ(Outcome([v = value, p = pattern] { return FormatNumber(v, p); }), shown)
        << ToUtf8(pattern);
}

TEST(OleDate, CalendarPartsRoundTripIncludingTheZeroDateAndDaysBeforeIt) {
  const std::vector<std::pair<DateParts, double>> table = {
      {{1899, 12, 30, 0, 0, 0}, 0.0},    {{1899, 12, 29, 0, 0, 0}, -1.0},
      {{1899, 12, 29, 6, 0, 0}, -1.25},  // the time counts forward from the day
      {{1900, 12, 30, 6, 0, 0}, 365.25}, {{100, 1, 1, 0, 0, 0}, -657434.0},
      {{2000, 2, 29, 12, 0, 0}, 36585.5}};
  for (const auto& [parts, value] : table) {
    EXPECT_EQ(MakeDate(parts), Date{value}) << value;
    EXPECT_EQ(SplitDate(Date{value}), parts) << value;
  }
  EXPECT_EQ(SplitDate(*MakeDate({9999, 12, 31, 23, 59, 59})),
            (DateParts{9999, 12, 31, 23, 59, 59}));
  EXPECT_EQ(SplitDate(Date{-0.5}), SplitDate(Date{0.5}));
  // Just before midnight rounds to the next day, also before the epoch.
  EXPECT_EQ(SplitDate(Date{1.999999999}), (DateParts{1900, 1, 1, 0, 0, 0}));
  EXPECT_EQ(SplitDate(Date{-1.999999999}), (DateParts{1899, 12, 30, 0, 0, 0}));
  for (const DateParts& impossible :
       {DateParts{1900, 2, 29}, DateParts{2001, 13, 1}, DateParts{99, 12, 31},
        DateParts{10000, 1, 1}, DateParts{2001, 4, 31}, DateParts{2001, 1, 1, 24, 0, 0},
        DateParts{2001, 1, 1, 0, 60, 0}})
    EXPECT_FALSE(MakeDate(impossible)) << impossible.year << "-" << impossible.month;
}

TEST(OleDate, TextsAndNumbersBecomeDatesWithinTheCalendarRange) {
  // clang-format off
  Expect(ToDate, {
      {u"2020-01-11", "2020-01-11"}, {u"1970-1-13", "1970-01-13"}, {u"2013/5/14", "2013-05-14"},
      {u"2013-05-14 02:04:12", "2013-05-14 02:04:12"}, {u"2013-05-14T02:04", "2013-05-14 02:04:00"},
      {u"1/2/1970", "1970-01-02"}, {u"1-2-1970", "1970-01-02"}, {u"1 2 1970", "1970-01-02"},
      {u"13-1-1970", "1970-01-13"},  // no 13th month: day and month swap
      {u"6/30/2011 01:20:34 PM", "2011-06-30 13:20:34"}, {u"2 Jan 1970", "1970-01-02"},
      {u"2/jan/1970", "1970-01-02"}, {u"2 January, 1970", "1970-01-02"},
      {u"December 25, 2010", "2010-12-25"}, {u"1/1/100", "0100-01-01"}, {u"1/2/29", "2029-01-02"},
      {u"1/2/30", "1930-01-02"}, {u" 0:20 ", "00:20:00"}, {u"1 am", "01:00:00"},
      {u"12:59 AM", "00:59:00"}, {u"12:00 pm", "12:00:00"}, {u"13:00 AM", "13:00:00"},
      {u"1899-12-29 06:00:00", "1899-12-29 06:00:00"}, {true, "1899-12-29"}, {kNull, "error 94"},
      {Variant(), "00:00:00"}, {2958465.5, "9999-12-31 12:00:00"}, {2958466.0, "error 6"},
      {-657435.0, "error 6"},
  });
  // clang-format on
  for (const char16_t* text :
       {u"",           u"0",          u"1",         u"36000",     u"0.0",          u"2.5",
        u"True",       u"abc",        u"24:00",     u"0:60",      u"02:04:12.017", u"02.01.1970",
        u"2/30/1970",  u"2020-13-01", u"1:2:3:4",   u"1 : 20",    u"1,5",          u"Jan",
        u"1970 2 Jan", u"2 Jan Feb",  u"-1/2/1970", u"1//2/1970", u"12345-1-1",    u"PM"}) {
    EXPECT_FALSE(ParseDate(text)) << ToUtf8(text);
    EXPECT_KAVRIN_ERROR(ToDate(String(text)), kTypeMismatch);
  }
}

TEST(String, Utf8RoundTripsAndMalformedBytesBecomeReplacementCharacters) {
  const std::string utf8 = "该存货没有找到！ \xF0\x9F\x98\x80 abc";
  EXPECT_EQ(FromUtf8(utf8).size(), 8u + 1 + 2 + 4);  // the emoji is a surrogate pair
  EXPECT_EQ(ToUtf8(FromUtf8(utf8)), utf8);
  EXPECT_EQ(FromUtf8("a\xFF"
                     "b"),
            u"a\uFFFDb");
  EXPECT_EQ(FromUtf8("\xE4\xB8"), u"\uFFFD");                      // truncated sequence
  EXPECT_EQ(FromUtf8("\xC0\xAF"), u"\uFFFD");                      // overlong slash
  EXPECT_EQ(ToUtf8(String(1, char16_t(0xD800))), "\xEF\xBF\xBD");  // lone surrogate
  EXPECT_EQ(Trim(u" \u3000x\t "), u"\u3000x\t") << "only spaces are trimmed";
}

}  // namespace
}  // namespace kavrin

namespace kavrin {
namespace {

TEST(Error, EachNumberHasItsSourcesAndTheirStandardDescription) {
  const String no_record =
      u"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
      u"requires a current record.";
  const String no_connection =
      u"The connection cannot be used to perform this operation. It is either closed or invalid "
      u"in this context.";
  const String sqlite = u"Kavrin.SQLite", odbc = u"Kavrin.ODBC";
  // Number, source ("" for the class of the object called), description ("" for
  // the engine's own message, "{}" where the raiser's detail goes).
  const std::vector<std::tuple<int32_t, String, String>> expected = {
      {5, u"Kavrin", u"Invalid procedure call or argument"},
      {6, u"Kavrin", u"Overflow"},
      {9, u"Kavrin", u"Subscript out of range"},
      {11, u"Kavrin", u"Division by zero"},
      {13, u"Kavrin", u"Type mismatch"},
      {91, u"Kavrin", u"Object variable or With block variable not set"},
      {94, u"Kavrin", u"Invalid use of Null"},
      {424, u"Kavrin", u"Object required"},
      {429, u"Kavrin", u"ActiveX component can't create object"},
      {438, u"", u"Object doesn't support this property or method"},
      {449, u"Kavrin", u"Argument not optional"},
      {450, u"Kavrin", u"Wrong number of arguments or invalid property assignment"},
      {3070, u"KitRecordset",
       u"The kit does not recognize '{}' as a valid field name or expression."},
      {3077, u"KitRecordset", u"Syntax error in criteria expression: {}"},
      {3464, u"KitRecordset", u"Data type mismatch in criteria expression."},
      {3021, u"ADODB.Recordset", no_record},
      {3021, u"ADODB.Field", no_record},
      {3265, u"ADODB.Fields",
       u"Item cannot be found in the collection corresponding to the requested name or ordinal."},
      {3265, u"DAO.TableDefs", u"Item not found in this collection."},
      {3265, u"DAO.QueryDefs", u"Item not found in this collection."},
      {3420, u"DAO.Database", u"Object invalid or no longer set."},
      {3704, u"ADODB.Recordset", u"Operation is not allowed when the object is closed."},
      {3705, u"ADODB.Recordset", u"Operation is not allowed when the object is open."},
      {3709, u"ADODB.Recordset", no_connection},
      {3709, u"KitDatabase", no_connection},
      {-2147217900, sqlite, u""},
      {-2147217900, odbc, u""},
      {-2147217865, sqlite, u""},
      {-2147217865, odbc, u""},
      {-2147217871, sqlite, u""},
      {-2147217871, odbc, u""},
      {-2147467259, sqlite, u""},
      {-2147467259, odbc, u""},
      {-2147467259, u"Kavrin", u""},
  };
  std::vector<std::tuple<int32_t, String, String>> catalogue;
  for (const ErrorEntry& e : ErrorCatalogue())
    catalogue.emplace_back(e.number, String(e.source), String(e.description));
  EXPECT_EQ(catalogue, expected);

  // Raised, an error takes the description its source gives the number.
  const Error dao = Error::Standard(3265, sources::kDaoQueryDefs);
  EXPECT_EQ(std::tuple(dao.source(), dao.description()),
            std::tuple(String(u"DAO.QueryDefs"), String(u"Item not found in this collection.")));
  EXPECT_EQ(Error::Standard(3077, sources::kKitRecordset, u"a=").description(),
            u"Syntax error in criteria expression: a=");
  EXPECT_EQ(Error::Standard(438, u"ComboBox").description(),
            u"Object doesn't support this property or method");
  EXPECT_EQ(Error::Runtime(424).source(), u"Kavrin");
  EXPECT_STREQ(Error::Runtime(6).what(), "Overflow (6)");
  // Out of context, a number has ADO's text; one without a text of its own
  // has the generic one.
  EXPECT_EQ(StandardDescription(3265), std::get<2>(expected[17]));
  for (int32_t number : {0, 1234, -2147217900})
    EXPECT_EQ(StandardDescription(number), u"Application-defined or object-defined error");
}

}  // namespace
}  // namespace kavrin
