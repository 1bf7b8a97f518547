// The benchmark's pieces: where a session runs (an engine and a size), what
// the subcommands do, and the summary of a whole run.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "kavrin/KitDatabase.h"

namespace kavrin::bench {

using Json = nlohmann::ordered_json;

inline constexpr double kGrowthTarget = 1.5;
inline constexpr double kFloorTarget = 2.0;
inline constexpr double kMemoryTargetMb = 32.0;
// The most a call through a server may take, in microseconds.
inline constexpr double kServerCallTargetUs = 2000;

struct Options {
  int repetitions = 15;
  double min_time = 0.1;
  std::string filter;  // only the cases whose names match, when timing
};

// A suite database of `items` items: "sqlite:PATH" or "odbc:..." on a server.
struct Target {
  std::string connection;
  int64_t items = 0;
  bool OnServer() const { return connection.rfind("odbc:", 0) == 0; }
  std::string Engine() const { return OnServer() ? "postgres" : "sqlite"; }
};

std::shared_ptr<KitDatabase> OpenKit(const Target& target);
// The name a timing sample is kept under.
std::string Counter(const char* side, const Target& target, bool wall);
// Statements the kit has sent to servers so far (0 without ODBC).
uint64_t KitStatements();

// One size alone in this process: every case must answer what the data
// says (and on SQLite its floor run the texts the member sent); the first
// call of each on a new connection; statements per call; then every case in
// turn for a while; peak memory. Writes OUT as JSON.
int Session(const Target& target, const std::string& out);
// Every case at every target: an iteration calls the case through the kit
// and runs its floor at each target in turn, so that all of them meet the
// same load on the machine. Writes the samples to OUT as JSON.
int Time(const std::vector<Target>& targets, const std::string& out, const Options& options);
// One case, kit and floor in turn, for a profiler.
int Repeat(const Target& target, const std::string& name, int64_t times);

// The summary of one engine's targets (in growing size): the table printed,
// and its figures and verdicts added to `summary`. Answers whether every
// target was met.
bool Summarize(const std::vector<Target>& targets, const std::vector<Json>& sessions,
               const Json& samples, Json& summary, std::string& table);

}  // namespace kavrin::bench
