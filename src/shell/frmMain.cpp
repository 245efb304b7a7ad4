#include "frmMain.h"

#include "convert/mp3towav.h"
#include "services/shutdown.h"
#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "runtime/TextFile.h"
#include "ui/AppContext.h"
#include "ui/CommonDialog.h"
#include "ui/MessageBox.h"

namespace shell {

namespace {
// A control of another window by name; one that isn't there is error 424.
ui::Control &controlOf(ui::Window &w, const std::string &name, int index)
{
    ui::Control *c = w.control(name, index);
    if (!c)
        rt::raise(rt::ErrObjectRequired);
    return *c;
}

// The output's call-back mode as the design holds it: events come on the component's own thread.
constexpr int cmThread = 1;
} // namespace

frmMain::frmMain(ui::AppContext &app)
    : Window(app, formName)
    , mndigitaloptions(*this, "mndigitaloptions", "XOptions")
    , mnuscan(*this, "mnuscan", "DX SCAN", &mndigitaloptions)
    , mnBuildSkin(*this, "mnBuildSkin", "CD Burn", &mndigitaloptions)
    , mnSkin1(*this, "mnSkin1", "OverDrive System", &mnBuildSkin)
    , mnSkin2(*this, "mnSkin2", "Double Lock", &mnBuildSkin)
    , mnSep10(*this, "mnSep10", "-", &mnBuildSkin)
    , mnSkin3(*this, "mnSkin3", "Remove Hiss and Pops", &mnBuildSkin)
    , mnubatchconvert(*this, "mnubatchconvert", "Batch Convert", &mndigitaloptions)
    , mnucdcopy(*this, "mnucdcopy", "Digital CD Copy", &mndigitaloptions)
    , mnuexit(*this, "mnuexit", "Exit", &mndigitaloptions)
    , mnuhelp(*this, "mnuhelp", "Help")
    , mnuhelponline(*this, "mnuhelponline", "Online Help", &mnuhelp)
    , mnuxinfo(*this, "mnuxinfo", "XInfo")
    , mnAbout(*this, "mnAbout", "About", &mnuxinfo)
    , mnuinfo(*this, "mnuinfo", "Contacting Velmora Works", &mnuxinfo)
    , ctToolBar1(*this, "ctToolBar1")
    , lblDevices(*this, "lblDevices")
    , List1(*this, "List1")
    , lblWriter(*this, "lblWriter")
    , Text1(*this, "Text1")
    , lblDriverType(*this, "lblDriverType")
    , Text2(*this, "Text2")
    , ctButton8(*this, "ctButton8")
    , cdlist(*this, "cdlist")
    , Label1(*this, "Label1")
    , Label5(*this, "Label5")
    , ctCombo1(*this, "ctCombo1")
    , ctCombo2(*this, "ctCombo2")
    , Check1(*this, "Check1")
    , Check2(*this, "Check2")
    , Check3(*this, "Check3")
    , Check4(*this, "Check4")
    , Check5(*this, "Check5")
    , Check6(*this, "Check6")
    , Check7(*this, "Check7")
    , mainlist(*this, "mainlist")
    , filex(*this, "filex")
    , time(*this, "time")
    , ctButton2(*this, "ctButton2")
    , ctButton3(*this, "ctButton3")
    , ctButton9(*this, "ctButton9")
    , ctButton10(*this, "ctButton10")
    , ctButton5(*this, "ctButton5")
    , ctButton1(*this, "ctButton1")
    , ctButton4(*this, "ctButton4")
    , ctButton12(*this, "ctButton12")
    , ctButton11(*this, "ctButton11")
    , ctButton14(*this, "ctButton14")
    , Slider1(*this, "Slider1", ui::Meter::Style::Slider)
    , Label6(*this, "Label6")
    , Spectrumx1(*this, "Spectrumx1")
    , Command02(*this, "Command02")
    , Command1876(*this, "Command1876")
    , playformat(*this, "playformat")
    , playtime(*this, "playtime")
    , playfile(*this, "playfile")
    , ctButton13(*this, "ctButton13")
    , Label3(*this, "Label3")
    , lblMemory(*this, "lblMemory")
    , ctMeter1(*this, "ctMeter1")
    , Picture4(*this, "Picture4")
    , StatusBar1(*this, "StatusBar1", 1)
    , Timer2(*this, "Timer2", 10, true)
    , Timer3(*this, "Timer3", 1500, false)
    , slider1timer(*this, "slider1timer", 10, false)
    , MMHiTimerX1(*this, "MMHiTimerX1", 10, false)
    , waiter(*this, "waiter", 5000, false)
    , donewait(*this, "donewait", 3000, false)
    , Timer1(*this, "Timer1", 500, false)
    , reg1(app.components().settingsStore)
    , SysOCX1(app.components().systemInfo)
    , ACDWRITE1(app.components().writerEngine)
    , MMWaveOutX1(app.components().waveOut)
    , MMRingBufferX1(app.components().ringBuffer)
    , eq(app.components().equalizer)
    , MMConnectorX1(app.components().connector)
    , giveamp3(app.components().mp3Decoder)
{
    setCaption("MP3 Brasswick 1.3- Studio Edition");
    layOut();
    applyComponentDesign();

    Timer2.Tick = [this] { Timer2_Timer(); };
    Timer3.Tick = [this] { Timer3_Timer(); };
    cdlist.Click = [this] { cdlist_Click(); };
    List1.DblClick = [this] { List1_DblClick(); };
    ctButton8.Click = [this] { ctButton8_Click(); };
    ctButton13.Click = [this] { startBurn(); };
    Check1.Click = [this] { Check1_Click(); };
    Check2.Click = [this] { Check2_Click(); };
    ctCombo1.Click = [this] { ctCombo1_Click(); };
    wireWriterEvents();

    ctToolBar1.ButtonClick = [this](int index) { ctToolBar1_ButtonClick(index); };
    ctButton10.Click = [this] { ctButton10_Click(); };
    ctButton2.Click = [this] { moveRow(-1); };
    ctButton3.Click = [this] { moveRow(+1); };
    ctButton9.Click = [this] { ctButton9_Click(); };
    mainlist.Click = [this] { mainlist_Click(); };
    mainlist.RowsChanged = [this] { mainlist_RowsChanged(); };
    ctButton1.Click = [this] { ctButton1_Click(); };
    mnuscan.Click = [this] { toggleOff(mnuscan); };
    mnSkin2.Click = [this] { toggleOff(mnSkin2); };
    mnuexit.Click = [this] { Shutoff(); };
    mnuhelponline.Click = [this] { showWindow("Form4"); };
    mnAbout.Click = [this] { showWindow("about"); };
    mnuinfo.Click = [this] { showWindow("Form1"); };
    mnubatchconvert.Click = [this] { showWindow("batcher"); };
    mnucdcopy.Click = [this] { showWindow("MainForm"); };
    ctButton5.Click = [this] { ctButton5_Click(); };

    // Hover texts in the first panel of the status line.
    ctButton1.MouseMove = [this](int, int, int) { hover("Save as WinAmp Playlist"); };
    ctButton4.MouseMove = [this](int, int, int) { hover("Enable MP3 Directory watch"); };
    ctButton5.MouseMove = [this](int, int, int) { hover("MP3 to Wav"); };
    ctToolBar1.MouseMove = [this](int, int, int) { hover("Session Open"); };
    mainlist.MouseMove = [this](int, int, int) { hover("Session Open"); };
    Picture4.MouseMove = [this](int, int, int) { hover("Session Open"); };
    MouseMove = [this](int, int, int) { hover("Session Open"); };
}

void frmMain::layOut()
{
    // Positions in twips; the window is about 720 by 600 pixels.
    setGeometry(0, 0, 10800, 10320);
    centreOnScreen();

    const char *toolCaptions[] = {"New", "", "Burn", "", "Settings", "", "Cover", "", "DVD", "", "Add-ons", "", "Listening Room"};
    const char *toolTips[] = {"New CD layout", "", "Start burning", "", "Software settings", "", "Cover designer", "",
                              "DVD", "", "Add-on catalogue", "", "Listening room"};
    for (int i = 0; i < 13; ++i)
        ctToolBar1.addItem({toolCaptions[i], toolTips[i], {}, i % 2 == 1});
    ctToolBar1.setGeometry(0, 0, 10800, 540);

    lblDevices.setCaption("Available CDR-Hardware");
    lblDevices.setGeometry(120, 660, 3300, 255);
    List1.setGeometry(120, 915, 3300, 900);
    List1.setEnabled(false);
    lblWriter.setCaption("Selected EAC-Hardware");
    lblWriter.setGeometry(120, 1890, 3300, 255);
    Text1.setText("automatic selected CD writer");
    Text1.setGeometry(120, 2145, 3300, 330);
    Text1.setEnabled(false);
    lblDriverType.setCaption("Driver type");
    lblDriverType.setGeometry(120, 2580, 1000, 255);
    Text2.setGeometry(1140, 2535, 780, 330);
    ctButton8.setCaption("CD-Adapt");
    ctButton8.setGeometry(2040, 2520, 1380, 360);
    cdlist.setText("Available CD Drivers");
    cdlist.setGeometry(120, 3000, 3300, 330);
    Label1.setGeometry(3600, 7140, 5220, 270);
    Label5.setGeometry(3600, 7440, 5220, 270);

    ctCombo1.setText("Burn SpeedX");
    ctCombo1.setGeometry(120, 3480, 1590, 330);
    ctCombo2.setText("Performance()");
    ctCombo2.setGeometry(1830, 3480, 1590, 330);
    ui::CheckBox *checks[] = {&Check1, &Check2, &Check3, &Check4, &Check5, &Check6, &Check7};
    const char *checkCaptions[] = {"Close session", "Test CD", "Eject on finish", "Sample Clean", "Noise Redux", "OverFilter", "Double Scan"};
    for (int i = 0; i < 7; ++i) {
        checks[i]->setCaption(checkCaptions[i]);
        checks[i]->setGeometry(i < 3 ? 120 : 1830, 3930 + (i < 3 ? i : i - 3) * 330, 1590, 300);
    }
    Check1.setToolTipText("after writing track, disc will be closed");
    Check2.setToolTipText("no writing");
    Check3.setToolTipText("eject disc after writing tracks");

    mainlist.setColumnHeaders({"CD Burn List", "Track Time"});
    mainlist.setGeometry(3600, 660, 7080, 4500);
    filex.setVisible(false);
    time.setVisible(false);

    struct Placed {
        ui::Button *button;
        const char *caption;
        int left, width;
    };
    const Placed row[] = {{&ctButton2, "Up", 3600, 780},          {&ctButton3, "Down", 4440, 780},
                          {&ctButton9, "Direct Del", 5280, 1140}, {&ctButton10, "Add/Rem", 6480, 1140},
                          {&ctButton5, "MP3 to Wav", 7680, 1260}, {&ctButton1, "M3U", 9000, 780},
                          {&ctButton4, "Watch", 9840, 840}};
    for (const auto &p : row) {
        p.button->setCaption(p.caption);
        p.button->setGeometry(p.left, 5280, p.width, 390);
    }
    ctButton1.setToolTipText("Save as WinAmp Playlist");
    ctButton4.setToolTipText("Enable MP3 Directory watch");

    ctButton12.setCaption("Play");
    ctButton12.setGeometry(3600, 5820, 900, 390);
    ctButton11.setCaption("Stop");
    ctButton11.setGeometry(4560, 5820, 900, 390);
    ctButton14.setCaption("Digital Clean");
    ctButton14.setGeometry(5520, 5820, 1380, 390);
    Label6.setCaption("X1 -^0:00.000");
    Label6.setGeometry(7020, 5880, 1800, 300);
    Slider1.setGeometry(3600, 6330, 5220, 360);
    // The position slider's design range, in the player's unit (milliseconds): ten minutes.
    Slider1.setMax(600000);
    Spectrumx1.setGeometry(3600, 7800, 5220, 1260);
    Spectrumx1.setDecay(7);
    Spectrumx1.setFrequencyScale(4);
    Spectrumx1.setPeakDelay(7);
    Spectrumx1.setPeakSpeed(7);
    Spectrumx1.setSpace(4);
    Spectrumx1.setPoint1(70);
    Spectrumx1.setPoint2(80);
    Command02.setCaption("EQ");
    Command02.setGeometry(8940, 7800, 840, 360);
    Command1876.setCaption("Save");
    Command1876.setGeometry(9840, 7800, 840, 360);
    for (ui::ListBox *l : {&playformat, &playtime, &playfile})
        l->setVisible(false);

    ctButton13.setCaption("Flash Burn>>");
    ctButton13.setGeometry(8940, 5820, 1740, 870);

    Label3.setGeometry(3600, 6780, 5220, 300);
    lblMemory.setCaption("Memory in use");
    // No wider than its column: the second column of check boxes reaches down beside it.
    lblMemory.setGeometry(120, 5040, 1590, 255);
    ctMeter1.setMin(0);
    ctMeter1.setMax(100);
    ctMeter1.setValue(100);
    ctMeter1.setGeometry(120, 5295, 3300, 300);
    Picture4.setPicture(app().appPath() + "/splash.png");
    Picture4.setGeometry(120, 5760, 3300, 1860);

    StatusBar1.setPanel(1, "Session Open");
    StatusBar1.setGeometry(0, 9660, 10800, 330);
}

void frmMain::applyComponentDesign()
{
    // The design values of the player chain; stored settings replace them at load.
    rt::ResumeNext step;
    step([&] { MMWaveOutX1->setBufferSize(4048); });
    step([&] { MMWaveOutX1->setCallBackMode(cmThread); });
    step([&] { MMWaveOutX1->setNumBuffers(100); });
    step([&] { MMConnectorX1->setEnterIdle(false); });
    step([&] { MMConnectorX1->setSpectrum(&Spectrumx1); });
    step([&] { wirePlayer(); });
}

void frmMain::Form_Load()
{
    // Every failing action of the load step is passed over, and the rest goes on.
    rt::ResumeNext step;
    std::string showEq;
    step([&] { reg1->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, settingsKey); });
    step([&] { showEq = reg1->ReadValue("ShowEQonStartup"); });
    step([&] { reg1->CloseKey(); });

    step.IfElse([&] { return showEq != "yes"; },
                [&] {
                    step([&] { eqState = "changed"; });
                    step([&] { eqFirstOpen = "warn"; });
                },
                [&] {
                    // The listening room is set up at once, beside the main window.
                    step([&] { app().listeningRoomLeft = 1000; });
                    step([&] { app().listeningRoomTop = 2000; });
                    step.IfElse([&] { return app().listeningRoomShown != 0; },
                                [&] { step([&] { app().formByName("Form6").callRoutine("UnloadToolbar", {}); }); },
                                [&] { step([&] { app().formByName("Form6").callRoutine("LoadToolbar", {formName}); }); });
                });

    step([&] { ctCombo2.setText("Performance()"); });
    step([&] { lastTrackCloses = 0; });
    for (ui::CheckBox *c : {&Check1, &Check2, &Check3, &Check4, &Check5, &Check6, &Check7})
        step([&] { c->setEnabled(false); });
    for (ui::Control *c : std::initializer_list<ui::Control *>{&ctButton13, &ctButton10, &ctButton9, &ctCombo1, &ctCombo2,
                                                              &ctButton11, &ctButton12, &ctButton14})
        step([&] { c->setEnabled(false); });
    for (const char *speed : {"1x", "2x", "4x", "6x", "8x", "10x", "12x", "14x", "16x"})
        step([&] { ctCombo1.AddItem(speed); });
    for (const char *share : {"10%", "20%", "30%", "40%", "50%(P733)", "60%(P733+)", "70%(Warning)"})
        step([&] { ctCombo2.AddItem(share); });

    step([&] { fillDriverList(); });

    bandEdges = {0, 500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500, 10500, 11500, 12500, 13500, 14500};
    step([&] { eqIniPath = app().appPath() + "\\Eq.ini"; });
    for (int i = 1; i <= 15; ++i)
        step([&] { eq->AddBand(bandEdges[i - 1], bandEdges[i], 0.0); });
    step([&] { eq->LoadFromIni(eqIniPath, "EqData"); });
    // The room's band sliders show the gains; band 15 doesn't exist, and that round fails.
    for (int i = 0; i <= 15; ++i) {
        step([&] {
            auto &slider = dynamic_cast<ui::Meter &>(controlOf(app().formByName("Form6"), "GSlider8", i));
            slider.setValue(rt::CInt(eq->BandGain(i)).value());
        });
    }
    // The level meters receive what the player plays, whether or not the room is shown.
    step([&] {
        ui::Window &room = app().formByName("Form6");
        MMConnectorX1->setLevels(&controlOf(room, "Level", 0), &controlOf(room, "Level", 1));
    });

    step([&] { applyStoredSettings(); });
    step([&] { isPlaying = 0; });
    step([&] { writerInit(); });
}

void frmMain::fillDriverList()
{
    rt::ResumeNext step;
    rt::TextFile file;
    rt::Integer count = 0;
    step([&] { file.open(app().appPath() + "/LocalJ/drivers.cdx", rt::TextFile::Mode::Input); });
    step([&] { count = rt::CInt(file.lineInput()); });
    // A count beyond the lines there are fails once per missing row; the rows read stay.
    for (int i = 1; i <= count.value(); ++i)
        step([&] { cdlist.AddItem(file.lineInput()); });
    step([&] { file.close(); });
}

void frmMain::applyStoredSettings()
{
    rt::ResumeNext step;
    step([&] { reg1->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, settingsKey); });
    auto asLong = [&](const char *name) { return rt::CLng(reg1->ReadValue(name)).value(); };
    auto asTruth = [&](const char *name) { return rt::CBool(reg1->ReadValue(name)); };
    auto asText = [&](const char *name) { return reg1->ReadValue(name); };

    step([&] { MMWaveOutX1->setBufferSize(asLong("BufferSize")); });
    step([&] { MMWaveOutX1->setCallBackMode(asLong("CallBackMode")); });
    step([&] { MMWaveOutX1->setLooping(asTruth("looping")); });
    step([&] { MMWaveOutX1->setNumBuffers(asLong("NumBuffers")); });
    step([&] { MMWaveOutX1->setTimeFormat(asLong("TimeFormat")); });
    step([&] { MMRingBufferX1->setBufferSize(asLong("RingBufferSize")); });
    step([&] { MMRingBufferX1->setLoopIfEmpty(asTruth("RingLoopIfEmpty")); });
    step([&] { MMRingBufferX1->setQueMode(asLong("RingQueMode")); });
    step([&] { MMRingBufferX1->setWaitIfFull(asTruth("WaitifFull")); });
    step([&] { eq->setChannel(asLong("EQChannel")); });
    step([&] { eq->setFFTLength(asLong("FFTLength")); });
    step([&] { eq->setSampleRate(asLong("SampleRate")); });
    step([&] { eq->setWindow(asLong("Window")); });
    step([&] { MMConnectorX1->setAutoConvert(asTruth("SAutoConvert")); });
    step([&] { MMConnectorX1->setAutoTrigger(asTruth("SAutoTrigger")); });
    step([&] { MMConnectorX1->setEnterIdle(asTruth("SEnterIdle")); });
    step([&] { MMConnectorX1->setRealTime(asTruth("SRealTime")); });
    step([&] { MMConnectorX1->setRefreshOnStop(asTruth("SRefreshonStop")); });
    step([&] { MMConnectorX1->setSpeed(asLong("SSpeed")); });
    step([&] { MMConnectorX1->setTriggerLevel(asLong("STriggerLevel")); });
    step([&] { MMConnectorX1->setTriggerMode(asLong("STriggerMode")); });
    step([&] { giveamp3->setDecryptKey(asLong("ADecryptKey")); });
    step([&] { giveamp3->setPanning(asLong("APanning")); });
    step([&] { giveamp3->setVolume(asLong("AVolume")); });
    step([&] { ACDWRITE1->setFifoBufferCount(asText("FifoBufferCount")); });
    step([&] { ACDWRITE1->setPreGapSize(asText("PreGapSize")); });
    step([&] { ACDWRITE1->setSectorsPerBuffer(asText("SectorsPerBuffer")); });
    step([&] { ACDWRITE1->setSwapBytes(asText("SwapBytes")); });
    // The key stays open: nothing closes it after these reads.
}

frmMain::~frmMain() = default;

void frmMain::Form_Unload()
{
    // Closing the main window ends the program in order; a failure ends that quietly.
    try {
        Shutoff();
    } catch (const rt::RuntimeError &) {
    }
}

void frmMain::Timer2_Timer()
{
    // The memory meter sweeps down once and stops at the share of memory in use.
    ctMeter1.setValue(ctMeter1.Value() - 1);
    if (ctMeter1.Value() == SysOCX1->memoryusedtotal())
        Timer2.setEnabled(false);
}

void frmMain::Timer3_Timer()
{
    Timer3.setEnabled(false);
}

void frmMain::ctToolBar1_ButtonClick(int index)
{
    // The toolbar passes over whatever fails, like the Start command.
    rt::ResumeNext step;
    switch (index) {
    case 1:
        newLayout();
        break;
    case 3:
        startBurn();
        break;
    case 5:
        step([&] { app().formByName("Form7").Show(); });
        break;
    case 7:
        step([&] { app().formByName("CoverDesigner").Show(); });
        break;
    case 9:
        ui::MsgBox(app(), "Error loading DVD driver velmoradvd.dll - Please make sure that you DVD is connected properly",
                   ui::vbInformation, "Velmora Works - Notification");
        break;
    case 11:
        step([&] { app().formByName("connect").Show(); });
        break;
    case 13:
        step([&] { openListeningRoom(); });
        break;
    default:
        break;
    }
}

void frmMain::newLayout()
{
    rt::ResumeNext step;
    auto unloadBuilder = [&] {
        if (ui::Window *builder = app().findLoaded("Form5"))
            builder->Unload();
    };
    if (mainlist.ListCount() == 0) {
        step(unloadBuilder);
        step([&] { app().formByName("Form2").Show(); });
        return;
    }
    const int answer = ui::MsgBox(app(),
                                  "You currently have a list loaded!  This action will erase your current list. Would you "
                                  "like to continue?",
                                  ui::vbYesNo, "Velmora Works Notification");
    if (answer == ui::vbNo)
        return;
    step(unloadBuilder);
    // filex and time keep their rows until the next hand-over clears them.
    step([&] { mainlist.Clear(); });
    step([&] { app().formByName("Form2").Show(); });
}

void frmMain::ctButton10_Click()
{
    // The builder's layout is the master: the visible list is rebuilt at the next hand-over.
    // The builder is reached by name: the layout depends on this window, not the other way.
    ui::Window &builder = app().formByName("Form5");
    builder.callRoutine("bringmeforward", {});
    mainlist.Clear();
    if (auto *handOver = builder.control("ctButton4"))
        handOver->setProperty("Caption", {}, "Apply Changes");
}

void frmMain::moveRow(int by)
{
    if (mainlist.ListCount() <= 1)
        return;
    selectedRow += by;
    const int r = selectedRowAlso.value();
    if (!mainlist.Selected(r))
        return;
    const int other = r + by;
    ui::ListBox *lists[] = {&mainlist, &filex, &time};
    std::string rowText[3], otherText[3];
    for (int l = 0; l < 3; ++l) {
        rowText[l] = lists[l]->List(r);
        otherText[l] = lists[l]->List(other);
    }
    // A read outside the list gives the empty text: the first row can't go up, the last not down.
    if (otherText[0].empty())
        return;
    for (int l = 0; l < 3; ++l) {
        lists[l]->RemoveItem(other);
        lists[l]->AddItem(rowText[l], other);
        lists[l]->RemoveItem(r);
        lists[l]->AddItem(otherText[l], r);
    }
    for (ui::ListBox *list : lists)
        list->setSelected(other, true);
    selectedRowAlso = other;
}

void frmMain::ctButton9_Click()
{
    // No current row passes -1 on to the lists, and their refusal is not caught.
    if (mainlist.ListCount() > 0) {
        const int i = mainlist.ListIndex();
        filex.setSelected(i, true);
        filex.RemoveItem(i);
        time.RemoveItem(i);
        mainlist.RemoveItem(i);
    }
}

void frmMain::mainlist_Click()
{
    const int i = mainlist.ListIndex();
    selectedRow = i;
    selectedRowAlso = i;
    if (isPlaying == 0)
        ctButton12.setEnabled(true);
    filex.setSelected(i, true);
    time.setSelected(i, true);
}

void frmMain::mainlist_RowsChanged()
{
    if (mainlist.ListCount() == 0)
        ctButton9.setEnabled(false);
}

void frmMain::ctButton1_Click()
{
    if (mainlist.ListCount() == 0)
        return;
    ui::CommonDialog cmnDialog(app());
    cmnDialog.Flags = 4;
    cmnDialog.DialogTitle = "Save List as WINAMP Playlist";
    cmnDialog.Filter = "MP3 PlayLists|*.M3U";
    // Cancel raises no error here: it hands on the empty name, and that fails with the message.
    cmnDialog.ShowSave();
    pOutputPlayList(cmnDialog.FileName);
}

void frmMain::ctButton5_Click()
{
    const int row = mainlist.ListIndex();
    if (mainlist.ListCount() == 0 || mainlist.List(row).empty())
        return;
    auto &converter = app().form<convert::mp3towav>();
    converter.SourcePath = filex.List(row);
    converter.DisplayName = mainlist.List(row);
    converter.Show();
    converter.launch();
}

void frmMain::pOutputPlayList(const std::string &path)
{
    rt::TextFile file;
    try {
        file.open(path, rt::TextFile::Mode::Output);
        for (int i = 0; i < filex.ListCount(); ++i)
            file.printLine(filex.List(i));
        file.close();
    } catch (const rt::RuntimeError &) {
        try {
            file.close();
        } catch (const rt::RuntimeError &) {
        }
        ui::MsgBox(app(), "Could not create playlist!");
    }
}

void frmMain::toggleOff(ui::MenuItem &entry)
{
    // Ticked when off, then unticked when on: the entry always ends unticked.
    if (!entry.Checked())
        entry.setChecked(true);
    if (entry.Checked())
        entry.setChecked(false);
}

void frmMain::showWindow(const char *name)
{
    app().formByName(name).Show();
}

void frmMain::hover(const char *text)
{
    StatusBar1.setPanel(1, text);
}

std::optional<std::string> frmMain::member(const std::string &name) const
{
    auto integer = [](rt::Integer v) { return std::to_string(v.value()); };
    if (name == "isPlaying") return integer(isPlaying);
    if (name == "listeningRoomShown") return integer(app().listeningRoomShown);
    if (name == "listeningRoomLeft") return integer(app().listeningRoomLeft);
    if (name == "listeningRoomTop") return integer(app().listeningRoomTop);
    if (name == "eqIniPath") return eqIniPath;
    if (name == "eqFirstOpen") return eqFirstOpen;
    if (name == "eqState") return eqState;
    if (name == "sliderHeld") return integer(sliderHeld);
    if (name == "mediaErrorText") return mediaErrorText;
    if (name == "lastTrackCloses") return integer(lastTrackCloses);
    if (name == "sessionStaysOpen") return integer(sessionStaysOpen);
    if (name == "closeSession") return integer(closeSession);
    if (name == "selectedRow") return integer(selectedRow);
    if (name == "selectedRowAlso") return integer(selectedRowAlso);
    if (name.rfind("bandEdges(", 0) == 0 && name.back() == ')') {
        const int i = std::atoi(name.c_str() + 10);
        if (i >= 0 && i < 16)
            return rt::numberText(bandEdges[i]);
    }
    return std::nullopt;
}

std::optional<std::string> frmMain::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "writerInit") {
        writerInit();
        return std::string();
    }
    if (name == "startme_up") {
        startme_up();
        return std::string();
    }
    if (name == "startme_upx") {
        startme_upx();
        return std::string();
    }
    if (name == "Disco") {
        Disco();
        return std::string();
    }
    if (name == "letsburn") {
        std::string file = args.empty() ? std::string() : args[0];
        letsburn(file);
        return std::string();
    }
    if (name == "results" || name == "results2") {
        rt::Integer flag = args.empty() ? rt::Integer(0) : rt::CInt(args[0]);
        name == "results" ? results(flag) : results2(flag);
        return std::string();
    }
    if (name == "fuckoff") {
        fuckoff();
        return std::string();
    }
    if (name == "triggerhappy") {
        std::string text = args.empty() ? std::string() : args[0];
        triggerhappy(text);
        return std::string();
    }
    if (name == "pOutputPlayList") {
        pOutputPlayList(args.empty() ? std::string() : args[0]);
        return std::string();
    }
    if (name == "frmmainvis" || name == "frmmainheight") {
        rt::Integer value = args.empty() ? rt::Integer(0) : rt::CInt(args[0]);
        name == "frmmainvis" ? frmmainvis(value) : frmmainheight(value);
        return std::string();
    }
    if (name == "saveeq") {
        saveeq();
        return std::string();
    }
    return std::nullopt;
}

} // namespace shell
