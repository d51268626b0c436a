// Element types for container tests, and probes of string buffers.
#ifndef RZ_TESTS_SUPPORT_RZCONTAINERTESTSUPPORT_H
#define RZ_TESTS_SUPPORT_RZCONTAINERTESTSUPPORT_H

#include <stddef.h>
#include <stdint.h>

#include <string>

#include <Rz/RzCore/RzString.h>

// Live instances and constructions of the Tracked types, and a fault
// injector: when `failAfter` is n >= 0, the n-th following construction or
// copy assignment (0-based) throws int; -1 never.
struct TrackedCounts {
    static inline int live = 0;
    static inline int constructions = 0;
    static inline int failAfter = -1;
    static void MayFail() {
        if (failAfter >= 0 && failAfter-- == 0) throw 42;
    }
};

// An int-holding element whose every transfer is a copy that may fail.
struct Tracked : TrackedCounts {
    Tracked() {
        MayFail();
        ++live;
        ++constructions;
    }
    Tracked(const Tracked& other) : value(other.value) {
        MayFail();
        ++live;
        ++constructions;
    }
    Tracked& operator=(const Tracked& other) {
        MayFail();
        value = other.value;
        return *this;
    }
    ~Tracked() { --live; }
    int value = 0;
};

// The same with a move assignment that cannot fail, which containers may use.
struct MovableTracked : Tracked {
    MovableTracked() = default;
    MovableTracked(const MovableTracked&) = default;
    MovableTracked& operator=(const MovableTracked&) = default;
    MovableTracked& operator=(MovableTracked&& other) noexcept {
        value = other.value;
        other.value = -1;
        return *this;
    }
};

inline const RzStringData* StringData(const RzString& s) {
    return reinterpret_cast<const RzStringData*>(s.c_str() - offsetof(RzStringData, chars));
}

// Strings sharing the buffer of a non-null string.
inline int32_t SharingCount(const RzString& s) {
    return StringData(s)->refCount;
}

// Everything a reader can see of a string: "null", or the bytes up to its
// length, the length, binary or text, and the capacity (operator[]'s bound).
inline std::string StringState(const RzString& s) {
    static const char* const nullText = RzString().c_str();
    if (s.c_str() == nullText) return "null";
    const int32_t n = s.length();
    return std::string(s.c_str(), static_cast<size_t>(n < 0 ? 0 : n)) + "|" + std::to_string(n) +
           (StringData(s)->isBinary ? "|bin|" : "|txt|") + std::to_string(StringData(s)->capacity);
}

#endif
