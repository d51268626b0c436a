rz_add_sources(RzData
  HEADERS RzArray.h RzDataBase.h RzList.h
  SOURCES RzDataBase.cpp RzDataBaseFile.cpp)
