// Typed values and files of the settings database.
//
// Saving replaces the file whole. The system's part of each step is in the
// operating-system seam (Rz/internal/RzOS.h, "Saving files safely"); the
// order of the steps and the choice between replacing the file and
// rewriting it in place are here:
//
//  1. The text is made first, so that running out of memory changes nothing.
//  2. The file to write is the end of any chain of symbolic links.
//  3. Temporary files that killed saves of the same file left behind are
//     removed (those whose process is gone).
//  4. A new file is made beside the old one, taking the old one's owner,
//     permissions and extended attributes; written; flushed to the disk.
//  5. It is renamed over the old file, and the folder is flushed, so that
//     the rename survives a power failure.
//  6. The file's type and creator are stamped as opening it for writing
//     stamps them.
//
// Until step 5 the old file is untouched; a failure removes the new file.
// Where the folder takes no new file, or the rename is refused although the
// file may be written (a sticky folder), the file is rewritten in place, so
// that saving never fails where rewriting the file would have succeeded.
#include <Rz/RzData/RzDataBase.h>

#include <string>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzIO/RzFile.h>
#include <Rz/internal/RzFinderCodes.h>
#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzPaths.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzDataBase";

namespace {

// The value of the entry at `path`, when it exists.
bool Lookup(RzDataBase& db, const RzString& path, RzString& value) {
    int index = -1;
    RzDataBase* level = db.GetEntry(path, false, index);
    if (!level) return false;
    value = level->GetIndexedValue(index);
    return true;
}

// The file opened for writing (created or truncated), written and closed, as
// files were always saved; flushed to the disk before it is closed.
class InPlaceFile : public RzFile {
public:
    explicit InPlaceFile(const RzFileSpec& spec) { SetSpec(spec); }
    void Save(const RzString& text) {
        Open(eRzFileWrite, false);
        WriteString(text);
        if (RzOSSyncStream(file) != noErr) RZ_RAISE(kRzFileWriteFailed);
        Close();
    }
};

// A temporary file that is removed unless it was renamed into place.
struct TempFile {
    RzOSTempFile* temp = nullptr;
    ~TempFile() { RzOSDiscardTempFile(temp); }
};

// A temporary name is "." + the file's name + ".rz-" + six letters or
// digits; long names are cut so that it stays within 255 bytes.
const size_t kMaxNameInTemp = 240;

// Replaces the file `spec` names by `text` (steps 2 to 6). False when the
// file is to be rewritten in place instead; raises "RzFileWriteFailed" when
// a step fails that rewriting in place would have paid for with the old
// contents.
bool Replace(const RzFileSpec& spec, const RzString& text) {
    RzString written;
    if (RzOSWriteTarget(spec.GetFullName().c_str(), written) != noErr) return false;
    const std::string path(written.c_str(), static_cast<size_t>(written.length()));
    const std::string name = RzPathLeaf(path);
    if (name.empty() || name == "." || name == "..") return false;
    const OSErr old = RzOSCheckReplaceable(path.c_str());
    if (old != noErr && old != fnfErr) return false;  // rewriting decides: a device, no permission

    const std::string folder = RzPathFolder(path);
    const std::string prefix = "." + name.substr(0, kMaxNameInTemp) + ".rz-";
    RzOSRemoveAbandonedTempFiles(folder.c_str(), prefix.c_str());
    TempFile temp;
    OSErr err = RzOSCreateTempFile(folder.c_str(), prefix.c_str(),
                                   old == noErr ? path.c_str() : nullptr, temp.temp);
    if (err == dskFulErr || err == ioErr) RZ_RAISE(kRzFileWriteFailed);
    if (err != noErr) return false;  // the folder takes no new file
    if (RzOSWriteTempFile(temp.temp, text.c_str(), static_cast<size_t>(text.length())) != noErr ||
        RzOSSyncTempFile(temp.temp) != noErr)
        RZ_RAISE(kRzFileWriteFailed);
    err = RzOSCommitTempFile(temp.temp, path.c_str());
    if (err == permErr || err == fLckdErr) return false;  // a sticky folder: rewrite in place
    if (err != noErr) RZ_RAISE(kRzFileWriteFailed);
    temp.temp = nullptr;
    // The new contents are in place now; a folder that cannot be flushed is
    // still reported, since the rename may not survive a power failure.
    if (RzOSSyncFolder(folder.c_str()) != noErr) RZ_RAISE(kRzFileWriteFailed);
    RzStampFinderCodes(spec);
    return true;
}

}  // namespace

// --- Typed values ------------------------------------------------------------

void RzDataBase::SetInt(const RzString& path, int v) {
    RzString text;
    text.Printf("%d", v);
    SetString(path, text);
}

int RzDataBase::GetInt(const RzString& path, int def, bool create) {
    RzString value;
    if (Lookup(*this, path, value)) return value.atol();
    if (create) SetInt(path, def);
    return def;
}

void RzDataBase::SetBoolean(const RzString& path, bool v) {
    SetString(path, RzString(v ? "true" : "false"));
}

bool RzDataBase::GetBoolean(const RzString& path, bool def, bool create) {
    RzString value;
    if (Lookup(*this, path, value)) return value.cmpIgnoreCase("true") == 0 || value.cmp("1") == 0;
    if (create) SetBoolean(path, def);
    return def;
}

void RzDataBase::SetDouble(const RzString& path, double v, const char* format) {
    RzString value;
    if (Lookup(*this, path, value) && value.atof() == v) return;  // keeps "0.50" as written
    RzString text;
    if (format) {
        text.Printf(format, v);
    } else {
        text.Printf("%f", v);
        text.StripTrailingZeros();
    }
    SetString(path, text);
}

double RzDataBase::GetDouble(const RzString& path, double def, bool create) {
    RzString value;
    if (Lookup(*this, path, value)) return value.atof();
    if (create) SetDouble(path, def, nullptr);
    return def;
}

// --- Files -------------------------------------------------------------------------

void RzDataBase::ReadFromFile(const RzFileSpec& spec) {
    RzFile file;
    file.SetSpec(spec);
    file.Open(eRzFileRead, false);
    const RzString text = file.ReadString();
    ReadFromString(text);
    file.Close();
}

void RzDataBase::WriteToFile(const RzFileSpec& spec) const {
    const RzString text = WriteToString();
    RzFileSpec stamped = spec;
    stamped.SetType(eRzTypeUnknown);  // type and creator of the extension
    if (!Replace(stamped, text)) InPlaceFile(spec).Save(text);
}
