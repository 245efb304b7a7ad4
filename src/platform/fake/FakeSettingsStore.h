#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/SettingsStore.h"

namespace platform::fake {

// The registry as the fake keeps it: keys and value names compare without regard to case.
struct FakeRegistry {
    struct NoCase {
        bool operator()(const std::string &a, const std::string &b) const;
    };
    std::map<std::string, std::map<std::string, std::string, NoCase>, NoCase> keys;
    // Every call made, in order ("OpenKey Software\...", "ReadValue BufferSize", ...).
    std::vector<std::string> calls;
};

// A settings store on a FakeRegistry shared by every window's `reg1`.
class FakeSettingsStore : public SettingsStore {
public:
    explicit FakeSettingsStore(std::shared_ptr<FakeRegistry> registry) : m_registry(std::move(registry)) {}
    void OpenKey(int32_t root, const std::string &subKey) override;
    std::string ReadValue(const std::string &name) override;
    void WriteValue(const std::string &name, const std::string &value, int32_t type) override;
    void CloseKey() override;

private:
    std::shared_ptr<FakeRegistry> m_registry;
    std::string m_key;
    bool m_open = false;
};

} // namespace platform::fake
