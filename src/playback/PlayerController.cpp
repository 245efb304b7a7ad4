// The main window's side of the player: the transport, the position slider, the time display,
// the listening room's doors and the orderly end. These are members of frmMain.
#include <memory>

#include "Form6.h"
#include "runtime/ResumeNext.h"
#include "services/shutdown.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace shell {

namespace {
constexpr const char *timePrefix = "X1 -^";
constexpr const char *stoppedTime = "X1 -^0:00.000";
} // namespace

void frmMain::wirePlayer()
{
    // giveamp3 -> MMRingBufferX1 -> eq -> MMWaveOutX1 -> MMConnectorX1, as the design stores it.
    rt::ResumeNext step;
    step([&] {
        giveamp3->setOutput(MMRingBufferX1.get());
        giveamp3->setMpegTrailingHeader(0);
    });
    step([&] {
        MMRingBufferX1->setInput(giveamp3.get());
        MMRingBufferX1->setOutput(eq.get());
    });
    step([&] {
        eq->setInput(MMRingBufferX1.get());
        eq->setOutput(MMWaveOutX1.get());
    });
    step([&] {
        MMWaveOutX1->setInput(eq.get());
        MMWaveOutX1->setOutput(MMConnectorX1.get());
        MMWaveOutX1->OnPlayStart = componentEvent(std::function<void()>([this] { MMWaveOutX1_OnPlayStart(); }));
        MMWaveOutX1->OnPlayStop = componentEvent(std::function<void()>([this] { MMWaveOutX1_OnPlayStop(); }));
    });
    step([&] { MMConnectorX1->setInput(MMWaveOutX1.get()); });

    ctButton12.Click = [this] { ctButton12_Click(); };
    ctButton11.Click = [this] { ctButton11_Click(); };
    slider1timer.Tick = [this] { slider1timer_Timer(); };
    MMHiTimerX1.Tick = [this] { MMHiTimerX1_Timer(); };
    Slider1.MouseDown = [this](int, int, int) { Slider1_ThumbTaken(); };
    Slider1.MouseUp = [this](int, int, int) { Slider1_ThumbReleased(); };
    // The equaliser's editor is the listening room with its band sliders.
    Command02.Click = [this] {
        rt::Integer show = -1;
        frmmainvis(show);
    };
    Command1876.Click = [this] { saveeq(); };
}

void frmMain::ctButton12_Click()
{
    // Play: the file of the row the list click chose, from where the decoder stands. A file that
    // can't be played says why and leaves the buttons as they were.
    try {
        giveamp3->setFileName(filex.List(filex.ListIndex()));
        MMWaveOutX1->Open();
        MMWaveOutX1->Start();
        ctButton11.setEnabled(true);
        ctButton12.setEnabled(false);
    } catch (const rt::RuntimeError &e) {
        ui::MsgBox(app(), e.description(), ui::vbExclamation);
    }
}

void frmMain::ctButton11_Click()
{
    MMWaveOutX1->Stop();
    isPlaying = 0;
    ctButton12.setEnabled(true);
    ctButton11.setEnabled(false);
}

void frmMain::MMWaveOutX1_OnPlayStart()
{
    rt::ResumeNext step;
    step([&] { isPlaying = -1; });
    step([&] { Slider1.setEnabled(true); });
    step([&] { slider1timer.setEnabled(true); });
    step([&] { MMHiTimerX1.setEnabled(true); });
}

void frmMain::MMWaveOutX1_OnPlayStop()
{
    rt::ResumeNext step;
    step([&] { isPlaying = 0; });
    step([&] { slider1timer.setEnabled(false); });
    step([&] { Slider1.setValue(0); });
    step([&] { MMHiTimerX1.setEnabled(false); });
    step([&] { Label6.setCaption(stoppedTime); });
    step([&] { app().form<playback::Form6>().Label1.setCaption(Label6.Caption()); });
}

void frmMain::slider1timer_Timer()
{
    // A position past the slider's range is passed over; the slider waits at its end.
    rt::ResumeNext step;
    step.If([&] { return sliderHeld == 0; }, [&] { step([&] { Slider1.setValue(giveamp3->Position()); }); });
}

void frmMain::MMHiTimerX1_Timer()
{
    // One format call and two label writes; a failing tick does nothing.
    try {
        Label6.setCaption(timePrefix + Helper.FormatPosition(giveamp3->Position(), MMWaveOutX1->WaveFormatHandle(), true));
        app().form<playback::Form6>().Label1.setCaption(Label6.Caption());
    } catch (const rt::RuntimeError &) {
    }
}

void frmMain::Slider1_ThumbTaken()
{
    try {
        sliderHeld = -1;
    } catch (const rt::RuntimeError &) {
    }
}

void frmMain::Slider1_ThumbReleased()
{
    try {
        giveamp3->setPosition(Slider1.Value());
        sliderHeld = 0;
    } catch (const rt::RuntimeError &) {
    }
}

void frmMain::frmmainvis(rt::Integer &flag)
{
    if (flag == -1) {
        app().listeningRoomShown = -1;
        app().form<playback::Form6>().Show();
    } else if (flag == 0) {
        app().listeningRoomShown = 0;
        app().form<playback::Form6>().Hide();
    }
}

void frmMain::frmmainheight(rt::Integer &height)
{
    auto &room = app().form<playback::Form6>();
    if (height == playback::Form6::designHeight)
        room.setGeometry(room.Left(), room.Top(), room.Width(), playback::Form6::foldedHeight);
    else if (height == playback::Form6::foldedHeight)
        room.setGeometry(room.Left(), room.Top(), room.Width(), playback::Form6::designHeight);
}

void frmMain::saveeq()
{
    eq->SaveToIni(eqIniPath, "EqData");
}

void frmMain::openListeningRoom()
{
    rt::ResumeNext step;
    step.If([&] { return eqFirstOpen == "warn"; },
            [&] {
                // From now on the room opens at every start.
                step([&] { reg1->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, settingsKey); });
                step([&] { reg1->WriteValue("ShowEQonStartup", "yes", platform::SettingsStore::REG_SZ); });
                step([&] { reg1->CloseKey(); });
                step([&] { app().listeningRoomLeft = 1000; });
                step([&] { app().listeningRoomTop = 2000; });
                step.If([&] { return app().listeningRoomShown == 0; },
                        [&] { step([&] { app().form<playback::Form6>().LoadToolbar(*this); }); });
                step([&] { eqFirstOpen.clear(); });
                step([&] { eqState = "changed"; });
            });
    step([&] { app().form<playback::Form6>().Show(); });
    step([&] { app().listeningRoomShown = -1; });
}

void frmMain::Shutoff()
{
    if (!m_shutdown)
        m_shutdown = std::make_unique<services::shutdown>(app());
    m_shutdown->Shutoff();
}

} // namespace shell
