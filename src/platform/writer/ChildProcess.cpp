#include "ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace platform::writer {

namespace {

using Clock = std::chrono::steady_clock;

int statusCode(int status)
{
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return -1;
}

std::vector<std::string> childEnvironment()
{
    std::vector<std::string> env;
    for (char **e = environ; e && *e; ++e) {
        const std::string_view entry(*e);
        if (entry.rfind("LC_ALL=", 0) == 0 || entry.rfind("LANG=", 0) == 0 || entry.rfind("LANGUAGE=", 0) == 0)
            continue;
        env.emplace_back(entry);
    }
    env.emplace_back("LC_ALL=C");
    env.emplace_back("LANG=C");
    return env;
}

class LineSplitter {
public:
    explicit LineSplitter(ChildRun &run, const std::function<void(const std::string &)> &onLine) : m_run(run), m_onLine(onLine) {}
    void feed(const char *data, size_t n)
    {
        for (size_t i = 0; i < n; ++i) {
            const char c = data[i];
            if (c == '\n' || c == '\r')
                flush();
            else if (m_line.size() < 64 * 1024)
                m_line.push_back(c);
        }
    }
    void flush()
    {
        if (m_line.empty())
            return;
        if (m_run.output.size() < 1024 * 1024) {
            m_run.output += m_line;
            m_run.output += '\n';
        }
        if (m_onLine)
            m_onLine(m_line);
        m_line.clear();
    }

private:
    ChildRun &m_run;
    const std::function<void(const std::string &)> &m_onLine;
    std::string m_line;
};

} // namespace

ChildRun runChild(const std::string &program, const std::vector<std::string> &args,
                  const std::function<void(const std::string &line)> &onLine, const std::function<bool()> &stop,
                  int timeoutMs, int quietTimeoutMs)
{
    ChildRun run;
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0)
        return run;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);

    // The child starts with the usual signal dispositions whatever this process ignores.
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (int sig : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP, SIGCHLD})
        sigaddset(&defaults, sig);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &defaults);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<std::string> argStore;
    argStore.reserve(args.size() + 1);
    argStore.push_back(program);
    argStore.insert(argStore.end(), args.begin(), args.end());
    std::vector<char *> argv;
    for (std::string &a : argStore)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envStore = childEnvironment();
    std::vector<char *> envp;
    for (std::string &e : envStore)
        envp.push_back(e.data());
    envp.push_back(nullptr);

    pid_t pid = -1;
    const int rc = ::posix_spawnp(&pid, program.c_str(), &actions, &attr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    ::close(fds[1]);
    if (rc != 0) {
        ::close(fds[0]);
        return run;
    }
    run.started = true;

    LineSplitter lines(run, onLine);
    const auto started = Clock::now();
    auto lastHeard = started;
    Clock::time_point termSent{};
    bool killed = false;
    bool exited = false;
    int status = 0;
    Clock::time_point exitSeen{};
    char buf[4096];
    bool pipeOpen = true;
    bool lost = false; // reaped elsewhere: the status is unknown
    for (;;) {
        if (pipeOpen) {
            pollfd p{fds[0], POLLIN, 0};
            const int ready = ::poll(&p, 1, 50);
            if (ready > 0) {
                const ssize_t n = ::read(fds[0], buf, sizeof buf);
                if (n > 0) {
                    lines.feed(buf, static_cast<size_t>(n));
                    lastHeard = Clock::now();
                }
                else if (n == 0 || (errno != EINTR && errno != EAGAIN))
                    pipeOpen = false;
            } else if (ready < 0 && errno != EINTR) {
                pipeOpen = false;
            }
        } else {
            ::usleep(20 * 1000);
        }
        const auto now = Clock::now();
        if (!exited) {
            const pid_t w = ::waitpid(pid, &status, WNOHANG);
            if (w == pid || (w < 0 && errno == ECHILD)) {
                lost = w < 0;
                exited = true;
                exitSeen = now;
            }
        }
        // A child of the child may hold the pipe open; what the child itself said is enough.
        if (exited && (!pipeOpen || now - exitSeen > std::chrono::milliseconds(300)))
            break;
        if (exited)
            continue;
        const bool stopAsked = stop && stop();
        const bool late = (timeoutMs > 0 && now - started > std::chrono::milliseconds(timeoutMs))
                          || (quietTimeoutMs > 0 && now - lastHeard > std::chrono::milliseconds(quietTimeoutMs));
        if ((stopAsked || late) && termSent == Clock::time_point{}) {
            run.stopped = stopAsked;
            run.timedOut = !stopAsked;
            ::kill(pid, SIGTERM);
            termSent = now;
        } else if (termSent != Clock::time_point{} && !killed && now - termSent > std::chrono::seconds(2)) {
            ::kill(pid, SIGKILL);
            killed = true;
        }
    }
    lines.flush();
    ::close(fds[0]);
    run.exitCode = lost ? -1 : statusCode(status);
    return run;
}

bool findExecutable(const std::string &program)
{
    auto executable = [](const std::string &path) {
        struct stat st {};
        return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(path.c_str(), X_OK) == 0;
    };
    if (program.empty())
        return false;
    if (program.find('/') != std::string::npos)
        return executable(program);
    const char *path = std::getenv("PATH");
    std::string_view dirs = path ? path : "/usr/local/bin:/usr/bin:/bin";
    while (true) {
        const auto colon = dirs.find(':');
        const std::string_view entry = dirs.substr(0, colon);
        const std::string candidate = (entry.empty() ? std::string(".") : std::string(entry)) + "/" + program;
        if (executable(candidate))
            return true;
        if (colon == std::string_view::npos)
            return false;
        dirs.remove_prefix(colon + 1);
    }
}

} // namespace platform::writer
