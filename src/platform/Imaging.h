#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// A picture as pixels, for the view, the clipboard and the printer: 0xAARRGGBB,
// row by row.
struct ImagePixels {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> argb;
    bool empty() const { return width <= 0 || height <= 0; }
};

// The system clipboard's picture (and its clearing), as the image control and
// the Clear command use it.
class ImageClipboard {
public:
    virtual ~ImageClipboard() = default;
    virtual bool setPicture(const ImagePixels &pixels) = 0;
    // Empty when the clipboard holds no picture.
    virtual ImagePixels picture() const = 0;
    virtual void clear() = 0;
};

// Error codes of the image control, as its `ImagError` reports them after a
// command.
enum ImagErrorCode : int {
    ImagNoError = 0,
    ImagFileNotFound = -1,
    ImagUnknownType = -2,
    ImagCannotDither = -4,
    ImagCannotQuantize = -5,
    ImagReadError = -6,
    ImagNoMemory = -7,
    ImagCannotCreate = -9,
    ImagWriteError = -10,
    ImagInvalidFormat = -11,
    ImagInvalidOption = -12,
    ImagInvalidExtension = -14,
    ImagCannotPaste = -15,
    ImagCannotCopy = -16,
    ImagNotSupported = -17,
};

// The image control of the cover designer (`ImagXpress`). The pixel work
// (loading, saving, colour depth, undo, clipboard) is the backend's; zoom,
// scroll offsets, the rubber band and the last error are kept here, alike for
// every backend. Failures never throw: they set ImagError, as the control did.
class ImageControl {
public:
    virtual ~ImageControl() = default;

    // FileName: setting it loads that file ("" empties the control); reading it
    // gives the current file.
    virtual std::string FileName() const = 0;
    virtual void setFileName(const std::string &path) = 0;
    virtual int IWidth() const = 0;
    virtual int IHeight() const = 0;
    virtual int IBPP() const = 0;
    // The file type number of the loaded file (8 JPEG, 10 PNG, ...; 0 for none).
    virtual int FileType() const = 0;
    virtual long FileSize() const = 0;
    virtual long UniqueColors() const = 0;
    // Where SaveFile writes; the format follows the name's extension.
    std::string SaveFileName() const { return m_saveFileName; }
    void setSaveFileName(const std::string &path) { m_saveFileName = path; }
    virtual void SaveFile() = 0;
    // Colour depth (bits 1, 4, 8 or 24; palette mode 0 optimised, 2 grey; dither
    // mode 0 none).
    virtual void ColorDepth(int bits, int paletteMode, int ditherMode) = 0;
    virtual void Undo() = 0;
    virtual void Copy() = 0;
    virtual void Paste() = 0;

    // The last error, 0 when the last command succeeded.
    int ImagError() const { return m_error; }

    // Zoom (1.0 = 100%) and the scroll offsets in screen pixels.
    double IPZoomF() const { return m_zoom; }
    void ZoomToFactor(double factor)
    {
        if (!(factor > 0) || !std::isfinite(factor)) {
            m_error = ImagInvalidOption;
            return;
        }
        // A new factor shows the picture from its origin; the caller scrolls where
        // it wants.
        m_zoom = factor;
        m_scrollX = m_scrollY = 0;
        m_error = 0;
        notify();
    }
    int ScrollX() const { return m_scrollX; }
    int ScrollY() const { return m_scrollY; }
    void setScrollX(int v)
    {
        m_scrollX = v < 0 ? 0 : v;
        notify();
    }
    void setScrollY(int v)
    {
        m_scrollY = v < 0 ? 0 : v;
        notify();
    }

    // The rubber band, in image pixels.
    struct RubberBand {
        bool shown = false;
        int left = 0, top = 0, right = 0, bottom = 0;
        uint32_t colour = 0;
        bool flag = false;
    };
    void DrawRubberBand(int left, int top, int right, int bottom, uint32_t colour, bool flag)
    {
        m_band = {true, left, top, right, bottom, colour, flag};
        notify();
    }
    void EraseRubberBand()
    {
        m_band.shown = false;
        notify();
    }
    const RubberBand &rubberBand() const { return m_band; }

    // Palette and window handles, for realising the palette: there is no palette
    // device here, so the handles are tokens that stand for the picture and its
    // view.
    long hPalette() const { return IBPP() <= 8 && IWidth() > 0 ? 1 : 0; }
    long hWnd() const { return 1; }
    void Refresh() { notify(); }

    // Two display properties the window sets at load; kept as given.
    int DisplayPropertyA = 0;
    int DisplayPropertyB = 0;

    // The picture as pixels, for the view and the printer.
    virtual ImagePixels pixels() const = 0;

    // Called on every change, for the view; the version counts the changes of the
    // pixels alone.
    std::function<void()> onChange;
    unsigned pictureVersion() const { return m_version; }

protected:
    void notify()
    {
        if (onChange)
            onChange();
    }
    void pictureChanged()
    {
        ++m_version;
        notify();
    }
    void setError(int code) { m_error = code; }
    void resetView()
    {
        m_zoom = 1.0;
        m_scrollX = m_scrollY = 0;
        m_band = {};
    }

private:
    std::string m_saveFileName;
    int m_error = 0;
    double m_zoom = 1.0;
    int m_scrollX = 0;
    int m_scrollY = 0;
    RubberBand m_band;
    unsigned m_version = 0;
};

// The scanner (`TwainPRO`). Acquire works in the background; each image that
// arrives is announced by PostScan on the program's loop, after which SaveFile
// writes it.
class Scanner {
public:
    virtual ~Scanner() = default;
    // Each returns 0 on success, a TWAIN-range code (-50 .. -61) when it fails.
    virtual int OpenSession() = 0;
    virtual int StartSession() = 0;
    virtual int CloseSession() = 0;
    virtual int SelectSource() = 0;
    virtual int SaveFile(const std::string &path) = 0;
    // The sources the scanner library finds, and the one in use.
    virtual std::vector<std::string> sources() const = 0;
    virtual std::string currentSource() const = 0;

    std::function<void()> PostScan;
};

// How a cover is to be printed.
struct CoverPrintJob {
    ImagePixels picture;
    int dpi = 300;
    // Fit the picture to the cover keeping its aspect ratio, centred; else its
    // own size from the corner.
    bool smartPlacement = false;
    // Print on a network printer CUPS knows.
    bool overNetwork = false;
    // The picture's own resolution, for its size when it is not fitted.
    double pictureDpi = 96.0;
};

// The printer (`PrintPRO`): the printer dialogue and the printing of a cover.
class Printer {
public:
    virtual ~Printer() = default;
    // The printer dialogue; 0 when it was closed with OK.
    virtual int PrintDialog() = 0;
    // Prints one cover page; 0 on success, non-zero when the printer refused.
    virtual int PrintCover(const CoverPrintJob &job) = 0;
    // The network printers the print system knows.
    virtual std::vector<std::string> networkPrinters() const = 0;
    std::string DocName = "PrintPRO Document";
};

} // namespace platform
