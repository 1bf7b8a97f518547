#include "runtime/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace kavrin {
namespace {

using Status = NumberText::Status;

// Written exponents are clamped here: far beyond every double either way.
constexpr int64_t kExponentLimit = 100000;
// Decimal exponents past these overflow or vanish whatever the digits.
constexpr int64_t kLargestExponent = 400;
constexpr int64_t kSmallestExponent = -400;

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

// White space around a whole number: space, tab, LF, VT, FF and CR.
bool IsOuterSpace(char16_t c) {
  return c == u' ' || (c >= u'\t' && c <= u'\r');
}

// What Val passes over anywhere, even between digits.
bool IsLeadingBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\u3000';
}

// Value of `c` as a digit in `radix` (8 or 16), or -1.
int RadixDigit(char16_t c, int radix) {
  int digit = radix;
  if (c >= u'0' && c <= u'9') digit = c - u'0';
  if (c >= u'a' && c <= u'f') digit = c - u'a' + 10;
  if (c >= u'A' && c <= u'F') digit = c - u'A' + 10;
  return digit < radix ? digit : -1;
}

// A position in a text. A cursor that skips blanks passes over them before
// every look, which is how Val reads " 2 45 7" as 2457.
class Cursor {
 public:
  explicit Cursor(StringView text, bool skip_blanks = false)
      : text_(text), skip_blanks_(skip_blanks) {}

  bool AtEnd() { return Settle() >= text_.size(); }
  // The next character, or U+0000 at the end.
  char16_t Peek() { return AtEnd() ? u'\0' : text_[pos_]; }
  void Skip() { ++pos_; }
  bool Take(char16_t c) {
    if (AtEnd() || text_[pos_] != c) return false;
    ++pos_;
    return true;
  }
  bool TakeEither(char16_t a, char16_t b) { return Take(a) || Take(b); }

 private:
  size_t Settle() {
    while (skip_blanks_ && pos_ < text_.size() && IsLeadingBlank(text_[pos_]))
      ++pos_;
    return pos_;
  }

  StringView text_;
  bool skip_blanks_;
  size_t pos_ = 0;
};

// Mantissa digits as typed (integer part first) and the written exponent.
struct TypedDecimal {
  std::string digits;
  size_t integer_digits = 0;
  int64_t exponent = 0;
};

void ReadDigits(Cursor& in, std::string& digits) {
  while (IsDigit(in.Peek())) {
    digits.push_back(static_cast<char>(in.Peek()));
    in.Skip();
  }
}

// Reads an optional sign and at least one digit after an exponent mark.
bool ReadExponent(Cursor& in, int64_t& exponent) {
  const bool negative = in.Peek() == u'-';
  if (negative || in.Peek() == u'+') in.Skip();
  if (!IsDigit(in.Peek())) return false;
  int64_t e = 0;
  while (IsDigit(in.Peek())) {
    e = std::min(e * 10 + (in.Peek() - u'0'), kExponentLimit);
    in.Skip();
  }
  exponent = negative ? -e : e;
  return true;
}

// The double nearest to 0.digits... scaled by the exponent; sets `overflow`
// when it is beyond the largest double.
double DecimalValue(const Decimal& d, bool& overflow) {
  overflow = false;
  if (d.digits.empty() || d.exponent < kSmallestExponent) return 0.0;
  if (d.exponent > kLargestExponent) {
    overflow = true;
    return 0.0;
  }
  std::string text = d.digits.substr(0, 1);
  if (d.digits.size() > 1) text += "." + d.digits.substr(1);
  text += "e" + std::to_string(d.exponent);
  double value = 0.0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec == std::errc::result_out_of_range) {
    overflow = d.exponent > 0;
    return 0.0;
  }
  return value;
}

NumberText FromTyped(const TypedDecimal& typed, bool negative) {
  NumberText n;
  n.status = Status::kNumber;
  const size_t first = typed.digits.find_first_not_of('0');
  if (first == std::string::npos) return n;
  const size_t last = typed.digits.find_last_not_of('0');
  n.decimal.digits = typed.digits.substr(first, last - first + 1);
  n.decimal.exponent =
      static_cast<int64_t>(typed.integer_digits) - 1 - static_cast<int64_t>(first) + typed.exponent;
  bool overflow = false;
  const double value = DecimalValue(n.decimal, overflow);
  if (overflow) n.status = Status::kOverflow;
  n.value = negative ? -value : value;
  return n;
}

// The digits after &H or &O, saturating above 64 bits; false when none.
bool ReadRadixDigits(Cursor& in, int radix, uint64_t& bits) {
  constexpr uint64_t kMax = std::numeric_limits<uint64_t>::max();
  bits = 0;
  bool any = false;
  for (int digit = RadixDigit(in.Peek(), radix); digit >= 0; digit = RadixDigit(in.Peek(), radix)) {
    bits = bits > (kMax - digit) / radix ? kMax : bits * radix + digit;
    any = true;
    in.Skip();
  }
  return any;
}

// After a '&': H for hexadecimal, O for octal, else 0.
int ReadRadixMark(Cursor& in) {
  if (in.TakeEither(u'H', u'h')) return 16;
  if (in.TakeEither(u'O', u'o')) return 8;
  return 0;
}

NumberText ReadRadix(Cursor& in) {
  NumberText n;
  const int radix = ReadRadixMark(in);
  uint64_t bits = 0;
  if (radix == 0 || !ReadRadixDigits(in, radix, bits)) return n;
  n.radix = true;
  n.status = bits > std::numeric_limits<uint32_t>::max() ? Status::kOverflow : Status::kNumber;
  n.bits = static_cast<uint32_t>(bits);
  n.value = static_cast<double>(n.bits);
  return n;
}

// Digits with "," anywhere after the first digit, one ".", an exponent.
bool ReadDecimal(Cursor& in, TypedDecimal& typed) {
  while (IsDigit(in.Peek()) || (in.Peek() == u',' && !typed.digits.empty())) {
    if (in.Peek() != u',') typed.digits.push_back(static_cast<char>(in.Peek()));
    in.Skip();
  }
  typed.integer_digits = typed.digits.size();
  if (in.Take(u'.')) ReadDigits(in, typed.digits);
  if (typed.digits.empty()) return false;
  if (in.TakeEither(u'E', u'e')) return ReadExponent(in, typed.exponent);
  return true;
}

// The sign, the currency sign and the parentheses around a number.
struct Affixes {
  bool sign = false;
  bool negative = false;
  bool currency = false;
  bool open = false;
  bool closed = false;

  // The currency sign of the fixed reading, once, before or after the number.
  bool TakeCurrency(Cursor& in) {
    if (currency || in.Peek() != u'$') return false;
    currency = true;
    in.Skip();
    return true;
  }

  bool TakeSign(Cursor& in) {
    if (sign || open || (in.Peek() != u'+' && in.Peek() != u'-')) return false;
    sign = true;
    negative = in.Peek() == u'-';
    in.Skip();
    return true;
  }
};

void ReadLeadingAffixes(Cursor& in, Affixes& a) {
  for (;;) {
    if (IsOuterSpace(in.Peek())) {
      in.Skip();
    } else if (!a.TakeSign(in) && !a.TakeCurrency(in)) {
      if (a.sign || a.open || !in.Take(u'(')) return;
      a.open = true;
    }
  }
}

bool ReadTrailingAffixes(Cursor& in, Affixes& a) {
  while (!in.AtEnd()) {
    if (IsOuterSpace(in.Peek())) {
      in.Skip();
    } else if (!a.TakeSign(in) && !a.TakeCurrency(in)) {
      if (!a.open || a.closed || !in.Take(u')')) return false;
      a.closed = true;
    }
  }
  return a.open == a.closed;
}

}  // namespace

Decimal ToDecimal(double d, int precision) {
  Decimal decimal;
  const double magnitude = std::fabs(d);
  if (magnitude == 0.0 || !std::isfinite(magnitude)) return decimal;
  char buffer[64];
  constexpr auto kScientific = std::chars_format::scientific;
  const auto written =
      precision > 0
          ? std::to_chars(buffer, buffer + sizeof buffer, magnitude, kScientific, precision - 1)
          : std::to_chars(buffer, buffer + sizeof buffer, magnitude, kScientific);
  // "d.ddde+xx": the digits, then the power of ten of the first one.
  const std::string_view text(buffer, static_cast<size_t>(written.ptr - buffer));
  const size_t mark = text.find('e');
  for (const char c : text.substr(0, mark)) {
    if (c != '.') decimal.digits.push_back(c);
  }
  decimal.digits.erase(decimal.digits.find_last_not_of('0') + 1);
  std::string_view exponent = text.substr(mark + 1);
  if (exponent.front() == '+') exponent.remove_prefix(1);
  std::from_chars(exponent.data(), exponent.data() + exponent.size(), decimal.exponent);
  return decimal;
}

int CompareMagnitude(const Decimal& a, const Decimal& b) {
  if (a.digits.empty() || b.digits.empty()) {
    return static_cast<int>(!a.digits.empty()) - static_cast<int>(!b.digits.empty());
  }
  if (a.exponent != b.exponent) return a.exponent < b.exponent ? -1 : 1;
  const int order = a.digits.compare(b.digits);
  return (order > 0) - (order < 0);
}

NumberText ReadNumberText(StringView text) {
  Cursor in(text);
  Affixes affixes;
  ReadLeadingAffixes(in, affixes);
  NumberText n;
  if (in.Take(u'&')) {
    n = ReadRadix(in);
    if (affixes.sign || affixes.currency || affixes.open) return {};
  } else {
    TypedDecimal typed;
    if (!ReadDecimal(in, typed)) return {};
    n = FromTyped(typed, false);
  }
  if (n.status == Status::kNotNumber || !ReadTrailingAffixes(in, affixes)) return {};
  if ((affixes.negative || affixes.open) && n.value != 0.0) n.value = -n.value;
  return n;
}

double ReadLeadingNumber(StringView text) {
  Cursor in(text, true);
  if (in.Take(u'&')) {
    uint64_t bits = 0;
    const int radix = ReadRadixMark(in);
    if (radix == 0 || !ReadRadixDigits(in, radix, bits)) return 0.0;
    if (bits <= 0xFFFF) return static_cast<int16_t>(static_cast<uint16_t>(bits));
    if (bits <= 0xFFFFFFFF) return static_cast<int32_t>(static_cast<uint32_t>(bits));
    return static_cast<double>(bits);
  }
  const bool negative = in.Peek() == u'-';
  if (negative || in.Peek() == u'+') in.Skip();
  TypedDecimal typed;
  ReadDigits(in, typed.digits);
  typed.integer_digits = typed.digits.size();
  if (in.Take(u'.')) ReadDigits(in, typed.digits);
  const char16_t mark = in.Peek();
  if (!typed.digits.empty() && (mark == u'E' || mark == u'e' || mark == u'D' || mark == u'd')) {
    in.Skip();
    if (!ReadExponent(in, typed.exponent)) typed.exponent = 0;
  }
  const NumberText n = FromTyped(typed, negative);
  if (n.status == Status::kOverflow) {
    return negative ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  return n.value;
}

}  // namespace kavrin
