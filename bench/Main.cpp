// kavrin-bench: times the component's calls against the engine itself on
// suite databases of growing size.
//
//   kavrin-bench run --dir DIR [--sizes 1000,100000,1000000] [--out FILE.json]
//                    [--repetitions N] [--min-time SECONDS]
//       generates the databases missing in DIR, runs a session on each size
//       in a process of its own (answers checked, first calls, peak memory),
//       times every case at every size, prints the summary, writes it as JSON
//   kavrin-bench generate PATH ITEMS
//   kavrin-bench session PATH ITEMS OUT.json
//       one size alone: every case must answer what the data says and its
//       floor run the texts the member sent; the first call of each on a new
//       connection; then every case in turn for a while; peak memory
//   kavrin-bench time OUT.json PATH ITEMS [PATH ITEMS ...] [--repetitions N]
//                    [--min-time S] [--filter REGEX]
//       every case at every size: an iteration calls the case through the kit
//       and runs its floor at each size in turn, so that all of them meet the
//       same load on the machine
//   kavrin-bench repeat PATH ITEMS CASE TIMES
//       one case, kit and floor in turn, for a profiler
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
// How long a session calls each case, kit and floor, at its size.
constexpr double kSessionSecondsPerCase = 0.2;

int Usage();

struct Options {
  int repetitions = 15;
  double min_time = 0.1;
  std::string filter;  // only the cases whose names match, when timing
};

struct Size {
  std::string path;
  int64_t items;
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

// The time one side of a case at one size has taken so far.
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

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  if (n == 0) return 0;
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
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

// ---- a session on one size ----

int Session(const Size& size, const std::string& out) {
  const auto cases = MakeCases(SuiteSize(size.items));
  Json result;
  result["items"] = size.items;
  Json& first_calls = result["first_call_us"];

  // Every case answers what the data says, and its floor runs the texts the
  // member sent; each is the first call on a connection of its own.
  for (const auto& c : cases) {
    auto db = OpenKit(size.path);
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
    Floor floor(size.path);
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

  // A form's object called again and again, each case for a while.
  clsPub pub;
  pub.DBIA(OpenKit(size.path));
  Floor floor(size.path);
  for (const auto& c : cases) {
    const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(kSessionSecondsPerCase));
    do {
      benchmark::DoNotOptimize(c.call(pub));
      if (c.floor) c.floor(floor);
    } while (Clock::now() < until);
  }
  result["peak_rss_kb"] = PeakResidentKb();
  std::ofstream(out) << result.dump(2) << "\n";
  return 0;
}

// ---- timing every size in one process ----

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

// A form's object on one size, and the engine's own connection beside it.
struct Bench {
  explicit Bench(const Size& size)
      : items(size.items), cases(MakeCases(SuiteSize(size.items))), floor(size.path) {
    pub.DBIA(OpenKit(size.path));
  }
  int64_t items;
  std::vector<Case> cases;
  clsPub pub;
  Floor floor;
};

std::string Counter(const char* side, int64_t items, bool wall) {
  return std::string(side) + (wall ? "_wall_us@" : "_us@") + std::to_string(items);
}

int Time(const std::vector<Size>& sizes, const std::string& out, const Options& options) {
  std::vector<std::unique_ptr<Bench>> benches;
  for (const auto& size : sizes)
    benches.push_back(std::make_unique<Bench>(size));
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
        if (c.floor) c.floor(b->floor);
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
            if (c.floor) engine[i].Time([&] { c.floor(b.floor); });
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
        const int64_t items = benches[i]->items;
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
// the engine, one after the other, for a profiler to watch or to compare the
// two under the same load; prints the processor time of each.
int Repeat(const Size& size, const std::string& name, int64_t times) {
  const auto cases = MakeCases(SuiteSize(size.items));
  const auto found =
      std::find_if(cases.begin(), cases.end(), [&name](const Case& c) { return c.name == name; });
  if (found == cases.end()) return Usage();
  clsPub pub;
  pub.DBIA(OpenKit(size.path));
  Floor floor(size.path);
  Part kit;
  Part engine;
  for (int64_t i = 0; i < times; ++i) {
    kit.Time([&] { benchmark::DoNotOptimize(found->call(pub)); });
    if (found->floor) engine.Time([&] { found->floor(floor); });
  }
  const auto n = static_cast<double>(times);
  std::cout << name << ": kit " << Fixed(kit.cpu / n, 1) << " us, floor "
            << Fixed(engine.cpu / n, 1) << " us, ratio "
            << Fixed(engine.cpu > 0 ? kit.cpu / engine.cpu : 0, 2) << "\n";
  return 0;
}

// ---- the whole run ----

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

int Run(const std::string& dir, const std::vector<int64_t>& sizes, const std::string& out,
        const Options& options) {
  std::filesystem::create_directories(dir);
  const auto started = Clock::now();
  std::vector<Size> files;
  for (int64_t items : sizes) {
    files.push_back({dir + "/" + SuiteFileName(items), items});
    const std::string& db = files.back().path;
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

  // A session per size, each in a process of its own.
  std::vector<Json> sessions;
  for (const auto& file : files) {
    const std::string json = dir + "/session-" + std::to_string(file.items) + ".json";
    long child_rss = 0;
    std::cerr << "session on " << file.items << " items\n";
    if (RunChild({"kavrin-bench", "session", file.path, std::to_string(file.items), json},
                 &child_rss) != 0) {
      return 1;
    }
    sessions.push_back(Json::parse(std::ifstream(json)));
    sessions.back()["child_max_rss_kb"] = child_rss;
  }

  // Every size timed in one process.
  const std::string timed_json = dir + "/timed.json";
  std::vector<std::string> timing = {"kavrin-bench", "time", timed_json};
  for (const auto& file : files) {
    timing.push_back(file.path);
    timing.push_back(std::to_string(file.items));
  }
  for (const std::string& option :
       {std::string("--repetitions"), std::to_string(options.repetitions),
        std::string("--min-time"), std::to_string(options.min_time)}) {
    timing.push_back(option);
  }
  std::cerr << "timing every case at every size\n";
  if (RunChild(timing) != 0) return 1;
  const Json samples = Json::parse(std::ifstream(timed_json))["samples"];
  const auto median = [&samples](const std::string& name, const char* side, int64_t items,
                                 bool wall) {
    std::vector<double> values;
    for (const auto& value : samples[name][Counter(side, items, wall)])
      values.push_back(value.get<double>());
    return Median(values);
  };

  // The summary: per case, its median at each size, the ratio to its floor
  // and the growth from the smallest to the largest size.
  const auto cases = MakeCases(SuiteSize(sizes.front()));
  Json summary;
  summary["machine"] = Machine();
  summary["sizes"] = sizes;
  summary["repetitions"] = options.repetitions;
  summary["min_time_s"] = options.min_time;
  summary["targets"] = {
      {"growth", kGrowthTarget}, {"floor_ratio", kFloorTarget}, {"memory_mb", kMemoryTargetMb}};
  bool growth_met = true;
  bool floor_met = true;
  std::ostringstream table;
  table << Pad("case", 26, true);
  for (int64_t items : sizes)
    table << Pad(std::to_string(items), 10) << Pad("floor", 9) << Pad("ratio", 7);
  table << Pad("growth", 8) << Pad("floor", 7) << "\n";
  for (size_t k = 0; k < cases.size(); ++k) {
    const Case& c = cases[k];
    const bool has_floor = static_cast<bool>(c.floor);
    Json row;
    row["archive_check"] = c.archive_check;
    table << Pad(c.name + (c.archive_check ? " *" : ""), 26, true);
    for (size_t i = 0; i < sizes.size(); ++i) {
      const int64_t items = sizes[i];
      const double kit = median(c.name, "kit", items, false);
      const auto& first = sessions[i]["first_call_us"][c.name];
      Json at{{"items", items},
              {"repetitions", samples[c.name][Counter("kit", items, false)].size()},
              {"kit_us", kit},
              {"kit_wall_us", median(c.name, "kit", items, true)},
              {"first_call_us", first["kit"]}};
      table << Pad(Fixed(kit, 1), 10);
      if (has_floor) {
        const double floor = median(c.name, "floor", items, false);
        at["floor_us"] = floor;
        at["floor_wall_us"] = median(c.name, "floor", items, true);
        at["floor_first_call_us"] = first["floor"];
        at["ratio_to_floor"] = kit / floor;
        floor_met = floor_met && kit / floor <= kFloorTarget;
        table << Pad(Fixed(floor, 1), 9) << Pad(Fixed(kit / floor, 2), 7);
      } else {
        table << Pad("-", 9) << Pad("-", 7);
      }
      row["sizes"].push_back(at);
    }
    const double growth =
        median(c.name, "kit", sizes.back(), false) / median(c.name, "kit", sizes.front(), false);
    row["growth"] = growth;
    if (c.archive_check) growth_met = growth_met && growth <= kGrowthTarget;
    table << Pad(Fixed(growth, 2), 8);
    if (has_floor) {
      const double floor_growth = median(c.name, "floor", sizes.back(), false) /
                                  median(c.name, "floor", sizes.front(), false);
      row["floor_growth"] = floor_growth;
      table << Pad(Fixed(floor_growth, 2), 7);
    } else {
      table << Pad("-", 7);
    }
    table << "\n";
    summary["cases"][c.name] = row;
  }
  table << "(medians of the processor time per call in microseconds; ratio = kit / floor;\n"
        << " growth = largest / smallest size, for the kit and for the floor;"
        << " * = archive check)\n\n";
  // The first call on a new connection pays what later calls find known:
  // the table checks, the whole-table counts, the engine's page cache.
  table << Pad("first call on a new connection", 32, true);
  for (int64_t items : sizes)
    table << Pad(std::to_string(items), 10) << Pad("floor", 9);
  table << "\n";
  for (const auto& c : cases) {
    table << Pad(c.name, 32, true);
    for (const auto& session : sessions) {
      const auto& first = session["first_call_us"][c.name];
      table << Pad(Fixed(first["kit"].get<double>(), 0), 10)
            << Pad(first.contains("floor") ? Fixed(first["floor"].get<double>(), 0) : "-", 9);
    }
    table << "\n";
  }
  table << "(wall-clock microseconds, one call each)\n\n";
  table << Pad("items", 10) << Pad("peak MB", 10) << Pad("vs first", 10) << "\n";
  const double base_mb = sessions.front()["peak_rss_kb"].get<double>() / 1024.0;
  bool memory_met = true;
  for (const auto& session : sessions) {
    const double mb = session["peak_rss_kb"].get<double>() / 1024.0;
    memory_met = memory_met && mb - base_mb <= kMemoryTargetMb;
    summary["memory"].push_back(
        {{"items", session["items"]},
         {"peak_rss_mb", mb},
         {"child_max_rss_mb", session["child_max_rss_kb"].get<double>() / 1024},
         {"above_first_mb", mb - base_mb}});
    table << Pad(std::to_string(session["items"].get<int64_t>()), 10) << Pad(Fixed(mb, 1), 10)
          << Pad(Fixed(mb - base_mb, 1), 10) << "\n";
  }
  table << "(peak resident memory of a session on each size alone)\n";
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
               " [--repetitions N] [--min-time S]\n"
               "       kavrin-bench generate PATH ITEMS\n"
               "       kavrin-bench session PATH ITEMS OUT.json\n"
               "       kavrin-bench time OUT.json PATH ITEMS [PATH ITEMS ...] [--repetitions N]"
               " [--min-time S] [--filter REGEX]\n"
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
  if (command == "session" && positional.size() == 3) {
    return Session({positional[0], std::stoll(positional[1])}, positional[2]);
  }
  if (command == "time" && positional.size() >= 3 && positional.size() % 2 == 1) {
    std::vector<Size> timed;
    for (size_t i = 1; i < positional.size(); i += 2)
      timed.push_back({positional[i], std::stoll(positional[i + 1])});
    return Time(timed, positional[0], options);
  }
  if (command == "repeat" && positional.size() == 4) {
    return Repeat({positional[0], std::stoll(positional[1])}, positional[2],
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
