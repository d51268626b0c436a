// The walk itself is shared logic: the system lists folders and describes
// items through the operating-system seam (RzOSOpenFolder and friends), and
// this unit keeps the order, the depth, the stop flag and what reaches the
// handler.
#include <Rz/FileSpec/RzIterateDir.h>

#include <string.h>

#include <string>
#include <vector>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/internal/RzFinderCodes.h>
#include <Rz/internal/RzOS.h>

namespace {

// The calendar date of a time in seconds since 1970-01-01 UTC (the proleptic
// Gregorian calendar, by days counted from 0000-03-01).
RzDate UTCDate(int64_t seconds) {
    int64_t days = seconds / 86400;
    int64_t rest = seconds % 86400;
    if (rest < 0) rest += 86400, --days;
    days += 719468;  // from 1970-01-01 to days since 0000-03-01
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shifted = (5 * dayOfYear + 2) / 153;  // March is 0
    const int day = static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1);
    const int month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
    int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    if (year < -1) year = -1;  // RzDate keeps 0..3000 anyway
    if (year > 3001) year = 3001;
    return RzDate(static_cast<int>(year), month, day, static_cast<int>(rest / 3600),
                  static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
}

// A folder being walked: its listing, its path, and how deep it lies (the
// start folder's items are on level 1).
struct Level {
    RzOSFolder* folder;
    std::string path;
    int depth;
};

// The folders open on the way down, closed however the walk ends.
struct OpenLevels {
    std::vector<Level> levels;
    ~OpenLevels() {
        for (Level& level : levels) RzOSCloseFolder(level.folder);
    }
};

// A folder that may not be read, or that went away or became something else
// since it was listed, ends quietly, as if it were empty.
bool EndsQuietly(OSErr err) {
    return err == permErr || err == fnfErr || err == dirNFErr || err == errFSNotAFolder;
}

}  // namespace

RzIterateDir::RzIterateDir() : stop(false) {}

RzIterateDir::~RzIterateDir() {}

int32_t RzIterateDir::Start(const RzFileSpec& folder, int depth) {
    stop = false;
    FSRef ref;
    const int32_t found = RzFileSpecToFSRef(ref, folder);
    if (found != noErr) return found;

    OpenLevels open;
    RzOSFolder* top = nullptr;
    OSErr err = RzOSOpenFolder(ref.path.c_str(), top);
    if (err != noErr) return err == permErr ? static_cast<OSErr>(noErr) : err;
    open.levels.push_back(Level{top, std::string(ref.path.c_str()), 1});

    std::string path;  // the item's, reused from item to item
    while (!open.levels.empty()) {
        // The flag is checked before each item, so an item being handled
        // when Stop() is called is the last.
        if (GetStop()) break;
        Level& level = open.levels.back();
        const char* name = RzOSNextFolderEntry(level.folder);
        if (!name) {
            RzOSCloseFolder(level.folder);
            open.levels.pop_back();
            continue;
        }
        if (strcmp(name, ".DS_Store") == 0) continue;  // the Finder's bookkeeping
        RzOSItemInfo item;
        if (RzOSFolderItemInfo(level.folder, item) != noErr) continue;

        path.assign(level.path);
        if (path.size() != 1) path += '/';  // the root folder's path is "/"
        path += name;
        RzFileInfo info((RzString()));
        info.fullName = RzString(path.data(), static_cast<int32_t>(path.size()), false);
        if (item.isFolder) {
            info.isFile = false;
            RzTakeFinderCodes(info, 0, 0);
        } else {
            // Where the Finder information cannot be read the codes stay 0,
            // as the file layer leaves them.
            if (item.finderRead) RzTakeFinderCodes(info, item.type, item.creator);
            // A file system that does not record when a file was made gives
            // its modification date as its creation date.
            info.creationDate = UTCDate(item.hasCreated ? item.created : item.modified);
            info.modificationDate = UTCDate(item.modified);
            info.size = static_cast<uint32_t>(item.size);
        }
        DoFile(info);

        const int below = level.depth + 1;
        if (item.isFolder && !item.isLink && (depth <= 0 || level.depth < depth) && !GetStop()) {
            RzOSFolder* sub = nullptr;
            err = RzOSOpenSubFolder(level.folder, name, sub);
            if (err == noErr)
                open.levels.push_back(Level{sub, path, below});
            else if (!EndsQuietly(err))
                return err;
        }
    }
    return noErr;
}

void RzIterateDir::Stop() {
    stop = true;
}

bool RzIterateDir::GetStop() const {
    return stop;
}

void RzIterateDir::DoFile(const RzFileInfo& info) {
    ProcessFile(info);
}

void RzIterateDirGetFiles::ProcessFile(const RzFileInfo& info) {
    if (info.IsFile())
        files.AddBack(info);
    else
        folders.AddBack(info);
}

int32_t RzIterateDirGetFiles::GetCount() const {
    return files.GetCount();
}

int32_t RzIterateDirGetFiles::GetFolderCount() const {
    return folders.GetCount();
}

RzFileSpec RzIterateDirGetFiles::GetFileSpec(int32_t index) const {
    return files[index];
}

RzFileSpec RzIterateDirGetFiles::GetFolder(int32_t index) const {
    return folders[index];
}

RzList<RzFileSpec> RzIterateDirGetFiles::GetFileList() const {
    return files;
}

RzList<RzFileSpec> RzIterateDirGetFiles::GetFolderList() const {
    return folders;
}
