#include "FakeSettingsStore.h"

#include <algorithm>
#include <cctype>

#include "runtime/RuntimeError.h"

namespace platform::fake {

bool FakeRegistry::NoCase::operator()(const std::string &a, const std::string &b) const
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) < std::tolower(y);
    });
}

void FakeSettingsStore::OpenKey(int32_t root, const std::string &subKey)
{
    m_registry->calls.push_back("OpenKey " + subKey);
    if (root != HKEY_CURRENT_USER)
        rt::raise(rt::ErrInvalidCall);
    m_key = subKey;
    m_open = true;
}

std::string FakeSettingsStore::ReadValue(const std::string &name)
{
    m_registry->calls.push_back("ReadValue " + name);
    if (!m_open)
        rt::raise(rt::ErrInvalidCall);
    auto key = m_registry->keys.find(m_key);
    if (key == m_registry->keys.end())
        return {};
    auto value = key->second.find(name);
    return value == key->second.end() ? std::string() : value->second;
}

void FakeSettingsStore::WriteValue(const std::string &name, const std::string &value, int32_t type)
{
    m_registry->calls.push_back("WriteValue " + name);
    if (!m_open || (type != REG_SZ && type != REG_DWORD && type != REG_BINARY))
        rt::raise(rt::ErrInvalidCall);
    m_registry->keys[m_key][name] = value;
}

void FakeSettingsStore::CloseKey()
{
    m_registry->calls.push_back("CloseKey");
    m_open = false;
}

} // namespace platform::fake
