#include "ISRCDlg.h"

#include "ISRC.h"
#include "MainForm.h"
#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "ui/AppContext.h"

namespace extract {

ISRCDlg::ISRCDlg(ui::AppContext &app)
    : Window(app, formName)
    , Timer1(*this, "Timer1", 500, false)
    , btnCancel(*this, "btnCancel")
    , Gauge(*this, "Gauge", ui::Meter::Style::ProgressBar)
    , Label1(*this, "Label1")
{
    setCaption("Read ISRC-Code");
    setGeometry(0, 0, 4800, 1800);
    centreOnScreen();
    Label1.setCaption("Reading Track 1");
    Label1.setGeometry(120, 120, 4440, 255);
    Gauge.setGeometry(120, 480, 4440, 255);
    btnCancel.setCaption("Cancel");
    btnCancel.setGeometry(3240, 900, 1320, 375);
    Timer1.Tick = [this] { Timer1_Timer(); };
    btnCancel.Click = [this] { Cancelled = true; };
}

void ISRCDlg::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
}

void ISRCDlg::Form_Activate()
{
    Cancelled = false;
    Timer1.setEnabled(true);
}

bool ISRCDlg::Form_QueryUnload()
{
    Cancelled = true;
    return false;
}

void ISRCDlg::Timer1_Timer()
{
    // Clicks get through while it reads: a close of the window meanwhile must not destroy it
    // under the loop, so the reading counts as a modal wait.
    app().runModal([this] { readCodes(); });
}

void ISRCDlg::readCodes()
{
    rt::ResumeNext step;
    MainForm &m = static_cast<MainForm &>(app().formByName(MainForm::formName));
    ISRC &codes = app().module<ISRC>();
    Timer1.setEnabled(false);
    step([&] { Gauge.setValue(0); });
    Label1.setCaption("Reading Track 1");
    app().loop().doEvents();
    int i = 0;
    for (;;) {
        // A count that can't be had ends the walk rather than spinning on.
        bool more = false;
        try {
            more = i < m.CDReader->TracksCount() && !Cancelled;
        } catch (const rt::RuntimeError &) {
        }
        if (!more)
            break;
        step([&] { codes.code(i) = m.CDReader->ReadISRC(i + 1); });
        i = i + 1;
        step([&] { Gauge.setValue(rt::CLng(i * 100.0 / m.CDReader->TracksCount()).value()); });
        Label1.setCaption("Reading Track " + rt::Str(i + 1));
        app().loop().doEvents();
    }
    Hide();
    Label1.setCaption("Reading Track 1");
    step([&] { Gauge.setValue(0); });
}

std::optional<std::string> ISRCDlg::member(const std::string &name) const
{
    if (name == "Cancelled")
        return std::string(Cancelled ? "-1" : "0");
    return Window::member(name);
}

} // namespace extract
