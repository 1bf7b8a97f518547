// The platform's conversions on any text and any double: reading numbers
// (ParseNumber, Val), the typed conversions, Not, and writing numbers back.
#include <cmath>
#include <optional>

#include "FuzzSupport.h"
#include "kavrin/Convert.h"
#include "kavrin/OleDate.h"

using namespace kavrin;
using kavrin::fuzz::CheckKnownError;

namespace {

// Runs a conversion that may fail only with the numbers a conversion of a
// text or a number fails with: 6 (overflow) and 13 (type mismatch).
template <typename F>
auto Converted(F&& convert) -> std::optional<decltype(convert())> {
  try {
    return convert();
  } catch (const Error& e) {
    CheckKnownError(e);
    FUZZ_CHECK(e.number() == errors::kOverflow || e.number() == errors::kTypeMismatch, e.what());
    return std::nullopt;
  }
}

bool SameDouble(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

// A finite number written and read back keeps its 15 significant digits.
void CheckWrittenNumberReadsBack(double value) {
  if (!std::isfinite(value)) {
    FUZZ_CHECK(!Converted([&] { return DoubleToString(value); }), "infinity written");
    return;
  }
  const String text = DoubleToString(value);
  const auto parsed = Converted([&] { return ParseNumber(text); });
  if (!parsed) {
    // The largest doubles write as 15 digits rounded up past the largest
    // double, which the platform reads as an overflow.
    FUZZ_CHECK(std::fabs(value) > 1.79769313486231e308, ToUtf8(text));
    return;
  }
  const double read = *parsed;
  FUZZ_CHECK(DoubleToString(read) == text, ToUtf8(text));
  FUZZ_CHECK(std::fabs(read - value) <= std::fabs(value) * 1e-14, ToUtf8(text));
  FUZZ_CHECK(Val(text) == read, ToUtf8(text));
  FUZZ_CHECK(ToString(Variant(value)) == text, ToUtf8(text));
}

void CheckText(const String& text) {
  const Variant v(text);
  const double leading = Val(text);  // never fails
  FUZZ_CHECK(!std::isnan(leading), ToUtf8(text));

  double tried = 0;
  const bool readable = TryParseNumber(text, tried);
  const auto parsed = Converted([&] { return ParseNumber(text); });
  FUZZ_CHECK(readable == parsed.has_value(), ToUtf8(text));
  if (parsed) {
    FUZZ_CHECK(SameDouble(*parsed, tried), ToUtf8(text));
    FUZZ_CHECK(std::isfinite(*parsed), ToUtf8(text));
    CheckWrittenNumberReadsBack(*parsed);
    const auto as_double = Converted([&] { return ToDouble(v); });
    FUZZ_CHECK(as_double && SameDouble(*as_double, *parsed), ToUtf8(text));
  }

  // The whole-number conversions agree with each other where their ranges
  // meet; &H and &O texts keep their bits instead, so each type reads them
  // its own way.
  const size_t first = text.find_first_not_of(u" \t\n\v\f\r");
  const bool radix = first != String::npos && text[first] == u'&';
  const auto as_long = Converted([&] { return ToLong(v); });
  const auto as_integer = Converted([&] { return ToInteger(v); });
  const auto as_byte = Converted([&] { return ToByte(v); });
  if (!radix) {
    if (as_integer) FUZZ_CHECK(as_long && *as_long == *as_integer, ToUtf8(text));
    if (as_long && *as_long >= INT16_MIN && *as_long <= INT16_MAX) {
      FUZZ_CHECK(as_integer && *as_integer == *as_long, ToUtf8(text));
    }
    if (as_byte) FUZZ_CHECK(as_long && *as_long == *as_byte, ToUtf8(text));
  }

  const auto as_boolean = Converted([&] { return ToBoolean(v); });
  if (parsed) FUZZ_CHECK(as_boolean.has_value(), ToUtf8(text));

  const auto as_date = Converted([&] { return ToDate(v); });
  const auto date = ParseDate(text);
  FUZZ_CHECK(as_date.has_value() == date.has_value(), ToUtf8(text));
  if (date) FUZZ_CHECK(*as_date == *date, ToUtf8(text));

  const auto inverted = Converted([&] { return Not(v); });
  if (as_long) FUZZ_CHECK(inverted && *inverted == Variant(~*as_long), ToUtf8(text));

  for (VarType type : {VarType::Integer, VarType::Long, VarType::Byte, VarType::Double,
                       VarType::Boolean, VarType::Date, VarType::String, VarType::Variant}) {
    Converted([&] { return ConvertTo(v, type); });
  }
  FUZZ_CHECK(ToString(v) == text, "a text writes as itself");
}

// Numbers of every type made from the same bits convert by the same rules.
void CheckNumber(double value) {
  CheckWrittenNumberReadsBack(value);
  for (const Variant& v : {Variant(value), Variant(Date{value})}) {
    const auto as_long = Converted([&] { return ToLong(v); });
    if (as_long) FUZZ_CHECK(std::fabs(static_cast<double>(*as_long) - value) <= 0.5, "rounding");
    Converted([&] { return ToInteger(v); });
    Converted([&] { return ToByte(v); });
    Converted([&] { return ToBoolean(v); });
    Converted([&] { return ToDate(v); });
    Converted([&] { return ToString(v); });
    Converted([&] { return Not(v); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckText(fuzz::TextFromBytes(data, size));
  if (size >= 8) {
    fuzz::ByteReader bytes(data, size);
    CheckNumber(bytes.Double());
  }
  return 0;
}
