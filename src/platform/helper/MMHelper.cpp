#include "MMHelper.h"

#include <algorithm>
#include <cstdio>

#include <filesystem>

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

} // namespace platform
