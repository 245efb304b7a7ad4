#include "Runner.h"

#include "runtime/Paths.h"

namespace scenario {

// serve "FOLDER" [files|silent|slow|redirect-loop]: one local server a file, on 127.0.0.1 at a
// free port, stopped when the file ends. Texts name it as $SERVER.
void Runner::cmdServe(const Tokens &t)
{
    if (t.size() < 2 || t.size() > 3 || !t[1].quoted)
        fail("serve \"FOLDER\" [files|silent|slow|redirect-loop]");
    if (m_server)
        fail("a server is already running");
    bool known = true;
    const auto way = t.size() == 3 ? LocalHttpServer::wayByName(t[2].text, known) : LocalHttpServer::Way::Files;
    if (!known)
        fail("unknown way of serving \"" + t[2].text + "\"");
    auto server = std::make_unique<LocalHttpServer>(hostPath(t[1].text), way);
    if (!server->ok())
        fail("cannot serve: " + server->error());
    m_server = std::move(server);
}

} // namespace scenario
