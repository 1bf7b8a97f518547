// clsPub called by name, as a script or another component calls it.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

TEST(LateBinding, MembersStandInTheirFixedOrder) {
  const auto members = clsPub::Members();
  ASSERT_EQ(members.size(), 40u);
  EXPECT_EQ(String(members[0].name), u"DBIA");
  EXPECT_EQ(members[0].kind, InvokeKind::PropertyGet);
  EXPECT_EQ(members[1].kind, InvokeKind::PropertyPutRef);
  EXPECT_EQ(String(members[2].name), u"CheckDirGrade");
  EXPECT_EQ(String(members[13].name), u"CodeToName");
  EXPECT_EQ(String(members[38].name), u"GetInvDifHead");
  EXPECT_EQ(String(members[39].name), u"GetCodeLen");
  for (size_t i = 0; i < members.size(); ++i)
    EXPECT_EQ(members[i].number, int(i + 1));
}

TEST(LateBinding, CallsByNameWithCoercedArguments) {
  testing::SuiteDb suite;
  suite.Exec("INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('7', 'Main')");
  auto pub = CreateObject(u"kavrin.CLSPUB");
  ASSERT_EQ(pub->TypeName(), u"clsPub");

  Variant db(std::shared_ptr<Dispatch>(suite.Open()));
  pub->Invoke(u"DBIA", InvokeKind::PropertyPutRef, std::span<Variant>(&db, 1));
  EXPECT_EQ(pub->Get(u"dbia").AsObject(), db.AsObject());

  std::vector<Variant> args{int32_t{7}, u"3"};  // a number for the code, a text for the style
  EXPECT_EQ(pub->Call(u"codetoname", args), Variant(u"Main"));
}

TEST(LateBinding, BadCallsFailWithThePlatformsNumbers) {
  clsPub pub;
  std::vector<Variant> none;
  EXPECT_KAVRIN_ERROR(pub.Call(u"NoSuchMember", none), errors::kMemberNotFound);
  EXPECT_KAVRIN_ERROR(pub.Call(u"CodeToName", none), errors::kArgumentNotOptional);
  std::vector<Variant> too_many{u"01", int32_t{0}, int32_t{1}};
  EXPECT_KAVRIN_ERROR(pub.Call(u"CodeToName", too_many), errors::kWrongArgumentCount);
  std::vector<Variant> bad_style{u"01", u"abc"};
  EXPECT_KAVRIN_ERROR(pub.Call(u"CodeToName", bad_style), errors::kTypeMismatch);
  std::vector<Variant> big_style{u"01", int32_t{256}};
  EXPECT_KAVRIN_ERROR(pub.Call(u"CodeToName", big_style), errors::kOverflow);
  std::vector<Variant> null_code{Variant::Null(), int32_t{0}};
  EXPECT_KAVRIN_ERROR(pub.Call(u"CodeToName", null_code), errors::kInvalidUseOfNull);
  std::vector<Variant> not_a_db{u"text"};
  EXPECT_KAVRIN_ERROR(pub.Invoke(u"DBIA", InvokeKind::PropertyPutRef, not_a_db),
                      errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(CreateObject(u"Kavrin.Other"), 429);
}

}  // namespace
}  // namespace kavrin
