// Path rules that hold on every system: the pieces of a POSIX path, the
// Mac's ':'-separated relative paths, and where an application lives given
// its executable. Plain string work; nothing here touches the disk.
#ifndef RZ_INTERNAL_RZPATHS_H
#define RZ_INTERNAL_RZPATHS_H

#include <string>
#include <vector>

// The folder part of a path: everything before its last '/' ("/" when that
// '/' is the first character), "" when there is no '/'.
std::string RzPathFolder(const std::string& path);
// The part after the last '/', the whole path when there is none.
std::string RzPathLeaf(const std::string& path);
// `name` inside `folder`: one '/' between them, none added behind "/".
std::string RzPathJoin(const std::string& folder, const std::string& name);
// Drops the '/' at the end of a folder's path, all but the first character
// ("/a//" gives "/a", "/" stays "/").
void RzPathTrimSlashes(std::string& path);

// The parts of a name as FSMakeFSSpec reads it, the last one being the item:
// - "" gives no parts (the folder itself);
// - a name without a leading ':' is one part, taken whole, colons included;
// - a name starting with ':' is a relative path whose parts are separated by
//   ':'. An empty part goes up one folder and comes back as "..", a final
//   ':' only marks a folder (":a:" is "a"), and a '/' inside a part stands
//   for a ':' of the file system's name (":a/b" is "a:b").
std::vector<std::string> RzHFSPathParts(const std::string& name);
// A file system name as a part of such a relative path: every ':' becomes
// '/'. Null gives "".
std::string RzHFSName(const char* name);

// Where an application lives, from its executable's path: with
// `besideExecutable` non-zero the executable's folder; with 0 the folder that
// holds the bundle when the executable sits in "<name>.app/Contents/MacOS/",
// else the executable's folder. "" for a path without '/' (or null).
std::string RzApplicationFolder(const char* executablePath, int besideExecutable);

#endif
