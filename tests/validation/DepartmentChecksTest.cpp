// The department checks CheckAccDep, CheckAssDep and CheckWareDep, on rows
// built by each test.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;

class DepartmentChecks : public testing::ComponentTest {
 protected:
  DepartmentChecks() {
    // 01 has a FIFO store, 02 a moving-average store, 05 a Null name, 06
    // mixes an average and a specific-identification store.
    Exec(
        "INSERT INTO Department (cDepCode, cDepName) VALUES"
        " ('01', 'Sales'), ('02', 'Works'), ('05', NULL), ('06', 'Stores ');"
        "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES"
        " ('W1', '01', '先进先出法'), ('W2', '02', '移动平均法'), ('W4', '05', '先进先出法'),"
        " ('W5', '06', '全月平均法'), ('W6', '06', '个别计价法')");
  }
};

TEST_F(DepartmentChecks, BoundAndValuedDepartmentsByCodeThenName) {
  EXPECT_EQ(pub_.CheckAccDep(u"Sales"), u"01");
  EXPECT_EQ(pub_.CheckAccDep(u"06", true), u"Stores ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckAssDep(u"Stores"), u"06") << "one qualifying warehouse is enough";
  EXPECT_EQ(pub_.CheckAssDep(u"01", true), u"Sales");
  const String bound =
      u" FROM Department  INNER JOIN Warehouse ON Department.cDepCode = Warehouse.cDepCode"
      u" WHERE Department.";
  const String valued =
      u"FROM Department INNER JOIN Warehouse ON Department.cDepCode = Warehouse.cDepCode WHERE "
      u"WareHouse.cWhValueStyle IN ('先进先出法','后进先出法','个别计价法')  AND ";
  EXPECT_EQ(Sent(),
            (Texts{u"SELECT Department.cDepCode" + bound + u"cDepCode='Sales'",
                   u"SELECT Department.cDepCode" + bound + u"cDepName='Sales'",
                   u"SELECT Department.cDepName" + bound + u"cDepCode='06'",
                   u"SELECT Department.cDepCode  " + valued + u"WareHouse.cDepCode='Stores'",
                   u"SELECT Department.cDepCode  " + valued + u"Department.cDepName='Stores'",
                   u"SELECT Department.cDepName " + valued + u"WareHouse.cDepCode='01'"}));

  ClearSent();
  EXPECT_EQ(pub_.CheckAccDep(u""), u"") << "no blank test: both queries run";
  EXPECT_EQ(Sent().size(), 2u);
  EXPECT_KAVRIN_ERROR(pub_.CheckAccDep(u"05", true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckAssDep(u"O'Brien"), errors::kProviderSyntax,
                      testing::EngineSource());
}

TEST_F(DepartmentChecks, CheckWareDepScansDepartmentsUntilOneMixesStyles) {
  const String unbound = u"SELECT * FROM WareHouse WHERE cDepCode is null";
  EXPECT_FALSE(pub_.CheckWareDep()) << "department 06 mixes two styles";
  ASSERT_GE(Sent().size(), 3u);
  EXPECT_EQ(Sent()[0], unbound);
  EXPECT_EQ(Sent()[1], u"SELECT DISTINCT cDepCode FROM Warehouse");
  EXPECT_EQ(Sent().back(), u"SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='06'")
      << "the scan stops at the offending department";

  Exec("DELETE FROM Warehouse WHERE cWhCode = 'W6'");
  ClearSent();
  EXPECT_TRUE(pub_.CheckWareDep());
  EXPECT_EQ(Sent().size(), 2u + 4u) << "one query per department";
  Exec("INSERT INTO Warehouse (cWhCode, cDepCode) VALUES ('W7', 'O''B')");
  EXPECT_KAVRIN_ERROR(pub_.CheckWareDep(), errors::kProviderSyntax, testing::EngineSource());
  Exec("INSERT INTO Warehouse (cWhCode, cDepCode) VALUES ('W8', NULL)");
  ClearSent();
  EXPECT_FALSE(pub_.CheckWareDep()) << "an unbound warehouse";
  EXPECT_EQ(Sent(), Texts{unbound});

  Exec("DELETE FROM Warehouse");
  EXPECT_TRUE(pub_.CheckWareDep()) << "no warehouse at all";
}

}  // namespace
}  // namespace kavrin
