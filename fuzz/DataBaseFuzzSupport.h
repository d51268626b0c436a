// What the database fuzz targets check on every tree they build or read.
#ifndef RZ_FUZZ_DATABASEFUZZSUPPORT_H
#define RZ_FUZZ_DATABASEFUZZSUPPORT_H

#include <stddef.h>

#include <new>
#include <string>

#include <Rz/RzData/RzDataBase.h>

#include "support/DataBaseSupport.h"

namespace rztest {

// Whether copying reproduces db exactly: the copy puts a sub-database below
// the first entry that its key names as a path, so every entry with one must
// be the first with its key on its level and its key must hold no '/'.
inline bool CopyIsExact(const RzDataBase& db) {
    bool exact = true;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t) {
        if (!level.GetIndexedDB(i)) return;
        const RzString key = level.GetIndexedName(i);
        if (level.GetIndex(key) != i || key.find('/') >= 0) exact = false;
    });
    return exact;
}

// Trees up to this depth are written in full by the fuzz targets (the text of
// a deep tree grows with the square of its depth); from kTooDeepToWrite on,
// the indentation alone exceeds the largest string (2^31 - 1 bytes).
const size_t kWrittenDepth = 2000;
const size_t kTooDeepToWrite = 40000;

// Checks what every database must survive at any depth: copying and
// assigning (exact where CopyIsExact), merging in both modes, a path lookup
// down the first entries, and that a tree too deep to write raises
// std::bad_alloc without writing. False when a check fails.
inline bool ExerciseTree(const RzDataBase& db) {
    const std::string dump = Dump(db);
    const bool exact = CopyIsExact(db);
    RzDataBase copy(db), assigned, merged;
    assigned = db;
    if (exact && (Dump(copy) != dump || Dump(assigned) != dump)) return false;
    merged.MergeDB(&db, false);
    merged.MergeDB(&db, true);

    // Down the first entries while their keys can be named by a path.
    std::string path;
    const RzDataBase* level = &db;
    const RzDataBase* holder = nullptr;
    while (level->GetCount() > 0 && level->GetIndex(level->GetIndexedName(0)) == 0) {
        const RzString key = level->GetIndexedName(0);
        if (key.find('/') >= 0 || key.length() == 0) break;
        path += (path.empty() ? "" : "/") + std::string(key.c_str());
        holder = level;
        level = level->GetIndexedDB(0);
        if (!level) break;
    }
    if (holder) {
        int index = -1;
        if (copy.GetEntry(RzString(path.c_str()), false, index) == nullptr && exact) return false;
        if (const_cast<RzDataBase&>(db).GetEntry(RzString(path.c_str()), false, index) != holder ||
            index != 0)
            return false;
    }

    if (Depth(db) >= kTooDeepToWrite) {
        try {
            db.WriteToString();
            return false;
        } catch (const std::bad_alloc&) {
        }
    }
    return true;
}

}  // namespace rztest

#endif
