#include "Help.h"

namespace kavrin::tool {

const std::string_view kOverviewHelp =
    R"(kavrin: call the clsPub component of the inventory entry forms from a shell.

usage: kavrin call [--db CONN] [--trace] METHOD [ARG ...]
       kavrin shell [--db CONN] [--trace]
       kavrin init-db PATH [--demo] [--force]
       kavrin methods [--json]
       kavrin --version | --help | help COMMAND

commands:
  call      call one member on a fresh clsPub and print one JSON answer
  shell     answer JSON requests, one per line, on one clsPub object
  init-db   create a suite database (the tables clsPub reads), optionally with a demo company
  methods   list clsPub's members in order, with parameters and result types

CONN is sqlite:PATH or a path ending in .db or .sqlite (opened read-only), or
odbc:CONNECTION-STRING where the ODBC driver is built. Compiled statements are
kept per connection; sqlite:PATH?statement_cache=off (or KavrinStatementCache=0;
in an ODBC string) compiles every text where it is run, with the same answers.

Exit status: 0 when the call succeeded, 1 when it failed (the answer carries
the error's number, source and description, and "detail" when there is more
to say), 2 for a usage error or a database that cannot be opened or created
(the message says what failed).
Run `kavrin help COMMAND` for the details of a command.
)";

namespace {

constexpr std::string_view kCallHelp =
    R"(usage: kavrin call [--db CONN] [--trace] METHOD [ARG ...]

Calls METHOD (letter case ignored) on a fresh clsPub whose DBIA is opened from
CONN, and prints one JSON object:
  {"ok":true,"result":V,"args":[V,...]}
  {"ok":false,"error":{"number":N,"source":"...","description":"..."},"args":[V,...]}
The description is the platform's text for the number. The error adds
"detail" when there is more to say: the member asked for that does not exist
(and the nearest one), or which argument could not be read and the type its
parameter takes; for `kavrin call CodeToName 010101 -1`:
  "error":{"detail":"argument 2 of CodeToName (Style As Byte) cannot take the
  Long -1","number":6,"source":"Kavrin","description":"Overflow"}
It adds "hint" when the call failed with 3709 because no --db was given.
"args" shows every argument after the call, so writes into by-reference
arguments are visible. Each V is {"type":T,"value":...} with T one of Empty,
Null, Integer, Long, Byte, Double, Boolean, Date, String, Object, Array, Missing.
With --trace the answer adds "sql": the texts sent to the database, in order.
Message boxes shown during the call are added as "messages".

Each ARG is read as JSON when it parses as JSON, and as plain text otherwise:
  01          the text "01"            0      the number 0 (a Long)
  '"0"'       the text "0"             1.5    a Double
  true        a Boolean                null   Null
  -1          a number, not an option  --     ends the options
and these objects stand for the other values:
  {"$missing":true}        an omitted argument
  {"$empty":true}          Empty
  {"$date":"2026-01-31T00:00:00"}                     a Date
  {"$array":[...],"$lbound":0,"$type":"Boolean"}      an array (type Variant when not given)
  {"$list":["a","b"]}      a list control with Clear and AddItem
  {"$dao":"PATH"}          a desktop database opened from a SQLite file
  {"$nothing":true}        an empty object reference
Trailing optional arguments may simply be left out.

examples:
  kavrin call --db demo.db --trace CodeToName 010101 0
  kavrin call --db demo.db SepCode '01 Steel'
  kavrin call --db demo.db FillCboCK '{"$list":[]}'
  kavrin call FormatNum 1234.5
)";

constexpr std::string_view kShellHelp =
    R"(usage: kavrin shell [--db CONN] [--trace]

Reads one JSON request per line from standard input,
  {"method": "CheckDirNoGrade", "args": ["010101", 0]}
and answers each with one JSON line, as `kavrin call` does, on one clsPub
object for the whole session (so the lookup record set of the archive checks
carries over from call to call, as it does in a form). Arguments are JSON
values: strings stay strings ("01" is the text 01), and the "$" objects of
`kavrin help call` stand for the other values. A line that cannot be read is
answered {"ok":false,"usage":"..."} and the session goes on. Blank lines are
skipped; the session ends at the end of the input.
)";

constexpr std::string_view kInitDbHelp =
    R"(usage: kavrin init-db PATH [--demo] [--force]

Creates a suite database holding the tables clsPub reads, with the server's
types and collations (text compares without regard to case, trailing blanks
ignored). PATH is a SQLite file to create (sqlite: prefix optional), or
odbc:CONNECTION-STRING to create the tables in an existing database on a
server (on PostgreSQL this needs a superuser). With
--demo the tables are filled with a small sample company (an office-furniture
maker with three warehouses).

A SQLite PATH that exists already is refused (exit 2) unless --force is
given, which replaces it. The file is built under a temporary name beside
PATH and moved into place only when complete: a failure leaves no file, or
the old one untouched. On a server, a database that holds any of the tables
already is refused (exit 2) and left as it was.
)";

constexpr std::string_view kMethodsHelp =
    R"(usage: kavrin methods [--json]

Lists clsPub's members in the fixed order of its interface: number, name,
parameters (name, type, [optional], "ByRef out" where the member writes into
the argument) and result type. With --json the list is printed as JSON.
)";

}  // namespace

std::string_view CommandHelp(std::string_view command) {
  if (command == "call") return kCallHelp;
  if (command == "shell") return kShellHelp;
  if (command == "init-db") return kInitDbHelp;
  if (command == "methods") return kMethodsHelp;
  return {};
}

}  // namespace kavrin::tool
