// The kavrin shell's request lines, read and answered exactly as the shell
// does: every line, however malformed, gets one answer that is a JSON object
// with a Boolean "ok", and an answer that can be written out; a failed call
// carries a known error number.
#include "FuzzSupport.h"
#include "Session.h"

using namespace kavrin;
using json = nlohmann::ordered_json;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // One session for the whole run, as the shell keeps one for its input.
  static tool::Session session(fuzz::Fixture::Get().path, /*trace=*/true);
  std::string_view input(reinterpret_cast<const char*>(data), size);
  // One request per line, blank lines skipped, as the shell reads them.
  while (!input.empty()) {
    const std::string line(input.substr(0, input.find('\n')));
    input.remove_prefix(std::min(input.size(), line.size() + 1));
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const json answer = session.Request(line);
    FUZZ_CHECK(answer.is_object() && answer.contains("ok") && answer["ok"].is_boolean(), line);
    const std::string written = answer.dump();  // an answer that cannot be written ends the run
    FUZZ_CHECK(json::parse(written) == answer, line);
    FUZZ_CHECK(written.find('\n') == std::string::npos, "one answer per line");
    if (answer["ok"].get<bool>()) {
      FUZZ_CHECK(answer.contains("result") && answer.contains("args"), line);
    } else if (answer.contains("usage")) {
      FUZZ_CHECK(answer["usage"].is_string(), line);
    } else {
      FUZZ_CHECK(answer.contains("error") && answer["error"]["number"].is_number_integer(), line);
      const json& error = answer["error"];
      FUZZ_CHECK(fuzz::IsCataloguedError(Error(error["number"].get<int32_t>(),
                                               FromUtf8(error["source"].get<std::string>()), {})),
                 written);
      FUZZ_CHECK(answer.contains("args") && answer["args"].is_array(), line);
    }
  }
  FUZZ_CHECK(fuzz::Fixture::Get().DirectoryHoldsOnlyTheDatabase(), "nothing is written");
  return 0;
}
