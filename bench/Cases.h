// The calls the benchmark times, each with its floor (see Floor.h): the
// statements a client needs for the same answer, run straight through the
// engine's own client library.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Floor.h"
#include "Generator.h"
#include "kavrin/clsPub.h"

namespace kavrin::bench {

struct Case {
  std::string name;
  // An archive check: its cost must not grow with the archive.
  bool archive_check = false;
  // One call as a form makes it, answering what it answered.
  std::function<std::string(clsPub&)> call;
  // What that answer must be on the generated data.
  std::string expected;
  // The same statements straight through the engine; empty for a member that
  // reads no database.
  std::function<void(Floor&)> floor;
};

std::vector<Case> MakeCases(const SuiteSize& size);

}  // namespace kavrin::bench
