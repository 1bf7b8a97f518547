// kavrin: the command-line host of clsPub.
//
//   kavrin call [--db CONN] [--trace] METHOD [ARG ...]
//   kavrin shell [--db CONN] [--trace]
//   kavrin init-db PATH|CONN [--demo]
//
// Answers are JSON; exit status 0 for a call that succeeded, 1 for a call
// that failed, 2 for a usage error.
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "JsonValues.h"
#include "Session.h"
#include "kavrin/Error.h"
#include "kavrin/Schema.h"

namespace kavrin::tool {
namespace {

constexpr int kUsage = 2;

const char* const kUsageText =
    "usage: kavrin call [--db CONN] [--trace] METHOD [ARG ...]\n"
    "       kavrin shell [--db CONN] [--trace]\n"
    "       kavrin init-db PATH|CONN [--demo]\n"
    "       kavrin --version | --help\n"
    "\n"
    "CONN is sqlite:PATH or a path ending in .db or .sqlite (opened read-only),\n"
    "or odbc:CONNECTION-STRING for a database server reached through ODBC.\n"
    "Each ARG is read as JSON when it parses as JSON, else as plain text:\n"
    "01 is the text \"01\", 0 the number 0, '\"0\"' the text \"0\".\n";

struct Options {
  std::optional<std::string> db;
  bool trace = false;
  bool demo = false;
  std::vector<std::string> positional;
};

bool LooksLikeNegativeNumber(const std::string& arg) {
  return arg.size() > 1 && arg[0] == '-' &&
         (std::isdigit(static_cast<unsigned char>(arg[1])) || (arg[1] == '.' && arg.size() > 2));
}

// Reads the options of a subcommand; throws UsageError for an unknown one.
Options ParseOptions(const std::vector<std::string>& args, bool takes_db, bool takes_demo) {
  Options options;
  bool options_done = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (options_done || arg.empty() || arg[0] != '-' || arg == "-" ||
        LooksLikeNegativeNumber(arg)) {
      options.positional.push_back(arg);
    } else if (arg == "--") {
      options_done = true;
    } else if (takes_db && arg == "--db") {
      if (i + 1 >= args.size()) throw UsageError("--db needs a connection string");
      options.db = args[++i];
    } else if (takes_db && arg.rfind("--db=", 0) == 0) {
      options.db = arg.substr(5);
    } else if (takes_db && arg == "--trace") {
      options.trace = true;
    } else if (takes_demo && arg == "--demo") {
      options.demo = true;
    } else {
      throw UsageError("unknown option " + arg);
    }
  }
  return options;
}

int Call(const std::vector<std::string>& args) {
  Options options = ParseOptions(args, true, false);
  if (options.positional.empty()) throw UsageError("call needs a METHOD");
  Session session(options.db, options.trace);
  std::vector<Variant> arguments;
  for (size_t i = 1; i < options.positional.size(); ++i) {
    arguments.push_back(ArgumentFromCommandLine(options.positional[i]));
  }
  const auto answer = session.Call(options.positional[0], arguments);
  std::cout << answer.dump() << "\n";
  return answer.at("ok").get<bool>() ? 0 : 1;
}

int Shell(const std::vector<std::string>& args) {
  Options options = ParseOptions(args, true, false);
  if (!options.positional.empty()) throw UsageError("shell takes no METHOD");
  Session session(options.db, options.trace);
  std::string line;
  while (std::getline(std::cin, line)) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::cout << session.Request(line).dump() << std::endl;
  }
  return 0;
}

int InitDb(const std::vector<std::string>& args) {
  Options options = ParseOptions(args, false, true);
  if (options.positional.size() != 1) throw UsageError("init-db needs one PATH or CONN");
  std::string target = options.positional[0];
  if (target.rfind("sqlite:", 0) != 0 && target.rfind("odbc:", 0) != 0) target = "sqlite:" + target;
  try {
    CreateSuiteDatabase(FromUtf8(target), options.demo);
  } catch (const Error& e) {
    std::cerr << "kavrin: cannot create the database: " << e.what() << "\n";
    return kUsage;
  }
  std::cout << "created " << options.positional[0] << (options.demo ? " with the demo company" : "")
            << "\n";
  return 0;
}

int Main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) throw UsageError("a command is needed");
  const std::string command = args[0];
  args.erase(args.begin());
  if (command == "--version" || command == "version") {
    std::cout << "kavrin " << KAVRIN_VERSION << "\n";
    return 0;
  }
  if (command == "--help" || command == "-h" || command == "help") {
    std::cout << kUsageText;
    return 0;
  }
  if (command == "call") return Call(args);
  if (command == "shell") return Shell(args);
  if (command == "init-db") return InitDb(args);
  throw UsageError("unknown command " + command);
}

}  // namespace
}  // namespace kavrin::tool

int main(int argc, char** argv) {
  try {
    return kavrin::tool::Main(argc, argv);
  } catch (const kavrin::tool::UsageError& e) {
    std::cerr << "kavrin: " << e.what() << "\n" << kavrin::tool::kUsageText;
    return kavrin::tool::kUsage;
  }
}
