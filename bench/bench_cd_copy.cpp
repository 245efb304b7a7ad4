// A 10-minute track of a CUE/BIN image copied into a wave file through the extraction chain
// (reader -> converter -> trigger -> wave file) in each copy mode, against cd-paranoia on the
// same image (-Z for Burst, its default overlap checking for Sector synchronisation). Wall
// time; prints the ratios of one run.
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "DiscImageMaker.h"
#include "RealWork.h"
#include "platform/cdrom/CdReaderComponent.h"
#include "platform/media/FormatConverterComponent.h"
#include "platform/media/TriggerComponent.h"
#include "platform/media/WaveFileComponent.h"
#include "runtime/VirtualEventLoop.h"

using namespace cdromtest;
using Clock = std::chrono::steady_clock;

namespace {

double since(Clock::time_point t)
{
    return std::chrono::duration<double>(Clock::now() - t).count();
}

} // namespace

int main()
{
    const int64_t sectors = 10 * 60 * 75;
    TempDir tmp;
    const fs::path folder = tmp / "discs";
    fs::create_directories(folder);
    std::cerr << "writing a " << sectors << "-sector image...\n";
    writeBytes(folder / "long.bin", makePcm(sectors, 440, 7));
    writeFile(folder / "long.cue", "FILE \"long.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");

    rt::VirtualEventLoop loop;
    platform::cdrom::ReaderOptions options;
    options.imageFolder = folder;
    options.scanSystemDrives = false;
    platform::cdrom::CdReaderComponent reader(loop, options);
    reader.setDeviceID(0);
    reader.Open();
    if (!reader.ReadContents() || reader.TracksCount() != 1) {
        std::cerr << "the image can't be read\n";
        return 1;
    }
    platform::media::FormatConverterComponent converter;
    platform::media::TriggerComponent trigger(loop);
    platform::media::WaveFileComponent wave(loop);
    converter.setInput(&reader);
    reader.setOutput(&converter);
    trigger.setInput(&converter);
    converter.setOutput(&trigger);
    trigger.setOutput(&wave);
    wave.setInput(&trigger);
    trigger.setBufferSize(32768);
    bool failed = false;
    trigger.OnError = [&failed](int, const std::string &message) {
        std::cerr << "copy failed: " << message << "\n";
        failed = true;
    };

    struct Mode {
        int mode;
        const char *name;
        const char *paranoiaOptions;  // nullptr: no counterpart
    };
    const Mode modes[] = {{platform::CdReader::cmBurst, "Burst", "-Z"},
                          {platform::CdReader::cmNormal, "Normal", nullptr},
                          {platform::CdReader::cmSectorSync, "Sector synchronisation", ""}};
    const auto track = reader.TracksItem(0);
    double burstParanoia = 0;
    for (const Mode &m : modes) {
        reader.setCopyMode(m.mode);
        reader.SelectRange(track.Start, track.Length);
        // As the window clears the way first: replacing the last run's file would be timed too.
        fs::remove(tmp / "ours.wav");
        wave.setFileName((tmp / "ours.wav").string());
        const auto t0 = Clock::now();
        trigger.Start();
        if (!testsupport::settleRealWork(loop, std::chrono::seconds(600)) || failed)
            return 1;
        trigger.Close();
        testsupport::settleRealWork(loop);
        const double ours = since(t0);
        double theirs = burstParanoia;
        if (m.paranoiaOptions) {
            const std::string command = std::string("cd-paranoia -q ") + m.paranoiaOptions + " -d '" + (folder / "long.cue").string()
                                        + "' -w 1 '" + (tmp / "theirs.wav").string() + "' >/dev/null 2>&1";
            const auto t1 = Clock::now();
            if (std::system(command.c_str()) != 0) {
                std::cerr << "cd-paranoia failed\n";
                return 1;
            }
            theirs = since(t1);
            if (m.mode == platform::CdReader::cmBurst)
                burstParanoia = theirs;
        }
        std::cout << m.name << ": " << ours << " s, cd-paranoia " << (m.paranoiaOptions ? m.paranoiaOptions : "-Z") << " " << theirs
                  << " s, ratio " << ours / theirs << "\n";
    }
    return 0;
}
