#pragma once

#include <map>
#include <string>

namespace ui {
class AppContext;
class Window;
} // namespace ui

namespace uiqt {

class WindowView;

// The Qt face of a running program: a view for every window the program makes, gone when the
// window goes; the application quits with the program's end code when the program ends.
// Make it after the QApplication and before the first window.
class QtFrontEnd {
public:
    explicit QtFrontEnd(ui::AppContext &app);
    ~QtFrontEnd();
    QtFrontEnd(const QtFrontEnd &) = delete;
    QtFrontEnd &operator=(const QtFrontEnd &) = delete;

    ui::AppContext &app() const { return m_app; }
    // The view of a window that exists now, or nullptr.
    WindowView *view(const ui::Window &window) const;
    WindowView *view(const std::string &windowName) const;

    // Writes a picture of the window as it is on the screen to a PNG file.
    bool saveScreenshot(const std::string &windowName, const std::string &path) const;

private:
    void created(ui::Window &window);
    void destroying(ui::Window &window);

    ui::AppContext &m_app;
    std::map<const ui::Window *, WindowView *> m_views;
};

} // namespace uiqt
