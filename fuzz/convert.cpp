// The platform's conversions on any text and any double: reading numbers
// (ParseNumber, Val), the typed conversions, Not, and writing numbers back.
#include "FuzzSupport.h"
#include "kavrin/OleDate.h"

using namespace kavrin;

namespace {

// A conversion of a text or a number fails only with 6 (overflow) or 13
// (type mismatch).
template <typename F>
auto Converted(F&& convert) {
  return fuzz::Try(convert, {errors::kOverflow, errors::kTypeMismatch});
}

// Every typed conversion of a value: each fails only with 6 or 13.
void ConvertToEveryType(const Variant& v) {
  for (VarType type : {VarType::Integer, VarType::Long, VarType::Byte, VarType::Double,
                       VarType::Boolean, VarType::Date, VarType::String, VarType::Variant}) {
    Converted([&] { return ConvertTo(v, type); });
  }
}

// A finite number written and read back keeps its 15 significant digits.
void CheckWrittenNumberReadsBack(double value) {
  const auto text = Converted([&] { return DoubleToString(value); });
  FUZZ_CHECK(text.has_value() == std::isfinite(value), "infinity written");
  if (!text) return;
  const auto read = Converted([&] { return ParseNumber(*text); });
  // The largest doubles write as 15 digits rounded up past the largest
  // double, which the platform reads as an overflow.
  FUZZ_CHECK(read || std::fabs(value) > 1.79769313486231e308, ToUtf8(*text));
  if (!read) return;
  FUZZ_CHECK(DoubleToString(*read) == *text, ToUtf8(*text));
  FUZZ_CHECK(std::fabs(*read - value) <= std::fabs(value) * 1e-14, ToUtf8(*text));
  FUZZ_CHECK(Val(*text) == *read && ToString(Variant(value)) == *text, ToUtf8(*text));
}

void CheckText(const String& text) {
  const Variant v(text);
  FUZZ_CHECK(!std::isnan(Val(text)), ToUtf8(text));  // Val never fails
  double tried = 0;
  const bool readable = TryParseNumber(text, tried);
  const auto parsed = Converted([&] { return ParseNumber(text); });
  FUZZ_CHECK(readable == parsed.has_value(), ToUtf8(text));
  if (parsed) {
    FUZZ_CHECK(*parsed == tried && std::isfinite(*parsed), ToUtf8(text));
    CheckWrittenNumberReadsBack(*parsed);
    FUZZ_CHECK(Converted([&] { return ToDouble(v); }) == parsed, ToUtf8(text));
    FUZZ_CHECK(Converted([&] { return ToBoolean(v); }).has_value(), ToUtf8(text));
  }

  // The whole-number conversions agree with each other where their ranges
  // meet; &H and &O texts keep their bits instead, so each type reads them
  // its own way.
  const auto as_long = Converted([&] { return ToLong(v); });
  const auto as_integer = Converted([&] { return ToInteger(v); });
  const auto as_byte = Converted([&] { return ToByte(v); });
  const size_t first = text.find_first_not_of(u" \t\n\v\f\r");
  if (first == String::npos || text[first] != u'&') {
    if (as_integer) FUZZ_CHECK(as_long == *as_integer, ToUtf8(text));
    if (as_long && *as_long >= INT16_MIN && *as_long <= INT16_MAX) {
      FUZZ_CHECK(as_integer == *as_long, ToUtf8(text));
    }
    if (as_byte) FUZZ_CHECK(as_long == *as_byte, ToUtf8(text));
  }

  FUZZ_CHECK(Converted([&] { return ToDate(v); }) == ParseDate(text), ToUtf8(text));
  const auto inverted = Converted([&] { return Not(v); });
  if (as_long) FUZZ_CHECK(inverted == Variant(~*as_long), ToUtf8(text));
  ConvertToEveryType(v);
  FUZZ_CHECK(ToString(v) == text, "a text writes as itself");
}

// Numbers of every type made from the same bits convert by the same rules.
void CheckNumber(double value) {
  CheckWrittenNumberReadsBack(value);
  for (const Variant& v : {Variant(value), Variant(Date{value})}) {
    const auto as_long = Converted([&] { return ToLong(v); });
    if (as_long) FUZZ_CHECK(std::fabs(static_cast<double>(*as_long) - value) <= 0.5, "rounding");
    ConvertToEveryType(v);
    Converted([&] { return Not(v); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckText(fuzz::TextFromBytes(data, size));
  if (size >= 8) CheckNumber(fuzz::ByteReader(data, size).Double());
  return 0;
}
