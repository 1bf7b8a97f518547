// kavrin: the command-line host of clsPub (see Help.cpp for what it does).
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "Help.h"
#include "JsonValues.h"
#include "Methods.h"
#include "Session.h"
#include "kavrin/Error.h"
#include "kavrin/Schema.h"

namespace kavrin::tool {
namespace {

constexpr int kUsage = 2;

struct Options {
  std::optional<std::string> db;
  bool trace = false;
  bool demo = false;
  bool json = false;
  bool help = false;
  std::vector<std::string> positional;
};

bool LooksLikeNegativeNumber(const std::string& arg) {
  return arg.size() > 1 && arg[0] == '-' &&
         (std::isdigit(static_cast<unsigned char>(arg[1])) || (arg[1] == '.' && arg.size() > 2));
}

// Reads the options of a subcommand; throws UsageError for an unknown one.
struct Accepted {
  bool db = false;
  bool demo = false;
  bool json = false;
};

Options ParseOptions(const std::vector<std::string>& args, Accepted accepted) {
  Options options;
  bool options_done = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (options_done || arg.empty() || arg[0] != '-' || arg == "-" ||
        LooksLikeNegativeNumber(arg)) {
      options.positional.push_back(arg);
    } else if (arg == "--") {
      options_done = true;
    } else if (arg == "--help" || arg == "-h") {
      options.help = true;
    } else if (accepted.db && arg == "--db") {
      if (i + 1 >= args.size()) throw UsageError("--db needs a connection string");
      options.db = args[++i];
    } else if (accepted.db && arg.rfind("--db=", 0) == 0) {
      options.db = arg.substr(5);
    } else if (accepted.db && arg == "--trace") {
      options.trace = true;
    } else if (accepted.demo && arg == "--demo") {
      options.demo = true;
    } else if (accepted.json && arg == "--json") {
      options.json = true;
    } else {
      throw UsageError("unknown option " + arg);
    }
  }
  return options;
}

int Call(const Options& options) {
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

int Shell(const Options& options) {
  if (!options.positional.empty()) throw UsageError("shell takes no METHOD");
  Session session(options.db, options.trace);
  std::string line;
  while (std::getline(std::cin, line)) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::cout << session.Request(line).dump() << std::endl;
  }
  return 0;
}

int InitDb(const Options& options) {
  if (options.positional.size() != 1) throw UsageError("init-db needs one PATH");
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

int ListMethods(const Options& options) {
  if (!options.positional.empty()) throw UsageError("methods takes no arguments");
  std::cout << (options.json ? MethodsAsJson() : MethodsAsText());
  return 0;
}

struct Command {
  const char* name;
  Accepted accepted;
  int (*run)(const Options&);
};

constexpr Command kCommands[] = {
    {"call", {.db = true}, Call},
    {"shell", {.db = true}, Shell},
    {"init-db", {.demo = true}, InitDb},
    {"methods", {.json = true}, ListMethods},
};

int Main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) throw UsageError("a command is needed");
  const std::string name = args[0];
  args.erase(args.begin());
  if (name == "--version" || name == "version") {
    std::cout << "kavrin " << KAVRIN_VERSION << "\n";
    return 0;
  }
  if (name == "--help" || name == "-h" || name == "help") {
    const std::string_view help = args.empty() ? kOverviewHelp : CommandHelp(args[0]);
    if (help.empty()) throw UsageError("no help for " + args[0]);
    std::cout << help;
    return 0;
  }
  for (const Command& command : kCommands) {
    if (name != command.name) continue;
    const Options options = ParseOptions(args, command.accepted);
    if (options.help) {
      std::cout << CommandHelp(name);
      return 0;
    }
    return command.run(options);
  }
  throw UsageError("unknown command " + name);
}

}  // namespace
}  // namespace kavrin::tool

int main(int argc, char** argv) {
  try {
    return kavrin::tool::Main(argc, argv);
  } catch (const kavrin::tool::UsageError& e) {
    std::cerr << "kavrin: " << e.what() << "\nRun `kavrin --help` for the commands.\n";
    return kavrin::tool::kUsage;
  }
}
