#include "kavrin/Dispatch.h"

#include "kavrin/Error.h"

namespace kavrin {

Dispatch::~Dispatch() = default;

Variant Dispatch::Call(StringView name, std::span<Variant> args) {
  return Invoke(name, InvokeKind::Method, args);
}

Variant Dispatch::Get(StringView name) {
  return Invoke(name, InvokeKind::PropertyGet, {});
}

void Dispatch::Put(StringView name, Variant value) {
  Invoke(name, InvokeKind::PropertyPut, std::span<Variant>(&value, 1));
}

void ThrowMemberNotFound(StringView type_name, StringView /*name*/) {
  throw Error::Standard(errors::kMemberNotFound, String(type_name));
}

}  // namespace kavrin
