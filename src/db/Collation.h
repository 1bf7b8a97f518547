// Text comparison as the suite's database server compares column values.
//
// Collation names follow the server's scheme: "_CI" ignores letter case
// (Unicode simple case folding), "_CS" respects it, "_BIN"/"_BIN2" compare
// code units; width is ignored unless the name says "_WS" (full-width Latin
// letters equal their ASCII forms). Trailing blanks never count: 'abc' equals
// 'abc  ' under every collation.
#pragma once

#include <optional>

#include "kavrin/String.h"

namespace kavrin::db {

struct Collation {
  bool ignore_case = true;
  bool ignore_width = true;

  // <0, 0, >0 as `a` sorts before, equal to or after `b`.
  int Compare(StringView a, StringView b) const;
  // A character as this collation compares it: narrowed and case-folded as
  // the collation says. Texts compare as the sequences of their characters'
  // keys, trailing blanks left out.
  char32_t Key(char32_t c) const;
  bool Equal(StringView a, StringView b) const { return Compare(a, b) == 0; }
};

// The collation a server collation name stands for, or nullopt when the name
// is not one ("Chinese_PRC_CI_AS", "SQL_Latin1_General_CP1_CI_AS",
// "Latin1_General_BIN2", any name with a _CI, _CS or _BIN part).
std::optional<Collation> CollationFromName(StringView name);

// The server's default: case-insensitive, width-insensitive.
inline constexpr Collation kDefaultCollation{};

// Length ignoring trailing blanks, as the server's len() counts.
size_t LengthIgnoringTrailingBlanks(StringView text);

}  // namespace kavrin::db
