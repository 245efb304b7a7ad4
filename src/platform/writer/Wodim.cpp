#include "Wodim.h"

#include <algorithm>
#include <cctype>
#include <regex>

#include "CueSheet.h"

namespace platform::writer {

namespace {

// Inquiry strings come padded with blanks ("SONY    ").
std::string tidy(std::string_view s)
{
    std::string out;
    bool blank = false;
    for (char c : s) {
        if (c == ' ' || c == '\t') {
            blank = !out.empty();
            continue;
        }
        if (blank)
            out.push_back(' ');
        blank = false;
        out.push_back(c);
    }
    return out;
}

std::string lower(std::string_view s)
{
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

template <class Each>
void forEachLine(std::string_view text, Each each)
{
    size_t pos = 0;
    while (pos <= text.size()) {
        auto nl = text.find_first_of("\r\n", pos);
        if (nl == std::string_view::npos)
            nl = text.size();
        each(std::string(text.substr(pos, nl - pos)));
        pos = nl + 1;
    }
}

void addCommon(std::vector<std::string> &args, const WodimSettings &s)
{
    args.push_back("-v");
    args.push_back("dev=" + s.device);
    if (!s.driverName.empty())
        args.push_back("driver=" + s.driverName);
}

} // namespace

std::string WodimDevice::displayName() const
{
    std::string name = tidy(vendor);
    const std::string m = tidy(model);
    if (!m.empty())
        name += name.empty() ? m : " " + m;
    return name.empty() ? dev : name + " (" + dev + ")";
}

std::vector<WodimDevice> parseDeviceList(std::string_view output)
{
    static const std::regex line(R"(dev='([^']+)'[^:]*:\s*'([^']*)'\s*'([^']*)')");
    std::vector<WodimDevice> devices;
    forEachLine(output, [&](const std::string &l) {
        std::smatch m;
        if (std::regex_search(l, m, line))
            devices.push_back({m[1].str(), m[2].str(), m[3].str()});
    });
    return devices;
}

std::vector<WodimDevice> parseScanbus(std::string_view output)
{
    static const std::regex line(R"(^\s*(\d+,\d+,\d+)\s+\d+\)\s+'([^']*)'\s+'([^']*)'\s+'[^']*'\s+(.*)$)");
    std::vector<WodimDevice> devices;
    forEachLine(output, [&](const std::string &l) {
        std::smatch m;
        if (std::regex_search(l, m, line) && m[4].str().find("CD-ROM") != std::string::npos)
            devices.push_back({m[1].str(), m[2].str(), m[3].str()});
    });
    return devices;
}

std::optional<int> parseProgressPercent(std::string_view line)
{
    static const std::regex progress(R"(Track\s+\d+:\s+(\d+)\s+of\s+(\d+)\s+MB written)");
    std::match_results<std::string_view::const_iterator> m;
    if (!std::regex_search(line.begin(), line.end(), m, progress))
        return std::nullopt;
    const long long written = std::stoll(m[1].str());
    const long long total = std::stoll(m[2].str());
    if (total <= 0)
        return std::nullopt;
    return static_cast<int>(std::clamp(written * 100 / total, 0LL, 100LL));
}

int classifyDiscState(std::string_view output, int exitCode)
{
    const std::string text = lower(output);
    auto says = [&](std::string_view what) { return text.find(what) != std::string::npos; };
    // No medium first: its sense key reads "Not Ready" as well.
    if (says("medium not present") || says("no disk / wrong disk") || says("cannot load media"))
        return -1;
    if (says("not ready") || says("becoming ready"))
        return 1;
    // Only recordable media carry ATIP; a pressed CD has none.
    if (says("atip info from disk"))
        return 0;
    (void)exitCode;
    return 1;
}

int64_t fifoBytes(int fifoBufferCount, int sectorsPerBuffer)
{
    const int64_t count = fifoBufferCount > 0 ? fifoBufferCount : defaultFifoBufferCount;
    const int64_t sectors = sectorsPerBuffer > 0 ? sectorsPerBuffer : defaultSectorsPerBuffer;
    constexpr int64_t most = 128LL * 1024 * 1024;
    // Capped step by step so that no product can overflow: at most 2^54 sectors, and then no
    // more sectors than the cap's bytes hold.
    const int64_t allSectors = std::min(count, most) * std::min(sectors, most);
    return std::min(std::min(allSectors, most / sectorBytes + 1) * sectorBytes, most);
}

std::vector<std::string> wodimWriteArguments(const WodimSettings &s, const std::string &waveFile)
{
    std::vector<std::string> args;
    addCommon(args, s);
    if (s.speed > 0)
        args.push_back("speed=" + std::to_string(s.speed));
    if (s.fifoBytes > 0)
        args.push_back("fs=" + std::to_string(s.fifoBytes));
    // -copy: the user's own tracks may be copied, as the Image Recorder's FLAGS DCP says.
    for (const char *a : {"-tao", "-audio", "-copy", "-pad", "-nofix"})
        args.emplace_back(a);
    if (s.dummy)
        args.emplace_back("-dummy");
    args.emplace_back("-text");
    args.emplace_back("-useinfo");
    args.push_back(waveFile);
    return args;
}

std::vector<std::string> wodimFixArguments(const WodimSettings &s)
{
    std::vector<std::string> args;
    addCommon(args, s);
    if (s.dummy)
        args.emplace_back("-dummy");
    args.emplace_back("-fix");
    return args;
}

std::vector<std::string> wodimAtipArguments(const WodimSettings &s)
{
    std::vector<std::string> args;
    addCommon(args, s);
    args.emplace_back("-atip");
    return args;
}

std::string infFileText(const std::string &title, const std::string &performer)
{
    // wodim reads a quoted value up to the last quote, so quotes inside stay.
    std::string out = "# written for wodim -useinfo\n";
    out += "Tracktitle=\t'" + title + "'\n";
    out += "Performer=\t'" + performer + "'\n";
    // -useinfo takes the copy bit from here over the command line's.
    out += "Copy_permitted=\tyes\n";
    return out;
}

} // namespace platform::writer
