// Creating a suite database: the tables clsPub reads, with the server's types
// and collations, and optionally a small sample company to try it on.
#pragma once

#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

// Creates the suite's tables at `connection_string` ("sqlite:PATH" or a .db
// path; the file is created) and, with `with_demo_data`, fills them with the
// sample company. Throws Error when the database cannot be opened or already
// holds any of the tables.
KAVRIN_API void CreateSuiteDatabase(StringView connection_string, bool with_demo_data);

}  // namespace kavrin
