// Every member of clsPub called by name, in the interface's order, on the demo
// company: what a script driving a form would see; and the platform's answers
// to calls by name it cannot make.
#include <gtest/gtest.h>

#include <tuple>

#include "kavrin/Dao.h"
#include "kavrin/Schema.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"
#include "support/FakeUi.h"

namespace kavrin {
namespace {

using testing::FakeControl;
using testing::FakeList;

class AllMembers : public testing::ComponentTest {
 protected:
  AllMembers() : ComponentTest(/*demo=*/true) {}

  testing::ScopedUiHost ui_;
};

struct Call {
  std::vector<Variant> args;
  Variant result;
  std::vector<Variant> args_after = {};  // when the member writes into its arguments
};

TEST_F(AllMembers, EveryMemberAnswersByNameInOrder) {
  auto box = std::make_shared<FakeControl>(u"TextBox", u"010101");
  ui_->focused = box;
  auto list = std::make_shared<FakeList>(std::vector<String>{u"stale"});
  // The desktop database is a SQLite file whichever engine holds the suite.
  const testing::TempDir desktop_dir;
  const String desktop_file = FromUtf8(desktop_dir.path() + "/desktop.db");
  CreateSuiteDatabase(u"sqlite:" + desktop_file, /*with_demo_data=*/false);
  auto desktop = dao::Database::Open(desktop_file);
  const Array no_switches(0, VarType::Boolean, 10);
  Array free_items = no_switches;
  for (int32_t i : {0, 1, 9})
    free_items.Store(i, true);

  // The latest closed period plus one, typed as the platform adds 1 to the
  // server's MAX(): an Integer, where SQLite types the MAX() by its storage
  // as a Long.
  const Variant current_period = testing::OnPostgres() ? Variant(int16_t{3}) : Variant(int32_t{3});

  const Variant db = std::shared_ptr<Dispatch>(db_);
  const std::vector<Call> calls = {
      {{}, db},                                                         // DBIA (read)
      {{db}, Variant()},                                                // DBIA (assign)
      {{u"11", true, int16_t{4}}, u"11"},                               // CheckDirGrade
      {{u"010102"}, u"010101"},                                         // CheckInv: first row
      {{u"森林木业", int16_t{1}, true}, u"森林木业"},                   // CheckDirNoGrade
      {{}, Variant()},                                                  // TextSelected
      {{u"AA", u"cGoodClass"}, u"223"},                                 // GetAccInfo
      {{u"ignored.mdb"}, Variant()},                                    // init
      {{u"01"}, u"先进先出法"},                                         // WhCodeToValueStyle
      {{u"cInvCode", u"010101", u"iInvRCost", u"Inventory"}, 86.5},     // FromTo
      {{u"01 原料库"}, u"01", {u" 01 原料库"}},                         // SepCode
      {{1234.5}, u"1,234.50"},                                          // FormatNum
      {{u"1,234.50"}, 1234.5},                                          // ReFormat
      {{u"0101", uint8_t{7}}, u"板材"},                                 // CodeToName
      {{u"010101"}, u"张"},                                             // InvCodeToUnit
      {{u"03"}, u"0201"},                                               // WhCodeToDep
      {{u"010202"}, 18.75},                                             // InvCodeToUnitPrice
      {{u"020101"}, u"0201"},                                           // InvCodeToClass
      {{u"010201"}, true},                                              // InvIsBatch
      {{u"03"}, u"全月平均法"},                                         // DepCodeToValueStyle
      {{}, current_period},                                             // CurPeriod
      {{1234.5678, int16_t{3}}, u"1,234.568"},                          // FormatNum1
      {{int32_t{9001}}, u"0000000001"},                                 // JustID2Code
      {{std::shared_ptr<Dispatch>(desktop), u"inventory"}, true},       // ExistTableQueryDAO
      {{}, true},                                                       // CheckWareDep
      {{u""}, uint8_t{1}, {u"IA"}},                                     // StartAccMonth
      {{int32_t{9001}, true}, u"普通采购"},                             // JustIDs2CorBusType
      {{u"01"}, u"01"},                                                 // CheckAssDep
      {{u"020101", u"bSale"}, true},                                    // InvCodeIsTorF
      {{u"销售部", true}, u"销售部"},                                   // CheckAccDep
      {{}, Date{46112}},                                                // SubMaxKeepDate
      {{u"0201"}, u"03"},                                               // DepCode2WhCode
      {{uint8_t{9}}, true},                                             // IsEndHandled
      {{int16_t{2}, int16_t{7}}, int16_t{4}},                           // CodeGrade2Length
      {{std::shared_ptr<Dispatch>(list)}, Variant()},                   // FillCboCK
      {{u"GL", int16_t{2}}, true},                                      // GetMonthState
      {{u"020101", no_switches}, Variant(), {u"020101", free_items}},   // GetInvUseFreeNew
      {{u"010102", false, false}, Variant(), {u"010102", true, true}},  // GetInvUseFree
      {{u"01", u"0101", u"010101", u"", u""},
       Variant(),
       {u"01", u"0101", u"010101", u"1403", u"1404"}},  // GetInvDifHead
      {{u"223"}, int16_t{7}},                           // GetCodeLen
  };

  const auto members = clsPub::Members();
  ASSERT_EQ(calls.size(), members.size());
  for (size_t i = 0; i < members.size(); ++i) {
    const MemberInfo& member = members[i];
    std::vector<Variant> args = calls[i].args;
    SCOPED_TRACE(ToUtf8(member.name));
    EXPECT_EQ(member.number, int(i + 1));
    EXPECT_EQ(pub_.Invoke(member.name, member.kind, args), calls[i].result);
    if (!calls[i].args_after.empty()) {
      EXPECT_EQ(args, calls[i].args_after);
    }
  }

  EXPECT_EQ(box->writes, (std::vector<FakeControl::Write>{{u"SelStart", int16_t{0}},
                                                          {u"SelLength", int16_t{6}}}));
  EXPECT_EQ(list->items, (std::vector<String>{u"01             原料库", u"02             成品库",
                                              u"03             车间库"}));
  EXPECT_TRUE(ui_->shown.empty());
}

TEST_F(AllMembers, CallsByNameCoerceArgumentsOrFailWithThePlatformsNumbers) {
  auto pub = CreateObject(u"kavrin.CLSPUB");
  ASSERT_EQ(pub->TypeName(), u"clsPub");
  Variant db = std::shared_ptr<Dispatch>(db_);
  pub->Invoke(u"DBIA", InvokeKind::PropertyPutRef, std::span<Variant>(&db, 1));
  EXPECT_EQ(pub->Get(u"dbia").AsObject(), db.AsObject());
  std::vector<Variant> args{int32_t{11}, u"4"};  // a number for the code, a text for the style
  EXPECT_EQ(pub->Call(u"codetoname", args), Variant(u"采购入库"));

  const std::tuple<const char16_t*, std::vector<Variant>, int32_t> bad_calls[] = {
      {u"CodeToName", {}, errors::kArgumentNotOptional},
      {u"CodeToName", {u"01", int32_t{0}, int32_t{1}}, errors::kWrongArgumentCount},
      {u"CodeToName", {u"01", u"abc"}, errors::kTypeMismatch},
      {u"CodeToName", {u"01", int32_t{256}}, errors::kOverflow},
      {u"CodeToName", {Variant::Null(), int32_t{0}}, errors::kInvalidUseOfNull},
      // Arguments are read in order: the first bad one is reported.
      {u"GetMonthState", {Variant::Null(), u"x"}, errors::kInvalidUseOfNull}};
  for (auto [member, args, error] : bad_calls)
    EXPECT_KAVRIN_ERROR(pub->Call(member, args), error);
  EXPECT_KAVRIN_ERROR(pub->Call(u"NoSuchMember"), errors::kMemberNotFound, u"clsPub");
  std::vector<Variant> not_a_db{u"text"};
  EXPECT_KAVRIN_ERROR(pub->Invoke(u"DBIA", InvokeKind::PropertyPutRef, not_a_db),
                      errors::kTypeMismatch);
  EXPECT_KAVRIN_ERROR(CreateObject(u"Kavrin.Other"), 429);
}

// The number stays the platform's; the description goes on to say which
// member, argument and type the failure is about.
TEST_F(AllMembers, FailedCallsByNameSayWhatTheyAreAbout) {
  const std::tuple<const char16_t*, InvokeKind, std::vector<Variant>, String> bad_calls[] = {
      {u"CodeToNam",
       InvokeKind::Method,
       {},
       u"Object doesn't support this property or method: clsPub has no member CodeToNam; did "
       u"you mean CodeToName?"},
      {u"checkdirnograd",
       InvokeKind::Method,
       {},
       u"Object doesn't support this property or method: clsPub has no member checkdirnograd; "
       u"did you mean CheckDirNoGrade?"},
      {u"Frobnicate",
       InvokeKind::Method,
       {},
       u"Object doesn't support this property or method: clsPub has no member Frobnicate"},
      {u"CodeToName",
       InvokeKind::PropertyPut,
       {u"x"},
       u"Object doesn't support this property or method: clsPub has no member CodeToName that "
       u"can be assigned"},
      {u"CodeToName",
       InvokeKind::Method,
       {u"01", int32_t{256}},
       u"Overflow: argument 2 of CodeToName (Style As Byte) cannot take the Long 256"},
      {u"FormatNum",
       InvokeKind::Method,
       {u"1,2x"},
       u"Type mismatch: argument 1 of FormatNum (Num As Double) cannot take the String \"1,2x\""},
      {u"GetMonthState",
       InvokeKind::Method,
       {u"IA", Variant::Null()},
       u"Invalid use of Null: argument 2 of GetMonthState (intMonth As Integer) cannot take Null"},
      {u"CodeToName",
       InvokeKind::Method,
       {u"01", int32_t{0}, int32_t{1}},
       u"Wrong number of arguments or invalid property assignment: CodeToName takes at most 2 "
       u"arguments (Code, Style), 3 were given"},
      {u"CodeToName",
       InvokeKind::Method,
       {u"01"},
       u"Argument not optional: argument 2 of CodeToName (Style As Byte) is not optional"},
      {u"DBIA",
       InvokeKind::PropertyPutRef,
       {Variant(std::shared_ptr<Dispatch>(std::make_shared<FakeList>(std::vector<String>{})))},
       u"Type mismatch: argument 1 of DBIA (DBIA As KitDatabase) cannot take the ComboBox"},
  };
  for (auto [member, kind, args, description] : bad_calls) {
    try {
      pub_.Invoke(member, kind, args);
      ADD_FAILURE() << ToUtf8(member) << " did not fail";
    } catch (const Error& e) {
      EXPECT_EQ(e.description(), description);
    }
  }
}

}  // namespace
}  // namespace kavrin
