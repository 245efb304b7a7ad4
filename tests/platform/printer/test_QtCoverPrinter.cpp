// Covers printed to PDF, measured by poppler's pdfinfo and pdfimages.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <sstream>

#include "CommandOutput.h"
#include "platform/printer/QtCoverPrinter.h"

namespace fs = std::filesystem;
using namespace platform;

namespace {

std::string run(const std::string &command)
{
    return testsupport::runTool(command).text;
}

ImagePixels picture(int w, int h)
{
    ImagePixels p;
    p.width = w;
    p.height = h;
    p.argb.resize(static_cast<size_t>(w) * h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            p.argb[static_cast<size_t>(y) * w + x] = 0xFF000000u | (x * 255 / w) << 16 | (y * 255 / h) << 8 | 0x40;
    return p;
}

struct ImageBox {
    int width = 0, height = 0, xppi = 0, yppi = 0;
};

// The first picture's row of `pdfimages -list`.
ImageBox firstImage(const fs::path &pdf)
{
    std::istringstream in(run("pdfimages -list '" + pdf.string() + "'"));
    std::string line;
    ImageBox box;
    while (std::getline(in, line)) {
        std::istringstream row(line);
        int page = 0, num = 0;
        std::string type;
        if (!(row >> page >> num >> type) || type != "image")
            continue;
        std::string color, bpc, enc, interp, object, id;
        int comp = 0;
        row >> box.width >> box.height >> color >> comp >> bpc >> enc >> interp >> object >> id >> box.xppi >> box.yppi;
        return box;
    }
    return box;
}

class QtCoverPrinterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::random_device rd;
        dir = fs::temp_directory_path() / ("prints-" + std::to_string(rd()));
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    fs::path dir;
};

} // namespace

TEST_F(QtCoverPrinterTest, ACoverIsA120MillimetrePage)
{
    auto printer = printer::makeQtCoverPrinter({dir});
    EXPECT_EQ(printer->DocName, "PrintPRO Document");
    CoverPrintJob job;
    job.picture = picture(100, 100);
    job.dpi = 300;
    job.smartPlacement = true;
    ASSERT_EQ(printer->PrintCover(job), 0);
    const fs::path pdf = dir / "cover-1.pdf";
    ASSERT_TRUE(fs::exists(pdf));
    const std::string info = run("pdfinfo '" + pdf.string() + "'");
    // 120 mm is 340.157 points; the PDF holds whole points.
    double w = 0, h = 0;
    int pages = 0;
    std::istringstream lines(info);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("Page size:", 0) == 0)
            std::sscanf(line.c_str(), "Page size: %lf x %lf", &w, &h);
        if (line.rfind("Pages:", 0) == 0)
            std::sscanf(line.c_str(), "Pages: %d", &pages);
    }
    EXPECT_NEAR(w, 340.157, 0.5) << info;
    EXPECT_NEAR(h, 340.157, 0.5) << info;
    EXPECT_EQ(pages, 1);
    // Fitted: 100 pixels across 120 mm is 21 pixels an inch.
    const ImageBox box = firstImage(pdf);
    EXPECT_EQ(box.width, 100);
    EXPECT_EQ(box.height, 100);
    EXPECT_EQ(box.xppi, 21);
    EXPECT_EQ(box.yppi, 21);
}

TEST_F(QtCoverPrinterTest, WithoutSmartPlacementThePictureKeepsItsOwnSize)
{
    auto printer = printer::makeQtCoverPrinter({dir});
    CoverPrintJob job;
    job.picture = picture(96, 48);
    job.dpi = 150;
    job.pictureDpi = 96;
    ASSERT_EQ(printer->PrintCover(job), 0);
    const ImageBox box = firstImage(dir / "cover-1.pdf");
    EXPECT_EQ(box.width, 96);
    EXPECT_EQ(box.xppi, 96);
    // One file a job.
    ASSERT_EQ(printer->PrintCover(job), 0);
    EXPECT_TRUE(fs::exists(dir / "cover-2.pdf"));
}

TEST(Placement, SmartFitsAndCentres)
{
    const auto p = printer::placePicture(200, 100, 96, 300, 1417.0, true);
    EXPECT_DOUBLE_EQ(p.width, 1417.0);
    EXPECT_DOUBLE_EQ(p.height, 708.5);
    EXPECT_DOUBLE_EQ(p.x, 0.0);
    EXPECT_DOUBLE_EQ(p.y, (1417.0 - 708.5) / 2);
    const auto q = printer::placePicture(100, 400, 96, 300, 1000.0, true);
    EXPECT_DOUBLE_EQ(q.height, 1000.0);
    EXPECT_DOUBLE_EQ(q.x, (1000.0 - 250.0) / 2);
}

TEST(Placement, OwnSizeFromTheCorner)
{
    const auto p = printer::placePicture(960, 480, 96, 300, 1417.0, false);
    EXPECT_DOUBLE_EQ(p.x, 0.0);
    EXPECT_DOUBLE_EQ(p.y, 0.0);
    EXPECT_DOUBLE_EQ(p.width, 3000.0);
    EXPECT_DOUBLE_EQ(p.height, 1500.0);
}

TEST(Placement, AnEmptyPictureHasNoPlace)
{
    const auto p = printer::placePicture(0, 10, 96, 300, 1417.0, true);
    EXPECT_DOUBLE_EQ(p.width, 0.0);
}
