// Small definitions shared by the public headers.
#ifndef RZ_RZCORE_RZDEFS_H
#define RZ_RZCORE_RZDEFS_H

// Lets the compiler check printf-style arguments.
#if defined(__GNUC__)
#define RZ_PRINTF_FORMAT(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define RZ_PRINTF_FORMAT(fmt, args)
#endif

#endif
