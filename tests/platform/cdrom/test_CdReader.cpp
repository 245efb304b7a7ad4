// The real CD reader on disc images the tests write: tables of contents, flags, CD-Text, ISRC and
// disc ids; copies through the real chain checked against the image and against cd-paranoia;
// damaged images; a round trip through the Image Recorder; and sheets of wave files or of a BIN
// per track, which the reader joins into one image first.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <memory>
#include <optional>

#include <sndfile.h>

#include "DiscImageMaker.h"
#include "RealWork.h"
#include "platform/cdrom/CdReaderComponent.h"
#include "platform/media/FormatConverterComponent.h"
#include "platform/media/TriggerComponent.h"
#include "platform/media/WaveFileComponent.h"
#include "platform/writer/CdWriterEngine.h"
#include "runtime/RuntimeError.h"
#include "runtime/VirtualEventLoop.h"

using namespace cdromtest;
using platform::CdReader;
using platform::Trigger;
using platform::cdrom::CdReaderComponent;
using platform::cdrom::ReaderOptions;
using platform::media::FormatConverterComponent;
using platform::media::TriggerComponent;
using platform::media::WaveFileComponent;

namespace {

// The PCM of a wave file as little-endian bytes; nullopt when it can't be read.
std::optional<std::vector<char>> wavePcm(const fs::path &file)
{
    SF_INFO info{};
    SNDFILE *f = sf_open(file.c_str(), SFM_READ, &info);
    if (!f)
        return std::nullopt;
    std::vector<short> samples(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t got = sf_readf_short(f, samples.data(), info.frames);
    sf_close(f);
    if (info.channels != 2 || info.samplerate != 44100 || got != info.frames)
        return std::nullopt;
    std::vector<char> bytes;
    for (short s : samples) {
        const auto u = static_cast<uint16_t>(s);
        bytes.push_back(static_cast<char>(u & 0xFF));
        bytes.push_back(static_cast<char>(u >> 8));
    }
    return bytes;
}

std::string quoted(const fs::path &p)
{
    std::string q = "'";
    for (char c : p.string()) {
        if (c == '\'')
            q += "'\\''";
        else
            q += c;
    }
    return q + "'";
}

// What cd-paranoia extracts of a track of an image; run in the image's folder, where a TOC's
// file names are looked for.
std::vector<char> paranoiaTrack(const fs::path &image, int track, bool burst, const fs::path &out)
{
    const std::string command = "cd " + quoted(image.parent_path()) + " && cd-paranoia " + (burst ? "-Z " : "") +
                                "-q -d " + quoted(image.filename()) + " -w " + std::to_string(track) + " " +
                                quoted(out) + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return wavePcm(out).value_or(std::vector<char>());
}

std::vector<char> slice(const std::vector<char> &all, int64_t fromSector, int64_t sectors)
{
    return std::vector<char>(all.begin() + fromSector * sectorBytes, all.begin() + (fromSector + sectors) * sectorBytes);
}

// CDReader -> converter -> trigger -> wave file, as the extraction window wires it.
struct CopyChain {
    rt::VirtualEventLoop &loop;
    CdReaderComponent &reader;
    std::unique_ptr<FormatConverterComponent> converter = std::make_unique<FormatConverterComponent>();
    std::unique_ptr<TriggerComponent> trigger;
    std::unique_ptr<WaveFileComponent> wave;
    std::vector<std::string> errors;

    CopyChain(rt::VirtualEventLoop &l, CdReaderComponent &r) : loop(l), reader(r)
    {
        trigger = std::make_unique<TriggerComponent>(loop);
        wave = std::make_unique<WaveFileComponent>(loop);
        converter->setInput(&reader);
        reader.setOutput(converter.get());
        trigger->setInput(converter.get());
        converter->setOutput(trigger.get());
        trigger->setOutput(wave.get());
        wave->setInput(trigger.get());
        trigger->setBufferSize(20000);  // not a whole number of sectors
        trigger->OnError = [this](int code, const std::string &message) {
            errors.push_back(std::to_string(code) + ": " + message);
        };
    }

    // Copies `length` frames from `start` into `file`; the file's PCM.
    std::vector<char> copy(int32_t start, int32_t length, const fs::path &file)
    {
        reader.SelectRange(start, length);
        wave->setFileName(file.string());
        trigger->Start();
        EXPECT_TRUE(testsupport::settleRealWork(loop));
        trigger->Close();
        EXPECT_TRUE(testsupport::settleRealWork(loop));
        return wavePcm(file).value_or(std::vector<char>());
    }
};

enum class Form { CueLittle, CueBig, TocBig, TocSwap };

struct FormCase {
    const char *name;
    Form form;
};

class ReaderTest : public ::testing::Test {
protected:
    fs::path images() const { return tmp / "discs"; }

    void SetUp() override { fs::create_directories(images()); }

    fs::path writeImage(Form form, const std::string &name = "disc")
    {
        switch (form) {
        case Form::CueLittle: return disc.writeCue(images(), name, false);
        case Form::CueBig: return disc.writeCue(images(), name, true);
        case Form::TocBig: return disc.writeToc(images(), name, false);
        case Form::TocSwap: return disc.writeToc(images(), name, true);
        }
        return {};
    }

    std::unique_ptr<CdReaderComponent> makeReader()
    {
        ReaderOptions o;
        o.imageFolder = images();
        o.scanSystemDrives = false;
        return std::make_unique<CdReaderComponent>(loop, o);
    }

    // A reader opened on the only image of the folder, its contents read.
    std::unique_ptr<CdReaderComponent> openOnly()
    {
        auto r = makeReader();
        EXPECT_EQ(r->DevicesCount(), 1);
        r->setDeviceID(0);
        r->Open();
        return r;
    }

    rt::VirtualEventLoop loop;
    TempDir tmp;
    TestDisc disc;
};

class EachForm : public ReaderTest, public ::testing::WithParamInterface<FormCase> {};

} // namespace

TEST_F(ReaderTest, ImagesAreListedByFileNameAfterTheDrives)
{
    disc.writeToc(images(), "b-second", true);
    disc.writeCue(images(), "a-first", false);
    writeFile(images() / "notes.txt", "not a disc");
    auto r = makeReader();
    ASSERT_EQ(r->DevicesCount(), 2);
    EXPECT_EQ(r->DevicesItem(0).DriveLetter, "a-first.cue");
    EXPECT_EQ(r->DevicesItem(0).Name, "Disc Image");
    EXPECT_EQ(r->DevicesItem(1).DriveLetter, "b-second.toc");
    r->setDevicesItemType(1, 3);
    EXPECT_EQ(r->DevicesItem(1).Type, 3);
    try {
        r->DevicesItem(2);
        FAIL() << "no error 9";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 9);
    }
    r->setDeviceID(1);
    EXPECT_EQ(r->DeviceName(), "Disc Image");
    EXPECT_EQ(r->DriveLetter(), "b-second.toc");
}

TEST_P(EachForm, TableFlagsTextIsrcAndDiscId)
{
    const Form form = GetParam().form;
    writeImage(form);
    auto r = openOnly();
    EXPECT_EQ(r->Status(), CdReader::StatusReady);
    EXPECT_TRUE(r->DiscPresent());
    ASSERT_TRUE(r->ReadContents());
    ASSERT_EQ(r->TracksCount(), 4);
    const int32_t starts[] = {0, 300, 550, 750};
    // Each track runs to the next one's start: track 2's ten-sector pause belongs to track 1.
    const int32_t lengths[] = {300, 250, 200, 300};
    for (int i = 0; i < 4; ++i) {
        const auto t = r->TracksItem(i);
        EXPECT_EQ(t.Number, i + 1);
        EXPECT_EQ(t.Start, starts[i]) << "track " << i + 1;
        EXPECT_EQ(t.Length, lengths[i]) << "track " << i + 1;
        EXPECT_EQ(t.IsAudio, i < 3);
        EXPECT_EQ(t.PreEmphasis, i == 1) << "track " << i + 1;
        // As the disc burned from the image reports it: a CUE track without FLAGS DCP, a TOC
        // track without COPY may not be copied.
        EXPECT_EQ(t.CopyProtected, i == 0 || i == 3) << "track " << i + 1;
        EXPECT_EQ(r->FramesOf(t.Length), t.Length);
    }
    EXPECT_THROW(r->TracksItem(4), rt::RuntimeError);
    // freedb: digit sums 2+6+9+12 -> 20, 14 seconds, 4 tracks.
    EXPECT_EQ(r->DiscId(), 0x14000E04);
    ASSERT_TRUE(r->HasCDText());
    const auto text = r->CDText();
    ASSERT_GE(text.size(), 4u);
    EXPECT_EQ(text[0].Title, "The Album");
    EXPECT_EQ(text[1].Title, "First");
    EXPECT_EQ(text[2].Title, "Second");
    EXPECT_EQ(text[3].Title, "Third");
    EXPECT_TRUE(r->CanReadISRC());
    EXPECT_EQ(r->ReadISRC(1), "GBAYE0000001");
    EXPECT_EQ(r->ReadISRC(2), "GBAYE0000002");
    EXPECT_EQ(r->ReadISRC(3), "");
    EXPECT_EQ(r->ReadISRC(9), "");
}

TEST_P(EachForm, CopiesOfTracksTwoAndThreeEqualTheSectorsInEveryMode)
{
    writeImage(GetParam().form);
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    CopyChain chain(loop, *r);
    const std::vector<char> audio = disc.audio();
    for (int mode : {CdReader::cmNormal, CdReader::cmBurst, CdReader::cmSectorSync}) {
        r->setCopyMode(mode);
        for (int index : {1, 2}) {
            const auto t = r->TracksItem(index);
            const auto pcm = chain.copy(t.Start, t.Length, tmp / ("copy" + std::to_string(index) + ".wav"));
            EXPECT_TRUE(pcm == slice(audio, t.Start, t.Length)) << "mode " << mode << " track " << t.Number;
            EXPECT_EQ(r->ReadPosition(), t.Start + t.Length);
            EXPECT_EQ(r->RangeStart(), t.Start);
        }
    }
    EXPECT_TRUE(chain.errors.empty()) << chain.errors.front();
}

INSTANTIATE_TEST_SUITE_P(Forms, EachForm,
                         ::testing::Values(FormCase{"CueLittleEndian", Form::CueLittle}, FormCase{"CueMotorola", Form::CueBig},
                                           FormCase{"TocBigEndian", Form::TocBig}, FormCase{"TocSwap", Form::TocSwap}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(ReaderTest, CopiesEqualWhatCdParanoiaExtracts)
{
    // Raw libcdio (and so cd-paranoia) refuses a TOC's SWAP, byte offsets and sample counts, which
    // the reader rewrites first; the comparison is on the CUE forms and on a TOC without them.
    const std::vector<fs::path> forms = {writeImage(Form::CueLittle, "little"), writeImage(Form::CueBig, "motorola"),
                                         disc.writePlainToc(images(), "plain")};
    for (const fs::path &image : forms) {
        ReaderOptions o;
        o.imageFolder = images();
        o.scanSystemDrives = false;
        CdReaderComponent r(loop, o);
        int id = -1;
        for (int i = 0; i < r.DevicesCount(); ++i)
            if (r.DevicesItem(i).DriveLetter == image.filename().string())
                id = i;
        ASSERT_GE(id, 0) << image;
        r.setDeviceID(id);
        r.Open();
        ASSERT_TRUE(r.ReadContents()) << image;
        ASSERT_GE(r.TracksCount(), 3) << image;
        CopyChain chain(loop, r);
        for (int mode : {CdReader::cmBurst, CdReader::cmSectorSync, CdReader::cmNormal}) {
            r.setCopyMode(mode);
            // Every audio track byte for byte, the first with the second's pause at its end.
            for (int index : {0, 1, 2}) {
                const auto t = r.TracksItem(index);
                const auto ours = chain.copy(t.Start, t.Length, tmp / "ours.wav");
                const auto theirs = paranoiaTrack(image, t.Number, mode == CdReader::cmBurst, tmp / "theirs.wav");
                EXPECT_EQ(ours.size(), static_cast<size_t>(t.Length * sectorBytes));
                EXPECT_TRUE(ours == theirs) << "image " << image.filename() << " mode " << mode << " track " << t.Number;
            }
        }
        EXPECT_TRUE(chain.errors.empty()) << chain.errors.front();
    }
}

TEST_F(ReaderTest, SettingsStayAcrossCloseAndOpen)
{
    writeImage(Form::CueLittle);
    auto r = openOnly();
    EXPECT_EQ(r->BlockCount(), 26);
    EXPECT_EQ(r->CopyMode(), CdReader::cmBurst);
    r->setBlockCount(7);
    r->setCopyMode(CdReader::cmSectorSync);
    r->setDeviceType(2);
    r->setIgnoreSpeed(true);
    EXPECT_THROW(r->setBlockCount(0), rt::RuntimeError);
    EXPECT_THROW(r->setBlockCount(51), rt::RuntimeError);
    EXPECT_THROW(r->setCopyMode(3), rt::RuntimeError);
    r->Close();
    EXPECT_EQ(r->Status(), CdReader::StatusNoDrive);
    r->Open();
    EXPECT_EQ(r->BlockCount(), 7);
    EXPECT_EQ(r->CopyMode(), CdReader::cmSectorSync);
    EXPECT_EQ(r->DeviceType(), 2);
    EXPECT_TRUE(r->IgnoreSpeed());

    r->DetectSpeeds();
    ASSERT_GE(r->SpeedsCount(), 2);
    EXPECT_EQ(r->SpeedsText(0), "48 x");
    EXPECT_EQ(r->SpeedValue(0), 48 * 176);
    EXPECT_EQ(r->SpeedsText(r->SpeedsCount() - 1), "1 x");
    EXPECT_NO_THROW(r->SetSpeed(r->SpeedValue(1)));
}

TEST_F(ReaderTest, TheDoorAndASimulatedPlayOfAnImage)
{
    writeImage(Form::CueLittle);
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    EXPECT_EQ(r->CurrentTrack(), 0);
    r->Play(280, 150);  // two seconds from the end of track 1
    EXPECT_EQ(r->Status(), CdReader::StatusPlaying);
    EXPECT_EQ(r->CurrentTrack(), 1);
    loop.wait(1000);
    EXPECT_EQ(r->PlayPosition(), 355);
    EXPECT_EQ(r->CurrentTrack(), 2);
    loop.wait(1100);
    EXPECT_EQ(r->Status(), CdReader::StatusReady);
    EXPECT_EQ(r->PlayPosition(), 430);

    r->Play(0, 750);
    r->Stop();
    EXPECT_EQ(r->Status(), CdReader::StatusReady);

    const int32_t id = r->DiscId();
    r->SetDoor(false);
    EXPECT_EQ(r->Status(), CdReader::StatusTrayOpen);
    EXPECT_FALSE(r->DiscPresent());
    EXPECT_EQ(r->DiscId(), 0);
    r->SetDoor(true);
    EXPECT_EQ(r->Status(), CdReader::StatusReady);
    EXPECT_TRUE(r->DiscPresent());
    EXPECT_EQ(r->DiscId(), id);
}

// --- damaged images ---------------------------------------------------------------------------

TEST_F(ReaderTest, ACueWhoseBinIsMissingIsADiscWithoutContents)
{
    const fs::path cue = writeImage(Form::CueLittle);
    fs::remove(images() / "disc.bin");
    auto r = openOnly();
    EXPECT_EQ(r->Status(), CdReader::StatusReady);
    EXPECT_TRUE(r->DiscPresent());
    EXPECT_FALSE(r->ReadContents());
    EXPECT_EQ(r->TracksCount(), 0);
    const int32_t id = r->DiscId();
    EXPECT_NE(id, 0);
    EXPECT_NE(id, -1);
    EXPECT_EQ(r->DiscId(), id);
    r->SelectRange(0, 100);
    EXPECT_THROW(r->openSource(), rt::RuntimeError);
    // The BIN comes back: the disc reads.
    disc.writeBin(images() / "disc.bin", false);
    EXPECT_TRUE(r->ReadContents());
    EXPECT_EQ(r->DiscId(), 0x14000E04);
}

TEST_F(ReaderTest, GarbageSheetsReadAsUnreadableDiscs)
{
    std::string noise;
    for (int i = 0; i < 5000; ++i)
        noise += static_cast<char>((i * 7919) % 251);
    writeFile(images() / "a.cue", noise);
    writeFile(images() / "b.toc", noise);
    writeFile(images() / "c.cue", "FILE \"c.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 99:99:99\n");
    writeFile(images() / "d.toc", "CD_DA\nTRACK AUDIO\nFILE \"/nonexistent/x.bin\" 0 00:02:00\n");
    writeFile(images() / "e.toc", "CD_DA\nTRACK AUDIO\nFILE \"e.bin\" #abc 0\n");
    writeFile(images() / "f.cue", "");
    writeBytes(images() / "c.bin", std::vector<char>(2352 * 10, 1));
    auto r = makeReader();
    ASSERT_EQ(r->DevicesCount(), 6);
    for (int i = 0; i < r->DevicesCount(); ++i) {
        r->setDeviceID(i);
        r->Open();
        EXPECT_TRUE(r->DiscPresent());
        EXPECT_FALSE(r->ReadContents()) << r->DriveLetter();
        EXPECT_NE(r->DiscId(), 0);
        EXPECT_NE(r->DiscId(), -1);
        r->Close();
    }
}

TEST_F(ReaderTest, AnImageOfOnlyDataListsItsTrackAndWontCopyIt)
{
    writeBytes(images() / "data.bin", disc.data);
    writeFile(images() / "data.cue", "FILE \"data.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n");
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    ASSERT_EQ(r->TracksCount(), 1);
    EXPECT_FALSE(r->TracksItem(0).IsAudio);
    CopyChain chain(loop, *r);
    r->SelectRange(0, 300);
    chain.wave->setFileName((tmp / "data.wav").string());
    try {
        chain.trigger->Start();
        FAIL() << "a data track was copied";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 57);
    }
}

TEST_F(ReaderTest, ATruncatedBinShortensTheDiscAndNothingReadsPastIt)
{
    writeImage(Form::CueLittle);
    // Cut inside track 2: tracks 3 and 4 are gone.
    fs::resize_file(images() / "disc.bin", 400 * sectorBytes);
    auto r = openOnly();
    if (r->ReadContents()) {
        for (int i = 0; i < r->TracksCount(); ++i) {
            const auto t = r->TracksItem(i);
            EXPECT_LE(t.Start + t.Length, 400) << "track " << t.Number;
        }
    }
    CopyChain chain(loop, *r);
    r->SelectRange(550, 200);
    chain.wave->setFileName((tmp / "t3.wav").string());
    EXPECT_THROW(chain.trigger->Start(), rt::RuntimeError);
}

TEST_F(ReaderTest, AnImageCutShortDuringACopyGivesAnError)
{
    for (int mode : {CdReader::cmBurst, CdReader::cmNormal, CdReader::cmSectorSync}) {
        writeImage(Form::CueLittle);
        auto r = openOnly();
        ASSERT_TRUE(r->ReadContents());
        r->setCopyMode(mode);
        r->SelectRange(300, 450);
        const auto info = r->openSource();
        EXPECT_EQ(info.format, platform::WaveFormat::cdAudio());
        EXPECT_EQ(info.title, "Second");
        std::vector<std::byte> buffer(40000);
        auto first = r->read(buffer.data(), buffer.size());
        EXPECT_EQ(first.bytes, buffer.size());
        EXPECT_FALSE(first.error) << first.error->message;
        EXPECT_TRUE(std::memcmp(buffer.data(), disc.audio().data() + 300 * sectorBytes, first.bytes) == 0);
        fs::resize_file(images() / "disc.bin", 500 * sectorBytes);
        platform::media::ReadResult rest;
        for (int i = 0; i < 200 && !rest.end; ++i)
            rest = r->read(buffer.data(), buffer.size());
        ASSERT_TRUE(rest.error) << "mode " << mode;
        EXPECT_EQ(rest.error->code, 57);
        r->closeSource();
        r.reset();
        fs::remove(images() / "disc.bin");
        fs::remove(images() / "disc.cue");
    }
}

TEST_F(ReaderTest, AnImageThatVanishesIsADiscThatLeft)
{
    writeImage(Form::CueLittle);
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    fs::remove(images() / "disc.cue");
    EXPECT_EQ(r->Status(), CdReader::StatusNoDisc);
    EXPECT_FALSE(r->DiscPresent());
    EXPECT_EQ(r->DiscId(), 0);
    EXPECT_FALSE(r->ReadContents());
}

// --- round trip -------------------------------------------------------------------------------

namespace {

std::vector<char> writeWorkWave(const fs::path &file, int64_t frames, const std::string &title, unsigned seed)
{
    SF_INFO info{};
    info.channels = 2;
    info.samplerate = 44100;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *f = sf_open(file.c_str(), SFM_WRITE, &info);
    if (!f)
        return {};
    sf_set_string(f, SF_STR_TITLE, title.c_str());
    std::vector<char> pcm = makePcm((frames + 587) / 588, 300 + 100 * seed, seed);
    pcm.resize(static_cast<size_t>(frames * 4));
    std::vector<short> samples(static_cast<size_t>(frames * 2));
    std::memcpy(samples.data(), pcm.data(), pcm.size());
    sf_writef_short(f, samples.data(), frames);
    sf_close(f);
    return pcm;
}

} // namespace

TEST_F(ReaderTest, WhatTheImageRecorderBurnsCopiesBackUnchanged)
{
    platform::writer::Options o;
    o.imageFolder = images();
    o.setupMs = 0;
    o.scanSystemRecorders = false;
    std::vector<std::vector<char>> burned;
    {
        platform::writer::CdWriterEngine e(loop, o);
        ASSERT_EQ(e.InitEngine(), 0);
        for (int i = 0; i < e.DeviceCount(); ++i) {
            e.SelectDevice(i);
            if (e.DeviceDriverType() >= 1 && e.DeviceDriverType() < 100) {
                e.SetDriverType(e.DeviceDriverType());
                break;
            }
        }
        int done = 0;
        int result = -1;
        e.OnTrackDone = [&](int r) {
            ++done;
            result = r;
        };
        const int64_t frames[] = {198450, 44100, 220623};
        for (int i = 0; i < 3; ++i) {
            if (i > 0) {
                e.ClearTracks();
                ASSERT_EQ(e.InitEngine(), 0);
            }
            e.setCloseDiscAfterTrack(i == 2);
            e.setCloseSessionAfterTrack(i == 2);
            e.setTestWrite(false);
            e.setWriteSpeed(8);
            const fs::path work = tmp / "work.wav";
            burned.push_back(writeWorkWave(work, frames[i], "Track " + std::to_string(i + 1), static_cast<unsigned>(i + 1)));
            ASSERT_EQ(e.AddTrack(work.string(), 0), 0);
            for (int wait = 0; wait < 2000 && e.DiscState() != 0; ++wait) {
                loop.doEvents();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            ASSERT_EQ(e.DiscState(), 0);
            ASSERT_EQ(e.WriteTracks(), 0);
            const int before = i;
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            while (done <= before && std::chrono::steady_clock::now() < deadline) {
                loop.doEvents();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            ASSERT_EQ(done, i + 1);
            ASSERT_EQ(result, 0);
        }
    }
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    ASSERT_EQ(r->TracksCount(), 3);
    EXPECT_TRUE(r->HasCDText());
    CopyChain chain(loop, *r);
    for (int i = 0; i < 3; ++i) {
        const auto t = r->TracksItem(i);
        EXPECT_FALSE(t.CopyProtected);
        EXPECT_FALSE(t.PreEmphasis);
        EXPECT_TRUE(t.IsAudio);
        EXPECT_EQ(r->CDText()[static_cast<size_t>(i + 1)].Title, "Track " + std::to_string(i + 1));
        std::vector<char> expected = burned[static_cast<size_t>(i)];
        // Whole sectors, and four seconds (300 sectors) at least: a shorter track ends in silence;
        // then, but for the last, the pause before the next track, as a drive reads the disc.
        expected.resize(std::max<size_t>((expected.size() + sectorBytes - 1) / sectorBytes * sectorBytes, 300 * sectorBytes), 0);
        if (i < 2)
            expected.resize(expected.size() + 150 * sectorBytes, 0);
        EXPECT_EQ(t.Length * sectorBytes, static_cast<int64_t>(expected.size())) << "track " << i + 1;
        for (int mode : {CdReader::cmBurst, CdReader::cmSectorSync}) {
            r->setCopyMode(mode);
            const auto pcm = chain.copy(t.Start, t.Length, tmp / "back.wav");
            EXPECT_TRUE(pcm == expected) << "track " << i + 1 << " mode " << mode;
        }
    }
    EXPECT_TRUE(chain.errors.empty());
}

// --- sheets of other files --------------------------------------------------------------------

namespace {

// A wave of `frames` frames of 16-bit PCM; the samples written, interleaved.
std::vector<short> writeWave(const fs::path &file, int rate, int channels, int64_t frames, unsigned seed)
{
    std::vector<short> samples(static_cast<size_t>(frames * channels));
    uint32_t noise = seed * 2654435761u + 7;
    for (int64_t i = 0; i < frames; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double t = static_cast<double>(i) / rate;
        for (int c = 0; c < channels; ++c)
            samples[static_cast<size_t>(i * channels + c)] =
                static_cast<short>(8000 * std::sin(2 * M_PI * (300 + 100 * seed + 50 * c) * t) + static_cast<int>(noise >> 25) - 64);
    }
    SF_INFO info{};
    info.channels = channels;
    info.samplerate = rate;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *f = sf_open(file.c_str(), SFM_WRITE, &info);
    if (!f)
        return {};
    sf_writef_short(f, samples.data(), frames);
    sf_close(f);
    return samples;
}

std::vector<char> littleEndian(const std::vector<short> &samples)
{
    std::vector<char> bytes;
    for (short s : samples) {
        const auto u = static_cast<uint16_t>(s);
        bytes.push_back(static_cast<char>(u & 0xFF));
        bytes.push_back(static_cast<char>(u >> 8));
    }
    return bytes;
}

std::vector<fs::path> filesIn(const fs::path &folder)
{
    std::vector<fs::path> out;
    for (const auto &e : fs::recursive_directory_iterator(folder))
        out.push_back(e.path().filename());
    std::sort(out.begin(), out.end());
    return out;
}

// Points the system's temporary folder at one of the test's own while it lives.
class TempFolderOf {
public:
    explicit TempFolderOf(const fs::path &folder)
    {
        if (const char *old = std::getenv("TMPDIR"))
            m_old = old;
        fs::create_directories(folder);
        setenv("TMPDIR", folder.c_str(), 1);
    }
    ~TempFolderOf()
    {
        if (m_old)
            setenv("TMPDIR", m_old->c_str(), 1);
        else
            unsetenv("TMPDIR");
    }

private:
    std::optional<std::string> m_old;
};

// Three waves as a ripper writes them: the first and second not whole sectors long, the second
// with its pregap at its start, the third 22050 Hz mono.
const std::string waveSheet = "REM GENRE Rock\n"
                              "PERFORMER \"The Band\"\n"
                              "TITLE \"Waves\"\n"
                              "FILE \"one.wav\" WAVE\n"
                              "  TRACK 01 AUDIO\n"
                              "    TITLE \"First\"\n"
                              "    PERFORMER \"Singer One\"\n"
                              "    ISRC GBAYE0000001\n"
                              "    INDEX 01 00:00:00\n"
                              "FILE \"two.wav\" WAVE\n"
                              "  TRACK 02 AUDIO\n"
                              "    TITLE \"Second\"\n"
                              "    FLAGS DCP PRE\n"
                              "    ISRC GBAYE0000002\n"
                              "    INDEX 00 00:00:00\n"
                              "    INDEX 01 00:00:10\n"
                              "FILE \"three.wav\" WAVE\n"
                              "  TRACK 03 AUDIO\n"
                              "    TITLE \"Third\"\n"
                              "    INDEX 01 00:00:00\n";

} // namespace

TEST_F(ReaderTest, ACueOfWaveFilesReadsAsItsTracksAndCopiesTheirPcm)
{
    const fs::path systemTemp = tmp / "system-temp";
    TempFolderOf temp(systemTemp);
    writeWave(images() / "one.wav", 44100, 2, 100 * 588 + 100, 1);
    const auto two = littleEndian(writeWave(images() / "two.wav", 44100, 2, 150 * 588 + 300, 2));
    writeWave(images() / "three.wav", 22050, 1, 80 * 294, 3);
    writeFile(images() / "waves.cue", waveSheet);
    {
        auto r = openOnly();
        EXPECT_EQ(r->Status(), CdReader::StatusReady);
        ASSERT_TRUE(r->ReadContents());
        ASSERT_EQ(r->TracksCount(), 3);
        // Each wave on whole sectors of its own: 101, 151 and 80 sectors; track 1 runs on through
        // track 2's ten-sector pause.
        const int32_t starts[] = {0, 111, 252};
        const int32_t lengths[] = {111, 141, 80};
        for (int i = 0; i < 3; ++i) {
            const auto t = r->TracksItem(i);
            EXPECT_EQ(t.Start, starts[i]) << "track " << i + 1;
            EXPECT_EQ(t.Length, lengths[i]) << "track " << i + 1;
            EXPECT_TRUE(t.IsAudio);
            EXPECT_EQ(t.PreEmphasis, i == 1) << "track " << i + 1;
            EXPECT_EQ(t.CopyProtected, i != 1) << "only track 2 says FLAGS DCP";
        }
        ASSERT_TRUE(r->HasCDText());
        const auto text = r->CDText();
        ASSERT_GE(text.size(), 4u);
        EXPECT_EQ(text[0].Title, "Waves");
        EXPECT_EQ(text[1].Title, "First");
        EXPECT_EQ(text[2].Title, "Second");
        EXPECT_EQ(text[3].Title, "Third");
        EXPECT_EQ(r->ReadISRC(1), "GBAYE0000001");
        EXPECT_EQ(r->ReadISRC(2), "GBAYE0000002");
        EXPECT_EQ(r->ReadISRC(3), "");

        // Track 2 is the wave after its pregap, then silence to the sector's end.
        std::vector<char> expected(two.begin() + 10 * sectorBytes, two.end());
        expected.resize(141 * sectorBytes, 0);
        CopyChain chain(loop, *r);
        for (int mode : {CdReader::cmBurst, CdReader::cmSectorSync}) {
            r->setCopyMode(mode);
            const auto pcm = chain.copy(111, 141, tmp / "two-copy.wav");
            EXPECT_TRUE(pcm == expected) << "mode " << mode;
        }
        r->SelectRange(0, 101);
        EXPECT_EQ(r->openSource().artist, "Singer One");
        r->closeSource();
        EXPECT_TRUE(chain.errors.empty()) << chain.errors.front();

        // Closed and opened again: the same joined image, no work.
        r->Close();
        r->Open();
        ASSERT_TRUE(r->ReadContents());
        EXPECT_EQ(r->TracksItem(2).Length, 80);
        // A wave that changes is joined again.
        writeWave(images() / "three.wav", 22050, 1, 40 * 294, 4);
        ASSERT_TRUE(r->ReadContents());
        EXPECT_EQ(r->TracksItem(2).Length, 40);
    }
    // Nothing was written beside the sheet, and the temporary files went with the reader.
    EXPECT_EQ(filesIn(images()), (std::vector<fs::path>{"one.wav", "three.wav", "two.wav", "waves.cue"}));
    EXPECT_TRUE(filesIn(systemTemp).empty());
}

TEST_F(ReaderTest, ACueOfABinPerTrackReadsAsOneDisc)
{
    // libcdio reads only the BIN named as the sheet: one per track, or one of another name, are
    // joined first.
    const std::vector<char> a = makePcm(120, 440, 1);
    const std::vector<char> b = makePcm(90, 554, 2);
    writeBytes(images() / "Track 1.bin", a);
    writeBytes(images() / "Track 2.bin", swapped(b));
    writeFile(images() / "split.cue", "TITLE \"Split\"\n"
                                      "FILE \"Track 1.bin\" BINARY\n"
                                      "  TRACK 01 AUDIO\n"
                                      "    TITLE \"One\"\n"
                                      "    INDEX 01 00:00:00\n"
                                      "FILE \"Track 2.bin\" MOTOROLA\n"
                                      "  TRACK 02 AUDIO\n"
                                      "    TITLE \"Two\"\n"
                                      "    FLAGS PRE\n"
                                      "    INDEX 00 00:00:00\n"
                                      "    INDEX 01 00:00:10\n");
    auto r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    ASSERT_EQ(r->TracksCount(), 2);
    EXPECT_EQ(r->TracksItem(0).Start, 0);
    EXPECT_EQ(r->TracksItem(0).Length, 130);
    EXPECT_EQ(r->TracksItem(1).Start, 130);
    EXPECT_EQ(r->TracksItem(1).Length, 80);
    EXPECT_TRUE(r->TracksItem(1).PreEmphasis);
    EXPECT_EQ(r->CDText()[2].Title, "Two");
    CopyChain chain(loop, *r);
    // Track 1 and then track 2's pause, which Track 2.bin holds at its start.
    std::vector<char> oneAndPause = a;
    oneAndPause.insert(oneAndPause.end(), b.begin(), b.begin() + 10 * sectorBytes);
    EXPECT_TRUE(chain.copy(0, 130, tmp / "one.wav") == oneAndPause);
    EXPECT_TRUE(chain.copy(130, 80, tmp / "two.wav") == slice(b, 10, 80));
    EXPECT_TRUE(chain.errors.empty()) << chain.errors.front();

    // One BIN of another name than the sheet's.
    r.reset();
    fs::remove(images() / "split.cue");
    writeBytes(images() / "Album.bin", b);
    writeFile(images() / "named.cue", "FILE \"Album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    r = openOnly();
    ASSERT_TRUE(r->ReadContents());
    ASSERT_EQ(r->TracksCount(), 1);
    EXPECT_EQ(r->TracksItem(0).Length, 90);
    CopyChain again(loop, *r);
    EXPECT_TRUE(again.copy(0, 90, tmp / "album.wav") == b);
}

TEST_F(ReaderTest, ACueWhoseWaveIsMissingOrDamagedIsADiscWithoutContents)
{
    writeWave(images() / "one.wav", 44100, 2, 100 * 588, 1);
    writeWave(images() / "three.wav", 22050, 1, 80 * 294, 3);
    writeFile(images() / "waves.cue", waveSheet);
    auto r = openOnly();
    EXPECT_EQ(r->Status(), CdReader::StatusReady);
    EXPECT_TRUE(r->DiscPresent());
    EXPECT_FALSE(r->ReadContents());
    EXPECT_EQ(r->TracksCount(), 0);
    EXPECT_NE(r->DiscId(), 0);
    r->SelectRange(0, 100);
    EXPECT_THROW(r->openSource(), rt::RuntimeError);

    // The wave comes: the disc reads.
    writeWave(images() / "two.wav", 44100, 2, 150 * 588, 2);
    ASSERT_TRUE(r->ReadContents());
    EXPECT_EQ(r->TracksCount(), 3);

    // Cut short, its pregap's sectors gone, garbage, empty.
    fs::resize_file(images() / "two.wav", 20000);
    EXPECT_FALSE(r->ReadContents());
    writeWave(images() / "two.wav", 44100, 2, 5 * 588, 2);
    EXPECT_FALSE(r->ReadContents()) << "INDEX 01 00:00:10 lies past a wave of 5 sectors";
    std::string noise = "RIFF";
    for (int i = 0; i < 5000; ++i)
        noise += static_cast<char>((i * 7919) % 251);
    writeFile(images() / "two.wav", noise);
    EXPECT_FALSE(r->ReadContents());
    writeFile(images() / "two.wav", "");
    EXPECT_FALSE(r->ReadContents());
    // A wave that is no file.
    fs::remove(images() / "two.wav");
    fs::create_directory(images() / "two.wav");
    EXPECT_FALSE(r->ReadContents());
    EXPECT_TRUE(r->DiscPresent());
}
