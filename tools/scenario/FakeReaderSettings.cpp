#include "FakeReaderSettings.h"

#include <cstdlib>
#include <optional>

#include "platform/fake/FakeComponents.h"

namespace scenario {

namespace {

std::optional<long> number(const std::string &text)
{
    if (text.empty())
        return std::nullopt;
    char *end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    return *end == '\0' ? std::optional<long>(v) : std::nullopt;
}

// A position: frames ("18225"), minutes, seconds and frames as shown ("4:03.12"), or as a CUE
// sheet writes them ("04:03:12").
std::optional<int32_t> position(const std::string &text)
{
    if (auto n = number(text))
        return static_cast<int32_t>(*n);
    int minutes = 0, seconds = 0, frames = 0;
    char sep = 0;
    if (std::sscanf(text.c_str(), "%d:%d%c%d", &minutes, &seconds, &sep, &frames) == 4 && (sep == '.' || sep == ':'))
        return (minutes * 60 + seconds) * 75 + frames;
    if (std::sscanf(text.c_str(), "%d:%d", &minutes, &seconds) == 2)
        return (minutes * 60 + seconds) * 75;
    return std::nullopt;
}

} // namespace

bool setFakeReader(platform::fake::FakeWorld &world, const std::vector<Token> &t, std::string &error)
{
    platform::fake::FakeReaderWorld &r = *world.reader;
    const std::string setting = t.empty() ? std::string() : t[0].text;
    const size_t n = t.size();
    auto bad = [&](const std::string &usage) {
        error = "fake reader " + usage;
        return false;
    };
    if (setting == "absent" && n == 1) {
        world.hasReader = false;
    } else if (setting == "drives") {
        r.drives.clear();
        if (n == 2 && t[1].text == "none")
            return true;
        if (n < 3 || (n - 1) % 2 != 0)
            return bad("drives \"LETTER\" \"NAME\"... | none");
        for (size_t i = 1; i + 1 < n; i += 2)
            r.drives.push_back({0, t[i].text, t[i + 1].text});
    } else if (setting == "disc" && n == 2) {
        const std::string &v = t[1].text;
        if (v == "in") {
            r.discIn = true;
            r.trayOpen = false;
            r.vanished = false;
        } else if (v == "out") {
            r.discIn = false;
        } else if (v == "open") {
            r.trayOpen = true;
        } else if (v == "gone") {
            r.vanished = true;
        } else {
            return bad("disc in|out|open|gone");
        }
    } else if (setting == "status" && n == 2) {
        if (t[1].text == "auto")
            r.statusOverride = -1;
        else if (auto v = number(t[1].text))
            r.statusOverride = static_cast<int>(*v);
        else
            return bad("status N|auto");
    } else if (setting == "tracks" && n == 2 && t[1].text == "none") {
        r.tracks.clear();
    } else if (setting == "track" && n >= 3) {
        platform::fake::FakeReaderWorld::Track track;
        const auto start = position(t[1].text);
        const auto length = position(t[2].text);
        if (!start || !length)
            return bad("track START LENGTH [data] [protected] [preemphasis] [title \"T\"] [isrc \"C\"] [textisrc \"C\"]");
        track.entry.Number = static_cast<int>(r.tracks.size()) + 1;
        track.entry.Start = *start;
        track.entry.Length = *length;
        for (size_t i = 3; i < n; ++i) {
            const std::string &w = t[i].text;
            if (w == "data") {
                track.entry.IsAudio = false;
            } else if (w == "protected") {
                track.entry.CopyProtected = true;
            } else if (w == "preemphasis") {
                track.entry.PreEmphasis = true;
            } else if ((w == "title" || w == "isrc" || w == "textisrc" || w == "number") && i + 1 < n) {
                const std::string &v = t[++i].text;
                if (w == "title")
                    track.title = v;
                else if (w == "isrc")
                    track.isrc = v;
                else if (w == "textisrc")
                    track.textIsrc = v;
                else if (auto num = number(v))
                    track.entry.Number = static_cast<int>(*num);
                else
                    return bad("track ... number N");
            } else {
                return bad("track: unknown word \"" + w + "\"");
            }
        }
        r.tracks.push_back(track);
    } else if (setting == "cdtext" && n == 2) {
        r.cdText = true;
        r.discTitle = t[1].text;
    } else if (setting == "nocdtext" && n == 1) {
        r.cdText = false;
    } else if (setting == "discid" && n == 2 && number(t[1].text)) {
        r.discId = static_cast<int32_t>(*number(t[1].text));
    } else if (setting == "contents" && n == 2 && (t[1].text == "fail" || t[1].text == "ok")) {
        r.contentsFail = t[1].text == "fail";
    } else if (setting == "canisrc" && n == 2 && (t[1].text == "yes" || t[1].text == "no")) {
        r.canReadIsrc = t[1].text == "yes";
    } else if (setting == "speeds") {
        r.speeds.clear();
        if (n == 2 && t[1].text == "none")
            return true;
        if (n < 3 || (n - 1) % 2 != 0)
            return bad("speeds \"TEXT\" VALUE... | none");
        for (size_t i = 1; i + 1 < n; i += 2) {
            const auto v = number(t[i + 1].text);
            if (!v)
                return bad("speeds \"TEXT\" VALUE...");
            r.speeds.emplace_back(t[i].text, static_cast<int>(*v));
        }
    } else if (setting == "pace" && n == 2 && number(t[1].text) && *number(t[1].text) > 0) {
        r.framesPerSecond = static_cast<int>(*number(t[1].text));
    } else if (setting == "error" && n == 2 && position(t[1].text)) {
        r.errorFrame = *position(t[1].text);
    } else if ((setting == "fail" || setting == "works") && n == 2) {
        r.failing[t[1].text] = setting == "fail";
    } else {
        error = "unknown fake setting \"reader " + setting + "\"";
        return false;
    }
    return true;
}

} // namespace scenario
