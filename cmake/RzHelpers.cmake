include(GNUInstallDirs)

# rz_add_sources(<folder> HEADERS ... SOURCES ...)
# Adds a folder's units to the library; public headers are installed under
# <prefix>/include/Rz/<folder>.
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
  target_sources(Rz PRIVATE ${hdrs} ${srcs})
  set_property(GLOBAL APPEND PROPERTY RZ_PUBLIC_HEADERS_${folder} ${hdrs})
  set_property(GLOBAL APPEND PROPERTY RZ_PUBLIC_FOLDERS ${folder})
endfunction()

# rz_add_test(<name> <source>...) : one GoogleTest binary, each case visible to ctest.
function(rz_add_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE Rz::Rz rz_test_support GTest::gtest_main)
  target_compile_options(${name} PRIVATE -Wall -Wextra)
  set_target_properties(${name} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "RZ_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# rz_add_bench(<name> <source>...) : a Google Benchmark binary.
function(rz_add_bench name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE Rz::Rz benchmark::benchmark benchmark::benchmark_main)
  target_compile_options(${name} PRIVATE -Wall -Wextra)
  set_target_properties(${name} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON)
endfunction()

# rz_add_fuzzer(<name> <source>) : with clang a libFuzzer binary <name>, and
# always <name>_replay, a plain program that runs every file of
# fuzz/corpus/<name>/ through the target; the replay is registered as a test.
function(rz_add_fuzzer name source)
  add_executable(${name}_replay ${source} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
  target_link_libraries(${name}_replay PRIVATE Rz::Rz)
  target_include_directories(${name}_replay PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${name}_replay PRIVATE -Wall -Wextra)
  set_target_properties(${name}_replay PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON)
  add_test(NAME fuzz_replay.${name}
    COMMAND ${name}_replay ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE Rz::Rz)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${name} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON)
    set_property(GLOBAL APPEND PROPERTY RZ_FUZZERS ${name})
  endif()
endfunction()
