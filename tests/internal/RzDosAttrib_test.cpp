#include <Rz/internal/RzDosAttrib.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string LE16(uint16_t v) {
    return std::string{static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)};
}

std::string LE32(uint32_t v) {
    return LE16(static_cast<uint16_t>(v)) + LE16(static_cast<uint16_t>(v >> 16));
}

// A record laid out as Samba lays it out: the text and its zero byte, the
// version twice at the next even offset, the fields at the next multiple of 4.
std::string Record(const std::string& text, uint16_t version, const std::string& fields,
                   uint16_t tag = 0xFFFF) {
    std::string r = text + '\0';
    r.resize((r.size() + 1) & ~size_t(1), '\0');
    r += LE16(version) + LE16(tag == 0xFFFF ? version : tag);
    r.resize((r.size() + 3) & ~size_t(3), '\0');
    return r + fields;
}

const std::string kTime = "\x01\x02\x03\x04\x05\x06\x07\x08";

// The fields of each version with `attributes` in its place; the other
// fields are recognisable bytes.
std::string Fields(uint16_t version, uint32_t attributes) {
    switch (version) {
        case 1:  // attrib, ea_size, size, alloc_size, create, change
            return LE32(attributes) + LE32(7) + std::string(16, 'S') + kTime + kTime;
        case 2:  // flags, attrib, ea_size, size, alloc_size, create, change, write, name
            return LE32(9) + LE32(attributes) + LE32(7) + std::string(16, 'S') + kTime + kTime +
                   kTime + "name" + '\0';
        case 3:  // valid, attrib, ea_size, size, alloc_size, create, change
            return LE32(0x11) + LE32(attributes) + LE32(7) + std::string(16, 'S') + kTime + kTime;
        case 4:  // valid, attrib, itime, create
            return LE32(0x51) + LE32(attributes) + kTime + kTime;
        default:  // 5: valid, attrib, create
            return LE32(0x11) + LE32(attributes) + kTime;
    }
}

bool Get(const std::string& r, uint32_t& attributes) {
    attributes = 0xDEADBEEF;
    return RzDosAttribGet(reinterpret_cast<const unsigned char*>(r.data()), r.size(), &attributes);
}

TEST(RzDosAttrib, SambasOwnRecordReadsAsWritten) {
    // 24 bytes as Samba 4.17 wrote them for a file set read-only by a client.
    const std::string samba(
        "\x00\x00\x05\x00\x05\x00\x00\x00\x11\x00\x00\x00\x21\x00\x00\x00"
        "\x10\x32\x54\x76\x98\xBA\xDC\x01",
        24);
    EXPECT_EQ(samba, Record("", 5, Fields(5, 0x21).substr(0, 8) + samba.substr(16)));
    uint32_t attributes;
    ASSERT_TRUE(Get(samba, attributes));
    EXPECT_EQ(attributes, 0x21u);
}

TEST(RzDosAttrib, ReadsWhatSambaReads) {
    const struct {
        const char* what;
        std::string record;
        bool ok;
        uint32_t attributes;
    } cases[] = {
        {"version 1", Record("0x21", 1, Fields(1, 0x21)), true, 0x21},
        {"version 2", Record("0x21", 2, Fields(2, 0x21)), true, 0x21},
        {"version 3", Record("0x23", 3, Fields(3, 0x23)), true, 0x23},
        {"version 4", Record("", 4, Fields(4, 0x01)), true, 0x01},
        {"version 5", Record("", 5, Fields(5, 0x20)), true, 0x20},
        {"the binary word wins over the text", Record("0x1", 3, Fields(3, 0x20)), true, 0x20},
        {"text only", std::string("0x21\0", 5), true, 0x21},
        {"text only, blank and sign", std::string(" -1\0", 4), true, 0xFFFFFFFF},
        {"text only, too many digits", std::string("0x1234567890123456789\0", 22), true,
         0xFFFFFFFF},
        {"text only, no number", std::string("zz\0", 3), false, 0},
        {"no zero byte", "0x21", false, 0},
        {"version 6", Record("", 6, Fields(5, 1)), false, 0},
        {"version 0xFFFF", Record("", 0xFFFF, Fields(5, 1), 0xFFFF), false, 0},
        {"second version differs", Record("", 5, Fields(5, 1), 4), false, 0},
        {"version cut short", std::string("\0\0\x05\0\x05", 5), false, 0},
        {"fields cut short", Record("", 5, Fields(5, 1)).substr(0, 23), false, 0},
        {"version 3 cut short", Record("", 3, Fields(3, 1).substr(0, 43)), false, 0},
        {"version 2 name unterminated", Record("", 2, Fields(2, 1).substr(0, 56)), false, 0},
    };
    for (const auto& c : cases) {
        uint32_t attributes;
        EXPECT_EQ(Get(c.record, attributes), c.ok) << c.what;
        // A rejected record leaves the result untouched.
        EXPECT_EQ(attributes, c.ok ? c.attributes : 0xDEADBEEFu) << c.what;
    }
}

TEST(RzDosAttrib, ClearingChangesOnlyTheBitAndTheText) {
    // 256 bytes, the most Samba reads: "21" would become "0x20" and move the
    // fields from offset 8 to 12.
    const std::string full =
        Record("21", 2, Fields(2, 0x21).substr(0, 52) + std::string(195, 'n') + '\0');
    ASSERT_EQ(full.size(), 256u);
    const struct {
        const char* what;
        std::string before, after;  // after empty: left alone
    } cases[] = {
        {"version 5 keeps the creation time", Record("", 5, Fields(5, 0x21)),
         Record("", 5, Fields(5, 0x20))},
        {"version 3 text follows the word", Record("0x21", 3, Fields(3, 0x21)),
         Record("0x20", 3, Fields(3, 0x20))},
        {"version 2 keeps its name", Record("0x1", 2, Fields(2, 0x1)),
         Record("0x0", 2, Fields(2, 0x0))},
        {"a longer text moves the rest", Record("21", 3, Fields(3, 0x21)),
         Record("0x20", 3, Fields(3, 0x20))},
        {"text only, written as Samba writes it", std::string(" 21\0", 4),
         std::string("0x20\0", 5)},
        {"bit not set", Record("", 5, Fields(5, 0x20)), ""},
        {"rejected record", Record("", 6, Fields(5, 0x21)), ""},
        {"the longer text would pass 256 bytes", full, ""},
    };
    for (const auto& c : cases) {
        std::string record = c.before;
        EXPECT_EQ(RzDosAttribClear(record, kRzDosReadOnly), !c.after.empty()) << c.what;
        EXPECT_EQ(record, c.after.empty() ? c.before : c.after) << c.what;
    }
}

}  // namespace
