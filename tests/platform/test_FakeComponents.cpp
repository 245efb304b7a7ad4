#include <gtest/gtest.h>

#include "platform/fake/FakeComponents.h"
#include "runtime/RuntimeError.h"

using namespace platform;

TEST(FakeComponents, SettingsAreSharedByEveryStore)
{
    auto world = std::make_shared<fake::FakeWorld>();
    auto c = fake::makeFakeComponents(world);
    auto a = c.settingsStore();
    auto b = c.settingsStore();
    a->OpenKey(SettingsStore::HKEY_CURRENT_USER, "K");
    a->WriteValue("Name", "v", SettingsStore::REG_SZ);
    b->OpenKey(SettingsStore::HKEY_CURRENT_USER, "k");
    EXPECT_EQ(b->ReadValue("NAME"), "v");
    EXPECT_EQ(world->registry->calls.front(), "OpenKey K");
}

TEST(FakeComponents, WriterConvertsStoredTextAsAnEngineWould)
{
    auto world = std::make_shared<fake::FakeWorld>();
    auto writer = fake::makeFakeComponents(world).writerEngine();
    writer->setFifoBufferCount("12");
    EXPECT_EQ(world->properties["ACDWRITE1.FifoBufferCount"], "12");
    EXPECT_THROW(writer->setPreGapSize("abc"), rt::RuntimeError);
    EXPECT_EQ(world->properties.count("ACDWRITE1.PreGapSize"), 0u);
}

TEST(FakeComponents, AbsentFamiliesHaveNoMaker)
{
    auto world = std::make_shared<fake::FakeWorld>();
    world->hasWriter = false;
    world->hasAudioChain = false;
    auto c = fake::makeFakeComponents(world);
    EXPECT_FALSE(c.writerEngine);
    EXPECT_FALSE(c.equalizer);
    Component<WriterEngine> none(c.writerEngine);
    try {
        none->InitEngine();
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 91);
    }
}

TEST(FakeComponents, EqualizerBandsAndIniGains)
{
    auto world = std::make_shared<fake::FakeWorld>();
    world->iniGains[2] = 4.5;
    auto eq = fake::makeFakeComponents(world).equalizer();
    for (int i = 0; i < 15; ++i)
        eq->AddBand(i * 1000.0, (i + 1) * 1000.0, 0.0);
    eq->LoadFromIni("/x/Eq.ini", "EqData");
    EXPECT_EQ(eq->BandGain(2), 4.5);
    EXPECT_EQ(eq->BandGain(3), 0.0);
    EXPECT_THROW(eq->BandGain(15), rt::RuntimeError);
}

#include "runtime/VirtualEventLoop.h"

TEST(FakeComponents, WriterWritesOnTheLoopsTimeAndTakesTheCloseFlagsAtTheEndOfTheData)
{
    rt::VirtualEventLoop loop;
    auto world = std::make_shared<fake::FakeWorld>();
    world->loop = &loop;
    world->msPerPercent = 10;
    world->closingMs = 500;
    auto writer = fake::makeFakeComponents(world).writerEngine();
    std::vector<std::string> events;
    writer->OnWriteProgress = [&](int p) { events.push_back("p" + std::to_string(p)); };
    writer->OnClosingDisc = [&] { events.push_back("closing"); };
    writer->OnTrackDone = [&](int) { events.push_back("done"); };
    writer->setWriteSpeed(4);
    ASSERT_EQ(writer->AddTrack("w.wav", 0), 0);
    ASSERT_EQ(writer->WriteTracks(), 0);
    loop.wait(500);
    writer->setCloseSessionAfterTrack(true);
    loop.wait(1100);
    ASSERT_EQ(events.size(), 102u);
    EXPECT_EQ(events[0], "p1");
    EXPECT_EQ(events[99], "p100");
    EXPECT_EQ(events[100], "closing");
    EXPECT_EQ(events[101], "done");
    EXPECT_EQ(world->writtenTracks.at(0), "speed 4, test False, closes True");
    // The track stays listed and written: a second WriteTracks writes nothing new.
    writer->AddTrack("w.wav", 0);
    writer->WriteTracks();
    loop.wait(5000);
    EXPECT_EQ(world->writtenTracks.size(), 2u);
}

TEST(FakeComponents, DiscStatesAnswerInTurnAndTheLastStays)
{
    auto world = std::make_shared<fake::FakeWorld>();
    world->discStates = {-1, 2, 0};
    auto writer = fake::makeFakeComponents(world).writerEngine();
    EXPECT_EQ(writer->DiscState(), -1);
    EXPECT_EQ(writer->DiscState(), 2);
    EXPECT_EQ(writer->DiscState(), 0);
    EXPECT_EQ(writer->DiscState(), 0);
}

TEST(FakeComponents, TriggerRefusesAMissingSourceAndClosesEvenWhenNeverOpened)
{
    rt::VirtualEventLoop loop;
    auto world = std::make_shared<fake::FakeWorld>();
    world->loop = &loop;
    auto c = fake::makeFakeComponents(world);
    auto source = c.audioFile();
    auto trigger = c.trigger();
    trigger->setInput(source.get());
    source->setFileName("/no/such/file.mp3");
    try {
        trigger->Start();
        FAIL() << "started";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 53);
    }
    int closed = 0;
    trigger->OnClosed = [&] { ++closed; };
    trigger->Close();
    loop.doEvents();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(trigger->State(), 0);
}
