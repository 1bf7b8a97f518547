// The server's SQL dialect on SQLite: the suite's statements run unchanged.
#pragma once

#include <string_view>

#include "kavrin/String.h"

struct sqlite3;

namespace kavrin::db::sqlite {

// Quotes the words RIGHT and LEFT where a "(" follows them (past blanks and
// comments) outside literals, quoted names and comments, so that RIGHT(cMonth,2) is a call and not
// the start of a join. Nothing else in the text changes.
String QuoteCallKeywords(StringView sql);

// The UTF-16 text SQLite gives for a text a UTF-8 database stores: the same
// as sqlite3_column_text16 answers, ill-formed sequences included, without
// SQLite's own copy.
String StoredTextAsUtf16(std::string_view utf8);

// Registers len(), left(), right() and substring() with the server's rules,
// and resolves server collation names (Chinese_PRC_CI_AS, ...) on demand.
// Returns an SQLite result code.
int RegisterDialect(sqlite3* db);

}  // namespace kavrin::db::sqlite
