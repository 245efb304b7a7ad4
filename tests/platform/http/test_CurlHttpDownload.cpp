// The catalogue's download on libcurl against local servers: what arrives, what the events say,
// and that every failure leaves the destination as it was with no other file behind.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include "LocalHttpServer.h"
#include "RealWork.h"
#include "platform/http/CurlHttpDownload.h"
#include "runtime/VirtualEventLoop.h"

namespace fs = std::filesystem;
using scenario::LocalHttpServer;

namespace {

std::string readAll(const fs::path &p)
{
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeAll(const fs::path &p, const std::string &bytes)
{
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << bytes;
}

std::set<std::string> namesIn(const fs::path &folder)
{
    std::set<std::string> names;
    for (const auto &e : fs::directory_iterator(folder))
        names.insert(e.path().filename().string());
    return names;
}

struct Events {
    int connects = 0;
    int ends = 0;
    std::vector<std::pair<int32_t, std::string>> statuses;
    int progress = 0;
};

struct HttpTest : ::testing::Test {
    fs::path root = fs::temp_directory_path() / ("http-test-" + std::to_string(::getpid()) + "-" +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::path site = root / "site";
    fs::path prog = root / "prog";
    fs::path dest = prog / "data.dat";
    rt::VirtualEventLoop loop;
    Events events;

    void SetUp() override
    {
        fs::create_directories(site);
        fs::create_directories(prog);
        writeAll(dest, "old catalogue;1\r\n");
        writeAll(prog / "keep.txt", "not to be touched");
    }
    void TearDown() override { fs::remove_all(root); }

    std::unique_ptr<platform::http::CurlHttpDownload> client(platform::http::Options o = {})
    {
        auto c = std::make_unique<platform::http::CurlHttpDownload>(loop, o);
        c->OnConnect = [this] { ++events.connects; };
        c->OnEndTransfer = [this] { ++events.ends; };
        c->OnStatus = [this](int32_t code, const std::string &text) { events.statuses.emplace_back(code, text); };
        c->OnProgress = [this](int32_t, int32_t) { ++events.progress; };
        return c;
    }
    void fetch(platform::HttpDownload &c, const std::string &url)
    {
        c.setURL(url);
        // The path as the window builds it.
        c.setDestFile(prog.string() + "/data.dat");
        c.setAction(1);
        ASSERT_TRUE(testsupport::settleRealWork(loop, std::chrono::seconds(60)));
    }
    // A failed transfer: no end, the old catalogue and nothing else in the folder.
    void expectUntouched()
    {
        EXPECT_EQ(events.ends, 0);
        EXPECT_EQ(readAll(dest), "old catalogue;1\r\n");
        EXPECT_EQ(readAll(prog / "keep.txt"), "not to be touched");
        EXPECT_EQ(namesIn(prog), (std::set<std::string>{"data.dat", "keep.txt"}));
    }
    int32_t lastCode() const { return events.statuses.empty() ? 0 : events.statuses.back().first; }
};

TEST_F(HttpTest, TheCatalogueReplacesTheOldOneWhole)
{
    const std::string catalogue = "Echo;1.0;x\r\nURL-http://a/b.zip\r\n";
    writeAll(site / "plugins.dat", catalogue);
    LocalHttpServer server(site);
    ASSERT_TRUE(server.ok()) << server.error();
    auto c = client();
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(events.connects, 1);
    ASSERT_EQ(events.statuses.size(), 1u);
    EXPECT_EQ(events.statuses[0], (std::pair<int32_t, std::string>{200, " OK"}));
    EXPECT_EQ(events.ends, 1);
    EXPECT_EQ(readAll(dest), catalogue);
    EXPECT_EQ(namesIn(prog), (std::set<std::string>{"data.dat", "keep.txt"}));
}

TEST_F(HttpTest, NotFoundSaysSoAndKeepsTheOldCatalogue)
{
    LocalHttpServer server(site);
    auto c = client();
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(events.connects, 1);
    ASSERT_EQ(events.statuses.size(), 1u);
    EXPECT_EQ(events.statuses[0], (std::pair<int32_t, std::string>{404, " Not Found"}));
    expectUntouched();
}

TEST_F(HttpTest, ACatalogueOverTheBoundIsRefused)
{
    std::mt19937 random(7);
    std::string garbage(10 * 1000 * 1000, '\0');
    for (auto &ch : garbage)
        ch = static_cast<char>(random());
    writeAll(site / "plugins.dat", garbage);
    LocalHttpServer server(site);
    auto c = client();
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(lastCode(), -63);
    expectUntouched();
}

TEST_F(HttpTest, ACatalogueJustUnderTheBoundArrivesWithAnyBytes)
{
    std::string bytes(1 << 20, 'x');
    bytes[0] = '\0';
    bytes[1] = '\xff';
    bytes[2] = '\x80';
    writeAll(site / "plugins.dat", bytes);
    LocalHttpServer server(site);
    auto c = client();
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(events.ends, 1);
    EXPECT_EQ(readAll(dest), bytes);
}

TEST_F(HttpTest, AServerThatNeverAnswersRunsIntoTheTimeBound)
{
    LocalHttpServer server(site, LocalHttpServer::Way::Silent);
    platform::http::Options o;
    o.totalTimeoutSeconds = 1;
    auto c = client(o);
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(events.connects, 1);
    EXPECT_EQ(lastCode(), -28);
    expectUntouched();
}

TEST_F(HttpTest, AServerThatAnswersByteByByteRunsIntoTheTimeBound)
{
    writeAll(site / "plugins.dat", std::string(200, 'a'));
    LocalHttpServer server(site, LocalHttpServer::Way::ByteByByte, 50);
    platform::http::Options o;
    o.totalTimeoutSeconds = 1;
    auto c = client(o);
    fetch(*c, server.address() + "/plugins.dat");
    ASSERT_FALSE(events.statuses.empty());
    EXPECT_EQ(events.statuses.front(), (std::pair<int32_t, std::string>{200, " OK"}));
    EXPECT_EQ(lastCode(), -28);
    expectUntouched();
}

TEST_F(HttpTest, ARedirectLoopEndsAtTheLimit)
{
    LocalHttpServer server(site, LocalHttpServer::Way::RedirectLoop);
    auto c = client();
    fetch(*c, server.address() + "/plugins.dat");
    EXPECT_EQ(lastCode(), -47);
    EXPECT_EQ(server.requests(), 6);
    EXPECT_EQ(events.statuses.front(), (std::pair<int32_t, std::string>{302, " Found"}));
    expectUntouched();
}

TEST_F(HttpTest, CancelStopsATransferAndNoEventFollows)
{
    LocalHttpServer server(site, LocalHttpServer::Way::Silent);
    auto c = client();
    c->setURL(server.address() + "/plugins.dat");
    c->setDestFile(dest.string());
    c->setAction(1);
    // Let the query reach the server, then cut it off.
    for (int i = 0; i < 2000 && server.requests() == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    c->Cancel();
    ASSERT_TRUE(testsupport::settleRealWork(loop));
    EXPECT_TRUE(events.statuses.empty());
    expectUntouched();
}

TEST_F(HttpTest, DestroyingTheClientMidTransferIsSafe)
{
    LocalHttpServer server(site, LocalHttpServer::Way::Silent);
    {
        auto c = client();
        c->setURL(server.address() + "/plugins.dat");
        c->setDestFile(dest.string());
        c->setAction(1);
    }
    ASSERT_TRUE(testsupport::settleRealWork(loop));
    expectUntouched();
}

TEST_F(HttpTest, OnlyHttpAndHttpsAreFetched)
{
    writeAll(site / "plugins.dat", "local;file");
    auto c = client();
    fetch(*c, "file://" + (site / "plugins.dat").string());
    EXPECT_EQ(lastCode(), -1);
    expectUntouched();
}

TEST_F(HttpTest, AMissingDestinationFolderFailsTheTransfer)
{
    writeAll(site / "plugins.dat", "a;b");
    LocalHttpServer server(site);
    auto c = client();
    c->setURL(server.address() + "/plugins.dat");
    c->setDestFile((root / "no-such-folder" / "data.dat").string());
    c->setAction(1);
    ASSERT_TRUE(testsupport::settleRealWork(loop));
    EXPECT_EQ(lastCode(), -23);
    EXPECT_EQ(events.ends, 0);
    EXPECT_FALSE(fs::exists(root / "no-such-folder"));
}

// HTTPS: a certificate made for another name fails; one made for this address is fetched.
struct HttpsTest : HttpTest {
    fs::path ca = root / "ca.pem";
    FILE *serverPipe = nullptr;
    pid_t serverPid = 0;

    bool run(const std::string &command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

    // A CA, and a server certificate it signs for `subjectAltName`.
    bool makeCertificates(const std::string &subjectAltName)
    {
        const std::string r = root.string();
        return run("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=TestCA -keyout " + r + "/ca.key -out " + r + "/ca.pem") &&
               run("openssl req -newkey rsa:2048 -nodes -subj /CN=server -keyout " + r + "/server.key -out " + r + "/server.csr") &&
               (writeAll(root / "ext.cnf", "subjectAltName=" + subjectAltName + "\n"), true) &&
               run("openssl x509 -req -in " + r + "/server.csr -CA " + r + "/ca.pem -CAkey " + r + "/ca.key -CAcreateserial -days 2 -extfile " +
                   r + "/ext.cnf -out " + r + "/server.pem");
    }

    // Starts the TLS server; its port, or 0.
    int startServer()
    {
        int toServer[2], fromServer[2];
        if (pipe(toServer) != 0 || pipe(fromServer) != 0)
            return 0;
        serverPid = fork();
        if (serverPid == 0) {
            dup2(toServer[0], 0);
            dup2(fromServer[1], 1);
            close(toServer[1]);
            close(fromServer[0]);
            const std::string cert = (root / "server.pem").string(), key = (root / "server.key").string(), folder = site.string();
            execlp("python3", "python3", TLS_SERVER_SCRIPT, cert.c_str(), key.c_str(), folder.c_str(), nullptr);
            _exit(127);
        }
        close(toServer[0]);
        close(fromServer[1]);
        serverPipe = fdopen(toServer[1], "w");
        FILE *in = fdopen(fromServer[0], "r");
        int port = 0;
        if (in && fscanf(in, "%d", &port) != 1)
            port = 0;
        if (in)
            fclose(in);
        return port;
    }

    // The catalogue on the site, served over TLS with a certificate for `subjectAltName`: the
    // server's port, 0 when it didn't start, -1 when openssl could not make the certificates.
    int serveOverTls(const std::string &subjectAltName, const std::string &catalogue)
    {
        if (!makeCertificates(subjectAltName))
            return -1;
        writeAll(site / "plugins.dat", catalogue);
        return startServer();
    }

    void TearDown() override
    {
        if (serverPipe)
            fclose(serverPipe);
        if (serverPid > 0)
            waitpid(serverPid, nullptr, 0);
        HttpTest::TearDown();
    }
};

TEST_F(HttpsTest, ACertificateForAnotherNameIsRefused)
{
    const int port = serveOverTls("DNS:wrong.example", "secret;row");
    if (port < 0)
        GTEST_SKIP() << "openssl could not make the certificates";
    ASSERT_NE(port, 0);
    platform::http::Options o;
    o.extraCaFile = ca.string();
    auto c = client(o);
    fetch(*c, "https://127.0.0.1:" + std::to_string(port) + "/plugins.dat");
    EXPECT_EQ(lastCode(), -60);
    ASSERT_FALSE(events.statuses.empty());
    EXPECT_NE(events.statuses.back().second.find("127.0.0.1"), std::string::npos) << events.statuses.back().second;
    expectUntouched();
}

TEST_F(HttpsTest, AnUntrustedCertificateIsRefused)
{
    const int port = serveOverTls("IP:127.0.0.1", "secret;row");
    if (port < 0)
        GTEST_SKIP() << "openssl could not make the certificates";
    ASSERT_NE(port, 0);
    auto c = client();
    fetch(*c, "https://127.0.0.1:" + std::to_string(port) + "/plugins.dat");
    EXPECT_EQ(lastCode(), -60);
    expectUntouched();
}

TEST_F(HttpsTest, AMatchingCertificateIsFetched)
{
    const int port = serveOverTls("IP:127.0.0.1", "Secure;1;row\r\n");
    if (port < 0)
        GTEST_SKIP() << "openssl could not make the certificates";
    ASSERT_NE(port, 0);
    platform::http::Options o;
    o.extraCaFile = ca.string();
    auto c = client(o);
    fetch(*c, "https://127.0.0.1:" + std::to_string(port) + "/plugins.dat");
    EXPECT_EQ(events.ends, 1) << (events.statuses.empty() ? "" : events.statuses.back().second);
    EXPECT_EQ(readAll(dest), "Secure;1;row\r\n");
}

} // namespace
