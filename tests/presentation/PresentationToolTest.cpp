// The presentation helpers called from a shell through the kavrin host.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#ifdef KAVRIN_TOOL_PATH

namespace kavrin {
namespace {

struct Answer {
  std::string out;
  int status;
};

// Runs `kavrin call` with `args` (shell words), no database.
Answer KavrinCall(const std::string& args) {
  const std::string command = std::string(KAVRIN_TOOL_PATH) + " call " + args + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  Answer answer{"", -1};
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
    answer.out.append(buffer, n);
  const int status = pclose(pipe);
  answer.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return answer;
}

TEST(PresentationTool, FormatsAndReadsAmounts) {
  const Answer shown = KavrinCall("FormatNum 1234.5");
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.out,
            "{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"1,234.50\"},"
            "\"args\":[{\"type\":\"Double\",\"value\":1234.5}]}\n");
  const Answer decimals = KavrinCall("FormatNum1 1234.5678 3");
  EXPECT_NE(decimals.out.find("\"value\":\"1,234.568\""), std::string::npos) << decimals.out;
  const Answer negative = KavrinCall("FormatNum1 5 -1");
  EXPECT_EQ(negative.status, 1);
  EXPECT_NE(negative.out.find("\"number\":5"), std::string::npos) << negative.out;
  const Answer read = KavrinCall("ReFormat 1,234.50");
  EXPECT_EQ(read.status, 0);
  EXPECT_NE(read.out.find("\"result\":{\"type\":\"Double\",\"value\":1234.5}"), std::string::npos)
      << read.out;
}

TEST(PresentationTool, SepCodeShowsTheRewrittenEntryInItsArgs) {
  const Answer code = KavrinCall("SepCode '01 Steel'");
  EXPECT_EQ(code.status, 0);
  EXPECT_EQ(code.out,
            "{\"ok\":true,\"result\":{\"type\":\"String\",\"value\":\"01\"},"
            "\"args\":[{\"type\":\"String\",\"value\":\" 01 Steel\"}]}\n");
  const Answer name = KavrinCall("SepCode '01 Steel' true");
  EXPECT_NE(name.out.find("\"value\":\"Steel\"},\"args\":[{\"type\":\"String\",\"value\":\"01 "
                          "Steel\"}"),
            std::string::npos)
      << name.out;
}

TEST(PresentationTool, TextSelectedFindsNoFormInTheDefaultHost) {
  const Answer answer = KavrinCall("TextSelected");
  EXPECT_EQ(answer.status, 1);
  EXPECT_NE(answer.out.find("\"number\":91"), std::string::npos) << answer.out;
}

}  // namespace
}  // namespace kavrin

#endif  // KAVRIN_TOOL_PATH
