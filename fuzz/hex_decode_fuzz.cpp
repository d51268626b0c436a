// Hexadecimal decoding of any bytes, against a transcription of the rule:
// pairs of digits (0-9, A-F, a-f) up to the end or a zero byte; a non-digit
// or a digit without its partner is "RzFormatErr", with the bytes before it
// decoded. Also: any bytes come back whole from Bin2Str and Str2BinStr.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzString.h>

namespace {

int Digit(unsigned char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// The decoded bytes; `fails` when decoding or the size check raises.
std::string Reference(const unsigned char* s, size_t n, bool& fails) {
    std::string bytes;
    fails = n % 2 != 0;
    for (size_t i = 0; i < n && s[i] != 0; i += 2) {
        const int high = Digit(s[i]), low = i + 1 < n ? Digit(s[i + 1]) : -1;
        if (high < 0 || low < 0) {
            fails = true;
            break;
        }
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

bool RaisesFormatErr(const RzString& text, void* out, int32_t* size) {
    try {
        text.Str2Bin(out, size);
    } catch (const RzError& e) {
        if (e.GetErr() != 19) abort();
        return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    bool fails = false;
    const std::string expected = Reference(data, size, fails);
    const RzString text(data, static_cast<int32_t>(size), true);

    // Exactly the bytes that decode, so that a write past them is caught.
    std::vector<unsigned char> out(expected.size() + 1);
    int32_t decodedSize = -1;
    if (RaisesFormatErr(text, out.data() + 1, &decodedSize) != fails) abort();
    if (memcmp(out.data() + 1, expected.data(), expected.size()) != 0) abort();
    if (!fails && decodedSize != static_cast<int32_t>(size / 2)) abort();
    if (fails && decodedSize != -1) abort();

    try {
        const RzString bytes = text.Str2BinStr();
        if (fails || bytes.length() != static_cast<int32_t>(size / 2)) abort();
        if (memcmp(bytes.c_str(), expected.data(), expected.size()) != 0) abort();
    } catch (const RzError&) {
        if (!fails) abort();
    }

    RzString hex;
    hex.Bin2Str(data, static_cast<int32_t>(size));
    const RzString back = hex.Str2BinStr();
    if (back.length() != static_cast<int32_t>(size) || memcmp(back.c_str(), data, size) != 0)
        abort();
    return 0;
}
