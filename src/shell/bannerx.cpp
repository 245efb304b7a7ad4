#include "bannerx.h"

#include "frmMain.h"
#include "ui/AppContext.h"

namespace shell {

bannerx::bannerx(ui::AppContext &app)
    : Window(app, formName)
    , Image1(*this, "Image1")
    , Timer1(*this, "Timer1", 7000, true)
{
    setCaption("MP3 Brasswick 1.3");
    setFrameless(true);
    setGeometry(0, 0, 6750, 4050);
    centreOnScreen();
    Image1.setGeometry(0, 0, 6750, 4050);
    Image1.setPicture(app.appPath() + "/splash.png");
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
