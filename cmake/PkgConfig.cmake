# kavrin.pc, for hosts built without CMake:
#   c++ host.cpp $(pkg-config --cflags --libs kavrin)
# The headers need C++20, so the flags ask for it. Paths are relative to the
# file's own folder, so the one file serves any `cmake --install --prefix` and
# the Debian package alike. A static library needs the engines' libraries in
# the host's link, so they are plain requirements there; a shared one brings
# them itself.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(kavrin_pc_prefix "${CMAKE_INSTALL_PREFIX}")
  set(kavrin_pc_libdir "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(kavrin_pc_includedir "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
  file(RELATIVE_PATH kavrin_pc_up "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
  string(REGEX REPLACE "/$" "" kavrin_pc_up "${kavrin_pc_up}")
  set(kavrin_pc_prefix "\${pcfiledir}/${kavrin_pc_up}")
  set(kavrin_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(kavrin_pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()

set(kavrin_pc_requires "")
if(kavrin_type STREQUAL "STATIC_LIBRARY")
  set(kavrin_pc_requires "Requires: sqlite3 icu-uc")
  if(KAVRIN_WITH_ODBC)
    string(APPEND kavrin_pc_requires " odbc")
  endif()
endif()

configure_file(${CMAKE_CURRENT_LIST_DIR}/kavrin.pc.in ${PROJECT_BINARY_DIR}/kavrin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kavrin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
