#include "SaneTestBackend.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <fstream>

namespace testsupport {

void useSaneTestBackend(const std::filesystem::path &folder)
{
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "dll.conf") << "test\n";
    ::setenv("SANE_CONFIG_DIR", folder.c_str(), 1);
    ::dlopen(SANE_TEST_BACKEND, RTLD_NOW | RTLD_NODELETE);
}

} // namespace testsupport
