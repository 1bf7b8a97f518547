// A list control standing in for a form's combo box: "Clear" empties it and
// "AddItem" appends the item text, both called by name.
#pragma once

#include <vector>

#include "kavrin/Dispatch.h"
#include "kavrin/Error.h"
#include "kavrin/String.h"

namespace kavrin::tool {

class ListControl final : public Dispatch {
 public:
  explicit ListControl(std::vector<String> items = {}) : items_(std::move(items)) {}

  const std::vector<String>& items() const { return items_; }

  String TypeName() const override { return u"ComboBox"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override;

 private:
  std::vector<String> items_;
};

}  // namespace kavrin::tool
