# Install rules, in three components that the Debian packages follow:
# runtime (the shared library), development (headers, static library, CMake
# package, rz.pc) and tool (rz, its manual page, the MIME entry; tools/).
#
# Paths come from GNUInstallDirs, so that with the prefix /usr on Debian the
# libraries, the CMake package and rz.pc go to the multiarch folder
# (lib/x86_64-linux-gnu). Each library kind has its own export set and
# targets file, so that a static and a shared install share one prefix:
# RzConfig.cmake loads whichever are there.
include(CMakePackageConfigHelpers)

set(RZ_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Rz CACHE STRING
  "Where the CMake package goes, relative to the prefix")

foreach(kind IN LISTS RZ_KINDS)
  install(TARGETS Rz_${kind} EXPORT RzTargets-${kind}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
      NAMELINK_COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT RzTargets-${kind} NAMESPACE Rz:: DESTINATION ${RZ_INSTALL_CMAKEDIR}
    COMPONENT development)
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/Rz/Rz.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Rz
  COMPONENT development)
get_property(folders GLOBAL PROPERTY RZ_PUBLIC_FOLDERS)
list(REMOVE_DUPLICATES folders)
foreach(folder IN LISTS folders)
  if(folder STREQUAL "internal")
    continue()  # private glue is never installed
  endif()
  get_property(hdrs GLOBAL PROPERTY RZ_PUBLIC_HEADERS_${folder})
  if(hdrs)
    install(FILES ${hdrs} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Rz/${folder}
      COMPONENT development)
  endif()
endforeach()

# The package computes its prefix from where it lies: it can be moved.
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/RzConfig.cmake.in
  ${PROJECT_BINARY_DIR}/RzConfig.cmake
  INSTALL_DESTINATION ${RZ_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RzConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RzConfig.cmake ${PROJECT_BINARY_DIR}/RzConfigVersion.cmake
  DESTINATION ${RZ_INSTALL_CMAKEDIR} COMPONENT development)

# rz.pc names the prefix given when installing (cmake --install --prefix,
# or CPack's /usr), which configure time does not know: the file is
# configured here with everything else and gets its prefix at install time.
# libdir and includedir follow ${prefix} unless configured as absolute paths.
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(RZ_PC_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(RZ_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
set(RZ_PC_LIBS_PRIVATE "")
if(RZ_LINK_DL)
  set(RZ_PC_LIBS_PRIVATE "-l${RZ_LINK_DL}")
endif()
set(RZ_PC_PREFIX "@RZ_PC_PREFIX@")  # kept for the install step
configure_file(${PROJECT_SOURCE_DIR}/cmake/rz.pc.in ${PROJECT_BINARY_DIR}/rz.pc.in @ONLY)
install(CODE "
  set(RZ_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${PROJECT_BINARY_DIR}/rz.pc.in\" \"${PROJECT_BINARY_DIR}/rz.pc\" @ONLY)
" COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/rz.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
