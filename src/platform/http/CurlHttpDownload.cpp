#include "CurlHttpDownload.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <filesystem>
#include <mutex>
#include <unistd.h>

#include <curl/curl.h>

#include "runtime/EventLoop.h"
#include "runtime/Paths.h"

namespace fs = std::filesystem;

namespace platform::http {

namespace {

constexpr const char *workName = "http";

void initialiseCurlOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

// The code and the text after it in a status line ("HTTP/1.1 404 Not Found" -> 404, " Not Found").
bool parseStatusLine(std::string line, int32_t &code, std::string &text)
{
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
        line.pop_back();
    if (line.rfind("HTTP/", 0) != 0)
        return false;
    const size_t blank = line.find(' ');
    if (blank == std::string::npos || blank + 4 > line.size())
        return false;
    int value = 0;
    for (size_t i = blank + 1; i < blank + 4; ++i) {
        if (line[i] < '0' || line[i] > '9')
            return false;
        value = value * 10 + (line[i] - '0');
    }
    code = value;
    text = line.substr(blank + 4);
    return true;
}

} // namespace

// What the worker and the window's side share: the cancel request and libcurl's wake-up.
struct CurlHttpDownload::Transfer {
    std::atomic<bool> cancelled{false};
    std::mutex multiMutex;
    CURLM *multi = nullptr;

    void cancel()
    {
        cancelled = true;
        std::lock_guard lock(multiMutex);
        if (multi)
            curl_multi_wakeup(multi);
    }
};

namespace {

struct Worker {
    rt::EventLoop &loop;
    std::weak_ptr<void> alive;
    CurlHttpDownload *owner;
    CurlHttpDownload::Transfer &transfer;
    Options options;
    std::string url;
    std::string dest;

    int fd = -1;
    long long written = 0;
    bool tooBig = false;
    bool writeFailed = false;
    std::chrono::steady_clock::time_point lastProgress{};
    long long lastProgressBytes = -1;

    void post(std::function<void()> event, bool last = false)
    {
        loop.postEvent(alive, std::move(event), last ? workName : std::string());
    }
    void status(int32_t code, std::string text, bool last = false)
    {
        auto *o = owner;
        post([o, code, text = std::move(text)] {
            if (o->OnStatus)
                o->OnStatus(code, text);
        }, last);
    }
    void failure(CURLcode rc, const char *errorText, bool last = true)
    {
        status(-static_cast<int32_t>(rc), std::string(" ") + (errorText && *errorText ? errorText : curl_easy_strerror(rc)), last);
    }
    // The work ends with an event that nobody sees, when nothing else is left to say.
    void endQuietly() { post([] {}, true); }

    static size_t onBody(char *data, size_t size, size_t count, void *self)
    {
        auto &w = *static_cast<Worker *>(self);
        const size_t bytes = size * count;
        if (w.written + static_cast<long long>(bytes) > w.options.maxBytes) {
            w.tooBig = true;
            return 0;
        }
        size_t done = 0;
        while (done < bytes) {
            const ssize_t n = ::write(w.fd, data + done, bytes - done);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                w.writeFailed = true;
                return 0;
            }
            done += static_cast<size_t>(n);
        }
        w.written += static_cast<long long>(bytes);
        return bytes;
    }

    static size_t onHeader(char *data, size_t size, size_t count, void *self)
    {
        auto &w = *static_cast<Worker *>(self);
        int32_t code = 0;
        std::string text;
        if (parseStatusLine(std::string(data, size * count), code, text))
            w.status(code, std::move(text));
        return size * count;
    }

    static int onProgress(void *self, curl_off_t total, curl_off_t now, curl_off_t, curl_off_t)
    {
        auto &w = *static_cast<Worker *>(self);
        if (w.transfer.cancelled)
            return 1;
        const auto t = std::chrono::steady_clock::now();
        if (now != w.lastProgressBytes && t - w.lastProgress >= std::chrono::milliseconds(100)) {
            w.lastProgress = t;
            w.lastProgressBytes = now;
            auto *o = w.owner;
            const auto n = static_cast<int32_t>(std::min<curl_off_t>(now, INT32_MAX));
            const auto all = static_cast<int32_t>(std::min<curl_off_t>(total, INT32_MAX));
            w.post([o, n, all] {
                if (o->OnProgress)
                    o->OnProgress(n, all);
            });
        }
        return 0;
    }

    void run()
    {
        auto *o = owner;
        post([o] {
            if (o->OnConnect)
                o->OnConnect();
        });

        const fs::path target = rt::nativePath(dest);
        const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
        std::string temporary = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
        fd = ::mkstemp(temporary.data());
        if (fd < 0) {
            failure(CURLE_WRITE_ERROR, nullptr);
            return;
        }
        ::fchmod(fd, 0644);
        const CURLcode rc = perform();
        long response = 0;
        bool complete = rc == CURLE_OK;
        if (complete)
            complete = ::fsync(fd) == 0;
        ::close(fd);
        fd = -1;
        if (transfer.cancelled) {
            ::unlink(temporary.c_str());
            endQuietly();
            return;
        }
        if (rc != CURLE_OK || !complete) {
            ::unlink(temporary.c_str());
            if (tooBig)
                failure(CURLE_FILESIZE_EXCEEDED, nullptr);
            else if (rc == CURLE_OK || writeFailed)
                failure(CURLE_WRITE_ERROR, nullptr);
            else
                failure(rc, m_errorText);
            return;
        }
        response = m_response;
        if (response < 200 || response > 299) {
            // The status line said why; the old file stays.
            ::unlink(temporary.c_str());
            endQuietly();
            return;
        }
        if (::rename(temporary.c_str(), target.c_str()) != 0) {
            ::unlink(temporary.c_str());
            failure(CURLE_WRITE_ERROR, nullptr);
            return;
        }
        const auto size = static_cast<int32_t>(std::min<long long>(written, INT32_MAX));
        post([o, size] {
            if (o->OnProgress)
                o->OnProgress(size, size);
        });
        post([o] {
            if (o->OnEndTransfer)
                o->OnEndTransfer();
        }, true);
    }

    CURLcode perform()
    {
        CURL *easy = curl_easy_init();
        CURLM *multi = curl_multi_init();
        if (!easy || !multi) {
            if (easy)
                curl_easy_cleanup(easy);
            if (multi)
                curl_multi_cleanup(multi);
            return CURLE_OUT_OF_MEMORY;
        }
        m_errorText[0] = 0;
        curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
        curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_errorText);
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(easy, CURLOPT_MAXREDIRS, options.maxRedirects);
        curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
        curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
        if (!options.extraCaFile.empty())
            curl_easy_setopt(easy, CURLOPT_CAINFO, options.extraCaFile.c_str());
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, options.connectTimeoutSeconds);
        curl_easy_setopt(easy, CURLOPT_TIMEOUT, options.totalTimeoutSeconds);
        curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options.maxBytes));
        curl_easy_setopt(easy, CURLOPT_USERAGENT, "MP3 Brasswick add-on catalogue");
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Worker::onBody);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Worker::onHeader);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &Worker::onProgress);
        curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
        curl_multi_add_handle(multi, easy);
        {
            std::lock_guard lock(transfer.multiMutex);
            transfer.multi = multi;
        }

        CURLcode result = CURLE_ABORTED_BY_CALLBACK;
        bool done = false;
        while (!done && !transfer.cancelled) {
            int running = 0;
            if (curl_multi_perform(multi, &running) != CURLM_OK)
                break;
            int queued = 0;
            while (CURLMsg *message = curl_multi_info_read(multi, &queued)) {
                if (message->msg == CURLMSG_DONE) {
                    result = message->data.result;
                    done = true;
                }
            }
            if (!done && running == 0) {
                result = CURLE_RECV_ERROR;
                done = true;
            }
            // A cancel wakes the wait at once.
            if (!done)
                curl_multi_poll(multi, nullptr, 0, 200, nullptr);
        }
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &m_response);
        {
            std::lock_guard lock(transfer.multiMutex);
            transfer.multi = nullptr;
        }
        curl_multi_remove_handle(multi, easy);
        curl_easy_cleanup(easy);
        curl_multi_cleanup(multi);
        return result;
    }

    char m_errorText[CURL_ERROR_SIZE] = {};
    long m_response = 0;
};

} // namespace

CurlHttpDownload::CurlHttpDownload(rt::EventLoop &loop, Options options)
    : m_loop(loop)
    , m_options(std::move(options))
{
    initialiseCurlOnce();
}

CurlHttpDownload::~CurlHttpDownload() { Cancel(); }

void CurlHttpDownload::setAction(int32_t action)
{
    m_action = action;
    if (action == 1)
        start();
    else if (action == 0)
        Cancel();
}

void CurlHttpDownload::Cancel()
{
    if (m_transfer)
        m_transfer->cancel();
    if (m_thread.joinable())
        m_thread.join();
    m_transfer.reset();
    m_alive.reset();
}

void CurlHttpDownload::start()
{
    Cancel();
    m_alive = std::make_shared<int>(0);
    m_transfer = std::make_shared<Transfer>();
    m_loop.beginWork(workName);
    try {
        m_thread = std::thread([worker = std::make_shared<Worker>(Worker{m_loop, m_alive, this, *m_transfer, m_options, m_url, m_dest}),
                                keep = m_transfer] { worker->run(); });
    } catch (const std::system_error &) {
        // No thread to be had: the transfer fails as a transfer would.
        m_loop.postEvent(m_alive, [this] {
            if (OnStatus)
                OnStatus(-static_cast<int32_t>(CURLE_FAILED_INIT), " Failed initialization");
        }, workName);
    }
}

} // namespace platform::http
