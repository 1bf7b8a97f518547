// CheckDirNoGrade and CheckInv on flat archives, and the department checks
// CheckAccDep, CheckAssDep and CheckWareDep, on rows built by each test.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;

class UngradedChecks : public testing::ComponentTest {
 protected:
  UngradedChecks() {
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName) VALUES"
        " ('A1', 'Bolt'), ('B2', 'Nut  '), ('D4', 'Nut'), ('E5', NULL);"
        "INSERT INTO Vendor (cVenCode, cVenName, cVenAbbName) VALUES ('V1', 'Northern', 'NSW');"
        "INSERT INTO Customer (cCusCode, cCusName, cCusAbbName) VALUES ('C1', 'Harbour Ltd',"
        " 'Harbour');"
        "INSERT INTO Warehouse (cWhCode, cWhName) VALUES ('W1', 'Main');"
        "INSERT INTO Person (cPersonCode, cPersonName) VALUES ('P1', 'Li Wei')");
  }
};

TEST_F(UngradedChecks, CodeFirstThenNameAsEachArchiveNamesItsRows) {
  for (int16_t type : {0, 1, 2, 3, 5})
    EXPECT_EQ(pub_.CheckDirNoGrade(u"   ", type, true), u"");
  for (int16_t type : {-1, 4, 6, 7, 12, 22})
    EXPECT_EQ(pub_.CheckDirNoGrade(u"A1", type), u"");
  EXPECT_TRUE(Sent().empty()) << "nothing is asked for a blank text or another archive";

  EXPECT_EQ(pub_.CheckDirNoGrade(u"Bolt", 0), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='Bolt'",
                           u"select * from inventory where cinvname='Bolt'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"B2", 0, true), u"Nut  ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Nut", 0), u"B2") << "the first row bearing the name";
  EXPECT_EQ(pub_.CheckDirNoGrade(u" Bolt", 0), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Main", 3, true), u"Main");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Li Wei", 5), u"P1");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"NSW", 1), u"V1") << "vendors go by abbreviated name";
  EXPECT_EQ(pub_.CheckDirNoGrade(u"V1", 1, true), u"NSW");
  EXPECT_EQ(pub_.CheckDirNoGrade(u"C1", 2, true), u"Harbour");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"Harbour", 2), u"") << "customers go by code only";
  EXPECT_EQ(Sent(), (Texts{u"Customer", u"select * from customer where ccuscode='Harbour'",
                           u"select * from customer where ccuscode='Harbour'"}));
  EXPECT_EQ(pub_.CheckDirNoGrade(u"E5", 0), u"E5") << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"E5", 0, true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"O'Brien", 5), errors::kProviderSyntax);
}

TEST_F(UngradedChecks, CheckInvAnswersAnExistingCodeFromTheFirstItem) {
  EXPECT_EQ(pub_.CheckInv(u"  "), u"");
  EXPECT_EQ(pub_.CheckInv(u"D4"), u"A1");
  EXPECT_EQ(Sent(), (Texts{u"Inventory", u"select * from inventory where cinvcode='D4'"}));
  EXPECT_EQ(pub_.CheckInv(u"E5", true), u"Bolt") << "the matched item's Null name is not read";
  EXPECT_EQ(pub_.CheckInv(u"Nut", true), u"Nut  ") << "a name is answered from its own item";

  Exec("DELETE FROM Person; DELETE FROM Inventory");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirNoGrade(u"P1", 5), u"");
  EXPECT_EQ(pub_.CheckInv(u"A1", true), u"");
  EXPECT_EQ(Sent(), (Texts{u"Person", u"Inventory"})) << "an archive without rows: the probe alone";
}

class DepartmentChecks : public testing::ComponentTest {
 protected:
  DepartmentChecks() {
    // 01 has a FIFO store, 02 only a moving-average store, 05 a Null name,
    // 06 mixes an average and a specific-identification store.
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

  EXPECT_EQ(pub_.CheckAccDep(u"02"), u"02") << "any value style binds";
  EXPECT_EQ(pub_.CheckAssDep(u"02"), u"") << "a moving-average store does not";
  ClearSent();
  EXPECT_EQ(pub_.CheckAccDep(u""), u"") << "no blank test: both queries run";
  EXPECT_EQ(Sent().size(), 2u);
  EXPECT_KAVRIN_ERROR(pub_.CheckAccDep(u"05", true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckAssDep(u"O'Brien"), errors::kProviderSyntax);
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
  EXPECT_KAVRIN_ERROR(pub_.CheckWareDep(), errors::kProviderSyntax);
  Exec("INSERT INTO Warehouse (cWhCode, cDepCode) VALUES ('W8', NULL)");
  ClearSent();
  EXPECT_FALSE(pub_.CheckWareDep()) << "an unbound warehouse";
  EXPECT_EQ(Sent(), Texts{unbound});

  Exec("DELETE FROM Warehouse");
  EXPECT_TRUE(pub_.CheckWareDep()) << "no warehouse at all";
}

}  // namespace
}  // namespace kavrin
