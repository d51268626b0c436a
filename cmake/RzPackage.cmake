# Debian packages with CPack (cpack -G DEB in a build configured with the
# prefix /usr; the package preset does both): the runtime library librz<N>
# (N the SOVERSION), the development files librz-dev, and the tool rz-tools.
# The Depends lines of packages with programs or libraries come from
# dpkg-shlibdeps; the packages depend on each other at this exact version.
set(RZ_PACKAGE_MAINTAINER "Rz developers <rz@example.org>" CACHE STRING
  "Maintainer field of the Debian packages")

set(CPACK_PACKAGE_NAME rz)
set(CPACK_PACKAGE_VENDOR "Rz developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each package's description is its own, synopsis first, wrapped for dpkg.
# CPack puts a project-wide summary in front of each unless the summary is
# its own default, which it is here.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_PACKAGE_CONTACT "${RZ_PACKAGE_MAINTAINER}")
set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR "")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${RZ_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A shlibs file in the runtime package, so that packages built against librz
# depend on it at this version or later.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# dpkg-shlibdeps finds librz of this build for rz's dependencies; the
# dependency on the runtime package itself comes from the components.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(rz_components "")
set(rz_soname_package librz${PROJECT_VERSION_MAJOR})
if("shared" IN_LIST RZ_KINDS)
  list(APPEND rz_components runtime)
  set(CPACK_COMPONENT_RUNTIME_DISPLAY_NAME "Rz runtime library")
  string(CONCAT CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "C++ support framework for desktop applications (shared library)\n"
    "Rz gives C++ applications a copy-on-write string with Mac OS Roman,\n"
    "ISO-8859-1, UTF-8 and UTF-16 conversions, containers, a settings\n"
    "database with a text format that is saved safely, byte streams, file\n"
    "specs with Mac OS type and creator codes, folder walks, dates, system\n"
    "and desktop services and reproducible random numbers.\n"
    "\n"
    "This package holds the shared library.")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${rz_soname_package})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
endif()

list(APPEND rz_components development)
set(CPACK_COMPONENT_DEVELOPMENT_DISPLAY_NAME "Rz development files")
string(CONCAT CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "C++ support framework for desktop applications (development files)\n"
  "Rz gives C++ applications strings with legacy text conversions,\n"
  "containers, a settings database, streams, file specs with Mac OS type\n"
  "and creator codes, dates and system services.\n"
  "\n"
  "This package holds the headers, the static library, the CMake package\n"
  "(find_package(Rz)) and the pkg-config file (rz.pc).")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME librz-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
if("runtime" IN_LIST rz_components)
  set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
endif()

if(RZ_BUILD_TOOL)
  list(APPEND rz_components tool)
  set(CPACK_COMPONENT_TOOL_DISPLAY_NAME "rz command-line tool")
  string(CONCAT CPACK_COMPONENT_TOOL_DESCRIPTION
    "settings files, Finder information and legacy text from the command line\n"
    "rz reads, changes, checks, compares and merges Rz settings files,\n"
    "shows and stamps Mac OS type and creator codes and Finder flags, walks\n"
    "folders, converts between Mac OS Roman, ISO-8859-1, UTF-8 and UTF-16,\n"
    "writes and reads hexadecimal text, draws reproducible random numbers\n"
    "and reads dates.\n"
    "\n"
    "The package also teaches the desktop's file types the colour\n"
    "measurement (CGATS) and swatch files of colour applications.")
  set(CPACK_DEBIAN_TOOL_PACKAGE_NAME rz-tools)
  set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
  # lrzsz's ZMODEM receiver is /usr/bin/rz too.
  set(CPACK_DEBIAN_TOOL_PACKAGE_CONFLICTS lrzsz)
  if("runtime" IN_LIST rz_components)
    set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
  endif()
endif()
set(CPACK_COMPONENTS_ALL ${rz_components})

include(CPack)
