// Splitting a list entry that shows a code, filler spaces and a name (as in
// the warehouse list) into its code or its name.
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// The first word of the entry. The caller's entry is rewritten first as one
// space followed by the trimmed entry, so a second call finds the same word;
// an entry without a space between words has no code.
String CodePart(String& Code) {
  Code = u" " + Trim(Code);
  for (size_t i = 1; i < Code.size(); ++i) {
    if (Code[i] == u' ') return Trim(Code.substr(1, i));
  }
  return String();
}

// The text after the last space of the entry, as it stands: only the last
// word of a name with spaces, nothing when the entry ends with a space.
String NamePart(const String& Code) {
  const size_t last_space = Code.rfind(u' ');
  if (last_space == String::npos) return String();
  return Code.substr(last_space + 1);
}

}  // namespace

String clsPub::SepCode(String& Code, const Variant& bName) {
  const detail::CallReads reads(dbia_);
  const Variant wants_name = bName.IsMissing() ? Variant(false) : bName;
  // The complement decides: false, 0 and any number but -1 ask for the code;
  // true (-1) and Null ask for the name.
  if (IsTrueCondition(Not(wants_name))) return CodePart(Code);
  return NamePart(Code);
}

}  // namespace kavrin
