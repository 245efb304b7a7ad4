// Wave formats as the tools take them from outside: the same bytes as a format record, as the
// chooser's text and as the hex digits of the registry value the extraction tool reads its
// record from. Nothing may crash; a format that is read comes back the same from its own
// record or text.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/fake/FakeSettingsStore.h"
#include "platform/helper/RegistryValues.h"
#include "platform/helper/WaveFormatText.h"

namespace {

using platform::SettingsStore;
using platform::WaveFormat;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

bool sameShape(const WaveFormat &a, const WaveFormat &b)
{
    return a.formatTag == b.formatTag && a.channels == b.channels && a.sampleRate == b.sampleRate;
}

// The largest record the extraction tool asks for.
constexpr int32_t maxRecordBytes = 256;
const std::string key = "Software\\Fuzz";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char *>(data), size);

    if (const auto f = platform::parseWaveFormatRecord(bytes)) {
        check(!platform::waveFormatTagName(f->formatTag).empty());
        check(f->channels == 1 || f->channels == 2);
        const auto again = platform::parseWaveFormatRecord(platform::waveFormatRecord(*f));
        check(again && sameShape(*again, *f));
        (void)platform::waveFormatText(*f);
    }

    if (const auto f = platform::parseWaveFormatText(bytes)) {
        check(platform::parseWaveFormatText(platform::waveFormatText(*f)) == f);
        (void)platform::waveFormatRecord(*f);
    }

    auto registry = std::make_shared<platform::fake::FakeRegistry>();
    registry->keys[key]["WaveFormat"] = bytes;
    platform::fake::FakeSettingsStore store(registry);
    // The size asked for: the tool's own, or one from the input's first byte.
    const int32_t asked = size > 0 && (data[0] & 1) ? static_cast<int32_t>(data[0]) - 128 : maxRecordBytes;
    std::string buffer;
    const int32_t got = platform::ReadRegBinary(store, SettingsStore::HKEY_CURRENT_USER, key, "WaveFormat", buffer, asked);
    check(got >= 0 && got <= (asked > 0 ? asked : 0));
    check(got == 0 || buffer.size() == static_cast<size_t>(got));
    (void)platform::parseWaveFormatRecord(buffer);
    if (got > 0) {
        // Written back and read again, the record is the same.
        platform::WriteRegBinary(store, SettingsStore::HKEY_CURRENT_USER, key, "Copy", buffer, got);
        std::string copy;
        check(platform::ReadRegBinary(store, SettingsStore::HKEY_CURRENT_USER, key, "Copy", copy, got) == got);
        check(copy == buffer);
    }
    return 0;
}
