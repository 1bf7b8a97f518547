// The inventory members from a shell, through the kavrin host.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "support/SuiteDb.h"

#ifdef KAVRIN_TOOL_PATH

namespace kavrin {
namespace {

struct ToolRun {
  std::string out;
  int status;
};

// Runs `kavrin call --db DB ARGS` on the demo company.
class InventoryTool : public ::testing::Test {
 protected:
  ToolRun Call(const std::string& args) {
    const std::string command = std::string(KAVRIN_TOOL_PATH) + " call --db '" +
                                ToUtf8(suite_.ConnectionString()) + "' " + args + " 2>/dev/null";
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

  testing::SuiteDb suite_{/*demo=*/true};
};

bool Has(const ToolRun& run, const std::string& part) {
  return run.out.find(part) != std::string::npos;
}

TEST_F(InventoryTool, FillCboCKShowsTheListAfterTheCall) {
  const ToolRun run = Call("FillCboCK '{\"$list\":[\"old\"]}' 03");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "{\"ok\":true,\"result\":{\"type\":\"Empty\"},\"args\":["
            "{\"type\":\"Object\",\"value\":{\"items\":[\"02             成品库\"]}},"
            "{\"type\":\"String\",\"value\":\"03\"}]}\n");
  const ToolRun not_a_list = Call("FillCboCK cbo");
  EXPECT_EQ(not_a_list.status, 1);
  EXPECT_TRUE(Has(not_a_list, "\"number\":13")) << not_a_list.out;
}

TEST_F(InventoryTool, GetInvUseFreeNewFillsTheArrayArgument) {
  const ToolRun run = Call(
      "GetInvUseFreeNew 020101 '{\"$array\":[false,false,false,false,false,false,false,false,"
      "false,false],\"$lbound\":0,\"$type\":\"Boolean\"}'");
  EXPECT_EQ(run.status, 0);
  const std::string t = "{\"type\":\"Boolean\",\"value\":true}";
  const std::string f = "{\"type\":\"Boolean\",\"value\":false}";
  EXPECT_TRUE(Has(run, "{\"type\":\"Array\",\"value\":{\"lbound\":0,\"items\":[" + t + "," + t +
                           "," + f + "," + f + "," + f + "," + f + "," + f + "," + f + "," + f +
                           "," + t + "]}}"))
      << run.out;

  const ToolRun one_based =
      Call("GetInvUseFreeNew 020101 '{\"$array\":[1,2,3,4,5,6,7,8,9,10],\"$lbound\":1}'");
  EXPECT_EQ(one_based.status, 1);
  EXPECT_TRUE(Has(one_based, "\"number\":9")) << one_based.out;
}

TEST_F(InventoryTool, InvCodeIsTorFReportsItsMessage) {
  const ToolRun run = Call("InvCodeIsTorF 999999 bSale");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Has(run, "\"result\":{\"type\":\"Boolean\",\"value\":false}")) << run.out;
  EXPECT_TRUE(Has(run,
                  "\"messages\":[{\"prompt\":\"该存货没有找到！\",\"buttons\":0,"
                  "\"title\":\"Kavrin\"}]"))
      << run.out;
}

TEST_F(InventoryTool, OutputArgumentsAndAttributesAnswer) {
  const ToolRun heads = Call("GetInvDifHead 02 0201 020101 x y");
  EXPECT_EQ(heads.status, 0);
  EXPECT_TRUE(Has(heads,
                  "{\"type\":\"String\",\"value\":\"1405\"},"
                  "{\"type\":\"String\",\"value\":\"1404\"}]"))
      << heads.out;
  const ToolRun free = Call("GetInvUseFree 010101 false true");
  EXPECT_TRUE(Has(free,
                  "{\"type\":\"Boolean\",\"value\":true},"
                  "{\"type\":\"Boolean\",\"value\":false}]"))
      << free.out;

  EXPECT_TRUE(Has(Call("InvCodeToUnitPrice 010202"), "\"value\":18.75"));
  EXPECT_TRUE(Has(Call("InvCodeToUnit 010202"), "\"value\":\"副\""));
  EXPECT_TRUE(Has(Call("InvCodeToClass 010202"), "\"value\":\"0102\""));
  EXPECT_TRUE(Has(Call("InvIsBatch 010202"), "\"result\":{\"type\":\"Boolean\",\"value\":true}"));
  EXPECT_TRUE(Has(Call("WhCodeToValueStyle 03"), "\"value\":\"个别计价法\""));
  EXPECT_TRUE(Has(Call("WhCodeToDep 03"), "\"value\":\"0201\""));
  EXPECT_TRUE(Has(Call("DepCodeToValueStyle 0201"), "\"value\":\"个别计价法\""));
  EXPECT_TRUE(Has(Call("DepCode2WhCode 03"), "\"value\":\"02\""));
}

}  // namespace
}  // namespace kavrin

#endif  // KAVRIN_TOOL_PATH
