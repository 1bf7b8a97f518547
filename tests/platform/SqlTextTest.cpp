// Telling the statements of a text apart as the server will: the guard that
// keeps a caller's value from smuggling in a second statement.
#include <gtest/gtest.h>

#include "db/SqlText.h"

namespace kavrin::db {
namespace {

const SqlQuoting kPostgres{false, true, true};
const SqlQuoting kSqlServer{true, false, false};

size_t Count(StringView sql, const SqlQuoting& quoting) {
  return SplitStatements(sql, quoting).size();
}

TEST(SqlText, StatementsSplitOnlyAtSemicolonsOutsideQuotesAndComments) {
  const SqlQuoting plain;
  EXPECT_EQ(SplitStatements(u"  select 1 ;; -- done\n", plain),
            std::vector<StringView>{u"select 1"});
  EXPECT_EQ(SplitStatements(u"select ';' ; select \"a;b\"", plain),
            (std::vector<StringView>{u"select ';'", u"select \"a;b\""}));
  EXPECT_EQ(Count(u"select 'it''s; fine'", plain), 1u);
  EXPECT_EQ(Count(u"select 1 /* a; /* nested; */ still; */", plain), 1u);
  EXPECT_EQ(Count(u"select 1 -- ; drop table x", plain), 1u);
  EXPECT_EQ(Count(u"select 1 -- comment\n; drop table x", plain), 2u);
  EXPECT_EQ(Count(u"/* only */ -- comments\n ;", plain), 0u);
  EXPECT_EQ(Count(u"", plain), 0u);
  EXPECT_EQ(Count(u"select 'unterminated; drop table x", plain), 1u)
      << "the server rejects it whole";
}

TEST(SqlText, ServerQuotingNeverHidesASecondStatement) {
  // A value with a quote in it, spliced into the text unescaped.
  EXPECT_EQ(Count(u"select * from code where ccode='x'; delete from code --'", kPostgres), 2u);
  // PostgreSQL: the backslash escapes a quote only in E'' strings, and a
  // dollar-quoted text may hold quotes of either kind.
  EXPECT_EQ(Count(u"select E'\\'' ; delete from code; --'", kPostgres), 2u);
  EXPECT_EQ(Count(u"select E'\\\\'; delete from code", kPostgres), 2u);
  EXPECT_EQ(Count(u"select 'a\\'; delete from code; --'", kPostgres), 2u)
      << "outside E'' a backslash is just a character";
  EXPECT_EQ(Count(u"select $$ ' $$; delete from code; -- '", kPostgres), 2u);
  EXPECT_EQ(Count(u"select $tag$ $$;' $tag$", kPostgres), 1u);
  EXPECT_EQ(Count(u"select $1; select a$b", kPostgres), 2u) << "not every $ opens a quote";
  EXPECT_EQ(Count(u"select e'x'; select 1", kPostgres), 2u);
  EXPECT_EQ(Count(u"select name'x'; select 1", kPostgres), 2u);
  // SQL Server: [names] may hold quotes and semicolons; PostgreSQL has no
  // such names, so a bracket there hides nothing.
  EXPECT_EQ(Count(u"select [it's; a name] from code", kSqlServer), 1u);
  EXPECT_EQ(Count(u"select [a']; delete from code --'", kSqlServer), 2u);
  EXPECT_EQ(Count(u"select x[1;2] from code", kPostgres), 2u);
}

TEST(SqlText, LeadingWordAndWords) {
  const SqlQuoting plain;
  EXPECT_EQ(LeadingWord(u"  /* why */ ((SELECT 1))", plain), u"SELECT");
  EXPECT_EQ(LeadingWord(u"-- note\nDelete from x", plain), u"Delete");
  EXPECT_EQ(LeadingWord(u"'select'", plain), u"");
  EXPECT_EQ(Words(u"SELECT MAX(iPeriod) AS CurMonth FROM \"Quoted\" WHERE x='Lit' -- Note", plain),
            (std::vector<StringView>{u"SELECT", u"MAX", u"iPeriod", u"AS", u"CurMonth", u"FROM",
                                     u"WHERE", u"x"}));
}

}  // namespace
}  // namespace kavrin::db
