rz_add_sources(RzIO
  HEADERS RzDebug.h RzStream.h
  SOURCES RzDebug.cpp RzStream.cpp)
