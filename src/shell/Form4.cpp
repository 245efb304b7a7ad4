#include "Form4.h"

#include "DocumentLinks.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace shell {

Form4::Form4(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , ctHyperLink1(*this, "ctHyperLink1")
    , ctHyperLink2(*this, "ctHyperLink2")
    , ctButton1(*this, "ctButton1")
    , Shell(app.components().shell)
{
    setCaption("Available Online Help");
    setGeometry(0, 0, 5400, 3300);
    centreOnScreen();

    // There is no help site: the guide and the licence come with the program.
    Label1.setCaption("The guide and the licence were installed with the program. "
                      "A click opens them in your own viewer.");
    Label1.setGeometry(240, 240, 4800, 600);
    ctHyperLink1.setCaption("User guide");
    ctHyperLink1.setAddress(installedDocumentAddress(app, "README.md"));
    ctHyperLink1.setGeometry(240, 1020, 4800, 300);
    ctHyperLink2.setCaption("Licence");
    ctHyperLink2.setAddress(installedDocumentAddress(app, "LICENSE"));
    ctHyperLink2.setGeometry(240, 1440, 4800, 300);
    ctButton1.setCaption("Close");
    ctButton1.setGeometry(3720, 2160, 1320, 405);

    ctHyperLink1.Click = [this] { ctHyperLink1_Click(); };
    ctHyperLink2.Click = [this] { ctHyperLink2_Click(); };
    ctButton1.Click = [this] { ctButton1_Click(); };
}

void Form4::Form_Load()
{
    setTopmost(true);
}

void Form4::ctHyperLink1_Click()
{
    openAddressOrTell(app(), Shell, ctHyperLink1.Address());
}

void Form4::ctHyperLink2_Click()
{
    openAddressOrTell(app(), Shell, ctHyperLink2.Address());
}

void Form4::ctButton1_Click()
{
    Unload();
}

} // namespace shell
