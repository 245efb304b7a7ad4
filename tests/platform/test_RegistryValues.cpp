#include <gtest/gtest.h>

#include <memory>

#include "platform/fake/FakeSettingsStore.h"
#include "platform/helper/RegistryValues.h"

namespace {

constexpr int32_t HKCU = platform::SettingsStore::HKEY_CURRENT_USER;
const char *const Key = "Software\\Mervane\\DAC";

struct RegistryValuesTest : ::testing::Test {
    std::shared_ptr<platform::fake::FakeRegistry> registry = std::make_shared<platform::fake::FakeRegistry>();
    platform::fake::FakeSettingsStore store{registry};
};

TEST_F(RegistryValuesTest, NumbersRoundTripAndFallBack)
{
    EXPECT_EQ(platform::ReadRegInt(store, HKCU, Key, "BlockCount", 26), 26);
    platform::WriteRegInt(store, HKCU, Key, "BlockCount", 12);
    EXPECT_EQ(registry->keys[Key]["BlockCount"], "12");
    EXPECT_EQ(platform::ReadRegInt(store, HKCU, Key, "BlockCount", 26), 12);
    platform::WriteRegInt(store, HKCU, Key, "IgnoreSpeed", -1);
    EXPECT_EQ(platform::ReadRegInt(store, HKCU, Key, "IgnoreSpeed", 0), -1);
    // A double word beyond the signed range reads back as the signed 32-bit number.
    registry->keys[Key]["Big"] = "4294967295";
    EXPECT_EQ(platform::ReadRegInt(store, HKCU, Key, "Big", 0), -1);
    for (const char *bad : {"twelve", "12x", "", "99999999999"}) {
        registry->keys[Key]["Odd"] = bad;
        EXPECT_EQ(platform::ReadRegInt(store, HKCU, Key, "Odd", 7), 7) << bad;
    }
}

TEST_F(RegistryValuesTest, BinaryAsHexDigits)
{
    const std::string record("\x01\x00\x02\x00\xff", 5);
    platform::WriteRegBinary(store, HKCU, Key, "WaveFormat", record, 5);
    EXPECT_EQ(registry->keys[Key]["WaveFormat"], "01000200ff");
    std::string back;
    EXPECT_EQ(platform::ReadRegBinary(store, HKCU, Key, "WaveFormat", back, 256), 5);
    EXPECT_EQ(back, record);
    // At most the size asked for.
    EXPECT_EQ(platform::ReadRegBinary(store, HKCU, Key, "WaveFormat", back, 2), 2);
    EXPECT_EQ(back, record.substr(0, 2));
    // Written with a smaller size, only that much is kept.
    platform::WriteRegBinary(store, HKCU, Key, "Short", record, 3);
    EXPECT_EQ(registry->keys[Key]["Short"], "010002");
}

TEST_F(RegistryValuesTest, GarbledBinaryReadsAsNothing)
{
    std::string back = "kept";
    EXPECT_EQ(platform::ReadRegBinary(store, HKCU, Key, "Missing", back, 256), 0);
    registry->keys[Key]["Odd"] = "abc";
    EXPECT_EQ(platform::ReadRegBinary(store, HKCU, Key, "Odd", back, 256), 0);
    registry->keys[Key]["Bad"] = "zz";
    EXPECT_EQ(platform::ReadRegBinary(store, HKCU, Key, "Bad", back, 256), 0);
    EXPECT_EQ(back, "kept");
}

} // namespace
