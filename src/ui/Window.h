#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Control.h"

namespace ui {

class AppContext;
class MenuItem;

// A window of the program: one global instance, created on first reference (which runs its
// load step), destroyed by Unload; a later reference creates it anew. Subclasses hold their
// controls as members and wire one handler per control event.
class Window {
public:
    Window(AppContext &app, std::string name);
    virtual ~Window();
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    AppContext &app() const { return m_app; }
    const std::string &name() const { return m_name; }

    // The load step, run once right after creation.
    virtual void Form_Load() {}
    // Asked before every unload, by the close box or by code: true keeps the window loaded.
    virtual bool Form_QueryUnload() { return false; }
    // The unload step, run by Unload before the window goes.
    virtual void Form_Unload() {}
    // The window comes on screen (Show of a hidden window), before Show returns.
    virtual void Form_Activate() {}

    void Show();
    // Show vbModal: the window floats over its owner and holds the input until it is hidden or
    // unloaded; then `returned` runs, once, after the event in hand, as the code after the
    // modal show does.
    void ShowModal(Window *owner, std::function<void()> returned);
    bool isModal() const { return static_cast<bool>(m_modalReturn); }
    void Hide();
    // Unload: runs the unload step, then the window goes at the next quiet moment.
    void Unload();
    // The user's close box: Unload, unless the window's close command was removed.
    void userClose();

    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    bool Visible() const { return m_visible; }
    bool Topmost() const { return m_topmost; }
    void setTopmost(bool on);
    // The window this one floats over and follows; nullptr for a free window.
    Window *owner() const { return m_ownerWindow; }
    void setOwner(Window *w);
    bool closeCommandRemoved() const { return m_closeRemoved; }
    void setCloseCommandRemoved(bool on);
    // A splash has no frame and no title bar.
    bool frameless() const { return m_frameless; }
    void setFrameless(bool on) { m_frameless = on; }
    // Position and size in twips.
    int Left() const { return m_left; }
    int Top() const { return m_top; }
    int Width() const { return m_width; }
    int Height() const { return m_height; }
    void setGeometry(int left, int top, int width, int height);
    // Places the window in the middle of the screen the view reports.
    void centreOnScreen();

    // Controls in the order they were made; named lookup with an optional array index.
    const std::vector<Control *> &controls() const { return m_controls; }
    Control *control(const std::string &name, int index = -1) const;
    const std::vector<MenuItem *> &menuBar() const { return m_menuBar; }

    // Wraps the handler of a closed component's event: windows unloaded by it go afterwards, as
    // after any other event.
    template <class... Args>
    std::function<void(Args...)> componentEvent(std::function<void(Args...)> handler)
    {
        return [app = &m_app, handler = std::move(handler)](Args... args) {
            handler(args...);
            afterComponentEvent(*app);
        };
    }

    // Window-level events.
    std::function<void(int button, int x, int y)> MouseMove;

    // Lets the user move the window with the mouse held down, as a drag on its title bar would;
    // set by the view, empty where there is no screen.
    std::function<void()> beginSystemMove;

    // Properties by name for scenarios ("Caption", "Visible", "Topmost", ...).
    std::optional<std::string> property(const std::string &name) const;
    // Members of the window (fields and flags) by name, as text; nullopt for none.
    virtual std::optional<std::string> member(const std::string &name) const;
    // Public routines that scenarios may call, with their arguments as text; nullopt when the
    // window has no such routine. The result is text ("" for none).
    virtual std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args);

    // Change notification for the view.
    using Observer = std::function<void()>;
    int observe(Observer o);
    void unobserve(int id);

    // Called by Control and MenuItem as they are made.
    void addControl(Control &c) { m_controls.push_back(&c); }
    void removeControl(Control &c);
    void addMenu(MenuItem &m) { m_menuBar.push_back(&m); }

protected:
    void changed();
    static void afterComponentEvent(AppContext &app);

private:
    AppContext &m_app;
    std::string m_name;
    std::string m_caption;
    bool m_visible = false;
    bool m_topmost = false;
    bool m_closeRemoved = false;
    bool m_frameless = false;
    Window *m_ownerWindow = nullptr;
    std::function<void()> m_modalReturn;
    int m_left = 0, m_top = 0, m_width = 6000, m_height = 4500;
    std::vector<Control *> m_controls;
    std::vector<MenuItem *> m_menuBar;
    std::map<int, Observer> m_observers;
    int m_nextObserver = 1;
};

} // namespace ui
