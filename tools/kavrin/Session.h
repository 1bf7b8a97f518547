// One clsPub object serving the host's calls, with the connection, the query
// trace and the message boxes of each call collected into its JSON answer.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "kavrin/Host.h"
#include "kavrin/Variant.h"
#include "kavrin/clsPub.h"

namespace kavrin::tool {

class RecordingUiHost;

class Session {
 public:
  // Opens `db` into DBIA when given; throws UsageError when it cannot be opened.
  Session(const std::optional<std::string>& db, bool trace);
  ~Session();

  // Calls METHOD with `args` and answers {"ok":..., "result"|"error", "args", ...}.
  nlohmann::ordered_json Call(const std::string& method, std::vector<Variant>& args);
  // Answers one JSON request line {"method": "...", "args": [...]}.
  nlohmann::ordered_json Request(const std::string& line);

 private:
  clsPub pub_;
  bool trace_;
  std::shared_ptr<std::vector<String>> sql_ = std::make_shared<std::vector<String>>();
  std::shared_ptr<RecordingUiHost> ui_;
  std::shared_ptr<UiHost> previous_ui_;
};

}  // namespace kavrin::tool
