#include "kavrin/Schema.h"

#include <string_view>

#include "db/Driver.h"

namespace kavrin {

namespace schema {
extern const std::string_view kSuiteSql;
extern const std::string_view kDemoSql;
}  // namespace schema

void CreateSuiteDatabase(StringView connection_string, bool with_demo_data) {
  auto connection = db::OpenForSetup(connection_string);
  String script = FromUtf8(schema::kSuiteSql);
  if (with_demo_data) script += FromUtf8(schema::kDemoSql);
  connection->ExecuteScript(u"BEGIN;\n" + script + u"\nCOMMIT;");
}

}  // namespace kavrin
