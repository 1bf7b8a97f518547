#include "kavrin/Variant.h"

#include "kavrin/Convert.h"
#include "kavrin/Dispatch.h"
#include "kavrin/Error.h"

namespace kavrin {

String TypeName(VarType type) {
  switch (type) {
    case VarType::Empty:
      return u"Empty";
    case VarType::Null:
      return u"Null";
    case VarType::Integer:
      return u"Integer";
    case VarType::Long:
      return u"Long";
    case VarType::Byte:
      return u"Byte";
    case VarType::Double:
      return u"Double";
    case VarType::Boolean:
      return u"Boolean";
    case VarType::Date:
      return u"Date";
    case VarType::String:
      return u"String";
    case VarType::Object:
      return u"Object";
    case VarType::Array:
      return u"Array";
    case VarType::Missing:
      return u"Error";
    case VarType::Variant:
      return u"Variant";
  }
  return u"Variant";
}

// ---- Array ----

Array::Array(int32_t lbound, VarType element_type, size_t count)
    : lbound_(lbound), element_type_(element_type) {
  Variant initial;
  switch (element_type) {
    case VarType::Integer:
      initial = int16_t{0};
      break;
    case VarType::Long:
      initial = int32_t{0};
      break;
    case VarType::Byte:
      initial = uint8_t{0};
      break;
    case VarType::Double:
      initial = 0.0;
      break;
    case VarType::Boolean:
      initial = false;
      break;
    case VarType::Date:
      initial = Date{};
      break;
    case VarType::String:
      initial = String();
      break;
    case VarType::Object:
      initial = Variant::Nothing();
      break;
    default:
      break;
  }
  items_.assign(count, initial);
}

const Variant& Array::At(int32_t index) const {
  const int64_t offset = int64_t{index} - lbound_;
  if (offset < 0 || offset >= static_cast<int64_t>(items_.size())) {
    throw Error::Runtime(errors::kSubscriptOutOfRange);
  }
  return items_[static_cast<size_t>(offset)];
}

void Array::Store(int32_t index, const Variant& value) {
  const int64_t offset = int64_t{index} - lbound_;
  if (offset < 0 || offset >= static_cast<int64_t>(items_.size())) {
    throw Error::Runtime(errors::kSubscriptOutOfRange);
  }
  items_[static_cast<size_t>(offset)] = ConvertTo(value, element_type_);
}

bool operator==(const Array& a, const Array& b) {
  return a.lbound_ == b.lbound_ && a.element_type_ == b.element_type_ && a.items_ == b.items_;
}

// ---- Variant ----

Variant::Variant(const Variant& other) : value_(other.value_) {
  if (auto* array = std::get_if<std::shared_ptr<Array>>(&value_); array && *array) {
    *array = std::make_shared<Array>(**array);
  }
}

Variant& Variant::operator=(const Variant& other) {
  if (this != &other) {
    Variant copy(other);
    *this = std::move(copy);
  }
  return *this;
}

VarType Variant::type() const {
  return static_cast<VarType>(value_.index());
}

bool Variant::IsNumeric() const {
  switch (type()) {
    case VarType::Integer:
    case VarType::Long:
    case VarType::Byte:
    case VarType::Double:
    case VarType::Boolean:
    case VarType::Date:
      return true;
    default:
      return false;
  }
}

String Variant::TypeName() const {
  switch (type()) {
    case VarType::Object: {
      const auto& object = AsObject();
      return object ? object->TypeName() : String(u"Nothing");
    }
    case VarType::Array:
      return kavrin::TypeName(AsArray().element_type()) + u"()";
    default:
      return kavrin::TypeName(type());
  }
}

namespace {
template <typename T, typename V>
const T& Get(const V& value) {
  if (const T* p = std::get_if<T>(&value)) return *p;
  throw Error::Runtime(errors::kTypeMismatch);
}
}  // namespace

int16_t Variant::AsInteger() const {
  return Get<int16_t>(value_);
}
int32_t Variant::AsLong() const {
  return Get<int32_t>(value_);
}
uint8_t Variant::AsByte() const {
  return Get<uint8_t>(value_);
}
double Variant::AsDouble() const {
  return Get<double>(value_);
}
bool Variant::AsBoolean() const {
  return Get<bool>(value_);
}
Date Variant::AsDate() const {
  return Get<Date>(value_);
}
const String& Variant::AsString() const {
  return Get<String>(value_);
}
const std::shared_ptr<Dispatch>& Variant::AsObject() const {
  return Get<ObjectRef>(value_).ptr;
}
const Array& Variant::AsArray() const {
  return *Get<std::shared_ptr<Array>>(value_);
}
Array& Variant::AsArray() {
  return *Get<std::shared_ptr<Array>>(value_);
}

bool operator==(const Variant& a, const Variant& b) {
  if (a.type() != b.type()) return false;
  if (a.IsArray()) return a.AsArray() == b.AsArray();
  return a.value_ == b.value_;
}

}  // namespace kavrin
