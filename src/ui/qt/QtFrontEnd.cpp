#include "QtFrontEnd.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLayout>
#include <QPixmap>
#include <QScreen>
#include <QWidget>

#include "QtSupport.h"
#include "WindowView.h"
#include "ui/AppContext.h"

namespace uiqt {

using namespace ui;

QtFrontEnd::QtFrontEnd(AppContext &app)
    : m_app(app)
{
    // Windows come and go as the logic says; hiding the last one doesn't end the program.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (QScreen *screen = QGuiApplication::primaryScreen())
        m_app.setScreenSizeTwips(toTwips(screen->size().width()), toTwips(screen->size().height()));

    m_app.windowCreated = [this](Window &w) { created(w); };
    m_app.windowDestroying = [this](Window &w) { destroying(w); };
    m_app.programEnded = [](int errorNumber) {
        // Queued, so that it also ends a program that ends before the main loop runs.
        QMetaObject::invokeMethod(
            qApp, [errorNumber] { QCoreApplication::exit(errorNumber); }, Qt::QueuedConnection);
    };
    for (Window *w : m_app.windows())
        created(*w);
}

QtFrontEnd::~QtFrontEnd()
{
    m_app.windowCreated = nullptr;
    m_app.windowDestroying = nullptr;
    m_app.programEnded = nullptr;
    for (auto &[window, view] : m_views)
        delete view;
    m_views.clear();
}

WindowView *QtFrontEnd::view(const Window &window) const
{
    auto it = m_views.find(&window);
    return it == m_views.end() ? nullptr : it->second;
}

WindowView *QtFrontEnd::view(const std::string &windowName) const
{
    for (const auto &[window, view] : m_views) {
        if (window->name() == windowName)
            return view;
    }
    return nullptr;
}

void QtFrontEnd::created(Window &window)
{
    if (!m_views.count(&window))
        m_views[&window] = new WindowView(window, *this);
}

void QtFrontEnd::destroying(Window &window)
{
    auto it = m_views.find(&window);
    if (it == m_views.end())
        return;
    WindowView *view = it->second;
    m_views.erase(it);
    view->detach();
    // This may run inside one of the view's own signal handlers.
    view->deleteLater();
}

bool QtFrontEnd::saveScreenshot(const std::string &windowName, const std::string &path) const
{
    WindowView *v = view(windowName);
    if (!v || !v->topLevel())
        return false;
    v->ensureBuilt();
    QWidget *top = v->topLevel();
    if (top->isHidden() && top->layout())
        top->layout()->activate();
    return top->grab().save(qs(path), "PNG");
}

} // namespace uiqt
