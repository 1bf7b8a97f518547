#include <gtest/gtest.h>

#include "kavrin/String.h"

namespace kavrin {
namespace {

TEST(String, Utf8RoundTripsChineseAndAstralText) {
  const std::string utf8 = "该存货没有找到！ \xF0\x9F\x98\x80 abc";
  const String text = FromUtf8(utf8);
  EXPECT_EQ(text.size(), 8u + 1 + 2 + 4);  // the emoji is a surrogate pair
  EXPECT_EQ(ToUtf8(text), utf8);
}

TEST(String, MalformedUtf8BecomesReplacementCharacters) {
  EXPECT_EQ(FromUtf8("a\xFF"
                     "b"),
            u"a\uFFFDb");
  EXPECT_EQ(FromUtf8("\xE4\xB8"), u"\uFFFD");                      // truncated sequence
  EXPECT_EQ(FromUtf8("\xC0\xAF"), u"\uFFFD");                      // overlong slash
  EXPECT_EQ(ToUtf8(String(1, char16_t(0xD800))), "\xEF\xBF\xBD");  // lone surrogate
}

TEST(String, TrimRemovesSpacesOnly) {
  EXPECT_EQ(Trim(u"  01 Steel  "), u"01 Steel");
  EXPECT_EQ(Trim(u"\t01\t"), u"\t01\t");
  EXPECT_EQ(Trim(u"   "), u"");
  EXPECT_EQ(Trim(u"\u3000x"), u"\u3000x");  // the ideographic space is not a space here
}

}  // namespace
}  // namespace kavrin
