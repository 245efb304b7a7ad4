#include "RegistryValues.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace platform {

namespace {

std::string readValue(SettingsStore &store, int32_t root, const std::string &key, const std::string &name)
{
    store.OpenKey(root, key);
    std::string value = store.ReadValue(name);
    store.CloseKey();
    return value;
}

void writeValue(SettingsStore &store, int32_t root, const std::string &key, const std::string &name,
                const std::string &value, int32_t type)
{
    store.OpenKey(root, key);
    store.WriteValue(name, value, type);
    store.CloseKey();
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

int32_t ReadRegInt(SettingsStore &store, int32_t root, const std::string &key, const std::string &name, int32_t fallback)
{
    const std::string text = readValue(store, root, key, name);
    if (text.empty())
        return fallback;
    errno = 0;
    char *end = nullptr;
    const long long v = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || v < INT32_MIN || v > UINT32_MAX)
        return fallback;
    // A double word read back as a signed 32-bit number.
    return static_cast<int32_t>(static_cast<uint32_t>(v));
}

void WriteRegInt(SettingsStore &store, int32_t root, const std::string &key, const std::string &name, int32_t value)
{
    writeValue(store, root, key, name, std::to_string(value), SettingsStore::REG_DWORD);
}

int32_t ReadRegBinary(SettingsStore &store, int32_t root, const std::string &key, const std::string &name,
                      std::string &buffer, int32_t size)
{
    const std::string text = readValue(store, root, key, name);
    if (text.size() % 2 != 0)
        return 0;
    std::string bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        const int hi = hexDigit(text[i]), lo = hexDigit(text[i + 1]);
        if (hi < 0 || lo < 0)
            return 0;
        bytes.push_back(static_cast<char>(hi * 16 + lo));
    }
    const size_t n = std::min<size_t>(bytes.size(), static_cast<size_t>(std::max(0, size)));
    if (n == 0)
        return 0;
    buffer = bytes.substr(0, n);
    return static_cast<int32_t>(n);
}

void WriteRegBinary(SettingsStore &store, int32_t root, const std::string &key, const std::string &name,
                    const std::string &buffer, int32_t size)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    const size_t n = std::min<size_t>(buffer.size(), static_cast<size_t>(std::max(0, size)));
    for (size_t i = 0; i < n; ++i) {
        const auto b = static_cast<unsigned char>(buffer[i]);
        text += digits[b >> 4];
        text += digits[b & 15];
    }
    writeValue(store, root, key, name, text, SettingsStore::REG_BINARY);
}

} // namespace platform
