# `cpack -G DEB` from the build folder makes one Debian package of what the
# install rules install: the library, the headers, the CMake and pkg-config
# files and the kavrin tool, under /usr. Its dependencies on the engines'
# runtime libraries (SQLite, ICU, unixODBC) come from dpkg-shlibdeps, which
# reads them off the binaries; without dpkg-dev the package would declare none.
set(CPACK_PACKAGE_NAME kavrin)
set(CPACK_PACKAGE_VENDOR "Kavrin developers")
set(CPACK_PACKAGE_CONTACT "Kavrin developers <kavrin@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
  "The library, its C++ headers, CMake and pkg-config files, and the kavrin command-line host.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A shlibs file and the ldconfig trigger for libkavrin.so.N.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Connecting through ODBC needs a driver for the server.
if(KAVRIN_WITH_ODBC)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "odbc-postgresql, tdsodbc")
endif()

find_program(KAVRIN_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT KAVRIN_DPKG_SHLIBDEPS)
  message(STATUS "Kavrin: no dpkg-shlibdeps (dpkg-dev): a Debian package would declare no dependencies")
endif()

include(CPack)
