#include <Rz/FileSpec/RzFileInfo.h>

RzFileInfo::RzFileInfo(const RzString& fullName)
    : RzFileSpec(fullName),
      creationDate(0, 0, 0, 0, 0, 0),
      modificationDate(0, 0, 0, 0, 0, 0),
      isFile(true),
      size(0) {}

RzFileInfo::RzFileInfo(const RzFileSpec& spec)
    : RzFileSpec(spec),
      creationDate(0, 0, 0, 0, 0, 0),
      modificationDate(0, 0, 0, 0, 0, 0),
      isFile(true),
      size(0) {}
