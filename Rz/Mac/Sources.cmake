rz_add_sources(Mac
  HEADERS RzByteOrder.h RzMacTypes.h RzMacToolsOSX.h
  SOURCES RzByteOrder.cpp RzMacToolsOSX.cpp)
