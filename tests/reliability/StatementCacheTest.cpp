// Compiled statements kept per shape change nothing a caller sees: the same
// random calls, hostile texts among them, made on a connection that keeps
// them and on one that compiles every text, give the same answers, errors,
// by-reference writes, list contents and traces.
#include <gtest/gtest.h>

#include <chrono>
#include <iostream>
#include <random>

#include "db/Driver.h"
#include "kavrin/clsPub.h"
#include "reliability/Payloads.h"
#include "support/FakeUi.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

struct Outcome {
  Variant answer;
  int32_t error = 0;
  String description;
  std::vector<Variant> written;  // the arguments after the call, lists as their items
  std::vector<String> trace;
};

// Arguments and answers as a failure message shows them.
std::string Shown(const std::vector<Variant>& values) {
  std::string shown;
  for (const auto& v : values) {
    shown += "[" + ToUtf8(TypeName(v.type())) + " ";
    if (v.IsString()) shown += ToUtf8(v.AsString().substr(0, 80));
    shown += "]";
  }
  return shown;
}

// One side: an object on its own connection, its trace, its list control.
struct Side {
  Side(const testing::SuiteDb& suite, const String& switch_off) {
    db = KitDatabase::Open(suite.ConnectionString() + switch_off);
    trace = testing::TraceQueries(*db);
    pub.DBIA(db);
  }
  Outcome Call(const String& member, std::vector<Variant> args) {
    Outcome out;
    const size_t traced = trace->size();
    for (auto& arg : args) {
      if (!arg.IsObject()) continue;
      list = std::make_shared<testing::FakeList>();
      arg = Variant(std::shared_ptr<Dispatch>(list));
    }
    try {
      out.answer = pub.Call(member, args);
    } catch (const Error& e) {
      out.error = e.number();
      out.description = e.description();
    }
    for (const auto& arg : args) {
      if (!arg.IsObject()) {
        out.written.push_back(arg);
        continue;
      }
      for (const auto& item : list->items)
        out.written.emplace_back(item);
    }
    out.trace.assign(trace->begin() + static_cast<ptrdiff_t>(traced), trace->end());
    return out;
  }
  std::shared_ptr<KitDatabase> db;
  std::shared_ptr<std::vector<String>> trace;
  std::shared_ptr<testing::FakeList> list;
  clsPub pub;
};

// What one text gave: its rows' values, or its error.
std::string Read(db::Connection& connection, StringView sql) {
  std::string read;
  try {
    auto cursor = connection.Query(sql);
    for (const auto& column : cursor->Columns())
      read += ToUtf8(column.name) + ":" + std::to_string(static_cast<int>(column.type)) + " ";
    while (cursor->Next()) {
      read += "|";
      for (size_t i = 0; i < cursor->Columns().size(); ++i)
        read += ToUtf8(TypeName(cursor->Value(i).type())) + "=" + Shown({cursor->Value(i)});
    }
  } catch (const Error& e) {
    read = "error " + std::to_string(e.number()) + " " + ToUtf8(e.description());
  }
  return read;
}

String SwitchedOff() {
  return testing::OnPostgres() ? u";KavrinStatementCache=0" : u"?statement_cache=off";
}

// A value bound where a literal stood compares, converts and collates as the
// literal did: trailing blanks, letter case, bits compared with numbers, whole
// numbers past 32 bits, function arguments, texts that do not convert, Nulls.
// A statement kept from before a table changed answers with the table as it
// is now.
TEST(StatementCache, BoundValuesAnswerAsTheirLiteralsAndSchemaChangesAreSeen) {
  if (testing::CompilesEveryText()) GTEST_SKIP() << "compares both ways itself";
  testing::SuiteDb suite(/*demo=*/true);
  const auto kept = db::Open(suite.ConnectionString());
  const auto compiled = db::Open(suite.ConnectionString() + SwitchedOff());
  const std::vector<String> texts = {
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = '010101'",
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = '010101   '",
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = ' 010101'",
      u"SELECT cInvCCode FROM InventoryClass WHERE cInvCCode = 'o1' OR cInvCName = '板材'",
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = ''",
      u"SELECT cInvCCode FROM InventoryClass WHERE bInvCEnd = 1",
      u"SELECT cInvCCode FROM InventoryClass WHERE bInvCEnd = 0",
      u"SELECT cInvCCode FROM InventoryClass WHERE bInvCEnd = 2",
      u"SELECT cInvCCode FROM InventoryClass WHERE bInvCEnd = 2147483648",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade = 2",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade = 2147483647",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade = 5000000000",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade < 999999999999999999",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade = '2'",
      u"SELECT cInvCCode FROM InventoryClass WHERE iInvCGrade = 'two'",
      u"SELECT cInvCCode FROM InventoryClass WHERE substring(cInvCCode, 1, 2) = '01'",
      u"SELECT cInvCCode FROM InventoryClass WHERE len(cInvCCode) = 4",
      u"SELECT cInvCCode FROM InventoryClass WHERE 'a' = 'A'",
      u"SELECT cInvCode, cInvStd FROM Inventory WHERE cInvStd = 'none'",
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = 'it''s'",
      u"SELECT cInvCode FROM Inventory WHERE cInvCode = 'x' AND nosuch = 1",
  };
  for (int round = 0; round < 2; ++round) {
    for (const String& text : texts)
      EXPECT_EQ(Read(*kept, text), Read(*compiled, text)) << ToUtf8(text) << " round " << round;
  }
  if (testing::OnPostgres()) {
    const std::string prepared =
        Read(*kept, u"SELECT count(*) FROM pg_prepared_statements WHERE statement LIKE '%$1%'");
    EXPECT_EQ(prepared.find("Double=[Double 0]"), std::string::npos)
        << "the server keeps no plan: " << prepared;
  }

  const String by_code = u"SELECT * FROM InventoryClass WHERE cInvCCode = '0101'";
  const std::string before = Read(*kept, by_code);
  suite.Exec("ALTER TABLE InventoryClass ADD COLUMN cNote varchar(10)");
  EXPECT_NE(Read(*kept, by_code), before);
  EXPECT_EQ(Read(*kept, by_code), Read(*compiled, by_code));
  suite.Exec(
      "DROP INDEX IF EXISTS IX_InventoryClass_cInvCName;"
      " ALTER TABLE InventoryClass DROP COLUMN cInvCName");
  EXPECT_EQ(Read(*kept, by_code), Read(*compiled, by_code));
  suite.Exec("DROP TABLE InventoryClass");
  const std::string gone = Read(*kept, by_code);
  EXPECT_EQ(gone, Read(*compiled, by_code));
  EXPECT_EQ(gone.rfind("error " + std::to_string(errors::kProviderNoTable), 0), 0u) << gone;
}

TEST(StatementCache, RandomCallsAnswerAlikeWithCompiledStatementsKeptOrNot) {
  if (testing::CompilesEveryText()) GTEST_SKIP() << "compares both ways itself";
  testing::SuiteDb suite(/*demo=*/true);
  testing::ScopedUiHost ui;
  const String off = SwitchedOff();
  Side kept(suite, u"");
  Side compiled(suite, off);

  // Texts a form sends: codes of the demo company and their prefixes,
  // near misses, numbers, quotes, blanks, and the hostile payloads.
  std::vector<String> texts = {u"",     u"01", u"0101",   u"010101",     u"010102", u"V001", u"03",
                               u"0201", u"AA", u"IA",     u"cGoodClass", u"bTrack", u"01 ",  u" 01",
                               u"1",    u"-1", u"1.5",    u"01'01",      u"'",      u"%",    u"_",
                               u"物料", u"0",  u"999999", u"Inventory"};
  for (const String& payload : testing::Payloads(u"/nonexistent")) {
    if (payload.size() < 2000) texts.push_back(payload);
  }
  const Variant no(false), yes(true);
  using Shape = std::pair<String, std::vector<Variant>>;
  std::vector<Shape> shapes = {
      {u"CheckDirGrade", {u"", no, int16_t{7}, no}},
      {u"CheckDirGrade", {u"", yes, int16_t{12}, yes}},
      {u"CheckDirGrade", {u"", yes, int16_t{22}, no}},
      {u"CheckInv", {u"", no}},
      {u"CheckInv", {u"", yes}},
      {u"CheckDirNoGrade", {u"", int16_t{0}, no}},
      {u"CheckDirNoGrade", {u"", int16_t{1}, yes}},
      {u"GetAccInfo", {u"", u""}},
      {u"FromTo", {u"cInvCode", u"", u"cInvName", u"Inventory"}},
      {u"CheckAssDep", {u"", no}},
      {u"CheckAccDep", {u"", yes}},
      {u"InvCodeIsTorF", {u"", u"bTrack"}},
      {u"FillCboCK",
       {Variant(std::shared_ptr<Dispatch>(std::make_shared<testing::FakeList>())), u""}},
      {u"GetMonthState", {u"IA", int16_t{3}}},
      {u"GetInvDifHead", {u"", u"", u"", u"", u""}},
      {u"SepCode", {u""}}};
  for (const char16_t* member :
       {u"WhCodeToValueStyle", u"InvCodeToUnit", u"WhCodeToDep", u"InvCodeToUnitPrice",
        u"InvCodeToClass", u"InvIsBatch", u"DepCodeToValueStyle", u"DepCode2WhCode"})
    shapes.push_back({member, {u""}});
  for (int32_t style = 0; style <= 16; ++style)
    shapes.push_back({u"CodeToName", {u"", Variant(style)}});

  std::mt19937 random(20260518);
  const auto pick = [&](size_t n) {
    return std::uniform_int_distribution<size_t>(0, n - 1)(random);
  };
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(8);
  int calls = 0;
  for (; calls < 10000 && std::chrono::steady_clock::now() < deadline; ++calls) {
    auto [member, args] = shapes[pick(shapes.size())];
    for (auto& arg : args) {
      if (arg.IsString() && (arg.AsString().empty() || pick(3) == 0))
        arg = texts[pick(texts.size())];
    }
    const Outcome a = kept.Call(member, args);
    const Outcome b = compiled.Call(member, args);
    ASSERT_EQ(a.error, b.error) << ToUtf8(member) << " call " << calls << ": "
                                << ToUtf8(a.description) << " / " << ToUtf8(b.description);
    ASSERT_EQ(a.description, b.description) << ToUtf8(member);
    ASSERT_TRUE(a.answer == b.answer)
        << ToUtf8(member) << " call " << calls << " " << Shown(args) << ": " << Shown({a.answer})
        << " / " << Shown({b.answer}) << " "
        << ToUtf8(a.trace.empty() ? String() : a.trace.front());
    ASSERT_EQ(a.written.size(), b.written.size());
    for (size_t i = 0; i < a.written.size(); ++i)
      ASSERT_TRUE(a.written[i] == b.written[i]) << ToUtf8(member) << " argument " << i;
    ASSERT_EQ(a.trace, b.trace) << ToUtf8(member);
  }
  EXPECT_GE(calls, 500);
  std::cout << "[ figures  ] " << calls << " random calls alike both ways\n";
}

}  // namespace
}  // namespace kavrin
