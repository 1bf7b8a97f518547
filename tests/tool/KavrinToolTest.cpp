// The kavrin host from a shell: its JSON answers and exit status.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/SuiteDb.h"

#ifdef KAVRIN_TOOL_PATH

namespace kavrin {
namespace {

// Runs kavrin with `args` (shell words) and `input` on its standard input:
// its exit status and what it printed.
// With `messages`, what it wrote on stderr comes after.
std::pair<int, std::string> Kavrin(const std::string& args, const std::string& input = "",
                                   bool messages = false) {
  setenv("KAVRIN_TEST_INPUT", input.c_str(), 1);
  const std::string command = "printf %s \"$KAVRIN_TEST_INPUT\" | " +
                              std::string(KAVRIN_TOOL_PATH) + " " + args +
                              (messages ? " 2>&1" : " 2>/dev/null");
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    out.append(buffer, n);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

// A run's arguments, a fragment of its output and its exit status; a
// fragment that ends in a newline is the whole answer.
using Expected = std::tuple<std::string, std::string, int>;

void ExpectRuns(const std::vector<Expected>& runs) {
  for (const auto& [args, fragment, status] : runs) {
    const auto [got, out] = Kavrin(args);
    EXPECT_EQ(got, status) << args;
    EXPECT_TRUE(fragment.ends_with('\n') ? out == fragment : out.find(fragment) != out.npos)
        << args << "\n"
        << out;
  }
}

class KavrinTool : public ::testing::Test {
 protected:
  testing::SuiteDb suite_{/*demo=*/true};
  std::string db_ = "--db '" + ToUtf8(suite_.ConnectionString()) + "'";
};

TEST_F(KavrinTool, CallAnswersInJsonHelpAndInitDbExitWithTheirStatus) {
  // clang-format off
  ExpectRuns({
      {"call " + db_ + " --trace CodeToName 010101 0",
       R"({"ok":true,"result":{"type":"String","value":"刨花板 18mm"},"args":[)"
       R"({"type":"String","value":"010101"},{"type":"Long","value":0}],)"
       R"("sql":["select cInvName as name from Inventory where cInvCode='010101'"]})" "\n", 0},
      // The presentation members need no database; SepCode's rewrite shows in the args.
      {"call FormatNum 1234.5", R"({"ok":true,"result":{"type":"String","value":"1,234.50"},)"
       R"("args":[{"type":"Double","value":1234.5}]})" "\n", 0},
      {"call SepCode '01 Steel'", R"({"ok":true,"result":{"type":"String","value":"01"},)"
       R"("args":[{"type":"String","value":" 01 Steel"}]})" "\n", 0},
      {"call SepCode '01 Steel' true", R"(Steel"},"args":[{"type":"String","value":"01 Steel")", 0},
      {"call TextSelected", R"("number":91)", 1},  // the default host has no form
      // "010101" is a JSON text, 1,234.50 no JSON and so a text, -1 a number (and no Byte).
      {"call " + db_ + " FromTo cInvCode '\"010101\"' iInvRCost Inventory",
       R"("result":{"type":"Double","value":86.5})", 0},
      {"call ReFormat 1,234.50", R"("result":{"type":"Double","value":1234.5})", 0},
      {"call " + db_ + " CodeToName 010101 -1",
       R"("number":6,"source":"Kavrin","description":"Overflow"},"args":[)"
       R"({"type":"String","value":"010101"},{"type":"Long","value":-1}]})", 1},
      // Help and the member list are there to discover; usage errors exit with 2.
      {"methods", "\n11  SepCode(ByRef out Code As String, [bName As Variant]) As String", 0},
      {"methods --json", R"("name": "GetCodeLen")", 0},
      {"--help", "kavrin:", 0}, {"help call", "usage: kavrin call", 0},
      {"call --help", "usage: kavrin call", 0}, {"init-db -h", "usage: kavrin init-db", 0},
      {"help frobnicate", "", 2}, {"frobnicate", "", 2}, {"call --bogus CodeToName 01 0", "", 2},
      {"call --db /no/such/dir/x.db CodeToName 01 0", "", 2},
      {"call " + db_ + " CodeToName '{\"$what\":1}' 0", "", 2},
  });
  // clang-format on
  const std::string methods = Kavrin("methods").second;
  EXPECT_EQ(std::count(methods.begin(), methods.end(), '\n'), 40);

  // init-db creates the suite where the connection string says.
  const auto blank = testing::SuiteDb::Blank();
  const std::string db = "'" + ToUtf8(blank->ConnectionString()) + "'";
  ExpectRuns({{"init-db " + db + " --demo",
               "created " + ToUtf8(blank->ConnectionString()) + " with the demo company\n", 0},
              {"call --db " + db + " GetAccInfo AA cGoodClass", R"("value":"223"})", 0},
              {"init-db " + db, "", 2}});  // the tables exist already
}

TEST_F(KavrinTool, ShellAnswersEachLineOnOneObjectAndGoesOnAfterUnreadableOnes) {
  const std::string goods_class = "{\"method\":\"GetAccInfo\",\"args\":[\"AA\",\"cGoodClass\"]}\n";
  const auto [status, out] = Kavrin(
      "shell " + db_, goods_class + "not json\n" + "{\"method\":\"NoSuchMember\",\"args\":[]}\n" +
                          "{\"method\":\"SepCode\",\"args\":[\"a\xc3\"]}\n" + goods_class);
  EXPECT_EQ(status, 0);
  // A bad byte shows as U+FFFD in the answer.
  for (const char* fragment : {"\"usage\":\"unreadable request", "\"number\":438", "\xEF\xBF\xBD"})
    EXPECT_NE(out.find(fragment), std::string::npos) << fragment;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 5) << out;
  EXPECT_NE(out.rfind("\n{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"223\"}"),
            std::string::npos)
      << "the last line is answered";
}

// A database init-db cannot create, or a call cannot open, is reported as
// what failed, not as a misuse of the command; a file is never half-written.
TEST_F(KavrinTool, InitDbNeverOverwritesOrHalfWritesAndOpenFailuresSayWhy) {
  if (testing::OnPostgres()) GTEST_SKIP() << "init-db of a SQLite file is the same on every engine";
  const testing::TempDir dir;
  const std::string notes = dir.path() + "/notes.db";
  { std::ofstream(notes) << "not a database"; }
  const auto contents = [](const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const auto [refused, refusal] = Kavrin("init-db " + notes + " --demo", "", true);
  EXPECT_EQ(refused, 2);
  EXPECT_NE(refusal.find(notes + " exists already"), std::string::npos) << refusal;
  EXPECT_NE(refusal.find("--force"), std::string::npos) << refusal;
  EXPECT_EQ(refusal.find("kavrin --help"), std::string::npos) << refusal;
  EXPECT_EQ(contents(notes), "not a database");

  ExpectRuns({{"init-db " + notes + " --demo --force", "created " + notes, 0},
              {"call --db " + notes + " GetAccInfo AA cGoodClass", R"("value":"223"})", 0}});
  // Replacing a folder fails, and leaves the folder and nothing else behind.
  std::filesystem::create_directory(dir.path() + "/folder.db");
  EXPECT_EQ(Kavrin("init-db " + dir.path() + "/folder.db --force").first, 2);
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
    left.push_back(entry.path().filename().string());
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left, (std::vector<std::string>{"folder.db", "notes.db"}));

  const auto [status, message] =
      Kavrin("call --db " + dir.path() + "/none.db CheckInv 01", "", true);
  EXPECT_EQ(status, 2);
  for (const std::string& fragment : std::vector<std::string>{
           "cannot open the database " + dir.path() + "/none.db", "there is no file",
           "kavrin init-db " + dir.path() + "/none.db --demo"})
    EXPECT_NE(message.find(fragment), std::string::npos) << message;
  EXPECT_EQ(message.find("kavrin --help"), std::string::npos) << message;
  // A server's connection string is shown without its password.
  const auto [server_status, server] =
      Kavrin("call --db 'odbc:Driver={None};UID=u;PWD=secret;Server=x' CheckInv 01", "", true);
  EXPECT_EQ(server_status, 2);
  EXPECT_NE(server.find("UID=u;PWD=***;Server=x"), std::string::npos) << server;
  EXPECT_EQ(server.find("secret"), std::string::npos) << server;
}

TEST_F(KavrinTool, DaoArgumentsOpenADesktopDatabase) {
  if (testing::OnPostgres()) GTEST_SKIP() << "a desktop database is a SQLite file on every engine";
  // The suite database serves as a desktop database too: its tables are
  // table definitions, and it holds no stored query.
  const std::string exist = "call ExistTableQueryDAO ";
  const std::string dao = "'{\"$dao\":\"" + suite_.path() + "\"}' ";
  // clang-format off
  ExpectRuns({
      {exist + dao + "inventory",
       R"({"ok":true,"result":{"type":"Boolean","value":true},"args":[{"type":"Object","value":)"
       R"({"typeName":"Database","name":")" + suite_.path() +
       R"("}},{"type":"String","value":"inventory"}]})" "\n", 0},
      {exist + dao + "Inventory true", R"("result":{"type":"Boolean","value":false})", 0},
      {exist + "'{\"$nothing\":true}' Inventory", R"("result":{"type":"Boolean","value":true})", 0},
      {exist + "'{\"$dao\":\"/no/such/dir/x.db\"}' T", "", 2}, {exist + "'{\"$dao\":1}' T", "", 2},
  });
  // clang-format on
}

}  // namespace
}  // namespace kavrin

#endif  // KAVRIN_TOOL_PATH
