// Reading numbers typed as text, and the decimal digits of a double.
//
// The conversions in kavrin/Convert.h build on these: a whole text read as a
// number (what CDbl, CInt and CBool accept), the leading number of a text (what
// Val accepts), and the significant digits used when writing a Double.
#pragma once

#include <cstdint>
#include <string>

#include "kavrin/String.h"

namespace kavrin {

// A decimal in scientific form: |value| = d.ddd x 10^exponent, where `digits`
// are the significant digits without leading or trailing zeros ("" for 0).
struct Decimal {
  std::string digits;
  int64_t exponent = 0;
};

// The magnitude of `d` rounded to `precision` significant digits, or its
// shortest form that reads back as `d` when `precision` is 0.
Decimal ToDecimal(double d, int precision = 0);

// -1, 0 or 1 as |a| is below, equal to or above |b|.
int CompareMagnitude(const Decimal& a, const Decimal& b);

// A whole text read as a number.
struct NumberText {
  enum class Status { kNumber, kNotNumber, kOverflow };
  Status status = Status::kNotNumber;
  double value = 0.0;
  // &H and &O texts: the bits as written (at most 32), which the integer
  // conversions wrap to their own width. `value` holds them unsigned.
  bool radix = false;
  uint32_t bits = 0;
  // Decimal texts: the digits as typed, so that halves can be judged on them
  // rather than on the nearest double.
  Decimal decimal;
};

// Reads all of `text` as a number: outer white space, one sign and one
// currency sign "$", each before or after the number (blanks may follow
// them), parentheses for a negative, "," anywhere after the first digit, one
// ".", an exponent E with its sign, or an &H/&O literal of at most 32 bits.
NumberText ReadNumberText(StringView text);

// Reads the number at the start of `text`, skipping blanks, tabs, line ends and
// ideographic spaces wherever they are; 0 when there is none. &H and &O
// literals wrap to 16 bits up to FFFF and to 32 bits up to FFFFFFFF.
double ReadLeadingNumber(StringView text);

}  // namespace kavrin
