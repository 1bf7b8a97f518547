// kavrin-bench: times the component's calls against the engine itself on
// suite databases of growing size.
//
//   kavrin-bench run --dir DIR [--sizes 1000,100000,1000000] [--out FILE.json]
//                    [--rounds N] [--repetitions N] [--min-time SECONDS]
//       generates the databases missing in DIR, measures each size in a
//       process of its own (the sizes in turns, for a number of rounds),
//       prints the summary and writes it as JSON
//   kavrin-bench generate PATH ITEMS
//   kavrin-bench measure PATH ITEMS OUT.json [--repetitions N] [--min-time S]
//       one size: every case for the kit and for its floor, each repetition,
//       the first call on a new connection, and peak memory
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Cases.h"
#include "Generator.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "platform/State.h"

extern char** environ;

namespace kavrin::bench {
namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr double kGrowthTarget = 1.5;
constexpr double kFloorTarget = 2.0;
constexpr double kMemoryTargetMb = 32.0;

int Usage();
std::string Fixed(double value, int decimals);

struct Options {
  int rounds = 3;       // each size measured this many times, the sizes in turn
  int repetitions = 3;  // per round
  double min_time = 0.1;
  std::string filter;  // only the cases whose names match, when measuring one size
};

double Microseconds(Clock::duration d) {
  return std::chrono::duration<double, std::micro>(d).count();
}

// Processor time of the calling thread, user and system, in microseconds.
double ThreadCpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

// The time one side of a case has taken so far.
struct Part {
  double cpu = 0;
  double wall = 0;
  template <typename Body>
  void Time(Body&& body) {
    const double cpu_start = ThreadCpuMicroseconds();
    const auto wall_start = Clock::now();
    body();
    wall += Microseconds(Clock::now() - wall_start);
    cpu += ThreadCpuMicroseconds() - cpu_start;
  }
};

// The peak resident memory of this process's own address space, in KiB.
long PeakResidentKb() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

std::shared_ptr<KitDatabase> OpenKit(const std::string& path) {
  return KitDatabase::Open(FromUtf8("sqlite:" + path));
}

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

using Samples = std::map<std::string, std::map<std::string, std::vector<double>>>;

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  if (n == 0) return 0;
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Keeps each repetition's counters, per case, while showing the aggregates.
class SampleReporter final : public benchmark::ConsoleReporter {
 public:
  SampleReporter() : ConsoleReporter(OO_Tabular) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> aggregates;
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Aggregate) {
        aggregates.push_back(run);
      } else {
        for (const auto& [name, counter] : run.counters)
          samples[run.run_name.function_name][name].push_back(counter.value);
      }
    }
    if (!aggregates.empty()) ConsoleReporter::ReportRuns(aggregates);
  }
  Samples samples;
};

int Measure(const std::string& path, int64_t items, const std::string& out,
            const Options& options) {
  const SuiteSize size(items);
  const auto cases = MakeCases(size);
  Json result;
  result["items"] = items;
  Json& first_calls = result["first_call_us"];

  // Every case answers what the data says, and its floor runs the texts the
  // member sent.
  for (const auto& c : cases) {
    auto db = OpenKit(path);
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
    Floor floor(path);
    std::vector<std::string> sent;
    floor.sent = &sent;
    const auto floor_start = Clock::now();
    c.floor(floor);
    first_calls[c.name]["floor"] = Microseconds(Clock::now() - floor_start);
    if (sent != AsRun(traced)) {
      std::cerr << c.name << ": the floor runs other statements than the member sent\n";
      for (const auto& text : AsRun(traced))
        std::cerr << "  member: " << text << "\n";
      for (const auto& text : sent)
        std::cerr << "  floor:  " << text << "\n";
      return 1;
    }
  }

  // A form's object: one clsPub with DBIA open, called again and again. Each
  // iteration makes the call through the kit and runs its floor, in turns
  // first, so that both meet the same load on the machine.
  clsPub pub;
  pub.DBIA(OpenKit(path));
  Floor floor(path);
  for (const auto& c : cases) {
    benchmark::RegisterBenchmark(c.name.c_str(), [&pub, &floor, &c](benchmark::State& state) {
      benchmark::DoNotOptimize(c.call(pub));  // warm
      Part kit;
      if (!c.floor) {
        // Nothing to take turns with: the loop is timed whole.
        kit.Time([&] {
          for (auto _ : state)
            benchmark::DoNotOptimize(c.call(pub));
        });
        state.counters["kit_us"] = kit.cpu / static_cast<double>(state.iterations());
        state.counters["kit_wall_us"] = kit.wall / static_cast<double>(state.iterations());
        return;
      }
      c.floor(floor);
      Part engine;
      const auto run_kit = [&] { kit.Time([&] { benchmark::DoNotOptimize(c.call(pub)); }); };
      const auto run_floor = [&] { engine.Time([&] { c.floor(floor); }); };
      bool kit_first = true;
      for (auto _ : state) {
        if (kit_first) {
          run_kit();
          run_floor();
        } else {
          run_floor();
          run_kit();
        }
        kit_first = !kit_first;
      }
      const auto n = static_cast<double>(state.iterations());
      state.counters["kit_us"] = kit.cpu / n;
      state.counters["kit_wall_us"] = kit.wall / n;
      state.counters["floor_us"] = engine.cpu / n;
      state.counters["floor_wall_us"] = engine.wall / n;
    })->Unit(benchmark::kMicrosecond);
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
  result["samples"] = reporter.samples;
  result["peak_rss_kb"] = PeakResidentKb();
  std::ofstream(out) << result.dump(2) << "\n";
  return 0;
}

// Calls one case `times` times through the kit and as many straight through
// the engine, one after the other, for a profiler to watch or to compare the
// two under the same load; prints the processor time of each.
int Repeat(const std::string& path, int64_t items, const std::string& name, int64_t times) {
  const auto cases = MakeCases(SuiteSize(items));
  const auto found =
      std::find_if(cases.begin(), cases.end(), [&name](const Case& c) { return c.name == name; });
  if (found == cases.end()) return Usage();
  clsPub pub;
  pub.DBIA(OpenKit(path));
  Floor floor(path);
  double kit = 0;
  double engine = 0;
  for (int64_t i = 0; i < times; ++i) {
    const double start = ThreadCpuMicroseconds();
    benchmark::DoNotOptimize(found->call(pub));
    const double middle = ThreadCpuMicroseconds();
    if (found->floor) found->floor(floor);
    kit += middle - start;
    engine += ThreadCpuMicroseconds() - middle;
  }
  const auto n = static_cast<double>(times);
  std::cout << name << ": kit " << Fixed(kit / n, 1) << " us, floor " << Fixed(engine / n, 1)
            << " us, ratio " << Fixed(engine > 0 ? kit / engine : 0, 2) << "\n";
  return 0;
}

// One size's measurements over all rounds: the medians of every repetition,
// the median first call, the highest peak memory.
Json Merge(const std::vector<Json>& rounds) {
  Json merged;
  merged["items"] = rounds.front()["items"];
  std::map<std::string, std::map<std::string, std::vector<double>>> samples;
  std::map<std::string, std::map<std::string, std::vector<double>>> firsts;
  double peak = 0;
  double child = 0;
  for (const auto& round : rounds) {
    for (const auto& [name, counters] : round["samples"].items()) {
      for (const auto& [counter, values] : counters.items()) {
        for (const auto& value : values)
          samples[name][counter].push_back(value.get<double>());
      }
    }
    for (const auto& [name, sides] : round["first_call_us"].items()) {
      for (const auto& [side, value] : sides.items())
        firsts[name][side].push_back(value.get<double>());
    }
    peak = std::max(peak, round["peak_rss_kb"].get<double>());
    child = std::max(child, round["child_max_rss_kb"].get<double>());
  }
  for (const auto& [name, counters] : samples) {
    for (const auto& [counter, values] : counters) {
      const bool wall = counter.find("wall") != std::string::npos;
      const std::string side = counter.rfind("kit", 0) == 0 ? "kit" : "floor";
      merged[wall ? "median_wall_us" : "median_us"][name][side] = Median(values);
    }
    merged["repetitions"][name] = counters.begin()->second.size();
  }
  for (const auto& [name, sides] : firsts) {
    for (const auto& [side, values] : sides)
      merged["first_call_us"][name][side] = Median(values);
  }
  merged["peak_rss_kb"] = peak;
  merged["child_max_rss_kb"] = child;
  return merged;
}

// Runs this program again with `args` and waits for it; answers the exit
// status, or throws when it cannot start.
int RunChild(const std::vector<std::string>& args, long* max_rss_kb = nullptr) {
  std::vector<char*> argv;
  std::vector<std::string> copy = args;
  for (auto& arg : copy)
    argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  if (posix_spawn(&pid, self.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + self);
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  if (max_rss_kb) *max_rss_kb = usage.ru_maxrss;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

std::string Fixed(double value, int decimals) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string Pad(const std::string& text, size_t width, bool left = false) {
  // Widths count characters; the summary holds ASCII only.
  if (text.size() >= width) return text;
  const std::string fill(width - text.size(), ' ');
  return left ? text + fill : fill + text;
}

std::string Machine() {
  std::string model;
  std::ifstream cpuinfo("/proc/cpuinfo");
  std::string line;
  while (std::getline(cpuinfo, line)) {
    if (line.rfind("model name", 0) == 0) {
      model = line.substr(line.find(':') + 2);
      break;
    }
  }
  return model + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cpus";
}

int Run(const std::string& dir, const std::vector<int64_t>& sizes, const std::string& out,
        const Options& options) {
  std::filesystem::create_directories(dir);
  const auto started = Clock::now();
  for (int64_t items : sizes) {
    const std::string db = dir + "/" + SuiteFileName(items);
    if (std::filesystem::exists(db)) continue;
    const std::string partial = db + ".partial";
    std::filesystem::remove(partial);
    const auto generate_start = Clock::now();
    if (RunChild({"kavrin-bench", "generate", partial, std::to_string(items)}) != 0) return 1;
    std::filesystem::rename(partial, db);
    std::cerr << "generated " << db << " in "
              << Fixed(std::chrono::duration<double>(Clock::now() - generate_start).count(), 1)
              << " s\n";
  }

  // The sizes are measured in turns, round after round, so that a change in
  // the machine's load falls on all of them alike; the medians are taken over
  // the repetitions of every round.
  std::vector<std::vector<Json>> rounds(sizes.size());
  for (int round = 1; round <= options.rounds; ++round) {
    for (size_t i = 0; i < sizes.size(); ++i) {
      const int64_t items = sizes[i];
      const std::string json =
          dir + "/measured-" + std::to_string(items) + "-" + std::to_string(round) + ".json";
      long child_rss = 0;
      std::cerr << "measuring " << items << " items, round " << round << " of " << options.rounds
                << "\n";
      if (RunChild(
              {"kavrin-bench", "measure", dir + "/" + SuiteFileName(items), std::to_string(items),
               json, "--repetitions", std::to_string(options.repetitions), "--min-time",
               std::to_string(options.min_time)},
              &child_rss) != 0) {
        return 1;
      }
      Json one = Json::parse(std::ifstream(json));
      one["child_max_rss_kb"] = child_rss;
      rounds[i].push_back(std::move(one));
    }
  }
  std::vector<Json> measured;
  for (size_t i = 0; i < sizes.size(); ++i)
    measured.push_back(Merge(rounds[i]));

  // The summary: per case, its median at each size, the ratio to its floor
  // and the growth from the smallest to the largest size.
  const SuiteSize smallest(sizes.front());
  const auto cases = MakeCases(smallest);
  Json summary;
  summary["machine"] = Machine();
  summary["sizes"] = sizes;
  summary["rounds"] = options.rounds;
  summary["repetitions_per_round"] = options.repetitions;
  summary["min_time_s"] = options.min_time;
  summary["targets"] = {
      {"growth", kGrowthTarget}, {"floor_ratio", kFloorTarget}, {"memory_mb", kMemoryTargetMb}};
  bool growth_met = true;
  bool floor_met = true;
  std::ostringstream table;
  table << Pad("case", 26, true);
  for (int64_t items : sizes)
    table << Pad(std::to_string(items), 11) << Pad("floor", 9) << Pad("ratio", 7);
  table << Pad("growth", 8) << "\n";
  for (const auto& c : cases) {
    Json row;
    row["archive_check"] = c.archive_check;
    table << Pad(c.name + (c.archive_check ? " *" : ""), 26, true);
    for (const auto& m : measured) {
      const auto& median = m["median_us"][c.name];
      const double kit = median["kit"].get<double>();
      Json at{{"items", m["items"]},
              {"repetitions", m["repetitions"][c.name]},
              {"kit_us", kit},
              {"kit_wall_us", m["median_wall_us"][c.name]["kit"]},
              {"first_call_us", m["first_call_us"][c.name]["kit"]}};
      table << Pad(Fixed(kit, 1), 11);
      if (median.contains("floor")) {
        const double floor = median["floor"].get<double>();
        at["floor_us"] = floor;
        at["floor_wall_us"] = m["median_wall_us"][c.name]["floor"];
        at["floor_first_call_us"] = m["first_call_us"][c.name]["floor"];
        at["ratio_to_floor"] = kit / floor;
        floor_met = floor_met && kit / floor <= kFloorTarget;
        table << Pad(Fixed(floor, 1), 9) << Pad(Fixed(kit / floor, 2), 7);
      } else {
        table << Pad("-", 9) << Pad("-", 7);
      }
      row["sizes"].push_back(at);
    }
    const double growth = measured.back()["median_us"][c.name]["kit"].get<double>() /
                          measured.front()["median_us"][c.name]["kit"].get<double>();
    row["growth"] = growth;
    if (c.archive_check) growth_met = growth_met && growth <= kGrowthTarget;
    table << Pad(Fixed(growth, 2), 8) << "\n";
    summary["cases"][c.name] = row;
  }
  table << "(medians of the processor time per call in microseconds; ratio = kit / floor;"
        << " growth = largest / smallest size; * = archive check)\n\n";
  // The first call on a new connection pays what later calls find known:
  // the table checks, the whole-table counts, the engine's page cache.
  table << Pad("first call on a new connection", 32, true);
  for (int64_t items : sizes)
    table << Pad(std::to_string(items), 11) << Pad("floor", 9);
  table << "\n";
  for (const auto& c : cases) {
    table << Pad(c.name, 32, true);
    for (const auto& m : measured) {
      const auto& first = m["first_call_us"][c.name];
      table << Pad(Fixed(first["kit"].get<double>(), 0), 11)
            << Pad(first.contains("floor") ? Fixed(first["floor"].get<double>(), 0) : "-", 9);
    }
    table << "\n";
  }
  table << "(wall-clock microseconds, one call each)\n\n";
  table << Pad("items", 10) << Pad("peak MB", 10) << Pad("vs first", 10) << "\n";
  const double base_mb = measured.front()["peak_rss_kb"].get<double>() / 1024.0;
  bool memory_met = true;
  for (const auto& m : measured) {
    const double mb = m["peak_rss_kb"].get<double>() / 1024.0;
    memory_met = memory_met && mb - base_mb <= kMemoryTargetMb;
    summary["memory"].push_back({{"items", m["items"]},
                                 {"peak_rss_mb", mb},
                                 {"child_max_rss_mb", m["child_max_rss_kb"].get<double>() / 1024},
                                 {"above_first_mb", mb - base_mb}});
    table << Pad(std::to_string(m["items"].get<int64_t>()), 10) << Pad(Fixed(mb, 1), 10)
          << Pad(Fixed(mb - base_mb, 1), 10) << "\n";
  }
  table << "\narchive checks grow at most " << kGrowthTarget
        << "x: " << (growth_met ? "met" : "NOT met") << "\nevery case within " << kFloorTarget
        << "x its floor: " << (floor_met ? "met" : "NOT met") << "\npeak memory within "
        << kMemoryTargetMb << " MB of the smallest size: " << (memory_met ? "met" : "NOT met")
        << "\n";
  summary["met"] = {{"growth", growth_met}, {"floor_ratio", floor_met}, {"memory", memory_met}};
  summary["seconds"] = std::chrono::duration<double>(Clock::now() - started).count();
  std::cout << "\n" << Machine() << "\n\n" << table.str();
  if (!out.empty()) std::ofstream(out) << summary.dump(2) << "\n";
  return 0;
}

int Usage() {
  std::cerr << "usage: kavrin-bench run --dir DIR [--sizes N,N,...] [--out FILE.json]"
               " [--rounds N] [--repetitions N] [--min-time S]\n"
               "       kavrin-bench generate PATH ITEMS\n"
               "       kavrin-bench measure PATH ITEMS OUT.json [--repetitions N] [--min-time S]"
               " [--filter REGEX]\n"
               "       kavrin-bench repeat PATH ITEMS CASE TIMES\n";
  return 2;
}

int Main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return Usage();
  const std::string command = args[0];
  Options options;
  std::string dir;
  std::string out;
  std::vector<int64_t> sizes = {1000, 100000, 1000000};
  std::vector<std::string> positional;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool has_value = i + 1 < args.size();
    if (arg == "--repetitions" && has_value) {
      options.repetitions = std::stoi(args[++i]);
    } else if (arg == "--rounds" && has_value) {
      options.rounds = std::stoi(args[++i]);
    } else if (arg == "--min-time" && has_value) {
      options.min_time = std::stod(args[++i]);
    } else if (arg == "--filter" && has_value) {
      options.filter = args[++i];
    } else if (arg == "--dir" && has_value) {
      dir = args[++i];
    } else if (arg == "--out" && has_value) {
      out = args[++i];
    } else if (arg == "--sizes" && has_value) {
      sizes.clear();
      std::stringstream list(args[++i]);
      std::string item;
      while (std::getline(list, item, ','))
        sizes.push_back(std::stoll(item));
    } else if (arg.rfind("--", 0) == 0) {
      return Usage();
    } else {
      positional.push_back(arg);
    }
  }
  if (command == "generate" && positional.size() == 2) {
    GenerateSuite(positional[0], std::stoll(positional[1]));
    return 0;
  }
  if (command == "measure" && positional.size() == 3) {
    return Measure(positional[0], std::stoll(positional[1]), positional[2], options);
  }
  if (command == "repeat" && positional.size() == 4) {
    return Repeat(positional[0], std::stoll(positional[1]), positional[2],
                  std::stoll(positional[3]));
  }
  if (command == "run" && positional.empty() && !dir.empty() && !sizes.empty()) {
    return Run(dir, sizes, out, options);
  }
  return Usage();
}

}  // namespace
}  // namespace kavrin::bench

int main(int argc, char** argv) {
  try {
    return kavrin::bench::Main(argc, argv);
  } catch (const kavrin::Error& e) {
    std::cerr << "kavrin-bench: " << e.what() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "kavrin-bench: " << e.what() << "\n";
  }
  return 1;
}
