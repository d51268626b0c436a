// RzError: the framework's one exception type.
//
// Rz reports its failures by throwing an RzError by value. An error carries a
// numeric code (0 means "no error"), a short symbolic name such as
// "RzArgErr", the base name of the source unit that raised it (for example
// "RzString") and the line. There is no hierarchy: callers tell errors apart by
// code or by name. RzError does not derive from std::exception; catch it by
// type (`catch (const RzError& e)`).
//
// Allocation failures are the exception: strings and containers take their
// memory from the global operator new, whose std::bad_alloc propagates as it
// is (so does a string beyond its largest length). Only blocks taken through
// the memory manager (RzAlloc) turn an allocation failure into
// "RzMemFullErr". The Mac OS file layer returns result codes instead of
// throwing, except where it says otherwise.
//
// Constructing an error with a non-zero code writes one line at debug level 1
// through the debug output ("RzError: %d \"%s\", file \"%s\", line %d"), so that
// every raised error leaves a trace even when it is caught.
#ifndef RZ_RZCORE_RZERROR_H
#define RZ_RZCORE_RZERROR_H

#include <stdint.h>

#include <Rz/RzCore/RzErrorCodes.h>
#include <Rz/RzCore/RzExport.h>

class RZ_API RzError {
public:
    // Code 0, name "Unknown", no file, line 0. Writes nothing.
    RzError();
    // Keeps only the part of `file` after its last '/' or '\\'. A null `name`
    // becomes "Unknown", a null `file` stays null. A non-zero `code` writes the
    // debug line before the fields are stored.
    RzError(uint32_t code, const char* name, const char* file, int line);
    RzError(const RzError& other);
    // Frees this error's strings first, then copies `other`'s fields. There is
    // no self-assignment guard: `e = e` leaves name "Unknown" and no file.
    RzError& operator=(const RzError& other);
    ~RzError();

    // Stores the four fields, copying both strings; does not free earlier ones.
    void Set(uint32_t code, const char* name, const char* file, int line);

    uint32_t GetErr() const { return code; }
    const char* GetErrName() const { return name ? name : ""; }
    const char* GetFileName() const { return file ? file : ""; }
    int GetLine() const { return line; }

    // "No Error" for code 0; otherwise "Error=%ld (%s)" with code and name,
    // the code printed as a signed 32-bit number. The text lives in one
    // process-wide buffer that every call replaces, by design: it is valid
    // until the next call of what() on any error, from anywhere (and not
    // safe to call from two threads at once). Copy it if you keep it.
    const char* what() const;

    // Throws RzError(68, "System error: <err>[ <text>]", no file, line 0).
    static void ThrowSysError(int err, const char* text);

private:
    uint32_t code;
    char* name;
    char* file;
    int32_t line;
};

// Throws RzError(code, name, unit, line). Every error the framework raises
// goes through here; `unit` is the raising unit's base name ("RzString").
[[noreturn]] RZ_API void RzRaise(uint32_t code, const char* name, const char* unit, int line);

// Throws the error of a code of the table in RzErrorCodes.h with its fixed
// name: RzRaiseCode(kRzIndexError, "RzArray", 55) raises "RzIndexError".
[[noreturn]] RZ_API void RzRaiseCode(uint32_t code, const char* unit, int line);

#endif
