#include "RzToolDb.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <memory>
#include <ostream>
#include <unordered_map>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzDataBase.h>
#include <Rz/RzIO/RzFile.h>

namespace {

// The lines at which the reader raises its two errors of its own, which
// applications rely on (docs/errors.md).
const int kLineEntryWithoutEquals = 91;
const int kLineProtectedEntryOpen = 616;

RzString Text(const std::string& s) {
    return RzString(s.data(), static_cast<int32_t>(s.size()), false);
}

RzFileSpec Spec(const std::string& path) {
    return RzFileSpec(Text(path));
}

// A settings file as read: the database, its form, and where the reader
// stopped before the end of the text (a closing brace at the top level ends
// reading; what follows is ignored).
struct Settings {
    std::string path;
    RzDataBase* db = new RzDataBase;
    bool protectedForm = false;
    std::string ignoredFrom;  // "line:column" of that brace, or "" when all was read

    Settings() = default;
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;
    ~Settings() { db->Delete(); }
};

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

std::string Where(const RzString& text, int32_t pos) {
    int line = 0, column = 0;
    RzToolLineColumn(text.c_str(), static_cast<size_t>(text.length()), static_cast<size_t>(pos),
                     line, column);
    return std::to_string(line) + ":" + std::to_string(column);
}

// What went wrong, for the errors the reader raises.
const char* ReadingError(const RzError& e) {
    const bool ownUnit = strcmp(e.GetFileName(), "RzDataBase") == 0;
    if (e.GetErr() == kRzIndexError) return "a \"{\" with no entry before it";
    if (e.GetErr() != kRzFormatErr) return nullptr;
    if (ownUnit && e.GetLine() == kLineEntryWithoutEquals)
        return "expected \" = \" between the key and the value";
    if (ownUnit && e.GetLine() == kLineProtectedEntryOpen)
        return "a protected entry is not closed by \">\"";
    return "a quoted key or value is not closed";
}

// Reads the file at s.path. With missingIsEmpty a file that does not exist
// reads as an empty database (it is created when saved).
void Read(Settings& s, bool missingIsEmpty) {
    RzToolExpectFile(s.path);
    struct stat st;
    if (missingIsEmpty && stat(s.path.c_str(), &st) != 0 && errno == ENOENT) return;
    RzString text;
    {
        RzFile file(Spec(s.path), eRzFileRead);
        text = file.ReadString();
    }
    // As RzDataBase::ReadFromString reads, keeping the position for messages.
    int32_t pos = 0;
    s.protectedForm = RzDataBase::GetNextChar(text, pos) == '{';
    if (!s.protectedForm) pos = 0;
    try {
        s.db->String2DB(text, pos);
    } catch (const RzError& e) {
        // Stay on the line where reading stopped rather than the next one.
        if (pos > 0 && pos <= text.length() && IsLineEnd(text.c_str()[pos - 1])) --pos;
        const char* what = ReadingError(e);
        throw RzToolFailure(s.path + ":" + Where(text, pos) + ": " + RzToolErrorText(e) +
                            (what ? std::string(": ") + what : std::string()));
    }
    // Reading ends early only behind a closing brace at the top level.
    int32_t next = pos;
    if (RzDataBase::GetNextChar(text, next) != 0) s.ignoredFrom = Where(text, pos - 1);
}

// Entries of the tree, depth first, without recursion: visit(level, index).
template <class Visit>
void ForEachEntry(RzDataBase& db, Visit visit) {
    std::vector<std::pair<RzDataBase*, int>> open{{&db, 0}};
    while (!open.empty()) {
        RzDataBase* level = open.back().first;
        const int i = open.back().second++;
        if (i >= level->GetCount()) {
            open.pop_back();
            continue;
        }
        visit(*level, i);
        if (RzDataBase* sub = level->GetIndexedDB(i)) open.emplace_back(sub, 0);
    }
}

// The first key the plain form would not give back: one written bare that
// starts with a character the reader takes for structure.
std::string KeyThePlainFormLoses(RzDataBase& db) {
    std::string lost;
    bool found = false;
    ForEachEntry(db, [&](RzDataBase& level, int i) {
        if (found) return;
        const RzString key = level.GetIndexedName(i);
        const char* k = key.c_str();
        if (*k && strchr("#{}<", *k) && !strpbrk(k, " \t\r\n\"")) lost = k, found = true;
    });
    return found ? lost : std::string();
}

// Saves s.db over its file in its form, safely. Refuses when saving would
// lose what the file holds beyond what was read.
void Save(Settings& s) {
    if (!s.ignoredFrom.empty())
        throw RzToolFailure(s.path + ":" + s.ignoredFrom +
                            ": reading ends at this closing brace, and saving would drop the "
                            "text after it");
    if (!s.protectedForm) {
        const std::string key = KeyThePlainFormLoses(*s.db);
        if (!key.empty())
            throw RzToolFailure(
                s.path + ": the plain form cannot keep the key " + RzToolDumpKey(Text(key)) +
                "; the file must stay in the protected form (rz db fmt --protected)");
    }
    struct FormGuard {
        bool saved;
        ~FormGuard() { RzDataBase::SaveControlChars(saved); }
    } guard{RzDataBase::SaveControlChars(s.protectedForm)};
    s.db->WriteToFile(Spec(s.path));
}

// A path given on the command line in the dump's form: its components as
// RzDataBase::GetEntry splits it.
std::string DumpPath(const std::string& path) {
    std::string rest = path.size() > 0 && path[0] == '/' ? path.substr(1) : path;
    if (!rest.empty() && rest.back() == '/') rest.pop_back();
    std::string out;
    size_t from = 0;
    for (;;) {
        const size_t slash = rest.find('/', from);
        if (!out.empty() || from > 0) out += '/';
        out += RzToolDumpKey(Text(rest.substr(from, slash - from)));
        if (slash == std::string::npos) return out;
        from = slash + 1;
    }
}

// The entry at `path`, or a failure naming it.
RzDataBase& Entry(Settings& s, const std::string& path, int& index) {
    RzDataBase* level = s.db->GetEntry(Text(path), false, index);
    if (!level) throw RzToolFailure(s.path + ": no entry at " + DumpPath(path));
    return *level;
}

bool ParseBoolean(const std::string& word) {
    const RzString w = Text(word);
    if (w.cmpIgnoreCase("true") == 0 || word == "1") return true;
    if (w.cmpIgnoreCase("false") == 0 || word == "0") return false;
    throw RzToolUsageError("VALUE must be true, false, 1 or 0, not '" + word + "'");
}

void Quoted(std::string& out, const char* p, size_t n) {
    static const char kDigits[] = "0123456789ABCDEF";
    out += '"';
    for (size_t i = 0; i < n; ++i) {
        const unsigned char c = static_cast<unsigned char>(p[i]);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            default:
                if (c < 0x20 || c == 0x7F) {
                    out += "\\x";
                    out += kDigits[c >> 4];
                    out += kDigits[c & 15];
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    out += '"';
}

void WriteLine(std::ostream& out, const char* prefix, const std::string& path,
               const std::string& value) {
    out << prefix << path << " = " << value << '\n';
}

}  // namespace

// --- The dump format ------------------------------------------------------------

std::string RzToolDumpKey(const RzString& key) {
    const char* k = key.c_str();
    const size_t n = strlen(k);
    bool bare = n > 0;
    for (size_t i = 0; i < n && bare; ++i) {
        const unsigned char c = static_cast<unsigned char>(k[i]);
        bare = c > 0x20 && c != 0x7F && c != '"' && c != '/' && c != '[';
    }
    if (bare) return std::string(k, n);
    std::string out;
    Quoted(out, k, n);
    return out;
}

std::string RzToolDumpValue(const RzString& value) {
    const char* v = value.c_str();
    const size_t n = strlen(v);
    bool bare = n > 0 && v[0] != '"' && v[0] != ' ' && v[n - 1] != ' ';
    for (size_t i = 0; i < n && bare; ++i) {
        const unsigned char c = static_cast<unsigned char>(v[i]);
        bare = c >= 0x20 && c != 0x7F;
    }
    if (bare) return std::string(v, n);
    std::string out;
    Quoted(out, v, n);
    return out;
}

void RzToolDumpEntries(
    RzDataBase& db, const std::string& prefix,
    const std::function<void(const std::string& path, const std::string& value)>& entry) {
    struct Level {
        RzDataBase* db;
        int next;
        size_t pathLength;
        // How often each key was met so far, kept once the level repeats one.
        std::unique_ptr<std::unordered_map<std::string, int>> seen;
    };
    std::vector<Level> open;
    open.push_back(Level{&db, 0, prefix.size(), nullptr});
    std::string path = prefix;
    while (!open.empty()) {
        Level& level = open.back();
        const int i = level.next++;
        if (i >= level.db->GetCount()) {
            open.pop_back();
            continue;
        }
        const RzString key = level.db->GetIndexedName(i);
        int occurrence = 1;
        if (!level.seen && level.db->GetIndex(key) != i) {
            level.seen.reset(new std::unordered_map<std::string, int>);
            for (int j = 0; j < i; ++j) ++(*level.seen)[level.db->GetIndexedName(j).c_str()];
        }
        if (level.seen) occurrence = ++(*level.seen)[key.c_str()];
        path.resize(level.pathLength);
        if (!path.empty()) path += '/';
        path += RzToolDumpKey(key);
        if (occurrence > 1) path += "[" + std::to_string(occurrence) + "]";
        entry(path, RzToolDumpValue(level.db->GetIndexedValue(i)));
        if (RzDataBase* sub = level.db->GetIndexedDB(i))
            open.push_back(Level{sub, 0, path.size(), nullptr});
    }
}

void RzToolLineColumn(const char* text, size_t n, size_t pos, int& line, int& column) {
    if (pos > n) pos = n;
    line = 1;
    size_t start = 0;
    for (size_t i = 0; i < pos; ++i) {
        if (text[i] == '\n' || (text[i] == '\r' && (i + 1 >= n || text[i + 1] != '\n'))) {
            ++line;
            start = i + 1;
        }
    }
    column = static_cast<int>(pos - start) + 1;
}

// --- The commands -----------------------------------------------------------------

int RzToolDbGet(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"--int", false}, {"--real", false}, {"--bool", false}});
    a.ExpectOperands(2, 2, "FILE PATH");
    const std::string type = a.OneOf({"--int", "--real", "--bool"});
    Settings s;
    s.path = a.Operands()[0];
    Read(s, false);
    const std::string& path = a.Operands()[1];
    int index = -1;
    RzDataBase& level = Entry(s, path, index);
    const RzString p = Text(path);
    if (type == "--int") {
        io.out << s.db->GetInt(p, 0, false) << '\n';
    } else if (type == "--real") {
        io.out << RzToolRealText(s.db->GetDouble(p, 0.0, false)) << '\n';
    } else if (type == "--bool") {
        io.out << (s.db->GetBoolean(p, false, false) ? "true" : "false") << '\n';
    } else {
        const RzString value = level.GetIndexedValue(index);
        io.out.write(value.c_str(), value.length());
        io.out << '\n';
    }
    return kRzToolDone;
}

int RzToolDbSet(const std::vector<std::string>& args, RzToolIO&) {
    const RzToolArgs a(args, {{"--int", false}, {"--real", false}, {"--bool", false}});
    a.ExpectOperands(3, 3, "FILE PATH VALUE");
    const std::string type = a.OneOf({"--int", "--real", "--bool"});
    const RzString path = Text(a.Operands()[1]);
    const std::string& value = a.Operands()[2];
    // The value is checked before the file is touched.
    int32_t integer = 0;
    double real = 0;
    bool boolean = false;
    if (type == "--int") integer = RzToolInt(value, "VALUE");
    if (type == "--real") real = RzToolReal(value, "VALUE");
    if (type == "--bool") boolean = ParseBoolean(value);
    Settings s;
    s.path = a.Operands()[0];
    Read(s, true);
    if (type == "--int") {
        s.db->SetInt(path, integer);
    } else if (type == "--real") {
        s.db->SetDouble(path, real);
    } else if (type == "--bool") {
        s.db->SetBoolean(path, boolean);
    } else {
        s.db->SetString(path, Text(value));
    }
    Save(s);
    return kRzToolDone;
}

int RzToolDbRm(const std::vector<std::string>& args, RzToolIO&) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(2, 2, "FILE PATH");
    Settings s;
    s.path = a.Operands()[0];
    Read(s, false);
    int index = -1;
    Entry(s, a.Operands()[1], index).RemoveIndex(index);
    Save(s);
    return kRzToolDone;
}

int RzToolDbDump(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(1, 2, "FILE");
    Settings s;
    s.path = a.Operands()[0];
    Read(s, false);
    RzDataBase* top = s.db;
    std::string prefix;
    if (a.Operands().size() == 2) {
        const std::string& path = a.Operands()[1];
        int index = -1;
        top = Entry(s, path, index).GetIndexedDB(index);
        prefix = DumpPath(path);
    }
    if (top)
        RzToolDumpEntries(*top, prefix, [&](const std::string& path, const std::string& value) {
            WriteLine(io.out, "", path, value);
        });
    return kRzToolDone;
}

int RzToolDbFmt(const std::vector<std::string>& args, RzToolIO&) {
    const RzToolArgs a(args, {{"--plain", false}, {"--protected", false}});
    a.ExpectOperands(1, 1, "FILE");
    const std::string form = a.OneOf({"--plain", "--protected"});
    Settings s;
    s.path = a.Operands()[0];
    Read(s, false);
    if (!form.empty()) s.protectedForm = form == "--protected";
    Save(s);
    return kRzToolDone;
}

int RzToolDbCheck(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(1, 1, "FILE");
    Settings s;
    s.path = a.Operands()[0];
    Read(s, false);
    long entries = 0;
    ForEachEntry(*s.db, [&](RzDataBase&, int) { ++entries; });
    io.out << s.path << ": ok, " << entries << (entries == 1 ? " entry" : " entries") << ", "
           << (s.protectedForm ? "protected" : "plain") << " form\n";
    if (!s.ignoredFrom.empty())
        io.out << s.path << ":" << s.ignoredFrom
               << ": warning: reading ends at this closing brace; the text after it is not read\n";
    return kRzToolDone;
}

int RzToolDbDiff(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(2, 2, "A B");
    Settings sa, sb;
    sa.path = a.Operands()[0];
    sb.path = a.Operands()[1];
    Read(sa, false);
    Read(sb, false);
    using Entries = std::vector<std::pair<std::string, std::string>>;
    Entries ea, eb;
    auto collect = [](Entries& e) {
        return [&e](const std::string& path, const std::string& value) {
            e.emplace_back(path, value);
        };
    };
    RzToolDumpEntries(*sa.db, "", collect(ea));
    RzToolDumpEntries(*sb.db, "", collect(eb));
    std::unordered_map<std::string, size_t> inB;
    for (size_t i = 0; i < eb.size(); ++i) inB.emplace(eb[i].first, i);
    std::vector<bool> matched(eb.size());
    bool differ = false;
    for (const auto& e : ea) {
        const auto found = inB.find(e.first);
        if (found != inB.end()) matched[found->second] = true;
        if (found != inB.end() && eb[found->second].second == e.second) continue;
        differ = true;
        WriteLine(io.out, "- ", e.first, e.second);
        if (found != inB.end()) WriteLine(io.out, "+ ", e.first, eb[found->second].second);
    }
    for (size_t i = 0; i < eb.size(); ++i) {
        if (matched[i]) continue;
        differ = true;
        WriteLine(io.out, "+ ", eb[i].first, eb[i].second);
    }
    return differ ? kRzToolFailed : kRzToolDone;
}

int RzToolDbMerge(const std::vector<std::string>& args, RzToolIO&) {
    const RzToolArgs a(args, {{"--append", false}});
    a.ExpectOperands(2, 2, "A B");
    Settings target, source;
    target.path = a.Operands()[0];
    source.path = a.Operands()[1];
    Read(source, false);
    struct stat st;
    const bool created = stat(target.path.c_str(), &st) != 0 && errno == ENOENT;
    Read(target, true);
    if (created) target.protectedForm = source.protectedForm;
    target.db->MergeDB(source.db, a.Has("--append"));
    Save(target);
    return kRzToolDone;
}
