rz_add_sources(FileSpec
  HEADERS RzFileSpec.h RzFileInfo.h RzIterateDir.h
  SOURCES RzFileSpec.cpp RzFileInfo.cpp RzIterateDir.cpp)
