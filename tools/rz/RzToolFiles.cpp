#include "RzToolFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include <ostream>

#include <Rz/FileSpec/RzFileInfo.h>
#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/FileSpec/RzIterateDir.h>
#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzSystem/RzDate.h>
#include <Rz/RzSystem/RzSystem.h>

namespace {

RzFileSpec Spec(const std::string& path) {
    return RzFileSpec(RzString(path.data(), static_cast<int32_t>(path.size()), false));
}

// The names of the file-type table's types.
const char* TypeName(RzFileType type) {
    static const char* const kNames[] = {
        "unknown",      "text",         "ICC profile", "colour swatches", "PICT image",
        "JPEG image",   "TIFF image",   "PNG image",   "Targa image",     "Scitex CT image",
        "GIF image",    "PDF document", "binary data", "application",     "HTML document",
        "font metrics", "PPM image",    "link",        "dynamic library", "JPEG 2000 image"};
    const int i = static_cast<int>(type);
    return i >= 0 && i < static_cast<int>(sizeof kNames / sizeof *kNames) ? kNames[i] : "unknown";
}

// The Finder flags by name, as the Finder defines them.
std::string FlagsText(uint16_t flags) {
    static const struct {
        uint16_t bit;
        const char* name;
    } kFlags[] = {{0x8000, "alias"},        {0x4000, "invisible"},  {0x2000, "has bundle"},
                  {0x1000, "name locked"},  {0x0800, "stationery"}, {0x0400, "custom icon"},
                  {0x0100, "inited"},       {0x0080, "no INITs"},   {0x0040, "shared"},
                  {0x000E, "colour label"}, {0x0001, "on the desk"}};
    char hex[8];
    snprintf(hex, sizeof hex, "0x%04X", flags);
    std::string names;
    for (const auto& f : kFlags)
        if (flags & f.bit) names += (names.empty() ? "" : ", ") + std::string(f.name);
    return names.empty() ? hex : hex + (" (" + names + ")");
}

std::string DateText(int64_t seconds) {
    const time_t t = static_cast<time_t>(seconds);
    struct tm utc = {};
    if (!gmtime_r(&t, &utc)) return "?";
    const RzDate date(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min,
                      utc.tm_sec);
    return std::string(date.GetString().c_str()) + " UTC";
}

// Describes the item, after a blank line when an item was described before;
// nothing is written for one that cannot be looked up.
void Describe(const std::string& path, std::ostream& out, bool& described) {
    struct statx st = {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &st) != 0)
        throw RzToolFailure(path + ": " + strerror(errno));
    if (described) out << '\n';
    described = true;
    const bool folder = S_ISDIR(st.stx_mode);
    RzFileSpec spec = Spec(path);
    out << (folder ? "folder: " : "file: ") << path << '\n';
    if (!folder) {
        RzMacReadCreatorType(spec);
        out << "type: " << RzToolCodeText(spec.GetTypeID()) << ' '
            << TypeName(RzFileSpec::TypeID2Type(spec.GetTypeID())) << '\n';
        out << "creator: " << RzToolCodeText(spec.GetCreatorID()) << '\n';
    }
    uint32_t type = 0, creator = 0;
    uint16_t flags = 0;
    const int32_t err = RzMacGetFinderInfo(spec, type, creator, flags);
    out << "finder: ";
    if (err != 0)
        out << RzToolResultText(err);
    else if (!type && !creator && !flags)
        out << "none";
    else if (folder)
        out << "flags " << FlagsText(flags);
    else
        out << "type " << RzToolCodeText(type) << ", creator " << RzToolCodeText(creator)
            << ", flags " << FlagsText(flags);
    out << "\nlocked: " << (RzSystem::IsFileLocked(spec) ? "yes" : "no") << '\n';
    // Where the file system does not record when an item was made, its
    // creation date is its modification date, as in a folder walk.
    const bool born = (st.stx_mask & STATX_BTIME) != 0;
    out << "created: " << DateText(born ? st.stx_btime.tv_sec : st.stx_mtime.tv_sec) << '\n';
    out << "modified: " << DateText(st.stx_mtime.tv_sec) << '\n';
    if (!folder) out << "size: " << st.stx_size << '\n';
}

// Lists what the walk hands over, with a progress line for long walks.
class Lister : public RzIterateDir {
public:
    Lister(RzToolIO& io_, const std::string& root_) : io(io_), root(root_) {
        started = shown = io.clock ? io.clock() : 0;
    }
    // Erases the progress line.
    void Finish() {
        if (showing) io.err << "\r\033[K" << std::flush;
        showing = false;
    }

    void ProcessFile(const RzFileInfo& info) override {
        const std::string full = info.GetFullName().c_str();
        std::string path =
            full.compare(0, root.size(), root) == 0 ? full.substr(root.size()) : full;
        char line[128];
        if (info.IsFile()) {
            ++files;
            snprintf(line, sizeof line, "%-10s %-10s %12lu  %-19s  ",
                     RzToolCodeText(info.GetTypeID()).c_str(),
                     RzToolCodeText(info.GetCreatorID()).c_str(),
                     static_cast<unsigned long>(info.GetSize()),
                     info.GetModificationDate().GetString().c_str());
        } else {
            ++folders;
            snprintf(line, sizeof line, "%-57s", "folder");
            path += '/';
        }
        io.out << line << path << '\n';
        if (io.progress && io.clock) Progress();
    }

private:
    // At most four updates a second, and none in the first half second.
    void Progress() {
        const uint32_t now = io.clock();
        if (now - started < 500 || (showing && now - shown < 250)) return;
        shown = now;
        showing = true;
        io.err << "\rrz ls: " << files << " files, " << folders << " folders" << std::flush;
    }

    RzToolIO& io;
    const std::string root;  // the walked folder's path and "/", left off every item
    uint32_t started, shown;
    bool showing = false;
    unsigned long files = 0, folders = 0;
};

}  // namespace

std::string RzToolCodeText(uint32_t code) {
    if (code == 0) return "0";
    bool printable = true;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const unsigned c = (code >> shift) & 0xFF;
        printable = printable && c >= 0x20 && c < 0x7F;
    }
    char text[16];
    if (printable)
        snprintf(text, sizeof text, "'%c%c%c%c'", static_cast<char>(code >> 24),
                 static_cast<char>(code >> 16), static_cast<char>(code >> 8),
                 static_cast<char>(code));
    else
        snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

uint32_t RzToolParseCode(const std::string& word, const char* what) {
    if (word.size() > 2 && word.size() <= 10 && (word.compare(0, 2, "0x") == 0)) {
        uint32_t code = 0;
        bool hex = true;
        for (size_t i = 2; i < word.size() && hex; ++i) {
            const char c = word[i];
            const int digit = c >= '0' && c <= '9'   ? c - '0'
                              : c >= 'a' && c <= 'f' ? c - 'a' + 10
                              : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                     : -1;
            hex = digit >= 0;
            code = code << 4 | static_cast<uint32_t>(digit);
        }
        if (hex) return code;
    }
    if (word.empty() || word.size() > 4 || memchr(word.data(), 0, word.size()))
        throw RzToolUsageError(std::string(what) +
                               " must be one to four characters or 0x and up to eight hex "
                               "digits, not '" +
                               word + "'");
    return RzString(word.c_str()).ToSig();
}

int RzToolInfo(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(1, a.Operands().size(), "FILE...");
    bool failed = false, described = false;
    for (const std::string& path : a.Operands()) {
        try {
            Describe(path, io.out, described);
        } catch (const RzToolFailure& e) {
            // The others are still described.
            io.err << "rz: info: " << e.message << '\n';
            failed = true;
        }
    }
    return failed ? kRzToolFailed : kRzToolDone;
}

int RzToolStamp(const std::vector<std::string>& args, RzToolIO&) {
    const RzToolArgs a(
        args, {{"--type", true}, {"--creator", true}, {"--hide", false}, {"--show", false}});
    a.ExpectOperands(1, 1, "FILE");
    const std::string visibility = a.OneOf({"--hide", "--show"});
    const bool codes = a.Has("--type") || a.Has("--creator");
    if (!codes && visibility.empty())
        throw RzToolUsageError("nothing to do: give --type, --creator, --hide or --show");
    const uint32_t type = a.Has("--type") ? RzToolParseCode(a.Value("--type"), "--type") : 0;
    const uint32_t creator =
        a.Has("--creator") ? RzToolParseCode(a.Value("--creator"), "--creator") : 0;
    const std::string& path = a.Operands()[0];
    const RzFileSpec spec = Spec(path);
    int32_t err = codes ? RzMacWriteCreatorType(spec, type, creator) : 0;
    if (err == 0 && !visibility.empty())
        err = RzSystem::SetFileVisible(spec, visibility == "--show");
    if (err != 0) throw RzToolFailure(path + ": " + RzToolResultText(err));
    return kRzToolDone;
}

int RzToolLs(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"--depth", true}});
    a.ExpectOperands(1, 1, "DIR");
    const int32_t depth = RzToolInt(a.Value("--depth", "0"), "--depth");
    if (depth < 0) throw RzToolUsageError("--depth must be 0 or more");
    const std::string& dir = a.Operands()[0];
    const RzFileSpec spec = Spec(dir);
    // Items are listed by their path below the folder as the walk resolves it.
    FSRef ref;
    std::string root;
    if (RzFileSpecToFSRef(ref, spec) == 0) root = ref.path.c_str();
    if (root.empty() || root.back() != '/') root += '/';
    Lister lister(io, root);
    int32_t err = 0;
    try {
        err = lister.Start(spec, depth);
    } catch (...) {
        lister.Finish();
        throw;
    }
    lister.Finish();
    if (err != 0) throw RzToolFailure(dir + ": " + RzToolResultText(err));
    return kRzToolDone;
}

int RzToolUnique(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {});
    a.ExpectOperands(1, 1, "FILE");
    RzFileSpec spec = Spec(a.Operands()[0]);
    spec.SetUniqueName();
    const RzString name = spec.GetFullName();
    io.out.write(name.c_str(), name.length());
    io.out << '\n';
    return kRzToolDone;
}
