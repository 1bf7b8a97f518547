#include "ListControl.h"

#include "kavrin/Convert.h"

namespace kavrin::tool {

Variant ListControl::Invoke(StringView name, InvokeKind, std::span<Variant> args) {
  if (EqualsNoCase(name, u"Clear") && args.empty()) {
    items_.clear();
    return {};
  }
  if (EqualsNoCase(name, u"AddItem") && (args.size() == 1 || args.size() == 2)) {
    items_.push_back(ToString(args[0]));
    return {};
  }
  if (EqualsNoCase(name, u"ListCount") && args.empty()) {
    return static_cast<int32_t>(items_.size());
  }
  if (EqualsNoCase(name, u"Clear") || EqualsNoCase(name, u"AddItem")) {
    throw Error::Runtime(errors::kWrongArgumentCount);
  }
  ThrowMemberNotFound(TypeName(), name);
}

}  // namespace kavrin::tool
