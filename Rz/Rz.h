// Rz: the whole public interface in one header.
#ifndef RZ_RZ_H
#define RZ_RZ_H

#include <Rz/RzCore/RzDefs.h>
#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzMemory.h>
#include <Rz/RzCore/RzObject.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzCore/RzTemplates.h>
#include <Rz/RzData/RzArray.h>
#include <Rz/RzData/RzDataBase.h>
#include <Rz/RzData/RzList.h>
#include <Rz/RzIO/RzDebug.h>
#include <Rz/RzIO/RzFile.h>
#include <Rz/RzIO/RzStdStream.h>
#include <Rz/RzIO/RzStream.h>
#include <Rz/Mac/RzByteOrder.h>
#include <Rz/Mac/RzContrast.h>
#include <Rz/Mac/RzMacTypes.h>
#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/FileSpec/RzFileInfo.h>
#include <Rz/FileSpec/RzIterateDir.h>
#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzSystem/RzDate.h>
#include <Rz/RzSystem/RzSystem.h>
#include <Rz/RzMath/RzRandom.h>

#endif
