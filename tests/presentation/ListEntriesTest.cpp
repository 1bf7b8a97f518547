// Splitting "code  name" list entries: the code part rewrites the caller's
// entry, the name part is the text after the last space.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

TEST(SepCode, CodePartRewritesTheEntryAndAnswersItsFirstWord) {
  clsPub pub;
  String code = u"01 Steel";
  EXPECT_EQ(pub.SepCode(code), u"01");
  EXPECT_EQ(code, u" 01 Steel");
  // A second call finds the same word and keeps exactly one leading space.
  EXPECT_EQ(pub.SepCode(code), u"01");
  EXPECT_EQ(code, u" 01 Steel");

  String padded = u"   0101      North Store   ";
  EXPECT_EQ(pub.SepCode(padded, false), u"0101");
  EXPECT_EQ(padded, u" 0101      North Store");

  String no_space = u"01";
  EXPECT_EQ(pub.SepCode(no_space), u"");
  EXPECT_EQ(no_space, u" 01") << "rewritten although there is no code part";

  String blank = u"    ";
  EXPECT_EQ(pub.SepCode(blank), u"");
  EXPECT_EQ(blank, u" ");

  String tabbed = u"01\tSteel";
  EXPECT_EQ(pub.SepCode(tabbed), u"") << "a tab is no separator";
  EXPECT_EQ(tabbed, u" 01\tSteel");
}

TEST(SepCode, NamePartIsTheLastWordAndLeavesTheEntryAlone) {
  clsPub pub;
  String code = u"01 Steel";
  EXPECT_EQ(pub.SepCode(code, true), u"Steel");
  EXPECT_EQ(code, u"01 Steel");

  String store = u"0101      North Store";
  EXPECT_EQ(pub.SepCode(store, true), u"Store");
  EXPECT_EQ(store, u"0101      North Store");

  String trailing = u"01 Steel ";
  EXPECT_EQ(pub.SepCode(trailing, true), u"");
  EXPECT_EQ(trailing, u"01 Steel ") << "not trimmed";

  String tabbed = u"01 North\tStore";
  EXPECT_EQ(pub.SepCode(tabbed, true), u"North\tStore");
}

TEST(SepCode, TheComplementOfTheChoiceDecidesThePart) {
  clsPub pub;
  const auto part = [&](const Variant& bName) {
    String code = u"01 Steel";
    return pub.SepCode(code, bName);
  };
  // Code part: the complement reads as true.
  EXPECT_EQ(part(Variant::Missing()), u"01");
  EXPECT_EQ(part(false), u"01");
  EXPECT_EQ(part(int16_t{0}), u"01");
  EXPECT_EQ(part(int16_t{1}), u"01") << "Not 1 is -2, not false";
  EXPECT_EQ(part(Variant()), u"01") << "Not Empty is -1";
  EXPECT_EQ(part(u"1"), u"01");
  // Name part: the complement is false or Null.
  EXPECT_EQ(part(true), u"Steel");
  EXPECT_EQ(part(int16_t{-1}), u"Steel");
  EXPECT_EQ(part(-1.0), u"Steel");
  EXPECT_EQ(part(Variant::Null()), u"Steel");
  EXPECT_EQ(part(u"True"), u"Steel");
  EXPECT_EQ(part(u"-1"), u"Steel");
}

TEST(SepCode, AnUnreadableChoiceFailsBeforeTheEntryIsTouched) {
  clsPub pub;
  String code = u"  01 Steel";
  EXPECT_KAVRIN_ERROR(pub.SepCode(code, u"abc"), errors::kTypeMismatch);
  EXPECT_EQ(code, u"  01 Steel");
  EXPECT_KAVRIN_ERROR(pub.SepCode(code, u""), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub.SepCode(code, Variant::Nothing()), errors::kTypeMismatch);
  EXPECT_EQ(code, u"  01 Steel");
}

TEST(SepCode, ByNameWritesTheRewrittenEntryBackIntoTheCallersArgument) {
  clsPub pub;
  std::vector<Variant> code_part{u"  01   Steel"};
  EXPECT_EQ(pub.Call(u"SepCode", code_part), Variant(u"01"));
  EXPECT_EQ(code_part[0], Variant(u" 01   Steel"));

  std::vector<Variant> number_entry{int32_t{7}, false};
  EXPECT_EQ(pub.Call(u"sepcode", number_entry), Variant(u""));
  EXPECT_EQ(number_entry[0], Variant(u" 7")) << "a String is written back";

  std::vector<Variant> name_part{u"01 Steel", true};
  EXPECT_EQ(pub.Call(u"SepCode", name_part), Variant(u"Steel"));
  EXPECT_EQ(name_part[0], Variant(u"01 Steel"));

  std::vector<Variant> bad_choice{u" 01 Steel ", u"abc"};
  EXPECT_KAVRIN_ERROR(pub.Call(u"SepCode", bad_choice), errors::kTypeMismatch);
  EXPECT_EQ(bad_choice[0], Variant(u" 01 Steel "));
}

}  // namespace
}  // namespace kavrin
