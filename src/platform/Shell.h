#pragma once

#include <string>

namespace platform {

// The desktop's own handling of an address: a web page opens in the user's browser, a file
// in the program the user has for its kind.
class Shell {
public:
    virtual ~Shell() = default;
    // Hands the address over and returns at once: 0 when it was handed over, non-zero when
    // there is nothing to hand it to. What the opening program does later is its own affair.
    virtual int openAddress(const std::string &address) = 0;
};

} // namespace platform
