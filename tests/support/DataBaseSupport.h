// Helpers shared by the database tests and fuzz targets: a database's
// entries as canonical text, and the reader transcribed literally.
#ifndef RZ_TESTS_SUPPORT_DATABASESUPPORT_H
#define RZ_TESTS_SUPPORT_DATABASESUPPORT_H

#include <stdint.h>

#include <string>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>

namespace rztest {

// Keys and values are compared as their C text, as the database compares
// them; lengths make any bytes unambiguous.
inline std::string Entry(const RzString& key, const RzString& value) {
    const std::string k = key.c_str(), v = value.c_str();
    return std::to_string(k.size()) + ":" + k + "=" + std::to_string(v.size()) + ":" + v + ";";
}

// Keys, values, order and nesting: a sub-database follows its entry in braces.
inline std::string Dump(const RzDataBase& db) {
    std::string out;
    for (int i = 0; i < db.GetCount(); ++i) {
        out += Entry(db.GetIndexedName(i), db.GetIndexedValue(i));
        if (const RzDataBase* sub = db.GetIndexedDB(i)) out += "{" + Dump(*sub) + "}";
    }
    return out;
}

// The reader exactly as the text format defines it, recursive, built on the
// public GetNextChar and RzDBData::SetString; appends the Dump of what it
// reads to `out` and throws as the reader does.
inline void ReferenceString2DB(std::string& out, const RzString& text, int32_t& pos) {
    for (size_t last = std::string::npos;;) {  // where the last entry's sub-database goes
        const char c = RzDataBase::GetNextChar(text, pos);
        if (c == 0 || c == '}') return;
        if (c == '{') {
            std::string sub;
            ReferenceString2DB(sub, text, pos);
            if (last == std::string::npos)
                throw RzError(kRzIndexError, "RzIndexError", "RzList", 0);
            out.resize(last);  // a later block replaces an earlier one
            out += "{" + sub + "}";
            continue;
        }
        if (c != '<') --pos;
        RzDBData entry;
        entry.SetString(text, pos);
        out += Entry(entry.GetKey(), entry.GetVal());
        last = out.size();
        if (c == '<' && RzDataBase::GetNextChar(text, pos) != '>')
            throw RzError(kRzFormatErr, "RzFormatErr", "RzDataBase", 616);
    }
}

inline void ReferenceRead(std::string& out, const RzString& text) {
    int32_t pos = 0;
    if (RzDataBase::GetNextChar(text, pos) != '{') pos = 0;
    ReferenceString2DB(out, text, pos);
}

// Whether the plain form carries this database: a key that it writes bare
// must not begin with a character that the reader takes as structure
// ('#' comment, '{' and '}' braces, '<' protected entry).
inline bool PlainFormCarries(const RzDataBase& db) {
    for (int i = 0; i < db.GetCount(); ++i) {
        const std::string key = db.GetIndexedName(i).c_str();
        const bool bare = !key.empty() && key.find_first_of(" \t\r\n\"") == std::string::npos;
        if (bare && std::string("#{}<").find(key[0]) != std::string::npos) return false;
        if (const RzDataBase* sub = db.GetIndexedDB(i))
            if (!PlainFormCarries(*sub)) return false;
    }
    return true;
}

}  // namespace rztest

#endif
