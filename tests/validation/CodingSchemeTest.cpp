// The lengths of codes that the archives' coding schemes give.
#include <gtest/gtest.h>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using Texts = std::vector<String>;
using CodingScheme = testing::ComponentTest;

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

}  // namespace
}  // namespace kavrin
