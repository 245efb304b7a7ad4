#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ui {

class Window;

// Arguments of an indexed property: List(3) is {3}, Column(2,1) is {2,1}.
using Args = std::vector<int>;

// Mouse buttons as the platform reports them.
enum MouseButton { NoButton = 0, LeftButton = 1, RightButton = 2 };

// One control of a window: plain object with the platform's named properties and events.
// The Qt layer and the scenario driver both reach it through the same members.
class Control {
public:
    Control(Window &owner, std::string name, int index = -1);
    virtual ~Control();
    Control(const Control &) = delete;
    Control &operator=(const Control &) = delete;

    Window &owner() const { return m_owner; }
    const std::string &name() const { return m_name; }
    // Index within a control array, -1 for a single control.
    int index() const { return m_index; }
    // "mainlist", or "Level(1)" for an element of a control array.
    std::string fullName() const;
    virtual const char *kind() const = 0;

    bool Enabled() const { return m_enabled; }
    virtual void setEnabled(bool on);
    bool Visible() const { return m_visible; }
    void setVisible(bool on);
    const std::string &ToolTipText() const { return m_toolTip; }
    void setToolTipText(const std::string &text);

    // Position and size in twips, 15 to a pixel.
    int Left() const { return m_left; }
    int Top() const { return m_top; }
    int Width() const { return m_width; }
    int Height() const { return m_height; }
    void setGeometry(int left, int top, int width, int height);
    // The frame or picture this control sits in, for the Qt layer's layout.
    Control *container() const { return m_container; }
    void setContainer(Control *c) { m_container = c; }

    // Properties by name, for scenarios and `dump`. nullopt: no such property.
    virtual std::optional<std::string> property(const std::string &name, const Args &args) const;
    // False: no such property. A refused value raises a run-time error, as the control would.
    virtual bool setProperty(const std::string &name, const Args &args, const std::string &value);
    // Names shown by `dump`, each without arguments.
    virtual std::vector<std::string> propertyNames() const;

    // Events the logic handles.
    std::function<void()> Click;
    std::function<void()> DblClick;
    std::function<void(int button, int x, int y)> MouseMove;
    std::function<void(int button, int x, int y)> MouseDown;
    std::function<void(int button, int x, int y)> MouseUp;

    // What the user does: each runs at the top of the event loop, so an error that escapes
    // its handler is the platform's fatal report.
    virtual void userClick();
    virtual void userDblClick();
    void userMouse(const std::string &what, int button, int x, int y);

    // Its window was unloaded: the control stops whatever it does on its own.
    virtual void windowUnloaded() {}

    // Change notification for the views.
    using Observer = std::function<void()>;
    int observe(Observer o);
    void unobserve(int id);

protected:
    void changed();
    // Runs a handler of this control as a user event, if the handler is set.
    void deliver(const std::function<void()> &handler);
    static std::string truthText(bool b) { return b ? "-1" : "0"; }
    static bool parseTruth(const std::string &text);
    static int parseInt(const std::string &text);

private:
    friend class Window;
    Window &m_owner;
    // Its window went first (a control that isn't one of the window's members).
    bool m_orphaned = false;
    std::string m_name;
    int m_index;
    bool m_enabled = true;
    bool m_visible = true;
    std::string m_toolTip;
    int m_left = 0, m_top = 0, m_width = 1200, m_height = 375;
    Control *m_container = nullptr;
    std::map<int, Observer> m_observers;
    int m_nextObserver = 1;
};

} // namespace ui
