rz_add_sources(Mac
  HEADERS RzByteOrder.h RzContrast.h RzMacTypes.h RzMacToolsOSX.h
  SOURCES RzByteOrder.cpp RzContrast.cpp RzMacToolsOSX.cpp)
