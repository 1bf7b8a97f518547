// Stand-ins for a form's user interface in tests: a control reached by name,
// a combo box, and a host that has a focused control and records message
// boxes, installed for the life of a scope.
#pragma once

#include <memory>
#include <vector>

#include "kavrin/Dispatch.h"
#include "kavrin/Error.h"
#include "kavrin/Host.h"

namespace kavrin::testing {

// A control that answers its "Text" and records every "SelStart" and
// "SelLength" written to it.
class FakeControl final : public Dispatch {
 public:
  FakeControl(String type_name, Variant text)
      : type_name_(std::move(type_name)), text_(std::move(text)) {}

  String TypeName() const override { return type_name_; }

  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override {
    if (kind == InvokeKind::PropertyGet && EqualsNoCase(name, u"Text")) {
      reads.emplace_back(name);
      return text_;
    }
    if (kind == InvokeKind::PropertyPut && args.size() == 1 &&
        (EqualsNoCase(name, u"SelStart") || EqualsNoCase(name, u"SelLength"))) {
      writes.push_back({String(name), args[0]});
      return Variant();
    }
    ThrowMemberNotFound(type_name_, name);
  }

  struct Write {
    String name;
    Variant value;
    friend bool operator==(const Write&, const Write&) = default;
  };
  std::vector<String> reads;
  std::vector<Write> writes;

 private:
  String type_name_;
  Variant text_;
};

// A form's combo box: "Clear" and "AddItem" called by name. It can be built
// without "Clear".
class FakeList final : public Dispatch {
 public:
  explicit FakeList(std::vector<String> items = {}, bool has_clear = true)
      : items(std::move(items)), has_clear_(has_clear) {}

  String TypeName() const override { return u"ComboBox"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    if (has_clear_ && EqualsNoCase(name, u"Clear") && args.empty()) {
      items.clear();
    } else if (EqualsNoCase(name, u"AddItem") && args.size() == 1) {
      items.push_back(args[0].AsString());
    } else {
      ThrowMemberNotFound(TypeName(), name);
    }
    return {};
  }

  std::vector<String> items;

 private:
  bool has_clear_;
};

// A form with one focused control, or none (91), whose message boxes are
// recorded and answered OK.
class FakeUiHost final : public UiHost {
 public:
  struct Shown {
    String prompt;
    int32_t buttons;
    String title;
  };

  std::shared_ptr<Dispatch> ActiveControl() override {
    if (!focused) throw Error::Runtime(errors::kObjectNotSet);
    return focused;
  }
  int32_t MsgBox(StringView prompt, int32_t buttons, StringView title) override {
    shown.push_back({String(prompt), buttons, String(title)});
    return vbOK;
  }

  std::shared_ptr<Dispatch> focused;
  std::vector<Shown> shown;
};

// Installs a FakeUiHost for the life of the scope, then restores the host
// that was installed before.
class ScopedUiHost {
 public:
  ScopedUiHost() : previous_(SetUiHost(host_)) {}
  ~ScopedUiHost() { SetUiHost(previous_); }
  ScopedUiHost(const ScopedUiHost&) = delete;
  FakeUiHost* operator->() const { return host_.get(); }

 private:
  std::shared_ptr<FakeUiHost> host_ = std::make_shared<FakeUiHost>();
  std::shared_ptr<UiHost> previous_;
};

}  // namespace kavrin::testing
