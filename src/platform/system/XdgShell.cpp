#include "XdgShell.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

extern char **environ;

namespace platform::system {

namespace {

// Spawn settings that own their resources, so every way out releases them.
struct SpawnSetup {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    SpawnSetup()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSetup()
    {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    SpawnSetup(const SpawnSetup &) = delete;
    SpawnSetup &operator=(const SpawnSetup &) = delete;
};

} // namespace

int XdgShell::openAddress(const std::string &address)
{
    // xdg-open would only print its usage.
    if (address.empty())
        return EINVAL;

    SpawnSetup setup;
    // The opener has no business with our input; its messages may still reach a terminal.
    posix_spawn_file_actions_addopen(&setup.actions, 0, "/dev/null", O_RDONLY, 0);
    // Whatever this thread blocks or ignores, the opener starts with the defaults.
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGCHLD);
    posix_spawnattr_setsigmask(&setup.attributes, &none);
    posix_spawnattr_setsigdefault(&setup.attributes, &defaults);
    posix_spawnattr_setflags(&setup.attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::string program = "xdg-open";
    std::string argument = address;
    char *argv[] = {program.data(), argument.data(), nullptr};
    pid_t pid = 0;
    // glibc reports a program that can't be run (not found, not executable) here, not later.
    const int error = posix_spawnp(&pid, program.c_str(), &setup.actions, &setup.attributes, argv, environ);
    if (error != 0)
        return error;

    // The opener may live as long as the program it starts; a thread of its own collects it,
    // so it never stays behind as a zombie and nobody waits for it.
    try {
        std::thread([pid] {
            int status = 0;
            while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    } catch (const std::system_error &) {
        // No thread to be had: the opener is running anyway, and is collected at our exit.
    }
    return 0;
}

} // namespace platform::system
