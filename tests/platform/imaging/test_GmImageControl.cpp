// The image control on GraphicsMagick, on pictures the tests make with the gm
// tool, judged by what gm itself reads and computes.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "CommandOutput.h"
#include "platform/imaging/GmImageControl.h"

namespace fs = std::filesystem;
using namespace platform;

namespace {

std::string run(const std::string &command)
{
    return testsupport::runTool(command).line();
}

class GmImageControlTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::random_device rd;
        dir = fs::temp_directory_path() / ("gm-image-" + std::to_string(rd()));
        fs::create_directories(dir);
        clipboard = imaging::makeMemoryClipboard();
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::permissions(dir, fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(dir, ec);
    }
    // A photograph-like picture: a colour gradient with noise, so that it has
    // many colours.
    std::string makePicture(const std::string &name, int w, int h)
    {
        const fs::path p = dir / name;
        run("gm convert -size " + std::to_string(w) + "x" + std::to_string(h)
            + " gradient:red-blue -fill none -stroke yellow -draw 'circle 20,20 "
              "30,30' +noise Gaussian '"
            + p.string() + "'");
        return p.string();
    }
    std::unique_ptr<ImageControl> control() { return imaging::makeGmImageControl(clipboard); }

    fs::path dir;
    std::shared_ptr<ImageClipboard> clipboard;
};

void expectSamePixels(const ImagePixels &a, const ImagePixels &b)
{
    ASSERT_EQ(a.width, b.width);
    ASSERT_EQ(a.height, b.height);
    ASSERT_EQ(a.argb.size(), b.argb.size());
    size_t differing = 0;
    int worst = 0;
    for (size_t i = 0; i < a.argb.size(); ++i) {
        differing += a.argb[i] != b.argb[i];
        for (int shift : {0, 8, 16})
            worst = std::max(worst, std::abs(int((a.argb[i] >> shift) & 0xFF) - int((b.argb[i] >> shift) & 0xFF)));
    }
    EXPECT_EQ(differing, 0u) << "worst channel difference " << worst;
}

} // namespace

TEST_F(GmImageControlTest, OpensAPictureWithItsProperties)
{
    const std::string png = makePicture("a.png", 64, 48);
    auto im = control();
    im->setFileName(png);
    ASSERT_EQ(im->ImagError(), 0);
    EXPECT_EQ(im->FileName(), png);
    EXPECT_EQ(im->IWidth(), 64);
    EXPECT_EQ(im->IHeight(), 48);
    EXPECT_EQ(im->IBPP(), 24);
    EXPECT_EQ(im->FileType(), 10);
    EXPECT_EQ(im->FileSize(), static_cast<long>(fs::file_size(png)));
    EXPECT_EQ(std::to_string(im->UniqueColors()), run("gm identify -format %k '" + png + "'"));
}

TEST_F(GmImageControlTest, FileTypesOfTheFormatsOfTheOpenFilter)
{
    const std::string png = makePicture("a.png", 40, 30);
    const std::vector<std::pair<std::string, int>> kinds {
        {"jpg", 8}, {"bmp", 5}, {"pcx", 2}, {"tga", 1}, {"ppm", 21}, {"pgm", 22}, {"pbm", 23}, {"tif", 16}};
    for (const auto &[ext, type] : kinds) {
        const std::string file = (dir / ("k." + ext)).string();
        const std::string extra = ext == "tif" ? " -compress LZW" : "";
        run("gm convert '" + png + "'" + extra + " '" + file + "'");
        auto im = control();
        im->setFileName(file);
        EXPECT_EQ(im->ImagError(), 0) << ext;
        EXPECT_EQ(im->FileType(), type) << ext;
        EXPECT_EQ(im->IWidth(), 40) << ext;
    }
    auto im = control();
    im->setFileName((dir / "k.pbm").string());
    EXPECT_EQ(im->IBPP(), 1);
}

TEST_F(GmImageControlTest, ColourDepthsAsGraphicsMagickReducesThem)
{
    const std::string png = makePicture("photo.png", 120, 90);
    struct Case {
        int bits;
        int palette;
        std::string gmOptions;
    };
    const std::vector<Case> cases {{8, 0, "+dither -colors 256"}, {4, 0, "+dither -colors 16"},
        {1, 0, "+dither -colors 2"}, {8, 2, "+dither -colorspace GRAY -colors 256"}};
    for (const auto &c : cases) {
        auto im = control();
        im->setFileName(png);
        im->ColorDepth(c.bits, c.palette, 0);
        ASSERT_EQ(im->ImagError(), 0) << c.gmOptions;
        EXPECT_EQ(im->IBPP(), c.bits);
        const std::string theirs
            = (dir / ("gm-" + std::to_string(c.bits) + "-" + std::to_string(c.palette) + ".png")).string();
        run("gm convert '" + png + "' " + c.gmOptions + " '" + theirs + "'");
        auto reference = control();
        reference->setFileName(theirs);
        ASSERT_EQ(reference->ImagError(), 0);
        expectSamePixels(im->pixels(), reference->pixels());
        EXPECT_LE(im->UniqueColors(), 1L << c.bits);
    }
    // 24 bits takes the picture back to true colour, pixels unchanged.
    auto im = control();
    im->setFileName(png);
    const ImagePixels before = im->pixels();
    im->ColorDepth(24, 0, 0);
    EXPECT_EQ(im->IBPP(), 24);
    expectSamePixels(im->pixels(), before);
}

TEST_F(GmImageControlTest, UndoTakesTheConversionBack)
{
    const std::string png = makePicture("photo.png", 60, 40);
    auto im = control();
    im->setFileName(png);
    const ImagePixels before = im->pixels();
    im->ColorDepth(1, 0, 0);
    EXPECT_EQ(im->IBPP(), 1);
    im->Undo();
    EXPECT_EQ(im->IBPP(), 24);
    expectSamePixels(im->pixels(), before);
}

TEST_F(GmImageControlTest, SavesThatOtherToolsReadBack)
{
    const std::string png = makePicture("photo.png", 80, 60);
    auto im = control();
    im->setFileName(png);
    im->setSaveFileName((dir / "out.jpg").string());
    im->SaveFile();
    ASSERT_EQ(im->ImagError(), 0);
    EXPECT_EQ(run("gm identify -format '%m %wx%h' '" + (dir / "out.jpg").string() + "'"), "JPEG 80x60");
    // The work file, with a backslash as the program builds it.
    im->ColorDepth(8, 0, 0);
    im->setSaveFileName(dir.string() + "\\image-0.bmp");
    im->SaveFile();
    ASSERT_EQ(im->ImagError(), 0);
    EXPECT_EQ(run("gm identify -format '%m %wx%h' '" + (dir / "image-0.bmp").string() + "'"), "BMP 80x60");
    auto back = control();
    back->setFileName(dir.string() + "\\image-0.bmp");
    EXPECT_EQ(back->FileType(), 5);
    EXPECT_EQ(back->IBPP(), 8);
    expectSamePixels(back->pixels(), im->pixels());
}

TEST_F(GmImageControlTest, AFailedSaveLeavesTheOldFile)
{
    const std::string png = makePicture("photo.png", 20, 20);
    const fs::path locked = dir / "locked";
    fs::create_directories(locked);
    {
        std::ofstream(locked / "old.bmp") << "old";
    }
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    auto im = control();
    im->setFileName(png);
    im->setSaveFileName((locked / "old.bmp").string());
    im->SaveFile();
    if (::geteuid() != 0) {
        EXPECT_EQ(im->ImagError(), ImagCannotCreate);
    }
    fs::permissions(locked, fs::perms::owner_all);
    if (im->ImagError() != 0) {
        std::ifstream in(locked / "old.bmp");
        std::string text;
        in >> text;
        EXPECT_EQ(text, "old");
    }
    // Formats it cannot write are refused with the control's codes.
    im->setSaveFileName((dir / "x.pic").string());
    im->SaveFile();
    EXPECT_EQ(im->ImagError(), ImagNotSupported);
    im->setSaveFileName((dir / "x.xyz").string());
    im->SaveFile();
    EXPECT_EQ(im->ImagError(), ImagInvalidExtension);
}

TEST_F(GmImageControlTest, BadFilesGiveCodesAndKeepThePicture)
{
    const std::string good = makePicture("good.png", 30, 20);
    auto im = control();
    im->setFileName(good);
    // Missing.
    im->setFileName((dir / "none.jpg").string());
    EXPECT_EQ(im->ImagError(), ImagFileNotFound);
    EXPECT_EQ(im->FileName(), good);
    // A text with a picture's extension.
    {
        std::ofstream(dir / "notes.jpg") << "these are words, not a picture\n";
    }
    im->setFileName((dir / "notes.jpg").string());
    EXPECT_NE(im->ImagError(), 0);
    EXPECT_EQ(im->FileName(), good);
    // Truncated: the first half of a JPEG.
    run("gm convert '" + good + "' '" + (dir / "whole.jpg").string() + "'");
    const auto size = fs::file_size(dir / "whole.jpg");
    fs::copy_file(dir / "whole.jpg", dir / "half.jpg");
    fs::resize_file(dir / "half.jpg", size / 2);
    im->setFileName((dir / "half.jpg").string());
    EXPECT_NE(im->ImagError(), 0);
    EXPECT_EQ(im->IWidth(), 30);
    // Empty.
    {
        std::ofstream(dir / "empty.png");
    }
    im->setFileName((dir / "empty.png").string());
    EXPECT_EQ(im->ImagError(), ImagReadError);
}

TEST_F(GmImageControlTest, AHugePictureIsRefusedBeforeItIsDecoded)
{
    // A PBM header that claims 20000 x 20000 pixels, with no pixels behind it.
    {
        std::ofstream(dir / "huge.pbm", std::ios::binary) << "P4\n20000 20000\n" << std::string(100, '\0');
    }
    auto im = control();
    im->setFileName((dir / "huge.pbm").string());
    EXPECT_EQ(im->ImagError(), ImagNoMemory);
    EXPECT_EQ(im->IWidth(), 0);
}

TEST_F(GmImageControlTest, CopyAndPasteThroughTheClipboard)
{
    const std::string png = makePicture("photo.png", 50, 30);
    auto a = control();
    a->setFileName(png);
    a->Copy();
    ASSERT_EQ(a->ImagError(), 0);
    auto b = control();
    b->Paste();
    ASSERT_EQ(b->ImagError(), 0);
    EXPECT_EQ(b->IWidth(), 50);
    EXPECT_EQ(b->IHeight(), 30);
    expectSamePixels(b->pixels(), a->pixels());
    clipboard->clear();
    auto c = control();
    c->Paste();
    EXPECT_EQ(c->ImagError(), ImagCannotPaste);
}
