// Faults of the database under a working object: files that are missing, not
// databases, cut short or locked, tables dropped and connections released
// between calls. Each call answers with an error carrying a number (or, for
// the members that trap failures, their default), nothing hangs, and the same
// object answers the next call once the fault is gone.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "db/Driver.h"
#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "reliability/Bounded.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

std::string Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void Write(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// The number of the error `call` fails with; 0 when it answers.
template <typename F>
int32_t FailureNumber(F&& call) {
  try {
    call();
    return 0;
  } catch (const Error& e) {
    return e.number();
  }
}

class Faults : public ::testing::Test {
 protected:
  // The object answers from the demo company again: the fault left nothing
  // behind in it.
  void ExpectServesAgain(const std::shared_ptr<KitDatabase>& db) {
    pub_.DBIA(db);
    EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");
    EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"刨花板 18mm");
    EXPECT_EQ(pub_.CheckInv(u"010101"), u"010101");
  }

  // A database member, a trapping member and a member without database all
  // behave as the fault allows: the first fails with `number`, the second
  // answers its default, the third answers as ever.
  void ExpectFailsWith(int32_t number) {
    EXPECT_KAVRIN_ERROR(pub_.GetAccInfo(u"AA", u"cGoodClass"), number);
    EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"010101"), number);
    EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");
    EXPECT_EQ(pub_.InvCodeToUnitPrice(u"010101"), 0.0);
    EXPECT_EQ(pub_.FormatNum(1234.5), u"1,234.50");
  }

  testing::SuiteDb suite_{/*demo=*/true};
  testing::TempDir dir_;
  clsPub pub_;
};

TEST_F(Faults, FilesThatCannotBeOpenedFailAtOnceAndAreNeverCreated) {
  const std::string missing = dir_.path() + "/missing.db";
  const std::string note = dir_.path() + "/note.db";
  Write(note, std::string(4096, 'x'));
  for (const std::string& path : {missing, note, dir_.path()}) {
    SCOPED_TRACE(path);
    try {
      KitDatabase::Open(u"sqlite:" + FromUtf8(path));
      ADD_FAILURE() << "opened";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), errors::kProviderFailure);
      EXPECT_FALSE(e.description().empty());
    }
    EXPECT_KAVRIN_ERROR(dao::Database::Open(FromUtf8(path)), errors::kProviderFailure);
  }
  EXPECT_FALSE(fs::exists(missing)) << "a read-only open never creates the file";
  EXPECT_EQ(Contents(note), std::string(4096, 'x'));
  try {
    KitDatabase::Open(FromUtf8(missing));
  } catch (const Error& e) {
    EXPECT_NE(ToUtf8(e.description()).find(missing), std::string::npos) << e.what();
  }
  try {
    KitDatabase::Open(FromUtf8(note));
  } catch (const Error& e) {
    EXPECT_EQ(e.description(), u"file is not a database");
  }
  // The object that was to get the connection keeps serving with another.
  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, AnEmptyFileIsADatabaseWithoutTables) {
  const std::string empty = dir_.path() + "/empty.db";
  Write(empty, "");
  pub_.DBIA(KitDatabase::Open(FromUtf8(empty)));
  ExpectFailsWith(errors::kProviderNoTable);
  try {
    pub_.GetAccInfo(u"AA", u"cGoodClass");
  } catch (const Error& e) {
    EXPECT_EQ(e.description(), u"no such table: AccInformation");
  }
  EXPECT_EQ(fs::file_size(empty), 0u);
  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, ADatabaseCutShortIsRefusedWhenOpened) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a SQLite file cut short";
  const std::string whole = Contents(suite_.path());
  ASSERT_GT(whole.size(), 8192u);
  const std::string cut = dir_.path() + "/cut.db";
  // Inside the header, after the first page, in the middle, one page short.
  for (const size_t size : {size_t{100}, size_t{4096}, whole.size() / 2, whole.size() - 4096}) {
    SCOPED_TRACE(size);
    Write(cut, whole.substr(0, size));
    try {
      pub_.DBIA(KitDatabase::Open(FromUtf8(cut)));
      ADD_FAILURE() << "opened";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), errors::kProviderFailure);
      EXPECT_EQ(e.description(), u"database disk image is malformed");
    }
    EXPECT_EQ(fs::file_size(cut), size);
  }
  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, ADamagedPageFailsTheReadsThatReachItAndNoOthers) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a damaged page of a SQLite file";
  // Zero the first page of the Inventory table in a copy.
  const std::string copy = dir_.path() + "/damaged.db";
  std::string bytes = Contents(suite_.path());
  auto setup = db::OpenForSetup(suite_.ConnectionString());
  auto root = setup->Query(u"SELECT rootpage FROM sqlite_schema WHERE name = 'Inventory'");
  ASSERT_TRUE(root->Next());
  auto page_size = setup->Query(u"PRAGMA page_size");
  ASSERT_TRUE(page_size->Next());
  const auto size = static_cast<size_t>(ToLong(page_size->Value(0)));
  const auto page = static_cast<size_t>(ToLong(root->Value(0)));
  bytes.replace((page - 1) * size, size, std::string(size, '\0'));
  Write(copy, bytes);

  pub_.DBIA(KitDatabase::Open(FromUtf8(copy)));
  try {
    pub_.CheckInv(u"010101");
    ADD_FAILURE() << "read the damaged page";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderFailure);
    EXPECT_EQ(e.description(), u"database disk image is malformed");
  }
  EXPECT_KAVRIN_ERROR(pub_.InvIsBatch(u"010101"), errors::kProviderFailure);
  EXPECT_EQ(pub_.InvCodeToUnit(u"010101"), u"");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223") << "other tables still answer";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"01", 3), u"01");
  EXPECT_EQ(Contents(copy), bytes);
  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, AFileCutUnderAnOpenConnectionFailsUntilItIsWhole) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a SQLite file cut under an open connection";
  const std::string copy = dir_.path() + "/copy.db";
  const std::string whole = Contents(suite_.path());
  Write(copy, whole);
  auto db = KitDatabase::Open(FromUtf8(copy));
  pub_.DBIA(db);
  ASSERT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");

  fs::resize_file(copy, 4096);
  EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"010101"), errors::kProviderFailure);
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");

  Write(copy, whole);
  ExpectServesAgain(db);
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
  const auto start = std::chrono::steady_clock::now();
  const int32_t number = testing::Bounded(
      [&] { return FailureNumber([&] { pub_.GetAccInfo(u"AA", u"cGoodClass"); }); }, 20s);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(number, errors::kProviderTimeout);
  EXPECT_GE(waited, 1900ms);
  EXPECT_LT(waited, 10s);
  // A trapping member waits as long and answers its default.
  EXPECT_EQ(testing::Bounded([&] { return pub_.WhCodeToDep(u"01"); }, 20s), u"");
  try {
    pub_.CheckInv(u"010101");
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderTimeout);
    EXPECT_EQ(e.description(), u"database is locked");
  }

  writer->ExecuteScript(u"ROLLBACK");
  ExpectServesAgain(db);
}

TEST_F(Faults, ATableDroppedWhileTheObjectHoldsItsRecordSet) {
  auto db = suite_.Open();
  pub_.DBIA(db);
  // The archive check leaves its record set over Inventory open in the object.
  ASSERT_EQ(pub_.CheckInv(u"010101"), u"010101");
  ASSERT_EQ(pub_.CheckDirNoGrade(u"01", 3), u"01");

  suite_.Exec(
      "DROP TABLE Inventory; DROP INDEX IF EXISTS IX_Warehouse_cDepCode;"
      " ALTER TABLE Warehouse DROP COLUMN cDepCode");
  EXPECT_KAVRIN_ERROR(pub_.CheckInv(u"010101"), errors::kProviderNoTable);
  EXPECT_KAVRIN_ERROR(pub_.InvIsBatch(u"010101"), errors::kProviderNoTable);
  EXPECT_EQ(pub_.InvCodeToUnit(u"010101"), u"");
  EXPECT_EQ(pub_.WhCodeToDep(u"01"), u"") << "the column is gone: the trapped default";
  EXPECT_KAVRIN_ERROR(pub_.DepCode2WhCode(u"01"), errors::kProviderSyntax);
  EXPECT_EQ(pub_.CheckDirNoGrade(u"01", 3), u"01") << "the other archives still answer";
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");
}

TEST_F(Faults, AConnectionReleasedBetweenCalls) {
  auto db = suite_.Open();
  pub_.DBIA(db);
  ASSERT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");

  // The host lets go of its own reference: the object's keeps the connection.
  db.reset();
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");

  // DBIA emptied: the next call creates an unconnected kit object.
  pub_.DBIA(nullptr);
  EXPECT_KAVRIN_ERROR(pub_.GetAccInfo(u"AA", u"cGoodClass"), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(pub_.FromTo(u"cInvCode", u"010101", u"cInvName", u"Inventory"),
                      errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(pub_.CheckWareDep(), errors::kNoConnection);
  EXPECT_EQ(pub_.CodeToName(u"010101", 0), u"");
  pub_.init(FromUtf8(suite_.path()), u"password");
  EXPECT_FALSE(pub_.DBIA()->IsConnected()) << "init opens nothing";

  // Late binding empties it the same way.
  Variant nothing = Variant::Nothing();
  pub_.Invoke(u"DBIA", InvokeKind::PropertyPutRef, std::span<Variant>(&nothing, 1));
  EXPECT_KAVRIN_ERROR(pub_.CurPeriod(), errors::kNoConnection);

  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, AFileDeletedUnderAnOpenConnection) {
  if (testing::OnPostgres()) GTEST_SKIP() << "about a SQLite file deleted under an open connection";
  const std::string copy = dir_.path() + "/copy.db";
  Write(copy, Contents(suite_.path()));
  auto db = KitDatabase::Open(FromUtf8(copy));
  pub_.DBIA(db);
  ASSERT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");

  // The open connection reads the file it opened, as long as it stays open;
  // a new one finds nothing at the path, and creates nothing there.
  fs::remove(copy);
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"223");
  EXPECT_EQ(pub_.CheckInv(u"010101"), u"010101");
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(FromUtf8(copy)), errors::kProviderFailure);
  EXPECT_FALSE(fs::exists(copy));

  // Another file put in its place is not read by the old connection.
  Write(copy, "not a database");
  EXPECT_EQ(pub_.CheckInv(u"010101"), u"010101");
  ExpectServesAgain(suite_.Open());
}

TEST_F(Faults, ADesktopDatabaseClosedOrGoneIsNeverAFailedCall) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "the desktop database is always a SQLite file of the test's own";
  const std::string copy = dir_.path() + "/desk.db";
  Write(copy, Contents(suite_.path()));
  auto desk = dao::Database::Open(FromUtf8(copy));
  EXPECT_TRUE(pub_.ExistTableQueryDAO(desk, u"Inventory"));
  EXPECT_FALSE(pub_.ExistTableQueryDAO(desk, u"NoSuchTable"));
  fs::remove(copy);
  EXPECT_TRUE(pub_.ExistTableQueryDAO(desk, u"Inventory"));
  desk->Close();
  // Closed: every lookup fails with 3420, which the probe reads as "present".
  EXPECT_KAVRIN_ERROR(desk->TableDefs(u"Inventory"), dao::kObjectInvalid);
  EXPECT_TRUE(pub_.ExistTableQueryDAO(desk, u"NoSuchTable"));
  EXPECT_TRUE(pub_.ExistTableQueryDAO(nullptr, u"Inventory"));
}

}  // namespace
}  // namespace kavrin
