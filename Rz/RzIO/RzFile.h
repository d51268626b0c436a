// File streams.
//
// RzFile is the stream over a disk file named by an RzFileSpec. It opens
// lazily: it is built with a spec and an access mode, and every raw
// operation first opens the file with that mode (nothing happens when it is
// already open) before touching it. Files are opened in binary mode by the
// Mac OS file layer (RzMacOpenFile), which also stamps type and creator codes
// on files opened for writing.
//
// Positions and lengths are signed 32-bit: a file of 2 GB or more can be
// read and written from the start, but its length ("RzFileLengthFailed") and
// positions from 2 GB on ("RzFilePosFailed") cannot be reported.
//
// RzFlushFileStream is a write-only stream that opens its file for every
// write, appends the data and closes the file again; the debug log file is
// written through it.
#ifndef RZ_RZIO_RZFILE_H
#define RZ_RZIO_RZFILE_H

#include <stdint.h>
#include <stdio.h>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzIO/RzStream.h>

class RZ_API RzFile : public RzStream {
public:
    // The empty spec; not open, access eRzFileNone.
    RzFile();
    // Stores a copy of spec and the access mode; does not open the file.
    RzFile(const RzFileSpec& spec, eRzFileAccess access);
    // Closes the file if it is open.
    ~RzFile() override;

    // Opens lazily when the access mode reads (eRzFileRead or
    // eRzFileReadWrite), then reads up to `size` bytes; a short count is the
    // end of the file, no error. Raises "RzArgErr" (3) for a null buffer and
    // "RzFileNotOpen" (12) when the file is not open after that.
    uint32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    // Opens lazily when the access mode writes (eRzFileWrite or
    // eRzFileReadWrite), then writes `size` bytes. *done receives the count
    // before the check; fewer than `size` bytes raise "RzFileWriteFailed"
    // (17). Null buffer: "RzArgErr" (3); not open: "RzFileNotOpen" (12).
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
    // Opens lazily unless the access mode is eRzFileNone; "RzFileNotOpen"
    // (12) when not open. From the end, the new position is Length() minus
    // offset (a positive offset moves back). Another mode raises "RzArgErr"
    // (3), a failed seek "RzFileSeekFailed" (14). Returns 0.
    int32_t SetPosition(int32_t offset, eRzFileSeekMode mode) override;
    // Opens lazily as SetPosition. "RzFilePosFailed" (15) when the position
    // cannot be told.
    int32_t GetPosition() override;
    // "RzFile\t" followed by the full name.
    RzString GetName() const override;

    // Replaces the spec; an open file stays open.
    virtual void SetSpec(const RzFileSpec& spec);
    virtual void GetSpec(RzFileSpec& out) const;
    // Opens the file unless it is already open (then nothing changes, the
    // access mode included). The bool is ignored. A failure raises code 12
    // with a message as the error's name and no source location (<path> is
    // the spec's full name):
    // - eRzFileRead: "FileNotOpen (for reading): <path>", raised by
    //   RzMacOpenFile;
    // - eRzFileWrite and eRzFileReadWrite: "FileNotOpen: (for
    //   writing)<path>" (no blank before the path), raised by RzMacOpenFile;
    // - any other access value, eRzFileNone included: "FileNotOpen: <path>".
    // Should the layer ever report a failed open by a null result instead of
    // raising, a reading mode gives "FileNotOpen (for reading, errno=<n>):
    // <path>" and a writing mode "FileNotOpen (for writing, errno=<n>):
    // <path>"; RzMacOpenFile as it stands never does.
    virtual void Open(eRzFileAccess access, bool);
    // Closes the file if open and sets the access mode to eRzFileNone, so
    // that later operations no longer reopen it.
    virtual void Close();
    // The file's length; the position is kept. Opens lazily as SetPosition;
    // "RzFileNotOpen" (12) when not open, "RzFileLengthFailed" (13) when the
    // length cannot be found.
    virtual int32_t Length();
    // Everything from the position to the end, read in one Read into the
    // string's own buffer.
    virtual RzString ReadString();
    // Writes the string's length() bytes: no terminator, no line end.
    virtual void WriteString(const RzString& s);

protected:
    FILE* file;  // the open C stream, or null
    RzFileSpec spec;
    eRzFileAccess access;  // the mode the file is (or will be) opened with

private:
    RzFile(const RzFile&) = delete;
    RzFile& operator=(const RzFile&) = delete;
    friend class RzFlushFileStream;
};

class RZ_API RzFlushFileStream : public RzStreamImplemented {
public:
    // Stores a copy of spec; touches no file.
    explicit RzFlushFileStream(const RzFileSpec& spec);
    // Opens the file for reading and writing (creating it when missing),
    // appends the data at the end and closes the file again. Each call is one
    // append of the whole data, also when other processes append to the same
    // file. Errors of opening and writing propagate.
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;

protected:
    RzFileSpec spec;
};

#endif
