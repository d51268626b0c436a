#include <Rz/RzData/RzDataBase.h>

#include <string.h>

#include <new>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzStringBuffer.h>

static const char kRzUnit[] = "RzDataBase";

// The writer's protected form, process-wide; changed only by
// RzDataBase::SaveControlChars.
bool RzDataBase::mSaveControlChars = false;

// Destroying a tree: databases whose last reference a destructor took over,
// linked through nextReleased, and whether a destructor on this thread is
// destroying them. Changed only by ~RzDataBase.
static thread_local RzDataBase* tReleased = nullptr;
static thread_local bool tReleasing = false;

namespace {

// What the writer needs to know of each byte: whether it makes a key or
// value quoted, whether quoting escapes it, and the zero byte.
// The reader's separators (blank, tab, CR, LF and the zero byte) are kBlank.
enum : unsigned char { kTriggersQuotes = 1, kZero = 2, kEscaped = 4, kBlank = 8 };
struct ByteClasses {
    unsigned char of[256] = {};
    ByteClasses() {
        for (const char* c = " \t\r\n\""; *c; ++c)
            of[static_cast<unsigned char>(*c)] |= kTriggersQuotes;
        of[static_cast<unsigned char>('"')] |= kEscaped;
        of[static_cast<unsigned char>('\\')] |= kEscaped;
        of[0] |= kZero | kEscaped;
        for (const char* c = " \t\r\n"; *c; ++c) of[static_cast<unsigned char>(*c)] |= kBlank;
        of[0] |= kBlank;
    }
};
const ByteClasses kBytes;

// Whether the writer quotes s: it holds a blank, tab, CR, LF or double quote.
bool NeedsQuotes(const RzString& s) {
    const char* p = s.c_str();
    for (int32_t i = 0, n = s.length(); i < n; ++i)
        if (kBytes.of[static_cast<unsigned char>(p[i])] & kTriggersQuotes) return true;
    return false;
}

bool IsBlank(char c) {
    return kBytes.of[static_cast<unsigned char>(c)] & kBlank;
}
bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

}  // namespace

// --- Entries ---------------------------------------------------------------

RzDBData::RzDBData() {}

RzDBData::RzDBData(const RzString& key_, const RzString& value_) : key(key_), value(value_) {}

RzDBData::RzDBData(const RzString& key_, const RzString& value_, RzDataBase* db_, bool adopt)
    : key(key_), value(value_) {
    SetDB(db_, adopt);
}

RzDBData::RzDBData(const RzDBData& other) : key(other.key), value(other.value), db(other.db) {}

RzDBData& RzDBData::operator=(const RzDBData& other) {
    key = other.key;
    value = other.value;
    db = other.db;
    return *this;
}

RzDBData::RzDBData(RzDBData&& other) noexcept
    : key(std::move(other.key)), value(std::move(other.value)) {
    if (other.db.get()) {
        db = other.db;
        other.db = nullptr;
    }
}

RzDBData& RzDBData::operator=(RzDBData&& other) noexcept {
    key = std::move(other.key);
    value = std::move(other.value);
    if (other.db.get() != db.get()) {
        db = other.db;
        other.db = nullptr;
    }
    return *this;
}

RzDBData::~RzDBData() noexcept(false) {}

void RzDBData::SetDB(RzDataBase* newDB, bool adopt) {
    db = newDB;
    // The smart pointer took a reference of its own; with adopt the caller's
    // reference is the one given up.
    if (newDB && adopt) newDB->Delete();
}

RzString RzDBData::GetString(bool quoteAlways) const {
    RzString line;
    line += (quoteAlways || key.length() == 0 || NeedsQuotes(key)) ? key.QuoteString() : key;
    line += " = ";
    if (quoteAlways || NeedsQuotes(value))
        line += value.QuoteString();
    else
        line += value;
    return line;
}

void RzDBData::SetString(const RzString& text, int32_t& pos) {
    const RzString defaults;
    RzString word = text.ReadString(pos, true, defaults);
    key = (word.length() > 0 && word.c_str()[0] == '"') ? word.UnQuoteString() : word;

    if (text.ReadString(pos, false, defaults) != "=")
        RZ_RAISE_AT(kRzFormatErr, kRzLineEntryWithoutEquals);

    // Back onto the separator that ended "=" (or onto "=" itself at the end
    // of the text), then over blanks and tabs but not line ends.
    --pos;
    const int32_t n = text.length();
    const char* p = text.c_str();
    while (pos < n && (p[pos] == ' ' || p[pos] == '\t')) ++pos;

    if (pos >= n || IsLineEnd(p[pos])) {
        value = RzString();
        return;
    }
    if (p[pos] == '"')
        word = text.ReadString(pos, true, defaults);
    else
        word = text.ReadString(pos, true, RzString("\r\n"));
    value = (word.length() > 0 && word.c_str()[0] == '"') ? word.UnQuoteString() : word;
}

// --- Key index ----------------------------------------------------------------
//
// Lookups by key take the first entry with that key, in insertion order. On a
// small level a scan is fastest; a large one gets an open-addressing hash
// table from key to the index of the first entry with it, built on the first
// lookup. Appending keeps the table current; removing entries, or a table
// that has filled up, drops it, and the next lookup builds it again.

struct RzDataBaseKeyIndex {
    std::vector<int32_t> slots;  // entry index + 1; 0 marks an empty slot
    size_t used = 0;
};

namespace {

const int32_t kIndexFromCount = 16;

uint64_t HashKey(const char* p, size_t n) {
    uint64_t h = 1469598103934665603ull;
    for (size_t i = 0; i < n; ++i) h = (h ^ static_cast<unsigned char>(p[i])) * 1099511628211ull;
    return h ^ (h >> 29);
}

// Keys compare as C texts, up to their first zero byte; `p` has none.
bool KeyEquals(const RzString& key, const char* p, size_t n) {
    const char* k = key.c_str();
    return strncmp(k, p, n) == 0 && k[n] == 0;
}

}  // namespace

void RzDataBase::KeysChanged() const {
    delete keyIndex;
    keyIndex = nullptr;
}

void RzDataBase::BuildKeyIndex() const {
    keyIndex = new RzDataBaseKeyIndex;
    size_t size = 64;
    while (size < static_cast<size_t>(entries.count) * 4) size *= 2;
    keyIndex->slots.assign(size, 0);
    for (int32_t i = 0; i < entries.count; ++i) InsertKey(i);
}

void RzDataBase::InsertKey(int32_t i) const {
    const char* k = entries[i].key.c_str();
    const size_t n = strlen(k);
    const size_t mask = keyIndex->slots.size() - 1;
    for (size_t s = HashKey(k, n) & mask;; s = (s + 1) & mask) {
        const int32_t slot = keyIndex->slots[s];
        if (slot == 0) {
            keyIndex->slots[s] = i + 1;
            ++keyIndex->used;
            return;
        }
        if (KeyEquals(entries[slot - 1].key, k, n)) return;  // an earlier entry wins
    }
}

int RzDataBase::FindKey(const char* p, size_t n) const {
    n = strnlen(p, n);  // a key ends at its first zero byte
    const int32_t count = entries.count;
    if (count < kIndexFromCount) {
        for (int32_t i = 0; i < count; ++i)
            if (KeyEquals(entries[i].key, p, n)) return i;
        return -1;
    }
    if (!keyIndex) BuildKeyIndex();
    const size_t mask = keyIndex->slots.size() - 1;
    for (size_t s = HashKey(p, n) & mask;; s = (s + 1) & mask) {
        const int32_t slot = keyIndex->slots[s];
        if (slot == 0) return -1;
        if (KeyEquals(entries[slot - 1].key, p, n)) return slot - 1;
    }
}

void RzDataBase::Append(RzDBData&& entry) {
    entries.AddBack(std::move(entry));
    if (!keyIndex) return;
    if ((keyIndex->used + 1) * 2 > keyIndex->slots.size())
        KeysChanged();
    else
        InsertKey(entries.count - 1);
}

// --- The tree -----------------------------------------------------------------

RzDataBase::RzDataBase() : keyIndex(nullptr), nextReleased(nullptr) {}

RzDataBase::RzDataBase(int32_t capacity)
    : entries(capacity), keyIndex(nullptr), nextReleased(nullptr) {}

RzDataBase::RzDataBase(const RzDataBase& other)
    : RzObject(other), keyIndex(nullptr), nextReleased(nullptr) {
    MergeDB(&other, true);
}

RzDataBase& RzDataBase::operator=(const RzDataBase& other) {
    if (this == &other) return *this;
    Clear();
    MergeDB(&other, true);
    return *this;
}

// Destroying a sub-database from its entry's destructor would recurse once
// per level. Instead each destructor takes over the last reference to every
// sub-database its entries hold (stale slots of the ring included) and queues
// it; the outermost destructor on the thread then destroys the queue one
// database after another, each adding its own sub-databases. A sub-database
// that another holder keeps just loses this level's reference; one whose count
// is no longer positive is left to its entry, whose release raises.
RzDataBase::~RzDataBase() {
    KeysChanged();
    RzDBData* slots = entries.storage.data;
    for (int32_t i = 0; i < entries.storage.count; ++i) {
        RzDataBase* sub = slots[i].db.get();
        if (!sub || sub->RefCount() <= 0) continue;
        if (sub->RefCount() == 1) {
            sub->NewRef();  // the queue's reference, once the entry lets go
            sub->nextReleased = tReleased;
            tReleased = sub;
        }
        slots[i].db = nullptr;
    }
    if (tReleasing) return;
    tReleasing = true;
    while (RzDataBase* next = tReleased) {
        tReleased = next->nextReleased;
        next->Delete();
    }
    tReleasing = false;
}

int RzDataBase::GetCount() const {
    return entries.count;
}

int RzDataBase::GetIndex(const RzString& key) const {
    return FindKey(key.c_str(), strlen(key.c_str()));
}

int RzDataBase::GetIndexByValue(const RzString& value) const {
    for (int32_t i = 0; i < entries.count; ++i)
        if (entries[i].value == value) return i;
    return -1;
}

RzString RzDataBase::GetIndexedName(int i) const {
    return entries[i].key;
}
RzString RzDataBase::GetIndexedValue(int i) const {
    return entries[i].value;
}
RzDataBase* RzDataBase::GetIndexedDB(int i) const {
    return entries[i].db.get();
}

void RzDataBase::Remove(const RzString& key) {
    const int i = GetIndex(key);
    if (i >= 0) RemoveIndex(i);
}

void RzDataBase::RemoveIndex(int i) {
    entries.Remove(i);
    KeysChanged();
}

void RzDataBase::Clear() {
    KeysChanged();
    // Every slot of the ring goes, stale ones included, so that each
    // sub-database held by this level is released now.
    entries.storage.Clear();
    entries.storage.ReSize(10);
    entries.count = 0;
    entries.head = 0;
    entries.tail = -1;
}

RzDataBase* RzDataBase::GetEntry(const RzString& path, bool create, int& index) {
    index = -1;
    const char* p = path.c_str();
    const int32_t n = path.length();
    int32_t start = (n > 0 && p[0] == '/') ? 1 : 0;
    RzDataBase* level = this;
    while (level) {
        const void* slash =
            start < n ? memchr(p + start, '/', static_cast<size_t>(n - start)) : nullptr;
        const int32_t end = slash ? static_cast<int32_t>(static_cast<const char*>(slash) - p) : n;
        const int32_t next = end + 1;
        const int i = level->FindKey(p + start, static_cast<size_t>(end - start));
        if (next >= n) {
            if (i >= 0) {
                index = i;
            } else if (create) {
                level->Append(RzDBData(path.substr(start, end - start), RzString()));
                index = level->entries.count - 1;
            }
            if (index >= 0) return level;
            break;
        }
        if (i < 0) {
            if (!create) break;
            RzDataBase* created = new RzDataBase;
            level->Append(RzDBData(path.substr(start, end - start), RzString(), created, true));
            level = created;
        } else {
            RzDBData& entry = level->entries[i];
            if (entry.db.get()) {
                level = entry.db.get();
            } else if (create) {
                RzDataBase* created = new RzDataBase;
                entry.SetDB(created, true);
                level = created;
            } else {
                level = nullptr;
            }
        }
        start = next;
    }
    index = -1;
    return nullptr;
}

bool RzDataBase::Exists(const RzString& path) {
    int index;
    return GetEntry(path, false, index) != nullptr;
}

RzDataBase* RzDataBase::GetDB(const RzString& path, bool create) {
    int index;
    RzDataBase* level = GetEntry(path, create, index);
    if (!level) return nullptr;
    RzDBData& entry = level->entries[index];
    if (entry.db.get() || !create) return entry.db.get();
    RzDataBase* created = new RzDataBase;
    entry.SetDB(created, true);
    return created;
}

void RzDataBase::SetDB(const RzString& path, RzDataBase* db, bool adopt) {
    int index;
    RzDataBase* level = GetEntry(path, true, index);
    level->entries[index].SetDB(db, false);
    if (db && adopt) db->Delete();
}

void RzDataBase::SetString(const RzString& path, const RzString& value) {
    int index;
    RzDataBase* level = GetEntry(path, true, index);
    level->entries[index].value = value;
}

RzString RzDataBase::GetString(const RzString& path, const RzString& def, bool create) {
    int index;
    RzDataBase* level = GetEntry(path, false, index);
    if (level) return level->entries[index].value;
    if (create) SetString(path, def);
    return def;
}

// Level by level with a stack of the levels being copied, in the order a
// recursive copy would take: each level's entries are counted when its copy
// begins, so merging a database into itself copies what it held then.
void RzDataBase::MergeDB(const RzDataBase* other, bool append) {
    if (!other) return;
    struct Level {
        RzDataBase* into;
        const RzDataBase* from;
        RzSmartPtr<RzDataBase> held;  // keeps `from` alive below the top
        int32_t count;
        int32_t next;
    };
    std::vector<Level> open;
    open.push_back(Level{this, other, RzSmartPtr<RzDataBase>(), other->entries.count, 0});
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next >= level.count) {
            open.pop_back();
            continue;
        }
        const RzDBData& entry = level.from->entries[level.next++];
        // Copies first: appending may move the entries of `from`.
        const RzString name = entry.key, value = entry.value;
        const RzSmartPtr<RzDataBase> sub = entry.db;
        RzDataBase* into = level.into;
        if (append)
            into->Append(RzDBData(name, value));
        else
            into->SetString(name, value);
        if (sub.get())
            open.push_back(Level{into->GetDB(name, true), sub.get(), sub, sub->entries.count, 0});
    }
}

bool RzDataBase::SaveControlChars(bool on) {
    const bool previous = mSaveControlChars;
    mSaveControlChars = on;
    return previous;
}

// --- Reading ------------------------------------------------------------------

void RzDataBase::SkipLine(const RzString& text, int32_t& pos) {
    const char* p = text.c_str();
    const int32_t n = text.length();
    while (pos < n) {
        const char c = p[pos++];
        if (IsLineEnd(c)) {
            // Looks one character beyond where reading goes on: for CR LF this
            // normally leaves pos on the LF, which callers skip as blank.
            const int32_t beyond = pos + 1;
            if (beyond < n && p[beyond] == (c == '\n' ? '\r' : '\n')) ++pos;
            return;
        }
    }
}

char RzDataBase::GetNextChar(const RzString& text, int32_t& pos) {
    const char* p = text.c_str();
    const int32_t n = text.length();
    while (pos < n) {
        const char c = p[pos++];
        if (c == '#') {
            if (pos >= n) return 0;
            const char next = p[pos++];
            if (next == '{') {
                // A block comment: skip whole lines up to one that starts
                // with "#}"; reading goes on right behind that pair.
                SkipLine(text, pos);
                while (pos < n && !(p[pos] == '#' && pos + 1 < n && p[pos + 1] == '}'))
                    SkipLine(text, pos);
                if (pos >= n) return 0;
                pos += 2;
            } else {
                if (IsLineEnd(next)) --pos;  // consume only that line end
                SkipLine(text, pos);
            }
            continue;
        }
        if (IsBlank(c)) continue;
        return c;
    }
    return 0;
}

// Reads the entries of a text into a database, level by level, without
// recursion (so that deep nesting cannot exhaust the stack). Entries of the
// top level are appended as they are read; those of a sub-database wait in
// one stack until its closing brace, and then move into a level made with
// room for exactly them.
//
// The entry reader is the only part that differs between texts:
// RzDBData::SetString in general, and for texts without zero bytes (all texts
// the writer makes) a reader that scans the characters directly and makes the
// keys and values in bulk, with identical results, capacities included.
class RzDataBaseReader {
public:
    RzDataBaseReader(const RzString& text_, int32_t& pos_)
        : text(text_),
          pos(pos_),
          p(text_.c_str()),
          n(text_.length()),
          fast(n <= pos || !memchr(p + pos, 0, static_cast<size_t>(n - pos))),
          slab(fast && n > pos ? static_cast<size_t>(n - pos) : 0) {}

    ~RzDataBaseReader() {
        for (RzStringData*& d : recentKeys) RzString release(d);
    }

    void Read(RzDataBase* top) {
        std::vector<RzDBData> waiting;  // entries of the open sub-databases
        std::vector<size_t> starts;     // where each open one's entries begin
        for (;;) {
            const char c = RzDataBase::GetNextChar(text, pos);
            if (c == 0 || c == '}') {
                // The end of the text closes every open sub-database in turn.
                if (starts.empty()) return;
                const size_t start = starts.back();
                starts.pop_back();
                // It goes to the last entry read so far in the level around it;
                // without one, indexing that level raises.
                RzDBData& owner = starts.empty()          ? Last(top->entries)
                                  : start > starts.back() ? waiting[start - 1]
                                                          : Last(RzList<RzDBData>(0));
                const int32_t count = static_cast<int32_t>(waiting.size() - start);
                RzDataBase* sub = new RzDataBase(count);
                for (size_t i = start; i < waiting.size(); ++i)
                    sub->entries.AddBack(std::move(waiting[i]));
                waiting.resize(start);
                owner.SetDB(sub, true);
                continue;
            }
            if (c == '{') {
                starts.push_back(waiting.size());
                continue;
            }
            if (c != '<') --pos;
            if (starts.empty()) {
                RzDBData entry;
                ReadEntry(entry);
                top->Append(std::move(entry));
            } else {
                // Read in place: on an error everything waiting is dropped.
                waiting.emplace_back();
                ReadEntry(waiting.back());
            }
            if (c == '<' && RzDataBase::GetNextChar(text, pos) != '>')
                RZ_RAISE_AT(kRzFormatErr, kRzLineProtectedEntryOpen);
        }
    }

private:
    static RzDBData& Last(RzList<RzDBData>&& level) { return level[level.count - 1]; }
    static RzDBData& Last(RzList<RzDBData>& level) { return level[level.count - 1]; }

    void ReadEntry(RzDBData& entry) {
        if (!fast) {
            entry.SetString(text, pos);
            return;
        }
        entry.key = ReadKeyOrValueWord(true);
        SkipSeparators();
        const int32_t start = pos;
        while (pos < n && !IsBlank(p[pos])) ++pos;
        const bool isEquals = pos - start == 1 && p[start] == '=';
        if (pos < n) ++pos;  // the separator that ends the word
        if (!isEquals) RZ_RAISE_AT(kRzFormatErr, kRzLineEntryWithoutEquals);
        --pos;
        while (pos < n && (p[pos] == ' ' || p[pos] == '\t')) ++pos;
        if (pos >= n || IsLineEnd(p[pos])) return;
        if (p[pos] == '"') {
            entry.value = ReadKeyOrValueWord(false);
            return;
        }
        // The rest of the line, blanks included; the line end is consumed.
        const int32_t from = pos;
        const void* lf = memchr(p + pos, '\n', static_cast<size_t>(n - pos));
        const int32_t lineEnd = lf ? static_cast<int32_t>(static_cast<const char*>(lf) - p) : n;
        while (pos < lineEnd && p[pos] != '\r') ++pos;
        entry.value = Word(p + from, pos - from);
        if (pos < n) ++pos;
    }

    void SkipSeparators() {
        while (pos < n && IsBlank(p[pos])) ++pos;
    }

    // A word as reading it character by character makes it: capacity 10,
    // grown by half as it fills.
    RzString Word(const char* from, int32_t length, RzStringData** made = nullptr) {
        RzStringData* d = slab.NewText(RzStringCapacityAfterChars(10, length));
        if (made) *made = d;
        memcpy(d->chars, from, static_cast<size_t>(length));
        return RzFinishText(d, length, true);
    }

    // A key written bare as one read recently: the same word shares its
    // buffer, as copies of a string do (settings repeat their keys from one
    // level to the next). Otherwise a new word, remembered.
    RzString Key(const char* from, int32_t length) {
        uint64_t head = 0, tail = 0;
        memcpy(&head, from, length < 8 ? static_cast<size_t>(length) : 8);
        if (length > 8) memcpy(&tail, from + length - 8, 8);
        // Multiplied, the high bits depend on every byte.
        const uint64_t h = ((head ^ static_cast<uint64_t>(length)) * 0x9E3779B97F4A7C15ull + tail) *
                           0xC2B2AE3D27D4EB4Full;
        RzStringData*& slot = recentKeys[h >> (64 - kRecentKeyBits)];
        if (slot && slot->length == length && memcmp(slot->chars, from, length) == 0) {
            ++slot->refCount;
            return RzString(slot);
        }
        RzStringData* d = nullptr;
        RzString word = Word(from, length, &d);
        RzString release(slot);
        slot = d;
        ++slot->refCount;
        return word;
    }

    // A word up to the next blank, or a quoted word, unquoted.
    RzString ReadKeyOrValueWord(bool key) {
        SkipSeparators();
        if (pos >= n) return RzString();
        const int32_t start = pos;
        if (p[pos] != '"') {
            while (pos < n && !IsBlank(p[pos])) ++pos;
            RzString word = key ? Key(p + start, pos - start) : Word(p + start, pos - start);
            if (pos < n) ++pos;
            return word;
        }
        // Quoted: up to the closing quote that no backslash escapes.
        bool escaped = false;
        for (++pos; pos < n; ++pos) {
            const char c = p[pos];
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                ++pos;
                break;
            }
        }
        const int32_t length = pos - start;
        if (length < 2 || p[pos - 1] != '"') {
            // Not closed: let the string's own unquoting raise the error.
            return RzString(p + start, length, false).UnQuoteString();
        }
        // The content between the quotes, with \" and \\ resolved, in a buffer
        // as large as the content with its backslashes, as unquoting makes it.
        RzStringData* d = slab.NewText(length - 2);
        char* out = d->chars;
        int32_t written = 0;
        const int32_t last = pos - 1;  // the closing quote
        for (int32_t i = start + 1; i < last; ++i) {
            if (p[i] == '\\' && i + 1 < last && (p[i + 1] == '"' || p[i + 1] == '\\')) ++i;
            out[written++] = p[i];
        }
        return RzFinishText(d, written, true);
    }

    const RzString& text;
    int32_t& pos;
    const char* p;
    const int32_t n;
    const bool fast;
    RzStringSlab slab;
    static const int kRecentKeyBits = 9;
    RzStringData* recentKeys[1 << kRecentKeyBits] = {};  // each holds one reference
};

void RzDataBase::String2DB(const RzString& text, int32_t& pos) {
    RzDataBaseReader(text, pos).Read(this);
}

void RzDataBase::ReadFromString(const RzString& text) {
    Clear();
    int32_t pos = 0;
    if (GetNextChar(text, pos) != '{') pos = 0;
    String2DB(text, pos);
}

// --- Writing ------------------------------------------------------------------
//
// The text is built in two passes over the tree, both without recursion: the
// first adds up its exact size (so that a text beyond the largest string
// fails before anything is allocated, and the result is allocated once), the
// second writes it. Each line of a level nested d deep below the starting
// indent carries indent + d tabs (none while that is negative).
//
// What appending piece by piece would do is kept: a key or value written
// bare that holds a zero byte is cut there by the next append, which counts
// the text, and the quoted form stops at the first zero byte. Either way a
// key or value contributes its bytes up to the first zero, and the text
// holds no zero byte.

// What the writer reads of levels and entries.
class RzDataBaseWriter {
public:
    static const RzList<RzDBData>& Entries(const RzDataBase* db) { return db->entries; }
    static const RzString& Key(const RzDBData& entry) { return entry.key; }
    static const RzString& Value(const RzDBData& entry) { return entry.value; }
};

namespace {

// How one key or value is written: its bytes up to the first zero, bare or
// quoted.
struct Word {
    const char* p;
    size_t n;
    bool quoted;
};

bool HasByte(uint64_t word, unsigned char c) {
    const uint64_t x = word ^ (0x0101010101010101ull * c);
    return ((x - 0x0101010101010101ull) & ~x & 0x8080808080808080ull) != 0;
}

// Whether any of the eight bytes is below '#': the bytes that make a word
// quoted (blank, tab, CR, LF, '"') and the zero byte are all among them.
bool HasByteBelowHash(uint64_t word) {
    return ((word - 0x0101010101010101ull * '#') & ~word & 0x8080808080808080ull) != 0;
}

Word Classify(const RzString& s, bool protectedForm, bool quoteEmpty) {
    const char* p = s.c_str();
    const size_t length = static_cast<size_t>(s.length());
    Word w{p, length, protectedForm || (quoteEmpty && length == 0)};
    unsigned char seen = 0;
    if (!protectedForm) {
        size_t i = 0;
        for (uint64_t word; i + 8 <= length; i += 8) {
            memcpy(&word, p + i, 8);
            if (HasByteBelowHash(word)) break;
        }
        for (; i < length && !(seen & kTriggersQuotes); ++i)
            seen |= kBytes.of[static_cast<unsigned char>(p[i])];
        w.quoted |= (seen & kTriggersQuotes) != 0;
    }
    if ((seen & kZero) || (w.quoted && memchr(p, 0, length))) w.n = strlen(p);
    return w;
}

size_t QuotedSize(const Word& w) {
    size_t escapes = 0, i = 0;
    for (uint64_t word; i + 8 <= w.n; i += 8) {
        memcpy(&word, w.p + i, 8);
        if (!HasByte(word, '"') && !HasByte(word, '\\')) continue;
        for (size_t j = i; j < i + 8; ++j)
            escapes += (kBytes.of[static_cast<unsigned char>(w.p[j])] & kEscaped) != 0;
    }
    for (; i < w.n; ++i) escapes += (kBytes.of[static_cast<unsigned char>(w.p[i])] & kEscaped) != 0;
    return w.n + escapes + 2;
}

// The walk both passes share: for each entry in text order Entry(entry,
// tabs), and around each sub-database Open(tabs) and Close(tabs), with tabs
// the indentation of the entry that holds it.
template <class Pass>
void Walk(const RzDataBase* top, int64_t indent, Pass& pass) {
    struct Level {
        const RzDataBase* db;
        int32_t next;
        int64_t tabs;
    };
    std::vector<Level> open{{top, 0, indent}};
    while (!open.empty()) {
        Level& level = open.back();
        const RzList<RzDBData>& entries = RzDataBaseWriter::Entries(level.db);
        if (level.next >= entries.count) {
            open.pop_back();
            if (!open.empty()) pass.Close(open.back().tabs);
            continue;
        }
        const RzDBData& entry = entries[level.next++];
        const int64_t tabs = level.tabs;
        pass.Entry(entry, tabs);
        if (const RzDataBase* sub = entry.GetDB()) {
            pass.Open(tabs);
            open.push_back(Level{sub, 0, tabs + 1});
        }
    }
}

int64_t Tabs(int64_t tabs) {
    return tabs > 0 ? tabs : 0;
}

// How the first pass found each key and value, in text order, so that the
// second pass need not look at their bytes again: written whole and bare,
// written whole and quoted, or cut at a zero byte (classified again).
enum WordForm : unsigned char { kWholeBare, kWholeQuoted, kCutAtZero };

// The first pass: the exact size. Raises std::bad_alloc as soon as the text
// would exceed the largest string.
struct SizePass {
    bool protectedForm;
    int64_t size;
    std::vector<WordForm> forms;

    void Add(int64_t n) {
        size += n;
        if (size > kRzStringMaxCapacity) throw std::bad_alloc();
    }
    void AddWord(const RzString& s, bool quoteEmpty) {
        const Word w = Classify(s, protectedForm, quoteEmpty);
        Add(static_cast<int64_t>(w.quoted ? QuotedSize(w) : w.n));
        forms.push_back(w.n != static_cast<size_t>(s.length()) ? kCutAtZero
                        : w.quoted                             ? kWholeQuoted
                                                               : kWholeBare);
    }
    void Entry(const RzDBData& entry, int64_t tabs) {
        // Tabs, "<", " = ", ">" and the line end.
        Add(Tabs(tabs) + (protectedForm ? 6 : 4));
        AddWord(RzDataBaseWriter::Key(entry), true);
        AddWord(RzDataBaseWriter::Value(entry), false);
    }
    void Open(int64_t tabs) { Add(Tabs(tabs) + 2); }
    void Close(int64_t tabs) { Add(Tabs(tabs) + 2); }
};

// The second pass: writes into a buffer of the size the first pass found.
struct WritePass {
    bool protectedForm;
    char* out;
    const WordForm* form;  // the next word's, from the first pass

    void Put(const char* s, size_t n) {
        memcpy(out, s, n);
        out += n;
    }
    void PutTabs(int64_t tabs) {
        const size_t n = static_cast<size_t>(Tabs(tabs));
        memset(out, '\t', n);
        out += n;
    }
    void PutWord(const RzString& s, bool quoteEmpty) {
        const WordForm f = *form++;
        const Word w = f == kCutAtZero
                           ? Classify(s, protectedForm, quoteEmpty)
                           : Word{s.c_str(), static_cast<size_t>(s.length()), f == kWholeQuoted};
        if (!w.quoted) {
            Put(w.p, w.n);
            return;
        }
        *out++ = '"';
        size_t i = 0;
        // Eight bytes at a time while none of them needs a backslash.
        for (; i + 8 <= w.n; i += 8) {
            uint64_t word;
            memcpy(&word, w.p + i, 8);
            if (HasByte(word, '"') || HasByte(word, '\\')) break;
            memcpy(out, &word, 8);
            out += 8;
        }
        for (; i < w.n; ++i) {
            if (kBytes.of[static_cast<unsigned char>(w.p[i])] & kEscaped) *out++ = '\\';
            *out++ = w.p[i];
        }
        *out++ = '"';
    }
    void Entry(const RzDBData& entry, int64_t tabs) {
        PutTabs(tabs);
        if (protectedForm) *out++ = '<';
        PutWord(RzDataBaseWriter::Key(entry), true);
        Put(" = ", 3);
        PutWord(RzDataBaseWriter::Value(entry), false);
        if (protectedForm) *out++ = '>';
        *out++ = '\n';
    }
    void Open(int64_t tabs) {
        PutTabs(tabs);
        Put("{\n", 2);
    }
    void Close(int64_t tabs) {
        PutTabs(tabs);
        Put("}\n", 2);
    }
};

// The text of db with its levels indented from `indent` on, between `before`
// and `after`.
RzString WriteText(const RzDataBase* db, int64_t indent, bool protectedForm, const char* before,
                   const char* after) {
    const size_t nBefore = strlen(before), nAfter = strlen(after);
    SizePass size{protectedForm, static_cast<int64_t>(nBefore + nAfter), {}};
    Walk(db, indent, size);
    if (size.size == 0) return RzString();
    RzStringData* buffer = RzNewTextBuffer(size.size);
    WritePass write{protectedForm, buffer->chars, size.forms.data()};
    write.Put(before, nBefore);
    try {
        Walk(db, indent, write);
    } catch (...) {
        RzString release(buffer);
        throw;
    }
    write.Put(after, nAfter);
    return RzFinishText(buffer, static_cast<int32_t>(size.size), true);
}

}  // namespace

RzString RzDataBase::DB2String(int indent) const {
    return WriteText(this, indent, mSaveControlChars, "", "");
}

RzString RzDataBase::WriteToString() const {
    if (!mSaveControlChars) return DB2String(0);
    return WriteText(this, 1, true, "{\n", "}\n");
}
