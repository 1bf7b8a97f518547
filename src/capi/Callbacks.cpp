// Objects and a UI host implemented by the caller through C callbacks: a
// Dispatch whose members are one invoke callback, and a UiHost whose focused
// control and message box are two more.
#include <cstring>
#include <vector>

#include "capi/Handles.h"
#include "kavrin/Error.h"
#include "kavrin/Host.h"

namespace kavrin::capi {

namespace {

constexpr int32_t kAutomationError = 440;

bool SameBytes(const kavrin_value& a, const kavrin_value& b) {
  return std::memcmp(&a, &b, sizeof(kavrin_value)) == 0;
}

// Frees the library's own argument values when the call ends, however it ends.
struct ArgumentValues {
  std::vector<kavrin_value> values;
  ~ArgumentValues() {
    for (auto& value : values)
      kavrin_value_clear(&value);
  }
};

class CallbackObject final : public Dispatch {
 public:
  CallbackObject(String type_name, kavrin_invoke_fn invoke, kavrin_release_fn release,
                 void* context)
      : type_name_(std::move(type_name)), invoke_(invoke), release_(release), context_(context) {}
  ~CallbackObject() override {
    if (release_) release_(context_);
  }

  void* context() const { return context_; }
  String TypeName() const override { return type_name_; }

  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override {
    const std::string member = ToUtf8(name);
    ArgumentValues mine;  // what the library handed the callback, freed at the end
    mine.values.resize(args.size());
    for (size_t i = 0; i < args.size(); ++i)
      FromVariant(args[i], mine.values[i], false);
    std::vector<kavrin_value> passed = mine.values;  // the callback may overwrite these
    kavrin_value answer{};
    kavrin_error* error = nullptr;
    const int status = invoke_(context_, member.c_str(), static_cast<int32_t>(kind), passed.data(),
                               passed.size(), &answer, &error);
    // Read everything the callback put in place before anything can fail.
    struct Taken {
      kavrin_value& value;
      ~Taken() {
        if (value.owned_) kavrin_value_clear(&value);
      }
    } taken{answer};
    if (status != 0) {
      for (size_t i = 0; i < passed.size(); ++i)
        if (!SameBytes(passed[i], mine.values[i])) kavrin_value_clear(&passed[i]);
      if (!error) throw Error(kAutomationError, type_name_, u"Automation error");
      Error failure(error->number, error->source16, error->description16);
      kavrin_error_free(error);
      throw failure;
    }
    kavrin_error_free(error);
    for (size_t i = 0; i < passed.size(); ++i) {
      if (SameBytes(passed[i], mine.values[i])) continue;
      Taken written{passed[i]};
      args[i] = ToVariant(passed[i]);
    }
    return ToVariant(answer);
  }

 private:
  String type_name_;
  kavrin_invoke_fn invoke_;
  kavrin_release_fn release_;
  void* context_;
};

class CallbackHost final : public UiHost {
 public:
  explicit CallbackHost(const kavrin_host& host) : host_(host) {}
  ~CallbackHost() override {
    if (host_.release) host_.release(host_.context);
  }

  std::shared_ptr<Dispatch> ActiveControl() override {
    kavrin_object* control = host_.active_control ? host_.active_control(host_.context) : nullptr;
    if (!control) throw Error::Runtime(errors::kObjectNotSet);
    std::shared_ptr<Dispatch> object = std::move(control->object);
    kavrin_object_release(control);
    if (!object) throw Error::Runtime(errors::kObjectNotSet);
    return object;
  }

  int32_t MsgBox(StringView prompt, int32_t buttons, StringView title) override {
    if (!host_.message_box) return vbOK;
    return host_.message_box(host_.context, ToUtf8(prompt).c_str(), buttons, ToUtf8(title).c_str());
  }

 private:
  kavrin_host host_;
};

}  // namespace

}  // namespace kavrin::capi

using namespace kavrin;
using kavrin::capi::CallbackHost;
using kavrin::capi::CallbackObject;

extern "C" {

kavrin_object* kavrin_object_new(const char* type_name, kavrin_invoke_fn invoke,
                                 kavrin_release_fn release, void* context) {
  if (!invoke) return nullptr;
  try {
    auto object = std::make_shared<CallbackObject>(FromUtf8(type_name ? type_name : ""), invoke,
                                                   release, context);
    return new kavrin_object{std::move(object)};
  } catch (...) {
    return nullptr;
  }
}

void* kavrin_object_context(kavrin_object* object) {
  if (!object) return nullptr;
  auto* callback = dynamic_cast<CallbackObject*>(object->object.get());
  return callback ? callback->context() : nullptr;
}

int kavrin_set_host(const kavrin_host* host, kavrin_error** error) {
  return kavrin::capi::Guard(error, [&] {
    std::shared_ptr<UiHost> installed;
    if (host) installed = std::make_shared<CallbackHost>(*host);
    SetUiHost(std::move(installed));
  });
}

}  // extern "C"
