rz_add_sources(Mac
  HEADERS RzByteOrder.h
  SOURCES RzByteOrder.cpp)
