# The suite's schema and the demo company, compiled into the library so that
# a host (and the kavrin tool) can create a suite database anywhere.
set(generated ${PROJECT_BINARY_DIR}/generated/schema/SchemaText.cpp)
add_custom_command(
  OUTPUT ${generated}
  COMMAND ${CMAKE_COMMAND} -DOUT=${generated}
          -DSUITE=${CMAKE_CURRENT_LIST_DIR}/suite.sql
          -DPOSTGRES=${CMAKE_CURRENT_LIST_DIR}/postgres.sql
          -DINDEXES=${CMAKE_CURRENT_LIST_DIR}/indexes.sql
          -DDEMO=${CMAKE_CURRENT_LIST_DIR}/demo.sql
          -P ${PROJECT_SOURCE_DIR}/cmake/EmbedSchema.cmake
  DEPENDS ${CMAKE_CURRENT_LIST_DIR}/suite.sql ${CMAKE_CURRENT_LIST_DIR}/postgres.sql
          ${CMAKE_CURRENT_LIST_DIR}/indexes.sql ${CMAKE_CURRENT_LIST_DIR}/demo.sql ${PROJECT_SOURCE_DIR}/cmake/EmbedSchema.cmake
  COMMENT "Embedding the suite schema")
target_sources(kavrin_obj PRIVATE ${generated})
