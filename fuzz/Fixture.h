// The suite database the fuzz targets run against: the demo company in a
// temporary directory, created once per process and removed at exit.
#pragma once

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "kavrin/KitDatabase.h"
#include "kavrin/Schema.h"

namespace kavrin::fuzz {

class Fixture {
 public:
  static Fixture& Get() {
    static Fixture fixture;
    return fixture;
  }

  const std::string& dir() const { return dir_; }
  const std::string& path() const { return path_; }
  String ConnectionString() const { return u"sqlite:" + FromUtf8(path_); }
  std::shared_ptr<KitDatabase> Open() const { return KitDatabase::Open(ConnectionString()); }

  // Whether only the database itself is in the directory: no journal, no
  // write-ahead log, no file an ATTACH or VACUUM INTO made.
  bool DirectoryHoldsOnlyTheDatabase() const {
    for (const auto& entry : std::filesystem::directory_iterator(dir_)) {
      if (entry.path() != path_) return false;
    }
    return true;
  }

 private:
  Fixture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kavrin-fuzz-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
      std::perror("mkdtemp");
      std::abort();
    }
    dir_ = pattern;
    path_ = dir_ + "/suite.sqlite";
    CreateSuiteDatabase(FromUtf8("sqlite:" + path_), true);
  }
  ~Fixture() {
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }

  std::string dir_;
  std::string path_;
};

}  // namespace kavrin::fuzz
