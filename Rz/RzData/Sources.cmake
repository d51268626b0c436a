rz_add_sources(RzData
  HEADERS RzArray.h RzList.h)
