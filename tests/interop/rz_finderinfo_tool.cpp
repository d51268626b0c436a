// Stamps and reads Finder information through the framework's file layer, for
// the interoperability check with a real SMB server (finderinfo_samba.sh).
//
//   rz_finderinfo_tool stamp PATH TYPE CREATOR   codes of up to four characters; "-" keeps one
//   rz_finderinfo_tool hide PATH | show PATH     sets or clears the invisible flag
//   rz_finderinfo_tool read PATH                 prints "type=TEXT creator=ttxt flags=0x4000"
//
// Exits 0 on success, 1 with the result code on standard error otherwise, 2 on
// a usage error.
#include <stdio.h>
#include <string.h>

#include <Rz/RzCore/RzString.h>
#include <Rz/internal/RzFileOS.h>

namespace {

uint32_t Code(const char* text) {
    return strcmp(text, "-") == 0 ? 0 : RzString(text).ToSig();
}

int Report(const char* what, OSErr err) {
    if (err == noErr) return 0;
    fprintf(stderr, "rz_finderinfo_tool: %s failed: %d\n", what, err);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && strcmp(argv[1], "stamp") == 0)
        return Report("stamp", RzOSWriteFinderInfo(argv[2], Code(argv[3]), Code(argv[4])));
    if (argc == 3 && (strcmp(argv[1], "hide") == 0 || strcmp(argv[1], "show") == 0))
        return Report(argv[1], RzOSChangeFinderFlags(argv[2], argv[1][0] == 'h', kIsInvisible));
    if (argc == 3 && strcmp(argv[1], "read") == 0) {
        uint32_t type = 0, creator = 0;
        uint16_t flags = 0;
        OSErr err = RzOSReadFinderInfo(argv[2], type, creator, flags, nullptr);
        if (err == noErr) {
            RzString t, c;
            t.FromSig(type);
            c.FromSig(creator);
            printf("type=%s creator=%s flags=0x%04x\n", t.c_str(), c.c_str(), flags);
        }
        return Report("read", err);
    }
    fprintf(stderr,
            "usage: rz_finderinfo_tool stamp PATH TYPE CREATOR | hide PATH | show PATH | read "
            "PATH\n");
    return 2;
}
