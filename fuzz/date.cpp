// Reading dates as they are typed and stored, and the calendar arithmetic
// behind them: a date read from any text splits into parts that make the
// same date again, and its ISO text reads back as the same date.
#include "FuzzSupport.h"
#include "kavrin/OleDate.h"

using namespace kavrin;

namespace {

// Dates the platform can hold, 1 January 100 to 31 December 9999 23:59:59.
constexpr double kFirst = -657434.0 - 86399.0 / 86400;
constexpr double kLast = 2958465.0 + 86399.0 / 86400;

void CheckParsed(const String& text) {
  const auto date = ParseDate(text);
  if (!date) return;
  FUZZ_CHECK(date->value >= kFirst && date->value <= kLast, ToUtf8(text));  // and not NaN
  FUZZ_CHECK(MakeDate(SplitDate(*date)) == date, ToUtf8(text));
  // Its ISO text, and its text as the conversions write it, read back.
  for (const String& written : {FormatIsoDateTime(*date), ToString(Variant(*date))})
    FUZZ_CHECK(ParseDate(written) == date, ToUtf8(text) + " -> " + ToUtf8(written));
}

// A date as a point on a continuous line of days: before the epoch the
// fraction of a date is its time of day, not a negative offset.
double Timeline(double value) {
  const double whole = std::trunc(value);
  return whole + std::fabs(value - whole);
}

// Any double splits into parts that name a real day and time.
void CheckSplit(double value) {
  const DateParts parts = SplitDate(Date{value});
  FUZZ_CHECK(parts.year >= 100 && parts.year <= 9999 && parts.hour >= 0 && parts.hour <= 23 &&
                 parts.minute >= 0 && parts.minute <= 59 && parts.second >= 0 && parts.second <= 59,
             std::to_string(value));
  const auto made = MakeDate(parts);
  FUZZ_CHECK(made.has_value(), std::to_string(value));
  if (value >= kFirst && value <= kLast) {
    // Within the range the parts stand for the value to the nearest second
    // (a time that rounds up to midnight is the next day).
    FUZZ_CHECK(std::fabs(Timeline(made->value) - Timeline(value)) <= 0.5 / 86400 + 1e-9,
               std::to_string(value));
  }
  FormatIsoDateTime(Date{value});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckParsed(fuzz::TextFromBytes(data, size));
  if (size >= 8) CheckSplit(fuzz::ByteReader(data, size).Double());
  return 0;
}
