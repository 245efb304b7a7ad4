#include "ProcSystemInfo.h"

#include <cmath>
#include <fstream>
#include <sstream>

namespace platform::system {

int ProcSystemInfo::usedPercent(const std::string &meminfo)
{
    long long total = -1, available = -1;
    std::istringstream in(meminfo);
    std::string key;
    long long value = 0;
    std::string unit;
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        if (!(fields >> key >> value))
            continue;
        if (key == "MemTotal:")
            total = value;
        else if (key == "MemAvailable:")
            available = value;
    }
    if (total <= 0 || available < 0 || available > total)
        return -1;
    return static_cast<int>(std::lround(100.0 * static_cast<double>(total - available) / static_cast<double>(total)));
}

int ProcSystemInfo::memoryusedtotal()
{
    std::ifstream in(m_path);
    std::ostringstream text;
    text << in.rdbuf();
    const int percent = usedPercent(text.str());
    // With no figures, report an idle machine rather than stop the meter nowhere.
    return percent < 0 ? 0 : percent;
}

} // namespace platform::system
