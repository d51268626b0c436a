// Mac OS Roman and ISO-8859-1 from any bytes: the two tables undo each other
// for every byte, directly and through UTF-8, and the one-pass MacRomanToUTF8
// gives what its two steps give.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include <Rz/RzCore/RzString.h>

namespace {

bool Same(const RzString& s, const std::string& bytes) {
    return s.length() == static_cast<int32_t>(bytes.size()) &&
           memcmp(s.c_str(), bytes.data(), bytes.size()) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string all(reinterpret_cast<const char*>(data), size);
    const std::string text = all.substr(0, all.find('\0'));
    const RzString binary(all.data(), static_cast<int32_t>(size), true);
    const RzString plain(text.c_str());

    if (!Same(binary.MacRomanToISO8859_1().ISO8859_1ToMacRoman(), all)) abort();
    if (!Same(binary.ISO8859_1ToMacRoman().MacRomanToISO8859_1(), all)) abort();
    if (!Same(binary.MacRomanToUTF8().UTF8ToMacRoman(), text)) abort();
    if (!Same(plain.ISO8859_1ToUTF8().UTF8ToISO8859_1(), text)) abort();

    const RzString once = binary.MacRomanToUTF8();
    const RzString twice = binary.MacRomanToISO8859_1().ISO8859_1ToUTF8();
    if (!Same(once, std::string(twice.c_str(), static_cast<size_t>(twice.length())))) abort();
    return 0;
}
