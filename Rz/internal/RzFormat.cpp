#include <Rz/internal/RzFormat.h>

#include <stddef.h>
#include <stdio.h>

RzFormatted::RzFormatted(const char* format, va_list args) : text(classic), length(0) {
    va_list again;
    va_copy(again, args);
    length = vsnprintf(classic, sizeof classic, format, args);
    if (length < 0) {
        classic[0] = 0;
    } else if (length >= kClassicSize) {
        const size_t size = static_cast<size_t>(length) + 1;
        large.reset(new char[size]);
        vsnprintf(large.get(), size, format, again);
        text = large.get();
    }
    va_end(again);
}
