// The checks of a typed code or name against the archives, on rows built by
// each test: CheckDirGrade on graded archives and the code lengths their
// coding schemes give, CheckDirNoGrade and CheckInv on flat archives, and the
// department checks CheckAccDep, CheckAssDep and CheckWareDep.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;
using GradedCheck = testing::ComponentTest;
using CodingScheme = testing::ComponentTest;

TEST_F(GradedCheck, QueriedArchivesTryTheCodeBeforeTheName) {
  EXPECT_EQ(pub_.CheckDirGrade(u"   ", true, 7, true), u"");
  for (int16_t type : {-1, 0, 1, 2, 3, 5, 10, 23})
    EXPECT_EQ(pub_.CheckDirGrade(u"1", false, type), u"") << type;
  EXPECT_TRUE(Sent().empty()) << "nothing is asked for a blank text or another archive";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 7), u"");
  EXPECT_EQ(Sent(), Texts{u"InventoryClass"}) << "an archive without rows: the probe alone";

  Exec(
      "INSERT INTO InventoryClass (cInvCCode, cInvCName, bInvCEnd) VALUES ('01', 'Metals  ', 1),"
      " ('02', '01', 1), ('03', 'Wood', 1), ('04', 'Wood', 1), ('05', NULL, 1);"
      "INSERT INTO Code (cCode, cCode_Name, bEnd) VALUES ('1403', 'Raw materials', 1)");
  ClearSent();
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", false, 7), u"03") << "the first of two named rows";
  EXPECT_EQ(Sent(),
            (Texts{u"InventoryClass", u"select * from inventoryclass where cinvccode='Wood'",
                   u"select * from inventoryclass where cinvcname='Wood'"}));
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7), u"01") << "a code of one row, a name of another";
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 7, true), u"Metals  ") << "as stored, not trimmed";
  EXPECT_EQ(pub_.CheckDirGrade(u" Wood", false, 7), u"") << "a leading blank is looked up";
  EXPECT_EQ(pub_.CheckDirGrade(u"Raw materials", true, 15), u"1403");
  EXPECT_EQ(pub_.CheckDirGrade(u"05", true, 7), u"05") << "a Null name not answered is harmless";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"05", true, 7, true), errors::kInvalidUseOfNull);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", false, 7), errors::kProviderSyntax,
                      testing::EngineSource());
}

TEST_F(GradedCheck, EndRowsByCodeByNameAndByWalkingSameNamedRows) {
  Exec(
      "INSERT INTO Department (cDepCode, cDepName, bDepEnd) VALUES"
      " ('01', 'Sales', 0), ('0101', '01', 1), ('02', 'Works', NULL);"
      "INSERT INTO SettleStyle (cSSCode, cSSName, bSSEnd) VALUES"
      " ('1', 'Cash', 0), ('2', 'Cash', NULL), ('3', 'Cash', 1), ('5', 'Check', 0),"
      " ('6', 'CHECK', 1), ('7', 'Draft', 0), ('8', 'Draft ', 1), ('9', 'Bill', 0),"
      " ('10', 'BILL', 1), ('11', 'Wood', 0);"
      "INSERT INTO VendorClass (cVCCode, cVCName, bVCEnd) VALUES"
      " ('01', 'Metals', 0), ('02', 'Metals', 1), ('03', 'Wood', 0);"
      "INSERT INTO CustomerClass (cCCCode, cCCName, bCCEnd) VALUES"
      " ('01', 'Retail', 0), ('02', 'Retail', 0)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 12), u"") << "a code that is no end row";
  EXPECT_EQ(Sent().size(), 2u) << "its text is not tried as a name";
  // A Null end flag is no end row by code, but an end row as the first named row.
  EXPECT_EQ(pub_.CheckDirGrade(u"02", true, 12), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"Works", true, 12), u"02");

  // Past a first named row that is no end row, the walk seeks an end row among
  // the rows found, comparing their names with the typed text exactly.
  EXPECT_EQ(pub_.CheckDirGrade(u"Cash", true, 6), u"3") << "a Null flag is no end row here";
  EXPECT_EQ(pub_.CheckDirGrade(u"Check", true, 6), u"") << "letter case ends the walk";
  EXPECT_EQ(pub_.CheckDirGrade(u"Draft", true, 6), u"") << "so does a trailing blank";
  EXPECT_EQ(pub_.CheckDirGrade(u"BILL", true, 6), u"10") << "not the first row's name";
  EXPECT_EQ(pub_.CheckDirGrade(u"Wood", true, 6), u"") << "it stops at the last row";
  EXPECT_EQ(pub_.CheckDirGrade(u"Metals", true, 8), u"02");
  // Vendor and customer classes read on past the last row.
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Wood", true, 8), errors::kNoCurrentRecord,
                      sources::kAdoField);
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"Retail", true, 9), errors::kNoCurrentRecord,
                      sources::kAdoField);
}

TEST_F(GradedCheck, StylesAndCostObjectsAreFoundInTheLoadedTable) {
  Exec(
      "INSERT INTO Rd_Style (cRdCode, cRdName, bRdEnd) VALUES"
      " ('01', 'Receipts', 0), ('0101', '01', 1), ('02', 'Issues', 0);"
      "INSERT INTO CostObj (cCode, cName, bEnd) VALUES ('01', 'Desks', 0), ('0101', 'Desks', 1)");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", false, 4), u"01");
  EXPECT_EQ(pub_.CheckDirGrade(u"01", true, 4), u"0101") << "the name is tried with the end clause";
  EXPECT_EQ(pub_.CheckDirGrade(u"Receipts", true, 4), u"");
  EXPECT_EQ(pub_.CheckDirGrade(u"issues", false, 4, true), u"Issues") << "as the column compares";
  EXPECT_EQ(pub_.CheckDirGrade(u"Desks", true, 22), u"0101");
  EXPECT_EQ(Sent(), (Texts{u"Rd_Style", u"Rd_Style", u"Rd_Style", u"Rd_Style", u"CostObj"}))
      << "no query by code or name";
  EXPECT_KAVRIN_ERROR(pub_.CheckDirGrade(u"O'Brien", true, 22), errors::kCriteriaSyntax);
}

TEST_F(CodingScheme, GradeLengthsAddUpTheDigitsOfTheArchivesSetting) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue) VALUES ('AA', 'cGoodClass', '223'),"
      " ('IA', 'cGoodClass', '999'), ('AA', 'cDepLevel', '2x3')");
  const int16_t lengths[] = {0, 2, 4, 7, 7};  // a grade past the scheme adds nothing
  for (int16_t grade = 0; grade <= 4; ++grade)
    EXPECT_EQ(pub_.CodeGrade2Length(grade, 7), lengths[grade]) << grade;
  EXPECT_EQ(pub_.CodeGrade2Length(-3, 7), 0);
  EXPECT_EQ(Sent().size(), 6u) << "the setting is read for every grade, 0 and below too";
  EXPECT_EQ(pub_.CodeGrade2Length(2, 12), 2) << "a character that is no digit adds nothing";
  EXPECT_EQ(pub_.CodeGrade2Length(3, 12), 5);
  EXPECT_EQ(pub_.CodeGrade2Length(32766, 7), 7);
  EXPECT_KAVRIN_ERROR(pub_.CodeGrade2Length(32767, 7), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(pub_.CodeGrade2Length(32767, 0), errors::kOverflow);

  // Each graded archive reads its own setting; other archive types read none.
  ClearSent();
  for (int16_t type = -1; type <= 23; ++type)
    pub_.CodeGrade2Length(1, type);
  const String q = u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='";
  EXPECT_EQ(Sent(),
            (Texts{q + u"cDispLevel'", q + u"cSettleLevel'", q + u"cGoodClass'", q + u"cProvClass'",
                   q + u"cCustClass'", q + u"cDepLevel'", q + u"cGradeLevel'", q + u"cCostobj'"}));
}

TEST_F(CodingScheme, CodeLengthReadsEveryCharacterStrictly) {
  EXPECT_EQ(pub_.GetCodeLen(u"223"), 7);
  for (const char16_t* scheme : {u"2x3", u"2 3", u" 22", u"22 ", u"2.3", u"+2", u"2-", u"2,3"})
    EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(scheme), errors::kTypeMismatch);
  EXPECT_EQ(pub_.GetCodeLen(String(32766, u'1')), 32766);
  // The character counter steps past 32767; a long enough sum gets there first.
  EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(String(32767, u'0')), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(String(3641, u'9')), errors::kOverflow);
  EXPECT_TRUE(Sent().empty());
}

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
  EXPECT_KAVRIN_ERROR(pub_.CheckDirNoGrade(u"O'Brien", 5), errors::kProviderSyntax,
                      testing::EngineSource());
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
