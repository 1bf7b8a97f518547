// A database server reached through ODBC: failures carry the driver's
// diagnostics under a provider number, and no wait is unbounded. (A session
// lost under a connection is tested with the component.)
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <tuple>

#include "db/Driver.h"
#include "db/odbc/OdbcConnection.h"
#include "kavrin/Error.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using namespace std::chrono_literals;
using testing::OnPostgres;
using Clock = std::chrono::steady_clock;

constexpr const char* kNoServer = "about a database server, and SQLite is a file";

// A loopback port that takes connections and never answers them: the
// socket (to close) and an ODBC connection string to it.
std::pair<int, String> SilentPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  EXPECT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), length), 0);
  EXPECT_EQ(::listen(fd, 8), 0);
  EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length), 0);
  return {fd, u"Driver={PostgreSQL Unicode};Server=127.0.0.1;UID=postgres;Port=" +
                  FromUtf8(std::to_string(ntohs(address.sin_port)))};
}

TEST(Server, FailuresCarryDiagnosticsNoWaitIsUnboundedAndSetupScriptsRunOneByOne) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  testing::SuiteDb suite;
  auto c = db::odbc::Connect(suite.ConnectionString().substr(5),  // without "odbc:"
                             false, db::odbc::Timeouts{.query_seconds = 1});
  EXPECT_EQ(c->Engine() + u"/" + c->Dbms(), u"odbc/PostgreSQL");
  // The number, and the server's message with its SQLSTATE.
  for (const auto& [sql, number, message] :
       {std::tuple{u"select * from NoSuchTable", errors::kProviderNoTable, u"nosuchtable"},
        std::tuple{u"select cSCName from VendorClass", errors::kProviderSyntax,
                   u"(SQLSTATE 42703)"},
        std::tuple{u"select * from Code where cCode='0'1'", errors::kProviderSyntax, u"syntax"}}) {
    try {
      c->Query(sql);
      ADD_FAILURE() << ToUtf8(sql);
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), number) << e.what();
      EXPECT_EQ(e.source(), sources::kOdbc);
      EXPECT_NE(e.description().find(message), String::npos) << e.what();
    }
  }
  auto start = Clock::now();
  EXPECT_KAVRIN_ERROR(c->Query(u"select pg_sleep(20)"), errors::kProviderTimeout, sources::kOdbc);
  EXPECT_LT(Clock::now() - start, 10s);
  EXPECT_NO_THROW(c->Query(u"select 1")) << "the connection stays usable";
  // A table read by key (its first rows read when opened) waits no longer
  // than a statement: here for a lock another session holds on it, at each
  // later read.
  auto table = c->OpenTable(u"Code");
  ASSERT_NE(table, nullptr);
  auto locker = db::OpenForSetup(suite.ConnectionString());
  locker->ExecuteScript(u"BEGIN; LOCK TABLE Code IN ACCESS EXCLUSIVE MODE");
  start = Clock::now();
  EXPECT_KAVRIN_ERROR(table->Rows(0)->Next(), errors::kProviderTimeout, sources::kOdbc);
  EXPECT_KAVRIN_ERROR(table->Last()->Next(), errors::kProviderTimeout, sources::kOdbc);
  EXPECT_KAVRIN_ERROR(table->Count(), errors::kProviderTimeout, sources::kOdbc);
  EXPECT_LT(Clock::now() - start, 10s);
  locker.reset();
  EXPECT_FALSE(table->Rows(std::nullopt)->Next()) << "and reads once the lock is gone";

  // A setup script runs statement by statement; those before a failing one stay.
  EXPECT_KAVRIN_ERROR(db::OpenForSetup(suite.ConnectionString())
                          ->ExecuteScript(u"INSERT INTO Code (cCode) VALUES ('a;b'); -- a; b\n"
                                          u"INSERT INTO Code (cCode) VALUES ($$c';d$$), ('e');"
                                          u"nonsense; INSERT INTO Code (cCode) VALUES ('f')"),
                      errors::kProviderSyntax, sources::kOdbc);
  EXPECT_EQ(c->Count(u"select 1 from Code where cCode in ('a;b', 'c'';d', 'e')"), 3);
  EXPECT_EQ(c->Count(u"select 1 from Code"), 3);
  EXPECT_KAVRIN_ERROR(c->ExecuteScript(u"DELETE FROM Code"), errors::kProviderSyntax,
                      sources::kOdbc);

  // A server that takes the connection and never answers: the login timeout.
  const auto [silent, silent_server] = SilentPort();
  start = Clock::now();
  EXPECT_KAVRIN_ERROR(
      db::odbc::Connect(silent_server, false, db::odbc::Timeouts{.login_seconds = 2}),
      errors::kProviderFailure, sources::kOdbc);
  // The driver counts the login timeout in whole seconds of the clock, so two
  // seconds end somewhere after the first full second has passed.
  EXPECT_GT(Clock::now() - start, 900ms);
  EXPECT_LT(Clock::now() - start, 10s);
  // Opening fails cleanly and in bounded time: the same port closed again, no
  // such database, driver or data source.
  ::close(silent);
  start = Clock::now();
  for (const String& target :
       {u"odbc:" + silent_server, testing::ServerConnectionString("no_such_database"),
        String(u"odbc:Driver={No Such Driver};Server=127.0.0.1"), String(u"odbc:DSN=no_such_dsn")})
    EXPECT_KAVRIN_ERROR(db::Open(target), errors::kProviderFailure, sources::kOdbc);
  EXPECT_LT(Clock::now() - start, 5s);
}

}  // namespace
}  // namespace kavrin
