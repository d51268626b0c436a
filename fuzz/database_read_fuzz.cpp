// Reads arbitrary bytes as a database. Only RzError may escape, and the
// result (entries, or the error's code and entries kept so far) must be what
// the format's literal reader gives. Whatever was read is then copied,
// merged, looked up and destroyed, and written and read back where its depth
// allows.
//
// Input: the text itself, or, after a first byte 0xFF, a run-length form, so
// that a short input can describe a deep tree: pieces of a 2-byte repeat count
// (little-endian), a length byte and that many bytes, each piece repeated.
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include <Rz/RzData/RzDataBase.h>

#include "DataBaseFuzzSupport.h"

namespace {

const size_t kMaxText = 16 << 20;

std::string Expand(const uint8_t* data, size_t size) {
    if (size == 0 || data[0] != 0xFF) return std::string(reinterpret_cast<const char*>(data), size);
    std::string text;
    for (size_t i = 1; i + 3 <= size;) {
        const size_t count = data[i] | (size_t(data[i + 1]) << 8);
        size_t length = data[i + 2];
        i += 3;
        if (length > size - i) length = size - i;
        for (size_t k = 0; k < count && text.size() + length <= kMaxText; ++k)
            text.append(reinterpret_cast<const char*>(data + i), length);
        i += length;
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes = Expand(data, size);
    const RzString text(bytes.data(), static_cast<int32_t>(bytes.size()), false);

    RzDataBase db;
    uint32_t code = 0;
    try {
        db.ReadFromString(text);
    } catch (const RzError& e) {
        code = e.GetErr();
    }

    std::string expected;
    uint32_t expectedCode = 0;
    try {
        rztest::ReferenceRead(expected, text);
    } catch (const RzError& e) {
        expectedCode = e.GetErr();
    }
    if (code != expectedCode || rztest::Dump(db) != expected) abort();
    if (!rztest::ExerciseTree(db)) abort();

    // Whatever was read writes and reads back in the protected form.
    if (rztest::Depth(db) > rztest::kWrittenDepth) return 0;
    const bool saved = RzDataBase::SaveControlChars(true);
    RzDataBase back;
    back.ReadFromString(db.WriteToString());
    RzDataBase::SaveControlChars(saved);
    if (rztest::Dump(back) != expected) abort();
    return 0;
}
