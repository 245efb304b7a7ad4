#pragma once

#include <string>

#include "platform/SystemInfo.h"

namespace platform::system {

// Memory figures from the kernel (/proc/meminfo): in use is all memory less what is available.
class ProcSystemInfo : public SystemInfo {
public:
    explicit ProcSystemInfo(std::string meminfoPath = "/proc/meminfo") : m_path(std::move(meminfoPath)) {}
    int memoryusedtotal() override;

    // The percentage from the text of a meminfo file; -1 when the figures are missing.
    static int usedPercent(const std::string &meminfo);

private:
    std::string m_path;
};

} // namespace platform::system
