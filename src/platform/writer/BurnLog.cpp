#include "BurnLog.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace platform::writer {

namespace {

std::string localTime(const char *format)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buf[64];
    std::strftime(buf, sizeof buf, format, &local);
    return buf;
}

bool isBurnLogName(const std::string &name)
{
    return name.size() > 9 && name.rfind("burn-", 0) == 0 && name.compare(name.size() - 4, 4, ".log") == 0;
}

// burn-YYYYMMDD-HHMMSS.log, then -2, -3... for more burns in the same second: oldest first.
std::pair<std::string, int> burnLogOrder(const fs::path &file)
{
    const std::string stem = file.stem().string(); // burn-YYYYMMDD-HHMMSS[-N]
    constexpr size_t stampLength = 20;
    if (stem.size() > stampLength + 1 && stem[stampLength] == '-')
        return {stem.substr(0, stampLength), std::atoi(stem.c_str() + stampLength + 1)};
    return {stem, 1};
}

} // namespace

std::string burnLogTime()
{
    return localTime("%Y-%m-%d %H:%M:%S");
}

BurnLog::BurnLog(fs::path folder, int keep) : m_folder(std::move(folder)), m_keep(std::max(1, keep)) {}

BurnLog::~BurnLog()
{
    std::lock_guard lock(m_mutex);
    if (m_out)
        std::fclose(m_out);
}

fs::path BurnLog::defaultFolder()
{
    if (const char *state = std::getenv("XDG_STATE_HOME"); state && *state == '/')
        return fs::path(state) / "brasswick";
    const char *home = std::getenv("HOME");
    fs::path base = home && *home ? fs::path(home) : fs::path("/");
    if (!home || !*home) {
        if (const passwd *pw = ::getpwuid(::getuid()); pw && pw->pw_dir)
            base = pw->pw_dir;
    }
    return base / ".local" / "state" / "brasswick";
}

bool BurnLog::begin(const std::string &heading)
{
    std::lock_guard lock(m_mutex);
    if (m_out)
        return true;
    std::error_code ec;
    fs::create_directories(m_folder, ec);
    const std::string stamp = "burn-" + localTime("%Y%m%d-%H%M%S");
    for (int n = 1; n < 100 && !m_out; ++n) {
        const fs::path candidate = m_folder / (n == 1 ? stamp + ".log" : stamp + "-" + std::to_string(n) + ".log");
        // O_EXCL: two burns in the same second, or two programs, never share a file.
        const int fd = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return false;
        }
        m_out = ::fdopen(fd, "w");
        if (!m_out) {
            ::close(fd);
            return false;
        }
        m_file = candidate;
    }
    if (!m_out)
        return false;
    std::fprintf(m_out, "%s\n", heading.c_str());
    std::fflush(m_out);
    // last.log names the newest log, replaced in one step.
    const fs::path link = m_folder / "last.log";
    const fs::path temporary = m_folder / (".last.log." + std::to_string(::getpid()));
    fs::remove(temporary, ec);
    fs::create_symlink(m_file.filename(), temporary, ec);
    if (!ec)
        fs::rename(temporary, link, ec);
    if (ec)
        fs::remove(temporary, ec);
    removeOld();
    return true;
}

bool BurnLog::isOpen() const
{
    std::lock_guard lock(m_mutex);
    return m_out != nullptr;
}

void BurnLog::line(const std::string &text)
{
    std::lock_guard lock(m_mutex);
    if (!m_out)
        return;
    std::fwrite(text.data(), 1, text.size(), m_out);
    std::fputc('\n', m_out);
    // Flushed line by line: a burn that crashes the program leaves its log whole up to there.
    std::fflush(m_out);
}

void BurnLog::end(const std::string &lastLine)
{
    std::lock_guard lock(m_mutex);
    if (!m_out)
        return;
    std::fprintf(m_out, "%s\n", lastLine.c_str());
    std::fclose(m_out);
    m_out = nullptr;
}

fs::path BurnLog::file() const
{
    std::lock_guard lock(m_mutex);
    return m_file;
}

void BurnLog::removeOld()
{
    // The log just begun stays; of the others, the newest keep - 1 stay (by time written, then by
    // name, as a name freed by a removal may be taken again within the same second).
    std::error_code ec;
    struct Found {
        fs::file_time_type time;
        std::pair<std::string, int> order;
        fs::path path;
    };
    std::vector<Found> logs;
    for (fs::directory_iterator it(m_folder, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path p = it->path();
        if (p == m_file || !isBurnLogName(p.filename().string()) || !it->is_regular_file(ec))
            continue;
        std::error_code timeError;
        logs.push_back({fs::last_write_time(p, timeError), burnLogOrder(p), p});
    }
    std::sort(logs.begin(), logs.end(), [](const Found &a, const Found &b) {
        return a.time != b.time ? a.time < b.time : a.order < b.order;
    });
    for (size_t i = 0; i + static_cast<size_t>(m_keep - 1) < logs.size(); ++i)
        fs::remove(logs[i].path, ec);
}

} // namespace platform::writer
