// An item's free-item switches, two as truth values or ten into an array.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

Array Filled(int32_t lbound, VarType type, size_t count, const Variant& value) {
  Array array(lbound, type, count);
  for (size_t i = 0; i < count; ++i)
    array.Store(lbound + static_cast<int32_t>(i), value);
  return array;
}

class FreeItems : public testing::ComponentTest {
 protected:
  FreeItems() {
    Exec(
        "INSERT INTO Inventory (cInvCode, bFree1, bFree2, bFree3, bFree4, bFree5, bFree6,"
        " bFree7, bFree8, bFree9, bFree10) VALUES"
        " ('01', 1, 0, 0, 0, 0, 0, 0, 0, 0, 0),"
        " ('02', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1),"
        " ('03', 1, NULL, 0, 0, 0, 0, 0, 0, 0, 0),"
        " ('04', 1, 1, NULL, 0, 0, 0, 0, 0, 0, 0);");
  }
};

TEST_F(FreeItems, GetInvUseFreeAnswersTheFirstTwoSwitches) {
  bool free1 = false;
  bool free2 = true;
  pub_.GetInvUseFree(u"01", free1, free2);
  EXPECT_TRUE(free1);
  EXPECT_FALSE(free2);
  EXPECT_EQ(Sent().back(), u"Select bFree1,bFree2 from Inventory where cinvcode='01'");

  free1 = free2 = true;
  pub_.GetInvUseFree(u"99", free1, free2);
  EXPECT_FALSE(free1) << "an unknown item resets both";
  EXPECT_FALSE(free2);
}

TEST_F(FreeItems, GetInvUseFreeResetsOnlyOnceTheQueryIsOpen) {
  bool free1 = true;
  bool free2 = true;
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFree(u"0'1", free1, free2), errors::kProviderSyntax);
  EXPECT_TRUE(free1);
  EXPECT_TRUE(free2);

  free1 = false;
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFree(u"03", free1, free2), errors::kInvalidUseOfNull);
  EXPECT_TRUE(free1) << "the first switch was answered before the Null one";
  EXPECT_FALSE(free2) << "reset before it failed";

  // By name, the written arguments reach the caller also when the call fails.
  std::vector<Variant> args{u"03", false, true};
  EXPECT_KAVRIN_ERROR(pub_.Call(u"GetInvUseFree", args), errors::kInvalidUseOfNull);
  EXPECT_EQ(args[1], Variant(true));
  EXPECT_EQ(args[2], Variant(false));
}

TEST_F(FreeItems, GetInvUseFreeNewStoresTheTenSwitchesAsStored) {
  Variant free = Filled(0, VarType::Boolean, 10, true);
  pub_.GetInvUseFreeNew(u"02", free);
  EXPECT_EQ(Sent().back(),
            u"Select bFree1,bFree2,bFree3,bFree4,bFree5,bFree6,bFree7,bFree8,bFree9,bFree10"
            u" from Inventory where cinvcode='02'");
  Array expected = Filled(0, VarType::Boolean, 10, false);
  expected.Store(9, true);
  EXPECT_EQ(free, Variant(expected));

  Variant untouched = Filled(0, VarType::Boolean, 10, true);
  pub_.GetInvUseFreeNew(u"99", untouched);
  EXPECT_EQ(untouched, Variant(Filled(0, VarType::Boolean, 10, true)))
      << "an unknown item leaves the array as it was";
  Variant not_an_array = u"x";
  pub_.GetInvUseFreeNew(u"99", not_an_array);
  EXPECT_EQ(not_an_array, Variant(u"x"));

  Variant any = Filled(0, VarType::Variant, 12, int32_t{7});
  pub_.GetInvUseFreeNew(u"04", any);
  const Array& got = any.AsArray();
  EXPECT_EQ(got.At(1), Variant(true));
  EXPECT_TRUE(got.At(2).IsNull()) << "a Null switch goes in as Null";
  EXPECT_EQ(got.At(3), Variant(false));
  EXPECT_EQ(got.At(10), Variant(int32_t{7})) << "elements past the ten stay";
}

TEST_F(FreeItems, GetInvUseFreeNewFailsAtTheFirstSwitchThatDoesNotFit) {
  Variant booleans = Filled(0, VarType::Boolean, 10, false);
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"04", booleans), errors::kInvalidUseOfNull);
  Array expected = Filled(0, VarType::Boolean, 10, false);
  expected.Store(0, true);
  expected.Store(1, true);
  EXPECT_EQ(booleans, Variant(expected)) << "the two stored before the Null keep their values";

  Variant one_based = Filled(1, VarType::Boolean, 10, false);
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"02", one_based), errors::kSubscriptOutOfRange);
  EXPECT_EQ(one_based, Variant(Filled(1, VarType::Boolean, 10, false)));

  Variant nine = Filled(0, VarType::Boolean, 9, true);
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"02", nine), errors::kSubscriptOutOfRange);
  EXPECT_EQ(nine, Variant(Filled(0, VarType::Boolean, 9, false)));

  Variant text = u"x";
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"02", text), errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(pub_.GetInvUseFreeNew(u"0'1", booleans), errors::kProviderSyntax);

  // By name, the caller's own array receives the switches.
  std::vector<Variant> args{u"02", Filled(0, VarType::Variant, 10, Variant())};
  pub_.Call(u"GetInvUseFreeNew", args);
  EXPECT_EQ(args[1].AsArray().At(9), Variant(true));
}

TEST_F(FreeItems, WithoutADatabaseBothFailLeavingTheirOutputs) {
  clsPub fresh;  // its default kit is unconnected
  bool free1 = true;
  bool free2 = true;
  EXPECT_KAVRIN_ERROR(fresh.GetInvUseFree(u"01", free1, free2), errors::kNoConnection);
  EXPECT_TRUE(free1);
  EXPECT_TRUE(free2);
  Variant free = Filled(0, VarType::Boolean, 10, true);
  EXPECT_KAVRIN_ERROR(fresh.GetInvUseFreeNew(u"01", free), errors::kNoConnection);
  EXPECT_EQ(free, Variant(Filled(0, VarType::Boolean, 10, true)));
}

}  // namespace
}  // namespace kavrin
