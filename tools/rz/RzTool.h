// The rz command-line tool: what every command shares.
//
// Each command is a function that takes its arguments (the words after the
// command's name) and an RzToolIO, writes its results to io.out and returns
// an exit code; RzToolRun picks the command, answers --help, and turns
// whatever a command throws into one line on io.err and an exit code:
//
//     0  done
//     1  the operation failed (rz db diff: the files differ)
//     2  the command line is wrong (rz db diff: the operation failed)
//
// Commands report their own failures by throwing RzToolFailure (a message)
// or RzToolUsageError (a wrong command line); errors of the framework
// (RzError), std::bad_alloc and other std::exceptions are caught in
// RzToolRun and reported the same way. None of this is part of the Rz
// library's interface.
#ifndef RZ_TOOLS_RZTOOL_H
#define RZ_TOOLS_RZTOOL_H

#include <stddef.h>
#include <stdint.h>

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <vector>

class RzError;

enum { kRzToolDone = 0, kRzToolFailed = 1, kRzToolUsage = 2 };

// Where a command reads and writes. Standard input and output carry bytes as
// they are (zero bytes included).
struct RzToolIO {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    // Whether a long walk may show a progress line on `err` (a terminal that
    // the output does not go to).
    bool progress;
    // A steady clock in milliseconds that paces the progress line.
    uint32_t (*clock)();
};

// A failure of the operation: "rz: <command>: <message>", exit code 1 (2 for
// rz db diff).
struct RzToolFailure {
    std::string message;
    explicit RzToolFailure(std::string text) : message(std::move(text)) {}
};

// A wrong command line: the message, a hint to the command's help, exit code 2.
struct RzToolUsageError {
    std::string message;
    explicit RzToolUsageError(std::string text) : message(std::move(text)) {}
};

// Runs rz with the words after the program's name; returns the exit code.
// Throws nothing.
int RzToolRun(const std::vector<std::string>& args, RzToolIO& io);

// The version the tool reports ("0.1.0").
const char* RzToolVersion();
// Every command's usage line ("rz db get FILE PATH [--int|--real|--bool]"),
// as --help prints it.
std::vector<std::string> RzToolUsageLines();

// --- Error texts ----------------------------------------------------------------

// An RzError as one line: its code's symbolic name and the code, then the
// error's own name where that says more: "RzFormatErr (19)",
// "RzFileNotOpen (12): FileNotOpen (for reading): /x/y". Codes are printed as
// signed 32-bit numbers; operating-system results passed on with the name
// "err" read "err (-43): fnfErr, file not found".
std::string RzToolErrorText(const RzError& error);
// A File Manager result code: "fnfErr (-43): file not found"; unknown codes
// as "error -12345".
std::string RzToolResultText(int32_t code);

// --- The command line --------------------------------------------------------------

// An option of a command: its name ("--depth", "-n") and whether it takes a
// value.
struct RzToolOption {
    const char* name;
    bool takesValue;
};

// A command's words split into options and operands. Options may stand
// anywhere among the operands; "--name=value" and "--name value" both give a
// value; "--" ends the options. A word that starts with "-" followed by a
// digit or ".", and "-" alone, is an operand (negative numbers, standard
// input). Throws RzToolUsageError for an unknown option or a missing value.
class RzToolArgs {
public:
    RzToolArgs(const std::vector<std::string>& words, std::initializer_list<RzToolOption> options);

    bool Has(const char* name) const;
    // The value of the option's last occurrence, or `fallback`.
    std::string Value(const char* name, const std::string& fallback = std::string()) const;
    // Which of the flags `names` is given: "" for none; more than one is a
    // usage error.
    std::string OneOf(std::initializer_list<const char*> names) const;
    const std::vector<std::string>& Operands() const { return operands; }
    // Requires between `least` and `most` operands; `names` names them for the
    // message ("FILE PATH").
    void ExpectOperands(size_t least, size_t most, const char* names) const;

private:
    std::vector<std::pair<std::string, std::string>> given;
    std::vector<std::string> operands;
};

// Numbers of the command line, whole words only; `what` names the argument
// in the usage error.
int32_t RzToolInt(const std::string& word, const char* what);
double RzToolReal(const std::string& word, const char* what);

// The shortest text that reads back as the same double ("0.1", "1e-07",
// "nan").
std::string RzToolRealText(double v);

// Throws RzToolFailure "<path>: is a folder" when `path` names a folder;
// anything else (a missing file included) is left to the reader, which
// reports it.
void RzToolExpectFile(const std::string& path);

#endif
