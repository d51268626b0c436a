#include <Rz/internal/RzAppleDouble.h>

#include <stdio.h>

#include <vector>

#include "support/RzTestSupport.h"

namespace {

std::vector<unsigned char> FromHex(const char* hex) {
    std::vector<unsigned char> out;
    unsigned byte;
    for (int n = 0; sscanf(hex, " %2x%n", &byte, &n) == 1; hex += n)
        out.push_back(static_cast<unsigned char>(byte));
    return out;
}

// The record file servers write for type 'TEXT', creator 'ttxt', flags 0x4000
// and all dates 2000-01-01, byte for byte as they lay it out.
std::vector<unsigned char> ServerRecord() {
    std::vector<unsigned char> blob = FromHex(
        "00 05 16 07 00 02 00 00 00 00 00 00 00 00 00 00"
        "00 00 00 00 00 00 00 00 00 08 00 00 00 04 00 00"
        "00 9a 00 00 00 00 00 00 00 08 00 00 01 62 00 00"
        "00 10 00 00 00 09 00 00 00 7a 00 00 00 20 00 00"
        "00 0e 00 00 01 72 00 00 00 04 80 44 45 56 00 00"
        "01 76 00 00 00 00 80 49 4e 4f 00 00 01 7e 00 00"
        "00 00 80 53 59 4e 00 00 01 86 00 00 00 00 80 53"
        "56 7e 00 00 01 8e 00 00 00 00 54 45 58 54 74 74"
        "78 74 40 00");
    blob.resize(402, 0);
    blob[0x16A] = 0x80;  // backup date unknown
    blob[0x175] = 0x01;  // AFP attributes: invisible
    return blob;
}

}  // namespace

TEST(RzAppleDouble, FreshRecordIsTheServersLayout) {
    std::vector<unsigned char> blob(402, 0xEE);
    const unsigned char fi[32] = {'T', 'E', 'X', 'T', 't', 't', 'x', 't', 0x40};
    RzMetadataBuild(blob.data(), fi, RzMetadataDate(946684800));
    EXPECT_EQ(blob, ServerRecord());
    EXPECT_TRUE(RzMetadataIsValid(blob.data(), blob.size()));

    // Dates are signed seconds from 2000.
    EXPECT_EQ(RzMetadataDate(946684800 - 1), 0xFFFFFFFFu);  // before 2000: negative
}

TEST(RzAppleDouble, ValidationRejectsWhatServersDelete) {
    struct Case {
        const char* what;
        size_t offset;  // byte to change (ignored when resize is set)
        unsigned char value;
        size_t resize;
        bool valid;
    } cases[] = {
        {"as built", 0, 0x00, 0, true},
        {"one byte short", 0, 0, 401, false},
        {"bad magic", 3, 0x08, 0, false},
        {"version 0x00020002", 7, 0x02, 0, false},
        {"seven entries", 25, 0x07, 0, false},
        {"comment entry renamed", 29, 0x05, 0, false},
        {"private entry renamed", 113, 0x00, 0, false},
        {"finder info 31 bytes", 61, 0x1F, 0, false},
        {"AFP info 3 bytes", 73, 0x03, 0, false},
        {"entry past the end", 0x71 + 3, 0xFF, 0, false},
        {"finder info inside the header", 57, 0x41, 0, false},
        {"filler not zero", 8, 'M', 0, true},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> blob = ServerRecord();
        if (c.resize)
            blob.resize(c.resize, 0);
        else
            blob[c.offset] = c.value;
        EXPECT_EQ(RzMetadataIsValid(blob.data(), blob.size()), c.valid) << c.what;
        unsigned char fi[32];
        EXPECT_EQ(RzMetadataGetFinderInfo(blob.data(), blob.size(), fi), c.valid) << c.what;
    }
    EXPECT_FALSE(RzMetadataIsValid(nullptr, 402));
}

TEST(RzAppleDouble, AfpAttributesAreTheWordTheDescriptorPointsAt) {
    // The AFP entry moved to offset 380 by its descriptor: the word is read
    // and written there, two bytes in.
    std::vector<unsigned char> blob = ServerRecord();
    blob[0x45] = 0x7C;
    blob[380 + 2] = 0x01;
    blob[380 + 3] = 0xA1;
    uint16_t attributes = 0;
    ASSERT_TRUE(RzMetadataGetAfpAttributes(blob.data(), blob.size(), &attributes));
    EXPECT_EQ(attributes, 0x01A1);
    std::vector<unsigned char> expected = blob;
    expected[380 + 2] = 0x00;
    expected[380 + 3] = 0x01;
    ASSERT_TRUE(RzMetadataSetAfpAttributes(blob.data(), blob.size(), 0x0001));
    EXPECT_EQ(blob, expected);

    blob.resize(401);
    attributes = 7;
    EXPECT_FALSE(RzMetadataGetAfpAttributes(blob.data(), blob.size(), &attributes));
    EXPECT_FALSE(RzMetadataSetAfpAttributes(blob.data(), blob.size(), 0));
    EXPECT_EQ(attributes, 7);
}
