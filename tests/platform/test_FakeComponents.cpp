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
