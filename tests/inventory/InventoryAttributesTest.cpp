// An item's unit, reference cost, class, batch tracking, yes/no columns and
// free-item switches, on two items: one with every column set, one with Nulls;
// and the same members from a shell, through the kavrin host.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

class InventoryAttributes : public testing::ComponentTest {
 protected:
  InventoryAttributes() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName, cInvCCode, cInvM_Unit, iInvRCost, bTrack,"
        " bSale, bPurchase, bFree1, bFree2, bFree3, bFree4, bFree5, bFree6, bFree7, bFree8,"
        " bFree9, bFree10) VALUES ('01', 'True', '0101', 'kg ', 12.5, 1, 1, 0,"
        " 1, 0, 0, 0, 0, 0, 0, 0, 0, 1), ('02', 'Bolt', NULL, NULL, NULL, NULL, NULL, 1,"
        " 1, NULL, 0, 0, 0, 0, 0, 0, 0, 0)");
  }

  testing::ScopedUiHost ui_;
};

TEST_F(InventoryAttributes, WrappersAnswerTheColumnOrTheirDefault) {
  EXPECT_EQ(pub_.InvCodeToUnit(u"01"), u"kg ") << "as stored, untrimmed";
  EXPECT_EQ(pub_.InvCodeToUnitPrice(u"01"), 12.5);
  EXPECT_EQ(pub_.InvCodeToClass(u"01"), u"0101");
  // A missing item, a Null column and a rejected query all give the default.
  for (const String code : {u"99", u"02", u"0'1"}) {
    EXPECT_EQ(pub_.InvCodeToUnit(code), u"");
    EXPECT_EQ(pub_.InvCodeToUnitPrice(code), 0.0);
    EXPECT_EQ(pub_.InvCodeToClass(code), u"");
  }

  EXPECT_EQ(pub_.InvIsBatch(u"01"), Variant(true));
  EXPECT_TRUE(pub_.InvIsBatch(u"02").IsNull()) << "a present item with a Null switch";
  EXPECT_EQ(pub_.InvIsBatch(u"99"), Variant(false)) << "a missing item: Boolean false, not Null";
  EXPECT_KAVRIN_ERROR(pub_.InvIsBatch(u"0'1"), errors::kProviderSyntax, testing::EngineSource());
}

TEST_F(InventoryAttributes, InvCodeIsTorFReadsTheFirstColumnOrShowsNotFound) {
  EXPECT_TRUE(pub_.InvCodeIsTorF(u"01", u"bSale"));
  EXPECT_FALSE(pub_.InvCodeIsTorF(u"01", u"bPurchase,bSale")) << "the first of two columns";
  EXPECT_TRUE(pub_.InvCodeIsTorF(u"01", u"cInvName")) << "the text True";
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"02", u"bSale"), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.InvCodeIsTorF(u"02", u"cInvName"), errors::kTypeMismatch);
  EXPECT_TRUE(ui_->shown.empty()) << "no message but for a missing item";

  EXPECT_FALSE(pub_.InvCodeIsTorF(u"99", u"bSale"));
  ASSERT_EQ(ui_->shown.size(), 1u);
  const auto& shown = ui_->shown[0];
  EXPECT_EQ(std::tie(shown.prompt, shown.buttons, shown.title),
            std::make_tuple(String(u"该存货没有找到！"), vbOKOnly, DefaultMessageTitle()));
}

Variant Filled(size_t count, const Variant& value, VarType type = VarType::Boolean) {
  Array array(0, type, count);
  for (size_t i = 0; i < count; ++i)
    array.Store(static_cast<int32_t>(i), value);
  return array;
}

using FreeItems = InventoryAttributes;

TEST_F(FreeItems, GetInvUseFreeResetsBothOnceTheQueryIsOpen) {
  bool free1 = false, free2 = true;
  pub_.GetInvUseFree(u"01", free1, free2);
  EXPECT_EQ(std::pair(free1, free2), std::pair(true, false));
  free1 = free2 = true;
  pub_.GetInvUseFree(u"99", free1, free2);
  EXPECT_EQ(std::pair(free1, free2), std::pair(false, false)) << "an unknown item";

  free1 = free2 = true;
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFree(u"0'1", free1, free2), errors::kProviderSyntax,
                      testing::EngineSource());
  EXPECT_EQ(std::pair(free1, free2), std::pair(true, true)) << "failed before the reset";
  free1 = false;
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFree(u"02", free1, free2), errors::kInvalidUseOfNull);
  EXPECT_EQ(std::pair(free1, free2), std::pair(true, false)) << "the first answered, then reset";

  // By name, the written arguments reach the caller also when the call fails.
  std::vector<Variant> args{u"02", false, true};
  EXPECT_KAVRIN_ERROR(pub_.Call(u"GetInvUseFree", args), errors::kInvalidUseOfNull);
  EXPECT_EQ(args, (std::vector<Variant>{u"02", true, false}));
}

TEST_F(FreeItems, GetInvUseFreeNewStoresTheTenSwitchesUntilOneDoesNotFit) {
  Variant free = Filled(10, true);
  pub_.GetInvUseFreeNew(u"01", free);
  Variant expected = Filled(10, false);
  expected.AsArray().Store(0, true);
  expected.AsArray().Store(9, true);
  EXPECT_EQ(free, expected);
  pub_.GetInvUseFreeNew(u"99", free);
  EXPECT_EQ(free, expected) << "an unknown item leaves the array as it was";

  Variant any = Filled(12, int32_t{7}, VarType::Variant);
  pub_.GetInvUseFreeNew(u"02", any);
  EXPECT_TRUE(any.AsArray().At(1).IsNull()) << "a Null switch goes in as Null";
  EXPECT_EQ(any.AsArray().At(10), Variant(int32_t{7})) << "elements past the ten stay";

  Variant booleans = Filled(10, false), nine = Filled(9, true), text = u"x";
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"02", booleans), errors::kInvalidUseOfNull);
  EXPECT_EQ(booleans.AsArray().At(0), Variant(true)) << "stored before the Null";
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"01", nine), errors::kSubscriptOutOfRange);
  EXPECT_EQ(nine.AsArray().At(8), Variant(false)) << "the nine stored before the tenth";
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"01", text), errors::kTypeMismatch);
}

// From a shell, through the kavrin host, list, array and message box
// arguments come back as JSON.
#ifdef KAVRIN_TOOL_PATH

using ::testing::HasSubstr;

// The answer of `kavrin call --db DB ARGS` on the demo company.
std::string Call(const testing::SuiteDb& suite, const std::string& args) {
  const std::string command = std::string(KAVRIN_TOOL_PATH) + " call --db '" +
                              ToUtf8(suite.ConnectionString()) + "' " + args + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    out.append(buffer, n);
  pclose(pipe);
  return out;
}

TEST(InventoryTool, ListsArraysAndMessagesComeBackAsJson) {
  const testing::SuiteDb suite(/*demo=*/true);
  EXPECT_EQ(Call(suite, "FillCboCK '{\"$list\":[\"old\"]}' 03"),
            "{\"ok\":true,\"result\":{\"type\":\"Empty\"},\"args\":["
            "{\"type\":\"Object\",\"value\":{\"items\":[\"02             成品库\"]}},"
            "{\"type\":\"String\",\"value\":\"03\"}]}\n");

  const std::string array =
      Call(suite,
           "GetInvUseFreeNew 020101 '{\"$array\":[false,false,false,false,false,false,false,"
           "false,false,false],\"$lbound\":0,\"$type\":\"Boolean\"}'");
  EXPECT_THAT(array, HasSubstr("{\"type\":\"Array\",\"value\":{\"lbound\":0,\"items\":["
                               "{\"type\":\"Boolean\",\"value\":true},{\"type\":\"Boolean\","
                               "\"value\":true},{\"type\":\"Boolean\",\"value\":false},"));
  EXPECT_THAT(
      Call(suite, "GetInvUseFreeNew 020101 '{\"$array\":[1,2,3,4,5,6,7,8,9,10],\"$lbound\":1}'"),
      HasSubstr("\"number\":9"));

  const std::string message = Call(suite, "InvCodeIsTorF 999999 bSale");
  EXPECT_THAT(message, HasSubstr("\"result\":{\"type\":\"Boolean\",\"value\":false}"));
  EXPECT_THAT(message, HasSubstr("\"messages\":[{\"prompt\":\"该存货没有找到！\",\"buttons\":0,"
                                 "\"title\":\"Kavrin\"}]"));
}

#endif  // KAVRIN_TOOL_PATH

}  // namespace
}  // namespace kavrin
