#include "kavrin/Format.h"

#include <cmath>
#include <optional>
#include <string>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "runtime/NumberText.h"

namespace kavrin {
namespace {

// Significant digits a double is taken to before it is rounded for showing.
constexpr int kShownPrecision = 15;

[[noreturn]] void Fail(int32_t number) {
  throw Error::Runtime(number);
}

bool IsPlaceholder(char16_t c) {
  return c == u'0' || c == u'#';
}

// What a pattern asks for.
struct Layout {
  int min_whole = 0;  // integer digits always shown
  bool grouped = false;
  bool point = false;
  int min_fraction = 0;  // decimals always shown
  int max_fraction = 0;  // decimals rounded to
};

// The integer placeholders: the "0"s count from the first of them on, and a
// "," asks for grouping only with a placeholder on both sides.
size_t ReadWholePart(StringView pattern, Layout& layout) {
  size_t i = 0;
  bool any_placeholder = false;
  bool zero_seen = false;
  bool comma_pending = false;
  for (; i < pattern.size() && pattern[i] != u'.'; ++i) {
    const char16_t c = pattern[i];
    if (c == u',') {
      if (!any_placeholder) Fail(errors::kInvalidProcedureCall);
      comma_pending = true;
      continue;
    }
    if (!IsPlaceholder(c)) Fail(errors::kInvalidProcedureCall);
    any_placeholder = true;
    zero_seen = zero_seen || c == u'0';
    if (zero_seen) ++layout.min_whole;
    if (comma_pending) layout.grouped = true;
    comma_pending = false;
  }
  if (comma_pending) Fail(errors::kInvalidProcedureCall);
  return i;
}

// The decimal placeholders after the point: decimals up to the last "0" are
// always shown, those of a trailing "#" only when not zero.
void ReadFractionPart(StringView fraction, Layout& layout) {
  for (size_t i = 0; i < fraction.size(); ++i) {
    if (!IsPlaceholder(fraction[i])) Fail(errors::kInvalidProcedureCall);
    ++layout.max_fraction;
    if (fraction[i] == u'0') layout.min_fraction = layout.max_fraction;
  }
}

Layout ReadLayout(StringView pattern) {
  Layout layout;
  const size_t point = ReadWholePart(pattern, layout);
  if (point < pattern.size()) {
    layout.point = true;
    ReadFractionPart(pattern.substr(point + 1), layout);
  }
  return layout;
}

// Adds one in the last place of a string of decimal digits.
void Increment(std::string& digits) {
  for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
    if (*it != '9') {
      ++*it;
      return;
    }
    *it = '0';
  }
  digits.insert(digits.begin(), '1');
}

// |value| to 15 significant digits, rounded half away from zero to
// `decimals` places, as the digits of that many hundredths, thousandths...:
// 2.345 with 2 decimals gives "235".
std::string ScaledDigits(double value, int decimals) {
  const Decimal d = ToDecimal(value, kShownPrecision);
  if (d.digits.empty()) return "0";
  // Digit i of d.digits stands for 10^(exponent - i); keep those down to
  // 10^-decimals and judge the half on the first one dropped.
  const int64_t keep = d.exponent + decimals + 1;
  if (keep < 0) return "0";
  std::string kept = d.digits.substr(0, static_cast<size_t>(keep));
  kept.resize(static_cast<size_t>(keep), '0');
  const size_t first_dropped = static_cast<size_t>(keep);
  if (first_dropped < d.digits.size() && d.digits[first_dropped] >= '5') Increment(kept);
  return kept.empty() ? "0" : kept;
}

std::string Grouped(const std::string& whole) {
  std::string out;
  for (size_t i = 0; i < whole.size(); ++i) {
    if (i > 0 && (whole.size() - i) % 3 == 0) out.push_back(',');
    out.push_back(whole[i]);
  }
  return out;
}

String Formatted(double value, const Layout& layout) {
  std::string scaled = ScaledDigits(value, layout.max_fraction);
  const auto decimals = static_cast<size_t>(layout.max_fraction);
  if (scaled.size() <= decimals) scaled.insert(0, decimals + 1 - scaled.size(), '0');
  std::string whole = scaled.substr(0, scaled.size() - decimals);
  std::string fraction = scaled.substr(scaled.size() - decimals);

  whole.erase(0, whole.find_first_not_of('0'));
  const auto min_whole = static_cast<size_t>(layout.min_whole);
  if (whole.size() < min_whole) whole.insert(0, min_whole - whole.size(), '0');
  while (fraction.size() > static_cast<size_t>(layout.min_fraction) && fraction.back() == '0')
    fraction.pop_back();

  std::string text = value < 0 ? "-" : "";
  text += layout.grouped ? Grouped(whole) : whole;
  if (layout.point) text += "." + fraction;
  return String(text.begin(), text.end());
}

// The number a value stands for, or nothing for a text that is not one.
std::optional<double> NumberOf(const Variant& value) {
  if (!value.IsString()) return ToDouble(value);
  const NumberText n = ReadNumberText(value.AsString());
  if (n.status == NumberText::Status::kNotNumber) return std::nullopt;
  // A text too large for a double is a number all the same, and overflows.
  if (n.status == NumberText::Status::kOverflow) Fail(errors::kOverflow);
  return n.value;
}

}  // namespace

String FormatNumber(const Variant& value, StringView pattern) {
  if (value.IsNull()) return String();
  const std::optional<double> number = NumberOf(value);
  if (!number) return value.AsString();
  if (!std::isfinite(*number)) Fail(errors::kOverflow);
  if (pattern.empty()) return DoubleToString(*number);
  return Formatted(*number, ReadLayout(pattern));
}

}  // namespace kavrin
