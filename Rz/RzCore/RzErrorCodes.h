// The error codes the framework raises, each with its fixed name.
//
// An error's name is its constant without the leading 'k': kRzArgErr is
// raised as code 3 with the name "RzArgErr". The table below is the one place
// that pairs them; RzErrorName() answers it at run time. docs/errors.md lists
// every code with the situations that raise it.
//
// Two kinds of errors are not in the table because their name is a message:
// code 12 raised while opening a file ("FileNotOpen (for reading): <path>",
// see RzFile.h) and code 68 from RzError::ThrowSysError ("System error: <n>").
// Operating-system result codes passed through by the system services carry
// the name "err".
#ifndef RZ_RZCORE_RZERRORCODES_H
#define RZ_RZCORE_RZERRORCODES_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>

// X(name, code): every named error. Codes 5, 6, 8 to 11 and 16 are not used.
#define RZ_ERROR_CODES(X)                                                        \
    X(RzUndefProc, 1)         /* operation not available for this object here */ \
    X(RzUnexpectedErr, 2)     /* string internals: append to a shared buffer */  \
    X(RzArgErr, 3)            /* invalid argument */                             \
    X(RzMemFullErr, 4)        /* allocation through the memory manager failed */ \
    X(RzIndexError, 7)        /* index out of range */                           \
    X(RzFileNotOpen, 12)      /* file operation on a file that is not open */    \
    X(RzFileLengthFailed, 13) /* a file's length cannot be told */               \
    X(RzFileSeekFailed, 14)   /* seek failed */                                  \
    X(RzFilePosFailed, 15)    /* position query failed */                        \
    X(RzFileWriteFailed, 17)  /* fewer bytes written than asked */               \
    X(RzFileAccessErr, 18)    /* console stream used in the wrong direction */   \
    X(RzFormatErr, 19)        /* malformed text */                               \
    X(RzPtrInvalid, 20)       /* smart pointer released a dead object */         \
    X(RzGeneralErr, 42)       /* string internals: binary length unknown */

enum {
    kRzNoErr = 0,
    kRzSysErr = 68,  // RzError::ThrowSysError; the name is the message
#define RZ_ERROR_CODE_CONSTANT(name, code) k##name = code,
    RZ_ERROR_CODES(RZ_ERROR_CODE_CONSTANT)
#undef RZ_ERROR_CODE_CONSTANT
};

// The fixed name of a code of the table ("RzFormatErr" for 19), or null for
// any other code.
RZ_API const char* RzErrorName(uint32_t code);

#endif
