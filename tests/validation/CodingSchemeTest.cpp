// CodeGrade2Length and GetCodeLen over coding schemes.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using CodingScheme = testing::ComponentTest;

TEST_F(CodingScheme, GradeLengthsAddUpTheSchemeDigits) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
      " ('AA', 'cGoodClass', '223', NULL), ('IA', 'cGoodClass', '999', NULL)");
  const int16_t expected[] = {0, 2, 4, 7, 7, 7};
  for (int16_t grade = 0; grade <= 5; ++grade) {
    EXPECT_EQ(pub_.CodeGrade2Length(grade, 7), expected[grade]) << "grade " << grade;
  }
  EXPECT_EQ(pub_.CodeGrade2Length(-3, 7), 0);
  EXPECT_EQ(pub_.CodeGrade2Length(300, 7), 7);
  EXPECT_EQ(Sent().size(), 8u) << "one settings query per call, grade 0 and below included";
  EXPECT_EQ(Sent().back(),
            u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='cGoodClass'");
}

TEST_F(CodingScheme, EachGradedArchiveHasItsOwnSetting) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
      " ('AA', 'cDispLevel', '1', NULL), ('AA', 'cSettleLevel', '2', NULL),"
      " ('AA', 'cGoodClass', '3', NULL), ('AA', 'cProvClass', '4', NULL),"
      " ('AA', 'cCustClass', '5', NULL), ('AA', 'cDepLevel', '6', NULL),"
      " ('AA', 'cGradeLevel', '7', NULL), ('AA', 'cCostobj', '8', NULL)");
  const std::pair<int16_t, const char16_t*> settings[] = {
      {4, u"cDispLevel"}, {6, u"cSettleLevel"}, {7, u"cGoodClass"},   {8, u"cProvClass"},
      {9, u"cCustClass"}, {12, u"cDepLevel"},   {15, u"cGradeLevel"}, {22, u"cCostobj"}};
  int16_t digit = 1;
  for (const auto& [type, name] : settings) {
    EXPECT_EQ(pub_.CodeGrade2Length(1, type), digit++) << "type " << type;
    EXPECT_EQ(Sent().back(),
              u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='" + String(name) + u"'");
  }

  ClearSent();
  for (int16_t type : {-1, 0, 1, 2, 3, 5, 10, 11, 13, 14, 16, 21, 23}) {
    EXPECT_EQ(pub_.CodeGrade2Length(32766, type), 0) << "type " << type;
  }
  EXPECT_TRUE(Sent().empty()) << "no setting is read for other archive types";
}

TEST_F(CodingScheme, GradeLengthsReadEachCharacterLeniently) {
  Exec(
      "INSERT INTO AccInformation (cSysID, cName, cValue, cDefault) VALUES"
      " ('AA', 'cGoodClass', '2x3', NULL), ('AA', 'cDepLevel', NULL, ' 23'),"
      " ('AA', 'cProvClass', NULL, NULL)");
  EXPECT_EQ(pub_.CodeGrade2Length(1, 7), 2);
  EXPECT_EQ(pub_.CodeGrade2Length(2, 7), 2);
  EXPECT_EQ(pub_.CodeGrade2Length(3, 7), 5);
  EXPECT_EQ(pub_.CodeGrade2Length(1, 12), 0) << "the untrimmed default's blank counts 0";
  EXPECT_EQ(pub_.CodeGrade2Length(3, 12), 5);
  EXPECT_EQ(pub_.CodeGrade2Length(4, 8), 0) << "value and default both Null";
  EXPECT_EQ(pub_.CodeGrade2Length(4, 9), 0) << "no setting row";
}

TEST_F(CodingScheme, GradeCountersOverflowPast32767) {
  Exec("INSERT INTO AccInformation (cSysID, cName, cValue) VALUES ('AA', 'cGoodClass', '223')");
  EXPECT_EQ(pub_.CodeGrade2Length(32766, 7), 7);
  EXPECT_KAVRIN_ERROR(pub_.CodeGrade2Length(32767, 7), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(pub_.CodeGrade2Length(32767, 0), errors::kOverflow);

  clsPub unconnected;  // the settings query fails, and so does the call
  EXPECT_KAVRIN_ERROR(unconnected.CodeGrade2Length(1, 7), errors::kNoConnection);
  EXPECT_EQ(unconnected.CodeGrade2Length(1, 5), 0);
}

TEST_F(CodingScheme, CodeLengthReadsEveryCharacterStrictly) {
  EXPECT_EQ(pub_.GetCodeLen(u""), 0);
  EXPECT_EQ(pub_.GetCodeLen(u"223"), 7);
  EXPECT_EQ(pub_.GetCodeLen(u"0000000009"), 9);
  for (const char16_t* scheme : {u"2x3", u"2 3", u" 22", u"22 ", u"2.3", u"+2", u"2-", u"2,3"}) {
    EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(scheme), errors::kTypeMismatch);
  }
  EXPECT_EQ(pub_.GetCodeLen(String(32766, u'1')), 32766);
  // The character counter steps past 32767; a long enough sum gets there first.
  EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(String(32767, u'0')), errors::kOverflow);
  EXPECT_KAVRIN_ERROR(pub_.GetCodeLen(String(3641, u'9')), errors::kOverflow);
  EXPECT_TRUE(Sent().empty());
}

}  // namespace
}  // namespace kavrin
