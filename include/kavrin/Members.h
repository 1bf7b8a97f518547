// The description of clsPub's members for late binding and for tools that
// list them: name, kind, parameters with their types, and result type.
#pragma once

#include <cstdint>
#include <span>

#include "kavrin/Dispatch.h"
#include "kavrin/Variant.h"

namespace kavrin {

struct ParameterInfo {
  const char16_t* name;
  VarType type;                           // VarType::Variant for a Variant, Object for an object
  bool optional = false;                  // may be omitted
  bool written = false;                   // the member writes into the caller's argument
  const char16_t* object_type = nullptr;  // the class of an object parameter
};

struct MemberInfo {
  int number;  // 1-based place in the interface
  const char16_t* name;
  InvokeKind kind;  // Method, PropertyGet or PropertyPutRef
  std::span<const ParameterInfo> parameters;
  VarType result;                         // VarType::Empty for a member without a result
  const char16_t* object_type = nullptr;  // the class of an object result or property
};

}  // namespace kavrin
