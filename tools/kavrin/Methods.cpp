#include "Methods.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "kavrin/clsPub.h"

namespace kavrin::tool {

namespace {

using json = nlohmann::ordered_json;

std::string TypeText(VarType type, const char16_t* object_type) {
  if (type == VarType::Object && object_type) return ToUtf8(object_type);
  return ToUtf8(TypeName(type));
}

std::string ParameterText(const ParameterInfo& p) {
  std::string text =
      (p.written ? "ByRef out " : "") + ToUtf8(p.name) + " As " + TypeText(p.type, p.object_type);
  return p.optional ? "[" + text + "]" : text;
}

std::string Signature(const MemberInfo& member) {
  const std::string name = ToUtf8(member.name);
  if (member.kind == InvokeKind::PropertyGet) {
    return name + " As " + TypeText(member.result, member.object_type) + "  (property read)";
  }
  if (member.kind == InvokeKind::PropertyPutRef) {
    const ParameterInfo& value = member.parameters[0];
    return "Set " + name + " = " + TypeText(value.type, value.object_type) +
           "  (property assign, by reference)";
  }
  std::string text = name + "(";
  for (size_t i = 0; i < member.parameters.size(); ++i) {
    text += (i ? ", " : "") + ParameterText(member.parameters[i]);
  }
  text += ")";
  if (member.result != VarType::Empty) text += " As " + TypeText(member.result, nullptr);
  return text;
}

const char* KindText(InvokeKind kind) {
  switch (kind) {
    case InvokeKind::PropertyGet:
      return "property-get";
    case InvokeKind::PropertyPut:
      return "property-put";
    case InvokeKind::PropertyPutRef:
      return "property-put-ref";
    case InvokeKind::Method:
      break;
  }
  return "method";
}

}  // namespace

std::string MethodsAsText() {
  std::ostringstream out;
  for (const MemberInfo& member : clsPub::Members()) {
    out << std::setw(2) << member.number << "  " << Signature(member) << "\n";
  }
  return out.str();
}

std::string MethodsAsJson() {
  json members = json::array();
  for (const MemberInfo& member : clsPub::Members()) {
    json parameters = json::array();
    for (const ParameterInfo& p : member.parameters) {
      parameters.push_back({{"name", ToUtf8(p.name)},
                            {"type", TypeText(p.type, p.object_type)},
                            {"optional", p.optional},
                            {"written", p.written}});
    }
    members.push_back({{"number", member.number},
                       {"name", ToUtf8(member.name)},
                       {"kind", KindText(member.kind)},
                       {"parameters", parameters},
                       {"result", TypeText(member.result, member.object_type)}});
  }
  return members.dump(2) + "\n";
}

}  // namespace kavrin::tool
