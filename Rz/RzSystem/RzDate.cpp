#include <Rz/RzSystem/RzDate.h>

#include <limits.h>

#include <Rz/internal/RzRaise.h>

// Dates have always reported their errors as part of the system services.
static const char kRzUnit[] = "RzSystem";

namespace {

int Clamp(int value, int low, int high) {
    return value < low ? low : (value > high ? high : value);
}

// What "%d" of the C library's scanf reads from `p`: white space skipped, an
// optional sign, decimal digits. A number beyond the 32-bit range saturates,
// as it does where long is 32 bits wide. Returns false when no number starts
// here; `p` moves behind what was read.
bool ScanInt(const char*& p, int& out) {
    const char* s = p;
    while (*s == ' ' || (*s >= '\t' && *s <= '\r')) ++s;
    const bool negative = *s == '-';
    if (*s == '-' || *s == '+') ++s;
    if (*s < '0' || *s > '9') return false;
    long long value = 0;
    for (; *s >= '0' && *s <= '9'; ++s)
        if (value <= INT_MAX) value = value * 10 + (*s - '0');
    if (negative) value = -value;
    out = static_cast<int>(value > INT_MAX ? INT_MAX : (value < INT_MIN ? INT_MIN : value));
    p = s;
    return true;
}

// Reads up to `count` numbers, as sscanf with that many "%d" does, into
// `fields`; returns how many it read.
int ScanInts(const RzString& text, int* fields, int count) {
    const char* p = text.c_str();
    int read = 0;
    while (read < count && ScanInt(p, fields[read])) ++read;
    return read;
}

// A copy of `text` in which every character of `separators` is a blank.
RzString Blanked(const RzString& text, const char* separators) {
    RzString copy(text);
    for (const char* c = separators; *c; ++c) copy.Replace(*c, ' ');
    return copy;
}

// The six-character form stores each field as one signed character.
char FieldChar(int value) {
    return static_cast<char>(static_cast<unsigned char>(static_cast<unsigned>(value) & 0xFF));
}

}  // namespace

RzDate::RzDate(int year_, int month_, int day_, int hour_, int minute_, int second_) {
    SetDate(year_, month_, day_, hour_, minute_, second_);
}

void RzDate::SetDate(int year_, int month_, int day_, int hour_, int minute_, int second_) {
    year = Clamp(year_, 0, 3000);
    month = Clamp(month_, 1, 12);
    day = Clamp(day_, 1, 31);
    SetTime(hour_, minute_, second_);
}

void RzDate::SetTime(int hour_, int minute_, int second_) {
    hour = Clamp(hour_, 0, 23);
    minute = Clamp(minute_, 0, 59);
    second = Clamp(second_, 0, 59);
}

void RzDate::Long2Date(int32_t dayNumber) {
    day = dayNumber % 31 + 1;
    month = (dayNumber / 31) % 12 + 1;
    year = dayNumber / 372;
}

int32_t RzDate::Day2Long() const {
    // Unsigned arithmetic wraps as the 32-bit original did for fields set out
    // of range through the accessors, without overflowing a signed int.
    const uint32_t days = (static_cast<uint32_t>(year) * 12u + static_cast<uint32_t>(month)) * 31u +
                          static_cast<uint32_t>(day) - 32u;
    return static_cast<int32_t>(days);
}

int32_t RzDate::SecondOfDay() const {
    const uint32_t seconds =
        (static_cast<uint32_t>(hour) * 60u + static_cast<uint32_t>(minute)) * 60u +
        static_cast<uint32_t>(second);
    return static_cast<int32_t>(seconds);
}

RzString RzDate::GetDayString() const {
    RzString text;
    text.Printf("%d-%d-%d", year, month, day);
    return text;
}

RzString RzDate::GetString() const {
    RzString text;
    text.Printf("%d-%d-%d %d:%02d:%02d", year, month, day, hour, minute, second);
    return text;
}

RzString RzDate::GetFileNameString() const {
    RzString text;
    text.Printf("%d%02d%02d %02d-%02d", year, month, day, hour, minute);
    return text;
}

RzString RzDate::GetFileNameString(RzString separator) const {
    RzString text;
    text.Printf("%d%02d%02d%s%02d-%02d", year, month, day, separator.c_str(), hour, minute);
    return text;
}

RzString RzDate::GetShortString() const {
    RzString text;
    text += FieldChar(year + 113);
    text += FieldChar('A' + month);
    text += FieldChar('A' + day);
    text += FieldChar('A' + hour);
    text += FieldChar('A' + minute);
    text += FieldChar('A' + second);
    return text;
}

void RzDate::SetDayString(const RzString& text) {
    int fields[3] = {0, 0, 0};
    if (ScanInts(Blanked(text, "-"), fields, 3) < 3) RZ_RAISE(kRzFormatErr);
    SetDate(fields[0], fields[1], fields[2], 0, 0, 0);
}

void RzDate::SetString(const RzString& text) {
    // The three forms (six, five, three numbers) are tried in turn on the same
    // six variables, so whatever a longer attempt read stays: reading as many
    // numbers as there are, up to six, gives exactly their result.
    int fields[6] = {0, 0, 0, 0, 0, 0};
    if (ScanInts(Blanked(text, "-:"), fields, 6) < 3) RZ_RAISE(kRzFormatErr);
    SetDate(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]);
}

void RzDate::SetShortString(const RzString& text) {
    if (text.length() != 6) RZ_RAISE(kRzFormatErr);
    const char* c = text.c_str();
    const int value[6] = {static_cast<signed char>(c[0]), static_cast<signed char>(c[1]),
                          static_cast<signed char>(c[2]), static_cast<signed char>(c[3]),
                          static_cast<signed char>(c[4]), static_cast<signed char>(c[5])};
    SetDate(value[0] + 1935, value[1] - 65, value[2] - 65, value[3] - 65, value[4] - 65,
            value[5] - 65);
}
