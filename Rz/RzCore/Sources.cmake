rz_add_sources(RzCore
  HEADERS RzDefs.h RzError.h RzExport.h RzErrorCodes.h RzMemory.h RzObject.h RzString.h RzTemplates.h
  SOURCES RzError.cpp RzMemory.cpp RzObject.cpp RzString.cpp RzStringConvert.cpp RzStringEdit.cpp
          RzStrMatch.cpp RzTemplates.cpp)
