rz_add_sources(RzCore
  HEADERS RzDefs.h RzError.h RzString.h
  SOURCES RzError.cpp RzString.cpp RzStringEdit.cpp RzStrMatch.cpp)
