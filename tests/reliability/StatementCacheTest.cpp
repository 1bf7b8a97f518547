// Compiled statements kept per shape change nothing a caller sees: the same
// random calls, hostile texts among them, made on a connection that keeps
// them and on one that compiles every text, give the same answers, errors,
// by-reference writes, list contents and traces.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

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

TEST(StatementCache, RandomCallsAnswerAlikeWithCompiledStatementsKeptOrNot) {
  if (const char* cache = std::getenv("KAVRIN_TEST_STATEMENT_CACHE");
      cache && cache == std::string("off"))
    GTEST_SKIP() << "compares both ways itself";
  testing::SuiteDb suite(/*demo=*/true);
  testing::ScopedUiHost ui;
  const String off = testing::OnPostgres() ? u";KavrinStatementCache=0" : u"?statement_cache=off";
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
