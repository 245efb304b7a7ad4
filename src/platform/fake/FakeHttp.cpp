#include "FakeHttp.h"

#include <fstream>
#include <iterator>

#include "FakeRecorder.h"
#include "runtime/EventLoop.h"
#include "runtime/Paths.h"

namespace platform::fake {

namespace {

// Serves the world's file on virtual time: the start at once, then after transferMs the status
// and, for a served file, the destination replaced whole and the end of the transfer.
class FakeHttp : public HttpDownload, Recorder {
public:
    explicit FakeHttp(std::shared_ptr<FakeWorld> w) : Recorder(std::move(w), "ickHTTP1") {}
    ~FakeHttp() override { stopTimer(); }

    void setURL(const std::string &url) override
    {
        m_url = url;
        record("URL", url);
    }
    std::string URL() const override { return m_url; }
    void setDestFile(const std::string &path) override
    {
        m_dest = path;
        record("DestFile", path);
    }
    std::string DestFile() const override { return m_dest; }
    void setAction(int32_t action) override
    {
        record("Action", action);
        m_action = action;
        if (action == 1)
            start();
        else if (action == 0)
            Cancel();
    }
    int32_t Action() const override { return m_action; }
    void Cancel() override
    {
        if (m_timer) {
            ++world().http.cancelled;
            call("Cancel");
        }
        stopTimer();
        m_alive = std::make_shared<int>(0);
    }

private:
    void start()
    {
        rt::EventLoop *loop = world().loop;
        if (!loop)
            return;
        Cancel();
        ++world().http.started;
        call("Start " + m_url);
        post([this] {
            if (OnConnect)
                OnConnect();
        });
        if (world().http.silent)
            return;
        m_timer = loop->startTimer(std::max(1, world().http.transferMs), [this] {
            stopTimer();
            finish();
        });
    }

    void finish()
    {
        const FakeHttpSettings &s = world().http;
        if (s.fails) {
            status(s.failCode, s.failText);
            return;
        }
        std::ifstream in(rt::nativePath(s.servePath), std::ios::binary);
        if (s.servePath.empty() || !in) {
            status(404, " Not Found");
            return;
        }
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        status(s.statusCode, s.statusText);
        if (!s.endsWithoutFile && !rt::writeFileAtomically(rt::nativePath(m_dest), bytes)) {
            status(-23, " Failed writing received data to disk/application");
            return;
        }
        const auto size = static_cast<int32_t>(std::min<size_t>(bytes.size(), INT32_MAX));
        post([this, size] {
            if (OnProgress)
                OnProgress(size, size);
        });
        post([this] {
            if (OnEndTransfer)
                OnEndTransfer();
        });
    }

    void status(int32_t code, std::string text)
    {
        post([this, code, text = std::move(text)] {
            if (OnStatus)
                OnStatus(code, text);
        });
    }

    void post(std::function<void()> event) { world().loop->postEvent(m_alive, std::move(event)); }

    void stopTimer()
    {
        if (m_timer && world().loop)
            world().loop->stopTimer(m_timer);
        m_timer = 0;
    }

    std::string m_url;
    std::string m_dest;
    int32_t m_action = 0;
    int m_timer = 0;
    // Events of a cancelled transfer die with the token they were posted under.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};

} // namespace

std::unique_ptr<HttpDownload> makeFakeHttp(std::shared_ptr<FakeWorld> world) { return std::make_unique<FakeHttp>(std::move(world)); }

} // namespace platform::fake
