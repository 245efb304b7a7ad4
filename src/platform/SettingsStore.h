#pragma once

#include <cstdint>
#include <string>

namespace platform {

// The registry helper (`reg1`): text values below one key of the user's hive.
class SettingsStore {
public:
    // The hive of the current user, as the platform numbers it.
    static constexpr int32_t HKEY_CURRENT_USER = static_cast<int32_t>(0x80000001u);
    static constexpr int32_t REG_SZ = 1;
    // Stored as text all the same: binary as hex digits, a number in decimal.
    static constexpr int32_t REG_BINARY = 3;
    static constexpr int32_t REG_DWORD = 4;

    virtual ~SettingsStore() = default;
    // Opens the key for reading and writing; later calls refer to it.
    virtual void OpenKey(int32_t root, const std::string &subKey) = 0;
    // The stored text of a value; "" when the value is missing. With no key open: error 5.
    virtual std::string ReadValue(const std::string &name) = 0;
    // Stores the value as text, creating it if needed; it is on disk when the call returns.
    virtual void WriteValue(const std::string &name, const std::string &value, int32_t type) = 0;
    virtual void CloseKey() = 0;
};

} // namespace platform
