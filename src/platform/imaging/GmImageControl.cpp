#include "GmImageControl.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <vector>

#include <Magick++.h>

#include "FileTypes.h"
#include "runtime/Paths.h"

namespace platform::imaging {

namespace {

void initialiseOnce()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Magick::InitializeMagick(nullptr);
        // A hostile header must not make the library allocate without bound.
        MagickLib::SetMagickResourceLimit(MagickLib::PixelsResource, MaxPicturePixels);
    });
}

// The library's failure as the control's code.
int codeFor(const Magick::Exception &e)
{
    if (dynamic_cast<const Magick::ErrorResourceLimit *>(&e) || dynamic_cast<const Magick::WarningResourceLimit *>(&e))
        return ImagNoMemory;
    if (dynamic_cast<const Magick::ErrorMissingDelegate *>(&e)
        || dynamic_cast<const Magick::WarningMissingDelegate *>(&e))
        return ImagUnknownType;
    if (dynamic_cast<const Magick::ErrorFileOpen *>(&e) || dynamic_cast<const Magick::WarningFileOpen *>(&e))
        return ImagFileNotFound;
    if (dynamic_cast<const Magick::ErrorCorruptImage *>(&e) || dynamic_cast<const Magick::WarningCorruptImage *>(&e)
        || dynamic_cast<const Magick::ErrorBlob *>(&e) || dynamic_cast<const Magick::ErrorCoder *>(&e))
        return ImagReadError;
    return ImagInvalidFormat;
}

// The format GraphicsMagick writes for a file type number; "" when it writes
// none of that kind.
std::string writerFor(int type)
{
    switch (type) {
    case 1: return "TGA";
    case 2: return "PCX";
    case 3: return "GIF";
    case 4: return "TIFF";
    case 5: return "BMP3";
    case 8: return "JPEG";
    case 10: return "PNG";
    case 21: return "PPM";
    case 22: return "PGM";
    case 23: return "PBM";
    case 24: return "DCX";
    default: return {};
    }
}

int typeFor(const Magick::Image &image, const std::string &path)
{
    const std::string m = image.magick();
    if (m == "JPEG")
        return image.interlaceType() == Magick::NoInterlace ? 8 : 11;
    if (m == "BMP" || m == "BMP2" || m == "BMP3")
        return 5;
    if (m == "PNG")
        return 10;
    if (m == "TGA")
        return 1;
    if (m == "PCX")
        return 2;
    if (m == "GIF")
        return 3;
    if (m == "ICO")
        return 20;
    if (m == "PPM")
        return 21;
    if (m == "PGM")
        return 22;
    if (m == "PBM")
        return 23;
    if (m == "DCX")
        return 24;
    if (m == "TIFF") {
        // The compression the file was read with.
        switch (image.constImage()->compression) {
        case MagickLib::LZWCompression: return 16;
        case MagickLib::Group4Compression: return 15;
        case MagickLib::FaxCompression: return 14;
        case MagickLib::JPEGCompression: return 18;
        case MagickLib::ZipCompression: return 19;
        case MagickLib::RLECompression: return 17;
        default: return 4;
        }
    }
    if (m == "PNM")
        return fileTypeForExtension(path);
    return 0;
}

// Bits per pixel of a picture as read: palette pictures by their palette's
// size.
int bitsFor(const Magick::Image &image)
{
    const std::string m = image.magick();
    if (m == "PBM")
        return 1;
    if (image.classType() == Magick::PseudoClass) {
        const unsigned n = image.colorMapSize();
        return n <= 2 ? 1 : n <= 16 ? 4 : 8;
    }
    if (m == "PGM")
        return 8;
    return 24;
}

class GmImageControl : public ImageControl {
public:
    explicit GmImageControl(std::shared_ptr<ImageClipboard> clipboard)
        : m_clipboard(std::move(clipboard))
    {
        initialiseOnce();
    }

    std::string FileName() const override { return m_fileName; }

    void setFileName(const std::string &path) override
    {
        if (path.empty()) {
            m_loaded = false;
            m_fileName.clear();
            m_image = Magick::Image();
            m_undo.clear();
            resetView();
            setError(0);
            pictureChanged();
            return;
        }
        const auto native = rt::nativePath(path);
        std::error_code ec;
        if (!std::filesystem::is_regular_file(native, ec)) {
            setError(ImagFileNotFound);
            return;
        }
        std::string bytes;
        {
            std::ifstream in(native, std::ios::binary);
            if (!in) {
                setError(ImagFileNotFound);
                return;
            }
            bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
        if (bytes.empty()) {
            setError(ImagReadError);
            return;
        }
        Magick::Image image;
        try {
            Magick::Blob blob(bytes.data(), bytes.size());
            const std::string hint = writerFor(fileTypeForExtension(path));
            // The size first: a picture too large for memory is refused before it is
            // decoded.
            Magick::Image probe;
            if (!hint.empty() && (hint == "TGA" || hint == "PCX" || hint == "DCX"))
                probe.magick(hint);
            probe.ping(blob);
            if (static_cast<long long>(probe.columns()) * probe.rows() > MaxPicturePixels) {
                setError(ImagNoMemory);
                return;
            }
            // Formats without a signature are read by the name's extension.
            if (!hint.empty() && (hint == "TGA" || hint == "PCX" || hint == "DCX"))
                image.read(blob, Magick::Geometry(), hint);
            else
                image.read(blob);
        } catch (const Magick::Warning &w) {
            if (dynamic_cast<const Magick::WarningCorruptImage *>(&w) || image.columns() == 0) {
                setError(codeFor(w));
                return;
            }
        } catch (const Magick::Exception &e) {
            setError(codeFor(e));
            return;
        } catch (const std::exception &) {
            setError(ImagReadError);
            return;
        }
        if (image.columns() == 0 || image.rows() == 0) {
            setError(ImagInvalidFormat);
            return;
        }
        m_image = image;
        m_fileType = typeFor(image, path);
        m_bpp = bitsFor(image);
        m_fileSize = static_cast<long>(bytes.size());
        m_colours = -1;
        m_fileName = path;
        m_loaded = true;
        m_undo.clear();
        resetView();
        setError(0);
        pictureChanged();
    }

    int IWidth() const override { return m_loaded ? static_cast<int>(m_image.columns()) : 0; }
    int IHeight() const override { return m_loaded ? static_cast<int>(m_image.rows()) : 0; }
    int IBPP() const override { return m_loaded ? m_bpp : 0; }
    int FileType() const override { return m_loaded ? m_fileType : 0; }
    long FileSize() const override { return m_loaded ? m_fileSize : 0; }
    long UniqueColors() const override
    {
        if (!m_loaded)
            return 0;
        if (m_colours < 0) {
            try {
                Magick::Image copy = m_image;
                m_colours = static_cast<long>(copy.totalColors());
            } catch (const Magick::Exception &) {
                m_colours = 0;
            }
        }
        return m_colours;
    }

    void SaveFile() override
    {
        if (!m_loaded) {
            setError(ImagInvalidFormat);
            return;
        }
        const int type = fileTypeForExtension(SaveFileName());
        if (type == 0) {
            setError(ImagInvalidExtension);
            return;
        }
        const std::string format = writerFor(type);
        if (format.empty()) {
            setError(ImagNotSupported);
            return;
        }
        Magick::Blob blob;
        try {
            Magick::Image out = m_image;
            if (m_bpp <= 8 && format != "JPEG") {
                out.type(m_bpp == 1 && out.colorMapSize() <= 2 ? Magick::PaletteType : Magick::PaletteType);
            }
            out.write(&blob, format);
        } catch (const Magick::Exception &) {
            setError(ImagWriteError);
            return;
        }
        const std::string_view bytes(static_cast<const char *>(blob.data()), blob.length());
        if (bytes.empty()) {
            setError(ImagWriteError);
            return;
        }
        if (!rt::writeFileAtomically(rt::nativePath(SaveFileName()), bytes)) {
            setError(ImagCannotCreate);
            return;
        }
        setError(0);
    }

    void ColorDepth(int bits, int paletteMode, int ditherMode) override
    {
        if (!m_loaded || (bits != 1 && bits != 4 && bits != 8 && bits != 24)
            || (paletteMode != 0 && paletteMode != 2)) {
            setError(ImagInvalidOption);
            return;
        }
        try {
            Magick::Image work = m_image;
            work.modifyImage();
            if (bits == 24 && paletteMode != 2) {
                work.type(Magick::TrueColorType);
            } else {
                work.quantizeColorSpace(paletteMode == 2 ? Magick::GRAYColorspace : Magick::RGBColorspace);
                work.quantizeColors(bits == 24 ? 256 : 1u << bits);
                work.quantizeDither(ditherMode != 0);
                work.quantize();
            }
            m_undo.push_back(m_image);
            m_image = work;
            m_bpp = paletteMode == 2 ? std::min(bits, 8) : bits;
            m_colours = -1;
        } catch (const Magick::Exception &e) {
            setError(dynamic_cast<const Magick::ErrorResourceLimit *>(&e) ? ImagNoMemory : ImagCannotQuantize);
            return;
        }
        setError(0);
        pictureChanged();
    }

    void Undo() override
    {
        if (!m_undo.empty()) {
            m_image = m_undo.back();
            m_undo.pop_back();
            m_bpp = bitsFor(m_image);
            if (m_image.classType() == Magick::DirectClass)
                m_bpp = 24;
            m_colours = -1;
            pictureChanged();
        }
        setError(0);
    }

    void Copy() override
    {
        if (!m_loaded || !m_clipboard || !m_clipboard->setPicture(pixels())) {
            setError(ImagCannotCopy);
            return;
        }
        setError(0);
    }

    void Paste() override
    {
        const ImagePixels p = m_clipboard ? m_clipboard->picture() : ImagePixels {};
        if (p.empty()) {
            setError(ImagCannotPaste);
            return;
        }
        try {
            Magick::Image image;
            image.read(p.width, p.height, "BGRA", Magick::CharPixel, p.argb.data());
            image.matte(false);
            if (m_loaded)
                m_undo.push_back(m_image);
            m_image = image;
        } catch (const Magick::Exception &) {
            setError(ImagCannotPaste);
            return;
        }
        m_loaded = true;
        m_bpp = 24;
        m_fileType = 0;
        m_fileSize = 0;
        m_colours = -1;
        setError(0);
        pictureChanged();
    }

    ImagePixels pixels() const override
    {
        ImagePixels p;
        if (!m_loaded)
            return p;
        try {
            p.width = static_cast<int>(m_image.columns());
            p.height = static_cast<int>(m_image.rows());
            p.argb.resize(static_cast<size_t>(p.width) * p.height);
            Magick::Image copy = m_image;
            copy.write(0, 0, p.width, p.height, "BGRA", Magick::CharPixel, p.argb.data());
            if (!copy.matte())
                for (auto &px : p.argb)
                    px |= 0xFF000000u;
        } catch (const Magick::Exception &) {
            return {};
        }
        return p;
    }

private:
    std::shared_ptr<ImageClipboard> m_clipboard;
    Magick::Image m_image;
    std::vector<Magick::Image> m_undo;
    std::string m_fileName;
    bool m_loaded = false;
    int m_fileType = 0;
    int m_bpp = 0;
    long m_fileSize = 0;
    mutable long m_colours = -1;
};

class MemoryClipboard : public ImageClipboard {
public:
    bool setPicture(const ImagePixels &pixels) override
    {
        m_picture = pixels;
        return true;
    }
    ImagePixels picture() const override { return m_picture; }
    void clear() override { m_picture = {}; }

private:
    ImagePixels m_picture;
};

} // namespace

std::unique_ptr<ImageControl> makeGmImageControl(std::shared_ptr<ImageClipboard> clipboard)
{
    // Before the first picture object is made.
    initialiseOnce();
    return std::make_unique<GmImageControl>(std::move(clipboard));
}

std::shared_ptr<ImageClipboard> makeMemoryClipboard()
{
    return std::make_shared<MemoryClipboard>();
}

} // namespace platform::imaging
