# The API reference (RZ_BUILD_DOCS): the docs target renders the public
# headers with Doxygen into <build>/docs/html, with the README as its main
# page, when Doxygen is installed. The headers' own comments are the
# documentation (docs/doxygen-filter.awk turns them into Doxygen's form).
# RZ_DOCS_WARN_AS_ERROR makes any Doxygen warning fail the target.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "Doxygen not found (Debian: doxygen): the docs target is not added")
  return()
endif()
option(RZ_DOCS_WARN_AS_ERROR "Fail the docs target on a Doxygen warning" OFF)

set(RZ_DOCS_OUTPUT ${PROJECT_BINARY_DIR}/docs)
set(rz_docs_inputs ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/Rz/Rz.h)
get_property(rz_folders GLOBAL PROPERTY RZ_PUBLIC_FOLDERS)
list(REMOVE_DUPLICATES rz_folders)
list(REMOVE_ITEM rz_folders internal)
foreach(folder IN LISTS rz_folders)
  get_property(hdrs GLOBAL PROPERTY RZ_PUBLIC_HEADERS_${folder})
  list(APPEND rz_docs_inputs ${hdrs})
endforeach()
list(JOIN rz_docs_inputs " " RZ_DOCS_INPUT)
if(RZ_DOCS_WARN_AS_ERROR)
  set(RZ_DOCS_WARN_AS_ERROR FAIL_ON_WARNINGS)
else()
  set(RZ_DOCS_WARN_AS_ERROR NO)
endif()
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${RZ_DOCS_OUTPUT}/Doxyfile @ONLY)

add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -E make_directory ${RZ_DOCS_OUTPUT}
  COMMAND Doxygen::doxygen ${RZ_DOCS_OUTPUT}/Doxyfile
  DEPENDS ${rz_docs_inputs} ${PROJECT_SOURCE_DIR}/docs/Doxyfile.in
          ${PROJECT_SOURCE_DIR}/docs/doxygen-filter.awk
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "API reference with Doxygen: ${RZ_DOCS_OUTPUT}/html/index.html"
  VERBATIM)
