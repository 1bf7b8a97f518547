// kavrin_value to Variant and back. A caller's value is only read; a value
// the library fills owns its texts, array items and object handle through
// owned_, released by kavrin_value_clear.
#include <vector>

#include "capi/Handles.h"
#include "kavrin/Error.h"

namespace kavrin::capi {

namespace {

struct OwnedText final : Owned {
  std::string utf8;
  String utf16;
};

struct OwnedArray final : Owned {
  std::vector<kavrin_value> items;
  ~OwnedArray() override {
    for (auto& item : items)
      kavrin_value_clear(&item);
  }
};

struct OwnedObject final : Owned {
  kavrin_object handle;
};

// The mark of a library-filled value that needs no storage (a number, a
// Boolean, Nothing): owned_ is never NULL in what the library fills in, so a
// caller can tell which arguments a member wrote.
Owned no_storage;

[[noreturn]] void Fail(int32_t number) {
  throw Error::Runtime(number);
}

// The element types an array may be declared with.
bool IsElementKind(int32_t kind) {
  return (kind >= KAVRIN_INTEGER && kind <= KAVRIN_OBJECT) || kind == KAVRIN_VARIANT;
}

Variant ArrayOf(const kavrin_value& value) {
  const auto& in = value.u.array;
  if (!IsElementKind(value.element_kind)) Fail(errors::kTypeMismatch);
  if (in.count > 0 && !in.items) Fail(errors::kInvalidProcedureCall);
  if (in.count > static_cast<size_t>(INT32_MAX) ||
      static_cast<int64_t>(in.lbound) + static_cast<int64_t>(in.count) - 1 > INT32_MAX)
    Fail(errors::kOverflow);
  Array array(in.lbound, static_cast<VarType>(value.element_kind), in.count);
  for (size_t i = 0; i < in.count; ++i)
    array.Store(in.lbound + static_cast<int32_t>(i), ToVariant(in.items[i]));
  return Variant(std::move(array));
}

}  // namespace

Variant ToVariant(const kavrin_value& value) {
  switch (value.kind) {
    case KAVRIN_EMPTY:
      return Variant();
    case KAVRIN_NULL:
      return Variant::Null();
    case KAVRIN_INTEGER:
      if (value.u.i < INT16_MIN || value.u.i > INT16_MAX) Fail(errors::kOverflow);
      return Variant(static_cast<int16_t>(value.u.i));
    case KAVRIN_LONG:
      return Variant(static_cast<int32_t>(value.u.i));
    case KAVRIN_BYTE:
      if (value.u.i < 0 || value.u.i > UINT8_MAX) Fail(errors::kOverflow);
      return Variant(static_cast<uint8_t>(value.u.i));
    case KAVRIN_DOUBLE:
      return Variant(value.u.d);
    case KAVRIN_BOOLEAN:
      return Variant(value.u.i != 0);
    case KAVRIN_DATE:
      return Variant(Date{value.u.d});
    case KAVRIN_STRING:
      if (!value.u.utf8.data && value.u.utf8.length > 0) Fail(errors::kInvalidProcedureCall);
      return Variant(FromUtf8(std::string_view(value.u.utf8.data, value.u.utf8.length)));
    case KAVRIN_STRING16:
      if (!value.u.utf16.data && value.u.utf16.length > 0) Fail(errors::kInvalidProcedureCall);
      return Variant(
          String(reinterpret_cast<const char16_t*>(value.u.utf16.data), value.u.utf16.length));
    case KAVRIN_OBJECT:
      return value.u.object ? Variant(value.u.object->object) : Variant::Nothing();
    case KAVRIN_ARRAY:
      return ArrayOf(value);
    case KAVRIN_MISSING:
      return Variant::Missing();
    default:
      Fail(errors::kTypeMismatch);
  }
}

void FromVariant(const Variant& value, kavrin_value& out, bool utf16) {
  out = kavrin_value{};
  out.owned_ = &no_storage;
  switch (value.type()) {
    case VarType::Empty:
    case VarType::Variant:
      out.kind = KAVRIN_EMPTY;
      return;
    case VarType::Null:
      out.kind = KAVRIN_NULL;
      return;
    case VarType::Missing:
      out.kind = KAVRIN_MISSING;
      return;
    case VarType::Integer:
      out.kind = KAVRIN_INTEGER;
      out.u.i = value.AsInteger();
      return;
    case VarType::Long:
      out.kind = KAVRIN_LONG;
      out.u.i = value.AsLong();
      return;
    case VarType::Byte:
      out.kind = KAVRIN_BYTE;
      out.u.i = value.AsByte();
      return;
    case VarType::Boolean:
      out.kind = KAVRIN_BOOLEAN;
      out.u.i = value.AsBoolean() ? -1 : 0;
      return;
    case VarType::Double:
      out.kind = KAVRIN_DOUBLE;
      out.u.d = value.AsDouble();
      return;
    case VarType::Date:
      out.kind = KAVRIN_DATE;
      out.u.d = value.AsDate().value;
      return;
    case VarType::String: {
      auto text = std::make_unique<OwnedText>();
      if (utf16) {
        text->utf16 = value.AsString();
        out.kind = KAVRIN_STRING16;
        out.u.utf16.data = reinterpret_cast<const uint16_t*>(text->utf16.data());
        out.u.utf16.length = text->utf16.size();
      } else {
        text->utf8 = ToUtf8(value.AsString());
        out.kind = KAVRIN_STRING;
        out.u.utf8.data = text->utf8.data();
        out.u.utf8.length = text->utf8.size();
      }
      out.owned_ = text.release();
      return;
    }
    case VarType::Object: {
      out.kind = KAVRIN_OBJECT;
      if (!value.AsObject()) return;  // Nothing
      auto object = std::make_unique<OwnedObject>();
      object->handle.object = value.AsObject();
      out.u.object = &object->handle;
      out.owned_ = object.release();
      return;
    }
    case VarType::Array: {
      const Array& in = value.AsArray();
      auto array = std::make_unique<OwnedArray>();
      array->items.resize(in.size());
      for (size_t i = 0; i < in.size(); ++i)
        FromVariant(in.items()[i], array->items[i], utf16);
      out.kind = KAVRIN_ARRAY;
      out.element_kind = static_cast<int32_t>(in.element_type());
      out.u.array.items = array->items.data();
      out.u.array.count = array->items.size();
      out.u.array.lbound = in.lbound();
      out.owned_ = array.release();
      return;
    }
  }
}

}  // namespace kavrin::capi

extern "C" void kavrin_value_clear(kavrin_value* value) {
  if (!value) return;
  if (value->owned_ != &kavrin::capi::no_storage)
    delete static_cast<kavrin::capi::Owned*>(value->owned_);
  *value = kavrin_value{};
}
