rz_add_sources(Mac
  HEADERS RzByteOrder.h RzMacTypes.h
  SOURCES RzByteOrder.cpp)
