// RZ_API marks the public interface: the classes, functions and variables
// that a shared librz exports. The library is compiled with every other
// symbol hidden, so that applications can reach only what the public headers
// declare and the private units may change between releases. Templates and
// inline functions need no mark; a class with virtual functions is marked as
// a whole, which exports its type information and virtual table too.
#ifndef RZ_RZCORE_RZEXPORT_H
#define RZ_RZCORE_RZEXPORT_H

#if defined(__GNUC__)
#define RZ_API __attribute__((visibility("default")))
#else
#define RZ_API
#endif

#endif
