#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "TempDir.h"
#include "platform/writer/BurnLog.h"

namespace fs = std::filesystem;
using platform::writer::BurnLog;

namespace {

std::string readAll(const fs::path &p)
{
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

int countLogs(const fs::path &folder)
{
    int n = 0;
    for (const auto &e : fs::directory_iterator(folder))
        n += e.path().filename().string().rfind("burn-", 0) == 0;
    return n;
}

} // namespace

TEST(BurnLog, LinesGoToTheFileAsTheyCome)
{
    testsupport::TempDir tmp;
    BurnLog log(tmp.path() / "state");
    EXPECT_FALSE(log.isOpen());
    log.line("before any burn"); // no file: dropped
    ASSERT_TRUE(log.begin("Heading"));
    EXPECT_TRUE(log.isOpen());
    log.line("one");
    // Readable at once, while the burn goes on.
    EXPECT_EQ(readAll(log.file()), "Heading\none\n");
    log.end("last");
    EXPECT_FALSE(log.isOpen());
    EXPECT_EQ(readAll(log.file()), "Heading\none\nlast\n");
    EXPECT_EQ(fs::read_symlink(tmp.path() / "state" / "last.log"), log.file().filename());
    const std::string name = log.file().filename().string();
    EXPECT_EQ(name.rfind("burn-", 0), 0u);
    EXPECT_EQ(name.substr(name.size() - 4), ".log");
}

TEST(BurnLog, TheNewestTwentyAreKept)
{
    testsupport::TempDir tmp;
    BurnLog log(tmp.path());
    std::vector<fs::path> made;
    for (int i = 0; i < 23; ++i) {
        ASSERT_TRUE(log.begin("burn " + std::to_string(i)));
        made.push_back(log.file());
        log.end("end");
    }
    EXPECT_EQ(countLogs(tmp.path()), 20);
    // Within one second the names take -2, -3...; every name is a file of its own.
    EXPECT_TRUE(fs::exists(made.back()));
    EXPECT_EQ(readAll(tmp.path() / "last.log"), "burn 22\nend\n");
}

TEST(BurnLog, LinesFromTwoThreadsStayWhole)
{
    testsupport::TempDir tmp;
    BurnLog log(tmp.path());
    ASSERT_TRUE(log.begin("h"));
    auto write = [&](char c) {
        for (int i = 0; i < 500; ++i)
            log.line(std::string(40, c));
    };
    std::thread a(write, 'a');
    std::thread b(write, 'b');
    a.join();
    b.join();
    log.end("e");
    std::istringstream lines(readAll(log.file()));
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        if (line.size() == 40) {
            EXPECT_TRUE(line == std::string(40, 'a') || line == std::string(40, 'b')) << line;
            ++count;
        }
    }
    EXPECT_EQ(count, 1000);
}

TEST(BurnLog, AFolderThatCannotBeMadeLosesTheLogNotTheBurn)
{
    testsupport::TempDir tmp;
    std::ofstream(tmp.path() / "file") << "x";
    BurnLog log(tmp.path() / "file" / "state");
    EXPECT_FALSE(log.begin("h"));
    log.line("dropped");
    log.end("dropped");
    EXPECT_FALSE(log.isOpen());
}

TEST(BurnLog, TheFolderFollowsXdgStateHome)
{
    const char *saved = std::getenv("XDG_STATE_HOME");
    const std::string keep = saved ? saved : "";
    const char *savedHome = std::getenv("HOME");
    const std::string home = savedHome ? savedHome : "";
    ::setenv("XDG_STATE_HOME", "/state/here", 1);
    EXPECT_EQ(BurnLog::defaultFolder(), fs::path("/state/here/brasswick"));
    // A relative value is not a base directory: the default under the home folder is used.
    ::setenv("XDG_STATE_HOME", "relative", 1);
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(BurnLog::defaultFolder(), fs::path("/home/someone/.local/state/brasswick"));
    if (saved)
        ::setenv("XDG_STATE_HOME", keep.c_str(), 1);
    else
        ::unsetenv("XDG_STATE_HOME");
    if (savedHome)
        ::setenv("HOME", home.c_str(), 1);
    else
        ::unsetenv("HOME");
}
