// clsPub's member table as C sees it: the same entries as clsPub::Members(),
// with the names in UTF-8 made once and kept for the life of the process.
#include <string>
#include <vector>

#include "capi/Handles.h"
#include "kavrin/clsPub.h"

namespace kavrin::capi {

namespace {

struct Names {
  std::string member;
  std::vector<std::string> parameters;
};

const std::vector<Names>& Utf8Names() {
  static const std::vector<Names> names = [] {
    std::vector<Names> all;
    for (const MemberInfo& member : clsPub::Members()) {
      Names entry{ToUtf8(member.name), {}};
      for (const ParameterInfo& parameter : member.parameters)
        entry.parameters.push_back(ToUtf8(parameter.name));
      all.push_back(std::move(entry));
    }
    return all;
  }();
  return names;
}

}  // namespace

}  // namespace kavrin::capi

using namespace kavrin;

extern "C" {

size_t kavrin_member_count(void) {
  return clsPub::Members().size();
}

int kavrin_member_info(size_t index, kavrin_member* out) {
  const auto members = clsPub::Members();
  if (!out || index >= members.size()) return 1;
  try {
    const MemberInfo& member = members[index];
    out->name = capi::Utf8Names()[index].member.c_str();
    out->invoke_kind = static_cast<int32_t>(member.kind);
    out->result_kind = static_cast<int32_t>(member.result);
    out->parameter_count = member.parameters.size();
    return 0;
  } catch (...) {
    return 1;
  }
}

int kavrin_parameter_info(size_t member_index, size_t parameter_index, kavrin_parameter* out) {
  const auto members = clsPub::Members();
  if (!out || member_index >= members.size()) return 1;
  const auto parameters = members[member_index].parameters;
  if (parameter_index >= parameters.size()) return 1;
  try {
    const ParameterInfo& parameter = parameters[parameter_index];
    out->name = capi::Utf8Names()[member_index].parameters[parameter_index].c_str();
    out->kind = static_cast<int32_t>(parameter.type);
    out->optional = parameter.optional ? 1 : 0;
    out->written = parameter.written ? 1 : 0;
    return 0;
  } catch (...) {
    return 1;
  }
}

}  // extern "C"
