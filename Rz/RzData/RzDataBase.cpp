#include <Rz/RzData/RzDataBase.h>

#include <string.h>

#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzDataBase";

// The writer's protected form, process-wide; changed only by
// RzDataBase::SaveControlChars.
bool RzDataBase::mSaveControlChars = false;

namespace {

// What the writer needs to know of each byte: whether it makes a key or
// value quoted, whether quoting escapes it, and the zero byte.
enum : unsigned char { kTriggersQuotes = 1, kZero = 2, kEscaped = 4 };
struct ByteClasses {
    unsigned char of[256] = {};
    ByteClasses() {
        for (const char* c = " \t\r\n\""; *c; ++c)
            of[static_cast<unsigned char>(*c)] |= kTriggersQuotes;
        of[static_cast<unsigned char>('"')] |= kEscaped;
        of[static_cast<unsigned char>('\\')] |= kEscaped;
        of[0] |= kZero | kEscaped;
    }
};
const ByteClasses kBytes;

// kTriggersQuotes when the writer quotes s (it holds a blank, tab, CR, LF
// or double quote), else kZero when s holds a zero byte, else 0.
unsigned char Classify(const RzString& s) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(s.c_str());
    unsigned char seen = 0;
    for (int32_t i = 0, n = s.length(); i < n; ++i) {
        const unsigned char c = kBytes.of[p[i]];
        if (c & kTriggersQuotes) return kTriggersQuotes;
        seen |= c;
    }
    return seen & kZero;
}

bool NeedsQuotes(const RzString& s) {
    return Classify(s) == kTriggersQuotes;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == 0 || c == '\r' || c == '\n';
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

RzDataBase::RzDataBase() : keyIndex(nullptr) {}

RzDataBase::RzDataBase(const RzDataBase& other) : RzObject(other), keyIndex(nullptr) {
    MergeDB(&other, true);
}

RzDataBase& RzDataBase::operator=(const RzDataBase& other) {
    if (this == &other) return *this;
    Clear();
    MergeDB(&other, true);
    return *this;
}

RzDataBase::~RzDataBase() {
    KeysChanged();
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

void RzDataBase::MergeDB(const RzDataBase* other, bool append) {
    if (!other) return;
    // Merging a database into itself copies what it held when the merge began.
    const int32_t count = other->entries.count;
    for (int32_t i = 0; i < count; ++i) {
        const RzDBData& entry = other->entries[i];
        // Copies first: appending may move the entries of `other`.
        const RzString name = entry.key, value = entry.value;
        const RzSmartPtr<RzDataBase> sub = entry.db;
        if (append)
            Append(RzDBData(name, value));
        else
            SetString(name, value);
        if (sub.get()) GetDB(name, true)->MergeDB(sub.get(), append);
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
// recursion (so that deep nesting cannot exhaust the stack). The entry reader
// is the only part that differs between the two uses: RzDBData::SetString in
// general, and a reader that scans the characters directly (with identical
// results) for texts without zero bytes, which are all texts the writer makes.
class RzDataBaseReader {
public:
    RzDataBaseReader(const RzString& text_, int32_t& pos_)
        : text(text_),
          pos(pos_),
          p(text_.c_str()),
          n(text_.length()),
          fast(n <= pos || !memchr(p + pos, 0, static_cast<size_t>(n - pos))) {}

    void Read(RzDataBase* top) {
        std::vector<RzDataBase*> open;  // sub-databases being read, innermost last
        try {
            RzDataBase* level = top;
            for (;;) {
                const char c = RzDataBase::GetNextChar(text, pos);
                if (c == 0 || c == '}') {
                    if (open.empty()) return;
                    // A sub-database is complete (the end of the text closes
                    // every open one in turn): it goes to the last entry read
                    // so far in the level around it. Without one the index
                    // raises, and the catch below releases what is open.
                    RzDataBase* outer = open.size() > 1 ? open[open.size() - 2] : top;
                    RzDBData& owner = outer->entries[outer->entries.count - 1];
                    owner.SetDB(open.back(), true);
                    open.pop_back();
                    level = outer;
                    continue;
                }
                if (c == '{') {
                    open.push_back(new RzDataBase);
                    level = open.back();
                    continue;
                }
                RzDBData entry;
                if (c != '<') --pos;
                ReadEntry(entry);
                level->Append(std::move(entry));
                if (c == '<' && RzDataBase::GetNextChar(text, pos) != '>')
                    RZ_RAISE_AT(kRzFormatErr, kRzLineProtectedEntryOpen);
            }
        } catch (...) {
            for (RzDataBase* db : open) db->Delete();
            throw;
        }
    }

private:
    void ReadEntry(RzDBData& entry) {
        if (!fast) {
            entry.SetString(text, pos);
            return;
        }
        entry.key = ReadKeyOrValueWord();
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
            entry.value = ReadKeyOrValueWord();
            return;
        }
        // The rest of the line, blanks included; the line end is consumed.
        const int32_t from = pos;
        while (pos < n && !IsLineEnd(p[pos])) ++pos;
        entry.value = RzString(p + from, pos - from, false);
        if (pos < n) ++pos;
    }

    void SkipSeparators() {
        while (pos < n && IsBlank(p[pos])) ++pos;
    }

    // A word up to the next blank, or a quoted word, unquoted.
    RzString ReadKeyOrValueWord() {
        SkipSeparators();
        if (pos >= n) return RzString();
        const int32_t start = pos;
        if (p[pos] != '"') {
            while (pos < n && !IsBlank(p[pos])) ++pos;
            RzString word(p + start, pos - start, false);
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
        if (length < 1 || p[pos - 1] != '"') {
            // Not closed: let the string's own unquoting raise the error.
            return RzString(p + start, length, false).UnQuoteString();
        }
        // The content between the quotes, with \" and \\ resolved.
        RzString word(length, false);
        char* out = word.Get(nullptr);
        int32_t written = 0;
        const int32_t last = pos - 1;  // the closing quote
        for (int32_t i = start + 1; i < last; ++i) {
            if (p[i] == '\\' && i + 1 < last && (p[i + 1] == '"' || p[i + 1] == '\\')) ++i;
            out[written++] = p[i];
        }
        if (written == 0) return RzString("");
        out[written] = 0;
        word.SetLength(written);
        return word;
    }

    const RzString& text;
    int32_t& pos;
    const char* p;
    const int32_t n;
    const bool fast;
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

// Builds the text of a database straight into a string buffer, walking the
// tree without recursion. It appends the way RzString::operator+= does,
// including its one oddity: a key or value written bare that holds a zero
// byte is cut at that byte by the next append, which counts the text.
class RzDataBaseWriter {
public:
    explicit RzDataBaseWriter(bool protectedForm_) : protectedForm(protectedForm_) {}
    ~RzDataBaseWriter() { RzString release(buffer); }

    void Put(const char* s, size_t n) {
        Reserve(n);
        if (n == 0) return;
        memcpy(out + size, s, n);
        size += n;
    }

    // Reserves about what the text of db will take, so that the buffer is
    // seldom grown: each entry's key and value, quotes, separators and tabs.
    void ReserveFor(const RzDataBase* db, int indent) {
        size_t total = 0;
        std::vector<std::pair<const RzDataBase*, int>> stack{{db, indent}};
        while (!stack.empty()) {
            const RzDataBase* level = stack.back().first;
            const int tabs = stack.back().second;
            stack.pop_back();
            for (int32_t i = 0; i < level->entries.count; ++i) {
                // The strings lie all over the heap: ask for the next ones early.
                if (i + 8 < level->entries.count) Prefetch(level->entries[i + 8]);
                const RzDBData& e = level->entries[i];
                total += static_cast<size_t>(e.key.length() + e.value.length() + tabs) + 10;
                if (e.db.get()) {
                    total += 2 * static_cast<size_t>(tabs) + 4;
                    stack.push_back({e.db.get(), tabs + 1});
                }
            }
        }
        Reserve(total + total / 16);
    }

    void Level(const RzDataBase* db, int indent) {
        ReserveFor(db, indent);
        struct Frame {
            const RzDataBase* db;
            int32_t next;
            int indent;
        };
        std::vector<Frame> stack{{db, 0, indent}};
        while (!stack.empty()) {
            Frame& top = stack.back();
            if (top.next >= top.db->entries.count) {
                const int closing = top.indent - 1;
                stack.pop_back();
                if (!stack.empty()) {
                    Reserve(static_cast<size_t>(closing) + 2);
                    Tabs(closing);
                    Raw("}\n", 2);
                }
                continue;
            }
            if (top.next + 4 < top.db->entries.count) Prefetch(top.db->entries[top.next + 4]);
            const RzDBData& entry = top.db->entries[top.next++];
            const int level = top.indent;
            Entry(entry, level);
            if (const RzDataBase* sub = entry.db.get()) {
                Reserve(static_cast<size_t>(level) + 2);
                Tabs(level);
                Raw("{\n", 2);
                stack.push_back(Frame{sub, 0, level + 1});
            }
        }
    }

    static void Prefetch(const RzDBData& e) {
        __builtin_prefetch(e.key.c_str() - sizeof(RzStringData) + 1);
        __builtin_prefetch(e.value.c_str() - sizeof(RzStringData) + 1);
    }

    RzString Take() {
        if (size == 0) return RzString();
        buffer->length = static_cast<int32_t>(size);
        buffer->chars[size] = 0;
        // Every zero byte written was cut again by a later append.
        buffer->lengthIsCounted = true;
        RzStringData* done = buffer;
        buffer = nullptr;
        return RzString(done);
    }

private:
    void Reserve(size_t more) {
        if (cut != kNoCut) {
            size = cut;
            cut = kNoCut;
        }
        if (size + more <= capacity) return;
        size_t grown = capacity * 2 < 4096 ? 4096 : capacity * 2;
        if (grown < size + more) grown = size + more;
        if (grown > INT32_MAX - 64) grown = size + more;  // the string's limit decides
        RzStringData* bigger = NewStringData(nullptr, static_cast<int32_t>(grown), false);
        if (size) memcpy(bigger->chars, out, size);
        RzString release(buffer);
        buffer = bigger;
        out = bigger->chars;
        capacity = grown;
    }
    // Writes without a capacity check: the caller reserved the room.
    void Raw(const char* s, size_t n) {
        memcpy(out + size, s, n);
        size += n;
    }
    void Tabs(int n) {
        for (int i = 0; i < n; ++i) out[size++] = '\t';
    }

    // The text up to its first zero byte in double quotes, with a backslash
    // before every double quote and backslash.
    void Quoted(const RzString& s) {
        const char* p = s.c_str();
        const size_t n = static_cast<size_t>(s.length());
        Reserve(2 * n + 2);
        out[size++] = '"';
        size_t i = 0;
        // Eight bytes at a time while none of them needs attention.
        for (; i + 8 <= n; i += 8) {
            uint64_t word;
            memcpy(&word, p + i, 8);
            if (HasByte(word, 0) || HasByte(word, '"') || HasByte(word, '\\')) break;
            memcpy(out + size, &word, 8);
            size += 8;
        }
        for (; p[i]; ++i) {
            if (kBytes.of[static_cast<unsigned char>(p[i])] & kEscaped) out[size++] = '\\';
            out[size++] = p[i];
        }
        out[size++] = '"';
    }

    static bool HasByte(uint64_t word, unsigned char c) {
        const uint64_t x = word ^ (0x0101010101010101ull * c);
        return ((x - 0x0101010101010101ull) & ~x & 0x8080808080808080ull) != 0;
    }

    // `zero`: s holds a zero byte, where the next append cuts the text.
    void Bare(const RzString& s, bool zero) {
        const size_t n = static_cast<size_t>(s.length());
        Put(s.c_str(), n);
        if (zero) cut = size - n + strlen(s.c_str());
    }

    void KeyOrValue(const RzString& s, bool quoteEmpty) {
        const unsigned char kind =
            protectedForm ? static_cast<unsigned char>(kTriggersQuotes) : Classify(s);
        if (kind == kTriggersQuotes || (quoteEmpty && s.length() == 0))
            Quoted(s);
        else
            Bare(s, kind == kZero);
    }

    void Entry(const RzDBData& entry, int indent) {
        Reserve(static_cast<size_t>(indent) + 1);
        Tabs(indent);
        if (protectedForm) Raw("<", 1);
        KeyOrValue(entry.key, true);
        Put(" = ", 3);
        KeyOrValue(entry.value, false);
        if (protectedForm)
            Put(">\n", 2);
        else
            Put("\n", 1);
    }

    static const size_t kNoCut = static_cast<size_t>(-1);
    const bool protectedForm;
    RzStringData* buffer = nullptr;
    char* out = nullptr;
    size_t size = 0, capacity = 0;
    size_t cut = kNoCut;  // where the next append cuts the text
};

RzString RzDataBase::DB2String(int indent) const {
    RzDataBaseWriter writer(mSaveControlChars);
    writer.Level(this, indent);
    return writer.Take();
}

RzString RzDataBase::WriteToString() const {
    if (!mSaveControlChars) return DB2String(0);
    RzDataBaseWriter writer(true);
    writer.Put("{\n", 2);
    writer.Level(this, 1);
    writer.Put("}\n", 2);
    return writer.Take();
}
