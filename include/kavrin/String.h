// The component's text type and the conversions used at the edges.
//
// kavrin::String is a counted UTF-16 string, like the platform string the
// component was written against: lengths, positions, trimming and padding all
// count UTF-16 units. A null string and the empty string are the same value.
// UTF-8 appears only at the edges (command line, SQLite's UTF-8 API, stderr).
#pragma once

#include <string>
#include <string_view>

#include "kavrin/Export.h"

namespace kavrin {

using String = std::u16string;
using StringView = std::u16string_view;

// Converts UTF-8 to UTF-16. Malformed sequences become U+FFFD; never throws
// except std::bad_alloc.
KAVRIN_API String FromUtf8(std::string_view utf8);

// Converts UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
KAVRIN_API std::string ToUtf8(StringView text);

// Removes leading and trailing spaces (U+0020 only; tabs and other blanks stay).
KAVRIN_API String Trim(StringView text);

// True when the two names are equal ignoring ASCII letter case, the rule for
// member names in late binding and for column names in a record set.
KAVRIN_API bool EqualsNoCase(StringView a, StringView b);

}  // namespace kavrin
