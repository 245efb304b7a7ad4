#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>

#include "platform/system/XdgShell.h"

namespace fs = std::filesystem;
using platform::system::XdgShell;

namespace {

// A PATH holding only a stand-in xdg-open that writes its one argument to a file, so no real
// opener runs; PATH comes back afterwards.
class XdgShellTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::random_device rd;
        m_dir = fs::temp_directory_path() / ("xdgshell-" + std::to_string(rd()));
        fs::create_directories(m_dir / "bin");
        m_out = m_dir / "opened";
        const char *path = std::getenv("PATH");
        m_oldPath = path ? path : "";
    }
    void TearDown() override
    {
        setenv("PATH", m_oldPath.c_str(), 1);
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }

    void installOpener()
    {
        const fs::path script = m_dir / "bin" / "xdg-open";
        std::ofstream(script) << "#!/bin/sh\n"
                              << "printf '%s' \"$1\" > '" << m_out.string() << ".part'\n"
                              << "/bin/mv '" << m_out.string() << ".part' '" << m_out.string() << "'\n";
        fs::permissions(script, fs::perms::owner_all);
    }
    void usePath() { setenv("PATH", (m_dir / "bin").c_str(), 1); }

    // What the stand-in was given, once it has written it (the shell does not wait for it).
    std::string opened()
    {
        for (int i = 0; i < 1000 && !fs::exists(m_out); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::ifstream in(m_out, std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        return s.str();
    }

    fs::path m_dir;
    fs::path m_out;
    std::string m_oldPath;
};

// Children of this process, zombies included, as /proc lists them.
int childCount()
{
    int count = 0;
    const std::string self = std::to_string(getpid());
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator("/proc", ec)) {
        std::ifstream in(entry.path() / "stat");
        std::string stat;
        if (!std::getline(in, stat))
            continue;
        const size_t close = stat.rfind(')');
        if (close == std::string::npos)
            continue;
        std::istringstream fields(stat.substr(close + 1));
        std::string state, ppid;
        if (fields >> state >> ppid && ppid == self)
            ++count;
    }
    return count;
}

TEST_F(XdgShellTest, HandsTheAddressOverAsOneArgument)
{
    installOpener();
    usePath();
    XdgShell shell;
    // Blanks and a shell's special characters arrive as they are: no command shell between.
    const std::string address = "file:///tmp/My Music/read me;$(echo no)`x`&.md";
    EXPECT_EQ(shell.openAddress(address), 0);
    EXPECT_EQ(opened(), address);
}

TEST_F(XdgShellTest, LeavesNoZombieBehind)
{
    installOpener();
    usePath();
    XdgShell shell;
    ASSERT_EQ(shell.openAddress("file:///tmp/x"), 0);
    EXPECT_EQ(opened(), "file:///tmp/x");
    int children = childCount();
    for (int i = 0; i < 500 && children > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        children = childCount();
    }
    EXPECT_EQ(children, 0);
}

TEST_F(XdgShellTest, MissingOpenerIsAFailure)
{
    usePath();
    XdgShell shell;
    EXPECT_NE(shell.openAddress("file:///tmp/x"), 0);
    EXPECT_FALSE(fs::exists(m_out));
}

TEST_F(XdgShellTest, EmptyAddressIsAFailure)
{
    installOpener();
    usePath();
    XdgShell shell;
    EXPECT_NE(shell.openAddress(""), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(fs::exists(m_out));
}

} // namespace
