#include "Plugins.h"

#include <algorithm>
#include <cctype>

#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"

namespace addons {

bool isWebAddress(const std::string &address)
{
    auto startsWith = [&](std::string_view prefix) {
        return address.size() > prefix.size() &&
               std::equal(prefix.begin(), prefix.end(), address.begin(),
                          [](char p, char a) { return p == std::tolower(static_cast<unsigned char>(a)); });
    };
    return startsWith("http://") || startsWith("https://");
}

Plugins::Plugins(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , mainlist(*this, "mainlist")
    , Text1(*this, "Text1")
    , Text2(*this, "Text2")
    , Text3(*this, "Text3")
    , ctButton3(*this, "ctButton3")
    , ctButton1(*this, "ctButton1")
    , ctButton2(*this, "ctButton2")
    , Check1(*this, "Check1")
    , ctClip1(*this, "ctClip1")
    , StatusBar1(*this, "StatusBar1")
    , m_shell(app.components().shell)
{
    setCaption("Xtras - Velmora Works Technical Department");
    layOut();

    ctButton1.Click = [this] { ctButton1_Click(); };
    ctButton2.Click = [this] { ctButton2_Click(); };
    ctButton3.Click = [this] { ctButton3_Click(); };
}

void Plugins::layOut()
{
    setGeometry(0, 0, 9600, 5400);
    centreOnScreen();
    ctClip1.setGeometry(120, 120, 1320, 1320);
    Label1.setCaption("Internet Engine");
    Label1.setGeometry(1560, 120, 7800, 300);
    // A catalogue row is name;version;details, sometimes with a size after them.
    mainlist.setColumnHeaders({"Add-on", "Version", "Details", "Size"});
    mainlist.setGeometry(1560, 480, 7800, 3060);
    // The addresses and the size are kept, not shown: the buttons use them.
    Text1.setVisible(false);
    Text1.setGeometry(1560, 3660, 1800, 300);
    Text2.setVisible(false);
    Text2.setGeometry(3480, 3660, 1800, 300);
    Text3.setVisible(false);
    Text3.setGeometry(5400, 3660, 1800, 300);
    Check1.setCaption("Allow DTE early arrival-");
    Check1.setGeometry(120, 3660, 2700, 300);
    ctButton3.setCaption("Download");
    ctButton3.setVisible(false);
    ctButton3.setGeometry(4680, 4020, 1500, 420);
    ctButton1.setCaption("Available INFO");
    ctButton1.setVisible(false);
    ctButton1.setGeometry(6240, 4020, 1560, 420);
    ctButton2.setCaption("Cancel");
    ctButton2.setGeometry(7860, 4020, 1500, 420);
    StatusBar1.setGeometry(0, 4620, 9600, 300);
}

void Plugins::Form_Load()
{
    try {
        setTopmost(true);
    } catch (const rt::RuntimeError &) {
    }
}

void Plugins::openInBrowser(const std::string &address)
{
    // A catalogue may name anything; only a web page goes to the desktop's opener, and it goes
    // as one argument, blanks and all, with no shell to read it.
    if (!isWebAddress(address))
        return;
    if (m_shell->openAddress(address) != 0)
        rt::raise(rt::ErrFileNotFound);
    app().loop().doEvents();
}

void Plugins::OpenUrl1(const std::string &address) { openInBrowser(address); }

void Plugins::OpenUrl2(const std::string &address) { openInBrowser(address); }

void Plugins::ctButton3_Click() { OpenUrl1(Text1.Text()); }

void Plugins::ctButton1_Click() { OpenUrl2(Text2.Text()); }

void Plugins::ctButton2_Click() { Unload(); }

std::optional<std::string> Plugins::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if ((name == "OpenUrl1" || name == "OpenUrl2") && args.size() == 1) {
        name == "OpenUrl1" ? OpenUrl1(args[0]) : OpenUrl2(args[0]);
        return std::string();
    }
    return Window::callRoutine(name, args);
}

} // namespace addons
