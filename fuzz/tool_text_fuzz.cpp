// The rz tool's parsers of input of any kind: the character-set converter and
// the hexadecimal decoder give the same result however the input is cut into
// blocks, the converter gives one result per step of the framework's UTF-8
// decoder, hexadecimal text of any bytes decodes back to them; and the
// command-line words, cut at zero bytes, parse or are refused as usage errors.
//
// The first byte chooses the character sets (low four bits) and the block
// size (high four bits); the rest is the input.
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>

#include "RzTool.h"
#include "RzToolText.h"

namespace {

template <class Stream>
std::string InBlocks(Stream&& feed, const std::string& input, size_t block) {
    for (size_t at = 0; at < input.size(); at += block)
        feed(input.data() + at, std::min(block, input.size() - at));
    return std::string();
}

std::string Convert(RzToolCharset from, RzToolCharset to, const std::string& input, size_t block) {
    std::ostringstream out;
    RzToolConverter c(from, to, out);
    InBlocks([&](const char* p, size_t n) { c.Feed(p, n); }, input, block);
    c.Finish();
    return out.str();
}

std::string Decode(const std::string& input, size_t block) {
    std::ostringstream out;
    try {
        RzToolHexDecoder d(out, "in");
        InBlocks([&](const char* p, size_t n) { d.Feed(p, n); }, input, block);
        d.Finish();
    } catch (const RzToolFailure& e) {
        return "failed: " + e.message;
    }
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const RzToolCharset from = static_cast<RzToolCharset>(data[0] & 3);
    const RzToolCharset to = static_cast<RzToolCharset>(data[0] >> 2 & 3);
    const size_t block = (data[0] >> 4) + 1;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);

    const std::string whole = Convert(from, to, input, input.size() + 1);
    if (Convert(from, to, input, block) != whole) abort();
    if (from == eRzToolUTF8 && to == eRzToolLatin1 && input.find('\0') == std::string::npos &&
        2 * whole.size() != static_cast<size_t>(RzString(input.c_str()).UTF8ToUTF16().length()))
        abort();

    if (Decode(input, block) != Decode(input, input.size() + 1)) abort();
    std::ostringstream hex;
    RzToolHexEncoder e(hex);
    InBlocks([&](const char* p, size_t n) { e.Feed(p, n); }, input, block);
    e.Finish();
    if (Decode(hex.str(), block) != input) abort();

    std::vector<std::string> words;
    std::istringstream cut(input);
    for (std::string w; std::getline(cut, w, '\0');) words.push_back(w);
    try {
        const RzToolArgs a(words, {{"--depth", true}, {"-n", true}, {"--int", false}});
        if (a.Operands().size() > words.size()) abort();
    } catch (const RzToolUsageError&) {
    }
    return 0;
}
