// The inventory and difference heads of an item in a warehouse: five settings
// tried from the most specific to the most general.
#include <gtest/gtest.h>

#include <vector>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

// The inventory head and the difference head.
using Pair = std::pair<String, String>;

const String kSchemeQuery =
    u"SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='cGoodClass'";

// The five settings in the order they are tried, for warehouse `wh`, class
// `cls` and item `inv`.
std::vector<String> Settings(const String& wh, const String& cls, const String& inv) {
  const String select = u" Select cInvHead,cDifHead from IA_HeadSet Where ";
  return {
      select + u"  cwhcode='" + wh + u" '  And cinvcode=substring('" + inv +
          u"',1, len(cInvCode)) ",
      select + u" cwhcode is null and  cinvcode=substring('" + inv + u"',1, len(cInvCode)) ",
      select + u"  cwhcode='" + wh + u" '  And cinvccode=substring('" + cls +
          u"',1, len(cinvccode)) ",
      select + u"  cwhcode is null and cinvccode=substring('" + cls + u"',1, len(cinvccode)) ",
      select + u"  cinvcode is null and cwhcode='" + wh + u"'",
  };
}

// The scheme query, then the first `tried` settings.
std::vector<String> Sequence(const String& wh, const String& cls, const String& inv, size_t tried) {
  std::vector<String> texts{kSchemeQuery};
  const auto settings = Settings(wh, cls, inv);
  texts.insert(texts.end(), settings.begin(), settings.begin() + tried);
  return texts;
}

class DifferenceHeads : public testing::ComponentTest {
 protected:
  DifferenceHeads() {
    Exec(
        "INSERT INTO IA_HeadSet (cWhCode, cInvCode, cInvCCode, cInvHead, cDifHead) VALUES"
        " ('01', '01', NULL, 'A', 'B'),"     // warehouse 01, item prefix 01
        " (NULL, '0101', NULL, 'C', 'D'),"   // any warehouse, item prefix 0101
        " ('02', NULL, '03', 'E', 'F'),"     // warehouse 02, class prefix 03
        " (NULL, NULL, '0301', 'G', 'H'),"   // any warehouse, class prefix 0301
        " ('05', NULL, '99', 'I', NULL);");  // warehouse 05, no item setting
  }

  // Heads found for the item, starting from what a caller held before.
  Pair Heads(const String& wh, const String& cls, const String& inv) {
    ClearSent();
    String head = u"before";
    String dif = u"before";
    pub_.GetInvDifHead(wh, cls, inv, head, dif);
    return {head, dif};
  }
};

TEST_F(DifferenceHeads, TheMostSpecificSettingAnswers) {
  EXPECT_EQ(Heads(u"01", u"0301", u"010105"), Pair(u"A", u"B"))
      << "this warehouse's item setting wins over a longer prefix for any warehouse";
  EXPECT_EQ(Sent(), Sequence(u"01", u"0301", u"010105", 1));

  EXPECT_EQ(Heads(u"02", u"0301", u"010105"), Pair(u"C", u"D"));
  EXPECT_EQ(Sent(), Sequence(u"02", u"0301", u"010105", 2));

  EXPECT_EQ(Heads(u"02", u"0301", u"020202"), Pair(u"E", u"F"))
      << "this warehouse's class setting wins over a longer class prefix";
  EXPECT_EQ(Sent(), Sequence(u"02", u"0301", u"020202", 3));

  EXPECT_EQ(Heads(u"04", u"0301", u"020202"), Pair(u"G", u"H"));
  EXPECT_EQ(Sent(), Sequence(u"04", u"0301", u"020202", 4));

  EXPECT_EQ(Heads(u"05", u"0501", u"020202"), Pair(u"I", u""))
      << "a warehouse row set for another class answers; a Null head is empty";
  EXPECT_EQ(Sent(), Sequence(u"05", u"0501", u"020202", 5));
}

TEST_F(DifferenceHeads, NothingMatchingLeavesTheCallersValues) {
  EXPECT_EQ(Heads(u"06", u"0501", u"020202"), Pair(u"before", u"before"));
  EXPECT_EQ(Sent(), Sequence(u"06", u"0501", u"020202", 5)) << "six queries at most";

  Exec(
      "INSERT INTO IA_HeadSet (cWhCode, cInvCode, cInvHead, cDifHead) VALUES"
      " (NULL, '', 'K', 'L');");
  EXPECT_EQ(Heads(u"06", u"0501", u"020202"), Pair(u"K", u"L"))
      << "an empty item prefix applies to every item";
}

TEST_F(DifferenceHeads, OmittedOutputsReceiveNothing) {
  std::vector<Variant> three{u"01", u"0301", u"010105"};
  pub_.Call(u"GetInvDifHead", three);
  EXPECT_EQ(three.size(), 3u);

  std::vector<Variant> four{u"01", u"0301", u"010105", u"x", Variant::Missing()};
  pub_.Call(u"GetInvDifHead", four);
  EXPECT_EQ(four[3], Variant(u"A"));
  EXPECT_TRUE(four[4].IsMissing());

  String head;
  pub_.GetInvDifHead(u"02", u"0301", u"010105", head);
  EXPECT_EQ(head, u"C");
}

TEST_F(DifferenceHeads, FailuresLeaveTheOutputsAndStopTheSearch) {
  String head = u"before";
  String dif = u"before";
  EXPECT_KAVRIN_ERROR(pub_.GetInvDifHead(u"0'1", u"0301", u"010105", head, dif),
                      errors::kProviderSyntax);
  EXPECT_EQ(head, u"before");
  EXPECT_EQ(dif, u"before");

  // A quote in the class is harmless while an item setting answers first.
  pub_.GetInvDifHead(u"01", u"03'01", u"010105", head, dif);
  EXPECT_EQ(head, u"A");
  head = dif = u"before";
  ClearSent();
  EXPECT_KAVRIN_ERROR(pub_.GetInvDifHead(u"02", u"03'01", u"020202", head, dif),
                      errors::kProviderSyntax);
  EXPECT_EQ(Sent().size(), 4u) << "the scheme, two item settings, the rejected class setting";
  EXPECT_EQ(head, u"before");

  clsPub fresh;  // its default kit is unconnected: the scheme read fails first
  EXPECT_KAVRIN_ERROR(fresh.GetInvDifHead(u"01", u"0301", u"010105", head, dif),
                      errors::kNoConnection);
  EXPECT_EQ(dif, u"before");
}

}  // namespace
}  // namespace kavrin
