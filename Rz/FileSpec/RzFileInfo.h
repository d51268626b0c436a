// RzFileInfo: a file spec together with what a folder listing knows about
// its item: when it was created and last modified, its size, and whether it
// is a file or a folder. RzIterateDir hands one to its handler per item.
//
// Dates are in UTC. A folder's dates and size are not filled in (they stay
// as constructed). Sizes are 32-bit: a file of 4 GB or more reports the low
// 32 bits of its size.
#ifndef RZ_FILESPEC_RZFILEINFO_H
#define RZ_FILESPEC_RZFILEINFO_H

#include <stdint.h>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzSystem/RzDate.h>

class RZ_API RzFileInfo : public RzFileSpec {
public:
    // The spec of `fullName` (its type follows the extension), both dates
    // RzDate(0, 0, 0, 0, 0, 0) (which the clamping makes 0-1-1 0:00:00), a
    // file of size 0.
    RzFileInfo(const RzString& fullName);
    // `spec` as it is (name and both codes), the same dates, a file of size 0.
    RzFileInfo(const RzFileSpec& spec);

    RzDate GetCreationDate() const { return creationDate; }
    void SetCreationDate(const RzDate& date) { creationDate = date; }
    RzDate GetModificationDate() const { return modificationDate; }
    void SetModificationDate(const RzDate& date) { modificationDate = date; }
    // True for a file, false for a folder.
    bool IsFile() const { return isFile; }
    void SetIsFile(bool file) { isFile = file; }
    // Bytes of the file's data (its low 32 bits).
    uint32_t GetSize() const { return size; }
    void SetSize(uint32_t bytes) { size = bytes; }

protected:
    RzDate creationDate;
    RzDate modificationDate;
    bool isFile;
    uint32_t size;

private:
    friend class RzIterateDir;  // fills in what the listing knows
};

#endif
