// rz info, stamp, ls and unique: files with their Mac OS type and creator
// codes, Finder information, locks and dates. See RzTool.h for the calling
// convention.
#ifndef RZ_TOOLS_RZTOOLFILES_H
#define RZ_TOOLS_RZTOOLFILES_H

#include <stdint.h>

#include <string>
#include <vector>

#include "RzTool.h"

int RzToolInfo(const std::vector<std::string>& args, RzToolIO& io);
int RzToolStamp(const std::vector<std::string>& args, RzToolIO& io);
int RzToolLs(const std::vector<std::string>& args, RzToolIO& io);
int RzToolUnique(const std::vector<std::string>& args, RzToolIO& io);

// A four-character code as text: 'TEXT' (quoted, trailing blanks kept) when
// its four bytes are printable ASCII, otherwise 0x0000003F.
std::string RzToolCodeText(uint32_t code);
// The inverse for the command line: one to four characters (padded with
// blanks, as RzString::ToSig pads them) or "0x" and one to eight hex digits.
uint32_t RzToolParseCode(const std::string& word, const char* what);

#endif
