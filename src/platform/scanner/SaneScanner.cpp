#include "SaneScanner.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include <sane/sane.h>

#include "runtime/EventLoop.h"
#include "runtime/Paths.h"

namespace platform::scanner {

namespace {

// SANE is initialised once for all scanners of the process and ended with the
// last one.
std::mutex g_saneMutex;
int g_saneUsers = 0;

void saneAcquire()
{
    std::lock_guard lock(g_saneMutex);
    if (g_saneUsers++ == 0) {
        SANE_Int version = 0;
        sane_init(&version, nullptr);
    }
}

void saneRelease()
{
    std::lock_guard lock(g_saneMutex);
    if (--g_saneUsers == 0)
        sane_exit();
}

void put16(std::string &s, uint16_t v)
{
    s.push_back(static_cast<char>(v & 0xFF));
    s.push_back(static_cast<char>(v >> 8));
}

void put32(std::string &s, uint32_t v)
{
    put16(s, static_cast<uint16_t>(v & 0xFFFF));
    put16(s, static_cast<uint16_t>(v >> 16));
}

// Codes in the control's TWAIN range.
constexpr int NoSource = -51;
constexpr int CannotOpen = -52;
constexpr int Busy = -54;
constexpr int ScanFailed = -55;
constexpr int NoImage = -57;
constexpr int CannotWrite = -58;

class SaneScanner : public Scanner {
public:
    explicit SaneScanner(rt::EventLoop &loop)
        : m_loop(loop)
    {
        // The devices are looked for only when asked: network backends may take seconds.
        saneAcquire();
    }

    ~SaneScanner() override
    {
        *m_alive = false;
        stopScan();
        if (m_handle)
            sane_close(m_handle);
        saneRelease();
    }

    int OpenSession() override
    {
        if (m_handle)
            return 0;
        if (m_source.empty()) {
            const auto list = sources();
            if (list.empty())
                return NoSource;
            m_source = list.front();
        }
        SANE_Handle h = nullptr;
        if (sane_open(m_source.c_str(), &h) != SANE_STATUS_GOOD || !h)
            return CannotOpen;
        m_handle = h;
        return 0;
    }

    int StartSession() override
    {
        if (m_scanning)
            return Busy;
        // Acquire opens the session itself when none is open.
        if (const int r = OpenSession(); r != 0)
            return r;
        if (m_thread.joinable())
            m_thread.join();
        m_scanning = true;
        m_loop.beginWork("scanner");
        SANE_Handle handle = m_handle;
        std::weak_ptr<void> alive = m_token;
        m_thread = std::thread([this, handle, alive] {
            Scan result = scan(handle);
            m_loop.postEvent(
                alive,
                [this, result = std::move(result)]() mutable {
                    m_scanning = false;
                    if (result.status != 0) {
                        m_lastError = result.status;
                        // The device went away or failed: the session is over.
                        if (m_handle) {
                            sane_cancel(m_handle);
                            sane_close(m_handle);
                            m_handle = nullptr;
                        }
                        return;
                    }
                    m_image = std::move(result);
                    m_hasImage = true;
                    if (PostScan)
                        PostScan();
                },
                "scanner");
        });
        return 0;
    }

    int CloseSession() override
    {
        stopScan();
        if (m_handle) {
            sane_close(m_handle);
            m_handle = nullptr;
        }
        return 0;
    }

    int SelectSource() override
    {
        const auto list = sources();
        if (list.empty())
            return NoSource;
        currentSource();
        // The next device SANE lists, round the list.
        auto it = std::find(list.begin(), list.end(), m_source);
        m_source = (it == list.end() || it + 1 == list.end()) ? list.front() : *(it + 1);
        return 0;
    }

    int SaveFile(const std::string &path) override
    {
        if (!m_hasImage)
            return NoImage;
        const std::string bytes = bmpBytes(m_image.width, m_image.height, m_image.grey, m_image.samples);
        return rt::writeFileAtomically(rt::nativePath(path), bytes) ? 0 : CannotWrite;
    }

    std::vector<std::string> sources() const override
    {
        std::vector<std::string> names;
        const SANE_Device **list = nullptr;
        if (sane_get_devices(&list, SANE_FALSE) != SANE_STATUS_GOOD || !list)
            return names;
        for (int i = 0; list[i]; ++i)
            names.emplace_back(list[i]->name);
        return names;
    }
    std::string currentSource() const override
    {
        if (m_source.empty()) {
            const auto list = sources();
            if (!list.empty())
                m_source = list.front();
        }
        return m_source;
    }

private:
    struct Scan {
        int status = 0;
        int width = 0;
        int height = 0;
        bool grey = true;
        std::vector<uint8_t> samples;
    };

    // One frame (or three for a three-pass colour scan), read whole, as 8-bit
    // samples.
    Scan scan(SANE_Handle handle)
    {
        Scan out;
        std::vector<uint8_t> red, green, blue;
        bool last = false;
        while (!last) {
            if (m_cancel)
                return fail(out);
            if (sane_start(handle) != SANE_STATUS_GOOD)
                return fail(out);
            SANE_Parameters p {};
            if (sane_get_parameters(handle, &p) != SANE_STATUS_GOOD || p.bytes_per_line <= 0 || p.pixels_per_line <= 0)
                return fail(out);
            last = p.last_frame != 0;
            std::vector<uint8_t> data;
            std::vector<SANE_Byte> buf(65536);
            for (;;) {
                if (m_cancel) {
                    sane_cancel(handle);
                    return fail(out);
                }
                SANE_Int n = 0;
                const SANE_Status s = sane_read(handle, buf.data(), static_cast<SANE_Int>(buf.size()), &n);
                if (s == SANE_STATUS_EOF)
                    break;
                if (s != SANE_STATUS_GOOD)
                    return fail(out);
                data.insert(data.end(), buf.begin(), buf.begin() + n);
                // A picture beyond any cover's need is cut off rather than filling
                // memory.
                if (data.size() > (size_t(1) << 30))
                    return fail(out);
            }
            const int lines = static_cast<int>(data.size() / p.bytes_per_line);
            out.width = p.pixels_per_line;
            out.height = p.lines > 0 ? std::min(p.lines, lines) : lines;
            auto samples = toEightBit(data, p, out.width, out.height);
            switch (p.format) {
            case SANE_FRAME_GRAY:
                out.grey = true;
                out.samples = std::move(samples);
                break;
            case SANE_FRAME_RGB:
                out.grey = false;
                out.samples = std::move(samples);
                break;
            case SANE_FRAME_RED: red = std::move(samples); break;
            case SANE_FRAME_GREEN: green = std::move(samples); break;
            case SANE_FRAME_BLUE: blue = std::move(samples); break;
            default: return fail(out);
            }
        }
        if (!red.empty() && red.size() == green.size() && red.size() == blue.size()) {
            out.grey = false;
            out.samples.resize(red.size() * 3);
            for (size_t i = 0; i < red.size(); ++i) {
                out.samples[3 * i] = red[i];
                out.samples[3 * i + 1] = green[i];
                out.samples[3 * i + 2] = blue[i];
            }
        }
        sane_cancel(handle);
        if (out.width <= 0 || out.height <= 0 || out.samples.empty())
            return fail(out);
        return out;
    }

    static Scan fail(Scan &s)
    {
        s.status = ScanFailed;
        return s;
    }

    // Samples of 1, 8 or 16 bits as 8-bit ones, row by row.
    static std::vector<uint8_t> toEightBit(
        const std::vector<uint8_t> &data, const SANE_Parameters &p, int width, int height)
    {
        const int channels = p.format == SANE_FRAME_RGB ? 3 : 1;
        std::vector<uint8_t> out(static_cast<size_t>(width) * height * channels);
        for (int y = 0; y < height; ++y) {
            const uint8_t *row = data.data() + static_cast<size_t>(y) * p.bytes_per_line;
            for (int i = 0; i < width * channels; ++i) {
                uint8_t v = 0;
                if (p.depth == 1)
                    v = (row[i / 8] & (0x80 >> (i % 8))) ? 0 : 255; // 1 is black in line art
                else if (p.depth == 16)
                    v = row[2 * i + 1]; // little-endian: the high byte
                else
                    v = row[i];
                out[static_cast<size_t>(y) * width * channels + i] = v;
            }
        }
        return out;
    }

    void stopScan()
    {
        m_cancel = true;
        if (m_handle && m_scanning)
            sane_cancel(m_handle);
        if (m_thread.joinable())
            m_thread.join();
        m_cancel = false;
        if (m_scanning) {
            m_scanning = false;
            // The thread's event was posted before the join; it ends its work but
            // finds no one to tell.
            m_token = std::make_shared<int>(0);
        }
    }

    rt::EventLoop &m_loop;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
    std::shared_ptr<void> m_token = std::make_shared<int>(0);
    SANE_Handle m_handle = nullptr;
    mutable std::string m_source;
    std::thread m_thread;
    std::atomic<bool> m_cancel {false};
    bool m_scanning = false;
    bool m_hasImage = false;
    int m_lastError = 0;
    Scan m_image;
};

} // namespace

std::string bmpBytes(int width, int height, bool grey, const std::vector<uint8_t> &samples)
{
    const int channels = grey ? 1 : 3;
    const int rowBytes = (width * channels + 3) & ~3;
    const uint32_t paletteBytes = grey ? 256 * 4 : 0;
    const uint32_t offset = 14 + 40 + paletteBytes;
    const uint32_t size = offset + static_cast<uint32_t>(rowBytes) * height;
    std::string s;
    s.reserve(size);
    s += "BM";
    put32(s, size);
    put32(s, 0);
    put32(s, offset);
    put32(s, 40);
    put32(s, static_cast<uint32_t>(width));
    put32(s, static_cast<uint32_t>(height));
    put16(s, 1);
    put16(s, static_cast<uint16_t>(channels * 8));
    put32(s, 0);
    put32(s, static_cast<uint32_t>(rowBytes) * height);
    put32(s, 2835);
    put32(s, 2835);
    put32(s, grey ? 256 : 0);
    put32(s, 0);
    if (grey)
        for (int i = 0; i < 256; ++i) {
            s.push_back(static_cast<char>(i));
            s.push_back(static_cast<char>(i));
            s.push_back(static_cast<char>(i));
            s.push_back(0);
        }
    // Rows bottom-up, colour as blue, green, red.
    for (int y = height - 1; y >= 0; --y) {
        const uint8_t *row = samples.data() + static_cast<size_t>(y) * width * channels;
        for (int x = 0; x < width; ++x) {
            if (grey) {
                s.push_back(static_cast<char>(row[x]));
            } else {
                s.push_back(static_cast<char>(row[3 * x + 2]));
                s.push_back(static_cast<char>(row[3 * x + 1]));
                s.push_back(static_cast<char>(row[3 * x]));
            }
        }
        s.append(static_cast<size_t>(rowBytes - width * channels), '\0');
    }
    return s;
}

std::unique_ptr<Scanner> makeSaneScanner(rt::EventLoop &loop)
{
    return std::make_unique<SaneScanner>(loop);
}

} // namespace platform::scanner
