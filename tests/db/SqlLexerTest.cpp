// The SQL lexer under each server's quoting rules: exact tokens for the
// tricky cases, the statements a text splits into, the kit's own
// expressions (bare table names) and the shapes of statements read with it.
#include "db/SqlLexer.h"

#include <variant>

#include <gtest/gtest.h>

#include "db/StatementShape.h"
#include "kavrin/Convert.h"
#include "platform/State.h"

namespace kavrin {
namespace {

using db::SqlProfile;

// The tokens of `sql`, each as a mark of its kind and its text, joined by
// '|'; literals are marked by their kind, and an unterminated token ends in
// '!'. Blanks are "_".
std::string Tokens(StringView sql, const SqlProfile& profile) {
  std::string out;
  for (const db::SqlToken& token : db::Tokenize(sql, profile)) {
    static constexpr const char* kKinds[] = {"_", "c", "w", "q", "", "9", "p", "o", ";"};
    static constexpr const char* kLiterals[] = {"", "t", "n", "e", "d", "x"};
    if (!out.empty()) out += '|';
    if (token.kind == db::TokenKind::Blanks) {
      out += '_';
      continue;
    }
    out += token.kind == db::TokenKind::Literal ? kLiterals[static_cast<int>(token.literal)]
                                                : kKinds[static_cast<int>(token.kind)];
    out += ToUtf8(token.In(sql));
    if (!token.terminated) out += '!';
  }
  return out;
}

struct Case {
  const char16_t* sql;
  const char* tokens;
};

void ExpectTokens(const SqlProfile& profile, std::initializer_list<Case> cases) {
  for (const auto& [sql, tokens] : cases)
    EXPECT_EQ(Tokens(sql, profile), tokens) << ToUtf8(sql);
}

TEST(SqlLexer, ReadsEachServersQuotingExactly) {
  // SQLite: three kinds of quoted names, brackets without doubling, flat
  // comments, blobs, named parameters; N'' is a word and a text.
  ExpectTokens(db::kSqliteProfile, {{u"'it''s' \"a\"\"b\" `c`", "t'it''s'|_|q\"a\"\"b\"|_|q`c`"},
                                    {u"[a]]b]", "q[a]|o]|wb|o]"},
                                    {u"/* a /* b */ c */", "c/* a /* b */|_|wc|_|o*|o/"},
                                    {u"N'x' x'0A' a$b#c", "wN|t'x'|_|xx'0A'|_|wa$b|o#|wc"},
                                    {u"$a @b :c ?1 ? @", "p$a|_|p@b|_|p:c|_|p?1|_|p?|_|o@"},
                                    {u"1.5e3 .5 1e+3 1e 0x1F 1abc 1.2.3",
                                     "91.5e3|_|9.5|_|91e+3|_|91e|_|90x1F|_|91abc|_|91.2|9.3"},
                                    {u"a<>-5;--x\n;\v", "wa|o<>|o-|95|;;|c--x|_|;;|o\v"},
                                    {u"'abc", "t'abc!"},
                                    {u"[x", "q[x!"},
                                    {u"/* x", "c/* x!"}});
  // SQL Server: ]] doubled in [names], nested comments, N'', @ and # words.
  ExpectTokens(db::kSqlServerProfile, {{u"[a]]b] N'x' n'y'", "q[a]]b]|_|nN'x'|_|nn'y'"},
                                       {u"/* a /* b */ c */;", "c/* a /* b */ c */|;;"},
                                       {u"@v #t a$b#c `x`", "w@v|_|w#t|_|wa$b#c|_|o`|wx|o`"},
                                       {u"/* /* */", "c/* /* */!"}});
  // PostgreSQL: E'' with backslash escapes, dollar quotes with and without a
  // tag, $1 parameters, no [names].
  ExpectTokens(db::kPostgresProfile,
               {{u"E'\\'' e'\\\\'x", "eE'\\''|_|ee'\\\\'|wx"},
                {u"$$a;'$$ $tag$x$$y$tag$", "d$$a;'$$|_|d$tag$x$$y$tag$"},
                {u"$1 a$b x[1] $ $t", "p$1|_|wa$b|_|wx|o[|91|o]|_|o$|_|o$|wt"},
                {u"$q$ a;", "d$q$ a;!"},
                {u"'a\\'; x", "t'a\\'|;;|_|wx"}});
  // The kit's expressions: no comments, no "names", $ and # in words.
  ExpectTokens(db::kKitProfile, {{u"[a b]='x'--\"y\"", "q[a b]|o=|t'x'|o-|o-|o\"|wy|o\""},
                                 {u"#t$ 1d3", "w#t$|_|91d3"}});
}

TEST(SqlLexer, LiteralsAndNamesKnowTheirValues) {
  const auto value = [](StringView sql, const SqlProfile& profile) {
    const auto tokens = db::Tokenize(sql, profile);
    return ToUtf8(db::Unquoted(sql, tokens.at(0))) + "/" + ToUtf8(tokens.at(0).ValueIn(sql));
  };
  EXPECT_EQ(value(u"'it''s'", db::kSqliteProfile), "it's/it''s");
  EXPECT_EQ(value(u"N'a''b'", db::kSqlServerProfile), "a'b/a''b");
  EXPECT_EQ(value(u"[a]]b]", db::kSqlServerProfile), "a]b/a]]b");
  EXPECT_EQ(value(u"\"a\"\"b\"", db::kPostgresProfile), "a\"b/a\"\"b");
  EXPECT_EQ(value(u"$t$a$$b$t$", db::kPostgresProfile), "a$$b/a$$b");
  EXPECT_EQ(value(u"E'\\''", db::kPostgresProfile), "\\'/\\'");
  EXPECT_EQ(value(u"'open", db::kSqliteProfile), "open/open");
}

TEST(SqlLexer, StatementsSplitOnlyAtSemicolonsOutsideQuotesAndComments) {
  using db::SplitStatements;
  EXPECT_EQ(SplitStatements(u"  select ';' ;; select \"a;b\" -- done\n", db::kStandardProfile),
            (std::vector<StringView>{u"select ';'", u"select \"a;b\""}));
  auto expect = [](size_t statements, const SqlProfile& profile,
                   std::initializer_list<const char16_t*> texts) {
    for (const char16_t* text : texts)
      EXPECT_EQ(SplitStatements(text, profile).size(), statements) << ToUtf8(text);
  };
  expect(0, db::kStandardProfile, {u"", u"/* only */ -- comments\n ;"});
  expect(1, db::kStandardProfile,  // an unterminated quote the server rejects whole
         {u"select 'it''s; fine'", u"select 1 /* a; /* nested; */ still; */",
          u"select 1 -- ; drop table x", u"select 'unterminated; drop table x"});
  expect(2, db::kStandardProfile, {u"select 1 -- comment\n; drop table x"});
  // SQLite does not nest comments, and closes a [name] at its first bracket.
  expect(2, db::kSqliteProfile,
         {u"select 1 /* a /* b */ ; select 2 */", u"select [a]]; select 1 --]"});
  expect(1, db::kSqliteProfile, {u"select `a;b`, [c;d], x'3B' /* ; */"});
  // PostgreSQL: the backslash escapes a quote only in E'' strings, and a
  // dollar-quoted text may hold quotes of either kind; not every $ opens one;
  // there are no [names], so a bracket hides nothing.
  expect(1, db::kPostgresProfile, {u"select $tag$ $$;' $tag$"});
  expect(2, db::kPostgresProfile,
         {u"select E'\\'' ; delete from code; --'", u"select E'\\\\'; delete from code",
          u"select 'a\\'; delete from code; --'", u"select $$ ' $$; delete from code; -- '",
          u"select $1; select a$b", u"select e'x'; select 1", u"select name'x'; select 1",
          u"select x[1;2] from code"});
  // SQL Server: [names] may hold quotes and semicolons.
  expect(1, db::kSqlServerProfile, {u"select [it's; a name] from code"});
  expect(2, db::kSqlServerProfile, {u"select [a']; delete from code --'"});
  EXPECT_EQ(db::LeadingWord(u"  /* why */ ((SELECT 1))", db::kStandardProfile), u"SELECT");
  EXPECT_EQ(db::LeadingWord(u"-- note\nDelete from x", db::kStandardProfile), u"Delete");
  EXPECT_EQ(db::LeadingWord(u"'select'", db::kStandardProfile), u"");
  EXPECT_EQ(
      db::Words(u"SELECT MAX(i) AS m FROM \"Quoted\" WHERE x='Lit' -- Note", db::kStandardProfile),
      (std::vector<StringView>{u"SELECT", u"MAX", u"i", u"AS", u"m", u"FROM", u"WHERE", u"x"}));
}

// A source the kit opens whole is a table name, dotted or not; anything else
// is a statement.
TEST(SqlLexer, BareTableNamesAreWordsJoinedByDots) {
  for (const char16_t* name : {u"Inventory", u"dbo.Inventory", u"db..Code", u"#tmp", u"仓库$1"})
    EXPECT_TRUE(detail::IsBareTableName(name)) << ToUtf8(name);
  for (const char16_t* text :
       {u"", u"select 1", u"1abc", u"a.", u"[Inventory]", u"a;b", u"a-b", u"Inventory ", u"a.5"})
    EXPECT_FALSE(detail::IsBareTableName(text)) << ToUtf8(text);
}

// A statement's shape: which literals become bound values, and the texts
// that keep no shape because a bound value could answer differently or the
// text cannot be read with certainty.
TEST(StatementShape, BindsOnlyComparedValuesAndRefusesWhatItCannotRead) {
  struct ShapeCase {
    const char16_t* sql;
    const char* shape;  // "" when the text has no shape
    const char* values;
  };
  const ShapeCase cases[] = {
      {u"select a from t where x='it''s' and y=12", "select a from t where x=? and y=?",
       "'it's'|12|"},
      {u"select 'a', 1 from t where x = (select max(y) from u where z >= 3) order by 1",
       "select 'a', 1 from t where x = (select max(y) from u where z >= ?) order by 1", "3|"},
      {u"select a from t where substring(x, 2, 3) = 'ab' and len(y)<>0",
       "select a from t where substring(x, ?, ?) = ? and len(y)<>?", "2|3|'ab'|0|"},
      {u"select a from t join u on u.k=1 left join v on v.k = '2'",
       "select a from t join u on u.k=? left join v on v.k = ?", "1|'2'|"},
      {u"select a from t where x = 1.5 or x = -1 or x = 12abc or x <=> 1 or x = 1e5",
       "select a from t where x = 1.5 or x = -1 or x = 12abc or x <=> 1 or x = 1e5", ""},
      {u"select a from t where x = 'a' || 'b' and y like 'c%'",
       "select a from t where x = 'a' || 'b' and y like 'c%'", ""},
      {u"select a from t where x = 1 -- note", "", ""},
      {u"select a from t where x = 1 /* note */", "", ""},
      {u"select a from t where x = 1; delete from t", "", ""},
      {u"select a from t where x = ?", "", ""},
      {u"select a from t where x = :k", "", ""},
      {u"select a from t where x = 'open", "", ""},
      {u"select a from t where x = X'0A'", "", ""},
      {u"select a from t where x = 'a' 'b'", "", ""},
      {u"select a from `t` where x = 1", "", ""},
      {u"select a$b from t where x = 1", "", ""},
      {u"select a from t where (x = 1", "", ""},
      {u"update t set x = 1 where y = 2", "", ""},
  };
  for (const ShapeCase& c : cases) {
    const auto shape = db::ShapeOf(c.sql, db::kSqliteProfile);
    if (!*c.shape) {
      EXPECT_FALSE(shape) << ToUtf8(c.sql);
      continue;
    }
    ASSERT_TRUE(shape) << ToUtf8(c.sql);
    std::string values;
    for (const auto& value : shape->values) {
      values += std::holds_alternative<String>(value) ? "'" + ToUtf8(std::get<String>(value)) + "'"
                                                      : std::to_string(std::get<int64_t>(value));
      values += '|';
    }
    EXPECT_EQ(ToUtf8(shape->text), c.shape) << ToUtf8(c.sql);
    EXPECT_EQ(values, c.values) << ToUtf8(c.sql);
  }
  // Quoting only some servers know keeps no shape on the others.
  EXPECT_FALSE(db::ShapeOf(u"select a from t where x = N'a'", db::kSqlServerProfile));
  EXPECT_FALSE(db::ShapeOf(u"select a from t where x = E'a\\'", db::kPostgresProfile));
  EXPECT_FALSE(db::ShapeOf(u"select a from t where x = $$a$$", db::kPostgresProfile));
  EXPECT_FALSE(db::ShapeOf(u"select a from [t]]u] where x = 1", db::kSqlServerProfile));
}

}  // namespace
}  // namespace kavrin
