// Creating a suite database: the tables clsPub reads, with the server's types
// and collations, and optionally a small sample company to try it on.
#pragma once

#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

// Creates the suite's tables at `connection_string` ("sqlite:PATH" or a .db
// path, the file being created; or "odbc:..." naming an existing database on
// a server) and, with `with_demo_data`, fills them with the sample company.
// On PostgreSQL the tables come with what makes the suite's SQL run there
// unchanged, and setting them up needs a superuser. Throws Error when the
// database cannot be opened or already holds any of the tables.
KAVRIN_API void CreateSuiteDatabase(StringView connection_string, bool with_demo_data);

}  // namespace kavrin
