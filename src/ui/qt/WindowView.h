#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QRect>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace ui {
class Control;
class MenuItem;
class Window;
} // namespace ui

namespace uiqt {

class ControlView;
class QtFrontEnd;

// The top-level widget of one window of the kit, with its menu bar and the widgets of its
// controls. It follows the window until the window goes; what the user does goes back
// through the window's and controls' user-action entry points.
class WindowView : public QObject {
public:
    WindowView(ui::Window &window, QtFrontEnd &frontEnd);
    ~WindowView() override;

    // Null once the window has gone.
    ui::Window *window() const { return m_window; }
    QWidget *topLevel() const { return m_top; }
    // The client area, where the controls sit.
    QWidget *canvas() const { return m_canvas; }
    QMenuBar *menuBar() const { return m_menuBar; }

    // The controls' widgets are made after the window's load step, when it has settled what
    // its controls are; this makes them now if they aren't yet.
    void ensureBuilt();
    // The widget of a control (making the widgets first), or nullptr for one that has none.
    QWidget *widgetFor(const ui::Control &control);
    // The action of a menu entry (for a head, the action that opens its menu).
    QAction *actionFor(const ui::MenuItem &item) const;

    // Where a control of this container sits: the container's widget, or the client area.
    QWidget *parentFor(const ui::Control *container) const;

    // The window is going: stop following it and its controls, and hide.
    void detach();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct MenuEntry {
        ui::MenuItem *item;
        QAction *action;
        QMenu *menu;
        int observer;
    };
    void apply();
    void applyFlags();
    void applyGeometry();
    void applyOwner();
    void buildMenu(ui::MenuItem &item, QWidget *parentMenu);
    void applyMenu(MenuEntry &entry);
    void placeDocked();

    ui::Window *m_window;
    QtFrontEnd &m_frontEnd;
    QPointer<QWidget> m_top;
    QWidget *m_canvas = nullptr;
    QMenuBar *m_menuBar = nullptr;
    int m_observer = 0;
    bool m_built = false;
    QRect m_appliedGeometry;
    Qt::WindowFlags m_flags;
    bool m_flagsApplied = false;
    std::vector<std::unique_ptr<ControlView>> m_controls;
    std::map<const ui::Control *, ControlView *> m_byControl;
    std::vector<MenuEntry> m_menus;
};

} // namespace uiqt
