// clsPub when the database server ends its session: every call that reaches
// the database fails with the kit's numbered error (or answers its trapped
// default), nothing hangs, and a DBIA opened afresh works again.
#include <gtest/gtest.h>

#include <chrono>

#include "db/Driver.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

TEST(ConnectionLoss, CallsFailCleanlyOnceTheSessionIsEndedAndWorkOnAReopenedDbia) {
  if (!testing::OnPostgres()) GTEST_SKIP() << "a SQLite file has no server connection to lose";
  testing::SuiteDb suite(/*demo=*/true);
  clsPub pub;
  pub.DBIA(suite.Open());
  auto cursor = db::Open(suite.ConnectionString())->Query(u"select cInvCode from Inventory");
  ASSERT_TRUE(cursor->Next());
  ASSERT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
  // A whole archive read by key: each later read is a statement of its own.
  auto db = suite.Open();
  auto table = db->OpenQuery(u"Inventory", 2);
  suite.DropSessions();

  const auto start = std::chrono::steady_clock::now();
  EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"cGoodClass"), errors::kProviderFailure,
                      sources::kOdbc);
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"") << "the trapping members answer their default";
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode", u"010101", u"iInvRCost", u"Inventory"),
                      errors::kProviderFailure, sources::kOdbc);
  EXPECT_EQ(table->Fields()(u"cInvCode").Value(), Variant(u"010101")) << "its first row is read";
  EXPECT_KAVRIN_ERROR(table->MoveNext(), errors::kProviderFailure, sources::kOdbc);
  EXPECT_KAVRIN_ERROR(table->FindFirst(u"cInvName='x'"), errors::kProviderFailure, sources::kOdbc);
  EXPECT_KAVRIN_ERROR(table->RecordCount(), errors::kProviderFailure, sources::kOdbc);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(cursor->Value(0), Variant(u"010101")) << "rows already read stay readable";

  pub.DBIA(suite.Open());
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");
  EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
}

}  // namespace
}  // namespace kavrin
