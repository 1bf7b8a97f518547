// Selecting the focused text box's text, through a test host whose form
// holds a fake text box or button.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

using testing::FakeControl;

class TextSelected : public ::testing::Test {
 protected:
  std::shared_ptr<FakeControl> Focus(String type_name, Variant text) {
    auto control = std::make_shared<FakeControl>(std::move(type_name), std::move(text));
    ui_->focused = control;
    return control;
  }

  using Write = FakeControl::Write;
  testing::ScopedUiHost ui_;
  clsPub pub_;
};

TEST_F(TextSelected, SelectsTheWholeTextOfTheFocusedTextBox) {
  auto box = Focus(u"TextBox", u"abc");
  pub_.TextSelected();
  EXPECT_EQ(box->reads, std::vector<String>{u"Text"});
  const std::vector<Write> expected{{u"SelStart", int16_t{0}}, {u"SelLength", int16_t{3}}};
  EXPECT_EQ(box->writes, expected) << "Integer values, start first";

  // Lengths count UTF-16 units; an empty text selects nothing.
  auto wide = Focus(u"TextBox", u"仓库\U00020000");
  pub_.TextSelected();
  EXPECT_EQ(wide->writes.back(), (Write{u"SelLength", int16_t{4}}));
  auto empty = Focus(u"TextBox", u"");
  pub_.TextSelected();
  EXPECT_EQ(empty->writes.back(), (Write{u"SelLength", int16_t{0}}));
}

TEST_F(TextSelected, LeavesEveryOtherControlAlone) {
  auto button = Focus(u"CommandButton", u"OK");
  pub_.TextSelected();
  EXPECT_TRUE(button->reads.empty());
  EXPECT_TRUE(button->writes.empty());

  auto other_case = Focus(u"textbox", u"abc");
  pub_.TextSelected();
  EXPECT_TRUE(other_case->reads.empty()) << "the type name is compared exactly";
  EXPECT_TRUE(other_case->writes.empty());
}

TEST_F(TextSelected, ATextTooLongForAnIntegerOverflowsBeforeSelecting) {
  auto longest = Focus(u"TextBox", String(32767, u'x'));
  pub_.TextSelected();
  EXPECT_EQ(longest->writes.back(), (Write{u"SelLength", int16_t{32767}}));

  auto too_long = Focus(u"TextBox", String(32768, u'x'));
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kOverflow);
  EXPECT_TRUE(too_long->writes.empty());
}

TEST_F(TextSelected, TheHostsFailureReachesTheCaller) {
  ui_->focused = nullptr;
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kObjectNotSet);

  SetUiHost(nullptr);  // the default host has no forms at all
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kObjectNotSet);
  SetUiHost(ui_.host());

  Focus(u"TextBox", Variant::Null());
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kInvalidUseOfNull);
}

TEST_F(TextSelected, WorksByName) {
  auto box = Focus(u"TextBox", u"12.50");
  std::vector<Variant> none;
  EXPECT_EQ(pub_.Call(u"textselected", none), Variant());
  EXPECT_EQ(box->writes.back(), (Write{u"SelLength", int16_t{5}}));
}

}  // namespace
}  // namespace kavrin
