#include "bannerx.h"

#include "frmMain.h"
#include "ui/AppContext.h"

namespace shell {

bannerx::bannerx(ui::AppContext &app)
    : Window(app, formName)
    , Image1(*this, "Image1")
    , Label1(*this, "Label1")
    , Label2(*this, "Label2")
    , Timer1(*this, "Timer1", 7000, true)
{
    setCaption("MP3 Brasswick 1.3");
    setFrameless(true);
    setGeometry(0, 0, 6750, 4050);
    centreOnScreen();
    Image1.setGeometry(0, 0, 6750, 4050);
    Image1.setPicture(app.appPath() + "/splash.png");
    Label1.setCaption("Velmora Works");
    Label1.setGeometry(150, 3600, 2400, 300);
    Label2.setCaption("Version 1.3");
    Label2.setGeometry(4950, 3600, 1650, 300);
    Label1.setContainer(&Image1);
    Label2.setContainer(&Image1);
    Timer1.Tick = [this] { Timer1_Timer(); };
}

void bannerx::Timer1_Timer()
{
    // The main window's load step runs inside this tick; the splash goes only after it.
    auto &main = app().form<frmMain>();
    main.Show();
    Unload();
}

} // namespace shell
