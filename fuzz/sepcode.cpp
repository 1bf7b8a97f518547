// Splitting a "code  name" list entry (SepCode) with any text and any bName:
// the code part is the first word of the trimmed text and rewrites the
// caller's text to a space and that trimmed text, so a second call answers
// the same; the name part is the text after the last space and leaves the
// caller's text alone. A bName that cannot be complemented fails with 13 or
// 6 before the text is touched.
#include "FuzzSupport.h"
#include "kavrin/clsPub.h"

using namespace kavrin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::ByteReader bytes(data, size);
  // Missing, Boolean, Null, Integer, Double, String, Empty, Long.
  constexpr uint8_t kKinds[] = {0, 7, 2, 3, 6, 9, 1, 4};
  const Variant bName = bytes.Value(kKinds[bytes.Byte() % 8]);
  const String original = bytes.Text();

  clsPub pub;
  String code = original;
  String answer;
  try {
    answer = pub.SepCode(code, bName);
  } catch (const Error& e) {
    fuzz::CheckKnownError(e, {errors::kTypeMismatch, errors::kOverflow});
    FUZZ_CHECK(code == original, "a failed call leaves the text alone");
    return 0;
  }
  FUZZ_CHECK(answer.find(u' ') == String::npos, ToUtf8(answer));

  const Variant complement = Not(bName.IsMissing() ? Variant(false) : bName);
  if (!complement.IsNull() && ToBoolean(complement)) {
    // The code part.
    const String trimmed = Trim(original);
    FUZZ_CHECK(code == u" " + trimmed, ToUtf8(code));
    FUZZ_CHECK(
        answer.empty() ? trimmed.find(u' ') == String::npos : trimmed.starts_with(answer + u" "),
        ToUtf8(trimmed));
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
