#pragma once

namespace platform {

// System information (`SysOCX1`).
class SystemInfo {
public:
    virtual ~SystemInfo() = default;
    // Memory in use, as a whole percentage of all memory (0 to 100).
    virtual int memoryusedtotal() = 0;
};

} // namespace platform
