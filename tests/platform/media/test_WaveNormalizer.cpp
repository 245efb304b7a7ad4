// The normaliser on waves the tests make, held against sox's own normalisation of the same file.
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CommandOutput.h"
#include "MediaTestSupport.h"
#include "WaveMaker.h"
#include "platform/media/WaveNormalizer.h"

namespace fs = std::filesystem;

namespace {

class WaveNormalizerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_dir = fs::temp_directory_path() / ("normalize-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override { fs::remove_all(m_dir); }

    std::string path(const std::string &name) const { return (m_dir / name).string(); }

    fs::path m_dir;
};

std::vector<std::pair<int, int>> progressOf(const std::string &file, bool *result = nullptr)
{
    std::vector<std::pair<int, int>> calls;
    const bool ok = platform::media::normalizeWaveFile(file, 100, [&](int32_t percent, int32_t phase) {
        calls.emplace_back(percent, phase);
    });
    if (result)
        *result = ok;
    return calls;
}

std::string bytesOf(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST_F(WaveNormalizerTest, MatchesSoxNormWithinOneStep)
{
    for (int channels : {1, 2}) {
        const std::string ours = path("ours" + std::to_string(channels) + ".wav");
        const std::string theirs = path("sox" + std::to_string(channels) + ".wav");
        testsupport::WaveOptions o;
        o.channels = channels;
        o.seconds = 1.5;
        ASSERT_TRUE(testsupport::makeWave(ours, o));
        // sox without dither, so that only the scaling and rounding are compared.
        const std::string cmd = "sox -D --norm '" + ours + "' '" + theirs + "'";
        ASSERT_TRUE(testsupport::runTool(cmd).succeeded);
        bool ok = false;
        progressOf(ours, &ok);
        ASSERT_TRUE(ok);
        const mediatest::Wave a = mediatest::readWave(ours);
        const mediatest::Wave b = mediatest::readWave(theirs);
        ASSERT_TRUE(a.ok);
        ASSERT_TRUE(b.ok);
        ASSERT_EQ(a.channels, channels);
        ASSERT_EQ(a.samples.size(), b.samples.size());
        int worst = 0;
        int peak = 0;
        for (size_t i = 0; i < a.samples.size(); ++i) {
            worst = std::max(worst, std::abs(a.samples[i] - b.samples[i]));
            peak = std::max(peak, std::abs(static_cast<int>(a.samples[i])));
        }
        EXPECT_LE(worst, 1) << channels << " channel(s)";
        // The tone was at half scale; now its peak is at full scale.
        EXPECT_GE(peak, 32766);
    }
}

TEST_F(WaveNormalizerTest, ReportsBothPassesInOrder)
{
    const std::string file = path("tone.wav");
    ASSERT_TRUE(testsupport::makeWave(file, {}));
    const auto calls = progressOf(file);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front().second, 0);
    // Scanning first, 0 to 100, then rewriting, 0 to 100, each percent once and rising.
    int phase = 0;
    int last = -1;
    bool sawScan100 = false, sawWrite100 = false;
    for (const auto &[percent, p] : calls) {
        if (p != phase) {
            EXPECT_EQ(phase, 0);
            EXPECT_EQ(p, 1);
            phase = p;
            last = -1;
        }
        EXPECT_GT(percent, last);
        last = percent;
        if (percent == 100)
            (p == 0 ? sawScan100 : sawWrite100) = true;
    }
    EXPECT_TRUE(sawScan100);
    EXPECT_TRUE(sawWrite100);
    EXPECT_EQ(phase, 1);
}

TEST_F(WaveNormalizerTest, KeepsFormatTagsAndPermissions)
{
    const std::string file = path("deep.wav");
    testsupport::WaveOptions o;
    o.bits = 24;
    o.sampleRate = 22050;
    ASSERT_TRUE(testsupport::makeWave(file, o));
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    bool ok = false;
    progressOf(file, &ok);
    ASSERT_TRUE(ok);
    SF_INFO info{};
    SNDFILE *f = sf_open(file.c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_24);
    EXPECT_EQ(info.samplerate, 22050);
    std::vector<int> samples(static_cast<size_t>(info.frames * info.channels));
    sf_readf_int(f, samples.data(), info.frames);
    sf_close(f);
    int peak = 0;
    for (int s : samples)
        peak = std::max(peak, std::abs(s >> 8));
    EXPECT_GE(peak, (1 << 23) - 2);
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
    // Nothing is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir), fs::directory_iterator()), 1);
}

TEST_F(WaveNormalizerTest, LeavesWhatItCantNormaliseAsItWas)
{
    const std::string text = path("notes.wav");
    std::ofstream(text) << "not a wave at all";
    bool ok = true;
    EXPECT_TRUE(progressOf(text, &ok).empty());
    EXPECT_FALSE(ok);
    EXPECT_EQ(bytesOf(text), "not a wave at all");

    // A silent file has no peak to scale to.
    const std::string silent = path("silent.wav");
    {
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE *f = sf_open(silent.c_str(), SFM_WRITE, &info);
        ASSERT_NE(f, nullptr);
        std::vector<short> zeros(2 * 4410, 0);
        sf_writef_short(f, zeros.data(), 4410);
        sf_close(f);
    }
    const std::string before = bytesOf(silent);
    progressOf(silent, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(bytesOf(silent), before);

    EXPECT_FALSE(platform::media::normalizeWaveFile(path("missing.wav"), 100, {}));
    EXPECT_FALSE(fs::exists(path("missing.wav")));
}

TEST_F(WaveNormalizerTest, AFullDiskLeavesTheOldFile)
{
    const std::string file = path("tone.wav");
    ASSERT_TRUE(testsupport::makeWave(file, {}));
    const std::string before = bytesOf(file);
    // A limit on the size of any file this process writes stands in for a disk that fills up.
    rlimit saved{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 64 * 1024;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    bool ok = true;
    const auto calls = progressOf(file, &ok);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(ok);
    EXPECT_FALSE(calls.empty());
    EXPECT_EQ(bytesOf(file), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir), fs::directory_iterator()), 1);
}

} // namespace
