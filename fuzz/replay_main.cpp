// Runs a fuzz target over every file of a corpus folder (or over the files
// named on the command line), so that every test run replays the corpus
// without libFuzzer. Exits non-zero if the target aborts.
#include <dirent.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>

#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool ReadFile(const std::string& path, std::vector<uint8_t>& out) {
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return false;
    out.clear();
    uint8_t chunk[65536];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, f)) > 0) out.insert(out.end(), chunk, chunk + n);
    fclose(f);
    return true;
}

int RunPath(const std::string& path, int& count) {
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        fprintf(stderr, "replay: cannot read %s\n", path.c_str());
        return 1;
    }
    if (S_ISDIR(st.st_mode)) {
        DIR* dir = opendir(path.c_str());
        if (!dir) return 1;
        std::vector<std::string> names;
        while (struct dirent* e = readdir(dir)) {
            std::string name = e->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(dir);
        int failures = 0;
        for (const std::string& name : names) failures += RunPath(path + "/" + name, count);
        return failures;
    }
    std::vector<uint8_t> data;
    if (!ReadFile(path, data)) return 1;
    LLVMFuzzerTestOneInput(data.data(), data.size());
    ++count;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    int count = 0, failures = 0;
    for (int i = 1; i < argc; ++i) failures += RunPath(argv[i], count);
    printf("replayed %d inputs\n", count);
    return failures == 0 && count > 0 ? 0 : 1;
}
