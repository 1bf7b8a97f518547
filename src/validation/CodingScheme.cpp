// CodeGrade2Length and GetCodeLen: code lengths from a coding scheme, the
// text of one digit per grade giving how many characters that grade adds.
//
// Sums and grade counters are 16-bit, as the scheme's users keep them: passing
// 32767 fails with an overflow.
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"
#include "runtime/Checked.h"

namespace kavrin {

namespace {

// The setting under system id "AA" holding each graded archive's scheme.
struct SchemeSetting {
  int16_t type;
  const char16_t* name;
};

constexpr SchemeSetting kSchemeSettings[] = {
    {4, u"cDispLevel"}, {6, u"cSettleLevel"}, {7, u"cGoodClass"},   {8, u"cProvClass"},
    {9, u"cCustClass"}, {12, u"cDepLevel"},   {15, u"cGradeLevel"}, {22, u"cCostobj"},
};

const char16_t* SchemeSettingOf(int16_t type) {
  for (const auto& setting : kSchemeSettings) {
    if (setting.type == type) return setting.name;
  }
  return nullptr;
}

// The i-th character (from 1), or nothing past the end.
String CharacterAt(const String& text, int32_t i) {
  if (i < 1 || static_cast<size_t>(i) > text.size()) return {};
  return text.substr(static_cast<size_t>(i - 1), 1);
}

}  // namespace

int16_t clsPub::CodeGrade2Length(int16_t iGrade, int16_t iType) {
  const detail::CallReads reads(dbia_);
  String scheme;
  if (const char16_t* setting = SchemeSettingOf(iType)) scheme = GetAccInfo(u"AA", setting);
  // Grades add up. A grade past the scheme's end, or a character that is no
  // digit, adds nothing.
  int16_t length = 0;
  for (int16_t i = 1; i <= iGrade; i = AddInteger(i, 1)) {
    length = AddInteger(length, static_cast<int32_t>(Val(CharacterAt(scheme, i))));
  }
  return length;
}

int16_t clsPub::GetCodeLen(const String& strCode) {
  const detail::CallReads reads(dbia_);
  // Every character must be a digit here; anything else is a type mismatch.
  const auto n = static_cast<int32_t>(strCode.size());
  int16_t length = 0;
  for (int16_t i = 1; i <= n; i = AddInteger(i, 1)) {
    length = AddInteger(length, ToInteger(Variant(CharacterAt(strCode, i))));
  }
  return length;
}

}  // namespace kavrin
