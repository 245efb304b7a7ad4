#include "Form2.h"

#include "Form5.h"
#include "runtime/ResumeNext.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace layout {

Form2::Form2(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , Check1(*this, "Check1")
    , Check2(*this, "Check2")
    , ctButton1(*this, "ctButton1")
    , ctButton2(*this, "ctButton2")
{
    setCaption("Choose your CD Format");
    setGeometry(0, 0, 4800, 2700);
    centreOnScreen();
    Label1.setCaption("What kind of CD-R will you burn?");
    Label1.setGeometry(240, 180, 4200, 300);
    Check1.setCaption("74 Minute CD");
    Check1.setGeometry(480, 600, 3000, 330);
    Check2.setCaption("80 Minute CD");
    Check2.setGeometry(480, 1000, 3000, 330);
    ctButton1.setCaption("Continue>>");
    ctButton1.setGeometry(2400, 1560, 1500, 420);
    ctButton2.setCaption("Cancel");
    ctButton2.setGeometry(720, 1560, 1500, 420);

    Check1.Click = [this] { boxClicked(Check1, Check2); };
    Check2.Click = [this] { boxClicked(Check2, Check1); };
    ctButton1.Click = [this] { ctButton1_Click(); };
    ctButton2.Click = [this] { Unload(); };
}

void Form2::Form_Load()
{
    // It stands on top of all other windows.
    setTopmost(true);
}

void Form2::boxClicked(ui::CheckBox &clicked, ui::CheckBox &other)
{
    if (m_undoing)
        return;
    if (other.Value() == 1) {
        ui::MsgBox(app(), "Please choose either 74 or 80 minute CDs", ui::vbInformation, "Brasswick 1.0");
        m_undoing = true;
        clicked.setValue(0);
        m_undoing = false;
        formatChosen.clear();
    }
    formatChosen = "ok";
}

void Form2::ctButton1_Click()
{
    if (formatChosen.empty()) {
        ui::MsgBox(app(), "Please select your CDR Format", ui::vbInformation, "Velmora Works technologies notification");
        return;
    }
    if (Check1.Value() == 1) {
        auto &builder = app().form<Form5>();
        builder.cdvalue(4400);
        builder.Show();
        Unload();
    }
    if (Check2.Value() == 1) {
        auto &builder = app().form<Form5>();
        builder.cdvalue(4800);
        builder.Show();
        Unload();
    }
}

std::optional<std::string> Form2::member(const std::string &name) const
{
    if (name == "formatChosen")
        return formatChosen;
    return std::nullopt;
}

} // namespace layout
