# Private glue: never installed. The operating-system seam has one source per
# system; CMake picks the one for the target.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(rz_os_source RzOS_linux.cpp)
  set(rz_file_os_source RzFileOS_linux.cpp)
else()
  message(FATAL_ERROR "Rz has no operating-system layer for ${CMAKE_SYSTEM_NAME} yet")
endif()
rz_add_sources(internal
  HEADERS RzRaise.h RzOS.h RzFileOS.h RzAppleDouble.h RzMemoryHooks.h RzTextEncoding.h
          RzStringBuffer.h
  SOURCES ${rz_os_source} ${rz_file_os_source} RzAppleDouble.cpp RzTextEncoding.cpp)
