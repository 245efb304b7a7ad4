#pragma once

// Disc images written by the tests themselves: a BIN of generated PCM with a CUE sheet or a
// cdrdao TOC beside it.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "TempDir.h"

namespace cdromtest {

namespace fs = std::filesystem;

constexpr int64_t sectorBytes = 2352;

// A fresh folder for one test, removed with everything in it.
class TempDir : public testsupport::TempDir {
public:
    TempDir() : testsupport::TempDir("cdreader-test") {}
};

// Music-like PCM (two tones and a little hiss), little-endian 16-bit stereo, whole sectors.
inline std::vector<char> makePcm(int64_t sectors, double tone, unsigned seed)
{
    std::vector<char> out;
    out.reserve(static_cast<size_t>(sectors * sectorBytes));
    uint32_t noise = seed * 2654435761u + 1;
    const int64_t samples = sectors * 588;
    for (int64_t i = 0; i < samples; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double t = static_cast<double>(i) / 44100.0;
        const int hiss = static_cast<int>(noise >> 24) - 128;
        const auto l = static_cast<int16_t>(9000 * std::sin(2 * M_PI * tone * t) + hiss);
        const auto r = static_cast<int16_t>(7000 * std::sin(2 * M_PI * tone * 1.5 * t) - hiss);
        for (int16_t v : {l, r}) {
            const auto u = static_cast<uint16_t>(v);
            out.push_back(static_cast<char>(u & 0xFF));
            out.push_back(static_cast<char>(u >> 8));
        }
    }
    return out;
}

inline std::vector<char> swapped(std::vector<char> pcm)
{
    for (size_t i = 0; i + 1 < pcm.size(); i += 2)
        std::swap(pcm[i], pcm[i + 1]);
    return pcm;
}

inline std::string msf(int64_t frames)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02lld:%02lld:%02lld", static_cast<long long>(frames / 4500),
                  static_cast<long long>((frames / 75) % 60), static_cast<long long>(frames % 75));
    return buf;
}

inline void writeFile(const fs::path &file, const std::string &text)
{
    std::ofstream(file, std::ios::binary) << text;
}

inline void writeBytes(const fs::path &file, const std::vector<char> &bytes)
{
    std::ofstream out(file, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// The test disc: three audio tracks (the second with a 10-sector pregap, the third without one)
// and a data track. Starts 0, 300, 550, 750; lead-out 1050.
struct TestDisc {
    std::vector<char> track1 = makePcm(290, 440, 1);
    std::vector<char> gap2 = std::vector<char>(10 * sectorBytes, 0);
    std::vector<char> track2 = makePcm(250, 554, 2);
    std::vector<char> track3 = makePcm(200, 659, 3);
    std::vector<char> data;

    TestDisc()
    {
        data.assign(300 * sectorBytes, 0);
        for (int64_t s = 0; s < 300; ++s) {
            char *p = data.data() + s * sectorBytes;
            p[0] = 0;
            std::fill(p + 1, p + 11, static_cast<char>(0xFF));
            p[15] = 1;  // mode 1
            for (int i = 16; i < 2064; ++i)
                p[i] = static_cast<char>((s + i) & 0x7F);
        }
    }

    // The audio as the disc holds it, little-endian.
    std::vector<char> audio() const
    {
        std::vector<char> a = track1;
        a.insert(a.end(), gap2.begin(), gap2.end());
        a.insert(a.end(), track2.begin(), track2.end());
        a.insert(a.end(), track3.begin(), track3.end());
        return a;
    }

    void writeBin(const fs::path &bin, bool bigEndian) const
    {
        std::vector<char> all = bigEndian ? swapped(audio()) : audio();
        all.insert(all.end(), data.begin(), data.end());
        writeBytes(bin, all);
    }

    // A CUE sheet as other tools write them: CD-Text, ISRC, FLAGS.
    fs::path writeCue(const fs::path &folder, const std::string &name, bool bigEndian) const
    {
        writeBin(folder / (name + ".bin"), bigEndian);
        const std::string type = bigEndian ? "MOTOROLA" : "BINARY";
        std::string cue = "PERFORMER \"The Band\"\n"
                          "TITLE \"The Album\"\n"
                          "FILE \"" + name + ".bin\" " + type + "\n"
                          "  TRACK 01 AUDIO\n"
                          "    TITLE \"First\"\n"
                          "    PERFORMER \"Singer One\"\n"
                          "    ISRC GBAYE0000001\n"
                          "    INDEX 01 00:00:00\n"
                          "  TRACK 02 AUDIO\n"
                          "    TITLE \"Second\"\n"
                          "    FLAGS DCP PRE\n"
                          "    ISRC GBAYE0000002\n"
                          "    INDEX 00 " + msf(290) + "\n"
                          "    INDEX 01 " + msf(300) + "\n"
                          "  TRACK 03 AUDIO\n"
                          "    TITLE \"Third\"\n"
                          "    FLAGS DCP\n"
                          "    INDEX 01 " + msf(550) + "\n"
                          "  TRACK 04 MODE1/2352\n"
                          "    INDEX 01 " + msf(750) + "\n";
        const fs::path file = folder / (name + ".cue");
        writeFile(file, cue);
        return file;
    }

    // A cdrdao TOC: raw audio big-endian as cdrdao keeps it, or little-endian marked SWAP.
    // A TOC of only what raw libcdio (and so cd-paranoia) reads: times in minutes, seconds and
    // frames, big-endian audio, one file, the audio tracks alone.
    fs::path writePlainToc(const fs::path &folder, const std::string &name) const
    {
        writeBytes(folder / (name + ".bin"), swapped(audio()));
        const std::string file = "FILE \"" + name + ".bin\" ";
        const std::string toc = "CD_DA\n"
                                "TRACK AUDIO\n"
                                "NO COPY\n" +
                                file + "00:00:00 " + msf(290) + "\n" +
                                "TRACK AUDIO\n"
                                "COPY\n"
                                "PRE_EMPHASIS\n" +
                                file + msf(290) + " " + msf(260) + "\n" +
                                "START " + msf(10) + "\n"
                                "TRACK AUDIO\n"
                                "COPY\n" +
                                file + msf(550) + " " + msf(200) + "\n";
        const fs::path path = folder / (name + ".toc");
        writeFile(path, toc);
        return path;
    }

    fs::path writeToc(const fs::path &folder, const std::string &name, bool swap) const
    {
        writeBin(folder / (name + ".bin"), !swap);
        const std::string file = "FILE \"" + name + ".bin\" " + (swap ? "SWAP " : "");
        std::string toc = "CD_DA\n"
                          "CD_TEXT {\n"
                          "  LANGUAGE_MAP { 0 : EN }\n"
                          "  LANGUAGE 0 {\n"
                          "    TITLE \"The Album\"\n"
                          "    PERFORMER \"The Band\"\n"
                          "  }\n"
                          "}\n"
                          "TRACK AUDIO\n"
                          "NO COPY\n"
                          "ISRC \"GBAYE0000001\"\n"
                          "CD_TEXT {\n"
                          "  LANGUAGE 0 {\n"
                          "    TITLE \"First\"\n"
                          "  }\n"
                          "}\n"
                          + file + "0 " + msf(290) + "\n"
                          "TRACK AUDIO\n"
                          "COPY\n"
                          "PRE_EMPHASIS\n"
                          "ISRC \"GBAYE0000002\"\n"
                          "CD_TEXT {\n"
                          "  LANGUAGE 0 {\n"
                          "    TITLE \"Second\"\n"
                          "  }\n"
                          "}\n"
                          + file + msf(290) + " " + msf(260) + "\n"
                          "START " + msf(10) + "\n"
                          "TRACK AUDIO\n"
                          "COPY\n"
                          "CD_TEXT {\n"
                          "  LANGUAGE 0 {\n"
                          "    TITLE \"Third\"\n"
                          "  }\n"
                          "}\n"
                          + file + "323400 " + msf(200) + "\n"  // a start given in samples
                          "TRACK MODE1_RAW\n"
                          "DATAFILE \"" + name + ".bin\" #1764000 " + msf(300) + "\n";
        const fs::path path = folder / (name + ".toc");
        writeFile(path, toc);
        return path;
    }
};

inline std::vector<char> readBytes(const fs::path &file, int64_t skip = 0)
{
    std::ifstream in(file, std::ios::binary);
    std::vector<char> all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (skip >= static_cast<int64_t>(all.size()))
        return {};
    return std::vector<char>(all.begin() + skip, all.end());
}

} // namespace cdromtest
