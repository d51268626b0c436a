#include <Rz/internal/RzTextEncoding.h>

#include <iconv.h>
#include <stdint.h>

#include <string>

namespace {

void AppendUTF8(std::string& out, uint32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// The encoding's single bytes above ASCII that Big5 lacks.
uint32_t MacSingleByte(unsigned char b) {
    switch (b) {
        case 0x80:
            return 0x5C;  // a variant of the backslash; its variant tag is dropped
        case 0xA0:
            return 0xA0;  // no-break space
        case 0xFD:
            return 0xA9;  // copyright sign
        case 0xFE:
            return 0x2122;  // trade mark sign
        case 0xFF:
            return 0x2026;  // horizontal ellipsis
        default:
            return 0;
    }
}

}  // namespace

OSErr RzMacChineseTradToUTF8(const unsigned char* pascal, RzString& utf8) {
    std::string in =
        pascal ? std::string(reinterpret_cast<const char*>(pascal + 1), pascal[0]) : std::string();
    std::string out;
    iconv_t cd = reinterpret_cast<iconv_t>(-1);
    OSErr err = noErr;
    for (size_t i = 0; i < in.size() && err == noErr; ++i) {
        unsigned char b = static_cast<unsigned char>(in[i]);
        if (b < 0x80) {
            out += static_cast<char>(b);
        } else if (uint32_t single = MacSingleByte(b)) {
            AppendUTF8(out, single);
        } else if (b < 0xA1 || b > 0xF9 || b == 0xC7 || b == 0xC8 || i + 1 >= in.size()) {
            err = kTextMalformedInputErr;
        } else {
            if (cd == reinterpret_cast<iconv_t>(-1)) {
                cd = iconv_open("UTF-8", "BIG5");
                if (cd == reinterpret_cast<iconv_t>(-1)) {
                    err = kTextUnsupportedEncodingErr;
                    break;
                }
            }
            char pair[2] = {in[i], in[i + 1]};
            char converted[8];
            char* src = pair;
            char* dst = converted;
            size_t srcLeft = 2, dstLeft = sizeof converted;
            if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1) || srcLeft)
                err = kTextUndefinedElementErr;
            else
                out.append(converted, sizeof converted - dstLeft);
            ++i;
        }
    }
    if (cd != reinterpret_cast<iconv_t>(-1)) iconv_close(cd);
    if (err == noErr)
        utf8 = out.empty() ? RzString("")
                           : RzString(out.data(), static_cast<int32_t>(out.size()), false);
    return err;
}
