// Runs the README's C++ blocks on the demo company in demo.db, in a fresh
// folder, and fails unless every answer a comment shows was reached and seen.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "ReadmeCheck.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/Schema.h"

namespace readme {
namespace {

std::set<int> reached;
int failed = 0;

void Report(int id, int line, bool ok, const std::string& seen, const char* what) {
  reached.insert(id);
  if (ok) return;
  ++failed;
  std::fprintf(stderr, "README.md:%d: %s, but the answer is %s\n", line, what, seen.c_str());
}

}  // namespace

void Check(int id, int line, const std::u16string& seen, std::u16string_view shown,
           const char* what) {
  Report(id, line, seen == shown, "\"" + kavrin::ToUtf8(seen) + "\"", what);
}

void Check(int id, int line, const kavrin::Variant& seen, std::u16string_view shown,
           const char* what) {
  Check(id, line, kavrin::ToString(seen), shown, what);
}

void CheckNumber(int id, int line, double seen, double shown, const char* what) {
  Report(id, line, seen == shown, kavrin::ToUtf8(kavrin::DoubleToString(seen)), what);
}

}  // namespace readme

int main() {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("kavrin-readme-" + std::to_string(getpid()));
  fs::create_directories(folder);
  int status = 1;
  try {
    kavrin::CreateSuiteDatabase(kavrin::FromUtf8("sqlite:" + (folder / "demo.db").string()), true);
    fs::current_path(folder);
    readme::RunSnippets();
    const int missed = readme::kChecks - static_cast<int>(readme::reached.size());
    if (missed > 0) std::fprintf(stderr, "%d of the README's checks were never reached\n", missed);
    std::printf("README: %d answers checked, %d wrong, %d not reached\n", readme::kChecks,
                readme::failed, missed);
    status = readme::failed == 0 && missed == 0 ? 0 : 1;
  } catch (const kavrin::Error& e) {
    std::fprintf(stderr, "a README snippet failed: %s\n", e.what());
  }
  std::error_code ignored;
  fs::current_path(fs::temp_directory_path(), ignored);
  fs::remove_all(folder, ignored);
  return status;
}
