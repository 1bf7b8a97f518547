// kavrin: the command-line host of clsPub (see Help.cpp for what it does).
#include <unistd.h>

#include <filesystem>
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
  bool force = false;
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
    } else if (accepted.demo && arg == "--force") {
      options.force = true;
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

// Creates the suite's tables in an existing database on a server; the
// server's transaction leaves nothing behind when a table exists already.
void InitServerDb(const Options& options) {
  if (options.force)
    throw UsageError("--force replaces a SQLite file; on a server, drop the tables");
  try {
    CreateSuiteDatabase(FromUtf8(options.positional[0]), options.demo);
  } catch (const Error& e) {
    throw DatabaseError("cannot create the suite's tables in " + Masked(options.positional[0]) +
                        ": " + e.what());
  }
}

// Creates a new SQLite file. The database is built beside it under a
// temporary name and moved into place only when complete, so a failure
// leaves no file, or the file that was there, as it was.
void InitFileDb(const Options& options) {
  namespace fs = std::filesystem;
  const std::string& given = options.positional[0];
  std::string file = given.starts_with("sqlite:") ? given.substr(7) : given;
  // A switch after the path belongs to the connection, not to the file's name.
  if (const auto at = file.rfind("?statement_cache="); at != std::string::npos) file.resize(at);
  const fs::path path = file;
  std::error_code error;
  if (fs::exists(fs::symlink_status(path, error)) && !options.force) {
    throw DatabaseError(path.string() +
                        " exists already; init-db creates a new database: remove it, "
                        "or pass --force to replace it");
  }
  fs::path building = path;
  building += ".init-" + std::to_string(getpid());
  fs::remove(building, error);
  try {
    CreateSuiteDatabase(FromUtf8("sqlite:" + building.string()), options.demo);
    fs::rename(building, path);
  } catch (const std::exception& e) {
    fs::remove(building, error);
    throw DatabaseError("cannot create the database " + path.string() + ": " + e.what());
  }
}

int InitDb(const Options& options) {
  if (options.positional.size() != 1) throw UsageError("init-db needs one PATH");
  if (options.positional[0].starts_with("odbc:")) {
    InitServerDb(options);
  } else {
    InitFileDb(options);
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
  } catch (const kavrin::tool::DatabaseError& e) {
    std::cerr << "kavrin: " << e.what() << "\n";
    return kavrin::tool::kUsage;
  } catch (const kavrin::tool::UsageError& e) {
    std::cerr << "kavrin: " << e.what() << "\nRun `kavrin --help` for the commands.\n";
    return kavrin::tool::kUsage;
  }
}
