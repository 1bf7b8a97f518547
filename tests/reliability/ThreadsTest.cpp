// Separate objects on separate threads, each with its own connection to one
// suite database, answer exactly as one object answers the same calls one
// after another. The one thing they share is the process-wide UI host, which
// another thread replaces while they run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/clsPub.h"
#include "support/FakeUi.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using namespace std::chrono_literals;

// Each thread makes every call once per round.
constexpr int kThreads = 8, kRounds = 200;
// Past this the workers stop and the test fails: a slow machine must not
// turn into a hung run.
constexpr auto kTimeLimit = 240s;

// A host whose every focused control is a fresh text box, and whose message
// boxes are counted. Safe to call from any thread.
class CountingHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    return std::make_shared<testing::FakeControl>(u"TextBox", u"0101 North");
  }
  int32_t MsgBox(StringView, int32_t, StringView) override {
    shown.fetch_add(1, std::memory_order_relaxed);
    return vbOK;
  }
  static inline std::atomic<int64_t> shown{0};
};

// The text of a value: its type, then its contents (numbers to 15 digits).
String Describe(const Variant& v) {
  String text = v.TypeName() + u":";
  const auto list =
      v.IsObject() ? std::dynamic_pointer_cast<testing::FakeList>(v.AsObject()) : nullptr;
  if (v.IsArray()) {
    for (const auto& item : v.AsArray().items())
      text += Describe(item) + u",";
  } else if (list) {
    for (const auto& item : list->items)
      text += item + u"|";
  } else if (!v.IsObject() && !v.IsNull() && !v.IsMissing()) {
    text += ToString(v);
  }
  return text;
}

// A member by name and its arguments; a desktop database or a fresh list
// control goes first where the member takes one.
using Call = std::pair<const char16_t*, std::vector<Variant>>;

// The answer to a call as text: the result or the error, and every argument
// afterwards.
String Answer(clsPub& pub, const Call& call, const std::shared_ptr<dao::Database>& desk) {
  const auto& [member, args] = call;
  std::vector<Variant> given = args;
  if (member == StringView(u"ExistTableQueryDAO"))
    given.insert(given.begin(), std::shared_ptr<Dispatch>(desk));
  if (member == StringView(u"FillCboCK"))
    given.insert(given.begin(), std::shared_ptr<Dispatch>(std::make_shared<testing::FakeList>()));
  String answer = String(member) + u" -> ";
  try {
    answer += Describe(pub.Call(member, given));
  } catch (const Error& e) {
    answer += u"error " + FromUtf8(std::to_string(e.number())) + u" " + e.description();
  }
  for (const auto& arg : given)
    answer += u" | " + Describe(arg);
  return answer;
}

TEST(Threads, SeparateObjectsAnswerAsOneObjectAnswersInTurn) {
  testing::SuiteDb suite(/*demo=*/true);
  const Variant no(false), yes(true);
  const std::vector<Call> calls = {
      Call(u"CheckDirGrade", {u"0101", no, int16_t{7}}),
      Call(u"CheckDirGrade", {u"9", no, int16_t{12}}),
      Call(u"CheckDirGrade", {u"板材", yes, int16_t{7}, yes}), Call(u"CheckInv", {u"010101", yes}),
      Call(u"CheckInv", {u"刨花板 18mm"}), Call(u"CheckDirNoGrade", {u"V001", int16_t{1}, yes}),
      Call(u"TextSelected", {}), Call(u"GetAccInfo", {u"AA", u"cGoodClass"}),
      Call(u"GetAccInfo", {u"AA", u"x'y"}), Call(u"init", {u"whatever.db"}),
      Call(u"WhCodeToValueStyle", {u"02"}),
      Call(u"FromTo", {u"cInvCode", u"010102", u"iInvRCost", u"Inventory"}),
      Call(u"FromTo", {u"cInvCode", u"none", u"cInvName", u"Inventory"}),
      Call(u"SepCode", {u"  0101      North Store "}), Call(u"SepCode", {u"0101 North Store", yes}),
      Call(u"FormatNum", {-1234.565, Variant::Missing()}), Call(u"ReFormat", {u"1,234.5678901"}),
      Call(u"ReFormat", {u"abc"}), Call(u"InvCodeToUnit", {u"020201"}),
      Call(u"WhCodeToDep", {u"03"}), Call(u"InvCodeToUnitPrice", {u"010202"}),
      Call(u"InvCodeToClass", {u"010201"}), Call(u"InvIsBatch", {u"010201"}),
      Call(u"DepCodeToValueStyle", {u"03"}), Call(u"CurPeriod", {}),
      Call(u"FormatNum1", {2.345, int16_t{2}}), Call(u"JustID2Code", {int32_t{9001}}),
      Call(u"ExistTableQueryDAO", {u"Inventory"}),
      Call(u"ExistTableQueryDAO", {u"NoSuchQuery", yes}), Call(u"CheckWareDep", {}),
      Call(u"StartAccMonth", {u""}), Call(u"StartAccMonth", {u"GL"}),
      Call(u"JustIDs2CorBusType", {int32_t{9001}, yes}), Call(u"CheckAssDep", {u"0201"}),
      // shows a message box
      Call(u"InvCodeIsTorF", {u"missing", u"bSale"}), Call(u"CheckAccDep", {u"生产部", yes}),
      Call(u"SubMaxKeepDate", {}), Call(u"DepCode2WhCode", {u"0201"}),
      Call(u"IsEndHandled", {uint8_t{3}}), Call(u"CodeGrade2Length", {int16_t{2}, int16_t{0}}),
      Call(u"FillCboCK", {}), Call(u"FillCboCK", {u"03"}),
      Call(u"GetMonthState", {u"IA", int16_t{3}}),
      Call(u"GetInvUseFreeNew", {u"020101", Variant(Array(0, VarType::Variant, 10))}),
      Call(u"GetInvUseFreeNew", {u"020101", Variant(Array(1, VarType::Boolean, 10))}),
      Call(u"GetInvUseFree", {u"010102", no, no}),
      Call(u"GetInvDifHead", {u"01", u"0101", u"010101", u"", u""}), Call(u"GetCodeLen", {u"0201"}),
      Call(u"CodeToName", {u"C001", uint8_t{2}}), Call(u"CodeToName", {u"'", uint8_t{0}})};
  auto first = std::make_shared<CountingHost>(), second = std::make_shared<CountingHost>();
  const auto previous = SetUiHost(first);

  // The serial run: one object, every call once, in order.
  std::vector<String> expected;
  {
    clsPub pub;
    pub.DBIA(suite.Open());
    const auto desk = dao::Database::Open(FromUtf8(suite.path()));
    for (const auto& call : calls)
      expected.push_back(Answer(pub, call, desk));
  }
  const int64_t messages_per_round = CountingHost::shown.exchange(0);

  // Every thread goes through the calls from its own starting point.
  std::atomic<bool> late{false}, finished{false};
  std::vector<String> mismatches(kThreads);  // the first of each thread
  const auto started = std::chrono::steady_clock::now();
  std::vector<std::thread> workers;
  for (int t = 0; t < kThreads; ++t) {
    workers.emplace_back([&, t] {
      clsPub pub;
      pub.DBIA(suite.Open());
      const auto desk = dao::Database::Open(FromUtf8(suite.path()));
      for (int round = 0; round < kRounds && !late; ++round) {
        for (size_t k = 0; k < calls.size(); ++k) {
          const size_t i = (t * 7 + k) % calls.size();
          const String answer = Answer(pub, calls[i], desk);
          if (answer != expected[i] && mismatches[t].empty())
            mismatches[t] = answer + u"\n  expected " + expected[i];
        }
        if (std::chrono::steady_clock::now() > started + kTimeLimit) late = true;
      }
    });
  }
  // Meanwhile the process-wide host changes hands, over and over.
  std::thread swapper([&] {
    for (int i = 0; !finished; ++i) {
      SetUiHost(i % 2 ? first : second);
      std::this_thread::sleep_for(1ms);
    }
  });
  for (auto& worker : workers)
    worker.join();
  finished = true;
  swapper.join();
  SetUiHost(previous);
  const auto took = std::chrono::steady_clock::now() - started;

  EXPECT_FALSE(late) << "ran out of time";
  for (const String& mismatch : mismatches)
    EXPECT_TRUE(mismatch.empty()) << ToUtf8(mismatch);
  const int64_t messages = messages_per_round * kThreads * kRounds;
  EXPECT_EQ(CountingHost::shown.load(), messages);
  std::cout << "[ figures  ] " << kThreads << " threads x " << kRounds << " rounds of "
            << calls.size() << " calls (" << messages << " message boxes) in "
            << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << " ms\n";
}

}  // namespace
}  // namespace kavrin
