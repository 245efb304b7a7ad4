#include "connect.h"

#include "AddonServer.h"
#include "Catalogue.h"
#include "Plugins.h"
#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace addons {

connect::connect(ui::AppContext &app)
    : Window(app, formName)
    , Label2(*this, "Label2")
    , Label1(*this, "Label1")
    , progressbar1(*this, "progressbar1", ui::Meter::Style::ProgressBar)
    , Text1(*this, "Text1")
    , List1(*this, "List1")
    , Timer1(*this, "Timer1", 2000, false)
    , Timer2(*this, "Timer2", 2000, false)
    , Timer3(*this, "Timer3", 10, true)
    , ickHTTP1(app.components().httpDownload)
{
    setCaption("Connecting to Online Data Server");
    layOut();

    Timer1.Tick = [this] { Timer1_Timer(); };
    Timer2.Tick = [this] { Timer2_Timer(); };
    Timer3.Tick = [this] { Timer3_Timer(); };
    if (ickHTTP1) {
        ickHTTP1->OnConnect = componentEvent(std::function<void()>([this] { ickHTTP1_Connect(); }));
        ickHTTP1->OnStatus = componentEvent(
            std::function<void(int32_t, const std::string &)>([this](int32_t code, const std::string &text) { ickHTTP1_Status(code, text); }));
        ickHTTP1->OnEndTransfer = componentEvent(std::function<void()>([this] { ickHTTP1_EndTransfer(); }));
        // Progress is reported and not shown: the bar keeps its own time.
        ickHTTP1->OnProgress = [](int32_t, int32_t) {};
    }
}

void connect::layOut()
{
    setGeometry(0, 0, 5520, 2460);
    centreOnScreen();
    Label2.setCaption("Session Information...");
    Label2.setGeometry(120, 120, 5160, 300);
    Label1.setCaption("Connecting...");
    Label1.setGeometry(120, 540, 5160, 300);
    progressbar1.setMin(0);
    progressbar1.setMax(100);
    progressbar1.setGeometry(120, 960, 5160, 300);
    Text1.setLocked(true);
    Text1.setGeometry(120, 1440, 5160, 330);
    List1.setVisible(false);
    List1.setGeometry(120, 1440, 1200, 300);
}

void connect::Form_Load()
{
    m_server = addonServer(app());
    // A failure anywhere here ends the step quietly; the bar carries on regardless.
    try {
        setTopmost(true);
        m_waitCount = 300;
        ickHTTP1->setURL(m_server + "/plugins.dat");
        ickHTTP1->setDestFile(app().appPath() + "/data.dat");
        ickHTTP1->setAction(1);
    } catch (const rt::RuntimeError &) {
    }
}

void connect::Form_Unload()
{
    // A transfer still running is cut off with the window; data.dat stays as it was.
    if (ickHTTP1)
        ickHTTP1->Cancel();
}

void connect::ickHTTP1_Connect()
{
    try {
        Label1.setCaption("Query initiated");
    } catch (const rt::RuntimeError &) {
    }
}

void connect::ickHTTP1_Status(int32_t code, const std::string &text)
{
    try {
        Text1.setText(std::to_string(code) + text);
    } catch (const rt::RuntimeError &) {
    }
}

// No trap: a data.dat that can't be read is the run-time error report.
void connect::ickHTTP1_EndTransfer()
{
    progressbar1.setValue(0);
    catalogueParser();
    Label1.setCaption("Please wait for engine query....");
}

STRINGOPS &connect::strings()
{
    if (!m_strings)
        m_strings = std::make_unique<STRINGOPS>();
    return *m_strings;
}

void connect::catalogueParser()
{
    auto &plugins = app().form<Plugins>();
    bool cleared = false;
    readCatalogueLines(app().appPath() + "\\data.dat", [&](const std::string &line) {
        if (!cleared) {
            List1.Clear();
            cleared = true;
        }
        ++m_lineCount;
        const CatalogueLine meaning = classifyCatalogueLine(line, strings());
        if (meaning.isRow) {
            plugins.mainlist.AddItem(line);
            List1.AddItem(line);
            return;
        }
        if (meaning.downloadAddress) {
            plugins.Text1.setText(*meaning.downloadAddress);
            plugins.ctButton3.setVisible(true);
        }
        if (meaning.infoAddress) {
            plugins.Text2.setText(*meaning.infoAddress);
            plugins.ctButton1.setVisible(true);
        }
        if (meaning.fileSize)
            plugins.Text3.setText(*meaning.fileSize);
    });
    if (!cleared)
        List1.Clear();
    firstRowTests();
}

// Whole-row comparisons against rows that hold ";" by the way they got here: as the window has
// always done them.
void connect::firstRowTests()
{
    if (List1.List(0) == "Connection OK")
        Timer1.setEnabled(true);
    if (List1.List(0) == "Update Needed") {
        ui::MsgBox(app(), "You need to update your version of MP3 Sleevecraft- goto " + m_server + "/updates/", ui::vbCritical,
                   "Velmora Works Notification");
        Unload();
    }
}

void connect::Timer1_Timer()
{
    Label1.setCaption("Setting up data servers");
    Timer2.setEnabled(true);
    Timer1.setEnabled(false);
}

void connect::Timer2_Timer()
{
    Timer2.setEnabled(false);
    app().form<Plugins>().Show();
    Unload();
}

void connect::Timer3_Timer()
{
    rt::ResumeNext step;
    step([&] {
        if (progressbar1.Value() == 100)
            Timer2.setEnabled(true);
        else
            progressbar1.setValue(progressbar1.Value() + 1);
    });
}

} // namespace addons
