// Showing values by pattern (FormatNumber, behind FormatNum and FormatNum1):
// any value with any pattern either shows, or fails with 5, 6 or 13; what is
// shown reads back as the value rounded to the pattern's decimals.
#include "kavrin/Format.h"
#include "FuzzSupport.h"

using namespace kavrin;

namespace {

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

// The value shown by the pattern, or nothing when it fails with 5, 6 or 13.
std::optional<String> Shown(const Variant& value, const String& pattern) {
  return fuzz::Try([&] { return FormatNumber(value, pattern); },
                   {errors::kInvalidProcedureCall, errors::kOverflow, errors::kTypeMismatch});
}

void CheckShownNumber(double number, const String& pattern, const String& shown) {
  if (pattern.empty()) {
    FUZZ_CHECK(shown == DoubleToString(number), ToUtf8(shown));
    return;
  }
  // What the pattern asks for: decimals kept at least and at most, and
  // whether the whole part is grouped.
  const size_t asked_point = pattern.find(u'.');
  const String fraction = asked_point == String::npos ? u"" : pattern.substr(asked_point + 1);
  const size_t max_fraction = fraction.size(), last_zero = fraction.find_last_of(u'0');
  const size_t min_fraction = last_zero == String::npos ? 0 : last_zero + 1;
  const bool grouped = pattern.substr(0, asked_point).find(u',') != String::npos;

  const bool negative = !shown.empty() && shown[0] == u'-';
  FUZZ_CHECK(negative == (number < 0), ToUtf8(shown));
  const size_t point = shown.find(u'.');
  FUZZ_CHECK((point != String::npos) == (asked_point != String::npos), ToUtf8(shown));
  if (point != String::npos) {
    const size_t decimals = shown.size() - point - 1;
    FUZZ_CHECK(decimals >= min_fraction && decimals <= max_fraction, ToUtf8(shown));
  }
  // Grouping puts a "," before every third digit from the right, nowhere else.
  const String whole = shown.substr(negative, point - negative);
  String digits = whole;
  std::erase(digits, u',');
  FUZZ_CHECK(std::all_of(digits.begin(), digits.end(), IsDigit), ToUtf8(shown));
  const size_t commas = grouped && !digits.empty() ? (digits.size() - 1) / 3 : 0;
  FUZZ_CHECK(whole.size() == digits.size() + commas, ToUtf8(shown));
  // What is shown reads back as the number to the pattern's decimals.
  if (std::none_of(shown.begin(), shown.end(), IsDigit)) return;
  double read = 0;
  FUZZ_CHECK(TryParseNumber(shown, read) || std::fabs(number) > 1e307, ToUtf8(shown));
  const double half_step = std::pow(10.0, -static_cast<double>(max_fraction)) / 2;
  if (std::fabs(number) < 1e15 && max_fraction < 15) {
    FUZZ_CHECK(std::fabs(read - number) <= half_step + std::fabs(number) * 1e-14 + 1e-300,
               ToUtf8(shown));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::ByteReader bytes(data, size);
  // Double, String, Long, Integer, Boolean, Date, Null, Empty.
  constexpr uint8_t kKinds[] = {6, 9, 4, 3, 7, 8, 2, 1};
  const Variant value = bytes.Value(kKinds[bytes.Byte() % 8]);
  const String pattern = bytes.Text();
  const auto shown = Shown(value, pattern);
  double number = 0;
  if (!shown) return 0;
  if (value.IsNull()) {
    FUZZ_CHECK(shown->empty(), "Null shows as nothing");
  } else if (value.IsString() && !TryParseNumber(value.AsString(), number)) {
    FUZZ_CHECK(*shown == value.AsString(), "a text that is no number shows as itself");
  } else {
    number = ToDouble(value);
    CheckShownNumber(number, pattern, *shown);
    // The number's own text shows the same: showing works on 15 digits.
    const auto from_text = Shown(Variant(DoubleToString(number)), pattern);
    FUZZ_CHECK(from_text ? *from_text == *shown : std::fabs(number) > 1.79769313486231e308,
               ToUtf8(*shown));
  }
  return 0;
}
