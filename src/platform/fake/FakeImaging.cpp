#include "FakeImaging.h"

#include <fstream>
#include <sstream>

#include "FakeComponents.h"
#include "FakeRecorder.h"
#include "platform/imaging/FileTypes.h"
#include "runtime/EventLoop.h"
#include "runtime/Paths.h"

namespace platform::fake {

namespace {

std::string key(const std::string &path)
{
    return rt::nativePath(path).lexically_normal().string();
}

// Files the fake saves hold their numbers as text, so that loading them again
// gives the same picture.
std::string fakeFileText(const FakePicture &p)
{
    std::ostringstream s;
    s << "FAKEIMAGE " << p.width << ' ' << p.height << ' ' << p.bpp << ' ' << p.type << ' ' << p.colors << '\n';
    return s.str();
}

bool readFakeFile(const std::filesystem::path &file, FakePicture &p)
{
    std::ifstream in(file, std::ios::binary);
    std::string word;
    if (!(in >> word) || word != "FAKEIMAGE")
        return false;
    return static_cast<bool>(in >> p.width >> p.height >> p.bpp >> p.type >> p.colors);
}

long maxColours(int bits)
{
    return bits >= 24 ? 16777216L : 1L << bits;
}

class FakeImageControl : public ImageControl, Recorder {
public:
    explicit FakeImageControl(std::shared_ptr<FakeWorld> w)
        : Recorder(std::move(w), "ImagXpress")
    {
    }

    std::string FileName() const override { return m_fileName; }
    void setFileName(const std::string &path) override
    {
        call("FileName = " + path);
        if (path.empty()) {
            m_fileName.clear();
            m_loaded = false;
            m_undo.clear();
            resetView();
            setError(0);
            pictureChanged();
            return;
        }
        auto &im = imagingWorld(world());
        const std::string k = key(path);
        if (auto it = im.loadErrors.find(k); it != im.loadErrors.end()) {
            setError(it->second);
            return;
        }
        std::error_code ec;
        const auto native = rt::nativePath(path);
        const bool exists = std::filesystem::is_regular_file(native, ec);
        FakePicture p;
        if (auto it = im.pictures.find(k); it != im.pictures.end()) {
            p = it->second;
        } else if (!exists) {
            setError(ImagFileNotFound);
            return;
        } else if (!readFakeFile(native, p)) {
            p = FakePicture {};
            p.type = imaging::fileTypeForExtension(path);
            if (p.type == 0) {
                setError(ImagUnknownType);
                return;
            }
        }
        if (static_cast<long long>(p.width) * p.height > imaging::MaxPicturePixels) {
            setError(ImagNoMemory);
            return;
        }
        if (p.size < 0)
            p.size = exists ? static_cast<long>(std::filesystem::file_size(native, ec)) : 0;
        m_picture = p;
        m_loaded = true;
        m_fileName = path;
        m_undo.clear();
        resetView();
        setError(0);
        pictureChanged();
    }
    int IWidth() const override { return m_loaded ? m_picture.width : 0; }
    int IHeight() const override { return m_loaded ? m_picture.height : 0; }
    int IBPP() const override { return m_loaded ? m_picture.bpp : 0; }
    int FileType() const override { return m_loaded ? m_picture.type : 0; }
    long FileSize() const override { return m_loaded ? m_picture.size : 0; }
    long UniqueColors() const override { return m_loaded ? m_picture.colors : 0; }

    void SaveFile() override
    {
        call("SaveFile " + SaveFileName());
        if (failing("save"))
            return;
        if (!m_loaded) {
            setError(ImagInvalidFormat);
            return;
        }
        const int type = imaging::fileTypeForExtension(SaveFileName());
        if (type == 0) {
            setError(ImagInvalidExtension);
            return;
        }
        FakePicture saved = m_picture;
        saved.type = type;
        if (!rt::writeFileAtomically(rt::nativePath(SaveFileName()), fakeFileText(saved))) {
            setError(ImagCannotCreate);
            return;
        }
        setError(0);
    }

    void ColorDepth(int bits, int paletteMode, int ditherMode) override
    {
        call("ColorDepth " + std::to_string(bits) + " " + std::to_string(paletteMode) + " "
            + std::to_string(ditherMode));
        if (failing("colordepth"))
            return;
        if (!m_loaded || (bits != 1 && bits != 4 && bits != 8 && bits != 24)) {
            setError(ImagInvalidOption);
            return;
        }
        m_undo.push_back(m_picture);
        m_picture.bpp = bits;
        m_picture.colors = std::min(m_picture.colors, maxColours(bits));
        if (paletteMode == 2)
            m_picture.colors = std::min(m_picture.colors, 256L);
        setError(0);
        pictureChanged();
    }

    void Undo() override
    {
        call("Undo");
        if (failing("undo"))
            return;
        if (!m_undo.empty()) {
            m_picture = m_undo.back();
            m_undo.pop_back();
        }
        setError(0);
        pictureChanged();
    }

    void Copy() override
    {
        call("Copy");
        if (failing("copy"))
            return;
        if (!m_loaded) {
            setError(ImagCannotCopy);
            return;
        }
        auto &im = imagingWorld(world());
        im.clipboardFull = true;
        im.clipboard = m_picture;
        setError(0);
    }

    void Paste() override
    {
        call("Paste");
        if (failing("paste"))
            return;
        auto &im = imagingWorld(world());
        if (!im.clipboardFull) {
            setError(ImagCannotPaste);
            return;
        }
        if (m_loaded)
            m_undo.push_back(m_picture);
        m_picture = im.clipboard;
        m_picture.size = 0;
        m_picture.type = 0;
        m_loaded = true;
        setError(0);
        pictureChanged();
    }

    // A grey and white check of the picture's size (at most 2048 on a side),
    // enough for a view.
    ImagePixels pixels() const override
    {
        ImagePixels px;
        if (!m_loaded)
            return px;
        px.width = std::min(m_picture.width, 2048);
        px.height = std::min(m_picture.height, 2048);
        px.argb.resize(static_cast<size_t>(px.width) * px.height);
        for (int y = 0; y < px.height; ++y)
            for (int x = 0; x < px.width; ++x)
                px.argb[static_cast<size_t>(y) * px.width + x] = ((x / 16 + y / 16) % 2) ? 0xFFFFFFFFu : 0xFFB0B0B0u;
        return px;
    }

private:
    bool failing(const std::string &command)
    {
        auto &im = imagingWorld(world());
        if (auto it = im.commandErrors.find(command); it != im.commandErrors.end() && it->second != 0) {
            setError(it->second);
            return true;
        }
        return false;
    }

    std::string m_fileName;
    bool m_loaded = false;
    FakePicture m_picture;
    std::vector<FakePicture> m_undo;
};

class FakeClipboard : public ImageClipboard {
public:
    explicit FakeClipboard(std::shared_ptr<FakeWorld> w)
        : m_world(std::move(w))
    {
    }
    bool setPicture(const ImagePixels &pixels) override
    {
        auto &im = imagingWorld(*m_world);
        im.clipboardFull = !pixels.empty();
        im.clipboard = FakePicture {pixels.width, pixels.height, 24, 0, 5000, 0};
        return true;
    }
    ImagePixels picture() const override
    {
        auto &im = imagingWorld(*m_world);
        ImagePixels p;
        if (im.clipboardFull) {
            p.width = im.clipboard.width;
            p.height = im.clipboard.height;
        }
        return p;
    }
    void clear() override
    {
        m_world->calls.push_back("Clipboard.Clear");
        imagingWorld(*m_world).clipboardFull = false;
    }

private:
    std::shared_ptr<FakeWorld> m_world;
};

// A scanner on virtual time: a scan takes scanMs, then PostScan comes, unless
// the scanner vanished.
class FakeScanner : public Scanner, Recorder {
public:
    explicit FakeScanner(std::shared_ptr<FakeWorld> w)
        : Recorder(std::move(w), "TwainPRO1")
    {
        auto &im = imagingWorld(world());
        if (!im.sources.empty())
            m_source = im.sources.front();
        record("Source", m_source);
        record("Session", "Closed");
        record("Scans", 0);
    }
    ~FakeScanner() override { stop(); }

    int OpenSession() override
    {
        call("OpenSession");
        auto &im = imagingWorld(world());
        if (im.openResult != 0 || im.sources.empty())
            return im.openResult != 0 ? im.openResult : -51;
        m_open = true;
        record("Session", "Open");
        return 0;
    }
    int StartSession() override
    {
        call("StartSession");
        auto &im = imagingWorld(world());
        if (im.acquireResult != 0)
            return im.acquireResult;
        if (im.sources.empty())
            return -51;
        if (m_timer)
            return -54;
        // Acquire opens the session itself when none is open.
        m_open = true;
        record("Session", "Scanning");
        rt::EventLoop *loop = world().loop;
        if (!loop)
            return -50;
        m_timer = loop->startTimer(std::max(1, im.scanMs), [this] { arrived(); });
        return 0;
    }
    int CloseSession() override
    {
        call("CloseSession");
        stop();
        m_open = false;
        record("Session", "Closed");
        return 0;
    }
    int SelectSource() override
    {
        call("SelectSource");
        auto &im = imagingWorld(world());
        if (im.sources.empty())
            return -51;
        // The selection picks the next source the scanner library lists.
        auto it = std::find(im.sources.begin(), im.sources.end(), m_source);
        m_source = (it == im.sources.end() || it + 1 == im.sources.end()) ? im.sources.front() : *(it + 1);
        record("Source", m_source);
        return 0;
    }
    int SaveFile(const std::string &path) override
    {
        call("SaveFile " + path);
        if (!m_hasImage)
            return -57;
        if (!rt::writeFileAtomically(rt::nativePath(path), fakeFileText(m_image)))
            return -58;
        return 0;
    }
    std::vector<std::string> sources() const override
    {
        return imagingWorld(const_cast<FakeScanner *>(this)->world()).sources;
    }
    std::string currentSource() const override { return m_source; }

private:
    void stop()
    {
        if (m_timer && world().loop)
            world().loop->stopTimer(m_timer);
        m_timer = 0;
    }
    void arrived()
    {
        stop();
        auto &im = imagingWorld(world());
        if (im.vanish) {
            im.vanish = false;
            m_open = false;
            record("Session", "Closed");
            record("LastError", "-55");
            return;
        }
        m_hasImage = true;
        m_image = im.scanned;
        record("Session", "Open");
        record("Scans", ++m_scans);
        if (PostScan)
            PostScan();
    }

    std::string m_source;
    bool m_open = false;
    bool m_hasImage = false;
    FakePicture m_image;
    int m_timer = 0;
    int m_scans = 0;
};

class FakePrinter : public Printer, Recorder {
public:
    explicit FakePrinter(std::shared_ptr<FakeWorld> w)
        : Recorder(std::move(w), "PrintPRO1")
    {
        record("Jobs", 0);
    }
    int PrintDialog() override
    {
        call("PrintDialog");
        record("Dialogs", ++m_dialogs);
        return imagingWorld(world()).dialogResult;
    }
    int PrintCover(const CoverPrintJob &job) override
    {
        auto &im = imagingWorld(world());
        std::ostringstream s;
        s << job.picture.width << "x" << job.picture.height << " at " << job.dpi << " dpi"
          << (job.smartPlacement ? ", smart placement" : "") << (job.overNetwork ? ", over network" : "");
        call("PrintCover " + s.str());
        if (im.printResult != 0) {
            record("LastError", im.printResult);
            return im.printResult;
        }
        record("LastJob", s.str());
        record("Jobs", ++m_jobs);
        return 0;
    }
    std::vector<std::string> networkPrinters() const override
    {
        return imagingWorld(const_cast<FakePrinter *>(this)->world()).networkPrinters;
    }

private:
    int m_jobs = 0;
    int m_dialogs = 0;
};

int toInt(const std::string &s, bool &ok)
{
    try {
        size_t used = 0;
        const int v = std::stoi(s, &used);
        ok = used == s.size();
        return v;
    } catch (...) {
        ok = false;
        return 0;
    }
}

} // namespace

FakeImagingWorld &imagingWorld(FakeWorld &world)
{
    if (!world.imaging)
        world.imaging = std::make_shared<FakeImagingWorld>();
    return *world.imaging;
}

void addFakeImaging(Components &c, const std::shared_ptr<FakeWorld> &world)
{
    imagingWorld(*world);
    c.imageControl = [world] { return std::make_unique<FakeImageControl>(world); };
    c.imageClipboard = [world] { return std::make_shared<FakeClipboard>(world); };
    c.scanner = [world] { return std::make_unique<FakeScanner>(world); };
    c.printer = [world] { return std::make_unique<FakePrinter>(world); };
}

std::string setFakeImaging(
    FakeWorld &world, const std::string &component, const std::string &setting, const std::vector<std::string> &v)
{
    auto &im = imagingWorld(world);
    bool ok = true;
    auto num = [&](size_t i) { return toInt(v[i], ok); };
    if (component == "imaging" && setting == "picture" && (v.size() == 6 || v.size() == 7)) {
        FakePicture p {num(1), num(2), num(3), num(4), num(5), v.size() == 7 ? num(6) : -1};
        im.pictures[key(v[0])] = p;
    } else if (component == "imaging" && setting == "loaderror" && v.size() == 2) {
        im.loadErrors[key(v[0])] = num(1);
    } else if (component == "imaging" && setting == "error" && v.size() == 2) {
        static const std::vector<std::string> commands {"copy", "paste", "undo", "save", "colordepth"};
        if (std::find(commands.begin(), commands.end(), v[0]) == commands.end())
            return "fake imaging error takes copy, paste, undo, save or colordepth";
        im.commandErrors[v[0]] = num(1);
    } else if (component == "imaging" && setting == "clipboard" && v.size() == 2) {
        im.clipboardFull = true;
        im.clipboard = FakePicture {num(0), num(1), 24, 0, 5000, 0};
    } else if (component == "scanner" && setting == "sources") {
        im.sources = v;
    } else if (component == "scanner" && setting == "picture" && v.size() == 4) {
        im.scanned = FakePicture {num(0), num(1), num(2), 5, num(3), -1};
    } else if (component == "scanner" && setting == "time" && v.size() == 1) {
        im.scanMs = num(0);
    } else if (component == "scanner" && setting == "open" && v.size() == 1) {
        im.openResult = num(0);
    } else if (component == "scanner" && setting == "acquire" && v.size() == 1) {
        im.acquireResult = num(0);
    } else if (component == "scanner" && setting == "vanish" && v.empty()) {
        im.vanish = true;
    } else if (component == "printer" && setting == "dialog" && v.size() == 1) {
        im.dialogResult = num(0);
    } else if (component == "printer" && setting == "refuse" && v.size() == 1) {
        im.printResult = num(0);
    } else if (component == "printer" && setting == "network") {
        im.networkPrinters = v;
    } else {
        return "unknown fake setting \"" + component + " " + setting + "\"";
    }
    return ok ? std::string() : "a number was expected";
}

} // namespace platform::fake
