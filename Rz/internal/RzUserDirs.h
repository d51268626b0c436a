// The user-dirs.dirs file of the XDG user directories: shell-style lines
// `XDG_DOCUMENTS_DIR="$HOME/Documents"` that name the user's well-known
// folders.
#ifndef RZ_INTERNAL_RZUSERDIRS_H
#define RZ_INTERNAL_RZUSERDIRS_H

#include <string>

// The folder that `text` assigns to `key` ("XDG_DOCUMENTS_DIR"): the last
// valid line `key="$HOME/..."` or `key="/..."` (blanks allowed around the key
// and the '='), with $HOME replaced by `home`, backslash escapes removed and
// trailing '/' dropped. A relative value, a missing closing quote or an
// unquoted value makes a line invalid. "" when no line is valid or an
// argument is null.
std::string RzUserDirFromText(const char* text, const char* key, const char* home);

#endif
