#pragma once

#include <array>
#include <string>

namespace extract {

// The module `ISRC`: the codes read for each track index of the disc in the drive.
struct ISRC {
    static constexpr int Size = 100;
    std::array<std::string, Size> ISRCCodes;

    // ISRCCodes(i); an index outside 0..99 is error 9.
    std::string &code(int index);
    void clear();
};

} // namespace extract
