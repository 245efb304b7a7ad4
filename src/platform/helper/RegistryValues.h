#pragma once

#include <cstdint>
#include <string>

#include "platform/SettingsStore.h"

namespace platform {

// The registry calls of the media helper (`MMHelperX`) on a settings store. Each opens the key,
// does its one read or write and closes it again. The store keeps text: a number in decimal, a
// binary value as hex digits.

// The stored number; `fallback` when the value is missing or isn't a whole number.
int32_t ReadRegInt(SettingsStore &store, int32_t root, const std::string &key, const std::string &name, int32_t fallback);
void WriteRegInt(SettingsStore &store, int32_t root, const std::string &key, const std::string &name, int32_t value);
// Puts at most `size` bytes of the value in `buffer`; gives how many (0 for a missing or
// garbled value).
int32_t ReadRegBinary(SettingsStore &store, int32_t root, const std::string &key, const std::string &name,
                      std::string &buffer, int32_t size);
void WriteRegBinary(SettingsStore &store, int32_t root, const std::string &key, const std::string &name,
                    const std::string &buffer, int32_t size);

} // namespace platform
