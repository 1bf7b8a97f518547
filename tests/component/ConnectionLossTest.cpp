// clsPub when the database server goes away under it: every call that reaches
// the database fails with the kit's numbered error (or answers its trapped
// default), nothing hangs, and a DBIA opened afresh works again.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>

#include "db/Driver.h"
#include "kavrin/Schema.h"
#include "kavrin/clsPub.h"
#include "support/ComponentTest.h"
#include "support/ErrorExpect.h"

namespace kavrin {
namespace {

using testing::OnPostgres;
using Clock = std::chrono::steady_clock;

constexpr const char* kNoServer = "a SQLite file has no server connection to lose";

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

class ConnectionLoss : public testing::ComponentTest {
 protected:
  void SetUp() override {
    if (!OnPostgres()) GTEST_SKIP() << kNoServer;
    Exec(
        "INSERT INTO Inventory (cInvCode, cInvName) VALUES ('01', 'Steel plate');"
        "INSERT INTO AccInformation (cSysID, cName, cValue) VALUES ('AA', 'cGoodClass', '22');");
  }
};

TEST_F(ConnectionLoss, ASessionEndedByTheServerFailsCallsUntilDbiaIsReopened) {
  ASSERT_EQ(pub_.CodeToName(u"01", 0), u"Steel plate");
  suite_.DropSessions();

  const auto start = Clock::now();
  try {
    pub_.GetAccInfo(u"AA", u"cGoodClass");
    ADD_FAILURE() << "the call succeeded on a lost connection";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), errors::kProviderFailure) << e.what();
    EXPECT_EQ(e.source(), u"Kavrin.ODBC");
    EXPECT_FALSE(e.description().empty());
  }
  EXPECT_EQ(pub_.CodeToName(u"01", 0), u"") << "the trapping members answer their default";
  EXPECT_KAVRIN_ERROR(pub_.FromTo(u"cInvCode", u"01", u"cInvName", u"Inventory"),
                      errors::kProviderFailure);
  EXPECT_LT(SecondsSince(start), 5.0);

  pub_.DBIA(suite_.Open());
  EXPECT_EQ(pub_.CodeToName(u"01", 0), u"Steel plate");
  EXPECT_EQ(pub_.GetAccInfo(u"AA", u"cGoodClass"), u"22");
}

#ifdef KAVRIN_PG_SERVER_SCRIPT

// A server of the test's own, started and stopped with the harness's script.
class PrivateServer {
 public:
  PrivateServer() { Start(); }
  ~PrivateServer() { Stop(); }

  void Start() {
    Run("start");
    std::ifstream in(state_);
    std::string line;
    while (std::getline(in, line)) {
      if (line.rfind("port=", 0) == 0) port_ = line.substr(5);
    }
    if (port_.empty()) throw std::runtime_error("the private server did not start");
    db::OpenForSetup(ConnectionString("postgres"))->ExecuteScript(u"CREATE DATABASE suite");
    CreateSuiteDatabase(ConnectionString("suite"), /*with_demo_data=*/true);
  }
  void Stop() { Run("stop"); }

  String ConnectionString(const std::string& database) const {
    return FromUtf8("odbc:Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + port_ +
                    ";UID=postgres;Database=" + database + "");
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

TEST(ServerStop, CallsFailCleanlyWhileTheServerIsDownAndWorkOnAReopenedDbia) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  PrivateServer server;
  clsPub pub;
  pub.DBIA(KitDatabase::Open(server.ConnectionString("suite")));
  ASSERT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");

  server.Stop();
  const auto start = Clock::now();
  EXPECT_KAVRIN_ERROR(pub.GetAccInfo(u"AA", u"cGoodClass"), errors::kProviderFailure);
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"");
  EXPECT_KAVRIN_ERROR(pub.FromTo(u"cInvCode", u"010101", u"iInvRCost", u"Inventory"),
                      errors::kProviderFailure);
  EXPECT_KAVRIN_ERROR(KitDatabase::Open(server.ConnectionString("suite")),
                      errors::kProviderFailure);
  EXPECT_LT(SecondsSince(start), 10.0);

  server.Start();
  pub.DBIA(KitDatabase::Open(server.ConnectionString("suite")));
  EXPECT_EQ(pub.CodeToName(u"010101", 0), u"刨花板 18mm");
  EXPECT_EQ(pub.GetAccInfo(u"AA", u"cGoodClass"), u"223");
}

#endif  // KAVRIN_PG_SERVER_SCRIPT

}  // namespace
}  // namespace kavrin
