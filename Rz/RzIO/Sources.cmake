rz_add_sources(RzIO
  HEADERS RzDebug.h RzFile.h RzFileAccess.h RzStdStream.h RzStream.h
  SOURCES RzDebug.cpp RzFile.cpp RzStdStream.cpp RzStream.cpp)
