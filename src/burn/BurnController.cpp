// The main window's side of a burn: the Start command, the burn settings, the hand-over of each
// decoded track to the writer, and the writer's events that either start the next track or end
// the burn.
#include "Mainwriter.h"
#include "runtime/ResumeNext.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace shell {

namespace {
constexpr const char *notification = "Velmora Works Notification";
constexpr const char *mediaError = "Can\xC2\xB4t handle CD-recorder or unuseable media.";
constexpr const char *cantWrite = "ERROR - Can\xC2\xB4t write audio track(s) !";

burn::Mainwriter &writerWindow(ui::AppContext &app)
{
    return app.form<burn::Mainwriter>();
}
} // namespace

void frmMain::wireWriterEvents()
{
    if (!ACDWRITE1)
        return;
    ACDWRITE1->OnWriteProgress = componentEvent(std::function<void(int)>([this](int p) { ACDWRITE1_OnWriteProgress(p); }));
    ACDWRITE1->OnClosingDisc = componentEvent(std::function<void()>([this] { ACDWRITE1_OnClosingDisc(); }));
    ACDWRITE1->OnTrackDone = componentEvent(std::function<void(int)>([this](int) { ACDWRITE1_OnTrackDone(); }));
}

void frmMain::startBurn()
{
    // Both doors; a failing step is passed over and the rest goes on.
    rt::ResumeNext step;
    step.If([&] { return isPlaying == -1; },
            [&] {
                step([&] { MMWaveOutX1->Stop(); });
                step([&] { isPlaying = 0; });
                step([&] { ctButton12.setEnabled(true); });
                step([&] { ctButton11.setEnabled(false); });
            });
    bool stop = false;
    step.If([&] { return mainlist.ListCount() == 0; },
            [&] {
                step([&] { ui::MsgBox(app(), "Please create a layout, and retry!"); });
                stop = true;
            });
    if (stop)
        return;
    step.If([&] { return ACDWRITE1->DiscState() < 0; },
            [&] {
                step([&] { ui::MsgBox(app(), "Please insert a CD-R and retry!"); });
                stop = true;
            });
    if (stop)
        return;
    step([&] { writerWindow(app()); });

    // The session question. No to the open question stops; No to the close question doesn't.
    step.IfElse(
        [&] { return Check1.Value() == 0; },
        [&] {
            int answer = ui::vbYes;
            step([&] {
                answer = ui::MsgBox(app(),
                                    "You are about to burn a CD without closing your session!  A normal CD Player will not "
                                    "be able to read the data until your session is closed.  Would you like to continue?",
                                    ui::vbYesNo, notification);
            });
            if (answer == ui::vbNo)
                stop = true;
        },
        [&] {
            int answer = ui::vbNo;
            step([&] {
                answer = ui::MsgBox(app(),
                                    "You are about to close your session!  Doing this will disable the ability to record "
                                    "any furthur tracks to this CD.  Would you like to continue?",
                                    ui::vbYesNo, notification);
            });
            if (answer == ui::vbYes)
                closeSession = -1;
        });
    if (stop)
        return;

    step([&] {
        rt::Integer hide = 0;
        frmmainvis(hide);
    });
    step([&] { Hide(); });
    step.IfElse([&] { return closeSession != 0; },
                [&] { step([&] { writerWindow(app()).closeAtEnd = -1; }); },
                [&] {
                    step([&] { writerWindow(app()).closeAtEnd = 0; });
                    step([&] {
                        rt::Integer open = -1;
                        results2(open);
                    });
                });
    step([&] { writerWindow(app()).ctList1.Clear(); });
    step.If([&] { return mainlist.ListCount() == 0; },
            [&] {
                step([&] { ctButton13.setEnabled(false); });
                stop = true;
            });
    if (stop)
        return;
    for (int i = 0; i < filex.ListCount(); ++i)
        step([&] { writerWindow(app()).ctList1.AddItem(filex.List(i)); });
    step([&] { startme_upx(); });
    step([&] { writerWindow(app()).Show(); });
}

void frmMain::startme_upx()
{
    writerWindow(app()).IntroPrepare();
}

void frmMain::Disco()
{
    const std::string file = app().appPath() + "\\LocalJ\\velmora0.wav";
    if (ACDWRITE1->AddTrack(file, 0) != 0) {
        // Refused: the writer is reset and the burn stands still, without a word.
        ACDWRITE1->ClearTracks();
        writerInit();
        return;
    }
    mediaErrorText = mediaError;
    while (ACDWRITE1->DiscState() != 0)
        ui::MsgBox(app(), "Insert a CD-R now !");
    if (ACDWRITE1->WriteTracks() != 0)
        ui::MsgBox(app(), cantWrite);
}

void frmMain::letsburn(std::string &file)
{
    if (ACDWRITE1->AddTrack(file, 0) != 0) {
        ui::MsgBox(app(), file + " is not a valid MP3 File");
        ACDWRITE1->ClearTracks();
        writerInit();
        return;
    }
    mediaErrorText = mediaError;
    if (ACDWRITE1->WriteTracks() != 0)
        ui::MsgBox(app(), cantWrite);
}

void frmMain::results(rt::Integer &flag)
{
    if (flag == -1)
        lastTrackCloses = -1;
    else if (flag == 0)
        lastTrackCloses = 0;
}

void frmMain::results2(rt::Integer &flag)
{
    if (flag == -1)
        sessionStaysOpen = -1;
    else if (flag == 0)
        sessionStaysOpen = 0;
}

void frmMain::fuckoff()
{
    // The way back after a cancelled burn: the listening room stays hidden.
    if (ui::Window *w = app().findLoaded(burn::Mainwriter::formName))
        w->Unload();
    Show();
}

void frmMain::triggerhappy(std::string &text)
{
    if (text == "yes") {
        if (ui::Window *w = app().findLoaded(burn::Mainwriter::formName))
            w->Unload();
    }
}

void frmMain::Check1_Click()
{
    rt::ResumeNext step;
    step.IfElse([&] { return Check1.Value() == 0; },
                [&] {
                    step([&] { closeSession = 0; });
                    step([&] {
                        rt::Integer open = -1;
                        results2(open);
                    });
                },
                [&] { step([&] { closeSession = -1; }); });
}

void frmMain::Check2_Click()
{
    rt::ResumeNext step;
    step([&] { ACDWRITE1->setTestWrite(Check2.Value() != 0); });
}

void frmMain::ctCombo1_Click()
{
    // "12x" and "14x" have no branch: the speed stays where it was.
    rt::ResumeNext step;
    const std::string picked = ctCombo1.Text();
    static const std::pair<const char *, int> speeds[] = {{"1x", 1}, {"2x", 2}, {"4x", 4}, {"6x", 6}, {"8x", 8}, {"10x", 10}, {"16x", 16}};
    for (const auto &[text, speed] : speeds) {
        if (picked == text)
            step([&] { ACDWRITE1->setWriteSpeed(speed); });
    }
    step([&] { ctButton13.setEnabled(true); });
}

void frmMain::ACDWRITE1_OnWriteProgress(int percent)
{
    rt::ResumeNext step;
    step([&] { writerWindow(app()).ctMeter1.setValue(ctMeter1.Max()); });
    step([&] { writerWindow(app()).progressbar1.setValue(percent); });
    step([&] { writerWindow(app()).changelabel4("Creating Track:"); });
    step([&] { writerWindow(app()).addtooverall(); });
    // The way out is closed while the writer is at work.
    step([&] { writerWindow(app()).ctButton1.setEnabled(false); });
}

void frmMain::ACDWRITE1_OnClosingDisc()
{
    rt::ResumeNext step;
    step([&] {
        burn::Mainwriter &w = writerWindow(app());
        w.overallmeter.setValue(w.overallmeter.Max());
    });
    step([&] { Label1.setCaption(""); });
    step([&] { Label5.setCaption("Please wait, closing CD"); });
    step([&] { writerWindow(app()).flashText = "Closing CD- and improving audio performance-Please wait!"; });
}

void frmMain::ACDWRITE1_OnTrackDone()
{
    rt::ResumeNext step;
    bool finished = false;
    step.If([&] { return lastTrackCloses == -1; },
            [&] {
                finishBurn(true);
                finished = true;
            });
    if (finished)
        return;
    rt::Integer left = 0;
    step([&] { left = writerWindow(app()).tracksLeft; });
    step.If([&] { return left == 1 && sessionStaysOpen == -1; },
            [&] {
                finishBurn(false);
                finished = true;
            });
    if (finished)
        return;
    // The next track: the writer is reset, which also puts its speed and test mode back.
    step([&] { ACDWRITE1->ClearTracks(); });
    step([&] { writerInit(); });
    step([&] { writerWindow(app()).ctList2.RemoveItem(0); });
    step([&] { writerWindow(app()).IntroPrepare(); });
    step([&] { writerWindow(app()).changelabel4("Finished Track:"); });
    step([&] { writerWindow(app()).mp3labelflashwait.setEnabled(false); });
}

void frmMain::finishBurn(bool reset)
{
    rt::ResumeNext step;
    step([&] {
        if (ui::Window *w = app().findLoaded(burn::Mainwriter::formName))
            w->Unload();
    });
    step([&] { ui::MsgBox(app(), "Velmora Works has finished your CD", ui::vbInformation, "MP3 Brasswick Notification!"); });
    step([&] { app().formByName("Form6").Show(); });
    step([&] { app().listeningRoomShown = -1; });
    step([&] { Show(); });
    if (reset) {
        step([&] { ACDWRITE1->ClearTracks(); });
        step([&] { writerInit(); });
    }
    step([&] { donewait.setEnabled(false); });
}

} // namespace shell
