# Installs the Python package (run by `cmake --install`, with the prefix given
# then): under KAVRIN_PYTHON_INSTALL_DIR when set, else where the prefix's
# Python looks, with _library.py giving the shared library's place relative
# to the package, so the installed tree can move as a whole.
set(pydir "${KAVRIN_PYTHON_INSTALL_DIR}")
if(NOT pydir)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(pydir lib/python3/dist-packages)
  else()
    set(pydir "${KAVRIN_PYTHON_SITE_DIR}")
  endif()
endif()
set(package "${CMAKE_INSTALL_PREFIX}/${pydir}/kavrin")
set(libdir "${KAVRIN_LIBDIR}")
if(NOT IS_ABSOLUTE "${libdir}")
  set(libdir "${CMAKE_INSTALL_PREFIX}/${libdir}")
endif()
file(RELATIVE_PATH library "${package}" "${libdir}/${KAVRIN_SONAME}")
file(WRITE "${KAVRIN_STAGING}/_library.py" "PATH = \"${library}\"\n")
file(INSTALL ${KAVRIN_SOURCES} "${KAVRIN_STAGING}/_library.py" DESTINATION "${package}")
