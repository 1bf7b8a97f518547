// The calls the benchmark times, each with its floor: the same statements run
// straight through the SQLite C API, prepared, stepped to the first row (to
// every row where the member reads them all), read and finalized.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <string>
#include <vector>

#include "Generator.h"
#include "kavrin/clsPub.h"

namespace kavrin::bench {

// A connection of the engine's own, configured as the kit's (the server's
// collations and functions), that runs statements directly.
class Floor {
 public:
  explicit Floor(const std::string& path);
  ~Floor();
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  // Runs `sql` to its first row and reads that row; answers whether there
  // was one.
  bool First(const std::string& sql);
  // The same for a statement FindFirst stands for: the kit reads its table
  // and finds the row; no member sends this text itself.
  bool Find(const std::string& sql);
  // Runs `sql` through every row, reading each; answers the first column of
  // each row.
  std::vector<std::string> All(const std::string& sql);

  // The texts First and All ran, when set.
  std::vector<std::string>* sent = nullptr;

 private:
  sqlite3_stmt* Prepare(const std::string& sql);
  void ReadRow(sqlite3_stmt* stmt);

  sqlite3* db_ = nullptr;
};

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
