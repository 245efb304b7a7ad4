#include "MMHelper.h"

#include <algorithm>
#include <cstdio>

#include <filesystem>

#include "WaveFormatText.h"
#include "runtime/Paths.h"
#include "runtime/Strings.h"

namespace platform {

std::string MMHelper::ExtractExt(const std::string &path) const
{
    // The dot must stand in the last part of the path: "a.b\c" has no extension.
    const size_t sep = path.find_last_of("\\/");
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (sep != std::string::npos && dot < sep))
        return {};
    return path.substr(dot);
}

int MMHelper::PosText(const std::string &needle, const std::string &text) const
{
    if (needle.empty())
        return 0;
    return static_cast<int>(rt::InStr(1, text, needle));
}

std::string MMHelper::CopyText(const std::string &text, int start, int count) const
{
    if (count <= 0 || start < 1)
        return {};
    return rt::Mid(text, start, count);
}

void MMHelper::DeleteTarget(const std::string &path) const
{
    if (path.empty())
        return;
    std::error_code ec;
    const std::filesystem::path target = rt::nativePath(path);
    if (std::filesystem::is_regular_file(target, ec) || std::filesystem::is_symlink(target, ec))
        std::filesystem::remove(target, ec);
}

std::string MMHelper::FormatPosition(int64_t positionMs, int formatHandle, bool withMs) const
{
    (void)formatHandle;
    const int64_t ms = std::max<int64_t>(0, positionMs);
    char text[40];
    if (withMs)
        std::snprintf(text, sizeof text, "%lld:%02lld.%03lld", static_cast<long long>(ms / 60000), static_cast<long long>(ms / 1000 % 60),
                      static_cast<long long>(ms % 1000));
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", static_cast<long long>(ms / 60000), static_cast<long long>(ms / 1000 % 60));
    return text;
}

std::string MMHelper::TimeText(int64_t ms) const
{
    if (ms < 0)
        return "-" + TimeText(-ms);
    const int64_t seconds = ms / 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                  static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    return text;
}

int32_t MulDiv(int32_t a, int32_t b, int32_t c)
{
    if (c == 0)
        return -1;
    const int64_t product = static_cast<int64_t>(a) * b;
    // Rounded half away from zero, as the system rounds.
    const bool negative = (product < 0) != (c < 0);
    const uint64_t num = static_cast<uint64_t>(product < 0 ? -product : product);
    const uint64_t den = static_cast<uint64_t>(c < 0 ? -static_cast<int64_t>(c) : c);
    const uint64_t q = (num + den / 2) / den;
    if (q > static_cast<uint64_t>(INT32_MAX) + (negative ? 1 : 0))
        return -1;
    return negative ? static_cast<int32_t>(-static_cast<int64_t>(q)) : static_cast<int32_t>(q);
}

int32_t MMWaveHelper::FormatSize(const WaveFormat &format) const
{
    return static_cast<int32_t>(waveFormatRecord(format).size());
}

} // namespace platform
