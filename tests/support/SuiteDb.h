// A suite database built by a test: a temporary SQLite file holding the
// suite's tables, filled with the rows the test writes, and read back through
// the kit exactly as a host would.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kavrin/KitDatabase.h"
#include "kavrin/String.h"

namespace kavrin::testing {

class SuiteDb {
 public:
  // The suite's tables, empty, or holding the demo company.
  explicit SuiteDb(bool demo = false);
  ~SuiteDb();
  SuiteDb(const SuiteDb&) = delete;
  SuiteDb& operator=(const SuiteDb&) = delete;

  // Runs statements that write (UTF-8), through a separate writable connection.
  void Exec(const std::string& sql) const;

  const std::string& path() const { return path_; }
  String ConnectionString() const { return u"sqlite:" + FromUtf8(path_); }
  // A kit connection opened read-only, as a host opens it.
  std::shared_ptr<KitDatabase> Open() const { return KitDatabase::Open(ConnectionString()); }

 private:
  std::string dir_;
  std::string path_;
};

// Records every text sent through a kit connection.
class QueryTrace {
 public:
  explicit QueryTrace(KitDatabase& db);
  const std::vector<String>& texts() const { return *texts_; }
  void clear() { texts_->clear(); }

 private:
  std::shared_ptr<std::vector<String>> texts_ = std::make_shared<std::vector<String>>();
};

// A unique temporary directory, removed with its contents by the destructor.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace kavrin::testing
