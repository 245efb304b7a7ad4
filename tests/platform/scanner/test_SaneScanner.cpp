// The scanner on SANE's own `test` backend, configured by a folder of the
// test's own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "SaneTestBackend.h"
#include "platform/scanner/SaneScanner.h"
#include "runtime/VirtualEventLoop.h"

namespace fs = std::filesystem;

namespace {

class SaneScannerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::random_device rd;
        config = fs::temp_directory_path() / ("sane-config-" + std::to_string(rd()));
        testsupport::useSaneTestBackend(config);
    }
    static void TearDownTestSuite()
    {
        std::error_code ec;
        fs::remove_all(config, ec);
    }
    static fs::path config;
};

fs::path SaneScannerTest::config;

} // namespace

TEST_F(SaneScannerTest, ListsTheTestBackendsDevices)
{
    rt::VirtualEventLoop loop;
    auto s = platform::scanner::makeSaneScanner(loop);
    const auto sources = s->sources();
    ASSERT_FALSE(sources.empty());
    EXPECT_EQ(sources.front().rfind("test:", 0), 0u);
    EXPECT_EQ(s->currentSource(), sources.front());
    EXPECT_EQ(s->SelectSource(), 0);
    if (sources.size() > 1) {
        EXPECT_EQ(s->currentSource(), sources[1]);
    }
}

TEST_F(SaneScannerTest, AScanLandsInTheWorkFile)
{
    rt::VirtualEventLoop loop;
    auto s = platform::scanner::makeSaneScanner(loop);
    int scans = 0;
    s->PostScan = [&] { ++scans; };
    const fs::path out = config / "image-0.bmp";
    EXPECT_NE(s->SaveFile(out.string()), 0) << "nothing scanned yet";
    ASSERT_EQ(s->OpenSession(), 0);
    ASSERT_EQ(s->StartSession(), 0);
    // The scan runs on its own thread; its event arrives through the loop.
    for (int i = 0; i < 2400 && scans == 0 && !loop.workInHand().empty(); ++i) {
        loop.waitForPost(50);
        loop.doEvents();
    }
    ASSERT_EQ(scans, 1);
    ASSERT_EQ(s->SaveFile(out.string()), 0);
    std::ifstream in(out, std::ios::binary);
    char magic[2] = {};
    in.read(magic, 2);
    EXPECT_EQ(std::string(magic, 2), "BM");
    EXPECT_GT(fs::file_size(out), 1000u);
    EXPECT_EQ(s->CloseSession(), 0);
    // Closing again is harmless.
    EXPECT_EQ(s->CloseSession(), 0);
}

TEST(BmpBytes, GreyAndColourLayouts)
{
    const std::vector<uint8_t> grey {0, 128, 255, 64, 32, 16};
    const std::string g = platform::scanner::bmpBytes(3, 2, true, grey);
    EXPECT_EQ(g.substr(0, 2), "BM");
    EXPECT_EQ(g.size(), 14u + 40 + 1024 + 2 * 4);
    // Bottom row first.
    EXPECT_EQ(static_cast<uint8_t>(g[14 + 40 + 1024]), 64);
    const std::vector<uint8_t> rgb {255, 0, 0, 0, 255, 0};
    const std::string c = platform::scanner::bmpBytes(2, 1, false, rgb);
    EXPECT_EQ(c.size(), 14u + 40 + 8);
    EXPECT_EQ(static_cast<uint8_t>(c[54]), 0); // blue of the red pixel
    EXPECT_EQ(static_cast<uint8_t>(c[56]), 255); // red of the red pixel
}
