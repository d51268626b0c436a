// Helpers shared by the database tests and fuzz targets: a database's
// entries as canonical text (without recursing, so for trees of any depth)
// and a guard for the writer's form.
#ifndef RZ_TESTS_SUPPORT_DATABASESUPPORT_H
#define RZ_TESTS_SUPPORT_DATABASESUPPORT_H

#include <stdint.h>

#include <string>
#include <utility>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>

namespace rztest {

// Keys and values are compared as their C text, as the database compares
// them; lengths make any bytes unambiguous.
inline std::string Entry(const RzString& key, const RzString& value) {
    const std::string k = key.c_str(), v = value.c_str();
    return std::to_string(k.size()) + ":" + k + "=" + std::to_string(v.size()) + ":" + v + ";";
}

// Calls visit(level, i, depth) for every entry in text order.
template <class Visit>
void ForEachEntry(const RzDataBase& db, Visit visit) {
    std::vector<std::pair<const RzDataBase*, int>> open{{&db, 0}};
    while (!open.empty()) {
        const RzDataBase* level = open.back().first;
        const int i = open.back().second++;
        if (i >= level->GetCount()) {
            open.pop_back();
            continue;
        }
        visit(*level, i, open.size() - 1);
        if (const RzDataBase* sub = level->GetIndexedDB(i)) open.push_back({sub, 0});
    }
}

// Keys, values, order and nesting: a sub-database follows its entry in braces.
inline std::string Dump(const RzDataBase& db) {
    std::string out;
    size_t depth = 0;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t d) {
        for (; depth > d; --depth) out += "}";
        out += Entry(level.GetIndexedName(i), level.GetIndexedValue(i));
        if (level.GetIndexedDB(i)) {
            out += "{";
            ++depth;
        }
    });
    return out + std::string(depth, '}');
}

// Selects the writer's process-wide form while it lives.
class ControlCharsGuard {
public:
    explicit ControlCharsGuard(bool on) : saved(RzDataBase::SaveControlChars(on)) {}
    ~ControlCharsGuard() { RzDataBase::SaveControlChars(saved); }

private:
    bool saved;
};

}  // namespace rztest

#endif
