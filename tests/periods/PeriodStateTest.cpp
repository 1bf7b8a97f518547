// The current period, month-end flags, the latest keep date and the start
// month, on real suite data.
#include <gtest/gtest.h>

#include <tuple>

#include "db/Driver.h"
#include "kavrin/Convert.h"
#include "kavrin/Dao.h"
#include "kavrin/OleDate.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;
using PeriodState = testing::ComponentTest;

TEST_F(PeriodState, MonthEndFlagsGiveTheCurrentPeriodAndEachMonthsState) {
  const String max = u"SELECT MAX(iPeriod) AS CurMonth FROM GL_mEnd WHERE bFlag_IA=1";
  const String off = u"SELECT cWhCode , cMonth from Warehouse WHERE  RIGHT(cMonth,2)<>'";
  EXPECT_EQ(pub_.CurPeriod(), Variant(int16_t{0})) << "no period closed";
  EXPECT_TRUE(pub_.IsEndHandled(5)) << "no warehouses at all";
  EXPECT_EQ(Sent(), (Texts{max, max, off + u"00' OR cMonth is NULL"}));

  Exec(
      "INSERT INTO GL_mEnd (iPeriod, bFlag, bFlag_IA, bFlag_PU) VALUES (1, 1, 1, 1),"
      " (2, 1, 1, 1), (3, 1, 0, NULL);"
      "INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('01', '2024-03'), ('02', '202403')");
  EXPECT_EQ(ToLong(pub_.CurPeriod()), 3) << "the period after the last one closed here";
  EXPECT_TRUE(pub_.IsEndHandled(9)) << "the month asked about is never read";
  EXPECT_EQ(Sent().back(), off + u"03' OR cMonth is NULL");
  Exec("INSERT INTO Warehouse (cWhCode, cMonth) VALUES ('03', '3')");
  EXPECT_FALSE(pub_.IsEndHandled(3)) << "a one-character month is not 03";

  Exec("INSERT INTO GL_mEnd (iPeriod, bFlag_IA) VALUES (12, 1)");
  EXPECT_EQ(pub_.CurPeriod(), Variant(int16_t{12})) << "December closed: still 12, not 13";

  // GetMonthState chooses the flag column by the exact system id.
  EXPECT_TRUE(pub_.GetMonthState(u"GL", 3));
  EXPECT_EQ(Sent().back(), u"Select bFlag from gl_mend where iPeriod=3");
  EXPECT_FALSE(pub_.GetMonthState(u"ia", 3));
  EXPECT_EQ(Sent().back(), u"Select bFlag_ia from gl_mend where iPeriod=3");
  EXPECT_FALSE(pub_.GetMonthState(u"GL", 7)) << "no row for the period";
  EXPECT_KAVRIN_ERROR(pub_.GetMonthState(u"gl", 3), errors::kProviderSyntax,
                      testing::EngineSource());  // no bFlag_gl
  EXPECT_KAVRIN_ERROR(pub_.GetMonthState(u"PU", 3), errors::kInvalidUseOfNull);
}

TEST_F(PeriodState, SubMaxKeepDateIsTheZeroDateForAnEmptyLedger) {
  EXPECT_EQ(pub_.SubMaxKeepDate(), Date{0.0});
  EXPECT_EQ(Sent().back(), u"SELECT MAX(dKeepDate) as MyDate FROM IA_Subsidiary ");
  Exec(
      "INSERT INTO IA_Subsidiary (JustID, dKeepDate) VALUES (1, NULL),"
      " (2, '2024-11-05 14:30:00'), (3, '2023-12-31 00:00:00')");
  EXPECT_EQ(SplitDate(pub_.SubMaxKeepDate()), (DateParts{2024, 11, 5, 14, 30, 0}));
}

TEST_F(PeriodState, StartAccMonthReadsTheStoredStartDateOnly) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
      " ('IA', 'dIAStartDate', '2024-04-01', NULL), ('GL', 'dGLStartDate', '2024-11-01 00:00:00',"
      " NULL), ('PU', 'dPUStartDate', '7/15/2024', NULL), ('SA', 'dSAStartDate', '2024/2/1', NULL),"
      " ('ST', 'dSTStartDate', '   ', '2024-01-01'), ('FA', 'dFAStartDate', NULL, '2024-05-01'),"
      " ('AP', 'dAPStartDate', 'soon', NULL)");
  String id;
  EXPECT_EQ(pub_.StartAccMonth(id), 4);
  EXPECT_EQ(id, u"IA") << "an empty system id is replaced in the caller's variable";
  EXPECT_EQ(Sent().back(),
            u"SELECT * FROM AccInformation WHERE cSysID='IA' AND cName='dIAStartDate'");
  // Blanks, a Null value (its default is not consulted) and no setting give 0.
  const std::pair<const char16_t*, int> months[] = {{u"GL", 11}, {u"PU", 7}, {u"SA", 2},
                                                    {u"ST", 0},  {u"FA", 0}, {u"AR", 0}};
  for (const auto& [sys_id, month] : months) {
    id = sys_id;
    EXPECT_EQ(pub_.StartAccMonth(id), month) << ToUtf8(id);
    EXPECT_EQ(id, sys_id);
  }
  id = u"AP";
  EXPECT_KAVRIN_ERROR(pub_.StartAccMonth(id), errors::kTypeMismatch);
}

}  // namespace
}  // namespace kavrin
