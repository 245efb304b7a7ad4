#include "WindowView.h"

#include <QAction>
#include <QCloseEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include "ControlView.h"
#include "QtFrontEnd.h"
#include "QtSupport.h"
#include "ui/AppContext.h"
#include "ui/MenuItem.h"
#include "ui/Window.h"

namespace uiqt {

using namespace ui;

namespace {

// A window's Width and Height include its frame and title bar; Qt sizes the inside. These are
// the frame of the screens the windows were laid out on.
constexpr int FrameWidth = 8;
constexpr int FrameHeight = 30;
// The windows were laid out for an 8-point sans serif at 96 dots to the inch.
constexpr int FontPixels = 11;

int kitButtons(Qt::MouseButtons bs)
{
    return (bs & Qt::LeftButton ? 1 : 0) | (bs & Qt::RightButton ? 2 : 0) | (bs & Qt::MiddleButton ? 4 : 0);
}

} // namespace

WindowView::WindowView(Window &window, QtFrontEnd &frontEnd)
    : m_window(&window)
    , m_frontEnd(frontEnd)
{
    if (!window.menuBar().empty()) {
        auto *main = new QMainWindow;
        m_canvas = new QWidget(main);
        main->setCentralWidget(m_canvas);
        m_menuBar = main->menuBar();
        m_top = main;
    } else {
        m_top = new QWidget;
        m_canvas = m_top;
    }
    m_top->setObjectName(qs(window.name()));
    QFont font = m_top->font();
    font.setPixelSize(FontPixels);
    m_top->setFont(font);
    m_top->installEventFilter(this);
    if (m_canvas != m_top)
        m_canvas->installEventFilter(this);
    m_canvas->setMouseTracking(true);

    for (MenuItem *item : window.menuBar())
        buildMenu(*item, nullptr);

    m_observer = window.observe([this] { apply(); });
    window.beginSystemMove = [top = QPointer<QWidget>(m_top)] {
        if (top && top->windowHandle())
            top->windowHandle()->startSystemMove();
    };
    apply();
    // The load step runs right after the window is made; the widgets follow it.
    QTimer::singleShot(0, this, [this] { ensureBuilt(); });
}

WindowView::~WindowView()
{
    detach();
    m_controls.clear();
    delete m_top.data();
}

void WindowView::detach()
{
    if (!m_window)
        return;
    for (auto &view : m_controls)
        view->detach();
    for (auto &entry : m_menus)
        entry.item->unobserve(entry.observer);
    m_menus.clear();
    m_window->unobserve(m_observer);
    m_window->beginSystemMove = nullptr;
    m_window = nullptr;
    if (m_top)
        m_top->hide();
}

void WindowView::ensureBuilt()
{
    if (m_built || !m_window)
        return;
    m_built = true;
    for (Control *c : m_window->controls()) {
        if (auto view = makeControlView(*c, *this)) {
            m_byControl[c] = view.get();
            m_controls.push_back(std::move(view));
        }
    }
    // Every widget exists before any is placed, so a control finds its container's widget.
    for (auto &view : m_controls)
        view->attach();
}

QWidget *WindowView::widgetFor(const Control &control)
{
    ensureBuilt();
    auto it = m_byControl.find(&control);
    return it == m_byControl.end() ? nullptr : it->second->widget();
}

QAction *WindowView::actionFor(const MenuItem &item) const
{
    for (const auto &entry : m_menus) {
        if (entry.item == &item)
            return entry.action;
    }
    return nullptr;
}

QWidget *WindowView::parentFor(const Control *container) const
{
    if (container) {
        auto it = m_byControl.find(container);
        if (it != m_byControl.end() && it->second->content())
            return it->second->content();
    }
    return m_canvas;
}

void WindowView::apply()
{
    if (!m_window || !m_top)
        return;
    const QString title = qs(m_window->Caption());
    if (m_top->windowTitle() != title)
        m_top->setWindowTitle(title);
    applyFlags();
    applyGeometry();
    applyOwner();
    if (m_window->Visible()) {
        if (m_top->isHidden()) {
            ensureBuilt();
            m_top->show();
        }
    } else if (!m_top->isHidden()) {
        m_top->hide();
    }
}

void WindowView::applyFlags()
{
    Qt::WindowFlags flags = Qt::Window;
    if (m_window->frameless())
        flags = Qt::SplashScreen | Qt::FramelessWindowHint;
    else if (m_window->closeCommandRemoved())
        flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                Qt::WindowMinimizeButtonHint;
    if (m_window->Topmost())
        flags |= Qt::WindowStaysOnTopHint;
    const Qt::WindowModality modality = m_window->isModal() ? Qt::ApplicationModal : Qt::NonModal;
    if (m_top->windowModality() != modality && m_top->isHidden())
        m_top->setWindowModality(modality);
    if (m_flagsApplied && flags == m_flags)
        return;
    m_flags = flags;
    m_flagsApplied = true;
    const bool shown = !m_top->isHidden();
    m_top->setWindowFlags(flags);
    // New flags take a window off the screen.
    if (shown)
        m_top->show();
    m_appliedGeometry = {};
}

void WindowView::applyGeometry()
{
    const QRect g(toPixels(m_window->Left()), toPixels(m_window->Top()), toPixels(m_window->Width()),
                  toPixels(m_window->Height()));
    if (g == m_appliedGeometry)
        return;
    m_appliedGeometry = g;
    const bool framed = !m_window->frameless();
    const QSize inside(std::max(1, g.width() - (framed ? FrameWidth : 0)),
                       std::max(1, g.height() - (framed ? FrameHeight : 0)));
    m_top->setFixedSize(inside);
    m_top->move(g.topLeft());
}

void WindowView::applyOwner()
{
    Window *owner = m_window->owner();
    WindowView *ownerView = owner ? m_frontEnd.view(*owner) : nullptr;
    QWidget *ownerTop = ownerView ? ownerView->topLevel() : nullptr;
    if (!ownerTop && !m_top->windowHandle())
        return;
    // The owner is a transient parent, not a Qt parent: each window's widgets live and die
    // with their own window.
    m_top->winId();
    QWindow *wanted = nullptr;
    if (ownerTop) {
        ownerTop->winId();
        wanted = ownerTop->windowHandle();
    }
    if (m_top->windowHandle()->transientParent() != wanted)
        m_top->windowHandle()->setTransientParent(wanted);
}

void WindowView::buildMenu(MenuItem &item, QWidget *parentMenu)
{
    auto *menu = static_cast<QMenu *>(nullptr);
    QAction *action = nullptr;
    auto *inMenu = qobject_cast<QMenu *>(parentMenu);
    if (!item.children().empty()) {
        menu = new QMenu(parentMenu ? parentMenu : m_menuBar);
        action = menu->menuAction();
        if (inMenu)
            inMenu->addMenu(menu);
        else
            m_menuBar->addMenu(menu);
    } else {
        action = new QAction(parentMenu ? static_cast<QObject *>(parentMenu) : m_menuBar);
        action->setSeparator(item.isSeparator());
        if (inMenu)
            inMenu->addAction(action);
        else
            m_menuBar->addAction(action);
    }
    const size_t index = m_menus.size();
    m_menus.push_back(MenuEntry{&item, action, menu, 0});
    m_menus[index].observer = item.observe([this, index] {
        if (index < m_menus.size())
            applyMenu(m_menus[index]);
    });

    if (menu) {
        // A head's Click comes as its menu opens, so the logic can set up the entries below.
        QObject::connect(menu, &QMenu::aboutToShow, this, [this, index] {
            if (m_window && index < m_menus.size())
                m_menus[index].item->userClick();
        });
        for (MenuItem *child : item.children())
            buildMenu(*child, menu);
    } else if (!item.isSeparator()) {
        QObject::connect(action, &QAction::triggered, this, [this, index] {
            if (!m_window || index >= m_menus.size())
                return;
            m_menus[index].item->userClick();
            // Qt ticks a checkable entry itself; the entry's Checked says what it shows.
            if (m_window && index < m_menus.size())
                applyMenu(m_menus[index]);
        });
    }
    applyMenu(m_menus[index]);
}

void WindowView::applyMenu(MenuEntry &entry)
{
    MenuItem &item = *entry.item;
    if (!item.isSeparator()) {
        const QString text = qs(item.Caption());
        if (entry.action->text() != text) {
            entry.action->setText(text);
            if (entry.menu)
                entry.menu->setTitle(text);
        }
        if (!entry.menu) {
            // Only a ticked entry shows room for a tick; an unticked one lines up with plain entries.
            const bool checked = item.Checked();
            if (entry.action->isCheckable() != checked)
                entry.action->setCheckable(checked);
            if (entry.action->isChecked() != checked)
                entry.action->setChecked(checked);
        }
    }
    if (entry.action->isEnabled() != item.Enabled())
        entry.action->setEnabled(item.Enabled());
    if (entry.action->isVisible() != item.Visible())
        entry.action->setVisible(item.Visible());
}

void WindowView::placeDocked()
{
    for (auto &view : m_controls) {
        if (view->control())
            view->place();
    }
}

bool WindowView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_top && event->type() == QEvent::Close) {
        // The logic decides whether the window goes.
        event->ignore();
        if (m_window)
            m_window->userClose();
        return true;
    }
    if (watched != m_canvas)
        return false;
    if (event->type() == QEvent::Resize) {
        placeDocked();
    } else if (event->type() == QEvent::MouseMove && m_window && m_window->MouseMove) {
        auto *me = static_cast<QMouseEvent *>(event);
        const QPoint p = me->position().toPoint();
        const int button = kitButtons(me->buttons());
        const int x = toTwips(p.x());
        const int y = toTwips(p.y());
        Window *w = m_window;
        AppContext &app = w->app();
        app.loop().deliver([w, button, x, y] {
            if (w->MouseMove)
                w->MouseMove(button, x, y);
        });
        app.afterEvent();
    }
    return false;
}

} // namespace uiqt
