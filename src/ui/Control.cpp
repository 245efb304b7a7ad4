#include "Control.h"

#include "AppContext.h"
#include "Window.h"
#include "runtime/Conversions.h"
#include "runtime/RuntimeError.h"

namespace ui {

Control::Control(Window &owner, std::string name, int index)
    : m_owner(owner)
    , m_name(std::move(name))
    , m_index(index)
{
    m_owner.addControl(*this);
}

Control::~Control()
{
    if (!m_orphaned)
        m_owner.removeControl(*this);
}

std::string Control::fullName() const
{
    return m_index < 0 ? m_name : m_name + "(" + std::to_string(m_index) + ")";
}

void Control::setEnabled(bool on)
{
    if (m_enabled == on)
        return;
    m_enabled = on;
    changed();
}

void Control::setVisible(bool on)
{
    if (m_visible == on)
        return;
    m_visible = on;
    changed();
}

void Control::setToolTipText(const std::string &text)
{
    m_toolTip = text;
    changed();
}

void Control::setGeometry(int left, int top, int width, int height)
{
    m_left = left;
    m_top = top;
    m_width = width;
    m_height = height;
    changed();
}

std::optional<std::string> Control::property(const std::string &name, const Args &) const
{
    if (name == "Name")
        return m_name;
    if (name == "Enabled")
        return truthText(m_enabled);
    if (name == "Visible")
        return truthText(m_visible);
    if (name == "ToolTipText")
        return m_toolTip;
    if (name == "Left")
        return std::to_string(m_left);
    if (name == "Top")
        return std::to_string(m_top);
    if (name == "Width")
        return std::to_string(m_width);
    if (name == "Height")
        return std::to_string(m_height);
    if (name == "Index" && m_index >= 0)
        return std::to_string(m_index);
    return std::nullopt;
}

bool Control::setProperty(const std::string &name, const Args &, const std::string &value)
{
    if (name == "Enabled")
        setEnabled(parseTruth(value));
    else if (name == "Visible")
        setVisible(parseTruth(value));
    else if (name == "ToolTipText")
        setToolTipText(value);
    else if (name == "Left")
        setGeometry(parseInt(value), m_top, m_width, m_height);
    else if (name == "Top")
        setGeometry(m_left, parseInt(value), m_width, m_height);
    else if (name == "Width")
        setGeometry(m_left, m_top, parseInt(value), m_height);
    else if (name == "Height")
        setGeometry(m_left, m_top, m_width, parseInt(value));
    else
        return false;
    return true;
}

std::vector<std::string> Control::propertyNames() const
{
    return {"Enabled", "Visible", "ToolTipText", "Left", "Top", "Width", "Height"};
}

void Control::userClick()
{
    deliver(Click);
}

void Control::userDblClick()
{
    deliver(DblClick);
}

void Control::userMouse(const std::string &what, int button, int x, int y)
{
    // The handler may end the program and take this control with it: hold on to the context.
    AppContext &app = m_owner.app();
    const auto &handler = what == "down" ? MouseDown : what == "up" ? MouseUp : MouseMove;
    if (handler)
        app.loop().deliver([&] { handler(button, x, y); });
    app.afterEvent();
}

int Control::observe(Observer o)
{
    const int id = m_nextObserver++;
    m_observers[id] = std::move(o);
    return id;
}

void Control::unobserve(int id)
{
    m_observers.erase(id);
}

void Control::changed()
{
    // Copy: an observer may unobserve while we walk the list.
    const auto observers = m_observers;
    for (const auto &[id, o] : observers)
        o();
}

void Control::deliver(const std::function<void()> &handler)
{
    // The handler may end the program and take this control with it: hold on to the context.
    AppContext &app = m_owner.app();
    if (handler)
        app.loop().deliver(handler);
    app.afterEvent();
}

bool Control::parseTruth(const std::string &text)
{
    return rt::CBool(text);
}

int Control::parseInt(const std::string &text)
{
    return rt::CLng(text).value();
}

} // namespace ui
