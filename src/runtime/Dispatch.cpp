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

void ThrowMemberNotFound(StringView type_name, StringView name) {
  const Error error = Error::Standard(errors::kMemberNotFound, String(type_name));
  constexpr size_t kShown = 64;
  throw Error(error.number(), error.source(),
              error.description() + u": " + String(type_name) + u" has no member " +
                  String(name.substr(0, kShown)) + (name.size() > kShown ? u"…" : u""));
}

}  // namespace kavrin
