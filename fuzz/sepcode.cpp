// Splitting a "code  name" list entry (SepCode) with any text and any bName:
// the code part is the first word of the trimmed text and rewrites the
// caller's text to a space and that trimmed text, so a second call answers
// the same; the name part is the text after the last space and leaves the
// caller's text alone. A bName that cannot be complemented fails with 13 or
// 6 before the text is touched.
#include "FuzzSupport.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"

using namespace kavrin;
using kavrin::fuzz::CheckKnownError;

namespace {

Variant NameSwitch(fuzz::ByteReader& bytes) {
  switch (bytes.Byte() % 8) {
    case 0:
      return Variant::Missing();
    case 1:
      return Variant(bytes.Byte() % 2 == 0);
    case 2:
      return Variant::Null();
    case 3:
      return Variant(static_cast<int16_t>(bytes.Word()));
    case 4:
      return Variant(bytes.Double());
    case 5:
      return Variant(bytes.Text());
    case 6:
      return Variant();
    default:
      return Variant(static_cast<int32_t>(bytes.Long()));
  }
}

bool HasSpace(const String& text) {
  return text.find(u' ') != String::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::ByteReader bytes(data, size);
  const Variant bName = NameSwitch(bytes);
  const String original = bytes.Text();

  clsPub pub;
  String code = original;
  String answer;
  try {
    answer = pub.SepCode(code, bName);
  } catch (const Error& e) {
    CheckKnownError(e);
    FUZZ_CHECK(e.number() == errors::kTypeMismatch || e.number() == errors::kOverflow, e.what());
    FUZZ_CHECK(code == original, "a failed call leaves the text alone");
    return 0;
  }
  FUZZ_CHECK(!HasSpace(answer), ToUtf8(answer));

  const Variant complement = Not(bName.IsMissing() ? Variant(false) : bName);
  const bool code_part = !complement.IsNull() && ToBoolean(complement);
  if (code_part) {
    const String trimmed = Trim(original);
    FUZZ_CHECK(code == u" " + trimmed, ToUtf8(code));
    if (answer.empty()) {
      FUZZ_CHECK(!HasSpace(trimmed), ToUtf8(trimmed));
    } else {
      FUZZ_CHECK(trimmed.compare(0, answer.size() + 1, answer + u" ") == 0, ToUtf8(trimmed));
    }
    String again = code;
    FUZZ_CHECK(pub.SepCode(again, bName) == answer, "a second call answers the same");
    FUZZ_CHECK(again == code, "a second call keeps one leading space");
  } else {
    FUZZ_CHECK(code == original, "the name part leaves the text alone");
    const size_t last_space = original.rfind(u' ');
    FUZZ_CHECK(answer == (last_space == String::npos ? String() : original.substr(last_space + 1)),
               ToUtf8(answer));
  }
  return 0;
}
