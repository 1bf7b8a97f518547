// The current period, month-end flags, the latest keep date and the start
// month, on real suite data.
#include <gtest/gtest.h>

#include "kavrin/Convert.h"
#include "kavrin/OleDate.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using PeriodState = testing::ComponentTest;

TEST_F(PeriodState, CurPeriodIsZeroUntilAPeriodClosesAndStaysTwelveAfterDecember) {
  EXPECT_EQ(pub_.CurPeriod(), Variant(int16_t{0})) << "an empty month-end table";
  ASSERT_EQ(Sent().size(), 1u);
  EXPECT_EQ(Sent()[0], u"SELECT MAX(iPeriod) AS CurMonth FROM GL_mEnd WHERE bFlag_IA=1");

  Exec(
      "INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA) VALUES"
      " (1, 1, 0), (2, 1, 0), (3, 0, NULL)");
  EXPECT_EQ(pub_.CurPeriod(), Variant(int16_t{0}))
      << "periods closed by other subsystems only: 0, not 1";

  Exec(
      "UPDATE GL_mEnd SET bFlag_IA = 1 WHERE iPeriod <= 2;"
      "INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (4, 1), (5, 0)");
  const Variant fifth = pub_.CurPeriod();
  EXPECT_TRUE(fifth.IsNumeric());
  EXPECT_EQ(ToLong(fifth), 5) << "the period after the last one closed, gaps ignored";

  Exec("INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (11, 1)");
  EXPECT_EQ(ToLong(pub_.CurPeriod()), 12);
  Exec("INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (12, 1)");
  EXPECT_EQ(pub_.CurPeriod(), Variant(int16_t{12})) << "December closed: still 12, not 13";
}

TEST_F(PeriodState, IsEndHandledComparesEveryWarehouseWithTheCurrentPeriodOnly) {
  const String warehouses_off = u"SELECT cWhCode , cMonth from Warehouse WHERE  RIGHT(cMonth,2)<>'";
  EXPECT_TRUE(pub_.IsEndHandled(5)) << "no warehouses at all";
  ASSERT_EQ(Sent().size(), 2u);
  EXPECT_EQ(Sent()[0], u"SELECT MAX(iPeriod) AS CurMonth FROM GL_mEnd WHERE bFlag_IA=1");
  EXPECT_EQ(Sent()[1], warehouses_off + u"00' OR cMonth is NULL")
      << "no period closed: compared with 00";

  Exec(
      "INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (1, 1), (2, 1);"
      "INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('01', '2024-03'), ('02', '202403')");
  EXPECT_TRUE(pub_.IsEndHandled(5));
  EXPECT_EQ(Sent().back(), warehouses_off + u"03' OR cMonth is NULL");
  EXPECT_TRUE(pub_.IsEndHandled(9)) << "the argument is never read";

  Exec("INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('03', '3')");
  EXPECT_FALSE(pub_.IsEndHandled(3)) << "a one-character month is not 03";
  Exec(
      "DELETE FROM Warehouse WHERE cWhCode = '03';"
      "INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('04', NULL)");
  EXPECT_FALSE(pub_.IsEndHandled(3)) << "a warehouse without a month";

  Exec(
      "DELETE FROM Warehouse;"
      "INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('01', '2024-12');"
      "INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (11, 1)");
  EXPECT_TRUE(pub_.IsEndHandled(1));
  EXPECT_EQ(Sent().back(), warehouses_off + u"12' OR cMonth is NULL");

  clsPub unconnected;
  EXPECT_KAVRIN_ERROR(unconnected.IsEndHandled(1), errors::kNoConnection);
  std::vector<Variant> too_big{int32_t{256}};
  EXPECT_KAVRIN_ERROR(pub_.Invoke(u"IsEndHandled", InvokeKind::Method, too_big), errors::kOverflow);
}

TEST_F(PeriodState, GetMonthStateChoosesTheFlagColumnByTheExactSystemId) {
  Exec(
      "INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA, bFlag_PU) VALUES"
      " (3, 1, 0, 1), (4, 0, 1, NULL)");
  EXPECT_TRUE(pub_.GetMonthState(u"GL", 3));
  EXPECT_EQ(Sent().back(), u"Select bFlag from gl_mend where iPeriod=3");
  EXPECT_FALSE(pub_.GetMonthState(u"GL", 4));
  EXPECT_FALSE(pub_.GetMonthState(u"IA", 3));
  EXPECT_EQ(Sent().back(), u"Select bFlag_IA from gl_mend where iPeriod=3");
  EXPECT_TRUE(pub_.GetMonthState(u"ia", 4)) << "the database ignores the case of column names";
  EXPECT_EQ(Sent().back(), u"Select bFlag_ia from gl_mend where iPeriod=4");

  EXPECT_FALSE(pub_.GetMonthState(u"GL", 7)) << "no row for the period";
  EXPECT_FALSE(pub_.GetMonthState(u"GL", -1));
  EXPECT_EQ(Sent().back(), u"Select bFlag from gl_mend where iPeriod=-1");

  // Lower-case gl is not the general ledger: it asks for a column bFlag_gl.
  EXPECT_KAVRIN_ERROR(pub_.GetMonthState(u"gl", 3), errors::kProviderSyntax);
  EXPECT_EQ(Sent().back(), u"Select bFlag_gl from gl_mend where iPeriod=3");
  EXPECT_KAVRIN_ERROR(pub_.GetMonthState(u"PU", 4), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.GetMonthState(u"I'A", 3), errors::kProviderSyntax);
}

TEST_F(PeriodState, SubMaxKeepDateIsTheZeroDateForAnEmptyLedger) {
  EXPECT_EQ(pub_.SubMaxKeepDate(), Date{0.0});
  EXPECT_EQ(Sent().back(), u"SELECT MAX(dKeepDate) as MyDate FROM IA_Subsidiary ");

  Exec("INSERT INTO IA_Subsidiary (JustID, dKeepDate) VALUES (1, NULL)");
  EXPECT_EQ(pub_.SubMaxKeepDate(), Date{0.0}) << "entries without a keep date";

  Exec(
      "INSERT INTO IA_Subsidiary (JustID, dKeepDate) VALUES"
      " (2, '2024-03-31 00:00:00'), (3, '2024-11-05 14:30:00'), (4, '2023-12-31 00:00:00')");
  EXPECT_EQ(SplitDate(pub_.SubMaxKeepDate()), (DateParts{2024, 11, 5, 14, 30, 0}));
}

TEST_F(PeriodState, StartAccMonthReadsTheStoredStartDateOnly) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
      " ('IA', 'dIAStartDate', '2024-04-01', NULL),"
      " ('GL', 'dGLStartDate', '2024-11-01 00:00:00', NULL),"
      " ('PU', 'dPUStartDate', '7/15/2024', NULL),"
      " ('SA', 'dSAStartDate', '2024/2/1', NULL),"
      " ('ST', 'dSTStartDate', '   ', '2024-01-01'),"
      " ('FA', 'dFAStartDate', NULL, '2024-05-01'),"
      " ('AP', 'dAPStartDate', 'soon', NULL)");
  EXPECT_EQ(pub_.StartAccMonth(), 4);
  EXPECT_EQ(Sent().back(),
            u"SELECT * FROM AccInformation WHERE cSysID='IA' AND cName='dIAStartDate'");

  String gl = u"GL";
  EXPECT_EQ(pub_.StartAccMonth(gl), 11);
  EXPECT_EQ(Sent().back(),
            u"SELECT * FROM AccInformation WHERE cSysID='GL' AND cName='dGLStartDate'");
  EXPECT_EQ(gl, u"GL");
  String pu = u"PU", sa = u"SA";
  EXPECT_EQ(pub_.StartAccMonth(pu), 7) << "the usual US form";
  EXPECT_EQ(pub_.StartAccMonth(sa), 2);

  String st = u"ST", fa = u"FA", ar = u"AR", ap = u"AP";
  EXPECT_EQ(pub_.StartAccMonth(st), 0) << "blanks";
  EXPECT_EQ(pub_.StartAccMonth(fa), 0) << "no value: the default is not consulted";
  EXPECT_EQ(pub_.StartAccMonth(ar), 0) << "no setting";
  EXPECT_KAVRIN_ERROR(pub_.StartAccMonth(ap), errors::kTypeMismatch);

  String empty;
  EXPECT_EQ(pub_.StartAccMonth(empty), 4);
  EXPECT_EQ(empty, u"IA") << "an empty system id is replaced in the caller's variable";
}

TEST_F(PeriodState, StartAccMonthWritesTheDefaultIdBackThroughLateBinding) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue) VALUES"
      " ('IA', 'dIAStartDate', '2024-09-01'), ('GL', 'dGLStartDate', '2024-01-01')");
  std::vector<Variant> args{Variant(u"")};
  EXPECT_EQ(pub_.Invoke(u"StartAccMonth", InvokeKind::Method, args), Variant(uint8_t{9}));
  EXPECT_EQ(args[0], Variant(u"IA"));

  std::vector<Variant> empty_variant{Variant()};
  pub_.Invoke(u"StartAccMonth", InvokeKind::Method, empty_variant);
  EXPECT_EQ(empty_variant[0], Variant(u"IA")) << "an Empty argument reads as the empty text";

  std::vector<Variant> gl{Variant(u"GL")};
  EXPECT_EQ(pub_.Invoke(u"StartAccMonth", InvokeKind::Method, gl), Variant(uint8_t{1}));
  EXPECT_EQ(gl[0], Variant(u"GL"));

  std::vector<Variant> none;
  EXPECT_EQ(pub_.Invoke(u"StartAccMonth", InvokeKind::Method, none), Variant(uint8_t{9}));
}

TEST_F(PeriodState, LateBoundPeriodMembersAnswerTheirDeclaredTypes) {
  Exec("INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA) VALUES (1, 1, 1)");
  std::vector<Variant> none;
  EXPECT_EQ(ToLong(pub_.Invoke(u"CurPeriod", InvokeKind::Method, none)), 2);
  EXPECT_EQ(pub_.Invoke(u"SubMaxKeepDate", InvokeKind::Method, none), Variant(Date{0.0}));
  std::vector<Variant> state{Variant(u"GL"), Variant(u"1")};
  EXPECT_EQ(pub_.Invoke(u"GetMonthState", InvokeKind::Method, state), Variant(true));
  EXPECT_EQ(state[1], Variant(u"1")) << "arguments are not changed";
  // Arguments are read in order, whatever the compiler: the first bad one is reported.
  std::vector<Variant> both_bad{Variant::Null(), Variant(u"x")};
  EXPECT_KAVRIN_ERROR(pub_.Invoke(u"GetMonthState", InvokeKind::Method, both_bad),
                      errors::kInvalidUseOfNull);
}

}  // namespace
}  // namespace kavrin
