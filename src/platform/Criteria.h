// The criteria a kit record set's FindFirst reads: comparisons of a column
// with a literal, joined by AND, such as  cRdCode='01' AND bRdEnd=1.
#pragma once

#include <vector>

#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::detail {

struct Comparison {
  String column;
  bool equal = true;  // "=" (true) or "<>" (false)
  Variant literal;    // a String, a Double or a Boolean
};

// Throws Error 3077 for a text that is not such criteria. A quote inside a
// text literal is written doubled ('O''Brien').
std::vector<Comparison> ParseCriteria(StringView criteria);

}  // namespace kavrin::detail
