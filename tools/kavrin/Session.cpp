#include "Session.h"

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

Session::Session(const std::optional<std::string>& db, bool trace)
    : trace_(trace), ui_(std::make_shared<RecordingUiHost>()) {
  if (db) {
    try {
      pub_.DBIA(KitDatabase::Open(FromUtf8(*db)));
    } catch (const Error& e) {
      throw UsageError("cannot open the database " + *db + ": " + e.what());
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
    answer["error"] = {{"number", e.number()},
                       {"source", ToUtf8(e.source())},
                       {"description", ToUtf8(e.description())}};
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
