// Reading an SQL text as a server reads it, far enough to tell its
// statements apart and to see its words: literals, quoted names and comments
// are skipped by the rules of the server the text goes to.
//
// When in doubt the reading errs towards seeing more: a text is never taken
// for one statement where the server could see two.
#pragma once

#include <vector>

#include "kavrin/String.h"

namespace kavrin::db {

// The quoting rules of a server beyond the common ones ('text' with doubled
// quotes, "names", -- and nested /* */ comments).
struct SqlQuoting {
  bool brackets = false;        // [names] (SQL Server)
  bool dollar_quotes = false;   // $$text$$ and $tag$text$tag$ (PostgreSQL)
  bool escape_strings = false;  // E'it\'s' (PostgreSQL)
};

// The statements of `sql`, split at semicolons outside literals, quoted names
// and comments; a piece holding nothing but blanks and comments is dropped.
std::vector<StringView> SplitStatements(StringView sql, const SqlQuoting& quoting);

// The first word of a statement outside comments and opening parentheses
// ("select" for "(select 1)"), empty when it does not start with a word.
StringView LeadingWord(StringView statement, const SqlQuoting& quoting);

// Every unquoted word of `sql` (names and keywords) in the order written.
std::vector<StringView> Words(StringView sql, const SqlQuoting& quoting);

}  // namespace kavrin::db
