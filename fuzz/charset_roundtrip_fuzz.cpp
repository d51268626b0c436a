// Mac OS Roman and ISO-8859-1 from any bytes: the two tables undo each other
// for every byte, directly and through UTF-8, and the one-pass MacRomanToUTF8
// gives what its two steps give. Against the C library's converters: a Mac
// OS Roman character that ISO-8859-1 has keeps its standard code (except
// 0xCD), and ISO8859_1ToUTF8 gives what the C library gives.
#include <iconv.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>

namespace {

bool Same(const RzString& s, const std::string& bytes) {
    return s.length() == static_cast<int32_t>(bytes.size()) &&
           memcmp(s.c_str(), bytes.data(), bytes.size()) == 0;
}

// The C library's conversion of all of `in`.
std::string Iconv(const char* to, const char* from, const std::string& in) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) abort();
    std::vector<char> buffer(4 * in.size() + 4);
    char* src = const_cast<char*>(in.data());
    char* dst = buffer.data();
    size_t srcLeft = in.size(), dstLeft = buffer.size();
    if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1)) abort();
    iconv_close(cd);
    return std::string(buffer.data(), buffer.size() - dstLeft);
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

    if (!Same(plain.ISO8859_1ToUTF8(), Iconv("UTF-8", "ISO-8859-1", text))) abort();
    const std::string unicode = Iconv("UCS-4BE", "MACINTOSH", text);
    const RzString latin = plain.MacRomanToISO8859_1();
    if (unicode.size() != 4 * text.size()) abort();
    for (size_t i = 0; i < text.size(); ++i) {
        const uint8_t* unit = reinterpret_cast<const uint8_t*>(unicode.data()) + 4 * i;
        const uint32_t u = (unit[1] << 16) | (unit[2] << 8) | unit[3];
        if (u <= 255 && uint8_t(text[i]) != 0xCD && uint8_t(latin.c_str()[i]) != u) abort();
    }
    return 0;
}
