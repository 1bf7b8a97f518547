// A statement's shape: its text with the literals that only stand for values
// in its conditions replaced by parameter marks (?), and the values of those
// literals in order. Drivers keep one compiled statement per shape and run it
// with the values bound, instead of compiling every text the kit sends.
//
// Only literals whose place makes a bound value answer exactly as the literal
// does are taken out: a text or whole number compared with "=", "<>", "<",
// ... in a WHERE, ON or HAVING clause (subqueries of those included), and the
// arguments of substring(), len(), left() and right() there. Literals in the
// select list, ORDER BY, GROUP BY, LIMIT and everywhere else stay in the
// shape. A text that cannot be read with certainty (a comment, a semicolon,
// a parameter mark of its own, an unterminated quote, anything unusual) has
// no shape and runs as it is.
#pragma once

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "db/SqlLexer.h"
#include "kavrin/String.h"

namespace kavrin::db {

struct StatementShape {
  String text;  // the statement with a ? for each value
  std::vector<std::variant<String, int64_t>> values;
  std::vector<size_t> marks;  // where each value's ? stands in `text`
};

// The shape of `sql`, a single SELECT read with the server's `quoting`, or
// nullopt when the text is not one that splits cleanly.
std::optional<StatementShape> ShapeOf(StringView sql, const SqlProfile& quoting);

}  // namespace kavrin::db
