rz_add_sources(RzSystem
  HEADERS RzSystem.h
  SOURCES RzSystem.cpp)
