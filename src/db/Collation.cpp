#include "db/Collation.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace kavrin::db {

namespace {

// Full-width ASCII forms (U+FF01..U+FF5E) compare as their ASCII letters.
UChar32 NarrowWidth(UChar32 c) {
  return (c >= 0xFF01 && c <= 0xFF5E) ? c - 0xFEE0 : c;
}

bool Contains(StringView haystack, StringView needle) {
  for (size_t i = 0; i + needle.size() <= haystack.size(); ++i) {
    if (EqualsNoCase(haystack.substr(i, needle.size()), needle)) return true;
  }
  return false;
}

}  // namespace

size_t LengthIgnoringTrailingBlanks(StringView text) {
  size_t n = text.size();
  while (n > 0 && text[n - 1] == u' ')
    --n;
  return n;
}

char32_t Collation::Key(char32_t c) const {
  UChar32 key = static_cast<UChar32>(c);
  if (ignore_width) key = NarrowWidth(key);
  if (ignore_case) key = u_foldCase(key, U_FOLD_CASE_DEFAULT);
  return static_cast<char32_t>(key);
}

int Collation::Compare(StringView a, StringView b) const {
  const auto* pa = reinterpret_cast<const UChar*>(a.data());
  const auto* pb = reinterpret_cast<const UChar*>(b.data());
  const auto na = static_cast<int32_t>(LengthIgnoringTrailingBlanks(a));
  const auto nb = static_cast<int32_t>(LengthIgnoringTrailingBlanks(b));
  int32_t ia = 0;
  int32_t ib = 0;
  while (ia < na && ib < nb) {
    UChar32 ca;
    UChar32 cb;
    U16_NEXT(pa, ia, na, ca);
    U16_NEXT(pb, ib, nb, cb);
    const char32_t ka = Key(static_cast<char32_t>(ca));
    const char32_t kb = Key(static_cast<char32_t>(cb));
    if (ka != kb) return ka < kb ? -1 : 1;
  }
  if (ia < na) return 1;
  if (ib < nb) return -1;
  return 0;
}

std::optional<Collation> CollationFromName(StringView name) {
  Collation collation;
  if (Contains(name, u"_BIN")) {
    collation.ignore_case = false;
    collation.ignore_width = false;
    return collation;
  }
  if (Contains(name, u"_CI")) {
    collation.ignore_case = true;
  } else if (Contains(name, u"_CS")) {
    collation.ignore_case = false;
  } else {
    return std::nullopt;
  }
  collation.ignore_width = !Contains(name, u"_WS");
  return collation;
}

}  // namespace kavrin::db
