// Showing numbers by pattern, as the platform's Format does for amounts,
// counts and periods.
//
// A pattern is one section of placeholders:
//   "0"  a digit that is always shown (leading or trailing zeros included);
//   "#"  a digit shown only when significant;
//   ","  between integer placeholders: group the whole integer part by three;
//   "."  the decimal point, shown whenever the pattern has one.
// Integer digits beyond the placeholders are all shown. The value is first
// taken to 15 significant digits (as its text would show it), then rounded
// to the pattern's decimals, halves away from zero: 2.345 with "0.00" shows
// 2.35 and 1.005 shows 1.01. A negative value gets a leading "-", decided by
// the value before rounding, so -0.001 with "0.00" shows "-0.00". The
// separators are always "," and ".", whatever the process locale.
#pragma once

#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

// `value` shown with `pattern`. Numbers, Booleans (true is -1) and dates (their
// day count) are formatted as numbers; Empty as 0; a text that reads as a
// number (" 3 ", "1,234.5") as that number, and any other text is answered
// unchanged; Null gives "". Throws Error 13 for an object, array or omitted
// argument, 6 for a value beyond the double range, and 5 for a pattern with
// anything but the placeholders above (a "," not between integer digits, a
// second ".", literal text or sections). The empty pattern shows the number
// as its text would (ToString in kavrin/Convert.h).
KAVRIN_API String FormatNumber(const Variant& value, StringView pattern);

}  // namespace kavrin
