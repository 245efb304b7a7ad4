#pragma once

#include <string>

namespace platform::writer {

// The driver type every recorder reports until the user picks another one: MMC, which is what
// every drive made this century speaks.
constexpr int mmcDriverType = 10;

// The wodim `driver=` name for a driver type of the writer model table (1..12); empty for a
// type the table doesn't know, in which case wodim picks the driver itself.
std::string wodimDriverName(int driverType);

} // namespace platform::writer
