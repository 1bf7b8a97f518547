// Amounts shown in the entry forms' grids and fields, and typed amounts read
// back: thousands grouping, a fixed number of decimals, and the text an
// amount of exactly zero shows instead ("0" or nothing, as the caller chooses).
#include "kavrin/Convert.h"
#include "kavrin/Format.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"
#include "runtime/StringOf.h"

namespace kavrin {

namespace {

// The caller's choice for zero amounts; an omitted one shows nothing.
Variant ZeroChoice(const Variant& DispZero) {
  return DispZero.IsMissing() ? Variant(false) : DispZero;
}

// What a zero amount shows: a bare "0" when the choice reads as true (Null
// and 0 read as false), else nothing. A choice that is no truth value fails
// with 13.
String ZeroText(const Variant& DispZero) {
  return IsTrueCondition(DispZero) ? u"0" : u"";
}

}  // namespace

String clsPub::FormatNum(double Num, const Variant& DispZero) {
  const detail::CallReads reads(dbia_);
  const Variant show_zero = ZeroChoice(DispZero);
  if (Num != 0) return FormatNumber(Num, u"##,##0.00");
  return ZeroText(show_zero);
}

String clsPub::FormatNum1(double Num, int16_t DecimalLength, const Variant& DispZero) {
  const detail::CallReads reads(dbia_);
  const Variant show_zero = ZeroChoice(DispZero);
  if (Num != 0) {
    // The decimals are built before the choice, so a negative count fails
    // with 5 even though no decimals would be wanted.
    const String decimals = StringOf(DecimalLength, u'0');
    const String pattern = DecimalLength == 0 ? String(u"##,##0") : u"##,##0." + decimals;
    return FormatNumber(Num, pattern);
  }
  return ZeroText(show_zero);
}

double clsPub::ReFormat(const String& str) {
  const detail::CallReads reads(dbia_);
  if (Trim(str).empty()) return 0;
  const String six_decimals = FormatNumber(ParseNumber(str), u"0.000000");
  return ParseNumber(six_decimals);
}

}  // namespace kavrin
