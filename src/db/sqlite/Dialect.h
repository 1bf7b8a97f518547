// The server's SQL dialect on SQLite: the suite's statements run unchanged.
#pragma once

#include "kavrin/String.h"

struct sqlite3;

namespace kavrin::db::sqlite {

// Quotes RIGHT and LEFT where a "(" follows them outside string literals and
// comments, so that RIGHT(cMonth,2) is a call and not the start of a join.
// Nothing else in the text changes.
String QuoteCallKeywords(StringView sql);

// Registers len(), left(), right() and substring() with the server's rules,
// and resolves server collation names (Chinese_PRC_CI_AS, ...) on demand.
// Returns an SQLite result code.
int RegisterDialect(sqlite3* db);

}  // namespace kavrin::db::sqlite
