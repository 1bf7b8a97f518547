#include "Server.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>
#include <vector>

#include "db/Driver.h"
#include "kavrin/Schema.h"

namespace kavrin::bench {

namespace {

// A value of COPY's text format.
void AppendCopyText(std::string& line, const char* text) {
  for (const char* c = text; *c; ++c) {
    switch (*c) {
      case '\\':
        line += "\\\\";
        break;
      case '\t':
        line += "\\t";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line.push_back(*c);
    }
  }
}

void CopyTable(const Server& server, sqlite3* db, const std::string& database,
               const std::string& table) {
  sqlite3_stmt* stmt = nullptr;
  const std::string select = "SELECT * FROM \"" + table + "\"";
  if (sqlite3_prepare_v2(db, select.c_str(), -1, &stmt, nullptr) != SQLITE_OK)
    throw std::runtime_error("cannot read " + table);
  const int columns = sqlite3_column_count(stmt);
  std::string names;
  for (int i = 0; i < columns; ++i)
    names += (i ? ", " : "") + std::string(sqlite3_column_name(stmt, i));
  const std::string command = "psql -X -q -v ON_ERROR_STOP=1 -h " + server.host + " -p " +
                              server.port + " -U " + server.user + " -d " + database +
                              " -c 'COPY " + table + " (" + names + ") FROM STDIN'";
  FILE* psql = popen(command.c_str(), "w");
  if (!psql) throw std::runtime_error("cannot start psql");
  std::string line;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    line.clear();
    for (int i = 0; i < columns; ++i) {
      if (i) line.push_back('\t');
      if (sqlite3_column_type(stmt, i) == SQLITE_NULL) {
        line += "\\N";
      } else {
        AppendCopyText(line, reinterpret_cast<const char*>(sqlite3_column_text(stmt, i)));
      }
    }
    line.push_back('\n');
    std::fwrite(line.data(), 1, line.size(), psql);
  }
  sqlite3_finalize(stmt);
  if (pclose(psql) != 0) throw std::runtime_error("copying " + table + " into the server failed");
}

}  // namespace

std::string Server::ConnectionString(const std::string& database) const {
  return "odbc:Driver={PostgreSQL Unicode};Server=" + host + ";Port=" + port + ";UID=" + user +
         ";Database=" + database;
}

Server ReadServer(const std::string& state_file) {
  std::map<std::string, std::string> values;
  std::ifstream in(state_file);
  if (!in) throw std::runtime_error("cannot read " + state_file);
  for (std::string line; std::getline(in, line);) {
    const auto equals = line.find('=');
    if (equals != std::string::npos) values[line.substr(0, equals)] = line.substr(equals + 1);
  }
  if (values.contains("odbcsysini")) setenv("ODBCSYSINI", values["odbcsysini"].c_str(), 1);
  return {values.at("host"), values.at("port"), values.at("user")};
}

void CopySuiteToServer(const Server& server, const std::string& sqlite_path,
                       const std::string& database) {
  db::OpenForSetup(FromUtf8(server.ConnectionString("postgres")))
      ->ExecuteScript(FromUtf8("CREATE DATABASE " + database));
  CreateSuiteDatabase(FromUtf8(server.ConnectionString(database)), false);
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(sqlite_path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    throw std::runtime_error("cannot open " + sqlite_path);
  }
  std::vector<std::string> tables;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(
          db, "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite%'", -1,
          &stmt, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    throw std::runtime_error("cannot list the tables of " + sqlite_path);
  }
  while (sqlite3_step(stmt) == SQLITE_ROW)
    tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
  sqlite3_finalize(stmt);
  try {
    for (const auto& table : tables)
      CopyTable(server, db, database, table);
  } catch (...) {
    sqlite3_close(db);
    throw;
  }
  sqlite3_close(db);
  db::OpenForSetup(FromUtf8(server.ConnectionString(database)))->ExecuteScript(u"ANALYZE");
}

}  // namespace kavrin::bench
