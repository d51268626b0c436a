#include <Rz/internal/RzPaths.h>

std::string RzPathFolder(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return "";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string RzPathLeaf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string RzPathJoin(const std::string& folder, const std::string& name) {
    return folder == "/" ? "/" + name : folder + "/" + name;
}

void RzPathTrimSlashes(std::string& path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
}

std::vector<std::string> RzHFSPathParts(const std::string& name) {
    std::vector<std::string> parts;
    if (name.empty()) return parts;
    if (name[0] != ':') {
        parts.push_back(name);
        return parts;
    }
    const std::string rest = name.substr(1);
    if (rest.empty()) return parts;
    for (size_t start = 0;;) {
        const size_t colon = rest.find(':', start);
        parts.push_back(rest.substr(start, colon == std::string::npos ? colon : colon - start));
        if (colon == std::string::npos) break;
        start = colon + 1;
    }
    if (parts.back().empty()) parts.pop_back();
    for (std::string& part : parts) {
        if (part.empty()) part = "..";
        for (char& c : part)
            if (c == '/') c = ':';
    }
    return parts;
}

std::string RzHFSName(const char* name) {
    std::string s = name ? name : "";
    for (char& c : s)
        if (c == ':') c = '/';
    return s;
}

std::string RzApplicationFolder(const char* executablePath, int besideExecutable) {
    const std::string folder = RzPathFolder(executablePath ? executablePath : "");
    if (folder.empty() || besideExecutable) return folder;
    // <bundle>.app/Contents/MacOS/<executable>
    const std::string tail = "/Contents/MacOS";
    if (folder.size() > tail.size() &&
        folder.compare(folder.size() - tail.size(), tail.size(), tail) == 0) {
        const std::string bundle = folder.substr(0, folder.size() - tail.size());
        const std::string bundleName = RzPathLeaf(bundle);
        if (bundleName.size() > 4 && bundleName.compare(bundleName.size() - 4, 4, ".app") == 0)
            return RzPathFolder(bundle);
    }
    return folder;
}
