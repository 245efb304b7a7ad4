#pragma once

namespace ui {
class AppContext;
}

namespace services {

// The orderly end of the program: the player stops, then every window is unloaded in a fixed
// order, names that come twice included. The program ends because no window is left.
class shutdown {
public:
    explicit shutdown(ui::AppContext &app) : m_app(app) {}

    // Traps nothing: a failure goes to the caller. A call made while one is running (the main
    // window's own unload, reached from inside) does nothing.
    void Shutoff();

private:
    ui::AppContext &m_app;
    bool m_running = false;
};

} // namespace services
