#include "RzTool.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <charconv>
#include <istream>
#include <new>
#include <ostream>
#include <stdexcept>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzError.h>

#include "RzToolDb.h"
#include "RzToolFiles.h"
#include "RzToolText.h"
#include "RzToolValues.h"

#ifndef RZ_TOOL_VERSION
#define RZ_TOOL_VERSION "unknown"
#endif

namespace {

// One command: its name as typed, its function, the usage line and the rest
// of its --help text.
struct Command {
    const char* name;
    int (*run)(const std::vector<std::string>&, RzToolIO&);
    const char* usage;
    const char* help;
    // The exit code of a failure: 1, except where 1 answers the question.
    int failed = kRzToolFailed;
};

const Command kCommands[] = {
    {"db get", RzToolDbGet, "rz db get FILE PATH [--int|--real|--bool]",
     "Prints the value of the entry at PATH in the settings file FILE, followed by a\n"
     "line feed. --int, --real and --bool print it as the typed getters read it.\n"
     "A missing entry is an error.\n"},
    {"db set", RzToolDbSet, "rz db set FILE PATH VALUE [--int|--real|--bool]",
     "Stores VALUE at PATH, creating the entry, the levels above it and the file as\n"
     "needed, and saves the file safely (a crash leaves the old file or the new one).\n"
     "--int, --real and --bool check VALUE and store it through the typed setters\n"
     "(--real keeps a stored text that reads as the same number; --bool takes true,\n"
     "false, 1 or 0). The file keeps its form, plain or protected.\n"},
    {"db rm", RzToolDbRm, "rz db rm FILE PATH",
     "Removes the entry at PATH, with everything below it, and saves the file.\n"},
    {"db dump", RzToolDbDump, "rz db dump FILE [PATH]",
     "Lists every entry of FILE (or those below PATH) on a line of its own:\n"
     "  colors/red = 0.5\n"
     "Path components and values are written bare, or in double quotes with the\n"
     "escapes \\\" \\\\ \\t \\n \\r \\xHH where they need them; the second entry of the\n"
     "same key on one level is named key[2]. Every line names exactly one entry.\n"},
    {"db fmt", RzToolDbFmt, "rz db fmt [--plain|--protected] FILE",
     "Rewrites FILE as the framework writes it, in the plain or the protected form\n"
     "(by default the form it has), and saves it safely. Comments are not kept.\n"},
    {"db check", RzToolDbCheck, "rz db check FILE",
     "Reads FILE and prints \"FILE: ok\" with the number of entries, or fails with the\n"
     "error and the line and column where reading stopped.\n"},
    {"db diff", RzToolDbDiff, "rz db diff A B",
     "Compares two settings files entry by entry, by path, in the form of rz db dump:\n"
     "\"- \" lines are only in A (or have another value there), \"+ \" lines only in B.\n"
     "Exit status 0 when they hold the same entries, 1 when they differ, 2 when\n"
     "they cannot be compared.\n",
     kRzToolUsage},
    {"db merge", RzToolDbMerge, "rz db merge A B [--append]",
     "Merges the entries of B into A and saves A safely. Without --append an entry\n"
     "of B replaces the value at its path in A; with --append it is added after\n"
     "A's entries, also where A has the key already.\n"},
    {"info", RzToolInfo, "rz info FILE...",
     "Describes each file or folder: its type and creator codes and the type's name,\n"
     "the Finder information stored for it (type, creator, flags), whether it is\n"
     "locked, its creation and modification dates (UTC) and its size.\n"},
    {"stamp", RzToolStamp, "rz stamp FILE [--type T] [--creator C] [--hide|--show]",
     "Stores a type and creator code (four characters, or 0x and up to eight hex\n"
     "digits) in the file's Finder information, and hides or shows it.\n"},
    {"ls", RzToolLs, "rz ls DIR [--depth N]",
     "Walks the folder DIR and lists every item below it, depth first: type and\n"
     "creator codes, size, modification date (UTC) and path; folders end in \"/\".\n"
     "--depth 1 lists the folder's own items only; 0, the default, the whole tree.\n"
     "A long walk shows a progress line on standard error when that is a terminal.\n"},
    {"unique", RzToolUnique, "rz unique FILE",
     "Prints FILE when no file of that name exists, else the first free name\n"
     "numbered as the framework numbers them (photo-001.jpg, photo-002.jpg, ...).\n"
     "Creates nothing.\n"},
    {"conv", RzToolConv, "rz conv --from CHARSET --to CHARSET [FILE...]",
     "Converts standard input, or the files one after another, between the\n"
     "character sets macroman, latin1, utf8 and utf16 (big-endian, no byte-order\n"
     "mark) and writes the result to standard output. Every byte counts: zero\n"
     "bytes pass as zeros, malformed UTF-8 is decoded as the framework decodes it.\n"},
    {"hex", RzToolHex, "rz hex [-d] [FILE...]",
     "Writes standard input, or the files, as upper-case hexadecimal text, 32 bytes\n"
     "to a line. With -d decodes such text (either case, white space anywhere)\n"
     "back to bytes.\n"},
    {"random", RzToolRandom, "rz random [--seed S] [-n N] VARIATE [ARGS...]",
     "Prints N (default 1) numbers of a random variate, one a line, from the seed S\n"
     "(without one, from the clock: the seed is then printed on standard error).\n"
     "Variates: bernoulli P, binomial N P, equilikely A B, geometric P, pascal N P,\n"
     "poisson M, uniform A B, exponential M, erlang N B, normal M S, lognormal A B,\n"
     "chisquare N, student N. Reals are printed so that they read back exactly.\n"},
    {"date", RzToolDate, "rz date [--short] [TEXT]",
     "Prints the date's text forms, its day number and second of the day: of TEXT\n"
     "(\"2008-3-7 9:05:00\", \"2008-03-07\", ...; with --short the six-character form\n"
     "\"IDHJFA\"), or of the local time now.\n"},
};

const char kOverview[] =
    "Usage: rz COMMAND [ARGUMENTS...]\n"
    "       rz help [COMMAND]   rz COMMAND --help   rz --version\n"
    "\n"
    "Settings files:\n"
    "  db get FILE PATH          print the value at PATH\n"
    "  db set FILE PATH VALUE    store a value (--int, --real, --bool)\n"
    "  db rm FILE PATH           remove an entry\n"
    "  db dump FILE [PATH]       list the entries with their paths\n"
    "  db fmt FILE               rewrite the file (--plain, --protected)\n"
    "  db check FILE             check that the file reads\n"
    "  db diff A B               compare two files entry by entry\n"
    "  db merge A B              merge B into A (--append)\n"
    "Files:\n"
    "  info FILE...              type, creator, Finder flags, lock, dates, size\n"
    "  stamp FILE                set type and creator, hide or show\n"
    "  ls DIR                    walk a folder (--depth N)\n"
    "  unique FILE               the next free numbered name\n"
    "Text:\n"
    "  conv --from CS --to CS    convert macroman, latin1, utf8, utf16\n"
    "  hex [-d]                  to and from hexadecimal text\n"
    "Numbers and dates:\n"
    "  random VARIATE ARGS...    random variates (--seed S, -n N)\n"
    "  date [TEXT]               the date's text forms\n"
    "\n"
    "Exit status: 0 done, 1 the operation failed, 2 a wrong command line.\n"
    "See rz(1) for everything.\n";

// The command named by the first one or two words, or null; `words` tells
// how many words its name has.
const Command* FindCommand(const std::vector<std::string>& args, size_t& words) {
    for (const Command& c : kCommands) {
        const std::string name = c.name;
        const size_t blank = name.find(' ');
        if (blank == std::string::npos) {
            if (!args.empty() && args[0] == name) return words = 1, &c;
        } else if (args.size() >= 2 && args[0] == name.substr(0, blank) &&
                   args[1] == name.substr(blank + 1)) {
            return words = 2, &c;
        }
    }
    return nullptr;
}

void PrintHelp(const Command& c, std::ostream& out) {
    out << "Usage: " << c.usage << "\n\n" << c.help;
}

// Whether the words ask for help before any "--".
bool AsksForHelp(const std::vector<std::string>& words) {
    for (const std::string& w : words) {
        if (w == "--") return false;
        if (w == "--help" || w == "-h") return true;
    }
    return false;
}

struct ResultName {
    int32_t code;
    const char* name;
    const char* meaning;
};

const ResultName kResults[] = {
    {noErr, "noErr", "no error"},
    {dskFulErr, "dskFulErr", "the disk is full"},
    {nsvErr, "nsvErr", "no such volume"},
    {ioErr, "ioErr", "input/output error"},
    {bdNamErr, "bdNamErr", "a name the file system cannot hold"},
    {tmfoErr, "tmfoErr", "too many files open"},
    {fnfErr, "fnfErr", "file not found"},
    {fLckdErr, "fLckdErr", "the item is locked"},
    {vLckdErr, "vLckdErr", "the volume is read-only"},
    {fBsyErr, "fBsyErr", "the item is busy"},
    {dupFNErr, "dupFNErr", "an item of that name exists"},
    {paramErr, "paramErr", "a bad argument"},
    {permErr, "permErr", "permission denied"},
    {memFullErr, "memFullErr", "out of memory"},
    {dirNFErr, "dirNFErr", "folder not found"},
    {wrgVolTypErr, "wrgVolTypErr", "the file system keeps no Finder information"},
    {notAFileErr, "notAFileErr", "a folder, not a file"},
    {errFSNotAFolder, "errFSNotAFolder", "not a folder"},
    {kTextUnsupportedEncodingErr, "kTextUnsupportedEncodingErr", "no converter for the encoding"},
    {kTextMalformedInputErr, "kTextMalformedInputErr", "bytes that form no character"},
    {kTextUndefinedElementErr, "kTextUndefinedElementErr", "a character the encoding lacks"},
};

const ResultName* FindResult(int32_t code) {
    for (const ResultName& r : kResults)
        if (r.code == code) return &r;
    return nullptr;
}

}  // namespace

const char* RzToolVersion() {
    return RZ_TOOL_VERSION;
}

std::vector<std::string> RzToolUsageLines() {
    std::vector<std::string> lines;
    for (const Command& c : kCommands) lines.push_back(c.usage);
    return lines;
}

int RzToolRun(const std::vector<std::string>& args, RzToolIO& io) {
    std::string where = "rz";  // the prefix of error lines
    const Command* command = nullptr;
    try {
        if (args.empty()) {
            io.err << "rz: no command given\n" << kOverview;
            return kRzToolUsage;
        }
        const std::string& first = args[0];
        if (first == "--version") {
            io.out << "rz " << RzToolVersion() << "\n";
            return kRzToolDone;
        }
        // The overview also answers for the group of db commands.
        const bool dbHelp =
            args.size() == 2 && ((first == "db" && (args[1] == "--help" || args[1] == "-h")) ||
                                 (first == "help" && args[1] == "db"));
        if (first == "--help" || first == "-h" || (first == "help" && args.size() == 1) || dbHelp) {
            io.out << kOverview;
            return kRzToolDone;
        }
        size_t words = 0;
        if (first == "help") {
            const std::vector<std::string> topic(args.begin() + 1, args.end());
            command = FindCommand(topic, words);
            if (!command || words != topic.size())
                throw RzToolUsageError("no command '" + std::string(topic[0]) + "'");
            PrintHelp(*command, io.out);
            return kRzToolDone;
        }
        command = FindCommand(args, words);
        if (!command) {
            const bool group = first == "db";
            throw RzToolUsageError(group && args.size() > 1 ? "no command 'db " + args[1] + "'"
                                   : group ? "db needs a command: get, set, rm, dump, fmt, check, "
                                             "diff or merge"
                                   : first[0] == '-' ? "unknown option '" + first + "'"
                                                     : "no command '" + first + "'");
        }
        where += std::string(": ") + command->name;
        const std::vector<std::string> rest(args.begin() + static_cast<ptrdiff_t>(words),
                                            args.end());
        if (AsksForHelp(rest)) {
            PrintHelp(*command, io.out);
            return kRzToolDone;
        }
        return command->run(rest, io);
    } catch (const RzToolUsageError& e) {
        io.err << where << ": " << e.message << "\n";
        io.err << "Try '"
               << (command ? "rz " + std::string(command->name) + " --help" : "rz --help")
               << "'.\n";
        return kRzToolUsage;
    } catch (const RzToolFailure& e) {
        io.err << where << ": " << e.message << "\n";
    } catch (const RzError& e) {
        io.err << where << ": " << RzToolErrorText(e) << "\n";
    } catch (const std::bad_alloc&) {
        io.err << where << ": out of memory\n";
    } catch (const std::exception& e) {
        io.err << where << ": " << e.what() << "\n";
    } catch (...) {
        io.err << where << ": unexpected failure\n";
    }
    return command ? command->failed : kRzToolFailed;
}

// --- Error texts ----------------------------------------------------------------

std::string RzToolErrorText(const RzError& error) {
    const int32_t code = static_cast<int32_t>(error.GetErr());
    const char* symbol = RzErrorName(error.GetErr());
    const std::string name = error.GetErrName();
    std::string text =
        std::string(symbol ? symbol : name.c_str()) + " (" + std::to_string(code) + ")";
    if (symbol && name != symbol) text += ": " + name;
    if (name == "err")
        if (const ResultName* r = FindResult(code))
            text += std::string(": ") + r->name + ", " + r->meaning;
    return text;
}

std::string RzToolResultText(int32_t code) {
    if (const ResultName* r = FindResult(code))
        return std::string(r->name) + " (" + std::to_string(code) + "): " + r->meaning;
    return "error " + std::to_string(code);
}

// --- The command line --------------------------------------------------------------

RzToolArgs::RzToolArgs(const std::vector<std::string>& words,
                       std::initializer_list<RzToolOption> options) {
    bool optionsEnded = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& w = words[i];
        const bool operand = optionsEnded || w.size() < 2 || w[0] != '-' ||
                             (w[1] >= '0' && w[1] <= '9') || w[1] == '.';
        if (operand) {
            operands.push_back(w);
            continue;
        }
        if (w == "--") {
            optionsEnded = true;
            continue;
        }
        const size_t equals = w.compare(0, 2, "--") == 0 ? w.find('=') : std::string::npos;
        const std::string name = w.substr(0, equals);
        const RzToolOption* option = nullptr;
        for (const RzToolOption& o : options)
            if (name == o.name) option = &o;
        if (!option) throw RzToolUsageError("unknown option '" + name + "'");
        if (!option->takesValue) {
            if (equals != std::string::npos)
                throw RzToolUsageError("option '" + name + "' takes no value");
            given.emplace_back(name, std::string());
        } else if (equals != std::string::npos) {
            given.emplace_back(name, w.substr(equals + 1));
        } else if (i + 1 < words.size()) {
            given.emplace_back(name, words[++i]);
        } else {
            throw RzToolUsageError("option '" + name + "' needs a value");
        }
    }
}

bool RzToolArgs::Has(const char* name) const {
    for (const auto& g : given)
        if (g.first == name) return true;
    return false;
}

std::string RzToolArgs::Value(const char* name, const std::string& fallback) const {
    for (auto it = given.rbegin(); it != given.rend(); ++it)
        if (it->first == name) return it->second;
    return fallback;
}

std::string RzToolArgs::OneOf(std::initializer_list<const char*> names) const {
    std::string found;
    for (const char* name : names) {
        if (!Has(name)) continue;
        if (!found.empty()) throw RzToolUsageError(found + " and " + name + " exclude each other");
        found = name;
    }
    return found;
}

void RzToolArgs::ExpectOperands(size_t least, size_t most, const char* names) const {
    if (operands.size() < least) throw RzToolUsageError(std::string("expected ") + names);
    if (operands.size() > most)
        throw RzToolUsageError("unexpected argument '" + operands[most] + "'");
}

int32_t RzToolInt(const std::string& word, const char* what) {
    int32_t v = 0;
    const char* end = word.data() + word.size();
    const std::from_chars_result r = std::from_chars(word.data(), end, v);
    if (word.empty() || r.ec != std::errc() || r.ptr != end)
        throw RzToolUsageError(std::string(what) +
                               " must be a whole number from -2147483648 "
                               "to 2147483647, not '" +
                               word + "'");
    return v;
}

double RzToolReal(const std::string& word, const char* what) {
    // strtod, not from_chars: it also reads "inf", "nan" and a leading '+'.
    char* end = nullptr;
    errno = 0;
    const double v = strtod(word.c_str(), &end);
    if (word.empty() || end != word.c_str() + word.size() || memchr(word.data(), 0, word.size()))
        throw RzToolUsageError(std::string(what) + " must be a number, not '" + word + "'");
    return v;
}

std::string RzToolRealText(double v) {
    if (v != v) return "nan";  // the sign of a NaN means nothing
    char text[64];
    const std::to_chars_result r = std::to_chars(text, text + sizeof text, v);
    return std::string(text, r.ptr);
}

void RzToolExpectFile(const std::string& path) {
    struct stat st;
    if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        throw RzToolFailure(path + ": is a folder, not a file");
}
