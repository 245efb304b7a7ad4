#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "platform/settings/FileSettingsStore.h"
#include "runtime/RuntimeError.h"

namespace fs = std::filesystem;
using platform::SettingsStore;
using platform::settings::FileSettingsStore;

namespace {

struct FileSettingsStoreTest : ::testing::Test {
    fs::path dir = fs::temp_directory_path() / ("settings-test-" + std::to_string(std::random_device{}()));
    fs::path file = dir / "velmora-works" / "registry.ini";
    ~FileSettingsStoreTest() override { fs::remove_all(dir); }

    std::string text() const
    {
        std::ifstream in(file);
        std::ostringstream s;
        s << in.rdbuf();
        return s.str();
    }
};

constexpr const char *key = "Software\\Velmora Works\\MP3 Data";

TEST_F(FileSettingsStoreTest, WrittenValuesSurviveANewStore)
{
    {
        FileSettingsStore store(file);
        store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
        store.WriteValue("NumBuffers", "abc", SettingsStore::REG_SZ);
        store.WriteValue("ShowEQonStartup", "yes", SettingsStore::REG_SZ);
        store.CloseKey();
    }
    FileSettingsStore again(file);
    again.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    EXPECT_EQ(again.ReadValue("NumBuffers"), "abc");
    EXPECT_EQ(again.ReadValue("ShowEQonStartup"), "yes");
}

TEST_F(FileSettingsStoreTest, NamesAndKeysIgnoreCase)
{
    FileSettingsStore store(file);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    store.WriteValue("STriggerLevel", "5", SettingsStore::REG_SZ);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, "software\\velmora works\\mp3 data");
    EXPECT_EQ(store.ReadValue("STriggerlevel"), "5");
    store.WriteValue("striggerlevel", "6", SettingsStore::REG_SZ);
    EXPECT_EQ(store.ReadValue("STriggerLevel"), "6");
    // One value, not two spellings of it.
    EXPECT_EQ(FileSettingsStore::parse(text()).begin()->second.size(), 1u);
}

TEST_F(FileSettingsStoreTest, MissingValueReadsAsEmptyText)
{
    FileSettingsStore store(file);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    EXPECT_EQ(store.ReadValue("BufferSize"), "");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(FileSettingsStoreTest, ValuesWithLineEndsAndEqualsSignsRoundTrip)
{
    FileSettingsStore store(file);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    const std::string odd = "a=b\r\nc\\d\n[x]";
    store.WriteValue("Odd", odd, SettingsStore::REG_SZ);
    store.WriteValue("", "", SettingsStore::REG_SZ);
    EXPECT_EQ(store.ReadValue("Odd"), odd);
}

TEST_F(FileSettingsStoreTest, NoOpenKeyIsAnError)
{
    FileSettingsStore store(file);
    EXPECT_THROW(store.ReadValue("x"), rt::RuntimeError);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    store.CloseKey();
    EXPECT_THROW(store.WriteValue("x", "y", SettingsStore::REG_SZ), rt::RuntimeError);
    EXPECT_THROW(store.OpenKey(0x80000002, key), rt::RuntimeError);
}

TEST_F(FileSettingsStoreTest, AWriteLeavesNoTemporaryFileBehind)
{
    FileSettingsStore store(file);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    for (int i = 0; i < 20; ++i)
        store.WriteValue("V" + std::to_string(i), std::to_string(i), SettingsStore::REG_SZ);
    int entries = 0;
    for ([[maybe_unused]] const auto &e : fs::directory_iterator(file.parent_path()))
        ++entries;
    EXPECT_EQ(entries, 1);
    EXPECT_EQ(store.ReadValue("V19"), "19");
}

TEST_F(FileSettingsStoreTest, DamagedLinesAreSkipped)
{
    const auto sections = FileSettingsStore::parse("garbage\nname=outside\n[k]\n=novalue\nok=1\nnoequals\n[broken\n");
    ASSERT_EQ(sections.count("k"), 1u);
    EXPECT_EQ(sections.at("k").size(), 1u);
    EXPECT_EQ(sections.at("k").at("ok"), "1");
}

TEST_F(FileSettingsStoreTest, DefaultFileFollowsXdgConfigHome)
{
    ::setenv("XDG_CONFIG_HOME", "/tmp/xdg-here", 1);
    EXPECT_EQ(FileSettingsStore::defaultFile(), fs::path("/tmp/xdg-here/velmora-works/registry.ini"));
    ::unsetenv("XDG_CONFIG_HOME");
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(FileSettingsStore::defaultFile(), fs::path("/home/someone/.config/velmora-works/registry.ini"));
}

} // namespace

TEST_F(FileSettingsStoreTest, NamesThatLookLikeCommentsOrSectionsRoundTrip)
{
    FileSettingsStore store(file);
    store.OpenKey(SettingsStore::HKEY_CURRENT_USER, key);
    store.WriteValue("#hash", "1", SettingsStore::REG_SZ);
    store.WriteValue(";semi", "2", SettingsStore::REG_SZ);
    store.WriteValue("[x", "y]", SettingsStore::REG_SZ);
    store.WriteValue("", "default", SettingsStore::REG_SZ);
    EXPECT_EQ(store.ReadValue("#hash"), "1");
    EXPECT_EQ(store.ReadValue(";semi"), "2");
    EXPECT_EQ(store.ReadValue("[x"), "y]");
    EXPECT_EQ(store.ReadValue(""), "default");
    const auto sections = FileSettingsStore::parse(text());
    EXPECT_EQ(FileSettingsStore::parse(FileSettingsStore::serialise(sections)), sections);
}
