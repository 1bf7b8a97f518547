#include "support/SuiteDb.h"

#include <stdlib.h>

#include <filesystem>

#include "db/Driver.h"
#include "kavrin/Schema.h"

namespace kavrin::testing {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kavrin-test-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

SuiteDb::SuiteDb(bool demo) {
  std::string pattern = (std::filesystem::temp_directory_path() / "kavrin-db-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  dir_ = pattern;
  path_ = dir_ + "/suite.db";
  CreateSuiteDatabase(FromUtf8("sqlite:" + path_), demo);
}

SuiteDb::~SuiteDb() {
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void SuiteDb::Exec(const std::string& sql) const {
  db::OpenForSetup(ConnectionString())->ExecuteScript(FromUtf8(sql));
}

QueryTrace::QueryTrace(KitDatabase& db) {
  db.Connection()->SetTrace([texts = texts_](StringView text) { texts->emplace_back(text); });
}

}  // namespace kavrin::testing
