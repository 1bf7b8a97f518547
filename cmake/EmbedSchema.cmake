# Writes the schema scripts into a C++ source as UTF-8 string literals.
file(READ ${SUITE} suite_sql)
file(READ ${DEMO} demo_sql)
file(WRITE ${OUT} "// Generated from schema/suite.sql and schema/demo.sql; do not edit.\n")
file(APPEND ${OUT} "#include <string_view>\nnamespace kavrin::schema {\n")
file(APPEND ${OUT} "extern const std::string_view kSuiteSql = R\"kavrin_sql(${suite_sql})kavrin_sql\";\n")
file(APPEND ${OUT} "extern const std::string_view kDemoSql = R\"kavrin_sql(${demo_sql})kavrin_sql\";\n")
file(APPEND ${OUT} "}  // namespace kavrin::schema\n")
