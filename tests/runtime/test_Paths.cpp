#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

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

class PathsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string tmpl = (fs::temp_directory_path() / "rt-paths-XXXXXX").string();
        ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
        dir = tmpl;
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::permissions(dir, fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(dir, ec);
    }
    void make(const std::string &name, const std::string &content = "x")
    {
        std::ofstream(dir / name, std::ios::binary) << content;
    }
    // The folder as the logic would write it, with backslashes.
    std::string logic(const std::string &name) const { return dir.string() + "\\" + name; }

    fs::path dir;
};

std::string slurp(const fs::path &p)
{
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace

TEST(NativePath, BackslashesBecomeSeparators)
{
    EXPECT_EQ(nativePath("a\\b\\c.wav"), fs::path("a/b/c.wav"));
    EXPECT_EQ(nativePath("/prog\\LocalJ\\a.wav"), fs::path("/prog/LocalJ/a.wav"));
    EXPECT_EQ(nativePath("C:\\x"), fs::path("C:/x"));
    EXPECT_EQ(nativePath("plain"), fs::path("plain"));
    EXPECT_EQ(nativePath(""), fs::path());
}

TEST_F(PathsTest, FileExistsAndLength)
{
    make("a.txt", "hello");
    EXPECT_TRUE(fileExists(logic("a.txt")));
    EXPECT_FALSE(fileExists(logic("b.txt")));
    EXPECT_FALSE(fileExists(dir.string())) << "a folder is no file";
    EXPECT_FALSE(fileExists(""));
    EXPECT_EQ(FileLen(logic("a.txt")), 5);
    make("empty.txt", "");
    EXPECT_EQ(FileLen(logic("empty.txt")), 0);
    EXPECT_EQ(errorOf([&] { FileLen(logic("b.txt")); }), 53);
}

TEST_F(PathsTest, Kill)
{
    make("a.txt");
    Kill(logic("a.txt"));
    EXPECT_FALSE(fs::exists(dir / "a.txt"));
    EXPECT_EQ(errorOf([&] { Kill(logic("a.txt")); }), 53);
    EXPECT_EQ(errorOf([&] { Kill(logic("nofolder\\a.txt")); }), 53);
}

TEST_F(PathsTest, KillWithPattern)
{
    make("1.wav");
    make("2.WAV");
    make("keep.mp3");
    Kill(logic("*.wav"));
    EXPECT_FALSE(fs::exists(dir / "1.wav"));
    EXPECT_FALSE(fs::exists(dir / "2.WAV"));
    EXPECT_TRUE(fs::exists(dir / "keep.mp3"));
    EXPECT_EQ(errorOf([&] { Kill(logic("*.wav")); }), 53);
}

TEST_F(PathsTest, ListFilesMatchesWithoutCaseAndSorts)
{
    make("b.mp3");
    make("A.MP3");
    make("c.Mp3");
    make("a.mp3");
    make("notes.txt");
    make("x.mp3.bak");
    fs::create_directory(dir / "folder.mp3");
    const std::vector<std::string> expected{"A.MP3", "a.mp3", "b.mp3", "c.Mp3"};
    EXPECT_EQ(listFiles(dir.string(), "*.mp3"), expected);
    EXPECT_EQ(listFiles(dir.string(), "*.txt"), std::vector<std::string>{"notes.txt"});
    EXPECT_EQ(listFiles(dir.string(), "?.mp3").size(), 4u);
    EXPECT_EQ(listFiles(dir.string(), "*").size(), 6u);
    EXPECT_EQ(listFiles(dir.string(), "*.*").size(), 6u);
    EXPECT_EQ(listFiles(dir.string(), "*.wav").size(), 0u);
    EXPECT_EQ(listFiles(dir.string(), "*.txt;b*").size(), 2u);
    EXPECT_TRUE(listFiles((dir / "missing").string(), "*").empty());
}

TEST_F(PathsTest, ListFilesTakesLogicFolders)
{
    fs::create_directory(dir / "sub");
    make("sub/t.wav");
    EXPECT_EQ(listFiles(logic("sub"), "*.wav"), std::vector<std::string>{"t.wav"});
}

// A name copied from an old Windows disc: "café.mp3" with the é as the one byte E9.
TEST_F(PathsTest, ForeignNamesAreShownAsWindows1252)
{
    make("caf\xE9.mp3");
    make("na\xEFve \x80 song.mp3");
    make("b\xC3\xA9" "b\xC3\xA9.mp3"); // UTF-8 already
    const std::vector<std::string> expected{"bébé.mp3", "café.mp3", "naïve € song.mp3"};
    EXPECT_EQ(listFiles(dir.string(), "*.mp3"), expected);
    EXPECT_EQ(listFiles(dir.string(), "CAF\xC3\x89*"), std::vector<std::string>{"café.mp3"});
}

TEST_F(PathsTest, ForeignNamesOpenTheFileTheyCameFrom)
{
    make("caf\xE9.mp3", "legacy");
    const std::string shown = logic(listFiles(dir.string(), "*.mp3").at(0));
    EXPECT_EQ(nativePath(shown), dir / "caf\xE9.mp3");
    EXPECT_TRUE(fileExists(shown));
    EXPECT_EQ(FileLen(shown), 6);
    // A name there as written is taken as written, even when its old spelling is there too.
    make("caf\xC3\xA9.mp3", "utf-8");
    EXPECT_EQ(nativePath(shown), dir / "caf\xC3\xA9.mp3");
    EXPECT_EQ(FileLen(shown), 5);
    // A name that isn't there in either spelling stays as written.
    EXPECT_EQ(nativePath(logic("d\xC3\xA9j\xC3\xA0.mp3")), dir / "d\xC3\xA9j\xC3\xA0.mp3");
    // Characters with no Windows-1252 code have no old spelling.
    EXPECT_EQ(nativePath(logic("\xE4\xB8\xAD.mp3")), dir / "\xE4\xB8\xAD.mp3");
}

TEST_F(PathsTest, ForeignFolderNamesResolvePartByPart)
{
    fs::create_directories(dir / "M\xFCsik" / "\xC3\xA9t\xC3\xA9"); // Windows-1252, then UTF-8
    make("M\xFCsik/\xC3\xA9t\xC3\xA9/Tr\xE4ume.mp3", "dream");
    EXPECT_EQ(listFiles(logic("Müsik\\été"), "*.mp3"), std::vector<std::string>{"Träume.mp3"});
    EXPECT_EQ(nativePath(logic("Müsik\\été\\Träume.mp3")), dir / "M\xFCsik" / "\xC3\xA9t\xC3\xA9" / "Tr\xE4ume.mp3");
    EXPECT_EQ(FileLen(logic("Müsik\\été\\Träume.mp3")), 5);
    // A new file in such a folder is made there, under its name as written.
    EXPECT_EQ(nativePath(logic("Müsik\\été\\neu.txt")), dir / "M\xFCsik" / "\xC3\xA9t\xC3\xA9" / "neu.txt");
    // Both spellings of a folder: the one that leads to the file wins.
    fs::create_directories(dir / "M\xC3\xBCsik");
    EXPECT_EQ(nativePath(logic("Müsik\\été\\Träume.mp3")), dir / "M\xFCsik" / "\xC3\xA9t\xC3\xA9" / "Tr\xE4ume.mp3");
    EXPECT_EQ(nameText((dir / "M\xFCsik" / "\xC3\xA9t\xC3\xA9").string()), dir.string() + "/Müsik/été");
}

TEST_F(PathsTest, KillWithPatternTakesForeignNames)
{
    make("caf\xE9.wav");
    make("keep.mp3");
    Kill(logic("*.wav"));
    EXPECT_FALSE(fs::exists(dir / "caf\xE9.wav"));
    EXPECT_TRUE(fs::exists(dir / "keep.mp3"));
    make("caf\xE9.wav");
    Kill(logic("café.wav"));
    EXPECT_FALSE(fs::exists(dir / "caf\xE9.wav"));
}

TEST(NameText, Utf8StaysAndTheRestIsWindows1252)
{
    EXPECT_EQ(nameText("plain.mp3"), "plain.mp3");
    EXPECT_EQ(nameText("caf\xC3\xA9.mp3"), "café.mp3");
    EXPECT_EQ(nameText("caf\xE9.mp3"), "café.mp3");
    EXPECT_EQ(nameText("\x81\x8D\x8F\x90\x9D"), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
    EXPECT_EQ(nameText("/caf\xC3\xA9/caf\xE9"), "/café/café");
    EXPECT_EQ(nameText(""), "");
}

TEST_F(PathsTest, ReadOnly)
{
    make("a.txt");
    EXPECT_FALSE(isReadOnly(logic("a.txt")));
    setReadOnly(logic("a.txt"), true);
    EXPECT_TRUE(isReadOnly(logic("a.txt")));
    struct stat st {};
    ASSERT_EQ(::stat((dir / "a.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0222, 0u);
    setReadOnly(logic("a.txt"), false);
    EXPECT_FALSE(isReadOnly(logic("a.txt")));
    ASSERT_EQ(::stat((dir / "a.txt").c_str(), &st), 0);
    EXPECT_NE(st.st_mode & S_IWUSR, 0u);
    EXPECT_EQ(errorOf([&] { setReadOnly(logic("none"), true); }), 53);
    EXPECT_EQ(errorOf([&] { isReadOnly(logic("none")); }), 53);
}

TEST_F(PathsTest, WriteFileAtomically)
{
    const fs::path target = dir / "settings.ini";
    ASSERT_TRUE(writeFileAtomically(target, "first"));
    EXPECT_EQ(slurp(target), "first");
    ASSERT_TRUE(writeFileAtomically(target, std::string("sec\0nd", 6)));
    EXPECT_EQ(slurp(target), std::string("sec\0nd", 6));
    // No temporary file is left behind.
    int entries = 0;
    for ([[maybe_unused]] const auto &e : fs::directory_iterator(dir))
        ++entries;
    EXPECT_EQ(entries, 1);
}

TEST_F(PathsTest, WriteFileAtomicallyKeepsPermissions)
{
    const fs::path target = dir / "a.txt";
    make("a.txt", "old");
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    ASSERT_TRUE(writeFileAtomically(target, "new"));
    struct stat st {};
    ASSERT_EQ(::stat(target.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST_F(PathsTest, WriteFileAtomicallyFailsInAMissingFolder)
{
    EXPECT_FALSE(writeFileAtomically(dir / "missing" / "a.txt", "x"));
    EXPECT_FALSE(fs::exists(dir / "missing"));
}

TEST_F(PathsTest, WriteFileAtomicallyFailedRenameLeavesTargetAndNoTemporary)
{
    // A folder in the target's place can't be replaced by a file.
    fs::create_directory(dir / "target");
    make("target/inner.txt", "kept");
    EXPECT_FALSE(writeFileAtomically(dir / "target", "new"));
    EXPECT_TRUE(fs::is_directory(dir / "target"));
    EXPECT_EQ(slurp(dir / "target" / "inner.txt"), "kept");
    int entries = 0;
    for ([[maybe_unused]] const auto &e : fs::directory_iterator(dir))
        ++entries;
    EXPECT_EQ(entries, 1);
}

TEST_F(PathsTest, WriteFileAtomicallyInReadOnlyFolderLeavesOldFile)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root writes into read-only folders";
    const fs::path target = dir / "a.txt";
    make("a.txt", "old");
    fs::permissions(dir, fs::perms::owner_write, fs::perm_options::remove);
    EXPECT_FALSE(writeFileAtomically(target, "new"));
    fs::permissions(dir, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(slurp(target), "old");
}
