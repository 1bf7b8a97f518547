// The platform's conversions between Variant types.
//
// These follow the platform's rules exactly, failures included:
//   - Null converts to nothing but Null: every conversion below fails with
//     Error 94 (invalid use of Null) when given Null.
//   - A text that is not a number fails a numeric conversion with Error 13.
//   - A number outside the target's range fails with Error 6 (overflow).
//   - Integer, Long and Byte round halves to even (banker's rounding).
//   - Boolean true is -1 when read as a number; numbers read as Booleans are
//     false for 0 and true otherwise; texts "True"/"False" in any letter case.
// Numbers are written and read with "." as the decimal point and "," for
// grouping, whatever the process locale, so every machine answers alike.
#pragma once

#include <cstdint>

#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

// Text of a value: numbers with up to 15 significant digits ("1E+15" beyond),
// Booleans "True"/"False", Empty "", dates as ISO "yyyy-mm-dd hh:mm:ss" (time
// only when the day part is 0, date only when there is no time). Throws 94
// for Null, 13 for an object, array or omitted argument.
KAVRIN_API String ToString(const Variant& v);
// Text of a Double with 15 significant digits, as ToString writes it.
KAVRIN_API String DoubleToString(double d);

KAVRIN_API double ToDouble(const Variant& v);
KAVRIN_API int16_t ToInteger(const Variant& v);
KAVRIN_API int32_t ToLong(const Variant& v);
KAVRIN_API uint8_t ToByte(const Variant& v);
KAVRIN_API bool ToBoolean(const Variant& v);
// Dates from numbers (the OLE value) or from texts (see ParseDate in
// kavrin/OleDate.h); an unreadable text fails with 13.
KAVRIN_API Date ToDate(const Variant& v);

// Reads a text as a number with the platform's text-to-number rules: outer
// white space, one sign and one currency sign "$" each leading or trailing,
// parentheses for negative, "," anywhere after the first digit, one ".", an
// exponent, &H and &O prefixes.
// Throws 13 for anything else, 6 for an overflowing exponent.
KAVRIN_API double ParseNumber(StringView text);
// The same reading without throwing: false when the text is not a number.
KAVRIN_API bool TryParseNumber(StringView text, double& out);

// Leading-number reading that never fails: blanks, tabs and line feeds are
// skipped everywhere; it stops at the first character that cannot continue
// the number and answers 0 when there is none.
KAVRIN_API double Val(StringView text);

// The platform's Not: logical on Booleans, bitwise complement of the value as
// an Integer or Long otherwise (Empty gives -1, Null gives Null). Texts are
// read as numbers, then as "True"/"False"; anything else fails with 13.
KAVRIN_API Variant Not(const Variant& v);

// A value used as the condition of an If: Null and Empty are false, numbers
// are true when non-zero, texts are read as ToBoolean reads them.
KAVRIN_API bool IsTrueCondition(const Variant& v);

// Converts `v` to `type` by the rules above (VarType::Variant keeps it).
// Throws as the matching conversion does; 13 for types without one.
KAVRIN_API Variant ConvertTo(const Variant& v, VarType type);

}  // namespace kavrin
