rz_add_sources(RzSystem
  HEADERS RzDate.h RzSystem.h
  SOURCES RzDate.cpp RzSystem.cpp)
