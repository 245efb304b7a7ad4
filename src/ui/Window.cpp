#include "Window.h"

#include "AppContext.h"

namespace ui {

Window::Window(AppContext &app, std::string name)
    : m_app(app)
    , m_name(std::move(name))
    , m_caption(m_name)
{
}

Window::~Window()
{
    // The window's own controls are gone by now; any left belong to someone else and outlive it.
    for (Control *c : m_controls)
        c->m_orphaned = true;
}

void Window::Show()
{
    if (m_visible)
        return;
    m_visible = true;
    changed();
    Form_Activate();
}

void Window::ShowModal(Window *owner, std::function<void()> returned)
{
    setOwner(owner);
    m_modalReturn = std::move(returned);
    if (m_visible)
        changed();
    Show();
}

void Window::Hide()
{
    if (m_modalReturn) {
        // At the End statement nothing runs on.
        if (!m_app.ended())
            m_app.loop().post(std::move(m_modalReturn));
        m_modalReturn = nullptr;
    }
    if (!m_visible)
        return;
    m_visible = false;
    changed();
}

void Window::afterComponentEvent(AppContext &app)
{
    app.afterEvent();
}

void Window::Unload()
{
    m_app.unload(*this);
}

void Window::userClose()
{
    if (m_closeRemoved)
        return;
    AppContext &app = m_app;
    app.loop().deliver([this] { Unload(); });
    app.afterEvent();
}

void Window::setCaption(const std::string &text)
{
    if (m_caption == text)
        return;
    m_caption = text;
    changed();
}

void Window::setTopmost(bool on)
{
    m_topmost = on;
    changed();
}

void Window::setOwner(Window *w)
{
    m_ownerWindow = w;
    changed();
}

void Window::setCloseCommandRemoved(bool on)
{
    m_closeRemoved = on;
    changed();
}

void Window::setGeometry(int left, int top, int width, int height)
{
    m_left = left;
    m_top = top;
    m_width = width;
    m_height = height;
    changed();
}

void Window::centreOnScreen()
{
    const auto [screenWidth, screenHeight] = m_app.screenSizeTwips();
    setGeometry(static_cast<int>(screenWidth / 2.0 - m_width / 2.0), static_cast<int>(screenHeight / 2.0 - m_height / 2.0),
                m_width, m_height);
}

void Window::removeControl(Control &c)
{
    std::erase(m_controls, &c);
}

Control *Window::control(const std::string &name, int index) const
{
    for (Control *c : m_controls) {
        if (c->name() == name && c->index() == index)
            return c;
    }
    return nullptr;
}

std::optional<std::string> Window::property(const std::string &name) const
{
    auto truth = [](bool b) { return std::string(b ? "-1" : "0"); };
    if (name == "Caption")
        return m_caption;
    if (name == "Visible")
        return truth(m_visible);
    if (name == "Topmost")
        return truth(m_topmost);
    if (name == "Left")
        return std::to_string(m_left);
    if (name == "Top")
        return std::to_string(m_top);
    if (name == "Width")
        return std::to_string(m_width);
    if (name == "Height")
        return std::to_string(m_height);
    return std::nullopt;
}

std::optional<std::string> Window::member(const std::string &) const
{
    return std::nullopt;
}

std::optional<std::string> Window::callRoutine(const std::string &, const std::vector<std::string> &)
{
    return std::nullopt;
}

int Window::observe(Observer o)
{
    const int id = m_nextObserver++;
    m_observers[id] = std::move(o);
    return id;
}

void Window::unobserve(int id)
{
    m_observers.erase(id);
}

void Window::changed()
{
    const auto observers = m_observers;
    for (const auto &[id, o] : observers)
        o();
}

} // namespace ui
