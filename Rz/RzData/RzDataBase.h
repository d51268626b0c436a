// The key/value settings database.
//
// RzDataBase is an ordered list of entries (RzDBData), each with a key, a text
// value and an optional sub-database below it. Entries are addressed by
// slash-separated paths through the levels ("colors/red"). Lookups find the
// first entry with a key, compared case-sensitively; duplicates are possible.
// A database is reference counted (RzObject): create it with new and release
// it with Delete(); a sub-database lives as long as an entry holds it.
//
// The text form, read by ReadFromString and written by WriteToString, is
// described in docs/database-format.md:
//
//     name = Example Paper
//     "two words" = "a \"quoted\" value"
//     colors =
//     {
//         red = 0.5
//     }
//
// With SaveControlChars(true) the writer uses the protected form, in which
// every entry is written as <"key" = "value"> and the whole text is enclosed
// in braces; the reader accepts both forms.
//
// Values are text; the typed getters and setters convert integers, reals and
// booleans at a path. ReadFromFile and WriteToFile load and save a whole
// database as a file; saving replaces the file so that a crash at any moment
// leaves the old settings or the new ones (docs/database-format.md, "Files").
#ifndef RZ_RZDATA_RZDATABASE_H
#define RZ_RZDATA_RZDATABASE_H

#include <stddef.h>
#include <stdint.h>

#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzObject.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzCore/RzTemplates.h>
#include <Rz/RzData/RzList.h>

class RzDataBase;
class RzFileSpec;

// One entry: key, value and an optional sub-database, which the entry holds by
// one counted reference (copies of an entry share the sub-database).
class RZ_API RzDBData {
public:
    RzDBData();
    RzDBData(const RzString& key, const RzString& value);
    // With adopt the entry takes over the caller's reference to db; without
    // it the entry takes a reference of its own.
    RzDBData(const RzString& key, const RzString& value, RzDataBase* db, bool adopt);
    RzDBData(const RzDBData& other);
    RzDBData& operator=(const RzDBData& other);
    // Moves leave `other` with null strings and no sub-database; the
    // sub-database changes hands without changing its count.
    RzDBData(RzDBData&& other) noexcept;
    RzDBData& operator=(RzDBData&& other) noexcept;
    // Releases the sub-database; raises "RzPtrInvalid" (20) when its count is
    // no longer positive.
    virtual ~RzDBData() noexcept(false);

    RzString GetKey() const { return key; }
    void SetKey(const RzString& k) { key = k; }
    RzString GetVal() const { return value; }
    void SetVal(const RzString& v) { value = v; }
    // The sub-database, borrowed (no new reference), or null.
    RzDataBase* GetDB() const { return db.get(); }
    // Holds db instead of the current sub-database (which is released). With
    // adopt the caller's reference passes to the entry.
    void SetDB(RzDataBase* db, bool adopt);

    // The entry as one line without line end: key, " = ", value. A key or
    // value containing a blank, tab, CR, LF or double quote is written
    // quoted (see RzString::QuoteString), and so is an empty key; an empty
    // value is written as nothing. quoteAlways quotes both in every case.
    virtual RzString GetString(bool quoteAlways) const;
    // Reads one entry from `text` at `pos` and leaves pos behind it: a key
    // word, the word "=", and the value: a quoted word, or the rest of the
    // line (blanks included, line end consumed), or nothing when the line
    // ends. Raises "RzFormatErr" (19) when the second word is not "=" and when
    // a quoted key or value is not closed. Sets key and value only.
    virtual void SetString(const RzString& text, int32_t& pos);

private:
    friend class RzDataBase;
    friend class RzDataBaseReader;
    friend class RzDataBaseWriter;
    RzString key;
    RzString value;
    RzSmartPtr<RzDataBase> db;
};

class RZ_API RzDataBase : public RzObject {
public:
    RzDataBase();
    // A deep copy: an empty database merged with `other` in append mode.
    RzDataBase(const RzDataBase& other);
    RzDataBase& operator=(const RzDataBase& other);
    ~RzDataBase() override;

    // --- This level ------------------------------------------------------
    int GetCount() const;
    // Index of the first entry with that key (or value), or -1.
    int GetIndex(const RzString& key) const;
    int GetIndexByValue(const RzString& value) const;
    // Raise "RzIndexError" (7) for an index out of range.
    RzString GetIndexedName(int i) const;
    RzString GetIndexedValue(int i) const;
    RzDataBase* GetIndexedDB(int i) const;  // borrowed, may be null
    // Removes the first entry of this level with that key (not a path).
    void Remove(const RzString& key);
    void RemoveIndex(int i);
    void Clear();

    // --- Paths -----------------------------------------------------------
    // The level holding the entry named by `path`, with `index` its position
    // there; null and -1 when it does not exist. With create, missing entries
    // and sub-databases on the way are created. A leading and a trailing '/'
    // are ignored, "" and "/" name the entry with the empty key, "a//b" has an
    // empty middle component; components are not trimmed.
    RzDataBase* GetEntry(const RzString& path, bool create, int& index);
    bool Exists(const RzString& path);
    // The sub-database of the entry at `path` (borrowed). With create, a
    // missing entry or sub-database is created; otherwise null.
    RzDataBase* GetDB(const RzString& path, bool create);
    // Attaches db to the entry at `path` (created if needed); with adopt the
    // caller's reference passes to the entry. A null db detaches.
    void SetDB(const RzString& path, RzDataBase* db, bool adopt);
    void SetString(const RzString& path, const RzString& value);
    // The value at `path`; when it does not exist, `def` (stored first when
    // create is true).
    RzString GetString(const RzString& path, const RzString& def, bool create);
    // Copies other's entries into this database: appended (append true) or
    // stored by key as paths (append false); sub-databases are copied
    // recursively into the first entry with their key.
    void MergeDB(const RzDataBase* other, bool append);

    // --- Typed values ----------------------------------------------------
    // Each getter reads the value at `path` when the entry exists. When it
    // does not, it returns `def`, and with create it first stores `def` in
    // its text form, so that a later WriteToFile shows every setting asked
    // for; without create it changes nothing. Conversions never raise.
    //
    // "%d" of v.
    void SetInt(const RzString& path, int v);
    // atol of the value: leading blanks skipped, anything after the digits
    // ignored, 0 without digits; saturated to the 32-bit range.
    int GetInt(const RzString& path, int def, bool create);
    // "true" or "false".
    void SetBoolean(const RzString& path, bool v);
    // True for "true" in any case and for exactly "1"; false for any other
    // text ("yes", " true", "01", "").
    bool GetBoolean(const RzString& path, bool def, bool create);
    // Writes nothing when the entry exists and atof of its value equals v,
    // so that a value written by hand ("0.50") keeps its form. Otherwise
    // stores Printf(format, v), or for a null format "%f" with its trailing
    // zeros stripped ("0.5", "3").
    void SetDouble(const RzString& path, double v, const char* format = nullptr);
    // atof of the value.
    double GetDouble(const RzString& path, double def, bool create);

    // --- Files -----------------------------------------------------------
    // Replaces the contents with the database in the file, read whole as
    // bytes (no character-set conversion); the file is not changed. A file
    // that cannot be opened raises code 12 (the file layer's "FileNotOpen
    // (for reading): <path>") and leaves the database as it was; a text that
    // cannot be parsed raises as ReadFromString does, keeping what was read.
    void ReadFromFile(const RzFileSpec& spec);
    // Writes WriteToString() as the whole file. The file is replaced whole:
    // the text goes to a new file in the same folder, is flushed to the disk
    // and renamed over the old file, which keeps its permissions, owner
    // (where the process may set it) and extended attributes (Finder
    // information among them); a symbolic link stays and its target is
    // replaced; the file gets the type and creator of its extension. Where
    // the folder takes no new file but the file itself may be written (and
    // for anything but a regular file), the file is rewritten in place.
    // Raises code 12 when the file cannot be opened (the file layer's
    // "FileNotOpen: (for writing)<path>"), "RzFileWriteFailed" (17) when
    // writing, flushing or renaming fails; then the old file is as it was
    // and no new file is left behind (docs/database-format.md, "Files").
    void WriteToFile(const RzFileSpec& spec) const;

    // --- Text form -------------------------------------------------------
    // Selects the protected form for every database written afterwards;
    // returns the previous setting. Process-wide.
    static bool SaveControlChars(bool on);
    // Replaces the contents with the database in `text`. Reading is not
    // transactional: on "RzFormatErr" (19) or "RzIndexError" (7) the entries
    // read before the error stay.
    void ReadFromString(const RzString& text);
    // Reads entries into this level from pos up to the end of the text or a
    // closing brace.
    void String2DB(const RzString& text, int32_t& pos);
    // The next significant character (skipping blanks, tabs, NUL, line ends
    // and comments), or 0 at the end of the text.
    static char GetNextChar(const RzString& text, int32_t& pos);
    // Advances pos past the next line end.
    static void SkipLine(const RzString& text, int32_t& pos);
    // The whole database as text: plain, or protected when
    // SaveControlChars(true) is in force. Lines end with a single line feed.
    RzString WriteToString() const;
    // The entries of this level and below, each line indented by `indent`
    // tabs.
    RzString DB2String(int indent) const;

    // The writer's protected form; false initially. Process-wide, changed
    // by SaveControlChars.
    static bool mSaveControlChars;

private:
    friend class RzDataBaseReader;
    friend class RzDataBaseWriter;
    // Empty, with room for `capacity` entries.
    explicit RzDataBase(int32_t capacity);
    // Index of the first entry whose key equals the text p[0, n) (up to its
    // first zero byte), or -1.
    int FindKey(const char* p, size_t n) const;
    void BuildKeyIndex() const;
    void InsertKey(int32_t i) const;
    void KeysChanged() const;
    // Appends entry, keeping the key index current.
    void Append(RzDBData&& entry);

    RzList<RzDBData> entries;
    // A hash index over the keys of a large level, built on the first lookup
    // and dropped whenever entries are removed (see RzDataBase.cpp).
    mutable struct RzDataBaseKeyIndex* keyIndex;
    // The next database waiting to be destroyed while a tree is released
    // (see ~RzDataBase).
    RzDataBase* nextReleased;
};

#endif
