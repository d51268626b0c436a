// Builds a database through the API from the input and checks that its text,
// in the protected form and (where the plain form can carry it) the plain
// form, reads back as the same keys, values, order and nesting.
//
// Input: a sequence of operations, each an operation byte, then a key and a
// value, each a length byte followed by that many bytes.
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include <Rz/RzData/RzDataBase.h>

#include "support/DataBaseSupport.h"

namespace {

struct Input {
    const uint8_t* p;
    size_t n;
    bool Take(uint8_t& b) {
        if (n == 0) return false;
        b = *p++;
        --n;
        return true;
    }
    std::string Text(bool key) {
        uint8_t len = 0;
        Take(len);
        std::string s;
        for (uint8_t i = 0; i < len % 16; ++i) {
            uint8_t b = 0;
            if (!Take(b)) break;
            if (b == 0) b = ' ';            // texts carry no zero bytes
            if (key && b == '/') b = '\\';  // keys are set through paths
            s += static_cast<char>(b);
        }
        return s;
    }
};

void CheckRoundTrip(const RzDataBase& db, bool protectedForm) {
    const bool saved = RzDataBase::SaveControlChars(protectedForm);
    const RzString text = db.WriteToString();
    RzDataBase back;
    back.ReadFromString(text);
    RzDataBase::SaveControlChars(saved);
    if (rztest::Dump(back) != rztest::Dump(db)) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    RzDataBase db;
    std::vector<RzDataBase*> path{&db};
    uint8_t op;
    while (in.Take(op)) {
        const std::string key = in.Text(true), value = in.Text(false);
        RzDataBase* level = path.back();
        switch (op % 4) {
            case 0:
                level->SetString(RzString(key.c_str()), RzString(value.c_str()));
                break;
            case 1: {  // an appended entry, duplicates allowed
                RzDataBase one;
                one.SetString(RzString(key.c_str()), RzString(value.c_str()));
                level->MergeDB(&one, true);
                break;
            }
            case 2:
                if (path.size() < 8) path.push_back(level->GetDB(RzString(key.c_str()), true));
                break;
            default:
                if (path.size() > 1) path.pop_back();
                break;
        }
    }
    CheckRoundTrip(db, true);
    if (rztest::PlainFormCarries(db)) CheckRoundTrip(db, false);
    return 0;
}
