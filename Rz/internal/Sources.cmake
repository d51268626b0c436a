# Private glue: never installed. The operating-system seam is one source per
# system, picked here for the target; everything else holds on every system.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(rz_os_source RzOS_linux.cpp)
else()
  message(FATAL_ERROR "Rz has no operating-system layer for ${CMAKE_SYSTEM_NAME} yet")
endif()
rz_add_sources(internal
  HEADERS RzRaise.h RzOS.h RzAppleDouble.h RzBCDVersion.h RzDosAttrib.h RzFinderCodes.h
          RzFormat.h RzKeyCodes.h RzMemoryHooks.h RzPaths.h RzStringBuffer.h RzTextEncoding.h
          RzTickClock.h RzUserDirs.h
  SOURCES ${rz_os_source} RzAppleDouble.cpp RzBCDVersion.cpp RzDosAttrib.cpp RzFormat.cpp
          RzKeyCodes.cpp RzPaths.cpp RzTextEncoding.cpp RzUserDirs.cpp)
