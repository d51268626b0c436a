rz_add_sources(FileSpec
  HEADERS RzFileSpec.h
  SOURCES RzFileSpec.cpp)
