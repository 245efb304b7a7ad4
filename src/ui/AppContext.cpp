#include "AppContext.h"

#include <algorithm>

#include "runtime/RuntimeError.h"

namespace ui {

AppContext::AppContext(rt::EventLoop &loop, MessageBoxService &boxes, DialogService &dialogs,
                       platform::Components &components, std::string programFolder)
    : m_loop(loop)
    , m_boxes(boxes)
    , m_dialogs(dialogs)
    , m_components(components)
    , m_programFolder(std::move(programFolder))
{
    while (m_programFolder.size() > 1 && (m_programFolder.back() == '/' || m_programFolder.back() == '\\'))
        m_programFolder.pop_back();
    m_loop.setFatalErrorHandler([this](const rt::RuntimeError &e) { reportFatal(e); });
    m_loop.setProgramEndHandler([this] { end(); });
}

AppContext::~AppContext()
{
    m_loop.setFatalErrorHandler({});
    m_loop.setProgramEndHandler({});
    // Controls stop their timers on the way out; views are told first.
    while (!m_windows.empty()) {
        auto w = std::move(m_windows.back());
        m_windows.pop_back();
        destroy(std::move(w));
    }
    m_unloaded.clear();
}

Window &AppContext::formByName(std::string_view name)
{
    if (Window *w = findLoaded(name))
        return *w;
    auto it = m_factories.find(name);
    if (it == m_factories.end())
        rt::raise(rt::ErrObjectRequired);
    Factory factory = it->second;
    return create(std::string(name), [this, factory] { return factory(*this); });
}

Window *AppContext::findLoaded(std::string_view name) const
{
    for (const auto &w : m_windows) {
        if (w->name() == name)
            return w.get();
    }
    return nullptr;
}

std::vector<Window *> AppContext::windows() const
{
    std::vector<Window *> result;
    for (const auto &w : m_windows)
        result.push_back(w.get());
    return result;
}

Window &AppContext::create(const std::string &, const std::function<std::unique_ptr<Window>()> &make)
{
    m_windows.push_back(make());
    Window &w = *m_windows.back();
    if (windowCreated)
        windowCreated(w);
    // The load step runs with the window already known, so that it can refer to itself.
    w.Form_Load();
    return w;
}

void AppContext::unload(Window &w)
{
    auto it = std::find_if(m_windows.begin(), m_windows.end(), [&](const auto &p) { return p.get() == &w; });
    if (it == m_windows.end())
        return;
    if (w.Form_QueryUnload())
        return;
    w.Form_Unload();
    // The unload step may itself have unloaded the window.
    it = std::find_if(m_windows.begin(), m_windows.end(), [&](const auto &p) { return p.get() == &w; });
    if (it == m_windows.end())
        return;
    w.Hide();
    for (Control *c : w.controls())
        c->windowUnloaded();
    m_unloaded.push_back(std::move(*it));
    m_windows.erase(it);
    if (windowDestroying)
        windowDestroying(w);
    if (m_windows.empty() && !m_ended) {
        m_ended = true;
        if (programEnded)
            programEnded(0);
    }
}

void AppContext::afterEvent()
{
    if (m_modalDepth > 0)
        return;
    auto gone = std::move(m_unloaded);
    m_unloaded.clear();
    gone.clear();
}

void AppContext::end(int errorNumber)
{
    if (m_ended)
        return;
    m_ended = true;
    m_endError = errorNumber;
    while (!m_windows.empty()) {
        auto w = std::move(m_windows.back());
        m_windows.pop_back();
        w->Hide();
        for (Control *c : w->controls())
            c->windowUnloaded();
        if (windowDestroying)
            windowDestroying(*w);
        m_unloaded.push_back(std::move(w));
    }
    afterEvent();
    if (programEnded)
        programEnded(errorNumber);
}

void AppContext::reportFatal(const rt::RuntimeError &e)
{
    // The platform's own report; the program cannot go on after it.
    MsgBox(*this, "Run-time error '" + std::to_string(e.number()) + "':\n\n" + e.description(), vbOKOnly | vbCritical);
    end(e.number());
}

void AppContext::destroy(std::unique_ptr<Window> w)
{
    if (windowDestroying)
        windowDestroying(*w);
    w.reset();
}

} // namespace ui
