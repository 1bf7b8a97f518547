// A database server reached through ODBC: failures carry the driver's
// diagnostics under a provider number, and no wait is unbounded.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "db/Driver.h"
#include "db/odbc/OdbcConnection.h"
#include "kavrin/Error.h"
#include "support/ErrorExpect.h"
#include "support/SuiteDb.h"

namespace kavrin {
namespace {

using testing::OnPostgres;
using testing::SuiteDb;
using Clock = std::chrono::steady_clock;

constexpr const char* kNoServer = "about a database server, and SQLite is a file";

// The error `call` throws (failing the test when it throws none).
template <typename Call>
Error ErrorFrom(Call call) {
  try {
    call();
  } catch (const Error& e) {
    return e;
  }
  ADD_FAILURE() << "no error";
  return Error(0, u"", u"");
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// A loopback port that accepts connections and never answers them.
class SilentListener {
 public:
  SilentListener() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (socket_ < 0 || ::bind(socket_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::listen(socket_, 8) != 0 ||
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
      throw std::runtime_error("cannot listen on loopback");
    }
    port_ = ntohs(address.sin_port);
  }
  ~SilentListener() { ::close(socket_); }
  int port() const { return port_; }

 private:
  int socket_;
  int port_ = 0;
};

String ConnectionTo(int port) {
  return u"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + FromUtf8(std::to_string(port)) +
         u";UID=postgres;Database=postgres";
}

TEST(Server, ErrorsCarryTheDriversDiagnostics) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  SuiteDb suite;
  auto c = db::Open(suite.ConnectionString());
  EXPECT_EQ(c->Engine(), u"odbc");
  EXPECT_EQ(c->Dbms(), u"PostgreSQL");
  const Error no_table = ErrorFrom([&] { c->Query(u"select * from NoSuchTable"); });
  EXPECT_EQ(no_table.number(), errors::kProviderNoTable);
  EXPECT_EQ(no_table.source(), u"Kavrin.ODBC");
  EXPECT_NE(no_table.description().find(u"nosuchtable"), String::npos) << no_table.what();
  EXPECT_NE(no_table.description().find(u"(SQLSTATE 42P01)"), String::npos) << no_table.what();
  const Error no_column = ErrorFrom([&] { c->Query(u"select cSCName from VendorClass"); });
  EXPECT_EQ(no_column.number(), errors::kProviderSyntax);
  EXPECT_NE(no_column.description().find(u"(SQLSTATE 42703)"), String::npos) << no_column.what();
  EXPECT_KAVRIN_ERROR(c->Query(u"select * from Code where cCode='0'1'"), errors::kProviderSyntax);
  // The connection is still good after each refusal.
  EXPECT_NO_THROW(c->Query(u"select * from Code"));
}

TEST(Server, ALostSessionFailsEveryCallCleanly) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  SuiteDb suite;
  suite.Exec("INSERT INTO Code (cCode, cCode_Name) VALUES ('1403', 'Raw materials')");
  auto c = db::Open(suite.ConnectionString());
  auto cursor = c->Query(u"select cCode_Name from Code");
  ASSERT_TRUE(cursor->Next());
  suite.DropSessions();
  const auto start = Clock::now();
  const Error lost = ErrorFrom([&] { c->Query(u"select cCode_Name from Code"); });
  EXPECT_EQ(lost.number(), errors::kProviderFailure) << lost.what();
  EXPECT_FALSE(lost.description().empty());
  EXPECT_KAVRIN_ERROR(c->Query(u"select 1"), errors::kProviderFailure);
  EXPECT_LT(SecondsSince(start), 5.0);
  EXPECT_EQ(cursor->Value(0), Variant(u"Raw materials")) << "rows already read stay readable";
  auto again = db::Open(suite.ConnectionString());
  EXPECT_NO_THROW(again->Query(u"select cCode_Name from Code"));
}

TEST(Server, OpeningFailsCleanlyAndInBoundedTime) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  int closed_port = 0;
  {
    SilentListener taken;  // a port that was free a moment ago and is closed again
    closed_port = taken.port();
  }
  auto start = Clock::now();
  EXPECT_KAVRIN_ERROR(db::Open(u"odbc:" + ConnectionTo(closed_port)), errors::kProviderFailure);
  EXPECT_KAVRIN_ERROR(db::Open(testing::ServerConnectionString("no_such_database")),
                      errors::kProviderFailure);
  EXPECT_KAVRIN_ERROR(db::Open(u"odbc:Driver={No Such Driver};Server=127.0.0.1"),
                      errors::kProviderFailure);
  EXPECT_KAVRIN_ERROR(db::Open(u"odbc:DSN=no_such_dsn"), errors::kProviderFailure);
  EXPECT_LT(SecondsSince(start), 5.0);

  // A server that takes the connection and never answers: the login timeout.
  SilentListener silent;
  db::odbc::Timeouts timeouts;
  timeouts.login_seconds = 2;
  start = Clock::now();
  EXPECT_KAVRIN_ERROR(db::odbc::Connect(ConnectionTo(silent.port()), false, timeouts),
                      errors::kProviderFailure);
  EXPECT_GT(SecondsSince(start), 1.5);
  EXPECT_LT(SecondsSince(start), 10.0);
}

TEST(Server, AStatementThatRunsTooLongTimesOut) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  SuiteDb suite;
  db::odbc::Timeouts timeouts;
  timeouts.query_seconds = 1;
  auto connection_string = suite.ConnectionString().substr(5);  // without "odbc:"
  auto c = db::odbc::Connect(connection_string, false, timeouts);
  const auto start = Clock::now();
  EXPECT_KAVRIN_ERROR(c->Query(u"select pg_sleep(20)"), errors::kProviderTimeout);
  EXPECT_LT(SecondsSince(start), 10.0);
  EXPECT_NO_THROW(c->Query(u"select 1")) << "the connection stays usable";
}

TEST(Server, SetupScriptsRunStatementByStatement) {
  if (!OnPostgres()) GTEST_SKIP() << kNoServer;
  SuiteDb suite;
  auto setup = db::OpenForSetup(suite.ConnectionString());
  setup->ExecuteScript(
      u"INSERT INTO Code (cCode) VALUES ('a;b'); -- a comment; with a semicolon\n"
      u"INSERT INTO Code (cCode) VALUES ($$c';d$$);");
  EXPECT_KAVRIN_ERROR(setup->ExecuteScript(u"INSERT INTO Code (cCode) VALUES ('e'); nonsense;"),
                      errors::kProviderSyntax);
  auto c = db::Open(suite.ConnectionString());
  auto cursor = c->Query(u"select cCode from Code");
  std::vector<Variant> codes;
  while (cursor->Next())
    codes.push_back(cursor->Value(0));
  EXPECT_EQ(codes, (std::vector<Variant>{u"a;b", u"c';d", u"e"}))
      << "statements before the failing one stay";
  EXPECT_KAVRIN_ERROR(c->ExecuteScript(u"DELETE FROM Code"), errors::kProviderSyntax);
}

}  // namespace
}  // namespace kavrin
