// The arguments of a late-bound call to clsPub, read as the member declares
// them: each Variant is coerced to the parameter's type by the platform's
// rules, an omitted optional one gives false, "" or 0 (a Variant parameter
// gets the omitted-argument marker), and the parameters a member writes are
// written back into the caller's Variants when the call ends, also when it
// fails part-way.
//
// An argument that cannot be read keeps the platform's error number, and its
// description goes on to say which argument of which member it was, the type
// the parameter takes and the value given: "Overflow: argument 2 of
// CodeToName (Style As Byte) cannot take the Long -1".
#pragma once

#include <list>
#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "kavrin/Error.h"
#include "kavrin/Members.h"
#include "kavrin/Variant.h"

namespace kavrin {

class CallArguments {
 public:
  // Throws 450 for too many arguments, 449 for a missing required one, and
  // the coercion's error (13, 6, 94) for the first typed argument that cannot
  // be read as its parameter's type.
  CallArguments(std::span<Variant> args, const MemberInfo& member);
  ~CallArguments();
  CallArguments(const CallArguments&) = delete;
  CallArguments& operator=(const CallArguments&) = delete;

  String Text(size_t i) const;
  bool Boolean(size_t i) const;
  int16_t Integer(size_t i) const;
  int32_t Long(size_t i) const;
  uint8_t Byte(size_t i) const;
  double Double(size_t i) const;
  // The caller's own Variant, by reference (a marker when omitted).
  Variant& Value(size_t i);

  // Argument i as an object of class T: null for Nothing or an omitted one;
  // 13 for any other object, with the argument named.
  template <class T>
  std::shared_ptr<T> ObjectOf(size_t i) {
    std::shared_ptr<Dispatch> object;
    try {
      object = Value(i).AsObject();
    } catch (const Error& e) {
      throw ArgumentError(e, i);
    }
    auto typed = std::dynamic_pointer_cast<T>(object);
    if (object && !typed) throw ArgumentError(Error::Runtime(errors::kTypeMismatch), i);
    return typed;
  }

  // A typed copy of argument i that is written back into the caller's Variant
  // when the call ends (unless the argument was omitted).
  String& TextRef(size_t i);
  bool& BooleanRef(size_t i);

 private:
  bool Given(size_t i) const { return i < args_.size() && !args_[i].IsMissing(); }
  // `cause` with its description extended by which argument it is about.
  Error ArgumentError(const Error& cause, size_t i) const;

  struct WriteBack {
    size_t index;
    bool given;  // an omitted argument is written into a temporary only
    std::variant<String, bool> value;
  };

  std::span<Variant> args_;
  const MemberInfo& member_;
  std::vector<Variant> converted_;  // the typed arguments, coerced to their parameters' types
  Variant missing_ = Variant::Missing();
  std::list<WriteBack> write_backs_;  // stable addresses for the references handed out
};

// `cause` with ": " and `detail` added to its description; number and source
// stay as they are.
Error WithDetail(const Error& cause, StringView detail);

}  // namespace kavrin
