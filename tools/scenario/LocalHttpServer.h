#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace scenario {

// A small HTTP/1.1 server on 127.0.0.1 at a port the system picks, serving the files of one
// folder (GET only, one request a connection). Its other ways stand for servers that misbehave.
class LocalHttpServer {
public:
    enum class Way {
        Files,        // the folder's files, 404 for the rest
        Silent,       // takes the request and never answers
        ByteByByte,   // the folder's files, one byte at a time with a pause between
        RedirectLoop, // every address redirects to itself
    };

    LocalHttpServer(std::filesystem::path folder, Way way = Way::Files, int pauseMs = 200);
    ~LocalHttpServer();
    LocalHttpServer(const LocalHttpServer &) = delete;
    LocalHttpServer &operator=(const LocalHttpServer &) = delete;

    // False when no socket could be had; the reason is in error().
    bool ok() const { return m_listen >= 0; }
    const std::string &error() const { return m_error; }
    // "http://127.0.0.1:PORT", without a trailing "/".
    std::string address() const;
    int port() const { return m_port; }
    // Requests taken so far.
    int requests() const { return m_requests; }
    // Stops taking connections and ends those in hand; the destructor does it too.
    void stop();

    static Way wayByName(const std::string &name, bool &known);

private:
    void acceptLoop();
    void serve(int socket);
    bool sendAll(int socket, const std::string &bytes);
    bool pause(int ms);

    std::filesystem::path m_folder;
    Way m_way;
    int m_pauseMs;
    int m_listen = -1;
    int m_port = 0;
    std::string m_error;
    std::atomic<bool> m_stopping{false};
    std::atomic<int> m_requests{0};
    std::thread m_acceptor;
    std::mutex m_mutex;
    std::vector<std::thread> m_handlers;
    std::vector<int> m_sockets;
};

} // namespace scenario
