#include "LocalHttpServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace scenario {

LocalHttpServer::LocalHttpServer(fs::path folder, Way way, int pauseMs)
    : m_folder(std::move(folder))
    , m_way(way)
    , m_pauseMs(pauseMs)
{
    const int s = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (s < 0) {
        m_error = "no socket";
        return;
    }
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = 0;
    socklen_t length = sizeof a;
    if (::bind(s, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0 || ::listen(s, 16) != 0 ||
        ::getsockname(s, reinterpret_cast<sockaddr *>(&a), &length) != 0) {
        m_error = "cannot listen on 127.0.0.1";
        ::close(s);
        return;
    }
    m_listen = s;
    m_port = ntohs(a.sin_port);
    m_acceptor = std::thread([this] { acceptLoop(); });
}

LocalHttpServer::~LocalHttpServer() { stop(); }

std::string LocalHttpServer::address() const { return "http://127.0.0.1:" + std::to_string(m_port); }

LocalHttpServer::Way LocalHttpServer::wayByName(const std::string &name, bool &known)
{
    known = true;
    if (name == "files")
        return Way::Files;
    if (name == "silent")
        return Way::Silent;
    if (name == "slow")
        return Way::ByteByByte;
    if (name == "redirect-loop")
        return Way::RedirectLoop;
    known = false;
    return Way::Files;
}

void LocalHttpServer::stop()
{
    if (m_stopping.exchange(true))
        return;
    if (m_acceptor.joinable())
        m_acceptor.join();
    {
        std::lock_guard lock(m_mutex);
        for (int s : m_sockets)
            ::shutdown(s, SHUT_RDWR);
    }
    for (auto &t : m_handlers)
        if (t.joinable())
            t.join();
    for (int s : m_sockets)
        ::close(s);
    m_sockets.clear();
    if (m_listen >= 0)
        ::close(m_listen);
    m_listen = -1;
}

void LocalHttpServer::acceptLoop()
{
    while (!m_stopping) {
        pollfd p{m_listen, POLLIN, 0};
        if (::poll(&p, 1, 50) <= 0)
            continue;
        const int s = ::accept4(m_listen, nullptr, nullptr, SOCK_CLOEXEC);
        if (s < 0)
            continue;
        std::lock_guard lock(m_mutex);
        m_sockets.push_back(s);
        m_handlers.emplace_back([this, s] {
            serve(s);
            ::shutdown(s, SHUT_RDWR);
        });
    }
}

bool LocalHttpServer::pause(int ms)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!m_stopping && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !m_stopping;
}

bool LocalHttpServer::sendAll(int socket, const std::string &bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

void LocalHttpServer::serve(int socket)
{
    // The request head, up to its blank line; a client that never ends it is dropped at stop.
    std::string head;
    char buffer[2048];
    while (head.find("\r\n\r\n") == std::string::npos && head.size() < 16384) {
        pollfd p{socket, POLLIN, 0};
        if (m_stopping)
            return;
        if (::poll(&p, 1, 50) <= 0)
            continue;
        const ssize_t n = ::recv(socket, buffer, sizeof buffer, 0);
        if (n <= 0)
            return;
        head.append(buffer, static_cast<size_t>(n));
    }
    ++m_requests;
    const size_t firstBlank = head.find(' ');
    const size_t secondBlank = firstBlank == std::string::npos ? std::string::npos : head.find(' ', firstBlank + 1);
    if (secondBlank == std::string::npos || head.compare(0, firstBlank, "GET") != 0) {
        sendAll(socket, "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    const std::string path = head.substr(firstBlank + 1, secondBlank - firstBlank - 1);

    switch (m_way) {
    case Way::Silent:
        while (pause(50)) {
        }
        return;
    case Way::RedirectLoop:
        sendAll(socket, "HTTP/1.1 302 Found\r\nLocation: " + path + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    case Way::Files:
    case Way::ByteByByte:
        break;
    }

    // Only names inside the folder: no "..", no query.
    std::string name = path.substr(0, path.find('?'));
    std::ifstream in;
    if (!name.empty() && name[0] == '/' && name.find("..") == std::string::npos)
        in.open(m_folder / name.substr(1), std::ios::binary);
    if (!in || fs::is_directory(m_folder / name.substr(std::min<size_t>(1, name.size())))) {
        sendAll(socket, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    const std::string body((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string header = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) +
                               "\r\nConnection: close\r\n\r\n";
    if (m_way == Way::Files) {
        sendAll(socket, header + body);
        return;
    }
    if (!sendAll(socket, header))
        return;
    for (char c : body) {
        if (!pause(m_pauseMs) || !sendAll(socket, std::string(1, c)))
            return;
    }
}

} // namespace scenario
