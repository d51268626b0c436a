// The built rz program, run as a user runs it: real files in a fresh
// temporary folder, standard input, output and error, exit codes.
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <Rz/RzMath/RzRandom.h>

#include "RzTool.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

extern char** environ;

namespace {

struct Result {
    int code;
    std::string out, err;
};

// Runs rz with `args`, `input` as standard input.
Result RunRz(const std::vector<std::string>& args, const std::string& input = "") {
    RzTempDir io;
    RzPutFile(io / "in", input);
    std::vector<std::string> words{RZ_TOOL_BINARY};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(&w[0]);
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, (io / "in").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, (io / "out").c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, (io / "err").c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t pid = 0;
    int status = 0;
    const bool ran = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0 &&
                     waitpid(pid, &status, 0) == pid;
    posix_spawn_file_actions_destroy(&actions);
    const int code = !ran ? -1 : WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return Result{code, FileText(io / "out"), FileText(io / "err")};
}

std::string Sample() {
    return FileText(std::string(getenv("RZ_TEST_SOURCE_DIR")) +
                    "/examples/settings/colorapp.settings");
}

// Runs the steps in turn; each expects an exit code, the whole standard
// output (unless null) and a part of standard error ("" for none at all).
struct Step {
    std::vector<std::string> args;
    int code;
    const char* out;
    std::string err;
    std::string input = "";
};

void RunSteps(const std::vector<Step>& steps) {
    for (const Step& s : steps) {
        std::string line;
        for (const std::string& a : s.args) line += " " + a;
        const Result r = RunRz(s.args, s.input);
        EXPECT_EQ(r.code, s.code) << "rz" << line << "\n" << r.err;
        if (s.out) {
            EXPECT_EQ(r.out, s.out) << "rz" << line;
        }
        // No error output at all, or one that holds the given text.
        EXPECT_TRUE(s.err.empty() ? r.err.empty() : r.err.find(s.err) != std::string::npos)
            << "rz" << line << "\n"
            << r.err;
    }
}

}  // namespace

TEST(RzTool, CommandLine) {
    const std::string version = std::string("rz ") + RzToolVersion() + "\n";
    RunSteps({
        {{}, 2, "", "rz: no command given\nUsage: rz COMMAND"},
        {{"--version"}, 0, version.c_str(), ""},
        {{"frobnicate"}, 2, "", "rz: no command 'frobnicate'\nTry 'rz --help'.\n"},
        {{"--frob"}, 2, "", "rz: unknown option '--frob'"},
        {{"db"}, 2, "", "rz: db needs a command"},
        {{"db", "--help"}, 0, nullptr, ""},
        {{"help", "db"}, 0, nullptr, ""},
        {{"db", "get", "x"}, 2, "", "rz: db get: expected FILE PATH\nTry 'rz db get --help'.\n"},
        {{"ls", ".", "--depth=-1"}, 2, "", "--depth must be 0 or more"},
        {{"random", "--seed", "2147483647", "uniform", "0", "1"}, 2, "", "gives only 1.0"},
    });
    // Help for the tool and for every command, both ways.
    EXPECT_EQ(RunRz({"--help"}).out.rfind("Usage: rz COMMAND", 0), 0u);
    for (const std::string& usage : RzToolUsageLines()) {
        std::istringstream words(usage.substr(3));
        std::vector<std::string> command;
        for (std::string w; words >> w && w[0] >= 'a' && w[0] <= 'z' && w != "rz";)
            command.push_back(w);
        const Result asked =
            RunRz(command.size() == 2 ? std::vector<std::string>{"help", command[0], command[1]}
                                      : std::vector<std::string>{"help", command[0]});
        EXPECT_EQ(Joined(asked.code, asked.out.substr(0, usage.size() + 7)),
                  Joined(0, "Usage: " + usage))
            << usage;
        command.push_back("--help");
        EXPECT_EQ(RunRz(command).out, asked.out) << usage;
    }
}

TEST(RzTool, SettingsFiles) {
    RzTempDir t;
    const std::string app = t / "app.settings", copy = t / "copy.settings";
    RzPutFile(app, Sample());
    RzPutFile(copy, Sample());
    RzPutFile(t / "bad.settings", "name = x\nsize 12\nz = 1\n");
    RzPutFile(t / "prot.settings", "{\n\t<\"a\" = \"1\">\n}\n");
    RzPutFile(t / "brace.settings", "a = 1\n}\nb = 2\n");
    const std::string missing = t / "missing.settings";
    RunSteps({
        {{"db", "get", app, "display/main/name"}, 0, "DELL U2720Q\n", ""},
        {{"db", "get", app, "/window/width/", "--int"}, 0, "1280\n", ""},
        {{"db", "get", app, "units"}, 1, "", "app.settings: no entry at units"},  // commented out
        {{"db", "set", copy, "display/main/gamma", "2.40", "--real"}, 0, "", ""},
        {{"db", "get", copy, "display/main/gamma", "--real"}, 0, "2.4\n", ""},
        {{"db", "set", copy, "new/deep/key", "--", "-a \"b\""}, 0, "", ""},
        {{"db", "rm", copy, "recent"}, 0, "", ""},
        {{"db", "diff", app, copy}, 1, nullptr, ""},
        {{"db", "check", t / "bad.settings"},
         1,
         "",
         "rz: db check: " + t / "bad.settings" +
             ":2:8: RzFormatErr (19): expected \" = \" between the key and the value\n"},
        {{"db", "get", missing, "a"},
         1,
         "",
         "rz: db get: RzFileNotOpen (12): FileNotOpen (for reading): " + missing + "\n"},
        {{"db", "dump", t.path()}, 1, "", "rz: db dump: " + t.path() + ": is a folder, not a file"},
        {{"db", "set", t / "new.settings", "a b/c", "x\ty"}, 0, "", ""},
        {{"db", "dump", t / "new.settings"}, 0, "\"a b\" = \"\"\n\"a b\"/c = \"x\\ty\"\n", ""},
        {{"db", "set", t / "prot.settings", "b", "2"}, 0, "", ""},
        {{"db", "set", t / "new.settings", "#x", "1"}, 1, "", "plain form cannot keep the key #x"},
        {{"db", "check", t / "brace.settings"},
         0,
         (t / "brace.settings: ok, 1 entry, plain form\n" + t / "brace.settings" +
          ":2:1: warning: reading ends at this closing brace; the text after it is not read\n")
             .c_str(),
         ""},
        {{"db", "set", t / "brace.settings", "a", "2"}, 1, "", "brace.settings:2:1: reading ends"},
        {{"db", "merge", missing, t / "prot.settings"}, 0, "", ""},
        {{"db", "merge", missing, t / "prot.settings", "--append"}, 0, "", ""},
        {{"db", "dump", missing}, 0, "a = 1\nb = 2\na[2] = 1\nb[2] = 2\n", ""},
        {{"db", "diff", missing, missing}, 0, "", ""},
        {{"db", "diff", missing, t / "none"}, 2, "", "RzFileNotOpen (12)"},
    });
    // What changed, and nothing else.
    const std::string diff = RunRz({"db", "diff", app, copy}).out;
    EXPECT_EQ(diff,
              "- display/main/gamma = 2.2\n+ display/main/gamma = 2.4\n"
              "- recent = \"\"\n- recent/count = 4\n"
              "- recent/1 = /home/maria/Proofs/Catalogue spring cover.tif\n"
              "- recent/2 = /home/maria/Measurements/P900 PhotoRag 2024-03-07.it8\n"
              "- recent/3 = /home/maria/Swatches/Corporate colours.aco\n"
              "- recent/4 = /home/maria/Profiles/SC-P900 PhotoRag v2.icc\n"
              "+ new = \"\"\n+ new/deep = \"\"\n+ new/deep/key = -a \"b\"\n");
    EXPECT_EQ(FileText(t / "prot.settings"), "{\n\t<\"a\" = \"1\">\n\t<\"b\" = \"2\">\n}\n");
    EXPECT_EQ(FileText(t / "brace.settings"), "a = 1\n}\nb = 2\n");
    // A value refused by its option, or a save refused, leaves the file as it was.
    const std::string before = FileText(copy);
    EXPECT_EQ(RunRz({"db", "set", copy, "window/maximized", "yes", "--bool"}).code, 2);
    EXPECT_EQ(RunRz({"db", "set", copy, "{", "1"}).code, 1);
    EXPECT_EQ(FileText(copy), before);
    // fmt keeps every entry in either form; no temporary file is left behind.
    for (const char* form : {"--protected", "--plain"}) {
        EXPECT_EQ(RunRz({"db", "fmt", form, copy}).code, 0);
        EXPECT_EQ(RunRz({"db", "diff", t / "copy.settings", copy}).code, 0);
    }
    EXPECT_EQ(FileText(copy).substr(0, 16), "version = 4.2.1\n");
    std::vector<std::string> names = FolderNames(t.path());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(Joined(names.size(), names.front(), names.back()),
              Joined(7, "app.settings", "prot.settings"));
}

TEST(RzTool, FilesAndFolders) {
    RzTempDir t;
    MakeFiles(t, {"dir/", "dir/a.txt", "dir/sub/", "dir/sub/b.dat", "dir/photo.jpg"}, "1234");
    RunSteps({
        {{"stamp", t / "dir/sub/b.dat", "--type", "8BCO", "--creator", "0x3842494D", "--hide"},
         0,
         "",
         ""},
        {{"stamp", t / "dir/sub", "--type", "TEXT"}, 1, "", "notAFileErr (-1302)"},
        {{"stamp", t / "none", "--show"}, 1, "", "fnfErr (-43): file not found"},
        {{"ls", t / "dir/a.txt"}, 1, "", "errFSNotAFolder (-1407): not a folder"},
        {{"ls", t / "none"}, 1, "", "fnfErr (-43)"},
        {{"unique", t / "dir/photo.jpg"}, 0, (t / "dir/photo-001.jpg\n").c_str(), ""},
    });
    const Result info = RunRz({"info", t / "none", t / "dir/sub/b.dat", t / "dir/sub"});
    EXPECT_EQ(info.code, 1);
    EXPECT_EQ(info.err, "rz: info: " + t / "none" + ": No such file or directory\n");
    for (const std::string& line :
         {"file: " + t / "dir/sub/b.dat" +
              "\ntype: '8BCO' colour swatches\ncreator: '8BIM'\n"
              "finder: type '8BCO', creator '8BIM', flags 0x4000 "
              "(invisible)\nlocked: no\ncreated: ",
          std::string("size: 4\n\nfolder: ") + t / "dir/sub" + "\nfinder: none\nlocked: no\n"})
        EXPECT_NE(info.out.find(line), std::string::npos) << info.out;

    // The walk: every item once, a folder's items right after it, codes and sizes.
    const std::string folder = "folder" + std::string(28, ' ') + "|sub/";
    const std::vector<std::string> all = {"'8BCO'     '8BIM'                4|sub/b.dat",
                                          "'JPEG'     0                     4|photo.jpg",
                                          "'TEXT'     0                     4|a.txt", folder};
    for (int depth : {0, 1}) {
        const Result ls = RunRz({"ls", t / "dir", "--depth", std::to_string(depth)});
        std::vector<std::string> lines;
        std::istringstream text(ls.out);
        for (std::string line; std::getline(text, line);)
            lines.push_back(line.substr(0, 34) + "|" + line.substr(line.rfind(' ') + 1));
        const auto sub = std::find(lines.begin(), lines.end(), folder);
        EXPECT_TRUE(depth == 1 || (sub + 1 < lines.end() && sub[1] == all[0])) << ls.out;
        std::sort(lines.begin(), lines.end());
        EXPECT_EQ(lines, std::vector<std::string>(all.begin() + depth, all.end()));
    }
}

TEST(RzTool, BytesOfAnyKind) {
    std::string junk;
    std::mt19937 random(15);
    for (int i = 0; i < 5000; ++i) junk += static_cast<char>(random() % 7 ? random() : 0);
    for (int b = 0; b < 256; ++b) junk += static_cast<char>(b);
    RzTempDir t;
    RzPutFile(t / "junk", junk);
    EXPECT_EQ(RunRz({"hex", "-d"}, RunRz({"hex", t / "junk"}).out).out, junk);
    const Result mac = RunRz({"conv", "--from", "macroman", "--to", "latin1"}, junk);
    EXPECT_EQ(Joined(mac.code, mac.out.size()), Joined(0, junk.size()));
    EXPECT_EQ(RunRz({"conv", "--from", "latin1", "--to", "macroman", "-"}, mac.out).out, junk);
    RunSteps({
        {{"conv", "--from", "utf16", "--to", "utf8"}, 0, "A", "the odd last byte", {0, 'A', 'B'}},
        {{"hex", "-d"}, 1, "", "rz: hex: -:2:3: 'g' is not a hexadecimal digit", "4142\r\n43g"},
        {{"hex", t.path()}, 1, "", "is a folder"},
        {{"conv", "--from", "utf8", "--to", "utf16", t / "none"}, 1, "", "RzFileNotOpen (12)"},
    });
    // A settings file of junk is read or refused, never more.
    const Result check = RunRz({"db", "check", t / "junk"});
    EXPECT_TRUE(check.code == 0 || check.code == 1) << check.err;
    EXPECT_LE(std::count(check.err.begin(), check.err.end(), '\n'), 1);
}

TEST(RzTool, RandomNumbersReadBackExactly) {
    struct Case {
        std::vector<std::string> variate;
        double (*draw)(RzRandom&);
    } cases[] = {
        {{"equilikely", "-6", "6"}, [](RzRandom& r) -> double { return r.Equilikely(-6, 6); }},
        {{"uniform", "-1", "1e-300"}, [](RzRandom& r) { return r.Uniform(-1, 1e-300); }},
        {{"student", "3"}, [](RzRandom& r) { return r.Student(3); }},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"random", "--seed", "-123456", "-n", "50"};
        args.insert(args.end(), c.variate.begin(), c.variate.end());
        const Result r = RunRz(args);
        RzRandom expected(1);
        expected.SetSeed(-123456);
        std::istringstream lines(r.out);
        int n = 0;
        for (std::string line; std::getline(lines, line); ++n)
            ASSERT_EQ(strtod(line.c_str(), nullptr), c.draw(expected)) << c.variate[0] << " " << n;
        EXPECT_EQ(Joined(r.code, n, r.err), Joined(0, 50, "")) << c.variate[0];
    }
    EXPECT_EQ(RunRz({"random", "--seed", "1", "-n", "2", "uniform", "0", "1"}).out,
              "2.2477936010098986e-05\n0.08503244914348818\n");
    EXPECT_EQ(RunRz({"random", "--seed", "1", "student", "0"}).out, "nan\n");
    EXPECT_NE(RunRz({"random", "uniform", "0", "1"}).err.find("seeded from the clock; --seed "),
              std::string::npos);
}

TEST(RzTool, Dates) {
    const char* const forms =
        "date: 2008-3-7 9:05:00\nday: 2008-3-7\nfile name: 20080307 09-05\nshort: IDHJFA\n"
        "day number: 747044\nsecond of day: 32700\n";
    RunSteps({
        {{"date", "2008-03-07 09:05"}, 0, forms, ""},
        {{"date", "--short", "IDHJFA"}, 0, forms, ""},
        {{"date", "x"}, 1, "", "rz: date: 'x' does not read as a date: RzFormatErr (19)\n"},
    });
    EXPECT_EQ(RunRz({"date"}).out.rfind("date: ", 0), 0u);
}

TEST(RzTool, ManualPage) {
    const std::string page = std::string(getenv("RZ_TEST_SOURCE_DIR")) + "/tools/rz/rz.1";
    std::string roff = FileText(page);
    for (size_t at; (at = roff.find("\\-")) != std::string::npos;) roff.replace(at, 2, "-");
    for (const std::string& usage : RzToolUsageLines())
        EXPECT_NE(roff.find("\n" + usage + "\n"), std::string::npos) << usage;
    if (system("command -v groff >/dev/null") != 0) GTEST_SKIP() << "groff is not installed";
    FILE* groff = popen(("groff -man -Tutf8 -ww -z " + page + " 2>&1").c_str(), "r");
    ASSERT_NE(groff, nullptr);
    std::string warnings;
    for (int c; (c = fgetc(groff)) != EOF;) warnings += static_cast<char>(c);
    EXPECT_EQ(Joined(pclose(groff), warnings), Joined(0, ""));
}
