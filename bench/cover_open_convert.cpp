// The cover designer's way with a photograph: a 3000 x 3000 JPEG opened into
// the preview and the work image, written to the work file (BMP), transferred
// to the canvas and converted to 8 bits on all three, by the real image
// control; against `gm convert photo.jpg +dither -colors 256 out.bmp`, the one
// command doing the same conversion. Wall time of one run each, reported as a
// ratio, never asserted.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/imaging/GmImageControl.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

int main()
{
    std::string pattern = (fs::temp_directory_path() / "bench-cover-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        return 1;
    const fs::path dir = pattern;
    const fs::path photo = dir / "photo.jpg";
    // A photograph-like picture: smooth colour with noise, so that it has many
    // colours.
    const std::string make = "gm convert -size 3000x3000 gradient:'#204080'-'#f0c060' +noise Gaussian "
                             "-quality 90 '"
        + photo.string() + "'";
    if (std::system(make.c_str()) != 0)
        return 1;

    const auto t0 = Clock::now();
    auto clipboard = platform::imaging::makeMemoryClipboard();
    auto canvas = platform::imaging::makeGmImageControl(clipboard);
    auto preview = platform::imaging::makeGmImageControl(clipboard);
    auto work = platform::imaging::makeGmImageControl(clipboard);
    preview->setFileName(photo.string());
    work->setFileName(photo.string());
    work->setSaveFileName(dir.string() + "\\image-0.bmp");
    work->SaveFile();
    canvas->setFileName(dir.string() + "\\image-0.bmp");
    for (auto *c : {canvas.get(), preview.get(), work.get()})
        c->ColorDepth(8, 0, 0);
    const double ours = std::chrono::duration<double>(Clock::now() - t0).count();
    if (canvas->ImagError() != 0 || canvas->IBPP() != 8 || canvas->IWidth() != 3000)
        std::fprintf(stderr, "the control failed: error %d\n", canvas->ImagError());

    const auto t1 = Clock::now();
    const std::string theirs
        = "gm convert '" + photo.string() + "' +dither -colors 256 '" + (dir / "gm.bmp").string() + "'";
    const int rc = std::system(theirs.c_str());
    const double gm = std::chrono::duration<double>(Clock::now() - t1).count();

    std::printf("open, transfer and 8 bits on a 3000 x 3000 photograph: %.2f s\n", ours);
    std::printf("gm convert +dither -colors 256 on the same file:     %.2f s%s\n", gm, rc ? " (failed)" : "");
    std::printf("ratio: %.2f\n", gm > 0 ? ours / gm : 0.0);
    std::error_code ec;
    fs::remove_all(dir, ec);
    return 0;
}
