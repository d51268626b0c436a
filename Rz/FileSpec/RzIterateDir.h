// Walking a folder tree.
//
// RzIterateDir::Start walks the tree below a folder depth first, each
// folder's contents right after the folder itself, in the order the system
// lists them, and hands every item to the virtual DoFile (which calls
// ProcessFile) as an RzFileInfo: its full path, its type and creator as the
// file layer reads them (a known extension gives the type, the Finder
// information the creator), for a file its dates in UTC and its size, for a
// folder IsFile() false. Items named ".DS_Store" never reach the handler,
// nor do items the system cannot describe. A symbolic link is described by
// what it points to and keeps its own path; a link to a folder is handed over
// as a folder but not walked into (so no link can lead the walk in a circle),
// a link to nothing is left out.
//
//     class Profiles : public RzIterateDir {
//         void ProcessFile(const RzFileInfo& info) override {
//             if (info.IsFile() && info.GetType() == eRzTypeProfile) ...
//         }
//     };
//     Profiles walk;
//     int32_t err = walk.Start(folderSpec, 0);
//
// RzIterateDirGetFiles is the ready-made handler that collects the files and
// the folders found.
#ifndef RZ_FILESPEC_RZITERATEDIR_H
#define RZ_FILESPEC_RZITERATEDIR_H

#include <stdint.h>

#include <Rz/FileSpec/RzFileInfo.h>
#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzData/RzList.h>

class RZ_API RzIterateDir {
public:
    RzIterateDir();
    virtual ~RzIterateDir();

    // Clears the stop flag and walks the folder `folder` names. `depth` is
    // the number of levels walked: 1 only the folder's own items, n the
    // items n levels down, 0 (or less) the whole tree. Returns 0, or a File
    // Manager code (RzMacTypes.h): the file layer's code when the folder
    // cannot be found (-43 for a missing one, RzFileSpecToFSRef),
    // errFSNotAFolder (-1407) when it names a file, or the first error met
    // on the way (-42 when too many folders are open at once). A folder that
    // may not be read ends quietly, as if it were empty; so does one that
    // disappears during the walk. Throws nothing of its own; exceptions from
    // the handler pass through (every folder opened is closed on the way).
    virtual int32_t Start(const RzFileSpec& folder, int depth);
    // Asks the walk to end: the item being handled is finished, and no
    // further item reaches the handler.
    virtual void Stop();
    virtual bool GetStop() const;
    // Called for every item; calls ProcessFile. Override to filter.
    virtual void DoFile(const RzFileInfo& info);
    virtual void ProcessFile(const RzFileInfo& info) = 0;

protected:
    bool stop;
};

// Collects the files and the folders found, each in the order of the walk,
// as plain file specs (dates, sizes and the file flag are not kept). A second
// Start with the same object appends to what the first found.
class RZ_API RzIterateDirGetFiles : public RzIterateDir {
public:
    // Appends the item to the files or, when it is a folder, to the folders.
    void ProcessFile(const RzFileInfo& info) override;

    int32_t GetCount() const;        // files
    int32_t GetFolderCount() const;  // folders
    // Copies of one entry; an index out of range raises "RzIndexError" (7).
    RzFileSpec GetFileSpec(int32_t index) const;
    RzFileSpec GetFolder(int32_t index) const;
    // Copies of the whole lists.
    RzList<RzFileSpec> GetFileList() const;
    RzList<RzFileSpec> GetFolderList() const;

protected:
    RzList<RzFileSpec> files;
    RzList<RzFileSpec> folders;
};

#endif
