// The criteria a kit record set's FindFirst reads: comparisons of a column
// with a literal, joined by AND, such as  cRdCode='01' AND bRdEnd=1.
#pragma once

#include <vector>

#include "db/Collation.h"
#include "db/Driver.h"
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

// Criteria read against the columns of a record set. A text is compared with
// a text column as the database compares that column (its collation, or the
// server's default); anything else compares as numbers, a bit being 1 or 0.
// A Null satisfies no comparison.
class BoundCriteria {
 public:
  // Throws 3077 for criteria it cannot read, 3070 for an unknown column.
  BoundCriteria(StringView criteria, const std::vector<db::ColumnInfo>& columns);

  // Whether a row satisfies every comparison, tried in order until one
  // fails; `value_of(column)` gives the row's value in a column, `row` holds
  // them all. Throws 3464
  // when a comparison needs a number and the row holds a text that is none.
  template <typename ValueOf>
  bool AcceptsValues(ValueOf&& value_of) const {
    for (const auto& b : bound_) {
      if (!Satisfies(value_of(b.column), b)) return false;
    }
    return true;
  }
  bool Accepts(const std::vector<Variant>& row) const {
    return AcceptsValues([&row](size_t column) -> const Variant& { return row[column]; });
  }

  // The leading comparisons that the engine makes exactly as Accepts
  // does: texts compared with character columns. A row they reject is one
  // that Accepts rejects without looking further, so the engine may skip it;
  // the rows they accept still go through Accepts.
  std::vector<db::TextCondition> EngineConditions() const;

 private:
  struct Bound {
    size_t column;
    db::Collation collation;
    String collation_name;  // the server collation the engine is asked to use
    bool text_column;
    Comparison comparison;
  };
  static bool Satisfies(const Variant& value, const Bound& bound);

  std::vector<Bound> bound_;
};

}  // namespace kavrin::detail
