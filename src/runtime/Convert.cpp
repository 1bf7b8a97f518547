#include "kavrin/Convert.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

#include "kavrin/Error.h"
#include "kavrin/OleDate.h"
#include "runtime/DateText.h"
#include "runtime/NumberText.h"

namespace kavrin {
namespace {

using Status = NumberText::Status;

// Dates the platform can hold: 1 January 100 up to the end of 31 December 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kDayAfterLastDate = 2958466.0;

[[noreturn]] void Fail(int32_t number) {
  throw Error::Runtime(number);
}

String Ascii(std::string_view text) {
  return String(text.begin(), text.end());
}

// ---- numbers as text ----

// Plain notation for up to 15 integer digits and for fractions needing at
// most 15 places (a single digit gets 14); E notation beyond.
bool WritesPlain(const Decimal& d) {
  if (d.exponent >= 0) return d.exponent <= 14;
  const int64_t extra_digits = std::max<int64_t>(static_cast<int64_t>(d.digits.size()) - 2, 0);
  return -d.exponent + extra_digits < 15;
}

std::string PlainText(const Decimal& d) {
  if (d.exponent < 0) return "0." + std::string(-d.exponent - 1, '0') + d.digits;
  const auto whole = static_cast<size_t>(d.exponent) + 1;
  if (d.digits.size() <= whole) return d.digits + std::string(whole - d.digits.size(), '0');
  return d.digits.substr(0, whole) + "." + d.digits.substr(whole);
}

std::string ScientificText(const Decimal& d) {
  std::string text = d.digits.substr(0, 1);
  if (d.digits.size() > 1) text += "." + d.digits.substr(1);
  const int64_t magnitude = d.exponent < 0 ? -d.exponent : d.exponent;
  text += d.exponent < 0 ? "E-" : "E+";
  if (magnitude < 10) text += '0';
  return text + std::to_string(magnitude);
}

// A date as "yyyy-mm-dd hh:mm:ss", without the day on 30 December 1899 (the
// zero day) and without the time at midnight.
String DateText(Date date) {
  const DateParts parts = SplitDate(date);
  const bool zero_day = parts.year == 1899 && parts.month == 12 && parts.day == 30;
  const bool midnight = parts.hour == 0 && parts.minute == 0 && parts.second == 0;
  if (zero_day) return IsoTime(parts);
  if (midnight) return IsoDay(parts);
  return IsoDay(parts) + u' ' + IsoTime(parts);
}

// ---- texts as numbers ----

double CheckedValue(const NumberText& n) {
  if (n.status == Status::kNotNumber) Fail(errors::kTypeMismatch);
  if (n.status == Status::kOverflow) Fail(errors::kOverflow);
  return n.value;
}

// "True"/"False" in any case, or exactly "#TRUE#"/"#FALSE#".
std::optional<bool> BooleanWord(StringView text) {
  if (EqualsNoCase(text, u"True") || text == u"#TRUE#") return true;
  if (EqualsNoCase(text, u"False") || text == u"#FALSE#") return false;
  return std::nullopt;
}

// ---- whole numbers ----

// Nearest whole number, an exact half going to the even neighbour.
double RoundHalfEven(double x) {
  const double below = std::floor(x);
  const double rest = x - below;
  if (rest < 0.5) return below;
  if (rest > 0.5) return below + 1;
  return std::fmod(below, 2.0) == 0.0 ? below : below + 1;
}

// A number read from text rounds by its digits: "2.5" is a tie and goes to 2,
// but "2.50000000000000001", a half only once made a double, goes to 3.
double RoundTyped(const NumberText& n) {
  const double below = std::floor(n.value);
  if (n.value - below != 0.5) return RoundHalfEven(n.value);
  const int side = CompareMagnitude(n.decimal, ToDecimal(n.value));
  if (side == 0) return RoundHalfEven(n.value);
  const bool up = (side > 0) == (n.value > 0);
  return up ? below + 1 : below;
}

template <typename T>
T WholeInRange(double rounded) {
  constexpr auto kLow = static_cast<double>(std::numeric_limits<T>::min());
  constexpr auto kHigh = static_cast<double>(std::numeric_limits<T>::max());
  if (!(rounded >= kLow && rounded <= kHigh)) Fail(errors::kOverflow);
  return static_cast<T>(rounded);
}

// &H and &O literals keep their bits: "&HFFFF" is -1 as an Integer and 65535
// as a Long; more bits than the type holds overflow.
template <typename T>
T WrapBits(uint32_t bits) {
  using Unsigned = std::make_unsigned_t<T>;
  if (bits > std::numeric_limits<Unsigned>::max()) Fail(errors::kOverflow);
  return static_cast<T>(static_cast<Unsigned>(bits));
}

template <typename T>
T WholeFromText(const NumberText& n) {
  CheckedValue(n);
  return n.radix ? WrapBits<T>(n.bits) : WholeInRange<T>(RoundTyped(n));
}

// The Integer, Long and Byte conversions; Boolean true is all bits set.
template <typename T>
T ToWhole(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return 0;
    case VarType::Integer:
      return WholeInRange<T>(v.AsInteger());
    case VarType::Long:
      return WholeInRange<T>(v.AsLong());
    case VarType::Byte:
      return WholeInRange<T>(v.AsByte());
    case VarType::Double:
      return WholeInRange<T>(RoundHalfEven(v.AsDouble()));
    case VarType::Date:
      return WholeInRange<T>(RoundHalfEven(v.AsDate().value));
    case VarType::Boolean:
      return v.AsBoolean() ? static_cast<T>(-1) : T{0};
    case VarType::String:
      return WholeFromText<T>(ReadNumberText(v.AsString()));
    case VarType::Null:
      Fail(errors::kInvalidUseOfNull);
    default:
      Fail(errors::kTypeMismatch);
  }
}

Date DateInRange(double value) {
  if (!(value >= kFirstDate && value < kDayAfterLastDate)) Fail(errors::kOverflow);
  return Date{value};
}

// A text operand of Not: a number first, then a Boolean word.
Variant NotOfText(StringView text) {
  const NumberText n = ReadNumberText(text);
  if (n.status != Status::kNotNumber)
    return Variant(static_cast<int32_t>(~WholeFromText<int32_t>(n)));
  if (const auto word = BooleanWord(text)) return Variant(!*word);
  Fail(errors::kTypeMismatch);
}

}  // namespace

String DoubleToString(double d) {
  if (!std::isfinite(d)) Fail(errors::kOverflow);
  if (d == 0.0) return u"0";
  const Decimal decimal = ToDecimal(d, 15);
  const std::string digits = WritesPlain(decimal) ? PlainText(decimal) : ScientificText(decimal);
  return Ascii(d < 0 ? "-" + digits : digits);
}

String ToString(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return String();
    case VarType::Integer:
      return Ascii(std::to_string(v.AsInteger()));
    case VarType::Long:
      return Ascii(std::to_string(v.AsLong()));
    case VarType::Byte:
      return Ascii(std::to_string(v.AsByte()));
    case VarType::Double:
      return DoubleToString(v.AsDouble());
    case VarType::Boolean:
      return v.AsBoolean() ? u"True" : u"False";
    case VarType::Date:
      return DateText(v.AsDate());
    case VarType::String:
      return v.AsString();
    case VarType::Null:
      Fail(errors::kInvalidUseOfNull);
    default:
      Fail(errors::kTypeMismatch);
  }
}

double ToDouble(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return 0.0;
    case VarType::Integer:
      return v.AsInteger();
    case VarType::Long:
      return v.AsLong();
    case VarType::Byte:
      return v.AsByte();
    case VarType::Double:
      return v.AsDouble();
    case VarType::Boolean:
      return v.AsBoolean() ? -1.0 : 0.0;
    case VarType::Date:
      return v.AsDate().value;
    case VarType::String:
      return ParseNumber(v.AsString());
    case VarType::Null:
      Fail(errors::kInvalidUseOfNull);
    default:
      Fail(errors::kTypeMismatch);
  }
}

int16_t ToInteger(const Variant& v) {
  return ToWhole<int16_t>(v);
}
int32_t ToLong(const Variant& v) {
  return ToWhole<int32_t>(v);
}
uint8_t ToByte(const Variant& v) {
  return ToWhole<uint8_t>(v);
}

bool ToBoolean(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return false;
    case VarType::Boolean:
      return v.AsBoolean();
    case VarType::Integer:
    case VarType::Long:
    case VarType::Byte:
    case VarType::Double:
    case VarType::Date:
      return ToDouble(v) != 0.0;
    case VarType::String: {
      if (const auto word = BooleanWord(v.AsString())) return *word;
      return ParseNumber(v.AsString()) != 0.0;
    }
    case VarType::Null:
      Fail(errors::kInvalidUseOfNull);
    default:
      Fail(errors::kTypeMismatch);
  }
}

Date ToDate(const Variant& v) {
  switch (v.type()) {
    case VarType::Date:
      return v.AsDate();
    case VarType::Empty:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Byte:
    case VarType::Double:
    case VarType::Boolean:
      return DateInRange(ToDouble(v));
    case VarType::String: {
      if (const auto date = ParseDate(v.AsString())) return *date;
      Fail(errors::kTypeMismatch);
    }
    case VarType::Null:
      Fail(errors::kInvalidUseOfNull);
    default:
      Fail(errors::kTypeMismatch);
  }
}

double ParseNumber(StringView text) {
  return CheckedValue(ReadNumberText(text));
}

bool TryParseNumber(StringView text, double& out) {
  const NumberText n = ReadNumberText(text);
  if (n.status != Status::kNumber) return false;
  out = n.value;
  return true;
}

double Val(StringView text) {
  return ReadLeadingNumber(text);
}

Variant Not(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return Variant(int16_t{-1});
    case VarType::Null:
      return Variant::Null();
    case VarType::Boolean:
      return Variant(!v.AsBoolean());
    case VarType::Integer:
      return Variant(static_cast<int16_t>(~v.AsInteger()));
    case VarType::Long:
      return Variant(static_cast<int32_t>(~v.AsLong()));
    case VarType::Byte:
      return Variant(static_cast<uint8_t>(~v.AsByte()));
    case VarType::Double:
    case VarType::Date:
      return Variant(static_cast<int32_t>(~ToLong(v)));
    case VarType::String:
      return NotOfText(v.AsString());
    default:
      Fail(errors::kTypeMismatch);
  }
}

bool IsTrueCondition(const Variant& v) {
  if (v.IsNull()) return false;
  return ToBoolean(v);
}

Variant ConvertTo(const Variant& v, VarType type) {
  switch (type) {
    case VarType::Variant:
      return v;
    case VarType::Integer:
      return Variant(ToInteger(v));
    case VarType::Long:
      return Variant(ToLong(v));
    case VarType::Byte:
      return Variant(ToByte(v));
    case VarType::Double:
      return Variant(ToDouble(v));
    case VarType::Boolean:
      return Variant(ToBoolean(v));
    case VarType::Date:
      return Variant(ToDate(v));
    case VarType::String:
      return Variant(ToString(v));
    case VarType::Object:
      if (v.IsObject()) return v;
      break;
    case VarType::Array:
      if (v.IsArray()) return v;
      break;
    default:
      break;
  }
  Fail(errors::kTypeMismatch);
}

}  // namespace kavrin
