// kavrin::Variant: the platform's tagged value.
//
// A Variant is Empty, Null, an Integer (16-bit), Long (32-bit), Byte, Double,
// Boolean, Date, String, an object reference (a Dispatch, possibly empty), an
// array, or the marker of an omitted optional argument. Variants are values:
// copying one copies its array elements; objects are shared references.
// Reading a payload of another type than the one held throws Error 13; the
// conversions with the platform's rules live in kavrin/Convert.h.
//
// Thread-safety: const members are safe to call concurrently; anything else
// needs external synchronization.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

class Dispatch;
class Variant;

// The type tag, with the platform's type names given by TypeName().
enum class VarType : uint8_t {
  Empty,
  Null,
  Integer,
  Long,
  Byte,
  Double,
  Boolean,
  Date,
  String,
  Object,
  Array,
  Missing,
  Variant,  // only as the element type of an array: elements hold any value
};

// The platform's name of a type ("Integer", "String", "Boolean", ...).
KAVRIN_API String TypeName(VarType type);

// An OLE automation date: days since 30 December 1899 00:00, the time of day
// as the fraction (kavrin/OleDate.h converts to and from calendar parts).
struct Date {
  double value = 0.0;
  friend bool operator==(Date, Date) = default;
};

// A one-dimensional array with its lower bound and element type. Elements of
// a typed array always hold that type; Store() coerces by the platform's rules.
class KAVRIN_API Array {
 public:
  Array() = default;
  // `count` elements from `lbound`, each the default of `element_type`.
  Array(int32_t lbound, VarType element_type, size_t count);

  int32_t lbound() const { return lbound_; }
  int32_t ubound() const;
  VarType element_type() const { return element_type_; }
  size_t size() const;
  const std::vector<Variant>& items() const { return items_; }

  // Element at platform index `index`. Throws Error 9 outside the bounds.
  const Variant& At(int32_t index) const;
  // Stores `value` at `index`, coerced to the element type. Throws Error 9
  // outside the bounds, or the coercion's error (13, 94, 6) leaving the
  // element unchanged.
  void Store(int32_t index, const Variant& value);

  friend bool operator==(const Array&, const Array&);

 private:
  int32_t lbound_ = 0;
  VarType element_type_ = VarType::Variant;
  std::vector<Variant> items_;
};

class KAVRIN_API Variant {
 public:
  // Empty.
  Variant() = default;
  Variant(int16_t v) : value_(v) {}
  Variant(int32_t v) : value_(v) {}
  Variant(uint8_t v) : value_(v) {}
  Variant(double v) : value_(v) {}
  Variant(bool v) : value_(v) {}
  Variant(Date v) : value_(v) {}
  Variant(String v) : value_(std::move(v)) {}
  Variant(StringView v) : value_(String(v)) {}
  Variant(const char16_t* v) : value_(String(v)) {}
  Variant(const char*) = delete;  // texts are UTF-16: write u"..."
  Variant(std::shared_ptr<Dispatch> object) : value_(ObjectRef{std::move(object)}) {}
  Variant(Array array) : value_(std::make_shared<Array>(std::move(array))) {}

  static Variant Null() { return Variant(NullTag{}); }
  static Variant Missing() { return Variant(MissingTag{}); }
  // An object reference that refers to nothing.
  static Variant Nothing() { return Variant(ObjectRef{}); }

  Variant(const Variant& other);
  Variant& operator=(const Variant& other);
  Variant(Variant&&) noexcept = default;
  Variant& operator=(Variant&&) noexcept = default;

  VarType type() const;
  bool IsEmpty() const { return type() == VarType::Empty; }
  bool IsNull() const { return type() == VarType::Null; }
  bool IsMissing() const { return type() == VarType::Missing; }
  bool IsObject() const { return type() == VarType::Object; }
  bool IsArray() const { return type() == VarType::Array; }
  bool IsString() const { return type() == VarType::String; }
  // Integer, Long, Byte, Double, Boolean or Date.
  bool IsNumeric() const;

  // The platform's type name of the value held: "Empty", "Null", "Integer",
  // "Long", "Byte", "Double", "Boolean", "Date", "String", "Error" for the
  // omitted-argument marker, the object's own type name or "Nothing", and
  // the element type followed by "()" for an array.
  String TypeName() const;

  // Payload accessors. Each throws Error 13 when the value holds another type.
  int16_t AsInteger() const;
  int32_t AsLong() const;
  uint8_t AsByte() const;
  double AsDouble() const;
  bool AsBoolean() const;
  Date AsDate() const;
  const String& AsString() const;
  // The object held (may be null for Nothing).
  const std::shared_ptr<Dispatch>& AsObject() const;
  const Array& AsArray() const;
  Array& AsArray();

  // Same type and same payload (objects by identity). Not the platform's `=`.
  friend bool operator==(const Variant& a, const Variant& b);

 private:
  struct NullTag {
    friend bool operator==(NullTag, NullTag) = default;
  };
  struct MissingTag {
    friend bool operator==(MissingTag, MissingTag) = default;
  };
  struct ObjectRef {
    std::shared_ptr<Dispatch> ptr;
    friend bool operator==(const ObjectRef&, const ObjectRef&) = default;
  };
  explicit Variant(NullTag t) : value_(t) {}
  explicit Variant(MissingTag t) : value_(t) {}
  explicit Variant(ObjectRef r) : value_(std::move(r)) {}

  // The array is held by pointer so that Variant stays small; copies deep-copy it.
  std::variant<std::monostate, NullTag, int16_t, int32_t, uint8_t, double, bool, Date, String,
               ObjectRef, std::shared_ptr<Array>, MissingTag>
      value_;
};

// Defined here, where Variant is complete: the element vector's size needs it.
inline int32_t Array::ubound() const {
  return lbound_ + static_cast<int32_t>(items_.size()) - 1;
}
inline size_t Array::size() const {
  return items_.size();
}

}  // namespace kavrin
