// OLE automation dates: days since 30 December 1899 00:00 with the time of day
// as the fraction. Before the epoch the whole part carries the sign and the
// fraction is the time of day: -1.25 is 29 December 1899 06:00.
#pragma once

#include <optional>

#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

struct DateParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
  friend bool operator==(const DateParts&, const DateParts&) = default;
};

// The date for calendar parts; nullopt outside 1 January 100 .. 31 December
// 9999 or for parts that name no real day or time.
KAVRIN_API std::optional<Date> MakeDate(const DateParts& parts);
// Calendar parts of a date, times rounded to the second.
KAVRIN_API DateParts SplitDate(Date date);

// Reads a date the way dates are typed and stored: ISO "yyyy-mm-dd" with an
// optional " hh:mm[:ss]" or "Thh:mm[:ss]", "yyyy/m/d", US "m/d/yyyy" (parts
// swapped when the month cannot be one), "d Mon yyyy", month names, two-digit
// years (00-29 are 20xx), and times alone with optional AM/PM. nullopt for
// anything else, including plain numbers.
KAVRIN_API std::optional<Date> ParseDate(StringView text);

// "yyyy-mm-ddThh:mm:ss".
KAVRIN_API String FormatIsoDateTime(Date date);

}  // namespace kavrin
