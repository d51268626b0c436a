// Samba's DOS attribute records from untrusted bytes: reading never crashes,
// and clearing the read-only bit changes a record exactly when the bit is
// set in a record Samba reads, into one Samba reads with only that bit
// cleared.
#include <stdint.h>
#include <stddef.h>

#include <string>

#include <Rz/internal/RzDosAttrib.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint32_t before = 0;
    const bool readable = RzDosAttribGet(data, size, &before);

    std::string record(reinterpret_cast<const char*>(data), size);
    const bool changed = RzDosAttribClear(record, kRzDosReadOnly);
    const bool locked = readable && (before & kRzDosReadOnly);
    // Only a record near Samba's limit may be refused, when the longer text
    // would push it over.
    if (changed ? !locked : locked && size + 12 <= kRzDosAttribMaxSize) __builtin_trap();
    if (!changed) {
        if (record.size() != size ||
            record.compare(0, size, reinterpret_cast<const char*>(data), size) != 0)
            __builtin_trap();
        return 0;
    }
    uint32_t after = 0;
    if (!RzDosAttribGet(reinterpret_cast<const unsigned char*>(record.data()), record.size(),
                        &after) ||
        after != (before & ~uint32_t(kRzDosReadOnly)))
        __builtin_trap();
    // The record grows only by what the longer text takes, and never past
    // what Samba reads unless it was longer already.
    if (record.size() > size + 12 || (record.size() > size && record.size() > kRzDosAttribMaxSize))
        __builtin_trap();
    // Clearing again changes nothing.
    if (RzDosAttribClear(record, kRzDosReadOnly)) __builtin_trap();
    return 0;
}
