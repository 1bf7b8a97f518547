// Selecting the focused text box's text, through a test host whose form
// holds a fake text box or button.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

// A control reached by name: it answers its "Text" and records every
// property read and write made on it.
class FakeControl final : public Dispatch {
 public:
  FakeControl(String type_name, Variant text)
      : type_name_(std::move(type_name)), text_(std::move(text)) {}

  String TypeName() const override { return type_name_; }

  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override {
    if (kind == InvokeKind::PropertyGet && EqualsNoCase(name, u"Text")) {
      reads.emplace_back(name);
      return text_;
    }
    if (kind == InvokeKind::PropertyPut && args.size() == 1 &&
        (EqualsNoCase(name, u"SelStart") || EqualsNoCase(name, u"SelLength"))) {
      writes.push_back({String(name), args[0]});
      return Variant();
    }
    ThrowMemberNotFound(type_name_, name);
  }

  struct Write {
    String name;
    Variant value;
    friend bool operator==(const Write&, const Write&) = default;
  };
  std::vector<String> reads;
  std::vector<Write> writes;

 private:
  String type_name_;
  Variant text_;
};

// A form with one focused control, or none.
class TestHost final : public UiHost {
 public:
  std::shared_ptr<Dispatch> ActiveControl() override {
    if (!focused) throw Error::Runtime(errors::kObjectNotSet);
    return focused;
  }
  int32_t MsgBox(StringView, int32_t, StringView) override { return vbOK; }

  std::shared_ptr<Dispatch> focused;
};

class TextSelected : public ::testing::Test {
 protected:
  TextSelected() : previous_(SetUiHost(host_)) {}
  ~TextSelected() override { SetUiHost(previous_); }

  std::shared_ptr<FakeControl> Focus(String type_name, Variant text) {
    auto control = std::make_shared<FakeControl>(std::move(type_name), std::move(text));
    host_->focused = control;
    return control;
  }

  using Write = FakeControl::Write;
  std::shared_ptr<TestHost> host_ = std::make_shared<TestHost>();
  std::shared_ptr<UiHost> previous_;
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
  host_->focused = nullptr;
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kObjectNotSet);

  SetUiHost(nullptr);  // the default host has no forms at all
  EXPECT_KAVRIN_ERROR(pub_.TextSelected(), errors::kObjectNotSet);
  SetUiHost(host_);

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
