#include <gtest/gtest.h>

#include "cover/imagx.h"

using cover::imagx::captionLine;
using cover::imagx::errorText;

TEST(imagx, ErrorTextsOfTheControlsCodes)
{
    EXPECT_EQ(errorText(0), "");
    EXPECT_EQ(errorText(-1), "Cannot find the image file");
    EXPECT_EQ(errorText(-2), "The image file type is unknown or unable to read the image file type");
    EXPECT_EQ(errorText(-3), "Cannot lock memory");
    EXPECT_EQ(errorText(-4), "Cannot dither the image");
    EXPECT_EQ(errorText(-5), "Cannot quantize the image palette");
    EXPECT_EQ(errorText(-6), "Error reading the file");
    EXPECT_EQ(errorText(-7), "Cannot allocate memory for the image");
    EXPECT_EQ(errorText(-8), "Image load or decompression was canceled");
    EXPECT_EQ(errorText(-9), "Cannot create file");
    EXPECT_EQ(errorText(-10), "Error writing file");
    EXPECT_EQ(errorText(-11), "Invalid image format");
    EXPECT_EQ(errorText(-12), "Invalid option");
    EXPECT_EQ(errorText(-13), "Invalid palette file");
    EXPECT_EQ(errorText(-14), "Invalid file extension");
    EXPECT_EQ(errorText(-15), "Cannot paste from clipboard");
    EXPECT_EQ(errorText(-16), "Cannot copy to clipboard");
    EXPECT_EQ(errorText(-17), "Image Format not supported");
    EXPECT_EQ(errorText(-1000), "No textures found.");
}

TEST(imagx, FiveCodesShowTheTitleAsTheirText)
{
    for (int code : {-18, -36, -38, -100, -101})
        EXPECT_EQ(errorText(code), "Velmora Works-Error Notification") << code;
}

TEST(imagx, TwainRangeAndTheRest)
{
    for (int code = -61; code <= -50; ++code)
        EXPECT_EQ(errorText(code), "TWAIN Error.") << code;
    for (int code : {-19, -35, -49, -62, -99, -102, -999, 1, 32767})
        EXPECT_EQ(errorText(code), "Unknown Error") << code;
}

TEST(imagx, CaptionLineAtAndAwayFromFullSize)
{
    EXPECT_EQ(captionLine("C:\\a.jpg", 640, 480, 24, 2.5), "C:\\a.jpg (640 X 480 X 24BPP  250%)");
    EXPECT_EQ(captionLine("C:\\a.jpg", 640, 480, 24, 1.0), "C:\\a.jpg (640 X 480 X 24BPP )");
    // "##00" keeps two digits at least.
    EXPECT_EQ(captionLine("x", 1, 2, 8, 0.05), "x (1 X 2 X 8BPP  05%)");
    EXPECT_EQ(captionLine("", 0, 0, 0, 10.0), " (0 X 0 X 0BPP  1000%)");
}
