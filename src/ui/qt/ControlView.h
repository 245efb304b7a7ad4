#pragma once

#include <memory>

#include <QObject>
#include <QRect>

namespace ui {
class Control;
}

class QWidget;

namespace uiqt {

class WindowView;

// The widget of one control, bound both ways: a change of the control is pushed into the
// widget; what the user does in the widget reaches the control only through its user-action
// entry points, never by setting its properties.
class ControlView : public QObject {
public:
    ControlView(ui::Control &control, WindowView &window);
    ~ControlView() override;

    // Null once the window has gone: the control may be destroyed right after.
    ui::Control *control() const { return m_control; }
    QWidget *widget() const { return m_widget; }
    // Where controls contained in this one sit.
    virtual QWidget *content() const { return m_widget; }

    // Starts following the control and shows its present state.
    void attach();
    // Stops following; the widget stays until its window's widgets go.
    void detach();
    // Pushes the control's whole state into the widget.
    void sync();
    // Places the widget again, after its window's client area changed size.
    virtual void place();

protected:
    virtual void apply() = 0;
    void setWidget(QWidget *widget);
    // A part of the widget that gets the mouse itself (a list's viewport, a combo's edit).
    void watchMouse(QWidget *part);
    bool eventFilter(QObject *watched, QEvent *event) override;
    // Events of the widget and its watched parts beyond the shared mouse move/down/up
    // reports: clicks, keys. True eats the event.
    virtual bool widgetEvent(QWidget *part, QEvent *event);
    // The control is going: stop reading it.
    virtual void detached() {}

    // The rectangle of the control in its container, in pixels.
    QRect kitRect() const;
    WindowView &window() const { return m_window; }
    // True while the kit's state is being pushed into the widget, when the widget's own
    // signals are not the user's.
    bool pushing() const { return m_pushing; }

    ui::Control *m_control;

private:
    void applyCommon();

    WindowView &m_window;
    QWidget *m_widget = nullptr;
    int m_observer = 0;
    bool m_pushing = false;
    QRect m_placed;
};

// The view of a control, or nullptr for a kind that has no widget (timers, menu entries).
std::unique_ptr<ControlView> makeControlView(ui::Control &control, WindowView &window);

} // namespace uiqt
