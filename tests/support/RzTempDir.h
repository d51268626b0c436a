// A fresh temporary folder for tests that touch the disk (removed with
// everything in it), mounts without user extended attributes or with little
// room, file writers and readers, and guards for the environment and
// standard input.
#ifndef RZ_TESTS_SUPPORT_RZTEMPDIR_H
#define RZ_TESTS_SUPPORT_RZTEMPDIR_H

#include <dirent.h>
#include <errno.h>
#include <ftw.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <Rz/FileSpec/RzFileSpec.h>

class RzTempDir {
public:
    RzTempDir() {
        const char* base = getenv("TMPDIR");
        std::string pattern =
            std::string(base && base[0] == '/' ? base : "/tmp") + "/rz-test-XXXXXX";
        if (mkdtemp(&pattern[0])) {
            char* resolved = realpath(pattern.c_str(), nullptr);
            root = resolved ? resolved : pattern;
            free(resolved);
        }
    }
    ~RzTempDir() {
        if (root.empty()) return;
        chmod(root.c_str(), 0700);
        nftw(
            root.c_str(),
            [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }
    RzTempDir(const RzTempDir&) = delete;
    RzTempDir& operator=(const RzTempDir&) = delete;

    bool ok() const { return !root.empty(); }
    const std::string& path() const { return root; }
    std::string operator/(const std::string& name) const { return root + "/" + name; }

private:
    std::string root;
};

// An RzFileSpec naming `path`.
inline RzFileSpec FileSpecAt(const std::string& path) {
    return RzFileSpec(RzString(path.c_str()));
}

// Creates or truncates the file at `path` and writes `bytes` to it.
inline bool RzPutFile(const std::string& path, const std::string& bytes = "x") {
    FILE* f = fopen(path.c_str(), "wb");
    const bool written = f && fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return f && fclose(f) == 0 && written;
}

// Makes folders (names ending in '/') and files holding `text` in `t`.
inline void MakeFiles(const RzTempDir& t, const std::vector<std::string>& names,
                      const std::string& text = "x") {
    for (const std::string& name : names)
        name.back() == '/' ? mkdir((t / name).c_str(), 0755) : RzPutFile(t / name, text);
}

// The names in `folder` that start with `prefix`, "." and ".." left out.
inline std::vector<std::string> FolderNames(const std::string& folder,
                                            const std::string& prefix = "") {
    std::vector<std::string> names;
    if (DIR* dir = opendir(folder.c_str())) {
        while (struct dirent* e = readdir(dir))
            if (std::string(e->d_name).rfind(prefix, 0) == 0 && strcmp(e->d_name, ".") != 0 &&
                strcmp(e->d_name, "..") != 0)
                names.push_back(e->d_name);
        closedir(dir);
    }
    return names;
}

// A file system of `type` mounted with `options` in a fresh temporary folder.
// Mounting needs root; `reason` says why it failed.
struct TestMount {
    TestMount(const char* type, const std::string& options) : point(dir / type) {
        mounted = mkdir(point.c_str(), 0700) == 0 &&
                  mount(type, point.c_str(), type, 0, ("mode=0755" + options).c_str()) == 0;
        if (!mounted) reason = std::string("cannot mount (needs root): ") + strerror(errno);
    }
    ~TestMount() {
        if (mounted) umount2(point.c_str(), MNT_DETACH);
    }
    std::string operator/(const std::string& name) const { return point + "/" + name; }
    RzTempDir dir;
    std::string point, reason;
    bool mounted;
};

// A ramfs: a file system without user extended attributes.
struct NoXattrMount : TestMount {
    NoXattrMount() : TestMount("ramfs", "") {}
};

// A small tmpfs with mount `options` ("size=64k", "nr_inodes=8", ...): a file
// system that fills up.
struct TmpfsMount : TestMount {
    explicit TmpfsMount(const std::string& options) : TestMount("tmpfs", "," + options) {}
};

// The whole content of a file ("" when it cannot be read).
inline std::string FileText(const std::string& path) {
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

// Sets environment variables (null: unsets) and puts the old values back.
class RzEnvGuard {
public:
    ~RzEnvGuard() {
        for (auto it = saved.rbegin(); it != saved.rend(); ++it)
            it->second.first ? setenv(it->first.c_str(), it->second.second.c_str(), 1)
                             : unsetenv(it->first.c_str());
    }
    void Set(const char* name, const char* value) {
        const char* old = getenv(name);
        saved.push_back({name, {old != nullptr, old ? old : ""}});
        value ? setenv(name, value, 1) : unsetenv(name);
    }

private:
    std::vector<std::pair<std::string, std::pair<bool, std::string>>> saved;
};

// Makes `text` the process's standard input while it lives: descriptor 0 is
// saved and restored, and the C stream's buffer and end-of-file state are
// dropped on both sides, so that later readers see the real input again.
class RzStdinGuard {
public:
    explicit RzStdinGuard(const std::string& text) : saved(dup(0)) {
        FILE* file = tmpfile();
        if (file && fwrite(text.data(), 1, text.size(), file) == text.size() && fflush(file) == 0 &&
            lseek(fileno(file), 0, SEEK_SET) == 0)
            dup2(fileno(file), 0);
        if (file) fclose(file);
        Reset();
    }
    ~RzStdinGuard() {
        Reset();
        if (saved >= 0) dup2(saved, 0), close(saved);
    }
    RzStdinGuard(const RzStdinGuard&) = delete;
    RzStdinGuard& operator=(const RzStdinGuard&) = delete;

private:
    static void Reset() {
        __fpurge(stdin);
        clearerr(stdin);
    }
    int saved;
};

#endif
