// The class frame: DBIA created when first read, kept by init, released
// with the component.
#include <gtest/gtest.h>

#include <memory>

#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

TEST(Lifecycle, DbiaIsCreatedOnFirstReadKeptByInitAndReleasedWithTheComponent) {
  auto pub = std::make_unique<clsPub>();
  const auto first = pub->DBIA();
  ASSERT_NE(first, nullptr);
  pub->init(u"C:\\suite\\books.mdb", u"secret");
  EXPECT_EQ(pub->DBIA(), first) << "kept, whatever init is given";
  EXPECT_FALSE(first->IsConnected());
  // Unconnected, a query fails, unless the member traps every failure.
  EXPECT_KAVRIN_ERROR(pub->GetAccInfo(u"AA", u"cGoodClass"), errors::kNoConnection,
                      sources::kKitDatabase);
  EXPECT_EQ(pub->CodeToName(u"01", 0), u"");
  pub->DBIA(nullptr);
  EXPECT_NE(pub->DBIA(), first);

  testing::SuiteDb suite;
  const auto db = suite.Open();
  pub->DBIA(db);
  pub->init(u"");
  EXPECT_EQ(pub->DBIA(), db);
  EXPECT_EQ(db.use_count(), 2);
  pub.reset();
  EXPECT_EQ(db.use_count(), 1) << "destruction releases the host's object";
}

}  // namespace
}  // namespace kavrin
