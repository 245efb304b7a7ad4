#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/Http.h"

namespace rt {
class EventLoop;
}

namespace platform::http {

// Bounds of a transfer. A catalogue is a few kilobytes; anything near the bounds is a server
// that misbehaves, and the transfer fails rather than the program waiting on it.
struct Options {
    long long maxBytes = 1 << 20;
    long connectTimeoutSeconds = 15;
    long totalTimeoutSeconds = 60;
    long maxRedirects = 5;
    // Certificates to trust in place of the system's, in PEM (tests); empty for the system's.
    std::string extraCaFile;
};

// `ickHTTP` on libcurl: one transfer at a time on a thread of its own, HTTP and HTTPS only (on
// redirects too), certificates checked. The body goes to a temporary file beside the
// destination, which is renamed over it only when the transfer is complete and the server said
// 2xx; anything else leaves the destination as it was. Events are posted to the loop: the start,
// a status for every response (its code and the rest of its status line, " OK") and for a failure
// (minus libcurl's error number and its text), progress, and the end of the transfer.
class CurlHttpDownload : public HttpDownload {
public:
    explicit CurlHttpDownload(rt::EventLoop &loop, Options options = {});
    ~CurlHttpDownload() override;
    CurlHttpDownload(const CurlHttpDownload &) = delete;
    CurlHttpDownload &operator=(const CurlHttpDownload &) = delete;

    void setURL(const std::string &url) override { m_url = url; }
    std::string URL() const override { return m_url; }
    void setDestFile(const std::string &path) override { m_dest = path; }
    std::string DestFile() const override { return m_dest; }
    void setAction(int32_t action) override;
    int32_t Action() const override { return m_action; }
    void Cancel() override;

    struct Transfer;

private:
    void start();

    rt::EventLoop &m_loop;
    Options m_options;
    std::string m_url;
    std::string m_dest;
    int32_t m_action = 0;
    std::shared_ptr<Transfer> m_transfer;
    std::thread m_thread;
    // Events of a transfer run only while the token it was started under lives.
    std::shared_ptr<int> m_alive;
};

} // namespace platform::http
