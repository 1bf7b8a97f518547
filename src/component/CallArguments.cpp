#include "component/CallArguments.h"

#include <string>

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

String Number(size_t n) {
  return FromUtf8(std::to_string(n));
}

// "Style As Byte", "DB As Database".
String Declaration(const ParameterInfo& parameter) {
  const String type =
      parameter.object_type ? String(parameter.object_type) : TypeName(parameter.type);
  return String(parameter.name) + u" As " + type;
}

// "the Long -1", "the String \"abc\"", "Null", "the Recordset".
String Shown(const Variant& value) {
  switch (value.type()) {
    case VarType::Empty:
    case VarType::Null:
      return value.TypeName();
    case VarType::Missing:
      return u"an omitted argument";
    case VarType::Object:
    case VarType::Array:
      return u"the " + value.TypeName();
    case VarType::String: {
      constexpr size_t kShown = 40;
      const String& text = value.AsString();
      return u"the String \"" + text.substr(0, kShown) + (text.size() > kShown ? u"…\"" : u"\"");
    }
    default:
      return u"the " + value.TypeName() + u" " + ToString(value);
  }
}

// "CodeToName takes at most 2 arguments (Code, Style), 3 were given".
String CountDetail(const MemberInfo& member, size_t given) {
  String names;
  for (const auto& parameter : member.parameters)
    names += (names.empty() ? u"" : u", ") + String(parameter.name);
  const size_t max = member.parameters.size();
  return String(member.name) + u" takes " +
         (max == 0 ? String(u"no arguments")
                   : u"at most " + Number(max) + (max == 1 ? u" argument (" : u" arguments (") +
                         names + u")") +
         u", " + Number(given) + (given == 1 ? u" was given" : u" were given");
}

}  // namespace

Error WithDetail(const Error& cause, StringView detail) {
  return Error(cause.number(), cause.source(), cause.description() + u": " + String(detail));
}

CallArguments::CallArguments(std::span<Variant> args, const MemberInfo& member)
    : args_(args), member_(member), converted_(args.size()) {
  const auto parameters = member.parameters;
  try {
    CheckArgumentCount(args, RequiredCount(parameters), parameters.size());
  } catch (const Error& e) {
    if (e.number() != errors::kArgumentNotOptional)
      throw WithDetail(e, CountDetail(member, args.size()));
    size_t missing = 0;
    while (Given(missing))
      ++missing;
    throw ArgumentError(e, missing);
  }
  // Every typed argument is coerced up front, left to right, so that the
  // first unreadable one is the one reported.
  for (size_t i = 0; i < args.size(); ++i) {
    const VarType type = parameters[i].type;
    if (Given(i) && type != VarType::Variant && type != VarType::Object) {
      try {
        converted_[i] = ConvertTo(args[i], type);
      } catch (const Error& e) {
        throw ArgumentError(e, i);
      }
    }
  }
}

Error CallArguments::ArgumentError(const Error& cause, size_t i) const {
  String detail = u"argument " + Number(i + 1) + u" of " + String(member_.name) + u" (" +
                  Declaration(member_.parameters[i]) + u")";
  detail += Given(i) ? u" cannot take " + Shown(args_[i]) : String(u" is not optional");
  return WithDetail(cause, detail);
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
