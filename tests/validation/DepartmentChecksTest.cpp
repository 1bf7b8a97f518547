// CheckAccDep, CheckAssDep and CheckWareDep on departments and warehouses
// built by each test.
#include <gtest/gtest.h>

#include <algorithm>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;

class DepartmentChecks : public testing::ComponentTest {
 protected:
  DepartmentChecks() {
    // 01 has a FIFO store, 02 only a moving-average store, 03 no warehouse,
    // 04 is named 01, 05 has a Null name, 06 mixes an average and a
    // specific-identification store.
    Exec(
        "INSERT INTO Department (cDepCode, cDepName) VALUES"
        " ('01', 'Sales'), ('02', 'Works'), ('03', 'Office'), ('04', '01'), ('05', NULL),"
        " ('06', 'Stores ');"
        "INSERT INTO Warehouse (cWhCode, cWhName, cDepCode, cWhValueStyle) VALUES"
        " ('W1', 'Shop', '01', '先进先出法'), ('W2', 'Plant', '02', '移动平均法'),"
        " ('W3', 'Depot', '04', '后进先出法'), ('W4', 'Yard', '05', '先进先出法'),"
        " ('W5', 'North', '06', '全月平均法'), ('W6', 'South', '06', '个别计价法')");
  }
};

TEST_F(DepartmentChecks, CheckAccDepSendsItsTextsAndAnswersBoundDepartments) {
  EXPECT_EQ(pub_.CheckAccDep(u"Sales"), u"01");
  EXPECT_EQ(Sent(), (Texts{u"SELECT Department.cDepCode FROM Department  INNER JOIN Warehouse ON "
                           u"Department.cDepCode = Warehouse.cDepCode WHERE "
                           u"Department.cDepCode='Sales'",
                           u"SELECT Department.cDepCode FROM Department  INNER JOIN Warehouse ON "
                           u"Department.cDepCode = Warehouse.cDepCode WHERE "
                           u"Department.cDepName='Sales'"}));
  ClearSent();
  EXPECT_EQ(pub_.CheckAccDep(u"06", true), u"Stores ") << "as stored, not trimmed";
  EXPECT_EQ(Sent(), (Texts{u"SELECT Department.cDepName FROM Department  INNER JOIN Warehouse ON "
                           u"Department.cDepCode = Warehouse.cDepCode WHERE "
                           u"Department.cDepCode='06'"}));

  EXPECT_EQ(pub_.CheckAccDep(u"01", true), u"Sales") << "a code of one, a name of another";
  EXPECT_EQ(pub_.CheckAccDep(u"02"), u"02") << "any value style qualifies";
  EXPECT_EQ(pub_.CheckAccDep(u"03"), u"") << "a department without a warehouse";
  EXPECT_EQ(pub_.CheckAccDep(u"Office"), u"");
  EXPECT_EQ(pub_.CheckAccDep(u"05"), u"05");
  EXPECT_KAVRIN_ERROR(pub_.CheckAccDep(u"05", true), errors::kInvalidUseOfNull);

  ClearSent();
  EXPECT_EQ(pub_.CheckAccDep(u""), u"") << "no blank test: both queries run";
  EXPECT_EQ(Sent().size(), 2u);
  EXPECT_KAVRIN_ERROR(pub_.CheckAccDep(u"O'Brien"), errors::kProviderSyntax);
}

TEST_F(DepartmentChecks, CheckAssDepAcceptsOnlyTheThreeValueStyles) {
  EXPECT_EQ(pub_.CheckAssDep(u"Stores"), u"06") << "one qualifying warehouse is enough";
  EXPECT_EQ(Sent(),
            (Texts{u"SELECT Department.cDepCode  FROM Department INNER JOIN Warehouse ON "
                   u"Department.cDepCode = Warehouse.cDepCode WHERE WareHouse.cWhValueStyle IN "
                   u"('先进先出法','后进先出法','个别计价法')  AND WareHouse.cDepCode='Stores'",
                   u"SELECT Department.cDepCode  FROM Department INNER JOIN Warehouse ON "
                   u"Department.cDepCode = Warehouse.cDepCode WHERE WareHouse.cWhValueStyle IN "
                   u"('先进先出法','后进先出法','个别计价法')  AND Department.cDepName='Stores'"}));
  ClearSent();
  EXPECT_EQ(pub_.CheckAssDep(u"01", true), u"Sales");
  EXPECT_EQ(Sent(),
            (Texts{u"SELECT Department.cDepName FROM Department INNER JOIN Warehouse ON "
                   u"Department.cDepCode = Warehouse.cDepCode WHERE WareHouse.cWhValueStyle IN "
                   u"('先进先出法','后进先出法','个别计价法')  AND WareHouse.cDepCode='01'"}));

  EXPECT_EQ(pub_.CheckAssDep(u"02"), u"") << "only a moving-average store";
  EXPECT_EQ(pub_.CheckAssDep(u"Works"), u"");
  EXPECT_EQ(pub_.CheckAccDep(u"Works"), u"02");
  EXPECT_EQ(pub_.CheckAssDep(u"03"), u"");
  EXPECT_KAVRIN_ERROR(pub_.CheckAssDep(u"05", true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckAssDep(u"O'Brien", true), errors::kProviderSyntax);
}

TEST_F(DepartmentChecks, CheckWareDepScansDepartmentsUntilOneMixesStyles) {
  const String kUnbound = u"SELECT * FROM WareHouse WHERE cDepCode is null";
  const String kDepartments = u"SELECT DISTINCT cDepCode FROM Warehouse";
  auto styles_of = [](const String& department) {
    return u"SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode='" + department + u"'";
  };
  EXPECT_FALSE(pub_.CheckWareDep()) << "department 06 mixes two styles";
  ASSERT_GE(Sent().size(), 3u);
  EXPECT_EQ(Sent()[0], kUnbound);
  EXPECT_EQ(Sent()[1], kDepartments);
  EXPECT_EQ(Sent().back(), styles_of(u"06")) << "the scan stops at the offending department";

  Exec("DELETE FROM Warehouse WHERE cWhCode = 'W6'");
  ClearSent();
  EXPECT_TRUE(pub_.CheckWareDep());
  EXPECT_EQ(Sent().size(), 2u + 5u) << "one query per department";

  Exec(
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES ('W7', '01', '先进先出法')");
  EXPECT_TRUE(pub_.CheckWareDep()) << "two warehouses of one style";

  Exec(
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES ('W8', NULL, '先进先出法')");
  ClearSent();
  EXPECT_FALSE(pub_.CheckWareDep()) << "an unbound warehouse";
  EXPECT_EQ(Sent(), Texts{kUnbound});
}

TEST_F(DepartmentChecks, CheckWareDepCountsNullStylesAndEmptyDepartments) {
  Exec("DELETE FROM Warehouse");
  ClearSent();
  EXPECT_TRUE(pub_.CheckWareDep()) << "no warehouse at all";
  EXPECT_EQ(Sent().size(), 2u);

  Exec(
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES"
      " ('W1', '01', NULL), ('W2', '01', NULL), ('W3', '', '先进先出法')");
  ClearSent();
  EXPECT_TRUE(pub_.CheckWareDep()) << "all Null styles count as one";
  EXPECT_NE(std::find(Sent().begin(), Sent().end(),
                      u"SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode=''"),
            Sent().end())
      << "an empty department code is a department of its own";

  Exec("INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES ('W4', '', '个别计价法')");
  EXPECT_FALSE(pub_.CheckWareDep());
  Exec(
      "DELETE FROM Warehouse WHERE cWhCode = 'W4';"
      "INSERT INTO Warehouse (cWhCode, cDepCode, cWhValueStyle) VALUES ('W5', '01', '先进先出法')");
  EXPECT_FALSE(pub_.CheckWareDep()) << "a Null style beside a style";

  Exec("DELETE FROM Warehouse; INSERT INTO Warehouse (cWhCode, cDepCode) VALUES ('W1', 'O''B')");
  EXPECT_KAVRIN_ERROR(pub_.CheckWareDep(), errors::kProviderSyntax);
}

}  // namespace
}  // namespace kavrin
