#include <Rz/internal/RzKeyCodes.h>

#include <string.h>

#include <map>
#include <string>

#include "support/RzTestSupport.h"

namespace {

// Keys by their Linux input code and the Mac's code for the same place: the
// modifier and special keys TestKey names, and a sample of the rest.
TEST(RzKeyCodes, KeysByTheirPlaceOnAnAppleKeyboard) {
    const struct {
        uint32_t input;
        int mac;
        const char* key;
    } cases[] = {
        {1, 53, "Escape"},
        {125, 55, "Command"},
        {42, 56, "Shift"},
        {54, 60, "right Shift"},
        {58, 57, "Caps Lock"},
        {56, 58, "Option"},
        {100, 61, "right Option"},
        {29, 59, "Control"},
        {97, 62, "right Control"},
        {126, 54, "right Command"},
        {52, 47, "period"},
        {30, 0, "A"},
        {31, 1, "S"},
        {35, 4, "H"},
        {34, 5, "G"},
        {16, 12, "Q"},
        {21, 16, "Y"},
        {20, 17, "T"},
        {7, 22, "6"},
        {6, 23, "5"},
        {11, 29, "0"},
        {28, 36, "Return"},
        {57, 49, "Space"},
        {41, 50, "grave"},
        {14, 51, "Delete"},
        {111, 117, "forward delete"},
        {86, 10, "ISO section"},
        {59, 122, "F1"},
        {88, 111, "F12"},
        {183, 105, "F13"},
        {190, 90, "F20"},
        {103, 126, "Up"},
        {108, 125, "Down"},
        {82, 82, "keypad 0"},
        {79, 83, "keypad 1"},
        {72, 91, "keypad 8"},
        {96, 76, "keypad Enter"},
        {69, 71, "keypad Clear"},
        {110, 114, "Help"},
        {138, 114, "Help"},
        {124, 93, "Yen"},
        {123, 102, "Eisu"},
        {0, -1, "reserved"},
        {84, -1, "none"},
        {464, -1, "fn (beyond X)"},
        {247, -1, "last X key"},
        {248, -1, "beyond X"},
        {0xFFFFFFFF, -1, "beyond X"},
    };
    for (const auto& c : cases) EXPECT_EQ(RzMacKeyOfLinuxKey(c.input), c.mac) << c.key;
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
