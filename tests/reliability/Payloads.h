// Hostile texts for the members' text arguments and the kit's source: quotes
// and comments, stacked writes, pragmas, other files, overlong and binary
// texts, and expressions in a condition and a UNION.
#pragma once

#include <vector>

#include "kavrin/String.h"

namespace kavrin::testing {

// A column of numbers that never ends.
inline constexpr char16_t kEndless[] =
    u"x FROM (WITH RECURSIVE r(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM r) SELECT x FROM r)";

// The payloads. Statements go in stacked after a code whose quote they close
// and after a table name; expressions in a condition and in a UNION. A file
// an ATTACH, VACUUM INTO or writefile would make lands in `dir`, where the
// test looks.
inline std::vector<String> Payloads(const String& dir) {
  constexpr char16_t kNulThenStacked[] = u"01\0'; DROP TABLE Inventory; --";
  std::vector<String> payloads = {
      // quotes and comments
      u"'", u"''", u"'''", u"\\'", u"\"", u"`", u"[", u"01'--", u"01'/*", u"*/", u"/* x */ 01",
      u"' OR '1'='1", u"' OR 1=1 --", u"01' AND '1'='2", u"\u2019 OR 1=1 --",
      u"' UNION SELECT 1,2,3 --", u"x' UNION SELECT name FROM sqlite_master WHERE '1'='1",
      // overlong and binary
      String(100000, u'\''), String(1 << 20, u'A'), String(3, u'\0') + u"01",
      String(kNulThenStacked, std::size(kNulThenStacked) - 1), u"\xD800'\xDFFF", u"\uFEFF01",
      u"\u3000\uFF10\uFF11", u"\x1A\x7F\x1B[2J", u"01\r\n; DELETE FROM Inventory"};
  for (const String& statement : std::initializer_list<String>{
           // writes
           u"DROP TABLE Inventory", u"DELETE FROM Inventory", u"UPDATE Inventory SET cInvName='x'",
           u"INSERT INTO Inventory (cInvCode) VALUES ('x')",
           u"REPLACE INTO Inventory (cInvCode) VALUES ('x')", u"CREATE TABLE evil(x)",
           u"CREATE TEMP TABLE t(x); INSERT INTO t VALUES (1)",
           u"INSERT INTO sqlite_dbpage(pgno, data) VALUES (1, zeroblob(4096))",
           // other files
           u"ATTACH '" + dir + u"/evil.sqlite' AS evil", u"DETACH main", u"VACUUM", u"REINDEX",
           u"VACUUM INTO '" + dir + u"/copy.sqlite'", u"ANALYZE",
           u"SELECT load_extension('libevil')",
           // pragmas and transactions
           u"PRAGMA journal_mode=WAL", u"PRAGMA user_version=42", u"PRAGMA writable_schema=1",
           u"PRAGMA query_only=0", u"PRAGMA locking_mode=EXCLUSIVE", u"BEGIN EXCLUSIVE", u"COMMIT",
           u"SAVEPOINT s", u"SELECT 1"}) {
    payloads.push_back(u"01'; " + statement + u"; --");
    payloads.push_back(u"Inventory; " + statement);
  }
  for (const String& expression : std::initializer_list<String>{
           u"sql FROM sqlite_schema", u"1 FROM pragma_database_list",
           u"count(*) FROM pragma_journal_mode('wal')", u"count(*) FROM sqlite_dbpage",
           u"load_extension('/lib/x86_64-linux-gnu/libc.so.6')", u"readfile('/etc/passwd')",
           u"fts3_tokenizer('simple', x'4141414141414141')", u"writefile('" + dir + u"/w', 'x')",
           kEndless}) {
    payloads.push_back(u"' AND (SELECT " + expression + u") IS NULL --");
    payloads.push_back(u"x' UNION SELECT " + expression + u" --");
  }
  return payloads;
}

}  // namespace kavrin::testing
