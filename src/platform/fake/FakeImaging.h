#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Components.h"
#include "platform/Imaging.h"

namespace platform::fake {

struct FakeWorld;

// What a fake picture is: the fake image control keeps only these numbers,
// never pixels.
struct FakePicture {
    int width = 100;
    int height = 100;
    int bpp = 24;
    int type = 8;
    long colors = 5000;
    // -1: the size of the file on disk.
    long size = -1;
};

// The cover designer's fakes: image controls, clipboard, scanner and printer.
struct FakeImagingWorld {
    // Pictures by file path (as the system spells it): what loading that file
    // gives. A file not named here loads as a 100 x 100, 24-bit picture when it
    // exists and has a picture extension; files the fake saved load as what was
    // saved.
    std::map<std::string, FakePicture> pictures;
    // Files whose loading fails with this code (-6 for a corrupt file, ...).
    std::map<std::string, int> loadErrors;
    // Commands of the image control that fail with a code: copy, paste, undo,
    // save, colordepth.
    std::map<std::string, int> commandErrors;
    // The clipboard: a picture or nothing.
    bool clipboardFull = false;
    FakePicture clipboard;

    // Scanner: sources, the picture a scan delivers, virtual milliseconds a scan
    // takes, results.
    std::vector<std::string> sources {"Fake Flatbed"};
    FakePicture scanned {850, 1100, 24, 5, 20000, -1};
    int scanMs = 1000;
    int openResult = 0;
    int acquireResult = 0;
    // The scanner goes away during the next scan: no image arrives.
    bool vanish = false;

    // Printer: the dialogue's result, the result of printing, the network
    // printers.
    int dialogResult = 0;
    int printResult = 0;
    std::vector<std::string> networkPrinters;
};

FakeImagingWorld &imagingWorld(FakeWorld &world);

// Sets the makers of the cover designer's components to fakes on the world.
void addFakeImaging(Components &c, const std::shared_ptr<FakeWorld> &world);

// A scenario's `fake imaging|scanner|printer SETTING VALUE...`; returns an
// error text or "".
std::string setFakeImaging(
    FakeWorld &world, const std::string &component, const std::string &setting, const std::vector<std::string> &values);

} // namespace platform::fake
