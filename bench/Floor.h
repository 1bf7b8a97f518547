// The floor of a call: the least a hand-written client sends for the same
// answer, straight through the engine's own client library. On SQLite that
// is the statements the member sent, prepared and stepped through the C API;
// on a server it is the same driver the kit uses, through the raw ODBC API,
// with a whole-table read reduced to its first row (LIMIT 1) and a find to
// one point query.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

namespace kavrin::bench {

class Floor {
 public:
  virtual ~Floor() = default;
  // Runs `sql` to its first row and reads that row; answers whether there
  // was one. A whole-table SELECT * asks only for its first row.
  virtual bool First(const std::string& sql) = 0;
  // The same for the statement a FindFirst stands for: the kit reads its
  // table and finds the row; no member sends this text itself.
  virtual bool Find(const std::string& sql) = 0;
  // Runs `sql` through every row, reading each; answers the first column of
  // each row.
  virtual std::vector<std::string> All(const std::string& sql) = 0;
  // Statements sent so far: on a server, one round trip each.
  uint64_t statements = 0;
  // The texts First and All ran, when set (SQLite: they must be the member's).
  std::vector<std::string>* sent = nullptr;
};

// "sqlite:PATH" or "odbc:CONNECTION-STRING".
std::unique_ptr<Floor> OpenFloor(const std::string& connection_string);

// A connection of the engine's own, configured as the kit's (the server's
// collations and functions), that runs statements directly.
class SqliteFloor final : public Floor {
 public:
  explicit SqliteFloor(const std::string& path);
  ~SqliteFloor() override;
  SqliteFloor(const SqliteFloor&) = delete;
  SqliteFloor& operator=(const SqliteFloor&) = delete;

  bool First(const std::string& sql) override;
  bool Find(const std::string& sql) override;
  std::vector<std::string> All(const std::string& sql) override;

 private:
  sqlite3_stmt* Prepare(const std::string& sql);
  void ReadRow(sqlite3_stmt* stmt);

  sqlite3* db_ = nullptr;
};

}  // namespace kavrin::bench
