// The kavrin host from a shell: its JSON answers and exit status.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "support/SuiteDb.h"

#ifdef KAVRIN_TOOL_PATH

namespace kavrin {
namespace {

struct ToolRun {
  std::string out;
  int status;
};

// Runs kavrin with `args` (shell words) and `input` on its standard input.
ToolRun Kavrin(const std::string& args, const std::string& input = "") {
  testing::TempDir dir;
  const std::string in_path = dir.path() + "/in";
  std::ofstream(in_path) << input;
  const std::string command =
      std::string(KAVRIN_TOOL_PATH) + " " + args + " < " + in_path + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  ToolRun run{"", -1};
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
    run.out.append(buffer, n);
  const int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

class KavrinTool : public ::testing::Test {
 protected:
  testing::SuiteDb suite_{/*demo=*/true};
  std::string db_ = "--db '" + ToUtf8(suite_.ConnectionString()) + "'";
};

TEST_F(KavrinTool, CallPrintsOneJsonAnswerWithTheTracedSql) {
  const ToolRun run = Kavrin("call " + db_ + " --trace CodeToName 010101 0");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"刨花板 18mm\"},"
            "\"args\":[{\"type\":\"String\",\"value\":\"010101\"},{\"type\":\"Long\",\"value\":0}],"
            "\"sql\":[\"select cInvName as name from Inventory where cInvCode='010101'\"]}\n");
}

TEST_F(KavrinTool, ArgumentsAreJsonWhenTheyParseAndTextOtherwise) {
  const ToolRun quoted =
      Kavrin("call " + db_ + " FromTo cInvCode '\"010101\"' iInvRCost Inventory");
  EXPECT_EQ(quoted.status, 0);
  EXPECT_NE(quoted.out.find("\"result\":{\"type\":\"Double\",\"value\":86.5}"), std::string::npos)
      << quoted.out;
  const ToolRun negative = Kavrin("call " + db_ + " CodeToName 010101 -1");
  EXPECT_EQ(negative.status, 1) << "-1 is a number argument, and no Byte";
  EXPECT_NE(negative.out.find("{\"type\":\"Long\",\"value\":-1}"), std::string::npos);
  EXPECT_NE(negative.out.find("\"number\":6"), std::string::npos) << negative.out;
}

TEST_F(KavrinTool, ShellAnswersEachRequestOnOneObject) {
  const ToolRun run = Kavrin("shell " + db_,
                             "{\"method\":\"GetAccInfo\",\"args\":[\"AA\",\"cGoodClass\"]}\n"
                             "not json\n"
                             "{\"method\":\"NoSuchMember\",\"args\":[]}\n");
  EXPECT_EQ(run.status, 0);
  const std::string expected_first =
      "{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"223\"},";
  EXPECT_EQ(run.out.substr(0, expected_first.size()), expected_first);
  EXPECT_NE(run.out.find("\"usage\":\"unreadable request"), std::string::npos);
  EXPECT_NE(run.out.find("\"number\":438"), std::string::npos);
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3);
}

TEST_F(KavrinTool, ShellAnswersALineThatIsNotUtf8AndGoesOn) {
  const ToolRun run = Kavrin("shell " + db_,
                             "{\"method\":\"FormatNum\",\"args\":[\"\xff\"]}\n"
                             "{\"method\":\"SepCode\",\"args\":[\"a\xc3\"]}\n"
                             "{\"method\":\"GetAccInfo\",\"args\":[\"AA\",\"cGoodClass\"]}\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3) << run.out;
  EXPECT_NE(run.out.find("\"usage\":\"unreadable request"), std::string::npos);
  EXPECT_NE(run.out.find("\xEF\xBF\xBD"), std::string::npos) << "the byte shows as U+FFFD";
  EXPECT_NE(run.out.find("{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"223\"}"),
            std::string::npos)
      << run.out;
}

TEST_F(KavrinTool, DaoArgumentsOpenADesktopDatabase) {
  if (testing::OnPostgres()) GTEST_SKIP() << "a desktop database is a SQLite file on every engine";
  // The suite database serves as a desktop database too: its tables are
  // table definitions, and it holds no stored query.
  const std::string dao = "'{\"$dao\":\"" + suite_.path() + "\"}'";
  const ToolRun table = Kavrin("call ExistTableQueryDAO " + dao + " inventory");
  EXPECT_EQ(table.status, 0);
  EXPECT_EQ(table.out,
            "{\"ok\":true,\"result\":{\"type\":\"Boolean\",\"value\":true},\"args\":["
            "{\"type\":\"Object\",\"value\":{\"typeName\":\"Database\",\"name\":\"" +
                suite_.path() + "\"}},{\"type\":\"String\",\"value\":\"inventory\"}]}\n");
  const ToolRun query = Kavrin("call ExistTableQueryDAO " + dao + " Inventory true");
  EXPECT_NE(query.out.find("\"result\":{\"type\":\"Boolean\",\"value\":false}"), std::string::npos)
      << query.out;
  const ToolRun nothing = Kavrin("call ExistTableQueryDAO '{\"$nothing\":true}' Inventory");
  EXPECT_NE(nothing.out.find("\"result\":{\"type\":\"Boolean\",\"value\":true}"), std::string::npos)
      << nothing.out;
  EXPECT_EQ(Kavrin("call ExistTableQueryDAO '{\"$dao\":\"/no/such/dir/x.db\"}' T").status, 2);
  EXPECT_EQ(Kavrin("call ExistTableQueryDAO '{\"$dao\":1}' T").status, 2);
}

TEST_F(KavrinTool, HelpAndTheMemberListAreThereToDiscover) {
  const ToolRun methods = Kavrin("methods");
  EXPECT_EQ(methods.status, 0);
  EXPECT_EQ(std::count(methods.out.begin(), methods.out.end(), '\n'), 40);
  EXPECT_NE(
      methods.out.find("11  SepCode(ByRef out Code As String, [bName As Variant]) As String\n"),
      std::string::npos);
  EXPECT_NE(Kavrin("methods --json").out.find("\"name\": \"GetCodeLen\""), std::string::npos);
  for (const char* help : {"--help", "help call", "call --help", "help shell", "init-db -h"}) {
    const ToolRun run = Kavrin(help);
    EXPECT_EQ(run.status, 0) << help;
    EXPECT_EQ(run.out.rfind("usage:", 0) == 0 || run.out.rfind("kavrin:", 0) == 0, true) << help;
  }
  EXPECT_EQ(Kavrin("help frobnicate").status, 2);
}

TEST(KavrinToolInitDb, CreatesTheSuiteWhereTheConnectionStringSays) {
  const auto blank = testing::SuiteDb::Blank();
  const std::string db = "'" + ToUtf8(blank->ConnectionString()) + "'";
  const ToolRun created = Kavrin("init-db " + db + " --demo");
  EXPECT_EQ(created.status, 0);
  EXPECT_EQ(created.out,
            "created " + ToUtf8(blank->ConnectionString()) + " with the demo company\n");
  const ToolRun call = Kavrin("call --db " + db + " GetAccInfo AA cGoodClass");
  EXPECT_EQ(call.status, 0);
  EXPECT_NE(call.out.find("\"result\":{\"type\":\"String\",\"value\":\"223\"}"), std::string::npos)
      << call.out;
  EXPECT_EQ(Kavrin("init-db " + db).status, 2) << "the tables exist already";
}

TEST_F(KavrinTool, UsageErrorsExitWithTwo) {
  EXPECT_EQ(Kavrin("call --bogus CodeToName 01 0").status, 2);
  EXPECT_EQ(Kavrin("call --db /no/such/dir/x.db CodeToName 01 0").status, 2);
  EXPECT_EQ(Kavrin("call " + db_ + " CodeToName '{\"$what\":1}' 0").status, 2);
  EXPECT_EQ(Kavrin("frobnicate").status, 2);
}

}  // namespace
}  // namespace kavrin

#endif  // KAVRIN_TOOL_PATH
