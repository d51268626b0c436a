// Reads arbitrary bytes as a database. Only RzError may escape, and the
// result (entries, or the error's code and entries kept so far) must be what
// the format's literal reader gives.
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include <Rz/RzData/RzDataBase.h>

#include "support/DataBaseSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const RzString text(data, static_cast<int32_t>(size), false);

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

    // Whatever was read writes and reads back in the protected form.
    const bool saved = RzDataBase::SaveControlChars(true);
    RzDataBase back;
    back.ReadFromString(db.WriteToString());
    RzDataBase::SaveControlChars(saved);
    if (rztest::Dump(back) != expected) abort();
    return 0;
}
