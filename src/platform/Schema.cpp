#include "kavrin/Schema.h"

#include <string_view>

#include "db/Driver.h"

namespace kavrin {

namespace schema {
extern const std::string_view kSuiteSql;
extern const std::string_view kPostgresSql;
extern const std::string_view kIndexesSql;
extern const std::string_view kDemoSql;
}  // namespace schema

void CreateSuiteDatabase(StringView connection_string, bool with_demo_data) {
  auto connection = db::OpenForSetup(connection_string);
  // The tables in the server's own terms where it needs them; their indexes
  // and the demo rows are plain statements that every engine reads alike.
  const bool postgres = connection->Dbms() == u"PostgreSQL";
  String script = FromUtf8(postgres ? schema::kPostgresSql : schema::kSuiteSql);
  script += FromUtf8(schema::kIndexesSql);
  if (with_demo_data) script += FromUtf8(schema::kDemoSql);
  connection->ExecuteScript(u"BEGIN TRANSACTION;\n" + script + u"\nCOMMIT;");
}

}  // namespace kavrin
