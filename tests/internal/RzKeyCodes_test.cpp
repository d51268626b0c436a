#include <Rz/internal/RzKeyCodes.h>

#include <string.h>

#include <map>
#include <string>

#include "support/RzTestSupport.h"

namespace {

// The keys TestKey names, Command's period, and codes X cannot report or
// that have no place in the Mac's key map. (The real keys are checked
// through X by tests/interop/desktop_x11.sh.)
TEST(RzKeyCodes, NamedKeysByTheirPlaceOnAnAppleKeyboard) {
    const struct {
        uint32_t input;
        int mac;
    } cases[] = {{1, 53},  {125, 55}, {42, 56},  {54, 60},  {58, 57},
                 {56, 58}, {100, 61}, {29, 59},  {97, 62},  {52, 47},
                 {0, -1},  {84, -1},  {464, -1}, {248, -1}, {0xFFFFFFFF, -1}};
    for (const auto& c : cases) EXPECT_EQ(RzMacKeyOfLinuxKey(c.input), c.mac) << c.input;
}

// No two keys share a Mac code except Insert and Help, which are one key on
// an Apple keyboard: a slip in the table shows up here.
TEST(RzKeyCodes, EachMacCodeHasOneKey) {
    std::map<int, std::string> owners;
    for (uint32_t code = 0; code < 248; ++code) {
        const int mac = RzMacKeyOfLinuxKey(code);
        if (mac < 0) continue;
        EXPECT_LT(mac, 128) << code;
        owners[mac] += std::to_string(code) + " ";
    }
    for (const auto& o : owners) {
        if (o.first == 114) continue;
        EXPECT_EQ(o.second.find(' '), o.second.size() - 1) << o.first;
    }
    EXPECT_EQ(owners[114], "110 138 ");
    EXPECT_GE(owners.size(), 110u);
}

std::string Bits(const uint8_t* p, size_t n) {
    std::string bits;
    for (size_t i = 0; i < n * 8; ++i)
        if (p[i / 8] & (1u << (i % 8))) bits += std::to_string(i) + " ";
    return bits;
}

TEST(RzKeyCodes, XKeyMapToMacKeyMap) {
    const struct {
        std::initializer_list<int> xKeys;
        const char* macKeys;
    } cases[] = {
        {{}, ""},
        {{50}, "56 "},                // Shift_L: byte 7, bit 0
        {{133, 60}, "47 55 "},        // Super_L and period: KeyBreak
        {{118, 146}, "114 "},         // Insert and Help: one bit
        {{0, 1, 7, 8, 92, 255}, ""},  // no key at these codes
        {{38, 62, 105, 108}, "0 60 61 62 "},
    };
    for (const auto& c : cases) {
        uint8_t x[32] = {0}, mac[16];
        memset(mac, 0xFF, sizeof mac);
        for (int k : c.xKeys) x[k / 8] |= static_cast<uint8_t>(1u << (k % 8));
        RzMacKeysFromXKeys(x, mac);
        EXPECT_EQ(Bits(mac, sizeof mac), c.macKeys);
    }
}

}  // namespace
