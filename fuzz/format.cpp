// Showing values by pattern (FormatNumber, behind FormatNum and FormatNum1):
// any value with any pattern either shows, or fails with 5, 6 or 13; what is
// shown reads back as the value rounded to the pattern's decimals.
#include <algorithm>
#include <cmath>
#include <optional>

#include "FuzzSupport.h"
#include "kavrin/Convert.h"
#include "kavrin/Format.h"

using namespace kavrin;
using kavrin::fuzz::CheckKnownError;

namespace {

std::optional<String> Shown(const Variant& value, const String& pattern) {
  try {
    return FormatNumber(value, pattern);
  } catch (const Error& e) {
    CheckKnownError(e);
    FUZZ_CHECK(e.number() == errors::kInvalidProcedureCall || e.number() == errors::kOverflow ||
                   e.number() == errors::kTypeMismatch,
               e.what());
    return std::nullopt;
  }
}

Variant ValueFrom(fuzz::ByteReader& bytes) {
  switch (bytes.Byte() % 8) {
    case 0:
      return Variant(bytes.Double());
    case 1:
      return Variant(bytes.Text());
    case 2:
      return Variant(static_cast<int32_t>(bytes.Long()));
    case 3:
      return Variant(static_cast<int16_t>(bytes.Word()));
    case 4:
      return Variant(bytes.Byte() % 2 == 0);
    case 5:
      return Variant(Date{bytes.Double()});
    case 6:
      return Variant::Null();
    default:
      return Variant();
  }
}

// What a pattern that shows asks for: decimals kept at least and at most,
// and whether the whole part is grouped.
struct Asked {
  bool point = false;
  size_t min_fraction = 0;
  size_t max_fraction = 0;
  bool grouped = false;
};

Asked Read(const String& pattern) {
  Asked asked;
  const size_t point = pattern.find(u'.');
  asked.point = point != String::npos;
  if (asked.point) {
    const String fraction = pattern.substr(point + 1);
    asked.max_fraction = fraction.size();
    const size_t last_zero = fraction.find_last_of(u'0');
    asked.min_fraction = last_zero == String::npos ? 0 : last_zero + 1;
  }
  asked.grouped = pattern.substr(0, point).find(u',') != String::npos;
  return asked;
}

void CheckShownNumber(double number, const String& pattern, const String& shown) {
  if (pattern.empty()) {
    FUZZ_CHECK(shown == DoubleToString(number), ToUtf8(shown));
    return;
  }
  const Asked asked = Read(pattern);
  FUZZ_CHECK((!shown.empty() && shown[0] == u'-') == (number < 0), ToUtf8(shown));
  const size_t point = shown.find(u'.');
  FUZZ_CHECK((point != String::npos) == asked.point, ToUtf8(shown));
  const String whole = shown.substr(shown[0] == u'-' ? 1 : 0, point - (shown[0] == u'-' ? 1 : 0));
  if (asked.point) {
    const size_t decimals = shown.size() - point - 1;
    FUZZ_CHECK(decimals >= asked.min_fraction && decimals <= asked.max_fraction, ToUtf8(shown));
  }
  // Grouping puts a "," before every third digit from the right, nowhere else.
  const String digits = [&] {
    String d = whole;
    d.erase(std::remove(d.begin(), d.end(), u','), d.end());
    return d;
  }();
  FUZZ_CHECK(
      std::all_of(digits.begin(), digits.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; }),
      ToUtf8(shown));
  if (asked.grouped && digits.size() > 3) {
    FUZZ_CHECK(whole.size() == digits.size() + (digits.size() - 1) / 3, ToUtf8(shown));
  } else {
    FUZZ_CHECK(whole == digits, ToUtf8(shown));
  }
  // What is shown reads back as the number to the pattern's decimals.
  if (std::none_of(shown.begin(), shown.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; }))
    return;
  double read = 0;
  FUZZ_CHECK(TryParseNumber(shown, read) || std::fabs(number) > 1e307, ToUtf8(shown));
  const double step = std::pow(10.0, -static_cast<double>(asked.max_fraction));
  if (std::fabs(number) < 1e15 && asked.max_fraction < 15) {
    FUZZ_CHECK(std::fabs(read - number) <= step / 2 + std::fabs(number) * 1e-14 + 1e-300,
               ToUtf8(shown));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::ByteReader bytes(data, size);
  const Variant value = ValueFrom(bytes);
  const String pattern = bytes.Text();
  const auto shown = Shown(value, pattern);
  if (!shown) return 0;
  if (value.IsNull()) {
    FUZZ_CHECK(shown->empty(), "Null shows as nothing");
    return 0;
  }
  double number = 0;
  if (value.IsString() && !TryParseNumber(value.AsString(), number)) {
    FUZZ_CHECK(*shown == value.AsString(), "a text that is no number shows as itself");
    return 0;
  }
  number = ToDouble(value);
  CheckShownNumber(number, pattern, *shown);
  // The number's own text shows the same: showing works on 15 digits.
  const auto from_text = Shown(Variant(DoubleToString(number)), pattern);
  FUZZ_CHECK(from_text ? *from_text == *shown : std::fabs(number) > 1.79769313486231e308,
             ToUtf8(*shown));
  return 0;
}
