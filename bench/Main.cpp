// kavrin-bench: times the component's calls against the engine itself on
// suite databases of growing size, on SQLite files and on a PostgreSQL server
// through ODBC.
//
//   kavrin-bench run --dir DIR [--sizes 1000,100000,1000000] [--server STATE]
//                    [--out FILE.json] [--repetitions N] [--min-time SECONDS]
//       generates the SQLite databases missing in DIR and, with the state
//       file of a server that tests/postgres/server.sh started, copies each
//       into a database of that server; runs a session on each engine and
//       size in a process of its own (answers checked, first calls,
//       statements per call, peak memory); times every case at every engine
//       and size in one process; prints the summary, writes it as JSON
//   kavrin-bench generate PATH ITEMS
//   kavrin-bench session CONNECTION ITEMS OUT.json
//   kavrin-bench time OUT.json CONNECTION ITEMS [CONNECTION ITEMS ...]
//                    [--repetitions N] [--min-time S] [--filter REGEX]
//   kavrin-bench repeat CONNECTION ITEMS CASE TIMES
// A CONNECTION is sqlite:PATH (or a bare path) or odbc:CONNECTION-STRING.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Bench.h"
#include "Generator.h"
#include "Measure.h"
#include "Server.h"
#include "kavrin/Error.h"
#ifdef KAVRIN_WITH_ODBC
#include "db/odbc/OdbcConnection.h"
#endif

namespace kavrin::bench {

std::shared_ptr<KitDatabase> OpenKit(const Target& target) {
  return KitDatabase::Open(FromUtf8(target.connection));
}

std::string Counter(const char* side, const Target& target, bool wall) {
  return std::string(side) + (wall ? "_wall_us@" : "_us@") + target.Engine() + "-" +
         std::to_string(target.items);
}

uint64_t KitStatements() {
#ifdef KAVRIN_WITH_ODBC
  return db::odbc::StatementsSent();
#else
  return 0;
#endif
}

namespace {

int Usage() {
  std::cerr << "usage: kavrin-bench run --dir DIR [--sizes N,N,...] [--server STATE]"
               " [--out FILE.json] [--repetitions N] [--min-time S]\n"
               "       kavrin-bench generate PATH ITEMS\n"
               "       kavrin-bench session CONNECTION ITEMS OUT.json\n"
               "       kavrin-bench time OUT.json CONNECTION ITEMS [CONNECTION ITEMS ...]"
               " [--repetitions N] [--min-time S] [--filter REGEX]\n"
               "       kavrin-bench repeat CONNECTION ITEMS CASE TIMES\n";
  return 2;
}

Target TargetOf(const std::string& connection, const std::string& items) {
  const bool prefixed = connection.rfind("sqlite:", 0) == 0 || connection.rfind("odbc:", 0) == 0;
  return {prefixed ? connection : "sqlite:" + connection, std::stoll(items)};
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The SQLite suites for `sizes` in `dir`, generated where missing.
std::vector<std::string> SqliteSuites(const std::string& dir, const std::vector<int64_t>& sizes) {
  std::vector<std::string> paths;
  for (int64_t items : sizes) {
    const std::string db = dir + "/" + SuiteFileName(items);
    paths.push_back(db);
    if (std::filesystem::exists(db)) continue;
    const std::string partial = db + ".partial";
    std::filesystem::remove(partial);
    const auto start = Clock::now();
    if (RunChild({"kavrin-bench", "generate", partial, std::to_string(items)}) != 0)
      throw std::runtime_error("generating " + db + " failed");
    std::filesystem::rename(partial, db);
    std::cerr << "generated " << db << " in " << Fixed(SecondsSince(start), 1) << " s\n";
  }
  return paths;
}

int Run(const std::string& dir, const std::vector<int64_t>& sizes, const std::string& server_state,
        const std::string& out, const Options& options) {
  std::filesystem::create_directories(dir);
  const auto started = Clock::now();
  std::vector<std::vector<Target>> engines(1);
  const auto paths = SqliteSuites(dir, sizes);
  for (size_t i = 0; i < sizes.size(); ++i)
    engines[0].push_back({"sqlite:" + paths[i], sizes[i]});
  if (!server_state.empty()) {
    // The same rows on the server, a database per size.
    const Server server = ReadServer(server_state);
    engines.emplace_back();
    for (size_t i = 0; i < sizes.size(); ++i) {
      const std::string database = "bench_" + std::to_string(sizes[i]);
      const auto start = Clock::now();
      CopySuiteToServer(server, paths[i], database);
      std::cerr << "copied " << sizes[i] << " items into the server in "
                << Fixed(SecondsSince(start), 1) << " s\n";
      engines.back().push_back({server.ConnectionString(database), sizes[i]});
    }
  }

  // A session per engine and size, each in a process of its own.
  std::vector<std::vector<Json>> sessions;
  for (const auto& targets : engines) {
    sessions.emplace_back();
    for (const auto& target : targets) {
      const std::string json =
          dir + "/session-" + target.Engine() + "-" + std::to_string(target.items) + ".json";
      std::cerr << "session on " << target.Engine() << ", " << target.items << " items\n";
      if (RunChild({"kavrin-bench", "session", target.connection, std::to_string(target.items),
                    json}) != 0) {
        return 1;
      }
      sessions.back().push_back(Json::parse(std::ifstream(json)));
    }
  }

  // Every engine and size timed side by side in one process.
  const std::string timed_json = dir + "/timed.json";
  std::vector<std::string> timing = {"kavrin-bench", "time", timed_json};
  for (const auto& targets : engines) {
    for (const auto& target : targets) {
      timing.push_back(target.connection);
      timing.push_back(std::to_string(target.items));
    }
  }
  for (const std::string& option :
       {std::string("--repetitions"), std::to_string(options.repetitions),
        std::string("--min-time"), std::to_string(options.min_time)}) {
    timing.push_back(option);
  }
  std::cerr << "timing every case at every engine and size\n";
  if (RunChild(timing) != 0) return 1;
  const Json samples = Json::parse(std::ifstream(timed_json))["samples"];

  Json summary;
  summary["machine"] = Machine();
  summary["sizes"] = sizes;
  summary["repetitions"] = options.repetitions;
  summary["min_time_s"] = options.min_time;
  summary["targets"] = {{"growth", kGrowthTarget},
                        {"floor_ratio", kFloorTarget},
                        {"memory_mb", kMemoryTargetMb},
                        {"server_call_us", kServerCallTargetUs}};
  std::cout << "\n" << Machine() << "\n";
  for (size_t e = 0; e < engines.size(); ++e) {
    const std::string engine = engines[e].front().Engine();
    std::string table;
    Summarize(engines[e], sessions[e], samples, summary[engine], table);
    std::cout << "\n" << engine << (e ? " (through ODBC)" : "") << "\n\n" << table;
  }
  summary["seconds"] = SecondsSince(started);
  if (!out.empty()) std::ofstream(out) << summary.dump(2) << "\n";
  return 0;
}

int Main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return Usage();
  const std::string command = args[0];
  Options options;
  std::string dir;
  std::string out;
  std::string server;
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
    } else if (arg == "--server" && has_value) {
      server = args[++i];
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
    return Session(TargetOf(positional[0], positional[1]), positional[2]);
  }
  if (command == "time" && positional.size() >= 3 && positional.size() % 2 == 1) {
    std::vector<Target> timed;
    for (size_t i = 1; i < positional.size(); i += 2)
      timed.push_back(TargetOf(positional[i], positional[i + 1]));
    return Time(timed, positional[0], options);
  }
  if (command == "repeat" && positional.size() == 4) {
    const int status =
        Repeat(TargetOf(positional[0], positional[1]), positional[2], std::stoll(positional[3]));
    return status == 2 ? Usage() : status;
  }
  if (command == "run" && positional.empty() && !dir.empty() && !sizes.empty()) {
    return Run(dir, sizes, server, out, options);
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
