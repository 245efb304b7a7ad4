#include <gtest/gtest.h>

#include "platform/system/ProcSystemInfo.h"

using platform::system::ProcSystemInfo;

TEST(ProcSystemInfo, UsedIsTotalLessAvailable)
{
    EXPECT_EQ(ProcSystemInfo::usedPercent("MemTotal: 1000 kB\nMemFree: 100 kB\nMemAvailable: 580 kB\n"), 42);
    EXPECT_EQ(ProcSystemInfo::usedPercent("MemTotal: 1000 kB\nMemAvailable: 1000 kB\n"), 0);
    EXPECT_EQ(ProcSystemInfo::usedPercent("MemTotal: 1000 kB\nMemAvailable: 0 kB\n"), 100);
}

TEST(ProcSystemInfo, MissingOrOddFiguresAreUnknown)
{
    EXPECT_EQ(ProcSystemInfo::usedPercent(""), -1);
    EXPECT_EQ(ProcSystemInfo::usedPercent("MemTotal: 0 kB\nMemAvailable: 0 kB\n"), -1);
    EXPECT_EQ(ProcSystemInfo::usedPercent("MemTotal: 10 kB\nMemAvailable: 20 kB\n"), -1);
}

TEST(ProcSystemInfo, ThisMachineReportsAPercentage)
{
    ProcSystemInfo info;
    const int used = info.memoryusedtotal();
    EXPECT_GE(used, 1);
    EXPECT_LE(used, 100);
    ProcSystemInfo missing("/nonexistent/meminfo");
    EXPECT_EQ(missing.memoryusedtotal(), 0);
}
