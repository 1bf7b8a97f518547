#include "kavrin/OleDate.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <span>
#include <string>
#include <vector>

#include "runtime/DateText.h"

namespace kavrin {
namespace {

namespace chr = std::chrono;

constexpr chr::sys_days kEpoch = chr::year{1899} / chr::December / 30;
constexpr int kSecondsPerDay = 86400;
// 1 January 100 00:00 and 31 December 9999 23:59:59.
constexpr double kFirstDate = -657434.0 - 86399.0 / kSecondsPerDay;
constexpr double kLastDate = 2958465.0 + 86399.0 / kSecondsPerDay;

bool Within(int value, int low, int high) {
  return value >= low && value <= high;
}

void AppendNumber(String& out, int value, size_t width) {
  const std::string digits = std::to_string(value);
  if (digits.size() < width) out.append(width - digits.size(), u'0');
  out.append(digits.begin(), digits.end());
}

// ---- reading dates ----

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}
bool IsLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t';
}
bool IsSeparator(char16_t c) {
  return IsBlank(c) || c == u'/' || c == u'-' || c == u',';
}

// A piece of a date text: a number, a word, a colon, or a run of separators
// (blanks with at most one '/', '-' or ',').
struct Token {
  enum class Kind { kNumber, kWord, kColon, kSeparator };
  Kind kind = Kind::kNumber;
  int value = 0;
  int digits = 0;
  StringView word;
  bool blank = true;  // a separator of blanks only
  bool comma = false;

  static Token Of(Kind k) {
    Token t;
    t.kind = k;
    return t;
  }
  bool Is(Kind k) const { return kind == k; }
  bool IsWord(StringView w) const { return kind == Kind::kWord && EqualsNoCase(word, w); }
};
using Kind = Token::Kind;

// A number of at most four digits starting at `i`; advances `i` past it.
std::optional<Token> ReadNumberToken(StringView text, size_t& i) {
  Token t;
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    if (++t.digits > 4) return std::nullopt;
    t.value = t.value * 10 + (text[i] - u'0');
  }
  return t;
}

std::optional<Token> ReadSeparatorToken(StringView text, size_t& i) {
  Token t = Token::Of(Kind::kSeparator);
  int marks = 0;
  for (; i < text.size() && IsSeparator(text[i]); ++i) {
    if (IsBlank(text[i])) continue;
    t.blank = false;
    if (text[i] == u',') t.comma = true;
    ++marks;
  }
  if (marks > 1) return std::nullopt;
  return t;
}

// Splits a date text into tokens; nullopt for a character that no date form
// uses, such as '.', or an over-long number.
std::optional<std::vector<Token>> Tokenize(StringView text) {
  std::vector<Token> tokens;
  size_t i = 0;
  while (i < text.size()) {
    const char16_t c = text[i];
    std::optional<Token> token;
    if (IsDigit(c)) {
      token = ReadNumberToken(text, i);
    } else if (IsSeparator(c)) {
      token = ReadSeparatorToken(text, i);
    } else if (c == u':') {
      token = Token::Of(Kind::kColon);
      ++i;
    } else if (IsLetter(c)) {
      const size_t start = i;
      while (i < text.size() && IsLetter(text[i]))
        ++i;
      token = Token::Of(Kind::kWord);
      token->word = text.substr(start, i - start);
    }
    if (!token) return std::nullopt;
    tokens.push_back(*token);
  }
  return tokens;
}

struct TimeOfDay {
  int hour = 0, minute = 0, second = 0;
};

// The time of "h[:mm[:ss]]" (numbers and the colons between them); AM/PM
// applies to hours up to 12 only, so "13:00 AM" is 13:00.
std::optional<TimeOfDay> MakeTime(std::span<const Token> tokens, std::optional<bool> pm) {
  std::array<int, 3> fields{};
  size_t count = 0;
  for (const Token& t : tokens) {
    if (!t.Is(Kind::kNumber)) continue;
    if (t.digits > 2) return std::nullopt;
    fields[count++] = t.value;
  }
  TimeOfDay time{fields[0], fields[1], fields[2]};
  if (pm && time.hour <= 12) time.hour = time.hour % 12 + (*pm ? 12 : 0);
  if (time.hour > 23 || time.minute > 59 || time.second > 59) return std::nullopt;
  return time;
}

// A date text split into its day part and its time of day.
struct DayAndTime {
  std::span<const Token> day;
  std::optional<TimeOfDay> time;
};

// Finds the time at the end of `tokens`: "h:mm[:ss]" or "h" with AM/PM, after
// the day part and a blank or the ISO 'T'. nullopt for a malformed time.
std::optional<DayAndTime> SplitTime(std::span<const Token> tokens) {
  size_t end = tokens.size();
  std::optional<bool> pm;
  if (end > 0 && (tokens[end - 1].IsWord(u"AM") || tokens[end - 1].IsWord(u"PM"))) {
    pm = tokens[end - 1].IsWord(u"PM");
    --end;
    if (end > 0 && tokens[end - 1].Is(Kind::kSeparator) && tokens[end - 1].blank) --end;
  }
  // Numbers joined by colons, read from the back.
  size_t start = end;
  int fields = 0;
  while (start > 0 && tokens[start - 1].Is(Kind::kNumber) && fields < 3) {
    --start;
    ++fields;
    if (start == 0 || !tokens[start - 1].Is(Kind::kColon)) break;
    --start;
  }
  if (start < end && tokens[start].Is(Kind::kColon)) return std::nullopt;
  if (fields == 0 && pm) return std::nullopt;
  if (fields <= 1 && !pm) return DayAndTime{tokens, std::nullopt};
  const auto time = MakeTime(tokens.subspan(start, end - start), pm);
  if (!time) return std::nullopt;
  if (start == 0) return DayAndTime{{}, time};
  const Token& gap = tokens[start - 1];
  if (!(gap.Is(Kind::kSeparator) && gap.blank) && !gap.IsWord(u"T")) return std::nullopt;
  return DayAndTime{tokens.first(start - 1), time};
}

constexpr std::array<std::u16string_view, 12> kMonthNames = {
    u"January", u"February", u"March",     u"April",   u"May",      u"June",
    u"July",    u"August",   u"September", u"October", u"November", u"December"};

// 1..12 for an English month name, full or in three letters; 0 otherwise.
int MonthNumber(StringView word) {
  for (size_t i = 0; i < kMonthNames.size(); ++i) {
    if (EqualsNoCase(word, kMonthNames[i]) || EqualsNoCase(word, kMonthNames[i].substr(0, 3))) {
      return static_cast<int>(i) + 1;
    }
  }
  return 0;
}

// A field of the day part: a number as typed or a month name.
struct DayField {
  int value = 0;
  int digits = 0;
  bool month_name = false;
};

// The fields of a day part: numbers and month names between separators. A
// comma is allowed only in the forms with a month name.
std::optional<std::vector<DayField>> DayFields(std::span<const Token> tokens) {
  if (tokens.size() % 2 == 0) return std::nullopt;
  std::vector<DayField> fields;
  bool comma = false;
  for (size_t i = 0; i < tokens.size(); ++i) {
    const Token& t = tokens[i];
    if (i % 2 == 1) {
      if (!t.Is(Kind::kSeparator)) return std::nullopt;
      comma = comma || t.comma;
    } else if (t.Is(Kind::kNumber)) {
      fields.push_back({t.value, t.digits, false});
    } else if (const int month = t.Is(Kind::kWord) ? MonthNumber(t.word) : 0) {
      fields.push_back({month, 0, true});
    } else {
      return std::nullopt;
    }
  }
  const auto names =
      std::count_if(fields.begin(), fields.end(), [](auto& f) { return f.month_name; });
  if (names > 1 || (comma && names == 0)) return std::nullopt;
  return fields;
}

int CurrentYear() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local.tm_year + 1900;
}

// Two-digit years: 00-29 are 2000-2029, 30-99 are 1930-1999.
int FullYear(const DayField& year) {
  if (year.digits > 2) return year.value;
  return year.value + (year.value < 30 ? 2000 : 1900);
}

// Assigns the fields of a day part to year, month and day. Numbers alone are
// year first when the first has three or four digits, else month/day/year,
// swapped to day/month when the month cannot be one; a month name takes the
// month and leaves day and year in typed order. Two fields mean this year.
std::optional<DateParts> ReadDay(std::span<const Token> tokens) {
  const auto fields = DayFields(tokens);
  if (!fields || fields->size() < 2 || fields->size() > 3) return std::nullopt;
  const auto& f = *fields;
  const bool three = f.size() == 3;
  DayField year = three ? f[2] : DayField{CurrentYear(), 4, false};
  DayField month = f[0];
  DayField day = f[1];
  if (f[1].month_name) {
    std::swap(month, day);
    if (three && f[0].digits > 2) std::swap(day, year);
  } else if (three && f[2].month_name) {
    return std::nullopt;
  } else if (!f[0].month_name && three && f[0].digits > 2) {
    year = f[0];
    month = f[1];
    day = f[2];
  } else if (!f[0].month_name && month.value > 12) {
    std::swap(month, day);
  }
  if (month.digits > 2 || day.digits > 2 || day.month_name || year.month_name) return std::nullopt;
  return DateParts{.year = FullYear(year), .month = month.value, .day = day.value};
}

}  // namespace

String IsoDay(const DateParts& parts) {
  String text;
  AppendNumber(text, parts.year, 4);
  text += u'-';
  AppendNumber(text, parts.month, 2);
  text += u'-';
  AppendNumber(text, parts.day, 2);
  return text;
}

String IsoTime(const DateParts& parts) {
  String text;
  AppendNumber(text, parts.hour, 2);
  text += u':';
  AppendNumber(text, parts.minute, 2);
  text += u':';
  AppendNumber(text, parts.second, 2);
  return text;
}

std::optional<Date> MakeDate(const DateParts& parts) {
  if (!Within(parts.year, 100, 9999) || !Within(parts.month, 1, 12) || !Within(parts.day, 1, 31) ||
      !Within(parts.hour, 0, 23) || !Within(parts.minute, 0, 59) || !Within(parts.second, 0, 59)) {
    return std::nullopt;
  }
  const chr::year_month_day ymd{chr::year{parts.year},
                                chr::month{static_cast<unsigned>(parts.month)},
                                chr::day{static_cast<unsigned>(parts.day)}};
  if (!ymd.ok()) return std::nullopt;
  const double days = static_cast<double>((chr::sys_days{ymd} - kEpoch).count());
  const double time =
      (parts.hour * 3600 + parts.minute * 60 + parts.second) / static_cast<double>(kSecondsPerDay);
  return Date{days < 0 ? days - time : days + time};
}

DateParts SplitDate(Date date) {
  const double v = std::isnan(date.value) ? 0.0 : std::clamp(date.value, kFirstDate, kLastDate);
  const double whole = std::trunc(v);
  auto seconds = static_cast<int>(std::llround(std::fabs(v - whole) * kSecondsPerDay));
  chr::days days{static_cast<chr::days::rep>(whole)};
  if (seconds >= kSecondsPerDay) {
    // A time that rounds up to midnight is the start of the next day.
    seconds -= kSecondsPerDay;
    days += chr::days{1};
  }
  const chr::year_month_day ymd{kEpoch + days};
  return DateParts{.year = static_cast<int>(ymd.year()),
                   .month = static_cast<int>(static_cast<unsigned>(ymd.month())),
                   .day = static_cast<int>(static_cast<unsigned>(ymd.day())),
                   .hour = seconds / 3600,
                   .minute = seconds / 60 % 60,
                   .second = seconds % 60};
}

std::optional<Date> ParseDate(StringView text) {
  while (!text.empty() && IsBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back()))
    text.remove_suffix(1);
  const auto tokens = Tokenize(text);
  if (!tokens) return std::nullopt;
  const auto split = SplitTime(*tokens);
  if (!split) return std::nullopt;
  DateParts parts;
  if (!split->day.empty()) {
    const auto day = ReadDay(split->day);
    if (!day) return std::nullopt;
    parts = *day;
  } else if (!split->time) {
    return std::nullopt;
  }
  if (split->time) {
    parts.hour = split->time->hour;
    parts.minute = split->time->minute;
    parts.second = split->time->second;
  }
  return MakeDate(parts);
}

String FormatIsoDateTime(Date date) {
  const DateParts parts = SplitDate(date);
  return IsoDay(parts) + u'T' + IsoTime(parts);
}

}  // namespace kavrin
