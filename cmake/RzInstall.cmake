include(CMakePackageConfigHelpers)

install(TARGETS Rz EXPORT RzTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(FILES ${PROJECT_SOURCE_DIR}/Rz/Rz.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Rz)
get_property(folders GLOBAL PROPERTY RZ_PUBLIC_FOLDERS)
list(REMOVE_DUPLICATES folders)
foreach(folder IN LISTS folders)
  if(folder STREQUAL "internal")
    continue()  # private glue is never installed
  endif()
  get_property(hdrs GLOBAL PROPERTY RZ_PUBLIC_HEADERS_${folder})
  if(hdrs)
    install(FILES ${hdrs} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Rz/${folder})
  endif()
endforeach()

install(EXPORT RzTargets NAMESPACE Rz:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Rz)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/RzConfig.cmake.in
  ${PROJECT_BINARY_DIR}/RzConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Rz)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RzConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RzConfig.cmake ${PROJECT_BINARY_DIR}/RzConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Rz)

configure_file(${PROJECT_SOURCE_DIR}/cmake/rz.pc.in ${PROJECT_BINARY_DIR}/rz.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/rz.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
