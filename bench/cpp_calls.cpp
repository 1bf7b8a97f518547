// kavrin-cpp-calls: the C++ side of bench/python_calls.py. Times the same
// calls the Python script makes, on one clsPub, called directly (typed), by
// name (late binding) and through the C interface, and prints one JSON
// object: {"CASE": {"typed": US, "late": US, "c": US}, ...}, wall-clock
// microseconds per call, the median of the repetitions.
//
//   kavrin-cpp-calls DATABASE CALLS REPETITIONS
#include <kavrin/KitDatabase.h>
#include <kavrin/clsPub.h>
#include <kavrin/kavrin.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double Time(int calls, int repetitions, const std::function<void()>& call) {
  std::vector<double> per_call;
  call();  // the first call opens what later ones find open
  for (int r = 0; r < repetitions; ++r) {
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i)
      call();
    const std::chrono::duration<double, std::micro> spent = Clock::now() - start;
    per_call.push_back(spent.count() / calls);
  }
  return Median(per_call);
}

kavrin_value Text(const char* text) {
  kavrin_value v = KAVRIN_VALUE_INIT;
  v.kind = KAVRIN_STRING;
  v.u.utf8.data = text;
  v.u.utf8.length = std::strlen(text);
  return v;
}

kavrin_value Number(int32_t kind, double value) {
  kavrin_value v = KAVRIN_VALUE_INIT;
  v.kind = kind;
  if (kind == KAVRIN_DOUBLE)
    v.u.d = value;
  else
    v.u.i = static_cast<int32_t>(value);
  return v;
}

struct Case {
  const char* name;
  std::function<void(kavrin::clsPub&)> typed;
  const char16_t* member;
  std::vector<kavrin::Variant> variants;
  std::vector<kavrin_value> values;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: kavrin-cpp-calls DATABASE CALLS REPETITIONS\n");
    return 2;
  }
  const int calls = std::atoi(argv[2]);
  const int repetitions = std::atoi(argv[3]);
  kavrin::clsPub pub;
  pub.DBIA(kavrin::KitDatabase::Open(kavrin::FromUtf8(argv[1])));
  kavrin_object* handle = nullptr;
  if (kavrin_open(argv[1], &handle, nullptr) != 0) return 1;

  std::vector<Case> cases = {
      {"CheckDirNoGrade",
       [](kavrin::clsPub& p) { p.CheckDirNoGrade(u"010101", 0); },
       u"CheckDirNoGrade",
       {u"010101", int32_t{0}},
       {Text("010101"), Number(KAVRIN_LONG, 0)}},
      {"CodeToName",
       [](kavrin::clsPub& p) { p.CodeToName(u"010101", 0); },
       u"CodeToName",
       {u"010101", int32_t{0}},
       {Text("010101"), Number(KAVRIN_LONG, 0)}},
      {"SepCode",
       [](kavrin::clsPub& p) {
         kavrin::String code = u"01             store";
         p.SepCode(code);
       },
       u"SepCode",
       {u"01             store"},
       {Text("01             store")}},
      {"FormatNum",
       [](kavrin::clsPub& p) { p.FormatNum(1234.5); },
       u"FormatNum",
       {1234.5},
       {Number(KAVRIN_DOUBLE, 1234.5)}},
  };

  std::string json = "{";
  for (Case& c : cases) {
    const double typed = Time(calls, repetitions, [&] { c.typed(pub); });
    const double late = Time(calls, repetitions, [&] {
      std::vector<kavrin::Variant> args = c.variants;
      pub.Call(c.member, args);
    });
    const std::string member = kavrin::ToUtf8(c.member);
    const double through_c = Time(calls, repetitions, [&] {
      std::vector<kavrin_value> args = c.values;
      kavrin_value result = KAVRIN_VALUE_INIT;
      if (kavrin_invoke(handle, member.c_str(), KAVRIN_METHOD, args.data(), args.size(), &result, 0,
                        nullptr) != 0)
        std::abort();
      for (auto& arg : args)
        kavrin_value_clear(&arg);
      kavrin_value_clear(&result);
    });
    char entry[200];
    std::snprintf(entry, sizeof entry, "%s\"%s\": {\"typed\": %.3f, \"late\": %.3f, \"c\": %.3f}",
                  json.size() > 1 ? ", " : "", c.name, typed, late, through_c);
    json += entry;
  }
  std::printf("%s}\n", json.c_str());
  kavrin_object_release(handle);
  return 0;
}
