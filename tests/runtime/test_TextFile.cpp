#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "runtime/RuntimeError.h"
#include "runtime/TextFile.h"

namespace fs = std::filesystem;
using namespace rt;

namespace {

int errorOf(auto &&f)
{
    try {
        f();
    } catch (const RuntimeError &e) {
        return e.number();
    }
    return 0;
}

class FileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string tmpl = (fs::temp_directory_path() / "rt-files-XXXXXX").string();
        ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
        dir = tmpl;
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    std::string path(const std::string &name) const { return (dir / name).string(); }
    void write(const std::string &name, const std::string &bytes)
    {
        std::ofstream(dir / name, std::ios::binary) << bytes;
    }
    std::string read(const std::string &name) const
    {
        std::ifstream in(dir / name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    fs::path dir;
};

} // namespace

TEST(PrintNumberText, SignOrBlankAndTrailingBlank)
{
    EXPECT_EQ(printNumberText(3), " 3 ");
    EXPECT_EQ(printNumberText(-2), "-2 ");
    EXPECT_EQ(printNumberText(0), " 0 ");
    EXPECT_EQ(printNumberText(0.5), " .5 ");
}

TEST_F(FileTest, OutputWritesAnsiWithCrLf)
{
    TextFile f(path("a.txt"), TextFile::Mode::Output);
    f.printLine("caf\xC3\xA9");
    f.printNumberLine(3);
    f.printNumberLine(-2);
    f.print("x");
    f.print("y");
    f.printLine();
    f.printLine("\xE4\xB8\xAD");
    f.close();
    EXPECT_EQ(read("a.txt"), "caf\xE9\r\n 3 \r\n-2 \r\nxy\r\n?\r\n");
}

TEST_F(FileTest, OutputTruncatesAppendAdds)
{
    write("a.txt", "old content\r\n");
    {
        TextFile f(path("a.txt"), TextFile::Mode::Output);
        f.printLine("one");
    }
    EXPECT_EQ(read("a.txt"), "one\r\n");
    {
        TextFile f(path("a.txt"), TextFile::Mode::Append);
        f.printLine("two");
    }
    EXPECT_EQ(read("a.txt"), "one\r\ntwo\r\n");
    {
        TextFile f(path("new.txt"), TextFile::Mode::Append);
        f.printLine("fresh");
    }
    EXPECT_EQ(read("new.txt"), "fresh\r\n");
}

TEST_F(FileTest, OpenErrors)
{
    EXPECT_EQ(errorOf([&] { TextFile f(path("missing.txt"), TextFile::Mode::Input); }), 53);
    EXPECT_EQ(errorOf([&] { TextFile f(path("nofolder/missing.txt"), TextFile::Mode::Input); }), 76);
    EXPECT_EQ(errorOf([&] { TextFile f(path("no\\such\\x.txt"), TextFile::Mode::Output); }), 76);
    EXPECT_EQ(errorOf([&] { TextFile f(path("nofolder/x.txt"), TextFile::Mode::Append); }), 76);
    EXPECT_EQ(errorOf([&] { TextFile f(dir.string(), TextFile::Mode::Output); }), 75);
    write("a.txt", "x");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_EQ(errorOf([&] { f.open(path("a.txt"), TextFile::Mode::Input); }), 55);
}

TEST_F(FileTest, ReadOnlyFileIsNotReplaced)
{
    write("locked.txt", "kept\r\n");
    fs::permissions(dir / "locked.txt", fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    // Whoever runs the program, root included: a read-only file is no file to write.
    EXPECT_EQ(errorOf([&] { TextFile f(path("locked.txt"), TextFile::Mode::Output); }), 75);
    EXPECT_EQ(errorOf([&] { TextFile f(path("locked.txt"), TextFile::Mode::Append); }), 75);
    EXPECT_EQ(read("locked.txt"), "kept\r\n");
    EXPECT_EQ(fs::status(dir / "locked.txt").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    // Nothing is left beside it.
    int entries = 0;
    for ([[maybe_unused]] const auto &e : fs::directory_iterator(dir))
        ++entries;
    EXPECT_EQ(entries, 1);
    // A failed open leaves the file variable closed and usable.
    TextFile f;
    EXPECT_EQ(errorOf([&] { f.open(path("locked.txt"), TextFile::Mode::Output); }), 75);
    EXPECT_FALSE(f.isOpen());
    EXPECT_EQ(errorOf([&] { f.printLine("x"); }), 52);
    // Reading it is no problem.
    TextFile in(path("locked.txt"), TextFile::Mode::Input);
    EXPECT_EQ(in.lineInput(), "kept");
}

TEST_F(FileTest, WritableFileIsStillReplacedWhole)
{
    write("open.txt", "old\r\n");
    fs::permissions(dir / "open.txt", fs::perms::owner_read | fs::perms::owner_write);
    {
        TextFile f(path("open.txt"), TextFile::Mode::Output);
        f.printLine("new");
        // Until the close the old file stands as it was.
        EXPECT_EQ(read("open.txt"), "old\r\n");
    }
    EXPECT_EQ(read("open.txt"), "new\r\n");
    EXPECT_EQ(fs::status(dir / "open.txt").permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FileTest, BackslashPathsWork)
{
    fs::create_directory(dir / "sub");
    {
        TextFile f(dir.string() + "\\sub\\b.txt", TextFile::Mode::Output);
        f.printLine("ok");
    }
    EXPECT_EQ(read("sub/b.txt"), "ok\r\n");
}

TEST_F(FileTest, ClosedFileIsError52)
{
    TextFile f;
    EXPECT_FALSE(f.isOpen());
    EXPECT_EQ(errorOf([&] { f.printLine("x"); }), 52);
    EXPECT_EQ(errorOf([&] { f.lineInput(); }), 52);
    EXPECT_EQ(errorOf([&] { f.inputField(); }), 52);
    EXPECT_EQ(errorOf([&] { f.eof(); }), 52);
    write("a.txt", "x");
    f.open(path("a.txt"), TextFile::Mode::Input);
    EXPECT_TRUE(f.isOpen());
    f.close();
    EXPECT_EQ(errorOf([&] { f.lineInput(); }), 52);
}

TEST_F(FileTest, LineInputEndsAtCrLfCrOrLf)
{
    write("a.txt", "one\r\ntwo\rthree\nfour\r\n\r\ncaf\xE9\r\nlast");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_FALSE(f.eof());
    EXPECT_EQ(f.lineInput(), "one");
    EXPECT_EQ(f.lineInput(), "two");
    EXPECT_EQ(f.lineInput(), "three");
    EXPECT_EQ(f.lineInput(), "four");
    EXPECT_EQ(f.lineInput(), "");
    EXPECT_EQ(f.lineInput(), "caf\xC3\xA9");
    EXPECT_FALSE(f.eof());
    EXPECT_EQ(f.lineInput(), "last");
    EXPECT_TRUE(f.eof());
    EXPECT_EQ(errorOf([&] { f.lineInput(); }), 62);
}

TEST_F(FileTest, EmptyFileIsAtEnd)
{
    write("a.txt", "");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_TRUE(f.eof());
    EXPECT_EQ(errorOf([&] { f.lineInput(); }), 62);
    EXPECT_EQ(errorOf([&] { f.inputField(); }), 62);
}

TEST_F(FileTest, LastLineWithCrLfLeavesEof)
{
    write("a.txt", "only\r\n");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_EQ(f.lineInput(), "only");
    EXPECT_TRUE(f.eof());
}

TEST_F(FileTest, InputFields)
{
    write("a.txt", "  plain  ,\"quoted, with comma\"  ,\t\"q\"junk,last\r\n"
                   "\"open\r\n"
                   "12 , -3\r\n");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_EQ(f.inputField(), "plain");
    EXPECT_EQ(f.inputField(), "quoted, with comma");
    EXPECT_EQ(f.inputField(), "q");
    EXPECT_EQ(f.inputField(), "last");
    // A quote that never closes runs on, line ends and all.
    EXPECT_EQ(f.inputField(), "open\r\n12 , -3\r\n");
    EXPECT_TRUE(f.eof());
    EXPECT_EQ(errorOf([&] { f.inputField(); }), 62);
}

TEST_F(FileTest, InputFieldsAcrossLines)
{
    write("a.txt", "a,b\r\nc\nd\r\n\"e\"\r\n,\r\n");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_EQ(f.inputField(), "a");
    EXPECT_EQ(f.inputField(), "b");
    EXPECT_EQ(f.inputField(), "c");
    EXPECT_EQ(f.inputField(), "d");
    EXPECT_EQ(f.inputField(), "e");
    EXPECT_EQ(f.inputField(), "");
    EXPECT_EQ(f.inputField(), "");
    EXPECT_TRUE(f.eof());
}

TEST_F(FileTest, InputFieldConvertsFromAnsi)
{
    write("a.txt", "\"\x80 5\",\xE9t\xE9\r\n");
    TextFile f(path("a.txt"), TextFile::Mode::Input);
    EXPECT_EQ(f.inputField(), "\xE2\x82\xAC 5");
    EXPECT_EQ(f.inputField(), "\xC3\xA9t\xC3\xA9");
}

TEST_F(FileTest, BinaryGetIsOneBasedAndPadsWithNul)
{
    write("b.bin", "ABCDEF");
    BinaryFile f(path("b.bin"), BinaryFile::Mode::Read);
    EXPECT_EQ(f.length(), 6);
    EXPECT_EQ(f.get(1, 3), "ABC");
    EXPECT_EQ(f.get(4, 3), "DEF");
    EXPECT_EQ(f.get(5, 4), std::string("EF\0\0", 4));
    EXPECT_EQ(f.get(100, 2), std::string("\0\0", 2));
    EXPECT_EQ(f.get(1, 0), "");
    EXPECT_EQ(f.getByte(1), 'A');
    EXPECT_EQ(f.getByte(6), 'F');
    EXPECT_EQ(f.getByte(7), 0);
    EXPECT_EQ(errorOf([&] { f.get(0, 1); }), 63);
    EXPECT_EQ(errorOf([&] { f.getByte(-1); }), 63);
    EXPECT_EQ(f.get(2, 2), "BC") << "a read past the end does not spoil later reads";
}

TEST_F(FileTest, BinaryGetHighBytes)
{
    write("b.bin", std::string("\xFF\x00\x80", 3));
    BinaryFile f(path("b.bin"), BinaryFile::Mode::Read);
    EXPECT_EQ(f.getByte(1), 255);
    EXPECT_EQ(f.getByte(2), 0);
    EXPECT_EQ(f.getByte(3), 128);
}

TEST_F(FileTest, BinaryPutGrowsTheFile)
{
    write("b.bin", "ABCDEF");
    {
        BinaryFile f(path("b.bin"), BinaryFile::Mode::ReadWrite);
        f.put(2, "xy");
        EXPECT_EQ(f.get(1, 4), "AxyD");
        f.put(7, "G");
        EXPECT_EQ(f.length(), 7);
        f.put(10, "Z");
        EXPECT_EQ(f.length(), 10);
        EXPECT_EQ(errorOf([&] { f.put(0, "q"); }), 63);
    }
    EXPECT_EQ(read("b.bin"), std::string("AxyDEFG\0\0Z", 10));
}

TEST_F(FileTest, BinaryOpenModes)
{
    EXPECT_EQ(errorOf([&] { BinaryFile f(path("none.bin"), BinaryFile::Mode::Read); }), 53);
    EXPECT_EQ(errorOf([&] { BinaryFile f(path("nofolder/x.bin"), BinaryFile::Mode::ReadWrite); }), 76);
    {
        BinaryFile f(path("new.bin"), BinaryFile::Mode::ReadWrite);
        EXPECT_EQ(f.length(), 0);
        f.put(1, "hi");
    }
    EXPECT_EQ(read("new.bin"), "hi");
    BinaryFile r(path("new.bin"), BinaryFile::Mode::Read);
    EXPECT_EQ(errorOf([&] { r.put(1, "x"); }), 75);
    r.close();
    EXPECT_FALSE(r.isOpen());
    EXPECT_EQ(errorOf([&] { r.get(1, 1); }), 52);
    EXPECT_EQ(errorOf([&] { r.length(); }), 52);
    EXPECT_EQ(errorOf([&] { r.put(1, "x"); }), 52);
}

TEST_F(FileTest, OutputReplacesTheOldFileOnlyAtClose)
{
    write("list.m3u", "old\r\n");
    {
        TextFile f(path("list.m3u"), TextFile::Mode::Output);
        f.printLine("new");
        EXPECT_EQ(read("list.m3u"), "old\r\n");
        f.close();
    }
    EXPECT_EQ(read("list.m3u"), "new\r\n");
    int entries = 0;
    for ([[maybe_unused]] const auto &e : fs::directory_iterator(dir))
        ++entries;
    EXPECT_EQ(entries, 1);
}

TEST_F(FileTest, OutputLeftOpenIsWrittenWhenTheFileGoes)
{
    {
        TextFile f(path("late.txt"), TextFile::Mode::Output);
        f.printLine("kept");
    }
    EXPECT_EQ(read("late.txt"), "kept\r\n");
}

TEST_F(FileTest, OutputIntoAMissingFolderIsPathNotFound)
{
    EXPECT_EQ(errorOf([&] { TextFile f(path("none/x.txt"), TextFile::Mode::Output); }), 76);
    EXPECT_FALSE(fs::exists(dir / "none"));
}
