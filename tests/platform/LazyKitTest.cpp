// Record sets that read their rows only when asked answer exactly as record
// sets holding every row, and hold nothing in the engine between operations.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <random>
#include <sstream>

#include "db/sqlite/Dialect.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/clsPub.h"
#include "platform/State.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::SuiteDb;

std::string Text(const Variant& value) {
  if (value.IsNull()) return "Null";
  return std::to_string(static_cast<int>(value.type())) + ":" + ToUtf8(ToString(value));
}

// What an operation answered, or the number of the error it raised.
std::string Outcome(const std::function<std::string()>& operation) {
  try {
    return operation();
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
}

std::string CurrentRow(const KitRecordset& rs) {
  const ado::Fields fields = rs.Fields();
  std::string row;
  for (int32_t i = 0; i < fields.Count(); ++i)
    row += Text(fields(i).Value()) + "|";
  return row;
}

// Style rows with codes that repeat in another letter case, shared names,
// blanks at the end, Null names and end flags, and optionally a flag that
// holds a text, which a numeric comparison cannot read.
void FillStyles(const SuiteDb& suite, int rows, bool text_flag) {
  const char* names[] = {"'Purchase'", "'purchase'", "'Sale  '", "'Sale'", "NULL", "'Other'"};
  const char* flags[] = {"1", "0", "NULL", "1"};
  std::ostringstream sql;
  sql << "BEGIN;";
  for (int i = 0; i < rows; ++i) {
    const std::string code = i % 7 == 6 ? "c" + std::to_string(i - 3) : "C" + std::to_string(i);
    const std::string flag = text_flag && i == rows / 2 ? "'x'" : flags[i % 4];
    sql << "INSERT INTO Rd_Style (cRdCode, cRdName, bRdFlag, iRdGrade, bRdEnd) VALUES ('" << code
        << "', " << names[(i * 5) % 6] << ", " << i % 2 << ", " << i % 3 + 1 << ", " << flag
        << ");";
  }
  sql << "COMMIT;";
  suite.Exec(sql.str());
}

std::vector<String> CriteriaFor(int rows) {
  std::vector<String> criteria = {
      u"cRdName='PURCHASE'",
      u"cRdName='purchase' AND bRdEnd=1",
      u"cRdName='Sale' AND bRdEnd=1",
      u"cRdName='sale  '",
      u"cRdName='None'",
      u"cRdName<>'Purchase'",
      u"bRdEnd=1 AND cRdName='Sale'",
      u"bRdEnd=0",
      u"cRdCode='O'Brien'",
      u"cNoSuch='1'",
      u"iRdGrade=2 AND bRdEnd=1",
      u"cRdName='Other' AND bRdFlag=True",
  };
  for (int i : {0, 3, 6, rows / 2, rows - 1, rows + 5}) {
    criteria.push_back(u"cRdCode='C" + FromUtf8(std::to_string(i)) + u"'");
    criteria.push_back(u"cRdCode='c" + FromUtf8(std::to_string(i)) + u"' AND bRdEnd=1");
  }
  return criteria;
}

// Runs the same random operations on a lazily read record set and on one
// holding every row, and expects the same answer from both at every step.
using Opener = std::function<std::shared_ptr<KitRecordset>(const String& source)>;

void ExpectSameAnswers(const Opener& open, KitDatabase& db, const String& source, int rows,
                       uint32_t seed) {
  std::mt19937 random(seed);
  const auto criteria = CriteriaFor(rows);
  auto lazy = open(source);
  auto loaded = detail::OpenFullyLoaded(db, source);
  const String field_names[] = {u"cRdCode", u"CRDNAME", u"bRdEnd", u"crdcode"};
  for (int step = 0; step < 60; ++step) {
    const int choice = static_cast<int>(random() % 100);
    const size_t pick = random();
    std::function<std::string(KitRecordset&)> operation;
    std::string name;
    if (choice < 8) {
      name = "RecordCount";
      operation = [](KitRecordset& rs) { return std::to_string(rs.RecordCount()); };
    } else if (choice < 16) {
      name = "BOF/EOF";
      operation = [](KitRecordset& rs) {
        return std::to_string(rs.Bof()) + std::to_string(rs.Eof());
      };
    } else if (choice < 24) {
      name = "MoveFirst";
      operation = [](KitRecordset& rs) { return rs.MoveFirst(), std::string(); };
    } else if (choice < 32) {
      name = "MoveLast";
      operation = [](KitRecordset& rs) { return rs.MoveLast(), std::string(); };
    } else if (choice < 44) {
      name = "MoveNext";
      operation = [](KitRecordset& rs) { return rs.MoveNext(), std::to_string(rs.Eof()); };
    } else if (choice < 50) {
      const int steps = static_cast<int>(pick % 80) + 1;
      name = "walk " + std::to_string(steps);
      operation = [steps](KitRecordset& rs) {
        std::string flags;
        for (int i = 0; i < steps && !rs.Eof(); ++i) {
          rs.MoveNext();
          flags += std::to_string(rs.Eof());
        }
        return flags;
      };
    } else if (choice < 70) {
      const String text = criteria[pick % criteria.size()];
      name = "FindFirst " + ToUtf8(text);
      operation = [text](KitRecordset& rs) {
        rs.FindFirst(text);
        return std::to_string(rs.NoMatch()) + " " + Outcome([&] { return CurrentRow(rs); });
      };
    } else if (choice < 85) {
      name = "row";
      operation = [](KitRecordset& rs) { return CurrentRow(rs); };
    } else if (choice < 95) {
      const String field = field_names[pick % 4];
      name = "field " + ToUtf8(field);
      operation = [field](KitRecordset& rs) { return Text(rs.Fields()(field).Value()); };
    } else if (choice < 97) {
      name = "Close";
      operation = [](KitRecordset& rs) { return rs.Close(), std::string(); };
    } else {
      name = "reopen";
      lazy = open(source);
      loaded = detail::OpenFullyLoaded(db, source);
      continue;
    }
    const std::string expected = Outcome([&] { return operation(*loaded); });
    const std::string actual = Outcome([&] { return operation(*lazy); });
    ASSERT_EQ(actual, expected) << ToUtf8(source) << ", " << rows << " rows, seed " << seed
                                << ", step " << step << ": " << name;
  }
}

const std::vector<String> kSources = {
    u"Rd_Style",
    u"rd_style",
    u"vRd",
    u"select * from rd_style",
    u"select * from rd_style where crdname='purchase'",
    u"select * from rd_style where crdcode='nothing'",
    u"select crdcode, crdname, bRdEnd from rd_style order by crdname desc, irdgrade",
};

// Style tables of several sizes, around the rows a record set reads at once.
template <typename Body>
void ForEachStyleTable(Body&& body) {
  for (int rows : {0, 1, 17, 150, 1200}) {
    SuiteDb suite;
    FillStyles(suite, rows, rows == 150);
    suite.Exec("CREATE VIEW vRd AS SELECT * FROM Rd_Style");
    body(suite, rows);
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TEST(LazyKit, AnswersAsARecordSetHoldingEveryRow) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "the embedded engine reads rows lazily; the server's driver keeps every row it "
                    "read at open";
  ForEachStyleTable([](const SuiteDb& suite, int rows) {
    auto db = suite.Open();
    // The table is read by key, the view as a statement.
    ASSERT_NE(db->Connection()->state().engine->OpenTable(u"Rd_Style"), nullptr);
    ASSERT_EQ(db->Connection()->state().engine->OpenTable(u"vRd"), nullptr);
    const Opener open = [&db](const String& source) { return db->OpenQuery(source, 2); };
    for (const auto& source : kSources) {
      for (uint32_t seed = 1; seed <= 12; ++seed) {
        ExpectSameAnswers(open, *db, source, rows, seed * 7919 + static_cast<uint32_t>(rows));
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

// A driver with nothing but what every driver must offer: statements and
// forward cursors that cannot rewind; no data versions, keyed tables or counts
// of its own. Whether it repeats a statement's row order is as told.
class PlainCursor final : public db::Cursor {
 public:
  explicit PlainCursor(std::unique_ptr<db::Cursor> inner) : inner_(std::move(inner)) {}
  const std::vector<db::ColumnInfo>& Columns() const override { return inner_->Columns(); }
  bool Next() override { return inner_->Next(); }
  Variant Value(size_t index) const override { return inner_->Value(index); }

 private:
  std::unique_ptr<db::Cursor> inner_;
};

class PlainDriver final : public db::Connection {
 public:
  PlainDriver(std::unique_ptr<db::Connection> inner, bool repeats)
      : inner_(std::move(inner)), repeats_(repeats) {}
  std::unique_ptr<db::Cursor> Query(StringView sql) override {
    return std::make_unique<PlainCursor>(inner_->Query(sql));
  }
  void ExecuteScript(StringView sql) override { inner_->ExecuteScript(sql); }
  String Engine() const override { return u"plain"; }
  String Dbms() const override { return inner_->Dbms(); }
  bool RepeatsRowOrder() const override { return repeats_; }

 private:
  std::unique_ptr<db::Connection> inner_;
  bool repeats_;
};

TEST(LazyKit, DriversWithoutTheOptionalOperationsGetTheSameAnswers) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "the embedded engine reads rows lazily; the server's driver keeps every row it "
                    "read at open";
  ForEachStyleTable([](const SuiteDb& suite, int rows) {
    auto db = suite.Open();
    for (bool repeats : {true, false}) {
      auto plain = std::make_shared<detail::ConnectionState>();
      plain->engine = std::make_unique<PlainDriver>(db::Open(suite.ConnectionString()), repeats);
      // Opened as OpenQuery opens them, on the plain driver.
      const Opener open = [&plain](const String& source) {
        auto recordset = std::make_shared<ado::Recordset>();
        recordset->CursorLocation(ado::adUseClient);
        recordset->state()->Assign(detail::IsBareTableName(source)
                                       ? detail::OpenWholeTable(*plain, source)
                                       : detail::OpenStatement(*plain, source));
        recordset->state()->counts_rows = true;
        return std::make_shared<KitRecordset>(std::move(recordset));
      };
      for (const auto& source : kSources) {
        for (uint32_t seed = 1; seed <= 4; ++seed) {
          ExpectSameAnswers(open, *db, source, rows, seed * 104729 + static_cast<uint32_t>(rows));
          if (::testing::Test::HasFatalFailure()) return;
        }
      }
    }
  });
}

// Inserts one inventory item through a connection of its own that will not
// wait for a lock: it fails at once if any reader still holds the database.
int InsertWithoutWaiting(const SuiteDb& suite, const std::string& code) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(suite.path().c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  db::sqlite::RegisterDialect(db);  // the indexes compare under the server's collations
  const std::string sql =
      "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('" + code + "', 'Bolt')";
  const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
  sqlite3_close(db);
  return rc;
}

TEST(LazyKit, WritersCommitWhileRecordSetsStayOpenAndLaterReadsSeeTheirRows) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "the embedded engine reads rows lazily; the server's driver keeps every row it "
                    "read at open";
  SuiteDb suite;
  std::ostringstream sql;
  sql << "BEGIN;";
  for (int i = 0; i < 200; ++i)
    sql << "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('" << 1000 + i << "', 'Bolt');";
  sql << "COMMIT;";
  suite.Exec(sql.str());
  auto db = suite.Open();

  auto table = db->OpenQuery(u"Inventory", 2);
  EXPECT_EQ(table->RecordCount(), 200);
  table->MoveNext();
  auto query = db->OpenQuery(u"select * from inventory where cinvname='bolt'", 2);
  for (int i = 0; i < 40; ++i)
    query->MoveNext();
  EXPECT_EQ(query->Fields()(u"cInvCode").Value(), Variant(u"1040"));
  clsPub pub;
  pub.DBIA(db);
  // The name query stays in the lookup record set after the call.
  EXPECT_EQ(pub.CheckDirNoGrade(u"BOLT", 0), u"1000");

  ASSERT_EQ(InsertWithoutWaiting(suite, "0999"), SQLITE_OK);

  // What a record set holds, its count included, belongs to the data it was
  // read from; a record set opened now, or one that reads again, sees the
  // new row.
  table->MoveNext();
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"1002"));
  EXPECT_EQ(table->RecordCount(), 200);
  EXPECT_EQ(db->OpenQuery(u"Inventory", 2)->RecordCount(), 201);
  table->MoveLast();
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"0999"));
  EXPECT_EQ(table->RecordCount(), 201);
  table->MoveNext();
  EXPECT_TRUE(table->Eof());
  table->FindFirst(u"cInvCode='0999'");
  EXPECT_FALSE(table->NoMatch());
  EXPECT_EQ(query->RecordCount(), 201);
  query->MoveNext();
  EXPECT_EQ(query->Fields()(u"cInvCode").Value(), Variant(u"1041"));
  EXPECT_EQ(pub.CheckInv(u"0999", false), u"1000") << "answered from the table's first row";

  ASSERT_EQ(InsertWithoutWaiting(suite, "0998"), SQLITE_OK);
  EXPECT_EQ(pub.CheckDirNoGrade(u"0998", 0), u"0998");
}

TEST(LazyKit, ARecordSetThatReadsAgainAfterACommitAnswersFromTheNewDataThroughout) {
  if (testing::OnPostgres())
    GTEST_SKIP() << "the embedded engine reads rows lazily; the server's driver keeps every row it "
                    "read at open";
  // Opened on an empty archive; an item is committed before the count is
  // asked: the count and the first row then both come from the new data, as
  // a record set opened after the commit would give them.
  SuiteDb suite;
  auto db = suite.Open();
  auto table = db->OpenQuery(u"Inventory", 2);
  auto query = db->OpenQuery(u"select * from inventory where cinvname='bolt'", 2);
  EXPECT_TRUE(table->Bof() && table->Eof());
  ASSERT_EQ(InsertWithoutWaiting(suite, "0001"), SQLITE_OK);
  EXPECT_EQ(table->RecordCount(), 1);
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"0001"));
  EXPECT_FALSE(table->Bof());
  // A short result is read whole when opened and stays as it was read.
  EXPECT_EQ(query->RecordCount(), 0);
  EXPECT_TRUE(query->Eof());
}

}  // namespace
}  // namespace kavrin
