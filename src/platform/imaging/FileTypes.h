#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

namespace platform::imaging {

// The image control's file type numbers, by a file name's extension (0: none of
// its types).
inline int fileTypeForExtension(std::string_view name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos)
        return 0;
    std::string ext(name.substr(dot + 1));
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext == "tga")
        return 1;
    if (ext == "pcx")
        return 2;
    if (ext == "gif")
        return 3;
    if (ext == "tif" || ext == "tiff")
        return 4;
    if (ext == "bmp" || ext == "dib")
        return 5;
    if (ext == "wpg")
        return 6;
    if (ext == "wmf")
        return 7;
    if (ext == "jpg" || ext == "jpeg" || ext == "jif" || ext == "jfif")
        return 8;
    if (ext == "pic")
        return 9;
    if (ext == "png")
        return 10;
    if (ext == "rle")
        return 12;
    if (ext == "ico")
        return 20;
    if (ext == "ppm")
        return 21;
    if (ext == "pgm")
        return 22;
    if (ext == "pbm")
        return 23;
    if (ext == "dcx")
        return 24;
    return 0;
}

// Pictures above this many pixels are refused as too large for memory (a 20000
// x 20000 picture would take 1.6 GB as pixels, before its undo copy).
constexpr long long MaxPicturePixels = 64LL * 1024 * 1024;

} // namespace platform::imaging
