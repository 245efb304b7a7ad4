#include "Form1.h"

#include "DocumentLinks.h"
#include "ui/AppContext.h"

namespace shell {

Form1::Form1(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , Label2(*this, "Label2")
    , ctHyperLink1(*this, "ctHyperLink1")
    , ctButton1(*this, "ctButton1")
    , Shell(app.components().shell)
{
    setCaption("Contact Information");
    setGeometry(0, 0, 5400, 3000);
    centreOnScreen();

    Label1.setCaption("Velmora Works");
    Label1.setGeometry(240, 240, 4800, 300);
    Label2.setCaption("Questions, ideas or trouble with the program? "
                      "The guide that came with it tells how to reach us.");
    Label2.setGeometry(240, 600, 4800, 600);
    // The contact part of the guide; the guide is one file, opened at its top.
    ctHyperLink1.setCaption("Contact and feedback");
    ctHyperLink1.setAddress(installedDocumentAddress(app, "README.md"));
    ctHyperLink1.setGeometry(240, 1320, 4800, 300);
    ctButton1.setCaption("Close");
    ctButton1.setGeometry(3720, 1920, 1320, 405);

    ctHyperLink1.Click = [this] { ctHyperLink1_Click(); };
    ctButton1.Click = [this] { ctButton1_Click(); };
}

void Form1::Form_Load()
{
    setTopmost(true);
}

void Form1::ctHyperLink1_Click()
{
    openAddressOrTell(app(), Shell, ctHyperLink1.Address());
}

void Form1::ctButton1_Click()
{
    Unload();
}

} // namespace shell
