#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/Imaging.h"

namespace platform::printer {

struct Options {
    // Empty: print on the printer the user chose (CUPS through Qt). Else: every
    // job becomes a PDF file in this folder (cover-1.pdf, cover-2.pdf, ...), and
    // there is no dialogue.
    std::filesystem::path pdfFolder;
};

// The printer on Qt Print Support: a cover is a 120 x 120 mm page at the job's
// resolution, with crop marks at its corners.
std::unique_ptr<Printer> makeQtCoverPrinter(const Options &options);

// The network printers CUPS knows (by `lpstat -v`: those not on a local
// device).
std::vector<std::string> cupsNetworkPrinters();

// Where the picture goes on the cover, in device pixels of a cover
// `coverPixels` wide and high.
struct Placement {
    double x = 0, y = 0, width = 0, height = 0;
};
Placement placePicture(
    int pictureWidth, int pictureHeight, double pictureDpi, int printDpi, double coverPixels, bool smart);

} // namespace platform::printer
