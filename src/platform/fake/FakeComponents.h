#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/AudioChain.h"
#include "platform/Components.h"
#include "platform/Shell.h"
#include "platform/SystemInfo.h"
#include "platform/WriterEngine.h"
#include "platform/fake/FakeHttp.h"
#include "platform/fake/FakeCdReader.h"
#include "platform/fake/FakeSettingsStore.h"

namespace rt {
class EventLoop;
}

namespace platform::fake {

struct FakeImagingWorld;

// What the fakes were told and what they are to answer, shared by every instance a window
// makes. Scenarios set the answers and read the log.
struct FakeWorld {
    std::shared_ptr<FakeRegistry> registry = std::make_shared<FakeRegistry>();

    // System information: the memory in use, in percent.
    int memoryUsedPercent = 42;

    // Writer engine: what InitEngine returns, and the recorders it finds (name, driver type).
    int writerInitResult = 0;
    std::vector<std::pair<std::string, int>> writerDevices{{"Image Recorder", 10}};

    // Writer engine, burning: DiscState's answers in turn (the last one stays), the results of
    // AddTrack and WriteTracks, virtual milliseconds per percent written and for the closing.
    std::vector<int> discStates{0};
    size_t discStateReads = 0;
    int addTrackResult = 0;
    int writeTracksResult = 0;
    int msPerPercent = 30;
    int closingMs = 2000;
    // One line for each track the fake writer wrote, in order.
    std::vector<std::string> writtenTracks;

    // Decoding chain: virtual milliseconds a decode takes; whether Start refuses.
    int decodeMs = 2000;
    bool triggerStartFails = false;
    // Converting chain: after how many buffers the target file's disk is full, counted over the
    // whole run (0: never); a buffer is 100 virtual milliseconds of a conversion.
    int diskFullAfterBuffers = 0;
    int buffersWritten = 0;

    // Player chain: the length of every file the fake decoder opens, in milliseconds.
    int playMs = 5000;

    // The loop on which the fakes raise their events, one after the other in virtual time.
    rt::EventLoop *loop = nullptr;

    // Shell: what openAddress returns (non-zero: the address could not be handed over).
    int shellResult = 0;

    // The add-on server behind the fake HTTP download.
    FakeHttpSettings http;

    // Every property a fake component was given, as "Component.Property" -> value text,
    // and every call, in order.
    std::map<std::string, std::string> properties;
    std::vector<std::string> calls;
    // Equaliser bands as the fake holds them (gain by index); a band list of the last equaliser.
    std::vector<double> bandGains;
    // Gains an Eq.ini file would give, by band index; empty when the file is missing.
    std::map<int, double> iniGains;

    // The CD reader's drives and disc.
    std::shared_ptr<FakeReaderWorld> reader = std::make_shared<FakeReaderWorld>();

    // Which families are there at all; a missing one is a component the program hasn't got.
    bool hasWriter = true;
    bool hasAudioChain = true;
    bool hasDecoder = true;
    bool hasReader = true;

    // The cover designer's fakes (FakeImaging.h), made on first use.
    std::shared_ptr<FakeImagingWorld> imaging;
};

// Components whose makers all build fakes on one world.
Components makeFakeComponents(std::shared_ptr<FakeWorld> world);

} // namespace platform::fake
