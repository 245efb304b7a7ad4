#include "ImageSheet.h"

#include "SheetAudio.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

namespace platform::cdrom {

namespace fs = std::filesystem;

namespace {

constexpr long framesPerSecond = 75;
constexpr long bytesPerFrame = 2352;
constexpr long samplesPerFrame = 588;
// Sheets are small; anything bigger is no sheet.
constexpr std::uintmax_t maxSheetBytes = 4 * 1024 * 1024;

std::optional<std::string> readSheet(const fs::path &file)
{
    std::error_code ec;
    const auto size = fs::file_size(file, ec);
    if (ec || size > maxSheetBytes)
        return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream s;
    s << in.rdbuf();
    std::string text = s.str();
    // A byte order mark would hide the first line's keyword.
    if (text.rfind("\xEF\xBB\xBF", 0) == 0)
        text.erase(0, 3);
    return text;
}

std::vector<std::string> lines(const std::string &text)
{
    std::vector<std::string> out;
    std::string line;
    std::istringstream in(text);
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        out.push_back(line);
    }
    return out;
}

struct Token {
    std::string text;
    bool quoted = false;
};

// Words of a sheet line; a quoted name is one word, "//" starts a comment outside quotes.
std::vector<Token> tokens(const std::string &line)
{
    std::vector<Token> out;
    size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
        } else if (c == '"') {
            Token t{"", true};
            ++i;
            while (i < line.size() && line[i] != '"') {
                if (line[i] == '\\' && i + 1 < line.size())
                    ++i;
                t.text += line[i++];
            }
            ++i;
            out.push_back(t);
        } else if (c == '/' && i + 1 < line.size() && line[i + 1] == '/') {
            break;
        } else {
            Token t;
            while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i])) && line[i] != '"')
                t.text += line[i++];
            out.push_back(t);
        }
    }
    return out;
}

std::string upper(std::string s)
{
    for (char &c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::optional<long> number(std::string_view s)
{
    long v = 0;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || p != s.data() + s.size() || v < 0)
        return std::nullopt;
    return v;
}

std::optional<long> msfFrames(std::string_view s)
{
    const auto c1 = s.find(':');
    const auto c2 = c1 == std::string_view::npos ? c1 : s.find(':', c1 + 1);
    if (c2 == std::string_view::npos)
        return std::nullopt;
    const auto m = number(s.substr(0, c1));
    const auto sec = number(s.substr(c1 + 1, c2 - c1 - 1));
    const auto f = number(s.substr(c2 + 1));
    if (!m || !sec || !f || *sec >= 60 || *f >= framesPerSecond || *m > 99)
        return std::nullopt;
    return (*m * 60 + *sec) * framesPerSecond + *f;
}

std::string msf(long frames)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02ld:%02ld:%02ld", frames / (60 * framesPerSecond), (frames / framesPerSecond) % 60,
                  frames % framesPerSecond);
    return buf;
}

// A TOC position: MSF, or a count of samples.
std::optional<long> tocFrames(std::string_view s)
{
    if (s.find(':') != std::string_view::npos)
        return msfFrames(s);
    const auto samples = number(s);
    if (!samples)
        return std::nullopt;
    return *samples / samplesPerFrame;
}

std::string quote(const std::string &s)
{
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "\"";
}

struct CueFile {
    fs::path path;
    std::string type;  // upper case; empty when the sheet gives none
};

// The file of a FILE line; a name left unquoted may hold spaces.
std::optional<CueFile> cueFileOf(const std::vector<Token> &t, const fs::path &folder)
{
    if (t.size() < 2)
        return std::nullopt;
    std::string name = t[1].text;
    size_t typeAt = 2;
    if (!t[1].quoted && t.size() > 3) {
        for (size_t i = 2; i + 1 < t.size(); ++i)
            name += " " + t[i].text;
        typeAt = t.size() - 1;
    }
    if (name.empty())
        return std::nullopt;
    CueFile f;
    f.path = name;
    if (f.path.is_relative())
        f.path = folder / f.path;
    if (typeAt < t.size())
        f.type = upper(t[typeAt].text);
    return f;
}

bool isRawFile(const CueFile &f)
{
    if (f.type == "BINARY" || f.type == "MOTOROLA")
        return true;
    if (!f.type.empty())
        return false;
    const std::string ext = upper(f.path.extension().string());
    return ext != ".WAV" && ext != ".WAVE" && ext != ".AIF" && ext != ".AIFF" && ext != ".FLAC";
}

} // namespace

std::optional<SheetFacts> scanCue(const fs::path &cue)
{
    const auto text = readSheet(cue);
    if (!text)
        return std::nullopt;
    SheetFacts facts;
    bool fileBigEndian = false;
    bool ours = false;
    int session = 1;
    int sessionOfLastTrack = 1;
    int track = 0;
    std::optional<long> remSectors;
    for (const std::string &line : lines(*text)) {
        const auto t = tokens(line);
        if (t.empty())
            continue;
        const std::string key = upper(t[0].text);
        if (key == "FILE") {
            if (const auto file = cueFileOf(t, cue.parent_path())) {
                facts.files.push_back(file->path);
                fileBigEndian = file->type == "MOTOROLA";
            }
        } else if (key == "TRACK" && t.size() >= 2) {
            const auto n = number(t[1].text);
            track = n ? static_cast<int>(*n) : track + 1;
            facts.bigEndian[track] = fileBigEndian;
            if (session > sessionOfLastTrack)
                facts.laterSession[track] = true;
            sessionOfLastTrack = session;
            remSectors.reset();
        } else if (key == "REM" && t.size() >= 3 && upper(t[1].text) == "SESSION") {
            if (const auto n = number(t[2].text))
                session = static_cast<int>(*n);
        } else if (key == "REM" && t.size() >= 3 && upper(t[1].text) == "SECTORS") {
            remSectors = number(t[2].text);
        } else if (key == "REM" && t.size() >= 3 && t[1].text == "COMMENT" && t[2].text == "MP3 Brasswick Image Recorder") {
            ours = true;
        }
    }
    if (ours && remSectors && *remSectors > 0)
        facts.lastTrackSectors = remSectors;
    return facts;
}

bool cueReadsAsItStands(const fs::path &cue)
{
    const auto text = readSheet(cue);
    if (!text)
        return false;
    std::optional<CueFile> only;
    for (const std::string &line : lines(*text)) {
        const auto t = tokens(line);
        if (t.empty() || upper(t[0].text) != "FILE")
            continue;
        if (only)
            return false;
        only = cueFileOf(t, cue.parent_path());
        if (!only)
            return true;  // libcdio refuses it as we would
    }
    if (!only)
        return true;
    if (only->type != "BINARY" && only->type != "MOTOROLA")
        return false;
    // libcdio's own name for the BIN: the sheet's extension, "cue" turned "bin" letter by letter.
    std::string ext = cue.extension().string();
    for (char &c : ext) {
        const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const char to = lower == 'c' ? 'b' : lower == 'u' ? 'i' : lower == 'e' ? 'n' : lower;
        c = std::isupper(static_cast<unsigned char>(c)) ? static_cast<char>(std::toupper(to)) : to;
    }
    fs::path own = cue;
    own.replace_extension(ext);
    if (only->path.lexically_normal() == own.lexically_normal())
        return true;
    std::error_code ec;
    return fs::equivalent(only->path, own, ec);
}

std::optional<JoinedCue> joinCue(const fs::path &cue, const fs::path &bin)
{
    // No image holds more than this; a sheet naming more is no disc.
    constexpr long maxSectors = 100L * 60 * framesPerSecond;
    const auto text = readSheet(cue);
    const auto facts = scanCue(cue);
    if (!text || !facts)
        return std::nullopt;
    std::ofstream out(bin, std::ios::binary | std::ios::trunc);
    if (!out)
        return std::nullopt;
    const fs::path folder = cue.parent_path();
    JoinedCue joined;
    joined.facts = *facts;
    // The joined BIN is little-endian throughout, whatever byte order its files had: a track's
    // end may lie in the next file (the pause before the next track is the track's own).
    joined.facts.bigEndian.clear();
    long fileStart = 0;
    long fileSectors = -1;  // none before the first FILE line
    long nextStart = 0;
    for (const std::string &line : lines(*text)) {
        const auto t = tokens(line);
        const std::string key = t.empty() ? std::string() : upper(t[0].text);
        const std::string indent = line.substr(0, line.find_first_not_of(" \t"));
        if (key == "FILE") {
            const auto file = cueFileOf(t, folder);
            if (!file)
                return std::nullopt;
            const std::uint64_t room = static_cast<std::uint64_t>(maxSectors - nextStart) * bytesPerFrame;
            const auto bytes = isRawFile(*file) ? appendRawFile(file->path, out, room, file->type == "MOTOROLA")
                                                : appendSoundFile(file->path, out, room);
            if (!bytes)
                return std::nullopt;
            // Each file starts on a sector of its own.
            const std::uint64_t pad = (bytesPerFrame - *bytes % bytesPerFrame) % bytesPerFrame;
            out << std::string(pad, '\0');
            if (fileSectors < 0)
                joined.text += indent + "FILE " + quote(bin.string()) + " BINARY\n";
            fileStart = nextStart;
            fileSectors = static_cast<long>((*bytes + pad) / bytesPerFrame);
            nextStart = fileStart + fileSectors;
        } else if (key == "INDEX") {
            const auto frames = t.size() >= 3 ? msfFrames(t[2].text) : std::nullopt;
            if (!frames || fileSectors < 0 || *frames >= fileSectors)
                return std::nullopt;
            joined.text += indent + "INDEX " + t[1].text + " " + msf(fileStart + *frames) + "\n";
        } else if (key == "CDTEXTFILE" && t.size() >= 2 && fs::path(t[1].text).is_relative()) {
            joined.text += indent + "CDTEXTFILE " + quote((folder / t[1].text).string()) + "\n";
        } else {
            joined.text += line + "\n";
        }
    }
    out.close();
    if (!out || fileSectors < 0)
        return std::nullopt;
    return joined;
}

namespace {

bool endsWithWord(const std::string &text, std::string_view word)
{
    size_t end = text.find_last_not_of(" \t\r\n");
    if (end == std::string::npos || end + 1 < word.size())
        return false;
    return upper(text.substr(end + 1 - word.size(), word.size())) == word;
}

// CD-Text blocks laid out as libcdio reads them: one brace to a line, but the language map on a
// line of its own, whole. cdrdao takes either layout, "CD_TEXT { LANGUAGE 0 { TITLE "One" } }" too.
std::string spreadBraces(const std::string &text)
{
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (!quoted && c == '{' && endsWithWord(out, "LANGUAGE_MAP")) {
            const size_t close = text.find('}', i);
            std::string map = text.substr(i, close == std::string::npos ? std::string::npos : close + 1 - i);
            std::replace(map.begin(), map.end(), '\n', ' ');
            std::replace(map.begin(), map.end(), '\r', ' ');
            out += map + "\n";
            if (close == std::string::npos)
                break;
            i = close;
            continue;
        }
        if (quoted) {
            out += c;
            if (c == '\\' && i + 1 < text.size())
                out += text[++i];
            else if (c == '"')
                quoted = false;
        } else if (c == '"') {
            quoted = true;
            out += c;
        } else if (c == '{') {
            out += "{\n";
        } else if (c == '}') {
            out += "\n}\n";
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

std::optional<RewrittenToc> rewriteToc(const fs::path &toc)
{
    const auto read = readSheet(toc);
    if (!read)
        return std::nullopt;
    const std::optional<std::string> text = spreadBraces(*read);
    const fs::path folder = toc.parent_path();
    RewrittenToc out;
    int track = 0;
    for (const std::string &line : lines(*text)) {
        const auto t = tokens(line);
        const std::string key = t.empty() ? std::string() : upper(t[0].text);
        if (key == "TRACK") {
            ++track;
            out.text += line + "\n";
        } else if ((key == "FILE" || key == "AUDIOFILE" || key == "DATAFILE") && track > 0) {
            if (t.size() < 2 || !t[1].quoted || t[1].text.empty())
                return std::nullopt;
            fs::path file = t[1].text;
            if (file.is_relative())
                file = folder / file;
            if (std::find(out.facts.files.begin(), out.facts.files.end(), file) == out.facts.files.end())
                out.facts.files.push_back(file);
            bool swap = false;
            long offsetFrames = 0;
            size_t i = 2;
            if (i < t.size() && upper(t[i].text) == "SWAP") {
                swap = true;
                ++i;
            }
            if (i < t.size() && !t[i].text.empty() && t[i].text[0] == '#') {
                const auto bytes = number(std::string_view(t[i].text).substr(1));
                if (!bytes)
                    return std::nullopt;
                offsetFrames = *bytes / bytesPerFrame;
                ++i;
            }
            std::optional<long> start;
            std::optional<long> length;
            if (key == "DATAFILE") {
                start = offsetFrames;
                if (i < t.size())
                    length = t[i].text.find(':') != std::string::npos ? msfFrames(t[i].text) : number(t[i].text);
                if (i < t.size() && !length)
                    return std::nullopt;
                if (length && t[i].text.find(':') == std::string::npos)
                    *length /= bytesPerFrame;
            } else {
                if (i >= t.size())
                    return std::nullopt;
                start = tocFrames(t[i].text);
                if (!start)
                    return std::nullopt;
                *start += offsetFrames;
                if (++i < t.size()) {
                    length = tocFrames(t[i].text);
                    if (!length)
                        return std::nullopt;
                }
                // cdrdao's raw audio is big-endian unless it says SWAP; a wave file is little-endian.
                std::string ext = upper(file.extension().string());
                out.facts.bigEndian[track] = !swap && ext != ".WAV";
            }
            out.text += "FILE " + quote(file.string()) + " " + msf(*start);
            if (length)
                out.text += " " + msf(*length);
            out.text += "\n";
        } else if ((key == "START" || key == "PREGAP" || key == "SILENCE") && t.size() >= 2) {
            const auto frames = tocFrames(t[1].text);
            if (!frames)
                return std::nullopt;
            out.text += t[0].text + " " + msf(*frames) + "\n";
        } else {
            out.text += line + "\n";
        }
    }
    if (track == 0)
        return std::nullopt;
    return out;
}

} // namespace platform::cdrom
