#include <Rz/internal/RzUserDirs.h>

#include <string.h>

#include <Rz/internal/RzPaths.h>

namespace {

const char* SkipBlanks(const char* p, const char* end) {
    while (p < end && (*p == ' ' || *p == '\t')) ++p;
    return p;
}

// The value of one line `key = "..."` starting at `p`; false when the line
// does not assign `key` a valid value.
bool ValueOfLine(const char* p, const char* end, const char* key, size_t keyLength,
                 const char* home, std::string& value) {
    p = SkipBlanks(p, end);
    if (static_cast<size_t>(end - p) <= keyLength || strncmp(p, key, keyLength) != 0) return false;
    p = SkipBlanks(p + keyLength, end);
    if (p == end || *p != '=') return false;
    p = SkipBlanks(p + 1, end);
    if (p == end || *p != '"') return false;
    ++p;
    value.clear();
    if (strncmp(p, "$HOME", 5) == 0 && (p[5] == '/' || p[5] == '"')) {
        value = home;
        p += 5;
    } else if (*p != '/') {
        return false;
    }
    for (; p < end; ++p) {
        if (*p == '"') {
            RzPathTrimSlashes(value);
            return !value.empty();
        }
        if (*p == '\\' && p + 1 < end) ++p;
        value += *p;
    }
    return false;  // not closed
}

}  // namespace

std::string RzUserDirFromText(const char* text, const char* key, const char* home) {
    if (!text || !key || !home) return "";
    std::string result, value;
    const size_t keyLength = strlen(key);
    for (const char* line = text; *line;) {
        const char* end = strchr(line, '\n');
        if (!end) end = line + strlen(line);
        if (ValueOfLine(line, end, key, keyLength, home, value)) result = value;
        line = *end ? end + 1 : end;
    }
    return result;
}
