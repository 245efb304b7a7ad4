#include <filesystem>
#include <iostream>
#include <string>

#include "Runner.h"

#ifndef BRASSWICK_PROGRAM_DIR
#define BRASSWICK_PROGRAM_DIR "prog"
#endif

// scenario FILE...: runs each scenario; exit 0 when every check passed.
int main(int argc, char **argv)
{
    int first = 1;
    bool keep = false;
    if (argc > 1 && std::string(argv[1]) == "--keep") {
        keep = true;
        ++first;
    }
    if (first >= argc) {
        std::cerr << "usage: scenario [--keep] FILE...\n";
        return 2;
    }
    std::filesystem::path installation = BRASSWICK_PROGRAM_DIR;
    if (const char *env = std::getenv("BRASSWICK_PROGRAM_DIR"))
        installation = env;
    scenario::Runner runner(installation, std::cout);
    runner.setKeep(keep);
    for (int i = first; i < argc; ++i)
        runner.runFile(argv[i]);
    std::cout << runner.passed() << " passed, " << runner.failed() << " failed\n";
    return runner.failed() == 0 ? 0 : 1;
}
