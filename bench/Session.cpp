#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>

#include "Bench.h"
#include "Cases.h"
#include "Measure.h"
#include "platform/State.h"

namespace kavrin::bench {

namespace {

// How long a session calls each case, kit and floor, at its size.
constexpr double kSessionSecondsPerCase = 0.2;

// The texts the kit sent, as the engine ran them: a bare table name is all
// of that table.
std::vector<std::string> AsRun(const std::vector<String>& traced) {
  std::vector<std::string> texts;
  for (const auto& text : traced) {
    texts.push_back(detail::IsBareTableName(text) ? ToUtf8(detail::SelectAllFrom(text))
                                                  : ToUtf8(text));
  }
  return texts;
}

}  // namespace

int Session(const Target& target, const std::string& out) {
  const auto cases = MakeCases(SuiteSize(target.items));
  Json result;
  result["engine"] = target.Engine();
  result["items"] = target.items;
  Json& first_calls = result["first_call_us"];

  // Every case answers what the data says, and on SQLite its floor runs the
  // texts the member sent; each is the first call on a connection of its own.
  for (const auto& c : cases) {
    auto db = OpenKit(target);
    std::vector<String> traced;
    db->Connection()->SetTrace([&traced](StringView text) { traced.emplace_back(text); });
    clsPub pub;
    pub.DBIA(db);
    const auto start = Clock::now();
    const std::string answer = c.call(pub);
    first_calls[c.name]["kit"] = Microseconds(Clock::now() - start);
    if (answer != c.expected) {
      std::cerr << c.name << " answered '" << answer << "', expected '" << c.expected << "'\n";
      return 1;
    }
    if (!c.floor) continue;
    auto floor = OpenFloor(target.connection);
    std::vector<std::string> sent;
    if (!target.OnServer()) floor->sent = &sent;
    const auto floor_start = Clock::now();
    c.floor(*floor);
    first_calls[c.name]["floor"] = Microseconds(Clock::now() - floor_start);
    if (!target.OnServer() && sent != AsRun(traced)) {
      std::cerr << c.name << ": the floor runs other statements than the member sent\n";
      for (const auto& text : AsRun(traced))
        std::cerr << "  member: " << text << "\n";
      for (const auto& text : sent)
        std::cerr << "  floor:  " << text << "\n";
      return 1;
    }
  }

  // A form's object called again and again, each case for a while; the
  // statements of a call once it is warm.
  clsPub pub;
  pub.DBIA(OpenKit(target));
  auto floor = OpenFloor(target.connection);
  for (const auto& c : cases) {
    benchmark::DoNotOptimize(c.call(pub));
    const uint64_t kit_before = KitStatements();
    benchmark::DoNotOptimize(c.call(pub));
    result["statements"][c.name]["kit"] = KitStatements() - kit_before;
    if (c.floor) {
      const uint64_t floor_before = floor->statements;
      c.floor(*floor);
      result["statements"][c.name]["floor"] = floor->statements - floor_before;
    }
    const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(kSessionSecondsPerCase));
    do {
      benchmark::DoNotOptimize(c.call(pub));
      if (c.floor) c.floor(*floor);
    } while (Clock::now() < until);
  }
  result["peak_rss_kb"] = PeakResidentKb();
  std::ofstream(out) << result.dump(2) << "\n";
  return 0;
}

}  // namespace kavrin::bench
