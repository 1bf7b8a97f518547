// Texts typed into entry fields reach the SQL unescaped, by design. Whatever
// they hold (stacked statements, UNION, comments, ATTACH, pragmas, extension
// loading, overlong or binary texts, quotes), the suite's database file stays
// byte for byte as it was and no journal, log or other file appears beside
// it: the connection only ever runs one statement that reads.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <thread>

#include "db/sqlite/SqliteConnection.h"
#include "kavrin/Dao.h"
#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "reliability/Bounded.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<std::string> Listing(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

String Replace(String text, StringView from, StringView to) {
  for (size_t at = text.find(from); at != String::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

constexpr char16_t kNulThenStacked[] = u"01\0'; DROP TABLE Inventory; --";

// The payloads; {dir} stands for the directory of the suite's file, so that
// a file an ATTACH or VACUUM INTO would make lands where the test looks.
std::vector<String> Payloads(const std::string& dir) {
  const std::vector<String> templates = {
      // quotes and comments
      u"'", u"''", u"'''", u"\\'", u"\"", u"`", u"[", u"01'--", u"01'/*", u"*/", u"/* x */ 01",
      u"' OR '1'='1", u"' OR 1=1 --", u"01' AND '1'='2", u"\u2019 OR 1=1 --",
      // stacked statements that write
      u"01'; DROP TABLE Inventory; --", u"01'; DELETE FROM Inventory; --",
      u"01'; UPDATE Inventory SET cInvName='x'; --",
      u"01'; INSERT INTO Inventory (cInvCode) VALUES ('x'); --",
      u"01'; REPLACE INTO Inventory (cInvCode) VALUES ('x'); --", u"01'; CREATE TABLE evil(x); --",
      u"01'; CREATE TEMP TABLE t(x); INSERT INTO t VALUES (1); --",
      u"Inventory; DROP TABLE Inventory", u"Inventory; DELETE FROM Inventory",
      u"Inventory WHERE 1=0; UPDATE AccInformation SET cValue='9'", u"'; SELECT 1; --",
      // UNION
      u"x' UNION SELECT sql FROM sqlite_schema --",
      u"x' UNION SELECT name FROM sqlite_master WHERE '1'='1", u"' UNION SELECT 1,2,3 --",
      u"cInvName FROM Inventory UNION SELECT sql FROM sqlite_schema --",
      // other files
      u"'; ATTACH DATABASE '{dir}/evil.sqlite' AS evil; --",
      u"Inventory; ATTACH '{dir}/evil.sqlite' AS evil",
      u"' AND (SELECT 1 FROM pragma_database_list) --", u"'; DETACH main; --",
      u"'; VACUUM INTO '{dir}/copy.sqlite'; --", u"'; VACUUM; --", u"'; REINDEX; --",
      u"'; ANALYZE; --",
      // pragmas and transactions
      u"'; PRAGMA journal_mode=WAL; --", u"'; PRAGMA user_version=42; --",
      u"'; PRAGMA writable_schema=1; --", u"'; PRAGMA query_only=0; --",
      u"'; PRAGMA locking_mode=EXCLUSIVE; --",
      u"' AND (SELECT count(*) FROM pragma_journal_mode('wal'))>0 --", u"'; BEGIN EXCLUSIVE; --",
      u"'; COMMIT; --", u"'; SAVEPOINT s; --",
      // functions that reach outside
      u"' AND load_extension('/lib/x86_64-linux-gnu/libc.so.6') --",
      u"'; SELECT load_extension('libevil'); --",
      u"' AND fts3_tokenizer('simple', x'4141414141414141') IS NULL --",
      u"' AND writefile('{dir}/w', 'x') --", u"' AND readfile('/etc/passwd') --",
      u"'; INSERT INTO sqlite_dbpage(pgno, data) VALUES (1, zeroblob(4096)); --",
      u"' AND (SELECT count(*) FROM sqlite_dbpage) --",
      // an endless statement
      u"x' UNION SELECT x FROM (WITH RECURSIVE r(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM r) "
      u"SELECT x FROM r) --",
      // overlong and binary
      String(100000, u'\''), String(1 << 20, u'A'), String(3, u'\0') + u"01",
      String(kNulThenStacked, std::size(kNulThenStacked) - 1), u"\xD800'\xDFFF", u"\uFEFF01",
      u"\u3000\uFF10\uFF11", u"\x1A\x7F\x1B[2J", u"01\r\n; DELETE FROM Inventory"};
  std::vector<String> payloads;
  for (const auto& t : templates)
    payloads.push_back(Replace(t, u"{dir}", FromUtf8(dir)));
  return payloads;
}

// A member with plausible values in all its arguments; the payload goes in
// place of one text argument at a time.
struct Shape {
  const char16_t* member;
  std::vector<Variant> args;
};

// A host without forms whose message boxes are not shown anywhere: the
// payloads make InvCodeIsTorF report missing items by the thousand.
class QuietHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    throw Error::Runtime(errors::kObjectNotSet);
  }
  int32_t MsgBox(StringView, int32_t, StringView) override { return vbOK; }
};

class NeverWritten : public ::testing::Test {
 protected:
  NeverWritten() {
    // The desktop database the probe reads is a file of its own, watched too.
    desk_suite_.Exec("CREATE VIEW Stock AS SELECT cInvCode FROM Inventory");
  }
  ~NeverWritten() override { SetUiHost(previous_host_); }

  std::vector<Shape> Shapes() {
    const Variant desk(
        std::shared_ptr<Dispatch>(dao::Database::Open(FromUtf8(desk_suite_.path()))));
    const Variant no = Variant(false);
    const Variant yes = Variant(true);
    std::vector<Shape> shapes = {
        {u"CheckDirGrade", {u"0101", no, int16_t{7}, no}},
        {u"CheckDirGrade", {u"0101", yes, int16_t{12}, yes}},
        {u"CheckInv", {u"010101", no}},
        {u"CheckInv", {u"010101", yes}},
        {u"CheckDirNoGrade", {u"V001", int16_t{1}, yes}},
        {u"GetAccInfo", {u"AA", u"cGoodClass"}},
        {u"init", {u"x.db", u"secret"}},
        {u"WhCodeToValueStyle", {u"01"}},
        {u"FromTo", {u"cInvCode", u"010101", u"cInvName", u"Inventory"}},
        {u"SepCode", {u"01 Steel", Variant::Missing()}},
        {u"ReFormat", {u"1,234.5"}},
        {u"InvCodeToUnit", {u"010101"}},
        {u"WhCodeToDep", {u"01"}},
        {u"InvCodeToUnitPrice", {u"010101"}},
        {u"InvCodeToClass", {u"010101"}},
        {u"InvIsBatch", {u"010101"}},
        {u"DepCodeToValueStyle", {u"01"}},
        {u"ExistTableQueryDAO", {desk, u"Inventory", no}},
        {u"ExistTableQueryDAO", {desk, u"Stock", yes}},
        {u"StartAccMonth", {u"IA"}},
        {u"CheckAssDep", {u"0201", no}},
        {u"CheckAccDep", {u"03", yes}},
        {u"InvCodeIsTorF", {u"010101", u"bTrack"}},
        {u"DepCode2WhCode", {u"0201"}},
        {u"FillCboCK", {Variant::Nothing(), u"01"}},
        {u"GetMonthState", {u"IA", int16_t{3}}},
        {u"GetInvUseFreeNew", {u"010101", Variant(Array(0, VarType::Variant, 10))}},
        {u"GetInvUseFree", {u"010101", no, no}},
        {u"GetInvDifHead", {u"01", u"0101", u"010101", u"", u""}},
        {u"GetCodeLen", {u"0101"}},
    };
    // Every archive CodeToName knows, and one it does not.
    for (int32_t style = 0; style <= 16; ++style)
      shapes.push_back({u"CodeToName", {u"01", Variant(style)}});
    return shapes;
  }

  testing::SuiteDb suite_{/*demo=*/true};
  testing::SuiteDb desk_suite_{/*demo=*/true};
  std::shared_ptr<UiHost> previous_host_ = SetUiHost(std::make_shared<QuietHost>());
};

TEST_F(NeverWritten, NoPayloadInAnyTextArgumentOfAnyMemberWritesTheDatabase) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "compares the bytes of the SQLite file; the server session is read-only";
  const std::string before = Contents(suite_.path());
  const std::string desk_before = Contents(desk_suite_.path());
  const auto listing = Listing(fs::path(suite_.path()).parent_path().string());
  const auto payloads = Payloads(fs::path(suite_.path()).parent_path().string());
  ASSERT_GE(payloads.size(), 50u);

  clsPub pub;
  pub.DBIA(suite_.Open());
  size_t calls = 0;
  size_t arguments = 0;
  std::map<int32_t, size_t> failures;
  std::set<std::u16string> members;
  for (const Shape& shape : Shapes()) {
    const auto params =
        std::find_if(clsPub::Members().begin(), clsPub::Members().end(), [&](const MemberInfo& m) {
          return shape.member == String(m.name);
        })->parameters;
    for (size_t i = 0; i < shape.args.size(); ++i) {
      if (params[i].type != VarType::String) continue;
      ++arguments;
      members.insert(shape.member);
      for (const String& payload : payloads) {
        std::vector<Variant> args = shape.args;
        args[i] = payload;
        ++calls;
        try {
          pub.Call(shape.member, args);
        } catch (const Error& e) {
          ++failures[e.number()];
        }
      }
    }
  }
  // Every text argument of every member that takes one.
  size_t text_members = 0;
  for (const MemberInfo& m : clsPub::Members()) {
    text_members += std::any_of(m.parameters.begin(), m.parameters.end(),
                                [](const ParameterInfo& p) { return p.type == VarType::String; });
  }
  EXPECT_EQ(members.size(), text_members);

  // The kit itself, handed each payload as the whole source text.
  auto db = suite_.Open();
  for (const String& payload : payloads) {
    ++calls;
    try {
      db->OpenQuery(payload);
    } catch (const Error& e) {
      ++failures[e.number()];
    }
  }

  EXPECT_EQ(Contents(suite_.path()), before);
  EXPECT_EQ(Contents(desk_suite_.path()), desk_before);
  EXPECT_EQ(Listing(fs::path(suite_.path()).parent_path().string()), listing);
  EXPECT_EQ(Listing(fs::path(desk_suite_.path()).parent_path().string()),
            std::vector<std::string>{"suite.db"});
  for (const auto& [number, count] : failures) {
    EXPECT_TRUE(number == errors::kProviderSyntax || number == errors::kProviderNoTable ||
                number == errors::kTypeMismatch || number == errors::kNoCurrentRecord ||
                number == errors::kSubscriptOutOfRange || number == errors::kObjectNotSet ||
                number == errors::kInvalidUseOfNull || number == errors::kItemNotFound)
        << number << " x" << count;
  }
  std::cout << "[ figures  ] " << payloads.size() << " payloads x " << arguments
            << " text arguments of " << members.size()
            << " members, and the kit's source: " << calls << " calls\n";
}

TEST_F(NeverWritten, StackedStatementsAreRefusedBeforeAnythingRuns) {
  auto db = suite_.Open();
  for (const char16_t* text :
       {u"SELECT 1; DELETE FROM Inventory", u"SELECT 1; SELECT 2", u"SELECT 1;SELECT 2;",
        u"SELECT 1 /* a */ ; -- b\n UPDATE Inventory SET cInvName = 'x'"}) {
    try {
      db->OpenQuery(text);
      ADD_FAILURE() << ToUtf8(text);
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), errors::kProviderSyntax);
      EXPECT_EQ(e.description(), u"The command text holds more than one statement.");
    }
  }
  // Blanks, comments and semicolons after the one statement are not another.
  EXPECT_EQ(db->OpenQuery(u"SELECT 1; ; -- done\n/* end */")->RecordCount(), 1);

  clsPub pub;
  pub.DBIA(db);
  EXPECT_KAVRIN_ERROR(
      pub.FromTo(u"cInvCode", u"010101", u"cInvName", u"Inventory; DELETE FROM Inventory"),
      errors::kProviderSyntax);
  EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"x'; DELETE FROM AccInformation; --"),
                      errors::kProviderSyntax);
  EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
  EXPECT_EQ(db->OpenQuery(u"Inventory")->RecordCount(), 6);
}

TEST_F(NeverWritten, WritesPragmasAttachAndExtensionsAreRefusedByTheEngine) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about SQLite's pragmas, ATTACH and extensions";
  auto db = suite_.Open();
  const std::string dir = fs::path(suite_.path()).parent_path().string();
  const std::map<std::u16string, std::u16string> refused = {
      {u"DELETE FROM Inventory", u"not authorized"},
      {u"CREATE TABLE x(y)", u"not authorized"},
      {u"PRAGMA user_version = 5", u"not authorized"},
      {u"PRAGMA journal_mode = WAL", u"not authorized"},
      {u"PRAGMA query_only = 0", u"not authorized"},
      {u"ATTACH '" + FromUtf8(dir) + u"/x.sqlite' AS x", u"not authorized"},
      // Not a matter for the authorizer, but it writes: the engine says so.
      {u"VACUUM INTO '" + FromUtf8(dir) + u"/y.sqlite'", u"Only statements that read are allowed."},
      {u"SELECT load_extension('libsqlite3.so.0')", u"not authorized"},
      {u"SELECT x FROM (WITH RECURSIVE r(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM r) "
       u"SELECT x FROM r)",
       u"not authorized"},
  };
  for (const auto& [text, message] : refused) {
    try {
      db->OpenQuery(text);
      ADD_FAILURE() << ToUtf8(text);
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), errors::kProviderSyntax) << ToUtf8(text);
      EXPECT_EQ(e.description(), message) << ToUtf8(text);
    }
  }
  EXPECT_EQ(Listing(dir), std::vector<std::string>{"suite.db"});
}

TEST_F(NeverWritten, ADatabaseInWalModeIsReadWithoutWritingIt) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a SQLite file in WAL mode";
  // Another program may switch the suite's file to write-ahead logging.
  // Reading it then needs the shared index beside it, which the first reader
  // makes, with an empty log; the database file itself is never written.
  suite_.Exec("PRAGMA journal_mode=WAL");
  const std::string dir = fs::path(suite_.path()).parent_path().string();
  ASSERT_EQ(Listing(dir), std::vector<std::string>{"suite.db"});
  const std::string before = Contents(suite_.path());
  {
    clsPub pub;
    pub.DBIA(suite_.Open());
    EXPECT_EQ(pub.CheckInv(u"010101"), u"010101");
    EXPECT_KAVRIN_ERROR(
        pub.FromTo(u"cInvCode", u"1", u"cInvName", u"Inventory; DELETE FROM Inventory"),
        errors::kProviderSyntax);
    EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
  }
  EXPECT_EQ(Contents(suite_.path()), before);
  EXPECT_EQ(Listing(dir), (std::vector<std::string>{"suite.db", "suite.db-shm", "suite.db-wal"}));
  EXPECT_EQ(fs::file_size(suite_.path() + "-wal"), 0u);
}

// Texts that make a statement without end: a recursive common table
// expression is refused outright, and any other statement is interrupted
// once it runs past its time, leaving the connection ready for the next.
TEST(EndlessStatements, AreRefusedOrInterruptedAndTheNextOneRuns) {
  if (testing::OnPostgres())
    GTEST_SKIP()
        << "SQLite's own interruption; the server's query timeout is tested with the server";
  testing::SuiteDb suite(/*demo=*/true);
  clsPub pub;
  pub.DBIA(suite.Open());
  const auto refused_at = std::chrono::steady_clock::now();
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode",
                                 u"x' UNION SELECT x FROM (WITH RECURSIVE r(x) AS (SELECT 1 UNION "
                                 u"ALL SELECT x+1 FROM r) SELECT x FROM r) --",
                                 u"cInvName", u"Inventory"),
                      errors::kProviderSyntax);
  EXPECT_LT(std::chrono::steady_clock::now() - refused_at, 2s);
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");

  // A cross join typed into a table name counts 6^12 rows: hours of work.
  auto connection = db::sqlite::OpenFile(suite.path(), /*writable=*/false, 500ms);
  String joined = u"SELECT count(*) FROM Inventory a0";
  for (int i = 1; i < 12; ++i)
    joined += u", Inventory a" + FromUtf8(std::to_string(i));
  const auto start = std::chrono::steady_clock::now();
  try {
    testing::Bounded([&] { return connection->Query(joined)->Next(); }, 20s);
    ADD_FAILURE() << "ran to the end";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderTimeout);
    EXPECT_EQ(e.description(), u"Query timeout expired");
  }
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, 500ms);
  EXPECT_LT(took, 10s);
  auto cursor = connection->Query(u"SELECT count(*) FROM Inventory");
  ASSERT_TRUE(cursor->Next());
  EXPECT_EQ(cursor->Value(0), Variant(int32_t{6}));
  EXPECT_FALSE(cursor->Next());

  // A statement's time starts when it starts running: one prepared, then read
  // after the limit has passed, still gets its whole time, and so does a
  // table read by key long after the last statement.
  auto late = connection->Query(
      u"SELECT count(*) FROM Inventory a, Inventory b, Inventory c, "
      u"Inventory d");
  std::this_thread::sleep_for(600ms);
  ASSERT_TRUE(late->Next());
  EXPECT_EQ(late->Value(0), Variant(int32_t{1296}));
  std::this_thread::sleep_for(600ms);
  auto table = connection->OpenTable(u"Inventory");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->Count(), 6);
}

}  // namespace
}  // namespace kavrin
