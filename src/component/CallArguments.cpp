#include "component/CallArguments.h"

#include "kavrin/Convert.h"
#include "runtime/Arguments.h"

namespace kavrin {

namespace {
size_t RequiredCount(std::span<const ParameterInfo> parameters) {
  size_t required = 0;
  while (required < parameters.size() && !parameters[required].optional)
    ++required;
  return required;
}
}  // namespace

CallArguments::CallArguments(std::span<Variant> args, std::span<const ParameterInfo> parameters)
    : args_(args), converted_(args.size()) {
  CheckArgumentCount(args, RequiredCount(parameters), parameters.size());
  // Every typed argument is coerced up front, left to right, so that the
  // first unreadable one is the one reported.
  for (size_t i = 0; i < args.size(); ++i) {
    const VarType type = parameters[i].type;
    if (Given(i) && type != VarType::Variant && type != VarType::Object) {
      converted_[i] = ConvertTo(args[i], type);
    }
  }
}

CallArguments::~CallArguments() {
  for (auto& w : write_backs_) {
    if (w.given) {
      std::visit([&](const auto& v) { args_[w.index] = Variant(v); }, w.value);
    }
  }
}

String CallArguments::Text(size_t i) const {
  return Given(i) ? converted_[i].AsString() : String();
}
bool CallArguments::Boolean(size_t i) const {
  return Given(i) && converted_[i].AsBoolean();
}
int16_t CallArguments::Integer(size_t i) const {
  return Given(i) ? converted_[i].AsInteger() : 0;
}
int32_t CallArguments::Long(size_t i) const {
  return Given(i) ? converted_[i].AsLong() : 0;
}
uint8_t CallArguments::Byte(size_t i) const {
  return Given(i) ? converted_[i].AsByte() : 0;
}
double CallArguments::Double(size_t i) const {
  return Given(i) ? converted_[i].AsDouble() : 0.0;
}

Variant& CallArguments::Value(size_t i) {
  if (i < args_.size()) return args_[i];
  missing_ = Variant::Missing();
  return missing_;
}

String& CallArguments::TextRef(size_t i) {
  write_backs_.push_back({i, Given(i), Text(i)});
  return std::get<String>(write_backs_.back().value);
}

bool& CallArguments::BooleanRef(size_t i) {
  write_backs_.push_back({i, Given(i), Boolean(i)});
  return std::get<bool>(write_backs_.back().value);
}

}  // namespace kavrin
