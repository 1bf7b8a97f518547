// clsPub when the database server goes away under it: every call that reaches
// the database fails with the kit's numbered error (or answers its trapped
// default), nothing hangs, and a DBIA opened afresh works again.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "db/Driver.h"
#include "kavrin/Schema.h"
#include "kavrin/clsPub.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

#ifdef KAVRIN_PG_SERVER_SCRIPT
// A server of the test's own, started and stopped with the harness's script,
// holding the demo company in its database "suite".
struct PrivateServer {
  PrivateServer() { Start(); }
  ~PrivateServer() { Run("stop"); }
  void Run(const std::string& command) {
    const std::string line =
        std::string(KAVRIN_PG_SERVER_SCRIPT) + " " + command + " " + state + " >/dev/null 2>&1";
    if (std::system(line.c_str()) != 0)
      throw std::runtime_error("server.sh " + command + " failed");
  }
  void Start() {
    Run("start");
    std::ifstream in(state);
    for (std::string line; std::getline(in, line);)
      if (line.rfind("port=", 0) == 0) port = line.substr(5);
    db::OpenForSetup(At("postgres"))->ExecuteScript(u"CREATE DATABASE suite");
    CreateSuiteDatabase(At("suite"), /*with_demo_data=*/true);
  }
  String At(const std::string& database) const {
    return FromUtf8("odbc:Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + port +
                    ";UID=postgres;Database=" + database);
  }
  testing::TempDir dir;
  std::string state = dir.path() + "/server.state", port;
};
#endif  // KAVRIN_PG_SERVER_SCRIPT

void ExpectWorking(clsPub& pub) {
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");
  EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
}

void ExpectLost(clsPub& pub) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"cGoodClass"), errors::kProviderFailure);
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"") << "the trapping members answer their default";
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode", u"010101", u"iInvRCost", u"Inventory"),
                      errors::kProviderFailure);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(ConnectionLoss, CallsFailCleanlyWhileTheSessionOrServerIsGoneAndWorkOnAReopenedDbia) {
  if (!testing::OnPostgres()) GTEST_SKIP() << "a SQLite file has no server connection to lose";
  testing::SuiteDb suite(/*demo=*/true);
  clsPub pub;
  pub.DBIA(suite.Open());
  auto cursor = db::Open(suite.ConnectionString())->Query(u"select cInvCode from Inventory");
  ASSERT_TRUE(cursor->Next());
  ExpectWorking(pub);
  // A session ended by the server.
  suite.DropSessions();
  ExpectLost(pub);
  EXPECT_EQ(cursor->Value(0), Variant(u"010101")) << "rows already read stay readable";
  pub.DBIA(suite.Open());
  ExpectWorking(pub);

#ifdef KAVRIN_PG_SERVER_SCRIPT
  // The server stopped, and started again.
  PrivateServer server;
  pub.DBIA(KitDatabase::Open(server.At("suite")));
  server.Run("stop");
  ExpectLost(pub);
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(server.At("suite")), errors::kProviderFailure);
  server.Start();
  pub.DBIA(KitDatabase::Open(server.At("suite")));
  ExpectWorking(pub);
#endif
}

}  // namespace
}  // namespace kavrin
