#include "Session.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "JsonValues.h"
#include "kavrin/Error.h"
#include "kavrin/Host.h"

namespace kavrin::tool {

using json = nlohmann::ordered_json;

// Message boxes are recorded for the answer and answered OK; there is no
// form, so there is no focused control.
class RecordingUiHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    throw Error::Runtime(errors::kObjectNotSet);
  }
  int32_t MsgBox(StringView prompt, int32_t buttons, StringView title) override {
    messages.push_back(
        {{"prompt", ToUtf8(prompt)}, {"buttons", buttons}, {"title", ToUtf8(title)}});
    return vbOK;
  }
  json messages = json::array();
};

namespace {

// The platform's description of `e`, and what the component said beyond it
// (the description goes on after ": " with the member, argument or type).
std::pair<std::string, std::string> Described(const Error& e) {
  const String standard = StandardDescription(e.number());
  const String& description = e.description();
  if (description.size() > standard.size() + 2 && description.starts_with(standard) &&
      description.compare(standard.size(), 2, u": ") == 0) {
    return {ToUtf8(standard), ToUtf8(description.substr(standard.size() + 2))};
  }
  return {ToUtf8(description), ""};
}

}  // namespace

std::string Masked(const std::string& db) {
  std::string lower = db;
  for (char& c : lower)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::vector<std::pair<size_t, size_t>> values;  // where each password is, and its end
  for (const std::string_view key : {"pwd=", "password="}) {
    for (size_t at = lower.find(key); at != std::string::npos; at = lower.find(key, at + 1)) {
      const size_t from = at + key.size();
      values.emplace_back(from, std::min(lower.find(';', from), lower.size()));
    }
  }
  std::sort(values.begin(), values.end());
  std::string shown;
  size_t done = 0;
  for (const auto& [from, to] : values) {
    if (from < done) continue;  // a key inside a password already masked
    shown += db.substr(done, from - done) + "***";
    done = to;
  }
  return shown + db.substr(done);
}

std::string CannotOpen(const std::string& db, const std::exception& e) {
  std::string message = "cannot open the database " + Masked(db) + ": " + e.what();
  const bool server = db.starts_with("odbc:");
  const std::string path = db.starts_with("sqlite:") ? db.substr(7) : db;
  std::error_code ignored;
  if (!server && !std::filesystem::exists(path, ignored)) {
    message += "\nthere is no file " + path + " (`kavrin init-db " + path +
               " --demo` creates one with a sample company)";
  }
  return message;
}

Session::Session(const std::optional<std::string>& db, bool trace)
    : trace_(trace), has_db_(db.has_value()), ui_(std::make_shared<RecordingUiHost>()) {
  if (db) {
    try {
      pub_.DBIA(KitDatabase::Open(FromUtf8(*db)));
    } catch (const Error& e) {
      throw DatabaseError(CannotOpen(*db, e));
    }
    if (trace_) {
      pub_.DBIA()->Connection()->SetTrace(
          [sql = sql_](StringView text) { sql->emplace_back(text); });
    }
  }
  previous_ui_ = SetUiHost(ui_);
}

Session::~Session() {
  SetUiHost(previous_ui_);
}

json Session::Call(const std::string& method, std::vector<Variant>& args) {
  sql_->clear();
  ui_->messages = json::array();
  json answer;
  try {
    const Variant result = pub_.Invoke(FromUtf8(method), InvokeKind::Method, args);
    answer["ok"] = true;
    answer["result"] = ValueToJson(result);
  } catch (const Error& e) {
    answer["ok"] = false;
    // What the host adds comes first: the number, source and description
    // close the error object as they always have.
    const auto [description, detail] = Described(e);
    json error = json::object();
    if (!detail.empty()) error["detail"] = detail;
    if (e.number() == errors::kNoConnection && !has_db_) {
      error["hint"] = method + " reads the database, and none was given: pass --db CONN";
    }
    error["number"] = e.number();
    error["source"] = ToUtf8(e.source());
    error["description"] = description;
    answer["error"] = error;
  }
  json shown = json::array();
  for (const auto& arg : args)
    shown.push_back(ValueToJson(arg));
  answer["args"] = shown;
  if (trace_) {
    json sql = json::array();
    for (const auto& text : *sql_)
      sql.push_back(ToUtf8(text));
    answer["sql"] = sql;
  }
  if (!ui_->messages.empty()) answer["messages"] = ui_->messages;
  return answer;
}

json Session::Request(const std::string& line) {
  try {
    const json request = json::parse(line);
    if (!request.is_object() || !request.contains("method") || !request["method"].is_string()) {
      throw UsageError("a request is {\"method\": \"...\", \"args\": [...]}");
    }
    std::vector<Variant> args;
    if (request.contains("args")) {
      if (!request["args"].is_array()) throw UsageError("\"args\" must be an array");
      for (const auto& arg : request["args"])
        args.push_back(ArgumentFromJson(arg));
    }
    return Call(request["method"].get<std::string>(), args);
  } catch (const json::exception& e) {
    // The reader's message quotes the bytes it stopped at, which need not be
    // UTF-8; the answer must be, or it cannot be written at all.
    return {{"ok", false},
            {"usage", ToUtf8(FromUtf8(std::string("unreadable request: ") + e.what()))}};
  } catch (const UsageError& e) {
    return {{"ok", false}, {"usage", e.what()}};
  }
}

}  // namespace kavrin::tool
