#include "about.h"

#include "ui/AppContext.h"

namespace shell {

about::about(ui::AppContext &app)
    : Window(app, formName)
    , Image1(*this, "Image1")
    , Label1(*this, "Label1")
    , Label2(*this, "Label2")
    , Label3(*this, "Label3")
    , cmdOK(*this, "cmdOK")
{
    setCaption("About MP3 Brasswick");
    setGeometry(0, 0, 6000, 5700);
    centreOnScreen();

    // The splash picture, scaled down in its own proportions (5 by 3).
    Image1.setPicture(app.appPath() + "/splash.png");
    Image1.setGeometry(240, 240, 5400, 3240);
    Label1.setCaption("MP3 Brasswick 1.3- Studio Edition");
    Label1.setGeometry(240, 3600, 5400, 300);
    Label2.setCaption("Velmora Works");
    Label2.setGeometry(240, 3930, 5400, 300);
    Label3.setCaption("Licensed under the GNU GPL, version 3 or later");
    Label3.setGeometry(240, 4260, 5400, 300);
    cmdOK.setCaption("OK");
    cmdOK.setGeometry(4320, 4680, 1320, 405);

    cmdOK.Click = [this] { cmdOK_Click(); };
}

void about::cmdOK_Click()
{
    Unload();
}

} // namespace shell
