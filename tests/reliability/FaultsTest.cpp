// Faults under a working object, and hostile texts typed into its fields.
// Files that are missing, not databases, cut short, damaged or locked, tables
// dropped, connections released between calls, statements without end: each
// call answers with an error carrying a number (or, for the members that trap
// failures, their default), nothing hangs, and the same object answers the
// next call once the fault is gone. Texts reach the SQL unescaped, by design;
// whatever they hold, the database file stays byte for byte as it was and no
// journal, log or other file appears beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <set>
#include <thread>

#include "db/sqlite/SqliteConnection.h"
#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "reliability/Payloads.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Files = std::vector<std::string>;

// The bytes of a file; nothing for a directory or a missing file.
std::string Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return fs::is_regular_file(path) ? std::string(std::istreambuf_iterator<char>(in), {}) : "";
}

void Write(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// The names in the directory of `path`.
Files Listing(const std::string& path) {
  Files names;
  for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path()))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Expects `call` to fail with `number`; answers the error's description.
template <typename F>
String Failure(F&& call, int32_t number) {
  try {
    call();
    ADD_FAILURE() << "no error " << number;
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), number) << e.what();
    return e.description();
  }
  return u"";
}

// Expects `call` to fail with `number` and `description` after `least` and
// well within 10 s. It runs on a thread of its own: when it has not come back
// after 20 s the run ends at once instead of holding the suite until the
// runner's own time limit (a thread stuck in a call cannot be taken back).
template <typename F>
void ExpectFailsAfter(std::chrono::milliseconds least, int32_t number, StringView description,
                      F&& call) {
  const auto start = std::chrono::steady_clock::now();
  auto result = std::async(std::launch::async, [&] { return Failure(call, number); });
  if (result.wait_for(20s) != std::future_status::ready) {
    std::fprintf(stderr, "a call did not come back within 20 s\n");
    std::abort();
  }
  EXPECT_EQ(result.get(), description);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, least);
  EXPECT_LT(took, 10s);
}

class Faults : public ::testing::Test {
 protected:
  // A copy of the demo company's file (its first `size` bytes), for one fault.
  std::string Copy(const std::string& name, size_t size = std::string::npos) {
    Write(dir_.path() + "/" + name, Contents(suite_.path()).substr(0, size));
    return dir_.path() + "/" + name;
  }

  // The object answers from the demo company again: the fault left nothing
  // behind in it.
  void ExpectServesAgain(std::shared_ptr<KitDatabase> db = nullptr) {
    pub_.DBIA(db ? db : suite_.Open());
    EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");
    EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"刨花板 18mm");
  }

  testing::SuiteDb suite_{/*demo=*/true};
  testing::TempDir dir_;
  clsPub pub_;
};

TEST_F(Faults, FilesThatAreNotWholeDatabasesAreRefusedAndLeftAlone) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about SQLite files";
  const std::string missing = dir_.path() + "/missing.db", note = dir_.path() + "/note.db";
  Write(note, std::string(4096, 'x'));
  std::vector<std::pair<std::string, std::string>> files = {
      {missing, missing}, {note, "file is not a database"}, {dir_.path(), ""}};
  // Cut inside the header, after the first page, in the middle, one page short.
  const size_t whole = fs::file_size(suite_.path());
  for (const size_t size : {size_t{100}, size_t{4096}, whole / 2, whole - 4096})
    files.emplace_back(Copy("cut" + std::to_string(size) + ".db", size),
                       "database disk image is malformed");
  for (const auto& [path, says] : files) {
    SCOPED_TRACE(path);
    const std::string bytes = Contents(path);
    const String bare = FromUtf8(path);
    for (const String& name : {u"sqlite:" + bare, bare}) {
      const String description =
          Failure([&] { KitDatabase::Open(name); }, errors::kProviderFailure);
      EXPECT_NE(ToUtf8(description).find(says), std::string::npos) << ToUtf8(description);
    }
    Failure([&] { dao::Database::Open(bare); }, errors::kProviderFailure);
    EXPECT_EQ(Contents(path), bytes);
  }
  EXPECT_FALSE(fs::exists(missing)) << "a read-only open never creates the file";

  // An empty file is a database without tables, and stays empty.
  const std::string empty = Copy("empty.db", 0);
  pub_.DBIA(KitDatabase::Open(FromUtf8(empty)));
  EXPECT_EQ(Failure([&] { pub_.GetAccInfo(u"AA", u"cGoodClass"); }, errors::kProviderNoTable),
            u"no such table: AccInformation");
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");
  EXPECT_EQ(fs::file_size(empty), 0u);
  ExpectServesAgain();
}

TEST_F(Faults, ADamagedPageFailsTheReadsThatReachItAndNoOthers) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a damaged page of a SQLite file";
  // Zero the first page of the Inventory table in a copy; the page size is a
  // big-endian number in bytes 16 and 17 of the header.
  auto root = db::OpenForSetup(suite_.ConnectionString())
                  ->Query(u"SELECT rootpage FROM sqlite_schema WHERE name = 'Inventory'");
  ASSERT_TRUE(root->Next());
  std::string bytes = Contents(suite_.path());
  const size_t size = (static_cast<uint8_t>(bytes[16]) << 8) | static_cast<uint8_t>(bytes[17]);
  bytes.replace((ToLong(root->Value(0)) - 1) * size, size, std::string(size, '\0'));
  const std::string damaged = dir_.path() + "/damaged.db";
  Write(damaged, bytes);

  pub_.DBIA(KitDatabase::Open(FromUtf8(damaged)));
  EXPECT_EQ(Failure([&] { pub_.CheckInv(u"010101"); }, errors::kProviderFailure),
            u"database disk image is malformed");
  EXPECT_EQ(pub_.InvCodeToUnit(u"010101"), u"");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223") << "other tables still answer";
  EXPECT_EQ(Contents(damaged), bytes);
  ExpectServesAgain();
}

TEST_F(Faults, AFileCutOrDeletedUnderAnOpenConnection) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about SQLite files changed under a connection";
  const std::string cut = Copy("cut.db"), gone = Copy("gone.db");
  auto db = KitDatabase::Open(FromUtf8(cut));
  ExpectServesAgain(db);
  fs::resize_file(cut, 4096);
  EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"010101"), errors::kProviderFailure, sources::kSqlite);
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");
  Write(cut, Contents(suite_.path()));
  ExpectServesAgain(db);

  // An open connection, and an open desktop database, read the file they
  // opened as long as they stay open, even once another file is put at the
  // path; a new one finds nothing there and creates nothing.
  ExpectServesAgain(db = KitDatabase::Open(FromUtf8(gone)));
  auto desk = dao::Database::Open(FromUtf8(gone));
  fs::remove(gone);
  EXPECT_EQ(pub_.CheckInv(u"010101"), u"010101");
  EXPECT_FALSE(pub_.ExistTableQueryDAO(desk, u"NoSuchTable"));
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(FromUtf8(gone)), errors::kProviderFailure,
                      sources::kSqlite);
  EXPECT_FALSE(fs::exists(gone));
  Write(gone, "not a database");
  ExpectServesAgain(db);
  EXPECT_TRUE(pub_.ExistTableQueryDAO(desk, u"Inventory"));
  // Closed, a desktop database fails every lookup with 3420, which the probe
  // reads as "present".
  desk->Close();
  EXPECT_TRUE(pub_.ExistTableQueryDAO(desk, u"NoSuchTable"));
}

TEST_F(Faults, AWriterHoldingTheLockMakesCallsWaitTwoSecondsThenFail) {
  if (testing::OnPostgres())
    GTEST_SKIP()
        << "about SQLite's file lock; the server's own timeouts are tested with the server";
  auto db = suite_.Open();
  pub_.DBIA(db);
  auto writer = db::OpenForSetup(suite_.ConnectionString());
  writer->ExecuteScript(u"BEGIN IMMEDIATE; UPDATE Inventory SET cInvName = 'pending'");
  // A writer that has not begun to commit leaves readers alone.
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"刨花板 18mm");

  writer->ExecuteScript(u"ROLLBACK; BEGIN EXCLUSIVE");
  ExpectFailsAfter(1900ms, errors::kProviderTimeout, u"database is locked",
                   [&] { pub_.GetAccInfo(u"AA", u"cGoodClass"); });
  // A trapping member waits as long and answers its default.
  EXPECT_EQ(pub_.WhCodeToDep(u"01"), u"");
  writer->ExecuteScript(u"ROLLBACK");
  ExpectServesAgain(db);
}

// The statements of one call share one read of the data, which ends with
// the call, even a failed one: a writer commits at once between calls, the
// next call reads what it wrote, and a caller's own BEGIN stays refused.
TEST_F(Faults, AWriterCommitsRightAfterEachCallAndTheNextCallSeesIt) {
  auto db = suite_.Open();
  pub_.DBIA(db);
  auto writer = db::OpenForSetup(suite_.ConnectionString());
  const auto write = [&](StringView name) {
    const auto start = std::chrono::steady_clock::now();
    // On SQLite the writer takes the file's lock, which a read still open
    // would make it wait for.
    const String update =
        u"UPDATE Inventory SET cInvName = '" + String(name) + u"' WHERE cInvCode = '010101'";
    writer->ExecuteScript(testing::OnPostgres() ? update
                                                : u"BEGIN EXCLUSIVE; " + update + u"; COMMIT");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s) << "a read outlived its call";
  };
  ASSERT_EQ(pub_.CheckDirNoGrade(u"010101", 0, true), u"刨花板 18mm");
  write(u"first");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"010101", 0, true), u"first");
  EXPECT_THROW(pub_.GetAccInfo(u"AA' AND nosuch = '1", u"cGoodClass"), Error);
  write(u"second");
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"second");
  write(u"third");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"010101", 0, true), u"third");
  for (StringView text : {u"BEGIN", u"COMMIT", u"ROLLBACK", u"END"})
    EXPECT_THROW(db->OpenQuery(text), Error) << ToUtf8(text);
}

TEST_F(Faults, ATableAndAColumnDroppedWhileTheObjectHoldsItsRecordSet) {
  pub_.DBIA(suite_.Open());
  // The archive check leaves its record set over Inventory open in the object.
  ASSERT_EQ(pub_.CheckInv(u"010101"), u"010101");
  ASSERT_EQ(pub_.CheckDirNoGrade(u"01", 3), u"01");
  suite_.Exec(
      "DROP TABLE Inventory; DROP INDEX IF EXISTS IX_Warehouse_cDepCode;"
      " ALTER TABLE Warehouse DROP COLUMN cDepCode");
  EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"010101"), errors::kProviderNoTable, testing::EngineSource());
  EXPECT_EQ(pub_.InvCodeToUnit(u"010101"), u"");
  EXPECT_EQ(pub_.WhCodeToDep(u"01"), u"") << "the column is gone: the trapped default";
  EXPECT_KAVRIN_ERROR(pub_.DepCode2WhCode(u"01"), errors::kProviderSyntax, testing::EngineSource());
  EXPECT_EQ(pub_.CheckDirNoGrade(u"01", 3), u"01") << "the other archives still answer";
}

TEST_F(Faults, AConnectionReleasedBetweenCalls) {
  auto db = suite_.Open();
  pub_.DBIA(db);
  // The host lets go of its own reference: the object's keeps the connection.
  db.reset();
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");
  // DBIA emptied, directly or by late binding: the next call creates an
  // unconnected kit object.
  pub_.DBIA(nullptr);
  EXPECT_KAVRIN_ERROR(pub_.CheckWareDep(), errors::kNoConnection, sources::kKitDatabase);
  ExpectServesAgain();
  Variant nothing = Variant::Nothing();
  pub_.Invoke(u"DBIA", InvokeKind::PropertyPutRef, std::span<Variant>(&nothing, 1));
  EXPECT_KAVRIN_ERROR(pub_.CurPeriod(), errors::kNoConnection, sources::kKitDatabase);
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");
  ExpectServesAgain();
}

// A statement is interrupted once it runs past its time, leaving the
// connection ready for the next. (A recursive common table expression is
// refused outright; the refusals are tested below.)
TEST(EndlessStatements, AreRefusedOrInterruptedAndTheNextOneRuns) {
  if (testing::OnPostgres())
    GTEST_SKIP()
        << "SQLite's own interruption; the server's query timeout is tested with the server";
  testing::SuiteDb suite(/*demo=*/true);

  // A cross join typed into a table name counts 6^12 rows: hours of work.
  auto connection = db::sqlite::OpenFile(suite.path(), /*writable=*/false, 500ms);
  String joined = u"SELECT count(*) FROM Inventory a0";
  for (int i = 1; i < 12; ++i)
    joined += u", Inventory a" + FromUtf8(std::to_string(i));
  ExpectFailsAfter(500ms, errors::kProviderTimeout, u"Query timeout expired",
                   [&] { connection->Query(joined)->Next(); });

  // A statement's time starts when it starts running: the next one, prepared
  // and then read after the limit has passed, still gets its whole time, and
  // so does a table read by key long after the last statement.
  auto late = connection->Query(u"SELECT count(*) FROM Inventory a, Inventory b, Inventory c");
  std::this_thread::sleep_for(600ms);
  ASSERT_TRUE(late->Next());
  EXPECT_EQ(late->Value(0), Variant(int32_t{216}));
  std::this_thread::sleep_for(600ms);
  auto table = connection->OpenTable(u"Inventory");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->Count(), 6);
}

using testing::kEndless;
using testing::Payloads;

// A member by name and its arguments.
using Shape = std::pair<const char16_t*, std::vector<Variant>>;

class NeverWritten : public ::testing::Test {
 protected:
  testing::SuiteDb suite_{/*demo=*/true};
  // Message boxes go nowhere: the payloads make InvCodeIsTorF report missing
  // items by the thousand.
  testing::ScopedUiHost ui_;
};

TEST_F(NeverWritten, NoPayloadInAnyTextArgumentOfAnyMemberWritesTheDatabase) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "compares the bytes of the SQLite file; the server session is read-only";
  // The desktop database the probe reads is the same file, opened apart.
  suite_.Exec("CREATE VIEW Stock AS SELECT cInvCode FROM Inventory");
  const std::string before = Contents(suite_.path());
  const auto payloads = Payloads(FromUtf8(fs::path(suite_.path()).parent_path().string()));
  ASSERT_GE(payloads.size(), 50u);

  // Each member with plausible values in all its arguments; the payload goes
  // in place of one text argument at a time.
  const Variant desk(std::shared_ptr<Dispatch>(dao::Database::Open(FromUtf8(suite_.path()))));
  const Variant no(false), yes(true),
      list(std::shared_ptr<Dispatch>(std::make_shared<testing::FakeList>()));
  std::vector<Shape> shapes = {
      Shape(u"CheckDirGrade", {u"0101", no, int16_t{7}, no}),
      Shape(u"CheckDirGrade", {u"0101", yes, int16_t{12}, yes}),
      Shape(u"CheckInv", {u"010101", no}),
      Shape(u"CheckInv", {u"010101", yes}),
      Shape(u"CheckDirNoGrade", {u"V001", int16_t{1}, yes}),
      Shape(u"GetAccInfo", {u"AA", u"cGoodClass"}),
      Shape(u"init", {u"x.db", u"secret"}),
      Shape(u"FromTo", {u"cInvCode", u"010101", u"cInvName", u"Inventory"}),
      Shape(u"ExistTableQueryDAO", {desk, u"Inventory", no}),
      Shape(u"ExistTableQueryDAO", {desk, u"Stock", yes}),
      Shape(u"CheckAssDep", {u"0201", no}),
      Shape(u"CheckAccDep", {u"03", yes}),
      Shape(u"InvCodeIsTorF", {u"010101", u"bTrack"}),
      Shape(u"FillCboCK", {list, u"01"}),
      Shape(u"GetMonthState", {u"IA", int16_t{3}}),
      Shape(u"GetInvUseFreeNew", {u"010101", Variant(Array(0, VarType::Variant, 10))}),
      Shape(u"GetInvUseFree", {u"010101", no, no}),
      Shape(u"GetInvDifHead", {u"01", u"0101", u"010101", u"", u""})};
  // Members whose one argument is the text.
  for (const char16_t* member :
       {u"WhCodeToValueStyle", u"SepCode", u"ReFormat", u"InvCodeToUnit", u"WhCodeToDep",
        u"InvCodeToUnitPrice", u"InvCodeToClass", u"InvIsBatch", u"DepCodeToValueStyle",
        u"StartAccMonth", u"DepCode2WhCode", u"GetCodeLen"})
    shapes.push_back(Shape(member, {u""}));
  // Every archive CodeToName knows, and one it does not.
  for (int32_t style = 0; style <= 16; ++style)
    shapes.push_back(Shape(u"CodeToName", {u"01", Variant(style)}));

  clsPub pub;
  pub.DBIA(suite_.Open());
  size_t calls = 0, arguments = 0;
  std::set<int32_t> failures;
  std::set<String> members;
  auto call = [&](auto&& run) {
    ++calls;
    try {
      run();
    } catch (const Error& e) {
      failures.insert(e.number());
    }
  };
  for (const auto& [member, args] : shapes) {
    const auto& info = *std::ranges::find(clsPub::Members(), String(member), &MemberInfo::name);
    for (size_t i = 0; i < args.size(); ++i) {
      if (info.parameters[i].type != VarType::String) continue;
      ++arguments;
      members.insert(member);
      for (const String& payload : payloads) {
        std::vector<Variant> given = args;
        given[i] = payload;
        call([&, member = member] { pub.Call(member, given); });
      }
    }
  }
  // Every member that takes a text.
  EXPECT_EQ(static_cast<ptrdiff_t>(members.size()),
            std::ranges::count_if(clsPub::Members(), [](const MemberInfo& m) {
              return std::ranges::count(m.parameters, VarType::String, &ParameterInfo::type) > 0;
            }));
  // The kit itself, handed each payload as the whole source text.
  auto db = suite_.Open();
  for (const String& payload : payloads)
    call([&] { db->OpenQuery(payload); });

  EXPECT_EQ(Contents(suite_.path()), before);
  EXPECT_EQ(Listing(suite_.path()), Files{"suite.db"});
  using namespace errors;
  const std::set<int32_t> expected = {kProviderSyntax,      kProviderNoTable, kTypeMismatch,
                                      kNoCurrentRecord,     kObjectNotSet,    kInvalidUseOfNull,
                                      kSubscriptOutOfRange, kItemNotFound};
  for (const int32_t number : failures)
    EXPECT_TRUE(expected.contains(number)) << number;
  std::cout << "[ figures  ] " << payloads.size() << " payloads x " << arguments
            << " text arguments of " << members.size()
            << " members, and the kit's source: " << calls << " calls\n";
}

// Stacked statements are refused before anything runs, on every engine; on
// SQLite the authorizer refuses writes, pragmas, ATTACH, extensions and
// recursive common table expressions, and the read-only check what it does
// not see.
TEST_F(NeverWritten, StackedStatementsAndWritesAreRefusedBeforeAnythingRuns) {
  auto db = suite_.Open();
  const String dir = FromUtf8(fs::path(suite_.path()).parent_path().string());
  std::vector<std::pair<String, std::vector<String>>> refused = {
      {u"The command text holds more than one statement.",
       {u"SELECT 1; SELECT 2", u"SELECT 1 /* a */ ; -- b\n UPDATE Inventory SET cInvName = 'x'"}}};
  if (!testing::OnPostgres()) {
    refused.push_back({u"not authorized",
                       {u"CREATE TABLE x(y)", u"PRAGMA query_only = 0",
                        u"ATTACH '" + dir + u"/x.sqlite' AS x", u"SELECT " + String(kEndless)}});
    refused.push_back(
        {u"Only statements that read are allowed.", {u"VACUUM INTO '" + dir + u"/y.sqlite'"}});
  }
  for (const auto& [message, texts] : refused) {
    for (const String& text : texts)
      EXPECT_EQ(Failure([&] { db->OpenQuery(text); }, errors::kProviderSyntax), message)
          << ToUtf8(text);
  }

  clsPub pub;
  pub.DBIA(db);
  EXPECT_KAVRIN_ERROR(
      pub.FromTo(u"cInvCode", u"010101", u"cInvName", u"Inventory; DELETE FROM Inventory"),
      errors::kProviderSyntax, testing::EngineSource());
  EXPECT_EQ(db->OpenQuery(u"Inventory")->RecordCount(), 6);
  if (!testing::OnPostgres()) {
    EXPECT_EQ(Listing(suite_.path()), Files{"suite.db"});
  }
}

TEST_F(NeverWritten, ADatabaseInWalModeIsReadWithoutWritingIt) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a SQLite file in WAL mode";
  // Another program may switch the suite's file to write-ahead logging.
  // Reading it then needs the shared index beside it, which the first reader
  // makes, with an empty log; the database file itself is never written.
  suite_.Exec("PRAGMA journal_mode=WAL");
  ASSERT_EQ(Listing(suite_.path()), Files{"suite.db"});
  const std::string before = Contents(suite_.path());
  {
    clsPub pub;
    pub.DBIA(suite_.Open());
    EXPECT_EQ(pub.CheckInv(u"010101"), u"010101");
    EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"x'; DELETE FROM AccInformation; --"),
                        errors::kProviderSyntax, sources::kSqlite);
  }
  EXPECT_EQ(Contents(suite_.path()), before);
  EXPECT_EQ(Listing(suite_.path()), (Files{"suite.db", "suite.db-shm", "suite.db-wal"}));
  EXPECT_EQ(fs::file_size(suite_.path() + "-wal"), 0u);
}

}  // namespace
}  // namespace kavrin
