# rz_add_sources(<folder> HEADERS ... SOURCES ...)
# Adds a folder's units to the library's objects; the public headers are
# installed under <includedir>/Rz/<folder> (never those of "internal").
function(rz_add_sources folder)
  cmake_parse_arguments(ARG "" "" "HEADERS;SOURCES" ${ARGN})
  set(hdrs)
  foreach(h IN LISTS ARG_HEADERS)
    list(APPEND hdrs "${PROJECT_SOURCE_DIR}/Rz/${folder}/${h}")
  endforeach()
  set(srcs)
  foreach(s IN LISTS ARG_SOURCES)
    list(APPEND srcs "${PROJECT_SOURCE_DIR}/Rz/${folder}/${s}")
  endforeach()
  target_sources(rz_objects PRIVATE ${hdrs} ${srcs})
  set_property(GLOBAL APPEND PROPERTY RZ_PUBLIC_HEADERS_${folder} ${hdrs})
  set_property(GLOBAL APPEND PROPERTY RZ_PUBLIC_FOLDERS ${folder})
endfunction()

# rz_add_library(static|shared) : the target Rz_<kind> (alias Rz::Rz_<kind>),
# librz.a or librz.so made of the objects of rz_objects.
function(rz_add_library kind)
  string(TOUPPER ${kind} type)
  set(target Rz_${kind})
  add_library(${target} ${type} $<TARGET_OBJECTS:rz_objects>)
  add_library(Rz::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME rz
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME ${target})
  # Applications need only what the public headers need.
  target_compile_features(${target} PUBLIC cxx_std_11)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:rz_build_settings> ${RZ_LINK_DL})
endfunction()

# rz_add_test(<name> <source>...) : one GoogleTest binary, each case visible to ctest.
function(rz_add_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE rz_internal rz_test_support rz_build_settings
    GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "RZ_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# rz_add_bench(<name> <source>...) : a Google Benchmark binary.
function(rz_add_bench name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE rz_internal rz_build_settings
    benchmark::benchmark benchmark::benchmark_main)
endfunction()

# rz_add_fuzzer(<name> <source>) : with clang a libFuzzer binary <name>, and
# always <name>_replay, a plain program that runs every file of
# fuzz/corpus/<name>/ through the target; the replay is registered as a test.
function(rz_add_fuzzer name source)
  add_executable(${name}_replay ${source} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
  target_link_libraries(${name}_replay PRIVATE rz_internal rz_build_settings)
  target_include_directories(${name}_replay PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  add_test(NAME fuzz_replay.${name}
    COMMAND ${name}_replay ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE rz_internal rz_build_settings)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_property(GLOBAL APPEND PROPERTY RZ_FUZZERS ${name})
  endif()
endfunction()
