// The summary of a run, per engine: each case's median at each size against
// its floor, its growth from the smallest size to the largest, the first
// calls on new connections, statements per call and peak memory. On SQLite
// the figures are processor time, which pairs well under a shared machine's
// load; through a server they are wall-clock time, which holds the round
// trips and the server's own work.
#include <sstream>

#include "Bench.h"
#include "Cases.h"
#include "Measure.h"

namespace kavrin::bench {

bool Summarize(const std::vector<Target>& targets, const std::vector<Json>& sessions,
               const Json& samples, Json& summary, std::string& out) {
  const bool server = targets.front().OnServer();
  const auto median_of = [&samples](const std::string& name, const char* side, const Target& target,
                                    bool wall) {
    std::vector<double> values;
    for (const auto& value : samples[name][Counter(side, target, wall)])
      values.push_back(value.get<double>());
    return Median(values);
  };
  const auto median = [&median_of, server](const std::string& name, const char* side,
                                           const Target& target) {
    return median_of(name, side, target, server);
  };
  const auto cases = MakeCases(SuiteSize(targets.front().items));
  bool growth_met = true;
  bool floor_met = true;
  bool call_met = true;
  std::ostringstream table;
  table << Pad("case", 26, true);
  for (const auto& target : targets)
    table << Pad(std::to_string(target.items), 10) << Pad("floor", 9) << Pad("ratio", 7);
  table << Pad("growth", 8) << Pad("floor", 7) << (server ? "  trips" : "") << "\n";
  for (const Case& c : cases) {
    const bool has_floor = static_cast<bool>(c.floor);
    // Through a server every case that reads the database is a check or a
    // lookup a form makes as it is typed into, except the whole-archive one.
    const bool bounded = server && has_floor && c.name != "CheckWareDep";
    Json row;
    row["archive_check"] = c.archive_check;
    table << Pad(c.name + (c.archive_check ? " *" : ""), 26, true);
    for (size_t i = 0; i < targets.size(); ++i) {
      const Target& target = targets[i];
      const double kit = median(c.name, "kit", target);
      const auto& first = sessions[i]["first_call_us"][c.name];
      Json at{{"items", target.items},
              {"repetitions", samples[c.name][Counter("kit", target, false)].size()},
              {"kit_us", median(c.name, "kit", target)},
              {"kit_cpu_us", median_of(c.name, "kit", target, false)},
              {"first_call_us", first["kit"]}};
      if (sessions[i].contains("statements")) at["statements"] = sessions[i]["statements"][c.name];
      table << Pad(Fixed(kit, 1), 10);
      if (bounded) call_met = call_met && kit <= kServerCallTargetUs;
      if (has_floor) {
        const double floor = median(c.name, "floor", target);
        at["floor_us"] = floor;
        at["floor_first_call_us"] = first["floor"];
        at["ratio_to_floor"] = kit / floor;
        if (!server || bounded) floor_met = floor_met && kit / floor <= kFloorTarget;
        table << Pad(Fixed(floor, 1), 9) << Pad(Fixed(kit / floor, 2), 7);
      } else {
        table << Pad("-", 9) << Pad("-", 7);
      }
      row["sizes"].push_back(at);
    }
    const double growth =
        median(c.name, "kit", targets.back()) / median(c.name, "kit", targets.front());
    row["growth"] = growth;
    if (c.archive_check || bounded) growth_met = growth_met && growth <= kGrowthTarget;
    table << Pad(Fixed(growth, 2), 8);
    if (has_floor) {
      const double floor_growth =
          median(c.name, "floor", targets.back()) / median(c.name, "floor", targets.front());
      row["floor_growth"] = floor_growth;
      table << Pad(Fixed(floor_growth, 2), 7);
    } else {
      table << Pad("-", 7);
    }
    if (server) {
      const auto& trips = sessions.back()["statements"][c.name];
      table << Pad(
          std::to_string(trips["kit"].get<int64_t>()) + "/" +
              (trips.contains("floor") ? std::to_string(trips["floor"].get<int64_t>()) : "-"),
          7);
    }
    table << "\n";
    summary["cases"][c.name] = row;
  }
  table << "(medians of the " << (server ? "wall-clock" : "processor")
        << " time per call in microseconds; ratio = kit / floor;\n"
        << " growth = largest / smallest size, for the kit and for the floor;"
        << " * = archive check" << (server ? ";\n trips = statements per call, kit/floor" : "")
        << ")\n\n";
  table << Pad("first call on a new connection", 32, true);
  for (const auto& target : targets)
    table << Pad(std::to_string(target.items), 10) << Pad("floor", 9);
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
        {{"items", session["items"]}, {"peak_rss_mb", mb}, {"above_first_mb", mb - base_mb}});
    table << Pad(std::to_string(session["items"].get<int64_t>()), 10) << Pad(Fixed(mb, 1), 10)
          << Pad(Fixed(mb - base_mb, 1), 10) << "\n";
  }
  table << "(peak resident memory of a session on each size alone)\n\n";
  const std::string checked = server ? "archive checks and lookups" : "archive checks";
  table << checked << " grow at most " << kGrowthTarget << "x: " << (growth_met ? "met" : "NOT met")
        << "\n"
        << (server ? checked : std::string("every case")) << " within " << kFloorTarget
        << "x the floor: " << (floor_met ? "met" : "NOT met") << "\n";
  if (server) {
    table << checked << " at most " << kServerCallTargetUs / 1000
          << " ms per call: " << (call_met ? "met" : "NOT met") << "\n";
  }
  table << "peak memory within " << kMemoryTargetMb
        << " MB of the smallest size: " << (memory_met ? "met" : "NOT met") << "\n";
  summary["met"] = {{"growth", growth_met},
                    {"floor_ratio", floor_met},
                    {"memory", memory_met},
                    {"call_time", call_met}};
  out = table.str();
  return growth_met && floor_met && memory_met && call_met;
}

}  // namespace kavrin::bench
