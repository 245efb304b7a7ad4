// The settings file as the store reads it: any text parses without a crash, and what is written
// back from it reads back the same.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/settings/FileSettingsStore.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using platform::settings::FileSettingsStore;
    const std::string text(reinterpret_cast<const char *>(data), size);
    const auto sections = FileSettingsStore::parse(text);
    const std::string written = FileSettingsStore::serialise(sections);
    if (FileSettingsStore::parse(written) != sections)
        __builtin_trap();
    return 0;
}
