// Running a piece of a test in a child process: as another user (permission
// rules do not hold for root), or to be killed.
#ifndef RZ_TESTS_SUPPORT_RZCHILD_H
#define RZ_TESTS_SUPPORT_RZCHILD_H

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include <Rz/RzCore/RzError.h>

// The user and group the unprivileged children run as.
const uid_t kNobody = 65534;

// Runs `body` in a forked child, as the user nobody when this process is
// root (unchanged otherwise), and returns the text it returns; an RzError it
// throws comes back as "error <code> <name>". The child never returns into
// the test.
inline std::string AsUnprivileged(const std::function<std::string()>& body) {
    int out[2];
    if (pipe(out) != 0) return "no pipe";
    const pid_t child = fork();
    if (child < 0) return "no fork";
    if (child == 0) {
        close(out[0]);
        std::string result;
        if (getuid() == 0 &&
            (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
            result = "cannot drop privileges";
        } else {
            try {
                result = body();
            } catch (const RzError& e) {
                result = "error " + std::to_string(e.GetErr()) + " " + e.GetErrName();
            }
        }
        ssize_t ignored = write(out[1], result.data(), result.size());
        (void)ignored;
        _exit(0);
    }
    close(out[1]);
    std::string result;
    char buffer[256];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;)
        result.append(buffer, static_cast<size_t>(n));
    close(out[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return result;
}

#endif
