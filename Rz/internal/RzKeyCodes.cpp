#include <Rz/internal/RzKeyCodes.h>

#include <string.h>

namespace {

// X numbers a key by its Linux input code plus 8.
const uint32_t kXKeyOffset = 8;

struct KeyPair {
    uint16_t input;  // Linux input code (KEY_... of <linux/input-event-codes.h>)
    uint8_t mac;     // Mac virtual key code
};

// Pairs by the key's place on an Apple keyboard. The Linux codes are those
// the USB keyboard usages give, which is also what the Mac's codes follow.
constexpr KeyPair kKeys[] = {
    {1, 53},     // Escape
    {2, 18},     // 1
    {3, 19},     // 2
    {4, 20},     // 3
    {5, 21},     // 4
    {6, 23},     // 5
    {7, 22},     // 6
    {8, 26},     // 7
    {9, 28},     // 8
    {10, 25},    // 9
    {11, 29},    // 0
    {12, 27},    // -
    {13, 24},    // =
    {14, 51},    // Backspace (the Mac's Delete)
    {15, 48},    // Tab
    {16, 12},    // Q
    {17, 13},    // W
    {18, 14},    // E
    {19, 15},    // R
    {20, 17},    // T
    {21, 16},    // Y
    {22, 32},    // U
    {23, 34},    // I
    {24, 31},    // O
    {25, 35},    // P
    {26, 33},    // [
    {27, 30},    // ]
    {28, 36},    // Return
    {29, 59},    // left Control
    {30, 0},     // A
    {31, 1},     // S
    {32, 2},     // D
    {33, 3},     // F
    {34, 5},     // G
    {35, 4},     // H
    {36, 38},    // J
    {37, 40},    // K
    {38, 37},    // L
    {39, 41},    // ;
    {40, 39},    // '
    {41, 50},    // `
    {42, 56},    // left Shift
    {43, 42},    // backslash
    {44, 6},     // Z
    {45, 7},     // X
    {46, 8},     // C
    {47, 9},     // V
    {48, 11},    // B
    {49, 45},    // N
    {50, 46},    // M
    {51, 43},    // ,
    {52, 47},    // .
    {53, 44},    // /
    {54, 60},    // right Shift
    {55, 67},    // keypad *
    {56, 58},    // left Alt: Option
    {57, 49},    // Space
    {58, 57},    // Caps Lock
    {59, 122},   // F1
    {60, 120},   // F2
    {61, 99},    // F3
    {62, 118},   // F4
    {63, 96},    // F5
    {64, 97},    // F6
    {65, 98},    // F7
    {66, 100},   // F8
    {67, 101},   // F9
    {68, 109},   // F10
    {69, 71},    // Num Lock: the keypad's Clear
    {71, 89},    // keypad 7
    {72, 91},    // keypad 8
    {73, 92},    // keypad 9
    {74, 78},    // keypad -
    {75, 86},    // keypad 4
    {76, 87},    // keypad 5
    {77, 88},    // keypad 6
    {78, 69},    // keypad +
    {79, 83},    // keypad 1
    {80, 84},    // keypad 2
    {81, 85},    // keypad 3
    {82, 82},    // keypad 0
    {83, 65},    // keypad .
    {86, 10},    // the ISO key beside left Shift (section sign)
    {87, 103},   // F11
    {88, 111},   // F12
    {89, 94},    // JIS underscore (ro)
    {96, 76},    // keypad Enter
    {97, 62},    // right Control
    {98, 75},    // keypad /
    {100, 61},   // right Alt: right Option
    {102, 115},  // Home
    {103, 126},  // Up
    {104, 116},  // Page Up
    {105, 123},  // Left
    {106, 124},  // Right
    {107, 119},  // End
    {108, 125},  // Down
    {109, 121},  // Page Down
    {110, 114},  // Insert: Help, where Apple keyboards have it
    {111, 117},  // Delete (the Mac's forward delete)
    {113, 74},   // Mute
    {114, 73},   // Volume Down
    {115, 72},   // Volume Up
    {117, 81},   // keypad =
    {121, 95},   // keypad , (JIS)
    {122, 104},  // Hangeul: the JIS Kana key
    {123, 102},  // Hanja: the JIS Eisu key
    {124, 93},   // Yen (JIS)
    {125, 55},   // left Super: Command
    {126, 54},   // right Super: right Command
    {127, 110},  // Compose: the context menu key
    {138, 114},  // Help
    {183, 105},  // F13
    {184, 107},  // F14
    {185, 113},  // F15
    {186, 106},  // F16
    {187, 64},   // F17
    {188, 79},   // F18
    {189, 80},   // F19
    {190, 90},   // F20
};

// The Linux codes X can report: key codes 8..255.
const uint32_t kLinuxKeys = 256 - kXKeyOffset;

struct KeyTable {
    int8_t mac[kLinuxKeys];
};

constexpr KeyTable MakeTable() {
    KeyTable table{};
    for (uint32_t i = 0; i < kLinuxKeys; ++i) table.mac[i] = -1;
    for (const KeyPair& k : kKeys) table.mac[k.input] = static_cast<int8_t>(k.mac);
    return table;
}

constexpr KeyTable kTable = MakeTable();

}  // namespace

int RzMacKeyOfLinuxKey(uint32_t code) {
    return code < kLinuxKeys ? kTable.mac[code] : -1;
}

void RzMacKeysFromXKeys(const uint8_t xKeys[32], uint8_t macKeys[16]) {
    memset(macKeys, 0, 16);
    for (uint32_t x = kXKeyOffset; x < 256; ++x) {
        if (!(xKeys[x / 8] & (1u << (x % 8)))) continue;
        const int mac = kTable.mac[x - kXKeyOffset];
        if (mac >= 0) macKeys[mac / 8] |= static_cast<uint8_t>(1u << (mac % 8));
    }
}
