#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <map>

#include "Bench.h"
#include "Cases.h"
#include "Measure.h"

namespace kavrin::bench {

namespace {

// Keeps each repetition's counters, per case, while showing the aggregates.
class SampleReporter final : public benchmark::ConsoleReporter {
 public:
  SampleReporter() : ConsoleReporter(OO_Tabular) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> aggregates;
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Aggregate) {
        if (run.aggregate_name == "median") aggregates.push_back(run);
      } else {
        for (const auto& [name, counter] : run.counters)
          samples[run.run_name.function_name][name].push_back(counter.value);
      }
    }
    if (!aggregates.empty()) ConsoleReporter::ReportRuns(aggregates);
  }
  std::map<std::string, std::map<std::string, std::vector<double>>> samples;
};

// A form's object on one target, and the engine's own connection beside it.
struct Bench {
  explicit Bench(const Target& target)
      : target(target),
        cases(MakeCases(SuiteSize(target.items))),
        floor(OpenFloor(target.connection)) {
    pub.DBIA(OpenKit(target));
  }
  Target target;
  std::vector<Case> cases;
  clsPub pub;
  std::unique_ptr<Floor> floor;
};

}  // namespace

int Time(const std::vector<Target>& targets, const std::string& out, const Options& options) {
  std::vector<std::unique_ptr<Bench>> benches;
  for (const auto& target : targets)
    benches.push_back(std::make_unique<Bench>(target));
  const size_t n = benches.size();
  for (size_t k = 0; k < benches.front()->cases.size(); ++k) {
    const std::string& name = benches.front()->cases[k].name;
    benchmark::RegisterBenchmark(name.c_str(), [&benches, k, n](benchmark::State& state) {
      // An iteration calls the case at every size, starting from another
      // size each time, through the kit and straight through the engine,
      // the one first and then the other.
      std::vector<Part> kit(n);
      std::vector<Part> engine(n);
      for (auto& b : benches) {
        const Case& c = b->cases[k];
        benchmark::DoNotOptimize(c.call(b->pub));  // warm
        if (c.floor) c.floor(*b->floor);
      }
      // A case without a floor is cheap: its calls are timed in batches, so
      // that reading the clocks does not count.
      const int batch = benches.front()->cases[k].floor ? 1 : 1000;
      int64_t turn = 0;
      for (auto _ : state) {
        for (size_t j = 0; j < n; ++j) {
          const size_t i = (static_cast<size_t>(turn) + j) % n;
          Bench& b = *benches[i];
          const Case& c = b.cases[k];
          const auto run_kit = [&] {
            kit[i].Time([&] {
              for (int call = 0; call < batch; ++call)
                benchmark::DoNotOptimize(c.call(b.pub));
            });
          };
          const auto run_floor = [&] {
            if (c.floor) engine[i].Time([&] { c.floor(*b.floor); });
          };
          if (turn % 2 == 0) {
            run_kit();
            run_floor();
          } else {
            run_floor();
            run_kit();
          }
        }
        ++turn;
      }
      const auto iterations = static_cast<double>(state.iterations());
      for (size_t i = 0; i < n; ++i) {
        const Target& items = benches[i]->target;
        state.counters[Counter("kit", items, false)] = kit[i].cpu / iterations / batch;
        state.counters[Counter("kit", items, true)] = kit[i].wall / iterations / batch;
        if (!benches[i]->cases[k].floor) continue;
        state.counters[Counter("floor", items, false)] = engine[i].cpu / iterations;
        state.counters[Counter("floor", items, true)] = engine[i].wall / iterations;
      }
    })->Unit(benchmark::kMillisecond);
  }
  std::vector<std::string> args = {
      "kavrin-bench",
      "--benchmark_repetitions=" + std::to_string(options.repetitions),
      "--benchmark_min_time=" + std::to_string(options.min_time),
      "--benchmark_enable_random_interleaving=true",
  };
  if (!options.filter.empty()) args.push_back("--benchmark_filter=" + options.filter);
  std::vector<char*> argv;
  for (auto& arg : args)
    argv.push_back(arg.data());
  int argc = static_cast<int>(argv.size());
  benchmark::Initialize(&argc, argv.data());
  SampleReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  Json result;
  result["samples"] = reporter.samples;
  std::ofstream(out) << result.dump(2) << "\n";
  return 0;
}

// Calls one case `times` times through the kit and as many straight through
// the engine, one after the other; prints the processor time of each.
int Repeat(const Target& target, const std::string& name, int64_t times) {
  const auto cases = MakeCases(SuiteSize(target.items));
  const auto found =
      std::find_if(cases.begin(), cases.end(), [&name](const Case& c) { return c.name == name; });
  if (found == cases.end()) return 2;
  clsPub pub;
  pub.DBIA(OpenKit(target));
  auto floor = OpenFloor(target.connection);
  Part kit;
  Part engine;
  for (int64_t i = 0; i < times; ++i) {
    kit.Time([&] { benchmark::DoNotOptimize(found->call(pub)); });
    if (found->floor) engine.Time([&] { found->floor(*floor); });
  }
  const auto n = static_cast<double>(times);
  std::cout << name << ": kit " << Fixed(kit.cpu / n, 1) << " us, floor "
            << Fixed(engine.cpu / n, 1) << " us, ratio "
            << Fixed(engine.cpu > 0 ? kit.cpu / engine.cpu : 0, 2) << "\n";
  return 0;
}

}  // namespace kavrin::bench
