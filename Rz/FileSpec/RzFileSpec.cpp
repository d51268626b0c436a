#include <Rz/FileSpec/RzFileSpec.h>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzSystem/RzSystem.h>
#include <Rz/internal/RzFinderCodes.h>

namespace {

const uint32_t kMACS = RzFourCharCode("MACS");

}  // namespace

// Row order matters: lookups take the first match, so "jpg" is 'JPEG' and not
// 'JFIF', and the last row is only ever the answer to a failed search.
const RzFileTypeInfo RzFileTypeInfoList[] = {
    {eRzTypeText, RzFourCharCode("TEXT"), RzFourCharCode("ttxt"), "txt"},
    {eRzTypeText, RzFourCharCode("TEXT"), RzFourCharCode("ttxt"), "text"},
    {eRzTypeText, RzFourCharCode("TEXT"), RzFourCharCode("RzTl"), "cie"},
    {eRzTypeText, RzFourCharCode("TEXT"), RzFourCharCode("RzTl"), "ref"},
    {eRzTypeText, RzFourCharCode("TEXT"), RzFourCharCode("RzTl"), "it8"},
    {eRzTypeProfile, RzFourCharCode("prof"), RzFourCharCode("sync"), "icc"},
    {eRzTypeProfile, RzFourCharCode("prof"), RzFourCharCode("sync"), "icm"},
    {eRzTypeSwatches, RzFourCharCode("8BCO"), RzFourCharCode("8BIM"), "aco"},
    {eRzTypePICT, RzFourCharCode("PICT"), RzFourCharCode("8BIM"), "pct"},
    {eRzTypePICT, RzFourCharCode("PICT"), RzFourCharCode("8BIM"), "pict"},
    {eRzTypeJPEG, RzFourCharCode("JPEG"), RzFourCharCode("8BIM"), "jpg"},
    {eRzTypeJPEG, RzFourCharCode("JPEG"), RzFourCharCode("8BIM"), "jpeg"},
    {eRzTypeJPEG, RzFourCharCode("JFIF"), RzFourCharCode("8BIM"), "jpg"},
    {eRzTypeJPEG2000, RzFourCharCode("jp2 "), RzFourCharCode("8BIM"), "jp2"},
    {eRzTypeJPEG2000, RzFourCharCode("jpx "), RzFourCharCode("8BIM"), "jpx"},
    {eRzTypeJPEG2000, RzFourCharCode("j2k "), RzFourCharCode("8BIM"), "j2k"},
    {eRzTypeJPEG2000, RzFourCharCode("j2c "), RzFourCharCode("8BIM"), "j2c"},
    {eRzTypeJPEG2000, RzFourCharCode("pnm "), RzFourCharCode("8BIM"), "pnm"},
    {eRzTypeTIFF, RzFourCharCode("TIFF"), RzFourCharCode("8BIM"), "tif"},
    {eRzTypeTIFF, RzFourCharCode("TIFF"), RzFourCharCode("8BIM"), "tiff"},
    {eRzTypePNG, RzFourCharCode("PNGf"), RzFourCharCode("8BIM"), "png"},
    {eRzTypeTGA, RzFourCharCode("TPIC"), RzFourCharCode("8BIM"), "tga"},
    {eRzTypeScitexCT, RzFourCharCode("..CT"), RzFourCharCode("8BIM"), "sct"},
    {eRzTypeGIF, RzFourCharCode("GIFf"), RzFourCharCode("8BIM"), "gif"},
    {eRzTypePDF, RzFourCharCode("PDF "), RzFourCharCode("****"), "pdf"},
    {eRzTypeBinary, RzFourCharCode("BINA"), RzFourCharCode("****"), ""},
    {eRzTypeApplication, RzFourCharCode("APPL"), RzFourCharCode("****"), "exe"},
    {eRzTypeHTML, RzFourCharCode("HTML"), RzFourCharCode("****"), "html"},
    {eRzTypeHTML, RzFourCharCode("HTML"), RzFourCharCode("****"), "htm"},
    {eRzTypeAFM, RzFourCharCode("AFM "), RzFourCharCode("****"), "afm"},
    {eRzTypePPM, RzFourCharCode("PPM "), RzFourCharCode("****"), "ppm"},
    {eRzTypeLink, RzFourCharCode("LINK"), RzFourCharCode("****"), "link"},
    {eRzTypeLibrary, RzFourCharCode("DLL "), RzFourCharCode("****"), "dll"},
    {eRzTypeLibrary, RzFourCharCode("DYLB"), RzFourCharCode("****"), "dylib"},
    // The fallback: '?' as a 32-bit value, not '????'.
    {eRzTypeUnknown, 0x3F, 0x3F, ""},
};

const int32_t RzFileTypeInfoListCount =
    static_cast<int32_t>(sizeof RzFileTypeInfoList / sizeof RzFileTypeInfoList[0]);
static_assert(sizeof RzFileTypeInfoList / sizeof RzFileTypeInfoList[0] == 35,
              "the type table has 35 rows");

namespace {

// The rows a search may match: all but the fallback.
const int32_t kSearchRows = 34;
const int32_t kFallbackRow = 34;

const RzFileTypeInfo& Row(int32_t index) {
    return RzFileTypeInfoList[index];
}

}  // namespace

// --- Construction ------------------------------------------------------------

RzFileSpec::RzFileSpec() : typeID(0), creatorID(0) {}

RzFileSpec::RzFileSpec(const RzString& fullName_) : fullName(fullName_), typeID(0), creatorID(0) {
    if (fullName_.length() > 0) SetFullName(fullName_);
}

RzFileSpec::~RzFileSpec() {}

bool operator==(const RzFileSpec& a, const RzFileSpec& b) {
    return a.GetFullName() == b.GetFullName();
}

// --- Path parts -------------------------------------------------------------------

RzString RzFileSpec::GetFullName() const {
    return fullName;
}

RzString RzFileSpec::GetNativeFullName() const {
    return RzMacGetFullPathName(*this);
}

RzString RzFileSpec::GetName() const {
    int32_t slash = fullName.findreverse('/');
    return slash < 0 ? fullName : fullName.substr(slash + 1);
}

RzString RzFileSpec::GetPath() const {
    int32_t slash = fullName.findreverse('/');
    return slash < 0 ? RzString() : fullName.substr(0, slash + 1);
}

RzString RzFileSpec::GetExtension() const {
    RzString name = GetName();
    int32_t dot = name.findreverse('.');
    return dot <= 0 ? RzString() : name.substr(dot + 1);
}

RzString RzFileSpec::GetBaseName() const {
    RzString name = GetName();
    int32_t dot = name.findreverse('.');
    if (dot >= 1 && Extension2Index(name.substr(dot + 1)) != kFallbackRow)
        return name.substr(0, dot);
    return name;
}

// --- Setting the name -------------------------------------------------------------

void RzFileSpec::SetFullName(const RzString& fullName_) {
    fullName = fullName_;
    SetType(eRzTypeUnknown);
}

void RzFileSpec::SetNativeFullName(const RzString& nativeFullName) {
    SetFullName(nativeFullName);
}

void RzFileSpec::SetPath(const RzString& path) {
    RzString folder = path;
    int32_t n = folder.length();
    if (n > 0 && folder.c_str()[n - 1] != '/') folder += '/';
    SetFullName(folder + GetName());
}

void RzFileSpec::SetPath(RzFolderType folder) {
    RzMacSetPath(*this, folder);
}

void RzFileSpec::SetName(const RzString& name) {
    SetFullName(GetPath() + name);
}

void RzFileSpec::Compose(const RzString& path, const RzString& name) {
    if (path.length() > 0 && !IsAbsolute(name)) {
        SetPath(path);
        SetName(name);
    } else {
        SetFullName(name);
    }
}

bool RzFileSpec::IsAbsolute(const RzString& s) {
    const char* p = s.c_str();
    int32_t n = s.length();
    if (n == 0) return false;
    if (p[0] == '/' || p[0] == '\\' || p[0] == ':') return true;
    return n >= 3 && p[1] == ':' && (p[2] == '/' || p[2] == '\\');
}

RzString RzFileSpec::Name2WinName(RzString s) {
    s.Replace('/', '\\');
    return s;
}

RzString RzFileSpec::WinName2Name(RzString s) {
    s.Replace('\\', '/');
    return s;
}

// --- The type table ---------------------------------------------------------------

int32_t RzFileSpec::Type2Index(RzFileType type) {
    for (int32_t i = 0; i < kSearchRows; ++i)
        if (Row(i).type == type) return i;
    return kFallbackRow;
}

int32_t RzFileSpec::TypeID2Index(uint32_t typeID_) {
    for (int32_t i = 0; i < kSearchRows; ++i)
        if (Row(i).typeID == typeID_) return i;
    return kFallbackRow;
}

int32_t RzFileSpec::Extension2Index(const RzString& extension) {
    for (int32_t i = 0; i < kSearchRows; ++i)
        if (Rzstricmp(extension.c_str(), Row(i).extension) == 0) return i;
    return kFallbackRow;
}

uint32_t RzFileSpec::Type2TypeID(RzFileType type) {
    return Row(Type2Index(type)).typeID;
}

RzString RzFileSpec::Type2Extension(RzFileType type) {
    return RzString(Row(Type2Index(type)).extension);
}

RzFileType RzFileSpec::TypeID2Type(uint32_t typeID_) {
    return Row(TypeID2Index(typeID_)).type;
}

RzFileType RzFileSpec::Extension2Type(const RzString& extension) {
    return Row(Extension2Index(extension)).type;
}

// --- Codes -----------------------------------------------------------------------

uint32_t RzFileSpec::GetTypeID() const {
    return typeID;
}

uint32_t RzFileSpec::GetCreatorID() const {
    return creatorID;
}

RzFileType RzFileSpec::GetType() const {
    return TypeID2Type(typeID);
}

void RzFileSpec::SetTypeID(uint32_t typeID_) {
    typeID = typeID_;
}

void RzFileSpec::SetCreatorID(uint32_t creatorID_) {
    if (creatorID_ != 0 && creatorID_ != kMACS)
        creatorID = creatorID_;
    else
        AdjustCreatorID();
}

uint32_t RzFileSpec::AdjustCreatorID() {
    uint32_t first = 0;
    bool seen = false;
    for (int32_t i = 0; i < kSearchRows; ++i) {
        const RzFileTypeInfo& row = Row(i);
        if (row.typeID != typeID) continue;
        if (!seen) first = row.creatorID, seen = true;
        if (row.creatorID == creatorID) return creatorID;
    }
    creatorID = first;
    return creatorID;
}

void RzFileSpec::SetType(RzFileType type) {
    if (type != eRzTypeUnknown) {
        typeID = Row(Type2Index(type)).typeID;
        AdjustCreatorID();
        AdjustExtension();
        return;
    }
    // Derive from the text after the last "." of the whole path, not only of
    // the name: a dot in a folder name ("/a.b/file") gives the fallback code
    // 0x3F and then creator 0. Kept as the framework always behaved.
    int32_t dot = fullName.findreverse('.');
    if (dot < 0) return;
    uint32_t code = Row(Extension2Index(fullName.substr(dot + 1))).typeID;
    if (code != typeID && code != 0) {
        typeID = code;
        AdjustCreatorID();
    }
}

void RzFileSpec::AdjustExtension() {
    RzString base = GetBaseName();
    RzString extension = Type2Extension(Row(TypeID2Index(typeID)).type);
    if (extension.length() > 0)
        SetName(base + "." + extension);
    else
        SetName(base);
}

void RzFileSpec::CheckExtension(const RzString& extension) {
    // The corrected profile name is computed and dropped on purpose:
    // callers have always relied on the spec staying as it is.
    RzString name = GetName();
    int32_t n = name.length();
    if (n >= 3 && (name.substr(n - 3) == "icc" || name.substr(n - 3) == "icm")) return;
    RzString corrected =
        (n >= 4 && name.c_str()[n - 4] == '.') ? name.substr(0, n - 3) : name + ".";
    corrected += extension.length() > 0 ? extension : RzString("icc");
    (void)corrected;
}

void RzFileSpec::SetUniqueName() {
    RzString path = GetPath(), base = GetBaseName(), extension = GetExtension();
    // No upper bound: past 999 the number simply gets wider.
    for (int counter = 1; RzSystem::FileExists(*this); ++counter) {
        RzString name;
        name.Printf("%s%s-%03d.%s", path.c_str(), base.c_str(), counter, extension.c_str());
        CheckExtension(RzString());
        SetFullName(name);
    }
}
