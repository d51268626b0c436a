rz_add_sources(RzIO
  HEADERS RzDebug.h
  SOURCES RzDebug.cpp)
