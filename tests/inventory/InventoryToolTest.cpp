// The inventory members from a shell, through the kavrin host: list, array
// and message box arguments as JSON.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/SuiteDb.h"

#ifdef KAVRIN_TOOL_PATH

namespace kavrin {
namespace {

using ::testing::HasSubstr;

// The answer of `kavrin call --db DB ARGS` on the demo company.
std::string Call(const testing::SuiteDb& suite, const std::string& args) {
  const std::string command = std::string(KAVRIN_TOOL_PATH) + " call --db '" +
                              ToUtf8(suite.ConnectionString()) + "' " + args + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    out.append(buffer, n);
  pclose(pipe);
  return out;
}

TEST(InventoryTool, ListsArraysAndMessagesComeBackAsJson) {
  const testing::SuiteDb suite(/*demo=*/true);
  EXPECT_EQ(Call(suite, "FillCboCK '{\"$list\":[\"old\"]}' 03"),
            "{\"ok\":true,\"result\":{\"type\":\"Empty\"},\"args\":["
            "{\"type\":\"Object\",\"value\":{\"items\":[\"02             成品库\"]}},"
            "{\"type\":\"String\",\"value\":\"03\"}]}\n");

  const std::string array =
      Call(suite,
           "GetInvUseFreeNew 020101 '{\"$array\":[false,false,false,false,false,false,false,"
           "false,false,false],\"$lbound\":0,\"$type\":\"Boolean\"}'");
  EXPECT_THAT(array, HasSubstr("{\"type\":\"Array\",\"value\":{\"lbound\":0,\"items\":["
                               "{\"type\":\"Boolean\",\"value\":true},{\"type\":\"Boolean\","
                               "\"value\":true},{\"type\":\"Boolean\",\"value\":false},"));
  EXPECT_THAT(
      Call(suite, "GetInvUseFreeNew 020101 '{\"$array\":[1,2,3,4,5,6,7,8,9,10],\"$lbound\":1}'"),
      HasSubstr("\"number\":9"));

  const std::string message = Call(suite, "InvCodeIsTorF 999999 bSale");
  EXPECT_THAT(message, HasSubstr("\"result\":{\"type\":\"Boolean\",\"value\":false}"));
  EXPECT_THAT(message, HasSubstr("\"messages\":[{\"prompt\":\"该存货没有找到！\",\"buttons\":0,"
                                 "\"title\":\"Kavrin\"}]"));
}

}  // namespace
}  // namespace kavrin

#endif  // KAVRIN_TOOL_PATH
