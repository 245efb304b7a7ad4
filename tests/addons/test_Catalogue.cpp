// The catalogue's lines: what makes a row, which directives a line serves, and the field reader
// under it (commas, quotes, leading blanks, any bytes).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "addons/Catalogue.h"
#include "addons/STRINGOPS.h"
#include "runtime/RuntimeError.h"

namespace fs = std::filesystem;

namespace {

addons::CatalogueLine classify(const std::string &line)
{
    addons::STRINGOPS s;
    return addons::classifyCatalogueLine(line, s);
}

TEST(CatalogueLine, ASemicolonAnywhereMakesARowAndNothingElse)
{
    const auto m = classify("URL-http://x/y;info-filesize");
    EXPECT_TRUE(m.isRow);
    EXPECT_FALSE(m.downloadAddress);
    EXPECT_FALSE(m.infoAddress);
    EXPECT_FALSE(m.fileSize);
    EXPECT_TRUE(classify(";").isRow);
}

TEST(CatalogueLine, EachDirectiveFoundActsWithItsOwnPrefixRemoved)
{
    const auto m = classify("info-http://a/URL");
    EXPECT_FALSE(m.isRow);
    ASSERT_TRUE(m.downloadAddress);
    EXPECT_EQ(*m.downloadAddress, "info-http://a/URL");
    ASSERT_TRUE(m.infoAddress);
    EXPECT_EQ(*m.infoAddress, "http://a/URL");
    EXPECT_FALSE(m.fileSize);

    const auto all = classify("URL-filesize-info");
    EXPECT_EQ(*all.downloadAddress, "filesize-info");
    EXPECT_EQ(*all.infoAddress, "URL-filesize-info");
    EXPECT_EQ(*all.fileSize, "URL-info");
}

TEST(CatalogueLine, TheWordsAreCaseSensitiveAndMayStandAnywhere)
{
    EXPECT_FALSE(classify("url-http://x").downloadAddress);
    EXPECT_FALSE(classify("Info-http://x").infoAddress);
    EXPECT_FALSE(classify("FileSize-3").fileSize);
    EXPECT_EQ(*classify("the URL is here").downloadAddress, "the URL is here");
    EXPECT_EQ(*classify("size: filesize-12 kB").fileSize, "size: 12 kB");
}

TEST(CatalogueLine, ALineOfNeitherFormMeansNothing)
{
    const auto m = classify("Connection OK");
    EXPECT_FALSE(m.isRow);
    EXPECT_FALSE(m.downloadAddress || m.infoAddress || m.fileSize);
    EXPECT_FALSE(classify("").downloadAddress);
}

struct CatalogueFile : ::testing::Test {
    fs::path folder = fs::temp_directory_path() / ("catalogue-test-" + std::to_string(::getpid()));
    fs::path file = folder / "data.dat";
    void SetUp() override { fs::create_directories(folder); }
    void TearDown() override { fs::remove_all(folder); }
    void write(const std::string &bytes)
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << bytes;
    }
    std::vector<std::string> lines()
    {
        std::vector<std::string> got;
        addons::readCatalogueLines(file.string(), [&](const std::string &l) { got.push_back(l); });
        return got;
    }
};

TEST_F(CatalogueFile, CommasAndLineEndsEndFields)
{
    write("a;1,b;2\r\n\"q;1,x\",rest\r\n   lead;3\nlast");
    EXPECT_EQ(lines(), (std::vector<std::string>{"a;1", "b;2", "q;1,x", "rest", "lead;3", "last"}));
}

TEST_F(CatalogueFile, AnEmptyFileHasNoLines)
{
    write("");
    EXPECT_TRUE(lines().empty());
}

TEST_F(CatalogueFile, BlankLinesAreEmptyFields)
{
    write("\r\n\r\nx;y\r\n");
    EXPECT_EQ(lines(), (std::vector<std::string>{"", "", "x;y"}));
}

TEST_F(CatalogueFile, Windows1252TextArrivesAsUtf8)
{
    write("Caf\xE9;1\xB4;\x80\r\n");
    EXPECT_EQ(lines(), (std::vector<std::string>{"Caf\xC3\xA9;1\xC2\xB4;\xE2\x82\xAC"}));
}

TEST_F(CatalogueFile, NulBytesAndALongLineAreReadWhole)
{
    std::string big(1 << 20, 'x');
    big[10] = ';';
    write(std::string("a\0;b\r\n", 6) + big + "\r\n");
    const auto got = lines();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0], std::string("a\0;b", 4));
    EXPECT_EQ(got[1].size(), big.size());
}

TEST_F(CatalogueFile, AnUnendedQuoteRunsToTheEndOfTheFile)
{
    write("\"open;1,\r\nmore");
    EXPECT_EQ(lines(), (std::vector<std::string>{"open;1,\r\nmore"}));
}

TEST_F(CatalogueFile, AMissingFileIsError53)
{
    try {
        lines();
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 53);
    }
}

} // namespace
