#include "support/SuiteDb.h"

#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "db/Driver.h"
#include "kavrin/Schema.h"

namespace kavrin::testing {

namespace {

const char* ServerStateFile() {
  const char* state = std::getenv("KAVRIN_TEST_POSTGRES");
  return (state && *state) ? state : nullptr;
}

// host, port and user of the harness's server, read before any ODBC call so
// that the driver manager is pointed at the harness's driver registration, for
// this process and the kavrin tools it starts.
const std::map<std::string, std::string> kServerState = [] {
  std::map<std::string, std::string> values;
  if (!ServerStateFile()) return values;
  std::ifstream in(ServerStateFile());
  for (std::string line; std::getline(in, line);) {
    const auto equals = line.find('=');
    if (equals != std::string::npos) values[line.substr(0, equals)] = line.substr(equals + 1);
  }
  if (values.contains("odbcsysini")) setenv("ODBCSYSINI", values["odbcsysini"].c_str(), 1);
  return values;
}();

// Runs statements on the server's administrative database.
void Administer(const std::string& sql) {
  db::OpenForSetup(ServerConnectionString("postgres"))->ExecuteScript(FromUtf8(sql));
}

std::string NewDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kavrin-db-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  return pattern;
}

}  // namespace

bool OnPostgres() {
  return ServerStateFile() != nullptr;
}

bool CompilesEveryText() {
  const char* cache = std::getenv("KAVRIN_TEST_STATEMENT_CACHE");
  return cache && cache == std::string("off");
}

String ServerConnectionString(const std::string& database) {
  if (kServerState.empty())
    throw std::runtime_error("no PostgreSQL server state (did tests/postgres/server.sh fail?)");
  const auto& state = kServerState;
  return FromUtf8("odbc:Driver={PostgreSQL Unicode};Server=" + state.at("host") + ";Port=" +
                  state.at("port") + ";UID=" + state.at("user") + ";Database=" + database);
}

TempDir::TempDir() : path_(NewDirectory()) {}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

SuiteDb::SuiteDb(bool demo) : SuiteDb(demo ? Contents::kDemo : Contents::kTables) {}

std::unique_ptr<SuiteDb> SuiteDb::Blank() {
  return std::unique_ptr<SuiteDb>(new SuiteDb(Contents::kNothing));
}

SuiteDb::SuiteDb(Contents contents) {
  if (OnPostgres()) {
    // A fresh database per SuiteDb; copying a prepared template is far
    // quicker than running the schema script each time.
    static std::atomic<int> serial{0};
    server_database_ = "kavrin_t" + std::to_string(getpid()) + "_" + std::to_string(++serial);
    const char* templates[] = {"template0", "kavrin_empty", "kavrin_demo"};
    Administer("CREATE DATABASE " + server_database_ + " TEMPLATE " +
               templates[static_cast<int>(contents)] + " STRATEGY FILE_COPY");
    connection_string_ = ServerConnectionString(server_database_);
    if (CompilesEveryText()) connection_string_ += u";KavrinStatementCache=0";
    return;
  }
  dir_ = std::make_unique<TempDir>();
  path_ = dir_->path() + "/suite.db";
  connection_string_ = FromUtf8("sqlite:" + path_);
  if (CompilesEveryText()) connection_string_ += u"?statement_cache=off";
  if (contents != Contents::kNothing) {
    CreateSuiteDatabase(connection_string_, contents == Contents::kDemo);
  }
}

SuiteDb::~SuiteDb() {
  if (server_database_.empty()) return;
  try {
    Administer("DROP DATABASE IF EXISTS " + server_database_ + " WITH (FORCE)");
  } catch (...) {
    // The harness removes the whole server at the end.
  }
}

void SuiteDb::Exec(const std::string& sql) const {
  db::OpenForSetup(ConnectionString())->ExecuteScript(FromUtf8(sql));
}

void SuiteDb::DropSessions() const {
  if (server_database_.empty()) throw std::logic_error("DropSessions needs a server database");
  Administer("SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE datname = '" +
             server_database_ + "' AND pid <> pg_backend_pid()");
}

std::shared_ptr<std::vector<String>> TraceQueries(KitDatabase& db) {
  auto texts = std::make_shared<std::vector<String>>();
  db.Connection()->SetTrace([texts](StringView text) { texts->emplace_back(text); });
  return texts;
}

}  // namespace kavrin::testing
