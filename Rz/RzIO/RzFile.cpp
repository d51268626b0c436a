#include <Rz/RzIO/RzFile.h>

#include <errno.h>
#include <stdint.h>
#include <string.h>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzFile";

namespace {

// Positions are 32-bit and their arithmetic wraps.
int32_t Minus(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace

RzFile::RzFile() : file(nullptr), spec(RzString()), access(eRzFileNone) {}

RzFile::RzFile(const RzFileSpec& spec_, eRzFileAccess access_)
    : file(nullptr), spec(spec_), access(access_) {}

RzFile::~RzFile() {
    if (file) fclose(file);
}

void RzFile::SetSpec(const RzFileSpec& spec_) {
    spec = spec_;
}

void RzFile::GetSpec(RzFileSpec& out) const {
    out = spec;
}

RzString RzFile::GetName() const {
    return RzString("RzFile\t") + spec.GetFullName();
}

void RzFile::Open(eRzFileAccess access_, bool) {
    if (file) return;
    FILE* opened = RzMacOpenFile(spec, access_);
    if (!opened) {
        // The layer throws for the three real modes; a null result is
        // reported here, with the message as the error's name.
        const int err = errno;
        RzString message;
        if (access_ == eRzFileRead) {
            message.Printf("FileNotOpen (for reading, errno=%d): %s", err,
                           spec.GetFullName().c_str());
        } else if (access_ == eRzFileWrite || access_ == eRzFileReadWrite) {
            message.Printf("FileNotOpen (for writing, errno=%d): %s", err,
                           spec.GetFullName().c_str());
        } else {
            message = RzString("FileNotOpen: ") + spec.GetFullName();
        }
        RzRaise(kRzFileNotOpen, message.c_str(), nullptr, 0);
    }
    file = opened;
    access = access_;
}

void RzFile::Close() {
    if (file) {
        fclose(file);
        file = nullptr;
    }
    access = eRzFileNone;
}

uint32_t RzFile::Read(void* buffer, uint32_t size, uint32_t* done) {
    if (!buffer) RZ_RAISE(kRzArgErr);
    if (access == eRzFileRead || access == eRzFileReadWrite) Open(access, false);
    // A stream that was never opened is refused instead of reading null.
    if (!file) RZ_RAISE(kRzFileNotOpen);
    const uint32_t n = static_cast<uint32_t>(fread(buffer, 1, size, file));
    if (done) *done = n;
    return n;
}

uint32_t RzFile::Write(const void* buffer, uint32_t size, uint32_t* done) {
    if (access == eRzFileWrite || access == eRzFileReadWrite) Open(access, false);
    if (!buffer) RZ_RAISE(kRzArgErr);
    if (!file) RZ_RAISE(kRzFileNotOpen);
    const uint32_t n = static_cast<uint32_t>(fwrite(buffer, 1, size, file));
    if (done) *done = n;
    if (n < size) RZ_RAISE(kRzFileWriteFailed);
    return n;
}

int32_t RzFile::Length() {
    if (access != eRzFileNone) Open(access, false);
    if (!file) RZ_RAISE(kRzFileNotOpen);
    const long position = ftell(file);
    if (position < 0 || fseek(file, 0, SEEK_END) != 0) RZ_RAISE(kRzFileLengthFailed);
    const long length = ftell(file);
    if (fseek(file, position, SEEK_SET) != 0) RZ_RAISE(kRzFileLengthFailed);
    // A length of 2 GB or more has no 32-bit form.
    if (length < 0 || length > INT32_MAX) RZ_RAISE(kRzFileLengthFailed);
    return static_cast<int32_t>(length);
}

int32_t RzFile::SetPosition(int32_t offset, eRzFileSeekMode mode) {
    if (access != eRzFileNone) Open(access, false);
    if (!file) RZ_RAISE(kRzFileNotOpen);
    int result;
    switch (mode) {
        case eRzSeekFromStart:
            result = fseek(file, offset, SEEK_SET);
            break;
        case eRzSeekFromEnd:
            result = fseek(file, Minus(Length(), offset), SEEK_SET);
            break;
        case eRzSeekFromCurrent:
            result = fseek(file, offset, SEEK_CUR);
            break;
        default:
            RZ_RAISE(kRzArgErr);
    }
    if (result != 0) RZ_RAISE(kRzFileSeekFailed);
    return 0;
}

int32_t RzFile::GetPosition() {
    if (access != eRzFileNone) Open(access, false);
    if (!file) RZ_RAISE(kRzFileNotOpen);
    const long position = ftell(file);
    if (position < 0 || position > INT32_MAX) RZ_RAISE(kRzFilePosFailed);
    return static_cast<int32_t>(position);
}

RzString RzFile::ReadString() {
    const int32_t size = Minus(Length(), GetPosition());
    if (size < 0) {
        // Behind the end the size is negative; taken as an unsigned block
        // size it asks for nearly 4 GB, which the 32-bit allocator refuses.
        RzRaiseMemFull();
    }
    if (size == 0) {
        char none;
        Read(&none, 0, nullptr);
        return RzString();
    }
    // One read straight into the string's own buffer: a text of `size`
    // bytes, as if copied from a temporary block.
    RzString s(size, false);
    char* chars = s.Get(nullptr);
    const uint32_t got = Read(chars, static_cast<uint32_t>(size), nullptr);
    // Bytes a short read left out would be undefined; they are zero here.
    if (got < static_cast<uint32_t>(size)) memset(chars + got, 0, static_cast<size_t>(size) - got);
    s.SetLength(size);
    return s;
}

void RzFile::WriteString(const RzString& s) {
    Write(s.c_str(), static_cast<uint32_t>(s.length()), nullptr);
}

RzFlushFileStream::RzFlushFileStream(const RzFileSpec& spec_) : spec(spec_) {}

uint32_t RzFlushFileStream::Write(const void* buffer, uint32_t size, uint32_t* done) {
    RzFile file(spec, eRzFileNone);
    file.Open(eRzFileReadWrite, false);
    // Each write lands at the end in one piece even while other processes
    // append to the same file (a log shared by several programs).
    RzOSAppendEveryWrite(file.file);
    file.SetPosition(0, eRzSeekFromEnd);
    const uint32_t n = file.Write(buffer, size, done);
    file.Close();
    return n;
}
