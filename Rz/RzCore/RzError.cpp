#include <Rz/RzCore/RzError.h>

#include <stdio.h>
#include <string.h>

#include <Rz/RzIO/RzDebug.h>
#include <Rz/internal/RzRaise.h>

namespace {

// The buffer behind RzError::what(). Its remembered size is never raised, so
// every call replaces the buffer and an earlier result becomes invalid; code
// that keeps a what() text must copy it. Changed only by RzError::what().
char* gWhatBuffer = nullptr;
int32_t gWhatBufferSize = 0;

char* CopyText(const char* s) {
    if (!s) return nullptr;
    size_t n = strlen(s) + 1;
    char* copy = new char[n];
    memcpy(copy, s, n);
    return copy;
}

// The part of a path after its last '/' or '\\'.
const char* BaseName(const char* path) {
    if (!path) return nullptr;
    const char* base = path;
    for (const char* p = path; *p; ++p) {
        if (*p == '/' || *p == '\\') base = p + 1;
    }
    return base;
}

}  // namespace

RzError::RzError() : code(0), name(nullptr), file(nullptr), line(0) {
    Set(0, nullptr, nullptr, 0);
}

RzError::RzError(uint32_t code_, const char* name_, const char* file_, int line_)
    : code(0), name(nullptr), file(nullptr), line(0) {
    const char* base = BaseName(file_);
    if (code_ != 0) {
        RzDebugPrintfImpl(1, "RzError: %d \"%s\", file \"%s\", line %d", static_cast<int>(code_),
                          name_ ? name_ : "", base ? base : "", line_);
    }
    Set(code_, name_, base, line_);
}

RzError::RzError(const RzError& other) : code(0), name(nullptr), file(nullptr), line(0) {
    Set(other.code, other.name, other.file, other.line);
}

RzError& RzError::operator=(const RzError& other) {
    // No self-assignment guard on purpose: the fields are freed before they
    // are read, so `e = e` leaves "Unknown" and no file, as callers expect.
    delete[] name;
    delete[] file;
    name = nullptr;
    file = nullptr;
    Set(other.code, other.name, other.file, other.line);
    return *this;
}

RzError::~RzError() {
    delete[] name;
    delete[] file;
}

void RzError::Set(uint32_t code_, const char* name_, const char* file_, int line_) {
    code = code_;
    line = line_;
    name = CopyText(name_ ? name_ : "Unknown");
    file = CopyText(file_);
}

const char* RzError::what() const {
    if (code == 0 || !name) return "No Error";
    int32_t size = static_cast<int32_t>(strlen(name)) + 50;
    if (file) size += static_cast<int32_t>(strlen(file));
    if (size > gWhatBufferSize) {
        delete[] gWhatBuffer;
        gWhatBuffer = new char[size];
    }
    snprintf(gWhatBuffer, static_cast<size_t>(size), "Error=%ld (%s)",
             static_cast<long>(static_cast<int32_t>(code)), name);
    return gWhatBuffer;
}

void RzError::ThrowSysError(int err, const char* text) {
    char message[64];
    snprintf(message, sizeof message, "System error: %d", err);
    if (text && *text) {
        size_t head = strlen(message);
        size_t n = head + 1 + strlen(text) + 1;
        char* full = new char[n];
        memcpy(full, message, head);
        full[head] = ' ';
        memcpy(full + head + 1, text, n - head - 1);
        RzError error(kRzSysErr, full, nullptr, 0);
        delete[] full;
        throw error;
    }
    throw RzError(kRzSysErr, message, nullptr, 0);
}

const char* RzErrorName(uint32_t code) {
    switch (code) {
#define RZ_ERROR_CODE_NAME(name, value) \
    case value:                         \
        return #name;
        RZ_ERROR_CODES(RZ_ERROR_CODE_NAME)
#undef RZ_ERROR_CODE_NAME
        default:
            return nullptr;
    }
}

void RzRaise(uint32_t code, const char* name, const char* unit, int line) {
    throw RzError(code, name, unit, line);
}

void RzRaiseCode(uint32_t code, const char* unit, int line) {
    throw RzError(code, RzErrorName(code), unit, line);
}
