// Separate objects on separate threads, each with its own connection to one
// suite database, answer exactly as one object answers the same calls one
// after another. The one thing they share is the process-wide UI host, which
// another thread replaces while they run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <mutex>
#include <thread>

#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/Error.h"
#include "kavrin/Format.h"
#include "kavrin/Host.h"
#include "kavrin/OleDate.h"
#include "kavrin/clsPub.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using namespace std::chrono_literals;

constexpr int kThreads = 8;
constexpr int kCallsPerThread = 10000;
// Past this the workers stop and the test fails: a slow machine must not
// turn into a hung run.
constexpr auto kTimeLimit = 240s;

// A text box holding a text, as the focused control of a form.
class TextBox final : public Dispatch {
 public:
  String TypeName() const override { return u"TextBox"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override {
    if (EqualsNoCase(name, u"Text") && kind == InvokeKind::PropertyGet) return u"0101 North";
    if (EqualsNoCase(name, u"SelStart") && !args.empty()) {
      start_ = ToInteger(args.back());
      return {};
    }
    if (EqualsNoCase(name, u"SelLength") && !args.empty()) {
      length_ = ToInteger(args.back());
      return {};
    }
    ThrowMemberNotFound(TypeName(), name);
  }
  int16_t start_ = -1, length_ = -1;
};

// A list control that keeps what is added to it.
class ListBox final : public Dispatch {
 public:
  String TypeName() const override { return u"ComboBox"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    if (EqualsNoCase(name, u"Clear")) {
      items_.clear();
    } else if (EqualsNoCase(name, u"AddItem")) {
      items_.push_back(ToString(args[0]));
    } else {
      ThrowMemberNotFound(TypeName(), name);
    }
    return {};
  }
  std::vector<String> items_;
};

// A host whose every focused control is a fresh text box, and whose message
// boxes are counted. Safe to call from any thread.
class CountingHost final : public UiHost {
 public:
  explicit CountingHost(std::atomic<int64_t>& shown) : shown_(shown) {}
  std::shared_ptr<Dispatch> ActiveControl() override { return std::make_shared<TextBox>(); }
  int32_t MsgBox(StringView, int32_t, StringView) override {
    shown_.fetch_add(1, std::memory_order_relaxed);
    return vbOK;
  }

 private:
  std::atomic<int64_t>& shown_;
};

// What one thread's object needs: its own connection and desktop database.
struct Resources {
  std::shared_ptr<KitDatabase> db;
  std::shared_ptr<dao::Database> desk;
};

// The text of a value, as precise as the value: type, then contents.
String Describe(const Variant& v) {
  switch (v.type()) {
    case VarType::Object:
      if (auto list = std::dynamic_pointer_cast<ListBox>(v.AsObject())) {
        String items = u"List[";
        for (const auto& item : list->items_)
          items += item + u"|";
        return items + u"]";
      }
      return u"Object";
    case VarType::Array: {
      String items = u"Array[";
      for (const auto& item : v.AsArray().items())
        items += Describe(item) + u",";
      return items + u"]";
    }
    case VarType::Null:
    case VarType::Missing:
      return v.TypeName();
    case VarType::Double:
      return u"Double:" + FormatNumber(v, u"0.000000000000000");
    case VarType::Date:
      return u"Date:" + FormatIsoDateTime(v.AsDate());
    default:
      return v.TypeName() + u":" + ToString(v);
  }
}

// One call by name, with arguments made fresh for it, and its answer as text:
// the result or the error, and every argument afterwards.
struct Call {
  const char16_t* member;
  std::function<std::vector<Variant>(const Resources&)> args;

  String Run(clsPub& pub, const Resources& resources) const {
    std::vector<Variant> given = args(resources);
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
};

std::vector<Call> Calls() {
  using V = std::vector<Variant>;
  auto plain = [](V args) { return [args](const Resources&) { return args; }; };
  const Variant no(false), yes(true);
  std::vector<Call> calls = {
      {u"CheckDirGrade", plain({u"0101", no, int16_t{7}})},
      {u"CheckDirGrade", plain({u"板材", yes, int16_t{7}, yes})},
      {u"CheckDirGrade", plain({u"9", no, int16_t{12}})},
      {u"CheckInv", plain({u"010101", yes})},
      {u"CheckInv", plain({u"刨花板 18mm"})},
      {u"CheckDirNoGrade", plain({u"V001", int16_t{1}, yes})},
      {u"CheckDirNoGrade", plain({u"nobody", int16_t{5}})},
      {u"TextSelected", plain({})},
      {u"GetAccInfo", plain({u"AA", u"cGoodClass"})},
      {u"GetAccInfo", plain({u"IA", u"cValueStyle"})},
      {u"GetAccInfo", plain({u"AA", u"x'y"})},
      {u"init", plain({u"whatever.db"})},
      {u"WhCodeToValueStyle", plain({u"02"})},
      {u"FromTo", plain({u"cInvCode", u"010102", u"iInvRCost", u"Inventory"})},
      {u"FromTo", plain({u"cInvCode", u"none", u"cInvName", u"Inventory"})},
      {u"SepCode", plain({u"  0101      North Store "})},
      {u"SepCode", plain({u"0101 North Store", yes})},
      {u"FormatNum", plain({-1234.565, Variant::Missing()})},
      {u"ReFormat", plain({u"1,234.5678901"})},
      {u"ReFormat", plain({u"abc"})},
      {u"InvCodeToUnit", plain({u"020201"})},
      {u"WhCodeToDep", plain({u"03"})},
      {u"InvCodeToUnitPrice", plain({u"010202"})},
      {u"InvCodeToClass", plain({u"010201"})},
      {u"InvIsBatch", plain({u"010201"})},
      {u"DepCodeToValueStyle", plain({u"03"})},
      {u"CurPeriod", plain({})},
      {u"FormatNum1", plain({2.345, int16_t{2}})},
      {u"FormatNum1", plain({5.0, int16_t{-1}})},
      {u"JustID2Code", plain({int32_t{9001}})},
      {u"ExistTableQueryDAO",
       [](const Resources& r) {
         return V{Variant(std::shared_ptr<Dispatch>(r.desk)), u"Inventory"};
       }},
      {u"ExistTableQueryDAO",
       [](const Resources& r) {
         return V{Variant(std::shared_ptr<Dispatch>(r.desk)), u"NoSuchQuery", Variant(true)};
       }},
      {u"CheckWareDep", plain({})},
      {u"StartAccMonth", plain({u""})},
      {u"StartAccMonth", plain({u"GL"})},
      {u"JustIDs2CorBusType", plain({int32_t{9001}, yes})},
      {u"CheckAssDep", plain({u"0201"})},
      {u"InvCodeIsTorF", plain({u"010101", u"bSale"})},
      {u"InvCodeIsTorF", plain({u"missing", u"bSale"})},  // shows a message box
      {u"CheckAccDep", plain({u"生产部", yes})},
      {u"SubMaxKeepDate", plain({})},
      {u"DepCode2WhCode", plain({u"0201"})},
      {u"IsEndHandled", plain({uint8_t{3}})},
      {u"CodeGrade2Length", plain({int16_t{2}, int16_t{0}})},
      {u"FillCboCK",
       [](const Resources&) {
         return V{Variant(std::shared_ptr<Dispatch>(std::make_shared<ListBox>()))};
       }},
      {u"FillCboCK",
       [](const Resources&) {
         return V{Variant(std::shared_ptr<Dispatch>(std::make_shared<ListBox>())), u"03"};
       }},
      {u"GetMonthState", plain({u"IA", int16_t{3}})},
      {u"GetInvUseFreeNew", plain({u"020101", Variant(Array(0, VarType::Variant, 10))})},
      {u"GetInvUseFreeNew", plain({u"020101", Variant(Array(1, VarType::Boolean, 10))})},
      {u"GetInvUseFree", plain({u"010102", no, no})},
      {u"GetInvDifHead", plain({u"01", u"0101", u"010101", u"", u""})},
      {u"GetCodeLen", plain({u"0201"})},
      {u"CodeToName", plain({u"C001", uint8_t{2}})},
      {u"CodeToName", plain({u"'", uint8_t{0}})},
  };
  return calls;
}

TEST(Threads, SeparateObjectsAnswerAsOneObjectAnswersInTurn) {
  testing::SuiteDb suite(/*demo=*/true);
  const auto calls = Calls();

  std::atomic<int64_t> shown{0};
  auto first = std::make_shared<CountingHost>(shown);
  auto second = std::make_shared<CountingHost>(shown);
  const auto previous = SetUiHost(first);

  // The serial run: one object, every call once, in order.
  std::vector<String> expected;
  std::vector<int64_t> messages;
  {
    clsPub pub;
    const Resources resources{suite.Open(), dao::Database::Open(FromUtf8(suite.path()))};
    pub.DBIA(resources.db);
    for (const auto& call : calls) {
      const int64_t before = shown.load();
      expected.push_back(call.Run(pub, resources));
      messages.push_back(shown.load() - before);
    }
  }
  shown = 0;

  // Every thread goes through the calls from its own starting point.
  std::atomic<int64_t> done{0};
  std::atomic<int64_t> mismatches{0};
  std::atomic<bool> stop{false};
  std::mutex first_mismatch_mutex;
  String first_mismatch;
  int64_t messages_expected = 0;
  for (int t = 0; t < kThreads; ++t) {
    for (int k = 0; k < kCallsPerThread; ++k)
      messages_expected += messages[static_cast<size_t>(t * 7 + k) % calls.size()];
  }
  const auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
  const auto started = std::chrono::steady_clock::now();
  std::vector<std::thread> workers;
  for (int t = 0; t < kThreads; ++t) {
    workers.emplace_back([&, t] {
      clsPub pub;
      const Resources resources{suite.Open(), dao::Database::Open(FromUtf8(suite.path()))};
      pub.DBIA(resources.db);
      for (int k = 0; k < kCallsPerThread && !stop; ++k) {
        const size_t index = static_cast<size_t>(t * 7 + k) % calls.size();
        const String answer = calls[index].Run(pub, resources);
        if (answer != expected[index]) {
          mismatches.fetch_add(1);
          std::lock_guard lock(first_mismatch_mutex);
          if (first_mismatch.empty()) first_mismatch = answer + u"\n  expected " + expected[index];
        }
        done.fetch_add(1, std::memory_order_relaxed);
        if (k % 64 == 0 && std::chrono::steady_clock::now() > deadline) stop = true;
      }
    });
  }
  // Meanwhile the process-wide host changes hands, over and over.
  std::thread swapper([&] {
    for (int i = 0; done.load() < int64_t{kThreads} * kCallsPerThread && !stop; ++i) {
      SetUiHost(i % 2 ? first : second);
      std::this_thread::sleep_for(1ms);
    }
  });
  for (auto& worker : workers)
    worker.join();
  stop = true;
  swapper.join();
  SetUiHost(previous);
  const auto took = std::chrono::steady_clock::now() - started;

  EXPECT_EQ(done.load(), int64_t{kThreads} * kCallsPerThread) << "ran out of time";
  EXPECT_EQ(mismatches.load(), 0) << ToUtf8(first_mismatch);
  EXPECT_EQ(shown.load(), messages_expected);
  std::cout << "[ figures  ] " << kThreads << " threads x " << kCallsPerThread << " calls ("
            << calls.size() << " distinct calls, " << messages_expected << " message boxes) in "
            << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << " ms\n";
}

}  // namespace
}  // namespace kavrin
