// RzFileSpec: a file named by one full path plus its Mac OS type and creator
// codes.
//
// The path is POSIX ("/" separators) and may be relative or empty. The type
// code follows the extension through a static table of known file types
// (RzFileTypeInfoList); the creator code is kept consistent with the type.
// Four-character codes are packed first character in the most significant
// byte ('TEXT' = 0x54455854) on every host.
//
// A spec never touches the disk itself, except SetUniqueName, which
// asks RzSystem::FileExists; well-known folders and native names come from
// the Mac OS file layer (RzMacToolsOSX.h).
#ifndef RZ_FILESPEC_RZFILESPEC_H
#define RZ_FILESPEC_RZFILESPEC_H

#include <stdint.h>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>

enum RzFileType {
    eRzTypeUnknown = 0,
    eRzTypeText = 1,
    eRzTypeProfile = 2,   // ICC colour profile
    eRzTypeSwatches = 3,  // colour swatches
    eRzTypePICT = 4,
    eRzTypeJPEG = 5,
    eRzTypeTIFF = 6,
    eRzTypePNG = 7,
    eRzTypeTGA = 8,
    eRzTypeScitexCT = 9,
    eRzTypeGIF = 10,
    eRzTypePDF = 11,
    eRzTypeBinary = 12,
    eRzTypeApplication = 13,
    eRzTypeHTML = 14,
    eRzTypeAFM = 15,  // font metrics
    eRzTypePPM = 16,
    eRzTypeLink = 17,
    eRzTypeLibrary = 18,  // dynamic library
    eRzTypeJPEG2000 = 19
};

// One row of the file-type table.
struct RzFileTypeInfo {
    RzFileType type;
    uint32_t typeID;        // Mac OS type code
    uint32_t creatorID;     // Mac OS creator code
    const char* extension;  // without the dot; may be ""
};

// The table: every lookup takes the first matching row; the last row
// (type unknown, codes 0x3F) is the fallback that no search matches.
extern RZ_API const RzFileTypeInfo RzFileTypeInfoList[];
extern RZ_API const int32_t RzFileTypeInfoListCount;  // 35

class RZ_API RzFileSpec {
public:
    // The spec of the empty path: both codes 0.
    RzFileSpec();
    // Stores fullName; a non-empty one derives the type code from its
    // extension (SetFullName).
    RzFileSpec(const RzString& fullName);
    virtual ~RzFileSpec();

    // --- Path parts -------------------------------------------------------
    RzString GetFullName() const;
    // The operating system's own path form (on Linux and Mac OS X the same).
    RzString GetNativeFullName() const;
    // The text after the last "/" (all of it without one).
    RzString GetName() const;
    // Up to and including the last "/" ("" without one).
    RzString GetPath() const;
    // The text after the last "." of the name; "" without one or when the
    // name starts with its only "." (".DS_Store").
    RzString GetExtension() const;
    // The name without its extension, but only when that is an extension of
    // the type table (case-insensitive): "archive.zip" stays as it is.
    RzString GetBaseName() const;

    // --- Setting the name ---------------------------------------------------
    // Store the path, then re-derive the type code from the extension.
    void SetFullName(const RzString& fullName);
    void SetNativeFullName(const RzString& nativeFullName);
    // Puts the name in another folder ("/" added when missing).
    void SetPath(const RzString& path);
    // Puts the name in a well-known folder (RzMacSetPath). Raises "RzArgErr"
    // (3) for a value outside the enumeration.
    void SetPath(RzFolderType folder);
    void SetName(const RzString& name);
    // SetPath(path) and SetName(name), or just the name when path is empty or
    // name is absolute.
    void Compose(const RzString& path, const RzString& name);

    // "/", "\\" or ":" first, or a drive letter with a separator ("C:\\x").
    static bool IsAbsolute(const RzString& s);
    static RzString Name2WinName(RzString s);  // "/" becomes "\\"
    static RzString WinName2Name(RzString s);  // "\\" becomes "/"

    // --- The type table (fallback row 34 when nothing matches) --------------
    static int32_t Type2Index(RzFileType type);
    static int32_t TypeID2Index(uint32_t typeID);
    static int32_t Extension2Index(const RzString& extension);  // ignoring case
    static uint32_t Type2TypeID(RzFileType type);
    static RzString Type2Extension(RzFileType type);
    static RzFileType TypeID2Type(uint32_t typeID);
    static RzFileType Extension2Type(const RzString& extension);

    // --- Codes ---------------------------------------------------------------
    uint32_t GetTypeID() const;
    uint32_t GetCreatorID() const;
    // The type of the type code (eRzTypeUnknown for codes not in the table).
    RzFileType GetType() const;
    // Stores the code as given.
    void SetTypeID(uint32_t typeID);
    // Stores the code, except 0 and 'MACS', which choose the creator that
    // belongs to the type code (AdjustCreatorID).
    void SetCreatorID(uint32_t creatorID);
    // Keeps the creator when a table row pairs it with the type code,
    // otherwise takes the first such row's creator (0 when there is none).
    uint32_t AdjustCreatorID();
    // A known type sets its type code and creator and renames the file to the
    // type's extension. eRzTypeUnknown re-derives the type code from the
    // extension after the last "." of the whole path (an unknown extension
    // gives code 0x3F and creator 0; no "." changes nothing).
    void SetType(RzFileType type);
    // Makes the name's extension the first one of the type code's type.
    void AdjustExtension();
    // Kept for compatibility: computes a corrected profile name and leaves the
    // spec unchanged.
    void CheckExtension(const RzString& extension);
    // While a file of this name exists, renames to "<path><base>-NNN.<ext>"
    // with NNN counting from 001. A free name is kept.
    void SetUniqueName();

protected:
    // The file layer stores the creator it reads from the disk as it is, 0
    // and 'MACS' included, which SetCreatorID would replace.
    friend void RzTakeFinderCodes(RzFileSpec& spec, uint32_t type, uint32_t creator);

    RzString fullName;
    uint32_t typeID;
    uint32_t creatorID;
};

// Equal full names (case-sensitive); the codes are not compared.
RZ_API bool operator==(const RzFileSpec& a, const RzFileSpec& b);

#endif
