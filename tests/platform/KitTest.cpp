// The kit's dynaset and the ADO record set as the component uses them.
#include <gtest/gtest.h>

#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::QueryTrace;
using testing::SuiteDb;

String Code(const KitRecordset& rs) {
  return rs.Fields()(u"cRdCode").Value().AsString();
}

TEST(KitRecordset, EmptyAndOneRowResultsCountExactlyFromTheStart) {
  SuiteDb suite;
  suite.Exec("INSERT INTO Rd_Style (cRdCode, cRdName) VALUES ('1', 'In')");
  auto db = suite.Open();

  auto empty = db->OpenQuery(u"select * from rd_style where crdcode='9'", 2);
  EXPECT_EQ(empty->RecordCount(), 0);
  EXPECT_TRUE(empty->Bof());
  EXPECT_TRUE(empty->Eof());
  EXPECT_KAVRIN_ERROR(empty->MoveLast(), errors::kNoCurrentRecord);
  EXPECT_KAVRIN_ERROR(empty->Fields()(u"cRdCode").Value(), errors::kNoCurrentRecord);

  auto one = db->OpenQuery(u"Rd_Style", 2);
  EXPECT_EQ(one->RecordCount(), 1);
  EXPECT_FALSE(one->Bof());
  EXPECT_FALSE(one->Eof());
  one->MoveLast();
  one->MoveFirst();
  EXPECT_EQ(one->RecordCount(), 1);
  EXPECT_EQ(Code(*one), u"1");
  one->MoveNext();
  EXPECT_TRUE(one->Eof());
  EXPECT_FALSE(one->Bof());
  EXPECT_KAVRIN_ERROR(Code(*one), errors::kNoCurrentRecord);
  EXPECT_KAVRIN_ERROR(one->MoveNext(), errors::kNoCurrentRecord);
  one->Close();
  EXPECT_KAVRIN_ERROR(one->RecordCount(), errors::kObjectClosed);
}

TEST(KitRecordset, FieldsAreFoundWithoutRegardToCaseAndShareTheAdoRow) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue) VALUES ('AA', 'x', '2'), ('AA', 'y', "
      "'3')");
  auto rs = suite.Open()->OpenQuery(u"SELECT * FROM AccInformation", 2);
  EXPECT_EQ(rs->Fields()(u"cvalue").Value(), Variant(u"2"));
  EXPECT_EQ(rs->Fields()(u"CVALUE").Value(), rs->Fields()(u"cValue").Value());
  rs->MoveNext();
  EXPECT_EQ(rs->AdoRecordset()->Fields()(u"cValue").Value(), Variant(u"3"));
  EXPECT_KAVRIN_ERROR(rs->Fields()(u"cNoSuch"), errors::kItemNotFound);
  EXPECT_KAVRIN_ERROR(rs->Fields()(42), errors::kItemNotFound);
}

TEST(KitRecordset, FieldNamesOfAWholeRowAreTheTablesSpelling) {
  if (testing::OnPostgres()) GTEST_SKIP() << "PostgreSQL keeps unquoted names in lower case only";
  SuiteDb suite;
  suite.Exec("INSERT INTO AccInformation (cSysID, cName) VALUES ('AA', 'x')");
  auto rs = suite.Open()->OpenQuery(u"SELECT * FROM AccInformation", 2);
  EXPECT_EQ(rs->Fields()(0).Name(), u"cSysID");
  EXPECT_EQ(rs->Fields()(3).Name(), u"cValue");
}

TEST(KitRecordset, FindFirstComparesAsTheColumnDoesAndHonoursTheEndFlag) {
  SuiteDb suite;
  suite.Exec(
      "INSERT INTO Rd_Style (cRdCode, cRdName, bRdEnd) VALUES"
      " ('1', 'In', 0), ('11', 'Purchase', 1), ('12', 'purchase', 0), ('13', 'Purchase', 1)");
  auto rs = suite.Open()->OpenQuery(u"Rd_Style", 2);
  rs->MoveLast();
  rs->MoveFirst();
  rs->FindFirst(u"cRdName='PURCHASE  '");
  EXPECT_FALSE(rs->NoMatch());
  EXPECT_EQ(Code(*rs), u"11");
  rs->FindFirst(u"cRdName='purchase' AND bRdEnd=1");
  EXPECT_EQ(Code(*rs), u"11");
  rs->FindFirst(u"cRdCode='12' AND bRdEnd=1");
  EXPECT_TRUE(rs->NoMatch());
  EXPECT_EQ(Code(*rs), u"11") << "a failed find leaves the position";
  rs->FindFirst(u"cRdCode='1'");
  EXPECT_EQ(Code(*rs), u"1") << "the search starts from the first row";
  EXPECT_KAVRIN_ERROR(rs->FindFirst(u"cRdCode='O'Brien'"), 3077);
  EXPECT_KAVRIN_ERROR(rs->FindFirst(u"cNoSuch='1'"), 3070);
}

TEST(KitRecordset, DefaultOneBehavesAsEmpty) {
  KitRecordset rs;
  EXPECT_EQ(rs.RecordCount(), 0);
  EXPECT_TRUE(rs.Bof());
  EXPECT_TRUE(rs.Eof());
  EXPECT_NO_THROW(rs.Close());
  EXPECT_NO_THROW(rs.Close());
}

TEST(KitDatabase, UnconnectedFailsEveryUseWith3709) {
  KitDatabase db;
  EXPECT_FALSE(db.IsConnected());
  EXPECT_KAVRIN_ERROR(db.OpenQuery(u"Inventory", 2), errors::kNoConnection);
  EXPECT_KAVRIN_ERROR(db.Connection(), errors::kNoConnection);
  ado::Recordset rs;
  EXPECT_KAVRIN_ERROR(rs.Open(u"select 1", nullptr), errors::kNoConnection);
}

TEST(KitDatabase, TraceSeesEveryTextAsPassedAndEngineErrorsComeThrough) {
  SuiteDb suite;
  auto db = suite.Open();
  QueryTrace trace(*db);
  db->OpenQuery(u"Inventory", 2);
  ado::Recordset direct;
  direct.Open(u"select cInvName as name from Inventory where cInvCode='01'", db->Connection());
  EXPECT_EQ(direct.RecordCount(), -1) << "a server cursor does not count";
  EXPECT_KAVRIN_ERROR(db->OpenQuery(u"NoSuchTable", 2), errors::kProviderNoTable);
  EXPECT_KAVRIN_ERROR(db->OpenQuery(u"select * from inventory where cinvcode='a'b'", 2),
                      errors::kProviderSyntax);
  EXPECT_EQ(trace.texts(),
            (std::vector<String>{u"Inventory",
                                 u"select cInvName as name from Inventory where cInvCode='01'",
                                 u"NoSuchTable", u"select * from inventory where cinvcode='a'b'"}));
}

}  // namespace
}  // namespace kavrin
