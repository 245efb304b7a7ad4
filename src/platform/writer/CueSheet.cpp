#include "CueSheet.h"

#include <charconv>
#include <cstdio>

namespace platform::writer {

namespace {

// The REM line that marks a sheet as one of ours; others in the folder are left alone.
constexpr std::string_view marker = "REM COMMENT \"MP3 Brasswick Image Recorder\"";
constexpr std::string_view discOpen = "REM DISC OPEN";
constexpr std::string_view discFinalised = "REM DISC FINALISED";

// Code points of valid UTF-8; false when the bytes aren't UTF-8.
bool decodeUtf8(std::string_view s, std::vector<char32_t> &out)
{
    out.clear();
    size_t i = 0;
    while (i < s.size()) {
        const auto b = static_cast<unsigned char>(s[i]);
        int extra = 0;
        char32_t cp = 0;
        if (b < 0x80) {
            cp = b;
        } else if (b >= 0xC2 && b <= 0xDF) {
            extra = 1;
            cp = b & 0x1F;
        } else if (b >= 0xE0 && b <= 0xEF) {
            extra = 2;
            cp = b & 0x0F;
        } else if (b >= 0xF0 && b <= 0xF4) {
            extra = 3;
            cp = b & 0x07;
        } else {
            return false;
        }
        if (i + static_cast<size_t>(extra) >= s.size() && extra > 0)
            return false;
        for (int k = 1; k <= extra; ++k) {
            const auto c = static_cast<unsigned char>(s[i + static_cast<size_t>(k)]);
            if ((c & 0xC0) != 0x80)
                return false;
            cp = (cp << 6) | (c & 0x3F);
        }
        // Overlong forms and surrogates are no UTF-8.
        if ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF))
            || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        out.push_back(cp);
        i += static_cast<size_t>(extra) + 1;
    }
    return true;
}

std::string trimmed(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.remove_suffix(1);
    return std::string(s);
}

bool startsWith(std::string_view s, std::string_view prefix)
{
    return s.substr(0, prefix.size()) == prefix;
}

// The text between the first and the last double quote of a line's rest.
std::optional<std::string> quoted(std::string_view rest)
{
    const auto first = rest.find('"');
    const auto last = rest.rfind('"');
    if (first == std::string_view::npos || last == first)
        return std::nullopt;
    return std::string(rest.substr(first + 1, last - first - 1));
}

std::optional<int64_t> number(std::string_view s)
{
    int64_t v = 0;
    const auto *end = s.data() + s.size();
    auto [p, ec] = std::from_chars(s.data(), end, v);
    if (ec != std::errc() || p != end || v < 0)
        return std::nullopt;
    return v;
}

} // namespace

std::string formatMsf(int64_t sector)
{
    if (sector < 0)
        sector = 0;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02lld:%02lld:%02lld", static_cast<long long>(sector / (60 * sectorsPerSecond)),
                  static_cast<long long>((sector / sectorsPerSecond) % 60), static_cast<long long>(sector % sectorsPerSecond));
    return buf;
}

std::optional<int64_t> parseMsf(std::string_view text)
{
    const auto c1 = text.find(':');
    const auto c2 = c1 == std::string_view::npos ? c1 : text.find(':', c1 + 1);
    if (c2 == std::string_view::npos)
        return std::nullopt;
    const auto m = number(text.substr(0, c1));
    const auto s = number(text.substr(c1 + 1, c2 - c1 - 1));
    const auto f = number(text.substr(c2 + 1));
    // No image of ours is near 100000 minutes; more would only overflow.
    if (!m || !s || !f || *m >= 100000 || *s >= 60 || *f >= sectorsPerSecond)
        return std::nullopt;
    return (*m * 60 + *s) * sectorsPerSecond + *f;
}

std::string cdText(std::string_view tag)
{
    std::vector<char32_t> cps;
    if (!decodeUtf8(tag, cps)) {
        // Not UTF-8: Windows-1252 bytes, whose 0x80..0x9F ISO 8859-1 hasn't.
        cps.clear();
        for (char c : tag) {
            const auto b = static_cast<unsigned char>(c);
            cps.push_back(b >= 0x80 && b < 0xA0 ? U'?' : static_cast<char32_t>(b));
        }
    }
    std::string out;
    for (char32_t cp : cps) {
        if (cp < 0x20 || (cp >= 0x7F && cp < 0xA0))
            cp = U' ';
        else if (cp == U'"')
            cp = U'\'';
        else if (cp > 0xFF)
            cp = U'?';
        out.push_back(static_cast<char>(static_cast<unsigned char>(cp)));
    }
    out = trimmed(out);
    if (out.size() > 80)
        out = trimmed(out.substr(0, 80));
    return out;
}

std::string renderCue(const ImageSheet &sheet)
{
    std::string out;
    out += marker;
    out += '\n';
    out += sheet.finalised ? discFinalised : discOpen;
    out += '\n';
    out += "FILE \"" + sheet.binName + "\" BINARY\n";
    int number = 0;
    for (const ImageTrack &t : sheet.tracks) {
        char head[32];
        std::snprintf(head, sizeof head, "  TRACK %02d AUDIO\n", ++number);
        out += head;
        // The user's own tracks: a copy is permitted, as the wodim path's -copy writes it.
        out += "    FLAGS DCP\n";
        out += "    TITLE \"" + t.title + "\"\n";
        if (!t.performer.empty())
            out += "    PERFORMER \"" + t.performer + "\"\n";
        if (t.pauseStart < t.start)
            out += "    INDEX 00 " + formatMsf(t.pauseStart) + "\n";
        out += "    INDEX 01 " + formatMsf(t.start) + "\n";
        // The length of the last track isn't in the indexes; the BIN may be longer after a crash.
        if (&t == &sheet.tracks.back()) {
            out += "    REM SECTORS " + std::to_string(t.length) + "\n";
        }
    }
    return out;
}

std::optional<ImageSheet> parseCue(std::string_view text)
{
    ImageSheet sheet;
    bool ours = false;
    bool haveState = false;
    bool haveFile = false;
    int64_t lastLength = -1; // REM SECTORS of the last track
    struct Raw {
        ImageTrack track;
        std::optional<int64_t> index0;
        std::optional<int64_t> index1;
    };
    std::vector<Raw> raw;
    size_t pos = 0;
    while (pos < text.size()) {
        auto nl = text.find('\n', pos);
        if (nl == std::string_view::npos)
            nl = text.size();
        const std::string line = trimmed(text.substr(pos, nl - pos));
        pos = nl + 1;
        if (line.empty())
            continue;
        if (line == marker) {
            ours = true;
        } else if (line == discOpen || line == discFinalised) {
            haveState = true;
            sheet.finalised = line == discFinalised;
        } else if (startsWith(line, "REM SECTORS ")) {
            const auto n = number(trimmed(line.substr(12)));
            if (raw.empty() || !n)
                return std::nullopt;
            lastLength = *n;
        } else if (startsWith(line, "REM")) {
            // a remark of someone else's
        } else if (startsWith(line, "FILE ")) {
            auto name = quoted(line.substr(5));
            if (haveFile || !name || name->empty() || line.substr(line.rfind('"') + 1).find("BINARY") == std::string::npos)
                return std::nullopt;
            sheet.binName = *name;
            haveFile = true;
        } else if (startsWith(line, "TRACK ")) {
            char type[16] = {};
            int n = 0;
            if (!haveFile || std::sscanf(line.c_str(), "TRACK %d %15s", &n, type) != 2 || n != static_cast<int>(raw.size()) + 1
                || std::string_view(type) != "AUDIO")
                return std::nullopt;
            raw.emplace_back();
            lastLength = -1;
        } else if (startsWith(line, "FLAGS")) {
            if (raw.empty())
                return std::nullopt;
        } else if (startsWith(line, "TITLE ") || startsWith(line, "PERFORMER ")) {
            auto value = quoted(line);
            if (!value)
                return std::nullopt;
            if (!raw.empty())
                (startsWith(line, "TITLE ") ? raw.back().track.title : raw.back().track.performer) = *value;
        } else if (startsWith(line, "INDEX ")) {
            if (raw.empty())
                return std::nullopt;
            const std::string rest = trimmed(line.substr(6));
            const auto space = rest.find(' ');
            if (space == std::string::npos)
                return std::nullopt;
            const auto index = number(rest.substr(0, space));
            const auto at = parseMsf(trimmed(rest.substr(space + 1)));
            if (!index || !at || *index > 1)
                return std::nullopt;
            Raw &r = raw.back();
            std::optional<int64_t> &slot = *index == 0 ? r.index0 : r.index1;
            if (slot || (*index == 0 && r.index1))
                return std::nullopt;
            slot = *at;
        } else {
            return std::nullopt;
        }
    }
    if (!ours || !haveState || !haveFile || raw.empty() || lastLength < 0)
        return std::nullopt;
    int64_t previousStart = 0;
    for (size_t i = 0; i < raw.size(); ++i) {
        ImageTrack t = raw[i].track;
        if (!raw[i].index1 || (i == 0 && raw[i].index0))
            return std::nullopt;
        t.start = *raw[i].index1;
        t.pauseStart = raw[i].index0.value_or(t.start);
        if (t.pauseStart > t.start || t.pauseStart < previousStart || (i == 0 && t.start != 0)
            || (i > 0 && t.pauseStart == previousStart))
            return std::nullopt;
        if (i > 0) {
            ImageTrack &prev = sheet.tracks.back();
            prev.length = t.pauseStart - prev.start;
        }
        sheet.tracks.push_back(t);
        previousStart = t.start;
    }
    sheet.tracks.back().length = lastLength;
    for (const ImageTrack &t : sheet.tracks) {
        if (t.length <= 0)
            return std::nullopt;
    }
    return sheet;
}

} // namespace platform::writer
