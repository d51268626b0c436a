// Stamps and reads Finder information through the framework's file layer,
// for the interoperability check with a real SMB server (finderinfo_samba.sh):
// "write"/"update" open PATH with RzMacOpenFile for writing or for reading and
// writing (stamping the extension's type and CREATOR or the type's own
// creator), "hide"/"show" call RzMacSetVisible, and "read" prints
// "type=TEXT creator=ttxt flags=0x4000" (type and creator as
// RzMacReadCreatorType gives them, the flags from the operating-system seam);
// "locked" prints "locked" or "not locked" (RzSystem::IsFileLocked) and
// "unlock" calls RzSystem::UnLockFile. Exits 0 on success, 1 on a failure, 2
// on a usage error.
#include <stdio.h>
#include <string.h>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzCore/RzError.h>
#include <Rz/RzSystem/RzSystem.h>
#include <Rz/internal/RzOS.h>

namespace {

int Report(const char* what, int32_t err) {
    if (err == noErr) return 0;
    fprintf(stderr, "rz_finderinfo_tool: %s failed: %d\n", what, static_cast<int>(err));
    return 1;
}

int Open(RzFileSpec& spec, const char* creator, eRzFileAccess access) {
    if (creator) spec.SetCreatorID(RzString(creator).ToSig());
    try {
        FILE* file = RzMacOpenFile(spec, access);
        if (access == eRzFileWrite) fputs("hello\n", file);
        return fclose(file) == 0 ? 0 : Report("close", ioErr);
    } catch (const RzError& e) {
        fprintf(stderr, "rz_finderinfo_tool: %s\n", e.GetErrName());
        return 1;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) argc = 0;
    RzFileSpec spec(RzString(argc ? argv[2] : ""));
    const char* command = argc ? argv[1] : "";
    if ((argc == 3 || argc == 4) && strcmp(command, "write") == 0)
        return Open(spec, argc == 4 ? argv[3] : nullptr, eRzFileWrite);
    if ((argc == 3 || argc == 4) && strcmp(command, "update") == 0)
        return Open(spec, argc == 4 ? argv[3] : nullptr, eRzFileReadWrite);
    if (argc == 3 && (strcmp(command, "hide") == 0 || strcmp(command, "show") == 0))
        return Report(command, RzMacSetVisible(spec, command[0] == 's'));
    if (argc == 3 && strcmp(command, "read") == 0) {
        int32_t err = RzMacReadCreatorType(spec);
        uint32_t type = 0, creator = 0;
        uint16_t flags = 0;
        if (err == noErr) err = RzOSReadFinderInfo(argv[2], type, creator, flags, nullptr);
        if (err == noErr) {
            RzString t, c;
            t.FromSig(spec.GetTypeID());
            c.FromSig(spec.GetCreatorID());
            printf("type=%s creator=%s flags=0x%04x\n", t.c_str(), c.c_str(), flags);
        }
        return Report("read", err);
    }
    if (argc == 3 && strcmp(command, "locked") == 0) {
        puts(RzSystem::IsFileLocked(spec) ? "locked" : "not locked");
        return 0;
    }
    if (argc == 3 && strcmp(command, "unlock") == 0) {
        RzSystem::UnLockFile(spec);
        return 0;
    }
    fprintf(stderr,
            "usage: rz_finderinfo_tool write PATH [CREATOR] | update PATH [CREATOR] | hide PATH "
            "| show PATH | read PATH | locked PATH | unlock PATH\n");
    return 2;
}
