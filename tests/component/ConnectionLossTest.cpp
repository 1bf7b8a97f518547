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

using Clock = std::chrono::steady_clock;

#ifdef KAVRIN_PG_SERVER_SCRIPT
// A server of the test's own, started and stopped with the harness's script.
class PrivateServer {
 public:
  PrivateServer() { Start(); }
  ~PrivateServer() { Stop(); }

  void Start() {
    Run("start");
    std::ifstream in(state_);
    for (std::string line; std::getline(in, line);)
      if (line.rfind("port=", 0) == 0) port_ = line.substr(5);
    if (port_.empty()) throw std::runtime_error("the private server did not start");
    db::OpenForSetup(ConnectionString("postgres"))->ExecuteScript(u"CREATE DATABASE suite");
    CreateSuiteDatabase(ConnectionString("suite"), /*with_demo_data=*/true);
  }
  void Stop() { Run("stop"); }

  String ConnectionString(const std::string& database) const {
    return FromUtf8("odbc:Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + port_ +
                    ";UID=postgres;Database=" + database);
  }

 private:
  void Run(const std::string& command) {
    const std::string line =
        std::string(KAVRIN_PG_SERVER_SCRIPT) + " " + command + " " + state_ + " >/dev/null 2>&1";
    if (std::system(line.c_str()) != 0)
      throw std::runtime_error("server.sh " + command + " failed");
  }

  testing::TempDir dir_;
  std::string state_ = dir_.path() + "/server.state";
  std::string port_;
};

#endif  // KAVRIN_PG_SERVER_SCRIPT

void ExpectWorking(clsPub& pub) {
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");
  EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
}

void ExpectLost(clsPub& pub) {
  const auto start = Clock::now();
  try {
    pub.GetAccInfo(u"AA", u"cGoodClass");
    ADD_FAILURE() << "the call succeeded on a lost connection";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderFailure) << e.what();
    EXPECT_EQ(e.source(), u"Kavrin.ODBC");
    EXPECT_FALSE(e.description().empty());
  }
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"") << "the trapping members answer their default";
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode", u"010101", u"iInvRCost", u"Inventory"),
                      errors::kProviderFailure);
  EXPECT_LT(std::chrono::duration<double>(Clock::now() - start).count(), 10.0);
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
  pub.DBIA(KitDatabase::Open(server.ConnectionString("suite")));
  server.Stop();
  ExpectLost(pub);
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(server.ConnectionString("suite")),
                      errors::kProviderFailure);
  server.Start();
  pub.DBIA(KitDatabase::Open(server.ConnectionString("suite")));
  ExpectWorking(pub);
#endif
}

}  // namespace
}  // namespace kavrin
