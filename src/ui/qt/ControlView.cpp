#include "ControlView.h"

#include <QMouseEvent>
#include <QWidget>

#include "QtSupport.h"
#include "WindowView.h"
#include "ui/Control.h"

namespace uiqt {

using namespace ui;

namespace {

int kitButton(Qt::MouseButton b)
{
    switch (b) {
    case Qt::LeftButton: return 1;
    case Qt::RightButton: return 2;
    case Qt::MiddleButton: return 4;
    default: return 0;
    }
}

int kitButtons(Qt::MouseButtons bs)
{
    return (bs & Qt::LeftButton ? 1 : 0) | (bs & Qt::RightButton ? 2 : 0) | (bs & Qt::MiddleButton ? 4 : 0);
}

} // namespace

ControlView::ControlView(Control &control, WindowView &window)
    : m_control(&control)
    , m_window(window)
{
}

ControlView::~ControlView()
{
    // The widget belongs to the window's widget tree, which may already be gone.
    if (m_control && m_observer)
        m_control->unobserve(m_observer);
}

void ControlView::attach()
{
    if (!m_control || m_observer)
        return;
    m_observer = m_control->observe([this] { sync(); });
    sync();
}

void ControlView::detach()
{
    if (m_control && m_observer)
        m_control->unobserve(m_observer);
    m_observer = 0;
    const bool was = m_control != nullptr;
    m_control = nullptr;
    if (was)
        detached();
}

void ControlView::sync()
{
    if (!m_control || !m_widget)
        return;
    struct Pushing {
        bool &flag;
        bool was;
        explicit Pushing(bool &f) : flag(f), was(f) { flag = true; }
        ~Pushing() { flag = was; }
    } pushing(m_pushing);
    applyCommon();
    apply();
}

void ControlView::applyCommon()
{
    QWidget *parent = m_window.parentFor(m_control->container());
    if (parent && m_widget->parentWidget() != parent)
        m_widget->setParent(parent); // hides it; shown again below
    // Only the control's own setting: a disabled frame disables what it contains by itself.
    if (m_widget->testAttribute(Qt::WA_ForceDisabled) == m_control->Enabled())
        m_widget->setEnabled(m_control->Enabled());
    const QString tip = qs(m_control->ToolTipText());
    if (m_widget->toolTip() != tip)
        m_widget->setToolTip(tip);
    place();
    if (m_widget->isHidden() == m_control->Visible())
        m_widget->setVisible(m_control->Visible());
}

QRect ControlView::kitRect() const
{
    if (!m_control)
        return {};
    return QRect(toPixels(m_control->Left()), toPixels(m_control->Top()), std::max(toPixels(m_control->Width()), 0),
                 std::max(toPixels(m_control->Height()), 0));
}

void ControlView::place()
{
    const QRect r = kitRect();
    if (m_widget && m_widget->geometry() != r)
        m_widget->setGeometry(r);
}

void ControlView::setWidget(QWidget *widget)
{
    m_widget = widget;
    watchMouse(widget);
}

void ControlView::watchMouse(QWidget *part)
{
    part->setMouseTracking(true);
    part->installEventFilter(this);
}

bool ControlView::eventFilter(QObject *watched, QEvent *event)
{
    if (!m_control || !watched->isWidgetType())
        return false;
    auto *part = static_cast<QWidget *>(watched);
    const auto type = event->type();
    if (type == QEvent::MouseMove || type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease) {
        auto *me = static_cast<QMouseEvent *>(event);
        const char *what = type == QEvent::MouseMove ? "move" : type == QEvent::MouseButtonPress ? "down" : "up";
        const auto &handler = type == QEvent::MouseMove          ? m_control->MouseMove
                              : type == QEvent::MouseButtonPress ? m_control->MouseDown
                                                                 : m_control->MouseUp;
        if (handler) {
            const QPoint p = part == m_widget ? me->position().toPoint() : part->mapTo(m_widget, me->position().toPoint());
            const int button = type == QEvent::MouseMove ? kitButtons(me->buttons()) : kitButton(me->button());
            m_control->userMouse(what, button, toTwips(p.x()), toTwips(p.y()));
            if (!m_control)
                return true;
        }
    }
    return widgetEvent(part, event);
}

bool ControlView::widgetEvent(QWidget *, QEvent *)
{
    return false;
}

} // namespace uiqt
