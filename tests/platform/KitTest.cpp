// The kit's dynaset and the ADO record set as the component uses them; record
// sets that read their rows only when asked answer exactly as record sets
// holding every row and hold nothing in the engine between operations; and
// the schema's indexes serve the archive lookups.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <random>
#include <sstream>

#include "db/Driver.h"
#include "db/sqlite/Dialect.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/clsPub.h"
#include "platform/Access.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::OnPostgres;
using testing::SuiteDb;

TEST(KitRecordset, AnswersAsTheKitsDynasetDoes) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Rd_Style (cRdCode, cRdName, bRdEnd) VALUES"
      " ('1', 'In', 0), ('11', 'Purchase', 1), ('12', 'purchase', 0), ('13', 'Purchase', 1);"
      "INSERT INTO Warehouse (cWhCode) VALUES ('1')");
  auto db = suite.Open();
  auto trace = testing::TraceQueries(*db);
  auto state = [](const KitRecordset& rs) {
    return std::to_string(rs.RecordCount()) + (rs.Bof() ? " BOF" : "") + (rs.Eof() ? " EOF" : "");
  };
  // Empty and one-row results count exactly from the start.
  auto empty = db->OpenQuery(u"select * from rd_style where crdcode='9'", 2);
  EXPECT_EQ(state(*empty), "0 BOF EOF");
  EXPECT_KAVRIN_ERROR(empty->MoveLast(), errors::kNoCurrentRecord, sources::kAdoRecordset);
  EXPECT_KAVRIN_ERROR(empty->Fields()(u"cRdCode").Value(), errors::kNoCurrentRecord,
                      sources::kAdoField);
  auto one = db->OpenQuery(u"Warehouse", 2);
  EXPECT_EQ(state(*one), "1");
  EXPECT_EQ(one->Fields()(u"cWhCode").Value(), Variant(u"1"));
  one->MoveNext();
  EXPECT_EQ(state(*one), "1 EOF");
  EXPECT_KAVRIN_ERROR(one->Fields()(u"cWhCode").Value(), errors::kNoCurrentRecord,
                      sources::kAdoField);
  EXPECT_KAVRIN_ERROR(one->MoveNext(), errors::kNoCurrentRecord, sources::kAdoRecordset);
  one->Close();
  EXPECT_KAVRIN_ERROR(one->RecordCount(), errors::kObjectClosed);

  // Fields are found without regard to case, and are those of the ADO row;
  // the names of a whole row are the table's spelling (PostgreSQL keeps
  // unquoted names in lower case only).
  auto rs = db->OpenQuery(u"SELECT * FROM Rd_Style", 2);
  EXPECT_EQ(rs->Fields()(u"CRDNAME").Value(), Variant(u"In"));
  rs->MoveNext();
  EXPECT_EQ(rs->AdoRecordset()->Fields()(u"crdname").Value(), Variant(u"Purchase"));
  EXPECT_KAVRIN_ERROR(rs->Fields()(u"cNoSuch"), errors::kItemNotFound, sources::kAdoFields);
  EXPECT_KAVRIN_ERROR(rs->Fields()(42), errors::kItemNotFound, sources::kAdoFields);
  EXPECT_EQ(rs->Fields()(0).Name() + rs->Fields()(1).Name(),
            OnPostgres() ? u"crdcodecrdname" : u"cRdCodecRdName");

  // FindFirst compares as the column does, searches from the first row,
  // honours the end flag, and leaves the position when nothing matches.
  auto styles = db->OpenQuery(u"Rd_Style", 2);
  styles->MoveLast();
  styles->FindFirst(u"cRdName='PURCHASE  '");
  EXPECT_FALSE(styles->NoMatch());
  EXPECT_EQ(styles->Fields()(u"cRdCode").Value(), Variant(u"11"));
  styles->FindFirst(u"cRdCode='12' AND bRdEnd=1");
  EXPECT_TRUE(styles->NoMatch());
  EXPECT_EQ(styles->Fields()(u"cRdCode").Value(), Variant(u"11"));
  EXPECT_KAVRIN_ERROR(styles->FindFirst(u"cRdCode='O'Brien'"), errors::kCriteriaSyntax);
  EXPECT_KAVRIN_ERROR(styles->FindFirst(u"cNoSuch='1'"), errors::kUnknownColumn);

  // The trace sees every text as passed; engine errors come through.
  ado::Recordset direct;
  direct.Open(u"select cInvName as name from Inventory", db->Connection());
  EXPECT_EQ(direct.RecordCount(), -1) << "a server cursor does not count";
  EXPECT_KAVRIN_ERROR(db->OpenQuery(u"NoSuchTable", 2), errors::kProviderNoTable,
                      testing::EngineSource());
  EXPECT_KAVRIN_ERROR(db->OpenQuery(u"select * from code where ccode='a'b'", 2),
                      errors::kProviderSyntax, testing::EngineSource());
  EXPECT_EQ(*trace, (std::vector<String>{u"select * from rd_style where crdcode='9'", u"Warehouse",
                                         u"SELECT * FROM Rd_Style", u"Rd_Style",
                                         u"select cInvName as name from Inventory", u"NoSuchTable",
                                         u"select * from code where ccode='a'b'"}));

  // Objects never opened: a record set behaves as empty, a kit connection
  // fails every use with 3709; an unknown kind of connection string fails.
  KitRecordset unopened;
  EXPECT_EQ(state(unopened), "0 BOF EOF");
  EXPECT_NO_THROW(unopened.Close());
  EXPECT_KAVRIN_ERROR(KitDatabase().OpenQuery(u"Inventory", 2), errors::kNoConnection,
                      sources::kKitDatabase);
  EXPECT_KAVRIN_ERROR(KitDatabase().Connection(), errors::kNoConnection, sources::kKitDatabase);
  EXPECT_KAVRIN_ERROR(ado::Recordset().Open(u"select 1", nullptr), errors::kNoConnection,
                      sources::kAdoRecordset);
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(u"mysql://nowhere"), errors::kProviderFailure,
                      sources::kComponent);
}

// Operation `op` on a record set: what it answered, or the error it raised.
std::string Apply(KitRecordset& rs, char op, size_t pick, const std::vector<String>& criteria) {
  std::string out;
  try {
    if (op == 'C') return std::to_string(rs.RecordCount());
    if (op == 'B') return std::to_string(rs.Bof()) + std::to_string(rs.Eof());
    if (op == 'F') rs.MoveFirst();
    if (op == 'L') rs.MoveLast();
    if (op == 'N') return rs.MoveNext(), std::to_string(rs.Eof());
    if (op == 'X') rs.Close();
    if (op == 'f')
      return rs.FindFirst(criteria[pick % criteria.size()]),
             std::to_string(rs.NoMatch()) + Apply(rs, 'r', 0, criteria);
    for (int32_t i = 0; op == 'r' && i < rs.Fields().Count(); ++i) {
      const Variant v = rs.Fields()(i).Value();  // each value with its type
      out += std::to_string(static_cast<int>(v.type())) + ":" +
             (v.IsNull() ? "" : ToUtf8(ToString(v))) + "|";
    }
    for (size_t i = pick % 80 + 1; op == 'W' && i > 0 && !rs.Eof(); --i)  // a walk of up to 80 rows
      out += Apply(rs, 'N', 0, criteria);
    return out;
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
}

// A driver with nothing but what every driver must offer: statements and
// forward cursors that cannot rewind; no data versions, keyed tables or counts
// of its own. Whether it repeats a statement's row order is as told.
struct PlainCursor final : db::Cursor {
  explicit PlainCursor(std::unique_ptr<db::Cursor> inner) : inner(std::move(inner)) {}
  const std::vector<db::ColumnInfo>& Columns() const override { return inner->Columns(); }
  bool Next() override { return inner->Next(); }
  Variant Value(size_t index) const override { return inner->Value(index); }
  std::unique_ptr<db::Cursor> inner;
};

struct PlainDriver final : db::Connection {
  PlainDriver(std::unique_ptr<db::Connection> inner, bool repeats)
      : inner(std::move(inner)), repeats(repeats) {}
  std::unique_ptr<db::Cursor> Query(StringView sql) override {
    return std::make_unique<PlainCursor>(inner->Query(sql));
  }
  void ExecuteScript(StringView sql) override { inner->ExecuteScript(sql); }
  String Engine() const override { return u"plain"; }
  String Dbms() const override { return inner->Dbms(); }
  bool RepeatsRowOrder() const override { return repeats; }
  std::unique_ptr<db::Connection> inner;
  bool repeats;
};

// A script reaches the database, its record sets and their ADO twins by name.
TEST(KitRecordset, ScriptsReachTheRecordSetsByName) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('1', 'Main'), ('2', 'Side'), ('3', "
      "'Yard')");
  auto db = suite.Open();
  std::vector<Variant> open{u"select cWhCode, cWhName from Warehouse order by cWhCode", 2};
  const auto kit = db->Call(u"openquery", open).AsObject();
  const auto ado = kit->Get(u"AdoRecordset").AsObject();
  for (const auto& rs : {kit, ado}) {
    SCOPED_TRACE(ToUtf8(rs->TypeName()));
    rs->Call(u"MoveFirst");
    EXPECT_EQ(rs->Get(u"bof"), Variant(false));
    EXPECT_EQ(rs->Get(u"RecordCount"), Variant(int32_t{3}));
    std::vector<Variant> name{u"cwhname"};
    EXPECT_EQ(rs->Call(u"Fields", name).AsObject()->Get(u"Value"), Variant(u"Main"));
    EXPECT_EQ(rs->Get(u"Fields").AsObject()->Get(u"Count"), Variant(int32_t{2}));
    rs->Call(u"MoveLast");
    EXPECT_EQ(rs->Call(u"Fields", name).AsObject()->Get(u""), Variant(u"Yard"));
    rs->Call(u"MoveNext");
    EXPECT_EQ(rs->Get(u"EOF"), Variant(true));
    EXPECT_KAVRIN_ERROR(rs->Get(u"NoSuchMember"), errors::kMemberNotFound, rs->TypeName());
    EXPECT_KAVRIN_ERROR(rs->Call(u"MoveNext", name), errors::kWrongArgumentCount);
  }
  std::vector<Variant> code{u"cWhCode='2'"};
  kit->Call(u"FindFirst", code);
  EXPECT_EQ(kit->Get(u"NoMatch"), Variant(false));
  EXPECT_KAVRIN_ERROR(ado->Get(u"NoMatch"), errors::kMemberNotFound, u"Recordset");  // kit only
  kit->Call(u"close");
  EXPECT_KAVRIN_ERROR(ado->Get(u"RecordCount"), errors::kObjectClosed);
}

// Runs `sql` on a connection of its own that will not wait for a lock: it
// fails at once if any reader still holds the database. The detail column of
// each row (for EXPLAIN QUERY PLAN), or the error.
std::string Raw(const SuiteDb& suite, const std::string& sql) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(suite.path().c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  db::sqlite::RegisterDialect(db);  // the indexes compare under the server's collations
  std::string out;
  auto detail = [](void* out, int, char** values, char**) {
    *static_cast<std::string*>(out) += std::string(values[3]) + "; ";
    return 0;
  };
  if (sqlite3_exec(db, sql.c_str(), detail, &out, nullptr) != SQLITE_OK)
    out = "error: " + std::string(sqlite3_errmsg(db));
  sqlite3_close(db);
  return out;
}

// Random operations on a record set read lazily, through OpenQuery or a plain
// driver, and on one holding every row: the same answer at every step. And
// a lazy record set holds nothing in the engine between operations.
TEST(LazyKit, AnswersAsARecordSetHoldingEveryRowAndLetsWritersCommit) {
  // Style tables of several sizes, around the rows a record set reads at
  // once: codes that repeat in another letter case, shared names, blanks at
  // the end, Null names and end flags, and once a flag that holds a text,
  // which a numeric comparison cannot read (a server's bit column holds none).
  for (int rows : {0, 1, 17, 150, 1200}) {
    SuiteDb suite;
    const char* names[] = {"'Purchase'", "'purchase'", "'Sale  '", "'Sale'", "NULL", "'Other'"};
    const char* flags[] = {"1", "0", "NULL", "1"};
    std::ostringstream sql;
    sql << "CREATE VIEW vRd AS SELECT * FROM Rd_Style; BEGIN;";
    for (int i = 0; i < rows; ++i) {
      sql << "INSERT INTO Rd_Style (cRdCode, cRdName, bRdFlag, iRdGrade, bRdEnd) VALUES ('"
          << (i % 7 == 6 ? "c" + std::to_string(i - 3) : "C" + std::to_string(i)) << "', "
          << names[(i * 5) % 6] << ", " << i % 2 << ", " << i % 3 + 1 << ", "
          << (rows == 150 && i == 75 && !OnPostgres() ? "'x'" : flags[i % 4]) << ");";
    }
    suite.Exec(sql.str() + "COMMIT;");
    auto db = suite.Open();
    // The table is read by key, the view as a statement.
    ASSERT_NE(detail::Access::State(*db->Connection()).engine->OpenTable(u"Rd_Style"), nullptr);
    ASSERT_EQ(detail::Access::State(*db->Connection()).engine->OpenTable(u"vRd"), nullptr);
    // Kit connections on the engine's own driver, and on plain drivers.
    const std::shared_ptr<KitDatabase> kits[] = {db, suite.Open(), suite.Open()};
    for (bool repeats : {false, true}) {
      auto& engine = detail::Access::State(*kits[1 + repeats]->Connection()).engine;
      engine = std::make_unique<PlainDriver>(std::move(engine), repeats);
    }
    // Names compared as the column compares them, flags, and what cannot be read.
    std::vector<String> criteria(
        {u"cRdName='PURCHASE'", u"cRdName='purchase' AND bRdEnd=1", u"cRdName='Sale' AND bRdEnd=1",
         u"cRdName='sale  '", u"cRdName='None'", u"cRdName<>'Purchase'", u"bRdEnd=0",
         u"cRdCode='O'Brien'", u"cNoSuch='1'", u"iRdGrade=2 AND bRdEnd=1",
         u"bRdEnd=1 AND cRdName='Sale'", u"cRdName='Other' AND bRdFlag=True"});
    for (int i : {0, 3, 6, rows / 2, rows - 1, rows + 5}) {
      criteria.push_back(u"cRdCode='C" + FromUtf8(std::to_string(i)) + u"'");
      criteria.push_back(u"cRdCode='c" + FromUtf8(std::to_string(i)) + u"' AND bRdEnd=1");
    }
    // Each letter one operation (see Apply), as often as it comes up; O reopens both.
    const std::string ops = "CCBBFFLLNNNWWffffffrrrrrXO";
    for (const String source :
         {u"Rd_Style", u"rd_style", u"vRd", u"select * from rd_style",
          u"select * from rd_style where crdname='purchase'",
          u"select * from rd_style where crdcode='nothing'",
          u"select crdcode, crdname, bRdEnd from rd_style order by crdname desc, irdgrade"}) {
      for (uint32_t seed = 1; seed <= 18; ++seed) {
        std::mt19937 random(seed * 7919 + static_cast<uint32_t>(rows));
        std::shared_ptr<KitRecordset> lazy, loaded;
        for (int step = 0; step < 60; ++step) {
          const char op = step == 0 ? 'O' : ops[random() % ops.size()];
          const size_t pick = random();
          if (op == 'O') {
            lazy = kits[seed % 3]->OpenQuery(source, 2);
            loaded = detail::OpenFullyLoaded(*db, source);
            continue;
          }
          const std::string expected = Apply(*loaded, op, pick, criteria);
          ASSERT_EQ(Apply(*lazy, op, pick, criteria), expected)
              << ToUtf8(source) << ", " << rows << " rows, seed " << seed << ", step " << step
              << ": " << op;
        }
      }
    }
  }

  // Writers commit while record sets stay open; what a record set answers,
  // its count included, belongs to the data it read. (A server session tells
  // no data versions apart: what its record sets have read stays as read.)
  if (OnPostgres()) return;
  SuiteDb suite;
  auto db = suite.Open();
  auto table = db->OpenQuery(u"Inventory", 2);
  auto short_query = db->OpenQuery(u"select * from inventory where cinvname='bolt'", 2);
  EXPECT_TRUE(table->Bof() && table->Eof());
  std::string items = "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('1000', 'Bolt')";
  for (int i = 1001; i < 1200; ++i)
    items += ", ('" + std::to_string(i) + "', 'Bolt')";
  ASSERT_EQ(Raw(suite, items), "");
  // Asked after a commit, a record set that reads again answers from the new
  // data throughout, its count included; a short result is read whole when
  // opened and stays as it was read.
  EXPECT_EQ(table->RecordCount(), 200);
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"1000"));
  EXPECT_EQ(short_query->RecordCount(), 0);

  table->MoveNext();
  auto query = db->OpenQuery(u"select * from inventory where cinvname='bolt'", 2);
  for (int i = 0; i < 40; ++i)
    query->MoveNext();
  EXPECT_EQ(query->Fields()(u"cInvCode").Value(), Variant(u"1040"));
  clsPub pub;
  pub.DBIA(db);
  // The name query stays in the lookup record set after the call.
  EXPECT_EQ(pub.CheckDirNoGrade(u"BOLT", 0), u"1000");
  ASSERT_EQ(Raw(suite, "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('0999', 'Bolt')"), "");
  // The count read stays with the data it was read from until the record
  // set reads again; one opened now sees the new row.
  table->MoveNext();
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"1002"));
  EXPECT_EQ(table->RecordCount(), 200);
  EXPECT_EQ(db->OpenQuery(u"Inventory", 2)->RecordCount(), 201);
  table->MoveLast();
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"0999"));
  EXPECT_EQ(table->RecordCount(), 201);
  EXPECT_EQ(query->RecordCount(), 201);
  query->MoveNext();
  EXPECT_EQ(query->Fields()(u"cInvCode").Value(), Variant(u"1041"));
  ASSERT_EQ(Raw(suite, "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('0998', 'Bolt')"), "");
  EXPECT_EQ(pub.CheckDirNoGrade(u"0998", 0), u"0998");
}

TEST(SchemaIndexes, AnswerTheArchiveLookupsAndKeepTheOrderOfTheRows) {
  SuiteDb suite;
  // Each lookup by code or name, as the members and the finds of a dynaset
  // ask it: on SQLite the rows come through an index already in the table's
  // order, with nothing to sort; on the server an index answers the equality
  // under the case-insensitive collation (whenever the planner is kept off
  // reading the whole table, as it is here: the tables are empty).
  std::unique_ptr<db::Connection> server;
  if (OnPostgres()) {
    server = db::OpenForSetup(suite.ConnectionString());
    server->ExecuteScript(u"SET enable_seqscan = off");
  }
  for (const std::string lookup :
       {// The archives, by code and by name.
        "inventory.cinvcode", "inventory.cinvname", "vendor.cvencode", "vendor.cvenabbname",
        "customer.ccuscode", "warehouse.cwhcode", "warehouse.cwhname", "warehouse.cdepcode",
        "person.cpersoncode", "person.cpersonname", "settlestyle.csscode", "settlestyle.cssname",
        "inventoryclass.cinvccode", "inventoryclass.cinvcname", "vendorclass.cvccode",
        "vendorclass.cvcname", "customerclass.ccccode", "customerclass.cccname",
        "department.cdepcode", "department.cdepname", "code.ccode", "code.ccode_name",
        // What a dynaset finds in.
        "rd_style.crdname", "costobj.ccode", "costobj.cname"}) {
    const std::string table = lookup.substr(0, lookup.find('.'));
    if (server) {
      auto plan =
          server->Query(FromUtf8("EXPLAIN SELECT * FROM " + table + " WHERE " + lookup + " = 'x'"));
      std::string lines;
      while (plan->Next())
        lines += ToUtf8(ToString(plan->Value(0))) + "; ";
      EXPECT_NE(lines.find("Index Cond: (" + lookup.substr(table.size() + 1) + " = "),
                std::string::npos)
          << lookup << ": " << lines;
      continue;
    }
    const std::string plan =
        Raw(suite, "EXPLAIN QUERY PLAN SELECT rowid, * FROM " + lookup.substr(0, lookup.find('.')) +
                       " WHERE " + lookup + " = 'x' COLLATE \"Chinese_PRC_CI_AS\" ORDER BY rowid");
    EXPECT_NE(plan.find("USING INDEX"), std::string::npos) << lookup << ": " << plan;
    EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << lookup << ": " << plan;
  }
  // The binding check asks one query per department, in the order the
  // database lists them: the order their warehouses come in, not sorted
  // (PostgreSQL lists DISTINCT values in no particular order).
  if (OnPostgres()) return;
  suite.Exec(
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES"
      " ('1', 'D3', 'FIFO'), ('2', 'D1', 'FIFO'), ('3', 'D3', 'FIFO'), ('4', 'D2', 'LIFO')");
  auto db = suite.Open();
  auto trace = testing::TraceQueries(*db);
  clsPub pub;
  pub.DBIA(db);
  EXPECT_TRUE(pub.CheckWareDep());
  const String style = u"SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='";
  EXPECT_EQ(*trace, (std::vector<String>{u"SELECT * FROM WareHouse WHERE cDepCode is null",
                                         u"SELECT DISTINCT cDepCode FROM Warehouse", style + u"D3'",
                                         style + u"D1'", style + u"D2'"}));
}

}  // namespace
}  // namespace kavrin
