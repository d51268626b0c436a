// rz: the command line over the Rz framework. The commands live in the
// rz_tool library (RzTool.h); this only connects them to the process.
#include <unistd.h>

#include <iostream>
#include <new>
#include <string>
#include <vector>

#include <Rz/RzSystem/RzSystem.h>

#include "RzTool.h"

int main(int argc, char** argv) {
    // Standard input and output carry bytes in large blocks; the framework
    // writes nothing to them itself (its debug output stays at level 0).
    std::ios::sync_with_stdio(false);
    int code = kRzToolFailed;
    try {
        const std::vector<std::string> args(argv + 1, argv + argc);
        RzToolIO io{std::cin, std::cout, std::cerr, isatty(2) && !isatty(1), RzSystem::TickCount};
        code = RzToolRun(args, io);
        std::cout.flush();
        if (!std::cout) {
            std::cerr << "rz: cannot write the output\n";
            code = kRzToolFailed;
        }
    } catch (const std::bad_alloc&) {
        std::cerr << "rz: out of memory\n";
    } catch (...) {
        std::cerr << "rz: unexpected failure\n";
    }
    return code;
}
