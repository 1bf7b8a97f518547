// One clsPub object serving the host's calls, with the connection, the query
// trace and the message boxes of each call collected into its JSON answer.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kavrin/Host.h"
#include "kavrin/Variant.h"
#include "kavrin/clsPub.h"

namespace kavrin::tool {

class RecordingUiHost;

// A database the host cannot open or create: exit status 2 as for a usage
// error, with what failed instead of a pointer to the help.
class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The connection string with its passwords (PWD=, Password=) masked.
std::string Masked(const std::string& db);

// What the host says about a database it cannot open: the engine's message,
// and for a SQLite file that is not there, that init-db creates one.
std::string CannotOpen(const std::string& db, const std::exception& e);

class Session {
 public:
  // Opens `db` into DBIA when given; throws DatabaseError when it cannot be opened.
  Session(const std::optional<std::string>& db, bool trace);
  ~Session();

  // Calls METHOD with `args` and answers {"ok":..., "result"|"error", "args", ...};
  // a failed call's error adds "detail" when the component said more than the
  // platform's description (which member, argument, type), and "hint" when
  // it failed for want of a database that --db would have given.
  nlohmann::ordered_json Call(const std::string& method, std::vector<Variant>& args);
  // Answers one JSON request line {"method": "...", "args": [...]}.
  nlohmann::ordered_json Request(const std::string& line);

 private:
  clsPub pub_;
  bool trace_;
  bool has_db_;
  std::shared_ptr<std::vector<String>> sql_ = std::make_shared<std::vector<String>>();
  std::shared_ptr<RecordingUiHost> ui_;
  std::shared_ptr<UiHost> previous_ui_;
};

}  // namespace kavrin::tool
