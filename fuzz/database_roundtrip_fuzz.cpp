// Builds a database through the API from the input and checks that its text,
// in the protected form and (where the plain form can carry it) the plain
// form, reads back as the same keys, values, order and nesting (where its
// depth allows writing it), and that it survives copying, merging, lookups
// and destruction at any depth.
//
// Input: a sequence of operations, each an operation byte, then a key and a
// value, each a length byte followed by that many bytes. The operation
// "descend" takes a 2-byte repeat count first, so that a short input can
// build a deep tree.
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include <Rz/RzData/RzDataBase.h>

#include "DataBaseFuzzSupport.h"

namespace {

const size_t kMaxDepth = 200000;

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
    const std::string dump = rztest::Dump(db);
    std::string literal;
    rztest::ReferenceRead(literal, text);
    if (rztest::Dump(back) != dump || literal != dump) abort();
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
        switch (op % 5) {
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
                if (path.size() < 64) path.push_back(level->GetDB(RzString(key.c_str()), true));
                break;
            case 3:
                if (path.size() > 1) path.pop_back();
                break;
            default: {  // descend: the same key many levels down
                uint8_t lo = 0, hi = 0;
                in.Take(lo);
                in.Take(hi);
                for (int k = lo | (hi << 8); k > 0 && path.size() < kMaxDepth; --k)
                    path.push_back(path.back()->GetDB(RzString(key.c_str()), true));
                break;
            }
        }
    }
    if (!rztest::ExerciseTree(db)) abort();
    if (rztest::Depth(db) > rztest::kWrittenDepth) return 0;
    CheckRoundTrip(db, true);
    if (rztest::PlainFormCarries(db)) CheckRoundTrip(db, false);
    return 0;
}
