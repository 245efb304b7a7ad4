#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "platform/SettingsStore.h"

namespace platform::settings {

// The registry kept as a text file under the user's XDG config folder
// ($XDG_CONFIG_HOME/velmora-works/registry.ini, or ~/.config/...). Each key is a section
// "[HKCU\Software\Velmora Works\MP3 Data]" of "name=value" lines; names compare without regard to
// case, as the registry's do. Every write replaces the file through a temporary file and a
// rename, so a crash never loses a key.
class FileSettingsStore : public SettingsStore {
public:
    // The file used when none is given: under XDG_CONFIG_HOME or ~/.config.
    static std::filesystem::path defaultFile();
    // The extraction tool's store, a file of its own beside it: mervane/dac.ini.
    static std::filesystem::path extractionFile();
    explicit FileSettingsStore(std::filesystem::path file = defaultFile());

    void OpenKey(int32_t root, const std::string &subKey) override;
    std::string ReadValue(const std::string &name) override;
    void WriteValue(const std::string &name, const std::string &value, int32_t type) override;
    void CloseKey() override;

    // The file's text as sections of values; lines that make no sense are skipped.
    using Values = std::map<std::string, std::string>;
    static std::map<std::string, Values> parse(const std::string &text);
    static std::string serialise(const std::map<std::string, Values> &sections);

private:
    std::map<std::string, Values> load() const;

    std::filesystem::path m_file;
    std::string m_section;
    bool m_open = false;
};

} // namespace platform::settings
