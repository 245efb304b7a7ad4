#include "Paths.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "RuntimeError.h"
#include "Strings.h"

namespace fs = std::filesystem;

namespace rt {

namespace {

bool isRegularFile(const fs::path &p)
{
    std::error_code ec;
    return fs::is_regular_file(p, ec);
}

// Glob of "*" (any run) and "?" (one character), compared without regard to case.
bool globMatch(std::string_view pattern, std::string_view name)
{
    size_t p = 0, n = 0;
    size_t starP = std::string_view::npos, starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

// One pattern, or several separated by ";" as a file list's pattern may be ("*.mp3;*.wav").
// "*.*" means every file, with or without an extension.
bool matchesAny(std::string_view patterns, const std::string &lowerName)
{
    if (patterns.empty())
        return true;
    size_t start = 0;
    for (;;) {
        const size_t end = patterns.find(';', start);
        std::string one = LCase(patterns.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (one == "*.*")
            one = "*";
        if (!one.empty() && globMatch(one, lowerName))
            return true;
        if (end == std::string_view::npos)
            return false;
        start = end + 1;
    }
}

// A file of a folder: its name as the logic shows it, and the bytes that open it.
struct FolderEntry {
    std::string text;
    std::string bytes;
};

// The regular files of the folder whose names match, in the order a file list box shows them:
// case-insensitively by the shown name, ties by its bytes.
std::vector<FolderEntry> matchingFiles(const fs::path &dir, std::string_view pattern)
{
    std::vector<std::pair<std::string, FolderEntry>> keyed; // (lower-case key, entry)
    std::error_code ec;
    fs::directory_iterator it(dir, ec);
    if (ec)
        return {};
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec)
            break;
        std::error_code fileEc;
        if (!it->is_regular_file(fileEc))
            continue;
        FolderEntry entry;
        entry.bytes = it->path().filename().string();
        entry.text = nameText(entry.bytes);
        std::string key = LCase(entry.text);
        if (matchesAny(pattern, key))
            keyed.emplace_back(std::move(key), std::move(entry));
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) {
        if (a.first != b.first)
            return a.first < b.first;
        return a.second.text != b.second.text ? a.second.text < b.second.text : a.second.bytes < b.second.bytes;
    });
    std::vector<FolderEntry> entries;
    entries.reserve(keyed.size());
    for (auto &k : keyed)
        entries.push_back(std::move(k.second));
    return entries;
}

bool hasWildcard(std::string_view s) { return s.find_first_of("*?") != std::string_view::npos; }

bool isAscii(std::string_view s)
{
    return std::all_of(s.begin(), s.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool onDisc(const std::string &path)
{
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

// How many parts of the path, from the first, are on disc when each part is taken either as
// written or in Windows-1252 bytes; `found` holds those parts joined as they were found. As
// written wins when both lead equally far, and a part that is not there in either form ends
// the search (a file about to be made, or a missing one).
size_t deepestOnDisc(const std::vector<std::string> &parts, size_t i, const std::string &prefix, std::string &found)
{
    found = prefix;
    if (i == parts.size())
        return i;
    const std::string &part = parts[i];
    const bool last = i + 1 == parts.size();
    auto joined = [&](const std::string &name) { return last ? prefix + name : prefix + name + "/"; };
    if (part.empty() || part == "." || part == "..")
        return deepestOnDisc(parts, i + 1, joined(part), found);
    std::vector<std::string> forms{part};
    if (!isAscii(part) && isUtf8(part)) {
        std::string legacy = toAnsi(part);
        // Only a name each of whose characters has a Windows-1252 code can have been one.
        if (fromAnsi(legacy) == part)
            forms.push_back(std::move(legacy));
    }
    size_t best = i;
    for (const std::string &form : forms) {
        if (!onDisc(prefix + form))
            continue;
        std::string reached;
        const size_t depth = deepestOnDisc(parts, i + 1, joined(form), reached);
        if (depth > best) {
            best = depth;
            found = std::move(reached);
        }
    }
    return best;
}

} // namespace

std::string nameText(std::string_view bytes)
{
    if (isUtf8(bytes))
        return std::string(bytes);
    // Each name of a path on its own: one folder may come from an old disc, the next not.
    std::string text;
    for (size_t start = 0;;) {
        const size_t slash = bytes.find('/', start);
        const std::string_view part = bytes.substr(start, slash == std::string_view::npos ? std::string_view::npos : slash - start);
        text += isUtf8(part) ? std::string(part) : fromAnsi(part);
        if (slash == std::string_view::npos)
            return text;
        text += '/';
        start = slash + 1;
    }
}

fs::path nativePath(std::string_view logicPath)
{
    std::string s(logicPath);
    std::replace(s.begin(), s.end(), '\\', '/');
    // Plain names, and a path that is there as written, need no search.
    if (isAscii(s) || onDisc(s))
        return fs::path(s);
    std::vector<std::string> parts;
    for (size_t start = 0;;) {
        const size_t slash = s.find('/', start);
        parts.push_back(s.substr(start, slash == std::string::npos ? std::string::npos : slash - start));
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    std::string found;
    const size_t depth = deepestOnDisc(parts, 0, std::string(), found);
    // The parts beyond what is on disc stay as written.
    for (size_t i = depth; i < parts.size(); ++i) {
        found += parts[i];
        if (i + 1 < parts.size())
            found += '/';
    }
    return fs::path(found);
}

bool fileExists(std::string_view logicPath)
{
    return !logicPath.empty() && isRegularFile(nativePath(logicPath));
}

int64_t FileLen(std::string_view logicPath)
{
    const fs::path p = nativePath(logicPath);
    std::error_code ec;
    if (logicPath.empty() || !fs::is_regular_file(p, ec))
        raise(ErrFileNotFound);
    const auto size = fs::file_size(p, ec);
    if (ec)
        raise(ErrFileNotFound);
    return static_cast<int64_t>(size);
}

// Kill takes a pattern in its last part as well ("C:\tmp\*.wav"); no match at all is error 53.
// A file that can't be removed is error 75.
void Kill(std::string_view logicPath)
{
    const fs::path p = nativePath(logicPath);
    std::vector<fs::path> victims;
    const std::string name = p.filename().string();
    if (hasWildcard(name)) {
        const fs::path folder = p.has_parent_path() ? p.parent_path() : fs::path(".");
        for (const FolderEntry &f : matchingFiles(folder, name))
            victims.push_back(folder / f.bytes);
    } else if (!logicPath.empty() && isRegularFile(p)) {
        victims.push_back(p);
    }
    if (victims.empty())
        raise(ErrFileNotFound);
    for (const fs::path &v : victims) {
        if (::unlink(v.c_str()) != 0)
            raise(ErrPathFileAccess);
    }
}

std::vector<std::string> listFiles(std::string_view folder, std::string_view pattern)
{
    std::vector<std::string> names;
    for (FolderEntry &entry : matchingFiles(folder.empty() ? fs::path(".") : nativePath(folder), pattern))
        names.push_back(std::move(entry.text));
    return names;
}

// Read-only is the absence of every write permission; making a file normal again gives the
// owner back the right to write.
void setReadOnly(std::string_view logicPath, bool readOnly)
{
    const fs::path p = nativePath(logicPath);
    struct stat st {};
    if (logicPath.empty() || ::stat(p.c_str(), &st) != 0)
        raise(ErrFileNotFound);
    mode_t mode = st.st_mode & 07777;
    if (readOnly)
        mode &= ~static_cast<mode_t>(S_IWUSR | S_IWGRP | S_IWOTH);
    else
        mode |= S_IWUSR;
    if (::chmod(p.c_str(), mode) != 0)
        raise(ErrPathFileAccess);
}

bool isReadOnly(std::string_view logicPath)
{
    const fs::path p = nativePath(logicPath);
    struct stat st {};
    if (logicPath.empty() || ::stat(p.c_str(), &st) != 0)
        raise(ErrFileNotFound);
    return (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

int createFileBeside(const fs::path &path, std::string &tmpName)
{
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    // A fresh name beside the target; creating it with 0666 lets the umask decide as for any
    // new file (no process-wide umask juggling).
    static std::atomic<unsigned> counter{0};
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        tmpName = (folder / ("." + path.filename().string() + ".tmp" + std::to_string(::getpid()) + "."
                             + std::to_string(counter++))).string();
        fd = ::open(tmpName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST)
            return -1;
    }
    if (fd < 0)
        return -1;
    // The new file keeps the old one's permissions.
    struct stat st {};
    if (::stat(path.c_str(), &st) == 0 && ::fchmod(fd, st.st_mode & 07777) != 0) {
        ::close(fd);
        ::unlink(tmpName.c_str());
        return -1;
    }
    return fd;
}

bool replaceWithFile(const std::string &tmpName, const fs::path &path)
{
    if (::rename(tmpName.c_str(), path.c_str()) != 0) {
        ::unlink(tmpName.c_str());
        return false;
    }
    // Make the rename itself durable; a folder that can't be synced is no failure of the write.
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

bool writeFileAtomically(const fs::path &path, std::string_view bytes)
{
    std::string tmp;
    const int fd = createFileBeside(path, tmp);
    if (fd < 0)
        return false;
    auto fail = [&] {
        ::close(fd);
        ::unlink(tmp.c_str());
        return false;
    };
    const char *data = bytes.data();
    size_t left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, left);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return fail();
        }
        data += n;
        left -= static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0)
        return fail();
    if (::close(fd) != 0) {
        ::unlink(tmp.c_str());
        return false;
    }
    return replaceWithFile(tmp, path);
}

} // namespace rt
