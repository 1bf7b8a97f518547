// The presentation members as the entry forms call them by name: amounts
// shown and read back, "code  name" list entries split, and the focused text
// box's text selected (through a test host with a fake text box or button).
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

const Variant none = Variant::Missing();

TEST(Amounts, FormatNumFormatNum1AndReFormatByName) {
  struct Case {
    std::vector<Variant> args;
    Variant answer;
    int32_t error = 0;  // instead of an answer
  };
  using errors::kInvalidProcedureCall, errors::kTypeMismatch;
  // clang-format off
  const std::vector<std::pair<const char16_t*, std::vector<Case>>> members = {
      {u"FormatNum", {
          {{1234.5}, u"1,234.50"}, {{-1234.5}, u"-1,234.50"}, {{u"1234.5"}, u"1,234.50"},
          {{2.345}, u"2.35"},  // halves judged on the 15-digit value
          {{u"abc"}, {}, kTypeMismatch},
          // Not zero, so the pattern applies and any choice for zero is ignored.
          {{0.001}, u"0.00"}, {{-0.001}, u"-0.00"}, {{7.0, u"abc"}, u"7.00"},
          // Zero shows a bare "0" (not 0.00) or nothing; a choice that is no truth value fails.
          {{0.0}, u""}, {{-0.0}, u""}, {{int32_t{0}, true}, u"0"}, {{0.0, Variant::Null()}, u""},
          {{0.0, Variant()}, u""}, {{0.0, int16_t{1}}, u"0"}, {{0.0, u"True"}, u"0"},
          {{0.0, u"2"}, u"0"}, {{0.0, u"abc"}, {}, kTypeMismatch},
          {{0.0, Variant::Nothing()}, {}, kTypeMismatch}}},
      {u"formatnum1", {
          {{1234.5678, none, none}, u"1,235"}, {{1234.5678, u"2"}, u"1,234.57"},
          {{1234.5678, int16_t{3}}, u"1,234.568"}, {{-1234.5678, 0}, u"-1,235"},
          {{2.5, 0}, u"3"},  // halves away from zero, not to even
          {{-0.4, 0}, u"-0"}, {{0.0, 2, true}, u"0"}, {{0.0, 2}, u""}, {{5.0, 2, u"abc"}, u"5.00"},
          // A negative count fails only for amounts; the choice only for zero.
          {{5.0, -1}, {}, kInvalidProcedureCall}, {{5.0, -1, u"abc"}, {}, kInvalidProcedureCall},
          {{0.0, -1}, u""}, {{0.0, -1, true}, u"0"}, {{0.0, -1, u"abc"}, {}, kTypeMismatch}}},
      {u"ReFormat", {  // six decimals; only spaces make a text blank
          {{u""}, 0.0}, {{u"   "}, 0.0}, {{u"1,234.50"}, 1234.5}, {{u"0.00000049"}, 0.0},
          {{u" -1,234,567.891 "}, -1234567.891}, {{u"$1,234.5"}, 1234.5}, {{u"0.1234567"}, 0.123457},
          {{u"0.0000005"}, 0.000001}, {{u"2.0000025"}, 2.000003}, {{u"abc"}, {}, kTypeMismatch},
          {{u"\t"}, {}, kTypeMismatch}, {{u"12 34"}, {}, kTypeMismatch}}},
  };
  // clang-format on
  clsPub pub;
  for (const auto& [member, cases] : members) {
    for (size_t i = 0; i < cases.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << ToUtf8(member) << " case " << i);
      std::vector<Variant> args = cases[i].args;
      if (cases[i].error)
        EXPECT_KAVRIN_ERROR(pub.Call(member, args), cases[i].error);
      else
        EXPECT_EQ(pub.Call(member, args), cases[i].answer);
      EXPECT_EQ(args, cases[i].args) << "amounts are taken by value";
    }
  }
}

TEST(SepCode, CodePartRewritesTheEntryNamePartIsTheLastWordAndLeavesItAlone) {
  clsPub pub;
  // SepCode by name, with the entry as written back into the caller's argument.
  const auto check = [&](Variant entry, Variant bName, StringView part, StringView entry_after) {
    SCOPED_TRACE(ToUtf8(ToString(entry)));
    std::vector<Variant> args{std::move(entry), std::move(bName)};
    EXPECT_EQ(pub.Call(u"sepcode", args), Variant(part));
    EXPECT_EQ(args[0], Variant(entry_after));
  };
  check(u"01 Steel", none, u"01", u" 01 Steel");
  check(u" 01 Steel", none, u"01", u" 01 Steel");  // a second call finds the same word
  check(u"   0101      North Store   ", false, u"0101", u" 0101      North Store");
  check(u"01", none, u"", u" 01");  // rewritten although there is no code part
  check(u"    ", none, u"", u" ");
  check(u"01\tSteel", none, u"", u" 01\tSteel");  // a tab is no separator
  check(int32_t{7}, false, u"", u" 7");           // a String is written back
  check(u"0101      North Store", true, u"Store", u"0101      North Store");
  check(u"01 Steel ", true, u"", u"01 Steel ");  // not trimmed
  check(u"01 North\tStore", true, u"North\tStore", u"01 North\tStore");
  // The complement of bName decides: true for the code part (Not 1 is -2,
  // Not Empty is -1), false or Null for the name part.
  for (const Variant& code : {Variant(int16_t{0}), Variant(int16_t{1}), Variant(), Variant(u"1")})
    check(u"01 Steel", code, u"01", u" 01 Steel");
  for (const Variant& name : {Variant(true), Variant(int16_t{-1}), Variant(-1.0), Variant::Null(),
                              Variant(u"True"), Variant(u"-1")})
    check(u"01 Steel", name, u"Steel", u"01 Steel");
  // An unreadable choice fails before the entry is touched.
  for (const Variant& bad : {Variant(u"abc"), Variant(u""), Variant::Nothing()}) {
    std::vector<Variant> args{u"  01 Steel ", bad};
    EXPECT_KAVRIN_ERROR(pub.Call(u"SepCode", args), errors::kTypeMismatch);
    EXPECT_EQ(args[0], Variant(u"  01 Steel "));
  }
}

TEST(TextSelected, SelectsTheWholeTextOfTheFocusedTextBoxOnly) {
  using Write = testing::FakeControl::Write;
  testing::ScopedUiHost ui;
  clsPub pub;
  const auto focus = [&](String type_name, Variant text) {
    auto control = std::make_shared<testing::FakeControl>(std::move(type_name), std::move(text));
    ui->focused = control;
    return control;
  };
  auto box = focus(u"TextBox", u"abc");
  pub.TextSelected();
  EXPECT_EQ(box->reads, std::vector<String>{u"Text"});
  const std::vector<Write> expected{{u"SelStart", int16_t{0}}, {u"SelLength", int16_t{3}}};
  EXPECT_EQ(box->writes, expected) << "Integer values, start first";
  // Lengths count UTF-16 units, up to the largest Integer; also by name.
  for (const auto& [text, length] : std::vector<std::pair<String, int16_t>>{
           {u"仓库\U00020000", 4}, {u"", 0}, {String(32767, u'x'), 32767}}) {
    auto wide = focus(u"TextBox", text);
    std::vector<Variant> none;
    EXPECT_EQ(pub.Call(u"textselected", none), Variant());
    EXPECT_EQ(wide->writes.back(), (Write{u"SelLength", length}));
  }
  for (const char16_t* type_name : {u"CommandButton", u"textbox"}) {
    auto other = focus(type_name, u"OK");
    pub.TextSelected();
    EXPECT_TRUE(other->reads.empty() && other->writes.empty()) << "type names compare exactly";
  }

  auto too_long = focus(u"TextBox", String(32768, u'x'));
  EXPECT_KAVRIN_ERROR(pub.TextSelected(), errors::kOverflow);
  EXPECT_TRUE(too_long->writes.empty()) << "nothing selected before the overflow";
  focus(u"TextBox", Variant::Null());
  EXPECT_KAVRIN_ERROR(pub.TextSelected(), errors::kInvalidUseOfNull);
  ui->focused = nullptr;
  EXPECT_KAVRIN_ERROR(pub.TextSelected(), errors::kObjectNotSet);
}

}  // namespace
}  // namespace kavrin
