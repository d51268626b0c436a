// rz random and rz date: the framework's random variates and dates. See
// RzTool.h for the calling convention.
#ifndef RZ_TOOLS_RZTOOLVALUES_H
#define RZ_TOOLS_RZTOOLVALUES_H

#include <string>
#include <vector>

#include "RzTool.h"

int RzToolRandom(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDate(const std::vector<std::string>& args, RzToolIO& io);

#endif
