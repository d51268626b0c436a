// rz db: settings files.
//
// Every command reads the whole file with the framework's reader and every
// change is saved with RzDataBase::WriteToFile, which replaces the file
// whole (a crash leaves the old file or the new one). A file keeps its form,
// plain or protected. See RzTool.h for the calling convention.
#ifndef RZ_TOOLS_RZTOOLDB_H
#define RZ_TOOLS_RZTOOLDB_H

#include <stddef.h>

#include <functional>
#include <string>
#include <vector>

#include "RzTool.h"

class RzDataBase;
class RzString;

int RzToolDbGet(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbSet(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbRm(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbDump(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbFmt(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbCheck(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbDiff(const std::vector<std::string>& args, RzToolIO& io);
int RzToolDbMerge(const std::vector<std::string>& args, RzToolIO& io);

// --- The dump format ------------------------------------------------------------
//
// One line per entry, "PATH = VALUE", PATH the entry's key and the keys above
// it joined by "/". A key is written bare when it is not empty and holds no
// byte below 0x21, no 0x7F, '"', '/' or '['; a value when it is not empty,
// holds no byte below 0x20 and no 0x7F, does not start with '"' and neither
// starts nor ends with a blank. Otherwise the word is enclosed in double
// quotes with \" \\ \t \n \r and \xHH (other bytes below 0x20, and 0x7F) for
// its bytes; bytes from 0x80 up are written as they are. The second and
// later entries of one key on one level get "[2]", "[3]", ... behind their
// key, so that every line names one entry.

// A key or a value in the dump's form (up to its first zero byte).
std::string RzToolDumpKey(const RzString& key);
std::string RzToolDumpValue(const RzString& value);

// Calls `entry` with the dump's path and value of every entry of `db` and
// below, depth first, each entry before the entries below it; `prefix` (a
// path in the dump's form, or "") comes before every path. Works without
// recursion, at any depth.
void RzToolDumpEntries(
    RzDataBase& db, const std::string& prefix,
    const std::function<void(const std::string& path, const std::string& value)>& entry);

// The line and column, both from 1, of byte `pos` of `text`; LF, CR and CR LF
// each end a line, and columns count bytes.
void RzToolLineColumn(const char* text, size_t n, size_t pos, int& line, int& column);

#endif
