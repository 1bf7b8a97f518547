// The archive checks called by name, as a script or the kavrin host calls them.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using ValidationByName = testing::ComponentTest;

TEST_F(ValidationByName, EveryCheckAnswersThroughLateBinding) {
  Exec(
      "INSERT INTO InventoryClass (cInvCCode, cInvCName, bInvCEnd) VALUES ('01', 'Metals', 1);"
      "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('A1', 'Bolt'), ('B2', 'Nut');"
      "INSERT INTO Department (cDepCode, cDepName) VALUES ('01', 'Sales');"
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES ('W1', '01', '先进先出法');"
      "INSERT INTO AccInformation (cSysID, cName, cValue) VALUES ('AA', 'cGoodClass', '223')");
  auto call = [this](StringView name, std::vector<Variant> args) { return pub_.Call(name, args); };

  EXPECT_EQ(call(u"CheckDirGrade", {u"01", true, int32_t{7}}), Variant(u"01"));
  EXPECT_EQ(call(u"checkdirgrade", {u"Metals", u"True", u"7", true}), Variant(u"Metals"));
  EXPECT_EQ(call(u"CheckInv", {u"B2", Variant::Missing()}), Variant(u"A1"));
  EXPECT_EQ(call(u"CheckDirNoGrade", {u"Nut", int32_t{0}}), Variant(u"B2"));
  EXPECT_EQ(call(u"CheckAccDep", {u"Sales"}), Variant(u"01"));
  EXPECT_EQ(call(u"CheckAssDep", {u"01", true}), Variant(u"Sales"));
  EXPECT_EQ(call(u"CheckWareDep", {}), Variant(true));
  EXPECT_EQ(call(u"CodeGrade2Length", {int32_t{2}, 7.0}), Variant(int16_t{4}));
  EXPECT_EQ(call(u"GetCodeLen", {int32_t{223}}), Variant(int16_t{7}));

  EXPECT_KAVRIN_ERROR(call(u"CheckDirGrade", {u"01", true, int32_t{40000}}), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(call(u"GetCodeLen", {u"2x3"}), errors::kTypeMismatch);
}

}  // namespace
}  // namespace kavrin
