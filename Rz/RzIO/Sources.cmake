rz_add_sources(RzIO
  HEADERS RzDebug.h RzStdStream.h RzStream.h
  SOURCES RzDebug.cpp RzStdStream.cpp RzStream.cpp)
