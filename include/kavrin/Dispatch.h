// kavrin::Dispatch: late binding, the platform's call-by-name interface.
//
// An object reached through a Variant (a host's list control, the focused
// control of a form, clsPub itself) implements Dispatch: it has a type name,
// and its members are called by name, without regard to ASCII letter case,
// as a method, a property read or a property write. Arguments are Variants
// passed by reference, so a member may write into them.
//
// Thread-safety: as the implementing object says; the component calls each
// object only from the thread that called the component.
#pragma once

#include <memory>
#include <span>

#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

enum class InvokeKind : uint8_t {
  Method,          // obj.Name(args)
  PropertyGet,     // x = obj.Name(args)
  PropertyPut,     // obj.Name(args) = value; the value is the last argument
  PropertyPutRef,  // Set obj.Name(args) = object; the object is the last argument
};

class KAVRIN_API Dispatch {
 public:
  virtual ~Dispatch();

  // The type name the platform's TypeName() reports for this object.
  virtual String TypeName() const = 0;

  // Calls member `name` with `args` by reference and answers its result
  // (Empty for a member without one). Throws Error 438 for a member the
  // object does not have, and whatever the member itself raises.
  virtual Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) = 0;

  // Conveniences over Invoke.
  Variant Call(StringView name, std::span<Variant> args = {});
  Variant Get(StringView name);
  void Put(StringView name, Variant value);
};

// Error 438 for `name` on an object of type `type_name`.
[[noreturn]] KAVRIN_API void ThrowMemberNotFound(StringView type_name, StringView name);

}  // namespace kavrin
