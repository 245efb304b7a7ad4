#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "shell/WriterModels.h"

using shell::driverTypeOfModel;
using shell::writerModels;

TEST(WriterModels, SixtyOneNamesAndNoTypeEleven)
{
    EXPECT_EQ(writerModels().size(), 61u);
    std::map<int, int> perType;
    for (const auto &m : writerModels())
        ++perType[m.driverType];
    EXPECT_EQ(perType.count(11), 0u);
    const std::map<int, int> expected = {{1, 12}, {2, 2}, {3, 3}, {4, 1}, {5, 2}, {6, 30},
                                         {7, 1},  {8, 3}, {9, 1}, {10, 1}, {12, 5}};
    EXPECT_EQ(perType, expected);
}

TEST(WriterModels, MatchIsOnTheExactText)
{
    EXPECT_EQ(driverTypeOfModel("All mmc compatible drives"), 10);
    EXPECT_EQ(driverTypeOfModel("KODAK PCD255"), 6);
    EXPECT_FALSE(driverTypeOfModel("KODAK PCD225").has_value());
    EXPECT_FALSE(driverTypeOfModel("all mmc compatible drives").has_value());
    EXPECT_EQ(driverTypeOfModel("CDS615E"), 12);
    EXPECT_EQ(driverTypeOfModel("Older PHILIPS type"), 4);
}

TEST(WriterModels, InstalledDriversFileListsEveryModelInOrder)
{
    std::ifstream in(DRIVERS_CDX, std::ios::binary);
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, "61\r");
    for (const auto &m : writerModels()) {
        ASSERT_TRUE(std::getline(in, line));
        EXPECT_EQ(line, std::string(m.name) + "\r");
    }
    EXPECT_FALSE(std::getline(in, line));
}
