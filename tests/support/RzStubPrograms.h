// Stand-ins for the programs the desktop services start: shell scripts in a
// fresh folder that is the whole PATH while the object lives, so that the
// real programs are not found. A script finds its folder as $STUBS.
#ifndef RZ_TESTS_SUPPORT_RZSTUBPROGRAMS_H
#define RZ_TESTS_SUPPORT_RZSTUBPROGRAMS_H

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/RzTempDir.h"

class RzStubPrograms {
public:
    RzStubPrograms() {
        env.Set("PATH", dir.path().c_str());
        env.Set("STUBS", dir.path().c_str());
    }
    // Adds the program `name` running `body` under /bin/sh.
    void Add(const std::string& name, const std::string& body) {
        RzPutFile(dir / name, "#!/bin/sh\n" + body + "\n");
        chmod((dir / name).c_str(), 0700);
    }
    // A file the stubs wrote, once it is there (waits up to `seconds`).
    std::string Wait(const std::string& name, int seconds = 5) const {
        for (int i = 0; i < seconds * 100 && access((dir / name).c_str(), F_OK) != 0; ++i)
            usleep(10000);
        return FileText(dir / name);
    }
    std::string Text(const std::string& name) const { return FileText(dir / name); }
    RzEnvGuard env;  // PATH and STUBS; more may be set through it
    RzTempDir dir;
};

// Whether this process has a child, exited or not.
inline bool RzHasChildren() {
    int status;
    return !(waitpid(-1, &status, WNOHANG) == -1 && errno == ECHILD);
}

// Whether the process `pid` is gone (or only waits to be reaped by someone).
inline bool RzProcessGone(pid_t pid) {
    if (kill(pid, 0) != 0) return true;
    FILE* stat = fopen(("/proc/" + std::to_string(pid) + "/stat").c_str(), "r");
    if (!stat) return true;
    char state = 0;
    const bool read = fscanf(stat, "%*d (%*[^)]) %c", &state) == 1;
    fclose(stat);
    return !read || state == 'Z';
}

#endif
