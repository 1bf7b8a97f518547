#include "kavrin/Host.h"

#include <iostream>
#include <mutex>

#include "kavrin/Error.h"

namespace kavrin {

namespace {

// No forms: there is never an active control; message boxes go to stderr
// and are answered OK at once.
class DefaultUiHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    throw Error::Runtime(errors::kObjectNotSet);
  }
  int32_t MsgBox(StringView prompt, int32_t, StringView title) override {
    std::cerr << ToUtf8(title) << ": " << ToUtf8(prompt) << "\n";
    return vbOK;
  }
};

std::mutex host_mutex;
std::shared_ptr<UiHost>& InstalledHost() {
  static std::shared_ptr<UiHost> host = std::make_shared<DefaultUiHost>();
  return host;
}

}  // namespace

UiHost::~UiHost() = default;

std::shared_ptr<UiHost> CurrentUiHost() {
  std::lock_guard lock(host_mutex);
  return InstalledHost();
}

std::shared_ptr<UiHost> SetUiHost(std::shared_ptr<UiHost> host) {
  if (!host) host = std::make_shared<DefaultUiHost>();
  std::lock_guard lock(host_mutex);
  std::swap(InstalledHost(), host);
  return host;
}

const String& DefaultMessageTitle() {
  static const String title = u"Kavrin";
  return title;
}

}  // namespace kavrin
