// An equaliser file as the player finds it: any bytes give gains or nothing. Gains written into
// the same file, whatever else it held, read back exactly.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "ScratchFolder.h"
#include "platform/audio/EqIniFile.h"

namespace {

namespace fs = std::filesystem;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// The write goes through a temporary file beside the ini file, in the same folder.
const fs::path &iniFile()
{
    static const fs::path file = fuzzing::scratchFolder() / "Eq.ini";
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const fs::path &file = iniFile();
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    }
    const auto gains = platform::audio::readEqGains(file, "EqData");
    for (const auto &[band, gain] : gains.value_or(std::map<int, double>{}))
        check(band >= 0 && band < 1000);
    (void)platform::audio::readEqGains(file, "Other");

    // What was read, band after band, or a few gains of our own when nothing was.
    std::vector<double> written;
    if (gains && !gains->empty()) {
        for (const auto &[band, gain] : *gains)
            written.push_back(gain);
    } else {
        written = {-3.5, 0, 6.25, -0.0};
    }
    check(platform::audio::writeEqGains(file, "EqData", written));
    const auto back = platform::audio::readEqGains(file, "EqData");
    check(back.has_value() && back->size() == written.size());
    for (size_t i = 0; i < written.size(); ++i) {
        const auto at = back->find(static_cast<int>(i));
        check(at != back->end() && at->second == written[i]);
    }
    return 0;
}
